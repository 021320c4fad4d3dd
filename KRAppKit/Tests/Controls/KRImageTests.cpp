#include "Controls/KRImage.h"

#include <QDir>
#include <QPainter>
#include <QTemporaryDir>

#include <gtest/gtest.h>

namespace {

QImage filledImage(int width, int height, const QColor& color) {
    QImage image(width, height, QImage::Format_ARGB32);
    image.fill(color);
    return image;
}

QImage transparentCanvas(int width, int height, double devicePixelRatio = 1.0) {
    QImage canvas(width, height, QImage::Format_ARGB32_Premultiplied);
    canvas.fill(Qt::transparent);
    canvas.setDevicePixelRatio(devicePixelRatio);
    return canvas;
}

std::shared_ptr<KRImage> twoScaleImage() {
    return KRImage::imageWithRepresentations(
        {{filledImage(10, 8, Qt::red), 1.0}, {filledImage(20, 16, Qt::green), 2.0}}, false);
}

} // namespace

TEST(KRImageTests, SizeInPointsComesFromThe1xRepresentation) {
    const auto image = twoScaleImage();
    ASSERT_TRUE(image);
    EXPECT_EQ(image->size(), KRSizeMake(10, 8));
    ASSERT_EQ(image->representations().size(), 2u);
    EXPECT_EQ(image->representations()[0].scale, 1.0);
    EXPECT_EQ(image->representations()[1].scale, 2.0);
}

TEST(KRImageTests, SizeOfAnImageWithOnlyA2xRepresentationIsHalved) {
    const auto image = KRImage::imageWithRepresentations({{filledImage(20, 16, Qt::green), 2.0}}, false);
    ASSERT_TRUE(image);
    EXPECT_EQ(image->size(), KRSizeMake(10, 8));
}

TEST(KRImageTests, NoUsableRepresentationGivesNoImage) {
    EXPECT_FALSE(KRImage::imageWithRepresentations({}, false));
    EXPECT_FALSE(KRImage::imageWithRepresentations({{QImage(), 1.0}}, false));
}

TEST(KRImageTests, BestRepresentationIsTheNearestScaleFromAboveElseTheLargest) {
    const auto image = twoScaleImage();
    EXPECT_EQ(image->bestRepresentationForScale(0.5)->scale, 1.0);
    EXPECT_EQ(image->bestRepresentationForScale(1.0)->scale, 1.0);
    EXPECT_EQ(image->bestRepresentationForScale(1.5)->scale, 2.0);
    EXPECT_EQ(image->bestRepresentationForScale(2.0)->scale, 2.0);
    EXPECT_EQ(image->bestRepresentationForScale(3.0)->scale, 2.0);
}

TEST(KRImageTests, LimitingToA2xRepresentationKeepsOnlyItAndThePointSize) {
    const auto image = twoScaleImage();
    const auto limited = image->imageByLimitingToRepresentationWithScale(2.0);
    ASSERT_TRUE(limited);
    ASSERT_EQ(limited->representations().size(), 1u);
    EXPECT_EQ(limited->representations()[0].scale, 2.0);
    EXPECT_EQ(limited->representations()[0].image.size(), QSize(20, 16));
    EXPECT_EQ(limited->size(), KRSizeMake(10, 8));
    EXPECT_EQ(image->representations().size(), 2u); // the original is untouched
}

TEST(KRImageTests, LimitingTwiceToTheSameScaleSharesOneCopy) {
    const auto image = twoScaleImage();
    const auto first = image->imageByLimitingToRepresentationWithScale(2.0);
    const auto second = image->imageByLimitingToRepresentationWithScale(2.0);
    const auto other = image->imageByLimitingToRepresentationWithScale(1.0);
    EXPECT_EQ(first, second);
    EXPECT_NE(first, other);
    EXPECT_EQ(other->representations()[0].scale, 1.0);
}

TEST(KRImageTests, LimitingToAMissingScaleKeepsTheBestRepresentationForIt) {
    const auto limited = twoScaleImage()->imageByLimitingToRepresentationWithScale(3.0);
    ASSERT_EQ(limited->representations().size(), 1u);
    EXPECT_EQ(limited->representations()[0].scale, 2.0);
}

TEST(KRImageTests, ImageNamedLoadsBothScalesAndKnowsTemplatesByName) {
    QTemporaryDir directory;
    ASSERT_TRUE(directory.isValid());
    ASSERT_TRUE(filledImage(6, 4, Qt::red).save(directory.filePath("checkTemplate.png")));
    ASSERT_TRUE(filledImage(12, 8, Qt::red).save(directory.filePath("checkTemplate@2x.png")));
    ASSERT_TRUE(filledImage(6, 4, Qt::blue).save(directory.filePath("plain@2x.png")));

    const auto check = KRImage::imageNamed("checkTemplate", directory.path());
    ASSERT_TRUE(check);
    EXPECT_EQ(check->representations().size(), 2u);
    EXPECT_EQ(check->size(), KRSizeMake(6, 4));
    EXPECT_TRUE(check->isTemplate());

    const auto plain = KRImage::imageNamed("plain", directory.path() + "/");
    ASSERT_TRUE(plain);
    EXPECT_EQ(plain->representations().size(), 1u);
    EXPECT_EQ(plain->size(), KRSizeMake(3, 2));
    EXPECT_FALSE(plain->isTemplate());
    plain->setTemplate(true);
    EXPECT_TRUE(plain->isTemplate());

    EXPECT_FALSE(KRImage::imageNamed("missing", directory.path()));
}

TEST(KRImageTests, TemplateImageDrawsTheTintThroughItsAlphaChannel) {
    // Columns 0-1 opaque, 2-3 half transparent, 4-5 fully transparent.
    QImage mask(6, 2, QImage::Format_ARGB32);
    mask.fill(Qt::transparent);
    for (int y = 0; y < 2; ++y) {
        for (int x = 0; x < 4; ++x) {
            mask.setPixelColor(x, y, QColor(255, 0, 0, x < 2 ? 255 : 128));
        }
    }
    const auto image = KRImage::imageWithRepresentations({{mask, 1.0}}, true);
    QImage canvas = transparentCanvas(6, 2);
    {
        QPainter painter(&canvas);
        image->draw(painter, KRRectMake(0, 0, 6, 2), 1.0, QColor(0, 0, 255));
    }
    EXPECT_EQ(canvas.pixelColor(0, 0), QColor(0, 0, 255, 255));
    const QColor half = canvas.pixelColor(3, 1);
    EXPECT_NEAR(half.alpha(), 128, 2);
    EXPECT_EQ(half.red(), 0);
    EXPECT_NEAR(half.blue(), 255, 2);
    EXPECT_EQ(canvas.pixelColor(5, 0).alpha(), 0);
}

TEST(KRImageTests, ATinted2xBitmapFillsItsWholeRectOnA2xCanvas) {
    // A 2x mask whose right half is transparent: drawn at 2x, the tint must cover exactly the left half.
    QImage mask(8, 8, QImage::Format_ARGB32);
    mask.fill(Qt::transparent);
    for (int y = 0; y < 8; ++y) {
        for (int x = 0; x < 4; ++x) {
            mask.setPixelColor(x, y, Qt::black);
        }
    }
    const auto image =
        KRImage::imageWithRepresentations({{filledImage(4, 4, Qt::black), 1.0}, {mask, 2.0}}, true);
    QImage canvas = transparentCanvas(8, 8, 2.0);
    {
        QPainter painter(&canvas);
        image->draw(painter, KRRectMake(0, 0, 4, 4), 1.0, QColor(0, 0, 255));
    }
    EXPECT_EQ(canvas.pixelColor(0, 0), QColor(0, 0, 255));
    EXPECT_EQ(canvas.pixelColor(3, 7), QColor(0, 0, 255));
    EXPECT_EQ(canvas.pixelColor(4, 0).alpha(), 0);
    EXPECT_EQ(canvas.pixelColor(7, 7).alpha(), 0);
}

TEST(KRImageTests, TintsOfDifferentColoursAreNotMixedUp) {
    const auto image = KRImage::imageWithRepresentations({{filledImage(2, 2, Qt::black), 1.0}}, true);
    for (const QColor& tint : {QColor(0, 0, 255), QColor(0, 255, 0), QColor(0, 0, 255)}) {
        QImage canvas = transparentCanvas(2, 2);
        QPainter painter(&canvas);
        image->draw(painter, KRRectMake(0, 0, 2, 2), 1.0, tint);
        painter.end();
        EXPECT_EQ(canvas.pixelColor(1, 1), tint);
    }
}

TEST(KRImageTests, NonTemplateImageOrInvalidTintDrawsAsIs) {
    const auto plain = KRImage::imageWithRepresentations({{filledImage(2, 2, Qt::red), 1.0}}, false);
    const auto mask = KRImage::imageWithRepresentations({{filledImage(2, 2, Qt::red), 1.0}}, true);
    QImage canvas = transparentCanvas(4, 2);
    {
        QPainter painter(&canvas);
        plain->draw(painter, KRRectMake(0, 0, 2, 2), 1.0, QColor(0, 0, 255));
        mask->draw(painter, KRRectMake(2, 0, 2, 2), 1.0, QColor());
    }
    EXPECT_EQ(canvas.pixelColor(0, 0), QColor(255, 0, 0));
    EXPECT_EQ(canvas.pixelColor(3, 1), QColor(255, 0, 0));
}

TEST(KRImageTests, DrawingPicksTheRepresentationForTheDevicePixelRatio) {
    const auto image = twoScaleImage(); // 1x red, 2x green
    QImage standard = transparentCanvas(10, 8, 1.0);
    QImage retina = transparentCanvas(20, 16, 2.0);
    for (QImage* canvas : {&standard, &retina}) {
        QPainter painter(canvas);
        image->draw(painter, KRRectMake(0, 0, 10, 8));
    }
    EXPECT_EQ(standard.pixelColor(5, 4), QColor(Qt::red));
    EXPECT_EQ(retina.pixelColor(10, 8), QColor(Qt::green));
}

TEST(KRImageTests, AlphaMultipliesTheDrawing) {
    const auto image = KRImage::imageWithRepresentations({{filledImage(2, 2, Qt::red), 1.0}}, false);
    QImage canvas = transparentCanvas(2, 2);
    {
        QPainter painter(&canvas);
        image->draw(painter, KRRectMake(0, 0, 2, 2), 0.5);
    }
    EXPECT_NEAR(canvas.pixelColor(0, 0).alpha(), 128, 2);
    EXPECT_EQ(canvas.pixelColor(0, 0).red(), 255);
}
