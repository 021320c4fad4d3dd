#pragma once

#include <QMetaType>
#include <QPointF>
#include <QRectF>
#include <QSizeF>
#include <QString>

#include <algorithm>
#include <limits>

// Points, sizes and rectangles in points, with Core Graphics semantics. Coordinates are flipped
// everywhere (origin top left, y grows downward), so "max Y" is the bottom edge.
struct KRPoint {
    double x = 0.0;
    double y = 0.0;
    friend bool operator==(const KRPoint&, const KRPoint&) = default;
};

struct KRSize {
    double width = 0.0;
    double height = 0.0;
    friend bool operator==(const KRSize&, const KRSize&) = default;
};

struct KRRect {
    KRPoint origin;
    KRSize size;
    friend bool operator==(const KRRect&, const KRRect&) = default;
};

struct KREdgeInsets {
    double top = 0.0;
    double left = 0.0;
    double bottom = 0.0;
    double right = 0.0;
    friend bool operator==(const KREdgeInsets&, const KREdgeInsets&) = default;
};

Q_DECLARE_METATYPE(KRPoint)
Q_DECLARE_METATYPE(KRSize)
Q_DECLARE_METATYPE(KRRect)
Q_DECLARE_METATYPE(KREdgeInsets)

inline constexpr KRPoint KRPointZero{};
inline constexpr KRSize KRSizeZero{};
inline constexpr KRRect KRRectZero{};
// The null rectangle: what an empty intersection gives. Origin at +infinity, zero size.
extern const KRRect KRRectNull;
inline constexpr KREdgeInsets KREdgeInsetsZero{};

inline KRPoint KRPointMake(double x, double y) {
    return KRPoint{x, y};
}
inline KRSize KRSizeMake(double width, double height) {
    return KRSize{width, height};
}
inline KRRect KRRectMake(double x, double y, double width, double height) {
    return KRRect{KRPoint{x, y}, KRSize{width, height}};
}
inline KREdgeInsets KREdgeInsetsMake(double top, double left, double bottom, double right) {
    return KREdgeInsets{top, left, bottom, right};
}

// The tests and combinations below are inline: views run them on every mark for display and conversion.

// A rectangle with its negative width or height turned into a positive one (origin moved accordingly).
inline KRRect KRRectStandardize(KRRect rect) {
    if (rect.size.width < 0.0) {
        rect.origin.x += rect.size.width;
        rect.size.width = -rect.size.width;
    }
    if (rect.size.height < 0.0) {
        rect.origin.y += rect.size.height;
        rect.size.height = -rect.size.height;
    }
    return rect;
}

// The readers standardise first; on the null rectangle they answer +infinity (as Core Graphics does).
double KRRectGetMinX(KRRect rect);
double KRRectGetMidX(KRRect rect);
double KRRectGetMaxX(KRRect rect);
double KRRectGetMinY(KRRect rect);
double KRRectGetMidY(KRRect rect);
double KRRectGetMaxY(KRRect rect);
double KRRectGetWidth(KRRect rect);  // absolute width
double KRRectGetHeight(KRRect rect); // absolute height

inline bool KRRectIsNull(KRRect rect) {
    constexpr double infinity = std::numeric_limits<double>::infinity();
    return rect.origin.x == infinity || rect.origin.y == infinity;
}
// Null, or zero width or height.
inline bool KRRectIsEmpty(KRRect rect) {
    return KRRectIsNull(rect) || rect.size.width == 0.0 || rect.size.height == 0.0;
}

// Half-open: min edges inside, max edges outside. Never true for the null rectangle.
inline bool KRRectContainsPoint(KRRect rect, KRPoint point) {
    if (KRRectIsNull(rect)) {
        return false;
    }
    const KRRect r = KRRectStandardize(rect);
    return point.x >= r.origin.x && point.x < r.origin.x + r.size.width && point.y >= r.origin.y &&
           point.y < r.origin.y + r.size.height;
}
// True when rect2 lies wholly inside rect1 (edges may touch). Never true for null rectangles.
inline bool KRRectContainsRect(KRRect rect1, KRRect rect2) {
    if (KRRectIsNull(rect1) || KRRectIsNull(rect2)) {
        return false;
    }
    const KRRect outer = KRRectStandardize(rect1);
    const KRRect inner = KRRectStandardize(rect2);
    return inner.origin.x >= outer.origin.x && inner.origin.y >= outer.origin.y &&
           inner.origin.x + inner.size.width <= outer.origin.x + outer.size.width &&
           inner.origin.y + inner.size.height <= outer.origin.y + outer.size.height;
}
// The edges of where two rects overlap, min past max on an axis where they do not. Neither may be null.
struct KRRectOverlap {
    double minX = 0.0;
    double maxX = 0.0;
    double minY = 0.0;
    double maxY = 0.0;
};
inline KRRectOverlap KRRectOverlapOfRects(KRRect rect1, KRRect rect2) {
    const KRRect a = KRRectStandardize(rect1);
    const KRRect b = KRRectStandardize(rect2);
    return KRRectOverlap{
        std::max(a.origin.x, b.origin.x), std::min(a.origin.x + a.size.width, b.origin.x + b.size.width),
        std::max(a.origin.y, b.origin.y), std::min(a.origin.y + a.size.height, b.origin.y + b.size.height)};
}
// True only for an overlap of positive area: rects that share an edge, and rects of zero width or height
// (even with themselves), do not intersect.
inline bool KRRectIntersectsRect(KRRect rect1, KRRect rect2) {
    if (KRRectIsNull(rect1) || KRRectIsNull(rect2)) {
        return false;
    }
    const KRRectOverlap overlap = KRRectOverlapOfRects(rect1, rect2);
    // Strict: a shared edge or a zero-thickness rect encloses no area.
    return overlap.minX < overlap.maxX && overlap.minY < overlap.maxY;
}
// The common part of two rects; the null rectangle when they are disjoint. Rects that only touch give a
// degenerate (zero width or height) rect, as Core Graphics does.
KRRect KRRectIntersection(KRRect rect1, KRRect rect2);
// The smallest rect holding both; a null argument is ignored.
inline KRRect KRRectUnion(KRRect rect1, KRRect rect2) {
    if (KRRectIsNull(rect1)) {
        return KRRectIsNull(rect2) ? KRRectNull : KRRectStandardize(rect2);
    }
    if (KRRectIsNull(rect2)) {
        return KRRectStandardize(rect1);
    }
    const KRRect a = KRRectStandardize(rect1);
    const KRRect b = KRRectStandardize(rect2);
    const double minX = std::min(a.origin.x, b.origin.x);
    const double maxX = std::max(a.origin.x + a.size.width, b.origin.x + b.size.width);
    const double minY = std::min(a.origin.y, b.origin.y);
    const double maxY = std::max(a.origin.y + a.size.height, b.origin.y + b.size.height);
    return KRRectMake(minX, minY, maxX - minX, maxY - minY);
}
// Moves each edge inward by dx / dy (outward when negative); the null rectangle when nothing is left.
KRRect KRRectInset(KRRect rect, double dx, double dy);
KRRect KRRectInsetByEdgeInsets(KRRect rect, KREdgeInsets insets);
inline KRRect KRRectOffset(KRRect rect, double dx, double dy) {
    if (KRRectIsNull(rect)) {
        return KRRectNull;
    }
    KRRect r = KRRectStandardize(rect);
    r.origin.x += dx;
    r.origin.y += dy;
    return r;
}
// The smallest rect with whole-number edges that holds rect.
KRRect KRRectIntegral(KRRect rect);
// Compares standardised rects; two null rectangles are equal.
bool KRRectEqualToRect(KRRect rect1, KRRect rect2);
bool KRPointEqualToPoint(KRPoint a, KRPoint b);
bool KRSizeEqualToSize(KRSize a, KRSize b);
// Equal when both coordinates differ by at most delta (delta 0 means exactly equal).
bool KRPointEqualToPointWithinDelta(KRPoint a, KRPoint b, double delta);

// Rounds half away from zero (0.5 -> 1, -0.5 -> -1).
double KRRound(double value);

// "{x, y}", "{w, h}", "{{x, y}, {w, h}}", with the shortest decimal form of each number.
QString KRStringFromPoint(KRPoint point);
QString KRStringFromSize(KRSize size);
QString KRStringFromRect(KRRect rect);
// Reads the forms above back; anything unreadable gives zero values, as NSRectFromString does.
KRPoint KRPointFromString(const QString& string);
KRSize KRSizeFromString(const QString& string);
KRRect KRRectFromString(const QString& string);

inline QPointF KRToQPointF(KRPoint p) {
    return QPointF(p.x, p.y);
}
inline QSizeF KRToQSizeF(KRSize s) {
    return QSizeF(s.width, s.height);
}
inline QRectF KRToQRectF(KRRect r) {
    return QRectF(r.origin.x, r.origin.y, r.size.width, r.size.height);
}
inline KRPoint KRFromQPointF(QPointF p) {
    return KRPoint{p.x(), p.y()};
}
inline KRSize KRFromQSizeF(QSizeF s) {
    return KRSize{s.width(), s.height()};
}
inline KRRect KRFromQRectF(QRectF r) {
    return KRRectMake(r.x(), r.y(), r.width(), r.height());
}
