// The selection primitive as the rows and the delegate see it, the pivot, and mouse clicks on the list:
// Command toggles, Shift selects a range from the pivot, a plain click edits the title under the pointer.
// Clicks, drags and modifier keys go through a real host widget as Qt events.
#include "KRCheckListView.h"

#include "KRCheckListDefaults.h"
#include "KRCheckListViewHostTestSupport.h"
#include "KRCheckListViewTestSupport.h"

#include "Foundation/KRObject.h"
#include "Views/KRCursor.h"

#include <QCoreApplication>
#include <QKeyEvent>

#include <gtest/gtest.h>

#include <cstring>
#include <map>
#include <memory>

using namespace KRCheckListViewTesting;

namespace {

// The lines of the data source, as the recording data source writes them.
const QStringList kDataSourceMessages{
    QStringLiteral("numberOfItems"),        QStringLiteral("identifierForItemAtIndex"),
    QStringLiteral("statusForItemAtIndex"), QStringLiteral("titleForItemAtIndex"),
    QStringLiteral("validateChanged"),      QStringLiteral("insertItemsAtIndexes"),
    QStringLiteral("removeItemsAtIndexes"), QStringLiteral("moveItemsAtIndexes"),
};

// Counts every assignment of the rows' "selected" key, whether or not the value changes.
class SelectedAssignmentCounter : public KRObject {
public:
    void observeValueForKeyPath(const char* keyPath, KRObject* object, const KRKeyValueChange&,
                                const void*) override {
        if (std::strcmp(keyPath, "selected") == 0) {
            ++assignments[object];
        }
    }
    std::map<const KRObject*, int> assignments;
};

// Takes the mouse downs that the views above it pass on.
class MouseDownRecordingView : public KRView {
public:
    using KRView::KRView;
    void mouseDown(const KREvent& event) override {
        ++mouseDowns;
        lastLocationInWindow = event.locationInWindow();
    }
    int mouseDowns = 0;
    KRPoint lastLocationInWindow;
};

// The selection primitive and the pivot, called directly on a list in a bare window.
class KRCheckListViewSelectionTests : public KRCheckListViewTestCase {};

// Clicks and keys through the host widget.
class KRCheckListViewClickTests : public KRCheckListViewHostTestCase {
protected:
    // A point of the row at index below its title's first line, in the row's own padding: it hits the row,
    // not the title or the editor over it.
    KRPoint pointInPaddingOfRow(KRUInteger index) const {
        const KRCheckListItemTitleTextField* field = list->checkListViewTitleTextFieldForIndex(index);
        const KRRect titleFrame = field->convertRectToView(field->bounds(), list.get());
        const KRRect rowFrame = rowAt(index)->frame();
        return KRPointMake(titleFrame.origin.x + 10.0, KRRectGetMaxY(rowFrame) - 3.0);
    }
    // A point of the list below its last row.
    KRPoint pointBelowTheRows() const { return KRPointMake(100.0, KRRectGetMaxY(list->frame()) - 10.0); }
    // The x of the boundary before the character at index of the edited title, in the list.
    double listXOfCharacterBoundary(KRUInteger index) const {
        KRTextView* editor = list->fieldEditor().get();
        const KRRect onScreen = editor->firstRectForCharacterRange(KRRange{index, 0}, nullptr);
        return list->convertPointFromScreen(onScreen.origin).x;
    }
    // Gives the list the focus with rows selected, nothing edited; the log starts empty afterwards.
    void selectRows(const KRIndexSet& indexes) {
        list->selectItemsAtIndexesByExtendingSelection(indexes, false);
        settle();
        ASSERT_TRUE(list->hasFocus());
        ASSERT_EQ(list->indexForEditedItem(), KRNotFound);
        log->clear();
    }
    // The indexes of the rows drawn selected.
    KRIndexSet rowsSelected() const {
        KRMutableIndexSet indexes;
        for (KRUInteger index = 0; index < list->numberOfItems(); ++index) {
            if (rowAt(index)->isSelected()) {
                indexes.addIndex(index);
            }
        }
        return indexes;
    }
    // A modifier key on its own, pressed or released.
    void sendModifierKey(QEvent::Type type, int key, Qt::KeyboardModifiers modifiers) {
        QKeyEvent event(type, key, modifiers);
        QCoreApplication::sendEvent(host.get(), &event);
    }
};

} // namespace

// The selection primitive
// ------------------------------------------------------------------------------------------------------

// Every row's "selected" is assigned once per selection, so observers of unchanged rows hear it too.
TEST_F(KRCheckListViewSelectionTests, SelectingAssignsTheSelectedFlagOfEveryRowNotOnlyOfTheChangedOnes) {
    showItems({"a", "b", "c", "d", "e"});
    list->selectItemAtIndexByExtendingSelection(3, false);
    SelectedAssignmentCounter counter;
    static const char context = 0;
    for (const std::shared_ptr<KRCheckListItemView>& row : list->checkListItemViews()) {
        row->addObserver(&counter, "selected", KRKeyValueObservingOptionNone, &context);
    }

    list->selectItemAtIndexByExtendingSelection(1, false);

    for (const std::shared_ptr<KRCheckListItemView>& row : list->checkListItemViews()) {
        row->removeObserver(&counter, "selected", &context);
    }
    for (KRUInteger index = 0; index < 5; ++index) {
        EXPECT_EQ(counter.assignments[rowAt(index)], 1) << "row " << index;
    }
    EXPECT_EQ(indexesOf(selectedRows()), indexesOf(KRIndexSet(1)));
}

TEST_F(KRCheckListViewSelectionTests, SelectingWithExtendingAndAnAlreadySelectedIndexKeepsOneCopyOfIt) {
    showItems({"a", "b", "c", "d"});
    list->selectItemsAtIndexesByExtendingSelection(KRIndexSet{0, 2}, false);
    KRRunLoop::main().runUntilIdle();
    log->clear();

    list->selectItemsAtIndexesByExtendingSelection(KRIndexSet{2, 3}, true);

    EXPECT_EQ(linesOf(log->messages()), linesOf({QStringLiteral("willSelectItemsAtIndexes {0, 2, 3}"),
                                                 QStringLiteral("didSelectItemsAtIndexes {0, 2, 3}")}));
    EXPECT_EQ(list->indexesForSelectedItems().count(), 3u);
    EXPECT_EQ(indexesOf(list->indexesForSelectedItems()), indexesOf(KRIndexSet{0, 2, 3}));
    EXPECT_EQ(indexesOf(selectedRows()), indexesOf(KRIndexSet{0, 2, 3}));
}

TEST_F(KRCheckListViewSelectionTests, SelectingInAListWithAnEditEndsItBeforeTheWillMessageAndLeavesThePivot) {
    showItems({"a", "b", "c", "d"});
    editItem(2, KRRange{0, 0});
    ASSERT_EQ(list->pivotIndex(), 2);

    list->selectItemsAtIndexesByExtendingSelection(KRIndexSet{0}, true);

    // Extending starts from the selection, which the edited item is not part of.
    EXPECT_EQ(linesOf(log->messages()), linesOf({QStringLiteral("willEndEditingItemAtIndex 2"),
                                                 QStringLiteral("didEndEditingItemAtIndex 2"),
                                                 QStringLiteral("willSelectItemsAtIndexes {0}"),
                                                 QStringLiteral("didSelectItemsAtIndexes {0}")}));
    EXPECT_EQ(list->pivotIndex(), 2);
    EXPECT_EQ(indexesOf(editedRows()), indexesOf(KRIndexSet()));
    EXPECT_EQ(window.firstResponder(), list.get());
}

TEST_F(KRCheckListViewSelectionTests, ThePivotStartsAtZero) {
    EXPECT_EQ(list->pivotIndex(), 0);
    showItems({"a", "b", "c"});
    EXPECT_EQ(list->pivotIndex(), 0);
}

TEST_F(KRCheckListViewSelectionTests, ThePivotSurvivesSelectingDeselectingAndLosingTheFocus) {
    showItems({"a", "b", "c", "d", "e"});
    editItem(3, KRRange{0, 0});
    ASSERT_EQ(list->pivotIndex(), 3);

    list->selectAllItems();
    EXPECT_EQ(list->pivotIndex(), 3);
    list->deselectItemAtIndex(3);
    EXPECT_EQ(list->pivotIndex(), 3);
    window.makeFirstResponder(nullptr);
    KRRunLoop::main().runUntilIdle();
    ASSERT_FALSE(list->hasFocus());
    EXPECT_TRUE(list->indexesForSelectedItems().isEmpty());
    EXPECT_EQ(list->pivotIndex(), 3);
}

TEST_F(KRCheckListViewSelectionTests, ThePivotIsNotAdjustedWhenItemsAreInsertedOrRemoved) {
    showItems({"a", "b", "c", "d", "e"});
    editItem(2, KRRange{0, 0});
    list->selectItemAtIndexByExtendingSelection(2, false);
    ASSERT_EQ(list->pivotIndex(), 2);

    dataSource->checkListViewInsertItemsAtIndexes(list.get(), KRIndexSet{0});
    ASSERT_EQ(list->numberOfItems(), 6u);
    EXPECT_EQ(list->pivotIndex(), 2);

    dataSource->checkListViewRemoveItemsAtIndexes(list.get(), KRIndexSet{0, 1, 2, 3, 4});
    ASSERT_EQ(list->numberOfItems(), 1u);
    EXPECT_EQ(list->pivotIndex(), 2);
}

// Plain clicks
// ------------------------------------------------------------------------------------------------------

TEST_F(KRCheckListViewClickTests, PlainClickOnAnUnfocusedListGainsTheFocusAndEditsTheClickedRow) {
    showTitles({"Milk", "Eggs", "Bread"});

    press(pointInTitleOfRow(1, 2.0));
    EXPECT_EQ(linesOf(log->messages()),
              linesOf({QStringLiteral("willGainFocus"), QStringLiteral("willBeginEditingItemAtIndex 1"),
                       QStringLiteral("didBeginEditingItemAtIndex 1")}));
    release(pointInTitleOfRow(1, 2.0));
    settle();

    ASSERT_FALSE(log->messages().isEmpty());
    EXPECT_EQ(log->messages().last(), QStringLiteral("didGainFocus"));
    EXPECT_TRUE(list->hasFocus());
    EXPECT_EQ(list->indexForEditedItem(), 1u);
    EXPECT_EQ(list->pivotIndex(), 1);
    EXPECT_EQ(window().firstResponder(), list->fieldEditor().get());
    EXPECT_EQ(editedText(), QStringLiteral("Eggs"));
}

TEST_F(KRCheckListViewClickTests, PlainClickOnAnotherRowEndsTheEditAndEditsThatRow) {
    showTitles({"Milk", "Eggs", "Bread", "Butter"});
    click(pointInTitleOfRow(1, 2.0));
    log->clear();

    click(pointInTitleOfRow(3, 2.0));

    EXPECT_EQ(
        linesOf(log->without(kDataSourceMessages)),
        linesOf({QStringLiteral("willEndEditingItemAtIndex 1"), QStringLiteral("didEndEditingItemAtIndex 1"),
                 QStringLiteral("willBeginEditingItemAtIndex 3"),
                 QStringLiteral("didBeginEditingItemAtIndex 3")}));
    EXPECT_EQ(list->indexForEditedItem(), 3u);
    EXPECT_EQ(list->pivotIndex(), 3);
    EXPECT_TRUE(list->hasFocus());
}

TEST_F(KRCheckListViewClickTests, PlainClickWithRowsSelectedDeselectsThemAndEditsTheClickedRow) {
    showTitles({"Milk", "Eggs", "Bread", "Butter"});
    selectRows(KRIndexSet{0, 1});

    click(pointInTitleOfRow(2, 2.0));

    EXPECT_EQ(linesOf(log->messages()), linesOf({QStringLiteral("willSelectItemsAtIndexes {}"),
                                                 QStringLiteral("didSelectItemsAtIndexes {}"),
                                                 QStringLiteral("willBeginEditingItemAtIndex 2"),
                                                 QStringLiteral("didBeginEditingItemAtIndex 2")}));
    EXPECT_TRUE(list->indexesForSelectedItems().isEmpty());
    EXPECT_EQ(list->indexForEditedItem(), 2u);
    EXPECT_TRUE(list->hasFocus());
}

TEST_F(KRCheckListViewClickTests, PlainClickWithoutMovementPutsTheCaretAtTheNearestCharacter) {
    showTitles({"Milk", "Hello world", "Bread"});
    // Where the boundaries lie is only known once the editor shows the title.
    click(pointInTitleOfRow(1, 2.0));
    ASSERT_EQ(editedText(), QStringLiteral("Hello world"));
    const double boundary6 = listXOfCharacterBoundary(6);
    const double boundary7 = listXOfCharacterBoundary(7);
    ASSERT_LT(boundary6, boundary7);
    list->endEditing();
    settle();
    const double y = pointInTitleOfRow(1, 0.0).y;

    // Just right of the boundary before "w", then just left of the one after it.
    click(KRPointMake(boundary6 + 1.0, y));
    EXPECT_EQ(list->indexForEditedItem(), 1u);
    EXPECT_EQ(editedSelection(), (KRRange{6, 0}));

    list->endEditing();
    settle();
    click(KRPointMake(boundary7 - 1.0, y));
    EXPECT_EQ(editedSelection(), (KRRange{7, 0}));
}

TEST_F(KRCheckListViewClickTests, PlainClickInTheLeftHalfOfTheTitleLeavesTheCaretDownstream) {
    showTitles({"Milk", "Hello world"});
    click(pointInTitleOfRow(1, 3.0));
    ASSERT_EQ(list->indexForEditedItem(), 1u);
    EXPECT_EQ(editedSelection(), (KRRange{0, 0}));
    EXPECT_EQ(list->fieldEditor()->selectionAffinity(), KRTextView::SelectionAffinityDownstream);
}

TEST_F(KRCheckListViewClickTests, PlainClickInTheRightHalfOfTheTitlePutsTheCaretAtTheEndUpstream) {
    showTitles({"Milk", "Hello world"});
    const KRCheckListItemTitleTextField* field = list->checkListViewTitleTextFieldForIndex(1);
    const double width = field->bounds().size.width;
    ASSERT_GT(width, 150.0);

    click(pointInTitleOfRow(1, width - 10.0));

    ASSERT_EQ(list->indexForEditedItem(), 1u);
    EXPECT_EQ(editedSelection(), (KRRange{11, 0}));
    EXPECT_EQ(list->fieldEditor()->selectionAffinity(), KRTextView::SelectionAffinityUpstream);
}

TEST_F(KRCheckListViewClickTests, PlainClickThatDragsInsideTheTitleKeepsTheDraggedSelection) {
    showTitles({"Milk", "Hello world", "Bread"});
    const double width = list->checkListViewTitleTextFieldForIndex(1)->bounds().size.width;

    press(pointInTitleOfRow(1, 0.5));
    dragTo(pointInTitleOfRow(1, 0.5 * width));
    dragTo(pointInTitleOfRow(1, width - 5.0));
    release(pointInTitleOfRow(1, width - 5.0));
    settle();

    EXPECT_EQ(list->indexForEditedItem(), 1u);
    EXPECT_EQ(editedSelection(), (KRRange{0, 11}));
}

TEST_F(KRCheckListViewClickTests, PlainClickInTheRowsPaddingBelowTheTitlePutsTheCaretOnTheNearestCharacter) {
    showTitles({"Milk", "Hello world", "Bread"});
    click(pointInTitleOfRow(1, 2.0));
    const double boundary5 = listXOfCharacterBoundary(5);
    list->endEditing();
    settle();

    KRPoint padding = pointInPaddingOfRow(1);
    padding.x = boundary5 + 1.0;
    click(padding);

    EXPECT_EQ(list->indexForEditedItem(), 1u);
    EXPECT_EQ(editedSelection(), (KRRange{5, 0}));
}

TEST_F(KRCheckListViewClickTests, DoubleClickOnAFocusedListIsSwallowed) {
    showTitles({"Milk", "Eggs", "Bread"});
    const KRPoint point = pointInPaddingOfRow(1);
    click(point);
    ASSERT_EQ(list->indexForEditedItem(), 1u);
    list->fieldEditor()->setSelectedRange(KRRange{1, 2});
    log->clear();

    pressAgain(point);
    release(point);
    settle();

    EXPECT_EQ(linesOf(log->messages()), linesOf({}));
    EXPECT_EQ(list->indexForEditedItem(), 1u);
    EXPECT_EQ(editedSelection(), (KRRange{1, 2}));
}

TEST_F(KRCheckListViewClickTests, DoubleClickReachingAnUnfocusedListGainsTheFocusAndIsThenSwallowed) {
    showTitles({"Milk", "Eggs", "Bread"});
    const KRPoint point = pointInPaddingOfRow(1);
    click(point);
    ASSERT_EQ(list->indexForEditedItem(), 1u);
    window().makeFirstResponder(nullptr);
    settle();
    ASSERT_FALSE(list->hasFocus());
    log->clear();

    pressAgain(point);
    release(point);
    EXPECT_EQ(linesOf(log->messages()), linesOf({QStringLiteral("willGainFocus")}));
    settle();

    EXPECT_EQ(linesOf(log->messages()),
              linesOf({QStringLiteral("willGainFocus"), QStringLiteral("didGainFocus")}));
    EXPECT_TRUE(list->hasFocus());
    EXPECT_EQ(list->indexForEditedItem(), KRNotFound);
}

TEST_F(KRCheckListViewClickTests, OptionAndControlAreIgnoredAndTheClickIsPlain) {
    showTitles({"Milk", "Eggs", "Bread"});

    click(pointInTitleOfRow(2, 2.0), Qt::AltModifier);
    EXPECT_EQ(list->indexForEditedItem(), 2u);
    EXPECT_TRUE(list->indexesForSelectedItems().isEmpty());

    click(pointInTitleOfRow(0, 2.0), Qt::MetaModifier);
    EXPECT_EQ(list->indexForEditedItem(), 0u);
    EXPECT_TRUE(list->indexesForSelectedItems().isEmpty());
}

// Clicks that hit no row
// ------------------------------------------------------------------------------------------------------

TEST_F(KRCheckListViewClickTests, ClickBelowTheLastRowChangesNothingAndGoesToTheNextResponder) {
    const auto recorder = std::make_shared<MouseDownRecordingView>(KRRectMake(0, 0, 400, 800));
    content->addSubview(recorder);
    recorder->addSubview(list);
    showTitles({"Milk", "Eggs", "Bread"});
    selectRows(KRIndexSet{1});
    ASSERT_EQ(list->indexOfItemAtPoint(pointBelowTheRows()), KRNotFound);

    click(pointBelowTheRows());

    EXPECT_EQ(recorder->mouseDowns, 1);
    EXPECT_EQ(recorder->lastLocationInWindow, list->convertPointToView(pointBelowTheRows(), nullptr));
    EXPECT_EQ(linesOf(log->messages()), linesOf({}));
    EXPECT_EQ(indexesOf(list->indexesForSelectedItems()), indexesOf(KRIndexSet{1}));
    EXPECT_EQ(list->indexForEditedItem(), KRNotFound);
    EXPECT_TRUE(list->hasFocus());
}

TEST_F(KRCheckListViewClickTests, ClickOnARowIsHandledByTheListAndNotPassedOn) {
    const auto recorder = std::make_shared<MouseDownRecordingView>(KRRectMake(0, 0, 400, 800));
    content->addSubview(recorder);
    recorder->addSubview(list);
    showTitles({"Milk", "Eggs", "Bread"});

    click(pointInTitleOfRow(0, 2.0));
    click(pointInTitleOfRow(1, 2.0), Qt::ShiftModifier);
    click(pointInTitleOfRow(2, 2.0), Qt::ControlModifier);
    click(pointInPaddingOfRow(2));

    EXPECT_EQ(recorder->mouseDowns, 0);
    EXPECT_EQ(list->indexForEditedItem(), 2u);
}

TEST_F(KRCheckListViewClickTests, ClickOnAnEmptyListGoesToTheNextResponder) {
    const auto recorder = std::make_shared<MouseDownRecordingView>(KRRectMake(0, 0, 400, 800));
    content->addSubview(recorder);
    recorder->addSubview(list);
    showTitles({});

    click(KRPointMake(50.0, 10.0));

    EXPECT_EQ(recorder->mouseDowns, 1);
    EXPECT_EQ(list->indexForEditedItem(), KRNotFound);
    EXPECT_TRUE(list->indexesForSelectedItems().isEmpty());
}

// Shift-clicks
// ------------------------------------------------------------------------------------------------------

TEST_F(KRCheckListViewClickTests, ShiftClickBeforeAnyEditOrCommandClickSelectsFromRowZero) {
    showTitles({"Milk", "Eggs", "Bread", "Butter", "Jam"});

    click(pointInTitleOfRow(2, 2.0), Qt::ShiftModifier);

    EXPECT_EQ(linesOf(log->messages()),
              linesOf({QStringLiteral("willSelectItemsAtIndexes {0, 1, 2}"), QStringLiteral("willGainFocus"),
                       QStringLiteral("didSelectItemsAtIndexes {0, 1, 2}"), QStringLiteral("didGainFocus")}));
    EXPECT_EQ(indexesOf(list->indexesForSelectedItems()), indexesOf(KRIndexSet{0, 1, 2}));
    EXPECT_EQ(indexesOf(rowsSelected()), indexesOf(KRIndexSet{0, 1, 2}));
    EXPECT_EQ(list->indexForEditedItem(), KRNotFound);
    EXPECT_EQ(list->pivotIndex(), 0);
}

TEST_F(KRCheckListViewClickTests, ShiftClickSelectsFromThePivotUpOrDownToTheClickedRow) {
    showTitles({"Milk", "Eggs", "Bread", "Butter", "Jam"});
    click(pointInTitleOfRow(3, 2.0));
    ASSERT_EQ(list->pivotIndex(), 3);

    click(pointInTitleOfRow(1, 2.0), Qt::ShiftModifier);
    EXPECT_EQ(indexesOf(list->indexesForSelectedItems()), indexesOf(KRIndexSet{1, 2, 3}));
    EXPECT_EQ(list->pivotIndex(), 3);

    click(pointInTitleOfRow(4, 2.0), Qt::ShiftModifier);
    EXPECT_EQ(indexesOf(list->indexesForSelectedItems()), indexesOf(KRIndexSet{3, 4}));
    EXPECT_EQ(list->pivotIndex(), 3);

    click(pointInTitleOfRow(3, 2.0), Qt::ShiftModifier);
    EXPECT_EQ(indexesOf(list->indexesForSelectedItems()), indexesOf(KRIndexSet{3}));
    EXPECT_EQ(list->pivotIndex(), 3);
}

TEST_F(KRCheckListViewClickTests, ShiftClickEndsTheEditBeforeSelectingTheRange) {
    showTitles({"Milk", "Eggs", "Bread", "Butter", "Jam"});
    click(pointInTitleOfRow(3, 2.0));
    log->clear();

    click(pointInTitleOfRow(1, 2.0), Qt::ShiftModifier);

    EXPECT_EQ(linesOf(log->messages()), linesOf({QStringLiteral("willEndEditingItemAtIndex 3"),
                                                 QStringLiteral("didEndEditingItemAtIndex 3"),
                                                 QStringLiteral("willSelectItemsAtIndexes {1, 2, 3}"),
                                                 QStringLiteral("didSelectItemsAtIndexes {1, 2, 3}")}));
    EXPECT_EQ(list->indexForEditedItem(), KRNotFound);
    EXPECT_TRUE(list->hasFocus());
    EXPECT_EQ(window().firstResponder(), list.get());
}

TEST_F(KRCheckListViewClickTests, ShiftClickWithThePivotPastTheLastItemSelectsNothing) {
    showTitles({"Milk", "Eggs", "Bread", "Butter", "Jam"});
    click(pointInTitleOfRow(4, 2.0));
    ASSERT_EQ(list->pivotIndex(), 4);
    selectRows(KRIndexSet{0});
    dataSource->checkListViewRemoveItemsAtIndexes(list.get(), KRIndexSet{3, 4});
    settle();
    ASSERT_EQ(list->numberOfItems(), 3u);
    ASSERT_EQ(list->pivotIndex(), 4);
    log->clear();

    click(pointInTitleOfRow(1, 2.0), Qt::ShiftModifier);

    EXPECT_EQ(linesOf(log->messages()), linesOf({QStringLiteral("willSelectItemsAtIndexes {}"),
                                                 QStringLiteral("didSelectItemsAtIndexes {}")}));
    EXPECT_TRUE(list->indexesForSelectedItems().isEmpty());
    EXPECT_EQ(indexesOf(rowsSelected()), indexesOf(KRIndexSet()));
    EXPECT_EQ(list->pivotIndex(), 4);
}

// Command-clicks
// ------------------------------------------------------------------------------------------------------

TEST_F(KRCheckListViewClickTests, CommandClickAddsTheRowToTheSelectionAndMakesItThePivot) {
    showTitles({"Milk", "Eggs", "Bread", "Butter", "Jam"});

    click(pointInTitleOfRow(1, 2.0), Qt::ControlModifier);
    EXPECT_EQ(indexesOf(list->indexesForSelectedItems()), indexesOf(KRIndexSet{1}));
    EXPECT_EQ(list->pivotIndex(), 1);
    log->clear();

    click(pointInTitleOfRow(3, 2.0), Qt::ControlModifier);
    EXPECT_EQ(linesOf(log->messages()), linesOf({QStringLiteral("willSelectItemsAtIndexes {1, 3}"),
                                                 QStringLiteral("didSelectItemsAtIndexes {1, 3}")}));
    EXPECT_EQ(indexesOf(rowsSelected()), indexesOf(KRIndexSet{1, 3}));
    EXPECT_EQ(list->pivotIndex(), 3);
    EXPECT_EQ(list->indexForEditedItem(), KRNotFound);
}

TEST_F(KRCheckListViewClickTests, CommandClickOnTheOnlySelectedItemLeavesAnEmptySelectionAndKeepsThePivot) {
    showTitles({"Milk", "Eggs", "Bread", "Butter", "Jam"});
    click(pointInTitleOfRow(2, 2.0), Qt::ControlModifier);
    click(pointInTitleOfRow(3, 2.0), Qt::ControlModifier);
    click(pointInTitleOfRow(3, 2.0), Qt::ControlModifier);
    ASSERT_EQ(indexesOf(list->indexesForSelectedItems()), indexesOf(KRIndexSet{2}));
    ASSERT_EQ(list->pivotIndex(), 3);
    log->clear();

    click(pointInTitleOfRow(2, 2.0), Qt::ControlModifier);

    EXPECT_EQ(linesOf(log->messages()), linesOf({QStringLiteral("willSelectItemsAtIndexes {}"),
                                                 QStringLiteral("didSelectItemsAtIndexes {}")}));
    EXPECT_TRUE(list->indexesForSelectedItems().isEmpty());
    EXPECT_EQ(list->pivotIndex(), 3);
    EXPECT_EQ(list->indexForEditedItem(), KRNotFound);
}

TEST_F(KRCheckListViewClickTests, CommandClickOnTheEditedItemTurnsItIntoTheSelectedPivot) {
    showTitles({"Milk", "Eggs", "Bread", "Butter"});
    click(pointInTitleOfRow(1, 2.0));
    list->fieldEditor()->setSelectedRange(KRRange{1, 0});
    log->clear();

    // The click lands on the editor over the title; with Command it still goes to the list.
    click(pointInTitleOfRow(1, 20.0), Qt::ControlModifier);

    EXPECT_EQ(linesOf(log->messages()), linesOf({QStringLiteral("willEndEditingItemAtIndex 1"),
                                                 QStringLiteral("didEndEditingItemAtIndex 1"),
                                                 QStringLiteral("willSelectItemsAtIndexes {1}"),
                                                 QStringLiteral("didSelectItemsAtIndexes {1}")}));
    EXPECT_EQ(list->indexForEditedItem(), KRNotFound);
    EXPECT_EQ(indexesOf(list->indexesForSelectedItems()), indexesOf(KRIndexSet{1}));
    EXPECT_EQ(list->pivotIndex(), 1);
    EXPECT_EQ(window().firstResponder(), list.get());
}

TEST_F(KRCheckListViewClickTests, CommandClickWhileEditingAddsTheEditedAndTheClickedItemToTheSelection) {
    showTitles({"Milk", "Eggs", "Bread", "Butter"});
    click(pointInTitleOfRow(0, 2.0));
    log->clear();

    click(pointInTitleOfRow(2, 2.0), Qt::ControlModifier);

    EXPECT_EQ(linesOf(log->messages()), linesOf({QStringLiteral("willEndEditingItemAtIndex 0"),
                                                 QStringLiteral("didEndEditingItemAtIndex 0"),
                                                 QStringLiteral("willSelectItemsAtIndexes {0, 2}"),
                                                 QStringLiteral("didSelectItemsAtIndexes {0, 2}")}));
    EXPECT_EQ(list->pivotIndex(), 2);
    EXPECT_EQ(list->indexForEditedItem(), KRNotFound);
}

TEST_F(KRCheckListViewClickTests, CommandWinsOverShift) {
    showTitles({"Milk", "Eggs", "Bread", "Butter", "Jam"});
    ASSERT_EQ(list->pivotIndex(), 0);

    click(pointInTitleOfRow(3, 2.0), Qt::ControlModifier | Qt::ShiftModifier);

    // A Shift-click would have selected 0 … 3 from the pivot.
    EXPECT_EQ(indexesOf(list->indexesForSelectedItems()), indexesOf(KRIndexSet{3}));
    EXPECT_EQ(list->pivotIndex(), 3);
}

// Hit testing and the cursor while Command is held
// ------------------------------------------------------------------------------------------------------

TEST_F(KRCheckListViewClickTests, HitTestAnswersTheListItselfWhileCommandIsHeld) {
    showTitles({"Milk", "Eggs"});
    const KRPoint inTitle = list->convertPointToView(pointInTitleOfRow(1, 5.0), content.get());

    KREvent::setCurrentModifierFlags(0);
    KRView* plainHit = list->hitTest(inTitle);
    ASSERT_NE(plainHit, nullptr);
    EXPECT_NE(plainHit, list.get());
    EXPECT_TRUE(plainHit->isDescendantOf(rowAt(1)));

    KREvent::setCurrentModifierFlags(KREventModifierFlagCommand);
    EXPECT_EQ(list->hitTest(inTitle), list.get());
    KREvent::setCurrentModifierFlags(KREventModifierFlagCommand | KREventModifierFlagShift);
    EXPECT_EQ(list->hitTest(inTitle), list.get());

    KREvent::setCurrentModifierFlags(KREventModifierFlagShift | KREventModifierFlagOption);
    EXPECT_EQ(list->hitTest(inTitle), plainHit);
}

TEST_F(KRCheckListViewClickTests, MovingThePointerShowsTheArrowWhileCommandIsHeldAndTheIBeamOtherwise) {
    showTitles({"Milk", "Eggs"});

    KRCursor::pointingHandCursor().set();
    moveTo(pointBelowTheRows(), Qt::ControlModifier);
    EXPECT_EQ(KRCursor::currentCursor(), KRCursor::arrowCursor());

    KRCursor::pointingHandCursor().set();
    moveTo(pointBelowTheRows());
    EXPECT_EQ(KRCursor::currentCursor(), KRCursor::IBeamCursor());
}

TEST_F(KRCheckListViewClickTests, PressingCommandShowsTheArrowAndReleasingItLeavesTheCursor) {
    showTitles({"Milk", "Eggs"});
    selectRows(KRIndexSet{0});

    KRCursor::pointingHandCursor().set();
    sendModifierKey(QEvent::KeyPress, Qt::Key_Control, Qt::ControlModifier);
    EXPECT_EQ(KRCursor::currentCursor(), KRCursor::arrowCursor());

    KRCursor::pointingHandCursor().set();
    sendModifierKey(QEvent::KeyRelease, Qt::Key_Control, Qt::NoModifier);
    EXPECT_EQ(KRCursor::currentCursor(), KRCursor::pointingHandCursor());

    KRCursor::pointingHandCursor().set();
    sendModifierKey(QEvent::KeyPress, Qt::Key_Shift, Qt::ShiftModifier);
    EXPECT_EQ(KRCursor::currentCursor(), KRCursor::pointingHandCursor());
    sendModifierKey(QEvent::KeyRelease, Qt::Key_Shift, Qt::NoModifier);
}

// The pointer's position
// ------------------------------------------------------------------------------------------------------

TEST_F(KRCheckListViewSelectionTests, TheMouseLocationInAViewIsThePointerOnTheScreenSeenFromThatView) {
    window.setScreenOrigin(KRPointMake(200.0, 100.0));
    list->setFrameOrigin(KRPointMake(10.0, 20.0));
    KREvent::setMouseLocation(KRPointMake(260.0, 170.0));

    EXPECT_EQ(list->checkListViewMouseLocationInView(list.get()), KRPointMake(50.0, 50.0));
    EXPECT_EQ(list->checkListViewMouseLocationInView(content.get()), KRPointMake(60.0, 70.0));
}

TEST_F(KRCheckListViewSelectionTests, TheMouseLocationInAViewWithoutAWindowIsTheWindowOriginSeenFromTheView) {
    const auto detached = std::make_shared<KRView>(KRRectMake(30.0, 40.0, 100.0, 100.0));
    KREvent::setMouseLocation(KRPointMake(260.0, 170.0));
    const KRPoint expected = detached->convertPointFromView(KRPointZero, nullptr);
    EXPECT_EQ(list->checkListViewMouseLocationInView(detached.get()), expected);
    KREvent::setMouseLocation(KRPointMake(5.0, 5.0));
    EXPECT_EQ(list->checkListViewMouseLocationInView(detached.get()), expected);
}
