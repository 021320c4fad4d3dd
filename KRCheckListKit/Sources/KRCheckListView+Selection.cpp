// KRCheckListView: the selection, its one primitive and the wrappers built on it, and mouse clicks.
#include "KRCheckListView.h"

#include "Views/KRCursor.h"
#include "Views/KRWindow.h"

#include <algorithm>

KRIndexSet KRCheckListView::indexesForEditedOrSelectedItems() const {
    const KRIndexSet selectedIndexes = checkListViewIndexesForSelectedItemsInRows();
    if (m_indexForEditedItem == KRNotFound) {
        return selectedIndexes;
    }
    return selectedIndexes.indexSetByAddingIndex(m_indexForEditedItem);
}

// A client that removed selected items and has not set the selection again leaves numbers past the rows.
KRIndexSet KRCheckListView::checkListViewIndexesForSelectedItemsInRows() const {
    const KRUInteger last = m_indexesForSelectedItems.lastIndex();
    if (last == KRNotFound || last < numberOfItems()) {
        return m_indexesForSelectedItems;
    }
    return m_indexesForSelectedItems.indexSetByIntersectingIndexes(KRIndexSet(KRRange{0, numberOfItems()}));
}

// Selecting ends a running edit (the two exclude each other), visits every row and leaves the pivot alone.
void KRCheckListView::selectItemsAtIndexesByExtendingSelection(const KRIndexSet& indexSet,
                                                               bool extendSelection) {
    // A copy: the set passed in may be the list's own selection, which this replaces.
    const KRIndexSet indexes = indexSet;
    m_selecting = true;
    if (m_indexForEditedItem != KRNotFound) {
        endEditing();
    }
    const KRIndexSet selectedIndexes =
        extendSelection ? m_indexesForSelectedItems.indexSetByAddingIndexes(indexes) : indexes;
    checkListViewWillSelectItemsAtIndexes(this, selectedIndexes);

    // One walk over the selected ranges alongside the rows instead of a look-up per row.
    const std::vector<KRRange>& ranges = selectedIndexes.ranges();
    auto range = ranges.cbegin();
    const KRUInteger count = m_checkListItemViews.size();
    for (KRUInteger index = 0; index < count; ++index) {
        while (range != ranges.cend() && KRMaxRange(*range) <= index) {
            ++range;
        }
        const bool selected = range != ranges.cend() && KRLocationInRange(index, *range);
        // Every row is told, also those whose flag stays as it is.
        m_checkListItemViews[index]->setSelected(selected);
    }

    m_indexesForSelectedItems = selectedIndexes;
    checkListViewUpdateStaleDividers();
    if (KRWindow* window = this->window()) {
        window->makeFirstResponder(this);
    }
    checkListViewDidSelectItemsAtIndexes(this, selectedIndexes);
    m_selecting = false;
}

void KRCheckListView::selectItemAtIndexByExtendingSelection(KRUInteger index, bool extendSelection) {
    selectItemsAtIndexesByExtendingSelection(KRIndexSet(index), extendSelection);
}

void KRCheckListView::deselectItemsAtIndexes(const KRIndexSet& indexes) {
    selectItemsAtIndexesByExtendingSelection(m_indexesForSelectedItems.indexSetByRemovingIndexes(indexes),
                                             false);
}

void KRCheckListView::deselectItemAtIndex(KRUInteger index) {
    deselectItemsAtIndexes(KRIndexSet(index));
}

void KRCheckListView::selectAllItems() {
    selectItemsAtIndexesByExtendingSelection(KRIndexSet(KRRange{0, numberOfItems()}), false);
}

void KRCheckListView::deselectAllItems() {
    selectItemsAtIndexesByExtendingSelection(KRIndexSet(), false);
}

// Clicks
// ------------------------------------------------------------------------------------------------------

void KRCheckListView::mouseDown(const KREvent& event) {
    if (checkListViewHandleMouseClick(event)) {
        return;
    }
    if (KRResponder* next = nextResponder()) {
        next->mouseDown(event);
    }
}

// Option and Control play no part in a click; Command wins over Shift.
bool KRCheckListView::checkListViewHandleMouseClick(const KREvent& event) {
    const KREventModifierFlags modifierFlags = KREvent::currentModifierFlags();
    const KRPoint point = convertPointFromView(event.locationInWindow(), nullptr);
    if (numberOfItems() == 0) {
        return false;
    }
    const auto row = std::find_if(m_checkListItemViews.cbegin(), m_checkListItemViews.cend(),
                                  [point](const std::shared_ptr<KRCheckListItemView>& itemView) {
                                      return KRRectContainsPoint(itemView->frame(), point);
                                  });
    if (row == m_checkListItemViews.cend()) {
        return false;
    }
    const KRUInteger index = static_cast<KRUInteger>(row - m_checkListItemViews.cbegin());
    if (modifierFlags & KREventModifierFlagCommand) {
        return checkListViewHandleMouseClickWithCommandKeyPressedForItemAtIndex(event, index);
    }
    if (modifierFlags & KREventModifierFlagShift) {
        return checkListViewHandleMouseClickWithShiftKeyPressedForItemAtIndex(event, index);
    }
    return checkListViewHandleMouseClickForItemAtIndex(event, index);
}

// Edits the clicked title and hands the press to the field editor, which follows it to the release; the
// caret is then put at the clicked character unless the mouse moved and made a selection.
bool KRCheckListView::checkListViewHandleMouseClickForItemAtIndex(const KREvent& event, KRUInteger index) {
    if (!m_hasFocus) {
        checkListViewGainFocus();
    }
    // Double and triple clicks that reach the list are swallowed.
    if (event.clickCount() != 1) {
        return true;
    }
    beginEditingItemAtIndexSelectRange(index, KRRange{0, 0});
    m_fieldEditor->mouseDown(event);
    KRWindow* window = this->window();
    if (window && window->trackCurrentPressWithView(this)) {
        m_clickPressInFieldEditor = event;
    } else {
        checkListViewPlaceCaretAfterClick(event);
    }
    return true;
}

void KRCheckListView::mouseDragged(const KREvent& event) {
    if (m_clickPressInFieldEditor) {
        m_fieldEditor->mouseDragged(event);
        return;
    }
    KRView::mouseDragged(event);
}

void KRCheckListView::mouseUp(const KREvent& event) {
    if (!m_clickPressInFieldEditor) {
        KRView::mouseUp(event);
        return;
    }
    const KREvent press = *m_clickPressInFieldEditor;
    m_clickPressInFieldEditor.reset();
    m_fieldEditor->mouseUp(event);
    checkListViewPlaceCaretAfterClick(press);
}

void KRCheckListView::checkListViewPlaceCaretAfterClick(const KREvent& press) {
    KRTextView& editor = *m_fieldEditor;
    // The edit may have ended while the press lasted.
    if (!editor.window()) {
        return;
    }
    const KRPoint mouseOnScreen = KREvent::mouseLocation();
    const KRPoint mouseInEditor = editor.convertPointFromScreen(mouseOnScreen);
    const KRPoint pressInEditor = press.locationInView(&editor);
    const KRRect editorOnScreen = editor.convertRectToScreen(editor.bounds());
    const KRUInteger index = checkListViewCharacterIndexForInsertionAtPointInTextView(mouseInEditor, &editor);
    if (!KRPointEqualToPointWithinDelta(mouseInEditor, pressInEditor, 0.0)) {
        return;
    }
    const bool leftOfMiddle = editorOnScreen.origin.x + editorOnScreen.size.width * 0.5 > mouseOnScreen.x;
    editor.setSelectedRangeAffinityStillSelecting(KRRange{index, 0},
                                                  leftOfMiddle ? KRTextView::SelectionAffinityDownstream
                                                               : KRTextView::SelectionAffinityUpstream,
                                                  false);
}

// The range between the pivot and the clicked row; an out-of-range pivot selects nothing.
bool KRCheckListView::checkListViewHandleMouseClickWithShiftKeyPressedForItemAtIndex(const KREvent&,
                                                                                     KRUInteger index) {
    KRMutableIndexSet indexes;
    const KRUInteger pivot = static_cast<KRUInteger>(m_pivotIndex);
    if (pivot != KRNotFound && pivot < numberOfItems()) {
        indexes.addIndex(pivot);
        if (pivot > index) {
            indexes.addIndexesInRange(KRRange{index, pivot - index});
        } else if (pivot < index) {
            indexes.addIndexesInRange(KRRange{pivot, index - pivot + 1});
        }
    }
    selectItemsAtIndexesByExtendingSelection(indexes, false);
    return true;
}

// Toggles the clicked row; an edited row joins the selection, and a newly added row becomes the pivot.
bool KRCheckListView::checkListViewHandleMouseClickWithCommandKeyPressedForItemAtIndex(const KREvent&,
                                                                                       KRUInteger index) {
    const bool wasSelected = m_indexesForSelectedItems.containsIndex(index);
    KRIndexSet indexes = indexesForEditedOrSelectedItems();
    if (!wasSelected) {
        m_pivotIndex = static_cast<KRInteger>(index);
        indexes = indexes.indexSetByAddingIndex(index);
    } else {
        indexes = indexes.indexSetByRemovingIndex(index);
    }
    selectItemsAtIndexesByExtendingSelection(indexes, false);
    return true;
}

KRPoint KRCheckListView::checkListViewMouseLocationInView(const KRView* view) const {
    KRWindow* window = view ? view->window() : nullptr;
    const KRPoint inWindow =
        window ? window->convertRectFromScreen(KRRect{KREvent::mouseLocation(), KRSizeZero}).origin
               : KRPointZero;
    return view ? view->convertPointFromView(inWindow, nullptr) : inWindow;
}

// Command-clicks on a title belong to the list, not to the title field.
KRView* KRCheckListView::hitTest(KRPoint point) {
    KRView* hit = KRView::hitTest(point);
    if (hit && (KREvent::currentModifierFlags() & KREventModifierFlagCommand)) {
        return this;
    }
    return hit;
}

void KRCheckListView::mouseMoved(const KREvent&) {
    if (KREvent::currentModifierFlags() & KREventModifierFlagCommand) {
        KRCursor::arrowCursor().set();
    } else {
        KRCursor::IBeamCursor().set();
    }
}

void KRCheckListView::flagsChanged(const KREvent& event) {
    if (KREvent::currentModifierFlags() & KREventModifierFlagCommand) {
        KRCursor::arrowCursor().set();
    }
    KRView::flagsChanged(event);
}
