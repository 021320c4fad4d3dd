#pragma once

#include <memory>
#include <vector>

// A timing curve sampled at evenly spaced times over [0, duration]: maps elapsed time to progress
// (0 at the start, 1 at the end; a spring may overshoot in between).
class EZSampledFunction {
public:
    EZSampledFunction(double duration, std::vector<double> samples);

    double duration() const { return m_duration; }
    const std::vector<double>& samples() const { return m_samples; }
    // Progress at elapsed time t, linearly interpolated between samples; t is clamped into [0, duration].
    // A zero duration answers 1 for every t.
    double valueAtTime(double t) const;

private:
    double m_duration;
    std::vector<double> m_samples;
};

using EZSampledFunctionRef = std::shared_ptr<const EZSampledFunction>;
