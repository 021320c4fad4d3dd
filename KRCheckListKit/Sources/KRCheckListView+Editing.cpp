// KRCheckListView: editing a title in place through the list's field editor, where the caret goes, the
// list's focus, and the placeholder rule.
#include "KRCheckListView.h"
#include "KRCheckListViewAssert.h"

#include "KRCheckListDefaults.h"

#include "Foundation/KRRunLoop.h"
#include "Views/KRWindow.h"

#include <algorithm>
#include <cmath>
#include <stdexcept>

// Beginning and ending an edit
// ------------------------------------------------------------------------------------------------------

void KRCheckListView::beginEditing() {
    if (m_indexForEditedItem == KRNotFound && numberOfItems() > 0) {
        beginEditingItemAtIndexSelectRange(numberOfItems() - 1, KRRange{KRUIntegerMax, 0});
    }
}

void KRCheckListView::beginEditingItemAtIndexSelectRange(KRUInteger index, KRRange range) {
    beginEditingItemAtIndexSelectRangeUseTrackedInsertionPointInFirstLineInLastLine(index, range, false,
                                                                                    false, false);
}

void KRCheckListView::beginEditingItemAtIndexInsertionPoint(KRUInteger index, KRPoint insertionPoint) {
    m_insertionPointRectOnScreen = KRRect{insertionPoint, KRSizeZero};
    beginEditingItemAtIndexSelectRangeUseTrackedInsertionPointInFirstLineInLastLine(index, KRRange{0, 0},
                                                                                    true, false, false);
}

void KRCheckListView::beginEditingItemAtIndexSelectRangeUseTrackedInsertionPointInFirstLineInLastLine(
    KRUInteger index, KRRange range, bool useTrackedInsertionPoint, bool inFirstLine, bool inLastLine) {
    // Refused before anything changes, so a wrong index leaves the edit and the selection as they were.
    if (index >= numberOfItems()) {
        throw std::out_of_range("beginEditingItemAtIndex:selectRange: index beyond the end of the rows");
    }
    m_beginningEditing = true;
    if (m_indexForEditedItem != KRNotFound) {
        endEditing();
    }
    if (!m_indexesForSelectedItems.isEmpty()) {
        deselectAllItems();
    }

    checkListViewWillBeginEditingItemAtIndex(this, index);

    // Taking first responder puts the field editor (the list's own, through the row) over the title.
    KRCheckListItemView& itemView = *m_checkListItemViews.at(index);
    itemView.setEdited(true);
    KRCheckListItemTitleTextField& titleTextField = *itemView.titleTextField();
    titleTextField.setEditable(true);
    if (KRWindow* window = this->window()) {
        window->makeFirstResponder(&titleTextField);
    }
    KRTextView* editor = titleTextField.currentEditor();
    if (!editor) {
        editor = m_fieldEditor.get();
    }

    // The requested range, clamped to the title.
    const KRUInteger length = static_cast<KRUInteger>(titleTextField.stringValue().size());
    KRUInteger location = std::min(length, range.location);
    KRUInteger selectionLength = range.length > length - location ? length - location : range.length;

    // Entering the last line: the location counts from the start of the title's last line.
    if (inLastLine && length >= 2) {
        KRRange lastLine{0, 0};
        editor->lineFragmentRectForCharacterAtIndex(length - 1, &lastLine);
        location += lastLine.location;
        selectionLength = std::min(selectionLength, lastLine.length);
    }

    // A tracked caret position wins over the range: the caret keeps its x from row to row.
    if (useTrackedInsertionPoint && !KRRectIsNull(m_insertionPointRectOnScreen)) {
        selectionLength = 0;
        const KRRect tracked = editor->convertRectFromScreen(m_insertionPointRectOnScreen);
        const KRRect trackedInBounds = KRRectIntersection(editor->bounds(), tracked);
        const KRRect firstLine =
            editor->convertRectFromScreen(editor->firstRectForCharacterRange(KRRange{0, 0}, nullptr));
        const KRRect lastLine = editor->convertRectFromScreen(
            editor->firstRectForCharacterRange(KRRange{length > 0 ? length - 1 : 0, 0}, nullptr));
        const KRUInteger indexInFirstLine = editor->characterIndexForInsertionAtPoint(
            KRPoint{tracked.origin.x, firstLine.origin.y + firstLine.size.height * 0.5});
        // The nudge of 2 points on the last line only is deliberate.
        const KRUInteger indexInLastLine = editor->characterIndexForInsertionAtPoint(
            KRPoint{tracked.origin.x + 2.0, lastLine.origin.y + lastLine.size.height * 0.5});
        const KRUInteger indexHere = editor->characterIndexForInsertionAtPoint(
            KRPoint{trackedInBounds.origin.x, trackedInBounds.origin.y + trackedInBounds.size.height * 0.5});
        location = inLastLine ? indexInLastLine : (inFirstLine ? indexInFirstLine : indexHere);
    }

    editor->setSelectedRangeAffinityStillSelecting(
        KRRange{location, selectionLength},
        inLastLine ? KRTextView::SelectionAffinityDownstream : KRTextView::SelectionAffinityUpstream, false);

    m_pivotIndex = static_cast<KRInteger>(index);
    m_indexForEditedItem = index;
    checkListViewUpdateStaleDividers();
    checkListViewDidBeginEditingItemAtIndex(this, index);
    m_beginningEditing = false;
}

// Ending an edit writes nothing to the data source: every change of the title has been validated as it
// was typed.
void KRCheckListView::endEditing() {
    const KRUInteger index = m_indexForEditedItem;
    if (index == KRNotFound) {
        return;
    }
    m_endingEditing = true;

    KRCheckListItemView& itemView = *m_checkListItemViews.at(index);
    KRCheckListItemTitleTextField& titleTextField = *itemView.titleTextField();
    if (KRTextFieldCell* cell = titleTextField.cell()) {
        cell->endEditing(titleTextField.currentEditor());
        itemView.clearPlaceholderOfTitleCell();
    }
    titleTextField.setEditable(false);
    if (KRWindow* window = this->window()) {
        window->makeFirstResponder(this);
    }

    checkListViewWillEndEditingItemAtIndex(this, index);
    itemView.setEdited(false);
    m_indexForEditedItem = KRNotFound;
    checkListViewDidEndEditingItemAtIndex(this, index);
    m_endingEditing = false;
}

// Edits the row under the point; the caret goes where the unclamped point is, so a point below the last row
// puts it on that row's last line.
void KRCheckListView::beginEditingAtPoint(KRPoint point) {
    const KRUInteger count = numberOfItems();
    if (count == 0) {
        throw KRGenericException(
            QStringLiteral("Can't begin editing item at point because the check list is empty"));
    }
    const KRPoint pointInRows = checkListViewMovePoint(point, rectOfItemsInRange(KRRange{0, count}));
    const KRPoint pointOnScreen = convertPointToScreen(point);
    const KRUInteger index = indexOfItemAtPoint(pointInRows);
    KR_CHECKLIST_VIEW_ASSERT(index != KRNotFound, "beginEditingAtPoint",
                             "Internal inconsistency, index can't be nil here since the point is definitely "
                             "known to hit at least one item view");
    m_insertionPointRectOnScreen = KRRect{pointOnScreen, KRSizeZero};
    beginEditingItemAtIndexSelectRangeUseTrackedInsertionPointInFirstLineInLastLine(index, KRRange{0, 0},
                                                                                    true, false, false);
}

void KRCheckListView::checkListViewBeginEditingCheckListItemView(KRCheckListItemView* itemView) {
    KR_CHECKLIST_VIEW_ASSERT(itemView, "checkListViewBeginEditingCheckListItemView:",
                             "Can't begin editing check list item view, check list item view is nil");
    const KRUInteger index = checkListViewIndexForItemView(itemView);
    if (index != KRNotFound) {
        beginEditingItemAtIndexSelectRange(index, KRRange{KRUIntegerMax, 0});
    } else {
        beginEditing();
    }
}

// Where the caret is, relative to the whole list
// ------------------------------------------------------------------------------------------------------

bool KRCheckListView::isInsertionPointInFirstLine() const {
    bool inFirstLine = false;
    bool inLastLine = false;
    checkListViewDetermineWetherInsertionPointIsInFirstLineInLastLine(&inFirstLine, &inLastLine);
    return inFirstLine;
}

bool KRCheckListView::isInsertionPointInLastLine() const {
    bool inFirstLine = false;
    bool inLastLine = false;
    checkListViewDetermineWetherInsertionPointIsInFirstLineInLastLine(&inFirstLine, &inLastLine);
    return inLastLine;
}

// The first line of the first item and the last line of the last item: a caret on the first line of any
// other title is in neither.
void KRCheckListView::checkListViewDetermineWetherInsertionPointIsInFirstLineInLastLine(
    bool* inFirstLine, bool* inLastLine) const {
    *inFirstLine = false;
    *inLastLine = false;
    if (m_indexForEditedItem == KRNotFound) {
        return;
    }
    const KRTextView& editor = *m_fieldEditor;
    const KRUInteger location = editor.selectedRange().location;
    const KRUInteger length = editor.length();
    KRRect lastLine = KRRectZero;
    KRRect caretLine = KRRectZero;
    if (length >= 2) {
        lastLine = editor.lineFragmentRectForCharacterAtIndex(length - 1, nullptr);
        caretLine =
            location == length ? lastLine : editor.lineFragmentRectForCharacterAtIndex(location, nullptr);
    }
    *inFirstLine = m_indexForEditedItem == 0 && caretLine.origin.y <= 0.0;
    *inLastLine = m_indexForEditedItem == numberOfItems() - 1 && lastLine.origin.y <= caretLine.origin.y;
}

// Half a line in from the top and the bottom, so clicks in a row's padding land on its first or last line.
KRUInteger
KRCheckListView::checkListViewCharacterIndexForInsertionAtPointInTextView(KRPoint point,
                                                                          const KRTextView* textView) const {
    const double inset = std::floor(KRCheckListDefaults::lineHeight() * 0.5);
    const KRRect bounds = textView->bounds();
    KRRect probeArea = KRRectInset(bounds, 0.0, inset);
    // A view shorter than a line keeps only its middle.
    if (KRRectIsNull(probeArea)) {
        probeArea = KRRect{KRPoint{bounds.origin.x, KRRectGetMidY(bounds)}, KRSize{bounds.size.width, 0.0}};
    }
    return textView->characterIndexForInsertionAtPoint(checkListViewMovePoint(point, probeArea));
}

// The title field finished editing on its own (the focus went elsewhere): the edit ends and the list
// loses the focus, unless the list itself is the cause.
void KRCheckListView::checkListItemViewDidEndEditingTitle(KRCheckListItemView*) {
    if (m_reloading || m_selecting || m_endingEditing || m_becomingFirstResponder) {
        return;
    }
    endEditing();
    checkListViewLoseFocus();
}

bool KRCheckListView::checkListFieldEditorMouseDown(KRCheckListFieldEditor*, const KREvent&) {
    // A click in the editor places the caret itself; the tracked position is forgotten.
    m_insertionPointRectOnScreen = KRRectNull;
    return false;
}

// Placeholder
// ------------------------------------------------------------------------------------------------------

// Only the first row can show a placeholder, its own, and only while its title is empty. Setting it again
// gives it the attributes of the row's current state.
// The effect of visiting every row: a row at index > 0 that shows an empty placeholder in its current look
// would be left as it is, and every other row has reported since the last refresh (the first row, keeping a
// placeholder of its own, is reported again after each refresh, for when it moves down).
void KRCheckListView::checkListViewUpdatePlaceholderForEachItemView() {
    const std::size_t count = m_checkListItemViews.size();
    if (m_placeholderReports.allReported()) {
        m_placeholderReports.clear();
        for (std::size_t index = 0; index < count; ++index) {
            checkListViewUpdatePlaceholderOfItemAtIndex(index);
        }
    } else if (count > 0) {
        KRMutableIndexSet indexes;
        m_placeholderReports.takeIndexes(m_checkListItemViews, indexes);
        indexes.addIndex(0);
        for (const KRUInteger index : indexes) {
            checkListViewUpdatePlaceholderOfItemAtIndex(index);
        }
    }
    if (count > 0 && !m_checkListItemViews.front()->showsCurrentEmptyPlaceholder()) {
        m_placeholderReports.report(m_checkListItemViews.front().get());
    }
}

void KRCheckListView::checkListViewUpdatePlaceholderOfItemAtIndex(KRUInteger index) {
    KRCheckListItemView& itemView = *m_checkListItemViews[index];
    if (index > 0 && itemView.showsCurrentEmptyPlaceholder()) {
        return;
    }
    const bool keepsOwnPlaceholder = index == 0 && itemView.title().isEmpty();
    itemView.setPlaceholder(keepsOwnPlaceholder ? itemView.placeholder() : QStringLiteral(""));
}

void KRCheckListView::checkListItemViewDidStopShowingEmptyPlaceholder(KRCheckListItemView* itemView) {
    m_placeholderReports.report(itemView);
}

// ------------------------------------------------------------------------------------------------------
// Focus
// ------------------------------------------------------------------------------------------------------

// A click never makes the list first responder on its own: a Command-click must still find the edited item
// edited, and a plain click gains the focus itself. The list takes the focus when made first responder.
bool KRCheckListView::acceptsFirstResponder() const {
    return false;
}

bool KRCheckListView::becomeFirstResponder() {
    m_becomingFirstResponder = true;
    if (!m_hasFocus && !m_losingFocus) {
        checkListViewGainFocus();
        if (m_indexesForSelectedItems.isEmpty()) {
            beginEditing();
        }
    }
    m_becomingFirstResponder = false;
    return true;
}

// Ignored while a title field takes first responder for an edit, and during the turn after gaining focus.
bool KRCheckListView::resignFirstResponder() {
    if (m_hasFocus && !m_gainingFocus && !m_beginningEditing) {
        checkListViewLoseFocus();
        endEditing();
    }
    return true;
}

void KRCheckListView::checkListViewGainFocus() {
    KR_CHECKLIST_VIEW_ASSERT(
        !m_hasFocus, "checkListViewGainFocus",
        "Check list view can't gain focus because it already has focus, internal inconsistency");
    checkListViewWillGainFocus(this);
    m_hasFocus = true;
    m_insertionPointRectOnScreen = KRRectNull;
    const KRWeak<KRCheckListView> weakSelf(this);
    KRRunLoop::main().performAfterDelay(0.0, [weakSelf] {
        if (KRCheckListView* checkListView = weakSelf.get()) {
            checkListView->checkListViewDidGainFocus(checkListView);
        }
    });
}

void KRCheckListView::checkListViewLoseFocus() {
    KR_CHECKLIST_VIEW_ASSERT(
        m_hasFocus, "checkListViewLoseFocus",
        "Check list view can't lose focus because it doesn't have focus in the first place, "
        "internal inconsistency");
    checkListViewWillLoseFocus(this);
    m_hasFocus = false;
    deselectAllItems();
    m_insertionPointRectOnScreen = KRRectNull;
    const KRWeak<KRCheckListView> weakSelf(this);
    KRRunLoop::main().performAfterDelay(0.0, [weakSelf] {
        if (KRCheckListView* checkListView = weakSelf.get()) {
            checkListView->checkListViewDidLoseFocus(checkListView);
        }
    });
}
