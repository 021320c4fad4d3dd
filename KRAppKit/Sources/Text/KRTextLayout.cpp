#include "Text/KRTextLayout.h"

#include "Text/KRWordAdvanceCache.h"

#include <QFontMetricsF>
#include <QPainter>
#include <QTextLayout>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdint>

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

// The characters the word-by-word path measures, grouped by how Qt's line breaker treats them inside a
// word. Qt allows a break after ! or ? before a letter, digit or (; after . , ; : before ( or a digit outside
// a number (inside one, as in 2.5 or 10:30, it does not); and after ) before (. Everywhere else between these
// characters it does not, and it always allows one after a single space.
enum class WordCharacter : std::uint8_t {
    None, // anything else: the full layout decides
    Letter,
    Digit,
    Infix,       // . , ; :
    Exclamation, // ! ?
    Quote,       // ' "
    Opening,     // (
    Closing,     // )
};

constexpr std::size_t kAsciiCount = 128;

constexpr std::array<WordCharacter, kAsciiCount> makeWordCharacters() {
    std::array<WordCharacter, kAsciiCount> characters{};
    for (char letter = 'a'; letter <= 'z'; ++letter) {
        characters[static_cast<std::size_t>(letter)] = WordCharacter::Letter;
        characters[static_cast<std::size_t>(letter - 'a' + 'A')] = WordCharacter::Letter;
    }
    for (char digit = '0'; digit <= '9'; ++digit) {
        characters[static_cast<std::size_t>(digit)] = WordCharacter::Digit;
    }
    for (const char infix : {'.', ',', ';', ':'}) {
        characters[static_cast<std::size_t>(infix)] = WordCharacter::Infix;
    }
    characters['!'] = WordCharacter::Exclamation;
    characters['?'] = WordCharacter::Exclamation;
    characters['\''] = WordCharacter::Quote;
    characters['"'] = WordCharacter::Quote;
    characters['('] = WordCharacter::Opening;
    characters[')'] = WordCharacter::Closing;
    return characters;
}

constexpr std::array<WordCharacter, kAsciiCount> kWordCharacters = makeWordCharacters();

WordCharacter wordCharacter(QChar character) {
    const char16_t code = character.unicode();
    return code < kAsciiCount ? kWordCharacters[code] : WordCharacter::None;
}

// Where a word stands in a number as Qt's line breaker reads one: digits joined by . , ; : and closed by ).
// A digit right after the closing bracket does not start a new number.
enum class NumberState : std::uint8_t { Outside, Inside, Closed };

NumberState nextNumberState(NumberState state, WordCharacter character) {
    switch (character) {
    case WordCharacter::Digit:
        return state == NumberState::Closed ? NumberState::Outside : NumberState::Inside;
    case WordCharacter::Infix:
        return state == NumberState::Inside ? NumberState::Inside : NumberState::Outside;
    case WordCharacter::Closing:
        return state == NumberState::Inside ? NumberState::Closed : NumberState::Outside;
    default:
        return NumberState::Outside;
    }
}

// Whether Qt's line breaker may break before current inside a word, given the character before it (None at
// the start of the word) and where that character left the word in a number.
bool breaksBefore(WordCharacter previous, NumberState number, WordCharacter current) {
    switch (current) {
    case WordCharacter::Letter:
        return previous == WordCharacter::Exclamation;
    case WordCharacter::Digit:
        return previous == WordCharacter::Exclamation ||
               (previous == WordCharacter::Infix && number != NumberState::Inside);
    case WordCharacter::Opening:
        return previous == WordCharacter::Infix || previous == WordCharacter::Exclamation ||
               previous == WordCharacter::Closing;
    default:
        return false;
    }
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

std::optional<KRSize> KRTextLayout::measureWordByWord(const KRAttributedString& text, double width,
                                                      const QFont& defaultFont, double fixedLineHeight) {
    bool brokeALine = false;
    return measureWordByWord(text, width, defaultFont, fixedLineHeight, brokeALine);
}

std::optional<KRSize> KRTextLayout::measureWordByWord(const KRAttributedString& text, double width,
                                                      const QFont& defaultFont, double fixedLineHeight,
                                                      bool& brokeALine) {
    brokeALine = false;
    if (!(width > 0.0 && width < kMaximumLineWidth) || fixedLineHeight <= 0.0 ||
        !text.hasUniformAttributes()) {
        return std::nullopt;
    }
    const std::optional<QFont>& attributedFont = text.leadingAttributes().font;
    const QFont& font = attributedFont ? *attributedFont : defaultFont;
    if (!KRWordAdvanceCache::measuresWordsApart(font)) {
        return std::nullopt;
    }
    const QStringView string(text.string());
    // Trailing spaces hang past the end of the last line, so they never make it wrap.
    qsizetype end = string.size();
    while (end > 0 && string[end - 1] == QLatin1Char(' ')) {
        --end;
    }
    if (end == 0 && !string.isEmpty()) {
        return std::nullopt;
    }

    KRWordAdvanceCache& cache = KRWordAdvanceCache::shared();
    cache.setFont(font);
    if (cache.kernsAroundSpaces()) {
        return std::nullopt;
    }
    const double space = cache.spaceAdvance();
    qint64 lineCount = 1;
    double lineAdvance = 0.0; // without trailing spaces, as the engine compares lines with the width
    bool lineIsEmpty = true;
    for (qsizetype start = 0; start < end;) {
        WordCharacter previous = WordCharacter::None;
        NumberState number = NumberState::Outside;
        qsizetype stop = start;
        for (; stop < end && string[stop] != QLatin1Char(' '); ++stop) {
            const WordCharacter current = wordCharacter(string[stop]);
            if (current == WordCharacter::None || breaksBefore(previous, number, current)) {
                return std::nullopt;
            }
            previous = current;
            number = nextNumberState(number, current);
        }
        if (stop == start) { // a leading space or a second one in a row
            return std::nullopt;
        }
        const KRWordAdvanceCache::Word word = cache.word(string.sliced(start, stop - start));
        if (word.lastGlyphSubstituted) { // its overhang is unknown
            return std::nullopt;
        }
        // The engine counts the overhang of a line's last glyph when it decides whether a word still fits.
        const double extended = lineAdvance + space + word.advance;
        const double reach = extended + word.overhang;
        if (!lineIsEmpty && reach < width - kWordFitSlack) {
            lineAdvance = extended;
        } else if (lineIsEmpty || reach > width + kWordFitSlack) {
            // The word starts a line; one that does not clearly fit there is broken inside.
            if (word.advance + word.overhang >= width - kWordFitSlack) {
                return std::nullopt;
            }
            lineCount += lineIsEmpty ? 0 : 1;
            brokeALine = brokeALine || !lineIsEmpty;
            lineAdvance = word.advance;
            lineIsEmpty = false;
        } else {
            return std::nullopt; // too close to call
        }
        start = stop + 1;
    }
    return KRSize{width, fromFixed(lineCount * toFixed(fixedLineHeight))};
}

KRSize KRTextLayout::measure(const KRAttributedString& text, double width, const QFont& defaultFont,
                             double fixedLineHeight) {
    bool brokeALine = false;
    if (const std::optional<KRSize> byWords =
            measureWordByWord(text, width, defaultFont, fixedLineHeight, brokeALine)) {
        return *byWords;
    }
    // Text already found to need more than one line would only be shaped whole to learn that again.
    if (!brokeALine) {
        if (const std::optional<KRSize> singleLine =
                measureSingleLine(text, width, defaultFont, fixedLineHeight)) {
            return *singleLine;
        }
    }
    const KRTextLayout layout(text, width, defaultFont, fixedLineHeight);
    return KRSize{width > 0.0 ? width : std::ceil(layout.naturalWidth()), layout.height()};
}
