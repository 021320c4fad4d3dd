#include "Foundation/KRClock.h"

#include <algorithm>
#include <chrono>
#include <utility>
#include <vector>

namespace {

struct ClockState {
    bool manual = false;
    double manualTime = 0.0;
    int nextListenerId = 1;
    std::vector<std::pair<int, std::function<void()>>> listeners;
};

ClockState& state() {
    static ClockState clockState;
    return clockState;
}

double realNow() {
    const auto sinceEpoch = std::chrono::steady_clock::now().time_since_epoch();
    return std::chrono::duration<double>(sinceEpoch).count();
}

} // namespace

double KRClock::now() {
    return state().manual ? state().manualTime : realNow();
}

void KRClock::useManualTime(double start) {
    state().manual = true;
    state().manualTime = start;
}

void KRClock::useRealTime() {
    state().manual = false;
}

bool KRClock::isManual() {
    return state().manual;
}

void KRClock::advance(double seconds) {
    ClockState& clock = state();
    // Real time moves by itself; time never runs backwards.
    if (!clock.manual) {
        return;
    }
    if (seconds > 0.0) {
        clock.manualTime += seconds;
    }
    // Listeners may add or remove listeners (themselves included): call the ones present now, in order,
    // skipping any removed along the way, each through its own copy.
    std::vector<int> ids;
    ids.reserve(clock.listeners.size());
    for (const auto& entry : clock.listeners) {
        ids.push_back(entry.first);
    }
    for (int id : ids) {
        const auto it = std::find_if(clock.listeners.begin(), clock.listeners.end(),
                                     [id](const auto& entry) { return entry.first == id; });
        if (it == clock.listeners.end()) {
            continue;
        }
        const std::function<void()> listener = it->second;
        if (listener) {
            listener();
        }
    }
}

int KRClock::addAdvanceListener(std::function<void()> listener) {
    ClockState& clock = state();
    const int id = clock.nextListenerId++;
    clock.listeners.emplace_back(id, std::move(listener));
    return id;
}

void KRClock::removeAdvanceListener(int id) {
    auto& listeners = state().listeners;
    listeners.erase(std::remove_if(listeners.begin(), listeners.end(),
                                   [id](const auto& entry) { return entry.first == id; }),
                    listeners.end());
}
