// Reordering by dragging a row's handle, driven with Qt mouse events through the host widget and the manual
// clock: which rows are dragged and how they are stacked, the lift, the dragging layout with its drop index,
// gap and elastic limits, the mouse-dragged pass, the drop with its messages and its settling, and the
// drops that must still end the drag when the data source refuses or changes the move or the release is
// lost.
#include "KRCheckListView.h"

#include "KRCheckListDefaults.h"
#include "KRCheckListDraggingSession.h"
#include "KRCheckListDropPlaceholderContentView.h"
#include "KRCheckListDropPlaceholderView.h"
#include "KRCheckListViewHostTestSupport.h"

#include "Animation/EZInterpolationFunctions.h"
#include "Animation/KRAnimationDurationMultiplier.h"
#include "Controls/KRButtonView.h"

#include <QCoreApplication>
#include <QEvent>
#include <QFocusEvent>
#include <QMouseEvent>
#include <QWidget>
#include <QWindow>

#include <gtest/gtest.h>

#include <cmath>
#include <memory>
#include <vector>

using namespace KRCheckListViewTesting;

namespace {

// Titles that take one, two and three lines in a row of the list's width.
const QString kOneLineTitle = QStringLiteral("Passport");
const QString kTwoLineTitle = QStringLiteral("Book the train to the airport and print the tickets for both");
const QString kThreeLineTitle = QStringLiteral(
    "Pack the camera, the charger, two spare batteries, the travel adapter and the small tripod");

double border() {
    return KRCheckListDefaults::borderWidth();
}
double hoverX() {
    return KRCheckListDefaults::hoverOffsetX();
}
double hoverY() {
    return KRCheckListDefaults::hoverOffsetY();
}
// The spring of a drag runs its full course in this long.
double springDuration() {
    return KRCheckListDefaults::draggingDuration() * KRAnimationDurationMultiplier;
}
double fadeDuration() {
    return KRCheckListDefaults::dropPlaceholderFadeDuration() * KRAnimationDurationMultiplier;
}

class KRCheckListViewDraggingTests : public KRCheckListViewHostTestCase {
protected:
    // The centre of a row's handle, in the list's coordinates.
    KRPoint handleCentreOfRow(KRUInteger index) const {
        const KRView& handle = *rowAt(index)->handleButtonView();
        const KRRect bounds = handle.bounds();
        return handle.convertPointToView(KRPointMake(KRRectGetMidX(bounds), KRRectGetMidY(bounds)),
                                         list.get());
    }
    // Presses the handle of the row at index and answers where.
    KRPoint pressHandleOfRow(KRUInteger index) {
        settle();
        const KRPoint point = handleCentreOfRow(index);
        press(point);
        return point;
    }
    // Lets every spring and fade run out, and the run loop deliver what it deferred.
    void finishAnimations() {
        KRClock::advance(1.0);
        settle();
    }

    std::vector<KRRect> rowFrames() const {
        std::vector<KRRect> frames;
        for (const std::shared_ptr<KRCheckListItemView>& row : list->checkListItemViews()) {
            frames.push_back(row->frame());
        }
        return frames;
    }
    std::vector<KRRect> restingFrames() const {
        return list->checkListViewLayoutForSize(listSize()).itemViewFrames;
    }
    KRSize listSize() const { return list->bounds().size; }
    KRIndexSet draggedRows() const {
        KRIndexSet indexes;
        for (KRUInteger index = 0; index < list->numberOfItems(); ++index) {
            if (rowAt(index)->isDragged()) {
                indexes = indexes.indexSetByAddingIndex(index);
            }
        }
        return indexes;
    }
    // The session of the running drag; fails the test when there is none.
    KRCheckListDraggingSession& session() const {
        EXPECT_TRUE(list->draggingSession());
        return *list->draggingSession();
    }
    // The front-to-back position of a row among the list's subviews (0 is the frontmost).
    std::size_t depthOfRow(KRUInteger index) const {
        const auto& subviews = list->subviews();
        for (std::size_t position = 0; position < subviews.size(); ++position) {
            if (subviews[subviews.size() - 1 - position].get() == rowAt(index)) {
                return position;
            }
        }
        return subviews.size();
    }
    // The dragging layout for the list's size with the pointer at location (list coordinates).
    KRCheckListViewLayout draggingLayoutWithPointerAt(KRPoint location) const {
        session().setMouseLocation(location);
        return list->checkListViewDraggingLayoutForSize(listSize());
    }
    static double damp(double deflection, double maximum) {
        return KRCheckListView::checkListViewApplyElasticDampingToDeflectionMaxDampedDeflection(deflection,
                                                                                                maximum);
    }
};

// Which rows are dragged
// ------------------------------------------------------------------------------------------------------

TEST_F(KRCheckListViewDraggingTests, PressingTheHandleOfAnUnselectedRowDragsItAloneAsTheSoleSelection) {
    showItems({"a", "b", "c", "d"});
    list->selectItemsAtIndexesByExtendingSelection(KRIndexSet(0).indexSetByAddingIndex(2), false);
    settle();

    pressHandleOfRow(1);

    ASSERT_TRUE(list->isDragging());
    EXPECT_EQ(indexesOf(session().indexesOfDraggedItems()), indexesOf(KRIndexSet(1)));
    EXPECT_EQ(session().indexOfDraggedItem(), 1u);
    ASSERT_EQ(session().draggedItemViews().size(), 1u);
    EXPECT_EQ(session().draggedItemViews().front().get(), rowAt(1));
    EXPECT_EQ(indexesOf(list->indexesForSelectedItems()), indexesOf(KRIndexSet(1)));
    EXPECT_EQ(indexesOf(draggedRows()), indexesOf(KRIndexSet(1)));
}

TEST_F(KRCheckListViewDraggingTests, PressingTheHandleOfOneOfThreeSelectedRowsDragsAllThreePressedRowFirst) {
    showItems({"a", "b", "c", "d", "e"});
    const KRIndexSet selection = KRIndexSet(0).indexSetByAddingIndex(2).indexSetByAddingIndex(3);
    list->selectItemsAtIndexesByExtendingSelection(selection, false);
    settle();

    pressHandleOfRow(2);

    ASSERT_TRUE(list->isDragging());
    EXPECT_EQ(indexesOf(session().indexesOfDraggedItems()), indexesOf(selection));
    EXPECT_EQ(session().indexOfDraggedItem(), 2u);
    ASSERT_EQ(session().draggedItemViews().size(), 3u);
    EXPECT_EQ(session().draggedItemViews()[0].get(), rowAt(2));
    EXPECT_EQ(session().draggedItemViews()[1].get(), rowAt(0));
    EXPECT_EQ(session().draggedItemViews()[2].get(), rowAt(3));
    EXPECT_EQ(indexesOf(list->indexesForSelectedItems()), indexesOf(selection));
    EXPECT_EQ(indexesOf(draggedRows()), indexesOf(selection));
}

TEST_F(KRCheckListViewDraggingTests, DraggedRowsComeToTheFrontWithThePressedRowFrontmostThenAscending) {
    showItems({"a", "b", "c", "d", "e"});
    list->selectItemsAtIndexesByExtendingSelection(
        KRIndexSet(0).indexSetByAddingIndex(2).indexSetByAddingIndex(3), false);
    settle();

    pressHandleOfRow(2);

    EXPECT_EQ(depthOfRow(2), 0u);
    EXPECT_EQ(depthOfRow(0), 1u);
    EXPECT_EQ(depthOfRow(3), 2u);
    EXPECT_GT(depthOfRow(1), 2u);
    EXPECT_GT(depthOfRow(4), 2u);
}

TEST_F(KRCheckListViewDraggingTests, SelectionNumbersPastTheRowsAreNeverDragged) {
    showItems({"a", "b", "c", "d"});
    // A careless client leaves numbers past the rows in the selection.
    list->selectItemsAtIndexesByExtendingSelection(
        KRIndexSet(1).indexSetByAddingIndex(7).indexSetByAddingIndex(9), false);
    settle();

    pressHandleOfRow(1);

    ASSERT_TRUE(list->isDragging());
    EXPECT_EQ(indexesOf(session().indexesOfDraggedItems()), indexesOf(KRIndexSet(1)));
    EXPECT_EQ(session().draggedItemViews().size(), 1u);

    const KRPoint below = KRPointMake(handleCentreOfRow(3).x, rowAt(3)->frame().origin.y + 20.0);
    dragTo(below);
    release(below);
    finishAnimations();
    EXPECT_FALSE(list->isDragging());
    EXPECT_EQ(linesOf(dataSource->identifiers()), linesOf({"a", "c", "d", "b"}));
}

TEST_F(KRCheckListViewDraggingTests, ThePressMarksTheDraggedRowsAndShadowsThePressedRowOnly) {
    showItems({"a", "b", "c", "d"});
    list->selectItemsAtIndexesByExtendingSelection(KRIndexSet(1).indexSetByAddingIndex(2), false);
    settle();

    pressHandleOfRow(2);

    EXPECT_TRUE(rowAt(1)->isDragged());
    EXPECT_TRUE(rowAt(2)->isDragged());
    EXPECT_TRUE(rowAt(2)->drawsShadow());
    EXPECT_FALSE(rowAt(1)->drawsShadow());
    EXPECT_FALSE(rowAt(0)->isDragged());
}

TEST_F(KRCheckListViewDraggingTests, TheDragStartsOnThePressWithTheSpringCurveAndThePointersOffsets) {
    showItems({"a", "b", "c"});
    const KRPoint point = pressHandleOfRow(1);

    ASSERT_TRUE(list->isDragging());
    const KRRect frame = restingFrames()[1];
    EXPECT_EQ(session().draggingOffsetX(), point.x - frame.origin.x);
    EXPECT_EQ(session().draggingOffsetY(), point.y - frame.origin.y);
    EXPECT_EQ(session().mouseLocation(), point);
    ASSERT_TRUE(session().interpolationFunction());
    EXPECT_DOUBLE_EQ(session().interpolationFunction()->duration(), springDuration());
    const EZSampledFunctionRef expected = EZInterpolationFunctions::springWithDampingRatio(
        KRCheckListDefaults::draggingDampingRatio(), springDuration());
    EXPECT_EQ(session().interpolationFunction()->samples(), expected->samples());
}

// The lift
// ------------------------------------------------------------------------------------------------------

TEST_F(KRCheckListViewDraggingTests, RightAfterTheMouseDownTheLiftIsExactlyTheHoverOffset) {
    showItems({"a", "b", "c"});
    const KRRect resting = rowAt(1)->frame();
    ASSERT_EQ(resting.origin.y, std::round(resting.origin.y));

    pressHandleOfRow(1);

    EXPECT_EQ(rowAt(1)->frame().origin,
              KRPointMake(resting.origin.x + hoverX(), resting.origin.y + hoverY()));
    EXPECT_EQ(rowAt(1)->frame().size, resting.size);
}

TEST_F(KRCheckListViewDraggingTests, TheLiftRunsOnTheSpringFromTheRestingPlace) {
    showItems({"a", "b", "c"});
    const KRRect resting = rowAt(1)->frame();

    pressHandleOfRow(1);

    EXPECT_EQ(rowAt(1)->presentationFrame(), resting) << "nothing has moved before the clock runs";
    KRClock::advance(springDuration() / 2.0);
    EXPECT_NE(rowAt(1)->presentationFrame().origin, resting.origin);
    EXPECT_NE(rowAt(1)->presentationFrame().origin, rowAt(1)->frame().origin);
    KRClock::advance(springDuration());
    EXPECT_EQ(rowAt(1)->presentationFrame(), rowAt(1)->frame());
}

// The dragging layout
// ------------------------------------------------------------------------------------------------------

TEST_F(KRCheckListViewDraggingTests, RowsCloseRanksAndTheDropIndexComesFromThePointerItself) {
    // One-line rows are 28 points: the others close up to y = 0 and 27 around the dragged row 1.
    showItems({"a", "b", "c"});
    pressHandleOfRow(1);
    ASSERT_EQ(rowAt(0)->frame().size.height, 28.0);

    const KRCheckListViewLayout top = draggingLayoutWithPointerAt(KRPointMake(40.0, 10.0));
    EXPECT_EQ(top.dropPlaceholderIndex, 0u);
    EXPECT_EQ(top.itemViewFrames[0].origin.y, 0.0 + 27.0) << "row 0 makes room below the gap at the top";
    EXPECT_EQ(top.itemViewFrames[2].origin.y, 27.0 + 27.0);

    const KRCheckListViewLayout middle = draggingLayoutWithPointerAt(KRPointMake(40.0, 40.0));
    EXPECT_EQ(middle.dropPlaceholderIndex, 2u);
    EXPECT_EQ(middle.itemViewFrames[0].origin.y, 0.0) << "above the gap: the closed-up place";
    EXPECT_EQ(middle.itemViewFrames[2].origin.y, 27.0 + 27.0);

    const KRCheckListViewLayout end = draggingLayoutWithPointerAt(KRPointMake(40.0, 100.0));
    EXPECT_EQ(end.dropPlaceholderIndex, 3u);
    EXPECT_EQ(end.itemViewFrames[0].origin.y, 0.0);
    EXPECT_EQ(end.itemViewFrames[2].origin.y, 27.0) << "no row stands below the gap at the end";
}

TEST_F(KRCheckListViewDraggingTests, RowsAtOrAfterTheDropIndexMoveDownByThePressedRowsHeightLessOneBorder) {
    showTitles({kOneLineTitle, kThreeLineTitle, kOneLineTitle, kTwoLineTitle, kOneLineTitle});
    pressHandleOfRow(1);
    const std::vector<KRRect> resting = restingFrames();
    ASSERT_EQ(resting[1].size.height, 64.0);

    // The pointer inside the closed-up row 3 (rows 2, 3 and 4 stand 63 points higher).
    const double closedUp3 = resting[3].origin.y - 63.0;
    const KRCheckListViewLayout layout = draggingLayoutWithPointerAt(KRPointMake(40.0, closedUp3 + 10.0));
    ASSERT_EQ(layout.dropPlaceholderIndex, 3u);
    EXPECT_EQ(layout.itemViewFrames[0].origin.y, resting[0].origin.y);
    EXPECT_EQ(layout.itemViewFrames[2].origin.y, resting[2].origin.y - 63.0);
    EXPECT_EQ(layout.itemViewFrames[3].origin.y, closedUp3 + 63.0);
    EXPECT_EQ(layout.itemViewFrames[4].origin.y, resting[4].origin.y - 63.0 + 63.0);
    EXPECT_EQ(layout.dropPlaceholderFrame,
              KRRectMake(0, layout.itemViewFrames[2].origin.y + resting[2].size.height - border(),
                         listSize().width, 63.0));
}

TEST_F(KRCheckListViewDraggingTests, DraggingThreeRowsReservesThePressedRowsHeightOnly) {
    showTitles({kOneLineTitle, kTwoLineTitle, kOneLineTitle, kThreeLineTitle, kOneLineTitle, kOneLineTitle});
    const std::vector<KRRect> resting = restingFrames();
    ASSERT_EQ(resting[1].size.height, 46.0);
    ASSERT_EQ(resting[3].size.height, 64.0);
    const double restingHeight = list->lastSizeThatFits().height;
    list->selectItemsAtIndexesByExtendingSelection(
        KRIndexSet(1).indexSetByAddingIndex(3).indexSetByAddingIndex(4), false);
    settle();

    const KRPoint pressed = pressHandleOfRow(3);

    // The pointer in the closed-up row 2 (row 0 at 0, row 2 at 27), straight above where it was pressed.
    const KRPoint pointer = KRPointMake(pressed.x, 27.0 + 5.0);
    const KRCheckListViewLayout layout = draggingLayoutWithPointerAt(pointer);
    ASSERT_EQ(layout.dropPlaceholderIndex, 2u);
    EXPECT_EQ(layout.dropPlaceholderFrame, KRRectMake(0, 27.0, listSize().width, 63.0))
        << "the gap is the pressed row's height, not the three rows'";
    EXPECT_EQ(layout.itemViewFrames[0].origin.y, 0.0);
    EXPECT_EQ(layout.itemViewFrames[2].origin.y, 27.0 + 63.0);
    EXPECT_EQ(layout.itemViewFrames[5].origin.y, 27.0 + 27.0 + 63.0);
    EXPECT_EQ(layout.itemViewFrames[3].size.height, 64.0) << "the pressed row keeps its height";
    EXPECT_EQ(layout.itemViewFrames[1].size.height, KRCheckListDefaults::itemHeight());
    EXPECT_EQ(layout.itemViewFrames[4].size.height, KRCheckListDefaults::itemHeight());
    // All three at one origin under the pointer, lifted by the hover offset.
    const double x = 0.0 + hoverX();
    const double y = std::round(pointer.y - session().draggingOffsetY()) + hoverY();
    for (const KRUInteger index : {1u, 3u, 4u}) {
        EXPECT_EQ(layout.itemViewFrames[index].origin, KRPointMake(x, y)) << "row " << index;
    }
    // The list asks for the space of all dragged rows but one less than at rest.
    EXPECT_EQ(layout.sizeThatFits.height, restingHeight - (46.0 - border()) - (28.0 - border()));
    EXPECT_EQ(layout.sizeThatFits.width, listSize().width);
}

TEST_F(KRCheckListViewDraggingTests, OneDraggedRowOfMixedHeightsFollowsThePointerInsideTheList) {
    showTitles({kTwoLineTitle, kOneLineTitle, kThreeLineTitle, kOneLineTitle});
    const std::vector<KRRect> resting = restingFrames();
    ASSERT_EQ(resting[0].size.height, 46.0);
    ASSERT_EQ(resting[2].size.height, 64.0);

    const KRPoint pressed = pressHandleOfRow(2);
    const double offsetY = pressed.y - resting[2].origin.y;
    // Rows 0, 1, 3 closed up: 0, 45, 72. The pointer half a point more than the offset into row 3, and
    // 2.5 points left of where it was pressed.
    const KRPoint pointer = KRPointMake(pressed.x - 2.5, 72.0 + offsetY + 0.5);
    const KRCheckListViewLayout layout = draggingLayoutWithPointerAt(pointer);

    EXPECT_EQ(layout.dropPlaceholderIndex, 3u);
    EXPECT_EQ(layout.dropPlaceholderFrame, KRRectMake(0, 72.0, listSize().width, 63.0));
    EXPECT_EQ(layout.itemViewFrames[0].origin.y, 0.0);
    EXPECT_EQ(layout.itemViewFrames[1].origin.y, 45.0);
    EXPECT_EQ(layout.itemViewFrames[3].origin.y, 72.0 + 63.0);
    // y: 72.5 rounds half away from zero, to 73. x: -2.5 rounds to -3; the row is held at 0 and the
    // damping lets it out by less than half a point, which rounds to nothing.
    EXPECT_EQ(layout.itemViewFrames[2].origin.y, 73.0 + hoverY());
    EXPECT_EQ(layout.itemViewFrames[2].origin.x, 0.0 + hoverX());
    EXPECT_LT(std::fabs(damp(-3.0, KRCheckListDefaults::maxDragOutX())), 0.5);
    EXPECT_EQ(layout.itemViewFrames[2].size, resting[2].size);
}

TEST_F(KRCheckListViewDraggingTests, APointerBelowTheListDropsAtTheEndAndPinsTheRowNearTheBottomEdge) {
    showTitles({kOneLineTitle, kTwoLineTitle, kThreeLineTitle});
    list->setFrameSize(KRSizeMake(320, 200));
    settle();
    ASSERT_EQ(rowAt(1)->frame().size.height, 46.0);
    const KRPoint pressed = pressHandleOfRow(1);

    const KRPoint pointer = KRPointMake(pressed.x, 200.0 + 300.0);
    const KRCheckListViewLayout layout = draggingLayoutWithPointerAt(pointer);

    EXPECT_EQ(layout.dropPlaceholderIndex, 3u);
    // Held with its bottom on the list's bottom edge, let out by the damped deflection past it.
    const double heldY = 200.0 - 46.0;
    const double deflection = std::round(pointer.y - session().draggingOffsetY()) - heldY;
    ASSERT_GT(deflection, 300.0);
    EXPECT_EQ(layout.itemViewFrames[1].origin.y, std::round(damp(deflection, 20.0)) + heldY + hoverY());
    EXPECT_LT(layout.itemViewFrames[1].origin.y, heldY + KRCheckListDefaults::maxDragOutY() + hoverY());
    EXPECT_GT(layout.itemViewFrames[1].origin.y, heldY + hoverY());
}

TEST_F(KRCheckListViewDraggingTests, SeveralRowsDraggedBelowTheListAreEachHeldByTheirOwnHeightAtTheBottom) {
    showTitles({kOneLineTitle, kThreeLineTitle, kTwoLineTitle, kOneLineTitle});
    list->setFrameSize(KRSizeMake(320, 250));
    list->selectItemsAtIndexesByExtendingSelection(KRIndexSet(1).indexSetByAddingIndex(2), false);
    settle();
    const KRPoint pressed = pressHandleOfRow(1);

    const KRPoint pointer = KRPointMake(pressed.x, 250.0 + 60.0);
    const KRCheckListViewLayout layout = draggingLayoutWithPointerAt(pointer);

    EXPECT_EQ(layout.dropPlaceholderIndex, 4u);
    // Rows 0 and 3 closed up at 0 and 27; the gap of the pressed row's 63 points below them.
    EXPECT_EQ(layout.itemViewFrames[0].origin.y, 0.0);
    EXPECT_EQ(layout.itemViewFrames[3].origin.y, 27.0);
    EXPECT_EQ(layout.dropPlaceholderFrame, KRRectMake(0, 54.0, listSize().width, 63.0));
    // The clamp takes each dragged row's own height: the pressed row's 64 points, the card's one line.
    const double ay = std::round(pointer.y - session().draggingOffsetY());
    const double pressedHeldY = 250.0 - 64.0;
    const double cardHeldY = 250.0 - KRCheckListDefaults::itemHeight();
    EXPECT_EQ(layout.itemViewFrames[1].origin.y,
              std::round(damp(ay - pressedHeldY, KRCheckListDefaults::maxDragOutY())) + pressedHeldY +
                  hoverY());
    EXPECT_EQ(layout.itemViewFrames[2].origin.y,
              std::round(damp(ay - cardHeldY, KRCheckListDefaults::maxDragOutY())) + cardHeldY + hoverY());
    EXPECT_EQ(layout.itemViewFrames[2].size.height, KRCheckListDefaults::itemHeight());
    EXPECT_EQ(layout.itemViewFrames[1].origin.x, layout.itemViewFrames[2].origin.x);
}

TEST_F(KRCheckListViewDraggingTests, SeveralRowsDraggedFarAboveTheListShareOneOriginPinnedAboveTheTop) {
    showTitles({kOneLineTitle, kTwoLineTitle, kThreeLineTitle, kOneLineTitle});
    list->selectItemsAtIndexesByExtendingSelection(KRIndexSet(1).indexSetByAddingIndex(2), false);
    settle();
    const KRPoint pressed = pressHandleOfRow(2);

    dragTo(KRPointMake(pressed.x, -1.0e6));

    EXPECT_EQ(list->dropPlaceholderIndex(), 0u);
    const double pinned = -KRCheckListDefaults::maxDragOutY() + hoverY();
    EXPECT_EQ(rowAt(2)->frame().origin.y, pinned);
    EXPECT_EQ(rowAt(1)->frame().origin.y, pinned);
    EXPECT_EQ(rowAt(1)->frame().size.height, KRCheckListDefaults::itemHeight());
    EXPECT_EQ(rowAt(2)->frame().size.height, 64.0);
    // The remaining rows: row 0 below the gap, row 3 below it.
    EXPECT_EQ(rowAt(0)->frame().origin.y, 63.0);
    EXPECT_EQ(rowAt(3)->frame().origin.y, 63.0 + 27.0);
}

TEST_F(KRCheckListViewDraggingTests, APointerFarAboveTheListNeverLiftsTheRowMoreThanMaxDragOutAboveTheTop) {
    showItems({"a", "b", "c"});
    const KRPoint pressed = pressHandleOfRow(1);

    dragTo(KRPointMake(pressed.x, -5000.0));

    ASSERT_TRUE(list->isDragging());
    const double ay = std::round(-5000.0 - session().draggingOffsetY());
    ASSERT_LT(ay, 0.0);
    EXPECT_EQ(rowAt(1)->frame().origin.y,
              std::round(damp(ay, KRCheckListDefaults::maxDragOutY())) + hoverY());
    EXPECT_EQ(rowAt(1)->frame().origin.y, -KRCheckListDefaults::maxDragOutY() + hoverY());
    EXPECT_EQ(list->dropPlaceholderIndex(), 0u);
}

TEST_F(KRCheckListViewDraggingTests, APointerFarRightOfTheListHoldsTheRowWithinMaxDragOutOfTheRightEdge) {
    showItems({"a", "b", "c"});
    const KRPoint pressed = pressHandleOfRow(1);

    dragTo(KRPointMake(pressed.x + 3000.0, pressed.y));

    const KRRect frame = rowAt(1)->frame();
    const double cx = listSize().width - frame.size.width;
    EXPECT_EQ(frame.origin.x, cx + KRCheckListDefaults::maxDragOutX() + hoverX());
}

TEST_F(KRCheckListViewDraggingTests, ADraggingLayoutWithoutASessionFailsWithTheInternalInconsistencyText) {
    showItems({"a", "b"});
    const std::optional<AssertionFailure> failure =
        assertionFailureOf([&] { list->checkListViewDraggingLayoutForSize(listSize()); });
    ASSERT_TRUE(failure);
    EXPECT_EQ(failure->method, QStringLiteral("checkListViewDraggingLayoutForSize:"));
    EXPECT_EQ(failure->object, list.get());
    EXPECT_EQ(failure->file, QStringLiteral("KRCheckListView"));
    EXPECT_EQ(failure->message, QStringLiteral("Internal inconsistency, can't compute dragging layout, no "
                                               "dragging session was is set"));
}

// Elastic damping
// ------------------------------------------------------------------------------------------------------

TEST_F(KRCheckListViewDraggingTests, DampingOfZeroIsZeroAndDampingIsOdd) {
    EXPECT_EQ(damp(0.0, 20.0), 0.0);
    EXPECT_EQ(damp(-0.0, 20.0), 0.0);
    for (const double d : {0.5, 1.0, 7.0, 100.0, 333.0, 1000.0, 1.0e6}) {
        EXPECT_EQ(damp(-d, 20.0), -damp(d, 20.0)) << d;
    }
}

TEST_F(KRCheckListViewDraggingTests, DampingFollowsTheDeflectionNearZeroAndStopsShortOfTheMaximum) {
    const double m = 20.0;
    // M (1 - 100^(-|d| / 1000)), written independently of the implementation.
    const auto expected = [m](double d) { return m * (1.0 - std::pow(100.0, -std::fabs(d) / 1000.0)); };
    EXPECT_NEAR(damp(1.0, m), expected(1.0), 1e-12);
    EXPECT_NEAR(damp(1.0, m), 0.0919, 1e-4) << "about 0.09 of a point for the first point";
    EXPECT_NEAR(damp(-1.0, m), -expected(1.0), 1e-12);
    EXPECT_NEAR(damp(100.0, m), expected(100.0), 1e-12);
    EXPECT_NEAR(damp(100.0, m), 7.3809, 1e-4);
    EXPECT_NEAR(damp(-100.0, m), -expected(100.0), 1e-12);
    EXPECT_NEAR(damp(1000.0, m), 0.99 * m, 1e-12) << "1000 points reach 99 % of the maximum";
    EXPECT_NEAR(damp(-1000.0, m), -0.99 * m, 1e-12);
    EXPECT_LT(damp(1000.0, m), m);
    EXPECT_DOUBLE_EQ(damp(1.0e6, m), m);
    EXPECT_DOUBLE_EQ(damp(-1.0e6, m), -m);
    EXPECT_LE(damp(1.0e6, m), m) << "never beyond the maximum";
}

// Mouse dragged
// ------------------------------------------------------------------------------------------------------

TEST_F(KRCheckListViewDraggingTests, DraggedRowsStickToThePointerWhileTheOthersSpring) {
    showItems({"a", "b", "c", "d"});
    const KRPoint pressed = pressHandleOfRow(0);
    finishAnimations();
    const KRRect row2Before = rowAt(2)->frame();

    // Below the middle of row 2: the gap moves under it, rows 1 and 2 move up.
    const KRPoint pointer = KRPointMake(pressed.x, rowAt(2)->frame().origin.y + 20.0);
    dragTo(pointer);

    ASSERT_TRUE(list->isDragging());
    EXPECT_EQ(session().mouseLocation(), pointer);
    EXPECT_FALSE(rowAt(0)->hasRunningAnimations()) << "the dragged row is placed at once";
    EXPECT_EQ(rowAt(0)->presentationFrame(), rowAt(0)->frame());
    EXPECT_EQ(rowAt(0)->frame().origin.y, std::round(pointer.y - session().draggingOffsetY()) + hoverY());
    EXPECT_NE(rowAt(2)->frame(), row2Before);
    EXPECT_TRUE(rowAt(2)->hasRunningAnimationForKey("frameOrigin")) << "the others glide";
    EXPECT_EQ(rowAt(2)->presentationFrame(), row2Before);
    KRClock::advance(springDuration());
    EXPECT_EQ(rowAt(2)->presentationFrame(), rowAt(2)->frame());
}

TEST_F(KRCheckListViewDraggingTests, TheHandleReportsItselfPressedWhileDraggedEvenAwayFromIt) {
    showItems({"a", "b", "c"});
    const KRPoint pressed = pressHandleOfRow(1);
    KRButtonView& handle = *rowAt(1)->handleButtonView();
    EXPECT_TRUE(handle.isPressed());

    dragTo(KRPointMake(pressed.x - 200.0, pressed.y + 100.0));
    EXPECT_TRUE(handle.isPressed());

    release(KRPointMake(pressed.x - 200.0, pressed.y + 100.0));
    EXPECT_TRUE(draggedRows().isEmpty());
    for (KRUInteger index = 0; index < list->numberOfItems(); ++index) {
        EXPECT_FALSE(rowAt(index)->handleButtonView()->isPressed()) << index;
    }
}

// Mouse up
// ------------------------------------------------------------------------------------------------------

TEST_F(KRCheckListViewDraggingTests, TheReleaseMovesTheDraggedItemsToTheDropIndexWithWillAndDidAround) {
    showItems({"a", "b", "c", "d"});
    const KRPoint pressed = pressHandleOfRow(0);
    const KRPoint pointer = KRPointMake(pressed.x, rowAt(2)->frame().origin.y + 20.0);
    dragTo(pointer);
    ASSERT_EQ(list->dropPlaceholderIndex(), 3u);
    log->clear();

    release(pointer);

    // The recording delegate also has the deprecated animated twins of the update messages.
    EXPECT_EQ(linesOf(log->startingWith(
                  {"willMove", "moveItems", "didMove", "willUpdateByMoving", "didUpdateByMoving"})),
              linesOf({"willMoveItemsAtIndexes {0} toIndex 3", "moveItemsAtIndexes {0} toIndex 3",
                       "willUpdateByMovingItemsAtIndexes {0} toIndex 3",
                       "willUpdateByMovingItemsAtIndexes {0} toIndex 3 animated false",
                       "didUpdateByMovingItemsAtIndexes {0} toIndex 3",
                       "didUpdateByMovingItemsAtIndexes {0} toIndex 3 animated false",
                       "didMoveItemsAtIndexes {0} toIndex 3"}));
    EXPECT_EQ(linesOf(dataSource->identifiers()), linesOf({"b", "c", "a", "d"}));
    EXPECT_EQ(linesOf(rowTitles()), linesOf({"Item b", "Item c", "Item a", "Item d"}));
    EXPECT_FALSE(list->isDragging());
    EXPECT_FALSE(list->draggingSession());
}

TEST_F(KRCheckListViewDraggingTests, TheDropIndexIsReadAfterTheDragHasEnded) {
    showItems({"a", "b", "c", "d"});
    const KRPoint pressed = pressHandleOfRow(3);
    const KRPoint pointer = KRPointMake(pressed.x, 5.0);
    dragTo(pointer);
    std::vector<bool> draggingWhenAsked;
    std::vector<bool> rowsDraggedWhenAsked;
    log->onMessage = [&](const QString& message) {
        if (message.startsWith(QStringLiteral("moveItemsAtIndexes"))) {
            draggingWhenAsked.push_back(list->isDragging() || list->draggingSession() != nullptr);
            rowsDraggedWhenAsked.push_back(!draggedRows().isEmpty());
        }
    };

    release(pointer);
    log->onMessage = nullptr;

    ASSERT_EQ(draggingWhenAsked.size(), 1u);
    EXPECT_FALSE(draggingWhenAsked[0]);
    EXPECT_FALSE(rowsDraggedWhenAsked[0]);
    EXPECT_EQ(linesOf(dataSource->identifiers()), linesOf({"d", "a", "b", "c"}));
}

TEST_F(KRCheckListViewDraggingTests, AfterTheDropTheRowsSettleIntoTheRestingLayoutAndThePlaceholderGoes) {
    showItems({"a", "b", "c", "d"});
    const KRPoint pressed = pressHandleOfRow(0);
    const KRPoint pointer = KRPointMake(pressed.x, rowAt(2)->frame().origin.y + 20.0);
    dragTo(pointer);
    KRClock::advance(springDuration());
    const KRRect droppedFrom = rowAt(0)->frame();

    release(pointer);

    KRCheckListItemView* dropped = rowAt(2);
    ASSERT_EQ(dropped->title(), QStringLiteral("Item a"));
    EXPECT_FALSE(dropped->drawsShadow());
    EXPECT_EQ(dropped->presentationFrame(), droppedFrom) << "the dropped row glides from the pointer";
    EXPECT_TRUE(list->dropPlaceholderView()) << "the placeholder stays until the rows have settled";
    EXPECT_EQ(list->dropPlaceholderIndex(), KRNotFound);
    EXPECT_EQ(list->dropPlaceholderFrame(), KRRectZero);

    KRClock::advance(springDuration() / 2.0);
    EXPECT_TRUE(list->dropPlaceholderView());
    KRClock::advance(springDuration());
    settle();
    EXPECT_EQ(rowFrames(), restingFrames());
    EXPECT_EQ(dropped->presentationFrame(), dropped->frame());
    EXPECT_FALSE(list->dropPlaceholderView());
    for (const std::shared_ptr<KRView>& placeholder : list->dropPlaceholderContentView()->subviews()) {
        EXPECT_EQ(placeholder->presentationAlphaValue(), 0.0);
    }
}

TEST_F(KRCheckListViewDraggingTests, APressAndReleaseWithoutMovementKeepsTheItemsInTheirOrder) {
    showTitles({kOneLineTitle, kOneLineTitle, kTwoLineTitle, kOneLineTitle});
    const KRRect row1 = rowAt(1)->frame();
    const KRPoint pressed = pressHandleOfRow(1);
    // The pointer is below row 1's top border strip and the next row is taller than its offset into row 1.
    ASSERT_GE(pressed.y, row1.origin.y + border());
    ASSERT_GT(rowAt(2)->frame().size.height, pressed.y - row1.origin.y);
    EXPECT_EQ(list->dropPlaceholderIndex(), 2u);

    release(pressed);
    finishAnimations();

    EXPECT_TRUE(log->contains(QStringLiteral("moveItemsAtIndexes {1} toIndex 2")));
    EXPECT_EQ(linesOf(dataSource->identifiers()), linesOf({"a", "b", "c", "d"}));
    EXPECT_EQ(rowFrames(), restingFrames());
    EXPECT_FALSE(list->isDragging());
}

TEST_F(KRCheckListViewDraggingTests, ReleasingInTheTopBorderStripOfThePressedRowMovesItInFrontOfTheRowAbove) {
    showItems({"a", "b", "c", "d"});
    const KRPoint pressed = pressHandleOfRow(2);
    // The border line row 2 shares with row 1.
    const KRPoint strip = KRPointMake(pressed.x, restingFrames()[2].origin.y + 0.5 * border());
    dragTo(strip);
    EXPECT_EQ(list->dropPlaceholderIndex(), 1u);

    release(strip);
    finishAnimations();

    EXPECT_EQ(linesOf(dataSource->identifiers()), linesOf({"a", "c", "b", "d"}));
}

// A drop must end the drag whatever happens to the move
// ------------------------------------------------------------------------------------------------------

TEST_F(KRCheckListViewDraggingTests, ADataSourceThatRefusesTheMoveLeavesNoRowLiftedAndTheRowsGoBack) {
    showItems({"a", "b", "c", "d"});
    dataSource->appliesChanges = false;
    dataSource->reportsChanges = false;
    const KRPoint pressed = pressHandleOfRow(0);
    const KRPoint pointer = KRPointMake(pressed.x, rowAt(3)->frame().origin.y + 20.0);
    dragTo(pointer);

    release(pointer);
    finishAnimations();

    EXPECT_TRUE(log->contains(QStringLiteral("moveItemsAtIndexes {0} toIndex 4")));
    EXPECT_FALSE(list->isDragging());
    EXPECT_FALSE(list->draggingSession());
    EXPECT_TRUE(draggedRows().isEmpty());
    EXPECT_FALSE(rowAt(0)->drawsShadow());
    EXPECT_EQ(linesOf(rowTitles()), linesOf({"Item a", "Item b", "Item c", "Item d"}));
    EXPECT_EQ(rowFrames(), restingFrames());
    EXPECT_FALSE(list->dropPlaceholderView());
}

// Moves the items somewhere else than asked, and reports that move.
class WilfulDataSource : public RecordingDataSource {
public:
    using RecordingDataSource::RecordingDataSource;
    void checkListViewMoveItemsAtIndexesToIndex(KRCheckListView* checkListView, const KRIndexSet& indexes,
                                                KRUInteger) override {
        RecordingDataSource::checkListViewMoveItemsAtIndexesToIndex(checkListView, indexes, 0);
    }
};

// Reloads everything on a move, with new identifiers.
class ReloadingDataSource : public RecordingDataSource {
public:
    using RecordingDataSource::RecordingDataSource;
    void checkListViewMoveItemsAtIndexesToIndex(KRCheckListView* checkListView, const KRIndexSet&,
                                                KRUInteger) override {
        record(QStringLiteral("reloading instead of moving"));
        items = itemsWithIdentifiers({"x", "y"});
        checkListView->reloadItems();
    }
};

TEST_F(KRCheckListViewDraggingTests, ADataSourceThatChangesTheMoveLeavesNoRowLifted) {
    auto wilful = std::make_shared<WilfulDataSource>(log);
    dataSource = wilful;
    showItems({"a", "b", "c", "d"});
    const KRPoint pressed = pressHandleOfRow(1);
    const KRPoint pointer = KRPointMake(pressed.x, rowAt(3)->frame().origin.y + 20.0);
    dragTo(pointer);

    release(pointer);
    finishAnimations();

    EXPECT_EQ(linesOf(dataSource->identifiers()), linesOf({"b", "a", "c", "d"}));
    EXPECT_EQ(linesOf(rowTitles()), linesOf({"Item b", "Item a", "Item c", "Item d"}));
    EXPECT_FALSE(list->isDragging());
    EXPECT_TRUE(draggedRows().isEmpty());
    for (KRUInteger index = 0; index < list->numberOfItems(); ++index) {
        EXPECT_FALSE(rowAt(index)->drawsShadow()) << index;
    }
    EXPECT_EQ(rowFrames(), restingFrames());
}

TEST_F(KRCheckListViewDraggingTests, ADataSourceThatReloadsInsteadOfMovingLeavesNoRowLifted) {
    auto reloading = std::make_shared<ReloadingDataSource>(log);
    dataSource = reloading;
    showItems({"a", "b", "c", "d"});
    const KRPoint pressed = pressHandleOfRow(1);
    const KRPoint pointer = KRPointMake(pressed.x, rowAt(3)->frame().origin.y + 20.0);
    dragTo(pointer);

    release(pointer);
    finishAnimations();

    EXPECT_TRUE(log->contains(QStringLiteral("reloading instead of moving")));
    EXPECT_EQ(linesOf(rowTitles()), linesOf({"Item x", "Item y"}));
    EXPECT_FALSE(list->isDragging());
    EXPECT_TRUE(draggedRows().isEmpty());
    EXPECT_EQ(rowFrames(), restingFrames());
    EXPECT_FALSE(list->dropPlaceholderView());
}

TEST_F(KRCheckListViewDraggingTests, RowsRemovedUnderTheDragAreLeftOutOfTheLayoutAndTheDrop) {
    showItems({"a", "b", "c", "d"});
    list->selectItemsAtIndexesByExtendingSelection(KRIndexSet(1).indexSetByAddingIndex(3), false);
    settle();
    const KRPoint pressed = pressHandleOfRow(1);
    // The client removes the last item while the drag runs.
    dataSource->items.pop_back();
    list->beginUpdates();
    list->updateByRemovingItemAtIndex(3);
    list->endUpdates();
    const KRPoint pointer = KRPointMake(pressed.x, 100.0);
    dragTo(pointer);
    ASSERT_TRUE(list->isDragging());
    EXPECT_EQ(list->dropPlaceholderIndex(), 3u) << "the end of the three rows left";

    release(pointer);
    finishAnimations();

    EXPECT_TRUE(log->contains(QStringLiteral("moveItemsAtIndexes {1} toIndex 3")));
    EXPECT_EQ(linesOf(dataSource->identifiers()), linesOf({"a", "c", "b"}));
    EXPECT_FALSE(list->isDragging());
    EXPECT_TRUE(draggedRows().isEmpty());
    EXPECT_EQ(rowFrames(), restingFrames());
}

} // namespace

// The drop placeholder's show-or-hide pass
// ------------------------------------------------------------------------------------------------------

namespace {

class KRCheckListViewDropPlaceholderTests : public KRCheckListViewDraggingTests {
protected:
    std::vector<KRView*> placeholderViews() const {
        std::vector<KRView*> views;
        for (const std::shared_ptr<KRView>& view : list->dropPlaceholderContentView()->subviews()) {
            views.push_back(view.get());
        }
        return views;
    }
    // Moves the pointer of the running drag and lays the list out without animation, as a pass that the
    // show-or-hide pass then follows.
    void moveGapWithoutAnimation(KRPoint pointer) {
        session().setMouseLocation(pointer);
        KRView::performWithoutAnimation([this] {
            list->setNeedsLayout(true);
            list->layoutIfNeeded();
        });
    }
};

TEST_F(KRCheckListViewDropPlaceholderTests, ThePressShowsThePlaceholderInTheGapAtOnce) {
    showItems({"a", "b", "c"});
    pressHandleOfRow(1);

    ASSERT_TRUE(list->dropPlaceholderView());
    EXPECT_EQ(list->dropPlaceholderView()->frame(), list->dropPlaceholderFrame());
    EXPECT_EQ(list->dropPlaceholderFrame(), KRRectMake(0, 27.0, listSize().width, 27.0));
    EXPECT_EQ(list->dropPlaceholderView()->presentationAlphaValue(), 1.0);
    EXPECT_EQ(list->dropPlaceholderView()->superview(), list->dropPlaceholderContentView().get());
    EXPECT_EQ(placeholderViews().size(), 1u);
}

TEST_F(KRCheckListViewDropPlaceholderTests, APlaceholderShownAtTheSameGapIsLeftUntouched) {
    showItems({"a", "b", "c"});
    const KRPoint pressed = pressHandleOfRow(1);
    KRCheckListDropPlaceholderView* shown = list->dropPlaceholderView().get();

    dragTo(KRPointMake(pressed.x - 1.0, pressed.y + 1.0));
    list->checkListViewShowOrHideDropPlaceholderIfNeededAnimated(true);

    EXPECT_EQ(list->dropPlaceholderView().get(), shown);
    EXPECT_FALSE(shown->hasRunningAnimations());
    EXPECT_EQ(shown->presentationAlphaValue(), 1.0);
    EXPECT_EQ(placeholderViews().size(), 1u);
}

TEST_F(KRCheckListViewDropPlaceholderTests,
       WhenTheGapMovesOneNewPlaceholderFadesInAndTheOldOneFadesOutLinearly) {
    showItems({"a", "b", "c", "d"});
    const KRPoint pressed = pressHandleOfRow(0);
    const std::shared_ptr<KRCheckListDropPlaceholderView> old = list->dropPlaceholderView();
    const KRRect oldFrame = old->frame();

    dragTo(KRPointMake(pressed.x, 100.0));

    const std::shared_ptr<KRCheckListDropPlaceholderView> fresh = list->dropPlaceholderView();
    ASSERT_TRUE(fresh);
    ASSERT_NE(fresh, old);
    EXPECT_EQ(placeholderViews().size(), 2u);
    EXPECT_EQ(fresh->frame(), list->dropPlaceholderFrame());
    EXPECT_EQ(old->frame(), oldFrame) << "the old placeholder fades where it stands";
    EXPECT_EQ(old->alphaValue(), 0.0);
    EXPECT_EQ(fresh->alphaValue(), 1.0);
    for (const double fraction : {0.0, 0.25, 0.5, 0.75}) {
        EXPECT_NEAR(old->presentationAlphaValue(), 1.0 - fraction, 1e-9) << fraction;
        EXPECT_NEAR(fresh->presentationAlphaValue(), fraction, 1e-9) << fraction;
        KRClock::advance(0.25 * fadeDuration());
    }
    EXPECT_EQ(old->presentationAlphaValue(), 0.0);
    EXPECT_EQ(fresh->presentationAlphaValue(), 1.0);
}

TEST_F(KRCheckListViewDropPlaceholderTests, AGapMovingQuicklyLeavesSeveralPlaceholdersFadingAtFormerGaps) {
    showItems({"a", "b", "c", "d", "e"});
    const KRPoint pressed = pressHandleOfRow(0);
    dragTo(KRPointMake(pressed.x, 60.0));
    KRClock::advance(0.25 * fadeDuration());
    dragTo(KRPointMake(pressed.x, 100.0));
    KRClock::advance(0.25 * fadeDuration());
    dragTo(KRPointMake(pressed.x, 125.0));

    EXPECT_EQ(placeholderViews().size(), 4u) << "none of them had faded out";
    int fading = 0;
    for (KRView* view : placeholderViews()) {
        if (view != list->dropPlaceholderView().get()) {
            EXPECT_EQ(view->alphaValue(), 0.0);
            fading += view->presentationAlphaValue() > 0.0 ? 1 : 0;
        }
    }
    EXPECT_EQ(fading, 3);
}

TEST_F(KRCheckListViewDropPlaceholderTests, WithAnimatedNoBothChangesTakeEffectAtOnce) {
    showItems({"a", "b", "c", "d"});
    const KRPoint pressed = pressHandleOfRow(0);
    const std::shared_ptr<KRCheckListDropPlaceholderView> old = list->dropPlaceholderView();
    const KRRect oldFrame = old->frame();
    moveGapWithoutAnimation(KRPointMake(pressed.x, 100.0));
    ASSERT_NE(list->dropPlaceholderFrame(), oldFrame);

    list->checkListViewShowOrHideDropPlaceholderIfNeededAnimated(false);

    ASSERT_TRUE(list->dropPlaceholderView());
    EXPECT_EQ(list->dropPlaceholderView()->frame(), list->dropPlaceholderFrame());
    EXPECT_EQ(list->dropPlaceholderView()->presentationAlphaValue(), 1.0);
    EXPECT_FALSE(list->dropPlaceholderView()->hasRunningAnimations());
    // The old one was gone at once, so it is the one shown again: nothing else was needed.
    EXPECT_EQ(list->dropPlaceholderView(), old);
    EXPECT_EQ(placeholderViews().size(), 1u);
}

TEST_F(KRCheckListViewDropPlaceholderTests, AtRestThePassHidesThePlaceholderAndShowsNone) {
    showItems({"a", "b", "c"});
    const KRPoint pressed = pressHandleOfRow(1);
    release(pressed);
    finishAnimations();
    ASSERT_EQ(list->dropPlaceholderFrame(), KRRectZero);

    EXPECT_FALSE(list->dropPlaceholderView());
    ASSERT_EQ(placeholderViews().size(), 1u);
    EXPECT_EQ(placeholderViews().front()->presentationAlphaValue(), 0.0);
    list->checkListViewShowOrHideDropPlaceholderIfNeededAnimated(true);
    EXPECT_FALSE(list->dropPlaceholderView());
    EXPECT_EQ(placeholderViews().size(), 1u);
}

TEST_F(KRCheckListViewDropPlaceholderTests, ThePassFadesTheShownPlaceholderOutWhenTheGapCloses) {
    showItems({"a", "b", "c"});
    const KRPoint pressed = pressHandleOfRow(1);
    const std::shared_ptr<KRCheckListDropPlaceholderView> shown = list->dropPlaceholderView();
    // The release lays the list out at rest; its rows are still settling, the placeholder still shown.
    release(pressed);
    ASSERT_EQ(list->dropPlaceholderView(), shown);
    ASSERT_EQ(list->dropPlaceholderFrame(), KRRectZero);

    list->checkListViewShowOrHideDropPlaceholderIfNeededAnimated(true);

    EXPECT_FALSE(list->dropPlaceholderView());
    EXPECT_EQ(shown->alphaValue(), 0.0);
    EXPECT_EQ(shown->presentationAlphaValue(), 1.0) << "it fades out from where it is";
    KRClock::advance(fadeDuration());
    EXPECT_EQ(shown->presentationAlphaValue(), 0.0);
    EXPECT_EQ(placeholderViews().size(), 1u);
}

TEST_F(KRCheckListViewDropPlaceholderTests, TheNextDragReusesAFadedPlaceholderViewInsteadOfCreatingOne) {
    showItems({"a", "b", "c", "d"});
    const KRPoint pressed = pressHandleOfRow(0);
    dragTo(KRPointMake(pressed.x, 100.0));
    release(KRPointMake(pressed.x, 100.0));
    finishAnimations();
    const std::vector<KRView*> before = placeholderViews();
    ASSERT_EQ(before.size(), 2u);

    pressHandleOfRow(1);

    ASSERT_TRUE(list->dropPlaceholderView());
    EXPECT_EQ(placeholderViews(), before);
    EXPECT_EQ(list->dropPlaceholderView().get(), before.front()) << "the first faded one, in order";
}

TEST_F(KRCheckListViewDropPlaceholderTests, APlaceholderStillFadingOutIsNotReused) {
    showItems({"a", "b", "c", "d"});
    const KRPoint pressed = pressHandleOfRow(0);
    const std::shared_ptr<KRCheckListDropPlaceholderView> first = list->dropPlaceholderView();
    dragTo(KRPointMake(pressed.x, 100.0));
    KRClock::advance(0.5 * fadeDuration());

    // Back to the first gap while the first placeholder is half faded.
    dragTo(pressed);

    EXPECT_NE(list->dropPlaceholderView(), first);
    EXPECT_EQ(list->dropPlaceholderView()->frame(), first->frame());
    EXPECT_EQ(placeholderViews().size(), 3u);
}

} // namespace

// Drags and releases the host widget must deliver
// ------------------------------------------------------------------------------------------------------

namespace {

class KRCheckListViewDraggingReleaseTests : public KRCheckListViewDraggingTests {
protected:
    // Presses row 0's handle and drags it below the last of four rows: a release anywhere now drops it at
    // the end.
    KRPoint dragFirstRowToTheEnd() {
        showItems({"a", "b", "c", "d"});
        const KRPoint pressed = pressHandleOfRow(0);
        const KRPoint pointer = KRPointMake(pressed.x, 100.0);
        dragTo(pointer);
        EXPECT_EQ(list->dropPlaceholderIndex(), 4u);
        log->clear();
        return pointer;
    }
    void expectDroppedAtTheEndAndSettled() {
        EXPECT_FALSE(list->isDragging());
        EXPECT_FALSE(list->draggingSession());
        EXPECT_TRUE(draggedRows().isEmpty());
        EXPECT_EQ(log->count(QStringLiteral("moveItemsAtIndexes {0} toIndex 4")), 1);
        EXPECT_EQ(linesOf(dataSource->identifiers()), linesOf({"b", "c", "d", "a"}));
        finishAnimations();
        EXPECT_EQ(rowFrames(), restingFrames());
        EXPECT_FALSE(list->dropPlaceholderView());
        for (KRUInteger index = 0; index < list->numberOfItems(); ++index) {
            EXPECT_FALSE(rowAt(index)->handleButtonView()->isPressed()) << index;
            EXPECT_FALSE(rowAt(index)->drawsShadow()) << index;
        }
    }
    // The release that Qt delivers after all: it finds no press to end.
    void expectALateReleaseDoesNothing(KRPoint pointer) {
        log->clear();
        release(pointer);
        finishAnimations();
        EXPECT_TRUE(log->messages().isEmpty()) << log->messages().join(QStringLiteral("; ")).toStdString();
        EXPECT_EQ(linesOf(dataSource->identifiers()), linesOf({"b", "c", "d", "a"}));
    }
    void sendToHost(QEvent& event) { QCoreApplication::sendEvent(host.get(), &event); }
};

TEST_F(KRCheckListViewDraggingReleaseTests, ADragThatLosesTheFocusEndsAsADropWhereThePointerWasLast) {
    const KRPoint pointer = dragFirstRowToTheEnd();
    QFocusEvent focusOut(QEvent::FocusOut, Qt::ActiveWindowFocusReason);
    sendToHost(focusOut);
    expectDroppedAtTheEndAndSettled();
    expectALateReleaseDoesNothing(pointer);
}

TEST_F(KRCheckListViewDraggingReleaseTests, ADragWhoseWindowIsDeactivatedEndsAsADropWhereThePointerWasLast) {
    const KRPoint pointer = dragFirstRowToTheEnd();
    QEvent deactivate(QEvent::WindowDeactivate);
    sendToHost(deactivate);
    expectDroppedAtTheEndAndSettled();
    expectALateReleaseDoesNothing(pointer);
}

TEST_F(KRCheckListViewDraggingReleaseTests, ADragWhoseHostIsHiddenEndsAsADropWhereThePointerWasLast) {
    const KRPoint pointer = dragFirstRowToTheEnd();
    QEvent hide(QEvent::Hide);
    sendToHost(hide);
    expectDroppedAtTheEndAndSettled();
    expectALateReleaseDoesNothing(pointer);
}

TEST_F(KRCheckListViewDraggingReleaseTests, PressingAnotherButtonDuringADragEndsItAsADropFirst) {
    const KRPoint pointer = dragFirstRowToTheEnd();
    const QPointF position = hostPoint(pointer);
    QMouseEvent rightPress(QEvent::MouseButtonPress, position, host->mapToGlobal(position), Qt::RightButton,
                           Qt::LeftButton | Qt::RightButton, Qt::NoModifier);
    sendToHost(rightPress);
    expectDroppedAtTheEndAndSettled();
}

TEST_F(KRCheckListViewDraggingReleaseTests, AMoveWithTheButtonUpEndsTheDragAsADropThere) {
    dragFirstRowToTheEnd();
    // The release happened where the host could not see it; the next move comes without the button.
    moveTo(KRPointMake(40.0, 400.0));
    expectDroppedAtTheEndAndSettled();
}

TEST_F(KRCheckListViewDraggingReleaseTests, ASecondPressOfTheHandleEndsTheDragWhoseReleaseWasLost) {
    const KRPoint pointer = dragFirstRowToTheEnd();
    // The left button pressed again with no release in between, on the handle of the row now on top.
    press(handleCentreOfRow(1));
    EXPECT_EQ(log->count(QStringLiteral("moveItemsAtIndexes {0} toIndex 4")), 1);
    EXPECT_EQ(linesOf(dataSource->identifiers()), linesOf({"b", "c", "d", "a"}));
    ASSERT_TRUE(list->isDragging()) << "the new press begins its own drag";
    ASSERT_EQ(session().draggedItemViews().size(), 1u);
    EXPECT_EQ(session().draggedItemViews().front()->title(), QStringLiteral("Item b"));
    EXPECT_EQ(indexesOf(draggedRows()), indexesOf(KRIndexSet(0)));
    release(pointer);
    finishAnimations();
    EXPECT_FALSE(list->isDragging());
    EXPECT_TRUE(draggedRows().isEmpty());
}

// Qt's implicit grab: once the button is down on the host, moves and the release go to the host wherever
// the pointer is, also over a sibling area of the window and beyond the window's edges.
TEST_F(KRCheckListViewDraggingReleaseTests, DragEventsKeepComingWhileTheButtonIsHeldOutsideTheHost) {
    showItems({"a", "b", "c", "d"});
    QWidget frame;
    frame.resize(700, 1000);
    host->setParent(&frame);
    host->move(150, 100);
    frame.show();
    struct GiveBack {
        KRHostWidget* host;
        ~GiveBack() { host->setParent(nullptr); }
    } giveBack{host.get()};
    QWindow* qtWindow = frame.windowHandle();
    ASSERT_TRUE(qtWindow);
    settle();

    const auto send = [&](QEvent::Type type, QPointF inWindow, Qt::MouseButton button,
                          Qt::MouseButtons buttons) {
        QMouseEvent event(type, inWindow, qtWindow->mapToGlobal(inWindow.toPoint()), button, buttons,
                          Qt::NoModifier);
        QCoreApplication::sendEvent(qtWindow, &event);
    };
    const QPointF hostOrigin(150, 100);
    const KRPoint handle = handleCentreOfRow(0);
    send(QEvent::MouseButtonPress, hostPoint(handle) + hostOrigin, Qt::LeftButton, Qt::LeftButton);
    ASSERT_TRUE(list->isDragging());

    // Over the frame, left of the host: x = -100 in the host.
    send(QEvent::MouseMove, QPointF(50, hostOrigin.y() + 60), Qt::NoButton, Qt::LeftButton);
    ASSERT_TRUE(list->isDragging());
    EXPECT_EQ(session().mouseLocation(), KRPointMake(-150.0 + 50.0, 60.0));

    // Beyond the window, above and left of it.
    send(QEvent::MouseMove, QPointF(-40, -300), Qt::NoButton, Qt::LeftButton);
    EXPECT_EQ(session().mouseLocation(), KRPointMake(-190.0, -400.0));
    EXPECT_EQ(list->dropPlaceholderIndex(), 1u) << "in front of the first remaining row";

    // Below the rows, over the frame under the host's last row.
    send(QEvent::MouseMove, QPointF(60, hostOrigin.y() + 300), Qt::NoButton, Qt::LeftButton);
    EXPECT_EQ(session().mouseLocation(), KRPointMake(-90.0, 300.0));
    EXPECT_EQ(list->dropPlaceholderIndex(), 4u);

    send(QEvent::MouseButtonRelease, QPointF(60, hostOrigin.y() + 300), Qt::LeftButton, Qt::NoButton);
    EXPECT_FALSE(list->isDragging());
    EXPECT_EQ(linesOf(dataSource->identifiers()), linesOf({"b", "c", "d", "a"}));
}

} // namespace

// Going away in the middle of a drag
// ------------------------------------------------------------------------------------------------------

namespace {

// A list whose host widget and views go away while a row is still held (AddressSanitizer watches).
TEST(KRCheckListViewDraggingTeardownTests, AHostAndListDestroyedDuringADragLeaveNothingBehind) {
    KRClock::useManualTime(0.0);
    KRTextView::installTextSystem();
    auto log = std::make_shared<MessageLog>();
    auto dataSource = std::make_shared<RecordingDataSource>(log);
    dataSource->items = itemsWithIdentifiers({"a", "b", "c", "d"});
    auto host = std::make_unique<KRHostWidget>();
    auto list = std::make_shared<KRCheckListView>(KRRectMake(0, 0, 320, 600));
    host->resize(320, 600);
    host->setContentView(list);
    list->setDataSource(dataSource);
    list->reloadItems();
    host->krWindow().updateIfNeeded();
    const KRView& handle = *list->checkListViewItemViewForItemAtIndex(1)->handleButtonView();
    const KRPoint point = handle.convertPointToView(
        KRPointMake(KRRectGetMidX(handle.bounds()), KRRectGetMidY(handle.bounds())), nullptr);
    const auto send = [&](QEvent::Type type, KRPoint at, Qt::MouseButton button, Qt::MouseButtons buttons) {
        const QPointF position(at.x, at.y);
        QMouseEvent event(type, position, host->mapToGlobal(position), button, buttons, Qt::NoModifier);
        QCoreApplication::sendEvent(host.get(), &event);
    };
    send(QEvent::MouseButtonPress, point, Qt::LeftButton, Qt::LeftButton);
    send(QEvent::MouseMove, KRPointMake(point.x, 100.0), Qt::NoButton, Qt::LeftButton);
    ASSERT_TRUE(list->isDragging());
    const std::weak_ptr<KRCheckListView> weakList = list;

    host.reset();
    list.reset();
    KRClock::advance(1.0);
    KRRunLoop::main().runUntilIdle();

    // The springs and fades that were running, and whatever the drag deferred, find nothing to touch.
    EXPECT_TRUE(weakList.expired());
    EXPECT_EQ(log->count(QStringLiteral("moveItemsAtIndexes {1} toIndex 4")), 0) << "nothing was dropped";
    KRRunLoop::main().cancelAll();
}

// A list that goes away right after a drop, while its rows are still settling: the drop's completion,
// which runs as the rows' animations end with them, must not reach the list (UndefinedBehaviorSanitizer
// watches).
TEST(KRCheckListViewDraggingTeardownTests, AListDestroyedWhileItsDropSettlesIsNotCalledBack) {
    KRClock::useManualTime(0.0);
    KRTextView::installTextSystem();
    auto log = std::make_shared<MessageLog>();
    auto dataSource = std::make_shared<RecordingDataSource>(log);
    dataSource->items = itemsWithIdentifiers({"a", "b", "c"});
    KRWindow window;
    auto list = std::make_shared<KRCheckListView>(KRRectMake(0, 0, 320, 600));
    window.setContentView(list);
    list->setDataSource(dataSource);
    list->reloadItems();
    window.updateIfNeeded();
    const KRView& handle = *list->checkListViewItemViewForItemAtIndex(0)->handleButtonView();
    const KRPoint point = handle.convertPointToView(
        KRPointMake(KRRectGetMidX(handle.bounds()), KRRectGetMidY(handle.bounds())), nullptr);
    window.sendEvent(KREvent::mouseEvent(KREventType::LeftMouseDown, point, 0, &window));
    window.sendEvent(
        KREvent::mouseEvent(KREventType::LeftMouseDragged, KRPointMake(point.x, 70.0), 0, &window));
    window.sendEvent(KREvent::mouseEvent(KREventType::LeftMouseUp, KRPointMake(point.x, 70.0), 0, &window));
    ASSERT_EQ(log->count(QStringLiteral("moveItemsAtIndexes {0} toIndex 3")), 1);
    ASSERT_TRUE(list->dropPlaceholderView()) << "the drop is still settling";
    const std::weak_ptr<KRCheckListView> weakList = list;

    window.setContentView(nullptr);
    list.reset();
    KRClock::advance(1.0);
    KRRunLoop::main().runUntilIdle();

    EXPECT_TRUE(weakList.expired());
    KRRunLoop::main().cancelAll();
}

} // namespace
