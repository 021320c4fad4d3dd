#include "KRCheckListView.h"

#include "KRCheckListDefaults.h"
#include "KRCheckListDropPlaceholderContentView.h"
#include "KRCheckListResources.h"
#include "KRCheckListViewTestSupport.h"

#include "Foundation/KRLog.h"
#include "Text/KRTextField.h"

#include <QUndoStack>

#include <gtest/gtest.h>

#include <memory>
#include <utility>
#include <vector>

using namespace KRCheckListViewTesting;

namespace {

const QString kSetStatusWarning = QStringLiteral(
    "[WARNING] [KRCheckListViewDataSource checkListView:setStatus:forItemAtIndex:] is deprecated, see "
    "documentation for more info.");
const QString kSetTitleWarning = QStringLiteral(
    "[WARNING] [KRCheckListViewDataSource checkListView:setTitle:forItemAtIndex:] is deprecated, see "
    "documentation for more info.");

// The warning logged on every use of a deprecated delegate method, for the method's selector.
QString deprecatedDelegateWarning(const QString& selector) {
    return QStringLiteral("[WARNING] [KRCheckListViewDelegate %1] is deprecated, please use the non-animated "
                          "version instead.")
        .arg(selector);
}

// The lines of the data source, as the recording data source writes them.
const QStringList kDataSourceMessages{
    QStringLiteral("numberOfItems"),        QStringLiteral("identifierForItemAtIndex"),
    QStringLiteral("statusForItemAtIndex"), QStringLiteral("titleForItemAtIndex"),
    QStringLiteral("validateChanged"),      QStringLiteral("insertItemsAtIndexes"),
    QStringLiteral("removeItemsAtIndexes"), QStringLiteral("moveItemsAtIndexes"),
    QStringLiteral("beginGrouping"),        QStringLiteral("endGrouping"),
    QStringLiteral("setStatus "),           QStringLiteral("setTitle "),
};

// Implements one deprecated method and nothing else; keeps what it receives.
class AnimatedInsertOnlyDelegate : public KRCheckListViewDelegate {
public:
    void checkListViewWillUpdateByInsertingItemsAtIndexesAnimated(KRCheckListView*, const KRIndexSet& indexes,
                                                                  bool animated) override {
        received.emplace_back(indexes, animated);
    }
    std::vector<std::pair<KRIndexSet, bool>> received;
};

class KRCheckListViewTests : public KRCheckListViewTestCase {
protected:
    // Presses and releases the mouse over the check box of the row at index.
    void clickCheckBoxOfRow(KRUInteger index) {
        window.updateIfNeeded();
        const KRView& checkBox = *rowAt(index)->checkBoxButtonView();
        const KRRect bounds = checkBox.bounds();
        const KRPoint centre =
            checkBox.convertPointToView(KRPointMake(KRRectGetMidX(bounds), KRRectGetMidY(bounds)), nullptr);
        window.sendEvent(KREvent::mouseEvent(KREventType::LeftMouseDown, centre, 0, &window));
        window.sendEvent(KREvent::mouseEvent(KREventType::LeftMouseUp, centre, 0, &window));
    }

    // Runs one of each update transaction, so that every update message is sent once.
    void runOneUpdateOfEachKind() {
        list->beginUpdates();
        list->updateByReloadingItemAtIndex(0);
        list->endUpdates();
        dataSource->checkListViewInsertItemsAtIndexes(list.get(), KRIndexSet{1});
        dataSource->checkListViewRemoveItemsAtIndexes(list.get(), KRIndexSet{1});
        dataSource->checkListViewMoveItemsAtIndexesToIndex(list.get(), KRIndexSet{0}, 2);
    }
};

} // namespace

// Client methods
// ------------------------------------------------------------------------------------------------------

TEST_F(KRCheckListViewTests,
       DelegateWithOnlyTheAnimatedInsertTwinGetsItWithAnimatedFalseAndOneWarningPerCall) {
    showItems({"a", "b"});
    auto animatedOnly = std::make_shared<AnimatedInsertOnlyDelegate>();
    list->setDelegate(animatedOnly);
    EXPECT_TRUE(list->delegateRespondsTo(
        KRCheckListViewDelegateMethod::checkListViewWillUpdateByInsertingItemsAtIndexesAnimated));
    EXPECT_FALSE(list->delegateRespondsTo(
        KRCheckListViewDelegateMethod::checkListViewWillUpdateByInsertingItemsAtIndexes));

    KRLogCapture capture;
    dataSource->checkListViewInsertItemsAtIndexes(list.get(), KRIndexSet{1});
    dataSource->checkListViewInsertItemsAtIndexes(list.get(), KRIndexSet{0, 3});

    const std::vector<std::pair<KRIndexSet, bool>> expected{{KRIndexSet{1}, false},
                                                            {KRIndexSet{0, 3}, false}};
    EXPECT_EQ(animatedOnly->received, expected);
    const QString warning = deprecatedDelegateWarning(
        QStringLiteral("checkListView:willUpdateByInsertingItemsAtIndexes:animated:"));
    EXPECT_EQ(linesOf(capture.lines()), linesOf(QStringList{warning, warning}));
}

TEST_F(KRCheckListViewTests, EveryDeprecatedUpdateTwinFollowsItsOwnFormAndLogsItsWarning) {
    showItems({"a", "b", "c"});
    KRLogCapture capture;
    runOneUpdateOfEachKind();

    const QStringList expectedMessages{
        QStringLiteral("willUpdateByReloadingItemsAtIndexes {0}"),
        QStringLiteral("willUpdateByReloadingItemsAtIndexes {0} animated false"),
        QStringLiteral("didUpdateByReloadingItemsAtIndexes {0}"),
        QStringLiteral("didUpdateByReloadingItemsAtIndexes {0} animated false"),
        QStringLiteral("willUpdateByInsertingItemsAtIndexes {1}"),
        QStringLiteral("willUpdateByInsertingItemsAtIndexes {1} animated false"),
        QStringLiteral("didUpdateByInsertingItemsAtIndexes {1}"),
        QStringLiteral("didUpdateByInsertingItemsAtIndexes {1} animated false"),
        QStringLiteral("willUpdateByRemovingItemsAtIndexes {1}"),
        QStringLiteral("willUpdateByRemovingItemsAtIndexes {1} animated false"),
        QStringLiteral("didUpdateByRemovingItemsAtIndexes {1}"),
        QStringLiteral("didUpdateByRemovingItemsAtIndexes {1} animated false"),
        QStringLiteral("willUpdateByMovingItemsAtIndexes {0} toIndex 2"),
        QStringLiteral("willUpdateByMovingItemsAtIndexes {0} toIndex 2 animated false"),
        QStringLiteral("didUpdateByMovingItemsAtIndexes {0} toIndex 2"),
        QStringLiteral("didUpdateByMovingItemsAtIndexes {0} toIndex 2 animated false"),
    };
    EXPECT_EQ(linesOf(log->startingWith({QStringLiteral("willUpdateBy"), QStringLiteral("didUpdateBy")})),
              linesOf(expectedMessages));

    const QStringList expectedWarnings{
        deprecatedDelegateWarning(
            QStringLiteral("checkListView:willUpdateByReloadingItemsAtIndexes:animated:")),
        deprecatedDelegateWarning(
            QStringLiteral("checkListView:didUpdateByReloadingItemsAtIndexes:animated:")),
        deprecatedDelegateWarning(
            QStringLiteral("checkListView:willUpdateByInsertingItemsAtIndexes:animated:")),
        deprecatedDelegateWarning(
            QStringLiteral("checkListView:didUpdateByInsertingItemsAtIndexes:animated:")),
        deprecatedDelegateWarning(
            QStringLiteral("checkListView:willUpdateByRemovingItemsAtIndexes:animated:")),
        deprecatedDelegateWarning(
            QStringLiteral("checkListView:didUpdateByRemovingItemsAtIndexes:animated:")),
        deprecatedDelegateWarning(
            QStringLiteral("checkListView:willUpdateByMovingItemsAtIndexes:toIndex:animated:")),
        deprecatedDelegateWarning(
            QStringLiteral("checkListView:didUpdateByMovingItemsAtIndexes:toIndex:animated:")),
    };
    EXPECT_EQ(linesOf(capture.lines()), linesOf(expectedWarnings));
}

TEST_F(KRCheckListViewTests, DelegateImplementingNothingRespondsToNothingAndLeavesCommandsUnhandled) {
    showItems({"a", "b", "c"});
    auto empty = std::make_shared<EmptyDelegate>();
    list->setDelegate(empty);
    for (KRCheckListViewDelegateMethod method :
         {KRCheckListViewDelegateMethod::checkListViewWillReloadItems,
          KRCheckListViewDelegateMethod::checkListViewDidChangeSizeThatFits,
          KRCheckListViewDelegateMethod::checkListViewTextViewDoCommandBySelector,
          KRCheckListViewDelegateMethod::checkListViewUndoManagerForTextView,
          KRCheckListViewDelegateMethod::checkListViewWillUpdateByInsertingItemsAtIndexesAnimated,
          KRCheckListViewDelegateMethod::checkListViewDidUpdateByMovingItemsAtIndexesToIndexAnimated}) {
        EXPECT_FALSE(list->delegateRespondsTo(method)) << static_cast<int>(method);
    }

    KRLogCapture capture;
    runOneUpdateOfEachKind();
    EXPECT_TRUE(capture.lines().isEmpty()) << capture.lines().join(QStringLiteral("\n")).toStdString();
    EXPECT_FALSE(list->checkListViewTextViewDoCommandBySelector(list.get(), list->fieldEditor().get(),
                                                                KRSelector("insertNewline:")));
    EXPECT_EQ(list->checkListViewUndoManagerForTextView(list.get(), list->fieldEditor().get()), nullptr);
}

TEST_F(KRCheckListViewTests, DelegateRegisteredWithNoMethodsReceivesNothingAndItsAnswersAreNotAsked) {
    showItems({"a", "b", "c", "d"});
    list->setDelegate(std::static_pointer_cast<KRCheckListViewDelegate>(delegate), KRClientMethods());
    QUndoStack undoStack;
    delegate->doCommandAnswer = true;
    delegate->undoManagerAnswer = &undoStack;

    list->reloadItems();
    runOneUpdateOfEachKind();
    list->insertItemAtIndex(0);
    list->removeItemAtIndex(0);
    list->moveItemAtIndexToIndex(0, 2);
    list->setStatusForItemAtIndex(1, 0);
    list->setTitleForItemAtIndex(QStringLiteral("Renamed"), 0);
    list->selectItemAtIndexByExtendingSelection(1, false);
    list->setFrameSize(KRSizeMake(250, 600));
    list->layoutIfNeeded();

    EXPECT_EQ(linesOf(log->without(kDataSourceMessages)), linesOf(QStringList()))
        << "the data source was asked, the delegate heard nothing";
    EXPECT_FALSE(list->checkListViewTextViewDoCommandBySelector(list.get(), list->fieldEditor().get(),
                                                                KRSelector("insertNewline:")));
    EXPECT_EQ(list->checkListViewUndoManagerForTextView(list.get(), list->fieldEditor().get()), nullptr);
    EXPECT_TRUE(log->messages().filter(QStringLiteral("textView")).isEmpty());
}

TEST_F(KRCheckListViewTests, DelegateAnswersTheCommandAndUndoQuestionsWhenItImplementsThem) {
    showItems({"a"});
    QUndoStack undoStack;
    delegate->doCommandAnswer = true;
    delegate->undoManagerAnswer = &undoStack;
    EXPECT_TRUE(list->checkListViewTextViewDoCommandBySelector(list.get(), list->fieldEditor().get(),
                                                               KRSelector("insertNewline:")));
    EXPECT_EQ(list->checkListViewUndoManagerForTextView(list.get(), list->fieldEditor().get()), &undoStack);
    EXPECT_EQ(linesOf(log->messages()),
              linesOf(QStringList{QStringLiteral("textViewDoCommandBySelector insertNewline:"),
                                  QStringLiteral("undoManagerForTextView")}));
}

TEST_F(KRCheckListViewTests, DataSourceWithoutSetTitleKeepsItsTitleWhileTheDelegateHearsWillAndDid) {
    showItems({"a", "b", "c"});
    KRLogCapture capture;
    list->setTitleForItemAtIndex(QStringLiteral("Renamed"), 1);

    EXPECT_EQ(dataSource->items[1].title, QStringLiteral("Item b"));
    EXPECT_EQ(list->titleForItemAtIndex(1), QStringLiteral("Item b"));
    EXPECT_EQ(linesOf(log->messages()), linesOf(QStringList{QStringLiteral("willSetTitleForItemAtIndex 1"),
                                                            QStringLiteral("didSetTitleForItemAtIndex 1")}));
    EXPECT_TRUE(capture.lines().isEmpty()) << "no deprecated method was used";
}

TEST_F(KRCheckListViewTests, DeprecatedSettersReceiveTheValuesWithAWarningOnEveryUse) {
    auto full = std::make_shared<FullRecordingDataSource>(log);
    showItemsFrom(full, {"a", "b", "c"});
    EXPECT_TRUE(
        list->dataSourceRespondsTo(KRCheckListViewDataSourceMethod::checkListViewSetTitleForItemAtIndex));
    KRLogCapture capture;

    list->setTitleForItemAtIndex(QStringLiteral("Renamed"), 1);
    list->setTitleForItemAtIndex(QStringLiteral("Renamed again"), 2);
    list->setStatusForItemsAtIndexes(2, KRIndexSet{0, 2});

    EXPECT_EQ(full->items[1].title, QStringLiteral("Renamed"));
    EXPECT_EQ(full->items[2].title, QStringLiteral("Renamed again"));
    EXPECT_EQ(full->items[0].status, 2u);
    EXPECT_EQ(full->items[2].status, 2u);
    EXPECT_EQ(linesOf(capture.lines()),
              linesOf(QStringList{kSetTitleWarning, kSetTitleWarning, kSetStatusWarning, kSetStatusWarning}));
    EXPECT_EQ(linesOf(log->startingWith({QStringLiteral("setTitle "), QStringLiteral("setStatus ")})),
              linesOf(QStringList{QStringLiteral("setTitle \"Renamed\" forItemAtIndex 1"),
                                  QStringLiteral("setTitle \"Renamed again\" forItemAtIndex 2"),
                                  QStringLiteral("setStatus 2 forItemAtIndex 0"),
                                  QStringLiteral("setStatus 2 forItemAtIndex 2")}));
}

TEST_F(KRCheckListViewTests, SettingAStatusOnAnEmptySetSendsNothing) {
    auto full = std::make_shared<FullRecordingDataSource>(log);
    showItemsFrom(full, {"a", "b"});
    KRLogCapture capture;
    list->setStatusForItemsAtIndexes(0, KRIndexSet());
    list->setStatusForItemsAtIndexes(1, KRIndexSet());
    EXPECT_EQ(linesOf(log->messages()), linesOf(QStringList()));
    EXPECT_TRUE(capture.lines().isEmpty());
}

TEST_F(KRCheckListViewTests, CheckBoxWhoseNewStatusIsRefusedKeepsShowingTheOldStatus) {
    showItems({"a", "b", "c"});
    dataSource->statusValidator = [this](KRUInteger, KRUInteger index) {
        return dataSource->items.at(index).status;
    };
    clickCheckBoxOfRow(1);

    EXPECT_EQ(linesOf(log->messages()),
              linesOf(QStringList{QStringLiteral("validateChangedStatus 1 forItemAtIndex 1")}));
    EXPECT_EQ(rowAt(1)->status(), 0u);
    EXPECT_EQ(list->statusForItemAtIndex(1), 0u);
    EXPECT_EQ(rowAt(1)->checkBoxButtonView()->image(), KRCheckListResources::checkboxNormalImage());
}

TEST_F(KRCheckListViewTests, CheckBoxShowsTheStatusTheDataSourceAnswers) {
    showItems({"a", "b", "c"});
    dataSource->statusValidator = [](KRUInteger, KRUInteger) -> KRUInteger { return 2; };
    clickCheckBoxOfRow(2);

    EXPECT_EQ(linesOf(log->messages()),
              linesOf(QStringList{QStringLiteral("validateChangedStatus 1 forItemAtIndex 2")}));
    EXPECT_EQ(rowAt(2)->status(), 2u);
    EXPECT_EQ(rowAt(2)->checkBoxButtonView()->image(), KRCheckListResources::checkboxCanceledImage());
}

TEST_F(KRCheckListViewTests, RowStatusChangeIsPassedToTheDataSourceForTheRowsIndex) {
    showItems({"a", "b", "c"});
    dataSource->statusValidator = [](KRUInteger status, KRUInteger) { return status == 1 ? 2u : 1u; };
    EXPECT_EQ(list->checkListItemViewValidateChangedStatus(rowAt(2), 1), 2u);
    EXPECT_EQ(list->checkListItemViewValidateChangedStatus(rowAt(0), 0), 1u);
    EXPECT_EQ(linesOf(log->messages()),
              linesOf(QStringList{QStringLiteral("validateChangedStatus 1 forItemAtIndex 2"),
                                  QStringLiteral("validateChangedStatus 0 forItemAtIndex 0")}));
}

TEST_F(KRCheckListViewTests, RowTitleChangeRefreshesPlaceholdersBeforeTheDataSourceDecides) {
    showItems({"a", "b", "c"});
    dataSource->items[0].title = QString();
    list->reloadItems();
    rowAt(0)->setPlaceholder(QStringLiteral("Add an item"));
    rowAt(2)->setPlaceholder(QStringLiteral("Stale"));
    log->clear();

    QString placeholderOfRow2WhenAsked;
    dataSource->titleValidator = [&](const QString& title, KRUInteger) {
        placeholderOfRow2WhenAsked = rowAt(2)->placeholder();
        return title.toUpper();
    };
    EXPECT_EQ(list->checkListItemViewValidateChangedTitle(rowAt(2), QStringLiteral("typed")),
              QStringLiteral("TYPED"));
    EXPECT_EQ(linesOf(log->messages()),
              linesOf(QStringList{QStringLiteral("validateChangedTitle \"typed\" forItemAtIndex 2")}));
    EXPECT_EQ(placeholderOfRow2WhenAsked, QStringLiteral(""));
    EXPECT_EQ(rowAt(0)->placeholder(), QStringLiteral("Add an item")) << "the first row's title is empty";
}

TEST_F(KRCheckListViewTests, ClientsAreHeldWeaklyAndAMissingDataSourceAnswersZero) {
    showItems({"a", "b"});
    ASSERT_EQ(list->numberOfItems(), 2u);
    dataSource.reset();
    delegate.reset();
    EXPECT_EQ(list->dataSource(), nullptr);
    EXPECT_EQ(list->delegate(), nullptr);

    list->reloadItems();
    EXPECT_EQ(list->numberOfItems(), 0u);
    EXPECT_EQ(list->checkListViewNumberOfItems(list.get()), 0u);
    EXPECT_EQ(list->checkListViewStatusForItemAtIndex(list.get(), 0), 0u);
    EXPECT_TRUE(list->checkListViewTitleForItemAtIndex(list.get(), 0).isNull());
    EXPECT_TRUE(
        list->checkListViewValidateChangedTitleForItemAtIndex(list.get(), QStringLiteral("x"), 0).isNull());
    EXPECT_EQ(list->checkListViewValidateChangedStatusForItemAtIndex(list.get(), 1, 0), 0u);
    EXPECT_TRUE(log->messages().isEmpty());
}

TEST_F(KRCheckListViewTests, ClientsAreReadAfreshAtEveryMessage) {
    showItems({"a", "b"});
    auto otherLog = std::make_shared<MessageLog>();
    auto otherDelegate = std::make_shared<RecordingDelegate>(otherLog);
    list->setDelegate(otherDelegate);
    list->setTitleForItemAtIndex(QStringLiteral("x"), 0);
    EXPECT_TRUE(log->messages().isEmpty());
    EXPECT_EQ(linesOf(otherLog->messages()),
              linesOf(QStringList{QStringLiteral("willSetTitleForItemAtIndex 0"),
                                  QStringLiteral("didSetTitleForItemAtIndex 0")}));
}

// A new list
// ------------------------------------------------------------------------------------------------------

TEST_F(KRCheckListViewTests, NewListHasNoItemsNoEditNoSelectionAndItsFirstValues) {
    auto fresh = std::make_shared<KRCheckListView>(KRRectMake(0, 0, 200, 100));
    EXPECT_EQ(fresh->numberOfItems(), 0u);
    EXPECT_EQ(fresh->indexForEditedItem(), KRNotFound);
    EXPECT_TRUE(fresh->indexesForSelectedItems().isEmpty());
    EXPECT_TRUE(fresh->indexesForEditedOrSelectedItems().isEmpty());
    EXPECT_EQ(fresh->placeholder(), QStringLiteral("Checklist"));
    EXPECT_EQ(fresh->pivotIndex(), 0);
    EXPECT_EQ(fresh->dropPlaceholderIndex(), 0u);
    EXPECT_EQ(fresh->dropPlaceholderFrame(), KRRectZero);
    EXPECT_EQ(fresh->lastSizeThatFits(), KRSizeZero);
    EXPECT_TRUE(KRRectIsNull(fresh->insertionPointRectOnScreen()));
    EXPECT_EQ(fresh->insertionPointRect(), KRRectZero);
    EXPECT_EQ(fresh->backgroundColor(), KRCheckListDefaults::fillColor());
    EXPECT_EQ(fresh->dataSource(), nullptr);
    EXPECT_EQ(fresh->delegate(), nullptr);
    EXPECT_TRUE(fresh->checkListItemViews().empty());
    EXPECT_TRUE(fresh->checkListItemViewsByIdentifier().isEmpty());
    EXPECT_FALSE(fresh->isUpdating());
    EXPECT_FALSE(fresh->isReloading());
    EXPECT_FALSE(fresh->isDragging());
    EXPECT_FALSE(fresh->hasFocus());
}

TEST_F(KRCheckListViewTests, NewListOwnsAFieldEditorADetachedDummyRowAndThePlaceholderContainer) {
    auto fresh = std::make_shared<KRCheckListView>(KRRectMake(0, 0, 200, 100));
    ASSERT_NE(fresh->fieldEditor(), nullptr);
    EXPECT_TRUE(fresh->fieldEditor()->isFieldEditor());
    ASSERT_NE(fresh->dummyCheckListItemView(), nullptr);
    EXPECT_EQ(fresh->dummyCheckListItemView()->superview(), nullptr);
    ASSERT_NE(fresh->dropPlaceholderContentView(), nullptr);
    EXPECT_EQ(fresh->dropPlaceholderContentView()->superview(), fresh.get());
    EXPECT_EQ(fresh->subviews().size(), 1u);
    EXPECT_TRUE(fresh->acceptsFirstMouse(nullptr));
}

TEST_F(KRCheckListViewTests, UnloadingLeavesTheEditedIndexAtZero) {
    auto fresh = std::make_shared<KRCheckListView>(KRRectMake(0, 0, 200, 100));
    ASSERT_EQ(fresh->indexForEditedItem(), KRNotFound);
    fresh->checkListViewUnload();
    EXPECT_EQ(fresh->indexForEditedItem(), 0u);
    EXPECT_EQ(fresh->fieldEditor(), nullptr);
    EXPECT_EQ(fresh->dummyCheckListItemView(), nullptr);
    EXPECT_EQ(fresh->dropPlaceholderContentView(), nullptr);
    // Loaded again, so that destruction unloads a loaded list.
    fresh->checkListViewLoad();
    EXPECT_EQ(fresh->indexForEditedItem(), KRNotFound);
}

// The registry
// ------------------------------------------------------------------------------------------------------

TEST_F(KRCheckListViewTests, RowsCarryTheItemsInOrderAndTheListAsTheirDelegate) {
    showItems({"a", "b", "c"});
    dataSource->items[1].status = 1;
    dataSource->items[2].status = 2;
    list->reloadItems();

    ASSERT_EQ(list->numberOfItems(), 3u);
    EXPECT_EQ(linesOf(rowIdentifiers()), linesOf(QStringList{"a", "b", "c"}));
    for (KRUInteger index = 0; index < 3; ++index) {
        SCOPED_TRACE(index);
        KRCheckListItemView* itemView = rowAt(index);
        EXPECT_EQ(list->checkListViewItemViewForItemAtIndex(index), itemView);
        EXPECT_EQ(list->checkListViewIndexForItemView(itemView), index);
        EXPECT_EQ(list->identifierForItemAtIndex(index), QJsonValue(dataSource->items[index].identifier));
        EXPECT_EQ(list->statusForItemAtIndex(index), dataSource->items[index].status);
        EXPECT_EQ(list->titleForItemAtIndex(index), dataSource->items[index].title);
        EXPECT_EQ(itemView->title(), dataSource->items[index].title);
        EXPECT_EQ(list->checkListViewTitleTextFieldForIndex(index), itemView->titleTextField().get());
        EXPECT_EQ(itemView->delegate(), static_cast<KRCheckListItemViewDelegate*>(list.get()));
        EXPECT_EQ(itemView->backgroundColor(), list->backgroundColor());
        EXPECT_EQ(itemView->superview(), list.get());
        EXPECT_EQ(list->checkListItemViewsByIdentifier()
                      .value(QJsonValue(dataSource->items[index].identifier))
                      .get(),
                  itemView);
    }
    EXPECT_EQ(list->checkListItemViewsByIdentifier().size(), 3);
}

TEST_F(KRCheckListViewTests, IndexOfARowOfAnotherListTheDummyRowOrNoRowIsNotFound) {
    showItems({"a", "b", "c"});
    auto otherLog = std::make_shared<MessageLog>();
    auto otherDataSource = std::make_shared<RecordingDataSource>(otherLog);
    otherDataSource->items = itemsWithIdentifiers({"a", "b", "c"});
    auto other = std::make_shared<KRCheckListView>(KRRectMake(0, 0, 300, 200));
    other->setDataSource(otherDataSource);
    other->reloadItems();
    ASSERT_EQ(other->numberOfItems(), 3u);

    EXPECT_EQ(list->checkListViewIndexForItemView(other->checkListItemViews()[1].get()), KRNotFound);
    EXPECT_EQ(list->checkListViewIndexForItemView(list->dummyCheckListItemView().get()), KRNotFound);
    EXPECT_EQ(list->checkListViewIndexForItemView(nullptr), KRNotFound);
    EXPECT_EQ(list->checkListViewIndexForItemView(rowAt(1)), 1u);
}

TEST_F(KRCheckListViewTests, IndexForAViewWithoutARowAmongItsAncestorsIsNotFound) {
    showItems({"a", "b", "c"});
    auto loose = std::make_shared<KRView>(KRRectMake(0, 0, 10, 10));
    list->addSubview(loose);
    auto looseField = std::make_shared<KRTextField>(KRRectMake(0, 0, 10, 10));
    content->addSubview(looseField);

    EXPECT_EQ(list->checkListViewIndexForTitleTextField(loose.get()), KRNotFound);
    EXPECT_EQ(list->checkListViewIndexForTitleTextField(looseField.get()), KRNotFound);
    EXPECT_EQ(list->checkListViewIndexForTitleTextField(list.get()), KRNotFound);
    EXPECT_EQ(list->checkListViewIndexForTitleTextField(rowAt(2)->titleTextField().get()), 2u);
}

TEST_F(KRCheckListViewTests, IndexForAViewInsideARowIsThatRowsIndexWhileTheRowIsListed) {
    showItems({"a", "b", "c"});
    auto inner = std::make_shared<KRView>(KRRectMake(0, 0, 4, 4));
    rowAt(1)->maskView()->addSubview(inner);
    EXPECT_EQ(list->checkListViewIndexForTitleTextField(inner.get()), 1u);
    EXPECT_EQ(list->checkListViewIndexForTitleTextField(rowAt(1)), 1u) << "a row is its own nearest row";

    std::shared_ptr<KRCheckListItemView> removed = list->checkListItemViews()[1];
    dataSource->checkListViewRemoveItemsAtIndexes(list.get(), KRIndexSet{1});
    EXPECT_EQ(list->checkListViewIndexForTitleTextField(removed->titleTextField().get()), KRNotFound);
    EXPECT_EQ(list->checkListViewIndexForTitleTextField(inner.get()), KRNotFound);
}

TEST_F(KRCheckListViewTests, TitleAnswersWhatTheRowShowsUntilTheDataSourceReportsAChange) {
    showItems({"a", "b", "c"});
    dataSource->items[1].title = QStringLiteral("Changed");
    dataSource->items[1].status = 1;
    EXPECT_EQ(list->titleForItemAtIndex(1), QStringLiteral("Item b"));
    EXPECT_EQ(list->statusForItemAtIndex(1), 0u);
    EXPECT_TRUE(log->messages().isEmpty()) << "the readers do not ask the data source";

    list->beginUpdates();
    list->updateByReloadingItemAtIndex(1);
    list->endUpdates();
    EXPECT_EQ(list->titleForItemAtIndex(1), QStringLiteral("Changed"));
    EXPECT_EQ(list->statusForItemAtIndex(1), 1u);
}

TEST_F(KRCheckListViewTests, NumberOfItemsCountsRowsWithoutAskingTheDataSource) {
    showItems({"a", "b", "c"});
    dataSource->items.pop_back();
    EXPECT_EQ(list->numberOfItems(), 3u);
    EXPECT_TRUE(log->messages().isEmpty());
}

TEST_F(KRCheckListViewTests, ObservationContextsMarkLayoutOrRefreshPlaceholders) {
    showItems({"a", "b"});
    list->layoutIfNeeded();
    ASSERT_FALSE(list->needsLayout());
    KRKeyValueChange change;
    list->observeValueForKeyPath("anyKey", list.get(), change,
                                 &KRCheckListObserveKeyPathsTriggeringSetNeedsLayoutContext);
    EXPECT_TRUE(list->needsLayout());

    rowAt(1)->setPlaceholder(QStringLiteral("Stale"));
    list->observeValueForKeyPath("anyKey", list.get(), change,
                                 &KRCheckListObserveKeyPathsTriggeringSetNeedsUpdateContext);
    EXPECT_EQ(rowAt(1)->placeholder(), QStringLiteral(""));

    // A context that merely has the same text is another context.
    const std::string sameText = KRCheckListObserveKeyPathsTriggeringSetNeedsLayoutContext;
    list->layoutIfNeeded();
    list->observeValueForKeyPath("anyKey", list.get(), change, sameText.c_str());
    EXPECT_FALSE(list->needsLayout());
}
