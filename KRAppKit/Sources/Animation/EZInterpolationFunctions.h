#pragma once

#include "Animation/EZSampledFunction.h"

// The standard timing curves. Durations are taken as given; callers multiply by
// KRAnimationDurationMultiplier where they choose a duration.
class EZInterpolationFunctions {
public:
    static EZSampledFunctionRef linearWithDuration(double duration);
    // Cubic Bézier (0.42, 0, 0.58, 1).
    static EZSampledFunctionRef easeInOutWithDuration(double duration);
    // Cubic Bézier (0, 0, 0.58, 1).
    static EZSampledFunctionRef easeOutWithDuration(double duration);
    // Cubic Bézier (0.42, 0, 1, 1).
    static EZSampledFunctionRef easeInWithDuration(double duration);
    // A damped spring that settles at 1 by the end of duration; a ratio below 1 overshoots.
    static EZSampledFunctionRef springWithDampingRatio(double dampingRatio, double duration);
    static EZSampledFunctionRef cubicBezierWithDuration(double duration, double x1, double y1, double x2,
                                                        double y2);
};
