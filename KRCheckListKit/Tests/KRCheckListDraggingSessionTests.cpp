// The drag session holds what one handle drag needs, and nothing happens when it is set.
#include "KRCheckListDraggingSession.h"

#include "KRCheckListItemView.h"

#include "Animation/EZInterpolationFunctions.h"

#include <gtest/gtest.h>

#include <memory>

namespace {

TEST(KRCheckListDraggingSessionTests, ANewSessionHoldsNothing) {
    const KRCheckListDraggingSession session;
    EXPECT_FALSE(session.interpolationFunction());
    EXPECT_EQ(session.indexOfDraggedItem(), 0u);
    EXPECT_TRUE(session.indexesOfDraggedItems().isEmpty());
    EXPECT_TRUE(session.draggedItemViews().empty());
    EXPECT_EQ(session.draggingOffsetX(), 0.0);
    EXPECT_EQ(session.draggingOffsetY(), 0.0);
    EXPECT_EQ(session.mouseLocation(), KRPointZero);
}

TEST(KRCheckListDraggingSessionTests, KeepsWhatItIsGivenAndCopiesTheIndexesAndViews) {
    KRCheckListDraggingSession session;
    const EZSampledFunctionRef curve = EZInterpolationFunctions::springWithDampingRatio(0.9, 0.25);
    auto pressed = std::make_shared<KRCheckListItemView>();
    auto other = std::make_shared<KRCheckListItemView>();
    KRIndexSet indexes = KRIndexSet(2).indexSetByAddingIndex(5);
    std::vector<std::shared_ptr<KRCheckListItemView>> views{pressed, other};

    session.setInterpolationFunction(curve);
    session.setIndexOfDraggedItem(5);
    session.setIndexesOfDraggedItems(indexes);
    session.setDraggedItemViews(views);
    session.setDraggingOffsetX(12.5);
    session.setDraggingOffsetY(-3.0);
    session.setMouseLocation(KRPointMake(40, 90));
    indexes = KRIndexSet();
    views.clear();

    EXPECT_EQ(session.interpolationFunction(), curve);
    EXPECT_EQ(session.indexOfDraggedItem(), 5u);
    EXPECT_EQ(session.indexesOfDraggedItems(), KRIndexSet(2).indexSetByAddingIndex(5));
    ASSERT_EQ(session.draggedItemViews().size(), 2u);
    EXPECT_EQ(session.draggedItemViews()[0], pressed);
    EXPECT_EQ(session.draggedItemViews()[1], other);
    EXPECT_EQ(session.draggingOffsetX(), 12.5);
    EXPECT_EQ(session.draggingOffsetY(), -3.0);
    EXPECT_EQ(session.mouseLocation(), KRPointMake(40, 90));
    EXPECT_FALSE(pressed->isDragged()) << "the session only holds the rows";
}

} // namespace
