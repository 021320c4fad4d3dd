#pragma once

#include "Foundation/KRRange.h"
#include "Geometry/KRGeometry.h"
#include "Text/KRAttributedString.h"

#include <QColor>
#include <QFont>

#include <memory>
#include <vector>

class QPainter;
class QTextLayout;

// Lays out an attributed string the way the text view's document does (same line breaking, line heights
// and baselines), so a text field draws and measures exactly what its field editor will show. Paragraphs
// end at newlines; lines wrap at word boundaries, or anywhere when a word is wider than the line.
class KRTextLayout {
public:
    struct Line {
        KRRange range; // characters on the line, trailing spaces included
        double top = 0.0;
        double height = 0.0;
    };

    // A width of 0 or less lays every paragraph out on one line. A fixed line height of 0 gives lines
    // their natural heights.
    KRTextLayout(const KRAttributedString& text, double width, const QFont& defaultFont,
                 double fixedLineHeight);
    ~KRTextLayout();
    KRTextLayout(const KRTextLayout&) = delete;
    KRTextLayout& operator=(const KRTextLayout&) = delete;

    const std::vector<Line>& lines() const { return m_lines; }
    double height() const { return m_height; }
    // The widest line's width without trailing spaces.
    double naturalWidth() const { return m_naturalWidth; }
    void draw(QPainter& painter, KRPoint origin, const QColor& defaultColor) const;

    // The size text needs at width: the width as given (for 0 or less, the natural width rounded up) by the
    // height of its lines. A single uniformly attributed line with a fixed line height that clearly fits is
    // answered from the font's metrics without a full layout, and without even those when the width is
    // too large to wrap anything.
    static KRSize measure(const KRAttributedString& text, double width, const QFont& defaultFont,
                          double fixedLineHeight);
    // The fast path alone: the size, or nothing when a full layout is needed.
    static std::optional<KRSize> measureSingleLine(const KRAttributedString& text, double width,
                                                   const QFont& defaultFont, double fixedLineHeight);

private:
    void layOutParagraph(const KRAttributedString& text, KRRange paragraph, double width,
                         const QFont& defaultFont, double fixedLineHeight);

    std::vector<std::unique_ptr<QTextLayout>> m_paragraphs;
    std::vector<Line> m_lines;
    qint64 m_heightFixed = 0; // in 1/64 points, summed as the document layout sums them
    double m_height = 0.0;
    double m_naturalWidth = 0.0;
};
