#include "Foundation/KRSelector.h"

#include <QHash>
#include <QSet>

#include <gtest/gtest.h>

TEST(KRSelectorTests, DefaultSelectorIsNull) {
    EXPECT_TRUE(KRSelector().isNull());
    EXPECT_FALSE(KRSelector("moveUp:").isNull());
}

TEST(KRSelectorTests, NameKeepsTheSelectorTextVerbatim) {
    EXPECT_EQ(KRSelector("insertNewline:").name(), QStringLiteral("insertNewline:"));
    EXPECT_EQ(KRStringFromSelector(KRSelectorFromString(QStringLiteral("noop:"))), QStringLiteral("noop:"));
}

TEST(KRSelectorTests, SelectorsCompareByName) {
    EXPECT_EQ(KRSelector("moveUp:"), KRSelector(QStringLiteral("moveUp:")));
    EXPECT_FALSE(KRSelector("moveUp:") == KRSelector("moveDown:"));
    EXPECT_TRUE(KRSelector("moveUp:") == "moveUp:");
    EXPECT_FALSE(KRSelector("moveUp:") == "moveUp");
}

TEST(KRSelectorTests, EqualSelectorsHashAlikeAndDeduplicateInASet) {
    EXPECT_EQ(qHash(KRSelector("copy:")), qHash(KRSelectorFromString(QStringLiteral("copy:"))));
    QSet<KRSelector> set;
    set.insert(KRSelector("copy:"));
    set.insert(KRSelectorFromString(QStringLiteral("copy:")));
    set.insert(KRSelector("paste:"));
    EXPECT_EQ(set.size(), 2);
    EXPECT_TRUE(set.contains(KRSelector("paste:")));
}
