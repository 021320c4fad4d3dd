#include "Animation/EZInterpolationFunctions.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <deque>
#include <functional>

namespace {

// Samples per second for smooth curves, with a floor so short animations still stay within 1e-3 of the
// exact curve, and a ceiling that bounds memory for very long ones.
constexpr double kSamplesPerSecond = 240.0;
constexpr std::size_t kMinimumCurveSamples = 101;
constexpr std::size_t kMaximumCurveSamples = 2001;
constexpr std::size_t kMaximumSpringSamples = 4001;
// How far a spring may still be from rest when its duration ends.
constexpr double kSpringSettleTolerance = 1e-3;

EZSampledFunctionRef zeroDurationFunction() {
    static const EZSampledFunctionRef function =
        std::make_shared<EZSampledFunction>(0.0, std::vector<double>{1.0});
    return function;
}

// Curves are immutable and views ask for the same few again and again (every row's check box wants the same
// ease-in-out), so the most recently made ones are kept and shared instead of being sampled anew.
class RecentCurves {
public:
    using Key = std::array<double, 6>; // kind, duration, and up to four shape parameters

    EZSampledFunctionRef find(const Key& key) const {
        for (const auto& [entryKey, function] : m_entries) {
            if (entryKey == key) {
                return function;
            }
        }
        return nullptr;
    }
    EZSampledFunctionRef insert(const Key& key, EZSampledFunctionRef function) {
        if (m_entries.size() == kCapacity) {
            m_entries.pop_front();
        }
        m_entries.emplace_back(key, function);
        return function;
    }

private:
    static constexpr std::size_t kCapacity = 32;
    std::deque<std::pair<Key, EZSampledFunctionRef>> m_entries;
};

RecentCurves& recentCurves() {
    static RecentCurves curves;
    return curves;
}

enum CurveKind { CubicBezierCurve = 1, SpringCurve = 2 };

std::size_t curveSampleCount(double duration) {
    const double wanted = std::ceil(duration * kSamplesPerSecond) + 1.0;
    if (!(wanted < static_cast<double>(kMaximumCurveSamples))) {
        return kMaximumCurveSamples;
    }
    return std::max(kMinimumCurveSamples, static_cast<std::size_t>(wanted));
}

EZSampledFunctionRef sample(double duration, std::size_t count, const std::function<double(double)>& curve) {
    std::vector<double> samples(count);
    for (std::size_t i = 0; i < count; ++i) {
        samples[i] = curve(static_cast<double>(i) / static_cast<double>(count - 1));
    }
    // The ends are exact so an animation starts and lands precisely on its values.
    samples.front() = 0.0;
    samples.back() = 1.0;
    return std::make_shared<EZSampledFunction>(duration, std::move(samples));
}

struct CubicBezier {
    double x1, y1, x2, y2;

    static double component(double t, double p1, double p2) {
        const double u = 1.0 - t;
        return 3.0 * u * u * t * p1 + 3.0 * u * t * t * p2 + t * t * t;
    }
    static double derivative(double t, double p1, double p2) {
        const double u = 1.0 - t;
        return 3.0 * u * u * p1 + 6.0 * u * t * (p2 - p1) + 3.0 * t * t * (1.0 - p2);
    }

    // The curve parameter whose x is the given time fraction: Newton's method converges fast on the
    // usual curves; bisection covers flat spots where the derivative vanishes.
    double parameterForX(double x) const {
        double t = x;
        for (int i = 0; i < 8; ++i) {
            const double error = component(t, x1, x2) - x;
            if (std::fabs(error) < 1e-9) {
                return t;
            }
            const double slope = derivative(t, x1, x2);
            if (std::fabs(slope) < 1e-9) {
                break;
            }
            t -= error / slope;
            if (t < 0.0 || t > 1.0) {
                break;
            }
        }
        double low = 0.0;
        double high = 1.0;
        t = x;
        for (int i = 0; i < 60; ++i) {
            const double value = component(t, x1, x2);
            if (std::fabs(value - x) < 1e-9) {
                break;
            }
            (value < x ? low : high) = t;
            t = 0.5 * (low + high);
        }
        return t;
    }

    double valueAt(double x) const { return component(parameterForX(x), y1, y2); }
};

// Distance from rest, 1 - x(t), of a unit spring released at 0 with no velocity, for natural frequency
// omega and damping ratio zeta.
double springOffset(double zeta, double omega, double t) {
    // Within a hair of critical the closed forms below lose precision; critical damping is the limit.
    if (std::fabs(zeta - 1.0) < 1e-6) {
        return std::exp(-omega * t) * (1.0 + omega * t);
    }
    if (zeta < 1.0) {
        const double damped = omega * std::sqrt(1.0 - zeta * zeta);
        return std::exp(-zeta * omega * t) *
               (std::cos(damped * t) + zeta * omega / damped * std::sin(damped * t));
    }
    const double root = std::sqrt(zeta * zeta - 1.0);
    const double slow = -omega * (zeta - root);
    const double fast = -omega * (zeta + root);
    return (fast * std::exp(slow * t) - slow * std::exp(fast * t)) / (fast - slow);
}

// The natural frequency (per unit time) at which the spring's envelope has shrunk to the tolerance after
// one time unit. Underdamped springs have a closed form; the others decay monotonically, so bisect.
double springFrequency(double zeta) {
    if (zeta < 1.0 - 1e-6) {
        return std::log(1.0 / (kSpringSettleTolerance * std::sqrt(1.0 - zeta * zeta))) / zeta;
    }
    double low = 0.0;
    double high = 1.0;
    while (springOffset(zeta, high, 1.0) > kSpringSettleTolerance && high < 1e7) {
        high *= 2.0;
    }
    for (int i = 0; i < 100; ++i) {
        const double middle = 0.5 * (low + high);
        (springOffset(zeta, middle, 1.0) > kSpringSettleTolerance ? low : high) = middle;
    }
    return high;
}

} // namespace

EZSampledFunctionRef EZInterpolationFunctions::linearWithDuration(double duration) {
    if (!(duration > 0.0)) {
        return zeroDurationFunction();
    }
    return std::make_shared<EZSampledFunction>(duration, std::vector<double>{0.0, 1.0});
}

EZSampledFunctionRef EZInterpolationFunctions::easeInOutWithDuration(double duration) {
    return cubicBezierWithDuration(duration, 0.42, 0.0, 0.58, 1.0);
}

EZSampledFunctionRef EZInterpolationFunctions::easeOutWithDuration(double duration) {
    return cubicBezierWithDuration(duration, 0.0, 0.0, 0.58, 1.0);
}

EZSampledFunctionRef EZInterpolationFunctions::easeInWithDuration(double duration) {
    return cubicBezierWithDuration(duration, 0.42, 0.0, 1.0, 1.0);
}

EZSampledFunctionRef EZInterpolationFunctions::springWithDampingRatio(double dampingRatio, double duration) {
    if (!(duration > 0.0)) {
        return zeroDurationFunction();
    }
    const RecentCurves::Key key{SpringCurve, duration, dampingRatio, 0.0, 0.0, 0.0};
    if (EZSampledFunctionRef known = recentCurves().find(key)) {
        return known;
    }
    // No damping would never settle; a tiny ratio still does, by the end.
    const double zeta = std::max(dampingRatio, 0.01);
    const double omega = springFrequency(zeta); // over the unit interval of normalised time
    // Fast oscillations need denser samples to keep the piecewise-linear error small.
    const double wanted = std::ceil(omega * 12.0) + 1.0;
    std::size_t count = curveSampleCount(duration);
    if (wanted > static_cast<double>(count)) {
        count = wanted < static_cast<double>(kMaximumSpringSamples) ? static_cast<std::size_t>(wanted)
                                                                    : kMaximumSpringSamples;
    }
    return recentCurves().insert(key, sample(duration, count, [zeta, omega](double fraction) {
                                     return 1.0 - springOffset(zeta, omega, fraction);
                                 }));
}

EZSampledFunctionRef EZInterpolationFunctions::cubicBezierWithDuration(double duration, double x1, double y1,
                                                                       double x2, double y2) {
    if (!(duration > 0.0)) {
        return zeroDurationFunction();
    }
    // x must stay monotonic for time to map to a single progress.
    const CubicBezier curve{std::clamp(x1, 0.0, 1.0), y1, std::clamp(x2, 0.0, 1.0), y2};
    const RecentCurves::Key key{CubicBezierCurve, duration, curve.x1, curve.y1, curve.x2, curve.y2};
    if (EZSampledFunctionRef known = recentCurves().find(key)) {
        return known;
    }
    return recentCurves().insert(key, sample(duration, curveSampleCount(duration),
                                             [curve](double fraction) { return curve.valueAt(fraction); }));
}
