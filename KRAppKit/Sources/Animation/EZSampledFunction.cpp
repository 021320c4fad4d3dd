#include "Animation/EZSampledFunction.h"

#include <algorithm>
#include <cmath>
#include <utility>

EZSampledFunction::EZSampledFunction(double duration, std::vector<double> samples)
    // A negative or NaN duration behaves as an instant change.
    : m_duration(duration > 0.0 ? duration : 0.0), m_samples(std::move(samples)) {}

double EZSampledFunction::valueAtTime(double t) const {
    if (m_duration <= 0.0 || m_samples.empty()) {
        return 1.0;
    }
    if (m_samples.size() == 1) {
        return m_samples.front();
    }
    // NaN lands on the start rather than poisoning the index arithmetic below.
    if (!(t > 0.0)) {
        return m_samples.front();
    }
    if (t >= m_duration) {
        return m_samples.back();
    }
    const double position = t / m_duration * static_cast<double>(m_samples.size() - 1);
    const auto index = std::min(static_cast<std::size_t>(position), m_samples.size() - 2);
    const double fraction = position - static_cast<double>(index);
    return m_samples[index] + (m_samples[index + 1] - m_samples[index]) * fraction;
}
