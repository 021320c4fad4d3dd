#include "Foundation/KRRunLoop.h"

#include "Foundation/KRClock.h"

#include <QCoreApplication>
#include <QTimer>

#include <cmath>
#include <cstdint>
#include <map>
#include <utility>

namespace {

// Queue order: due time, then scheduling order.
using QueueKey = std::pair<double, std::uint64_t>;

} // namespace

struct KRRunLoop::Private {
    std::map<QueueKey, std::function<void()>> queue;
    std::uint64_t nextSequence = 0;

    // Asks Qt's event loop to run a turn once the earliest block may be due.
    void scheduleDrain(double delay) {
        QCoreApplication* application = QCoreApplication::instance();
        if (!application) {
            return;
        }
        const double milliseconds = std::ceil(std::max(0.0, delay) * 1000.0);
        const int interval = milliseconds > 2147483647.0 ? 2147483647 : static_cast<int>(milliseconds);
        QTimer::singleShot(interval, Qt::PreciseTimer, application, [] {
            KRRunLoop& loop = KRRunLoop::main();
            loop.runOneTurn();
            // A timer can fire a little before the real clock reaches the due time; try again then.
            Private& queueState = loop.d();
            if (!KRClock::isManual() && !queueState.queue.empty()) {
                queueState.scheduleDrain(queueState.queue.begin()->first.first - KRClock::now());
            }
        });
    }
};

KRRunLoop& KRRunLoop::main() {
    static KRRunLoop loop;
    return loop;
}

KRRunLoop::Private& KRRunLoop::d() {
    static Private queueState;
    return queueState;
}

void KRRunLoop::performAfterDelay(double delay, std::function<void()> block) {
    if (!block) {
        return;
    }
    if (!(delay > 0.0)) {
        delay = 0.0;
    }
    Private& p = d();
    p.queue.emplace(QueueKey{KRClock::now() + delay, p.nextSequence++}, std::move(block));
    p.scheduleDrain(delay);
}

int KRRunLoop::runOneTurn() {
    Private& p = d();
    const double turnTime = KRClock::now();
    const std::uint64_t turnSequence = p.nextSequence;
    int ran = 0;
    // Blocks queued during the turn are due no earlier than turnTime and sort after every older block with
    // the same due time, so the head of the queue is always the next block this turn may run.
    while (!p.queue.empty()) {
        auto head = p.queue.begin();
        if (head->first.first > turnTime || head->first.second >= turnSequence) {
            break;
        }
        // Off the queue before it runs: a throwing block leaves only the others queued.
        std::function<void()> block = std::move(head->second);
        p.queue.erase(head);
        ++ran;
        block();
    }
    return ran;
}

int KRRunLoop::runUntilIdle(int maxTurns) {
    int total = 0;
    for (int turn = 0; turn < maxTurns; ++turn) {
        const int ran = runOneTurn();
        if (ran == 0) {
            break;
        }
        total += ran;
    }
    return total;
}

int KRRunLoop::pendingCount() const {
    return static_cast<int>(const_cast<KRRunLoop*>(this)->d().queue.size());
}

void KRRunLoop::cancelAll() {
    d().queue.clear();
}
