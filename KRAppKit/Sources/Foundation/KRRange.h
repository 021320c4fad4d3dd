#pragma once

#include "Foundation/KRTypes.h"

#include <QString>

// A run of characters or indexes: {location, length}.
struct KRRange {
    KRUInteger location = 0;
    KRUInteger length = 0;

    friend bool operator==(const KRRange&, const KRRange&) = default;
};

inline KRRange KRMakeRange(KRUInteger location, KRUInteger length) {
    return KRRange{location, length};
}
inline KRUInteger KRMaxRange(KRRange range) {
    return range.location + range.length;
}
inline bool KRLocationInRange(KRUInteger location, KRRange range) {
    return location >= range.location && location - range.location < range.length;
}
inline bool KREqualRanges(KRRange a, KRRange b) {
    return a == b;
}
// Empty result ({0, 0}) when the ranges do not overlap.
KRRange KRIntersectionRange(KRRange a, KRRange b);
KRRange KRUnionRange(KRRange a, KRRange b);
// "{location, length}"
QString KRStringFromRange(KRRange range);
