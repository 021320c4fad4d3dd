// KRCheckListView: keyboard commands. Every key the list reacts to, whether it reaches the list itself or the
// edited title's field editor, ends up in checkListViewHandleCommand, which turns text commands at the edges
// of a title into list operations: moving between rows, splitting and merging titles, range selection,
// moving items, commit and cancel.
#include "KRCheckListView.h"

#include "Animation/EZAnimationContext.h"
#include "Animation/EZInterpolationFunctions.h"
#include "Animation/KRAnimationDurationMultiplier.h"
#include "Foundation/KRAssertionHandler.h"
#include "Foundation/KRRunLoop.h"
#include "Views/KRWindow.h"

#include <algorithm>

namespace {

constexpr KRRange KRCheckListCaretAtStart{0, 0};
constexpr KRRange KRCheckListCaretAtEnd{KRUIntegerMax, 0};
// Moving items with the keyboard springs them into place.
constexpr double KRCheckListKeyboardMoveDampingRatio = 0.9;
constexpr double KRCheckListKeyboardMoveDuration = 0.25;
// No key event is being handled (a command sent directly).
constexpr unsigned short KRCheckListNoKeyCode = 0xFFFF;

KRRange caretAt(KRUInteger location) {
    return KRRange{location, 0};
}

// The name of a command of the table; a name missing from it is the program's error, so that what help
// shows can never fall behind what the list does.
KRSelector listed(const char* name) {
    const std::vector<KRCheckListView::KeyCommand>& table = KRCheckListView::keyCommands();
    const bool found =
        std::any_of(table.begin(), table.end(), [name](const KRCheckListView::KeyCommand& command) {
            return qstrcmp(command.selector, name) == 0;
        });
    KRAssert(found, QStringLiteral("keyCommands"), nullptr, QStringLiteral("KRCheckListView"), __LINE__,
             QStringLiteral("%1 is missing from the command table").arg(QLatin1String(name)));
    return KRSelector(name);
}

// The selectors the list tells apart, made once.
struct Commands {
    KRSelector cancelOperation = listed("cancelOperation:");
    KRSelector deleteBackward = listed("deleteBackward:");
    KRSelector deleteForward = listed("deleteForward:");
    KRSelector deleteToBeginningOfLine = listed("deleteToBeginningOfLine:");
    KRSelector deleteToEndOfLine = listed("deleteToEndOfLine:");
    KRSelector insertNewline = listed("insertNewline:");
    KRSelector insertLineBreak = listed("insertLineBreak:");
    KRSelector moveUp = listed("moveUp:");
    KRSelector moveDown = listed("moveDown:");
    KRSelector moveLeft = listed("moveLeft:");
    KRSelector moveRight = listed("moveRight:");
    KRSelector moveToLeftEndOfLine = listed("moveToLeftEndOfLine:");
    KRSelector moveToRightEndOfLine = listed("moveToRightEndOfLine:");
    KRSelector moveWordLeft = listed("moveWordLeft:");
    KRSelector moveWordRight = listed("moveWordRight:");
    KRSelector moveUpAndModifySelection = listed("moveUpAndModifySelection:");
    KRSelector moveParagraphBackwardAndModifySelection = listed("moveParagraphBackwardAndModifySelection:");
    KRSelector moveDownAndModifySelection = listed("moveDownAndModifySelection:");
    KRSelector moveParagraphForwardAndModifySelection = listed("moveParagraphForwardAndModifySelection:");
    KRSelector moveToBeginningOfParagraph = listed("moveToBeginningOfParagraph:");
    KRSelector moveToEndOfParagraph = listed("moveToEndOfParagraph:");
    KRSelector moveToBeginningOfDocument = listed("moveToBeginningOfDocument:");
    KRSelector moveToEndOfDocument = listed("moveToEndOfDocument:");
    KRSelector moveToBeginningOfDocumentAndModifySelection =
        listed("moveToBeginningOfDocumentAndModifySelection:");
    KRSelector moveToEndOfDocumentAndModifySelection = listed("moveToEndOfDocumentAndModifySelection:");
    KRSelector selectAll = listed("selectAll:");
    KRSelector paste = listed("paste:");
    KRSelector noop = listed("noop:");
    KRSelector insertTab = listed("insertTab:");
    KRSelector insertBacktab = listed("insertBacktab:");
};

const Commands& commands() {
    static const Commands instance;
    return instance;
}

} // namespace

// What one command sees, read once before any rule runs: later rules see these values, not what earlier
// work changed.
struct KRCheckListView::CommandContext {
    KRUInteger edited = KRNotFound;
    KRUInteger pivot = 0;
    KRUInteger count = 0;
    KRTextView* textView = nullptr;
    QString text;
    KRUInteger length = 0;
    KRRange selection{0, 0};
    KRUInteger caret = KRNotFound;
    KRUInteger selectionEnd = 0;
    bool wholeTitleSelected = false;
    KRIndexSet selectedIndexes;
    KRUInteger firstSelected = KRNotFound;
    KRUInteger lastSelected = KRNotFound;
    KRUInteger aboveSelection = KRNotFound;
    KRUInteger belowSelection = KRNotFound;
    KRUInteger above = KRNotFound;
    KRUInteger below = KRNotFound;
    QString titleAbove;
    QString titleBelow;
    bool notFirstLine = false;
    bool notLastLine = false;
    KREventModifierFlags modifierFlags = 0;
    unsigned short keyCode = KRCheckListNoKeyCode;

    bool isEditing() const { return edited != KRNotFound; }
    bool hasSelection() const { return firstSelected != KRNotFound; }
    bool caretAtStart() const { return caret == 0; }
    bool caretAtEnd() const { return caret != KRNotFound && caret >= length; }
};

// Entry points
// ------------------------------------------------------------------------------------------------------

// A modified Return commits whatever command the key bindings made of it.
bool KRCheckListView::isCommitKey(unsigned short keyCode, KREventModifierFlags modifierFlags) {
    constexpr KREventModifierFlags commitModifiers = KREventModifierFlagOption | KREventModifierFlagCommand |
                                                     KREventModifierFlagShift | KREventModifierFlagControl;
    return keyCode == KRKeyCode::Return && (modifierFlags & commitModifiers);
}

const std::vector<KRCheckListView::KeyCommand>& KRCheckListView::keyCommands() {
    static const std::vector<KeyCommand> table = {
        {"cancelOperation:", "Stop editing and clear the selection"},
        {"deleteBackward:", "Delete the selected items; at the start of a title, join it to the item above"},
        {"deleteForward:", "Delete the selected items; at the end of a title, join the item below to it"},
        {"deleteToBeginningOfLine:", "Delete the edited or selected items"},
        {"deleteToEndOfLine:", "Delete the edited or selected items"},
        {"insertNewline:",
         "Split the title at the caret into two items; with items selected, add one below them"},
        {"insertLineBreak:",
         "Split the title at the caret into two items; with items selected, add one below them"},
        {"moveUp:", "From the first line of a title, go on to the item above"},
        {"moveDown:", "From the last line of a title, go on to the item below"},
        {"moveLeft:", "From the start of a title, go to the end of the item above"},
        {"moveRight:", "From the end of a title, go to the start of the item below"},
        {"moveToLeftEndOfLine:", "With items selected, edit the first at its start"},
        {"moveToRightEndOfLine:", "With items selected, edit the last at its end"},
        {"moveWordLeft:", "Word by word to the left, on into the item above"},
        {"moveWordRight:", "Word by word to the right, on into the item below"},
        {"moveUpAndModifySelection:", "Select items upward"},
        {"moveParagraphBackwardAndModifySelection:", "Select items upward"},
        {"moveDownAndModifySelection:", "Select items downward"},
        {"moveParagraphForwardAndModifySelection:", "Select items downward"},
        {"moveToBeginningOfParagraph:", "To the start of the title, then to the start of the item above"},
        {"moveToEndOfParagraph:", "To the end of the title, then to the end of the item below"},
        {"moveToBeginningOfDocument:", "Move the edited or selected items up"},
        {"moveToEndOfDocument:", "Move the edited or selected items down"},
        {"moveToBeginningOfDocumentAndModifySelection:", "Select from the edited item up to the first"},
        {"moveToEndOfDocumentAndModifySelection:", "Select from the edited item down to the last"},
        {"selectAll:", "Select the whole title, then every item"},
        {"paste:", "Paste items, or a line of text into the edited title"},
        {"noop:", "Move the edited or selected items to the top or to the bottom", "⌘⌥↑, ⌘⌥↓",
         "Ctrl+Alt+Up, Ctrl+Alt+Down"},
        {"insertTab:", "Stop editing and move the focus on"},
        {"insertBacktab:", "Stop editing and move the focus back"},
        // Whatever command a modified Return is bound to (see isCommitKey).
        {"", "Stop editing and keep the title as it is", "⇧↩, ⌥↩, ⌘↩, ⌃↩",
         "Shift+Enter, Alt+Enter, Ctrl+Enter, Meta+Enter"},
    };
    return table;
}

void KRCheckListView::keyDown(const KREvent& event) {
    m_didHandleLastKeyDownEvent = false;
    interpretKeyEvents({event});
    if (!m_didHandleLastKeyDownEvent) {
        KRView::keyDown(event);
    }
}

void KRCheckListView::doCommandBySelector(const KRSelector& selector) {
    m_didHandleLastKeyDownEvent = checkListViewHandleCommand(selector);
}

// An unhandled moveUp: inside a multi-line title moves the caret by the text view's own rules; on the next
// turn the caret is put back under the tracked x if the line it landed on ends before it.
bool KRCheckListView::checkListItemViewTextViewDoCommandBySelector(KRCheckListItemView*, KRTextView* textView,
                                                                   const KRSelector& selector) {
    const bool handled = checkListViewHandleCommand(selector);
    if (!KRRectIsNull(m_insertionPointRectOnScreen) && !handled && selector == commands().moveUp) {
        const KRWeak<KRCheckListView> weakSelf(this);
        const KRWeak<KRTextView> weakTextView(textView);
        KRRunLoop::main().performAfterDelay(0.0, [weakSelf, weakTextView] {
            KRCheckListView* checkListView = weakSelf.get();
            KRTextView* editor = weakTextView.get();
            if (checkListView && editor) {
                checkListView->checkListViewKeepTrackedCaretAfterMoveUp(*editor);
            }
        });
    }
    return handled;
}

void KRCheckListView::checkListViewKeepTrackedCaretAfterMoveUp(KRTextView& textView) {
    if (KRRectIsNull(m_insertionPointRectOnScreen) || !textView.window()) {
        return;
    }
    const KRRect line = textView.firstRectForCharacterRange(textView.selectedRange(), nullptr);
    if (m_insertionPointRectOnScreen.origin.x <= line.origin.x + line.size.width) {
        return;
    }
    const double x = textView.convertRectFromScreen(m_insertionPointRectOnScreen).origin.x;
    const double y = KRRectGetMidY(textView.convertRectFromScreen(line));
    textView.setSelectedRange(caretAt(textView.characterIndexForInsertionAtPoint(KRPoint{x, y})));
}

// The decision
// ------------------------------------------------------------------------------------------------------

bool KRCheckListView::checkListViewHandleCommand(const KRSelector& selector) {
    CommandContext context;
    context.edited = m_indexForEditedItem;
    context.textView = checkListViewTextViewForCommands();
    if (checkListViewTextViewDoCommandBySelector(this, context.textView, selector)) {
        return true;
    }
    checkListViewReadCommandContext(context);
    checkListViewTrackInsertionPointForCommand(selector, context);
    return checkListViewApplyCommand(selector, context);
}

KRTextView* KRCheckListView::checkListViewTextViewForCommands() const {
    if (m_indexForEditedItem != KRNotFound) {
        if (KRCheckListItemTitleTextField* field =
                checkListViewTitleTextFieldForIndex(m_indexForEditedItem)) {
            return field->currentEditor();
        }
        return nullptr;
    }
    KRWindow* window = this->window();
    return window ? dynamic_cast<KRTextView*>(window->fieldEditor(true, nullptr).get()) : nullptr;
}

void KRCheckListView::checkListViewReadCommandContext(CommandContext& context) const {
    context.pivot = static_cast<KRUInteger>(m_pivotIndex);
    context.count = numberOfItems();
    if (const KRTextView* textView = context.textView) {
        context.text = textView->string();
        context.selection = textView->selectedRange();
    }
    context.length = static_cast<KRUInteger>(context.text.size());
    context.caret = context.selection.length == 0 ? context.selection.location : KRNotFound;
    context.selectionEnd = context.selection.location + context.selection.length;
    context.wholeTitleSelected = context.selection.length != 0 && context.selection.location == 0 &&
                                 context.selection.length == context.length;

    // Numbers a client left past the rows are not selected items.
    context.selectedIndexes = checkListViewIndexesForSelectedItemsInRows();
    context.firstSelected = context.selectedIndexes.firstIndex();
    context.lastSelected = context.selectedIndexes.lastIndex();
    if (context.firstSelected != KRNotFound && context.firstSelected > 0) {
        context.aboveSelection = context.firstSelected - 1;
    }
    if (context.lastSelected != KRNotFound && context.count > 0 && context.lastSelected < context.count - 1) {
        context.belowSelection = context.lastSelected + 1;
    }
    if (context.isEditing() && context.edited > 0) {
        context.above = context.edited - 1;
        context.titleAbove = m_checkListItemViews[context.above]->title();
    }
    if (context.isEditing() && context.edited + 1 < context.count) {
        context.below = context.edited + 1;
        context.titleBelow = m_checkListItemViews[context.below]->title();
    }

    // A full line above the caret, but only half a line below it.
    if (context.textView && context.length != 0) {
        const KRRect caretRect = context.textView->insertionPointRect();
        const KRRect bounds = context.textView->bounds();
        context.notFirstLine = caretRect.origin.y - bounds.origin.y >= caretRect.size.height;
        context.notLastLine =
            bounds.size.height - caretRect.origin.y - caretRect.size.height >= caretRect.size.height * 0.5;
    }

    context.modifierFlags = KREvent::currentModifierFlags();
    const KRWindow* window = this->window();
    const KREvent* event = window ? window->currentEvent() : nullptr;
    if (event && event->isKeyEvent()) {
        context.keyCode = event->keyCode();
    }
}

// Consecutive moveUp: and moveDown: keep the x where the first of them started; any other command forgets
// it, and so does moving off the top or bottom of the list.
void KRCheckListView::checkListViewTrackInsertionPointForCommand(const KRSelector& selector,
                                                                 const CommandContext& context) {
    const bool isMoveUp = selector == commands().moveUp;
    const bool isMoveDown = selector == commands().moveDown;
    if (context.selection.length == 0 && (isMoveUp || isMoveDown) &&
        KRRectIsNull(m_insertionPointRectOnScreen)) {
        m_insertionPointRectOnScreen =
            context.textView ? context.textView->convertRectToScreen(context.textView->insertionPointRect())
                             : KRRectZero;
    }
    if (!isMoveUp && !isMoveDown) {
        m_insertionPointRectOnScreen = KRRectNull;
    }
    if (isMoveUp && context.above == KRNotFound && !context.notFirstLine) {
        m_insertionPointRectOnScreen = KRRectNull;
    }
    if (isMoveDown && context.below == KRNotFound && !context.notLastLine) {
        m_insertionPointRectOnScreen = KRRectNull;
    }
}

// The first rule that matches decides; a matched rule answers true unless it says otherwise.
bool KRCheckListView::checkListViewApplyCommand(const KRSelector& selector, const CommandContext& context) {
    const Commands& is = commands();
    const bool isNewline = selector == is.insertNewline || selector == is.insertLineBreak;

    if (selector == is.cancelOperation) {
        if (context.isEditing()) {
            endEditing();
        }
        if (!m_indexesForSelectedItems.isEmpty()) {
            deselectAllItems();
        }
        checkListViewDidCancelEditing(this);
        return true;
    }
    if (selector == is.deleteBackward && context.hasSelection()) {
        deleteEditedOrSelectedItemsBackward();
        return true;
    }
    if (selector == is.deleteForward && context.hasSelection()) {
        deleteEditedOrSelectedItemsForward();
        return true;
    }
    if (selector == is.deleteBackward && context.caretAtStart() && context.above != KRNotFound) {
        // An empty item above goes away; otherwise the title joins the end of the one above.
        if (context.length != 0 && context.titleAbove.isEmpty()) {
            removeItemAtIndex(context.above);
            return true;
        }
        checkListViewMergeTitles(context.above, context.titleAbove + context.text, context.titleAbove.size(),
                                 context.edited);
        return true;
    }
    if (selector == is.deleteForward && context.caretAtEnd() && context.below != KRNotFound) {
        // An empty edited item goes away and editing moves on; otherwise the title below joins this one.
        if (context.length == 0 && !context.titleBelow.isEmpty()) {
            beginEditingItemAtIndexSelectRange(context.below, KRCheckListCaretAtStart);
            removeItemAtIndex(context.edited);
            return true;
        }
        checkListViewMergeTitles(context.edited, context.text + context.titleBelow, context.length,
                                 context.below);
        return true;
    }
    if (selector == is.deleteToBeginningOfLine) {
        deleteEditedOrSelectedItemsBackward();
        return true;
    }
    if (selector == is.deleteToEndOfLine) {
        deleteEditedOrSelectedItemsForward();
        return true;
    }
    if (isCommitKey(context.keyCode, context.modifierFlags)) {
        endEditing();
        checkListViewDidCommitEditing(this);
        return true;
    }
    if (isNewline && context.isEditing()) {
        checkListViewInsertNewline(context);
        return true;
    }
    if (isNewline && context.hasSelection()) {
        insertItemAtIndex(context.lastSelected + 1);
        checkListViewBeginEditingItemIfPresent(context.lastSelected + 1, KRCheckListCaretAtStart);
        return true;
    }
    if (selector == is.moveUp && context.selection.length == 0 && !context.notFirstLine &&
        (context.above != KRNotFound || context.hasSelection())) {
        KRUInteger target = context.above != KRNotFound ? context.above : context.aboveSelection;
        if (target == KRNotFound && context.count > 0) {
            target = 0;
        }
        if (target != KRNotFound) {
            beginEditingItemAtIndexSelectRangeUseTrackedInsertionPointInFirstLineInLastLine(
                target, caretAt(KRNotFound), true, false, true);
        }
        return true;
    }
    if (selector == is.moveDown && context.selection.length == 0 && !context.notLastLine &&
        (context.below != KRNotFound || context.hasSelection())) {
        KRUInteger target = context.below != KRNotFound ? context.below : context.belowSelection;
        if (target == KRNotFound && context.count > 0) {
            target = context.count - 1;
        }
        if (target != KRNotFound) {
            beginEditingItemAtIndexSelectRangeUseTrackedInsertionPointInFirstLineInLastLine(
                target, caretAt(KRNotFound), true, true, false);
        }
        return true;
    }
    if (context.hasSelection()) {
        if (selector == is.moveLeft || selector == is.moveToLeftEndOfLine || selector == is.moveWordLeft) {
            beginEditingItemAtIndexSelectRange(context.firstSelected, KRCheckListCaretAtStart);
            return true;
        }
        if (selector == is.moveRight) {
            if (context.lastSelected == context.count - 1) {
                beginEditingItemAtIndexSelectRange(context.lastSelected, KRCheckListCaretAtEnd);
            } else {
                beginEditingItemAtIndexSelectRange(context.lastSelected + 1, KRCheckListCaretAtStart);
            }
            return true;
        }
        if (selector == is.moveToRightEndOfLine || selector == is.moveWordRight) {
            beginEditingItemAtIndexSelectRange(context.lastSelected, KRCheckListCaretAtEnd);
            return true;
        }
    }
    if (selector == is.moveLeft && context.caretAtStart() && context.above != KRNotFound) {
        beginEditingItemAtIndexSelectRange(context.above, KRCheckListCaretAtEnd);
        return true;
    }
    if (selector == is.moveRight && context.caretAtEnd() && context.below != KRNotFound) {
        beginEditingItemAtIndexSelectRange(context.below, KRCheckListCaretAtStart);
        return true;
    }
    // Word and paragraph moves across the edge of a title go on inside the next one.
    if (selector == is.moveWordLeft && context.caretAtStart() && context.above != KRNotFound) {
        beginEditingItemAtIndexSelectRange(context.above, KRCheckListCaretAtEnd);
        m_fieldEditor->tryToPerform(is.moveWordLeft, this);
        return true;
    }
    if (selector == is.moveWordRight && context.caretAtEnd() && context.below != KRNotFound) {
        beginEditingItemAtIndexSelectRange(context.below, KRCheckListCaretAtStart);
        m_fieldEditor->tryToPerform(is.moveWordRight, this);
        return true;
    }
    if (selector == is.moveUpAndModifySelection || selector == is.moveParagraphBackwardAndModifySelection) {
        if ((context.isEditing() && context.selection.location != 0) || context.count == 0) {
            return false;
        }
        checkListViewSelectRangeUpward(context);
        return true;
    }
    if (selector == is.moveDownAndModifySelection || selector == is.moveParagraphForwardAndModifySelection) {
        if ((context.isEditing() && context.selectionEnd < context.length) || context.count == 0) {
            return false;
        }
        checkListViewSelectRangeDownward(context);
        return true;
    }
    if (selector == is.moveToBeginningOfParagraph && context.caretAtStart() && context.above != KRNotFound) {
        beginEditingItemAtIndexSelectRange(context.above, KRCheckListCaretAtStart);
        m_fieldEditor->tryToPerform(is.moveToBeginningOfParagraph, this);
        return true;
    }
    if (selector == is.moveToEndOfParagraph && context.caretAtEnd() && context.below != KRNotFound) {
        beginEditingItemAtIndexSelectRange(context.below, KRCheckListCaretAtEnd);
        m_fieldEditor->tryToPerform(is.moveToEndOfParagraph, this);
        return true;
    }
    // Moving by one asks nothing first; moving to the ends below does.
    if (selector == is.moveToBeginningOfDocument && context.count > 0) {
        checkListViewPerformAnimatedMove(&KRCheckListView::moveEditedOrSelectedItemsUp);
        return true;
    }
    if (selector == is.moveToEndOfDocument && context.count > 0) {
        checkListViewPerformAnimatedMove(&KRCheckListView::moveEditedOrSelectedItemsDown);
        return true;
    }
    if (selector == is.moveToBeginningOfDocumentAndModifySelection && context.isEditing() &&
        context.selection.location == 0) {
        selectItemsAtIndexesByExtendingSelection(KRIndexSet(KRRange{0, context.edited + 1}), false);
        return true;
    }
    if (selector == is.moveToEndOfDocumentAndModifySelection && context.isEditing() &&
        context.selectionEnd == context.length) {
        selectItemsAtIndexesByExtendingSelection(
            KRIndexSet(KRRange{context.edited, context.count - context.edited}), false);
        return true;
    }
    // Select All first selects the whole title, then every item.
    if (selector == is.selectAll && context.isEditing() && context.length != 0 &&
        !context.wholeTitleSelected) {
        context.textView->setSelectedRange(KRRange{0, context.length});
        return true;
    }
    if (selector == is.selectAll) {
        selectAllItems();
        return true;
    }
    if (selector == is.paste) {
        paste();
        return true;
    }
    constexpr KREventModifierFlags commandOption = KREventModifierFlagCommand | KREventModifierFlagOption;
    const bool commandOptionHeld = (context.modifierFlags & commandOption) == commandOption;
    if (selector == is.noop && commandOptionHeld && context.keyCode == KRKeyCode::UpArrow &&
        canMoveEditedOrSelectedItemsTop()) {
        checkListViewPerformAnimatedMove(&KRCheckListView::moveEditedOrSelectedItemsTop);
        return true;
    }
    if (selector == is.noop && commandOptionHeld && context.keyCode == KRKeyCode::DownArrow &&
        canMoveEditedOrSelectedItemsBottom()) {
        checkListViewPerformAnimatedMove(&KRCheckListView::moveEditedOrSelectedItemsBottom);
        return true;
    }
    if (selector == is.insertTab || selector == is.insertBacktab) {
        endEditing();
        if (KRWindow* window = this->window()) {
            if (selector == is.insertTab) {
                window->selectKeyViewFollowingView(this);
            } else {
                window->selectKeyViewPrecedingView(this);
            }
        }
        return true;
    }
    return false;
}

// Rules that do more than one step
// ------------------------------------------------------------------------------------------------------

// The merged title goes to the item that stays (through validation), editing continues where the two
// titles met, and the other item goes away.
void KRCheckListView::checkListViewMergeTitles(KRUInteger keptIndex, const QString& mergedTitle,
                                               KRUInteger caretLocation, KRUInteger removedIndex) {
    m_checkListItemViews[keptIndex]->setTitle(
        checkListViewValidateChangedTitleForItemAtIndex(this, mergedTitle, keptIndex));
    beginEditingItemAtIndexSelectRange(keptIndex, caretAt(caretLocation));
    removeItemAtIndex(removedIndex);
    setNeedsLayout(true);
}

// Return at the start of a title opens an empty item above; with the whole title selected it empties the
// title and moves on to the item below; anywhere else it splits the title, dropping the selected text.
void KRCheckListView::checkListViewInsertNewline(const CommandContext& context) {
    const KRUInteger edited = context.edited;
    if (context.caretAtStart() && context.length != 0) {
        insertItemAtIndex(edited);
        return;
    }
    if (context.wholeTitleSelected && context.below != KRNotFound) {
        m_checkListItemViews[edited]->setTitle(
            checkListViewValidateChangedTitleForItemAtIndex(this, QString(), edited));
        beginEditingItemAtIndexSelectRange(context.below, KRCheckListCaretAtStart);
        setNeedsLayout(true);
        return;
    }
    const KRUInteger target = context.below != KRNotFound ? context.below : context.count;
    const QString head = context.text.left(static_cast<qsizetype>(context.selection.location));
    const QString tail = context.text.mid(static_cast<qsizetype>(context.selectionEnd));
    const KRCheckListItemView* editedItemView = m_checkListItemViews[edited].get();
    insertItemAtIndex(target);
    // Cutting the title in two needs the new row below it; without one the tail would be lost.
    const bool inserted = target < numberOfItems() && edited < numberOfItems() &&
                          m_checkListItemViews[edited].get() == editedItemView;
    if (!inserted) {
        return;
    }
    m_checkListItemViews[edited]->setTitle(
        checkListViewValidateChangedTitleForItemAtIndex(this, head, edited));
    m_checkListItemViews[target]->setTitle(
        checkListViewValidateChangedTitleForItemAtIndex(this, tail, target));
    beginEditingItemAtIndexSelectRange(target, KRCheckListCaretAtStart);
    setNeedsLayout(true);
}

// Shift-Up: shrinks the selection from the bottom while it reaches below the pivot, else grows it upward.
void KRCheckListView::checkListViewSelectRangeUpward(const CommandContext& context) {
    KRMutableIndexSet indexes;
    indexes.addIndexes(context.selectedIndexes);
    if (context.isEditing() && !context.hasSelection()) {
        indexes.addIndex(context.edited);
        if (context.above != KRNotFound) {
            indexes.addIndex(context.above);
        }
    } else if (!context.isEditing() && !context.hasSelection()) {
        indexes.addIndex(0);
    }
    if (context.lastSelected != KRNotFound && context.lastSelected > context.pivot) {
        indexes.removeIndex(context.lastSelected);
    }
    if (context.lastSelected != KRNotFound && context.lastSelected <= context.pivot &&
        context.aboveSelection != KRNotFound) {
        indexes.addIndex(context.aboveSelection);
    }
    selectItemsAtIndexesByExtendingSelection(indexes, false);
}

// Shift-Down: the mirror image; with nothing edited or selected it too starts from the first item.
void KRCheckListView::checkListViewSelectRangeDownward(const CommandContext& context) {
    KRMutableIndexSet indexes;
    indexes.addIndexes(context.selectedIndexes);
    if (context.isEditing() && !context.hasSelection()) {
        indexes.addIndex(context.edited);
        if (context.below != KRNotFound) {
            indexes.addIndex(context.below);
        }
    } else if (!context.isEditing() && !context.hasSelection()) {
        indexes.addIndex(0);
    }
    if (context.firstSelected != KRNotFound && context.firstSelected < context.pivot) {
        indexes.removeIndex(context.firstSelected);
    }
    if (context.firstSelected != KRNotFound && context.firstSelected >= context.pivot &&
        context.belowSelection != KRNotFound) {
        indexes.addIndex(context.belowSelection);
    }
    selectItemsAtIndexesByExtendingSelection(indexes, false);
}

void KRCheckListView::checkListViewPerformAnimatedMove(void (KRCheckListView::*move)()) {
    KRView::performAnimated(true, [this, move](EZAnimationContext& context) {
        context.setInterpolationFunction(EZInterpolationFunctions::springWithDampingRatio(
            KRCheckListKeyboardMoveDampingRatio,
            KRCheckListKeyboardMoveDuration * KRAnimationDurationMultiplier));
        (this->*move)();
    });
}
