// The item commands on the edited or selected items (their targets, predicates, effects and where editing
// goes afterwards) and the menu actions of the list with their validation.
#include "KRCheckListView.h"

#include "KRCheckListViewTestSupport.h"

#include "Foundation/KRLog.h"
#include "Platform/KRPasteboard.h"

#include <gtest/gtest.h>

#include <memory>
#include <vector>

using namespace KRCheckListViewTesting;

namespace {

// Applies a status it is given and reports it to the list as a reload, as a host would, so that the rows
// show the new status and a second toggle sees it.
class StatusReportingDataSource : public FullRecordingDataSource {
public:
    using FullRecordingDataSource::FullRecordingDataSource;

    void checkListViewSetStatusForItemAtIndex(KRCheckListView* checkListView, KRUInteger status,
                                              KRUInteger index) override {
        FullRecordingDataSource::checkListViewSetStatusForItemAtIndex(checkListView, status, index);
        checkListView->beginUpdates();
        checkListView->updateByReloadingItemAtIndex(index);
        checkListView->endUpdates();
    }
};

class KRCheckListViewCommandsTests : public KRCheckListViewTestCase {
protected:
    void TearDown() override {
        KRPasteboard::setGeneralPasteboard(nullptr);
        KRCheckListViewTestCase::TearDown();
    }

    // Gives the list the focus and selects these items (which ends the edit focusing began); the log starts
    // empty afterwards.
    void selectItems(const KRIndexSet& indexes) {
        window.makeFirstResponder(list.get());
        KRRunLoop::main().runUntilIdle();
        list->selectItemsAtIndexesByExtendingSelection(indexes, false);
        KRRunLoop::main().runUntilIdle();
        log->clear();
    }
    // Gives the list the focus with nothing edited and nothing selected.
    void focusWithoutEditing() {
        window.makeFirstResponder(list.get());
        KRRunLoop::main().runUntilIdle();
        list->endEditing();
        KRRunLoop::main().runUntilIdle();
        log->clear();
    }

    // Shows items a, b, c, … with these statuses through the data source that reports status changes.
    void showItemsWithStatuses(const std::vector<KRUInteger>& statuses) {
        QStringList identifiers;
        for (std::size_t index = 0; index < statuses.size(); ++index) {
            identifiers << QString(QChar('a' + static_cast<int>(index)));
        }
        statusSource->items = itemsWithIdentifiers(identifiers);
        for (std::size_t index = 0; index < statuses.size(); ++index) {
            statusSource->items[index].status = statuses[index];
        }
        list->setDataSource(statusSource);
        list->setDelegate(delegate);
        list->reloadItems();
        log->clear();
    }
    std::vector<KRUInteger> storedStatuses() const {
        std::vector<KRUInteger> statuses;
        for (const Item& item : statusSource->items) {
            statuses.push_back(item.status);
        }
        return statuses;
    }
    std::vector<KRUInteger> rowStatuses() const {
        std::vector<KRUInteger> statuses;
        for (KRUInteger index = 0; index < list->numberOfItems(); ++index) {
            statuses.push_back(list->statusForItemAtIndex(index));
        }
        return statuses;
    }

    // Inserted items get a title, so that "caret at the end" and "caret at the start" differ.
    void insertedItemsAreTitled() {
        dataSource->itemsToInsert = {Item{QStringLiteral("fresh"), 0, QStringLiteral("Fresh item")}};
    }

    std::shared_ptr<StatusReportingDataSource> statusSource =
        std::make_shared<StatusReportingDataSource>(log);
    KRLogCapture deprecationWarnings; // the status setter the reporting data source implements is deprecated
};

} // namespace

// Targets
// ------------------------------------------------------------------------------------------------------

TEST_F(KRCheckListViewCommandsTests, TargetsWithNothingEditedOrSelectedAreTheTopAndTheEnd) {
    showItems({"a", "b", "c", "d"});
    EXPECT_EQ(list->targetIndexForInsertingItemAboveEditedOrSelectedItems(), 0u);
    EXPECT_EQ(list->targetIndexForInsertingItemBelowEditedOrSelectedItems(), 4u);
    EXPECT_EQ(list->targetIndexForMovingEditedOrSelectedItemsUp(), 0u);
    EXPECT_EQ(list->targetIndexForMovingEditedOrSelectedItemsDown(), 4u);
}

TEST_F(KRCheckListViewCommandsTests, TargetsAroundTheEditedItem) {
    showItems({"a", "b", "c", "d", "e"});
    editItem(3, KRMakeRange(0, 0));
    EXPECT_EQ(list->targetIndexForInsertingItemAboveEditedOrSelectedItems(), 2u);
    EXPECT_EQ(list->targetIndexForInsertingItemBelowEditedOrSelectedItems(), 4u);
    EXPECT_EQ(list->targetIndexForMovingEditedOrSelectedItemsUp(), 2u);
    EXPECT_EQ(list->targetIndexForMovingEditedOrSelectedItemsDown(), 5u);
}

TEST_F(KRCheckListViewCommandsTests, TargetsAroundASelectionUseItsFirstAndLastItems) {
    showItems({"a", "b", "c", "d", "e", "f"});
    selectItems(KRIndexSet{2, 4});
    EXPECT_EQ(list->targetIndexForInsertingItemAboveEditedOrSelectedItems(), 1u);
    EXPECT_EQ(list->targetIndexForInsertingItemBelowEditedOrSelectedItems(), 5u);
    EXPECT_EQ(list->targetIndexForMovingEditedOrSelectedItemsUp(), 1u);
    EXPECT_EQ(list->targetIndexForMovingEditedOrSelectedItemsDown(), 6u);
}

TEST_F(KRCheckListViewCommandsTests, TargetsWithTheFirstItemEditedStayAtTheTop) {
    showItems({"a", "b", "c"});
    editItem(0, KRMakeRange(0, 0));
    EXPECT_EQ(list->targetIndexForInsertingItemAboveEditedOrSelectedItems(), 0u);
    EXPECT_EQ(list->targetIndexForMovingEditedOrSelectedItemsUp(), 0u);
}

TEST_F(KRCheckListViewCommandsTests, MovingDownWithTheLastItemInvolvedTargetsTheEnd) {
    showItems({"a", "b", "c", "d"});
    selectItems(KRIndexSet{1, 3});
    EXPECT_EQ(list->targetIndexForMovingEditedOrSelectedItemsDown(), 4u);
    EXPECT_EQ(list->targetIndexForInsertingItemBelowEditedOrSelectedItems(), 4u);
    EXPECT_TRUE(list->canMoveEditedOrSelectedItemsDown());
}

TEST_F(KRCheckListViewCommandsTests, MovingDownFromTheSecondToLastItemTargetsTheEnd) {
    showItems({"a", "b", "c", "d"});
    editItem(2, KRMakeRange(0, 0));
    EXPECT_EQ(list->targetIndexForMovingEditedOrSelectedItemsDown(), 4u);
}

// Inserting
// ------------------------------------------------------------------------------------------------------

TEST_F(KRCheckListViewCommandsTests, InsertAboveWithTheFourthItemEditedInsertsAboveTheItemBeforeIt) {
    showItems({"a", "b", "c", "d", "e"});
    insertedItemsAreTitled();
    editItem(3, KRMakeRange(2, 0));
    ASSERT_TRUE(list->canInsertItemAboveEditedOrSelectedItems());
    list->insertItemAboveEditedOrSelectedItems();
    EXPECT_EQ(linesOf(dataSource->identifiers()), linesOf(QStringList{"a", "b", "fresh", "c", "d", "e"}));
    EXPECT_EQ(list->indexForEditedItem(), 2u);
    EXPECT_EQ(selectionInTitleAtIndex(2), "{10, 0}") << "the caret goes to the end of the new title";
}

TEST_F(KRCheckListViewCommandsTests, InsertAboveWithTheFirstItemEditedInsertsAtTheTop) {
    showItems({"a", "b", "c"});
    editItem(0, KRMakeRange(3, 0));
    list->insertItemAboveEditedOrSelectedItems();
    EXPECT_EQ(linesOf(dataSource->identifiers()), linesOf(QStringList{"new1", "a", "b", "c"}));
    EXPECT_EQ(list->indexForEditedItem(), 0u);
    EXPECT_EQ(editedRows(), KRIndexSet{0});
}

TEST_F(KRCheckListViewCommandsTests, InsertAboveWithNothingEditedOrSelectedInsertsAtTheTop) {
    showItems({"a", "b", "c"});
    insertedItemsAreTitled();
    list->insertItemAboveEditedOrSelectedItems();
    EXPECT_EQ(linesOf(dataSource->identifiers()), linesOf(QStringList{"fresh", "a", "b", "c"}));
    EXPECT_EQ(list->indexForEditedItem(), 0u);
    EXPECT_EQ(selectionInTitleAtIndex(0), "{10, 0}");
}

TEST_F(KRCheckListViewCommandsTests, InsertAboveASelectionEndsItAndEditsTheNewItem) {
    showItems({"a", "b", "c", "d"});
    selectItems(KRIndexSet{2, 3});
    list->insertItemAboveEditedOrSelectedItems();
    EXPECT_EQ(linesOf(dataSource->identifiers()), linesOf(QStringList{"a", "new1", "b", "c", "d"}));
    EXPECT_EQ(list->indexForEditedItem(), 1u);
    EXPECT_TRUE(list->indexesForSelectedItems().isEmpty());
}

TEST_F(KRCheckListViewCommandsTests, InsertBelowWithNothingEditedOrSelectedAppendsAtTheEnd) {
    showItems({"a", "b", "c"});
    insertedItemsAreTitled();
    ASSERT_TRUE(list->canInsertItemBelowEditedOrSelectedItems());
    list->insertItemBelowEditedOrSelectedItems();
    EXPECT_EQ(linesOf(dataSource->identifiers()), linesOf(QStringList{"a", "b", "c", "fresh"}));
    EXPECT_EQ(list->indexForEditedItem(), 3u);
    EXPECT_EQ(selectionInTitleAtIndex(3), "{10, 0}");
}

TEST_F(KRCheckListViewCommandsTests, InsertBelowTheEditedItemEndsItsEditAndEditsTheNewItem) {
    showItems({"a", "b", "c"});
    editItem(1, KRMakeRange(2, 0));
    list->insertItemBelowEditedOrSelectedItems();
    const QStringList expected{
        QStringLiteral("willEndEditingItemAtIndex 1"),   QStringLiteral("didEndEditingItemAtIndex 1"),
        QStringLiteral("willInsertItemsAtIndexes {2}"),  QStringLiteral("didInsertItemsAtIndexes {2}"),
        QStringLiteral("willBeginEditingItemAtIndex 2"), QStringLiteral("didBeginEditingItemAtIndex 2"),
    };
    EXPECT_EQ(
        linesOf(log->startingWith({QStringLiteral("willEndEditing"), QStringLiteral("didEndEditing"),
                                   QStringLiteral("willInsert"), QStringLiteral("didInsert"),
                                   QStringLiteral("willBeginEditing"), QStringLiteral("didBeginEditing")})),
        linesOf(expected))
        << "the edit ends before the insertion, so the update has nothing to resume";
    EXPECT_EQ(linesOf(dataSource->identifiers()), linesOf(QStringList{"a", "b", "new1", "c"}));
    EXPECT_EQ(list->indexForEditedItem(), 2u);
}

TEST_F(KRCheckListViewCommandsTests, InsertBelowASelectionInsertsAfterItsLastItem) {
    showItems({"a", "b", "c", "d"});
    selectItems(KRIndexSet{0, 1});
    list->insertItemBelowEditedOrSelectedItems();
    EXPECT_EQ(linesOf(dataSource->identifiers()), linesOf(QStringList{"a", "b", "new1", "c", "d"}));
    EXPECT_EQ(list->indexForEditedItem(), 2u);
}

TEST_F(KRCheckListViewCommandsTests, InsertTopEndsEditingInsertsAtTheTopAndEditsItWithTheCaretAtItsEnd) {
    showItems({"a", "b", "c"});
    insertedItemsAreTitled();
    editItem(2, KRMakeRange(1, 0));
    ASSERT_TRUE(list->canInsertItemTop());
    list->insertItemTop();
    EXPECT_EQ(log->indexOf(QStringLiteral("didEndEditingItemAtIndex 2")), 1);
    EXPECT_LT(log->indexOf(QStringLiteral("didEndEditingItemAtIndex 2")),
              log->indexOf(QStringLiteral("willInsertItemsAtIndexes {0}")));
    EXPECT_LT(log->indexOf(QStringLiteral("didInsertItemsAtIndexes {0}")),
              log->indexOf(QStringLiteral("willBeginEditingItemAtIndex 0")));
    EXPECT_EQ(linesOf(dataSource->identifiers()), linesOf(QStringList{"fresh", "a", "b", "c"}));
    EXPECT_EQ(list->indexForEditedItem(), 0u);
    EXPECT_EQ(selectionInTitleAtIndex(0), "{10, 0}");
}

TEST_F(KRCheckListViewCommandsTests, InsertBottomAppendsAndEditsTheNewLastItem) {
    showItems({"a", "b", "c"});
    insertedItemsAreTitled();
    editItem(0, KRMakeRange(1, 0));
    ASSERT_TRUE(list->canInsertItemBottom());
    list->insertItemBottom();
    EXPECT_TRUE(log->contains(QStringLiteral("insertItemsAtIndexes {3}")));
    EXPECT_EQ(linesOf(dataSource->identifiers()), linesOf(QStringList{"a", "b", "c", "fresh"}));
    EXPECT_EQ(list->indexForEditedItem(), 3u);
    EXPECT_EQ(selectionInTitleAtIndex(3), "{10, 0}");
}

TEST_F(KRCheckListViewCommandsTests, InsertingIntoAnEmptyListIsAllowedAtTheTopAndTheBottom) {
    showItems({});
    EXPECT_TRUE(list->canInsertItemTop());
    EXPECT_TRUE(list->canInsertItemBottom());
    EXPECT_TRUE(list->canInsertItemAboveEditedOrSelectedItems());
    EXPECT_TRUE(list->canInsertItemBelowEditedOrSelectedItems());
    list->insertItemBottom();
    EXPECT_EQ(linesOf(dataSource->identifiers()), linesOf(QStringList{"new1"}));
    EXPECT_EQ(list->indexForEditedItem(), 0u);
}

TEST_F(KRCheckListViewCommandsTests, InsertTopEditsTheTopIndexEvenWhenTheDataSourceDoesNotReport) {
    showItems({"a", "b"});
    dataSource->appliesChanges = false;
    dataSource->reportsChanges = false;
    editItem(1, KRMakeRange(0, 0));
    list->insertItemTop();
    EXPECT_EQ(list->numberOfItems(), 2u);
    EXPECT_TRUE(log->contains(QStringLiteral("willInsertItemsAtIndexes {0}")));
    EXPECT_TRUE(log->contains(QStringLiteral("didInsertItemsAtIndexes {0}")));
    EXPECT_EQ(list->indexForEditedItem(), 0u) << "the command still edits the index it inserted at";
}

// Moving
// ------------------------------------------------------------------------------------------------------

TEST_F(KRCheckListViewCommandsTests, MovePredicatesAreAlwaysTrue) {
    showItems({"a", "b", "c"});
    EXPECT_TRUE(list->canMoveEditedOrSelectedItemsTop());
    EXPECT_TRUE(list->canMoveEditedOrSelectedItemsBottom());
    EXPECT_TRUE(list->canMoveEditedOrSelectedItemsUp());
    EXPECT_TRUE(list->canMoveEditedOrSelectedItemsDown());
    editItem(0, KRMakeRange(0, 0));
    EXPECT_TRUE(list->canMoveEditedOrSelectedItemsUp());
    EXPECT_TRUE(list->canMoveEditedOrSelectedItemsTop());
    EXPECT_TRUE(log->messages().isEmpty()) << "the predicates ask no client";
}

TEST_F(KRCheckListViewCommandsTests, MoveUpMovesTheEditedItemAndKeepsItsCaret) {
    showItems({"a", "b", "c", "d"});
    editItem(2, KRMakeRange(3, 2));
    list->moveEditedOrSelectedItemsUp();
    EXPECT_EQ(log->messages().value(0).toStdString(), "willMoveItemsAtIndexes {2} toIndex 1");
    EXPECT_EQ(log->messages().value(log->messages().size() - 1).toStdString(),
              "didMoveItemsAtIndexes {2} toIndex 1");
    EXPECT_EQ(linesOf(dataSource->identifiers()), linesOf(QStringList{"a", "c", "b", "d"}));
    EXPECT_EQ(linesOf(rowIdentifiers()), linesOf(QStringList{"a", "c", "b", "d"}));
    EXPECT_EQ(list->indexForEditedItem(), 1u);
    EXPECT_EQ(selectionInTitleAtIndex(1), "{3, 2}");
}

TEST_F(KRCheckListViewCommandsTests, MoveDownMovesASelectionAndItStaysSelected) {
    showItems({"a", "b", "c", "d", "e"});
    selectItems(KRIndexSet{1, 2});
    list->moveEditedOrSelectedItemsDown();
    EXPECT_TRUE(log->contains(QStringLiteral("moveItemsAtIndexes {1, 2} toIndex 4")));
    EXPECT_EQ(linesOf(rowIdentifiers()), linesOf(QStringList{"a", "d", "b", "c", "e"}));
    EXPECT_EQ(indexesOf(list->indexesForSelectedItems()), indexesOf(KRIndexSet{2, 3}));
    EXPECT_EQ(indexesOf(selectedRows()), indexesOf(KRIndexSet{2, 3}));
}

TEST_F(KRCheckListViewCommandsTests, MoveUpOfTheFirstItemStillAsksTheDataSource) {
    showItems({"a", "b", "c"});
    editItem(0, KRMakeRange(1, 0));
    list->moveEditedOrSelectedItemsUp();
    EXPECT_TRUE(log->contains(QStringLiteral("moveItemsAtIndexes {0} toIndex 0")));
    EXPECT_EQ(linesOf(rowIdentifiers()), linesOf(QStringList{"a", "b", "c"}));
    EXPECT_EQ(list->indexForEditedItem(), 0u);
}

TEST_F(KRCheckListViewCommandsTests, MoveDownOfTheLastItemTargetsTheEnd) {
    showItems({"a", "b", "c"});
    editItem(2, KRMakeRange(1, 0));
    list->moveEditedOrSelectedItemsDown();
    EXPECT_TRUE(log->contains(QStringLiteral("moveItemsAtIndexes {2} toIndex 3")));
    EXPECT_EQ(linesOf(rowIdentifiers()), linesOf(QStringList{"a", "b", "c"}));
    EXPECT_EQ(list->indexForEditedItem(), 2u);
}

TEST_F(KRCheckListViewCommandsTests, MoveTopGathersTheSelectionAtTheTop) {
    showItems({"a", "b", "c", "d", "e"});
    selectItems(KRIndexSet{1, 3});
    list->moveEditedOrSelectedItemsTop();
    EXPECT_EQ(linesOf(log->startingWith(
                  {QStringLiteral("willMove"), QStringLiteral("moveItems"), QStringLiteral("didMove")})),
              linesOf(QStringList{QStringLiteral("willMoveItemsAtIndexes {1, 3} toIndex 0"),
                                  QStringLiteral("moveItemsAtIndexes {1, 3} toIndex 0"),
                                  QStringLiteral("didMoveItemsAtIndexes {1, 3} toIndex 0")}));
    EXPECT_EQ(linesOf(rowIdentifiers()), linesOf(QStringList{"b", "d", "a", "c", "e"}));
    EXPECT_EQ(indexesOf(list->indexesForSelectedItems()), indexesOf(KRIndexSet{0, 1}));
}

TEST_F(KRCheckListViewCommandsTests, MoveBottomTakesTheEditedItemToTheEndAndKeepsEditingIt) {
    showItems({"a", "b", "c", "d"});
    editItem(1, KRMakeRange(4, 0));
    list->moveEditedOrSelectedItemsBottom();
    EXPECT_TRUE(log->contains(QStringLiteral("moveItemsAtIndexes {1} toIndex 4")));
    EXPECT_EQ(linesOf(rowIdentifiers()), linesOf(QStringList{"a", "c", "d", "b"}));
    EXPECT_EQ(list->indexForEditedItem(), 3u);
    EXPECT_EQ(selectionInTitleAtIndex(3), "{4, 0}");
}

TEST_F(KRCheckListViewCommandsTests, MoveWithNothingEditedOrSelectedMovesNothing) {
    showItems({"a", "b", "c"});
    list->moveEditedOrSelectedItemsBottom();
    EXPECT_TRUE(log->contains(QStringLiteral("moveItemsAtIndexes {} toIndex 3")));
    EXPECT_EQ(linesOf(rowIdentifiers()), linesOf(QStringList{"a", "b", "c"}));
}

// Deleting
// ------------------------------------------------------------------------------------------------------

TEST_F(KRCheckListViewCommandsTests, DeleteBackwardRemovesTheEditedItemAndEditsTheOneAboveAtItsEnd) {
    showItems({"a", "b", "c"});
    editItem(2, KRMakeRange(2, 0));
    ASSERT_TRUE(list->canDeleteEditedOrSelectedItemsBackward());
    list->deleteEditedOrSelectedItemsBackward();
    EXPECT_LT(log->indexOf(QStringLiteral("didEndEditingItemAtIndex 2")),
              log->indexOf(QStringLiteral("willRemoveItemsAtIndexes {2}")));
    EXPECT_LT(log->indexOf(QStringLiteral("didRemoveItemsAtIndexes {2}")),
              log->indexOf(QStringLiteral("willBeginEditingItemAtIndex 1")));
    EXPECT_EQ(linesOf(dataSource->identifiers()), linesOf(QStringList{"a", "b"}));
    EXPECT_EQ(list->indexForEditedItem(), 1u);
    EXPECT_EQ(selectionInTitleAtIndex(1), "{6, 0}");
}

TEST_F(KRCheckListViewCommandsTests, DeleteBackwardOfTheFirstItemEditsTheNewFirstItemAtItsStart) {
    showItems({"a", "b", "c"});
    editItem(0, KRMakeRange(3, 0));
    list->deleteEditedOrSelectedItemsBackward();
    EXPECT_EQ(linesOf(dataSource->identifiers()), linesOf(QStringList{"b", "c"}));
    EXPECT_EQ(list->indexForEditedItem(), 0u);
    EXPECT_EQ(rowAt(0)->objectValue().toString(), QStringLiteral("b"));
    EXPECT_EQ(selectionInTitleAtIndex(0), "{0, 0}");
}

TEST_F(KRCheckListViewCommandsTests, DeleteBackwardOfEveryItemLeavesNothingEdited) {
    showItems({"a", "b", "c"});
    selectItems(KRIndexSet{0, 1, 2});
    list->deleteEditedOrSelectedItemsBackward();
    EXPECT_TRUE(log->contains(QStringLiteral("removeItemsAtIndexes {0, 1, 2}")));
    EXPECT_EQ(list->numberOfItems(), 0u);
    EXPECT_EQ(list->indexForEditedItem(), KRNotFound);
    EXPECT_FALSE(log->contains(QStringLiteral("willBeginEditingItemAtIndex 0")));
}

TEST_F(KRCheckListViewCommandsTests, DeleteBackwardOfASelectionEditsTheItemJustAboveItAtItsEnd) {
    showItems({"a", "b", "c", "d", "e"});
    selectItems(KRIndexSet{2, 4});
    list->deleteEditedOrSelectedItemsBackward();
    EXPECT_EQ(linesOf(dataSource->identifiers()), linesOf(QStringList{"a", "b", "d"}));
    EXPECT_EQ(list->indexForEditedItem(), 1u);
    EXPECT_EQ(selectionInTitleAtIndex(1), "{6, 0}");
    EXPECT_TRUE(list->indexesForSelectedItems().isEmpty());
}

TEST_F(KRCheckListViewCommandsTests, DeleteBackwardWithNothingEditedOrSelectedEditsTheFirstItemAtItsStart) {
    showItems({"a", "b"});
    list->deleteEditedOrSelectedItemsBackward();
    EXPECT_TRUE(log->contains(QStringLiteral("removeItemsAtIndexes {}")));
    EXPECT_EQ(linesOf(dataSource->identifiers()), linesOf(QStringList{"a", "b"}));
    EXPECT_EQ(list->indexForEditedItem(), 0u);
    EXPECT_EQ(selectionInTitleAtIndex(0), "{0, 0}");
}

TEST_F(KRCheckListViewCommandsTests, DeleteForwardRemovesTheEditedItemAndEditsTheFollowingOneAtItsStart) {
    showItems({"a", "b", "c"});
    editItem(1, KRMakeRange(3, 0));
    ASSERT_TRUE(list->canDeleteEditedOrSelectedItemsForward());
    list->deleteEditedOrSelectedItemsForward();
    EXPECT_EQ(linesOf(dataSource->identifiers()), linesOf(QStringList{"a", "c"}));
    EXPECT_EQ(list->indexForEditedItem(), 1u);
    EXPECT_EQ(rowAt(1)->objectValue().toString(), QStringLiteral("c"));
    EXPECT_EQ(selectionInTitleAtIndex(1), "{0, 0}");
}

TEST_F(KRCheckListViewCommandsTests, DeleteForwardOfTheLastItemEditsTheNewLastItemAtItsEnd) {
    showItems({"a", "b", "c"});
    editItem(2, KRMakeRange(0, 0));
    list->deleteEditedOrSelectedItemsForward();
    EXPECT_EQ(linesOf(dataSource->identifiers()), linesOf(QStringList{"a", "b"}));
    EXPECT_EQ(list->indexForEditedItem(), 1u);
    EXPECT_EQ(selectionInTitleAtIndex(1), "{6, 0}");
}

TEST_F(KRCheckListViewCommandsTests, DeleteForwardOfASelectionEditsTheItemThatFollowedIt) {
    showItems({"a", "b", "c", "d", "e"});
    selectItems(KRIndexSet{1, 2});
    list->deleteEditedOrSelectedItemsForward();
    EXPECT_EQ(linesOf(dataSource->identifiers()), linesOf(QStringList{"a", "d", "e"}));
    EXPECT_EQ(list->indexForEditedItem(), 1u);
    EXPECT_EQ(rowAt(1)->objectValue().toString(), QStringLiteral("d"));
    EXPECT_EQ(selectionInTitleAtIndex(1), "{0, 0}");
}

TEST_F(KRCheckListViewCommandsTests, DeleteForwardWithNothingEditedOrSelectedEditsTheLastItemAtItsEnd) {
    showItems({"a", "b", "c"});
    list->deleteEditedOrSelectedItemsForward();
    EXPECT_EQ(linesOf(dataSource->identifiers()), linesOf(QStringList{"a", "b", "c"}));
    EXPECT_EQ(list->indexForEditedItem(), 2u);
    EXPECT_EQ(selectionInTitleAtIndex(2), "{6, 0}");
}

TEST_F(KRCheckListViewCommandsTests, DeleteForwardOfEveryItemLeavesNothingEdited) {
    showItems({"a", "b"});
    selectItems(KRIndexSet{0, 1});
    list->deleteEditedOrSelectedItemsForward();
    EXPECT_EQ(list->numberOfItems(), 0u);
    EXPECT_EQ(list->indexForEditedItem(), KRNotFound);
}

TEST_F(KRCheckListViewCommandsTests, DeletePredicatesAreAlwaysTrue) {
    showItems({"a"});
    EXPECT_TRUE(list->canDeleteEditedOrSelectedItemsBackward());
    EXPECT_TRUE(list->canDeleteEditedOrSelectedItemsForward());
    showItems({});
    EXPECT_TRUE(list->canDeleteEditedOrSelectedItemsBackward());
    EXPECT_TRUE(list->canDeleteEditedOrSelectedItemsForward());
}

// Toggling
// ------------------------------------------------------------------------------------------------------

TEST_F(KRCheckListViewCommandsTests, ToggleCompletedCompletesOpenItemsOneAfterTheOther) {
    showItemsWithStatuses({0, 0, 0, 0});
    selectItems(KRIndexSet{1, 3});
    ASSERT_TRUE(list->canToggleEditedOrSelectedItemsCompleted());
    list->toggleEditedOrSelectedItemsCompleted();
    EXPECT_EQ(
        linesOf(log->startingWith(
            {QStringLiteral("willSetStatus"), QStringLiteral("setStatus"), QStringLiteral("didSetStatus")})),
        linesOf(QStringList{
            QStringLiteral("willSetStatusForItemAtIndex 1"), QStringLiteral("setStatus 1 forItemAtIndex 1"),
            QStringLiteral("didSetStatusForItemAtIndex 1"), QStringLiteral("willSetStatusForItemAtIndex 3"),
            QStringLiteral("setStatus 1 forItemAtIndex 3"), QStringLiteral("didSetStatusForItemAtIndex 3")}));
    EXPECT_EQ(storedStatuses(), (std::vector<KRUInteger>{0, 1, 0, 1}));
}

TEST_F(KRCheckListViewCommandsTests, ToggleCompletedOnAMixOfCompletedAndCanceledCompletesAllThenReopensAll) {
    showItemsWithStatuses({1, 2, 1, 0});
    selectItems(KRIndexSet{0, 1, 2});
    list->toggleEditedOrSelectedItemsCompleted();
    EXPECT_EQ(storedStatuses(), (std::vector<KRUInteger>{1, 1, 1, 0}));
    EXPECT_EQ(rowStatuses(), (std::vector<KRUInteger>{1, 1, 1, 0}));
    list->toggleEditedOrSelectedItemsCompleted();
    EXPECT_EQ(storedStatuses(), (std::vector<KRUInteger>{0, 0, 0, 0}));
}

TEST_F(KRCheckListViewCommandsTests, ToggleCanceledCancelsUnlessEveryItemIsCanceled) {
    showItemsWithStatuses({2, 1, 2});
    selectItems(KRIndexSet{0, 1});
    ASSERT_TRUE(list->canToggleEditedOrSelectedItemsCanceled());
    list->toggleEditedOrSelectedItemsCanceled();
    EXPECT_EQ(storedStatuses(), (std::vector<KRUInteger>{2, 2, 2}));
    selectItems(KRIndexSet{0, 1, 2});
    list->toggleEditedOrSelectedItemsCanceled();
    EXPECT_EQ(storedStatuses(), (std::vector<KRUInteger>{0, 0, 0}));
}

TEST_F(KRCheckListViewCommandsTests, ToggleOfTheEditedItemLeavesItEdited) {
    showItemsWithStatuses({0, 0, 0});
    editItem(1, KRMakeRange(2, 0));
    list->toggleEditedOrSelectedItemsCompleted();
    EXPECT_EQ(storedStatuses(), (std::vector<KRUInteger>{0, 1, 0}));
    EXPECT_EQ(list->indexForEditedItem(), 1u);
    EXPECT_TRUE(log->contains(QStringLiteral("setStatus 1 forItemAtIndex 1")));
    list->toggleEditedOrSelectedItemsCanceled();
    EXPECT_EQ(storedStatuses(), (std::vector<KRUInteger>{0, 2, 0}));
}

TEST_F(KRCheckListViewCommandsTests, ToggleWithNothingEditedOrSelectedIsDisabledAndChangesNothing) {
    showItemsWithStatuses({1, 0});
    EXPECT_FALSE(list->canToggleEditedOrSelectedItemsCompleted());
    EXPECT_FALSE(list->canToggleEditedOrSelectedItemsCanceled());
    list->toggleEditedOrSelectedItemsCompleted();
    list->toggleEditedOrSelectedItemsCanceled();
    EXPECT_TRUE(log->startingWith({QStringLiteral("willSetStatus"), QStringLiteral("setStatus")}).isEmpty());
    EXPECT_EQ(storedStatuses(), (std::vector<KRUInteger>{1, 0}));
}

TEST_F(KRCheckListViewCommandsTests, TogglePredicatesFollowTheEditedOrSelectedItems) {
    showItems({"a", "b"});
    editItem(0, KRMakeRange(0, 0));
    EXPECT_TRUE(list->canToggleEditedOrSelectedItemsCompleted());
    EXPECT_TRUE(list->canToggleEditedOrSelectedItemsCanceled());
    selectItems(KRIndexSet{1});
    EXPECT_TRUE(list->canToggleEditedOrSelectedItemsCompleted());
    EXPECT_TRUE(list->canToggleEditedOrSelectedItemsCanceled());
}

TEST_F(KRCheckListViewCommandsTests, AllItemsHaveAStatusOnlyWhenNoneDiffers) {
    showItemsWithStatuses({1, 1, 2, 1});
    EXPECT_TRUE(list->checkListViewAllItemsAtIndexesHaveStatus(KRIndexSet{0, 1, 3}, 1));
    EXPECT_FALSE(list->checkListViewAllItemsAtIndexesHaveStatus(KRIndexSet{0, 2}, 1));
    EXPECT_TRUE(list->checkListViewAllItemsAtIndexesHaveStatus(KRIndexSet{2}, 2));
    EXPECT_FALSE(list->checkListViewAllItemsAtIndexesHaveStatus(KRIndexSet{0, 1}, 0));
    EXPECT_TRUE(list->checkListViewAllItemsAtIndexesHaveStatus(KRIndexSet(), 0));
    EXPECT_TRUE(list->checkListViewAllItemsAtIndexesHaveStatus(KRIndexSet(), 2));
}

TEST_F(KRCheckListViewCommandsTests, AllItemsHaveAStatusReadsTheRowsNotTheDataSource) {
    showItemsWithStatuses({0, 0});
    statusSource->items[0].status = 1;
    statusSource->items[1].status = 1;
    EXPECT_TRUE(list->checkListViewAllItemsAtIndexesHaveStatus(KRIndexSet{0, 1}, 0));
    EXPECT_TRUE(log->messages().isEmpty());
}

// Menu actions
// ------------------------------------------------------------------------------------------------------

TEST_F(KRCheckListViewCommandsTests, CutCopyAndDeleteAreDisabledForAMerelyEditedItem) {
    showItems({"a", "b"});
    editItem(1, KRMakeRange(0, 1));
    EXPECT_FALSE(list->canCut());
    EXPECT_FALSE(list->canCopy());
    EXPECT_FALSE(list->canDelete());
    EXPECT_FALSE(list->validateMenuItem(KRSelector("cut:")));
    EXPECT_FALSE(list->validateMenuItem(KRSelector("copy:")));
    EXPECT_FALSE(list->validateMenuItem(KRSelector("delete:")));
}

TEST_F(KRCheckListViewCommandsTests, CutCopyAndDeleteAreEnabledForASelection) {
    showItems({"a", "b"});
    selectItems(KRIndexSet{0});
    EXPECT_TRUE(list->canCut());
    EXPECT_TRUE(list->canCopy());
    EXPECT_TRUE(list->canDelete());
    EXPECT_TRUE(list->validateMenuItem(KRSelector("cut:")));
    EXPECT_TRUE(list->validateMenuItem(KRSelector("copy:")));
    EXPECT_TRUE(list->validateMenuItem(KRSelector("delete:")));
}

TEST_F(KRCheckListViewCommandsTests, CutCopyAndDeleteAreDisabledWithNothingSelected) {
    showItems({"a", "b"});
    EXPECT_FALSE(list->canCut());
    EXPECT_FALSE(list->canCopy());
    EXPECT_FALSE(list->canDelete());
}

TEST_F(KRCheckListViewCommandsTests, SelectAllIsAlwaysEnabled) {
    showItems({});
    EXPECT_TRUE(list->canSelectAll());
    EXPECT_TRUE(list->validateMenuItem(KRSelector("selectAll:")));
    showItems({"a"});
    editItem(0, KRMakeRange(0, 0));
    EXPECT_TRUE(list->canSelectAll());
}

TEST_F(KRCheckListViewCommandsTests, PasteIsEnabledOnlyWhenThePasteboardOffersItemsOrText) {
    showItems({"a"});
    std::shared_ptr<KRPasteboard> pasteboard = KRPasteboard::makeInMemory();
    KRPasteboard::setGeneralPasteboard(pasteboard);
    EXPECT_FALSE(list->canPaste()) << "an empty pasteboard";
    EXPECT_FALSE(list->validateMenuItem(KRSelector("paste:")));

    pasteboard->declareTypes({KRPasteboardTypeHTML}, nullptr);
    pasteboard->setString(QStringLiteral("<b>a</b>"), KRPasteboardTypeHTML);
    EXPECT_FALSE(list->canPaste()) << "styled text alone";

    pasteboard->declareTypes({KRPasteboardTypeString}, nullptr);
    pasteboard->setString(QStringLiteral("Milk"), KRPasteboardTypeString);
    EXPECT_TRUE(list->canPaste());
    EXPECT_TRUE(list->validateMenuItem(KRSelector("paste:")));

    pasteboard->declareTypes({KRCheckListItemsAsJSONPasteboardType}, nullptr);
    pasteboard->setString(QStringLiteral("[]"), KRCheckListItemsAsJSONPasteboardType);
    EXPECT_TRUE(list->canPaste());
}

TEST_F(KRCheckListViewCommandsTests, OtherMenuActionsAreDisabled) {
    showItems({"a", "b"});
    selectItems(KRIndexSet{0, 1});
    EXPECT_FALSE(list->validateMenuItem(KRSelector("undo:")));
    EXPECT_FALSE(list->validateMenuItem(KRSelector("moveUp:")));
    EXPECT_FALSE(list->validateMenuItem(KRSelector("insertItemTop:")));
    EXPECT_FALSE(list->validateMenuItem(KRSelector()));
}

TEST_F(KRCheckListViewCommandsTests, DeleteRemovesTheSelectionAndEditsTheItemThatFollowedIt) {
    showItems({"a", "b", "c", "d"});
    selectItems(KRIndexSet{0, 1});
    list->delete_();
    EXPECT_EQ(linesOf(dataSource->identifiers()), linesOf(QStringList{"c", "d"}));
    EXPECT_EQ(list->indexForEditedItem(), 0u);
    EXPECT_EQ(selectionInTitleAtIndex(0), "{0, 0}");
}

TEST_F(KRCheckListViewCommandsTests, CutRemovesTheSelectionLikeDelete) {
    showItems({"a", "b", "c", "d"});
    KRPasteboard::setGeneralPasteboard(KRPasteboard::makeInMemory());
    selectItems(KRIndexSet{2, 3});
    list->cut();
    EXPECT_TRUE(log->contains(QStringLiteral("removeItemsAtIndexes {2, 3}")));
    EXPECT_EQ(linesOf(dataSource->identifiers()), linesOf(QStringList{"a", "b"}));
    EXPECT_EQ(list->indexForEditedItem(), 1u) << "nothing follows the deleted block, so the last item";
    EXPECT_EQ(selectionInTitleAtIndex(1), "{6, 0}");
}

TEST_F(KRCheckListViewCommandsTests, SelectAllEndsEditingAndSelectsEveryItem) {
    showItems({"a", "b", "c"});
    editItem(1, KRMakeRange(0, 0));
    list->selectAll();
    EXPECT_EQ(list->indexForEditedItem(), KRNotFound);
    EXPECT_EQ(indexesOf(list->indexesForSelectedItems()), indexesOf(KRIndexSet{0, 1, 2}));
    EXPECT_EQ(indexesOf(selectedRows()), indexesOf(KRIndexSet{0, 1, 2}));
    EXPECT_TRUE(log->contains(QStringLiteral("didSelectItemsAtIndexes {0, 1, 2}")));
}

TEST_F(KRCheckListViewCommandsTests, TheMenuActionsReachTheListAsResponderActions) {
    showItems({"a", "b", "c"});
    for (const char* action : {"cut:", "copy:", "paste:", "delete:", "selectAll:"}) {
        EXPECT_TRUE(list->respondsToSelector(KRSelector(action))) << action;
    }
    selectItems(KRIndexSet{1});
    EXPECT_TRUE(list->tryToPerform(KRSelector("selectAll:"), nullptr));
    EXPECT_EQ(indexesOf(list->indexesForSelectedItems()), indexesOf(KRIndexSet{0, 1, 2}));
    EXPECT_TRUE(list->tryToPerform(KRSelector("delete:"), nullptr));
    EXPECT_EQ(list->numberOfItems(), 0u);
}
