#include "Foundation/KRRange.h"

#include <gtest/gtest.h>

TEST(KRRangeTests, MaxRangeIsLocationPlusLength) {
    EXPECT_EQ(KRMaxRange(KRMakeRange(3, 4)), 7u);
    EXPECT_EQ(KRMaxRange(KRMakeRange(5, 0)), 5u);
}

TEST(KRRangeTests, LocationInRangeIsHalfOpen) {
    const KRRange range = KRMakeRange(3, 4);
    EXPECT_FALSE(KRLocationInRange(2, range));
    EXPECT_TRUE(KRLocationInRange(3, range));
    EXPECT_TRUE(KRLocationInRange(6, range));
    EXPECT_FALSE(KRLocationInRange(7, range));
    EXPECT_FALSE(KRLocationInRange(3, KRMakeRange(3, 0)));
}

TEST(KRRangeTests, IntersectionOfOverlappingRangesIsTheCommonPart) {
    EXPECT_EQ(KRIntersectionRange(KRMakeRange(0, 10), KRMakeRange(5, 10)), KRMakeRange(5, 5));
    EXPECT_EQ(KRIntersectionRange(KRMakeRange(2, 3), KRMakeRange(0, 10)), KRMakeRange(2, 3));
}

TEST(KRRangeTests, IntersectionOfDisjointOrTouchingRangesIsEmptyAtZero) {
    EXPECT_EQ(KRIntersectionRange(KRMakeRange(0, 3), KRMakeRange(10, 3)), KRMakeRange(0, 0));
    EXPECT_EQ(KRIntersectionRange(KRMakeRange(0, 3), KRMakeRange(3, 3)), KRMakeRange(0, 0));
}

TEST(KRRangeTests, UnionSpansBothRangesAndTheGapBetween) {
    EXPECT_EQ(KRUnionRange(KRMakeRange(2, 2), KRMakeRange(8, 2)), KRMakeRange(2, 8));
    EXPECT_EQ(KRUnionRange(KRMakeRange(5, 10), KRMakeRange(0, 3)), KRMakeRange(0, 15));
}

TEST(KRRangeTests, StringFromRangeUsesBraces) {
    EXPECT_EQ(KRStringFromRange(KRMakeRange(3, 4)), QStringLiteral("{3, 4}"));
    EXPECT_TRUE(KREqualRanges(KRMakeRange(1, 2), KRMakeRange(1, 2)));
    EXPECT_FALSE(KREqualRanges(KRMakeRange(1, 2), KRMakeRange(1, 3)));
}

TEST(KRRangeTests, NotFoundIsTheLargestSignedValue) {
    EXPECT_EQ(KRNotFound, 9223372036854775807ull);
    EXPECT_EQ(static_cast<KRInteger>(KRNotFound), std::numeric_limits<KRInteger>::max());
}
