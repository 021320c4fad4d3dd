#pragma once

#include <cstdint>
#include <limits>

using KRUInteger = std::uint64_t;
using KRInteger = std::int64_t;

// The absence of an index: the largest signed 64-bit value, so it survives a round trip through either type.
inline constexpr KRUInteger KRNotFound = static_cast<KRUInteger>(std::numeric_limits<KRInteger>::max());
inline constexpr KRUInteger KRUIntegerMax = std::numeric_limits<KRUInteger>::max();
