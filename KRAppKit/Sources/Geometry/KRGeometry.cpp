#include "Geometry/KRGeometry.h"

#include <QLocale>

#include <algorithm>
#include <cmath>
#include <limits>

const KRRect KRRectNull{
    KRPoint{std::numeric_limits<double>::infinity(), std::numeric_limits<double>::infinity()},
    KRSize{0.0, 0.0}};

double KRRectGetMinX(KRRect rect) {
    return KRRectStandardize(rect).origin.x;
}

double KRRectGetMidX(KRRect rect) {
    const KRRect r = KRRectStandardize(rect);
    return r.origin.x + r.size.width / 2.0;
}

double KRRectGetMaxX(KRRect rect) {
    const KRRect r = KRRectStandardize(rect);
    return r.origin.x + r.size.width;
}

double KRRectGetMinY(KRRect rect) {
    return KRRectStandardize(rect).origin.y;
}

double KRRectGetMidY(KRRect rect) {
    const KRRect r = KRRectStandardize(rect);
    return r.origin.y + r.size.height / 2.0;
}

double KRRectGetMaxY(KRRect rect) {
    const KRRect r = KRRectStandardize(rect);
    return r.origin.y + r.size.height;
}

double KRRectGetWidth(KRRect rect) {
    return std::fabs(rect.size.width);
}

double KRRectGetHeight(KRRect rect) {
    return std::fabs(rect.size.height);
}

KRRect KRRectIntersection(KRRect rect1, KRRect rect2) {
    if (KRRectIsNull(rect1) || KRRectIsNull(rect2)) {
        return KRRectNull;
    }
    const KRRectOverlap overlap = KRRectOverlapOfRects(rect1, rect2);
    if (overlap.minX > overlap.maxX || overlap.minY > overlap.maxY) {
        return KRRectNull;
    }
    return KRRectMake(overlap.minX, overlap.minY, overlap.maxX - overlap.minX, overlap.maxY - overlap.minY);
}

KRRect KRRectInset(KRRect rect, double dx, double dy) {
    if (KRRectIsNull(rect)) {
        return KRRectNull;
    }
    KRRect r = KRRectStandardize(rect);
    r.origin.x += dx;
    r.origin.y += dy;
    r.size.width -= 2.0 * dx;
    r.size.height -= 2.0 * dy;
    if (r.size.width < 0.0 || r.size.height < 0.0) {
        return KRRectNull;
    }
    return r;
}

KRRect KRRectInsetByEdgeInsets(KRRect rect, KREdgeInsets insets) {
    if (KRRectIsNull(rect)) {
        return KRRectNull;
    }
    // Plain edge arithmetic, as UIEdgeInsetsInsetRect: insets larger than the rect give a negative size.
    KRRect r = KRRectStandardize(rect);
    r.origin.x += insets.left;
    r.origin.y += insets.top;
    r.size.width -= insets.left + insets.right;
    r.size.height -= insets.top + insets.bottom;
    return r;
}

KRRect KRRectIntegral(KRRect rect) {
    if (KRRectIsNull(rect)) {
        return KRRectNull;
    }
    const KRRect r = KRRectStandardize(rect);
    const double minX = std::floor(r.origin.x);
    const double minY = std::floor(r.origin.y);
    const double maxX = std::ceil(r.origin.x + r.size.width);
    const double maxY = std::ceil(r.origin.y + r.size.height);
    return KRRectMake(minX, minY, maxX - minX, maxY - minY);
}

bool KRRectEqualToRect(KRRect rect1, KRRect rect2) {
    const bool null1 = KRRectIsNull(rect1);
    const bool null2 = KRRectIsNull(rect2);
    if (null1 || null2) {
        return null1 && null2;
    }
    return KRRectStandardize(rect1) == KRRectStandardize(rect2);
}

bool KRPointEqualToPoint(KRPoint a, KRPoint b) {
    return a == b;
}

bool KRSizeEqualToSize(KRSize a, KRSize b) {
    return a == b;
}

bool KRPointEqualToPointWithinDelta(KRPoint a, KRPoint b, double delta) {
    return std::fabs(a.x - b.x) <= delta && std::fabs(a.y - b.y) <= delta;
}

double KRRound(double value) {
    return std::round(value);
}

namespace {

// Whole numbers print without a decimal part or exponent; anything else in its shortest round-trip form.
QString numberString(double value) {
    if (value == 0.0) {
        return QStringLiteral("0");
    }
    if (std::isfinite(value) && value == std::trunc(value) && std::fabs(value) < 1e15) {
        return QString::number(value, 'f', 0);
    }
    return QString::number(value, 'g', QLocale::FloatingPointShortest);
}

// A tolerant reader of "{a, b}" and "{{a, b}, {c, d}}": whitespace may appear anywhere.
class Scanner {
public:
    explicit Scanner(const QString& text) : m_text(text) {}

    bool expect(QChar character) {
        skipSpaces();
        if (m_position < m_text.size() && m_text.at(m_position) == character) {
            ++m_position;
            return true;
        }
        return false;
    }

    bool number(double* value) {
        skipSpaces();
        const qsizetype start = m_position;
        while (m_position < m_text.size()) {
            const QChar c = m_text.at(m_position);
            if (c == QLatin1Char(',') || c == QLatin1Char('{') || c == QLatin1Char('}') || c.isSpace()) {
                break;
            }
            ++m_position;
        }
        bool ok = false;
        *value = m_text.mid(start, m_position - start).toDouble(&ok);
        return ok;
    }

    bool pair(double* first, double* second) {
        return expect(QLatin1Char('{')) && number(first) && expect(QLatin1Char(',')) && number(second) &&
               expect(QLatin1Char('}'));
    }

private:
    void skipSpaces() {
        while (m_position < m_text.size() && m_text.at(m_position).isSpace()) {
            ++m_position;
        }
    }

    const QString& m_text;
    qsizetype m_position = 0;
};

} // namespace

QString KRStringFromPoint(KRPoint point) {
    return QStringLiteral("{%1, %2}").arg(numberString(point.x), numberString(point.y));
}

QString KRStringFromSize(KRSize size) {
    return QStringLiteral("{%1, %2}").arg(numberString(size.width), numberString(size.height));
}

QString KRStringFromRect(KRRect rect) {
    return QStringLiteral("{%1, %2}").arg(KRStringFromPoint(rect.origin), KRStringFromSize(rect.size));
}

KRPoint KRPointFromString(const QString& string) {
    Scanner scanner(string);
    KRPoint point;
    if (!scanner.pair(&point.x, &point.y)) {
        return KRPointZero;
    }
    return point;
}

KRSize KRSizeFromString(const QString& string) {
    Scanner scanner(string);
    KRSize size;
    if (!scanner.pair(&size.width, &size.height)) {
        return KRSizeZero;
    }
    return size;
}

KRRect KRRectFromString(const QString& string) {
    Scanner scanner(string);
    KRRect rect;
    const bool ok = scanner.expect(QLatin1Char('{')) && scanner.pair(&rect.origin.x, &rect.origin.y) &&
                    scanner.expect(QLatin1Char(',')) && scanner.pair(&rect.size.width, &rect.size.height) &&
                    scanner.expect(QLatin1Char('}'));
    return ok ? rect : KRRectZero;
}
