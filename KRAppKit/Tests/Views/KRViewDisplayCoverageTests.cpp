// A view that marks itself whole while it moves many subviews lets them skip marking themselves, but only
// where their marks would add nothing: inside the marked area, or outside the window's content.
#include "Foundation/KRClock.h"
#include "Views/KRView.h"
#include "Views/KRWindow.h"

#include <gtest/gtest.h>

#include <memory>

namespace {

class KRViewDisplayCoverageTests : public ::testing::Test {
protected:
    void SetUp() override {
        window.setContentView(content);
        content->addSubview(list);
        window.takeDirtyRect();
    }
    void TearDown() override { KRClock::advance(10.0); }

    std::shared_ptr<KRView> addRow(KRRect frame) {
        auto row = std::make_shared<KRView>(frame);
        list->addSubview(row);
        return row;
    }

    KRWindow window;
    std::shared_ptr<KRView> content = std::make_shared<KRView>(KRRectMake(0, 0, 400, 300));
    // Taller than the window: most of it lies below the content.
    std::shared_ptr<KRView> list = std::make_shared<KRView>(KRRectMake(50, 20, 300, 1000));
};

} // namespace

TEST_F(KRViewDisplayCoverageTests, RowsInsideTheMarkedViewAreCovered) {
    const auto row = addRow(KRRectMake(0, 100, 300, 28));
    const KRView::SubviewDisplayCoverage coverage(list.get());
    EXPECT_TRUE(coverage.covers(*row));
}

TEST_F(KRViewDisplayCoverageTests, RowsReachingOutOfTheMarkedViewIntoTheContentAreNot) {
    const auto row = addRow(KRRectMake(-30, 100, 40, 28));
    const KRView::SubviewDisplayCoverage coverage(list.get());
    EXPECT_FALSE(coverage.covers(*row));
}

TEST_F(KRViewDisplayCoverageTests, RowsOutsideTheContentAreCoveredWhereverTheyAre) {
    const auto below = addRow(KRRectMake(0, 1100, 300, 28));
    const auto beside = addRow(KRRectMake(-200, 100, 40, 28));
    const KRView::SubviewDisplayCoverage coverage(list.get());
    EXPECT_TRUE(coverage.covers(*below));
    EXPECT_TRUE(coverage.covers(*beside));
}

TEST_F(KRViewDisplayCoverageTests, TouchingTheContentsEdgeIsNotReachingIntoIt) {
    // The content ends at x = 0 in the window, which is x = -50 in the list.
    const auto touching = addRow(KRRectMake(-90, 100, 40, 28));
    const auto reaching = addRow(KRRectMake(-89, 100, 40, 28));
    const KRView::SubviewDisplayCoverage coverage(list.get());
    EXPECT_TRUE(coverage.covers(*touching));
    EXPECT_FALSE(coverage.covers(*reaching));
}

TEST_F(KRViewDisplayCoverageTests, RowsThatDrawBeyondTheirFramesAreNotCovered) {
    const auto shadowed = addRow(KRRectMake(0, 100, 300, 28));
    shadowed->setShadowOpacity(0.5);
    const auto scaled = addRow(KRRectMake(0, 200, 300, 28));
    scaled->setScale(1.1);
    const auto plain = addRow(KRRectMake(0, 300, 300, 28));
    const KRView::SubviewDisplayCoverage coverage(list.get());
    EXPECT_FALSE(coverage.covers(*shadowed));
    EXPECT_FALSE(coverage.covers(*scaled));
    // Asked again after the others: the plain looks are still recognised.
    EXPECT_TRUE(coverage.covers(*plain));
    EXPECT_FALSE(coverage.covers(*shadowed));
}

TEST_F(KRViewDisplayCoverageTests, AnimatingRowsAndDeeperViewsAreNotCovered) {
    const auto animating = addRow(KRRectMake(0, 100, 300, 28));
    KRView::performAnimated(true,
                            [&](EZAnimationContext&) { animating->setFrameOrigin(KRPointMake(0, 140)); });
    const auto row = addRow(KRRectMake(0, 200, 300, 28));
    const auto child = std::make_shared<KRView>(KRRectMake(0, 0, 10, 10));
    row->addSubview(child);
    const KRView::SubviewDisplayCoverage coverage(list.get());
    ASSERT_TRUE(animating->hasRunningAnimations());
    EXPECT_FALSE(coverage.covers(*animating));
    EXPECT_FALSE(coverage.covers(*child));
}

TEST_F(KRViewDisplayCoverageTests, AScrolledViewComparesItsRowsWhereTheyShow) {
    list->setBoundsOrigin(KRPointMake(0, 100));
    // y = 1050 shows at 970 in the window, below the content; x = -30 reaches into it left of the list.
    const auto below = addRow(KRRectMake(-30, 1050, 40, 28));
    const auto left = addRow(KRRectMake(-30, 150, 40, 28));
    const KRView::SubviewDisplayCoverage coverage(list.get());
    EXPECT_TRUE(coverage.covers(*below));
    EXPECT_FALSE(coverage.covers(*left));
}

TEST_F(KRViewDisplayCoverageTests, CoveredRowsAddNothingToTheDirtyRectAndOthersDo) {
    const auto inside = addRow(KRRectMake(0, 100, 300, 28));
    const auto outside = addRow(KRRectMake(-30, 100, 40, 28));
    window.takeDirtyRect();
    {
        const KRView::SubviewDisplayCoverage coverage(list.get());
        const KRRect marked = window.takeDirtyRect();
        inside->setNeedsDisplay();
        EXPECT_TRUE(KRRectIsNull(window.takeDirtyRect()));
        outside->setNeedsDisplay();
        EXPECT_EQ(window.takeDirtyRect(), KRRectMake(20, 120, 40, 28));
        EXPECT_FALSE(KRRectIsNull(marked));
    }
    // Once the coverage ends, every row marks itself again.
    inside->setNeedsDisplay();
    EXPECT_EQ(window.takeDirtyRect(), KRRectMake(50, 120, 300, 28));
}
