#include "KRCheckListView.h"

#include "KRCheckListViewTestSupport.h"

#include <gtest/gtest.h>

#include <memory>
#include <optional>
#include <vector>

using namespace KRCheckListViewTesting;

namespace {

class KRCheckListViewOperationsTests : public KRCheckListViewTestCase {
protected:
    // Shows items with the data source that also implements the deprecated setters.
    void showItemsWithSetters(const QStringList& identifiers) {
        showItemsFrom(dataSourceWithSetters, identifiers);
    }

    std::shared_ptr<FullRecordingDataSource> dataSourceWithSetters =
        std::make_shared<FullRecordingDataSource>(log);
};

} // namespace

// Checks
// ------------------------------------------------------------------------------------------------------

TEST_F(KRCheckListViewOperationsTests, InsertIsAllowedUpToJustPastTheLastRow) {
    showItems({"a", "b", "c"});
    for (KRUInteger index : {0u, 1u, 2u, 3u}) {
        EXPECT_TRUE(list->canInsertItemAtIndex(index)) << index;
    }
    EXPECT_FALSE(list->canInsertItemAtIndex(4));
    EXPECT_TRUE(list->canInsertItemsAtIndexes(KRIndexSet{0, 3}));
    EXPECT_FALSE(list->canInsertItemsAtIndexes(KRIndexSet{1, 4}));
    EXPECT_FALSE(list->canInsertItemAtIndex(KRNotFound));
}

TEST_F(KRCheckListViewOperationsTests, InsertingNothingIsRefused) {
    showItems({"a", "b", "c"});
    EXPECT_FALSE(list->canInsertItemsAtIndexes(KRIndexSet()));
}

TEST_F(KRCheckListViewOperationsTests, RemovingAndMovingAreAlwaysAllowed) {
    showItems({"a", "b", "c"});
    EXPECT_TRUE(list->canRemoveItemsAtIndexes(KRIndexSet()));
    EXPECT_TRUE(list->canRemoveItemsAtIndexes(KRIndexSet{7, 9}));
    EXPECT_TRUE(list->canRemoveItemAtIndex(KRNotFound));
    EXPECT_TRUE(list->canMoveItemsAtIndexesToIndex(KRIndexSet(), 0));
    EXPECT_TRUE(list->canMoveItemsAtIndexesToIndex(KRIndexSet{0, 2}, 99));
    EXPECT_TRUE(list->canMoveItemsAtIndexesToIndex(KRIndexSet{5}, KRNotFound));
    EXPECT_TRUE(list->canMoveItemAtIndexToIndex(1, 1));
    EXPECT_TRUE(log->messages().isEmpty()) << "the checks ask no client";
}

// Insert, remove, move
// ------------------------------------------------------------------------------------------------------

TEST_F(KRCheckListViewOperationsTests, InsertOnADataSourceThatDoesNotReportLeavesTheRowsButSendsWillAndDid) {
    showItems({"a", "b", "c"});
    dataSource->reportsChanges = false;
    list->insertItemAtIndex(1);
    EXPECT_EQ(linesOf(log->messages()), linesOf(QStringList{QStringLiteral("willInsertItemsAtIndexes {1}"),
                                                            QStringLiteral("insertItemsAtIndexes {1}"),
                                                            QStringLiteral("didInsertItemsAtIndexes {1}")}));
    EXPECT_EQ(list->numberOfItems(), 3u);
    EXPECT_EQ(linesOf(rowIdentifiers()), linesOf(QStringList{"a", "b", "c"}));
}

TEST_F(KRCheckListViewOperationsTests, RemoveAndMoveHandTheirArgumentsOnUnchanged) {
    showItems({"a", "b", "c", "d"});
    dataSource->appliesChanges = false;
    dataSource->reportsChanges = false;
    list->removeItemsAtIndexes(KRIndexSet{0, 2});
    list->moveItemsAtIndexesToIndex(KRIndexSet{1, 2}, 4);
    list->removeItemAtIndex(3);
    list->moveItemAtIndexToIndex(2, 0);
    const QStringList expected{
        QStringLiteral("willRemoveItemsAtIndexes {0, 2}"),
        QStringLiteral("removeItemsAtIndexes {0, 2}"),
        QStringLiteral("didRemoveItemsAtIndexes {0, 2}"),
        QStringLiteral("willMoveItemsAtIndexes {1, 2} toIndex 4"),
        QStringLiteral("moveItemsAtIndexes {1, 2} toIndex 4"),
        QStringLiteral("didMoveItemsAtIndexes {1, 2} toIndex 4"),
        QStringLiteral("willRemoveItemsAtIndexes {3}"),
        QStringLiteral("removeItemsAtIndexes {3}"),
        QStringLiteral("didRemoveItemsAtIndexes {3}"),
        QStringLiteral("willMoveItemsAtIndexes {2} toIndex 0"),
        QStringLiteral("moveItemsAtIndexes {2} toIndex 0"),
        QStringLiteral("didMoveItemsAtIndexes {2} toIndex 0"),
    };
    EXPECT_EQ(linesOf(log->messages()), linesOf(expected));
    EXPECT_EQ(linesOf(rowIdentifiers()), linesOf(QStringList{"a", "b", "c", "d"}))
        << "the rows wait for the data source";
}

TEST_F(KRCheckListViewOperationsTests, OneInsertionWhileAnItemIsEditedSendsEveryMessageInOrder) {
    showItems({"a", "b", "c", "d", "e"});
    editItem(3, KRMakeRange(1, 2));
    KRCheckListItemView* editedRow = rowAt(3);

    std::optional<KRUInteger> rowsWhenAnnounced;
    std::optional<KRUInteger> rowsWhenDone;
    log->onMessage = [&](const QString& message) {
        if (message == QStringLiteral("willInsertItemsAtIndexes {1}")) {
            rowsWhenAnnounced = list->numberOfItems();
        }
        if (message == QStringLiteral("didInsertItemsAtIndexes {1}")) {
            rowsWhenDone = list->numberOfItems();
        }
    };
    list->insertItemAtIndex(1);
    log->onMessage = nullptr;

    const QStringList expected{
        QStringLiteral("willInsertItemsAtIndexes {1}"),
        QStringLiteral("insertItemsAtIndexes {1}"),
        QStringLiteral("willBeginUpdates"),
        QStringLiteral("willUpdateByInsertingItemsAtIndexes {1}"),
        QStringLiteral("willUpdateByInsertingItemsAtIndexes {1} animated false"),
        QStringLiteral("willEndEditingItemAtIndex 3"),
        QStringLiteral("didEndEditingItemAtIndex 3"),
        QStringLiteral("identifierForItemAtIndex 1"),
        QStringLiteral("statusForItemAtIndex 1"),
        QStringLiteral("titleForItemAtIndex 1"),
        QStringLiteral("willBeginEditingItemAtIndex 4"),
        QStringLiteral("didBeginEditingItemAtIndex 4"),
        QStringLiteral("didUpdateByInsertingItemsAtIndexes {1}"),
        QStringLiteral("didUpdateByInsertingItemsAtIndexes {1} animated false"),
        QStringLiteral("didChangeSizeThatFits"),
        QStringLiteral("didEndUpdates"),
        QStringLiteral("didInsertItemsAtIndexes {1}"),
    };
    EXPECT_EQ(linesOf(log->messages()), linesOf(expected));
    EXPECT_EQ(rowsWhenAnnounced, std::optional<KRUInteger>(5));
    EXPECT_EQ(rowsWhenDone, std::optional<KRUInteger>(6));
    EXPECT_EQ(linesOf(rowIdentifiers()), linesOf(QStringList{"a", "new1", "b", "c", "d", "e"}));
    EXPECT_EQ(list->indexForEditedItem(), 4u);
    EXPECT_EQ(rowAt(4), editedRow);
    EXPECT_EQ(selectionInTitleAtIndex(4), "{1, 2}");
}

TEST_F(KRCheckListViewOperationsTests, RemoveCompletesTheDataSourcesUpdateBeforeTheDidMessage) {
    showItems({"a", "b", "c"});
    list->removeItemAtIndex(1);
    const QStringList expected{
        QStringLiteral("willRemoveItemsAtIndexes {1}"),
        QStringLiteral("removeItemsAtIndexes {1}"),
        QStringLiteral("willBeginUpdates"),
        QStringLiteral("willUpdateByRemovingItemsAtIndexes {1}"),
        QStringLiteral("willUpdateByRemovingItemsAtIndexes {1} animated false"),
        QStringLiteral("didUpdateByRemovingItemsAtIndexes {1}"),
        QStringLiteral("didUpdateByRemovingItemsAtIndexes {1} animated false"),
        QStringLiteral("didChangeSizeThatFits"),
        QStringLiteral("didEndUpdates"),
        QStringLiteral("didRemoveItemsAtIndexes {1}"),
    };
    EXPECT_EQ(linesOf(log->messages()), linesOf(expected));
    EXPECT_EQ(linesOf(rowIdentifiers()), linesOf(QStringList{"a", "c"}));
}

TEST_F(KRCheckListViewOperationsTests, MovingTheFirstOfFourToThreeThroughTheDataSourceGivesBCAD) {
    showItems({"a", "b", "c", "d"});
    list->moveItemAtIndexToIndex(0, 3);
    EXPECT_EQ(linesOf(dataSource->identifiers()), linesOf(QStringList{"b", "c", "a", "d"}));
    EXPECT_EQ(linesOf(rowIdentifiers()), linesOf(QStringList{"b", "c", "a", "d"}));
    EXPECT_EQ(linesOf(log->startingWith({QStringLiteral("willMove"), QStringLiteral("didMove")})),
              linesOf(QStringList{QStringLiteral("willMoveItemsAtIndexes {0} toIndex 3"),
                                  QStringLiteral("didMoveItemsAtIndexes {0} toIndex 3")}));
}

TEST_F(KRCheckListViewOperationsTests, MovingTheLastOfFourToZeroThroughTheDataSourceGivesDABC) {
    showItems({"a", "b", "c", "d"});
    list->moveItemsAtIndexesToIndex(KRIndexSet{3}, 0);
    EXPECT_EQ(linesOf(rowIdentifiers()), linesOf(QStringList{"d", "a", "b", "c"}));
}

TEST_F(KRCheckListViewOperationsTests, MovingTheSecondOfFourToOneOrTwoThroughTheDataSourceKeepsTheOrder) {
    showItems({"a", "b", "c", "d"});
    list->moveItemAtIndexToIndex(1, 1);
    EXPECT_EQ(linesOf(rowIdentifiers()), linesOf(QStringList{"a", "b", "c", "d"}));
    list->moveItemAtIndexToIndex(1, 2);
    EXPECT_EQ(linesOf(rowIdentifiers()), linesOf(QStringList{"a", "b", "c", "d"}));
}

// Status and title
// ------------------------------------------------------------------------------------------------------

TEST_F(KRCheckListViewOperationsTests, SetStatusOnFourAndOneGoesWillSetDidForOneThenForFour) {
    showItemsWithSetters({"a", "b", "c", "d", "e"});
    KRLogCapture quiet;
    list->setStatusForItemsAtIndexes(2, KRIndexSet{4, 1});
    const QStringList expected{
        QStringLiteral("willSetStatusForItemAtIndex 1"), QStringLiteral("setStatus 2 forItemAtIndex 1"),
        QStringLiteral("didSetStatusForItemAtIndex 1"),  QStringLiteral("willSetStatusForItemAtIndex 4"),
        QStringLiteral("setStatus 2 forItemAtIndex 4"),  QStringLiteral("didSetStatusForItemAtIndex 4"),
    };
    EXPECT_EQ(linesOf(log->messages()), linesOf(expected));
    EXPECT_EQ(dataSourceWithSetters->items[1].status, 2u);
    EXPECT_EQ(dataSourceWithSetters->items[4].status, 2u);
    EXPECT_EQ(rowAt(1)->status(), 0u) << "the row waits for the data source to report the change";
    EXPECT_EQ(rowAt(4)->status(), 0u);
}

TEST_F(KRCheckListViewOperationsTests, SetStatusOfOneItemIsTheSetFormWithOneIndex) {
    showItemsWithSetters({"a", "b", "c"});
    KRLogCapture quiet;
    list->setStatusForItemAtIndex(1, 2);
    EXPECT_EQ(linesOf(log->messages()), linesOf(QStringList{QStringLiteral("willSetStatusForItemAtIndex 2"),
                                                            QStringLiteral("setStatus 1 forItemAtIndex 2"),
                                                            QStringLiteral("didSetStatusForItemAtIndex 2")}));
}

TEST_F(KRCheckListViewOperationsTests, SetTitleReachesTheDataSourceButTheRowOnlyWithAReloadUpdate) {
    showItemsWithSetters({"a", "b", "c"});
    KRLogCapture quiet;
    list->setTitleForItemAtIndex(QStringLiteral("Renamed"), 1);
    EXPECT_EQ(linesOf(log->messages()),
              linesOf(QStringList{QStringLiteral("willSetTitleForItemAtIndex 1"),
                                  QStringLiteral("setTitle \"Renamed\" forItemAtIndex 1"),
                                  QStringLiteral("didSetTitleForItemAtIndex 1")}));
    EXPECT_EQ(dataSourceWithSetters->items[1].title, QStringLiteral("Renamed"));
    EXPECT_EQ(rowAt(1)->title(), QStringLiteral("Item b"));

    list->beginUpdates();
    list->updateByReloadingItemAtIndex(1);
    list->endUpdates();
    EXPECT_EQ(rowAt(1)->title(), QStringLiteral("Renamed"));
}

TEST_F(KRCheckListViewOperationsTests, NoOperationOpensAnUndoGroup) {
    showItemsWithSetters({"a", "b", "c", "d"});
    KRLogCapture quiet;
    list->insertItemAtIndex(0);
    list->removeItemAtIndex(0);
    list->moveItemAtIndexToIndex(0, 2);
    list->setStatusForItemAtIndex(1, 0);
    list->setTitleForItemAtIndex(QStringLiteral("x"), 0);
    EXPECT_FALSE(log->messages().isEmpty());
    EXPECT_EQ(log->count(QStringLiteral("beginGrouping")), 0);
    EXPECT_EQ(log->count(QStringLiteral("endGrouping")), 0);
}
