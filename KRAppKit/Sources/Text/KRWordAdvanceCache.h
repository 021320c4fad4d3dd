#pragma once

#include <QFont>
#include <QString>
#include <QStringView>

#include <cstddef>
#include <memory>
#include <vector>

// The advances of words, measured once per font and remembered, so a line of familiar words is measured by
// adding numbers instead of shaping its text again. A list measures thousands of titles in one font from a
// small vocabulary, so the cache keeps one word table per font and finds it by comparing the font with the
// one used last, which is almost always the answer. Bounded: past its capacity it forgets every word and
// starts over, which costs one shaping per word the next time round. For the GUI thread only.
class KRWordAdvanceCache {
public:
    // A word as a line breaker needs it.
    struct Word {
        double advance = 0.0; // the pen's travel over the word, shaped on its own
        // How far the word's last glyph reaches past its advance (a negative right bearing, as a positive
        // distance); the text engine counts it when it decides whether the word still fits on a line.
        double overhang = 0.0;
        // Shaping drew the last character with another glyph than its own (a ligature such as "ff"), whose
        // overhang the font's metrics cannot tell, so overhang is the last character's and may be wrong.
        bool lastGlyphSubstituted = false;
    };

    static constexpr std::size_t kDefaultWordCapacity = 16384;
    // Fonts remembered at once; the one used longest ago goes first.
    static constexpr std::size_t kFontCapacity = 8;

    explicit KRWordAdvanceCache(std::size_t wordCapacity = kDefaultWordCapacity);
    ~KRWordAdvanceCache();
    KRWordAdvanceCache(const KRWordAdvanceCache&) = delete;
    KRWordAdvanceCache& operator=(const KRWordAdvanceCache&) = delete;

    // The cache text layouts measure with.
    static KRWordAdvanceCache& shared();
    // Forgets everything the shared cache learnt, so the next measurements start cold.
    static void clearShared();

    // Whether a line in font is as wide as its words and spaces measured apart: no letter or word spacing
    // and no capitalisation, which shape a word differently depending on where it stands.
    static bool measuresWordsApart(const QFont& font);

    // Makes font the one the next lookups are in; cheap when it already is.
    void setFont(const QFont& font);
    // The advance of one space in the current font.
    double spaceAdvance();
    // Whether the current font kerns a printable ASCII character against a space, so that a word's advance
    // beside a space differs from its advance alone. Found out once per font.
    bool kernsAroundSpaces();
    // The word in the current font, measured on its first request. An empty word has no advance.
    Word word(QStringView word);

    std::size_t wordCount() const { return m_wordCount; }
    std::size_t fontCount() const { return m_fonts.size(); }
    std::size_t wordCapacity() const { return m_wordCapacity; }
    void clear();

private:
    struct FontWords;

    FontWords& currentFont();
    static Word measureWord(const FontWords& font, const QString& word);

    std::vector<std::unique_ptr<FontWords>> m_fonts; // most recently used first
    std::size_t m_wordCount = 0;
    std::size_t m_wordCapacity;
};
