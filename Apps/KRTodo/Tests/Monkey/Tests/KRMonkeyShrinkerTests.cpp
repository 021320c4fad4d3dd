#include "KRMonkeyShrinker.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <numeric>

namespace {

using Sequence = KRMonkeyShrinker::Sequence;

Sequence firstPositions(std::size_t count) {
    Sequence sequence(count);
    std::iota(sequence.begin(), sequence.end(), std::size_t{0});
    return sequence;
}

// Fails once every one of needed has been seen, in order; answers how many events that took.
std::optional<std::size_t> failsAfterSeeing(const Sequence& candidate, const Sequence& needed) {
    std::size_t found = 0;
    for (std::size_t index = 0; index < candidate.size(); ++index) {
        if (found < needed.size() && candidate[index] == needed[found]) {
            ++found;
        }
        if (found == needed.size()) {
            return index + 1;
        }
    }
    return std::nullopt;
}

} // namespace

TEST(KRMonkeyShrinkerTests, KeepsOnlyTheEventsTheFailureNeeds) {
    const Sequence needed = {3, 41, 42, 170};
    KRMonkeyShrinker shrinker([&](const Sequence& candidate) { return failsAfterSeeing(candidate, needed); });
    EXPECT_EQ(shrinker.shrink(firstPositions(300)), needed);
    EXPECT_FALSE(shrinker.ranOutOfTime());
    EXPECT_GT(shrinker.testsRun(), 0);
}

TEST(KRMonkeyShrinkerTests, DropsTheEventsAfterTheFailureAtOnce) {
    int tests = 0;
    KRMonkeyShrinker shrinker([&](const Sequence& candidate) {
        ++tests;
        return failsAfterSeeing(candidate, Sequence{0});
    });
    EXPECT_EQ(shrinker.shrink(firstPositions(1000)), Sequence{0});
    // Removing the second half fails and cuts everything after event 0 in one test; the rest is two more.
    EXPECT_LE(tests, 4);
}

TEST(KRMonkeyShrinkerTests, SequenceThatNeedsEveryEventStaysWhole) {
    const Sequence needed = firstPositions(7);
    KRMonkeyShrinker shrinker([&](const Sequence& candidate) { return failsAfterSeeing(candidate, needed); });
    EXPECT_EQ(shrinker.shrink(needed), needed);
}

TEST(KRMonkeyShrinkerTests, FailureThatNeedsEitherOfTwoEventsKeepsOne) {
    // Fails when event 10 or event 20 comes: one of them is enough.
    KRMonkeyShrinker shrinker([](const Sequence& candidate) -> std::optional<std::size_t> {
        for (std::size_t index = 0; index < candidate.size(); ++index) {
            if (candidate[index] == 10 || candidate[index] == 20) {
                return index + 1;
            }
        }
        return std::nullopt;
    });
    const Sequence shrunk = shrinker.shrink(firstPositions(50));
    ASSERT_EQ(shrunk.size(), 1u);
    EXPECT_TRUE(shrunk[0] == 10 || shrunk[0] == 20);
}

TEST(KRMonkeyShrinkerTests, StopsAtItsBudget) {
    KRMonkeyShrinker shrinker(
        [](const Sequence& candidate) {
            return failsAfterSeeing(candidate, Sequence{5, 9});
        },
        std::chrono::steady_clock::duration::zero());
    const Sequence original = firstPositions(20);
    EXPECT_EQ(shrinker.shrink(original), original);
    EXPECT_TRUE(shrinker.ranOutOfTime());
    EXPECT_EQ(shrinker.testsRun(), 0);
}

TEST(KRMonkeyShrinkerTests, DropsPairsThatOnlyMatterTogether) {
    // Fails with 9 as long as 2 and 7 are both there or both gone: neither chunks nor single events can drop
    // them, since they are not next to each other and either alone makes the failure go away.
    KRMonkeyShrinker shrinker([](const Sequence& candidate) -> std::optional<std::size_t> {
        const auto has = [&](std::size_t event) {
            return std::find(candidate.begin(), candidate.end(), event) != candidate.end();
        };
        if (has(9) && has(2) == has(7)) {
            return candidate.size();
        }
        return std::nullopt;
    });
    EXPECT_EQ(shrinker.shrink(Sequence{2, 5, 7, 9}), Sequence{9});
}
