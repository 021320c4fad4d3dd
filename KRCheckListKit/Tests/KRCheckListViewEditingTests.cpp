// The selection primitive and its wrappers, the begin- and end-editing primitives with every step and
// delegate message, the list's focus as far as editing needs it, and the placeholder rule.
#include "KRCheckListKit.h"

#include "KRCheckListViewCoreTestClients.h"

#include "Foundation/KRAssertionHandler.h"
#include "Foundation/KRRunLoop.h"
#include "Views/KREvent.h"
#include "Views/KRWindow.h"

#include <gtest/gtest.h>

#include <memory>

using namespace KRCheckListViewCoreTesting;

namespace {

// What the list and a row looked like when the delegate heard a message.
struct Moment {
    QString line;
    KRUInteger indexForEditedItem = 0;
    KRIndexSet selection;
    bool selecting = false;
    bool beginningEditing = false;
    bool endingEditing = false;
    bool rowEdited = false;
    bool rowSelected = false;
    bool fieldEditable = false;
    bool fieldHasEditor = false;
    bool listIsFirstResponder = false;
};

class KRCheckListViewEditingTests : public ::testing::Test {
protected:
    void SetUp() override {
        KRTextView::installTextSystem();
        content = std::make_shared<KRView>(KRRectMake(0, 0, 400, 600));
        window.setContentView(content);
        list = std::make_shared<KRCheckListView>(KRRectMake(0, 0, 320, 400));
        content->addSubview(list);
        dataSource = std::make_shared<MemoryDataSource>(log);
        dataSource->itemList =
            MemoryDataSource::items({QStringLiteral("Milk"), QStringLiteral("Eggs"), QStringLiteral("Bread"),
                                     QStringLiteral("Butter"), QStringLiteral("Jam")});
        list->setDataSource(dataSource);
        delegate = std::make_shared<RecordingDelegate>(log);
        list->setDelegate(delegate);
        list->reloadItems();
        log->clear();
    }
    void TearDown() override {
        window.makeFirstResponder(nullptr);
        KRRunLoop::main().cancelAll();
        KRAssertionHandler::setCurrentHandler(nullptr);
    }

    KRCheckListItemView* row(KRUInteger index) const {
        return list->checkListViewItemViewForItemAtIndex(index);
    }

    // Records the state at every message, watching row `index`.
    void watch(KRUInteger index) {
        log->onMessage = [this, index](const QString& line) {
            Moment moment;
            moment.line = line;
            moment.indexForEditedItem = list->indexForEditedItem();
            moment.selection = list->indexesForSelectedItems();
            moment.selecting = list->isSelecting();
            moment.beginningEditing = list->isBeginningEditing();
            moment.endingEditing = list->isEndingEditing();
            KRCheckListItemView* watched = row(index);
            moment.rowEdited = watched->isEdited();
            moment.rowSelected = watched->isSelected();
            moment.fieldEditable = watched->titleTextField()->isEditable();
            moment.fieldHasEditor = watched->titleTextField()->currentEditor() != nullptr;
            moment.listIsFirstResponder = window.firstResponder() == list.get();
            moments.push_back(moment);
        };
    }

    // The list takes the focus (which edits the last item) and the deferred did-message is delivered.
    void focus() {
        window.makeFirstResponder(list.get());
        KRRunLoop::main().runUntilIdle();
        ASSERT_TRUE(list->hasFocus());
        log->clear();
    }
    void focusWithoutEditing() {
        focus();
        list->endEditing();
        ASSERT_EQ(window.firstResponder(), list.get());
        log->clear();
    }

    KRWindow window;
    std::shared_ptr<KRView> content;
    std::shared_ptr<MessageLog> log = std::make_shared<MessageLog>();
    std::shared_ptr<KRCheckListView> list;
    std::shared_ptr<MemoryDataSource> dataSource;
    std::shared_ptr<RecordingDelegate> delegate;
    std::vector<Moment> moments;
};

} // namespace

// Selection
// ------------------------------------------------------------------------------------------------------

TEST_F(KRCheckListViewEditingTests, SelectingTellsTheDelegateBeforeAndAfterTheRowsChange) {
    focusWithoutEditing();
    watch(3);
    list->selectItemsAtIndexesByExtendingSelection(KRIndexSet{1, 3}, false);

    KR_CORE_EXPECT_LINES(log->lines,
                         (QStringList{QStringLiteral("checkListViewWillSelectItemsAtIndexes [1, 3]"),
                                      QStringLiteral("checkListViewDidSelectItemsAtIndexes [1, 3]")}));
    ASSERT_EQ(moments.size(), 2u);
    EXPECT_TRUE(moments[0].selecting);
    EXPECT_FALSE(moments[0].rowSelected);
    EXPECT_TRUE(moments[0].selection.isEmpty());
    EXPECT_TRUE(moments[1].selecting);
    EXPECT_TRUE(moments[1].rowSelected);
    EXPECT_EQ(moments[1].selection, (KRIndexSet{1, 3}));
    EXPECT_TRUE(moments[1].listIsFirstResponder);
    EXPECT_FALSE(list->isSelecting());

    EXPECT_EQ(list->indexesForSelectedItems(), (KRIndexSet{1, 3}));
    for (KRUInteger index = 0; index < 5; ++index) {
        EXPECT_EQ(row(index)->isSelected(), index == 1 || index == 3) << index;
    }
}

TEST_F(KRCheckListViewEditingTests, SelectingInAnUnfocusedListGivesItTheFocusButEditsNothing) {
    list->selectItemAtIndexByExtendingSelection(2, false);
    KR_CORE_EXPECT_LINES(log->lines,
                         (QStringList{QStringLiteral("checkListViewWillSelectItemsAtIndexes [2]"),
                                      QStringLiteral("checkListViewWillGainFocus"),
                                      QStringLiteral("checkListViewDidSelectItemsAtIndexes [2]")}));
    EXPECT_EQ(window.firstResponder(), list.get());
    EXPECT_TRUE(list->hasFocus());
    EXPECT_EQ(list->indexForEditedItem(), KRNotFound);
}

TEST_F(KRCheckListViewEditingTests, ExtendingAddsToTheSelectionAndKeepsOneCopyOfEachIndex) {
    focusWithoutEditing();
    list->selectItemAtIndexByExtendingSelection(1, false);
    list->selectItemsAtIndexesByExtendingSelection(KRIndexSet{1, 3}, true);
    EXPECT_EQ(list->indexesForSelectedItems(), (KRIndexSet{1, 3}));
    EXPECT_EQ(log->lines.last(), QStringLiteral("checkListViewDidSelectItemsAtIndexes [1, 3]"));
    list->selectItemAtIndexByExtendingSelection(0, false);
    EXPECT_EQ(list->indexesForSelectedItems(), KRIndexSet(0));
    EXPECT_FALSE(row(1)->isSelected());
    EXPECT_FALSE(row(3)->isSelected());
}

TEST_F(KRCheckListViewEditingTests, TheWrappersSelectAllAndDeselect) {
    focusWithoutEditing();
    list->selectAllItems();
    EXPECT_EQ(list->indexesForSelectedItems(), KRIndexSet(KRRange{0, 5}));
    list->deselectItemAtIndex(2);
    EXPECT_EQ(list->indexesForSelectedItems(), (KRIndexSet{0, 1, 3, 4}));
    list->deselectItemsAtIndexes(KRIndexSet{0, 1, 7});
    EXPECT_EQ(list->indexesForSelectedItems(), (KRIndexSet{3, 4}));
    list->deselectAllItems();
    EXPECT_TRUE(list->indexesForSelectedItems().isEmpty());
    for (KRUInteger index = 0; index < 5; ++index) {
        EXPECT_FALSE(row(index)->isSelected());
    }
    KR_CORE_EXPECT_LINES(log->filtered(QStringLiteral("checkListViewDidSelect")),
                         (QStringList{QStringLiteral("checkListViewDidSelectItemsAtIndexes [0-4]"),
                                      QStringLiteral("checkListViewDidSelectItemsAtIndexes [0-1, 3-4]"),
                                      QStringLiteral("checkListViewDidSelectItemsAtIndexes [3-4]"),
                                      QStringLiteral("checkListViewDidSelectItemsAtIndexes (empty)")}));
}

TEST_F(KRCheckListViewEditingTests, SelectingEndsARunningEditFirstAndLeavesThePivot) {
    focus();
    ASSERT_EQ(list->indexForEditedItem(), 4u);
    ASSERT_EQ(list->pivotIndex(), 4);
    watch(4);
    list->selectItemAtIndexByExtendingSelection(0, false);

    KR_CORE_EXPECT_LINES(log->lines,
                         (QStringList{QStringLiteral("checkListViewWillEndEditingItemAtIndex 4"),
                                      QStringLiteral("checkListViewDidEndEditingItemAtIndex 4"),
                                      QStringLiteral("checkListViewWillSelectItemsAtIndexes [0]"),
                                      QStringLiteral("checkListViewDidSelectItemsAtIndexes [0]")}));
    EXPECT_TRUE(moments[0].selecting);
    EXPECT_EQ(list->indexForEditedItem(), KRNotFound);
    EXPECT_FALSE(row(4)->isEdited());
    EXPECT_EQ(list->pivotIndex(), 4);
    // Ending the edit for the selection is not losing the focus.
    EXPECT_TRUE(list->hasFocus());
}

TEST_F(KRCheckListViewEditingTests, AnEmptySelectionDeselectsEverythingAndStillEndsEditing) {
    focus();
    list->selectItemsAtIndexesByExtendingSelection(KRIndexSet(), false);
    KR_CORE_EXPECT_LINES(log->lines,
                         (QStringList{QStringLiteral("checkListViewWillEndEditingItemAtIndex 4"),
                                      QStringLiteral("checkListViewDidEndEditingItemAtIndex 4"),
                                      QStringLiteral("checkListViewWillSelectItemsAtIndexes (empty)"),
                                      QStringLiteral("checkListViewDidSelectItemsAtIndexes (empty)")}));
    EXPECT_EQ(list->indexForEditedItem(), KRNotFound);
}

TEST_F(KRCheckListViewEditingTests, SelectingRedrawsTheDividers) {
    focusWithoutEditing();
    list->layoutIfNeeded();
    ASSERT_TRUE(row(0)->drawsBottomDivider());
    ASSERT_TRUE(row(1)->drawsBottomDivider());
    list->selectItemAtIndexByExtendingSelection(1, false);
    EXPECT_TRUE(row(0)->drawsTopDivider());
    EXPECT_FALSE(row(0)->drawsBottomDivider());
    EXPECT_FALSE(row(1)->drawsBottomDivider());
    EXPECT_TRUE(row(2)->drawsBottomDivider());
    EXPECT_TRUE(row(4)->drawsBottomDivider());
}

TEST_F(KRCheckListViewEditingTests, TheCommandOperandIsTheSelectionOrTheEditedItem) {
    EXPECT_TRUE(list->indexesForEditedOrSelectedItems().isEmpty());
    focus();
    EXPECT_EQ(list->indexesForEditedOrSelectedItems(), KRIndexSet(4));
    list->selectItemsAtIndexesByExtendingSelection(KRIndexSet{0, 2}, false);
    EXPECT_EQ(list->indexesForEditedOrSelectedItems(), (KRIndexSet{0, 2}));
}

// Beginning an edit
// ------------------------------------------------------------------------------------------------------

TEST_F(KRCheckListViewEditingTests, BeginningAnEditRunsEveryStepBetweenTheWillAndDidMessages) {
    focusWithoutEditing();
    watch(2);
    list->beginEditingItemAtIndexSelectRange(2, KRRange{1, 2});

    KR_CORE_EXPECT_LINES(log->lines,
                         (QStringList{QStringLiteral("checkListViewWillBeginEditingItemAtIndex 2"),
                                      QStringLiteral("checkListViewDidBeginEditingItemAtIndex 2")}));
    ASSERT_EQ(moments.size(), 2u);
    EXPECT_TRUE(moments[0].beginningEditing);
    EXPECT_FALSE(moments[0].rowEdited);
    EXPECT_FALSE(moments[0].fieldHasEditor);
    EXPECT_EQ(moments[0].indexForEditedItem, KRNotFound);
    EXPECT_TRUE(moments[1].beginningEditing);
    EXPECT_TRUE(moments[1].rowEdited);
    EXPECT_TRUE(moments[1].fieldEditable);
    EXPECT_TRUE(moments[1].fieldHasEditor);
    EXPECT_EQ(moments[1].indexForEditedItem, 2u);
    EXPECT_FALSE(list->isBeginningEditing());

    KRCheckListItemTitleTextField* field = row(2)->titleTextField().get();
    EXPECT_EQ(field->currentEditor(), list->fieldEditor().get());
    EXPECT_EQ(window.firstResponder(), list->fieldEditor().get());
    EXPECT_EQ(list->fieldEditor()->selectedRange(), (KRRange{1, 2}));
    EXPECT_EQ(list->fieldEditor()->selectionAffinity(), KRTextView::SelectionAffinityUpstream);
    EXPECT_EQ(list->pivotIndex(), 2);
    EXPECT_EQ(list->indexForEditedItem(), 2u);
    // The title field taking first responder from the list is not the list losing focus.
    EXPECT_TRUE(list->hasFocus());
}

TEST_F(KRCheckListViewEditingTests, BeginningAnotherEditEndsTheRunningOneFirst) {
    focus();
    KRCheckListItemView* previous = row(4);
    list->beginEditingItemAtIndexSelectRange(1, KRRange{0, 0});

    KR_CORE_EXPECT_LINES(log->lines,
                         (QStringList{QStringLiteral("checkListViewWillEndEditingItemAtIndex 4"),
                                      QStringLiteral("checkListViewDidEndEditingItemAtIndex 4"),
                                      QStringLiteral("checkListViewWillBeginEditingItemAtIndex 1"),
                                      QStringLiteral("checkListViewDidBeginEditingItemAtIndex 1")}));
    EXPECT_FALSE(previous->isEdited());
    EXPECT_FALSE(previous->titleTextField()->isEditable());
    EXPECT_EQ(previous->titleTextField()->currentEditor(), nullptr);
    EXPECT_EQ(row(1)->titleTextField()->currentEditor(), list->fieldEditor().get());
    EXPECT_EQ(list->indexForEditedItem(), 1u);
    EXPECT_EQ(list->pivotIndex(), 1);
}

TEST_F(KRCheckListViewEditingTests, BeginningAnEditDeselectsAllFirst) {
    focusWithoutEditing();
    list->selectItemsAtIndexesByExtendingSelection(KRIndexSet{0, 1}, false);
    log->clear();
    list->beginEditingItemAtIndexSelectRange(3, KRRange{0, 0});
    KR_CORE_EXPECT_LINES(log->lines,
                         (QStringList{QStringLiteral("checkListViewWillSelectItemsAtIndexes (empty)"),
                                      QStringLiteral("checkListViewDidSelectItemsAtIndexes (empty)"),
                                      QStringLiteral("checkListViewWillBeginEditingItemAtIndex 3"),
                                      QStringLiteral("checkListViewDidBeginEditingItemAtIndex 3")}));
    EXPECT_TRUE(list->indexesForSelectedItems().isEmpty());
    EXPECT_EQ(list->indexesForEditedOrSelectedItems(), KRIndexSet(3));
}

TEST_F(KRCheckListViewEditingTests, TheRequestedRangeIsClampedToTheTitle) {
    focusWithoutEditing();
    const auto selectionFor = [&](KRRange range) {
        list->beginEditingItemAtIndexSelectRange(0, range); // "Milk"
        return list->fieldEditor()->selectedRange();
    };
    EXPECT_EQ(selectionFor(KRRange{2, 1}), (KRRange{2, 1}));
    EXPECT_EQ(selectionFor(KRRange{10, 0}), (KRRange{4, 0}));
    EXPECT_EQ(selectionFor(KRRange{1, 100}), (KRRange{1, 3}));
    EXPECT_EQ(selectionFor(KRRange{KRUIntegerMax, 0}), (KRRange{4, 0}));
    EXPECT_EQ(selectionFor(KRRange{0, KRUIntegerMax}), (KRRange{0, 4}));
}

TEST_F(KRCheckListViewEditingTests, EnteringTheLastLineOfAOneLineTitleKeepsTheRangeWithTheCaretDownstream) {
    focusWithoutEditing();
    list->beginEditingItemAtIndexSelectRangeUseTrackedInsertionPointInFirstLineInLastLine(1, KRRange{2, 0},
                                                                                          false, false, true);
    EXPECT_EQ(list->fieldEditor()->selectedRange(), (KRRange{2, 0}));
    EXPECT_EQ(list->fieldEditor()->selectionAffinity(), KRTextView::SelectionAffinityDownstream);
}

TEST_F(KRCheckListViewEditingTests, EnteringTheLastLineCountsTheLocationFromThatLinesStart) {
    const QString longTitle =
        QStringLiteral("Pick up the dry cleaning on the way home and remember the receipt "
                       "that is in the drawer by the door");
    dataSource->itemList[2].title = longTitle;
    list->reloadItems();
    focusWithoutEditing();

    list->beginEditingItemAtIndexSelectRangeUseTrackedInsertionPointInFirstLineInLastLine(2, KRRange{3, 1000},
                                                                                          false, false, true);
    KRRange lastLine;
    list->fieldEditor()->lineFragmentRectForCharacterAtIndex(static_cast<KRUInteger>(longTitle.size()) - 1,
                                                             &lastLine);
    ASSERT_GT(lastLine.location, 0u) << "the title should wrap";
    // Asked for {last line start + 3, the last line's length}; the editor keeps the part within the title.
    const KRUInteger length = static_cast<KRUInteger>(longTitle.size());
    EXPECT_EQ(list->fieldEditor()->selectedRange(),
              (KRRange{lastLine.location + 3, std::min(lastLine.length, length - lastLine.location - 3)}));
    EXPECT_EQ(list->fieldEditor()->selectionAffinity(), KRTextView::SelectionAffinityDownstream);
}

TEST_F(KRCheckListViewEditingTests, ATitleShorterThanTwoCharactersSkipsTheLastLineAdjustment) {
    dataSource->itemList[0].title = QStringLiteral("A");
    list->reloadItems();
    focusWithoutEditing();
    list->beginEditingItemAtIndexSelectRangeUseTrackedInsertionPointInFirstLineInLastLine(0, KRRange{0, 1},
                                                                                          false, false, true);
    EXPECT_EQ(list->fieldEditor()->selectedRange(), (KRRange{0, 1}));
}

TEST_F(KRCheckListViewEditingTests, WithoutATrackedPositionTheRangeIsUsed) {
    focusWithoutEditing();
    ASSERT_TRUE(KRRectIsNull(list->insertionPointRectOnScreen()));
    list->beginEditingItemAtIndexSelectRangeUseTrackedInsertionPointInFirstLineInLastLine(3, KRRange{1, 2},
                                                                                          true, false, false);
    EXPECT_EQ(list->fieldEditor()->selectedRange(), (KRRange{1, 2}));
}

TEST_F(KRCheckListViewEditingTests, ATrackedPositionPlacesTheCaretInsteadOfTheRange) {
    focusWithoutEditing();
    list->layoutIfNeeded();
    KRCheckListItemTitleTextField* field = row(3)->titleTextField().get(); // "Butter"
    const KRRect fieldFrame = field->bounds();
    const KRPoint rightOfTheText =
        field->convertPointToScreen(KRPoint{fieldFrame.size.width - 2.0, fieldFrame.size.height * 0.5});
    const KRPoint atTheStart = field->convertPointToScreen(KRPoint{0.0, fieldFrame.size.height * 0.5});

    list->beginEditingItemAtIndexInsertionPoint(3, rightOfTheText);
    EXPECT_EQ(list->fieldEditor()->selectedRange(), (KRRange{6, 0}));
    EXPECT_EQ(list->insertionPointRectOnScreen(), (KRRect{rightOfTheText, KRSizeZero}));
    EXPECT_EQ(list->fieldEditor()->selectionAffinity(), KRTextView::SelectionAffinityUpstream);

    list->beginEditingItemAtIndexInsertionPoint(3, atTheStart);
    EXPECT_EQ(list->fieldEditor()->selectedRange(), (KRRange{0, 0}));
}

TEST_F(KRCheckListViewEditingTests, AClickInTheEditorForgetsTheTrackedPositionAndIsLeftToTheEditor) {
    focusWithoutEditing();
    list->beginEditingItemAtIndexInsertionPoint(1, KRPoint{10.0, 40.0});
    ASSERT_FALSE(KRRectIsNull(list->insertionPointRectOnScreen()));
    const KREvent click = KREvent::mouseEvent(KREventType::LeftMouseDown, KRPoint{10.0, 40.0}, 0, &window);
    EXPECT_FALSE(list->checkListFieldEditorMouseDown(list->fieldEditor().get(), click));
    EXPECT_TRUE(KRRectIsNull(list->insertionPointRectOnScreen()));
}

// Ending an edit
// ------------------------------------------------------------------------------------------------------

TEST_F(KRCheckListViewEditingTests, EndingAnEditRunsEveryStepBetweenTheWillAndDidMessages) {
    focus();
    KRCheckListItemView* edited = row(4);
    edited->titleTextField()->cell()->setPlaceholderString(QStringLiteral("Something"));
    watch(4);
    list->endEditing();

    KR_CORE_EXPECT_LINES(log->lines,
                         (QStringList{QStringLiteral("checkListViewWillEndEditingItemAtIndex 4"),
                                      QStringLiteral("checkListViewDidEndEditingItemAtIndex 4")}));
    ASSERT_EQ(moments.size(), 2u);
    EXPECT_TRUE(moments[0].endingEditing);
    EXPECT_TRUE(moments[0].rowEdited);
    EXPECT_EQ(moments[0].indexForEditedItem, 4u);
    EXPECT_FALSE(moments[0].fieldEditable);
    EXPECT_FALSE(moments[0].fieldHasEditor);
    EXPECT_TRUE(moments[0].listIsFirstResponder);
    EXPECT_TRUE(moments[1].endingEditing);
    EXPECT_FALSE(moments[1].rowEdited);
    EXPECT_EQ(moments[1].indexForEditedItem, KRNotFound);
    EXPECT_FALSE(list->isEndingEditing());

    EXPECT_EQ(edited->titleTextField()->cell()->placeholderString(), QStringLiteral(""));
    EXPECT_EQ(window.firstResponder(), list.get());
    EXPECT_TRUE(list->hasFocus());
}

TEST_F(KRCheckListViewEditingTests, EndingWithNothingEditedDoesNothing) {
    focusWithoutEditing();
    list->endEditing();
    EXPECT_TRUE(log->lines.isEmpty());
}

TEST_F(KRCheckListViewEditingTests, TypedTextIsValidatedAsItIsTypedAndEndingWritesNothing) {
    focus();
    dataSource->titleAnswer = [](const QString& title) { return title + QStringLiteral("!"); };
    list->fieldEditor()->insertText(QStringLiteral("s"));
    KR_CORE_EXPECT_LINES(
        log->lines, QStringList{QStringLiteral("checkListViewValidateChangedTitleForItemAtIndex Jams 4")});
    EXPECT_EQ(row(4)->title(), QStringLiteral("Jams!"));
    log->clear();
    list->endEditing();
    KR_CORE_EXPECT_LINES(log->lines,
                         (QStringList{QStringLiteral("checkListViewWillEndEditingItemAtIndex 4"),
                                      QStringLiteral("checkListViewDidEndEditingItemAtIndex 4")}));
    EXPECT_EQ(row(4)->title(), QStringLiteral("Jams!"));
}

TEST_F(KRCheckListViewEditingTests, ATitleFieldThatEndsOnItsOwnEndsTheEditAndTheFocus) {
    focus();
    window.makeFirstResponder(nullptr);

    KR_CORE_EXPECT_LINES(log->lines,
                         (QStringList{QStringLiteral("checkListViewWillEndEditingItemAtIndex 4"),
                                      QStringLiteral("checkListViewDidEndEditingItemAtIndex 4"),
                                      QStringLiteral("checkListViewWillLoseFocus"),
                                      QStringLiteral("checkListViewWillSelectItemsAtIndexes (empty)"),
                                      QStringLiteral("checkListViewDidSelectItemsAtIndexes (empty)")}));
    EXPECT_EQ(list->indexForEditedItem(), KRNotFound);
    EXPECT_FALSE(list->hasFocus());
    EXPECT_TRUE(list->isLosingFocus());
    KRRunLoop::main().runOneTurn();
    EXPECT_EQ(log->lines.last(), QStringLiteral("checkListViewDidLoseFocus"));
    EXPECT_FALSE(list->isLosingFocus());
}

TEST_F(KRCheckListViewEditingTests, TheRowsEndOfEditingIsIgnoredWhileTheListEndsTheEditItself) {
    focus();
    log->onMessage = [&](const QString& line) {
        if (line.startsWith(QStringLiteral("checkListViewWillEndEditing"))) {
            list->checkListItemViewDidEndEditingTitle(row(4));
        }
    };
    list->endEditing();
    log->onMessage = nullptr;
    KR_CORE_EXPECT_LINES(log->lines,
                         (QStringList{QStringLiteral("checkListViewWillEndEditingItemAtIndex 4"),
                                      QStringLiteral("checkListViewDidEndEditingItemAtIndex 4")}));
    EXPECT_TRUE(list->hasFocus());
}

TEST_F(KRCheckListViewEditingTests, TheRowsEndOfEditingIsIgnoredWhileTheListSelects) {
    focus();
    log->onMessage = [&](const QString& line) {
        if (line.startsWith(QStringLiteral("checkListViewWillSelect"))) {
            list->checkListItemViewDidEndEditingTitle(row(4));
        }
    };
    list->selectAllItems();
    log->onMessage = nullptr;
    EXPECT_TRUE(list->hasFocus());
    EXPECT_TRUE(log->filtered(QStringLiteral("checkListViewWillLoseFocus")).isEmpty());
    EXPECT_EQ(list->indexesForSelectedItems(), KRIndexSet(KRRange{0, 5}));
}

// Focus
// ------------------------------------------------------------------------------------------------------

TEST_F(KRCheckListViewEditingTests, BecomingFirstResponderGainsTheFocusAndEditsTheLastItemAtItsEnd) {
    window.makeFirstResponder(list.get());

    KR_CORE_EXPECT_LINES(log->lines,
                         (QStringList{QStringLiteral("checkListViewWillGainFocus"),
                                      QStringLiteral("checkListViewWillBeginEditingItemAtIndex 4"),
                                      QStringLiteral("checkListViewDidBeginEditingItemAtIndex 4")}));
    EXPECT_TRUE(list->hasFocus());
    EXPECT_TRUE(list->isGainingFocus());
    EXPECT_FALSE(list->isBecomingFirstResponder());
    EXPECT_EQ(list->indexForEditedItem(), 4u);
    EXPECT_EQ(list->fieldEditor()->selectedRange(), (KRRange{3, 0}));
    EXPECT_EQ(window.firstResponder(), list->fieldEditor().get());

    KRRunLoop::main().runOneTurn();
    EXPECT_EQ(log->lines.last(), QStringLiteral("checkListViewDidGainFocus"));
    EXPECT_FALSE(list->isGainingFocus());
}

TEST_F(KRCheckListViewEditingTests, AnEmptyListOnlyGainsTheFocus) {
    dataSource->itemList.clear();
    list->reloadItems();
    log->clear();
    window.makeFirstResponder(list.get());
    KR_CORE_EXPECT_LINES(log->lines, QStringList{QStringLiteral("checkListViewWillGainFocus")});
    EXPECT_EQ(list->indexForEditedItem(), KRNotFound);
    EXPECT_EQ(window.firstResponder(), list.get());
}

TEST_F(KRCheckListViewEditingTests, ResigningLosesTheFocusAndClearsTheSelection) {
    focusWithoutEditing();
    list->selectItemAtIndexByExtendingSelection(1, false);
    log->clear();
    window.makeFirstResponder(nullptr);
    KR_CORE_EXPECT_LINES(log->lines,
                         (QStringList{QStringLiteral("checkListViewWillLoseFocus"),
                                      QStringLiteral("checkListViewWillSelectItemsAtIndexes (empty)"),
                                      QStringLiteral("checkListViewDidSelectItemsAtIndexes (empty)")}));
    EXPECT_FALSE(list->hasFocus());
    EXPECT_TRUE(list->indexesForSelectedItems().isEmpty());
    EXPECT_TRUE(KRRectIsNull(list->insertionPointRectOnScreen()));
}

TEST_F(KRCheckListViewEditingTests, ResigningIsIgnoredUntilTheGainedFocusHasBeenAnnounced) {
    dataSource->itemList.clear();
    list->reloadItems();
    window.makeFirstResponder(list.get());
    ASSERT_TRUE(list->isGainingFocus());
    window.makeFirstResponder(nullptr);
    EXPECT_TRUE(list->hasFocus());
    EXPECT_EQ(log->filtered(QStringLiteral("checkListViewWillLoseFocus")).size(), 0);
}

TEST_F(KRCheckListViewEditingTests, GainingOrLosingTheFocusTwiceIsAnInternalInconsistency) {
    list->checkListViewGainFocus();
    try {
        list->checkListViewGainFocus();
        FAIL() << "gaining the focus twice should fail";
    } catch (const KRInternalInconsistencyException& failure) {
        EXPECT_EQ(
            failure.message(),
            QStringLiteral(
                "Check list view can't gain focus because it already has focus, internal inconsistency"));
        EXPECT_EQ(failure.file(), QStringLiteral("KRCheckListView"));
        EXPECT_GT(failure.line(), 0);
        EXPECT_EQ(failure.object(), list.get());
    }
    list->checkListViewLoseFocus();
    try {
        list->checkListViewLoseFocus();
        FAIL() << "losing the focus twice should fail";
    } catch (const KRInternalInconsistencyException& failure) {
        EXPECT_EQ(failure.message(),
                  QStringLiteral("Check list view can't lose focus because it doesn't have focus "
                                 "in the first place, internal inconsistency"));
        EXPECT_EQ(failure.file(), QStringLiteral("KRCheckListView"));
    }
}

TEST_F(KRCheckListViewEditingTests, GainingTheFocusForgetsTheTrackedPosition) {
    list->beginEditingItemAtIndexInsertionPoint(0, KRPoint{5.0, 5.0});
    ASSERT_FALSE(KRRectIsNull(list->insertionPointRectOnScreen()));
    list->checkListViewGainFocus();
    EXPECT_TRUE(KRRectIsNull(list->insertionPointRectOnScreen()));
}

// Placeholder
// ------------------------------------------------------------------------------------------------------

TEST_F(KRCheckListViewEditingTests, OnlyTheFirstRowKeepsItsOwnPlaceholderAndOnlyWhileItsTitleIsEmpty) {
    dataSource->itemList[0].title = QString();
    dataSource->itemList[2].title = QString();
    list->reloadItems();
    row(0)->setPlaceholder(QStringLiteral("New item"));
    row(1)->setPlaceholder(QStringLiteral("Stale"));
    row(2)->setPlaceholder(QStringLiteral("Empty too"));
    list->setPlaceholder(QStringLiteral("Not read"));

    list->checkListViewUpdatePlaceholderForEachItemView();
    EXPECT_EQ(row(0)->placeholder(), QStringLiteral("New item"));
    EXPECT_EQ(row(1)->placeholder(), QStringLiteral(""));
    EXPECT_EQ(row(2)->placeholder(), QStringLiteral(""));

    row(0)->setTitle(QStringLiteral("Milk"));
    list->checkListViewUpdatePlaceholderForEachItemView();
    EXPECT_EQ(row(0)->placeholder(), QStringLiteral(""));
}
