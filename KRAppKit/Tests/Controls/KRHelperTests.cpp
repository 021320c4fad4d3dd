#include "Controls/KRHelper.h"
#include "Controls/KRImage.h"

#include <QImage>
#include <QTemporaryDir>

#include <gtest/gtest.h>

namespace {

class KRHelperTests : public ::testing::Test {
protected:
    void SetUp() override {
        KRHelper::clearImageCache();
        ASSERT_TRUE(m_directory.isValid());
    }
    void TearDown() override { KRHelper::clearImageCache(); }

    QString bundle() const { return m_directory.path(); }
    void writeImage(const QString& fileName, int size = 4) {
        QImage image(size, size, QImage::Format_ARGB32);
        image.fill(Qt::red);
        ASSERT_TRUE(image.save(m_directory.filePath(fileName)));
    }

    QTemporaryDir m_directory;
};

} // namespace

TEST_F(KRHelperTests, LoadsAnImageOncePerName) {
    writeImage("add.png");
    const auto first = KRHelper::cachedImageNamed("add", bundle());
    const auto second = KRHelper::cachedImageNamed("add", bundle());
    ASSERT_TRUE(first);
    EXPECT_EQ(first, second);
    EXPECT_EQ(KRHelper::cachedImageLoadCount(), 1);
}

TEST_F(KRHelperTests, NamesAndBundlesAreCachedSeparately) {
    QTemporaryDir other;
    ASSERT_TRUE(other.isValid());
    writeImage("add.png");
    writeImage("remove.png");
    QImage image(8, 8, QImage::Format_ARGB32);
    image.fill(Qt::blue);
    ASSERT_TRUE(image.save(other.filePath("add.png")));

    const auto add = KRHelper::cachedImageNamed("add", bundle());
    const auto remove = KRHelper::cachedImageNamed("remove", bundle());
    const auto otherAdd = KRHelper::cachedImageNamed("add", other.path());
    EXPECT_NE(add, remove);
    EXPECT_NE(add, otherAdd);
    EXPECT_EQ(otherAdd->size(), KRSizeMake(8, 8));
    EXPECT_EQ(KRHelper::cachedImageLoadCount(), 3);
}

TEST_F(KRHelperTests, MissesAreNotRememberedSoALaterImageStillLoads) {
    EXPECT_FALSE(KRHelper::cachedImageNamed("late", bundle()));
    EXPECT_EQ(KRHelper::cachedImageLoadCount(), 1);
    writeImage("late.png");
    EXPECT_TRUE(KRHelper::cachedImageNamed("late", bundle()));
    EXPECT_TRUE(KRHelper::cachedImageNamed("late", bundle()));
    EXPECT_EQ(KRHelper::cachedImageLoadCount(), 2);
}

TEST_F(KRHelperTests, LooksOnlyInTheGivenBundle) {
    QTemporaryDir empty;
    ASSERT_TRUE(empty.isValid());
    writeImage("add.png");
    EXPECT_FALSE(KRHelper::cachedImageNamed("add", empty.path()));
    EXPECT_FALSE(KRHelper::cachedImageNamed("add", QString()));
}

TEST_F(KRHelperTests, ClearingTheCacheForcesAReload) {
    writeImage("add.png");
    const auto first = KRHelper::cachedImageNamed("add", bundle());
    KRHelper::clearImageCache();
    EXPECT_EQ(KRHelper::cachedImageLoadCount(), 0);
    const auto second = KRHelper::cachedImageNamed("add", bundle());
    EXPECT_NE(first, second);
    EXPECT_EQ(KRHelper::cachedImageLoadCount(), 1);
}

TEST_F(KRHelperTests, OnlyClearingTheCacheStartsANewGeneration) {
    writeImage("add.png");
    const int generation = KRHelper::cachedImageGeneration();
    EXPECT_TRUE(KRHelper::cachedImageNamed("add", bundle()));
    EXPECT_FALSE(KRHelper::cachedImageNamed("missing", bundle()));
    EXPECT_EQ(KRHelper::cachedImageGeneration(), generation) << "loads and misses keep what was answered";
    KRHelper::clearImageCache();
    EXPECT_NE(KRHelper::cachedImageGeneration(), generation);
}
