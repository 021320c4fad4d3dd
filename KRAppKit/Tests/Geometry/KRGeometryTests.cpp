#include "Geometry/KRGeometry.h"

#include <QVariant>

#include <gtest/gtest.h>

#include <cmath>
#include <limits>

namespace {

constexpr double kInfinity = std::numeric_limits<double>::infinity();

} // namespace

TEST(KRGeometryTests, NullRectHasInfiniteOriginAndZeroSize) {
    EXPECT_EQ(KRRectNull.origin.x, kInfinity);
    EXPECT_EQ(KRRectNull.origin.y, kInfinity);
    EXPECT_EQ(KRRectNull.size, KRSizeZero);
    EXPECT_TRUE(KRRectIsNull(KRRectNull));
    EXPECT_TRUE(KRRectIsNull(KRRectMake(0, kInfinity, 5, 5)));
    EXPECT_FALSE(KRRectIsNull(KRRectZero));
    EXPECT_TRUE(KRRectIsEmpty(KRRectNull));
}

TEST(KRGeometryTests, EmptyMeansNullOrZeroWidthOrHeight) {
    EXPECT_TRUE(KRRectIsEmpty(KRRectZero));
    EXPECT_TRUE(KRRectIsEmpty(KRRectMake(0, 0, 10, 0)));
    EXPECT_TRUE(KRRectIsEmpty(KRRectMake(0, 0, 0, 10)));
    EXPECT_FALSE(KRRectIsEmpty(KRRectMake(0, 0, -3, 2)));
}

TEST(KRGeometryTests, StandardizeFlipsNegativeSizes) {
    EXPECT_EQ(KRRectStandardize(KRRectMake(10, 20, -4, -6)), KRRectMake(6, 14, 4, 6));
    EXPECT_EQ(KRRectStandardize(KRRectMake(1, 2, 3, 4)), KRRectMake(1, 2, 3, 4));
}

TEST(KRGeometryTests, ReadersStandardiseNegativeSizes) {
    const KRRect rect = KRRectMake(10, 20, -4, -6);
    EXPECT_DOUBLE_EQ(KRRectGetMinX(rect), 6);
    EXPECT_DOUBLE_EQ(KRRectGetMidX(rect), 8);
    EXPECT_DOUBLE_EQ(KRRectGetMaxX(rect), 10);
    EXPECT_DOUBLE_EQ(KRRectGetMinY(rect), 14);
    EXPECT_DOUBLE_EQ(KRRectGetMidY(rect), 17);
    EXPECT_DOUBLE_EQ(KRRectGetMaxY(rect), 20);
    EXPECT_DOUBLE_EQ(KRRectGetWidth(rect), 4);
    EXPECT_DOUBLE_EQ(KRRectGetHeight(rect), 6);
}

TEST(KRGeometryTests, ReadersOfTheNullRectAnswerInfinity) {
    EXPECT_EQ(KRRectGetMinX(KRRectNull), kInfinity);
    EXPECT_EQ(KRRectGetMaxY(KRRectNull), kInfinity);
    EXPECT_EQ(KRRectGetMidX(KRRectNull), kInfinity);
}

TEST(KRGeometryTests, ContainsPointIncludesMinEdges) {
    const KRRect rect = KRRectMake(0, 0, 10, 10);
    EXPECT_TRUE(KRRectContainsPoint(rect, KRPointMake(0, 0)));
    EXPECT_TRUE(KRRectContainsPoint(rect, KRPointMake(0, 5)));
    EXPECT_TRUE(KRRectContainsPoint(rect, KRPointMake(9.999, 9.999)));
}

TEST(KRGeometryTests, ContainsPointExcludesMaxEdges) {
    const KRRect rect = KRRectMake(0, 0, 10, 10);
    EXPECT_FALSE(KRRectContainsPoint(rect, KRPointMake(10, 5)));
    EXPECT_FALSE(KRRectContainsPoint(rect, KRPointMake(5, 10)));
    EXPECT_FALSE(KRRectContainsPoint(rect, KRPointMake(-0.001, 5)));
}

TEST(KRGeometryTests, ContainsPointHandlesNegativeSizeZeroSizeAndNull) {
    EXPECT_TRUE(KRRectContainsPoint(KRRectMake(10, 10, -10, -10), KRPointMake(0, 0)));
    EXPECT_FALSE(KRRectContainsPoint(KRRectMake(10, 10, -10, -10), KRPointMake(10, 10)));
    EXPECT_FALSE(KRRectContainsPoint(KRRectMake(5, 5, 0, 0), KRPointMake(5, 5)));
    EXPECT_FALSE(KRRectContainsPoint(KRRectNull, KRPointMake(kInfinity, kInfinity)));
}

TEST(KRGeometryTests, ContainsRectAllowsTouchingEdges) {
    const KRRect outer = KRRectMake(0, 0, 10, 10);
    EXPECT_TRUE(KRRectContainsRect(outer, outer));
    EXPECT_TRUE(KRRectContainsRect(outer, KRRectMake(5, 5, 5, 5)));
    EXPECT_TRUE(KRRectContainsRect(outer, KRRectMake(3, 3, 0, 0)));
    EXPECT_FALSE(KRRectContainsRect(outer, KRRectMake(5, 5, 6, 5)));
    EXPECT_FALSE(KRRectContainsRect(outer, KRRectNull));
    EXPECT_FALSE(KRRectContainsRect(KRRectNull, outer));
}

TEST(KRGeometryTests, IntersectsRectNeedsPositiveAreaOverlap) {
    const KRRect rect = KRRectMake(0, 0, 10, 10);
    EXPECT_TRUE(KRRectIntersectsRect(rect, rect));
    EXPECT_TRUE(KRRectIntersectsRect(rect, KRRectMake(9, 9, 5, 5)));
    EXPECT_FALSE(KRRectIntersectsRect(rect, KRRectMake(10, 0, 5, 5)));
    EXPECT_FALSE(KRRectIntersectsRect(rect, KRRectMake(0, 10, 5, 5)));
    EXPECT_FALSE(KRRectIntersectsRect(rect, KRRectMake(20, 20, 5, 5)));
}

TEST(KRGeometryTests, ZeroSizeRectsNeverIntersect) {
    const KRRect point = KRRectMake(5, 5, 0, 0);
    const KRRect line = KRRectMake(5, 0, 0, 10);
    EXPECT_FALSE(KRRectIntersectsRect(point, point));
    EXPECT_FALSE(KRRectIntersectsRect(line, line));
    EXPECT_FALSE(KRRectIntersectsRect(KRRectMake(0, 0, 10, 10), line));
    EXPECT_FALSE(KRRectIntersectsRect(KRRectNull, KRRectMake(0, 0, 10, 10)));
}

TEST(KRGeometryTests, IntersectionIsTheCommonPart) {
    EXPECT_EQ(KRRectIntersection(KRRectMake(0, 0, 10, 10), KRRectMake(5, 5, 10, 10)), KRRectMake(5, 5, 5, 5));
    EXPECT_EQ(KRRectIntersection(KRRectMake(10, 10, -10, -10), KRRectMake(5, 5, 10, 10)),
              KRRectMake(5, 5, 5, 5));
}

TEST(KRGeometryTests, IntersectionOfDisjointRectsIsNull) {
    EXPECT_TRUE(KRRectIsNull(KRRectIntersection(KRRectMake(0, 0, 10, 10), KRRectMake(11, 0, 5, 5))));
    EXPECT_TRUE(KRRectIsNull(KRRectIntersection(KRRectMake(0, 0, 10, 10), KRRectNull)));
}

TEST(KRGeometryTests, IntersectionOfTouchingRectsIsDegenerate) {
    const KRRect touching = KRRectIntersection(KRRectMake(0, 0, 10, 10), KRRectMake(10, 2, 5, 5));
    EXPECT_FALSE(KRRectIsNull(touching));
    EXPECT_EQ(touching, KRRectMake(10, 2, 0, 5));
}

TEST(KRGeometryTests, IntersectionWithAZeroSizeRectInsideGivesThatRect) {
    EXPECT_EQ(KRRectIntersection(KRRectMake(0, 0, 10, 10), KRRectMake(4, 4, 0, 0)), KRRectMake(4, 4, 0, 0));
}

TEST(KRGeometryTests, UnionSpansBothRectsAndIgnoresNull) {
    EXPECT_EQ(KRRectUnion(KRRectMake(0, 0, 1, 1), KRRectMake(5, 5, 1, 1)), KRRectMake(0, 0, 6, 6));
    EXPECT_EQ(KRRectUnion(KRRectNull, KRRectMake(2, 3, 4, 5)), KRRectMake(2, 3, 4, 5));
    EXPECT_EQ(KRRectUnion(KRRectNull, KRRectMake(6, 8, -4, -5)), KRRectMake(2, 3, 4, 5));
    EXPECT_EQ(KRRectUnion(KRRectMake(2, 3, -4, 5), KRRectNull), KRRectMake(-2, 3, 4, 5));
    EXPECT_TRUE(KRRectIsNull(KRRectUnion(KRRectNull, KRRectNull)));
}

TEST(KRGeometryTests, InsetMovesEdgesInwardOrOutward) {
    EXPECT_EQ(KRRectInset(KRRectMake(0, 0, 10, 10), 2, 3), KRRectMake(2, 3, 6, 4));
    EXPECT_EQ(KRRectInset(KRRectMake(0, 0, 10, 10), -1, -1), KRRectMake(-1, -1, 12, 12));
    EXPECT_EQ(KRRectInset(KRRectMake(0, 0, 10, 10), 5, 5), KRRectMake(5, 5, 0, 0));
}

TEST(KRGeometryTests, InsetBeyondTheSizeGivesNull) {
    EXPECT_TRUE(KRRectIsNull(KRRectInset(KRRectMake(0, 0, 10, 10), 6, 0)));
    EXPECT_TRUE(KRRectIsNull(KRRectInset(KRRectMake(0, 0, 10, 10), 0, 5.5)));
    EXPECT_TRUE(KRRectIsNull(KRRectInset(KRRectNull, -5, -5)));
}

TEST(KRGeometryTests, EdgeInsetsMoveEachEdgeSeparately) {
    EXPECT_EQ(KRRectInsetByEdgeInsets(KRRectMake(0, 0, 100, 50), KREdgeInsetsMake(1, 2, 3, 4)),
              KRRectMake(2, 1, 94, 46));
    EXPECT_EQ(KRRectInsetByEdgeInsets(KRRectMake(0, 0, 10, 10), KREdgeInsetsZero), KRRectMake(0, 0, 10, 10));
}

TEST(KRGeometryTests, OffsetAndIntegral) {
    EXPECT_EQ(KRRectOffset(KRRectMake(1, 2, 3, 4), 10, -2), KRRectMake(11, 0, 3, 4));
    EXPECT_TRUE(KRRectIsNull(KRRectOffset(KRRectNull, 1, 1)));
    EXPECT_EQ(KRRectIntegral(KRRectMake(0.5, 1.2, 2.0, 2.9)), KRRectMake(0, 1, 3, 4));
    EXPECT_EQ(KRRectIntegral(KRRectMake(-0.5, -1.5, 1, 1)), KRRectMake(-1, -2, 2, 2));
}

TEST(KRGeometryTests, EqualToRectComparesStandardisedRects) {
    EXPECT_TRUE(KRRectEqualToRect(KRRectMake(10, 10, -10, -10), KRRectMake(0, 0, 10, 10)));
    EXPECT_FALSE(KRRectEqualToRect(KRRectMake(0, 0, 10, 10), KRRectMake(0, 0, 10, 11)));
    EXPECT_TRUE(KRRectEqualToRect(KRRectNull, KRRectNull));
    EXPECT_TRUE(KRRectEqualToRect(KRRectNull, KRRectMake(kInfinity, kInfinity, 0, 0)));
    EXPECT_FALSE(KRRectEqualToRect(KRRectNull, KRRectZero));
}

TEST(KRGeometryTests, PointAndSizeEquality) {
    EXPECT_TRUE(KRPointEqualToPoint(KRPointMake(1, 2), KRPointMake(1, 2)));
    EXPECT_FALSE(KRPointEqualToPoint(KRPointMake(1, 2), KRPointMake(2, 1)));
    EXPECT_TRUE(KRSizeEqualToSize(KRSizeMake(3, 4), KRSizeMake(3, 4)));
    EXPECT_FALSE(KRSizeEqualToSize(KRSizeMake(3, 4), KRSizeMake(3, 5)));
}

TEST(KRGeometryTests, PointEqualityWithinDeltaIncludesTheBoundary) {
    EXPECT_TRUE(KRPointEqualToPointWithinDelta(KRPointMake(0, 0), KRPointMake(0.5, -0.5), 0.5));
    EXPECT_FALSE(KRPointEqualToPointWithinDelta(KRPointMake(0, 0), KRPointMake(0.5, 0.51), 0.5));
    EXPECT_TRUE(KRPointEqualToPointWithinDelta(KRPointMake(1, 1), KRPointMake(1, 1), 0));
    EXPECT_FALSE(KRPointEqualToPointWithinDelta(KRPointMake(1, 1), KRPointMake(1, 1.0001), 0));
}

TEST(KRGeometryTests, RoundGoesHalfAwayFromZero) {
    EXPECT_EQ(KRRound(0.5), 1.0);
    EXPECT_EQ(KRRound(-0.5), -1.0);
    EXPECT_EQ(KRRound(2.5), 3.0);
    EXPECT_EQ(KRRound(1.49), 1.0);
    EXPECT_EQ(KRRound(-2.51), -3.0);
}

TEST(KRGeometryTests, StringFormsUseTheShortestNumbers) {
    EXPECT_EQ(KRStringFromRect(KRRectMake(0, 1.5, 10, 20)), QStringLiteral("{{0, 1.5}, {10, 20}}"));
    EXPECT_EQ(KRStringFromPoint(KRPointMake(-3, 0.1)), QStringLiteral("{-3, 0.1}"));
    EXPECT_EQ(KRStringFromSize(KRSizeMake(1000000, 2.25)), QStringLiteral("{1000000, 2.25}"));
}

TEST(KRGeometryTests, StringsRoundTrip) {
    const KRRect rect = KRRectMake(-12.75, 1.0 / 3.0, 1e-7, 640);
    EXPECT_EQ(KRRectFromString(KRStringFromRect(rect)), rect);
    EXPECT_EQ(KRPointFromString(KRStringFromPoint(KRPointMake(0.1, 2))), KRPointMake(0.1, 2));
    EXPECT_EQ(KRSizeFromString(KRStringFromSize(KRSizeMake(3, 4.5))), KRSizeMake(3, 4.5));
    EXPECT_TRUE(KRRectIsNull(KRRectFromString(KRStringFromRect(KRRectNull))));
}

TEST(KRGeometryTests, ParsingToleratesSpaces) {
    EXPECT_EQ(KRRectFromString(QStringLiteral(" { {1,2} ,{ 3 , 4 } } ")), KRRectMake(1, 2, 3, 4));
    EXPECT_EQ(KRPointFromString(QStringLiteral("{5,6}")), KRPointMake(5, 6));
}

TEST(KRGeometryTests, ParsingGarbageGivesZero) {
    EXPECT_EQ(KRRectFromString(QStringLiteral("hello")), KRRectZero);
    EXPECT_EQ(KRRectFromString(QStringLiteral("{{1, x}, {3, 4}}")), KRRectZero);
    EXPECT_EQ(KRPointFromString(QString()), KRPointZero);
    EXPECT_EQ(KRSizeFromString(QStringLiteral("{1 2}")), KRSizeZero);
}

TEST(KRGeometryTests, VariantsOfGeometryCompareByValue) {
    const QVariant a = QVariant::fromValue(KRRectMake(1, 2, 3, 4));
    const QVariant b = QVariant::fromValue(KRRectMake(1, 2, 3, 4));
    const QVariant c = QVariant::fromValue(KRRectMake(1, 2, 3, 5));
    EXPECT_EQ(a, b);
    EXPECT_NE(a, c);
    EXPECT_EQ(a.value<KRRect>(), KRRectMake(1, 2, 3, 4));
    EXPECT_EQ(QVariant::fromValue(KRPointMake(1, 2)), QVariant::fromValue(KRPointMake(1, 2)));
    EXPECT_NE(QVariant::fromValue(KRSizeMake(1, 2)), QVariant::fromValue(KRSizeMake(2, 1)));
    EXPECT_EQ(QVariant::fromValue(KREdgeInsetsMake(1, 2, 3, 4)),
              QVariant::fromValue(KREdgeInsetsMake(1, 2, 3, 4)));
}

TEST(KRGeometryTests, QtConversionsKeepEveryComponent) {
    const KRRect rect = KRRectMake(1.5, 2.5, 3.5, 4.5);
    EXPECT_EQ(KRFromQRectF(KRToQRectF(rect)), rect);
    EXPECT_EQ(KRFromQPointF(KRToQPointF(KRPointMake(7, 8))), KRPointMake(7, 8));
    EXPECT_EQ(KRFromQSizeF(KRToQSizeF(KRSizeMake(9, 10))), KRSizeMake(9, 10));
}
