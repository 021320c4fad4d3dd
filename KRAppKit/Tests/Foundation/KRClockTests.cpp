#include "Foundation/KRClock.h"

#include <gtest/gtest.h>

#include <vector>

namespace {

// Every test leaves the manual clock at zero, as the test main sets it up.
class KRClockTests : public ::testing::Test {
protected:
    void TearDown() override {
        for (int id : listenerIds) {
            KRClock::removeAdvanceListener(id);
        }
        KRClock::useManualTime(0.0);
    }
    std::vector<int> listenerIds;
};

} // namespace

TEST_F(KRClockTests, ManualTimeStartsWhereAsked) {
    KRClock::useManualTime(12.5);
    EXPECT_TRUE(KRClock::isManual());
    EXPECT_DOUBLE_EQ(KRClock::now(), 12.5);
}

TEST_F(KRClockTests, AdvanceMovesManualTimeForward) {
    KRClock::useManualTime(1.0);
    KRClock::advance(0.25);
    KRClock::advance(0.5);
    EXPECT_DOUBLE_EQ(KRClock::now(), 1.75);
}

TEST_F(KRClockTests, RealTimeIsMonotonicAndIgnoresAdvance) {
    int calls = 0;
    listenerIds.push_back(KRClock::addAdvanceListener([&] { ++calls; }));
    KRClock::useRealTime();
    EXPECT_FALSE(KRClock::isManual());
    const double first = KRClock::now();
    KRClock::advance(1000.0);
    const double second = KRClock::now();
    EXPECT_GE(second, first);
    EXPECT_LT(second - first, 100.0);
    EXPECT_EQ(calls, 0);
}

TEST_F(KRClockTests, ListenersRunAfterAdvanceInRegistrationOrder) {
    std::vector<int> calls;
    double seenTime = -1.0;
    listenerIds.push_back(KRClock::addAdvanceListener([&] {
        calls.push_back(1);
        seenTime = KRClock::now();
    }));
    listenerIds.push_back(KRClock::addAdvanceListener([&] { calls.push_back(2); }));
    KRClock::advance(2.0);
    EXPECT_EQ(calls, (std::vector<int>{1, 2}));
    EXPECT_DOUBLE_EQ(seenTime, 2.0);
}

TEST_F(KRClockTests, RemovedListenerIsNoLongerCalled) {
    int calls = 0;
    const int id = KRClock::addAdvanceListener([&] { ++calls; });
    KRClock::advance(1.0);
    KRClock::removeAdvanceListener(id);
    KRClock::advance(1.0);
    EXPECT_EQ(calls, 1);
}

TEST_F(KRClockTests, ListenerMayRemoveItselfAndOthersWhileRunning) {
    std::vector<int> calls;
    int selfId = 0;
    int laterId = 0;
    selfId = KRClock::addAdvanceListener([&] {
        calls.push_back(1);
        KRClock::removeAdvanceListener(selfId);
        KRClock::removeAdvanceListener(laterId);
    });
    laterId = KRClock::addAdvanceListener([&] { calls.push_back(2); });
    KRClock::advance(1.0);
    KRClock::advance(1.0);
    EXPECT_EQ(calls, std::vector<int>{1});
}

TEST_F(KRClockTests, ListenerIdsAreDistinct) {
    const int a = KRClock::addAdvanceListener([] {});
    const int b = KRClock::addAdvanceListener([] {});
    listenerIds = {a, b};
    EXPECT_NE(a, b);
}
