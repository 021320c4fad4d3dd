// The selection primitive and its wrappers, the begin- and end-editing primitives with every step and
// delegate message, the list's focus as far as editing needs it, and the placeholder rule.
#include "KRCheckListKit.h"

#include "KRCheckListDefaults.h"
#include "KRCheckListViewCoreTestClients.h"
#include "KRCheckListViewTestSupport.h"

#include "Foundation/KRAssertionHandler.h"
#include "Foundation/KRRunLoop.h"
#include "Views/KREvent.h"
#include "Views/KRWindow.h"

#include <gtest/gtest.h>

#include <memory>
#include <optional>

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

// Ranges, lines and the tracked caret
// ------------------------------------------------------------------------------------------------------

namespace {

// The caret's tracked position over the row at index: x from its title's left edge, y from its top, on
// the screen.
KRPoint screenPointInTitleOfRow(const KRCheckListView& list, KRUInteger index, double x, double y) {
    const KRCheckListItemTitleTextField& field =
        *list.checkListViewItemViewForItemAtIndex(index)->titleTextField();
    return field.convertPointToScreen(KRPoint{x, y});
}

// The x on the screen of the boundary before the character at index in the edited title.
double screenXOfCharacterBoundary(const KRTextView& editor, KRUInteger index) {
    return editor.firstRectForCharacterRange(KRRange{index, 0}, nullptr).origin.x;
}

const QString kWrappingTitle = QStringLiteral(
    "Pick up the dry cleaning on the way home and remember the receipt that is in the drawer by the door");

} // namespace

TEST_F(KRCheckListViewEditingTests, ALocationBeyondTheTitlePutsTheCaretAtTheEndCountingUtf16Units) {
    dataSource->itemList[0].title = QStringLiteral("Milk \U0001F95B");
    list->reloadItems();
    focusWithoutEditing();
    ASSERT_EQ(row(0)->title().size(), 7);

    list->beginEditingItemAtIndexSelectRange(0, KRRange{9, 0});
    EXPECT_EQ(list->fieldEditor()->selectedRange(), (KRRange{7, 0}));
}

TEST_F(KRCheckListViewEditingTests, ALengthRunningPastTheEndOfTheTitleIsShortenedToIt) {
    dataSource->itemList[0].title = QStringLiteral("Milk \U0001F95B");
    list->reloadItems();
    focusWithoutEditing();

    list->beginEditingItemAtIndexSelectRange(0, KRRange{5, 10});
    EXPECT_EQ(list->fieldEditor()->selectedRange(), (KRRange{5, 2}));
}

TEST_F(KRCheckListViewEditingTests, AnyRangeInAnEmptyTitlePutsTheCaretAtItsStart) {
    dataSource->itemList[1].title = QString();
    list->reloadItems();
    focusWithoutEditing();

    list->beginEditingItemAtIndexSelectRange(1, KRRange{3, 4});
    EXPECT_EQ(list->indexForEditedItem(), 1u);
    EXPECT_EQ(list->fieldEditor()->selectedRange(), (KRRange{0, 0}));
}

TEST_F(KRCheckListViewEditingTests, EnteringAnEmptyTitleWithTheLastLineFlagSkipsTheLineAdjustment) {
    dataSource->itemList[1].title = QString();
    list->reloadItems();
    focusWithoutEditing();

    list->beginEditingItemAtIndexSelectRangeUseTrackedInsertionPointInFirstLineInLastLine(1, KRRange{2, 3},
                                                                                          false, false, true);
    EXPECT_EQ(list->indexForEditedItem(), 1u);
    EXPECT_EQ(list->fieldEditor()->selectedRange(), (KRRange{0, 0}));
    EXPECT_EQ(list->fieldEditor()->selectionAffinity(), KRTextView::SelectionAffinityDownstream);
}

TEST_F(KRCheckListViewEditingTests, EnteringTheFirstLineWithATrackedPositionTakesTheFirstLineAtItsX) {
    dataSource->itemList[2].title = kWrappingTitle;
    list->reloadItems();
    focusWithoutEditing();
    list->layoutIfNeeded();
    const double fieldHeight = row(2)->titleTextField()->bounds().size.height;
    ASSERT_GE(fieldHeight, 36.0) << "the title should wrap";
    // Over the title's last line: only the first-line flag brings the caret up.
    const KRPoint tracked = screenPointInTitleOfRow(*list, 2, 60.0, fieldHeight - 9.0);
    list->beginEditingItemAtIndexInsertionPoint(2, tracked);
    KRRange firstLine;
    list->fieldEditor()->lineFragmentRectForCharacterAtIndex(0, &firstLine);
    ASSERT_LT(KRMaxRange(firstLine), static_cast<KRUInteger>(kWrappingTitle.size()));
    ASSERT_GT(list->fieldEditor()->selectedRange().location, KRMaxRange(firstLine));

    list->beginEditingItemAtIndexSelectRangeUseTrackedInsertionPointInFirstLineInLastLine(2, KRRange{0, 5},
                                                                                          true, true, false);

    KRTextView& editor = *list->fieldEditor();
    const KRUInteger expected =
        editor.characterIndexForInsertionAtPoint(KRPoint{editor.convertPointFromScreen(tracked).x, 9.0});
    EXPECT_GT(expected, 0u);
    EXPECT_LE(expected, KRMaxRange(firstLine));
    EXPECT_EQ(editor.selectedRange(), (KRRange{expected, 0}));
    EXPECT_EQ(editor.selectionAffinity(), KRTextView::SelectionAffinityUpstream);
}

TEST_F(KRCheckListViewEditingTests, EnteringTheLastLineWithATrackedPositionTakesTheLastLineTwoPointsRight) {
    dataSource->itemList[2].title = kWrappingTitle;
    list->reloadItems();
    focusWithoutEditing();
    list->layoutIfNeeded();
    // Measure the last line's characters, then aim one point left of the middle of one of them.
    list->beginEditingItemAtIndexSelectRange(2, KRRange{0, 0});
    KRTextView& editor = *list->fieldEditor();
    KRRange lastLine;
    editor.lineFragmentRectForCharacterAtIndex(static_cast<KRUInteger>(kWrappingTitle.size()) - 1, &lastLine);
    ASSERT_GT(lastLine.location, 0u) << "the title should wrap";
    ASSERT_GE(lastLine.length, 4u);
    const KRUInteger k = lastLine.location + 2;
    const double left = screenXOfCharacterBoundary(editor, k);
    const double right = screenXOfCharacterBoundary(editor, k + 1);
    ASSERT_GT(right - left, 4.0);
    const double middle = 0.5 * (left + right);
    // Over the first line: only the last-line flag brings the caret down.
    const KRPoint tracked{middle - 1.0, screenPointInTitleOfRow(*list, 2, 0.0, 9.0).y};
    list->beginEditingItemAtIndexInsertionPoint(2, tracked);

    list->beginEditingItemAtIndexSelectRangeUseTrackedInsertionPointInFirstLineInLastLine(2, KRRange{0, 5},
                                                                                          true, false, true);

    // One point left of the middle is nearer to k; two points further right it is nearer to k + 1.
    EXPECT_EQ(editor.selectedRange(), (KRRange{k + 1, 0}));
    EXPECT_EQ(editor.selectionAffinity(), KRTextView::SelectionAffinityDownstream);
}

// Editing at a point
// ------------------------------------------------------------------------------------------------------

TEST_F(KRCheckListViewEditingTests, BeginningEditingAtAPointEditsTheRowUnderItAndTracksThePointOnTheScreen) {
    focusWithoutEditing();
    list->layoutIfNeeded();
    const KRCheckListItemTitleTextField& field = *row(2)->titleTextField();
    const KRRect title = field.convertRectToView(field.bounds(), list.get());
    const KRPoint atTheStart{title.origin.x + 1.0, title.origin.y + 9.0};

    list->beginEditingAtPoint(atTheStart);

    KR_CORE_EXPECT_LINES(log->lines,
                         (QStringList{QStringLiteral("checkListViewWillBeginEditingItemAtIndex 2"),
                                      QStringLiteral("checkListViewDidBeginEditingItemAtIndex 2")}));
    EXPECT_EQ(list->indexForEditedItem(), 2u);
    EXPECT_EQ(list->insertionPointRectOnScreen(),
              (KRRect{list->convertPointToScreen(atTheStart), KRSizeZero}));
    EXPECT_EQ(list->fieldEditor()->selectedRange(), (KRRange{0, 0}));

    const KRPoint pastTheText{KRRectGetMaxX(title) - 4.0, title.origin.y + 9.0};
    list->beginEditingAtPoint(pastTheText);
    EXPECT_EQ(list->indexForEditedItem(), 2u);
    EXPECT_EQ(list->fieldEditor()->selectedRange(), (KRRange{5, 0})); // "Bread"
}

TEST_F(KRCheckListViewEditingTests,
       BeginningEditingAtAPointBelowTheLastRowEditsTheLastRowAndTracksTheUnclampedPoint) {
    focusWithoutEditing();
    list->layoutIfNeeded();
    const KRPoint below{60.0, KRRectGetMaxY(list->bounds()) - 5.0};
    ASSERT_EQ(list->indexOfItemAtPoint(below), KRNotFound);

    list->beginEditingAtPoint(below);

    EXPECT_EQ(list->indexForEditedItem(), 4u);
    EXPECT_EQ(list->pivotIndex(), 4);
    EXPECT_EQ(list->insertionPointRectOnScreen(), (KRRect{list->convertPointToScreen(below), KRSizeZero}));
    KR_CORE_EXPECT_LINES(log->lines,
                         (QStringList{QStringLiteral("checkListViewWillBeginEditingItemAtIndex 4"),
                                      QStringLiteral("checkListViewDidBeginEditingItemAtIndex 4")}));
}

TEST_F(KRCheckListViewEditingTests, BeginningEditingAtAPointAboveAndLeftOfTheRowsEditsTheFirstRow) {
    focusWithoutEditing();
    list->layoutIfNeeded();
    list->beginEditingAtPoint(KRPoint{-30.0, -40.0});
    EXPECT_EQ(list->indexForEditedItem(), 0u);
    EXPECT_EQ(list->insertionPointRectOnScreen(),
              (KRRect{list->convertPointToScreen(KRPoint{-30.0, -40.0}), KRSizeZero}));
}

TEST_F(KRCheckListViewEditingTests, BeginningEditingAtAPointOfAnEmptyListThrowsAGenericException) {
    dataSource->itemList.clear();
    list->reloadItems();
    log->clear();
    try {
        list->beginEditingAtPoint(KRPoint{10.0, 10.0});
        FAIL() << "editing at a point of an empty list should throw";
    } catch (const KRGenericException& exception) {
        EXPECT_EQ(exception.message(),
                  QStringLiteral("Can't begin editing item at point because the check list is empty"));
    }
    EXPECT_TRUE(log->lines.isEmpty());
    EXPECT_EQ(list->indexForEditedItem(), KRNotFound);
}

// The first and the last line of the list
// ------------------------------------------------------------------------------------------------------

TEST_F(KRCheckListViewEditingTests, NothingEditedIsInNeitherTheFirstNorTheLastLine) {
    focusWithoutEditing();
    bool inFirstLine = true;
    bool inLastLine = true;
    list->checkListViewDetermineWetherInsertionPointIsInFirstLineInLastLine(&inFirstLine, &inLastLine);
    EXPECT_FALSE(inFirstLine);
    EXPECT_FALSE(inLastLine);
    EXPECT_FALSE(list->isInsertionPointInFirstLine());
    EXPECT_FALSE(list->isInsertionPointInLastLine());
}

TEST_F(KRCheckListViewEditingTests, TheCaretIsInTheFirstLineOnlyInTheFirstItem) {
    focusWithoutEditing();
    list->beginEditingItemAtIndexSelectRange(0, KRRange{2, 0});
    EXPECT_TRUE(list->isInsertionPointInFirstLine());
    EXPECT_FALSE(list->isInsertionPointInLastLine());

    list->beginEditingItemAtIndexSelectRange(2, KRRange{0, 0});
    EXPECT_FALSE(list->isInsertionPointInFirstLine());
    EXPECT_FALSE(list->isInsertionPointInLastLine());
}

TEST_F(KRCheckListViewEditingTests, TheCaretOnTheLastLineOfATitleIsInTheLastLineOnlyInTheLastItem) {
    focusWithoutEditing();
    list->beginEditingItemAtIndexSelectRange(2, KRRange{KRUIntegerMax, 0});
    EXPECT_FALSE(list->isInsertionPointInLastLine());

    list->beginEditingItemAtIndexSelectRange(4, KRRange{KRUIntegerMax, 0});
    EXPECT_TRUE(list->isInsertionPointInLastLine());
    EXPECT_FALSE(list->isInsertionPointInFirstLine());
    list->beginEditingItemAtIndexSelectRange(4, KRRange{0, 0});
    EXPECT_TRUE(list->isInsertionPointInLastLine());
}

TEST_F(KRCheckListViewEditingTests, InAWrappedTitleOnlyItsOwnFirstOrLastLineCounts) {
    dataSource->itemList[0].title = kWrappingTitle;
    dataSource->itemList[4].title = kWrappingTitle;
    list->reloadItems();
    focusWithoutEditing();
    const KRUInteger length = static_cast<KRUInteger>(kWrappingTitle.size());

    list->beginEditingItemAtIndexSelectRange(0, KRRange{3, 0});
    EXPECT_TRUE(list->isInsertionPointInFirstLine());
    list->beginEditingItemAtIndexSelectRange(0, KRRange{length, 0});
    EXPECT_FALSE(list->isInsertionPointInFirstLine());

    list->beginEditingItemAtIndexSelectRange(4, KRRange{3, 0});
    EXPECT_FALSE(list->isInsertionPointInLastLine());
    list->beginEditingItemAtIndexSelectRange(4, KRRange{length - 2, 0});
    EXPECT_TRUE(list->isInsertionPointInLastLine());
    list->beginEditingItemAtIndexSelectRange(4, KRRange{length, 0});
    EXPECT_TRUE(list->isInsertionPointInLastLine());
}

TEST_F(KRCheckListViewEditingTests, ATitleShorterThanTwoCharactersOfTheOnlyItemIsInBothLines) {
    dataSource->itemList = MemoryDataSource::items({QStringLiteral("A")});
    list->reloadItems();
    focusWithoutEditing();
    list->beginEditingItemAtIndexSelectRange(0, KRRange{1, 0});
    EXPECT_TRUE(list->isInsertionPointInFirstLine());
    EXPECT_TRUE(list->isInsertionPointInLastLine());

    dataSource->itemList = MemoryDataSource::items({QString()});
    list->reloadItems();
    ASSERT_EQ(list->indexForEditedItem(), 0u);
    EXPECT_TRUE(list->isInsertionPointInFirstLine());
    EXPECT_TRUE(list->isInsertionPointInLastLine());
}

// The character at a point
// ------------------------------------------------------------------------------------------------------

namespace {

// A text view of the titles' font and line height, narrow enough for kWrappingTitle to take many lines.
std::unique_ptr<KRTextView> wrappedTextView(double height) {
    auto textView = std::make_unique<KRTextView>(KRRectMake(0, 0, 120, height));
    textView->setDefaultFont(KRCheckListDefaults::font());
    textView->setFixedLineHeight(KRCheckListDefaults::lineHeight());
    textView->setString(kWrappingTitle);
    return textView;
}

} // namespace

TEST_F(KRCheckListViewEditingTests, APointAboveTheTextViewIsMovedHalfALineIntoIt) {
    // Shorter than its text: half a line in from the top is still the first line.
    const std::unique_ptr<KRTextView> textView = wrappedTextView(20.0);
    ASSERT_GT(textView->usedHeight(), 60.0);
    const KRUInteger onTheFirstLine = textView->characterIndexForInsertionAtPoint(KRPoint{50.0, 9.0});
    const KRUInteger onTheThirdLine = textView->characterIndexForInsertionAtPoint(KRPoint{50.0, 45.0});
    ASSERT_NE(onTheFirstLine, onTheThirdLine);

    EXPECT_EQ(
        list->checkListViewCharacterIndexForInsertionAtPointInTextView(KRPoint{50.0, 45.0}, textView.get()),
        onTheFirstLine);
    EXPECT_EQ(
        list->checkListViewCharacterIndexForInsertionAtPointInTextView(KRPoint{50.0, -30.0}, textView.get()),
        onTheFirstLine);
}

TEST_F(KRCheckListViewEditingTests, APointBelowTheTextViewIsMovedHalfALineIntoIt) {
    const std::unique_ptr<KRTextView> textView = wrappedTextView(54.0);
    ASSERT_GT(textView->usedHeight(), 72.0);
    // 54 − 9 is the middle of the third line.
    const KRUInteger onTheThirdLine = textView->characterIndexForInsertionAtPoint(KRPoint{50.0, 45.0});
    const KRUInteger farBelow = textView->characterIndexForInsertionAtPoint(KRPoint{50.0, 500.0});
    ASSERT_NE(onTheThirdLine, farBelow);

    EXPECT_EQ(
        list->checkListViewCharacterIndexForInsertionAtPointInTextView(KRPoint{50.0, 500.0}, textView.get()),
        onTheThirdLine);
    EXPECT_EQ(
        list->checkListViewCharacterIndexForInsertionAtPointInTextView(KRPoint{50.0, 20.0}, textView.get()),
        textView->characterIndexForInsertionAtPoint(KRPoint{50.0, 20.0}));
}

// Focus transitions
// ------------------------------------------------------------------------------------------------------

TEST_F(KRCheckListViewEditingTests, GainingTheFocusDefersOnlyTheDidMessageToTheNextTurn) {
    list->checkListViewGainFocus();
    KR_CORE_EXPECT_LINES(log->lines, QStringList{QStringLiteral("checkListViewWillGainFocus")});
    EXPECT_TRUE(list->hasFocus());
    EXPECT_TRUE(list->isGainingFocus());
    EXPECT_TRUE(KRRectIsNull(list->insertionPointRectOnScreen()));

    KRRunLoop::main().runOneTurn();
    KR_CORE_EXPECT_LINES(log->lines, (QStringList{QStringLiteral("checkListViewWillGainFocus"),
                                                  QStringLiteral("checkListViewDidGainFocus")}));
    EXPECT_FALSE(list->isGainingFocus());
}

TEST_F(KRCheckListViewEditingTests, LosingTheFocusDeselectsEverythingAndDefersTheDidMessageToTheNextTurn) {
    focusWithoutEditing();
    list->selectItemsAtIndexesByExtendingSelection(KRIndexSet{1, 2}, false);
    list->beginEditingItemAtIndexInsertionPoint(3, KRPoint{5.0, 5.0});
    list->selectItemsAtIndexesByExtendingSelection(KRIndexSet{1, 2}, false);
    ASSERT_FALSE(KRRectIsNull(list->insertionPointRectOnScreen()));
    log->clear();

    list->checkListViewLoseFocus();

    KR_CORE_EXPECT_LINES(log->lines,
                         (QStringList{QStringLiteral("checkListViewWillLoseFocus"),
                                      QStringLiteral("checkListViewWillSelectItemsAtIndexes (empty)"),
                                      QStringLiteral("checkListViewDidSelectItemsAtIndexes (empty)")}));
    EXPECT_FALSE(list->hasFocus());
    EXPECT_TRUE(list->isLosingFocus());
    EXPECT_TRUE(list->indexesForSelectedItems().isEmpty());
    EXPECT_TRUE(KRRectIsNull(list->insertionPointRectOnScreen()));
    KRRunLoop::main().runOneTurn();
    EXPECT_EQ(log->lines.last(), QStringLiteral("checkListViewDidLoseFocus"));
    EXPECT_FALSE(list->isLosingFocus());
}

TEST_F(KRCheckListViewEditingTests, ResigningWithAnEditLosesTheFocusWhoseDeselectionEndsTheEdit) {
    focus();
    ASSERT_EQ(list->indexForEditedItem(), 4u);

    EXPECT_TRUE(list->resignFirstResponder());

    KR_CORE_EXPECT_LINES(log->lines,
                         (QStringList{QStringLiteral("checkListViewWillLoseFocus"),
                                      QStringLiteral("checkListViewWillEndEditingItemAtIndex 4"),
                                      QStringLiteral("checkListViewDidEndEditingItemAtIndex 4"),
                                      QStringLiteral("checkListViewWillSelectItemsAtIndexes (empty)"),
                                      QStringLiteral("checkListViewDidSelectItemsAtIndexes (empty)")}));
    EXPECT_EQ(list->indexForEditedItem(), KRNotFound);
    EXPECT_FALSE(list->hasFocus());
    KRRunLoop::main().runOneTurn();
    EXPECT_EQ(log->lines.last(), QStringLiteral("checkListViewDidLoseFocus"));
}

TEST_F(KRCheckListViewEditingTests, ResigningAndBecomingAnswerYesEvenWhenTheyDoNothing) {
    EXPECT_TRUE(list->resignFirstResponder());
    EXPECT_TRUE(log->lines.isEmpty());
    focusWithoutEditing();
    EXPECT_TRUE(list->becomeFirstResponder());
    EXPECT_TRUE(log->lines.isEmpty());
    EXPECT_FALSE(list->isBecomingFirstResponder());
}

TEST_F(KRCheckListViewEditingTests, BecomingFirstResponderWithNoItemsOnlyGainsTheFocus) {
    dataSource->itemList.clear();
    list->reloadItems();
    log->clear();

    EXPECT_TRUE(list->becomeFirstResponder());
    KR_CORE_EXPECT_LINES(log->lines, QStringList{QStringLiteral("checkListViewWillGainFocus")});
    KRRunLoop::main().runUntilIdle();
    KR_CORE_EXPECT_LINES(log->lines, (QStringList{QStringLiteral("checkListViewWillGainFocus"),
                                                  QStringLiteral("checkListViewDidGainFocus")}));
    EXPECT_TRUE(list->hasFocus());
    EXPECT_EQ(list->indexForEditedItem(), KRNotFound);
    EXPECT_TRUE(list->indexesForSelectedItems().isEmpty());
}

TEST_F(KRCheckListViewEditingTests, BecomingFirstResponderIsIgnoredUntilTheLostFocusHasBeenAnnounced) {
    focusWithoutEditing();
    window.makeFirstResponder(nullptr);
    ASSERT_TRUE(list->isLosingFocus());
    log->clear();

    window.makeFirstResponder(list.get());
    EXPECT_FALSE(list->hasFocus());
    EXPECT_EQ(list->indexForEditedItem(), KRNotFound);
    EXPECT_TRUE(log->filtered(QStringLiteral("checkListViewWillGainFocus")).isEmpty());

    KRRunLoop::main().runUntilIdle();
    window.makeFirstResponder(nullptr);
    window.makeFirstResponder(list.get());
    EXPECT_TRUE(list->hasFocus());
}

TEST_F(KRCheckListViewEditingTests, GainingTheFocusTwiceInARowFailsBeforeTellingTheDelegateAgain) {
    list->checkListViewGainFocus();
    log->clear();
    const std::optional<KRCheckListViewTesting::AssertionFailure> failure =
        KRCheckListViewTesting::assertionFailureOf([&] { list->checkListViewGainFocus(); });
    ASSERT_TRUE(failure.has_value());
    EXPECT_EQ(failure->message,
              QStringLiteral(
                  "Check list view can't gain focus because it already has focus, internal inconsistency"));
    EXPECT_EQ(failure->file, QStringLiteral("KRCheckListView"));
    EXPECT_EQ(failure->object, list.get());
    EXPECT_TRUE(log->lines.isEmpty());
}

TEST_F(KRCheckListViewEditingTests, LosingTheFocusTwiceInARowFailsBeforeTellingTheDelegateAgain) {
    list->checkListViewGainFocus();
    KRRunLoop::main().runUntilIdle();
    list->checkListViewLoseFocus();
    log->clear();
    const std::optional<KRCheckListViewTesting::AssertionFailure> failure =
        KRCheckListViewTesting::assertionFailureOf([&] { list->checkListViewLoseFocus(); });
    ASSERT_TRUE(failure.has_value());
    EXPECT_EQ(failure->message,
              QStringLiteral("Check list view can't lose focus because it doesn't have focus in "
                             "the first place, internal inconsistency"));
    EXPECT_EQ(failure->file, QStringLiteral("KRCheckListView"));
    EXPECT_EQ(failure->object, list.get());
    EXPECT_TRUE(log->lines.isEmpty());
}

// A title field that ends on its own
// ------------------------------------------------------------------------------------------------------

TEST_F(KRCheckListViewEditingTests, ATitleFieldEndingOnItsOwnEndsTheEditThenLosesTheFocus) {
    focus();
    list->checkListItemViewDidEndEditingTitle(row(4));
    KR_CORE_EXPECT_LINES(log->lines,
                         (QStringList{QStringLiteral("checkListViewWillEndEditingItemAtIndex 4"),
                                      QStringLiteral("checkListViewDidEndEditingItemAtIndex 4"),
                                      QStringLiteral("checkListViewWillLoseFocus"),
                                      QStringLiteral("checkListViewWillSelectItemsAtIndexes (empty)"),
                                      QStringLiteral("checkListViewDidSelectItemsAtIndexes (empty)")}));
    EXPECT_FALSE(list->hasFocus());
}

TEST_F(KRCheckListViewEditingTests, ATitleFieldEndingDuringAReloadIsIgnored) {
    focus();
    KRCheckListItemView* edited = row(4);
    bool sent = false;
    log->onMessage = [&](const QString& line) {
        if (line == QStringLiteral("checkListViewNumberOfItems") && !sent) {
            sent = true;
            ASSERT_TRUE(list->isReloading());
            list->checkListItemViewDidEndEditingTitle(edited);
        }
    };
    list->reloadItems();
    log->onMessage = nullptr;
    ASSERT_TRUE(sent);
    EXPECT_TRUE(list->hasFocus());
    EXPECT_TRUE(log->filtered(QStringLiteral("checkListViewWillLoseFocus")).isEmpty());
    EXPECT_TRUE(log->filtered(QStringLiteral("checkListViewWillEndEditing")).isEmpty());
}

TEST_F(KRCheckListViewEditingTests, ATitleFieldEndingWhileTheListBecomesFirstResponderIsIgnored) {
    bool sent = false;
    log->onMessage = [&](const QString& line) {
        if (line == QStringLiteral("checkListViewWillGainFocus") && !sent) {
            sent = true;
            ASSERT_TRUE(list->isBecomingFirstResponder());
            list->checkListItemViewDidEndEditingTitle(row(0));
        }
    };
    window.makeFirstResponder(list.get());
    log->onMessage = nullptr;
    ASSERT_TRUE(sent);
    EXPECT_TRUE(list->hasFocus());
    EXPECT_EQ(list->indexForEditedItem(), 4u);
    EXPECT_TRUE(log->filtered(QStringLiteral("checkListViewWillLoseFocus")).isEmpty());
}

// Editing a given row
// ------------------------------------------------------------------------------------------------------

TEST_F(KRCheckListViewEditingTests, BeginEditingDoesNothingWhileAnItemIsEdited) {
    focusWithoutEditing();
    list->beginEditingItemAtIndexSelectRange(1, KRRange{1, 1});
    log->clear();
    list->beginEditing();
    EXPECT_TRUE(log->lines.isEmpty());
    EXPECT_EQ(list->indexForEditedItem(), 1u);
    EXPECT_EQ(list->fieldEditor()->selectedRange(), (KRRange{1, 1}));
}

TEST_F(KRCheckListViewEditingTests, BeginningEditingARowViewPutsTheCaretAtTheEndOfItsTitle) {
    focusWithoutEditing();
    list->checkListViewBeginEditingCheckListItemView(row(1));
    KR_CORE_EXPECT_LINES(log->lines,
                         (QStringList{QStringLiteral("checkListViewWillBeginEditingItemAtIndex 1"),
                                      QStringLiteral("checkListViewDidBeginEditingItemAtIndex 1")}));
    EXPECT_EQ(list->indexForEditedItem(), 1u);
    EXPECT_EQ(list->fieldEditor()->selectedRange(), (KRRange{4, 0})); // "Eggs"
}

TEST_F(KRCheckListViewEditingTests, BeginningEditingARowViewThatIsNotInTheListEditsTheLastItem) {
    focusWithoutEditing();
    const auto stranger = std::make_shared<KRCheckListItemView>(KRRectMake(0, 0, 200, 28));
    list->checkListViewBeginEditingCheckListItemView(stranger.get());
    EXPECT_EQ(list->indexForEditedItem(), 4u);
    EXPECT_EQ(list->fieldEditor()->selectedRange(), (KRRange{3, 0})); // "Jam"

    list->beginEditingItemAtIndexSelectRange(0, KRRange{0, 0});
    log->clear();
    list->checkListViewBeginEditingCheckListItemView(list->dummyCheckListItemView().get());
    EXPECT_TRUE(log->lines.isEmpty());
    EXPECT_EQ(list->indexForEditedItem(), 0u);
}

TEST_F(KRCheckListViewEditingTests, BeginningEditingANilRowViewFails) {
    focusWithoutEditing();
    const std::optional<KRCheckListViewTesting::AssertionFailure> failure =
        KRCheckListViewTesting::assertionFailureOf(
            [&] { list->checkListViewBeginEditingCheckListItemView(nullptr); });
    ASSERT_TRUE(failure.has_value());
    EXPECT_EQ(failure->message,
              QStringLiteral("Can't begin editing check list item view, check list item view is nil"));
    EXPECT_EQ(failure->file, QStringLiteral("KRCheckListView"));
    EXPECT_TRUE(log->lines.isEmpty());
}
