#include "Animation/EZInterpolationFunctions.h"
#include "Foundation/KRClock.h"
#include "Foundation/KRRunLoop.h"
#include "Views/KRRenderer.h"
#include "Views/KRView.h"

#include <QImage>
#include <QPainter>
#include <gtest/gtest.h>

#include <cstdlib>
#include <memory>

namespace {

std::shared_ptr<KRView> makeView(KRRect frame, const QColor& background = QColor()) {
    auto view = std::make_shared<KRView>(frame);
    if (background.isValid()) {
        view->setBackgroundColor(background);
    }
    return view;
}

QImage render(const KRView& root, int width, int height, double devicePixelRatio = 1.0,
              KRRect dirtyRect = KRRectNull) {
    QImage image(static_cast<int>(width * devicePixelRatio), static_cast<int>(height * devicePixelRatio),
                 QImage::Format_ARGB32_Premultiplied);
    image.setDevicePixelRatio(devicePixelRatio);
    image.fill(Qt::transparent);
    QPainter painter(&image);
    KRRenderer::paintView(painter, root,
                          KRRectIsNull(dirtyRect) ? KRRectMake(0, 0, width, height) : dirtyRect);
    return image;
}

int alphaAt(const QImage& image, int x, int y) {
    return qAlpha(image.pixel(x, y));
}

// Un-premultiplied colour of a pixel.
QColor colorAt(const QImage& image, int x, int y) {
    return image.pixelColor(x, y).toRgb();
}

void expectNear(int actual, int expected, int tolerance) {
    EXPECT_LE(std::abs(actual - expected), tolerance);
}

// Records the rect it is asked to draw and marks its top-left corner.
class MarkingView : public KRView {
public:
    using KRView::KRView;
    void draw(QPainter& painter, KRRect dirtyRect) override {
        drawnRect = dirtyRect;
        ++drawCount;
        painter.fillRect(QRectF(0, 0, 5, 5), Qt::green);
    }
    KRRect drawnRect = KRRectNull;
    int drawCount = 0;
};

class KRRendererTests : public ::testing::Test {
protected:
    void SetUp() override {
        KRClock::useManualTime(0.0);
        KRRunLoop::main().cancelAll();
    }
    void TearDown() override { KRRunLoop::main().cancelAll(); }
};

TEST_F(KRRendererTests, FillsTheBackgroundOfTheFrame) {
    auto root = makeView(KRRectMake(10, 10, 30, 20), Qt::red);
    const QImage image = render(*root, 50, 50);
    EXPECT_EQ(colorAt(image, 20, 20), QColor(Qt::red));
    EXPECT_EQ(alphaAt(image, 5, 5), 0);
    EXPECT_EQ(alphaAt(image, 45, 20), 0);
    EXPECT_EQ(alphaAt(image, 20, 35), 0);
    EXPECT_EQ(KRRenderer::lastPaintedViewCount(), 1);
}

TEST_F(KRRendererTests, CornerRadiusLeavesTheCornersTransparent) {
    auto root = makeView(KRRectMake(0, 0, 40, 40), Qt::blue);
    root->setCornerRadius(12);
    const QImage image = render(*root, 40, 40);
    EXPECT_EQ(alphaAt(image, 0, 0), 0);
    EXPECT_EQ(alphaAt(image, 39, 39), 0);
    EXPECT_EQ(alphaAt(image, 0, 39), 0);
    EXPECT_EQ(alphaAt(image, 20, 20), 255);
    EXPECT_EQ(alphaAt(image, 20, 1), 255);
    EXPECT_EQ(alphaAt(image, 1, 20), 255);
}

TEST_F(KRRendererTests, MasksToBoundsClipsSubviews) {
    auto root = makeView(KRRectMake(0, 0, 20, 20));
    root->setMasksToBounds(true);
    root->addSubview(makeView(KRRectMake(10, 10, 20, 20), Qt::blue));
    const QImage image = render(*root, 40, 40);
    EXPECT_EQ(colorAt(image, 15, 15), QColor(Qt::blue));
    EXPECT_EQ(alphaAt(image, 25, 25), 0);
}

TEST_F(KRRendererTests, RoundedMaskClipsSubviewsToTheCorners) {
    auto root = makeView(KRRectMake(0, 0, 40, 40));
    root->setMasksToBounds(true);
    root->setCornerRadius(15);
    root->addSubview(makeView(KRRectMake(0, 0, 40, 40), Qt::blue));
    const QImage image = render(*root, 40, 40);
    EXPECT_EQ(alphaAt(image, 0, 0), 0);
    EXPECT_EQ(alphaAt(image, 20, 20), 255);
}

TEST_F(KRRendererTests, NonMaskingParentLetsASubviewDrawOutsideIt) {
    auto root = makeView(KRRectMake(0, 0, 20, 20));
    root->addSubview(makeView(KRRectMake(10, 10, 20, 20), Qt::blue));
    const QImage image = render(*root, 40, 40);
    EXPECT_EQ(colorAt(image, 25, 25), QColor(Qt::blue));
}

TEST_F(KRRendererTests, SubviewOutsideANonMaskingParentIsPaintedWhenOnlyItIsDirty) {
    auto root = makeView(KRRectMake(0, 0, 10, 10), Qt::red);
    root->addSubview(makeView(KRRectMake(50, 50, 10, 10), Qt::blue));
    const QImage image = render(*root, 80, 80, 1.0, KRRectMake(45, 45, 20, 20));
    EXPECT_EQ(colorAt(image, 55, 55), QColor(Qt::blue));
    // The parent itself lies outside the dirty rect.
    EXPECT_EQ(KRRenderer::lastPaintedViewCount(), 1);
}

TEST_F(KRRendererTests, SubtreeAlphaCompositesOverlappingSubviewsAsOneLayer) {
    auto root = makeView(KRRectMake(0, 0, 40, 20));
    root->setAlphaValue(0.5);
    root->addSubview(makeView(KRRectMake(0, 0, 25, 20), Qt::red));
    root->addSubview(makeView(KRRectMake(15, 0, 25, 20), Qt::red));
    const QImage image = render(*root, 40, 20);
    const int single = alphaAt(image, 5, 10);
    const int overlap = alphaAt(image, 20, 10);
    expectNear(single, 128, 2);
    // Faded one by one, the overlap would be 75% opaque.
    EXPECT_EQ(overlap, single);
    EXPECT_EQ(colorAt(image, 20, 10).red(), 255);
}

TEST_F(KRRendererTests, SubtreeAlphaHidesTheBackgroundBehindAnOpaqueSubview) {
    auto root = makeView(KRRectMake(0, 0, 20, 20), Qt::white);
    root->setAlphaValue(0.5);
    root->addSubview(makeView(KRRectMake(0, 0, 20, 20), Qt::blue));
    const QImage image = render(*root, 20, 20);
    const QColor color = colorAt(image, 10, 10);
    expectNear(color.alpha(), 128, 2);
    EXPECT_LE(color.red(), 3);
    EXPECT_GE(color.blue(), 250);
}

TEST_F(KRRendererTests, SubtreeAlphaStaysUniformAtTwiceTheResolution) {
    auto root = makeView(KRRectMake(0.25, 0.5, 30, 10));
    root->setAlphaValue(0.5);
    root->addSubview(makeView(KRRectMake(0, 0, 20, 10), Qt::red));
    root->addSubview(makeView(KRRectMake(10, 0, 20, 10), Qt::red));
    const QImage image = render(*root, 32, 12, 2.0);
    EXPECT_EQ(image.width(), 64);
    expectNear(alphaAt(image, 10, 10), 128, 2);
    EXPECT_EQ(alphaAt(image, 30, 10), alphaAt(image, 10, 10));
}

TEST_F(KRRendererTests, NestedTranslucentGroupsLandWhereTheirFramesAre) {
    auto root = makeView(KRRectMake(10, 10, 80, 80));
    root->setAlphaValue(0.5);
    root->setBoundsOrigin(KRPointMake(-5, 0));
    auto group = makeView(KRRectMake(10, 10, 40, 40));
    group->setAlphaValue(0.5);
    group->addSubview(makeView(KRRectMake(0, 0, 40, 40), Qt::red));
    group->addSubview(makeView(KRRectMake(20, 20, 20, 20), Qt::red));
    root->addSubview(group);
    const QImage image = render(*root, 100, 100, 2.0);
    // The group's frame lies at 25..65 horizontally and 20..60 vertically in the image.
    expectNear(alphaAt(image, 2 * 26, 2 * 21), 64, 2);
    EXPECT_EQ(alphaAt(image, 2 * 60, 2 * 55), alphaAt(image, 2 * 26, 2 * 21));
    EXPECT_EQ(alphaAt(image, 2 * 24, 2 * 30), 0);
    EXPECT_EQ(alphaAt(image, 2 * 30, 2 * 19), 0);
    EXPECT_EQ(alphaAt(image, 2 * 66, 2 * 30), 0);
}

TEST_F(KRRendererTests, LeafAlphaFadesWithoutALayer) {
    auto root = makeView(KRRectMake(0, 0, 20, 20), Qt::red);
    root->setAlphaValue(0.25);
    const QImage image = render(*root, 20, 20);
    expectNear(alphaAt(image, 10, 10), 64, 2);
}

TEST_F(KRRendererTests, ShadowFallsOutsideTheFrameBelowTheView) {
    auto root = makeView(KRRectMake(20, 20, 40, 40), Qt::white);
    root->setShadowOpacity(1.0);
    root->setShadowRadius(4);
    root->setShadowOffset(KRSizeMake(0, 6));
    const QImage image = render(*root, 80, 90);
    const int below = alphaAt(image, 40, 64);
    const int above = alphaAt(image, 40, 17);
    EXPECT_GT(below, 40);
    EXPECT_LT(above, below);
    // The shadow is black and sits behind the white background.
    EXPECT_LT(colorAt(image, 40, 64).red(), 10);
    EXPECT_EQ(colorAt(image, 40, 40), QColor(Qt::white));
    // Far away nothing is drawn.
    EXPECT_EQ(alphaAt(image, 40, 85), 0);
}

TEST_F(KRRendererTests, ShadowIsNotClippedByTheViewsOwnMask) {
    auto root = makeView(KRRectMake(20, 20, 40, 40), Qt::white);
    root->setMasksToBounds(true);
    root->setCornerRadius(6);
    root->setShadowOpacity(0.8);
    root->setShadowRadius(3);
    root->setShadowOffset(KRSizeMake(0, 5));
    const QImage image = render(*root, 80, 90);
    EXPECT_GT(alphaAt(image, 40, 63), 20);
}

TEST_F(KRRendererTests, ShadowOpacityZeroDrawsNoShadow) {
    auto root = makeView(KRRectMake(20, 20, 40, 40), Qt::white);
    root->setShadowRadius(4);
    root->setShadowOffset(KRSizeMake(0, 6));
    const QImage image = render(*root, 80, 90);
    EXPECT_EQ(alphaAt(image, 40, 64), 0);
}

TEST_F(KRRendererTests, CullsViewsOutsideTheDirtyRect) {
    auto root = makeView(KRRectMake(0, 0, 200, 200), Qt::white);
    root->setMasksToBounds(true);
    for (int i = 0; i < 10; ++i) {
        root->addSubview(makeView(KRRectMake(i * 20, i * 20, 10, 10), Qt::black));
    }
    render(*root, 200, 200);
    EXPECT_EQ(KRRenderer::lastPaintedViewCount(), 11);
    render(*root, 200, 200, 1.0, KRRectMake(42, 42, 4, 4));
    EXPECT_EQ(KRRenderer::lastPaintedViewCount(), 2);
    render(*root, 300, 300, 1.0, KRRectMake(250, 250, 20, 20));
    EXPECT_EQ(KRRenderer::lastPaintedViewCount(), 0);
}

TEST_F(KRRendererTests, ShadowExtentKeepsAViewFromBeingCulled) {
    auto root = makeView(KRRectMake(20, 20, 40, 40), Qt::white);
    root->setShadowOpacity(1.0);
    root->setShadowRadius(5);
    root->setShadowOffset(KRSizeMake(0, 5));
    render(*root, 100, 100, 1.0, KRRectMake(30, 62, 20, 4));
    EXPECT_EQ(KRRenderer::lastPaintedViewCount(), 1);
}

TEST_F(KRRendererTests, HiddenAndFullyTransparentViewsAreSkipped) {
    auto root = makeView(KRRectMake(0, 0, 40, 20));
    auto hidden = makeView(KRRectMake(0, 0, 20, 20), Qt::red);
    hidden->setHidden(true);
    auto transparent = makeView(KRRectMake(20, 0, 20, 20), Qt::red);
    transparent->setAlphaValue(0.0);
    root->addSubview(hidden);
    root->addSubview(transparent);
    const QImage image = render(*root, 40, 20);
    EXPECT_EQ(alphaAt(image, 10, 10), 0);
    EXPECT_EQ(alphaAt(image, 30, 10), 0);
    EXPECT_EQ(KRRenderer::lastPaintedViewCount(), 1);
}

TEST_F(KRRendererTests, BorderIsDrawnInsideTheBoundsOnTopOfSubviews) {
    auto root = makeView(KRRectMake(0, 0, 30, 30));
    root->setBorderColor(Qt::black);
    root->setBorderWidth(4);
    root->addSubview(makeView(KRRectMake(0, 0, 30, 30), Qt::white));
    const QImage image = render(*root, 40, 40);
    EXPECT_EQ(colorAt(image, 1, 15), QColor(Qt::black));
    EXPECT_EQ(colorAt(image, 28, 15), QColor(Qt::black));
    EXPECT_EQ(colorAt(image, 15, 15), QColor(Qt::white));
    EXPECT_EQ(alphaAt(image, 31, 15), 0);
}

TEST_F(KRRendererTests, DrawGetsTheDirtyRectInItsBoundsAndATranslatedPainter) {
    auto root = makeView(KRRectMake(0, 0, 100, 100));
    auto marking = std::make_shared<MarkingView>(KRRectMake(10, 20, 50, 50));
    marking->setBoundsOrigin(KRPointMake(5, 0));
    root->addSubview(marking);
    const QImage image = render(*root, 100, 100, 1.0, KRRectMake(0, 0, 30, 100));
    EXPECT_EQ(marking->drawCount, 1);
    EXPECT_EQ(marking->drawnRect, KRRectMake(5, 0, 20, 50));
    // The mark covers bounds x 0..5, which the bounds origin puts just left of the frame (no mask here).
    EXPECT_EQ(colorAt(image, 7, 22), QColor(Qt::green));
    EXPECT_EQ(alphaAt(image, 12, 22), 0);
}

TEST_F(KRRendererTests, ScaleShrinksTheViewAboutItsCentre) {
    auto root = makeView(KRRectMake(0, 0, 40, 40), Qt::red);
    root->setScale(0.5);
    const QImage image = render(*root, 40, 40);
    EXPECT_EQ(alphaAt(image, 5, 5), 0);
    EXPECT_EQ(alphaAt(image, 35, 35), 0);
    EXPECT_EQ(alphaAt(image, 12, 12), 255);
    EXPECT_EQ(alphaAt(image, 27, 27), 255);
}

TEST_F(KRRendererTests, PaintsPresentationValuesWhileAnimating) {
    auto root = makeView(KRRectMake(0, 0, 100, 20));
    auto moving = makeView(KRRectMake(0, 0, 20, 20), Qt::red);
    root->addSubview(moving);
    KRView::performAnimated(true, [&](EZAnimationContext& context) {
        context.setInterpolationFunction(EZInterpolationFunctions::linearWithDuration(1.0));
        moving->setFrameOrigin(KRPointMake(40, 0));
        moving->setBackgroundColor(Qt::blue);
    });
    KRClock::advance(0.5);
    const QImage image = render(*root, 100, 20);
    EXPECT_EQ(alphaAt(image, 5, 10), 0);
    const QColor middle = colorAt(image, 30, 10);
    expectNear(middle.red(), 128, 6);
    expectNear(middle.blue(), 128, 6);
    EXPECT_EQ(alphaAt(image, 50, 10), 0);

    KRClock::advance(1.0);
    const QImage done = render(*root, 100, 20);
    EXPECT_EQ(colorAt(done, 50, 10), QColor(Qt::blue));
    EXPECT_EQ(alphaAt(done, 30, 10), 0);
}

TEST_F(KRRendererTests, PaintsAnAnimatedFadeAtItsCurrentAlpha) {
    auto root = makeView(KRRectMake(0, 0, 20, 20), Qt::red);
    KRView::performAnimated(true, [&](EZAnimationContext& context) {
        context.setInterpolationFunction(EZInterpolationFunctions::linearWithDuration(1.0));
        root->setAlphaValue(0.0);
    });
    KRClock::advance(0.5);
    expectNear(alphaAt(render(*root, 20, 20), 10, 10), 128, 4);
    KRClock::advance(1.0);
    EXPECT_EQ(alphaAt(render(*root, 20, 20), 10, 10), 0);
}

} // namespace
