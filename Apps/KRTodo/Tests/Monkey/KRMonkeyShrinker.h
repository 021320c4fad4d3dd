#pragma once

#include <chrono>
#include <cstddef>
#include <functional>
#include <optional>
#include <vector>

// Delta debugging over a failing sequence of events: drops chunks of it, halving their size, then single
// events, then (in short sequences) pairs, and keeps every shorter sequence that still fails the same way,
// until no single event or pair can go.
// Sequences are lists of positions in the original sequence, so the caller keeps the events themselves.
class KRMonkeyShrinker {
public:
    using Sequence = std::vector<std::size_t>;
    // Replays a candidate and answers how many of its events it took to fail the same way, or nothing when
    // it did not. The events after that number are dropped at once.
    using Test = std::function<std::optional<std::size_t>(const Sequence& candidate)>;

    explicit KRMonkeyShrinker(Test test,
                              std::chrono::steady_clock::duration budget = std::chrono::minutes(5));

    // failing must fail the same way; the answer does too, and is no longer.
    Sequence shrink(Sequence failing);

    int testsRun() const { return m_testsRun; }
    // Whether shrinking stopped at the budget rather than at a sequence no single removal can shorten.
    bool ranOutOfTime() const { return m_ranOutOfTime; }

private:
    // Tries candidate; on success it (cut to its failing prefix) becomes current.
    bool tryCandidate(const Sequence& candidate, Sequence& current);
    bool outOfTime();
    bool removeSingleEvents(Sequence& current);
    bool removePairsOfEvents(Sequence& current);

    // Pairs cost a replay each, so only short sequences try them.
    static constexpr std::size_t kLongestSequenceForPairs = 16;

    Test m_test;
    std::chrono::steady_clock::time_point m_deadline;
    int m_testsRun = 0;
    bool m_ranOutOfTime = false;
};
