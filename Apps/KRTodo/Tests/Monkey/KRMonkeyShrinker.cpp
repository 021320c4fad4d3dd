#include "KRMonkeyShrinker.h"

#include <algorithm>
#include <utility>

KRMonkeyShrinker::KRMonkeyShrinker(Test test, std::chrono::steady_clock::duration budget)
    : m_test(std::move(test)), m_deadline(std::chrono::steady_clock::now() + budget) {}

bool KRMonkeyShrinker::outOfTime() {
    if (std::chrono::steady_clock::now() >= m_deadline) {
        m_ranOutOfTime = true;
    }
    return m_ranOutOfTime;
}

bool KRMonkeyShrinker::tryCandidate(const Sequence& candidate, Sequence& current) {
    ++m_testsRun;
    const std::optional<std::size_t> failedAfter = m_test(candidate);
    if (!failedAfter) {
        return false;
    }
    current.assign(candidate.begin(),
                   candidate.begin() + static_cast<std::ptrdiff_t>(std::min(*failedAfter, candidate.size())));
    return true;
}

KRMonkeyShrinker::Sequence KRMonkeyShrinker::shrink(Sequence failing) {
    Sequence current = std::move(failing);
    // Chunks: drop each of n parts in turn; a success keeps the granularity about the same, a round without
    // one halves the parts' size, until they are single events.
    std::size_t parts = 2;
    while (current.size() >= 2 && !outOfTime()) {
        const std::size_t size = current.size();
        parts = std::min(parts, size);
        const std::size_t chunk = (size + parts - 1) / parts;
        bool reduced = false;
        for (std::size_t start = 0; start < size && !outOfTime(); start += chunk) {
            Sequence candidate(current.begin(), current.begin() + static_cast<std::ptrdiff_t>(start));
            candidate.insert(candidate.end(),
                             current.begin() + static_cast<std::ptrdiff_t>(std::min(start + chunk, size)),
                             current.end());
            if (tryCandidate(candidate, current)) {
                reduced = true;
                break;
            }
        }
        if (reduced) {
            parts = std::max<std::size_t>(parts - 1, 2);
        } else if (parts >= size) {
            break;
        } else {
            parts = std::min(parts * 2, size);
        }
    }
    // Single events, from the last one back, until a whole pass removes none; then, for short sequences,
    // pairs: two events that only matter together (a selection and what acts on it) go only as a pair.
    bool changed = true;
    while (changed && !outOfTime()) {
        changed = removeSingleEvents(current);
        if (!changed && current.size() <= kLongestSequenceForPairs) {
            changed = removePairsOfEvents(current);
        }
    }
    return current;
}

bool KRMonkeyShrinker::removeSingleEvents(Sequence& current) {
    bool removed = false;
    for (std::size_t position = current.size(); position-- > 0 && !outOfTime();) {
        if (position >= current.size()) {
            continue;
        }
        Sequence candidate = current;
        candidate.erase(candidate.begin() + static_cast<std::ptrdiff_t>(position));
        if (tryCandidate(candidate, current)) {
            removed = true;
        }
    }
    return removed;
}

bool KRMonkeyShrinker::removePairsOfEvents(Sequence& current) {
    for (std::size_t first = 0; first < current.size(); ++first) {
        for (std::size_t second = first + 1; second < current.size(); ++second) {
            if (outOfTime()) {
                return false;
            }
            Sequence candidate = current;
            candidate.erase(candidate.begin() + static_cast<std::ptrdiff_t>(second));
            candidate.erase(candidate.begin() + static_cast<std::ptrdiff_t>(first));
            if (tryCandidate(candidate, current)) {
                return true;
            }
        }
    }
    return false;
}
