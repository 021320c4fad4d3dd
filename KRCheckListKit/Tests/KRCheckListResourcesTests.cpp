#include "KRCheckListResources.h"

#include "Controls/KRHelper.h"
#include "Controls/KRImage.h"
#include "KRCheckListDefaults.h"

#include <QDir>
#include <QFile>
#include <QImage>
#include <QTemporaryDir>
#include <gtest/gtest.h>

#include <functional>
#include <vector>

namespace {

struct NamedImage {
    const char* name;
    std::function<std::shared_ptr<KRImage>()> image;
};

std::vector<NamedImage> allImages() {
    return {
        {"KRChecklist-Checkbox-Normal-Template", &KRCheckListResources::checkboxNormalImage},
        {"KRChecklist-Checkbox-Completed-Template", &KRCheckListResources::checkboxCompletedImage},
        {"KRChecklist-Checkbox-Canceled-Template", &KRCheckListResources::checkboxCanceledImage},
        {"KRChecklist-Handle-Template", &KRCheckListResources::handleImage},
    };
}

const QImage& bitmap(const std::shared_ptr<KRImage>& image, double scale) {
    const KRImageRepresentation* representation = image->bestRepresentationForScale(scale);
    EXPECT_EQ(representation->scale, scale);
    return representation->image;
}

int alphaAt(const QImage& image, int x, int y) {
    return qAlpha(image.pixel(x, y));
}

// The bounds of the pixels with any coverage.
QRect coveredRect(const QImage& image) {
    QRect covered;
    for (int y = 0; y < image.height(); ++y) {
        for (int x = 0; x < image.width(); ++x) {
            if (alphaAt(image, x, y) > 0) {
                covered |= QRect(x, y, 1, 1);
            }
        }
    }
    return covered;
}

class KRCheckListResourcesTests : public ::testing::Test {
protected:
    void SetUp() override { KRHelper::clearImageCache(); }
    void TearDown() override { KRHelper::clearImageCache(); }
};

TEST_F(KRCheckListResourcesTests, BundleIsTheLibrarysOwnResourcePrefix) {
    EXPECT_EQ(KRCheckListResources::bundle(), QStringLiteral(":/KRCheckListKit"));
    for (const NamedImage& named : allImages()) {
        const QString base = KRCheckListResources::bundle() + QLatin1Char('/') + QLatin1String(named.name);
        EXPECT_TRUE(QFile::exists(base + QStringLiteral(".png"))) << named.name;
        EXPECT_TRUE(QFile::exists(base + QStringLiteral("@2x.png"))) << named.name;
    }
}

TEST_F(KRCheckListResourcesTests, EachImageIsANamedTemplateWithOneAndTwoTimesBitmaps) {
    for (const NamedImage& named : allImages()) {
        SCOPED_TRACE(named.name);
        const std::shared_ptr<KRImage> image = named.image();
        ASSERT_TRUE(image);
        EXPECT_EQ(image->name(), QLatin1String(named.name));
        EXPECT_TRUE(image->isTemplate());
        ASSERT_EQ(image->representations().size(), 2u);
        const KRSize size = image->size();
        EXPECT_GT(size.width, 0.0);
        EXPECT_GT(size.height, 0.0);
        for (const double scale : {1.0, 2.0}) {
            const QImage& pixels = bitmap(image, scale);
            EXPECT_EQ(pixels.width(), size.width * scale);
            EXPECT_EQ(pixels.height(), size.height * scale);
            EXPECT_TRUE(pixels.hasAlphaChannel());
        }
    }
}

TEST_F(KRCheckListResourcesTests, CheckBoxesSpanALineAndTheHandleFitsBesideOne) {
    const double line = KRCheckListDefaults::lineHeight();
    for (const auto& checkbox :
         {KRCheckListResources::checkboxNormalImage(), KRCheckListResources::checkboxCompletedImage(),
          KRCheckListResources::checkboxCanceledImage()}) {
        ASSERT_TRUE(checkbox);
        EXPECT_EQ(checkbox->size().width, line) << checkbox->name().toStdString();
        EXPECT_EQ(checkbox->size().height, line) << checkbox->name().toStdString();
    }
    const std::shared_ptr<KRImage> handle = KRCheckListResources::handleImage();
    ASSERT_TRUE(handle);
    EXPECT_LT(handle->size().width, line);
    EXPECT_LT(handle->size().height, line);
}

TEST_F(KRCheckListResourcesTests, AskingTwiceLoadsOnceThroughTheToolkitsCache) {
    for (const NamedImage& named : allImages()) {
        SCOPED_TRACE(named.name);
        const int before = KRHelper::cachedImageLoadCount();
        const std::shared_ptr<KRImage> first = KRCheckListResources::checkListResourcesImageNamed(named.name);
        EXPECT_EQ(KRHelper::cachedImageLoadCount(), before + 1);
        const std::shared_ptr<KRImage> second = named.image();
        EXPECT_EQ(KRHelper::cachedImageLoadCount(), before + 1);
        ASSERT_TRUE(first);
        EXPECT_EQ(first, second);
        // The cache is the toolkit's, keyed by the library's bundle.
        EXPECT_EQ(KRHelper::cachedImageNamed(named.name, KRCheckListResources::bundle()), first);
        EXPECT_EQ(KRHelper::cachedImageLoadCount(), before + 1);
    }
}

TEST_F(KRCheckListResourcesTests, ClearingTheToolkitsCacheLoadsAFreshImage) {
    const std::shared_ptr<KRImage> first = KRCheckListResources::handleImage();
    KRHelper::clearImageCache();
    const std::shared_ptr<KRImage> second = KRCheckListResources::handleImage();
    ASSERT_TRUE(first);
    ASSERT_TRUE(second);
    EXPECT_NE(first, second);
    EXPECT_EQ(KRHelper::cachedImageLoadCount(), 1);
    EXPECT_EQ(bitmap(first, 2.0), bitmap(second, 2.0));
}

TEST_F(KRCheckListResourcesTests, AnApplicationImageOfTheSameNameDoesNotShadowTheLibrarysImage) {
    const QString name = QStringLiteral("KRChecklist-Checkbox-Normal-Template");
    QTemporaryDir application;
    ASSERT_TRUE(application.isValid());
    for (const int scale : {1, 2}) {
        QImage impostor(30 * scale, 24 * scale, QImage::Format_ARGB32);
        impostor.fill(Qt::black);
        const QString file = name + (scale == 1 ? QStringLiteral(".png") : QStringLiteral("@2x.png"));
        ASSERT_TRUE(impostor.save(QDir(application.path()).filePath(file)));
    }

    // The application's copy is asked for first, so nothing depends on which one the cache met first.
    const std::shared_ptr<KRImage> applications = KRHelper::cachedImageNamed(name, application.path());
    const std::shared_ptr<KRImage> librarys = KRCheckListResources::checkListResourcesImageNamed(name);
    ASSERT_TRUE(applications);
    ASSERT_TRUE(librarys);
    EXPECT_NE(applications, librarys);

    EXPECT_EQ(applications->size().width, 30.0);
    EXPECT_EQ(applications->size().height, 24.0);
    EXPECT_EQ(alphaAt(bitmap(applications, 1.0), 15, 12), 255);

    const QImage ownOneTimes(KRCheckListResources::bundle() + QLatin1Char('/') + name +
                             QStringLiteral(".png"));
    const QImage ownTwoTimes(KRCheckListResources::bundle() + QLatin1Char('/') + name +
                             QStringLiteral("@2x.png"));
    EXPECT_EQ(librarys->size().width, ownOneTimes.width());
    EXPECT_EQ(librarys->size().height, ownOneTimes.height());
    EXPECT_EQ(bitmap(librarys, 1.0).convertToFormat(QImage::Format_ARGB32),
              ownOneTimes.convertToFormat(QImage::Format_ARGB32));
    EXPECT_EQ(bitmap(librarys, 2.0).convertToFormat(QImage::Format_ARGB32),
              ownTwoTimes.convertToFormat(QImage::Format_ARGB32));
}

TEST_F(KRCheckListResourcesTests, UnknownNamesAnswerNull) {
    EXPECT_EQ(
        KRCheckListResources::checkListResourcesImageNamed(QStringLiteral("KRChecklist-Nothing-Template")),
        nullptr);
    EXPECT_EQ(KRCheckListResources::checkListResourcesImageNamed(QString()), nullptr);

    // An image only the application has is not the library's either.
    QTemporaryDir application;
    ASSERT_TRUE(application.isValid());
    const QString name = QStringLiteral("KRChecklist-ApplicationOnly-Template");
    QImage own(8, 8, QImage::Format_ARGB32);
    own.fill(Qt::black);
    ASSERT_TRUE(own.save(QDir(application.path()).filePath(name + QStringLiteral(".png"))));
    EXPECT_TRUE(KRHelper::cachedImageNamed(name, application.path()));
    EXPECT_EQ(KRCheckListResources::checkListResourcesImageNamed(name), nullptr);
}

TEST_F(KRCheckListResourcesTests, CheckBoxOutlineIsOpaqueAtItsEdgesAndClearInside) {
    const std::shared_ptr<KRImage> normal = KRCheckListResources::checkboxNormalImage();
    ASSERT_TRUE(normal);
    for (const double scale : {1.0, 2.0}) {
        SCOPED_TRACE(scale);
        const QImage& pixels = bitmap(normal, scale);
        const QRect box = coveredRect(pixels);
        ASSERT_FALSE(box.isEmpty());
        // Centred, with room around it.
        EXPECT_EQ(box.left(), pixels.width() - 1 - box.right());
        EXPECT_EQ(box.top(), pixels.height() - 1 - box.bottom());
        EXPECT_GT(box.left(), 0);
        EXPECT_GT(box.top(), 0);

        // Sharp: halfway along each side the outermost pixel is fully covered.
        const QPoint centre = box.center();
        EXPECT_EQ(alphaAt(pixels, centre.x(), box.top()), 255);
        EXPECT_EQ(alphaAt(pixels, centre.x(), box.bottom()), 255);
        EXPECT_EQ(alphaAt(pixels, box.left(), centre.y()), 255);
        EXPECT_EQ(alphaAt(pixels, box.right(), centre.y()), 255);

        // Hollow: clear from past the rounded corners to the middle.
        const int inset = int(4 * scale);
        const QRect inside = box.adjusted(inset, inset, -inset, -inset);
        ASSERT_FALSE(inside.isEmpty());
        for (int y = inside.top(); y <= inside.bottom(); ++y) {
            for (int x = inside.left(); x <= inside.right(); ++x) {
                ASSERT_EQ(alphaAt(pixels, x, y), 0) << x << "," << y;
            }
        }
        EXPECT_EQ(alphaAt(pixels, pixels.width() / 2, pixels.height() / 2), 0);
    }
}

TEST_F(KRCheckListResourcesTests, MarksFillTheBoxWhereTheOpenBoxIsClear) {
    const std::shared_ptr<KRImage> normal = KRCheckListResources::checkboxNormalImage();
    ASSERT_TRUE(normal);
    for (const auto& marked :
         {KRCheckListResources::checkboxCompletedImage(), KRCheckListResources::checkboxCanceledImage()}) {
        ASSERT_TRUE(marked);
        for (const double scale : {1.0, 2.0}) {
            SCOPED_TRACE(marked->name().toStdString() + " @" + std::to_string(scale));
            const QImage& open = bitmap(normal, scale);
            const QImage& pixels = bitmap(marked, scale);
            const QRect box = coveredRect(open);
            int markPixels = 0;
            for (int y = box.top(); y <= box.bottom(); ++y) {
                for (int x = box.left(); x <= box.right(); ++x) {
                    if (alphaAt(open, x, y) == 0 && alphaAt(pixels, x, y) >= 192) {
                        ++markPixels;
                    }
                }
            }
            // Strokes several points long, not a speck.
            EXPECT_GE(markPixels, int(6 * scale * scale));
            // The mark stays inside the box.
            EXPECT_EQ(coveredRect(pixels), box);
        }
    }
}

TEST_F(KRCheckListResourcesTests, TheThreeCheckBoxesShareTheirOutline) {
    const std::shared_ptr<KRImage> normal = KRCheckListResources::checkboxNormalImage();
    ASSERT_TRUE(normal);
    for (const auto& marked :
         {KRCheckListResources::checkboxCompletedImage(), KRCheckListResources::checkboxCanceledImage()}) {
        ASSERT_TRUE(marked);
        for (const double scale : {1.0, 2.0}) {
            SCOPED_TRACE(marked->name().toStdString() + " @" + std::to_string(scale));
            const QImage& open = bitmap(normal, scale);
            const QImage& pixels = bitmap(marked, scale);
            ASSERT_EQ(pixels.size(), open.size());
            const QRect box = coveredRect(open);
            // The outline's rows and columns match pixel for pixel...
            for (int x = 0; x < open.width(); ++x) {
                EXPECT_EQ(alphaAt(pixels, x, box.top()), alphaAt(open, x, box.top())) << x;
                EXPECT_EQ(alphaAt(pixels, x, box.bottom()), alphaAt(open, x, box.bottom())) << x;
            }
            for (int y = 0; y < open.height(); ++y) {
                EXPECT_EQ(alphaAt(pixels, box.left(), y), alphaAt(open, box.left(), y)) << y;
                EXPECT_EQ(alphaAt(pixels, box.right(), y), alphaAt(open, box.right(), y)) << y;
            }
            // ...and so does every pixel of the outline: the marks do not touch it.
            int differing = 0;
            for (int y = 0; y < open.height(); ++y) {
                for (int x = 0; x < open.width(); ++x) {
                    if (alphaAt(open, x, y) > 0 && alphaAt(pixels, x, y) != alphaAt(open, x, y)) {
                        ++differing;
                    }
                }
            }
            EXPECT_EQ(differing, 0);
        }
    }
}

TEST_F(KRCheckListResourcesTests, HandleIsThreeSharpBars) {
    const std::shared_ptr<KRImage> handle = KRCheckListResources::handleImage();
    ASSERT_TRUE(handle);
    for (const double scale : {1.0, 2.0}) {
        SCOPED_TRACE(scale);
        const QImage& pixels = bitmap(handle, scale);
        const int column = pixels.width() / 2;
        int bars = 0;
        bool inBar = false;
        for (int y = 0; y < pixels.height(); ++y) {
            const int alpha = alphaAt(pixels, column, y);
            // Bars lie on whole pixel rows: nothing half covered down the middle.
            EXPECT_TRUE(alpha == 0 || alpha == 255) << y << ": " << alpha;
            if (alpha > 0 && !inBar) {
                ++bars;
            }
            inBar = alpha > 0;
        }
        EXPECT_EQ(bars, 3);
    }
    // At 1x every pixel is either covered or clear.
    const QImage& oneTimes = bitmap(handle, 1.0);
    for (int y = 0; y < oneTimes.height(); ++y) {
        for (int x = 0; x < oneTimes.width(); ++x) {
            const int alpha = alphaAt(oneTimes, x, y);
            EXPECT_TRUE(alpha == 0 || alpha == 255) << x << "," << y << ": " << alpha;
        }
    }
}

} // namespace
