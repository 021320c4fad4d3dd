#include "Controls/KRDefaults.h"

#include <QFontDatabase>

#include <gtest/gtest.h>

TEST(KRDefaultsTests, BlendedColorMixesEachComponent) {
    const QColor blended = KRDefaults::blendedColor(QColor(255, 0, 0), 0.25, QColor(0, 0, 255));
    EXPECT_NEAR(blended.redF(), 0.75, 1e-3);
    EXPECT_NEAR(blended.greenF(), 0.0, 1e-3);
    EXPECT_NEAR(blended.blueF(), 0.25, 1e-3);
    EXPECT_NEAR(blended.alphaF(), 1.0, 1e-3);

    const QColor towardClear = KRDefaults::blendedColor(QColor(255, 255, 255), 0.5, KRDefaults::clearColor());
    EXPECT_NEAR(towardClear.redF(), 0.5, 1e-3);
    EXPECT_NEAR(towardClear.alphaF(), 0.5, 1e-3);
}

TEST(KRDefaultsTests, BlendedColorClampsTheFractionAndRejectsInvalidColours) {
    EXPECT_EQ(KRDefaults::blendedColor(Qt::red, 2.0, Qt::blue).rgba(), QColor(Qt::blue).rgba());
    EXPECT_EQ(KRDefaults::blendedColor(Qt::red, -1.0, Qt::blue).rgba(), QColor(Qt::red).rgba());
    EXPECT_FALSE(KRDefaults::blendedColor(QColor(), 0.5, Qt::blue).isValid());
}

TEST(KRDefaultsTests, RegularFontIsTheSystemFontSizedInPixels) {
    const QFont font = KRDefaults::regularFontOfSize(13);
    EXPECT_EQ(font.pixelSize(), 13);
    EXPECT_EQ(font.family(), QFontDatabase::systemFont(QFontDatabase::GeneralFont).family());
    EXPECT_EQ(KRDefaults::regularFontOfSize(12.6).pixelSize(), 13);
    EXPECT_EQ(KRDefaults::regularFontOfSize(0.2).pixelSize(), 1);
}

TEST(KRDefaultsTests, ColourHelpers) {
    EXPECT_EQ(KRDefaults::clearColor().rgba(), qRgba(0, 0, 0, 0));
    EXPECT_EQ(KRDefaults::whiteColor().rgba(), qRgba(255, 255, 255, 255));
    EXPECT_EQ(KRDefaults::blackColor().rgba(), qRgba(0, 0, 0, 255));
    const QColor grey = KRDefaults::colorWithWhite(0.5, 0.25);
    EXPECT_NEAR(grey.redF(), 0.5, 1e-3);
    EXPECT_NEAR(grey.blueF(), 0.5, 1e-3);
    EXPECT_NEAR(grey.alphaF(), 0.25, 1e-3);
    const QColor faded = KRDefaults::colorWithAlpha(QColor(10, 20, 30), 0.5);
    EXPECT_EQ(faded.red(), 10);
    EXPECT_EQ(faded.blue(), 30);
    EXPECT_NEAR(faded.alphaF(), 0.5, 1e-3);
}

TEST(KRDefaultsTests, NamedColoursSuitALightAppearance) {
    EXPECT_EQ(KRDefaults::manateeGrayColor().rgb(), qRgb(0x96, 0x9B, 0xAB));
    EXPECT_EQ(KRDefaults::sharkBlackColor().rgb(), qRgb(0x25, 0x27, 0x2C));
    for (const QColor& color : {KRDefaults::skyflowerBlueColor(), KRDefaults::taskSecondaryColor(),
                                KRDefaults::taskDetailsPlaceholderColor(), KRDefaults::vantorBlue3Color(),
                                KRDefaults::vantorBlue8Color()}) {
        EXPECT_EQ(color.alpha(), 255);
    }
    // Placeholder text reads lighter than secondary text, which reads lighter than primary text.
    EXPECT_GT(KRDefaults::taskDetailsPlaceholderColor().lightnessF(),
              KRDefaults::taskSecondaryColor().lightnessF());
    EXPECT_GT(KRDefaults::taskSecondaryColor().lightnessF(), KRDefaults::sharkBlackColor().lightnessF());
    // Accent blues are blue, the light one lighter and less saturated than the strong one.
    EXPECT_GT(KRDefaults::skyflowerBlueColor().blue(), KRDefaults::skyflowerBlueColor().red());
    EXPECT_GT(KRDefaults::vantorBlue3Color().lightnessF(), KRDefaults::vantorBlue8Color().lightnessF());
    EXPECT_LT(KRDefaults::vantorBlue3Color().hsvSaturationF(),
              KRDefaults::vantorBlue8Color().hsvSaturationF());
}
