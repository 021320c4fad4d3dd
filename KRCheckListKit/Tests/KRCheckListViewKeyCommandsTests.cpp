// Keyboard commands of the list, driven with real keys through the host widget and the key bindings: the
// edited title's commands that become list operations at the edges of a title, the keys the list takes
// while items are selected, the delegate's veto, and the caret carried from row to row.
#include "KRCheckListView.h"

#include "KRCheckListViewHostTestSupport.h"

#include "Platform/KRPasteboard.h"
#include "Text/KRKeyBindings.h"

#include <QCoreApplication>
#include <QKeyEvent>

#include <gtest/gtest.h>

#include <cmath>
#include <memory>
#include <string>

using namespace KRCheckListViewTesting;

namespace {

// A view that takes the keyboard, to stand before and after the list in the key view loop.
class KeyView : public KRView {
public:
    using KRView::KRView;
    bool acceptsFirstResponder() const override { return true; }
};

std::string describeRange(KRRange range) {
    if (range.location == KRNotFound) {
        return "not edited";
    }
    return QStringLiteral("{%1, %2}").arg(range.location).arg(range.length).toStdString();
}

class KRCheckListViewKeyCommandsTests : public KRCheckListViewHostTestCase {
protected:
    void SetUp() override {
        KRCheckListViewHostTestCase::SetUp();
        KRKeyBindings::setPlatformOverride(KRKeyBindings::Platform::Other);
        KRPasteboard::setGeneralPasteboard(KRPasteboard::makeInMemory());
    }
    void TearDown() override {
        KRKeyBindings::setPlatformOverride(std::nullopt);
        KRPasteboard::setGeneralPasteboard(nullptr);
        KRCheckListViewHostTestCase::TearDown();
    }

    // Focuses the list and edits the item with the given text selection; the log starts empty afterwards.
    void edit(KRUInteger index, KRRange selection) {
        window().makeFirstResponder(list.get());
        settle();
        list->beginEditingItemAtIndexSelectRange(index, selection);
        settle();
        log->clear();
    }
    // Focuses the list and selects these items; the list is then first responder with nothing edited.
    void selectItems(const KRIndexSet& indexes) {
        window().makeFirstResponder(list.get());
        settle();
        list->selectItemsAtIndexesByExtendingSelection(indexes, false);
        settle();
        log->clear();
    }
    // Focuses the list with nothing edited and nothing selected.
    void focusWithoutEditing() {
        window().makeFirstResponder(list.get());
        settle();
        list->endEditing();
        settle();
        log->clear();
    }

    // The command as the first responder receives it, for commands no key produces here.
    void sendCommand(const char* selector) {
        window().firstResponder()->doCommandBySelector(KRSelector(selector));
        settle();
    }
    // A key press and release with nothing run afterwards, so that a test sees what waits for the next turn.
    void pressKeyWithoutSettling(int key, Qt::KeyboardModifiers modifiers = Qt::NoModifier) {
        QKeyEvent press(QEvent::KeyPress, key, modifiers, QString());
        QCoreApplication::sendEvent(host.get(), &press);
        QKeyEvent release(QEvent::KeyRelease, key, modifiers, QString());
        QCoreApplication::sendEvent(host.get(), &release);
    }

    std::string caret() const { return describeRange(editedSelection()); }
    KRTextView* editor() const {
        return list->checkListViewTitleTextFieldForIndex(list->indexForEditedItem())->currentEditor();
    }
    // The edited title's caret on the screen.
    KRRect caretOnScreen() const {
        KRTextView* textView = editor();
        return textView->convertRectToScreen(textView->insertionPointRect());
    }
    Indexes selection() const { return indexesOf(list->indexesForSelectedItems()); }
    // The rows drawn selected.
    KRIndexSet selectedRows() const {
        KRMutableIndexSet indexes;
        for (KRUInteger index = 0; index < list->numberOfItems(); ++index) {
            if (rowAt(index)->isSelected()) {
                indexes.addIndex(index);
            }
        }
        return indexes;
    }

    // The messages that tell what happened to editing, selection and items, in order.
    QStringList outcome() const {
        return log->startingWith(
            {QStringLiteral("textViewDoCommandBySelector"), QStringLiteral("willEndEditing"),
             QStringLiteral("didEndEditing"), QStringLiteral("willBeginEditing"),
             QStringLiteral("didBeginEditing"), QStringLiteral("willSelect"), QStringLiteral("didSelect"),
             QStringLiteral("willInsert"), QStringLiteral("didInsert"), QStringLiteral("willRemove"),
             QStringLiteral("didRemove"), QStringLiteral("willMove"), QStringLiteral("didMove"),
             QStringLiteral("didCommitEditing"), QStringLiteral("didCancelEditing")});
    }

    // Every row has come to rest on its frame, and the frames stack top to bottom in row order.
    void expectRowsAtRest() const {
        double previousY = -1.0;
        for (KRUInteger index = 0; index < list->numberOfItems(); ++index) {
            const KRCheckListItemView* row = rowAt(index);
            EXPECT_EQ(row->presentationFrame(), row->frame()) << "row " << index;
            EXPECT_GT(row->frame().origin.y, previousY) << "row " << index;
            previousY = row->frame().origin.y;
        }
    }
    bool anyRowMoving() const {
        for (KRUInteger index = 0; index < list->numberOfItems(); ++index) {
            if (!(rowAt(index)->presentationFrame() == rowAt(index)->frame())) {
                return true;
            }
        }
        return false;
    }

    void expectReturnWithModifiersCommits(Qt::KeyboardModifiers modifiers) {
        showTitles({"Milk", "Eggs"});
        edit(0, KRMakeRange(2, 0));
        pressKey(Qt::Key_Return, modifiers, QStringLiteral("\r"));
        EXPECT_EQ(list->indexForEditedItem(), KRNotFound);
        EXPECT_EQ(linesOf(storedTitles()), linesOf(QStringList{"Milk", "Eggs"})) << "nothing is split";
        EXPECT_FALSE(log->contains(QStringLiteral("insertItemsAtIndexes {1}")));
        const QStringList messages = outcome();
        ASSERT_GE(messages.size(), 3);
        EXPECT_EQ(linesOf(messages.mid(messages.size() - 3)),
                  linesOf(QStringList{QStringLiteral("willEndEditingItemAtIndex 0"),
                                      QStringLiteral("didEndEditingItemAtIndex 0"),
                                      QStringLiteral("didCommitEditing")}));
        EXPECT_EQ(log->count(QStringLiteral("didCommitEditing")), 1);
        EXPECT_TRUE(list->hasFocus());
    }
};

} // namespace

// Escape
// ------------------------------------------------------------------------------------------------------

TEST_F(KRCheckListViewKeyCommandsTests, EscapeWhileEditingEndsEditingAndSendsTheCancelMessage) {
    showTitles({"Milk", "Eggs"});
    edit(1, KRMakeRange(2, 0));
    pressKey(Qt::Key_Escape, Qt::NoModifier, QStringLiteral("\x1b"));
    EXPECT_EQ(linesOf(outcome()),
              linesOf(QStringList{QStringLiteral("textViewDoCommandBySelector cancelOperation:"),
                                  QStringLiteral("willEndEditingItemAtIndex 1"),
                                  QStringLiteral("didEndEditingItemAtIndex 1"),
                                  QStringLiteral("didCancelEditing")}));
    EXPECT_EQ(list->indexForEditedItem(), KRNotFound);
    EXPECT_EQ(linesOf(storedTitles()), linesOf(QStringList{"Milk", "Eggs"}));
    EXPECT_TRUE(list->hasFocus());
    EXPECT_EQ(window().firstResponder(), list.get());
}

TEST_F(KRCheckListViewKeyCommandsTests, EscapeWithItemsSelectedDeselectsThemAndSendsTheCancelMessage) {
    showTitles({"Milk", "Eggs", "Bread"});
    selectItems(KRIndexSet{0, 2});
    pressKey(Qt::Key_Escape, Qt::NoModifier, QStringLiteral("\x1b"));
    EXPECT_EQ(linesOf(outcome()),
              linesOf(QStringList{QStringLiteral("textViewDoCommandBySelector cancelOperation:"),
                                  QStringLiteral("willSelectItemsAtIndexes {}"),
                                  QStringLiteral("didSelectItemsAtIndexes {}"),
                                  QStringLiteral("didCancelEditing")}));
    EXPECT_EQ(selection(), indexesOf(KRIndexSet()));
    EXPECT_TRUE(list->didHandleLastKeyDownEvent());
}

// Deleting
// ------------------------------------------------------------------------------------------------------

TEST_F(KRCheckListViewKeyCommandsTests, BackspaceWithItemsSelectedDeletesThemAndEditsTheItemAboveAtItsEnd) {
    showTitles({"Milk", "Eggs", "Bread", "Jam"});
    selectItems(KRIndexSet{1, 2});
    pressKey(Qt::Key_Backspace, Qt::NoModifier, QStringLiteral("\b"));
    EXPECT_TRUE(list->didHandleLastKeyDownEvent());
    EXPECT_EQ(linesOf(storedTitles()), linesOf(QStringList{"Milk", "Jam"}));
    EXPECT_EQ(list->indexForEditedItem(), 0u);
    EXPECT_EQ(caret(), "{4, 0}");
    EXPECT_EQ(selection(), indexesOf(KRIndexSet()));
}

TEST_F(KRCheckListViewKeyCommandsTests, ForwardDeleteWithItemsSelectedDeletesThemAndEditsTheFollowingItem) {
    showTitles({"Milk", "Eggs", "Bread", "Jam"});
    selectItems(KRIndexSet{1, 2});
    pressKey(Qt::Key_Delete);
    EXPECT_TRUE(list->didHandleLastKeyDownEvent());
    EXPECT_EQ(linesOf(storedTitles()), linesOf(QStringList{"Milk", "Jam"}));
    EXPECT_EQ(list->indexForEditedItem(), 1u);
    EXPECT_EQ(editedText(), QStringLiteral("Jam"));
    EXPECT_EQ(caret(), "{0, 0}");
}

TEST_F(KRCheckListViewKeyCommandsTests, BackspaceAtTheStartOfTheFirstItemIsNotHandled) {
    showTitles({"hello", "world"});
    edit(0, KRMakeRange(0, 0));
    pressKey(Qt::Key_Backspace, Qt::NoModifier, QStringLiteral("\b"));
    EXPECT_EQ(linesOf(log->messages()),
              linesOf(QStringList{QStringLiteral("textViewDoCommandBySelector deleteBackward:")}));
    EXPECT_EQ(linesOf(storedTitles()), linesOf(QStringList{"hello", "world"}));
    EXPECT_EQ(list->indexForEditedItem(), 0u);
    EXPECT_EQ(editedText(), QStringLiteral("hello"));
    EXPECT_EQ(caret(), "{0, 0}");
}

TEST_F(KRCheckListViewKeyCommandsTests,
       BackspaceAtTheStartOfWorldBelowHelloMergesThemWithTheCaretAfterHello) {
    showTitles({"hello", "world", "Jam"});
    edit(1, KRMakeRange(0, 0));
    pressKey(Qt::Key_Backspace, Qt::NoModifier, QStringLiteral("\b"));
    EXPECT_EQ(linesOf(storedTitles()), linesOf(QStringList{"helloworld", "Jam"}));
    EXPECT_EQ(linesOf(rowTitles()), linesOf(QStringList{"helloworld", "Jam"}));
    EXPECT_EQ(list->numberOfItems(), 2u);
    EXPECT_EQ(list->indexForEditedItem(), 0u);
    EXPECT_EQ(editedText(), QStringLiteral("helloworld"));
    EXPECT_EQ(caret(), "{5, 0}");
    const int validated =
        log->indexOf(QStringLiteral("validateChangedTitle \"helloworld\" forItemAtIndex 0"));
    EXPECT_GE(validated, 0);
    EXPECT_LT(validated, log->indexOf(QStringLiteral("removeItemsAtIndexes {1}")));
}

TEST_F(KRCheckListViewKeyCommandsTests, BackspaceAtTheStartOfATitleBelowAnEmptyItemRemovesTheEmptyItem) {
    showTitles({"Milk", "", "Eggs"});
    edit(2, KRMakeRange(0, 0));
    pressKey(Qt::Key_Backspace, Qt::NoModifier, QStringLiteral("\b"));
    EXPECT_TRUE(log->contains(QStringLiteral("removeItemsAtIndexes {1}")));
    EXPECT_EQ(linesOf(storedTitles()), linesOf(QStringList{"Milk", "Eggs"}));
    EXPECT_EQ(list->indexForEditedItem(), 1u);
    EXPECT_EQ(editedText(), QStringLiteral("Eggs"));
    EXPECT_EQ(caret(), "{0, 0}");
}

TEST_F(KRCheckListViewKeyCommandsTests, BackspaceInAnEmptyTitleRemovesItAndEditsTheItemAboveAtItsEnd) {
    showTitles({"Milk", "", "Eggs"});
    edit(1, KRMakeRange(0, 0));
    pressKey(Qt::Key_Backspace, Qt::NoModifier, QStringLiteral("\b"));
    EXPECT_EQ(linesOf(storedTitles()), linesOf(QStringList{"Milk", "Eggs"}));
    EXPECT_EQ(list->indexForEditedItem(), 0u);
    EXPECT_EQ(editedText(), QStringLiteral("Milk"));
    EXPECT_EQ(caret(), "{4, 0}");
}

TEST_F(KRCheckListViewKeyCommandsTests, BackspaceInsideATitleDeletesACharacterAsUsual) {
    showTitles({"Milk", "Eggs"});
    edit(1, KRMakeRange(2, 0));
    pressKey(Qt::Key_Backspace, Qt::NoModifier, QStringLiteral("\b"));
    EXPECT_EQ(linesOf(storedTitles()), linesOf(QStringList{"Milk", "Egs"}));
    EXPECT_EQ(list->numberOfItems(), 2u);
    EXPECT_EQ(caret(), "{1, 0}");
}

TEST_F(KRCheckListViewKeyCommandsTests, ForwardDeleteAtTheEndOfAnEmptyTitleAboveAnItemRemovesTheEmptyItem) {
    showTitles({"Milk", "", "Eggs"});
    edit(1, KRMakeRange(0, 0));
    pressKey(Qt::Key_Delete);
    EXPECT_TRUE(log->contains(QStringLiteral("removeItemsAtIndexes {1}")));
    EXPECT_EQ(linesOf(storedTitles()), linesOf(QStringList{"Milk", "Eggs"}));
    EXPECT_EQ(list->indexForEditedItem(), 1u);
    EXPECT_EQ(editedText(), QStringLiteral("Eggs"));
    EXPECT_EQ(caret(), "{0, 0}");
}

TEST_F(KRCheckListViewKeyCommandsTests, ForwardDeleteAtTheEndOfATitleMergesTheItemBelowIntoIt) {
    showTitles({"hello", "world", "Jam"});
    edit(0, KRMakeRange(5, 0));
    pressKey(Qt::Key_Delete);
    EXPECT_EQ(linesOf(storedTitles()), linesOf(QStringList{"helloworld", "Jam"}));
    EXPECT_EQ(list->indexForEditedItem(), 0u);
    EXPECT_EQ(editedText(), QStringLiteral("helloworld"));
    EXPECT_EQ(caret(), "{5, 0}");
    const int validated =
        log->indexOf(QStringLiteral("validateChangedTitle \"helloworld\" forItemAtIndex 0"));
    EXPECT_GE(validated, 0);
    EXPECT_LT(validated, log->indexOf(QStringLiteral("removeItemsAtIndexes {1}")));
}

TEST_F(KRCheckListViewKeyCommandsTests, ForwardDeleteAtTheEndOfTheLastItemIsNotHandled) {
    showTitles({"hello", "world"});
    edit(1, KRMakeRange(5, 0));
    pressKey(Qt::Key_Delete);
    EXPECT_EQ(linesOf(log->messages()),
              linesOf(QStringList{QStringLiteral("textViewDoCommandBySelector deleteForward:")}));
    EXPECT_EQ(linesOf(storedTitles()), linesOf(QStringList{"hello", "world"}));
    EXPECT_EQ(caret(), "{5, 0}");
}

TEST_F(KRCheckListViewKeyCommandsTests, DeleteToBeginningOfLineDeletesTheWholeEditedItem) {
    showTitles({"Milk", "Eggs", "Bread"});
    edit(1, KRMakeRange(2, 0));
    sendCommand("deleteToBeginningOfLine:");
    EXPECT_EQ(linesOf(storedTitles()), linesOf(QStringList{"Milk", "Bread"}));
    EXPECT_EQ(list->indexForEditedItem(), 0u);
    EXPECT_EQ(caret(), "{4, 0}");
}

TEST_F(KRCheckListViewKeyCommandsTests, DeleteToEndOfLineDeletesTheWholeEditedItemAndEditsTheNextOne) {
    showTitles({"Milk", "Eggs", "Bread"});
    edit(1, KRMakeRange(2, 0));
    sendCommand("deleteToEndOfLine:");
    EXPECT_EQ(linesOf(storedTitles()), linesOf(QStringList{"Milk", "Bread"}));
    EXPECT_EQ(list->indexForEditedItem(), 1u);
    EXPECT_EQ(editedText(), QStringLiteral("Bread"));
    EXPECT_EQ(caret(), "{0, 0}");
}

// With the Mac's bindings Command-Backspace means deleteToBeginningOfLine:.
TEST_F(KRCheckListViewKeyCommandsTests, CommandBackspaceDeletesTheWholeEditedItem) {
    KRKeyBindings::setPlatformOverride(KRKeyBindings::Platform::Mac);
    showTitles({"Milk", "Eggs", "Bread"});
    edit(2, KRMakeRange(3, 0));
    pressKey(Qt::Key_Backspace, Qt::ControlModifier);
    EXPECT_EQ(linesOf(storedTitles()), linesOf(QStringList{"Milk", "Eggs"}));
    EXPECT_EQ(list->indexForEditedItem(), 1u);
    EXPECT_EQ(caret(), "{4, 0}");
}

TEST_F(KRCheckListViewKeyCommandsTests,
       CommandBackspaceWithNothingEditedOrSelectedEditsTheFirstItemAtItsStart) {
    KRKeyBindings::setPlatformOverride(KRKeyBindings::Platform::Mac);
    showTitles({"Milk", "Eggs", "Bread"});
    focusWithoutEditing();
    pressKey(Qt::Key_Backspace, Qt::ControlModifier);
    EXPECT_EQ(linesOf(storedTitles()), linesOf(QStringList{"Milk", "Eggs", "Bread"}));
    EXPECT_EQ(list->indexForEditedItem(), 0u);
    EXPECT_EQ(caret(), "{0, 0}");
}

// Return
// ------------------------------------------------------------------------------------------------------

TEST_F(KRCheckListViewKeyCommandsTests, ShiftReturnEndsEditingWithTheCommitMessage) {
    expectReturnWithModifiersCommits(Qt::ShiftModifier);
}

TEST_F(KRCheckListViewKeyCommandsTests, OptionReturnEndsEditingWithTheCommitMessage) {
    expectReturnWithModifiersCommits(Qt::AltModifier);
}

TEST_F(KRCheckListViewKeyCommandsTests, ControlReturnEndsEditingWithTheCommitMessage) {
    expectReturnWithModifiersCommits(Qt::MetaModifier);
}

TEST_F(KRCheckListViewKeyCommandsTests, CommandReturnEndsEditingWithTheCommitMessage) {
    expectReturnWithModifiersCommits(Qt::ControlModifier);
}

// On the Mac, Option-Return and Control-Return are other commands; the key code alone decides.
TEST_F(KRCheckListViewKeyCommandsTests, ModifiedReturnCommitsWhateverCommandItMapsTo) {
    KRKeyBindings::setPlatformOverride(KRKeyBindings::Platform::Mac);
    expectReturnWithModifiersCommits(Qt::AltModifier);
    showTitles({"Milk", "Eggs"});
    edit(1, KRMakeRange(4, 0));
    pressKey(Qt::Key_Return, Qt::MetaModifier, QStringLiteral("\r"));
    EXPECT_EQ(list->indexForEditedItem(), KRNotFound);
    EXPECT_EQ(linesOf(storedTitles()), linesOf(QStringList{"Milk", "Eggs"}));
    EXPECT_EQ(log->count(QStringLiteral("didCommitEditing")), 1);
}

TEST_F(KRCheckListViewKeyCommandsTests, ReturnAtTheStartOfATitleInsertsAnEmptyItemAboveAndKeepsEditing) {
    showTitles({"Milk", "Eggs"});
    edit(1, KRMakeRange(0, 0));
    pressKey(Qt::Key_Return, Qt::NoModifier, QStringLiteral("\r"));
    EXPECT_EQ(linesOf(storedTitles()), linesOf(QStringList{"Milk", "", "Eggs"}));
    EXPECT_EQ(list->indexForEditedItem(), 2u);
    EXPECT_EQ(editedText(), QStringLiteral("Eggs"));
    EXPECT_EQ(caret(), "{0, 0}");
    EXPECT_EQ(
        linesOf(outcome()),
        linesOf(QStringList{
            QStringLiteral("textViewDoCommandBySelector insertNewline:"),
            QStringLiteral("willInsertItemsAtIndexes {1}"), QStringLiteral("willEndEditingItemAtIndex 1"),
            QStringLiteral("didEndEditingItemAtIndex 1"), QStringLiteral("willBeginEditingItemAtIndex 2"),
            QStringLiteral("didBeginEditingItemAtIndex 2"), QStringLiteral("didInsertItemsAtIndexes {1}")}));
}

TEST_F(KRCheckListViewKeyCommandsTests, ReturnInTheMiddleOfATitleSplitsItAndEditsTheTailAtItsStart) {
    showTitles({"abcdef"});
    edit(0, KRMakeRange(3, 0));
    pressKey(Qt::Key_Return, Qt::NoModifier, QStringLiteral("\r"));
    EXPECT_EQ(linesOf(storedTitles()), linesOf(QStringList{"abc", "def"}));
    EXPECT_EQ(linesOf(rowTitles()), linesOf(QStringList{"abc", "def"}));
    EXPECT_EQ(list->indexForEditedItem(), 1u);
    EXPECT_EQ(editedText(), QStringLiteral("def"));
    EXPECT_EQ(caret(), "{0, 0}");
}

TEST_F(KRCheckListViewKeyCommandsTests, ReturnWithTextSelectedDropsTheSelectedText) {
    showTitles({"abcdef"});
    edit(0, KRMakeRange(2, 2));
    pressKey(Qt::Key_Return, Qt::NoModifier, QStringLiteral("\r"));
    EXPECT_EQ(linesOf(storedTitles()), linesOf(QStringList{"ab", "ef"}));
    EXPECT_EQ(list->indexForEditedItem(), 1u);
    EXPECT_EQ(caret(), "{0, 0}");
}

TEST_F(KRCheckListViewKeyCommandsTests, ReturnInTheMiddleOfATitleInsertsTheTailRightBelowIt) {
    showTitles({"abcdef", "Milk"});
    edit(0, KRMakeRange(3, 0));
    pressKey(Qt::Key_Return, Qt::NoModifier, QStringLiteral("\r"));
    EXPECT_EQ(linesOf(storedTitles()), linesOf(QStringList{"abc", "def", "Milk"}));
    EXPECT_EQ(list->indexForEditedItem(), 1u);
    const int inserted = log->indexOf(QStringLiteral("insertItemsAtIndexes {1}"));
    const int head = log->indexOf(QStringLiteral("validateChangedTitle \"abc\" forItemAtIndex 0"));
    const int tail = log->indexOf(QStringLiteral("validateChangedTitle \"def\" forItemAtIndex 1"));
    EXPECT_GE(inserted, 0);
    EXPECT_LT(inserted, head);
    EXPECT_LT(head, tail);
}

TEST_F(KRCheckListViewKeyCommandsTests, ReturnAtTheEndOfTheLastTitleAppendsAnEmptyItem) {
    showTitles({"Milk", "Eggs"});
    edit(1, KRMakeRange(4, 0));
    pressKey(Qt::Key_Return, Qt::NoModifier, QStringLiteral("\r"));
    EXPECT_EQ(linesOf(storedTitles()), linesOf(QStringList{"Milk", "Eggs", ""}));
    EXPECT_EQ(list->indexForEditedItem(), 2u);
    EXPECT_EQ(caret(), "{0, 0}");
}

TEST_F(KRCheckListViewKeyCommandsTests,
       ReturnWithTheWholeTitleSelectedAndAnItemBelowEmptiesItAndEditsTheItemBelow) {
    showTitles({"Milk", "Eggs"});
    edit(0, KRMakeRange(0, 4));
    pressKey(Qt::Key_Return, Qt::NoModifier, QStringLiteral("\r"));
    EXPECT_EQ(linesOf(storedTitles()), linesOf(QStringList{"", "Eggs"}));
    EXPECT_FALSE(log->contains(QStringLiteral("willInsertItemsAtIndexes {1}"))) << "nothing is inserted";
    EXPECT_EQ(list->indexForEditedItem(), 1u);
    EXPECT_EQ(editedText(), QStringLiteral("Eggs"));
    EXPECT_EQ(caret(), "{0, 0}");
}

TEST_F(KRCheckListViewKeyCommandsTests, ReturnWithTheWholeLastTitleSelectedSplitsItIntoTwoEmptyItems) {
    showTitles({"Milk", "Eggs"});
    edit(1, KRMakeRange(0, 4));
    pressKey(Qt::Key_Return, Qt::NoModifier, QStringLiteral("\r"));
    EXPECT_EQ(linesOf(storedTitles()), linesOf(QStringList{"Milk", "", ""}));
    EXPECT_EQ(list->indexForEditedItem(), 2u);
    EXPECT_EQ(caret(), "{0, 0}");
}

TEST_F(KRCheckListViewKeyCommandsTests, ReturnWithItemsSelectedInsertsAnItemBelowThemAndEditsIt) {
    showTitles({"Milk", "Eggs", "Bread"});
    selectItems(KRIndexSet{0, 1});
    pressKey(Qt::Key_Return, Qt::NoModifier, QStringLiteral("\r"));
    EXPECT_TRUE(list->didHandleLastKeyDownEvent());
    EXPECT_EQ(linesOf(storedTitles()), linesOf(QStringList{"Milk", "Eggs", "", "Bread"}));
    EXPECT_EQ(list->indexForEditedItem(), 2u);
    EXPECT_EQ(caret(), "{0, 0}");
    EXPECT_EQ(selection(), indexesOf(KRIndexSet()));
}

TEST_F(KRCheckListViewKeyCommandsTests, InsertLineBreakSplitsATitleLikeReturn) {
    showTitles({"abcdef"});
    edit(0, KRMakeRange(4, 0));
    sendCommand("insertLineBreak:");
    EXPECT_EQ(linesOf(storedTitles()), linesOf(QStringList{"abcd", "ef"}));
    EXPECT_EQ(list->indexForEditedItem(), 1u);
    EXPECT_EQ(caret(), "{0, 0}");
}

// Up and down
// ------------------------------------------------------------------------------------------------------

TEST_F(KRCheckListViewKeyCommandsTests, UpArrowOnTheFirstLineEditsTheItemAboveAtTheSameX) {
    showTitles({"Milk and bread", "Milk and honey"});
    edit(1, KRMakeRange(8, 0));
    pressKey(Qt::Key_Up);
    EXPECT_EQ(list->indexForEditedItem(), 0u);
    EXPECT_EQ(caret(), "{8, 0}");
    EXPECT_FALSE(KRRectIsNull(list->insertionPointRectOnScreen()));
}

TEST_F(KRCheckListViewKeyCommandsTests, DownArrowOnTheLastLineEditsTheItemBelowAtTheSameX) {
    showTitles({"Milk and honey", "Milk and bread"});
    edit(0, KRMakeRange(8, 0));
    pressKey(Qt::Key_Down);
    EXPECT_EQ(list->indexForEditedItem(), 1u);
    EXPECT_EQ(caret(), "{8, 0}");
    EXPECT_FALSE(KRRectIsNull(list->insertionPointRectOnScreen()));
}

TEST_F(KRCheckListViewKeyCommandsTests,
       UpArrowOnTheFirstLineOfTheFirstItemIsNotHandledAndClearsTheTrackedCaret) {
    showTitles({"Milk and bread", "Milk and honey"});
    edit(1, KRMakeRange(8, 0));
    pressKey(Qt::Key_Up);
    ASSERT_EQ(list->indexForEditedItem(), 0u);
    ASSERT_FALSE(KRRectIsNull(list->insertionPointRectOnScreen()));
    pressKey(Qt::Key_Up);
    EXPECT_TRUE(KRRectIsNull(list->insertionPointRectOnScreen()));
    EXPECT_EQ(list->indexForEditedItem(), 0u);
    EXPECT_EQ(caret(), "{0, 0}") << "the editor moves the caret to the start itself";
}

TEST_F(KRCheckListViewKeyCommandsTests, DownArrowOnTheLastItemIsNotHandledAndClearsTheTrackedCaret) {
    showTitles({"Milk and honey", "Milk and bread"});
    edit(0, KRMakeRange(8, 0));
    pressKey(Qt::Key_Down);
    ASSERT_EQ(list->indexForEditedItem(), 1u);
    pressKey(Qt::Key_Down);
    EXPECT_TRUE(KRRectIsNull(list->insertionPointRectOnScreen()));
    EXPECT_EQ(list->indexForEditedItem(), 1u);
    EXPECT_EQ(caret(), "{14, 0}") << "the editor moves the caret to the end itself";
}

TEST_F(KRCheckListViewKeyCommandsTests, UpArrowWithTextSelectedIsLeftToTheEditor) {
    showTitles({"Milk", "Eggs"});
    edit(1, KRMakeRange(1, 2));
    pressKey(Qt::Key_Up);
    EXPECT_EQ(list->indexForEditedItem(), 1u);
    EXPECT_TRUE(KRRectIsNull(list->insertionPointRectOnScreen())) << "only a caret is tracked";
}

TEST_F(KRCheckListViewKeyCommandsTests, UpArrowInsideAWrappedTitleMovesTheCaretWithinIt) {
    showTitles({"Milk", "Pack the tent, the stove, the lamp and the tarp"});
    edit(1, KRMakeRange(44, 0));
    ASSERT_GT(editor()->insertionPointRect().origin.y, 0.0) << "the caret starts on the second line";
    pressKey(Qt::Key_Up);
    EXPECT_EQ(list->indexForEditedItem(), 1u);
    EXPECT_LT(editedSelection().location, 35u) << "now on the first line";
}

TEST_F(KRCheckListViewKeyCommandsTests, UpArrowWithItemsSelectedEditsTheItemAboveTheSelection) {
    showTitles({"Milk", "Eggs", "Bread", "Jam"});
    selectItems(KRIndexSet{2, 3});
    pressKey(Qt::Key_Up);
    EXPECT_TRUE(list->didHandleLastKeyDownEvent());
    EXPECT_EQ(list->indexForEditedItem(), 1u);
    EXPECT_EQ(selection(), indexesOf(KRIndexSet()));
}

TEST_F(KRCheckListViewKeyCommandsTests, UpArrowWithTheFirstItemSelectedEditsTheFirstItem) {
    showTitles({"Milk", "Eggs", "Bread"});
    selectItems(KRIndexSet{0, 1});
    pressKey(Qt::Key_Up);
    EXPECT_EQ(list->indexForEditedItem(), 0u);
}

TEST_F(KRCheckListViewKeyCommandsTests, DownArrowWithItemsSelectedEditsTheItemBelowTheSelection) {
    showTitles({"Milk", "Eggs", "Bread", "Jam"});
    selectItems(KRIndexSet{0, 1});
    pressKey(Qt::Key_Down);
    EXPECT_TRUE(list->didHandleLastKeyDownEvent());
    EXPECT_EQ(list->indexForEditedItem(), 2u);
    EXPECT_EQ(selection(), indexesOf(KRIndexSet()));
}

TEST_F(KRCheckListViewKeyCommandsTests, DownArrowWithTheLastItemSelectedEditsTheLastItem) {
    showTitles({"Milk", "Eggs", "Bread", "Jam"});
    selectItems(KRIndexSet{2, 3});
    pressKey(Qt::Key_Down);
    EXPECT_EQ(list->indexForEditedItem(), 3u);
}

TEST_F(KRCheckListViewKeyCommandsTests, TheTrackedCaretIsKeptAcrossConsecutiveUpAndDownMoves) {
    showTitles({"Milk and bread", "Eggs", "Milk and honey"});
    edit(2, KRMakeRange(8, 0));
    pressKey(Qt::Key_Up);
    ASSERT_EQ(list->indexForEditedItem(), 1u);
    const KRRect tracked = list->insertionPointRectOnScreen();
    EXPECT_EQ(caret(), "{4, 0}") << "a short title takes the caret at its end";
    pressKey(Qt::Key_Up);
    EXPECT_EQ(list->indexForEditedItem(), 0u);
    EXPECT_EQ(caret(), "{8, 0}") << "the x of the first row, not of the short one";
    EXPECT_EQ(list->insertionPointRectOnScreen(), tracked);
    pressKey(Qt::Key_Down);
    pressKey(Qt::Key_Down);
    EXPECT_EQ(list->indexForEditedItem(), 2u);
    EXPECT_EQ(caret(), "{8, 0}");
    EXPECT_EQ(list->insertionPointRectOnScreen(), tracked);
}

TEST_F(KRCheckListViewKeyCommandsTests, AnyOtherCommandForgetsTheTrackedCaret) {
    showTitles({"Milk and bread", "Eggs", "Milk and honey"});
    edit(2, KRMakeRange(8, 0));
    pressKey(Qt::Key_Up);
    ASSERT_EQ(caret(), "{4, 0}");
    pressKey(Qt::Key_Left);
    EXPECT_TRUE(KRRectIsNull(list->insertionPointRectOnScreen()));
    EXPECT_EQ(caret(), "{3, 0}");
    pressKey(Qt::Key_Up);
    EXPECT_EQ(list->indexForEditedItem(), 0u);
    EXPECT_LT(editedSelection().location, 8u) << "the x is taken afresh from the short title";
}

TEST_F(KRCheckListViewKeyCommandsTests, AfterAnUnhandledUpArrowTheCaretReturnsToTheTrackedXOnTheNextTurn) {
    showTitles({"Pack the tent, the stove, the lamp and the tarp", "Milk and honey with a long tail"});
    edit(1, KRMakeRange(31, 0));
    pressKey(Qt::Key_Up);
    ASSERT_EQ(list->indexForEditedItem(), 0u);
    const KRRect tracked = list->insertionPointRectOnScreen();
    ASSERT_FALSE(KRRectIsNull(tracked));
    ASSERT_EQ(caret(), "{47, 0}") << "the short last line takes the caret at its end";

    pressKeyWithoutSettling(Qt::Key_Up);
    const KRUInteger byTheEditor = editedSelection().location;
    EXPECT_LT(byTheEditor, 35u) << "the editor moved the caret onto the first line";
    EXPECT_LT(caretOnScreen().origin.x, tracked.origin.x - 20.0) << "at the x of the short line";

    KRRunLoop::main().runUntilIdle();
    EXPECT_GT(editedSelection().location, byTheEditor);
    EXPECT_LT(editedSelection().location, 35u);
    EXPECT_LT(std::abs(caretOnScreen().origin.x - tracked.origin.x), 8.0) << "back at the tracked x";
}

TEST_F(KRCheckListViewKeyCommandsTests, AnUnhandledDownArrowGetsNoCaretFix) {
    showTitles({"Milk and honey with a long tail", "Tarp xxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxx"});
    edit(0, KRMakeRange(31, 0));
    pressKey(Qt::Key_Down);
    ASSERT_EQ(list->indexForEditedItem(), 1u);
    const KRRect tracked = list->insertionPointRectOnScreen();
    ASSERT_EQ(editor()->insertionPointRect().origin.y, 0.0) << "the caret enters on the first line";
    ASSERT_LT(caretOnScreen().origin.x, tracked.origin.x - 20.0) << "at the end of the short first line";
    pressKey(Qt::Key_Down);
    EXPECT_EQ(list->indexForEditedItem(), 1u);
    EXPECT_GT(editor()->insertionPointRect().origin.y, 0.0)
        << "the editor moved the caret to the second line";
    EXPECT_LT(caretOnScreen().origin.x, tracked.origin.x - 20.0) << "the editor's own x stays";
}

// Left and right
// ------------------------------------------------------------------------------------------------------

TEST_F(KRCheckListViewKeyCommandsTests, LeftArrowWithItemsSelectedEditsTheFirstSelectedItemAtItsStart) {
    showTitles({"Milk", "Eggs", "Bread", "Jam"});
    selectItems(KRIndexSet{1, 2});
    pressKey(Qt::Key_Left);
    EXPECT_EQ(list->indexForEditedItem(), 1u);
    EXPECT_EQ(caret(), "{0, 0}");
}

TEST_F(KRCheckListViewKeyCommandsTests, RightArrowWithItemsSelectedEditsTheItemAfterThemAtItsStart) {
    showTitles({"Milk", "Eggs", "Bread", "Jam"});
    selectItems(KRIndexSet{0, 1});
    pressKey(Qt::Key_Right);
    EXPECT_EQ(list->indexForEditedItem(), 2u);
    EXPECT_EQ(caret(), "{0, 0}");
}

TEST_F(KRCheckListViewKeyCommandsTests, RightArrowWithTheLastItemSelectedEditsItAtItsEnd) {
    showTitles({"Milk", "Eggs", "Bread"});
    selectItems(KRIndexSet{1, 2});
    pressKey(Qt::Key_Right);
    EXPECT_EQ(list->indexForEditedItem(), 2u);
    EXPECT_EQ(caret(), "{5, 0}");
}

TEST_F(KRCheckListViewKeyCommandsTests, HomeWithItemsSelectedEditsTheFirstSelectedItemAtItsStart) {
    showTitles({"Milk", "Eggs", "Bread", "Jam"});
    selectItems(KRIndexSet{2, 3});
    pressKey(Qt::Key_Home);
    EXPECT_EQ(list->indexForEditedItem(), 2u);
    EXPECT_EQ(caret(), "{0, 0}");
}

TEST_F(KRCheckListViewKeyCommandsTests, WordLeftWithItemsSelectedEditsTheFirstSelectedItemAtItsStart) {
    showTitles({"Milk", "Eggs", "Bread", "Jam"});
    selectItems(KRIndexSet{1, 3});
    pressKey(Qt::Key_Left, Qt::ControlModifier);
    EXPECT_EQ(list->indexForEditedItem(), 1u);
    EXPECT_EQ(caret(), "{0, 0}");
}

TEST_F(KRCheckListViewKeyCommandsTests, EndWithItemsSelectedEditsTheLastSelectedItemAtItsEnd) {
    showTitles({"Milk", "Eggs", "Bread", "Jam"});
    selectItems(KRIndexSet{0, 2});
    pressKey(Qt::Key_End);
    EXPECT_EQ(list->indexForEditedItem(), 2u);
    EXPECT_EQ(caret(), "{5, 0}");
}

TEST_F(KRCheckListViewKeyCommandsTests, WordRightWithItemsSelectedEditsTheLastSelectedItemAtItsEnd) {
    showTitles({"Milk", "Eggs", "Bread", "Jam"});
    selectItems(KRIndexSet{0, 1});
    pressKey(Qt::Key_Right, Qt::ControlModifier);
    EXPECT_EQ(list->indexForEditedItem(), 1u);
    EXPECT_EQ(caret(), "{4, 0}");
}

TEST_F(KRCheckListViewKeyCommandsTests, LeftArrowAtTheStartOfATitleEditsTheItemAboveAtItsEnd) {
    showTitles({"Milk", "Eggs"});
    edit(1, KRMakeRange(0, 0));
    pressKey(Qt::Key_Left);
    EXPECT_EQ(list->indexForEditedItem(), 0u);
    EXPECT_EQ(caret(), "{4, 0}");
}

TEST_F(KRCheckListViewKeyCommandsTests, LeftArrowAtTheStartOfTheFirstItemStaysThere) {
    showTitles({"Milk", "Eggs"});
    edit(0, KRMakeRange(0, 0));
    pressKey(Qt::Key_Left);
    EXPECT_EQ(list->indexForEditedItem(), 0u);
    EXPECT_EQ(caret(), "{0, 0}");
    EXPECT_EQ(linesOf(log->messages()),
              linesOf(QStringList{QStringLiteral("textViewDoCommandBySelector moveLeft:")}));
}

TEST_F(KRCheckListViewKeyCommandsTests, RightArrowAtTheEndOfATitleEditsTheItemBelowAtItsStart) {
    showTitles({"Milk", "Eggs"});
    edit(0, KRMakeRange(4, 0));
    pressKey(Qt::Key_Right);
    EXPECT_EQ(list->indexForEditedItem(), 1u);
    EXPECT_EQ(caret(), "{0, 0}");
}

TEST_F(KRCheckListViewKeyCommandsTests, WordLeftAtTheStartOfATitleEditsTheItemAboveOneWordBeforeItsEnd) {
    showTitles({"hello world", "Eggs"});
    edit(1, KRMakeRange(0, 0));
    pressKey(Qt::Key_Left, Qt::ControlModifier);
    EXPECT_EQ(list->indexForEditedItem(), 0u);
    EXPECT_EQ(caret(), "{6, 0}");
}

TEST_F(KRCheckListViewKeyCommandsTests, WordRightAtTheEndOfATitleEditsTheItemBelowOneWordIntoIt) {
    showTitles({"Eggs", "hello world"});
    edit(0, KRMakeRange(4, 0));
    pressKey(Qt::Key_Right, Qt::ControlModifier);
    ASSERT_EQ(list->indexForEditedItem(), 1u);
    const std::string afterTheKey = caret();
    // Where the editor's own word movement goes from the start of that title (the next word's start here).
    editor()->setSelectedRange(KRMakeRange(0, 0));
    ASSERT_TRUE(editor()->tryToPerform(KRSelector("moveWordRight:"), nullptr));
    const std::string oneWordIn = caret();
    EXPECT_NE(oneWordIn, "{0, 0}");
    EXPECT_EQ(afterTheKey, oneWordIn);
}

TEST_F(KRCheckListViewKeyCommandsTests, OptionUpAtTheStartOfATitleEditsTheItemAboveAtItsStart) {
    showTitles({"Milk", "Eggs"});
    edit(1, KRMakeRange(0, 0));
    pressKey(Qt::Key_Up, Qt::AltModifier);
    EXPECT_EQ(list->indexForEditedItem(), 0u);
    EXPECT_EQ(caret(), "{0, 0}");
}

TEST_F(KRCheckListViewKeyCommandsTests, OptionUpInsideATitleGoesToItsStartBeforeLeavingIt) {
    showTitles({"Milk", "Eggs"});
    edit(1, KRMakeRange(3, 0));
    pressKey(Qt::Key_Up, Qt::AltModifier);
    EXPECT_EQ(list->indexForEditedItem(), 1u);
    EXPECT_EQ(caret(), "{0, 0}");
    pressKey(Qt::Key_Up, Qt::AltModifier);
    EXPECT_EQ(list->indexForEditedItem(), 0u);
    EXPECT_EQ(caret(), "{0, 0}");
}

TEST_F(KRCheckListViewKeyCommandsTests, OptionDownAtTheEndOfATitleEditsTheItemBelowAtItsEnd) {
    showTitles({"Milk", "Eggs"});
    edit(0, KRMakeRange(4, 0));
    pressKey(Qt::Key_Down, Qt::AltModifier);
    EXPECT_EQ(list->indexForEditedItem(), 1u);
    EXPECT_EQ(caret(), "{4, 0}");
}

// Range selection
// ------------------------------------------------------------------------------------------------------

TEST_F(KRCheckListViewKeyCommandsTests, ShiftUpAtTheStartOfATitleSelectsItAndTheItemAbove) {
    showTitles({"Milk", "Eggs", "Bread", "Jam"});
    edit(2, KRMakeRange(0, 0));
    pressKey(Qt::Key_Up, Qt::ShiftModifier);
    EXPECT_EQ(list->indexForEditedItem(), KRNotFound);
    EXPECT_EQ(selection(), indexesOf(KRIndexSet{1, 2}));
    EXPECT_EQ(window().firstResponder(), list.get()) << "the list takes the keys of the selection";
}

TEST_F(KRCheckListViewKeyCommandsTests, RangeSelectionUpwardGrowsAndShrinksAroundThePivot) {
    showTitles({"Milk", "Eggs", "Bread", "Jam"});
    edit(2, KRMakeRange(0, 0));
    pressKey(Qt::Key_Up, Qt::ShiftModifier);
    EXPECT_EQ(selection(), indexesOf(KRIndexSet{1, 2}));
    pressKey(Qt::Key_Up, Qt::ShiftModifier);
    EXPECT_EQ(selection(), indexesOf(KRIndexSet{0, 1, 2}));
    pressKey(Qt::Key_Up, Qt::ShiftModifier);
    EXPECT_EQ(selection(), indexesOf(KRIndexSet{0, 1, 2})) << "nothing above the top";
    pressKey(Qt::Key_Down, Qt::ShiftModifier);
    EXPECT_EQ(selection(), indexesOf(KRIndexSet{1, 2}));
    pressKey(Qt::Key_Down, Qt::ShiftModifier);
    EXPECT_EQ(selection(), indexesOf(KRIndexSet{2}));
    pressKey(Qt::Key_Down, Qt::ShiftModifier);
    EXPECT_EQ(selection(), indexesOf(KRIndexSet{2, 3}));
    pressKey(Qt::Key_Up, Qt::ShiftModifier);
    EXPECT_EQ(selection(), indexesOf(KRIndexSet{2}));
    EXPECT_EQ(list->pivotIndex(), 2);
}

TEST_F(KRCheckListViewKeyCommandsTests, RangeSelectionDownwardGrowsAndShrinksAroundThePivot) {
    showTitles({"Milk", "Eggs", "Bread", "Jam"});
    edit(1, KRMakeRange(4, 0));
    pressKey(Qt::Key_Down, Qt::ShiftModifier);
    EXPECT_EQ(list->indexForEditedItem(), KRNotFound);
    EXPECT_EQ(selection(), indexesOf(KRIndexSet{1, 2}));
    pressKey(Qt::Key_Down, Qt::ShiftModifier);
    EXPECT_EQ(selection(), indexesOf(KRIndexSet{1, 2, 3}));
    pressKey(Qt::Key_Down, Qt::ShiftModifier);
    EXPECT_EQ(selection(), indexesOf(KRIndexSet{1, 2, 3})) << "nothing below the bottom";
    pressKey(Qt::Key_Up, Qt::ShiftModifier);
    EXPECT_EQ(selection(), indexesOf(KRIndexSet{1, 2}));
    pressKey(Qt::Key_Up, Qt::ShiftModifier);
    EXPECT_EQ(selection(), indexesOf(KRIndexSet{1}));
    pressKey(Qt::Key_Up, Qt::ShiftModifier);
    EXPECT_EQ(selection(), indexesOf(KRIndexSet{0, 1}));
}

TEST_F(KRCheckListViewKeyCommandsTests, ShiftUpAtTheStartOfTheFirstItemSelectsItAlone) {
    showTitles({"Milk", "Eggs"});
    edit(0, KRMakeRange(0, 0));
    pressKey(Qt::Key_Up, Qt::ShiftModifier);
    EXPECT_EQ(list->indexForEditedItem(), KRNotFound);
    EXPECT_EQ(selection(), indexesOf(KRIndexSet{0}));
}

TEST_F(KRCheckListViewKeyCommandsTests, ShiftDownAtTheEndOfTheLastItemSelectsItAlone) {
    showTitles({"Milk", "Eggs"});
    edit(1, KRMakeRange(4, 0));
    pressKey(Qt::Key_Down, Qt::ShiftModifier);
    EXPECT_EQ(list->indexForEditedItem(), KRNotFound);
    EXPECT_EQ(selection(), indexesOf(KRIndexSet{1}));
}

TEST_F(KRCheckListViewKeyCommandsTests, ShiftUpInsideATitleExtendsTheTextSelection) {
    showTitles({"Milk", "Eggs"});
    edit(1, KRMakeRange(3, 0));
    pressKey(Qt::Key_Up, Qt::ShiftModifier);
    EXPECT_EQ(list->indexForEditedItem(), 1u);
    EXPECT_EQ(selection(), indexesOf(KRIndexSet()));
    EXPECT_EQ(caret(), "{0, 3}");
}

TEST_F(KRCheckListViewKeyCommandsTests, ShiftDownBeforeTheEndOfATitleExtendsTheTextSelection) {
    showTitles({"Milk", "Eggs"});
    edit(0, KRMakeRange(1, 0));
    pressKey(Qt::Key_Down, Qt::ShiftModifier);
    EXPECT_EQ(list->indexForEditedItem(), 0u);
    EXPECT_EQ(selection(), indexesOf(KRIndexSet()));
    EXPECT_EQ(caret(), "{1, 3}");
}

TEST_F(KRCheckListViewKeyCommandsTests, ShiftUpWithNothingEditedOrSelectedSelectsTheFirstItem) {
    showTitles({"Milk", "Eggs", "Bread"});
    focusWithoutEditing();
    pressKey(Qt::Key_Up, Qt::ShiftModifier);
    EXPECT_TRUE(list->didHandleLastKeyDownEvent());
    EXPECT_EQ(selection(), indexesOf(KRIndexSet{0}));
}

TEST_F(KRCheckListViewKeyCommandsTests, ShiftDownWithNothingEditedOrSelectedAlsoSelectsTheFirstItem) {
    showTitles({"Milk", "Eggs", "Bread"});
    focusWithoutEditing();
    pressKey(Qt::Key_Down, Qt::ShiftModifier);
    EXPECT_TRUE(list->didHandleLastKeyDownEvent());
    EXPECT_EQ(selection(), indexesOf(KRIndexSet{0}));
}

TEST_F(KRCheckListViewKeyCommandsTests, OptionShiftUpAndDownSelectLikeShiftUpAndDown) {
    showTitles({"Milk", "Eggs", "Bread", "Jam"});
    edit(2, KRMakeRange(0, 0));
    pressKey(Qt::Key_Up, Qt::AltModifier | Qt::ShiftModifier);
    EXPECT_EQ(selection(), indexesOf(KRIndexSet{1, 2}));
    pressKey(Qt::Key_Down, Qt::AltModifier | Qt::ShiftModifier);
    EXPECT_EQ(selection(), indexesOf(KRIndexSet{2}));
    pressKey(Qt::Key_Down, Qt::AltModifier | Qt::ShiftModifier);
    EXPECT_EQ(selection(), indexesOf(KRIndexSet{2, 3}));
}

TEST_F(KRCheckListViewKeyCommandsTests, RangeSelectionInAnEmptyListIsNotHandled) {
    showTitles({});
    window().makeFirstResponder(list.get());
    settle();
    pressKey(Qt::Key_Up, Qt::ShiftModifier);
    EXPECT_FALSE(list->didHandleLastKeyDownEvent());
    pressKey(Qt::Key_Down, Qt::ShiftModifier);
    EXPECT_FALSE(list->didHandleLastKeyDownEvent());
    EXPECT_EQ(selection(), indexesOf(KRIndexSet()));
}

TEST_F(KRCheckListViewKeyCommandsTests, ControlShiftUpAtTheStartOfATitleSelectsEveryItemFromTheTopToIt) {
    showTitles({"Milk", "Eggs", "Bread", "Jam"});
    edit(2, KRMakeRange(0, 0));
    pressKey(Qt::Key_Up, Qt::ControlModifier | Qt::ShiftModifier);
    EXPECT_EQ(list->indexForEditedItem(), KRNotFound);
    EXPECT_EQ(selection(), indexesOf(KRIndexSet{0, 1, 2}));
}

TEST_F(KRCheckListViewKeyCommandsTests, ControlShiftUpInsideATitleSelectsTheTextBeforeTheCaret) {
    showTitles({"Milk", "Eggs", "Bread", "Jam"});
    edit(2, KRMakeRange(3, 0));
    pressKey(Qt::Key_Up, Qt::ControlModifier | Qt::ShiftModifier);
    EXPECT_EQ(list->indexForEditedItem(), 2u);
    EXPECT_EQ(selection(), indexesOf(KRIndexSet()));
    EXPECT_EQ(caret(), "{0, 3}");
}

TEST_F(KRCheckListViewKeyCommandsTests, ControlShiftDownAtTheEndOfATitleSelectsEveryItemFromItToTheBottom) {
    showTitles({"Milk", "Eggs", "Bread", "Jam"});
    edit(1, KRMakeRange(4, 0));
    pressKey(Qt::Key_Down, Qt::ControlModifier | Qt::ShiftModifier);
    EXPECT_EQ(list->indexForEditedItem(), KRNotFound);
    EXPECT_EQ(selection(), indexesOf(KRIndexSet{1, 2, 3}));
}

TEST_F(KRCheckListViewKeyCommandsTests, ControlShiftDownInsideATitleSelectsTheTextAfterTheCaret) {
    showTitles({"Milk", "Eggs", "Bread", "Jam"});
    edit(1, KRMakeRange(1, 0));
    pressKey(Qt::Key_Down, Qt::ControlModifier | Qt::ShiftModifier);
    EXPECT_EQ(list->indexForEditedItem(), 1u);
    EXPECT_EQ(selection(), indexesOf(KRIndexSet()));
    EXPECT_EQ(caret(), "{1, 3}");
}

// Moving items
// ------------------------------------------------------------------------------------------------------

TEST_F(KRCheckListViewKeyCommandsTests, ControlUpMovesTheEditedItemUpByOneWithAnAnimation) {
    showTitles({"Milk", "Eggs", "Bread", "Jam"});
    edit(2, KRMakeRange(2, 0));
    pressKey(Qt::Key_Up, Qt::ControlModifier);
    EXPECT_TRUE(log->contains(QStringLiteral("moveItemsAtIndexes {2} toIndex 1")));
    EXPECT_EQ(linesOf(storedTitles()), linesOf(QStringList{"Milk", "Bread", "Eggs", "Jam"}));
    EXPECT_EQ(linesOf(rowTitles()), linesOf(QStringList{"Milk", "Bread", "Eggs", "Jam"}));
    EXPECT_EQ(list->indexForEditedItem(), 1u);
    EXPECT_EQ(caret(), "{2, 0}");
    EXPECT_TRUE(anyRowMoving()) << "the rows slide to their new places";
    KRClock::advance(1.0);
    expectRowsAtRest();
    EXPECT_EQ(linesOf(rowTitles()), linesOf(QStringList{"Milk", "Bread", "Eggs", "Jam"}));
}

TEST_F(KRCheckListViewKeyCommandsTests, ControlUpOnTheFirstItemStillAsksTheDataSource) {
    showTitles({"Milk", "Eggs"});
    edit(0, KRMakeRange(1, 0));
    pressKey(Qt::Key_Up, Qt::ControlModifier);
    EXPECT_TRUE(log->contains(QStringLiteral("moveItemsAtIndexes {0} toIndex 0")));
    EXPECT_EQ(linesOf(storedTitles()), linesOf(QStringList{"Milk", "Eggs"}));
    EXPECT_EQ(list->indexForEditedItem(), 0u);
    EXPECT_EQ(caret(), "{1, 0}");
}

TEST_F(KRCheckListViewKeyCommandsTests, ControlDownMovesTheSelectionDownByOneWithAnAnimation) {
    showTitles({"Milk", "Eggs", "Bread", "Jam"});
    selectItems(KRIndexSet{0, 1});
    pressKey(Qt::Key_Down, Qt::ControlModifier);
    EXPECT_TRUE(list->didHandleLastKeyDownEvent());
    EXPECT_TRUE(log->contains(QStringLiteral("moveItemsAtIndexes {0, 1} toIndex 3")));
    EXPECT_EQ(linesOf(storedTitles()), linesOf(QStringList{"Bread", "Milk", "Eggs", "Jam"}));
    EXPECT_EQ(selection(), indexesOf(KRIndexSet{1, 2}));
    EXPECT_TRUE(anyRowMoving());
    KRClock::advance(1.0);
    expectRowsAtRest();
    EXPECT_EQ(linesOf(rowTitles()), linesOf(QStringList{"Bread", "Milk", "Eggs", "Jam"}));
}

TEST_F(KRCheckListViewKeyCommandsTests, ControlUpAndDownInAnEmptyListAreNotHandled) {
    showTitles({});
    window().makeFirstResponder(list.get());
    settle();
    pressKey(Qt::Key_Up, Qt::ControlModifier);
    EXPECT_FALSE(list->didHandleLastKeyDownEvent());
    pressKey(Qt::Key_Down, Qt::ControlModifier);
    EXPECT_FALSE(list->didHandleLastKeyDownEvent());
    EXPECT_FALSE(log->contains(QStringLiteral("moveItemsAtIndexes {} toIndex 0")));
}

TEST_F(KRCheckListViewKeyCommandsTests, ControlOptionUpMovesTheSelectionToTheTopWithAnAnimation) {
    showTitles({"Milk", "Eggs", "Bread", "Jam", "Tea"});
    selectItems(KRIndexSet{2, 3});
    pressKey(Qt::Key_Up, Qt::ControlModifier | Qt::AltModifier);
    EXPECT_TRUE(list->didHandleLastKeyDownEvent());
    EXPECT_TRUE(log->contains(QStringLiteral("textViewDoCommandBySelector noop:")));
    EXPECT_TRUE(log->contains(QStringLiteral("moveItemsAtIndexes {2, 3} toIndex 0")));
    EXPECT_EQ(linesOf(storedTitles()), linesOf(QStringList{"Bread", "Jam", "Milk", "Eggs", "Tea"}));
    EXPECT_EQ(selection(), indexesOf(KRIndexSet{0, 1}));
    EXPECT_TRUE(anyRowMoving());
    KRClock::advance(1.0);
    expectRowsAtRest();
    EXPECT_EQ(linesOf(rowTitles()), linesOf(QStringList{"Bread", "Jam", "Milk", "Eggs", "Tea"}));
}

TEST_F(KRCheckListViewKeyCommandsTests,
       ControlOptionUpWhileEditingMovesTheEditedItemToTheTopAndKeepsItsCaret) {
    showTitles({"Milk", "Eggs", "Bread"});
    edit(2, KRMakeRange(3, 0));
    pressKey(Qt::Key_Up, Qt::ControlModifier | Qt::AltModifier);
    EXPECT_EQ(linesOf(storedTitles()), linesOf(QStringList{"Bread", "Milk", "Eggs"}));
    EXPECT_EQ(list->indexForEditedItem(), 0u);
    EXPECT_EQ(caret(), "{3, 0}");
    KRClock::advance(1.0);
    expectRowsAtRest();
}

TEST_F(KRCheckListViewKeyCommandsTests, ControlOptionDownMovesTheEditedItemToTheBottomWithAnAnimation) {
    showTitles({"Milk", "Eggs", "Bread", "Jam"});
    edit(1, KRMakeRange(2, 0));
    pressKey(Qt::Key_Down, Qt::ControlModifier | Qt::AltModifier);
    EXPECT_TRUE(log->contains(QStringLiteral("moveItemsAtIndexes {1} toIndex 4")));
    EXPECT_EQ(linesOf(storedTitles()), linesOf(QStringList{"Milk", "Bread", "Jam", "Eggs"}));
    EXPECT_EQ(list->indexForEditedItem(), 3u);
    EXPECT_EQ(caret(), "{2, 0}");
    EXPECT_TRUE(anyRowMoving());
    KRClock::advance(1.0);
    expectRowsAtRest();
    EXPECT_EQ(linesOf(rowTitles()), linesOf(QStringList{"Milk", "Bread", "Jam", "Eggs"}));
}

TEST_F(KRCheckListViewKeyCommandsTests, UnboundChordsOtherThanControlOptionUpAndDownMoveNothing) {
    showTitles({"Milk", "Eggs", "Bread"});
    selectItems(KRIndexSet{1});
    pressKey(Qt::Key_Left, Qt::ControlModifier | Qt::AltModifier);
    EXPECT_FALSE(list->didHandleLastKeyDownEvent()) << "the key is not an up or down arrow";
    pressKey(Qt::Key_Up, Qt::MetaModifier);
    EXPECT_FALSE(list->didHandleLastKeyDownEvent()) << "Command and Option are not held";
    EXPECT_EQ(log->count(QStringLiteral("textViewDoCommandBySelector noop:")), 2);
    EXPECT_FALSE(log->contains(QStringLiteral("willMoveItemsAtIndexes {1} toIndex 0")));
    EXPECT_EQ(linesOf(storedTitles()), linesOf(QStringList{"Milk", "Eggs", "Bread"}));
    EXPECT_EQ(selection(), indexesOf(KRIndexSet{1}));
}

// Select all and paste
// ------------------------------------------------------------------------------------------------------

TEST_F(KRCheckListViewKeyCommandsTests, SelectAllPressedTwiceWhileEditingFirstSelectsTheTitleThenAllItems) {
    showTitles({"Milk", "Eggs", "Bread"});
    edit(1, KRMakeRange(2, 0));
    pressKey(Qt::Key_A, Qt::ControlModifier, QStringLiteral("\x01"));
    EXPECT_EQ(list->indexForEditedItem(), 1u);
    EXPECT_EQ(caret(), "{0, 4}");
    EXPECT_EQ(selection(), indexesOf(KRIndexSet()));
    pressKey(Qt::Key_A, Qt::ControlModifier, QStringLiteral("\x01"));
    EXPECT_EQ(list->indexForEditedItem(), KRNotFound);
    EXPECT_EQ(selection(), indexesOf(KRIndexSet{0, 1, 2}));
    EXPECT_EQ(indexesOf(selectedRows()), indexesOf(KRIndexSet{0, 1, 2}));
}

TEST_F(KRCheckListViewKeyCommandsTests, SelectAllInAnEmptyTitleSelectsEveryItemAtOnce) {
    showTitles({"Milk", "", "Bread"});
    edit(1, KRMakeRange(0, 0));
    pressKey(Qt::Key_A, Qt::ControlModifier, QStringLiteral("\x01"));
    EXPECT_EQ(list->indexForEditedItem(), KRNotFound);
    EXPECT_EQ(selection(), indexesOf(KRIndexSet{0, 1, 2}));
}

TEST_F(KRCheckListViewKeyCommandsTests, SelectAllWithItemsSelectedSelectsEveryItem) {
    showTitles({"Milk", "Eggs", "Bread"});
    selectItems(KRIndexSet{1});
    pressKey(Qt::Key_A, Qt::ControlModifier, QStringLiteral("\x01"));
    EXPECT_TRUE(list->didHandleLastKeyDownEvent());
    EXPECT_EQ(selection(), indexesOf(KRIndexSet{0, 1, 2}));
}

TEST_F(KRCheckListViewKeyCommandsTests, PasteWhileEditingIsTheListsOwnCommand) {
    showTitles({"Milk", "Eggs"});
    KRPasteboard::generalPasteboard()->declareTypes({KRPasteboardTypeString}, nullptr);
    KRPasteboard::generalPasteboard()->setString(QStringLiteral("Jam"), KRPasteboardTypeString);
    edit(1, KRMakeRange(2, 0));
    pressKey(Qt::Key_V, Qt::ControlModifier, QStringLiteral("\x16"));
    EXPECT_TRUE(log->contains(QStringLiteral("textViewDoCommandBySelector paste:")))
        << "the editor hands its paste to the list";
    EXPECT_TRUE(list->checkListItemViewTextViewDoCommandBySelector(rowAt(1), editor(), KRSelector("paste:")))
        << "the list answers for it, so the editor does not paste";
}

TEST_F(KRCheckListViewKeyCommandsTests, PasteWithItemsSelectedIsHandledByTheList) {
    showTitles({"Milk", "Eggs"});
    KRPasteboard::generalPasteboard()->declareTypes({KRPasteboardTypeString}, nullptr);
    KRPasteboard::generalPasteboard()->setString(QStringLiteral("Jam"), KRPasteboardTypeString);
    selectItems(KRIndexSet{0});
    pressKey(Qt::Key_V, Qt::ControlModifier, QStringLiteral("\x16"));
    EXPECT_TRUE(log->contains(QStringLiteral("textViewDoCommandBySelector paste:")));
    EXPECT_TRUE(list->didHandleLastKeyDownEvent());
}

// Tab
// ------------------------------------------------------------------------------------------------------

TEST_F(KRCheckListViewKeyCommandsTests, TabEndsEditingAndSelectsTheNextKeyView) {
    auto before = std::make_shared<KeyView>(KRRectMake(330, 0, 60, 20));
    auto after = std::make_shared<KeyView>(KRRectMake(330, 40, 60, 20));
    content->addSubview(before);
    content->addSubview(after);
    before->setNextKeyView(list.get());
    list->setNextKeyView(after.get());
    showTitles({"Milk", "Eggs"});
    edit(0, KRMakeRange(2, 0));
    pressKey(Qt::Key_Tab, Qt::NoModifier, QStringLiteral("\t"));
    EXPECT_EQ(list->indexForEditedItem(), KRNotFound);
    EXPECT_TRUE(log->contains(QStringLiteral("didEndEditingItemAtIndex 0")));
    EXPECT_EQ(window().firstResponder(), after.get());
    EXPECT_FALSE(list->hasFocus());
}

TEST_F(KRCheckListViewKeyCommandsTests, ShiftTabEndsEditingAndSelectsThePreviousKeyView) {
    auto before = std::make_shared<KeyView>(KRRectMake(330, 0, 60, 20));
    auto after = std::make_shared<KeyView>(KRRectMake(330, 40, 60, 20));
    content->addSubview(before);
    content->addSubview(after);
    before->setNextKeyView(list.get());
    list->setNextKeyView(after.get());
    showTitles({"Milk", "Eggs"});
    edit(1, KRMakeRange(2, 0));
    pressKey(Qt::Key_Backtab, Qt::ShiftModifier);
    EXPECT_EQ(list->indexForEditedItem(), KRNotFound);
    EXPECT_TRUE(log->contains(QStringLiteral("didEndEditingItemAtIndex 1")));
    EXPECT_EQ(window().firstResponder(), before.get());
    EXPECT_FALSE(list->hasFocus());
}

// The veto and the rest
// ------------------------------------------------------------------------------------------------------

TEST_F(KRCheckListViewKeyCommandsTests, TheDelegatesVetoStopsTheCommandAndTheEditor) {
    showTitles({"hello", "world"});
    edit(1, KRMakeRange(0, 0));
    delegate->doCommandAnswer = true;
    pressKey(Qt::Key_Backspace, Qt::NoModifier, QStringLiteral("\b"));
    EXPECT_EQ(linesOf(log->messages()),
              linesOf(QStringList{QStringLiteral("textViewDoCommandBySelector deleteBackward:")}));
    EXPECT_EQ(linesOf(storedTitles()), linesOf(QStringList{"hello", "world"}));
    EXPECT_EQ(editedText(), QStringLiteral("world"));
    EXPECT_EQ(list->indexForEditedItem(), 1u);
    pressKey(Qt::Key_Left);
    EXPECT_EQ(list->indexForEditedItem(), 1u) << "the caret rule is vetoed too";
    EXPECT_EQ(caret(), "{0, 0}");
}

TEST_F(KRCheckListViewKeyCommandsTests, AVetoedKeyCountsAsHandledByTheList) {
    showTitles({"Milk", "Eggs", "Bread"});
    selectItems(KRIndexSet{1});
    delegate->doCommandAnswer = true;
    pressKey(Qt::Key_Backspace, Qt::NoModifier, QStringLiteral("\b"));
    EXPECT_TRUE(list->didHandleLastKeyDownEvent());
    EXPECT_EQ(linesOf(log->messages()),
              linesOf(QStringList{QStringLiteral("textViewDoCommandBySelector deleteBackward:")}));
    EXPECT_EQ(linesOf(storedTitles()), linesOf(QStringList{"Milk", "Eggs", "Bread"}));
    EXPECT_EQ(selection(), indexesOf(KRIndexSet{1}));
}

TEST_F(KRCheckListViewKeyCommandsTests, AVetoLeavesTheTrackedCaretAlone) {
    showTitles({"Milk and bread", "Eggs", "Milk and honey"});
    edit(2, KRMakeRange(8, 0));
    pressKey(Qt::Key_Up);
    const KRRect tracked = list->insertionPointRectOnScreen();
    ASSERT_FALSE(KRRectIsNull(tracked));
    delegate->doCommandAnswer = true;
    pressKey(Qt::Key_Left);
    EXPECT_EQ(list->insertionPointRectOnScreen(), tracked);
}

TEST_F(KRCheckListViewKeyCommandsTests, UnboundKeysWithItemsSelectedAreNotHandled) {
    showTitles({"Milk", "Eggs", "Bread"});
    selectItems(KRIndexSet{1});
    pressKey(Qt::Key_PageUp);
    EXPECT_FALSE(list->didHandleLastKeyDownEvent());
    EXPECT_TRUE(log->contains(QStringLiteral("textViewDoCommandBySelector pageUp:")));
    EXPECT_EQ(selection(), indexesOf(KRIndexSet{1}));
    pressKey(Qt::Key_Left);
    EXPECT_TRUE(list->didHandleLastKeyDownEvent()) << "the flag follows every key";
}

TEST_F(KRCheckListViewKeyCommandsTests, SelectorsSentToTheListGoThroughTheSameRules) {
    showTitles({"Milk", "Eggs", "Bread"});
    selectItems(KRIndexSet{0, 1});
    list->doCommandBySelector(KRSelector("moveToEndOfDocument:"));
    EXPECT_TRUE(list->didHandleLastKeyDownEvent());
    EXPECT_EQ(linesOf(storedTitles()), linesOf(QStringList{"Bread", "Milk", "Eggs"}));
    list->doCommandBySelector(KRSelector("scrollPageDown:"));
    EXPECT_FALSE(list->didHandleLastKeyDownEvent());
}
