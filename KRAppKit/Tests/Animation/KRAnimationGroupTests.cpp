#include "Animation/KRAnimationGroup.h"

#include <gtest/gtest.h>

#include <memory>

TEST(KRAnimationGroupTests, ClosingWithNothingRunningCompletesAtOnce) {
    int completions = 0;
    const auto group = std::make_shared<KRAnimationGroup>([&] { ++completions; });
    EXPECT_FALSE(group->isComplete());
    group->close();
    EXPECT_TRUE(group->isComplete());
    EXPECT_EQ(completions, 1);
}

TEST(KRAnimationGroupTests, CompletesOnlyOnceClosedAndTheLastAnimationStopped) {
    int completions = 0;
    const auto group = std::make_shared<KRAnimationGroup>([&] { ++completions; });
    group->animationDidStart();
    group->animationDidStart();
    group->animationDidStop();
    EXPECT_EQ(completions, 0); // still open
    group->close();
    EXPECT_EQ(completions, 0); // one still running
    EXPECT_EQ(group->runningCount(), 1);
    group->animationDidStop();
    EXPECT_EQ(completions, 1);
    EXPECT_TRUE(group->isComplete());
}

TEST(KRAnimationGroupTests, LateStopsAndReentrantClosesDoNotRepeatTheCompletion) {
    int completions = 0;
    std::shared_ptr<KRAnimationGroup> group;
    group = std::make_shared<KRAnimationGroup>([&] {
        ++completions;
        group->close(); // re-entering from the completion must not run it again
    });
    group->animationDidStart();
    group->close();
    group->animationDidStop();
    group->animationDidStop();
    group->animationDidStop();
    group->close();
    EXPECT_EQ(completions, 1);
    EXPECT_EQ(group->runningCount(), 0);
}

TEST(KRAnimationGroupTests, CompletionMayReleaseTheLastOwnerOfTheGroup) {
    int completions = 0;
    std::shared_ptr<KRAnimationGroup> owner;
    owner = std::make_shared<KRAnimationGroup>([&] {
        ++completions;
        owner.reset();
    });
    const std::weak_ptr<KRAnimationGroup> released = owner;
    KRAnimationGroup* group = owner.get();
    group->animationDidStart();
    group->close();
    group->animationDidStop();
    EXPECT_EQ(completions, 1);
    EXPECT_TRUE(released.expired());
}
