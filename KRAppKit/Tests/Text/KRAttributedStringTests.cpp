#include "Text/KRAttributedString.h"

#include <gtest/gtest.h>

#include <QColor>

namespace {

KRTextAttributes redAttributes() {
    KRTextAttributes attributes;
    attributes.foregroundColor = QColor(255, 0, 0);
    attributes.strikethroughStyle = 1;
    return attributes;
}

KRTextAttributes blueAttributes() {
    KRTextAttributes attributes;
    attributes.foregroundColor = QColor(0, 0, 255);
    return attributes;
}

TEST(KRAttributedStringTests, StringsMadeWithEqualAttributesShareOneSet) {
    const KRAttributedString first(QStringLiteral("one"), redAttributes());
    const KRAttributedString second(QString(), redAttributes());
    ASSERT_EQ(first.runs().size(), 1u);
    ASSERT_EQ(second.runs().size(), 1u);
    EXPECT_EQ(&first.runs().front().attributes, &second.runs().front().attributes);
    EXPECT_EQ(&first.leadingAttributes(), KRAttributedString::sharedAttributes(redAttributes()).get());
}

TEST(KRAttributedStringTests, AUniformStringHasOneRunOverItsWholeLength) {
    const KRAttributedString string(QStringLiteral("hello"), blueAttributes());
    EXPECT_TRUE(string.hasUniformAttributes());
    ASSERT_EQ(string.runs().size(), 1u);
    EXPECT_EQ(string.runs().front().range, KRMakeRange(0, 5));
    EXPECT_EQ(string.runs().front().attributes, blueAttributes());
    KRRange effective{9, 9};
    EXPECT_EQ(string.attributesAtIndex(3, &effective), blueAttributes());
    EXPECT_EQ(effective, KRMakeRange(0, 5));
}

TEST(KRAttributedStringTests, AnEmptyStringKeepsItsAttributesInOneEmptyRun) {
    const KRAttributedString string(QString(), redAttributes());
    ASSERT_EQ(string.runs().size(), 1u);
    EXPECT_EQ(string.runs().front().range, KRMakeRange(0, 0));
    EXPECT_EQ(string.leadingAttributes(), redAttributes());
    EXPECT_TRUE(KRAttributedString().runs().empty());
    EXPECT_NE(KRAttributedString(), KRAttributedString(QString())) << "no run differs from one empty run";
}

TEST(KRAttributedStringTests, SettingAttributesSplitsRunsAndMergingBackMakesItUniformAgain) {
    KRAttributedString string(QStringLiteral("abcdef"), blueAttributes());
    string.setAttributes(redAttributes(), KRMakeRange(2, 2));
    EXPECT_FALSE(string.hasUniformAttributes());
    ASSERT_EQ(string.runs().size(), 3u);
    EXPECT_EQ(string.runs()[0].range, KRMakeRange(0, 2));
    EXPECT_EQ(string.runs()[1].range, KRMakeRange(2, 2));
    EXPECT_EQ(string.runs()[1].attributes, redAttributes());
    EXPECT_EQ(string.runs().back().range, KRMakeRange(4, 2));
    EXPECT_EQ(string.attributesAtIndex(3), redAttributes());
    EXPECT_EQ(string.attributesAtIndex(5), blueAttributes());

    int visited = 0;
    for (const KRAttributedString::Run& run : string.runs()) {
        visited += static_cast<int>(run.range.length);
    }
    EXPECT_EQ(visited, 6);

    string.setAttributes(blueAttributes(), KRMakeRange(2, 2));
    EXPECT_TRUE(string.hasUniformAttributes());
    EXPECT_EQ(string, KRAttributedString(QStringLiteral("abcdef"), blueAttributes()));
}

TEST(KRAttributedStringTests, EqualityComparesTextRangesAndAttributeValues) {
    KRAttributedString split(QStringLiteral("abcd"), blueAttributes());
    split.setAttributes(redAttributes(), KRMakeRange(0, 1));
    KRAttributedString same(QStringLiteral("abcd"), blueAttributes());
    same.setAttributes(redAttributes(), KRMakeRange(0, 1));
    EXPECT_EQ(split, same);
    EXPECT_NE(split, KRAttributedString(QStringLiteral("abcd"), blueAttributes()));
    EXPECT_NE(KRAttributedString(QStringLiteral("abcd"), redAttributes()),
              KRAttributedString(QStringLiteral("abce"), redAttributes()));
}

TEST(KRAttributedStringTests, SharedAttributesGoInAsGivenAndNoneMeansAnEmptySet) {
    const auto shared = KRAttributedString::sharedAttributes(redAttributes());
    const KRAttributedString string = KRAttributedString::withSharedAttributes(QStringLiteral("x"), shared);
    EXPECT_EQ(&string.leadingAttributes(), shared.get());
    const KRAttributedString plain = KRAttributedString::withSharedAttributes(QStringLiteral("x"), nullptr);
    EXPECT_EQ(plain, KRAttributedString(QStringLiteral("x")));
    EXPECT_EQ(plain.leadingAttributes().count(), 0u);
}

} // namespace
