#include "KRCheckListView.h"

#include "KRCheckListDefaults.h"
#include "KRCheckListViewTestSupport.h"

#include <gtest/gtest.h>

#include <limits>
#include <memory>
#include <optional>
#include <random>
#include <vector>

using namespace KRCheckListViewTesting;

namespace {

const QStringList kEditingMessages{
    QStringLiteral("willBeginEditingItemAtIndex"),
    QStringLiteral("didBeginEditingItemAtIndex"),
    QStringLiteral("willEndEditingItemAtIndex"),
    QStringLiteral("didEndEditingItemAtIndex"),
};

class KRCheckListViewUpdatesTests : public KRCheckListViewTestCase {
protected:
    // Makes the list the window's first responder with nothing edited; the log starts empty afterwards.
    void focusList() {
        window.makeFirstResponder(list.get());
        KRRunLoop::main().runUntilIdle();
        list->endEditing();
        KRRunLoop::main().runUntilIdle();
        log->clear();
    }

    void reloadUpdate(const KRIndexSet& indexes) {
        list->beginUpdates();
        list->updateByReloadingItemsAtIndexes(indexes);
        list->endUpdates();
    }
    // Moves the data source's items the way the list's update describes them, then reports the move with
    // the final-index form.
    void moveToFinalIndex(KRUInteger index, KRUInteger finalIndex, KRUInteger toIndex) {
        dataSource->items = RecordingDataSource::itemsMoved(dataSource->items, KRIndexSet{index}, toIndex);
        list->beginUpdates();
        list->updateByMovingItemAtIndexToFinalIndex(index, finalIndex);
        list->endUpdates();
    }

    // The editing messages, in order.
    QStringList editingMessages() const { return log->startingWith(kEditingMessages); }
    // The lines that begin with one of the prefixes, leaving out the deprecated twins.
    QStringList messagesWithoutTwins(const QStringList& prefixes) const {
        QStringList lines;
        for (const QString& line : log->startingWith(prefixes)) {
            if (!line.contains(QStringLiteral(" animated "))) {
                lines << line;
            }
        }
        return lines;
    }

    KRCheckListItemView* rowWithIdentifier(const QString& identifier) const {
        return list->checkListItemViewsByIdentifier().value(QJsonValue(identifier)).get();
    }

    // The height every row is given by a reload: the dummy row's fitting height for a two-glyph title.
    double measuredMinimumHeight() const {
        const double largest = std::numeric_limits<double>::max();
        return list->dummyCheckListItemView()->sizeThatFits(KRSizeMake(largest, largest)).height;
    }
};

} // namespace

// Reloading
// ------------------------------------------------------------------------------------------------------

TEST_F(KRCheckListViewUpdatesTests, ReloadAsksTheCountOnceThenEachItemsIdentifierStatusAndTitle) {
    showItems({"a", "b", "c"});
    list->reloadItems();
    const QStringList expected{
        QStringLiteral("willReloadItems"),
        QStringLiteral("numberOfItems"),
        QStringLiteral("identifierForItemAtIndex 0"),
        QStringLiteral("statusForItemAtIndex 0"),
        QStringLiteral("titleForItemAtIndex 0"),
        QStringLiteral("identifierForItemAtIndex 1"),
        QStringLiteral("statusForItemAtIndex 1"),
        QStringLiteral("titleForItemAtIndex 1"),
        QStringLiteral("identifierForItemAtIndex 2"),
        QStringLiteral("statusForItemAtIndex 2"),
        QStringLiteral("titleForItemAtIndex 2"),
        QStringLiteral("didReloadItems"),
    };
    EXPECT_EQ(linesOf(log->messages()), linesOf(expected));
}

TEST_F(KRCheckListViewUpdatesTests, FirstReloadLaysOutAndReportsTheNewSizeBeforeDidReload) {
    dataSource->items = itemsWithIdentifiers({"a", "b", "c"});
    list->setDataSource(dataSource);
    list->setDelegate(delegate);

    std::optional<bool> reloadingWhenAnnounced;
    std::optional<bool> reloadingWhenDone;
    std::vector<KRRect> framesWhenDone;
    std::vector<KRRect> expectedFrames;
    log->onMessage = [&](const QString& message) {
        if (message == QStringLiteral("willReloadItems")) {
            reloadingWhenAnnounced = list->isReloading();
        }
        if (message == QStringLiteral("didReloadItems")) {
            reloadingWhenDone = list->isReloading();
            expectedFrames = list->checkListViewLayoutForSize(list->bounds().size).itemViewFrames;
            for (const std::shared_ptr<KRCheckListItemView>& itemView : list->checkListItemViews()) {
                framesWhenDone.push_back(itemView->frame());
            }
        }
    };
    list->reloadItems();
    log->onMessage = nullptr;

    EXPECT_EQ(reloadingWhenAnnounced, std::optional<bool>(false));
    EXPECT_EQ(reloadingWhenDone, std::optional<bool>(true));
    EXPECT_FALSE(list->isReloading());
    ASSERT_EQ(framesWhenDone.size(), 3u);
    EXPECT_EQ(framesWhenDone, expectedFrames) << "the rows were laid out before the did-message";
    EXPECT_GT(framesWhenDone[1].origin.y, 0.0);
    const QStringList& messages = log->messages();
    ASSERT_GE(messages.size(), 2);
    EXPECT_EQ(
        linesOf(messages.mid(messages.size() - 2)),
        linesOf(QStringList{QStringLiteral("didChangeSizeThatFits"), QStringLiteral("didReloadItems")}));
}

TEST_F(KRCheckListViewUpdatesTests, ReloadSetsEveryRowsPlaceholderAgainAfterTheRowTookItsValues) {
    // A row's placeholder keeps the attributes of the moment it was last set, and a new row has none
    // until its first update: only setting the placeholder again after the row's values gives it the
    // placeholder colour.
    dataSource->items = itemsWithIdentifiers({"a", "b", "c"});
    dataSource->items[0].title = QString();
    list->setDataSource(dataSource);
    list->setDelegate(delegate);

    std::vector<std::optional<QColor>> placeholderColoursWhenDone;
    log->onMessage = [&](const QString& message) {
        if (message == QStringLiteral("didReloadItems")) {
            for (const std::shared_ptr<KRCheckListItemView>& itemView : list->checkListItemViews()) {
                placeholderColoursWhenDone.push_back(itemView->titleTextField()
                                                         ->placeholderAttributedString()
                                                         .leadingAttributes()
                                                         .foregroundColor);
            }
        }
    };
    list->reloadItems();
    log->onMessage = nullptr;

    // The first row's values (empty title, status 0) are a new row's own, so nothing had scheduled its
    // first update when the placeholders were set: it has no attributes to give yet.
    ASSERT_EQ(placeholderColoursWhenDone.size(), 3u);
    EXPECT_EQ(placeholderColoursWhenDone[0], std::nullopt);
    EXPECT_EQ(placeholderColoursWhenDone[1], std::optional<QColor>(KRCheckListDefaults::placeholderColor()));
    EXPECT_EQ(placeholderColoursWhenDone[2], std::optional<QColor>(KRCheckListDefaults::placeholderColor()));
}

TEST_F(KRCheckListViewUpdatesTests, ReloadLeavesEveryRowLaidOutAtItsFittingSizeAndTheListMarkedWhole) {
    dataSource->items = itemsWithIdentifiers({"a", "b", "c"});
    dataSource->items[1].title =
        QStringLiteral("A title long enough to wrap onto a second line in a list this "
                       "narrow, and then some more words to be sure of it");
    list->setDataSource(dataSource);
    window.updateIfNeeded();
    window.takeDirtyRect();
    list->reloadItems();
    const KRSize listSize = list->bounds().size;
    double y = 0.0;
    for (const std::shared_ptr<KRCheckListItemView>& row : list->checkListItemViews()) {
        const KRSize fitting = row->sizeThatFits(listSize);
        EXPECT_EQ(row->frame(), (KRRect{KRPoint{0.0, y}, fitting}));
        EXPECT_FALSE(row->needsLayout());
        const KRCheckListItemViewLayout layout = row->checkListItemViewLayoutForSize(fitting);
        EXPECT_EQ(row->titleTextField()->frame(), layout.titleTextFieldFrame);
        EXPECT_EQ(row->handleButtonView()->frame(), layout.handleButtonViewFrame);
        EXPECT_EQ(row->bottomDividerView()->frame(), layout.bottomDividerViewFrame);
        y += fitting.height - KRCheckListDefaults::borderWidth();
    }
    EXPECT_GT(rowAt(1)->frame().size.height, rowAt(0)->frame().size.height);
    EXPECT_TRUE(KRRectContainsRect(window.takeDirtyRect(), list->convertRectToView(list->bounds(), nullptr)));
}

TEST_F(KRCheckListViewUpdatesTests, ReloadInsideAnAnimatedBlockGrowsTheNewRowsFromNothing) {
    dataSource->items = itemsWithIdentifiers({"a", "b"});
    list->setDataSource(dataSource);
    KRView::animate([&](EZAnimationContext&) { list->reloadItems(); });
    const KRCheckListItemView& second = *rowAt(1);
    EXPECT_GT(second.frame().size.height, 0.0);
    EXPECT_EQ(second.presentationFrame(), KRRectZero);
    EXPECT_TRUE(second.titleTextField()->hasRunningAnimations());
    KRClock::advance(1.0);
    EXPECT_EQ(second.presentationFrame(), second.frame());
}

TEST_F(KRCheckListViewUpdatesTests, ReloadGivesEveryRowTheMinimumHeightOfTheDummyRowTitledAq) {
    showItems({"a", "b", "c"});
    EXPECT_EQ(list->dummyCheckListItemView()->title(), QStringLiteral("Aq"));
    EXPECT_EQ(list->dummyCheckListItemView()->superview(), nullptr);
    const double minimumHeight = measuredMinimumHeight();
    EXPECT_GT(minimumHeight, 0.0);
    for (const std::shared_ptr<KRCheckListItemView>& itemView : list->checkListItemViews()) {
        EXPECT_EQ(itemView->minHeight(), minimumHeight);
    }
}

TEST_F(KRCheckListViewUpdatesTests, ReloadBuildsFreshRowsAndReleasesTheOldOnes) {
    showItems({"a", "b"});
    std::vector<std::weak_ptr<KRCheckListItemView>> oldRows;
    for (const std::shared_ptr<KRCheckListItemView>& itemView : list->checkListItemViews()) {
        oldRows.push_back(itemView);
    }
    dataSource->items = itemsWithIdentifiers({"a", "b", "c"});
    list->reloadItems();

    ASSERT_EQ(list->numberOfItems(), 3u);
    EXPECT_EQ(linesOf(rowIdentifiers()), linesOf(QStringList{"a", "b", "c"}));
    for (const std::weak_ptr<KRCheckListItemView>& oldRow : oldRows) {
        EXPECT_TRUE(oldRow.expired());
    }
    for (const std::shared_ptr<KRCheckListItemView>& itemView : list->checkListItemViews()) {
        EXPECT_EQ(itemView->superview(), list.get());
    }
    EXPECT_EQ(list->subviews().size(), 4u) << "three rows and the placeholder container";
}

TEST_F(KRCheckListViewUpdatesTests, ReloadKeepsBothRowsOfARepeatedIdentifierAndMapsItToTheLater) {
    showItems({"a", "b", "a"});
    ASSERT_EQ(list->numberOfItems(), 3u);
    EXPECT_EQ(list->checkListItemViewsByIdentifier().size(), 2);
    EXPECT_EQ(rowWithIdentifier(QStringLiteral("a")), rowAt(2));
    EXPECT_EQ(rowWithIdentifier(QStringLiteral("b")), rowAt(1));
}

TEST_F(KRCheckListViewUpdatesTests, RegistryKeepsTheIdentifiersOfAReloadWhenAReloadUpdateChangesOne) {
    showItems({"a", "b"});
    dataSource->items[1].identifier = QStringLiteral("c");
    reloadUpdate(KRIndexSet{1});
    EXPECT_EQ(list->identifierForItemAtIndex(1), QJsonValue(QStringLiteral("c")));
    EXPECT_EQ(list->checkListItemViewsByIdentifier().size(), 2);
    EXPECT_EQ(rowWithIdentifier(QStringLiteral("b")), rowAt(1)) << "the update leaves the registry alone";
    EXPECT_FALSE(list->checkListItemViewsByIdentifier().contains(QJsonValue(QStringLiteral("c"))));
}

TEST_F(KRCheckListViewUpdatesTests, RemovingTheLaterRowOfARepeatedIdentifierAfterAReloadDropsItsEntry) {
    showItems({"a", "b", "a"});
    dataSource->checkListViewRemoveItemsAtIndexes(list.get(), KRIndexSet{2});
    EXPECT_EQ(linesOf(rowIdentifiers()), linesOf(QStringList{"a", "b"}));
    EXPECT_EQ(list->checkListItemViewsByIdentifier().size(), 1);
    EXPECT_FALSE(list->checkListItemViewsByIdentifier().contains(QJsonValue(QStringLiteral("a"))));
    EXPECT_EQ(rowWithIdentifier(QStringLiteral("b")), rowAt(1));
}

TEST_F(KRCheckListViewUpdatesTests, InsertingARepeatedIdentifierAfterAReloadMapsItToTheNewRow) {
    showItems({"a", "b"});
    dataSource->items.insert(dataSource->items.begin(),
                             Item{QStringLiteral("b"), 0, QStringLiteral("New b")});
    list->beginUpdates();
    list->updateByInsertingItemAtIndex(0);
    list->endUpdates();
    EXPECT_EQ(list->checkListItemViewsByIdentifier().size(), 2);
    EXPECT_EQ(rowWithIdentifier(QStringLiteral("b")), rowAt(0));
    EXPECT_EQ(rowWithIdentifier(QStringLiteral("a")), rowAt(1));
}

TEST_F(KRCheckListViewUpdatesTests, ReloadGivesEveryRowAnEmptyPlaceholderAndTheDividersOfARowAtRestUntitledRowsIncluded) {
    dataSource->items = itemsWithIdentifiers({"a", "b", "c"});
    dataSource->items[1].title = QString();
    list->setDataSource(dataSource);
    list->reloadItems();
    for (KRUInteger index = 0; index < list->numberOfItems(); ++index) {
        EXPECT_EQ(rowAt(index)->placeholder(), QString()) << index;
        EXPECT_EQ(rowAt(index)->drawsTopDivider(), index == 0) << index;
        EXPECT_TRUE(rowAt(index)->drawsBottomDivider()) << index;
    }
}

TEST_F(KRCheckListViewUpdatesTests, ReloadOfAListWithoutWidthLeavesOnlyTheLastRowsBottomDivider) {
    list->setFrame(KRRectMake(0, 0, 0, 200));
    dataSource->items = itemsWithIdentifiers({"a", "b", "c"});
    list->setDataSource(dataSource);
    list->reloadItems();
    ASSERT_EQ(rowAt(0)->frame().size.width, 0.0);
    EXPECT_TRUE(rowAt(0)->drawsTopDivider());
    EXPECT_FALSE(rowAt(0)->drawsBottomDivider()) << "a row without an area draws no hairline below it";
    EXPECT_FALSE(rowAt(1)->drawsBottomDivider());
    EXPECT_TRUE(rowAt(2)->drawsBottomDivider()) << "the last row always does";
}

TEST_F(KRCheckListViewUpdatesTests, ReloadThenResizeLaysTheRowsOutAtTheNewWidth) {
    showItems({"a", "b", "c"});
    list->setFrame(KRRectMake(0, 0, 250, 300));
    list->layoutIfNeeded();
    double y = 0.0;
    for (const std::shared_ptr<KRCheckListItemView>& row : list->checkListItemViews()) {
        const KRSize fitting = row->sizeThatFits(list->bounds().size);
        EXPECT_EQ(fitting.width, 250.0);
        EXPECT_EQ(row->frame(), (KRRect{KRPoint{0.0, y}, fitting}));
        y += fitting.height - KRCheckListDefaults::borderWidth();
    }
}

TEST_F(KRCheckListViewUpdatesTests, ReloadKeepsTheSelectedIndexesButDrawsTheNewRowsUnselected) {
    showItems({"a", "b", "c", "d"});
    list->selectItemsAtIndexesByExtendingSelection(KRIndexSet{1, 2}, false);
    ASSERT_EQ(indexesOf(selectedRows()), indexesOf(KRIndexSet{1, 2}));
    const KRInteger pivot = list->pivotIndex();
    list->reloadItems();
    EXPECT_EQ(indexesOf(list->indexesForSelectedItems()), indexesOf(KRIndexSet{1, 2}));
    EXPECT_TRUE(selectedRows().isEmpty());
    EXPECT_EQ(list->pivotIndex(), pivot);
}

TEST_F(KRCheckListViewUpdatesTests,
       ReloadWhileTheSixthOfTenIsEditedEditsTheLastOfThreeWithTheSavedSelection) {
    showItems({"a", "b", "c", "d", "e", "f", "g", "h", "i", "j"});
    editItem(5, KRMakeRange(2, 3));
    ASSERT_EQ(list->indexForEditedItem(), 5u);
    ASSERT_EQ(selectionInTitleAtIndex(5), "{2, 3}");

    std::optional<KRUInteger> editedIndexWhenDone;
    log->onMessage = [&](const QString& message) {
        if (message == QStringLiteral("didReloadItems")) {
            editedIndexWhenDone = list->indexForEditedItem();
        }
    };
    dataSource->items = itemsWithIdentifiers({"x", "y", "z"});
    list->reloadItems();
    log->onMessage = nullptr;

    EXPECT_EQ(list->indexForEditedItem(), 2u);
    EXPECT_EQ(indexesOf(editedRows()), indexesOf(KRIndexSet{2}));
    EXPECT_EQ(selectionInTitleAtIndex(2), "{2, 3}");
    EXPECT_EQ(editedIndexWhenDone, std::optional<KRUInteger>(KRNotFound))
        << "the edit was dropped during the reload";
    EXPECT_EQ(linesOf(log->startingWith(kEditingMessages + QStringList{QStringLiteral("willReloadItems"),
                                                                       QStringLiteral("didReloadItems")})),
              linesOf(QStringList{QStringLiteral("willReloadItems"), QStringLiteral("didReloadItems"),
                                  QStringLiteral("willBeginEditingItemAtIndex 2"),
                                  QStringLiteral("didBeginEditingItemAtIndex 2")}))
        << "no end-editing messages, and the edit begins again after the did-message";
}

TEST_F(KRCheckListViewUpdatesTests, ReloadWhileEditingWithNoItemsLeftBeginsNoEdit) {
    showItems({"a", "b", "c"});
    editItem(1, KRMakeRange(0, 2));
    dataSource->items.clear();
    list->reloadItems();
    EXPECT_EQ(list->numberOfItems(), 0u);
    EXPECT_EQ(list->indexForEditedItem(), KRNotFound);
    EXPECT_EQ(linesOf(editingMessages()), linesOf(QStringList()));
}

TEST_F(KRCheckListViewUpdatesTests, ReloadWhileEditingKeepsTheEditedIndexWhenItStillExists) {
    showItems({"a", "b", "c"});
    editItem(1, KRMakeRange(1, 0));
    dataSource->items = itemsWithIdentifiers({"z", "y", "x", "w"});
    list->reloadItems();
    EXPECT_EQ(list->indexForEditedItem(), 1u);
    EXPECT_EQ(rowAt(1)->objectValue().toString(), QStringLiteral("y")) << "the edit follows the index";
    EXPECT_EQ(selectionInTitleAtIndex(1), "{1, 0}");
}

// The bracket
// ------------------------------------------------------------------------------------------------------

TEST_F(KRCheckListViewUpdatesTests, EndUpdatesWithoutBeginUpdatesFails) {
    showItems({"a"});
    const std::optional<AssertionFailure> failure = assertionFailureOf([&] { list->endUpdates(); });
    ASSERT_TRUE(failure.has_value());
    EXPECT_EQ(failure->message, QStringLiteral("Can't end updates, no upgrade in progress"));
    EXPECT_EQ(failure->method, QStringLiteral("endUpdates"));
    EXPECT_EQ(failure->file, QStringLiteral("KRCheckListView"));
    EXPECT_EQ(failure->object, static_cast<const KRObject*>(list.get()));
    EXPECT_FALSE(log->contains(QStringLiteral("didEndUpdates")));
    EXPECT_FALSE(list->isUpdating());
}

TEST_F(KRCheckListViewUpdatesTests, TwoBeginUpdatesInARowFail) {
    showItems({"a"});
    list->beginUpdates();
    const std::optional<AssertionFailure> failure = assertionFailureOf([&] { list->beginUpdates(); });
    ASSERT_TRUE(failure.has_value());
    EXPECT_EQ(failure->message, QStringLiteral("Can't begin updates, an update is already in progress"));
    EXPECT_EQ(failure->method, QStringLiteral("beginUpdates"));
    EXPECT_EQ(failure->file, QStringLiteral("KRCheckListView"));
    EXPECT_EQ(failure->object, static_cast<const KRObject*>(list.get()));
    EXPECT_EQ(log->count(QStringLiteral("willBeginUpdates")), 1);
    EXPECT_TRUE(list->isUpdating());
    list->endUpdates();
    EXPECT_FALSE(list->isUpdating());
}

TEST_F(KRCheckListViewUpdatesTests, EveryUpdateOutsideABracketFailsWithItsOwnTextAndChangesNothing) {
    showItems({"a", "b", "c"});
    struct Case {
        QString method;
        QString message;
        std::function<void()> update;
    };
    const std::vector<Case> cases{
        {QStringLiteral("updateByReloadingItemsAtIndexes:"),
         QStringLiteral("Can't update by reloading items, no update in progress"),
         [&] { list->updateByReloadingItemsAtIndexes(KRIndexSet{0}); }},
        {QStringLiteral("updateByInsertingItemsAtIndexes:"),
         QStringLiteral("Can't update by inserting items, no update in progress"),
         [&] { list->updateByInsertingItemsAtIndexes(KRIndexSet{0}); }},
        {QStringLiteral("updateByRemovingItemsAtIndexes:"),
         QStringLiteral("Can't update by removing items, no update in progress"),
         [&] { list->updateByRemovingItemsAtIndexes(KRIndexSet{0}); }},
        {QStringLiteral("updateByMovingItemsAtIndexes:toIndex:"),
         QStringLiteral("Can't update by moving items, no update in progress"),
         [&] { list->updateByMovingItemsAtIndexesToIndex(KRIndexSet{0}, 2); }},
    };
    for (const Case& testCase : cases) {
        SCOPED_TRACE(testCase.method.toStdString());
        const std::optional<AssertionFailure> failure = assertionFailureOf(testCase.update);
        ASSERT_TRUE(failure.has_value());
        EXPECT_EQ(failure->message, testCase.message);
        EXPECT_EQ(failure->method, testCase.method);
        EXPECT_EQ(failure->file, QStringLiteral("KRCheckListView"));
        EXPECT_EQ(failure->object, static_cast<const KRObject*>(list.get()));
    }
    EXPECT_EQ(linesOf(log->messages()), linesOf(QStringList())) << "nothing was announced or asked";
    EXPECT_EQ(linesOf(rowIdentifiers()), linesOf(QStringList{"a", "b", "c"}));
}

TEST_F(KRCheckListViewUpdatesTests, BracketSetsTheFlagBeforeItsWillMessageAndClearsItBeforeItsDidMessage) {
    showItems({"a", "b"});
    std::vector<std::pair<QString, bool>> updatingWhenSent;
    log->onMessage = [&](const QString& message) {
        updatingWhenSent.emplace_back(message, list->isUpdating());
    };
    list->beginUpdates();
    dataSource->items.push_back(Item{QStringLiteral("c"), 0, QStringLiteral("Item c")});
    list->updateByInsertingItemAtIndex(2);
    list->endUpdates();
    log->onMessage = nullptr;

    const std::vector<std::pair<QString, bool>> expected{
        {QStringLiteral("willBeginUpdates"), true},
        {QStringLiteral("willUpdateByInsertingItemsAtIndexes {2}"), true},
        {QStringLiteral("willUpdateByInsertingItemsAtIndexes {2} animated false"), true},
        {QStringLiteral("identifierForItemAtIndex 2"), true},
        {QStringLiteral("statusForItemAtIndex 2"), true},
        {QStringLiteral("titleForItemAtIndex 2"), true},
        {QStringLiteral("didUpdateByInsertingItemsAtIndexes {2}"), true},
        {QStringLiteral("didUpdateByInsertingItemsAtIndexes {2} animated false"), true},
        {QStringLiteral("didChangeSizeThatFits"), true},
        {QStringLiteral("didEndUpdates"), false},
    };
    EXPECT_EQ(updatingWhenSent, expected);
}

TEST_F(KRCheckListViewUpdatesTests, DelegateSeesTheOldRowsBeforeAnUpdateAndTheNewRowsAfterIt) {
    showItems({"a", "b", "c"});
    std::vector<std::pair<QString, QStringList>> rowsWhenSent;
    log->onMessage = [&](const QString& message) {
        if (message.startsWith(QStringLiteral("willUpdateBy")) ||
            message.startsWith(QStringLiteral("didUpdateBy"))) {
            if (!message.contains(QStringLiteral(" animated "))) {
                rowsWhenSent.emplace_back(message, rowIdentifiers());
            }
        }
    };
    dataSource->checkListViewInsertItemsAtIndexes(list.get(), KRIndexSet{1});
    dataSource->checkListViewRemoveItemsAtIndexes(list.get(), KRIndexSet{0});
    log->onMessage = nullptr;

    const std::vector<std::pair<QString, QStringList>> expected{
        {QStringLiteral("willUpdateByInsertingItemsAtIndexes {1}"), QStringList{"a", "b", "c"}},
        {QStringLiteral("didUpdateByInsertingItemsAtIndexes {1}"), QStringList{"a", "new1", "b", "c"}},
        {QStringLiteral("willUpdateByRemovingItemsAtIndexes {0}"), QStringList{"a", "new1", "b", "c"}},
        {QStringLiteral("didUpdateByRemovingItemsAtIndexes {0}"), QStringList{"new1", "b", "c"}},
    };
    ASSERT_EQ(rowsWhenSent.size(), expected.size());
    for (std::size_t index = 0; index < expected.size(); ++index) {
        EXPECT_EQ(linesOf(QStringList{rowsWhenSent[index].first} + rowsWhenSent[index].second),
                  linesOf(QStringList{expected[index].first} + expected[index].second));
    }
}

TEST_F(KRCheckListViewUpdatesTests, UpdatesMarkLayoutAndEndUpdatesLaysOut) {
    showItems({"a", "b"});
    list->beginUpdates();
    dataSource->items.insert(dataSource->items.begin(),
                             Item{QStringLiteral("c"), 0, QStringLiteral("Item c")});
    list->updateByInsertingItemAtIndex(0);
    EXPECT_TRUE(list->needsLayout());
    list->endUpdates();
    EXPECT_FALSE(list->needsLayout());
    const std::vector<KRRect> expected = list->checkListViewLayoutForSize(list->bounds().size).itemViewFrames;
    ASSERT_EQ(expected.size(), 3u);
    for (KRUInteger index = 0; index < 3; ++index) {
        EXPECT_EQ(rowAt(index)->frame(), expected[index]) << index;
    }
}

// Inserting
// ------------------------------------------------------------------------------------------------------

TEST_F(KRCheckListViewUpdatesTests, InsertingTwoItemsAtZeroAndTwoIntoAAndBGivesNewANewB) {
    showItems({"a", "b"});
    dataSource->checkListViewInsertItemsAtIndexes(list.get(), KRIndexSet{0, 2});
    EXPECT_EQ(linesOf(rowIdentifiers()), linesOf(QStringList{"new1", "a", "new2", "b"}));
    EXPECT_EQ(list->checkListItemViewsByIdentifier().size(), 4);
    for (KRUInteger index = 0; index < 4; ++index) {
        EXPECT_EQ(rowWithIdentifier(rowIdentifiers()[static_cast<int>(index)]), rowAt(index)) << index;
    }
}

TEST_F(KRCheckListViewUpdatesTests, InsertAsksOnlyTheNewItemsAndKeepsTheOtherRows) {
    showItems({"a", "b"});
    KRCheckListItemView* rowA = rowAt(0);
    KRCheckListItemView* rowB = rowAt(1);
    const double minimumHeight = rowA->minHeight();
    dataSource->checkListViewInsertItemsAtIndexes(list.get(), KRIndexSet{0, 2});

    EXPECT_EQ(linesOf(messagesWithoutTwins({QStringLiteral("willUpdateBy"), QStringLiteral("didUpdateBy"),
                                            QStringLiteral("identifierFor"), QStringLiteral("statusFor"),
                                            QStringLiteral("titleFor")})),
              linesOf(QStringList{
                  QStringLiteral("willUpdateByInsertingItemsAtIndexes {0, 2}"),
                  QStringLiteral("identifierForItemAtIndex 0"), QStringLiteral("statusForItemAtIndex 0"),
                  QStringLiteral("titleForItemAtIndex 0"), QStringLiteral("identifierForItemAtIndex 2"),
                  QStringLiteral("statusForItemAtIndex 2"), QStringLiteral("titleForItemAtIndex 2"),
                  QStringLiteral("didUpdateByInsertingItemsAtIndexes {0, 2}")}));
    EXPECT_EQ(rowAt(1), rowA);
    EXPECT_EQ(rowAt(3), rowB);
    for (KRUInteger index : {0u, 2u}) {
        SCOPED_TRACE(index);
        EXPECT_EQ(rowAt(index)->superview(), list.get());
        EXPECT_EQ(rowAt(index)->delegate(), static_cast<KRCheckListItemViewDelegate*>(list.get()));
        EXPECT_EQ(rowAt(index)->backgroundColor(), list->backgroundColor());
        EXPECT_EQ(rowAt(index)->minHeight(), 0.0) << "only a reload gives rows the minimum height";
    }
    EXPECT_EQ(rowA->minHeight(), minimumHeight);
}

TEST_F(KRCheckListViewUpdatesTests, InsertLeavesTheSelectedIndexesToTheClient) {
    showItems({"a", "b", "c"});
    list->selectItemsAtIndexesByExtendingSelection(KRIndexSet{1}, false);
    dataSource->checkListViewInsertItemsAtIndexes(list.get(), KRIndexSet{0});
    EXPECT_EQ(indexesOf(list->indexesForSelectedItems()), indexesOf(KRIndexSet{1}));
}

TEST_F(KRCheckListViewUpdatesTests, InsertAboveTheEditedItemMovesTheEditWithItsSelection) {
    showItems({"a", "b", "c"});
    editItem(2, KRMakeRange(1, 3));
    KRCheckListItemView* editedRow = rowAt(2);
    dataSource->checkListViewInsertItemsAtIndexes(list.get(), KRIndexSet{0});

    EXPECT_EQ(list->indexForEditedItem(), 3u);
    EXPECT_EQ(rowAt(3), editedRow);
    EXPECT_EQ(indexesOf(editedRows()), indexesOf(KRIndexSet{3}));
    EXPECT_EQ(selectionInTitleAtIndex(3), "{1, 3}");
    EXPECT_EQ(linesOf(editingMessages()),
              linesOf(QStringList{QStringLiteral("willEndEditingItemAtIndex 2"),
                                  QStringLiteral("didEndEditingItemAtIndex 2"),
                                  QStringLiteral("willBeginEditingItemAtIndex 3"),
                                  QStringLiteral("didBeginEditingItemAtIndex 3")}));
}

// Removing
// ------------------------------------------------------------------------------------------------------

TEST_F(KRCheckListViewUpdatesTests, RemovingTheEditedItemEndsTheEditWithoutRestartingIt) {
    showItems({"a", "b", "c", "d"});
    editItem(2, KRMakeRange(1, 2));
    std::shared_ptr<KRCheckListItemView> removedRow = list->checkListItemViews()[2];
    dataSource->checkListViewRemoveItemsAtIndexes(list.get(), KRIndexSet{2});

    EXPECT_EQ(linesOf(rowIdentifiers()), linesOf(QStringList{"a", "b", "d"}));
    EXPECT_EQ(list->indexForEditedItem(), KRNotFound);
    EXPECT_TRUE(editedRows().isEmpty());
    EXPECT_FALSE(removedRow->isEdited());
    EXPECT_EQ(linesOf(editingMessages()), linesOf(QStringList{QStringLiteral("willEndEditingItemAtIndex 2"),
                                                              QStringLiteral("didEndEditingItemAtIndex 2")}));
}

TEST_F(KRCheckListViewUpdatesTests, RemovingARowAboveTheEditedItemRestartsTheEditOneUpWithTheSameSelection) {
    showItems({"a", "b", "c", "d"});
    editItem(2, KRMakeRange(1, 2));
    KRCheckListItemView* editedRow = rowAt(2);
    dataSource->checkListViewRemoveItemsAtIndexes(list.get(), KRIndexSet{0});

    EXPECT_EQ(list->indexForEditedItem(), 1u);
    EXPECT_EQ(rowAt(1), editedRow);
    EXPECT_EQ(indexesOf(editedRows()), indexesOf(KRIndexSet{1}));
    EXPECT_EQ(selectionInTitleAtIndex(1), "{1, 2}");
    EXPECT_EQ(linesOf(editingMessages()),
              linesOf(QStringList{QStringLiteral("willEndEditingItemAtIndex 2"),
                                  QStringLiteral("didEndEditingItemAtIndex 2"),
                                  QStringLiteral("willBeginEditingItemAtIndex 1"),
                                  QStringLiteral("didBeginEditingItemAtIndex 1")}));
}

TEST_F(KRCheckListViewUpdatesTests, RemoveTakesTheRowsOutOfTheViewTreeAndTheRegistry) {
    showItems({"a", "b", "c", "d"});
    std::shared_ptr<KRCheckListItemView> rowB = list->checkListItemViews()[1];
    std::shared_ptr<KRCheckListItemView> rowD = list->checkListItemViews()[3];
    dataSource->checkListViewRemoveItemsAtIndexes(list.get(), KRIndexSet{1, 3});

    EXPECT_EQ(linesOf(rowIdentifiers()), linesOf(QStringList{"a", "c"}));
    EXPECT_EQ(rowB->superview(), nullptr);
    EXPECT_EQ(rowD->superview(), nullptr);
    EXPECT_EQ(list->checkListItemViewsByIdentifier().size(), 2);
    EXPECT_FALSE(list->checkListItemViewsByIdentifier().contains(QJsonValue(QStringLiteral("b"))));
    EXPECT_FALSE(list->checkListItemViewsByIdentifier().contains(QJsonValue(QStringLiteral("d"))));
    EXPECT_EQ(linesOf(messagesWithoutTwins({QStringLiteral("willUpdateBy"), QStringLiteral("didUpdateBy")})),
              linesOf(QStringList{QStringLiteral("willUpdateByRemovingItemsAtIndexes {1, 3}"),
                                  QStringLiteral("didUpdateByRemovingItemsAtIndexes {1, 3}")}));
}

TEST_F(KRCheckListViewUpdatesTests, RemoveLeavesTheSelectedIndexesToTheClient) {
    showItems({"a", "b", "c"});
    list->selectItemsAtIndexesByExtendingSelection(KRIndexSet{2}, false);
    dataSource->checkListViewRemoveItemsAtIndexes(list.get(), KRIndexSet{0});
    EXPECT_EQ(indexesOf(list->indexesForSelectedItems()), indexesOf(KRIndexSet{2}));
}

// Moving
// ------------------------------------------------------------------------------------------------------

TEST_F(KRCheckListViewUpdatesTests, MovingTheFirstOfFourToThreeGivesBCAD) {
    showItems({"a", "b", "c", "d"});
    dataSource->checkListViewMoveItemsAtIndexesToIndex(list.get(), KRIndexSet{0}, 3);
    EXPECT_EQ(linesOf(rowIdentifiers()), linesOf(QStringList{"b", "c", "a", "d"}));
}

TEST_F(KRCheckListViewUpdatesTests, MovingTheLastOfFourToZeroGivesDABC) {
    showItems({"a", "b", "c", "d"});
    dataSource->checkListViewMoveItemsAtIndexesToIndex(list.get(), KRIndexSet{3}, 0);
    EXPECT_EQ(linesOf(rowIdentifiers()), linesOf(QStringList{"d", "a", "b", "c"}));
}

TEST_F(KRCheckListViewUpdatesTests, MovingTheSecondToOneOrToTwoKeepsTheOrder) {
    showItems({"a", "b", "c", "d"});
    const std::vector<KRCheckListItemView*> before{rowAt(0), rowAt(1), rowAt(2), rowAt(3)};
    for (KRUInteger toIndex : {1u, 2u}) {
        SCOPED_TRACE(toIndex);
        dataSource->checkListViewMoveItemsAtIndexesToIndex(list.get(), KRIndexSet{1}, toIndex);
        EXPECT_EQ(linesOf(rowIdentifiers()), linesOf(QStringList{"a", "b", "c", "d"}));
        EXPECT_EQ((std::vector<KRCheckListItemView*>{rowAt(0), rowAt(1), rowAt(2), rowAt(3)}), before);
    }
}

TEST_F(KRCheckListViewUpdatesTests, MovingSeveralRowsKeepsTheirRelativeOrder) {
    showItems({"a", "b", "c", "d", "e"});
    dataSource->checkListViewMoveItemsAtIndexesToIndex(list.get(), KRIndexSet{0, 2}, 5);
    EXPECT_EQ(linesOf(rowIdentifiers()), linesOf(QStringList{"b", "d", "e", "a", "c"}));
    dataSource->checkListViewMoveItemsAtIndexesToIndex(list.get(), KRIndexSet{3, 4}, 1);
    EXPECT_EQ(linesOf(rowIdentifiers()), linesOf(QStringList{"b", "a", "c", "d", "e"}));
}

TEST_F(KRCheckListViewUpdatesTests, MovingToAFinalIndexCountsTheTargetAfterTheMove) {
    showItems({"a", "b", "c", "d"});
    moveToFinalIndex(0, 2, 3);
    EXPECT_EQ(linesOf(rowIdentifiers()), linesOf(QStringList{"b", "c", "a", "d"}));
    moveToFinalIndex(3, 1, 1);
    EXPECT_EQ(linesOf(rowIdentifiers()), linesOf(QStringList{"b", "d", "c", "a"}));
    EXPECT_EQ(linesOf(messagesWithoutTwins({QStringLiteral("willUpdateByMoving")})),
              linesOf(QStringList{QStringLiteral("willUpdateByMovingItemsAtIndexes {0} toIndex 3"),
                                  QStringLiteral("willUpdateByMovingItemsAtIndexes {3} toIndex 1")}));
}

TEST_F(KRCheckListViewUpdatesTests, MovingTheLastOfABCDToTheFinalIndexOneGivesADBC) {
    showItems({"a", "b", "c", "d"});
    moveToFinalIndex(3, 1, 1);
    EXPECT_EQ(linesOf(rowIdentifiers()), linesOf(QStringList{"a", "d", "b", "c"}));
}

TEST_F(KRCheckListViewUpdatesTests, MovingOneItemPassesTheTargetUnchanged) {
    showItems({"a", "b", "c", "d"});
    list->beginUpdates();
    list->updateByMovingItemAtIndexToIndex(3, 0);
    list->endUpdates();
    EXPECT_EQ(linesOf(rowIdentifiers()), linesOf(QStringList{"d", "a", "b", "c"}));
    EXPECT_EQ(linesOf(messagesWithoutTwins(
                  {QStringLiteral("willUpdateByMoving"), QStringLiteral("didUpdateByMoving")})),
              linesOf(QStringList{QStringLiteral("willUpdateByMovingItemsAtIndexes {3} toIndex 0"),
                                  QStringLiteral("didUpdateByMovingItemsAtIndexes {3} toIndex 0")}));
}

TEST_F(KRCheckListViewUpdatesTests, MovingTheSecondOfTwoSelectedRowsToTheTopKeepsBothItemsSelected) {
    showItems({"a", "b", "c", "d"});
    list->selectItemsAtIndexesByExtendingSelection(KRIndexSet{1, 2}, false);
    dataSource->checkListViewMoveItemsAtIndexesToIndex(list.get(), KRIndexSet{2}, 0);
    EXPECT_EQ(linesOf(rowIdentifiers()), linesOf(QStringList{"c", "a", "b", "d"}));
    EXPECT_EQ(indexesOf(list->indexesForSelectedItems()), indexesOf(KRIndexSet{0, 2}));
    EXPECT_EQ(indexesOf(selectedRows()), indexesOf(KRIndexSet{0, 2}));
}

TEST_F(KRCheckListViewUpdatesTests, MovedRowsComeToTheFrontAndKeepTheirIdentifiers) {
    showItems({"a", "b", "c", "d"});
    KRCheckListItemView* rowA = rowAt(0);
    const KRCheckListItemViewsByIdentifier registry = list->checkListItemViewsByIdentifier();
    dataSource->checkListViewMoveItemsAtIndexesToIndex(list.get(), KRIndexSet{0}, 3);
    ASSERT_FALSE(list->subviews().empty());
    EXPECT_EQ(list->subviews().back().get(), rowA);
    EXPECT_EQ(list->checkListItemViewsByIdentifier(), registry);
    EXPECT_EQ(rowWithIdentifier(QStringLiteral("a")), rowAt(2));
}

TEST_F(KRCheckListViewUpdatesTests, MoveCarriesTheEditToTheItemsNewIndex) {
    showItems({"a", "b", "c", "d"});
    editItem(0, KRMakeRange(1, 2));
    KRCheckListItemView* editedRow = rowAt(0);
    dataSource->checkListViewMoveItemsAtIndexesToIndex(list.get(), KRIndexSet{0}, 3);

    EXPECT_EQ(list->indexForEditedItem(), 2u);
    EXPECT_EQ(rowAt(2), editedRow);
    EXPECT_EQ(selectionInTitleAtIndex(2), "{1, 2}");
    EXPECT_EQ(linesOf(messagesWithoutTwins(kEditingMessages + QStringList{QStringLiteral("willUpdateBy"),
                                                                          QStringLiteral("didUpdateBy")})),
              linesOf(QStringList{QStringLiteral("willUpdateByMovingItemsAtIndexes {0} toIndex 3"),
                                  QStringLiteral("willEndEditingItemAtIndex 0"),
                                  QStringLiteral("didEndEditingItemAtIndex 0"),
                                  QStringLiteral("willBeginEditingItemAtIndex 2"),
                                  QStringLiteral("didBeginEditingItemAtIndex 2"),
                                  QStringLiteral("didUpdateByMovingItemsAtIndexes {0} toIndex 3")}));
}

// Reloading single items
// ------------------------------------------------------------------------------------------------------

TEST_F(KRCheckListViewUpdatesTests, ReloadUpdateRereadsTheItemIntoTheSameRow) {
    showItems({"a", "b", "c"});
    focusList();
    KRCheckListItemView* rowB = rowAt(1);
    dataSource->items[1].title = QStringLiteral("Changed");
    dataSource->items[1].status = 2;
    list->beginUpdates();
    log->clear();
    list->updateByReloadingItemAtIndex(1);
    const QStringList inside = log->messages();
    list->endUpdates();

    EXPECT_EQ(rowAt(1), rowB);
    EXPECT_EQ(rowB->title(), QStringLiteral("Changed"));
    EXPECT_EQ(rowB->status(), 2u);
    const QStringList expected{
        QStringLiteral("willUpdateByReloadingItemsAtIndexes {1}"),
        QStringLiteral("willUpdateByReloadingItemsAtIndexes {1} animated false"),
        QStringLiteral("identifierForItemAtIndex 1"),
        QStringLiteral("statusForItemAtIndex 1"),
        QStringLiteral("titleForItemAtIndex 1"),
        QStringLiteral("willSelectItemsAtIndexes {}"),
        QStringLiteral("didSelectItemsAtIndexes {}"),
        QStringLiteral("didUpdateByReloadingItemsAtIndexes {1}"),
        QStringLiteral("didUpdateByReloadingItemsAtIndexes {1} animated false"),
    };
    EXPECT_EQ(inside, expected);
}

TEST_F(KRCheckListViewUpdatesTests, ReloadUpdateAppliesTheSelectionAgain) {
    showItems({"a", "b", "c"});
    list->selectItemsAtIndexesByExtendingSelection(KRIndexSet{0, 2}, false);
    log->clear();
    reloadUpdate(KRIndexSet{2});
    EXPECT_EQ(indexesOf(list->indexesForSelectedItems()), indexesOf(KRIndexSet{0, 2}));
    EXPECT_EQ(indexesOf(selectedRows()), indexesOf(KRIndexSet{0, 2}));
    EXPECT_TRUE(log->contains(QStringLiteral("willSelectItemsAtIndexes {0, 2}")));
    EXPECT_TRUE(log->contains(QStringLiteral("didSelectItemsAtIndexes {0, 2}")));
}

TEST_F(KRCheckListViewUpdatesTests, ReloadUpdateEndsAndRestartsTheEditWithItsSelection) {
    showItems({"a", "b", "c"});
    editItem(1, KRMakeRange(1, 3));
    dataSource->items[1].title = QStringLiteral("Changed title");
    reloadUpdate(KRIndexSet{1});

    EXPECT_EQ(list->indexForEditedItem(), 1u);
    EXPECT_EQ(indexesOf(editedRows()), indexesOf(KRIndexSet{1}));
    EXPECT_EQ(selectionInTitleAtIndex(1), "{1, 3}");
    EXPECT_EQ(
        linesOf(messagesWithoutTwins(
            kEditingMessages + QStringList{QStringLiteral("willUpdateBy"), QStringLiteral("didUpdateBy"),
                                           QStringLiteral("willSelect"), QStringLiteral("didSelect")})),
        linesOf(QStringList{
            QStringLiteral("willUpdateByReloadingItemsAtIndexes {1}"),
            QStringLiteral("willEndEditingItemAtIndex 1"), QStringLiteral("didEndEditingItemAtIndex 1"),
            QStringLiteral("willSelectItemsAtIndexes {}"), QStringLiteral("didSelectItemsAtIndexes {}"),
            QStringLiteral("willBeginEditingItemAtIndex 1"), QStringLiteral("didBeginEditingItemAtIndex 1"),
            QStringLiteral("didUpdateByReloadingItemsAtIndexes {1}")}));
}

TEST_F(KRCheckListViewUpdatesTests, ReloadUpdateLeavesTheIdentifierRegistryAlone) {
    showItems({"a", "b", "c"});
    KRCheckListItemView* rowB = rowAt(1);
    dataSource->items[1].identifier = QStringLiteral("z");
    reloadUpdate(KRIndexSet{1});
    EXPECT_EQ(rowB->objectValue(), QJsonValue(QStringLiteral("z")));
    EXPECT_EQ(list->identifierForItemAtIndex(1), QJsonValue(QStringLiteral("z")));
    EXPECT_EQ(rowWithIdentifier(QStringLiteral("b")), rowB);
    EXPECT_FALSE(list->checkListItemViewsByIdentifier().contains(QJsonValue(QStringLiteral("z"))));
}

// Placeholders
// ------------------------------------------------------------------------------------------------------

TEST_F(KRCheckListViewUpdatesTests, OnlyTheFirstRowKeepsItsOwnPlaceholderAndOnlyWhileItsTitleIsEmpty) {
    showItems({"a", "b", "c"});
    dataSource->items[0].title = QString();
    list->reloadItems();
    rowAt(0)->setPlaceholder(QStringLiteral("Add an item"));
    rowAt(1)->setPlaceholder(QStringLiteral("Stale"));
    rowAt(2)->setPlaceholder(QStringLiteral("Stale"));
    list->setPlaceholder(QStringLiteral("Not read by the list"));

    list->checkListViewUpdatePlaceholderForEachItemView();
    EXPECT_EQ(rowAt(0)->placeholder(), QStringLiteral("Add an item"));
    EXPECT_EQ(rowAt(1)->placeholder(), QStringLiteral(""));
    EXPECT_EQ(rowAt(2)->placeholder(), QStringLiteral(""));

    rowAt(0)->setTitle(QStringLiteral("Now titled"));
    list->checkListViewUpdatePlaceholderForEachItemView();
    EXPECT_EQ(rowAt(0)->placeholder(), QStringLiteral(""));
}

TEST_F(KRCheckListViewUpdatesTests, InsertingAboveTheFirstRowTakesItsPlaceholderAway) {
    showItems({"a", "b"});
    dataSource->items[0].title = QString();
    list->reloadItems();
    rowAt(0)->setPlaceholder(QStringLiteral("Add an item"));
    KRCheckListItemView* formerFirst = rowAt(0);
    dataSource->checkListViewInsertItemsAtIndexes(list.get(), KRIndexSet{0});
    EXPECT_EQ(rowAt(1), formerFirst);
    EXPECT_EQ(formerFirst->placeholder(), QStringLiteral(""));
}

TEST_F(KRCheckListViewUpdatesTests, ReloadUpdateOfATitledFirstRowTakesItsPlaceholderAway) {
    showItems({"a", "b"});
    dataSource->items[0].title = QString();
    list->reloadItems();
    rowAt(0)->setPlaceholder(QStringLiteral("Add an item"));
    dataSource->items[0].title = QStringLiteral("Titled");
    reloadUpdate(KRIndexSet{0});
    EXPECT_EQ(rowAt(0)->placeholder(), QStringLiteral(""));
}

// The refresh visits only the rows whose placeholder it can change. Whatever happens between two refreshes,
// afterwards only the first row may show a placeholder: the one it had, and only while its title is empty.
TEST_F(KRCheckListViewUpdatesTests, PlaceholdersAfterEveryChangeFollowTheFirstRowRule) {
    showItems({"a", "b", "c", "d", "e", "f"});
    window.makeFirstResponder(list.get());
    std::mt19937 random(5);
    const auto anyTitle = [&] { return random() % 2 == 0 ? QString() : QStringLiteral("Titled"); };
    for (int step = 0; step < 400; ++step) {
        const KRUInteger count = list->numberOfItems();
        const KRUInteger index = count == 0 ? 0 : random() % count;
        switch (random() % 9) {
        case 0:
            dataSource->itemsToInsert.push_back(Item{QStringLiteral("i%1").arg(step), 0, anyTitle()});
            list->insertItemAtIndex(random() % 2 == 0 ? 0 : random() % (count + 1));
            break;
        case 1:
            if (count > 1) {
                list->removeItemAtIndex(random() % 2 == 0 ? 0 : index);
            }
            break;
        case 2:
            if (count > 0) {
                dataSource->items[index].title = anyTitle();
                reloadUpdate(KRIndexSet(index));
            }
            break;
        case 3:
            if (count > 0) {
                // The host gives a row a placeholder of its own.
                rowAt(random() % 2 == 0 ? 0 : index)->setPlaceholder(QStringLiteral("Add an item"));
            }
            break;
        case 4:
            if (count > 0) {
                list->beginEditingItemAtIndexSelectRange(index, KRMakeRange(0, 0));
            }
            break;
        case 5:
            list->endEditing();
            break;
        case 6:
            if (count > 0) {
                // A selected row takes other attributes, its placeholder's among them.
                list->selectItemsAtIndexesByExtendingSelection(KRIndexSet(index), random() % 2 == 0);
            }
            break;
        case 7:
            if (count > 1) {
                list->moveItemAtIndexToIndex(index, random() % (count + 1));
            }
            break;
        default:
            list->reloadItems();
            break;
        }
        KRRunLoop::main().runUntilIdle();
        window.updateIfNeeded();
        if (list->numberOfItems() == 0) {
            continue;
        }
        const QString firstTitle = rowAt(0)->title();
        const QString firstPlaceholder = rowAt(0)->placeholder();

        list->checkListViewUpdatePlaceholderForEachItemView();

        ASSERT_EQ(rowAt(0)->placeholder(), firstTitle.isEmpty() ? firstPlaceholder : QString())
            << "after step " << step;
        for (KRUInteger row = 1; row < list->numberOfItems(); ++row) {
            ASSERT_EQ(rowAt(row)->placeholder(), QString()) << "row " << row << " after step " << step;
        }
    }
}
