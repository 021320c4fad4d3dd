#include "Text/KRWordAdvanceCache.h"

#include <QFontMetricsF>
#include <QGlyphRun>
#include <QRawFont>
#include <QString>
#include <QTextLayout>

#include <algorithm>
#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <unordered_map>

namespace {

// A percentage letter spacing of 100 (or the unset 0) leaves glyphs where the font puts them.
constexpr double kNeutralLetterSpacingPercentage = 100.0;

// Hashes stored words and the views they are looked up by alike, so a lookup copies nothing.
struct WordHash {
    using is_transparent = void;
    std::size_t operator()(std::u16string_view word) const noexcept {
        return std::hash<std::u16string_view>{}(word);
    }
};

std::u16string_view viewOf(QStringView word) {
    return std::u16string_view(word.utf16(), static_cast<std::size_t>(word.size()));
}

constexpr char16_t kFirstPrintableAscii = u'!';
constexpr char16_t kLastPrintableAscii = u'~';

bool kernsAgainstSpaces(const QFontMetricsF& metrics, double space) {
    QString pair(2, QLatin1Char(' '));
    for (char16_t code = kFirstPrintableAscii; code <= kLastPrintableAscii; ++code) {
        const QChar character(code);
        const double alone = metrics.horizontalAdvance(QString(character));
        pair[0] = character;
        pair[1] = QLatin1Char(' ');
        if (metrics.horizontalAdvance(pair) != alone + space) {
            return true;
        }
        pair[0] = QLatin1Char(' ');
        pair[1] = character;
        if (metrics.horizontalAdvance(pair) != space + alone) {
            return true;
        }
    }
    return false;
}

} // namespace

struct KRWordAdvanceCache::FontWords {
    explicit FontWords(const QFont& wordFont)
        : font(wordFont), metrics(wordFont), space(metrics.horizontalAdvance(QStringLiteral(" "))) {}

    QFont font;
    QFontMetricsF metrics;
    double space;
    std::optional<bool> kernsAroundSpaces;
    std::unordered_map<std::u16string, Word, WordHash, std::equal_to<>> words;
};

KRWordAdvanceCache::KRWordAdvanceCache(std::size_t wordCapacity) : m_wordCapacity(wordCapacity) {}

KRWordAdvanceCache::~KRWordAdvanceCache() = default;

KRWordAdvanceCache& KRWordAdvanceCache::shared() {
    static KRWordAdvanceCache cache;
    return cache;
}

void KRWordAdvanceCache::clearShared() {
    shared().clear();
}

bool KRWordAdvanceCache::measuresWordsApart(const QFont& font) {
    const double letterSpacing = font.letterSpacing();
    const bool neutralLetterSpacing =
        letterSpacing == 0.0 || (font.letterSpacingType() == QFont::PercentageSpacing &&
                                 letterSpacing == kNeutralLetterSpacingPercentage);
    return neutralLetterSpacing && font.wordSpacing() == 0.0 && font.capitalization() == QFont::MixedCase;
}

void KRWordAdvanceCache::setFont(const QFont& font) {
    // Copies of one QFont share their data, so the usual case compares two pointers.
    if (!m_fonts.empty() && m_fonts.front()->font == font) {
        return;
    }
    const auto found =
        std::find_if(m_fonts.begin(), m_fonts.end(),
                     [&font](const std::unique_ptr<FontWords>& entry) { return entry->font == font; });
    if (found != m_fonts.end()) {
        std::rotate(m_fonts.begin(), found, found + 1);
        return;
    }
    if (m_fonts.size() >= kFontCapacity) {
        m_wordCount -= m_fonts.back()->words.size();
        m_fonts.pop_back();
    }
    m_fonts.insert(m_fonts.begin(), std::make_unique<FontWords>(font));
}

KRWordAdvanceCache::FontWords& KRWordAdvanceCache::currentFont() {
    if (m_fonts.empty()) {
        setFont(QFont());
    }
    return *m_fonts.front();
}

double KRWordAdvanceCache::spaceAdvance() {
    return currentFont().space;
}

bool KRWordAdvanceCache::kernsAroundSpaces() {
    FontWords& font = currentFont();
    if (!font.kernsAroundSpaces) {
        font.kernsAroundSpaces = kernsAgainstSpaces(font.metrics, font.space);
    }
    return *font.kernsAroundSpaces;
}

// Shapes the word on its own, as the text engine shapes it on a line, and looks at the glyph it ends with.
KRWordAdvanceCache::Word KRWordAdvanceCache::measureWord(const FontWords& font, const QString& word) {
    QTextLayout layout(word, font.font);
    QTextOption option;
    option.setWrapMode(QTextOption::ManualWrap);
    layout.setTextOption(option);
    layout.beginLayout();
    const QTextLine line = layout.createLine();
    layout.endLayout();
    const QString lastCharacter = word.right(1);
    if (lastCharacter.front().isSurrogate()) { // the metrics give bearings of single UTF-16 characters only
        return Word{line.horizontalAdvance(), 0.0, true};
    }
    const QList<QGlyphRun> lastGlyphs = line.glyphRuns(static_cast<int>(word.size() - 1), 1);
    const bool ownGlyph = lastGlyphs.size() == 1 && lastGlyphs.front().glyphIndexes().size() == 1 &&
                          lastGlyphs.front().rawFont().glyphIndexesForString(lastCharacter) ==
                              lastGlyphs.front().glyphIndexes();
    return Word{line.horizontalAdvance(), std::max(0.0, -font.metrics.rightBearing(lastCharacter.front())),
                !ownGlyph};
}

KRWordAdvanceCache::Word KRWordAdvanceCache::word(QStringView word) {
    if (word.isEmpty()) {
        return Word{};
    }
    FontWords& font = currentFont();
    const std::u16string_view key = viewOf(word);
    const auto found = font.words.find(key);
    if (found != font.words.end()) {
        return found->second;
    }
    const Word measured = measureWord(font, word.toString());
    if (m_wordCount >= m_wordCapacity) {
        for (const std::unique_ptr<FontWords>& entry : m_fonts) {
            entry->words.clear();
        }
        m_wordCount = 0;
    }
    if (m_wordCapacity == 0) {
        return measured;
    }
    font.words.emplace(key, measured);
    ++m_wordCount;
    return measured;
}

void KRWordAdvanceCache::clear() {
    m_fonts.clear();
    m_wordCount = 0;
}
