#include "Foundation/KRRunLoop.h"

#include "Foundation/KRClock.h"

#include <QCoreApplication>

#include <gtest/gtest.h>

#include <stdexcept>
#include <vector>

namespace {

// Each test starts with an empty queue on the manual clock at zero.
class KRRunLoopTests : public ::testing::Test {
protected:
    void SetUp() override {
        KRClock::useManualTime(0.0);
        KRRunLoop::main().cancelAll();
    }
    void TearDown() override {
        KRRunLoop::main().cancelAll();
        KRClock::useManualTime(0.0);
    }
    KRRunLoop& loop = KRRunLoop::main();
};

} // namespace

TEST_F(KRRunLoopTests, MainIsASingleton) {
    EXPECT_EQ(&KRRunLoop::main(), &loop);
}

TEST_F(KRRunLoopTests, DueBlocksRunInSchedulingOrder) {
    std::vector<int> order;
    loop.performAfterDelay(0.0, [&] { order.push_back(1); });
    loop.performAfterDelay(0.0, [&] { order.push_back(2); });
    loop.performAfterDelay(0.0, [&] { order.push_back(3); });
    EXPECT_EQ(loop.pendingCount(), 3);
    EXPECT_EQ(loop.runOneTurn(), 3);
    EXPECT_EQ(order, (std::vector<int>{1, 2, 3}));
    EXPECT_EQ(loop.pendingCount(), 0);
}

TEST_F(KRRunLoopTests, NothingRunsUntilATurnIsTaken) {
    bool ran = false;
    loop.performAfterDelay(0.0, [&] { ran = true; });
    EXPECT_FALSE(ran);
    loop.runOneTurn();
    EXPECT_TRUE(ran);
}

TEST_F(KRRunLoopTests, DelayedBlockWaitsForTheClock) {
    bool ran = false;
    loop.performAfterDelay(1.0, [&] { ran = true; });
    EXPECT_EQ(loop.runOneTurn(), 0);
    KRClock::advance(0.5);
    EXPECT_EQ(loop.runOneTurn(), 0);
    EXPECT_FALSE(ran);
    KRClock::advance(0.5);
    EXPECT_EQ(loop.runOneTurn(), 1);
    EXPECT_TRUE(ran);
}

TEST_F(KRRunLoopTests, EarlierDueTimeRunsFirst) {
    std::vector<int> order;
    loop.performAfterDelay(2.0, [&] { order.push_back(2); });
    loop.performAfterDelay(1.0, [&] { order.push_back(1); });
    loop.performAfterDelay(2.0, [&] { order.push_back(3); });
    KRClock::advance(5.0);
    EXPECT_EQ(loop.runOneTurn(), 3);
    EXPECT_EQ(order, (std::vector<int>{1, 2, 3}));
}

TEST_F(KRRunLoopTests, BlocksScheduledDuringATurnWaitForTheNextTurn) {
    std::vector<int> order;
    loop.performAfterDelay(0.0, [&] {
        order.push_back(1);
        loop.performAfterDelay(0.0, [&] { order.push_back(3); });
    });
    loop.performAfterDelay(0.0, [&] { order.push_back(2); });
    EXPECT_EQ(loop.runOneTurn(), 2);
    EXPECT_EQ(order, (std::vector<int>{1, 2}));
    EXPECT_EQ(loop.pendingCount(), 1);
    EXPECT_EQ(loop.runOneTurn(), 1);
    EXPECT_EQ(order, (std::vector<int>{1, 2, 3}));
}

TEST_F(KRRunLoopTests, RunUntilIdleDrainsChainedBlocks) {
    int depth = 0;
    std::function<void()> step = [&] {
        ++depth;
        if (depth < 5) {
            loop.performAfterDelay(0.0, step);
        }
    };
    loop.performAfterDelay(0.0, step);
    EXPECT_EQ(loop.runUntilIdle(), 5);
    EXPECT_EQ(depth, 5);
    EXPECT_EQ(loop.pendingCount(), 0);
}

TEST_F(KRRunLoopTests, RunUntilIdleStopsAtTheTurnBound) {
    int runs = 0;
    std::function<void()> reschedule = [&] {
        ++runs;
        loop.performAfterDelay(0.0, reschedule);
    };
    loop.performAfterDelay(0.0, reschedule);
    EXPECT_EQ(loop.runUntilIdle(10), 10);
    EXPECT_EQ(runs, 10);
    EXPECT_EQ(loop.pendingCount(), 1);
}

TEST_F(KRRunLoopTests, RunUntilIdleLeavesFutureBlocksQueued) {
    bool later = false;
    loop.performAfterDelay(0.0, [] {});
    loop.performAfterDelay(3.0, [&] { later = true; });
    EXPECT_EQ(loop.runUntilIdle(), 1);
    EXPECT_FALSE(later);
    EXPECT_EQ(loop.pendingCount(), 1);
}

TEST_F(KRRunLoopTests, CancelAllEmptiesTheQueue) {
    bool ran = false;
    loop.performAfterDelay(0.0, [&] { ran = true; });
    loop.performAfterDelay(1.0, [&] { ran = true; });
    loop.cancelAll();
    EXPECT_EQ(loop.pendingCount(), 0);
    KRClock::advance(2.0);
    EXPECT_EQ(loop.runOneTurn(), 0);
    EXPECT_FALSE(ran);
}

TEST_F(KRRunLoopTests, ExceptionPropagatesAndLeavesTheRestQueued) {
    std::vector<int> order;
    loop.performAfterDelay(0.0, [&] { order.push_back(1); });
    loop.performAfterDelay(0.0, [] { throw std::runtime_error("boom"); });
    loop.performAfterDelay(0.0, [&] { order.push_back(3); });
    EXPECT_THROW(loop.runOneTurn(), std::runtime_error);
    EXPECT_EQ(order, std::vector<int>{1});
    EXPECT_EQ(loop.pendingCount(), 1);
    EXPECT_EQ(loop.runOneTurn(), 1);
    EXPECT_EQ(order, (std::vector<int>{1, 3}));
}

TEST_F(KRRunLoopTests, BlockCancellingTheQueueStopsTheTurn) {
    bool second = false;
    loop.performAfterDelay(0.0, [&] { loop.cancelAll(); });
    loop.performAfterDelay(0.0, [&] { second = true; });
    EXPECT_EQ(loop.runOneTurn(), 1);
    EXPECT_FALSE(second);
}

TEST_F(KRRunLoopTests, QtEventLoopDrainsDueBlocks) {
    ASSERT_NE(QCoreApplication::instance(), nullptr);
    bool ran = false;
    loop.performAfterDelay(0.0, [&] { ran = true; });
    for (int attempt = 0; attempt < 10 && !ran; ++attempt) {
        QCoreApplication::processEvents();
    }
    EXPECT_TRUE(ran);
    EXPECT_EQ(loop.pendingCount(), 0);
}
