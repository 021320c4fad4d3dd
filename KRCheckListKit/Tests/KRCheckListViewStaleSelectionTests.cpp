// Removing selected items: the list's own removal paths leave no selected number past the rows, and a client
// that removes selected items without setting the selection again gets a list that ignores the numbers left
// past the rows, whatever key is pressed next.
#include "KRCheckListView.h"

#include "KRCheckListViewHostTestSupport.h"

#include "Platform/KRPasteboard.h"
#include "Text/KRKeyBindings.h"

#include <gtest/gtest.h>

#include <memory>
#include <ostream>
#include <string>
#include <vector>

using namespace KRCheckListViewTesting;

namespace {

class KRCheckListViewStaleSelectionTests : public KRCheckListViewHostTestCase {
protected:
    void SetUp() override {
        KRCheckListViewHostTestCase::SetUp();
        KRKeyBindings::setPlatformOverride(KRKeyBindings::Platform::Other);
        KRPasteboard::setGeneralPasteboard(KRPasteboard::makeInMemory());
        // Something to paste: with nothing on the pasteboard, paste: is the program's error.
        KRPasteboard::generalPasteboard()->declareTypes({KRPasteboardTypeString}, nullptr);
        KRPasteboard::generalPasteboard()->setString(QStringLiteral("- pasted\n+ too\n"),
                                                     KRPasteboardTypeString);
        showTitles({QStringLiteral("one"), QStringLiteral("two"), QStringLiteral("three"),
                    QStringLiteral("four"), QStringLiteral("five")});
    }
    void TearDown() override {
        KRKeyBindings::setPlatformOverride(std::nullopt);
        KRPasteboard::setGeneralPasteboard(nullptr);
        KRCheckListViewHostTestCase::TearDown();
    }

    void selectItems(const KRIndexSet& indexes) {
        window().makeFirstResponder(list.get());
        settle();
        list->selectItemsAtIndexesByExtendingSelection(indexes, false);
        settle();
    }
    // The client removes items on its own and reports the removal, leaving the selection as it was.
    void clientRemoves(const KRIndexSet& indexes) {
        std::vector<Item> kept;
        for (KRUInteger index = 0; index < dataSource->items.size(); ++index) {
            if (!indexes.containsIndex(index)) {
                kept.push_back(dataSource->items[index]);
            }
        }
        dataSource->items = kept;
        list->beginUpdates();
        list->updateByRemovingItemsAtIndexes(indexes);
        list->endUpdates();
        settle();
    }
    // Clicks the title of a row, then presses Ctrl+A twice: the title, then every item.
    void selectEveryItemWithKeys() {
        click(pointInTitleOfRow(0, 4.0));
        pressKey(Qt::Key_A, Qt::ControlModifier);
        pressKey(Qt::Key_A, Qt::ControlModifier);
        ASSERT_EQ(list->indexesForSelectedItems(), KRIndexSet(KRRange{0, 5}));
    }
    bool everySelectedNumberNamesARow() const {
        const KRUInteger last = list->indexesForSelectedItems().lastIndex();
        return last == KRNotFound || last < list->numberOfItems();
    }
};

// The list's own removal paths
// ------------------------------------------------------------------------------------------------------

TEST_F(KRCheckListViewStaleSelectionTests, BackspaceOnEveryItemThenRightLeavesNothingSelectedOrEdited) {
    selectEveryItemWithKeys();
    pressKey(Qt::Key_Backspace);
    EXPECT_EQ(list->numberOfItems(), 0u);
    EXPECT_TRUE(list->indexesForSelectedItems().isEmpty());
    EXPECT_EQ(list->indexForEditedItem(), KRNotFound);
    EXPECT_NO_THROW(pressKey(Qt::Key_Right));
    EXPECT_TRUE(list->indexesForSelectedItems().isEmpty());
    EXPECT_EQ(list->indexForEditedItem(), KRNotFound);
}

TEST_F(KRCheckListViewStaleSelectionTests, DeleteOnEveryItemThenRightLeavesNothingSelectedOrEdited) {
    selectEveryItemWithKeys();
    pressKey(Qt::Key_Delete);
    EXPECT_EQ(list->numberOfItems(), 0u);
    EXPECT_TRUE(list->indexesForSelectedItems().isEmpty());
    EXPECT_EQ(list->indexForEditedItem(), KRNotFound);
    EXPECT_NO_THROW(pressKey(Qt::Key_Right));
    EXPECT_EQ(list->indexForEditedItem(), KRNotFound);
}

TEST_F(KRCheckListViewStaleSelectionTests, CutOfEveryItemThenRightLeavesNothingSelectedOrEdited) {
    selectEveryItemWithKeys();
    // The host's Edit menu sends cut: up the responder chain.
    EXPECT_TRUE(window().firstResponder()->tryToPerform(KRSelector("cut:"), nullptr));
    settle();
    EXPECT_EQ(list->numberOfItems(), 0u);
    EXPECT_TRUE(list->indexesForSelectedItems().isEmpty());
    EXPECT_EQ(list->indexForEditedItem(), KRNotFound);
    EXPECT_NO_THROW(pressKey(Qt::Key_Right));
    EXPECT_EQ(list->indexForEditedItem(), KRNotFound);
}

TEST_F(KRCheckListViewStaleSelectionTests, DeleteActionOnEveryItemLeavesNothingSelected) {
    selectEveryItemWithKeys();
    EXPECT_TRUE(list->tryToPerform(KRSelector("delete:"), nullptr));
    settle();
    EXPECT_EQ(list->numberOfItems(), 0u);
    EXPECT_TRUE(list->indexesForSelectedItems().isEmpty());
    EXPECT_EQ(list->indexForEditedItem(), KRNotFound);
    EXPECT_FALSE(list->validateMenuItem(KRSelector("delete:")));
}

TEST_F(KRCheckListViewStaleSelectionTests, BackspaceOnTheLastItemsEditsTheItemAboveThemWithNothingSelected) {
    selectItems(KRIndexSet(KRRange{3, 2}));
    pressKey(Qt::Key_Backspace);
    EXPECT_EQ(rowTitles(), (QStringList{"one", "two", "three"}));
    EXPECT_TRUE(list->indexesForSelectedItems().isEmpty());
    EXPECT_EQ(list->indexForEditedItem(), 2u);
}

TEST_F(KRCheckListViewStaleSelectionTests, DeleteOnTheLastItemsEditsTheNewLastItemWithNothingSelected) {
    selectItems(KRIndexSet(KRRange{3, 2}));
    pressKey(Qt::Key_Delete);
    EXPECT_EQ(rowTitles(), (QStringList{"one", "two", "three"}));
    EXPECT_TRUE(list->indexesForSelectedItems().isEmpty());
    EXPECT_EQ(list->indexForEditedItem(), 2u);
}

TEST_F(KRCheckListViewStaleSelectionTests, MergingTitlesLeavesTheMergedItemEditedAndNothingSelected) {
    click(pointInTitleOfRow(4, 0.0));
    pressKey(Qt::Key_Home);
    pressKey(Qt::Key_Backspace);
    EXPECT_EQ(rowTitles(), (QStringList{"one", "two", "three", "fourfive"}));
    EXPECT_EQ(list->indexForEditedItem(), 3u);
    EXPECT_TRUE(list->indexesForSelectedItems().isEmpty());
    pressKey(Qt::Key_End);
    pressKey(Qt::Key_Delete);
    EXPECT_EQ(list->indexForEditedItem(), 3u);
    EXPECT_EQ(list->numberOfItems(), 4u);
    EXPECT_TRUE(everySelectedNumberNamesARow());
}

TEST_F(KRCheckListViewStaleSelectionTests,
       PasteReplacingTheLastItemsLeavesThePastedItemEditedAndNothingSelected) {
    selectItems(KRIndexSet(KRRange{3, 2}));
    pressKey(Qt::Key_V, Qt::ControlModifier);
    EXPECT_EQ(rowTitles(), (QStringList{"one", "two", "three", "pasted", "too"}));
    EXPECT_TRUE(list->indexesForSelectedItems().isEmpty());
    EXPECT_EQ(list->indexForEditedItem(), 4u);
}

TEST_F(KRCheckListViewStaleSelectionTests,
       PasteReplacingEveryItemLeavesThePastedItemEditedAndNothingSelected) {
    selectEveryItemWithKeys();
    pressKey(Qt::Key_V, Qt::ControlModifier);
    EXPECT_EQ(rowTitles(), (QStringList{"pasted", "too"}));
    EXPECT_TRUE(list->indexesForSelectedItems().isEmpty());
    EXPECT_EQ(list->indexForEditedItem(), 1u);
    EXPECT_NO_THROW(pressKey(Qt::Key_Right));
}

// A data source that takes fewer or more items than asked leaves the list's follow-up edit without its row.
TEST_F(KRCheckListViewStaleSelectionTests, ReturnWithSelectedItemsAndAnInsertRefusedEditsNothing) {
    selectItems(KRIndexSet(KRRange{3, 2}));
    dataSource->appliesChanges = false;
    dataSource->reportsChanges = false;
    EXPECT_NO_THROW(pressKey(Qt::Key_Return));
    EXPECT_EQ(list->numberOfItems(), 5u);
    EXPECT_EQ(list->indexForEditedItem(), KRNotFound);
}

TEST_F(KRCheckListViewStaleSelectionTests, SplitWithTheInsertRefusedKeepsTheWholeTitle) {
    click(pointInTitleOfRow(4, 0.0));
    pressKey(Qt::Key_End);
    pressKey(Qt::Key_Left);
    dataSource->appliesChanges = false;
    dataSource->reportsChanges = false;
    EXPECT_NO_THROW(pressKey(Qt::Key_Return));
    EXPECT_EQ(rowTitles(), (QStringList{"one", "two", "three", "four", "five"}));
    EXPECT_EQ(storedTitles(), rowTitles());
    EXPECT_EQ(list->indexForEditedItem(), 4u);
}

TEST_F(KRCheckListViewStaleSelectionTests, InsertBelowWithTheInsertRefusedEditsNothing) {
    selectItems(KRIndexSet(4));
    dataSource->appliesChanges = false;
    dataSource->reportsChanges = false;
    EXPECT_NO_THROW(list->insertItemBelowEditedOrSelectedItems());
    EXPECT_EQ(list->indexForEditedItem(), KRNotFound);
}

TEST_F(KRCheckListViewStaleSelectionTests, BeginningToEditPastTheRowsThrowsBeforeChangingAnything) {
    selectItems(KRIndexSet(KRRange{1, 2}));
    EXPECT_THROW(list->beginEditingItemAtIndexSelectRange(5, KRRange{0, 0}), std::out_of_range);
    EXPECT_EQ(list->indexesForSelectedItems(), KRIndexSet(KRRange{1, 2}));
    EXPECT_FALSE(list->isBeginningEditing());
}

// A client that leaves the selection past the rows
// ------------------------------------------------------------------------------------------------------

TEST_F(KRCheckListViewStaleSelectionTests, NumbersPastTheRowsAreNotOperandsOfTheCommands) {
    selectItems(KRIndexSet(KRRange{0, 5}));
    clientRemoves(KRIndexSet(KRRange{2, 3}));
    ASSERT_EQ(list->indexesForSelectedItems(), KRIndexSet(KRRange{0, 5}));
    EXPECT_EQ(list->indexesForEditedOrSelectedItems(), KRIndexSet(KRRange{0, 2}));
    EXPECT_EQ(list->targetIndexForMovingEditedOrSelectedItemsDown(), 2u);
    EXPECT_EQ(list->targetIndexForInsertingItemBelowEditedOrSelectedItems(), 2u);
    EXPECT_TRUE(list->canCut());
    EXPECT_TRUE(list->canCopy());
    EXPECT_TRUE(list->canDelete());
}

TEST_F(KRCheckListViewStaleSelectionTests, WithEveryItemRemovedByTheClientNothingCountsAsSelected) {
    selectItems(KRIndexSet(KRRange{0, 5}));
    clientRemoves(KRIndexSet(KRRange{0, 5}));
    EXPECT_TRUE(list->indexesForEditedOrSelectedItems().isEmpty());
    EXPECT_FALSE(list->canCut());
    EXPECT_FALSE(list->canCopy());
    EXPECT_FALSE(list->canDelete());
    EXPECT_FALSE(list->validateMenuItem(KRSelector("cut:")));
    EXPECT_FALSE(list->validateMenuItem(KRSelector("copy:")));
    EXPECT_FALSE(list->validateMenuItem(KRSelector("delete:")));
    EXPECT_FALSE(list->canToggleEditedOrSelectedItemsCompleted());
}

TEST_F(KRCheckListViewStaleSelectionTests,
       RightAfterTheClientRemovedTheLastSelectedItemsEditsTheNewLastItem) {
    selectItems(KRIndexSet(KRRange{0, 5}));
    clientRemoves(KRIndexSet(KRRange{2, 3}));
    EXPECT_NO_THROW(pressKey(Qt::Key_Right));
    EXPECT_EQ(list->indexForEditedItem(), 1u);
    EXPECT_EQ(editedSelection().location, 3u);
    EXPECT_TRUE(list->indexesForSelectedItems().isEmpty());
}

TEST_F(KRCheckListViewStaleSelectionTests, ClicksAfterTheClientRemovedSelectedItemsSelectOnlyRows) {
    selectItems(KRIndexSet(KRRange{0, 5}));
    clientRemoves(KRIndexSet(KRRange{2, 3}));
    EXPECT_NO_THROW(click(pointInTitleOfRow(0, 4.0), Qt::ControlModifier));
    EXPECT_EQ(list->indexesForSelectedItems(), KRIndexSet(1));
    EXPECT_NO_THROW(click(pointInTitleOfRow(0, 4.0), Qt::ShiftModifier));
    EXPECT_TRUE(everySelectedNumberNamesARow());
}

// Every key of the command table, after a client removed selected items and left the selection: the outcome
// is that of the same key after a client that set the selection to the items that remain.
struct KeyPress {
    const char* name;
    int key;
    Qt::KeyboardModifiers modifiers;
};

void PrintTo(const KeyPress& keyPress, std::ostream* os) {
    *os << keyPress.name;
}

// The outcome a user can see: the items, what is edited and where its caret is, and what is selected.
struct Outcome {
    QStringList titles;
    KRUInteger edited = KRNotFound;
    KRRange caret{KRNotFound, 0};
    KRIndexSet selectedRows;
    bool operator==(const Outcome& other) const {
        return titles == other.titles && edited == other.edited && caret.location == other.caret.location &&
               caret.length == other.caret.length && selectedRows == other.selectedRows;
    }
};

void PrintTo(const Outcome& outcome, std::ostream* os) {
    *os << outcome.titles.join(QLatin1Char('|')).toStdString() << " edited " << outcome.edited << " caret {"
        << outcome.caret.location << ", " << outcome.caret.length << "} selected";
    for (const KRUInteger index : outcome.selectedRows) {
        *os << ' ' << index;
    }
}

class KRCheckListViewStaleSelectionKeyTests : public KRCheckListViewStaleSelectionTests,
                                              public ::testing::WithParamInterface<KeyPress> {
protected:
    // Every item selected, then `removed` taken away by the client; a careful client then selects the items
    // that remain selected.
    Outcome outcomeOfKeyAfterClientRemoves(const KRIndexSet& removed, bool clientSetsSelection) {
        showTitles({QStringLiteral("one"), QStringLiteral("two"), QStringLiteral("three"),
                    QStringLiteral("four"), QStringLiteral("five")});
        selectItems(KRIndexSet(KRRange{0, 5}));
        clientRemoves(removed);
        if (clientSetsSelection) {
            list->selectItemsAtIndexesByExtendingSelection(KRIndexSet(KRRange{0, list->numberOfItems()}),
                                                           false);
            settle();
        }
        EXPECT_NO_THROW(pressKey(GetParam().key, GetParam().modifiers));
        EXPECT_TRUE(list->indexForEditedItem() == KRNotFound ||
                    list->indexForEditedItem() < list->numberOfItems());
        EXPECT_FALSE(list->indexesForEditedOrSelectedItems().lastIndex() != KRNotFound &&
                     list->indexesForEditedOrSelectedItems().lastIndex() >= list->numberOfItems());
        Outcome outcome;
        outcome.titles = rowTitles();
        outcome.edited = list->indexForEditedItem();
        outcome.caret = editedSelection();
        outcome.selectedRows = list->indexesForSelectedItems().indexSetByIntersectingIndexes(
            KRIndexSet(KRRange{0, list->numberOfItems()}));
        EXPECT_EQ(rowTitles(), storedTitles());
        list->endEditing();
        window().makeFirstResponder(nullptr);
        settle();
        return outcome;
    }
};

TEST_P(KRCheckListViewStaleSelectionKeyTests,
       KeyAfterTheClientRemovedTheLastSelectedItemsIgnoresTheirNumbers) {
    const KRIndexSet removed(KRRange{2, 3});
    const Outcome careful = outcomeOfKeyAfterClientRemoves(removed, true);
    const Outcome careless = outcomeOfKeyAfterClientRemoves(removed, false);
    EXPECT_EQ(careless, careful);
}

TEST_P(KRCheckListViewStaleSelectionKeyTests, KeyAfterTheClientRemovedEveryItemIgnoresTheirNumbers) {
    const KRIndexSet removed(KRRange{0, 5});
    const Outcome careful = outcomeOfKeyAfterClientRemoves(removed, true);
    const Outcome careless = outcomeOfKeyAfterClientRemoves(removed, false);
    EXPECT_EQ(careless, careful);
}

constexpr Qt::KeyboardModifiers None = Qt::NoModifier;
constexpr Qt::KeyboardModifiers Shift = Qt::ShiftModifier;
constexpr Qt::KeyboardModifiers Ctrl = Qt::ControlModifier;
constexpr Qt::KeyboardModifiers Alt = Qt::AltModifier;
constexpr Qt::KeyboardModifiers Meta = Qt::MetaModifier;

const KeyPress commandTableKeys[] = {
    {"Left", Qt::Key_Left, None},
    {"Right", Qt::Key_Right, None},
    {"Up", Qt::Key_Up, None},
    {"Down", Qt::Key_Down, None},
    {"ShiftLeft", Qt::Key_Left, Shift},
    {"ShiftRight", Qt::Key_Right, Shift},
    {"ShiftUp", Qt::Key_Up, Shift},
    {"ShiftDown", Qt::Key_Down, Shift},
    {"CtrlLeft", Qt::Key_Left, Ctrl},
    {"CtrlRight", Qt::Key_Right, Ctrl},
    {"CtrlShiftLeft", Qt::Key_Left, Ctrl | Shift},
    {"CtrlShiftRight", Qt::Key_Right, Ctrl | Shift},
    {"AltUp", Qt::Key_Up, Alt},
    {"AltDown", Qt::Key_Down, Alt},
    {"AltShiftUp", Qt::Key_Up, Alt | Shift},
    {"AltShiftDown", Qt::Key_Down, Alt | Shift},
    {"CtrlUp", Qt::Key_Up, Ctrl},
    {"CtrlDown", Qt::Key_Down, Ctrl},
    {"CtrlShiftUp", Qt::Key_Up, Ctrl | Shift},
    {"CtrlShiftDown", Qt::Key_Down, Ctrl | Shift},
    {"CtrlAltUp", Qt::Key_Up, Ctrl | Alt},
    {"CtrlAltDown", Qt::Key_Down, Ctrl | Alt},
    {"Home", Qt::Key_Home, None},
    {"End", Qt::Key_End, None},
    {"ShiftHome", Qt::Key_Home, Shift},
    {"ShiftEnd", Qt::Key_End, Shift},
    {"CtrlHome", Qt::Key_Home, Ctrl},
    {"CtrlEnd", Qt::Key_End, Ctrl},
    {"CtrlShiftHome", Qt::Key_Home, Ctrl | Shift},
    {"CtrlShiftEnd", Qt::Key_End, Ctrl | Shift},
    {"PageUp", Qt::Key_PageUp, None},
    {"PageDown", Qt::Key_PageDown, None},
    {"Backspace", Qt::Key_Backspace, None},
    {"ShiftBackspace", Qt::Key_Backspace, Shift},
    {"CtrlBackspace", Qt::Key_Backspace, Ctrl},
    {"Delete", Qt::Key_Delete, None},
    {"CtrlDelete", Qt::Key_Delete, Ctrl},
    {"Enter", Qt::Key_Return, None},
    {"ShiftEnter", Qt::Key_Return, Shift},
    {"AltEnter", Qt::Key_Return, Alt},
    {"MetaEnter", Qt::Key_Return, Meta},
    {"CtrlEnter", Qt::Key_Return, Ctrl},
    {"KeypadEnter", Qt::Key_Enter, Qt::KeypadModifier},
    {"Tab", Qt::Key_Tab, None},
    {"ShiftTab", Qt::Key_Backtab, Shift},
    {"Esc", Qt::Key_Escape, None},
    {"CtrlA", Qt::Key_A, Ctrl},
    {"CtrlC", Qt::Key_C, Ctrl},
    {"CtrlX", Qt::Key_X, Ctrl},
    {"CtrlV", Qt::Key_V, Ctrl},
    {"CtrlZ", Qt::Key_Z, Ctrl},
    {"CtrlShiftZ", Qt::Key_Z, Ctrl | Shift},
    {"CtrlY", Qt::Key_Y, Ctrl},
};

INSTANTIATE_TEST_SUITE_P(CommandTable, KRCheckListViewStaleSelectionKeyTests,
                         ::testing::ValuesIn(commandTableKeys),
                         [](const ::testing::TestParamInfo<KeyPress>& keyPress) {
                             return keyPress.param.name;
                         });

} // namespace
