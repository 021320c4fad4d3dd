#include "Animation/EZInterpolationFunctions.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>

namespace {

// An independent, slow and precise evaluation of a cubic Bézier timing curve: plain bisection on x.
double exactBezier(double x, double x1, double y1, double x2, double y2) {
    const auto component = [](double t, double p1, double p2) {
        const double u = 1.0 - t;
        return 3.0 * u * u * t * p1 + 3.0 * u * t * t * p2 + t * t * t;
    };
    double low = 0.0;
    double high = 1.0;
    for (int i = 0; i < 200; ++i) {
        const double middle = 0.5 * (low + high);
        (component(middle, x1, x2) < x ? low : high) = middle;
    }
    return component(0.5 * (low + high), y1, y2);
}

} // namespace

TEST(EZInterpolationFunctionsTests, LinearNeedsTwoSamplesAndIsProportional) {
    const auto function = EZInterpolationFunctions::linearWithDuration(2.0);
    EXPECT_EQ(function->samples().size(), 2u);
    EXPECT_DOUBLE_EQ(function->duration(), 2.0);
    EXPECT_DOUBLE_EQ(function->valueAtTime(0.5), 0.25);
    EXPECT_DOUBLE_EQ(function->valueAtTime(1.5), 0.75);
}

TEST(EZInterpolationFunctionsTests, BezierCurvesStayWithinToleranceOfTheExactCurve) {
    struct Curve {
        EZSampledFunctionRef (*make)(double);
        double x1, y1, x2, y2;
    };
    const Curve curves[] = {
        {&EZInterpolationFunctions::easeInOutWithDuration, 0.42, 0.0, 0.58, 1.0},
        {&EZInterpolationFunctions::easeOutWithDuration, 0.0, 0.0, 0.58, 1.0},
        {&EZInterpolationFunctions::easeInWithDuration, 0.42, 0.0, 1.0, 1.0},
    };
    for (const Curve& curve : curves) {
        for (double duration : {0.02, 0.25, 1.0, 30.0}) {
            const auto function = curve.make(duration);
            ASSERT_DOUBLE_EQ(function->duration(), duration);
            EXPECT_DOUBLE_EQ(function->samples().front(), 0.0);
            EXPECT_DOUBLE_EQ(function->samples().back(), 1.0);
            double worst = 0.0;
            for (int i = 0; i <= 997; ++i) {
                const double fraction = i / 997.0;
                const double exact = exactBezier(fraction, curve.x1, curve.y1, curve.x2, curve.y2);
                worst = std::max(worst, std::fabs(function->valueAtTime(fraction * duration) - exact));
            }
            EXPECT_LT(worst, 1e-3) << "curve (" << curve.x1 << ", " << curve.x2 << ") over " << duration
                                   << " s";
        }
    }
}

TEST(EZInterpolationFunctionsTests, EaseCurvesHaveTheirCharacteristicShape) {
    const auto easeIn = EZInterpolationFunctions::easeInWithDuration(1.0);
    const auto easeOut = EZInterpolationFunctions::easeOutWithDuration(1.0);
    const auto easeInOut = EZInterpolationFunctions::easeInOutWithDuration(1.0);
    EXPECT_LT(easeIn->valueAtTime(0.25), 0.15);
    EXPECT_GT(easeOut->valueAtTime(0.25), 0.35);
    EXPECT_NEAR(easeInOut->valueAtTime(0.5), 0.5, 1e-3);
    EXPECT_NEAR(easeInOut->valueAtTime(0.2) + easeInOut->valueAtTime(0.8), 1.0, 1e-3);
    // Progress never goes backwards on these curves.
    for (const auto& function : {easeIn, easeOut, easeInOut}) {
        EXPECT_TRUE(std::is_sorted(function->samples().begin(), function->samples().end()));
    }
}

TEST(EZInterpolationFunctionsTests, UnderdampedSpringOvershootsThenSettlesAtOne) {
    const auto spring = EZInterpolationFunctions::springWithDampingRatio(0.5, 1.0);
    ASSERT_GE(spring->samples().size(), 2u);
    EXPECT_DOUBLE_EQ(spring->samples().front(), 0.0);
    EXPECT_DOUBLE_EQ(spring->samples().back(), 1.0);
    const double peak = *std::max_element(spring->samples().begin(), spring->samples().end());
    EXPECT_GT(peak, 1.05);
    // Settled well before the end: the tail is within a few thousandths of rest.
    for (double t = 0.9; t <= 1.0; t += 0.01) {
        EXPECT_NEAR(spring->valueAtTime(t), 1.0, 5e-3) << "at " << t;
    }
}

TEST(EZInterpolationFunctionsTests, CriticalAndOverdampedSpringsRiseWithoutOvershoot) {
    for (double ratio : {1.0, 2.5}) {
        const auto spring = EZInterpolationFunctions::springWithDampingRatio(ratio, 0.5);
        EXPECT_DOUBLE_EQ(spring->duration(), 0.5);
        EXPECT_DOUBLE_EQ(spring->samples().front(), 0.0);
        EXPECT_DOUBLE_EQ(spring->samples().back(), 1.0);
        EXPECT_TRUE(std::is_sorted(spring->samples().begin(), spring->samples().end())) << ratio;
        EXPECT_GT(spring->valueAtTime(0.25), 0.5) << ratio;
        EXPECT_NEAR(spring->valueAtTime(0.49), 1.0, 5e-3) << ratio;
    }
}

TEST(EZInterpolationFunctionsTests, NonPositiveDurationsGiveInstantFunctions) {
    const EZSampledFunctionRef functions[] = {
        EZInterpolationFunctions::linearWithDuration(0.0),
        EZInterpolationFunctions::easeInOutWithDuration(-1.0),
        EZInterpolationFunctions::easeOutWithDuration(0.0),
        EZInterpolationFunctions::easeInWithDuration(-0.5),
        EZInterpolationFunctions::springWithDampingRatio(0.5, 0.0),
        EZInterpolationFunctions::cubicBezierWithDuration(-2.0, 0.1, 0.2, 0.3, 0.4),
    };
    for (const auto& function : functions) {
        ASSERT_TRUE(function);
        EXPECT_DOUBLE_EQ(function->duration(), 0.0);
        EXPECT_DOUBLE_EQ(function->valueAtTime(0.0), 1.0);
    }
}
