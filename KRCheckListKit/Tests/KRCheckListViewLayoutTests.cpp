#include "KRCheckListView.h"

#include "KRCheckListDefaults.h"
#include "KRCheckListDropPlaceholderContentView.h"
#include "KRCheckListViewTestSupport.h"

#include <QVariantList>

#include <gtest/gtest.h>

#include <memory>
#include <optional>
#include <random>
#include <vector>

using namespace KRCheckListViewTesting;

namespace {

// A title long enough to wrap in a row a few hundred points wide.
const QString kLongTitle = QStringLiteral(
    "Pick up the dry cleaning, then buy milk, eggs, bread, butter, apples and a great many other things "
    "that will need more than a single line");

double hairline() {
    return KRCheckListDefaults::borderWidth();
}

class KRCheckListViewLayoutTests : public KRCheckListViewTestCase {
protected:
    // Shows three items, the middle one with a title that wraps.
    void showRowsOfDifferentHeights() {
        showItems({"a", "b", "c"});
        dataSource->items[1].title = kLongTitle;
        list->reloadItems();
        log->clear();
    }
    // The height the row at index asks for in a list of the given size.
    double fittingHeightOfRow(KRUInteger index, KRSize size) const {
        return rowAt(index)->sizeThatFits(size).height;
    }
    std::vector<KRRect> rowFrames() const {
        std::vector<KRRect> frames;
        for (const std::shared_ptr<KRCheckListItemView>& itemView : list->checkListItemViews()) {
            frames.push_back(itemView->frame());
        }
        return frames;
    }
    KRView* placeholderContainer() const { return list->dropPlaceholderContentView().get(); }
    KRIndexSet rowsDrawingTopDividers() const {
        return rowsWhere([](const KRCheckListItemView& row) { return row.drawsTopDivider(); });
    }
    KRIndexSet rowsDrawingBottomDividers() const {
        return rowsWhere([](const KRCheckListItemView& row) { return row.drawsBottomDivider(); });
    }

    // The drag handle of a row, pressed and moved with the mouse.
    void pressHandleOfRow(KRUInteger index) {
        window.updateIfNeeded();
        const KRView& handle = *rowAt(index)->handleButtonView();
        const KRRect bounds = handle.bounds();
        m_pointer =
            handle.convertPointToView(KRPointMake(KRRectGetMidX(bounds), KRRectGetMidY(bounds)), nullptr);
        window.sendEvent(KREvent::mouseEvent(KREventType::LeftMouseDown, m_pointer, 0, &window));
    }
    void dragPointerTo(KRPoint locationInWindow) {
        m_pointer = locationInWindow;
        window.sendEvent(KREvent::mouseEvent(KREventType::LeftMouseDragged, m_pointer, 0, &window));
    }
    void releasePointer() {
        window.sendEvent(KREvent::mouseEvent(KREventType::LeftMouseUp, m_pointer, 0, &window));
        KRClock::advance(1.0);
    }

private:
    KRPoint m_pointer;
};

} // namespace

// The layout record
// ------------------------------------------------------------------------------------------------------

TEST_F(KRCheckListViewLayoutTests, LayoutRecordNamesSixEntriesInOrderAndHoldsEachUnderItsName) {
    const QStringList expectedKeys{
        QStringLiteral("size"),
        QStringLiteral("itemViewFrames"),
        QStringLiteral("dropPlaceholderContentViewFrame"),
        QStringLiteral("dropPlaceholderIndex"),
        QStringLiteral("dropPlaceholderFrame"),
        QStringLiteral("sizeThatFits"),
    };
    EXPECT_EQ(linesOf(KRCheckListViewLayout::keys()), linesOf(expectedKeys));

    showItems({"a", "b"});
    const KRCheckListViewLayout layout = list->checkListViewLayoutForSize(KRSizeMake(300, 200));
    const QVariantMap record = layout.dictionary();
    QStringList sortedKeys = expectedKeys;
    sortedKeys.sort();
    EXPECT_EQ(linesOf(record.keys()), linesOf(sortedKeys));
    EXPECT_EQ(record.value(QStringLiteral("size")).value<KRSize>(), layout.size);
    EXPECT_EQ(record.value(QStringLiteral("dropPlaceholderContentViewFrame")).value<KRRect>(),
              layout.dropPlaceholderContentViewFrame);
    EXPECT_EQ(record.value(QStringLiteral("dropPlaceholderIndex")).toULongLong(),
              layout.dropPlaceholderIndex);
    EXPECT_EQ(record.value(QStringLiteral("dropPlaceholderFrame")).value<KRRect>(),
              layout.dropPlaceholderFrame);
    EXPECT_EQ(record.value(QStringLiteral("sizeThatFits")).value<KRSize>(), layout.sizeThatFits);
    const QVariantList frames = record.value(QStringLiteral("itemViewFrames")).toList();
    ASSERT_EQ(frames.size(), 2);
    EXPECT_EQ(frames[0].value<KRRect>(), layout.itemViewFrames[0]);
    EXPECT_EQ(frames[1].value<KRRect>(), layout.itemViewFrames[1]);
}

TEST_F(KRCheckListViewLayoutTests, EmptyListLaysOutNoFramesAndWantsNoHeight) {
    const KRCheckListViewLayout layout = list->checkListViewLayoutForSize(KRSizeMake(250, 100));
    EXPECT_TRUE(layout.itemViewFrames.empty());
    EXPECT_EQ(layout.sizeThatFits, KRSizeMake(250, 0));
    EXPECT_EQ(layout.size, KRSizeMake(250, 100));
    EXPECT_EQ(layout.dropPlaceholderContentViewFrame, KRRectMake(0, 0, 250, 100));
    EXPECT_EQ(layout.dropPlaceholderIndex, KRNotFound);
    EXPECT_EQ(layout.dropPlaceholderFrame, KRRectZero);
}

TEST_F(KRCheckListViewLayoutTests, OneLineRowsStackOverlappingByOneBorderWidth) {
    showItems({"a", "b", "c"});
    const double step = KRCheckListDefaults::itemHeight() - hairline();
    const KRCheckListViewLayout layout = list->checkListViewLayoutForSize(KRSizeMake(320, 600));
    ASSERT_EQ(layout.itemViewFrames.size(), 3u);
    for (KRUInteger index = 0; index < 3; ++index) {
        EXPECT_EQ(layout.itemViewFrames[index],
                  KRRectMake(0, step * static_cast<double>(index), 320, KRCheckListDefaults::itemHeight()))
            << index;
    }
    EXPECT_EQ(layout.sizeThatFits, KRSizeMake(320, 3 * step + hairline()));
}

TEST_F(KRCheckListViewLayoutTests, RowsOfDifferentHeightsStartOneBorderWidthAboveTheBottomOfTheRowBefore) {
    showRowsOfDifferentHeights();
    const KRSize size = KRSizeMake(320, 600);
    const double first = fittingHeightOfRow(0, size);
    const double second = fittingHeightOfRow(1, size);
    const double third = fittingHeightOfRow(2, size);
    ASSERT_GT(second, first) << "the long title wraps";

    const KRCheckListViewLayout layout = list->checkListViewLayoutForSize(size);
    ASSERT_EQ(layout.itemViewFrames.size(), 3u);
    EXPECT_EQ(layout.itemViewFrames[0], KRRectMake(0, 0, 320, first));
    EXPECT_EQ(layout.itemViewFrames[1], KRRectMake(0, first - hairline(), 320, second));
    EXPECT_EQ(layout.itemViewFrames[2], KRRectMake(0, first - hairline() + second - hairline(), 320, third));
    EXPECT_EQ(layout.sizeThatFits, KRSizeMake(320, (first - hairline()) + (second - hairline()) +
                                                       (third - hairline()) + hairline()));
}

TEST_F(KRCheckListViewLayoutTests, RowWidthIsTheRowsOwnAnswerForTheProposedSize) {
    showItems({"a"});
    const KRCheckListViewLayout layout = list->checkListViewLayoutForSize(KRSizeMake(180, 40));
    ASSERT_EQ(layout.itemViewFrames.size(), 1u);
    EXPECT_EQ(layout.itemViewFrames[0].size, rowAt(0)->sizeThatFits(KRSizeMake(180, 40)));
}

TEST_F(KRCheckListViewLayoutTests, ComputingALayoutSetsNoFrame) {
    showRowsOfDifferentHeights();
    const std::vector<KRRect> before = rowFrames();
    list->checkListViewLayoutForSize(KRSizeMake(150, 90));
    EXPECT_EQ(rowFrames(), before);
}

// Applying it
// ------------------------------------------------------------------------------------------------------

TEST_F(KRCheckListViewLayoutTests, LayoutPassPutsEveryViewWhereTheRecordSays) {
    showRowsOfDifferentHeights();
    const KRCheckListViewLayout layout = list->checkListViewLayoutForSize(list->bounds().size);
    EXPECT_EQ(rowFrames(), layout.itemViewFrames);
    ASSERT_NE(placeholderContainer(), nullptr);
    EXPECT_EQ(placeholderContainer()->frame(), KRRectMake(0, 0, 320, 600));
    EXPECT_EQ(list->dropPlaceholderIndex(), KRNotFound);
    EXPECT_EQ(list->dropPlaceholderFrame(), KRRectZero);
    EXPECT_EQ(list->lastSizeThatFits(), layout.sizeThatFits);
}

TEST_F(KRCheckListViewLayoutTests, ResizedListLaysOutForItsNewSize) {
    showRowsOfDifferentHeights();
    list->setFrameSize(KRSizeMake(240, 500));
    list->layoutIfNeeded();
    const KRCheckListViewLayout layout = list->checkListViewLayoutForSize(KRSizeMake(240, 500));
    EXPECT_EQ(rowFrames(), layout.itemViewFrames);
    EXPECT_EQ(rowAt(0)->frame().size.width, 240.0);
    ASSERT_NE(placeholderContainer(), nullptr);
    EXPECT_EQ(placeholderContainer()->frame(), KRRectMake(0, 0, 240, 500));
    EXPECT_EQ(list->lastSizeThatFits(), layout.sizeThatFits);
    EXPECT_EQ(log->count(QStringLiteral("didChangeSizeThatFits")), 1);
}

// Fitting sizes
// ------------------------------------------------------------------------------------------------------

TEST_F(KRCheckListViewLayoutTests, FittingSizeForZeroIsTheLastStoredSizeEvenBeforeTheFirstLayout) {
    auto fresh = std::make_shared<KRCheckListView>(KRRectMake(0, 0, 200, 100));
    EXPECT_EQ(fresh->sizeThatFits(KRSizeZero), KRSizeZero);

    showItems({"a", "b"});
    const KRSize stored = list->lastSizeThatFits();
    EXPECT_GT(stored.height, 0.0);
    EXPECT_EQ(list->sizeThatFits(KRSizeZero), stored);

    // A row added but not yet laid out changes the computed size, not the stored one.
    list->beginUpdates();
    dataSource->items.push_back(Item{QStringLiteral("c"), 0, QStringLiteral("Item c")});
    list->updateByInsertingItemAtIndex(2);
    EXPECT_EQ(list->sizeThatFits(KRSizeZero), stored);
    EXPECT_GT(list->sizeThatFits(KRSizeMake(320, 600)).height, stored.height);
    list->endUpdates();
    EXPECT_EQ(list->sizeThatFits(KRSizeZero), list->lastSizeThatFits());
    EXPECT_GT(list->lastSizeThatFits().height, stored.height);
}

TEST_F(KRCheckListViewLayoutTests, FittingSizeForAnyOtherSizeIsTheRestingLayoutsAnswer) {
    showRowsOfDifferentHeights();
    for (KRSize size : {KRSizeMake(200, 10), KRSizeMake(320, 0), KRSizeMake(0, 50), KRSizeMake(900, 900)}) {
        EXPECT_EQ(list->sizeThatFits(size), list->checkListViewLayoutForSize(size).sizeThatFits)
            << size.width << " x " << size.height;
    }
}

TEST_F(KRCheckListViewLayoutTests, SizeToFitKeepsTheOriginAndTakesTheFittingSize) {
    showItems({"a", "b", "c"});
    list->setFrame(KRRectMake(5, 7, 320, 600));
    const KRSize fitting = list->sizeThatFits(KRSizeMake(320, 600));
    list->sizeToFit();
    EXPECT_EQ(list->frame(), KRRectMake(5, 7, fitting.width, fitting.height));
}

TEST_F(KRCheckListViewLayoutTests, ChangedFittingSizeIsReportedOncePerChangeNotOnEveryLayout) {
    showItems({"a", "b"});
    const QString changed = QStringLiteral("didChangeSizeThatFits");
    list->setNeedsLayout(true);
    list->layoutIfNeeded();
    list->reloadItems();
    EXPECT_EQ(log->count(changed), 0);

    dataSource->checkListViewInsertItemsAtIndexes(list.get(), KRIndexSet{2});
    EXPECT_EQ(log->count(changed), 1);
    list->setNeedsLayout(true);
    list->layoutIfNeeded();
    EXPECT_EQ(log->count(changed), 1);

    list->setFrameSize(KRSizeMake(300, 600));
    list->layoutIfNeeded();
    EXPECT_EQ(log->count(changed), 2);
}

TEST_F(KRCheckListViewLayoutTests, SizeChangeIsReportedBeforeTheNewSizeIsStored) {
    showItems({"a", "b"});
    const KRSize before = list->lastSizeThatFits();
    std::optional<KRSize> storedWhenReported;
    log->onMessage = [&](const QString& message) {
        if (message == QStringLiteral("didChangeSizeThatFits")) {
            storedWhenReported = list->lastSizeThatFits();
        }
    };
    dataSource->checkListViewInsertItemsAtIndexes(list.get(), KRIndexSet{0});
    log->onMessage = nullptr;

    ASSERT_TRUE(storedWhenReported.has_value());
    EXPECT_EQ(*storedWhenReported, before);
    EXPECT_EQ(list->lastSizeThatFits(), list->checkListViewLayoutForSize(list->bounds().size).sizeThatFits);
    EXPECT_NE(list->lastSizeThatFits(), before);
}

TEST_F(KRCheckListViewLayoutTests, RowReportingANewFittingSizeLaysTheListOutAtOnce) {
    showItems({"a", "b", "c"});
    const double oneLine = rowAt(1)->frame().size.height;
    rowAt(1)->setTitle(kLongTitle);
    list->checkListItemViewDidChangeSizeThatFits(rowAt(1));
    EXPECT_FALSE(list->needsLayout());
    EXPECT_GT(rowAt(1)->frame().size.height, oneLine);
    EXPECT_EQ(rowFrames(), list->checkListViewLayoutForSize(list->bounds().size).itemViewFrames);
    EXPECT_EQ(log->count(QStringLiteral("didChangeSizeThatFits")), 1);
}

// Geometry queries
// ------------------------------------------------------------------------------------------------------

TEST_F(KRCheckListViewLayoutTests, PointOnTheSharedBorderLineOfRowsTwoAndThreeHitsRowTwo) {
    showItems({"a", "b", "c", "d", "e"});
    const KRRect second = rowAt(2)->frame();
    const KRRect third = rowAt(3)->frame();
    ASSERT_EQ(KRRectGetMinY(third), KRRectGetMaxY(second) - hairline());
    EXPECT_EQ(list->indexOfItemAtPoint(KRPointMake(40, KRRectGetMinY(third) + 0.5 * hairline())), 2u);
    EXPECT_EQ(list->indexOfItemAtPoint(KRPointMake(40, KRRectGetMinY(third))), 2u);
    EXPECT_EQ(list->indexOfItemAtPoint(KRPointMake(40, KRRectGetMaxY(second) + 0.5)), 3u);
    EXPECT_EQ(list->indexOfItemAtPoint(KRPointMake(40, KRRectGetMidY(third))), 3u);
}

TEST_F(KRCheckListViewLayoutTests, PointOutsideEveryRowHitsNothing) {
    EXPECT_EQ(list->indexOfItemAtPoint(KRPointMake(10, 10)), KRNotFound) << "no rows at all";
    showItems({"a", "b"});
    const KRRect last = rowAt(1)->frame();
    EXPECT_EQ(list->indexOfItemAtPoint(KRPointMake(10, KRRectGetMaxY(last) + 10)), KRNotFound);
    EXPECT_EQ(list->indexOfItemAtPoint(KRPointMake(-5, KRRectGetMidY(last))), KRNotFound);
    EXPECT_EQ(list->indexOfItemAtPoint(KRPointMake(10, -3)), KRNotFound);
}

TEST_F(KRCheckListViewLayoutTests, IndexesInARectAreTheRowsItOverlapsWithPositiveArea) {
    showItems({"a", "b", "c", "d"});
    const KRRect first = rowAt(0)->frame();
    const KRRect second = rowAt(1)->frame();
    const KRRect third = rowAt(2)->frame();
    EXPECT_EQ(indexesOf(list->indexesOfItemsInRect(KRRectMake(
                  0, KRRectGetMinY(second) + 2, 10, KRRectGetMaxY(third) - KRRectGetMinY(second) - 4))),
              indexesOf(KRIndexSet{1, 2}));
    EXPECT_EQ(indexesOf(list->indexesOfItemsInRect(KRRectMake(0, KRRectGetMaxY(first), 10, 5))),
              indexesOf(KRIndexSet{1}))
        << "a rect that only shares an edge with a row leaves it out";
    EXPECT_EQ(indexesOf(list->indexesOfItemsInRect(KRRectMake(0, KRRectGetMidY(second), 10, 0))),
              indexesOf(KRIndexSet()))
        << "a rect without height overlaps nothing";
    EXPECT_EQ(indexesOf(list->indexesOfItemsInRect(list->bounds())), indexesOf(KRIndexSet{0, 1, 2, 3}));
}

TEST_F(KRCheckListViewLayoutTests, IndexesInARectAreFoundAfterPendingLayout) {
    showItems({"a", "b", "c"});
    const KRRect laidOut = rowAt(2)->frame();
    rowAt(2)->setFrame(KRRectMake(0, 400, 320, 28));
    list->setNeedsLayout(true);
    EXPECT_EQ(indexesOf(list->indexesOfItemsInRect(KRRectInset(laidOut, 0, 3))), indexesOf(KRIndexSet{2}));
    EXPECT_EQ(rowAt(2)->frame(), laidOut);
}

TEST_F(KRCheckListViewLayoutTests, RectOfAnEmptyRangeIsTheZeroRect) {
    showItems({"a", "b", "c"});
    EXPECT_EQ(list->rectOfItemsInRange(KRMakeRange(1, 0)), KRRectZero);
}

TEST_F(KRCheckListViewLayoutTests, RectOfARangeCoversItsFirstAndLastRows) {
    showRowsOfDifferentHeights();
    EXPECT_EQ(list->rectOfItemsInRange(KRMakeRange(0, 3)), KRRectUnion(rowAt(0)->frame(), rowAt(2)->frame()));
    EXPECT_EQ(list->rectOfItemsInRange(KRMakeRange(1, 2)), KRRectUnion(rowAt(1)->frame(), rowAt(2)->frame()));
    EXPECT_EQ(list->rectOfItemAtIndex(1), rowAt(1)->frame());
}

TEST_F(KRCheckListViewLayoutTests, MovingAPointIntoARectClampsEachAxisWithTheFarEdgesInside) {
    const KRRect rect = KRRectMake(10, 20, 100, 50);
    EXPECT_EQ(KRCheckListView::checkListViewMovePoint(KRPointMake(0, 0), rect), KRPointMake(10, 20));
    EXPECT_EQ(KRCheckListView::checkListViewMovePoint(KRPointMake(500, 500), rect), KRPointMake(110, 70));
    EXPECT_EQ(KRCheckListView::checkListViewMovePoint(KRPointMake(50, 40), rect), KRPointMake(50, 40));
    EXPECT_EQ(KRCheckListView::checkListViewMovePoint(KRPointMake(110, 70), rect), KRPointMake(110, 70));
    EXPECT_EQ(KRCheckListView::checkListViewMovePoint(KRPointMake(-4, 65), rect), KRPointMake(10, 65));
}

// Dividers
// ------------------------------------------------------------------------------------------------------

TEST_F(KRCheckListViewLayoutTests, PlainRowsDrawTheFirstTopDividerAndEveryBottomDivider) {
    showItems({"a", "b", "c", "d"});
    EXPECT_EQ(indexesOf(rowsDrawingTopDividers()), indexesOf(KRIndexSet{0}));
    EXPECT_EQ(indexesOf(rowsDrawingBottomDividers()), indexesOf(KRIndexSet{0, 1, 2, 3}));
}

TEST_F(KRCheckListViewLayoutTests, SelectedRowDrawsNoBottomDividerAndTakesAwayTheOneAboveIt) {
    showItems({"a", "b", "c", "d", "e"});
    list->selectItemAtIndexByExtendingSelection(2, false);
    EXPECT_EQ(indexesOf(rowsDrawingBottomDividers()), indexesOf(KRIndexSet{0, 3, 4}))
        << "the row below the selected one still draws its own";
    EXPECT_EQ(indexesOf(rowsDrawingTopDividers()), indexesOf(KRIndexSet{0}));

    list->deselectAllItems();
    EXPECT_EQ(indexesOf(rowsDrawingBottomDividers()), indexesOf(KRIndexSet{0, 1, 2, 3, 4}));
}

TEST_F(KRCheckListViewLayoutTests, EditedRowDrawsNoBottomDividerAndTakesAwayTheOneAboveIt) {
    showItems({"a", "b", "c", "d", "e"});
    editItem(2, KRMakeRange(0, 0));
    ASSERT_EQ(list->indexForEditedItem(), 2u);
    EXPECT_EQ(indexesOf(rowsDrawingBottomDividers()), indexesOf(KRIndexSet{0, 3, 4}));
    EXPECT_EQ(indexesOf(rowsDrawingTopDividers()), indexesOf(KRIndexSet{0}));
}

TEST_F(KRCheckListViewLayoutTests, HighlightedRowDrawsNoBottomDividerAndTakesAwayTheOneAboveIt) {
    showItems({"a", "b", "c", "d", "e"});
    rowAt(2)->setHighlighted(true);
    list->checkListItemViewDidChangeHighlighted(rowAt(2));
    EXPECT_EQ(indexesOf(rowsDrawingBottomDividers()), indexesOf(KRIndexSet{0, 3, 4}));

    rowAt(2)->setHighlighted(false);
    list->checkListItemViewDidChangeHighlighted(rowAt(2));
    EXPECT_EQ(indexesOf(rowsDrawingBottomDividers()), indexesOf(KRIndexSet{0, 1, 2, 3, 4}));
}

TEST_F(KRCheckListViewLayoutTests, MarkedFirstRowDrawsNoTopDividerAndMarkedLastRowNoBottomDivider) {
    showItems({"a", "b", "c", "d", "e"});
    list->selectItemsAtIndexesByExtendingSelection(KRIndexSet{0, 4}, false);
    EXPECT_EQ(indexesOf(rowsDrawingTopDividers()), indexesOf(KRIndexSet()));
    EXPECT_EQ(indexesOf(rowsDrawingBottomDividers()), indexesOf(KRIndexSet{1, 2}));
}

TEST_F(KRCheckListViewLayoutTests, RowWithAnEmptyFrameDrawsNoBottomDividerWhileTheRowAboveStillDoes) {
    showItems({"a", "b", "c"});
    rowAt(1)->setFrame(KRRectZero);
    list->checkListViewUpdateDividers();
    EXPECT_EQ(indexesOf(rowsDrawingBottomDividers()), indexesOf(KRIndexSet{0, 2}));
}

// The passes after a layout, a selection or an edit only visit the rows whose inputs changed; whatever
// happened before a layout, a pass over every row right after it must find nothing to change.
TEST_F(KRCheckListViewLayoutTests, DividersAfterEveryChangeAreThoseOfAPassOverEveryRow) {
    showItems({"a", "b", "c", "d", "e", "f", "g", "h"});
    dataSource->reportsChanges = true;
    window.makeFirstResponder(list.get());
    std::mt19937 random(7);
    int changesChecked = 0;
    for (int step = 0; step < 400; ++step) {
        const KRUInteger count = list->numberOfItems();
        const KRUInteger index = count == 0 ? 0 : random() % count;
        switch (random() % 8) {
        case 0:
            list->insertItemAtIndex(random() % (count + 1));
            break;
        case 1:
            if (count > 1) {
                list->removeItemAtIndex(index);
            }
            break;
        case 2:
            if (count > 0) {
                list->beginEditingItemAtIndexSelectRange(index, KRMakeRange(0, 0));
            }
            break;
        case 3:
            list->endEditing();
            break;
        case 4:
            if (count > 0) {
                list->selectItemsAtIndexesByExtendingSelection(KRIndexSet(index), random() % 2 == 0);
            }
            break;
        case 5:
            if (count > 0) {
                // A row changed by someone else than the list.
                rowAt(index)->setHighlighted(!rowAt(index)->isHighlighted());
            }
            break;
        case 6:
            if (count > 0) {
                // Without an area until the next layout.
                rowAt(index)->setFrame(KRRectZero);
                list->checkListViewUpdateDividers();
            }
            break;
        default:
            list->setNeedsLayout(true);
            break;
        }
        KRRunLoop::main().runUntilIdle();
        // A layout pass updates the dividers of the rows it knows to have changed.
        list->setNeedsLayout(true);
        list->layoutIfNeeded();

        const KRIndexSet tops = rowsDrawingTopDividers();
        const KRIndexSet bottoms = rowsDrawingBottomDividers();
        list->checkListViewUpdateDividers();
        ASSERT_EQ(indexesOf(rowsDrawingTopDividers()), indexesOf(tops)) << "after step " << step;
        ASSERT_EQ(indexesOf(rowsDrawingBottomDividers()), indexesOf(bottoms)) << "after step " << step;
        changesChecked += 1;
    }
    EXPECT_EQ(changesChecked, 400);
}

// The list keeps the sizes its rows answered and the frames it gave them, and reads a row again only when the
// row reported a change. Whatever happens, the frames after a layout pass must be those of every row measured
// afresh and stacked.
TEST_F(KRCheckListViewLayoutTests, FramesAfterEveryChangeAreThoseOfEveryRowMeasuredAfresh) {
    showItems({"a", "b", "c", "d", "e", "f", "g", "h"});
    dataSource->reportsChanges = true;
    window.makeFirstResponder(list.get());
    const QStringList titles{QString(), QStringLiteral("Short"), kLongTitle, kLongTitle + kLongTitle};
    std::mt19937 random(11);
    const auto anyTitle = [&] { return titles.at(static_cast<qsizetype>(random() % titles.size())); };
    for (int step = 0; step < 400; ++step) {
        const KRUInteger count = list->numberOfItems();
        const KRUInteger index = count == 0 ? 0 : random() % count;
        switch (random() % 11) {
        case 0:
            dataSource->itemsToInsert.push_back(Item{QStringLiteral("i%1").arg(step), 0, anyTitle()});
            list->insertItemAtIndex(random() % (count + 1));
            break;
        case 1:
            if (count > 1) {
                list->removeItemAtIndex(index);
            }
            break;
        case 2:
            if (count > 0) {
                // The host changes a title and reports it.
                dataSource->items[index].title = anyTitle();
                list->beginUpdates();
                list->updateByReloadingItemAtIndex(index);
                list->endUpdates();
            }
            break;
        case 3:
            if (count > 0) {
                list->beginEditingItemAtIndexSelectRange(index, KRMakeRange(0, 0));
            }
            break;
        case 4:
            if (list->indexForEditedItem() != KRNotFound) {
                // Typed text may wrap the edited title onto more lines.
                list->fieldEditor()->insertText(anyTitle());
            }
            break;
        case 5:
            list->endEditing();
            break;
        case 6:
            if (count > 0) {
                // A new status changes the check box image, and with it the row's fitting size.
                dataSource->items[index].status = random() % 3;
                list->beginUpdates();
                list->updateByReloadingItemAtIndex(index);
                list->endUpdates();
            }
            break;
        case 7:
            if (count > 0) {
                // A frame given by someone else than the list.
                rowAt(index)->setFrame(random() % 2 == 0 ? KRRectZero : KRRectMake(5.0, 7.0, 90.0, 11.0));
            }
            break;
        case 8:
            list->setFrameSize(KRSizeMake(200.0 + static_cast<double>(random() % 3) * 150.0, 600.0));
            break;
        case 9:
            if (count > 1) {
                list->moveItemAtIndexToIndex(index, random() % (count + 1));
            }
            break;
        default:
            list->reloadItems();
            break;
        }
        KRRunLoop::main().runUntilIdle();
        list->setNeedsLayout(true);
        list->layoutIfNeeded();

        const KRSize size = list->bounds().size;
        std::vector<KRRect> expected;
        double y = 0.0;
        for (KRUInteger row = 0; row < list->numberOfItems(); ++row) {
            const KRSize fitting = rowAt(row)->checkListItemViewLayoutForSize(size).sizeThatFits;
            expected.push_back(KRRect{KRPoint{0.0, y}, fitting});
            y += fitting.height - hairline();
        }
        ASSERT_EQ(rowFrames(), expected) << "after step " << step;
        const double stackedHeight = expected.empty() ? 0.0 : y + hairline();
        ASSERT_EQ(list->sizeThatFits(size).height, stackedHeight) << "after step " << step;
    }
}
