#include "Views/KRView.h"

#include "Animation/EZInterpolationFunctions.h"
#include "Animation/KRAnimationDurationMultiplier.h"
#include "Animation/KRAnimationEngine.h"
#include "Foundation/KRClock.h"

#include <gtest/gtest.h>

#include <memory>

namespace {

struct MultiplierScope {
    explicit MultiplierScope(double value) { KRAnimationDurationMultiplier = value; }
    ~MultiplierScope() { KRAnimationDurationMultiplier = 1.0; }
};

// The shared manual clock accumulates rounding over a whole test run: compare to within 1e-9.
void expectRectNear(KRRect actual, KRRect expected, int line) {
    SCOPED_TRACE(testing::Message() << "from line " << line);
    EXPECT_NEAR(actual.origin.x, expected.origin.x, 1e-9);
    EXPECT_NEAR(actual.origin.y, expected.origin.y, 1e-9);
    EXPECT_NEAR(actual.size.width, expected.size.width, 1e-9);
    EXPECT_NEAR(actual.size.height, expected.size.height, 1e-9);
}
#define EXPECT_RECT_NEAR(actual, expected) expectRectNear((actual), (expected), __LINE__)

void useLinearSecond(EZAnimationContext& context) {
    context.setInterpolationFunction(EZInterpolationFunctions::linearWithDuration(1.0));
}

} // namespace

TEST(KRViewAnimationTests, PresentationFollowsTheCurveWhileTheModelJumpsAtOnce) {
    KRView view(KRRectMake(0, 0, 100, 50));
    KRView::performAnimated(true, [&](EZAnimationContext& context) {
        useLinearSecond(context);
        view.setFrame(KRRectMake(100, 20, 200, 50));
        view.setScale(2.0);
    });
    EXPECT_EQ(view.frame(), KRRectMake(100, 20, 200, 50));
    EXPECT_DOUBLE_EQ(view.scale(), 2.0);
    EXPECT_RECT_NEAR(view.presentationFrame(), KRRectMake(0, 0, 100, 50));
    EXPECT_NEAR(view.presentationScale(), 1.0, 1e-9);
    EXPECT_TRUE(view.hasRunningAnimationForKey("frameOrigin"));
    EXPECT_TRUE(view.hasRunningAnimationForKey("frameSize"));
    EXPECT_FALSE(view.hasRunningAnimationForKey("opacity"));

    KRClock::advance(0.5);
    EXPECT_RECT_NEAR(view.presentationFrame(), KRRectMake(50, 10, 150, 50));
    EXPECT_NEAR(view.presentationScale(), 1.5, 1e-9);

    KRClock::advance(0.5);
    EXPECT_RECT_NEAR(view.presentationFrame(), KRRectMake(100, 20, 200, 50));
    EXPECT_NEAR(view.presentationScale(), 2.0, 1e-9);
    EXPECT_FALSE(view.hasRunningAnimations());
}

TEST(KRViewAnimationTests, ColoursFadeFromNoneWithoutDarkening) {
    KRView view;
    KRView::performAnimated(true, [&](EZAnimationContext& context) {
        useLinearSecond(context);
        view.setBackgroundColor(QColor(255, 255, 255));
        view.setBorderColor(QColor(0, 0, 255));
    });
    EXPECT_EQ(view.backgroundColor(), QColor(255, 255, 255));
    EXPECT_EQ(view.presentationBackgroundColor().alpha(), 0);
    KRClock::advance(0.5);
    const QColor background = view.presentationBackgroundColor();
    EXPECT_EQ(background.red(), 255); // premultiplied blending keeps white white while it fades in
    EXPECT_NEAR(background.alphaF(), 0.5, 1e-2);
    EXPECT_EQ(view.presentationBorderColor().blue(), 255);
    KRClock::advance(0.5);
    EXPECT_EQ(view.presentationBackgroundColor(), QColor(255, 255, 255));
}

TEST(KRViewAnimationTests, RetargetingMidFlightStartsFromWhatIsOnScreen) {
    KRView view;
    KRView::performAnimated(true, [&](EZAnimationContext& context) {
        useLinearSecond(context);
        view.setAlphaValue(0.0);
    });
    KRClock::advance(0.5);
    ASSERT_NEAR(view.presentationAlphaValue(), 0.5, 1e-9);

    KRView::performAnimated(true, [&](EZAnimationContext& context) {
        useLinearSecond(context);
        view.setAlphaValue(1.0);
    });
    EXPECT_DOUBLE_EQ(view.alphaValue(), 1.0);
    EXPECT_NEAR(view.presentationAlphaValue(), 0.5, 1e-9); // no jump
    KRClock::advance(0.5);
    EXPECT_NEAR(view.presentationAlphaValue(), 0.75, 1e-9);
    KRClock::advance(0.5);
    EXPECT_NEAR(view.presentationAlphaValue(), 1.0, 1e-9);
    EXPECT_FALSE(view.hasRunningAnimations());
}

TEST(KRViewAnimationTests, CompletionRunsOnceAfterTheLastAnimationOfTheBlock) {
    KRView view;
    int completions = 0;
    KRView::performAnimated(
        true,
        [&](EZAnimationContext& context) {
            useLinearSecond(context);
            context.setInterpolationFunctionForKey(QStringLiteral("shadowOpacity"),
                                                   EZInterpolationFunctions::linearWithDuration(0.5));
            view.setShadowOpacity(0.8);
            view.setFrameOrigin(KRPointMake(40, 0));
        },
        [&] { ++completions; });
    EXPECT_EQ(completions, 0);
    KRClock::advance(0.6);
    EXPECT_EQ(completions, 0);
    EXPECT_FALSE(view.hasRunningAnimationForKey("shadowOpacity"));
    EXPECT_NEAR(view.presentationShadowOpacity(), 0.8, 1e-9);
    KRClock::advance(0.4);
    EXPECT_EQ(completions, 1);
    KRClock::advance(1.0);
    EXPECT_EQ(completions, 1);
}

TEST(KRViewAnimationTests, SupersededBlocksCompleteWhenTheirLastAnimationIsReplaced) {
    KRView view;
    int first = 0;
    int second = 0;
    KRView::performAnimated(
        true,
        [&](EZAnimationContext& context) {
            useLinearSecond(context);
            view.setAlphaValue(0.0);
        },
        [&] { ++first; });
    KRClock::advance(0.25);
    KRView::performAnimated(
        true,
        [&](EZAnimationContext& context) {
            useLinearSecond(context);
            view.setAlphaValue(0.5);
        },
        [&] { ++second; });
    EXPECT_EQ(first, 1);
    EXPECT_EQ(second, 0);
    KRClock::advance(1.0);
    EXPECT_EQ(first, 1);
    EXPECT_EQ(second, 1);
}

TEST(KRViewAnimationTests, BlocksThatAnimateNothingCompleteAtOnce) {
    KRView view;
    int completions = 0;
    KRView::performAnimated(
        true, [&](EZAnimationContext&) { view.setTag(3); }, [&] { ++completions; });
    EXPECT_EQ(completions, 1);
    KRView::performAnimated(
        false, [&](EZAnimationContext&) { view.setAlphaValue(0.3); }, [&] { ++completions; });
    EXPECT_EQ(completions, 2);
    EXPECT_NEAR(view.presentationAlphaValue(), 0.3, 1e-9);
    EXPECT_FALSE(view.hasRunningAnimations());
}

TEST(KRViewAnimationTests, ZeroDurationMultiplierFinishesEverythingAtOnce) {
    const MultiplierScope instant(0.0);
    KRView view(KRRectMake(0, 0, 10, 10));
    int completions = 0;
    KRView::animate(
        [&](EZAnimationContext&) {
            view.setAlphaValue(0.2);
            view.setFrameSize(KRSizeMake(30, 30));
        },
        [&] { ++completions; });
    EXPECT_EQ(completions, 1);
    EXPECT_FALSE(view.hasRunningAnimations());
    EXPECT_NEAR(view.presentationAlphaValue(), 0.2, 1e-9);
    EXPECT_EQ(view.presentationFrame().size, KRSizeMake(30, 30));
}

TEST(KRViewAnimationTests, PerKeyCurvesApplyOnlyToTheirKey) {
    KRView view(KRRectMake(0, 0, 10, 10));
    KRView::performAnimated(true, [&](EZAnimationContext& context) {
        useLinearSecond(context);
        context.setInterpolationFunctionForKey(QStringLiteral("opacity"),
                                               EZInterpolationFunctions::easeOutWithDuration(1.0));
        view.setFrameOrigin(KRPointMake(100, 0));
        view.setAlphaValue(0.0);
    });
    KRClock::advance(0.25);
    EXPECT_NEAR(view.presentationFrame().origin.x, 25.0, 1e-9);
    const double easedProgress = EZInterpolationFunctions::easeOutWithDuration(1.0)->valueAtTime(0.25);
    EXPECT_GT(easedProgress, 0.35);
    EXPECT_NEAR(view.presentationAlphaValue(), 1.0 - easedProgress, 1e-9);
    KRClock::advance(0.75);
    EXPECT_FALSE(view.hasRunningAnimations());
}

TEST(KRViewAnimationTests, NonAnimatedChangesCancelTheRunningAnimation) {
    KRView view;
    int completions = 0;
    KRView::performAnimated(
        true,
        [&](EZAnimationContext& context) {
            useLinearSecond(context);
            view.setAlphaValue(0.0);
            view.setScale(3.0);
            view.setShadowOpacity(1.0);
        },
        [&] { ++completions; });
    KRClock::advance(0.5);

    view.setAlphaValue(0.8); // outside any block
    EXPECT_FALSE(view.hasRunningAnimationForKey("opacity"));
    EXPECT_NEAR(view.presentationAlphaValue(), 0.8, 1e-9);

    KRView::performAnimated(true, [&](EZAnimationContext& context) {
        useLinearSecond(context);
        KRView::performWithoutAnimation([&] { view.setScale(0.5); });
        KRView::performNonAnimated(true, [&] { view.setShadowOpacity(0.25); });
    });
    EXPECT_FALSE(view.hasRunningAnimations());
    EXPECT_NEAR(view.presentationScale(), 0.5, 1e-9);
    EXPECT_NEAR(view.presentationShadowOpacity(), 0.25, 1e-9);
    // Cancelled animations count as ended, so the first block is done.
    EXPECT_EQ(completions, 1);
    // The engine lets go of the view on its next tick.
    KRClock::advance(0.0);
    EXPECT_EQ(KRAnimationEngine::shared().animatingObjectCount(), 0u);
}

TEST(KRViewAnimationTests, DestroyingAnAnimatingViewUnregistersItAndCompletesItsBlock) {
    int completions = 0;
    {
        KRView view;
        KRView::performAnimated(
            true,
            [&](EZAnimationContext& context) {
                useLinearSecond(context);
                view.setAlphaValue(0.0);
            },
            [&] { ++completions; });
        EXPECT_EQ(KRAnimationEngine::shared().animatingObjectCount(), 1u);
    }
    EXPECT_EQ(KRAnimationEngine::shared().animatingObjectCount(), 0u);
    EXPECT_EQ(completions, 1);
    KRClock::advance(1.0); // nothing left to tick
}
