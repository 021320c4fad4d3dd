#include "Animation/EZSampledFunction.h"

#include <gtest/gtest.h>

TEST(EZSampledFunctionTests, InterpolatesLinearlyBetweenEvenlySpacedSamples) {
    const EZSampledFunction function(2.0, {0.0, 0.8, 1.0});
    EXPECT_DOUBLE_EQ(function.valueAtTime(0.0), 0.0);
    EXPECT_DOUBLE_EQ(function.valueAtTime(0.5), 0.4);
    EXPECT_DOUBLE_EQ(function.valueAtTime(1.0), 0.8);
    EXPECT_DOUBLE_EQ(function.valueAtTime(1.5), 0.9);
    EXPECT_DOUBLE_EQ(function.valueAtTime(2.0), 1.0);
}

TEST(EZSampledFunctionTests, ClampsTimesOutsideTheDuration) {
    const EZSampledFunction function(1.0, {0.0, 0.5, 1.0});
    EXPECT_DOUBLE_EQ(function.valueAtTime(-3.0), 0.0);
    EXPECT_DOUBLE_EQ(function.valueAtTime(7.0), 1.0);
}

TEST(EZSampledFunctionTests, ZeroOrNegativeDurationAnswersOneEverywhere) {
    const EZSampledFunction instant(0.0, {0.0, 0.3});
    EXPECT_DOUBLE_EQ(instant.valueAtTime(-1.0), 1.0);
    EXPECT_DOUBLE_EQ(instant.valueAtTime(0.0), 1.0);
    EXPECT_DOUBLE_EQ(instant.valueAtTime(10.0), 1.0);

    const EZSampledFunction negative(-2.0, {0.0, 1.0});
    EXPECT_DOUBLE_EQ(negative.duration(), 0.0);
    EXPECT_DOUBLE_EQ(negative.valueAtTime(0.0), 1.0);
}
