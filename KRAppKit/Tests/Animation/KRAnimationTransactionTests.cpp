#include "Animation/KRAnimationTransaction.h"

#include "Animation/EZInterpolationFunctions.h"
#include "Animation/KRAnimationDurationMultiplier.h"
#include "Animation/KRPropertyAnimation.h"

#include <gtest/gtest.h>

#include <optional>
#include <stdexcept>

namespace {

struct MultiplierScope {
    explicit MultiplierScope(double value) { KRAnimationDurationMultiplier = value; }
    ~MultiplierScope() { KRAnimationDurationMultiplier = 1.0; }
};

} // namespace

TEST(KRAnimationTransactionTests, OutsideAnyBlockNothingAnimates) {
    EXPECT_EQ(KRAnimationTransaction::depth(), 0);
    EXPECT_EQ(KRAnimationTransaction::functionForKey("opacity"), nullptr);
    EXPECT_EQ(KRAnimationTransaction::currentGroup(), nullptr);
}

TEST(KRAnimationTransactionTests, AnimatedBlockOffersItsCurvesAndItsGroup) {
    const auto linear = EZInterpolationFunctions::linearWithDuration(1.0);
    bool ran = false;
    KRAnimationTransaction::perform(true, [&](EZAnimationContext& context) {
        ran = true;
        EXPECT_EQ(KRAnimationTransaction::depth(), 1);
        ASSERT_TRUE(KRAnimationTransaction::functionForKey("scale"));
        EXPECT_DOUBLE_EQ(KRAnimationTransaction::functionForKey("scale")->duration(), 0.25);
        context.setInterpolationFunctionForKey(QStringLiteral("opacity"), linear);
        EXPECT_EQ(KRAnimationTransaction::functionForKey("opacity"), linear);
        EXPECT_NE(KRAnimationTransaction::currentGroup(), nullptr);
    });
    EXPECT_TRUE(ran);
    EXPECT_EQ(KRAnimationTransaction::depth(), 0);
}

TEST(KRAnimationTransactionTests, OnlyTheInnermostBlockDecides) {
    KRAnimationTransaction::perform(true, [](EZAnimationContext&) {
        KRAnimationTransaction::performWithoutAnimation([] {
            EXPECT_EQ(KRAnimationTransaction::depth(), 2);
            EXPECT_EQ(KRAnimationTransaction::functionForKey("opacity"), nullptr);
            EXPECT_EQ(KRAnimationTransaction::currentGroup(), nullptr);
            // An animated block inside a non-animated one animates again.
            KRAnimationTransaction::perform(true, [](EZAnimationContext&) {
                EXPECT_NE(KRAnimationTransaction::functionForKey("opacity"), nullptr);
            });
        });
        EXPECT_NE(KRAnimationTransaction::functionForKey("opacity"), nullptr);
        KRAnimationTransaction::perform(false, [](EZAnimationContext&) {
            EXPECT_EQ(KRAnimationTransaction::functionForKey("opacity"), nullptr);
            EXPECT_EQ(KRAnimationTransaction::currentGroup(), nullptr);
        });
        KRAnimationTransaction::performNonAnimated(
            false, [] { EXPECT_NE(KRAnimationTransaction::functionForKey("opacity"), nullptr); });
        KRAnimationTransaction::performNonAnimated(
            true, [] { EXPECT_EQ(KRAnimationTransaction::functionForKey("opacity"), nullptr); });
    });
}

TEST(KRAnimationTransactionTests, ZeroDurationCurvesMeanTheChangeHappensAtOnce) {
    KRAnimationTransaction::perform(true, [](EZAnimationContext& context) {
        context.setInterpolationFunctionForKey(QStringLiteral("scale"),
                                               EZInterpolationFunctions::linearWithDuration(0.0));
        EXPECT_EQ(KRAnimationTransaction::functionForKey("scale"), nullptr);
        EXPECT_NE(KRAnimationTransaction::functionForKey("opacity"), nullptr);
    });

    const MultiplierScope instant(0.0);
    int completions = 0;
    KRAnimationTransaction::perform(
        true,
        [](EZAnimationContext&) { EXPECT_EQ(KRAnimationTransaction::functionForKey("opacity"), nullptr); },
        [&] { ++completions; });
    EXPECT_EQ(completions, 1);
}

TEST(KRAnimationTransactionTests, CompletionWaitsForTheAnimationsTheBlockStarted) {
    int completions = 0;
    std::optional<KRPropertyAnimation> animation;
    KRAnimationTransaction::perform(
        true,
        [&](EZAnimationContext&) {
            animation.emplace(KRAnimatableValue::fromDouble(0.0), KRAnimatableValue::fromDouble(1.0), 0.0,
                              KRAnimationTransaction::functionForKey("opacity"),
                              KRAnimationTransaction::currentGroup());
        },
        [&] {
            ++completions;
            // The block's frame is gone by the time its completion runs.
            EXPECT_EQ(KRAnimationTransaction::depth(), 0);
        });
    EXPECT_EQ(completions, 0);
    animation.reset();
    EXPECT_EQ(completions, 1);

    KRAnimationTransaction::perform(
        false, [](EZAnimationContext&) {}, [&] { ++completions; });
    EXPECT_EQ(completions, 2);
}

TEST(KRAnimationTransactionTests, ThrowingBlocksStillPopTheirFrame) {
    EXPECT_THROW(KRAnimationTransaction::perform(
                     true, [](EZAnimationContext&) { throw std::runtime_error("block failed"); }),
                 std::runtime_error);
    EXPECT_EQ(KRAnimationTransaction::depth(), 0);
    EXPECT_THROW(
        KRAnimationTransaction::performWithoutAnimation([] { throw std::runtime_error("block failed"); }),
        std::runtime_error);
    EXPECT_EQ(KRAnimationTransaction::depth(), 0);
    EXPECT_EQ(KRAnimationTransaction::functionForKey("opacity"), nullptr);
}
