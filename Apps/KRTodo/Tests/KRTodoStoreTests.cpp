#include "KRTodoStore.h"

#include "KRQtTestPrinters.h"

#include "KRCheckListDefaults.h"
#include "KRCheckListView.h"

#include "Foundation/KRClock.h"
#include "Foundation/KRLog.h"
#include "Foundation/KRRunLoop.h"
#include "Text/KRTextView.h"
#include "Views/KREvent.h"
#include "Views/KRWindow.h"

#include <QJsonValue>
#include <QStringList>

#include <gtest/gtest.h>

#include <algorithm>
#include <memory>
#include <ostream>
#include <vector>

namespace {

constexpr double kListWidth = 480.0;

// A store that also writes down the update transactions it sees, with how many items it had at each
// update call (so the change is known to come before its report).
class RecordingTodoStore : public KRTodoStore {
public:
    using KRTodoStore::KRTodoStore;

    void checkListViewWillBeginUpdates(KRCheckListView*) override { record(QStringLiteral("begin")); }
    void checkListViewDidEndUpdates(KRCheckListView*) override { record(QStringLiteral("end")); }
    void checkListViewWillUpdateByInsertingItemsAtIndexes(KRCheckListView*,
                                                          const KRIndexSet& indexes) override {
        record(QStringLiteral("insert %1").arg(indexes.description()), true);
    }
    void checkListViewWillUpdateByRemovingItemsAtIndexes(KRCheckListView*,
                                                         const KRIndexSet& indexes) override {
        record(QStringLiteral("remove %1").arg(indexes.description()), true);
    }
    void checkListViewWillUpdateByMovingItemsAtIndexesToIndex(KRCheckListView*, const KRIndexSet& indexes,
                                                              KRUInteger toIndex) override {
        record(QStringLiteral("move %1 to %2").arg(indexes.description()).arg(toIndex), true);
    }
    void checkListViewWillUpdateByReloadingItemsAtIndexes(KRCheckListView*,
                                                          const KRIndexSet& indexes) override {
        record(QStringLiteral("reload %1").arg(indexes.description()), true);
    }
    void checkListViewDidChangeSizeThatFits(KRCheckListView* checkListView) override {
        ++sizeThatFitsChanges;
        KRTodoStore::checkListViewDidChangeSizeThatFits(checkListView);
    }

    QStringList calls;
    int sizeThatFitsChanges = 0;

private:
    void record(const QString& call, bool withCount = false) {
        calls << (withCount ? QStringLiteral("%1 (%2 items)").arg(call).arg(count()) : call);
    }
};

KRTodoItem item(const QString& identifier, KRUInteger status, const QString& title) {
    return KRTodoItem{identifier, status, title};
}

// A list in a window, filled from a store of four items a, b, c, d.
class KRTodoStoreTests : public ::testing::Test {
protected:
    void SetUp() override {
        KRTextView::installTextSystem();
        KREvent::setCurrentModifierFlags(0);
        window.setContentView(checkListView);
        attach(store);
    }
    void TearDown() override {
        KREvent::setCurrentModifierFlags(0);
        window.makeFirstResponder(nullptr);
        KRClock::advance(1.0);
        KRRunLoop::main().runUntilIdle();
        KRRunLoop::main().cancelAll();
    }

    template <class Store> void attach(const std::shared_ptr<Store>& source) {
        checkListView->setDataSource(source);
        checkListView->setDelegate(source);
        checkListView->reloadItems();
    }

    QStringList storeTitles() const {
        QStringList titles;
        for (const KRTodoItem& todo : store->items()) {
            titles << todo.title;
        }
        return titles;
    }
    QStringList listTitles() const {
        QStringList titles;
        for (KRUInteger index = 0; index < checkListView->numberOfItems(); ++index) {
            titles << checkListView->titleForItemAtIndex(index);
        }
        return titles;
    }
    QStringList storeIdentifiers() const {
        QStringList identifiers;
        for (const KRTodoItem& todo : store->items()) {
            identifiers << todo.identifier;
        }
        return identifiers;
    }
    QStringList listIdentifiers() const {
        QStringList identifiers;
        for (KRUInteger index = 0; index < checkListView->numberOfItems(); ++index) {
            identifiers << checkListView->identifierForItemAtIndex(index).toString();
        }
        return identifiers;
    }
    std::vector<KRUInteger> listStatuses() const {
        std::vector<KRUInteger> statuses;
        for (KRUInteger index = 0; index < checkListView->numberOfItems(); ++index) {
            statuses.push_back(checkListView->statusForItemAtIndex(index));
        }
        return statuses;
    }
    std::vector<KRUInteger> storeStatuses() const {
        std::vector<KRUInteger> statuses;
        for (const KRTodoItem& todo : store->items()) {
            statuses.push_back(todo.status);
        }
        return statuses;
    }
    void expectListShowsStore() const {
        EXPECT_EQ(checkListView->numberOfItems(), store->count());
        EXPECT_EQ(listIdentifiers(), storeIdentifiers());
        EXPECT_EQ(listTitles(), storeTitles());
        EXPECT_EQ(listStatuses(), storeStatuses());
        EXPECT_FALSE(checkListView->isUpdating());
    }

    void clickCheckBox(KRUInteger index, KREventModifierFlags flags = 0) {
        checkListView->layoutIfNeeded();
        const KRView& checkBox =
            *checkListView->checkListViewItemViewForItemAtIndex(index)->checkBoxButtonView();
        const KRRect bounds = checkBox.bounds();
        const KRPoint centre =
            checkBox.convertPointToView(KRPointMake(KRRectGetMidX(bounds), KRRectGetMidY(bounds)), nullptr);
        KREvent::setCurrentModifierFlags(flags);
        window.sendEvent(KREvent::mouseEvent(KREventType::LeftMouseDown, centre, flags, &window));
        window.sendEvent(KREvent::mouseEvent(KREventType::LeftMouseUp, centre, flags, &window));
        KREvent::setCurrentModifierFlags(0);
    }

    KRWindow window;
    std::shared_ptr<KRCheckListView> checkListView =
        std::make_shared<KRCheckListView>(KRRectMake(0.0, 0.0, kListWidth, 600.0));
    std::shared_ptr<RecordingTodoStore> store = std::make_shared<RecordingTodoStore>(std::vector<KRTodoItem>{
        item(QStringLiteral("a"), KRTodoItem::Open, QStringLiteral("Buy milk")),
        item(QStringLiteral("b"), KRTodoItem::Completed, QStringLiteral("Call the plumber")),
        item(QStringLiteral("c"), KRTodoItem::Canceled, QStringLiteral("Renew the passport")),
        item(QStringLiteral("d"), KRTodoItem::Open, QStringLiteral("Review the budget before Friday")),
    });
};

} // namespace

// Answers
// ------------------------------------------------------------------------------------------------------

TEST_F(KRTodoStoreTests, AnswersEachItemByIndex) {
    KRTodoStore& source = *store;
    ASSERT_EQ(source.checkListViewNumberOfItems(checkListView.get()), 4u);
    EXPECT_EQ(source.checkListViewIdentifierForItemAtIndex(checkListView.get(), 2),
              QJsonValue(QStringLiteral("c")));
    EXPECT_EQ(source.checkListViewStatusForItemAtIndex(checkListView.get(), 1), KRTodoItem::Completed);
    EXPECT_EQ(source.checkListViewTitleForItemAtIndex(checkListView.get(), 3),
              QStringLiteral("Review the budget before Friday"));
}

TEST_F(KRTodoStoreTests, AnIndexPastTheItemsAnswersNothing) {
    KRTodoStore& source = *store;
    EXPECT_TRUE(source.checkListViewIdentifierForItemAtIndex(checkListView.get(), 4).isNull());
    EXPECT_EQ(source.checkListViewStatusForItemAtIndex(checkListView.get(), 4), KRTodoItem::Open);
    EXPECT_TRUE(source.checkListViewTitleForItemAtIndex(checkListView.get(), 4).isNull());
}

TEST_F(KRTodoStoreTests, ReloadedListShowsEveryItemInOrder) {
    expectListShowsStore();
    EXPECT_EQ(listTitles(), QStringList({QStringLiteral("Buy milk"), QStringLiteral("Call the plumber"),
                                         QStringLiteral("Renew the passport"),
                                         QStringLiteral("Review the budget before Friday")}));
}

TEST_F(KRTodoStoreTests, ItemsWithoutIdentifiersGetDistinctFreshOnes) {
    const KRTodoStore source({item(QString(), KRTodoItem::Open, QStringLiteral("one")),
                              item(QStringLiteral("todo-1"), KRTodoItem::Open, QStringLiteral("two")),
                              item(QString(), KRTodoItem::Open, QStringLiteral("three"))});
    QStringList identifiers;
    for (const KRTodoItem& todo : source.items()) {
        identifiers << todo.identifier;
    }
    EXPECT_EQ(identifiers.at(1), QStringLiteral("todo-1"));
    EXPECT_FALSE(identifiers.contains(QString()));
    EXPECT_EQ(identifiers.removeDuplicates(), 0);
}

TEST_F(KRTodoStoreTests, SampleChecklistHasDoneCanceledAndWrappingItems) {
    const std::shared_ptr<KRTodoStore> sample = KRTodoStore::makeSampleStore();
    attach(sample);
    checkListView->layoutIfNeeded();

    QStringList identifiers;
    int completed = 0;
    int canceled = 0;
    for (const KRTodoItem& todo : sample->items()) {
        identifiers << todo.identifier;
        completed += todo.status == KRTodoItem::Completed ? 1 : 0;
        canceled += todo.status == KRTodoItem::Canceled ? 1 : 0;
        EXPECT_FALSE(todo.title.isEmpty());
    }
    EXPECT_GE(sample->count(), 10u);
    EXPECT_EQ(identifiers.removeDuplicates(), 0);
    EXPECT_GE(completed, 2);
    EXPECT_EQ(canceled, 1);
    EXPECT_LT(completed + canceled, static_cast<int>(sample->count()));

    // At the window's width a few titles take two or three lines, none more.
    ASSERT_EQ(checkListView->numberOfItems(), sample->count());
    double oneLine = 1.0e9;
    for (const auto& row : checkListView->checkListItemViews()) {
        oneLine = std::min(oneLine, row->frame().size.height);
    }
    int wrapped = 0;
    for (const auto& row : checkListView->checkListItemViews()) {
        const double extraLines = (row->frame().size.height - oneLine) / KRCheckListDefaults::lineHeight();
        wrapped += extraLines > 0.5 ? 1 : 0;
        EXPECT_LT(extraLines, 2.5) << row->title().toStdString();
    }
    EXPECT_GE(wrapped, 2);
}

// Changes asked for by the list
// ------------------------------------------------------------------------------------------------------

TEST_F(KRTodoStoreTests, InsertAddsAnOpenUntitledItemAndReportsIt) {
    store->calls.clear();
    checkListView->insertItemAtIndex(1);

    ASSERT_EQ(store->count(), 5u);
    const KRTodoItem& inserted = store->items()[1];
    EXPECT_EQ(inserted.status, KRTodoItem::Open);
    EXPECT_TRUE(inserted.title.isEmpty());
    EXPECT_FALSE(QStringList({"a", "b", "c", "d", ""}).contains(inserted.identifier));
    EXPECT_EQ(store->calls, QStringList({"begin", "insert [1] (5 items)", "end"}));
    expectListShowsStore();
}

TEST_F(KRTodoStoreTests, InsertAtSeveralIndexesCountsThemAsFinalPositions) {
    checkListView->insertItemsAtIndexes(KRIndexSet{0, 2});
    EXPECT_EQ(storeTitles(), QStringList({"", "Buy milk", "", "Call the plumber", "Renew the passport",
                                          "Review the budget before Friday"}));
    expectListShowsStore();
}

TEST_F(KRTodoStoreTests, RemoveTakesTheItemsOutAndReportsIt) {
    store->calls.clear();
    checkListView->removeItemsAtIndexes(KRIndexSet{0, 2});

    EXPECT_EQ(storeIdentifiers(), QStringList({"b", "d"}));
    EXPECT_EQ(store->calls, QStringList({"begin", "remove [0, 2] (2 items)", "end"}));
    expectListShowsStore();
}

TEST_F(KRTodoStoreTests, RemovingSelectedItemsKeepsTheOthersSelectedAtTheirNewIndexes) {
    checkListView->selectItemsAtIndexesByExtendingSelection(KRIndexSet{0, 2, 3}, false);
    store->removeItems(KRIndexSet{0, 1}, checkListView.get());

    EXPECT_EQ(storeIdentifiers(), QStringList({"c", "d"}));
    EXPECT_EQ(checkListView->indexesForSelectedItems(), (KRIndexSet{0, 1}));
    expectListShowsStore();
}

TEST_F(KRTodoStoreTests, RemovingEverySelectedItemLeavesNothingSelected) {
    checkListView->selectItemsAtIndexesByExtendingSelection(KRIndexSet(KRRange{0, 4}), false);
    store->removeItems(KRIndexSet(KRRange{0, 4}), checkListView.get());

    EXPECT_EQ(store->count(), 0u);
    EXPECT_TRUE(checkListView->indexesForSelectedItems().isEmpty());
}

TEST_F(KRTodoStoreTests, InsertingBeforeSelectedItemsMovesTheSelectionWithThem) {
    checkListView->selectItemsAtIndexesByExtendingSelection(KRIndexSet{1, 3}, false);
    store->insertItems({store->makeItem(QStringLiteral("x")), store->makeItem(QStringLiteral("y"))},
                       KRIndexSet{0, 3}, checkListView.get());

    EXPECT_EQ(listTitles(), (QStringList{"x", "Buy milk", "Call the plumber", "y", "Renew the passport",
                                         "Review the budget before Friday"}));
    EXPECT_EQ(checkListView->indexesForSelectedItems(), (KRIndexSet{2, 5}));
    expectListShowsStore();
}

TEST_F(KRTodoStoreTests, ChangesAfterTheSelectedItemsLeaveTheSelectionAsItWas) {
    checkListView->selectItemsAtIndexesByExtendingSelection(KRIndexSet{0, 1}, false);
    store->removeItems(KRIndexSet{3}, checkListView.get());
    store->insertItems({store->makeItem()}, KRIndexSet{2}, checkListView.get());

    EXPECT_EQ(checkListView->indexesForSelectedItems(), (KRIndexSet{0, 1}));
    EXPECT_EQ(storeIdentifiers().mid(0, 2), QStringList({"a", "b"}));
}

TEST_F(KRTodoStoreTests, MoveOfTheLastItemToTheTopReportsIt) {
    store->calls.clear();
    checkListView->moveItemAtIndexToIndex(3, 0);

    EXPECT_EQ(storeIdentifiers(), QStringList({"d", "a", "b", "c"}));
    EXPECT_EQ(store->calls, QStringList({"begin", "move [3] to 0 (4 items)", "end"}));
    expectListShowsStore();
}

TEST_F(KRTodoStoreTests, MoveTargetCountsInTheOrderBeforeTheMove) {
    checkListView->moveItemAtIndexToIndex(0, 3);
    EXPECT_EQ(storeIdentifiers(), QStringList({"b", "c", "a", "d"}));
    expectListShowsStore();

    checkListView->moveItemsAtIndexesToIndex(KRIndexSet{0, 3}, 4);
    EXPECT_EQ(storeIdentifiers(), QStringList({"c", "a", "b", "d"}));
    expectListShowsStore();

    checkListView->moveItemAtIndexToIndex(1, 1);
    checkListView->moveItemAtIndexToIndex(1, 2);
    EXPECT_EQ(storeIdentifiers(), QStringList({"c", "a", "b", "d"}));
    expectListShowsStore();
}

TEST_F(KRTodoStoreTests, ChangesOutsideTheItemsAreLeftOutOfTheReport) {
    store->calls.clear();
    checkListView->removeItemsAtIndexes(KRIndexSet{1, 7});
    checkListView->moveItemsAtIndexesToIndex(KRIndexSet{9}, 0);
    checkListView->moveItemAtIndexToIndex(0, 42);

    EXPECT_EQ(storeIdentifiers(), QStringList({"c", "d", "a"}));
    EXPECT_EQ(store->calls, QStringList({"begin", "remove [1] (3 items)", "end", "begin",
                                         "move [0] to 3 (3 items)", "end"}));
    expectListShowsStore();
}

// Changes made by the store itself
// ------------------------------------------------------------------------------------------------------

TEST_F(KRTodoStoreTests, StoreInsertsTitledItemsAndReportsThem) {
    store->insertItems({store->makeItem(QStringLiteral("Email Sam"), KRTodoItem::Completed)}, KRIndexSet(0),
                       checkListView.get());
    EXPECT_EQ(store->items()[0].title, QStringLiteral("Email Sam"));
    EXPECT_EQ(store->items()[0].status, KRTodoItem::Completed);
    expectListShowsStore();
}

TEST_F(KRTodoStoreTests, ChangesWithoutAListOnlyChangeTheItems) {
    store->calls.clear();
    store->moveItems(KRIndexSet(3), 0, nullptr);
    store->removeItems(KRIndexSet(1), nullptr);
    store->insertItems({}, KRIndexSet(3), nullptr);

    EXPECT_EQ(storeTitles(),
              QStringList({"Review the budget before Friday", "Call the plumber", "Renew the passport", ""}));
    EXPECT_TRUE(store->calls.isEmpty());
    EXPECT_EQ(listIdentifiers(), QStringList({"a", "b", "c", "d"}));
}

// Validation
// ------------------------------------------------------------------------------------------------------

TEST_F(KRTodoStoreTests, CheckBoxClicksKeepTheValidatedStatus) {
    clickCheckBox(0);
    EXPECT_EQ(store->items()[0].status, KRTodoItem::Completed);
    clickCheckBox(3, KREventModifierFlagOption);
    EXPECT_EQ(store->items()[3].status, KRTodoItem::Canceled);
    clickCheckBox(2);
    EXPECT_EQ(store->items()[2].status, KRTodoItem::Open);
    expectListShowsStore();
}

TEST_F(KRTodoStoreTests, UnknownStatusesAreKeptAsOpen) {
    EXPECT_EQ(store->checkListViewValidateChangedStatusForItemAtIndex(checkListView.get(), 7, 1),
              KRTodoItem::Open);
    EXPECT_EQ(store->items()[1].status, KRTodoItem::Open);
}

TEST_F(KRTodoStoreTests, TypedTitlesAreKept) {
    checkListView->beginEditingItemAtIndexSelectRange(1, KRRange{KRUIntegerMax, 0});
    KRTextView* editor = checkListView->fieldEditor().get();
    ASSERT_NE(editor, nullptr);
    editor->insertText(QStringLiteral(" at nine"));

    EXPECT_EQ(store->items()[1].title, QStringLiteral("Call the plumber at nine"));
    EXPECT_EQ(checkListView->titleForItemAtIndex(1), QStringLiteral("Call the plumber at nine"));
}

TEST_F(KRTodoStoreTests, StatusesSetByTheListAreKeptAndShown) {
    const KRLogCapture log;
    checkListView->setStatusForItemsAtIndexes(KRTodoItem::Completed, KRIndexSet{0, 3});
    EXPECT_EQ(storeStatuses(), std::vector<KRUInteger>({1, 1, 2, 1}));
    expectListShowsStore();
}

TEST_F(KRTodoStoreTests, TitlesSetByTheListAreKeptAndShown) {
    const KRLogCapture log;
    checkListView->setTitleForItemAtIndex(QStringLiteral("Buy oat milk"), 0);
    EXPECT_EQ(store->items()[0].title, QStringLiteral("Buy oat milk"));
    expectListShowsStore();
}

// Size and dump
// ------------------------------------------------------------------------------------------------------

TEST_F(KRTodoStoreTests, FittingSizeChangesReachTheHandler) {
    int handled = 0;
    KRCheckListView* reported = nullptr;
    store->setSizeThatFitsChangedHandler([&](KRCheckListView* list) {
        ++handled;
        reported = list;
    });
    const double before = checkListView->lastSizeThatFits().height;
    checkListView->insertItemAtIndex(0);

    EXPECT_EQ(handled, 1);
    EXPECT_EQ(reported, checkListView.get());
    EXPECT_GT(checkListView->lastSizeThatFits().height, before);
}

TEST_F(KRTodoStoreTests, DumpWritesStatusAndTitleOfEachItemOnOneLine) {
    const KRTodoStore source(
        {item(QStringLiteral("x"), KRTodoItem::Completed, QStringLiteral("Renew passport")),
         item(QStringLiteral("y"), KRTodoItem::Open, QStringLiteral("Pack\nsunscreen")),
         item(QStringLiteral("z"), KRTodoItem::Canceled, QStringLiteral("Fado")),
         item(QStringLiteral("w"), KRTodoItem::Open, QString())});
    EXPECT_EQ(source.dump(), QStringLiteral("completed\tRenew passport\n"
                                            "open\tPack sunscreen\n"
                                            "canceled\tFado\n"
                                            "open\t\n"));
}

TEST_F(KRTodoStoreTests, DumpOfAnEmptyStoreIsEmpty) {
    EXPECT_TRUE(KRTodoStore().dump().isEmpty());
}
