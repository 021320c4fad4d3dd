#include "Text/KRWordAdvanceCache.h"

#include <QFontMetricsF>
#include <QString>
#include <QStringList>

#include <gtest/gtest.h>

namespace {

constexpr int kTitlePixelSize = 13;
constexpr int kLargePixelSize = 20;
constexpr std::size_t kSmallCapacity = 4;

QFont dejaVu(int pixelSize) {
    QFont font(QStringLiteral("DejaVu Sans"));
    font.setPixelSize(pixelSize);
    return font;
}

double advanceOf(const QString& word, const QFont& font) {
    return QFontMetricsF(font).horizontalAdvance(word);
}

TEST(KRWordAdvanceCacheTest, MeasuresAWordOnceAndRemembersIt) {
    KRWordAdvanceCache cache;
    cache.setFont(dejaVu(kTitlePixelSize));
    const KRWordAdvanceCache::Word first = cache.word(u"plumber");
    EXPECT_EQ(first.advance, advanceOf(QStringLiteral("plumber"), dejaVu(kTitlePixelSize)));
    EXPECT_GT(first.advance, 0.0);
    EXPECT_EQ(cache.wordCount(), 1u);
    const KRWordAdvanceCache::Word again = cache.word(u"plumber");
    EXPECT_EQ(again.advance, first.advance);
    EXPECT_EQ(cache.wordCount(), 1u);
    EXPECT_EQ(cache.spaceAdvance(), advanceOf(QStringLiteral(" "), dejaVu(kTitlePixelSize)));
}

TEST(KRWordAdvanceCacheTest, AnEmptyWordHasNoAdvanceAndIsNotStored) {
    KRWordAdvanceCache cache;
    cache.setFont(dejaVu(kTitlePixelSize));
    EXPECT_EQ(cache.word(QStringView()).advance, 0.0);
    EXPECT_EQ(cache.wordCount(), 0u);
}

TEST(KRWordAdvanceCacheTest, KeepsTheSameWordInTwoFontsApart) {
    KRWordAdvanceCache cache;
    const QFont small = dejaVu(kTitlePixelSize);
    const QFont large = dejaVu(kLargePixelSize);
    cache.setFont(small);
    const double inSmall = cache.word(u"budget").advance;
    cache.setFont(large);
    const double inLarge = cache.word(u"budget").advance;
    EXPECT_EQ(inSmall, advanceOf(QStringLiteral("budget"), small));
    EXPECT_EQ(inLarge, advanceOf(QStringLiteral("budget"), large));
    EXPECT_NE(inSmall, inLarge);
    EXPECT_EQ(cache.fontCount(), 2u);
    EXPECT_EQ(cache.wordCount(), 2u);
    // Back in the first font the word is still known there.
    cache.setFont(small);
    EXPECT_EQ(cache.word(u"budget").advance, inSmall);
    EXPECT_EQ(cache.wordCount(), 2u);
    EXPECT_EQ(cache.spaceAdvance(), advanceOf(QStringLiteral(" "), small));
}

TEST(KRWordAdvanceCacheTest, EqualFontsMadeSeparatelyShareOneTable) {
    KRWordAdvanceCache cache;
    cache.setFont(dejaVu(kTitlePixelSize));
    cache.word(u"report");
    cache.setFont(dejaVu(kTitlePixelSize));
    cache.word(u"report");
    EXPECT_EQ(cache.fontCount(), 1u);
    EXPECT_EQ(cache.wordCount(), 1u);
}

TEST(KRWordAdvanceCacheTest, ForgetsEveryWordWhenItWouldPassItsCapacity) {
    KRWordAdvanceCache cache(kSmallCapacity);
    const QFont font = dejaVu(kTitlePixelSize);
    cache.setFont(font);
    const QStringList words = {QStringLiteral("buy"), QStringLiteral("milk"), QStringLiteral("call"),
                               QStringLiteral("the"), QStringLiteral("plumber")};
    ASSERT_EQ(static_cast<std::size_t>(words.size()), kSmallCapacity + 1);
    for (qsizetype index = 0; index < words.size() - 1; ++index) {
        cache.word(words[index]);
    }
    EXPECT_EQ(cache.wordCount(), kSmallCapacity);
    cache.word(words.back());
    EXPECT_EQ(cache.wordCount(), 1u);
    // A forgotten word is measured again, to the same answer.
    EXPECT_EQ(cache.word(words.front()).advance, advanceOf(words.front(), font));
    EXPECT_EQ(cache.wordCount(), 2u);
    EXPECT_EQ(cache.wordCapacity(), kSmallCapacity);
}

TEST(KRWordAdvanceCacheTest, DropsTheFontUsedLongestAgoPastItsFontCapacity) {
    KRWordAdvanceCache cache;
    const int firstSize = kTitlePixelSize;
    const int fontsUsed = static_cast<int>(KRWordAdvanceCache::kFontCapacity) + 1;
    for (int size = firstSize; size < firstSize + fontsUsed; ++size) {
        cache.setFont(dejaVu(size));
        cache.word(u"slides");
    }
    EXPECT_EQ(cache.fontCount(), KRWordAdvanceCache::kFontCapacity);
    EXPECT_EQ(cache.wordCount(), KRWordAdvanceCache::kFontCapacity);
    // The first font went with its word; the second is still there with its.
    cache.setFont(dejaVu(firstSize + 1));
    cache.word(u"slides");
    EXPECT_EQ(cache.wordCount(), KRWordAdvanceCache::kFontCapacity);
    cache.setFont(dejaVu(firstSize));
    cache.word(u"slides");
    EXPECT_EQ(cache.fontCount(), KRWordAdvanceCache::kFontCapacity);
    EXPECT_EQ(cache.wordCount(), KRWordAdvanceCache::kFontCapacity);
}

TEST(KRWordAdvanceCacheTest, KeepsItsOwnCopyOfTheWordsItStores) {
    KRWordAdvanceCache cache;
    cache.setFont(dejaVu(kTitlePixelSize));
    QString title = QStringLiteral("passport");
    const double advance = cache.word(title).advance;
    title[0] = QLatin1Char('X');
    EXPECT_EQ(cache.word(u"passport").advance, advance);
    EXPECT_EQ(cache.wordCount(), 1u);
}

TEST(KRWordAdvanceCacheTest, OverhangIsWhatTheLastGlyphReachesPastTheAdvance) {
    KRWordAdvanceCache cache;
    const QFont font = dejaVu(kTitlePixelSize);
    cache.setFont(font);
    const QFontMetricsF metrics(font);
    ASSERT_LT(metrics.rightBearing(QLatin1Char('r')), 0.0) << "a letter that overhangs in this font";
    ASSERT_GE(metrics.rightBearing(QLatin1Char('k')), 0.0);
    EXPECT_EQ(cache.word(u"plumber").overhang, -metrics.rightBearing(QLatin1Char('r')));
    EXPECT_EQ(cache.word(u"milk").overhang, 0.0);
}

TEST(KRWordAdvanceCacheTest, NoticesAWordEndingInAGlyphThatIsNotItsLastCharacters) {
    KRWordAdvanceCache cache;
    const QFont font = dejaVu(kTitlePixelSize);
    cache.setFont(font);
    // The font joins "ff" and "fi" into ligatures.
    EXPECT_TRUE(cache.word(u"staff").lastGlyphSubstituted);
    EXPECT_TRUE(cache.word(u"wifi").lastGlyphSubstituted);
    EXPECT_FALSE(cache.word(u"office").lastGlyphSubstituted);
    EXPECT_FALSE(cache.word(u"milk").lastGlyphSubstituted);
    // Nor can the metrics tell the overhang of a character outside the basic plane.
    EXPECT_TRUE(cache.word(u"cake\U0001F382").lastGlyphSubstituted);
    // The ligature inside still counts in the advance, as it does on a line.
    EXPECT_EQ(cache.word(u"office").advance, advanceOf(QStringLiteral("office"), font));
    EXPECT_EQ(cache.word(u"staff").advance, advanceOf(QStringLiteral("staff"), font));
}

TEST(KRWordAdvanceCacheTest, TitleFontsDoNotKernAgainstSpaces) {
    KRWordAdvanceCache cache;
    for (const int size : {kTitlePixelSize, kLargePixelSize}) {
        cache.setFont(dejaVu(size));
        EXPECT_FALSE(cache.kernsAroundSpaces()) << size;
    }
    // Kerning itself is on: letter pairs do kern.
    const QFont font = dejaVu(kTitlePixelSize);
    EXPECT_NE(advanceOf(QStringLiteral("AV"), font),
              advanceOf(QStringLiteral("A"), font) + advanceOf(QStringLiteral("V"), font));
}

TEST(KRWordAdvanceCacheTest, SpacingAndCapitalisationKeepWordsFromBeingMeasuredApart) {
    const QFont plain = dejaVu(kTitlePixelSize);
    EXPECT_TRUE(KRWordAdvanceCache::measuresWordsApart(plain));
    QFont neutral = plain;
    neutral.setLetterSpacing(QFont::PercentageSpacing, 100.0);
    EXPECT_TRUE(KRWordAdvanceCache::measuresWordsApart(neutral));
    QFont spaced = plain;
    spaced.setLetterSpacing(QFont::AbsoluteSpacing, 1.0);
    EXPECT_FALSE(KRWordAdvanceCache::measuresWordsApart(spaced));
    QFont stretched = plain;
    stretched.setLetterSpacing(QFont::PercentageSpacing, 120.0);
    EXPECT_FALSE(KRWordAdvanceCache::measuresWordsApart(stretched));
    QFont wordSpaced = plain;
    wordSpaced.setWordSpacing(2.0);
    EXPECT_FALSE(KRWordAdvanceCache::measuresWordsApart(wordSpaced));
    QFont smallCaps = plain;
    smallCaps.setCapitalization(QFont::SmallCaps);
    EXPECT_FALSE(KRWordAdvanceCache::measuresWordsApart(smallCaps));
}

TEST(KRWordAdvanceCacheTest, ClearingTheSharedCacheForgetsEverything) {
    KRWordAdvanceCache& shared = KRWordAdvanceCache::shared();
    shared.setFont(dejaVu(kTitlePixelSize));
    shared.word(u"review");
    EXPECT_GE(shared.wordCount(), 1u);
    KRWordAdvanceCache::clearShared();
    EXPECT_EQ(shared.wordCount(), 0u);
    EXPECT_EQ(shared.fontCount(), 0u);
}

} // namespace
