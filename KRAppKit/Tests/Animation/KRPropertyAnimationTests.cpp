#include "Animation/KRPropertyAnimation.h"

#include "Animation/EZInterpolationFunctions.h"

#include <gtest/gtest.h>

#include <memory>
#include <vector>

namespace {

std::shared_ptr<KRAnimationGroup> countingGroup(int& completions) {
    return std::make_shared<KRAnimationGroup>([&completions] { ++completions; });
}

KRPropertyAnimation scalarAnimation(const std::shared_ptr<KRAnimationGroup>& group) {
    return KRPropertyAnimation(KRAnimatableValue::fromDouble(0.0), KRAnimatableValue::fromDouble(1.0), 0.0,
                               EZInterpolationFunctions::linearWithDuration(1.0), group);
}

} // namespace

TEST(KRPropertyAnimationTests, ColoursAreStoredPremultipliedAndFadeWithoutDarkening) {
    const KRAnimatableValue halfRed = KRAnimatableValue::fromColor(QColor(255, 0, 0, 51));
    EXPECT_EQ(halfRed.count, 4);
    EXPECT_NEAR(halfRed.components[0], 0.2, 1e-6);
    EXPECT_NEAR(halfRed.components[1], 0.0, 1e-6);
    EXPECT_NEAR(halfRed.components[3], 0.2, 1e-6);

    const KRAnimatableValue red = KRAnimatableValue::fromColor(QColor(255, 0, 0));
    const KRAnimatableValue none = KRAnimatableValue::fromColor(QColor());
    const QColor middle = KRAnimatableValue::interpolate(red, none, 0.5).toColor();
    EXPECT_EQ(middle.red(), 255);
    EXPECT_EQ(middle.green(), 0);
    EXPECT_NEAR(middle.alphaF(), 0.5, 1e-3);
}

TEST(KRPropertyAnimationTests, NoColourAndFullyTransparentComeBackAsTransparentBlack) {
    const KRAnimatableValue none = KRAnimatableValue::fromColor(QColor());
    EXPECT_EQ(none.components, (std::array<double, 4>{0.0, 0.0, 0.0, 0.0}));
    const QColor back = KRAnimatableValue::fromColor(QColor(10, 200, 30, 0)).toColor();
    EXPECT_TRUE(back.isValid());
    EXPECT_EQ(back, QColor(0, 0, 0, 0));
}

TEST(KRPropertyAnimationTests, ValueFollowsTheCurveFromTheBeginTime) {
    const KRPropertyAnimation animation(KRAnimatableValue::fromPoint({0.0, 10.0}),
                                        KRAnimatableValue::fromPoint({100.0, 30.0}), 10.0,
                                        EZInterpolationFunctions::linearWithDuration(2.0), nullptr);
    EXPECT_DOUBLE_EQ(animation.duration(), 2.0);
    EXPECT_EQ(animation.valueAtTime(9.0).toPoint(), (KRPoint{0.0, 10.0}));
    EXPECT_EQ(animation.valueAtTime(10.0).toPoint(), (KRPoint{0.0, 10.0}));
    EXPECT_EQ(animation.valueAtTime(11.0).toPoint(), (KRPoint{50.0, 20.0}));
    EXPECT_EQ(animation.valueAtTime(12.5).toPoint(), (KRPoint{100.0, 30.0}));
    EXPECT_FALSE(animation.isFinishedAtTime(11.99));
    EXPECT_TRUE(animation.isFinishedAtTime(12.0));
}

TEST(KRPropertyAnimationTests, StopTellsTheGroupOnceAndTheDestructorDoesNotRepeatIt) {
    int completions = 0;
    const auto group = countingGroup(completions);
    group->animationDidStart(); // another animation of the same block, still running
    {
        KRPropertyAnimation animation = scalarAnimation(group);
        EXPECT_EQ(group->runningCount(), 2);
        animation.stop();
        animation.stop();
        EXPECT_EQ(group->runningCount(), 1);
    }
    EXPECT_EQ(group->runningCount(), 1);
    group->close();
    EXPECT_EQ(completions, 0);
    group->animationDidStop();
    EXPECT_EQ(completions, 1);
}

TEST(KRPropertyAnimationTests, MovedFromAnimationsStaySilentAndOverwrittenOnesStop) {
    int firstCompletions = 0;
    int secondCompletions = 0;
    const auto first = countingGroup(firstCompletions);
    const auto second = countingGroup(secondCompletions);
    {
        KRPropertyAnimation original = scalarAnimation(first);
        KRPropertyAnimation moved(std::move(original));
        EXPECT_EQ(first->runningCount(), 1);
        KRPropertyAnimation other = scalarAnimation(second);
        other = std::move(moved); // supersedes the animation of the second group
        EXPECT_EQ(second->runningCount(), 0);
        EXPECT_EQ(first->runningCount(), 1);
    }
    // Only `other` still belonged to the first group; the moved-from objects said nothing.
    EXPECT_EQ(first->runningCount(), 0);
    first->close();
    second->close();
    EXPECT_EQ(firstCompletions, 1);
    EXPECT_EQ(secondCompletions, 1);
}

TEST(KRPropertyAnimationTests, ErasingFromAVectorStopsExactlyTheErasedAnimation) {
    int completions[3] = {0, 0, 0};
    std::vector<std::shared_ptr<KRAnimationGroup>> groups;
    std::vector<KRPropertyAnimation> animations;
    for (int& count : completions) {
        groups.push_back(countingGroup(count));
        groups.back()->animationDidStart(); // keeps it from completing while we watch the animation
        groups.back()->close();
        animations.push_back(scalarAnimation(groups.back()));
    }
    animations.erase(animations.begin());
    EXPECT_EQ(groups[0]->runningCount(), 1);
    EXPECT_EQ(groups[1]->runningCount(), 2);
    EXPECT_EQ(groups[2]->runningCount(), 2);
    animations.clear();
    EXPECT_EQ(groups[1]->runningCount(), 1);
    EXPECT_EQ(groups[2]->runningCount(), 1);
    EXPECT_EQ(completions[0] + completions[1] + completions[2], 0);
}
