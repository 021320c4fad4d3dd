#include "Animation/EZAnimationContext.h"

#include "Animation/EZInterpolationFunctions.h"
#include "Animation/KRAnimationDurationMultiplier.h"

#include <gtest/gtest.h>

namespace {

struct MultiplierScope {
    explicit MultiplierScope(double value) { KRAnimationDurationMultiplier = value; }
    ~MultiplierScope() { KRAnimationDurationMultiplier = 1.0; }
};

} // namespace

TEST(EZAnimationContextTests, DefaultCurveIsAQuarterSecondEaseInOutScaledByTheMultiplier) {
    const EZAnimationContext context;
    ASSERT_TRUE(context.interpolationFunction());
    EXPECT_DOUBLE_EQ(context.interpolationFunction()->duration(), 0.25);
    EXPECT_NEAR(context.interpolationFunction()->valueAtTime(0.125), 0.5, 1e-3);
    EXPECT_LT(context.interpolationFunction()->valueAtTime(0.05), 0.2);

    const MultiplierScope slow(4.0);
    EXPECT_DOUBLE_EQ(EZAnimationContext().interpolationFunction()->duration(), 1.0);
}

TEST(EZAnimationContextTests, KeyCurveOverridesTheGeneralOneForThatKeyOnly) {
    EZAnimationContext context;
    const auto linear = EZInterpolationFunctions::linearWithDuration(2.0);
    const auto easeOut = EZInterpolationFunctions::easeOutWithDuration(0.5);
    context.setInterpolationFunction(linear);
    context.setInterpolationFunctionForKey(QStringLiteral("opacity"), easeOut);
    EXPECT_EQ(context.interpolationFunctionForKey(QStringLiteral("opacity")), easeOut);
    EXPECT_EQ(context.interpolationFunctionForKey(QStringLiteral("frameSize")), linear);

    // A later general curve does not replace an explicit key curve; clearing the key falls back.
    const auto easeIn = EZInterpolationFunctions::easeInWithDuration(1.0);
    context.setInterpolationFunction(easeIn);
    EXPECT_EQ(context.interpolationFunctionForKey(QStringLiteral("opacity")), easeOut);
    EXPECT_EQ(context.interpolationFunctionForKey(QStringLiteral("frameSize")), easeIn);
    context.setInterpolationFunctionForKey(QStringLiteral("opacity"), nullptr);
    EXPECT_EQ(context.interpolationFunctionForKey(QStringLiteral("opacity")), easeIn);
}

TEST(EZAnimationContextTests, AnimatedFlagComesFromTheConstructorAndCanChange) {
    EZAnimationContext context(false);
    EXPECT_FALSE(context.isAnimated());
    context.setAnimated(true);
    EXPECT_TRUE(context.isAnimated());
    EXPECT_TRUE(EZAnimationContext().isAnimated());
}
