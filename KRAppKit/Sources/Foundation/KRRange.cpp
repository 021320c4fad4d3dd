#include "Foundation/KRRange.h"

#include <algorithm>

KRRange KRIntersectionRange(KRRange a, KRRange b) {
    const KRUInteger location = std::max(a.location, b.location);
    const KRUInteger end = std::min(KRMaxRange(a), KRMaxRange(b));
    if (end <= location) {
        return KRRange{};
    }
    return KRRange{location, end - location};
}

KRRange KRUnionRange(KRRange a, KRRange b) {
    const KRUInteger location = std::min(a.location, b.location);
    const KRUInteger end = std::max(KRMaxRange(a), KRMaxRange(b));
    return KRRange{location, end - location};
}

QString KRStringFromRange(KRRange range) {
    return QStringLiteral("{%1, %2}").arg(range.location).arg(range.length);
}
