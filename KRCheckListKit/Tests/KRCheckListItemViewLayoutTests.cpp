#include "KRCheckListItemView.h"

#include "KRCheckListDefaults.h"
#include "KRCheckListItemViewTestSupport.h"

#include "Views/KRCursor.h"
#include "Views/KREvent.h"
#include "Views/KRTrackingArea.h"
#include "Views/KRWindow.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <memory>

using namespace KRCheckListItemViewTesting;

namespace {

constexpr double kLargeBound = 99999999.0;

// The row's metrics: the fixed line height, the height of a one-line row and the hairline width.
double lineHeight() {
    return KRCheckListDefaults::lineHeight();
}
double itemHeight() {
    return KRCheckListDefaults::itemHeight();
}
double hairline() {
    return KRCheckListDefaults::borderWidth();
}

// A title long enough to wrap in any row narrower than a few thousand points.
const QString kLongTitle = QStringLiteral(
    "Pick up the dry cleaning, then buy milk, eggs, bread, butter, apples and a great many other things "
    "that will need more than a single line");

class KRCheckListItemViewLayoutTests : public ::testing::Test {
protected:
    // Natural sizes of the handle and of the check box with its left inset.
    KRSize handleSize() const { return row->handleButtonView()->sizeThatFits(KRSizeZero); }
    KRSize checkBoxSize() const {
        return row->checkBoxButtonView()->sizeThatFitsEdgeInsets(KRSizeZero, KREdgeInsetsMake(0, 5, 0, 0));
    }

    // The layout of a row of size (width, height), built from the rules of the row's geometry.
    KRCheckListItemViewLayout expectedLayout(double width, double height) const {
        const KRSize handle = handleSize();
        const KRSize checkBox = checkBoxSize();
        KRCheckListItemViewLayout layout;
        layout.shapeViewFrame = KRRectMake(0, 0, width, height);
        layout.highlightViewFrame = layout.shapeViewFrame;
        layout.maskViewFrame = layout.shapeViewFrame;
        layout.checkBoxButtonViewFrame = KRRectMake(0, 1, checkBox.width + 3, height - 1);
        layout.handleButtonViewFrame = KRRectMake(width - handle.width - 2, 6, handle.width, handle.height);
        const double titleX = checkBox.width + 6;
        const double titleWidth = (width - handle.width - 2 - 5) - titleX;
        double titleHeight = lineHeight();
        double oneLineHeight = lineHeight();
        if (!row->title().isEmpty()) {
            titleHeight = row->titleTextField()->sizeThatFits(KRSizeMake(titleWidth, kLargeBound)).height;
            oneLineHeight = row->titleTextField()->sizeThatFits(KRSizeMake(kLargeBound, kLargeBound)).height;
        }
        const double titleY = std::round(0.5 * (itemHeight() - lineHeight())) - 1;
        layout.titleTextFieldFrame = KRRectMake(titleX, titleY, titleWidth, titleHeight);
        layout.checkBoxButtonViewEdgeInsets = KREdgeInsetsMake(0, 5, titleHeight - oneLineHeight + 1, 0);
        layout.topDividerViewFrame = KRRectMake(6, 0, width - 6, hairline());
        layout.bottomDividerViewFrame = KRRectMake(6, height - hairline(), width - 6, hairline());
        layout.sizeThatFits = KRSizeMake(width, itemHeight() - lineHeight() + titleHeight);
        layout.size = KRSizeMake(width, height);
        return layout;
    }

    // A row width at which the (non-empty) title wraps to exactly `lines` lines of the fixed height, found
    // by measuring the title field at the title width that row width leaves; 0 when there is none.
    double rowWidthForTitleLines(int lines) const {
        const double titleXAndMargins = checkBoxSize().width + 6 + handleSize().width + 2 + 5;
        for (double width = 1500; width > titleXAndMargins + 20; width -= 1) {
            const double titleWidth = width - titleXAndMargins;
            if (row->titleTextField()->sizeThatFits(KRSizeMake(titleWidth, kLargeBound)).height ==
                18.0 * lines) {
                return width;
            }
        }
        return 0;
    }

    static void expectLayoutsEqual(const KRCheckListItemViewLayout& actual,
                                   const KRCheckListItemViewLayout& expected) {
        EXPECT_EQ(actual.shapeViewFrame, expected.shapeViewFrame);
        EXPECT_EQ(actual.highlightViewFrame, expected.highlightViewFrame);
        EXPECT_EQ(actual.maskViewFrame, expected.maskViewFrame);
        EXPECT_EQ(actual.checkBoxButtonViewFrame, expected.checkBoxButtonViewFrame);
        EXPECT_EQ(actual.checkBoxButtonViewEdgeInsets, expected.checkBoxButtonViewEdgeInsets);
        EXPECT_EQ(actual.handleButtonViewFrame, expected.handleButtonViewFrame);
        EXPECT_EQ(actual.titleTextFieldFrame, expected.titleTextFieldFrame);
        EXPECT_EQ(actual.topDividerViewFrame, expected.topDividerViewFrame);
        EXPECT_EQ(actual.bottomDividerViewFrame, expected.bottomDividerViewFrame);
        EXPECT_EQ(actual.sizeThatFits, expected.sizeThatFits);
        EXPECT_EQ(actual.size, expected.size);
    }

    std::shared_ptr<KRCheckListItemView> row =
        std::make_shared<KRCheckListItemView>(KRRectMake(0, 0, 300, 28));
};

} // namespace

// The layout record
// ------------------------------------------------------------------------------------------------------

TEST_F(KRCheckListItemViewLayoutTests, LayoutRecordNamesElevenEntriesInOrderAndHoldsEachUnderItsName) {
    const QStringList expected{
        QStringLiteral("shapeViewFrame"),
        QStringLiteral("highlightViewFrame"),
        QStringLiteral("maskViewFrame"),
        QStringLiteral("checkBoxButtonViewFrame"),
        QStringLiteral("checkBoxButtonViewEdgeInsets"),
        QStringLiteral("handleButtonViewFrame"),
        QStringLiteral("titleTextFieldFrame"),
        QStringLiteral("topDividerViewFrame"),
        QStringLiteral("bottomDividerViewFrame"),
        QStringLiteral("sizeThatFits"),
        QStringLiteral("size"),
    };
    EXPECT_EQ(KRCheckListItemViewLayout::keys(), expected);

    row->setTitle(QStringLiteral("Buy milk"));
    const KRCheckListItemViewLayout layout = row->checkListItemViewLayoutForSize(KRSizeMake(300, 40));
    const QVariantMap dictionary = layout.dictionary();
    QStringList sortedKeys = KRCheckListItemViewLayout::keys();
    std::sort(sortedKeys.begin(), sortedKeys.end());
    EXPECT_EQ(dictionary.keys(), sortedKeys);
    EXPECT_EQ(dictionary.value(QStringLiteral("shapeViewFrame")).value<KRRect>(), layout.shapeViewFrame);
    EXPECT_EQ(dictionary.value(QStringLiteral("highlightViewFrame")).value<KRRect>(),
              layout.highlightViewFrame);
    EXPECT_EQ(dictionary.value(QStringLiteral("maskViewFrame")).value<KRRect>(), layout.maskViewFrame);
    EXPECT_EQ(dictionary.value(QStringLiteral("checkBoxButtonViewFrame")).value<KRRect>(),
              layout.checkBoxButtonViewFrame);
    EXPECT_EQ(dictionary.value(QStringLiteral("checkBoxButtonViewEdgeInsets")).value<KREdgeInsets>(),
              layout.checkBoxButtonViewEdgeInsets);
    EXPECT_EQ(dictionary.value(QStringLiteral("handleButtonViewFrame")).value<KRRect>(),
              layout.handleButtonViewFrame);
    EXPECT_EQ(dictionary.value(QStringLiteral("titleTextFieldFrame")).value<KRRect>(),
              layout.titleTextFieldFrame);
    EXPECT_EQ(dictionary.value(QStringLiteral("topDividerViewFrame")).value<KRRect>(),
              layout.topDividerViewFrame);
    EXPECT_EQ(dictionary.value(QStringLiteral("bottomDividerViewFrame")).value<KRRect>(),
              layout.bottomDividerViewFrame);
    EXPECT_EQ(dictionary.value(QStringLiteral("sizeThatFits")).value<KRSize>(), layout.sizeThatFits);
    EXPECT_EQ(dictionary.value(QStringLiteral("size")).value<KRSize>(), layout.size);
}

// Geometry
// ------------------------------------------------------------------------------------------------------

TEST_F(KRCheckListItemViewLayoutTests, EmptyTitleLayoutFollowsTheRowGeometry) {
    const KRCheckListItemViewLayout layout = row->checkListItemViewLayoutForSize(KRSizeMake(320, 28));
    expectLayoutsEqual(layout, expectedLayout(320, 28));

    // The same rules spelled out for the parts that do not depend on images.
    EXPECT_EQ(layout.shapeViewFrame, KRRectMake(0, 0, 320, 28));
    EXPECT_EQ(layout.titleTextFieldFrame.origin.y, 4.0);
    EXPECT_EQ(layout.titleTextFieldFrame.size.height, 18.0);
    EXPECT_EQ(layout.checkBoxButtonViewEdgeInsets, KREdgeInsetsMake(0, 5, 1, 0));
    EXPECT_EQ(layout.topDividerViewFrame, KRRectMake(6, 0, 314, 1));
    EXPECT_EQ(layout.bottomDividerViewFrame, KRRectMake(6, 27, 314, 1));
    EXPECT_EQ(layout.sizeThatFits, KRSizeMake(320, 28));
    EXPECT_EQ(layout.size, KRSizeMake(320, 28));

    const KRRect checkBox = layout.checkBoxButtonViewFrame;
    const KRRect title = layout.titleTextFieldFrame;
    const KRRect handle = layout.handleButtonViewFrame;
    EXPECT_EQ(title.origin.x, KRRectGetMaxX(checkBox) + 3);
    EXPECT_EQ(KRRectGetMaxX(title), handle.origin.x - 5);
    EXPECT_EQ(KRRectGetMaxX(handle), 320 - 2);
    EXPECT_EQ(handle.origin.y, 6.0);
    EXPECT_EQ(checkBox.origin, KRPointMake(0, 1));
}

TEST_F(KRCheckListItemViewLayoutTests, OneLineTitleLayoutFollowsTheRowGeometry) {
    row->setTitle(QStringLiteral("Buy milk"));
    const KRCheckListItemViewLayout layout = row->checkListItemViewLayoutForSize(KRSizeMake(300, 28));
    expectLayoutsEqual(layout, expectedLayout(300, 28));
    EXPECT_EQ(layout.sizeThatFits, KRSizeMake(300, 28));
    EXPECT_EQ(layout.titleTextFieldFrame.size.height, 18.0);
    EXPECT_EQ(layout.checkBoxButtonViewEdgeInsets.bottom, 1.0);
}

TEST_F(KRCheckListItemViewLayoutTests, EmptyTitleFitsOneLineWhateverThePlaceholder) {
    EXPECT_EQ(row->sizeThatFits(KRSizeMake(300, 0)).height, 28.0);
    row->setPlaceholder(kLongTitle + QLatin1Char(' ') + kLongTitle + QLatin1Char(' ') + kLongTitle);
    EXPECT_EQ(row->sizeThatFits(KRSizeMake(300, 0)), KRSizeMake(300, 28));
    EXPECT_EQ(row->sizeThatFits(KRSizeMake(120, 500)), KRSizeMake(120, 28));
}

TEST_F(KRCheckListItemViewLayoutTests, WrappedTitleFitsTenPlusEighteenPerLine) {
    row->setTitle(kLongTitle); // runs an update: the title takes the fixed line height
    const KRCheckListItemViewLayout layout = row->checkListItemViewLayoutForSize(KRSizeMake(300, 28));
    expectLayoutsEqual(layout, expectedLayout(300, 28));
    const double titleHeight = layout.titleTextFieldFrame.size.height;
    const double lines = titleHeight / 18.0;
    EXPECT_EQ(lines, std::floor(lines)) << "whole lines of 18";
    EXPECT_GE(lines, 2.0);
    EXPECT_EQ(layout.sizeThatFits, KRSizeMake(300, 10 + 18 * lines));
    EXPECT_EQ(layout.checkBoxButtonViewEdgeInsets.bottom, 18 * (lines - 1) + 1);
    EXPECT_EQ(layout.checkBoxButtonViewFrame.size.height, 27.0)
        << "the check box spans the row, not the title";
}

TEST_F(KRCheckListItemViewLayoutTests, ThreeLineTitleRaisesTheCheckBoxBottomInset) {
    row->setTitle(kLongTitle);
    const double width = rowWidthForTitleLines(3);
    ASSERT_GT(width, 0.0);
    const KRCheckListItemViewLayout layout = row->checkListItemViewLayoutForSize(KRSizeMake(width, 64));
    expectLayoutsEqual(layout, expectedLayout(width, 64));
    EXPECT_EQ(layout.titleTextFieldFrame.size.height, 54.0);
    EXPECT_EQ(layout.sizeThatFits, KRSizeMake(width, 64));
    EXPECT_EQ(layout.checkBoxButtonViewEdgeInsets, KREdgeInsetsMake(0, 5, 37, 0));
    EXPECT_EQ(layout.checkBoxButtonViewFrame.size.height, 63.0) << "the check box spans the row";

    // The same title in a row of another height: only the frame follows the row.
    const KRCheckListItemViewLayout taller = row->checkListItemViewLayoutForSize(KRSizeMake(width, 100));
    EXPECT_EQ(taller.checkBoxButtonViewFrame.size.height, 99.0);
    EXPECT_EQ(taller.checkBoxButtonViewEdgeInsets, KREdgeInsetsMake(0, 5, 37, 0));
    EXPECT_EQ(taller.sizeThatFits, KRSizeMake(width, 64));
}

TEST_F(KRCheckListItemViewLayoutTests, TitleLinesOnlyChangeTheCheckBoxBottomInset) {
    row->setTitle(kLongTitle);
    for (int lines : {1, 2, 4}) {
        SCOPED_TRACE(lines);
        const double width = rowWidthForTitleLines(lines);
        ASSERT_GT(width, 0.0);
        const KRCheckListItemViewLayout layout = row->checkListItemViewLayoutForSize(KRSizeMake(width, 28));
        EXPECT_EQ(layout.sizeThatFits, KRSizeMake(width, 10 + 18.0 * lines));
        EXPECT_EQ(layout.checkBoxButtonViewEdgeInsets, KREdgeInsetsMake(0, 5, 18.0 * (lines - 1) + 1, 0));
        EXPECT_EQ(layout.checkBoxButtonViewFrame.size.height, 27.0);
    }
}

TEST_F(KRCheckListItemViewLayoutTests, TooNarrowARowGivesANegativeTitleWidthAsIs) {
    const double width = 10;
    const KRCheckListItemViewLayout layout = row->checkListItemViewLayoutForSize(KRSizeMake(width, 28));
    const double expectedWidth = (width - handleSize().width - 2 - 5) - (checkBoxSize().width + 6);
    ASSERT_LT(expectedWidth, 0.0);
    EXPECT_EQ(layout.titleTextFieldFrame.size.width, expectedWidth);
    expectLayoutsEqual(layout, expectedLayout(width, 28));

    row->setTitle(QStringLiteral("Narrow"));
    EXPECT_EQ(row->checkListItemViewLayoutForSize(KRSizeMake(width, 28)).titleTextFieldFrame.size.width,
              expectedWidth);
}

TEST_F(KRCheckListItemViewLayoutTests, DividersAreLaidOutWhetherOrNotTheyShow) {
    const KRCheckListItemViewLayout hidden = row->checkListItemViewLayoutForSize(KRSizeMake(300, 28));
    row->update([&] {
        row->setDrawsTopDivider(true);
        row->setDrawsBottomDivider(true);
    });
    const KRCheckListItemViewLayout shown = row->checkListItemViewLayoutForSize(KRSizeMake(300, 28));
    EXPECT_EQ(hidden.topDividerViewFrame, KRRectMake(6, 0, 294, 1));
    EXPECT_EQ(hidden.bottomDividerViewFrame, KRRectMake(6, 27, 294, 1));
    EXPECT_EQ(shown.topDividerViewFrame, hidden.topDividerViewFrame);
    EXPECT_EQ(shown.bottomDividerViewFrame, hidden.bottomDividerViewFrame);
}

TEST_F(KRCheckListItemViewLayoutTests, SizeThatFitsIsTheLayoutsFittingSize) {
    row->setTitle(kLongTitle);
    for (const KRSize size : {KRSizeMake(300, 28), KRSizeMake(180, 100), KRSizeMake(600, 0)}) {
        EXPECT_EQ(row->sizeThatFits(size), row->checkListItemViewLayoutForSize(size).sizeThatFits);
        EXPECT_EQ(row->sizeThatFits(size).width, size.width);
    }
    EXPECT_GT(row->sizeThatFits(KRSizeMake(180, 28)).height, row->sizeThatFits(KRSizeMake(600, 28)).height);
}

// Applying the layout
// ------------------------------------------------------------------------------------------------------

TEST_F(KRCheckListItemViewLayoutTests, LayoutSubviewsAppliesEveryFrameAndTheCheckBoxInsets) {
    row->setTitle(kLongTitle);
    const double width = rowWidthForTitleLines(3);
    ASSERT_GT(width, 0.0);
    row->setFrame(KRRectMake(0, 0, width, 64));
    row->setNeedsLayout(true);
    row->layoutIfNeeded();
    const KRCheckListItemViewLayout expected = expectedLayout(width, 64);
    EXPECT_EQ(row->shapeView()->frame(), expected.shapeViewFrame);
    EXPECT_EQ(row->highlightView()->frame(), expected.highlightViewFrame);
    EXPECT_EQ(row->maskView()->frame(), expected.maskViewFrame);
    EXPECT_EQ(row->checkBoxButtonView()->frame(), expected.checkBoxButtonViewFrame);
    EXPECT_EQ(row->checkBoxButtonView()->edgeInsets(), expected.checkBoxButtonViewEdgeInsets);
    EXPECT_EQ(row->checkBoxButtonView()->edgeInsets(), KREdgeInsetsMake(0, 5, 37, 0));
    EXPECT_EQ(row->handleButtonView()->frame(), expected.handleButtonViewFrame);
    EXPECT_EQ(row->titleTextField()->frame(), expected.titleTextFieldFrame);
    EXPECT_EQ(row->topDividerView()->frame(), expected.topDividerViewFrame);
    EXPECT_EQ(row->bottomDividerView()->frame(), expected.bottomDividerViewFrame);
    EXPECT_FALSE(row->needsLayout());

    // Called directly, it lays out for whatever size the row has now.
    row->setFrame(KRRectMake(0, 0, 240, 40));
    row->layoutSubviews();
    const KRCheckListItemViewLayout direct = expectedLayout(240, 40);
    EXPECT_EQ(row->shapeView()->frame(), direct.shapeViewFrame);
    EXPECT_EQ(row->checkBoxButtonView()->frame(), direct.checkBoxButtonViewFrame);
    EXPECT_EQ(row->titleTextField()->frame(), direct.titleTextFieldFrame);
    EXPECT_EQ(row->bottomDividerView()->frame(), KRRectMake(6, 39, 234, 1));
}

TEST_F(KRCheckListItemViewLayoutTests, SizeToFitKeepsTheOriginAndTakesTheFittingSize) {
    row->setFrame(KRRectMake(10, 20, 300, 50));
    row->sizeToFit();
    EXPECT_EQ(row->frame(), KRRectMake(10, 20, 300, 28));

    row->setTitle(kLongTitle);
    const double width = rowWidthForTitleLines(3);
    ASSERT_GT(width, 0.0);
    row->setFrame(KRRectMake(10, 20, width, 28));
    row->sizeToFit();
    EXPECT_EQ(row->frame(), KRRectMake(10, 20, width, 64));
}

TEST_F(KRCheckListItemViewLayoutTests, MinHeightMarksLayoutButLeavesTheFittingSize) {
    row->layoutIfNeeded();
    ASSERT_FALSE(row->needsLayout());
    const KRSize before = row->sizeThatFits(KRSizeMake(300, 28));
    row->setMinHeight(80);
    EXPECT_EQ(row->minHeight(), 80.0);
    EXPECT_TRUE(row->needsLayout());
    EXPECT_EQ(row->sizeThatFits(KRSizeMake(300, 28)), before);
    EXPECT_EQ(before, KRSizeMake(300, 28));
}

// The title's tracking area and cursor
// ------------------------------------------------------------------------------------------------------

TEST_F(KRCheckListItemViewLayoutTests, TextTrackingAreaCoversTheTitleColumnForTheRowsHeight) {
    const std::shared_ptr<KRTrackingArea>& initial = row->textTrackingArea();
    ASSERT_NE(initial, nullptr);
    EXPECT_EQ(initial->rect(), KRRectMake(0, 0, 0, 28)) << "the title has no frame before the first layout";
    EXPECT_EQ(initial->options(), 132u);
    EXPECT_EQ(initial->options(), unsigned{KRTrackingCursorUpdate | KRTrackingActiveAlways});
    EXPECT_EQ(initial->owner(), static_cast<KRResponder*>(row.get()));
    EXPECT_TRUE(initial->userInfo().isEmpty());
    const auto& areas = row->trackingAreas();
    EXPECT_NE(std::find(areas.begin(), areas.end(), initial), areas.end());
}

TEST_F(KRCheckListItemViewLayoutTests, UpdateTrackingAreasRebuildsTheAreaFromTheCurrentTitleFrame) {
    row->setFrame(KRRectMake(0, 0, 300, 46));
    row->layoutIfNeeded();
    const std::shared_ptr<KRTrackingArea> old = row->textTrackingArea(); // kept alive: no address reuse
    const std::size_t areaCount = row->trackingAreas().size();
    row->updateTrackingAreas();
    const std::shared_ptr<KRTrackingArea>& area = row->textTrackingArea();
    ASSERT_NE(area, nullptr);
    const KRRect title = row->titleTextField()->frame();
    EXPECT_EQ(area->rect(), KRRectMake(title.origin.x, 0, title.size.width, 46));
    EXPECT_GT(title.size.width, 0.0);
    EXPECT_EQ(area->options(), 132u);
    EXPECT_EQ(area->owner(), static_cast<KRResponder*>(row.get()));
    EXPECT_TRUE(area->userInfo().isEmpty());
    const auto& areas = row->trackingAreas();
    EXPECT_NE(std::find(areas.begin(), areas.end(), area), areas.end());
    EXPECT_NE(area, old);
    EXPECT_EQ(std::find(areas.begin(), areas.end(), old), areas.end()) << "the old area is gone";
    EXPECT_EQ(areas.size(), areaCount);
}

TEST_F(KRCheckListItemViewLayoutTests, CursorUpdateOverTheTitleColumnShowsTheIBeam) {
    KRWindow window;
    auto content = std::make_shared<KRView>(KRRectMake(0, 0, 400, 200));
    window.setContentView(content);
    content->addSubview(row);
    row->setNeedsLayout(true);
    row->layoutIfNeeded();
    row->updateTrackingAreas();
    const KRRect area = row->textTrackingArea()->rect();
    ASSERT_GT(area.size.width, 0.0);

    KRCursor::pointingHandCursor().set();
    const KRPoint inside = KRPointMake(KRRectGetMidX(area), 14);
    row->cursorUpdate(KREvent::trackingEvent(KREventType::CursorUpdate,
                                             row->convertPointToView(inside, nullptr),
                                             row->textTrackingArea().get(), 0, &window));
    EXPECT_EQ(KRCursor::currentCursor(), KRCursor::IBeamCursor());

    KRCursor::pointingHandCursor().set();
    const KRPoint outside = KRPointMake(area.origin.x / 2, 14); // over the check box
    row->cursorUpdate(KREvent::trackingEvent(KREventType::CursorUpdate,
                                             row->convertPointToView(outside, nullptr),
                                             row->textTrackingArea().get(), 0, &window));
    EXPECT_NE(KRCursor::currentCursor(), KRCursor::IBeamCursor());
    KRCursor::arrowCursor().set();
    row->removeFromSuperview();
}
