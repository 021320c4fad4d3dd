#pragma once

#include <cstdint>
#include <vector>

// The monkey's source of choices: a small generator (SplitMix64) whose sequence depends on the seed alone,
// so that a seed names one run on every machine and library.
class KRMonkeyRandom {
public:
    explicit KRMonkeyRandom(std::uint64_t seed) : m_state(seed) {}

    std::uint64_t next();
    // An integer in [0, bound); 0 when bound is 0.
    std::uint64_t below(std::uint64_t bound);
    // An integer in [low, high].
    int between(int low, int high);
    // A number in [0, 1).
    double unit();
    bool chance(double probability) { return unit() < probability; }

    template <class T> const T& pick(const std::vector<T>& values) {
        return values[static_cast<std::size_t>(below(values.size()))];
    }

private:
    std::uint64_t m_state;
};
