#include "Text/KRTextLayout.h"

#include <QFontMetricsF>
#include <QPainter>
#include <QTextLayout>

#include <algorithm>
#include <cmath>

namespace {

// The document layout sums line heights in 1/64 points; summing the same way gives the same totals.
constexpr double kFixedScale = 64.0;
// How far inside the width a line measured by font metrics must end to be trusted without a layout.
constexpr double kSingleLineFitSlack = 0.5;
// Qt's text engine counts in 26.6 fixed point; "unbounded" widths must stay far inside its range.
constexpr double kMaximumLineWidth = 1.0e6;

qint64 toFixed(double value) {
    return std::llround(value * kFixedScale);
}

double fromFixed(qint64 value) {
    return static_cast<double>(value) / kFixedScale;
}

bool isParagraphSeparator(QChar character) {
    return character == QLatin1Char('\n') || character == QLatin1Char('\r') ||
           character == QChar::ParagraphSeparator;
}

// Characters the metrics shortcut cannot stand for: forced breaks and tabs.
bool needsFullLayout(QChar character) {
    return isParagraphSeparator(character) || character == QChar::LineSeparator ||
           character == QLatin1Char('\t');
}

} // namespace

KRTextLayout::KRTextLayout(const KRAttributedString& text, double width, const QFont& defaultFont,
                           double fixedLineHeight) {
    const QString& string = text.string();
    qsizetype start = 0;
    for (qsizetype index = 0; index <= string.size(); ++index) {
        if (index < string.size() && !isParagraphSeparator(string[index])) {
            continue;
        }
        layOutParagraph(text,
                        KRMakeRange(static_cast<KRUInteger>(start), static_cast<KRUInteger>(index - start)),
                        width, defaultFont, fixedLineHeight);
        // A CR LF pair ends one paragraph, as the text view reads it.
        if (index + 1 < string.size() && string[index] == QLatin1Char('\r') &&
            string[index + 1] == QLatin1Char('\n')) {
            ++index;
        }
        start = index + 1;
    }
    m_height = fromFixed(m_heightFixed);
}

KRTextLayout::~KRTextLayout() = default;

void KRTextLayout::layOutParagraph(const KRAttributedString& text, KRRange paragraph, double width,
                                   const QFont& defaultFont, double fixedLineHeight) {
    const QString paragraphText = text.string().mid(static_cast<qsizetype>(paragraph.location),
                                                    static_cast<qsizetype>(paragraph.length));
    const KRTextAttributes leading = text.attributesAtIndex(paragraph.location);
    auto layout = std::make_unique<QTextLayout>(paragraphText, leading.font.value_or(defaultFont));

    QList<QTextLayout::FormatRange> formats;
    for (const KRAttributedString::Run& run : text.runs()) {
        const KRRange overlap = KRIntersectionRange(run.range, paragraph);
        if (overlap.length == 0 || run.attributes.count() == 0) {
            continue;
        }
        formats.append(QTextLayout::FormatRange{static_cast<int>(overlap.location - paragraph.location),
                                                static_cast<int>(overlap.length),
                                                run.attributes.charFormat()});
    }
    layout->setFormats(formats);

    QTextOption option;
    const bool wraps = width > 0.0;
    option.setWrapMode(wraps ? QTextOption::WrapAtWordBoundaryOrAnywhere : QTextOption::ManualWrap);
    const Qt::LayoutDirection direction = paragraphText.isRightToLeft() ? Qt::RightToLeft : Qt::LeftToRight;
    option.setTextDirection(direction);
    // A right-to-left paragraph starts at the right edge, as in the text view.
    option.setAlignment((wraps && direction == Qt::RightToLeft ? Qt::AlignRight : Qt::AlignLeft) |
                        Qt::AlignAbsolute);
    layout->setTextOption(option);

    const qint64 paragraphTop = m_heightFixed;
    layout->setPosition(QPointF(0.0, fromFixed(paragraphTop)));
    layout->beginLayout();
    for (QTextLine line = layout->createLine(); line.isValid(); line = layout->createLine()) {
        line.setLeadingIncluded(true);
        line.setLineWidth(wraps ? std::min(width, kMaximumLineWidth) : kMaximumLineWidth);
        qint64 lineHeight = 0;
        qint64 adjustment = 0;
        if (fixedLineHeight > 0.0) {
            // A fixed line puts its baseline four fifths of the way down, whatever the font.
            lineHeight = toFixed(fixedLineHeight);
            adjustment = toFixed(line.ascent() + std::max(line.leading(), 0.0)) - (lineHeight * 4) / 5;
        } else {
            lineHeight = toFixed(line.height());
        }
        line.setPosition(QPointF(0.0, fromFixed(m_heightFixed - paragraphTop - adjustment)));
        m_lines.push_back(Line{KRMakeRange(paragraph.location + static_cast<KRUInteger>(line.textStart()),
                                           static_cast<KRUInteger>(line.textLength())),
                               fromFixed(m_heightFixed), fromFixed(lineHeight)});
        m_heightFixed += lineHeight;
        m_naturalWidth = std::max(m_naturalWidth, line.naturalTextWidth());
    }
    layout->endLayout();
    m_paragraphs.push_back(std::move(layout));
}

void KRTextLayout::draw(QPainter& painter, KRPoint origin, const QColor& defaultColor) const {
    painter.save();
    painter.setPen(defaultColor);
    for (const std::unique_ptr<QTextLayout>& paragraph : m_paragraphs) {
        paragraph->draw(&painter, QPointF(origin.x, origin.y));
    }
    painter.restore();
}

std::optional<KRSize> KRTextLayout::measureSingleLine(const KRAttributedString& text, double width,
                                                      const QFont& defaultFont, double fixedLineHeight) {
    if (fixedLineHeight <= 0.0 || !text.hasUniformAttributes()) {
        return std::nullopt;
    }
    QStringView visible(text.string());
    if (std::any_of(visible.begin(), visible.end(), needsFullLayout)) {
        return std::nullopt;
    }
    // Too wide to wrap: the line fits whatever it holds, and the caller gets the width it gave.
    if (width >= kMaximumLineWidth) {
        return KRSize{width, fixedLineHeight};
    }
    // Trailing spaces hang past the end of a line, so they never make it wrap.
    while (!visible.isEmpty() && visible.back() == QLatin1Char(' ')) {
        visible.chop(1);
    }
    const QFont font = text.leadingAttributes().font.value_or(defaultFont);
    const double advance = QFontMetricsF(font).horizontalAdvance(visible.toString());
    if (width > 0.0 && advance > width - kSingleLineFitSlack) {
        return std::nullopt;
    }
    return KRSize{width > 0.0 ? width : std::ceil(advance), fixedLineHeight};
}

KRSize KRTextLayout::measure(const KRAttributedString& text, double width, const QFont& defaultFont,
                             double fixedLineHeight) {
    if (const std::optional<KRSize> singleLine =
            measureSingleLine(text, width, defaultFont, fixedLineHeight)) {
        return *singleLine;
    }
    const KRTextLayout layout(text, width, defaultFont, fixedLineHeight);
    return KRSize{width > 0.0 ? width : std::ceil(layout.naturalWidth()), layout.height()};
}
