#include "KRMonkeyRandom.h"

std::uint64_t KRMonkeyRandom::next() {
    m_state += 0x9E3779B97F4A7C15ull;
    std::uint64_t z = m_state;
    z = (z ^ (z >> 30)) * 0xBF58476D1CE4E5B9ull;
    z = (z ^ (z >> 27)) * 0x94D049BB133111EBull;
    return z ^ (z >> 31);
}

std::uint64_t KRMonkeyRandom::below(std::uint64_t bound) {
    if (bound == 0) {
        return 0;
    }
    // Rejects the top sliver of the range so every value is equally likely.
    const std::uint64_t limit = UINT64_MAX - UINT64_MAX % bound;
    std::uint64_t value = next();
    while (value >= limit) {
        value = next();
    }
    return value % bound;
}

int KRMonkeyRandom::between(int low, int high) {
    if (high <= low) {
        return low;
    }
    const auto span = static_cast<std::uint64_t>(static_cast<std::int64_t>(high) - low + 1);
    return static_cast<int>(low + static_cast<std::int64_t>(below(span)));
}

double KRMonkeyRandom::unit() {
    // The top 53 bits fill a double's mantissa exactly.
    return static_cast<double>(next() >> 11) * 0x1.0p-53;
}
