// KRTodo's monkey: KRTodo's real window on the offscreen platform, driven by seeded random keys, menu
// shortcuts, typing and clicks, and checked against its store after every event. On a failure it prints
// the seed, the failing event and the shortest sequence of events it can find that fails the same way.
//
//   KRTodoMonkey [--seed S] [--events K | --minutes M] [--session-events N] [--shrink-minutes T]
//                [--keep-going] [--no-shrink] [--verbose]
#include "KRMonkeyApplication.h"
#include "KRMonkeyEventGenerator.h"
#include "KRMonkeyRandom.h"
#include "KRMonkeySession.h"
#include "KRMonkeyShrinker.h"

#include <QByteArray>
#include <QSet>
#include <QString>
#include <QStringList>

#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <map>
#include <memory>
#include <optional>
#include <vector>

namespace {

using Clock = std::chrono::steady_clock;

struct Options {
    std::uint64_t seed = 0;
    bool seedGiven = false;
    std::optional<std::uint64_t> events;
    std::optional<double> minutes;
    // A fresh window every so many events keeps the list from growing without end.
    std::size_t sessionEvents = 1000;
    double shrinkMinutes = 5.0;
    bool keepGoing = false;
    bool shrink = true;
    bool verbose = false;
};

constexpr std::uint64_t kDefaultEvents = 1000;

void print(const QString& line) {
    std::fputs(line.toUtf8().constData(), stdout);
    std::fputc('\n', stdout);
    std::fflush(stdout);
}

[[noreturn]] void usage(const QString& problem) {
    std::fprintf(stderr, "KRTodoMonkey: %s\n", problem.toUtf8().constData());
    std::fprintf(stderr,
                 "usage: KRTodoMonkey [--seed S] [--events K | --minutes M] [--session-events N]\n"
                 "                    [--shrink-minutes T] [--keep-going] [--no-shrink] [--verbose]\n");
    std::exit(2);
}

Options parseOptions(const QStringList& arguments) {
    Options options;
    for (qsizetype index = 1; index < arguments.size(); ++index) {
        const QString& argument = arguments[index];
        auto value = [&]() -> QString {
            if (index + 1 >= arguments.size()) {
                usage(QStringLiteral("%1 needs a value").arg(argument));
            }
            return arguments[++index];
        };
        bool ok = true;
        if (argument == QLatin1String("--seed")) {
            options.seed = value().toULongLong(&ok);
            options.seedGiven = true;
        } else if (argument == QLatin1String("--events")) {
            options.events = value().toULongLong(&ok);
        } else if (argument == QLatin1String("--minutes")) {
            options.minutes = value().toDouble(&ok);
            ok = ok && *options.minutes > 0.0;
        } else if (argument == QLatin1String("--session-events")) {
            options.sessionEvents = value().toULongLong(&ok);
            ok = ok && options.sessionEvents > 0;
        } else if (argument == QLatin1String("--shrink-minutes")) {
            options.shrinkMinutes = value().toDouble(&ok);
        } else if (argument == QLatin1String("--keep-going")) {
            options.keepGoing = true;
        } else if (argument == QLatin1String("--no-shrink")) {
            options.shrink = false;
        } else if (argument == QLatin1String("--verbose")) {
            options.verbose = true;
        } else {
            usage(QStringLiteral("unknown argument %1").arg(argument));
        }
        if (!ok) {
            usage(QStringLiteral("bad value for %1").arg(argument));
        }
    }
    if (!options.events && !options.minutes) {
        options.events = kDefaultEvents;
    }
    if (!options.seedGiven) {
        options.seed = static_cast<std::uint64_t>(std::chrono::duration_cast<std::chrono::microseconds>(
                                                      std::chrono::system_clock::now().time_since_epoch())
                                                      .count());
    }
    return options;
}

// Qt warns about every key event no widget accepted; keys the list ignores are expected here. Other
// warnings are printed once each.
void filterQtMessages(QtMsgType type, const QMessageLogContext&, const QString& message) {
    static QSet<QString> seen;
    if (message.startsWith(QLatin1String("Keyboard event not accepted")) || seen.contains(message)) {
        return;
    }
    seen.insert(message);
    const char* level = type == QtDebugMsg ? "debug" : type == QtInfoMsg ? "info" : "warning";
    std::fprintf(stderr, "Qt %s: %s\n", level, message.toUtf8().constData());
}

double secondsSince(Clock::time_point start) {
    return std::chrono::duration<double>(Clock::now() - start).count();
}

// Replays the session's events on a fresh window and shrinks them to the shortest sequence that fails the
// same way; prints what it finds.
void reproduce(const std::vector<KRMonkeyEvent>& events, const KRMonkeyFailure& failure,
               const Options& options) {
    const Clock::time_point start = Clock::now();
    const KRMonkeySession::Replay replayed = KRMonkeySession::replay(events);
    if (!replayed.failure || replayed.failure->signature != failure.signature) {
        print(QStringLiteral(
                  "Replaying the session's %1 events on a fresh window did not fail the same way (%2);"
                  " its last events were:")
                  .arg(events.size())
                  .arg(replayed.failure ? replayed.failure->message : QStringLiteral("no failure")));
        const std::size_t first = events.size() > 20 ? events.size() - 20 : 0;
        for (std::size_t index = first; index < events.size(); ++index) {
            print(QStringLiteral("  %1. %2").arg(index + 1).arg(events[index].description));
        }
        return;
    }
    KRMonkeyShrinker::Sequence sequence;
    for (std::size_t index = 0; index < replayed.delivered; ++index) {
        sequence.push_back(index);
    }
    auto eventsOf = [&](const KRMonkeyShrinker::Sequence& positions) {
        std::vector<KRMonkeyEvent> chosen;
        chosen.reserve(positions.size());
        for (const std::size_t position : positions) {
            chosen.push_back(events[position]);
        }
        return chosen;
    };
    int replays = 1;
    if (options.shrink) {
        KRMonkeyShrinker shrinker(
            [&](const KRMonkeyShrinker::Sequence& candidate) -> std::optional<std::size_t> {
                const KRMonkeySession::Replay attempt = KRMonkeySession::replay(eventsOf(candidate));
                if (attempt.failure && attempt.failure->signature == failure.signature) {
                    return attempt.delivered;
                }
                return std::nullopt;
            },
            std::chrono::duration_cast<Clock::duration>(
                std::chrono::duration<double>(options.shrinkMinutes * 60.0)));
        sequence = shrinker.shrink(sequence);
        replays += shrinker.testsRun();
        if (shrinker.ranOutOfTime()) {
            print(QStringLiteral(
                      "(shrinking stopped after %1 minutes; the sequence below may not be the shortest)")
                      .arg(options.shrinkMinutes));
        }
    }
    // Once more, to print what each event did and the failure this sequence ends with.
    const KRMonkeySession::Replay shortest = KRMonkeySession::replay(eventsOf(sequence));
    ++replays;
    print(QStringLiteral(
              "Shortest reproduction: %1 events (from %2; %3 replays in %4 s), from a fresh window over "
              "the sample store:")
              .arg(shortest.delivered)
              .arg(replayed.delivered)
              .arg(replays)
              .arg(secondsSince(start), 0, 'f', 1));
    for (std::size_t index = 0; index < shortest.done.size(); ++index) {
        print(QStringLiteral("  %1. %2").arg(index + 1).arg(shortest.done[index]));
    }
    print(QStringLiteral("  fails with: %1")
              .arg(shortest.failure ? shortest.failure->message
                                    : QStringLiteral("no failure (not reproducible)")));
}

} // namespace

int main(int argc, char** argv) {
    qputenv("QT_QPA_PLATFORM", "offscreen");
    KRMonkeyApplication application(argc, argv);
    qInstallMessageHandler(filterQtMessages);
    const Options options = parseOptions(QCoreApplication::arguments());

    QString limit = options.events ? QStringLiteral("%1 events").arg(*options.events) : QString();
    if (options.minutes) {
        limit += QStringLiteral("%1%2 minutes")
                     .arg(limit.isEmpty() ? QString() : QStringLiteral(" or "))
                     .arg(*options.minutes);
    }
    print(QStringLiteral("KRTodo monkey: seed %1, %2").arg(options.seed).arg(limit));

    KRMonkeyRandom random(options.seed);
    const KRMonkeyEventGenerator generator = KRMonkeyEventGenerator::makeDefault();
    const Clock::time_point start = Clock::now();
    double reproducingSeconds = 0.0;
    std::uint64_t total = 0;
    int sessions = 0;
    int failures = 0;
    QSet<QString> signatures;
    std::map<QString, std::uint64_t> eventsByKind;
    // Time spent replaying and shrinking does not count against --minutes.
    auto done = [&] {
        if (options.events && total >= *options.events) {
            return true;
        }
        return options.minutes && secondsSince(start) - reproducingSeconds >= *options.minutes * 60.0;
    };

    while (!done()) {
        std::vector<KRMonkeyEvent> events;
        std::optional<KRMonkeyFailure> failure;
        QStringList log;
        {
            KRMonkeySession session;
            ++sessions;
            while (!done() && events.size() < options.sessionEvents) {
                events.push_back(generator.makeEvent(random, session));
                ++total;
                ++eventsByKind[events.back().kind];
                // Printed before delivery, so that a crash the process does not survive names its event.
                if (options.verbose) {
                    print(QStringLiteral("%1. %2").arg(total).arg(events.back().description));
                }
                failure = session.deliver(events.back());
                if (options.verbose) {
                    print(QStringLiteral("    -> %1").arg(session.describeState()));
                }
                if (failure) {
                    log = session.lastEventLog();
                    break;
                }
            }
        }
        if (!failure) {
            continue;
        }
        ++failures;
        const bool known = signatures.contains(failure->signature);
        signatures.insert(failure->signature);
        print(QString());
        print(QStringLiteral(
                  "FAILURE at event %1 (seed %2; event %3 of session %4, which started on a fresh window)")
                  .arg(total)
                  .arg(options.seed)
                  .arg(events.size())
                  .arg(sessions));
        print(QStringLiteral("  %1").arg(failure->message));
        print(QStringLiteral("  event: %1").arg(events.back().description));
        for (const QString& line : log) {
            print(QStringLiteral("  log: %1").arg(line));
        }
        print(QStringLiteral("  the same events again: scripts/monkey --seed %1 --events %2%3%4")
                  .arg(options.seed)
                  .arg(total)
                  .arg(options.sessionEvents == Options().sessionEvents
                           ? QString()
                           : QStringLiteral(" --session-events %1").arg(options.sessionEvents))
                  .arg(options.keepGoing ? QStringLiteral(" --keep-going") : QString()));
        if (known) {
            print(QStringLiteral("  (fails the way an earlier failure did; not shrunk again)"));
        } else {
            const Clock::time_point reproducing = Clock::now();
            reproduce(events, *failure, options);
            reproducingSeconds += secondsSince(reproducing);
        }
        if (!options.keepGoing) {
            break;
        }
    }

    const double seconds = secondsSince(start) - reproducingSeconds;
    print(QString());
    print(QStringLiteral("%1 events in %2 sessions, %3 s (%4 events/s); %5 failures%6; seed %7")
              .arg(total)
              .arg(sessions)
              .arg(seconds, 0, 'f', 1)
              .arg(seconds > 0.0 ? static_cast<double>(total) / seconds : 0.0, 0, 'f', 1)
              .arg(failures)
              .arg(signatures.size() > 1 ? QStringLiteral(" of %1 kinds").arg(signatures.size()) : QString())
              .arg(options.seed));
    QStringList kinds;
    for (const auto& [kind, count] : eventsByKind) {
        kinds << QStringLiteral("%1 %2").arg(count).arg(kind);
    }
    print(QStringLiteral("events by kind: %1").arg(kinds.join(QStringLiteral(", "))));
    return failures == 0 ? 0 : 1;
}
