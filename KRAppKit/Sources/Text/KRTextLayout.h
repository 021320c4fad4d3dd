#pragma once

#include "Foundation/KRRange.h"
#include "Geometry/KRGeometry.h"
#include "Text/KRAttributedString.h"

#include <QColor>
#include <QFont>

#include <memory>
#include <optional>
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

    // How close to the width a line measured word by word may reach and still be trusted. The engine compares
    // the advances of the line's words and spaces plus its last glyph's overhang with the width, in 1/64
    // steps, and the word-by-word path adds up the same numbers; the slack covers the width's rounding to
    // those steps and any shaping across words the cache cannot detect. Half a pixel, the margin the
    // single-line shortcut trusts too.
    static constexpr double kWordFitSlack = 0.5;

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
    // height of its lines. Plain wrapped text with a fixed line height is answered word by word from cached
    // advances; a single uniformly attributed line with a fixed line height that clearly fits is answered
    // from the font's metrics; both without a full layout, and without even those when the width is too
    // large to wrap anything.
    static KRSize measure(const KRAttributedString& text, double width, const QFont& defaultFont,
                          double fixedLineHeight);
    // The fast path alone: the size, or nothing when a full layout is needed.
    static std::optional<KRSize> measureSingleLine(const KRAttributedString& text, double width,
                                                   const QFont& defaultFont, double fixedLineHeight);
    // The word-by-word path alone: the size, or nothing unless it is sure to be what the full layout gives.
    // It takes uniformly attributed text with a fixed line height, a width to wrap at, a font whose words
    // measure the same apart (see KRWordAdvanceCache), and words of ASCII letters, digits and . , ; : ! ? '
    // " ( ) joined by single spaces, in combinations where the only places a line can break are the spaces.
    // Lines fill greedily, trailing spaces hang, and any line that ends too close to the width to be sure,
    // or any word too wide for a line of its own, leaves the answer to the full layout.
    static std::optional<KRSize> measureWordByWord(const KRAttributedString& text, double width,
                                                   const QFont& defaultFont, double fixedLineHeight);

private:
    // measureWordByWord, also telling whether, when it gives up, it had already broken a line: the text
    // then does not fit on one line, and only the full layout can answer.
    static std::optional<KRSize> measureWordByWord(const KRAttributedString& text, double width,
                                                   const QFont& defaultFont, double fixedLineHeight,
                                                   bool& brokeALine);
    void layOutParagraph(const KRAttributedString& text, KRRange paragraph, double width,
                         const QFont& defaultFont, double fixedLineHeight);

    std::vector<std::unique_ptr<QTextLayout>> m_paragraphs;
    std::vector<Line> m_lines;
    qint64 m_heightFixed = 0; // in 1/64 points, summed as the document layout sums them
    double m_height = 0.0;
    double m_naturalWidth = 0.0;
};
