#include "KRCheckListDefaults.h"

#include "Controls/KRDefaults.h"

#include <gtest/gtest.h>

namespace {

TEST(KRCheckListDefaultsTests, MetricsHaveTheirValues) {
    EXPECT_EQ(KRCheckListDefaults::itemHeight(), 28.0);
    EXPECT_EQ(KRCheckListDefaults::lineHeight(), 18.0);
    EXPECT_EQ(KRCheckListDefaults::cornerRadius(), 3.0);
    EXPECT_EQ(KRCheckListDefaults::borderWidth(), 1.0);
    EXPECT_EQ(KRCheckListDefaults::hoverOffsetX(), 7.0);
    EXPECT_EQ(KRCheckListDefaults::maxDragOutX(), 20.0);
}

TEST(KRCheckListDefaultsTests, VerticalValuesMirrorTheHorizontalOnes) {
    EXPECT_EQ(KRCheckListDefaults::hoverOffsetY(), -7.0);
    EXPECT_EQ(KRCheckListDefaults::maxDragOutY(), 20.0);
}

TEST(KRCheckListDefaultsTests, FontIsTheToolkitsRegularFontAtFourteen) {
    const QFont font = KRCheckListDefaults::font();
    EXPECT_EQ(font, KRDefaults::regularFontOfSize(14.0));
    EXPECT_EQ(font.pixelSize(), 14);
    EXPECT_EQ(font.weight(), QFont::Normal);
}

TEST(KRCheckListDefaultsTests, ColoursComeFromTheToolkitPalette) {
    EXPECT_EQ(KRCheckListDefaults::tintColor(), KRDefaults::skyflowerBlueColor());
    EXPECT_EQ(KRCheckListDefaults::defaultTextColor(), KRDefaults::taskSecondaryColor());
    EXPECT_EQ(KRCheckListDefaults::placeholderColor(), KRDefaults::taskDetailsPlaceholderColor());
}

// QColor keeps 16 bits per channel.
constexpr double kChannelPrecision = 1.0 / 65535.0;

TEST(KRCheckListDefaultsTests, TranslucentBlacksAndTheClearFill) {
    const QColor dropPlaceholder = KRCheckListDefaults::dropPlaceholderColor();
    EXPECT_EQ(dropPlaceholder.rgb(), QColor(0, 0, 0).rgb());
    EXPECT_NEAR(dropPlaceholder.alphaF(), 0.05, kChannelPrecision);
    const QColor divider = KRCheckListDefaults::dividerColor();
    EXPECT_EQ(divider.rgb(), QColor(0, 0, 0).rgb());
    EXPECT_NEAR(divider.alphaF(), 0.07, kChannelPrecision);
    EXPECT_EQ(KRCheckListDefaults::fillColor().alpha(), 0);
}

} // namespace
