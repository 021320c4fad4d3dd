// KRCheckListView: the item commands, which act on the edited or selected items through the item
// operations and then put editing where the user expects it, and the menu actions.
#include "KRCheckListView.h"

#include "Platform/KRPasteboard.h"

#include <algorithm>

namespace {

constexpr KRUInteger KRCheckListStatusOpen = 0;
constexpr KRUInteger KRCheckListStatusCompleted = 1;
constexpr KRUInteger KRCheckListStatusCanceled = 2;
// The edit request that puts the caret at the end of a title, whatever its length.
constexpr KRRange KRCheckListCaretAtEnd{KRUIntegerMax, 0};
constexpr KRRange KRCheckListCaretAtStart{0, 0};

} // namespace

// Target indexes
// ------------------------------------------------------------------------------------------------------

// Deliberately the move-up rule: the new item goes above the item before the first edited or selected one.
KRUInteger KRCheckListView::targetIndexForInsertingItemAboveEditedOrSelectedItems() const {
    return targetIndexForMovingEditedOrSelectedItemsUp();
}

KRUInteger KRCheckListView::targetIndexForInsertingItemBelowEditedOrSelectedItems() const {
    const KRUInteger last = indexesForEditedOrSelectedItems().lastIndex();
    return last == KRNotFound ? numberOfItems() : std::min(last + 1, numberOfItems());
}

KRUInteger KRCheckListView::targetIndexForMovingEditedOrSelectedItemsUp() const {
    const KRUInteger first = indexesForEditedOrSelectedItems().firstIndex();
    return first == KRNotFound || first == 0 ? 0 : first - 1;
}

// Counted before the items are taken out, so one past the next item is two past the last one.
KRUInteger KRCheckListView::targetIndexForMovingEditedOrSelectedItemsDown() const {
    const KRUInteger last = indexesForEditedOrSelectedItems().lastIndex();
    return last != KRNotFound && last + 1 < numberOfItems() ? last + 2 : numberOfItems();
}

// Inserting
// ------------------------------------------------------------------------------------------------------

bool KRCheckListView::canInsertItemTop() const {
    return canInsertItemAtIndex(0);
}

void KRCheckListView::insertItemTop() {
    endEditing();
    insertItemAtIndex(0);
    checkListViewBeginEditingItemIfPresent(0, KRCheckListCaretAtEnd);
}

bool KRCheckListView::canInsertItemBottom() const {
    return canInsertItemAtIndex(numberOfItems());
}

void KRCheckListView::insertItemBottom() {
    const KRUInteger index = numberOfItems();
    endEditing();
    insertItemAtIndex(index);
    checkListViewBeginEditingItemIfPresent(index, KRCheckListCaretAtEnd);
}

bool KRCheckListView::canInsertItemAboveEditedOrSelectedItems() const {
    return canInsertItemAtIndex(targetIndexForInsertingItemAboveEditedOrSelectedItems());
}

void KRCheckListView::insertItemAboveEditedOrSelectedItems() {
    const KRUInteger index = targetIndexForInsertingItemAboveEditedOrSelectedItems();
    endEditing();
    insertItemAtIndex(index);
    checkListViewBeginEditingItemIfPresent(index, KRCheckListCaretAtEnd);
}

bool KRCheckListView::canInsertItemBelowEditedOrSelectedItems() const {
    return canInsertItemAtIndex(targetIndexForInsertingItemBelowEditedOrSelectedItems());
}

void KRCheckListView::insertItemBelowEditedOrSelectedItems() {
    const KRUInteger index = targetIndexForInsertingItemBelowEditedOrSelectedItems();
    endEditing();
    insertItemAtIndex(index);
    checkListViewBeginEditingItemIfPresent(index, KRCheckListCaretAtEnd);
}

// Moving: the moving update keeps an edited item edited, with its caret, at its new place
// ------------------------------------------------------------------------------------------------------

bool KRCheckListView::canMoveEditedOrSelectedItemsTop() const {
    return canMoveItemsAtIndexesToIndex(indexesForEditedOrSelectedItems(), 0);
}

void KRCheckListView::moveEditedOrSelectedItemsTop() {
    moveItemsAtIndexesToIndex(indexesForEditedOrSelectedItems(), 0);
}

bool KRCheckListView::canMoveEditedOrSelectedItemsBottom() const {
    return canMoveItemsAtIndexesToIndex(indexesForEditedOrSelectedItems(), numberOfItems());
}

void KRCheckListView::moveEditedOrSelectedItemsBottom() {
    moveItemsAtIndexesToIndex(indexesForEditedOrSelectedItems(), numberOfItems());
}

bool KRCheckListView::canMoveEditedOrSelectedItemsUp() const {
    return canMoveItemsAtIndexesToIndex(indexesForEditedOrSelectedItems(),
                                        targetIndexForMovingEditedOrSelectedItemsUp());
}

void KRCheckListView::moveEditedOrSelectedItemsUp() {
    moveItemsAtIndexesToIndex(indexesForEditedOrSelectedItems(),
                              targetIndexForMovingEditedOrSelectedItemsUp());
}

bool KRCheckListView::canMoveEditedOrSelectedItemsDown() const {
    return canMoveItemsAtIndexesToIndex(indexesForEditedOrSelectedItems(),
                                        targetIndexForMovingEditedOrSelectedItemsDown());
}

void KRCheckListView::moveEditedOrSelectedItemsDown() {
    moveItemsAtIndexesToIndex(indexesForEditedOrSelectedItems(),
                              targetIndexForMovingEditedOrSelectedItemsDown());
}

// Deleting
// ------------------------------------------------------------------------------------------------------

bool KRCheckListView::canDeleteEditedOrSelectedItemsBackward() const {
    return canRemoveItemsAtIndexes(indexesForEditedOrSelectedItems());
}

// Editing goes on at the end of the item above the deleted block, or at the start of the new first item.
void KRCheckListView::deleteEditedOrSelectedItemsBackward() {
    const KRIndexSet indexes = indexesForEditedOrSelectedItems();
    endEditing();
    removeItemsAtIndexes(indexes);
    const KRUInteger count = numberOfItems();
    const KRUInteger first = indexes.firstIndex();
    if (first != KRNotFound && first != 0) {
        checkListViewBeginEditingItemIfPresent(first - 1, KRCheckListCaretAtEnd);
    } else if (count > 0) {
        beginEditingItemAtIndexSelectRange(0, KRCheckListCaretAtStart);
    }
    checkListViewDeselectUnlessEditing();
}

bool KRCheckListView::canDeleteEditedOrSelectedItemsForward() const {
    return canRemoveItemsAtIndexes(indexesForEditedOrSelectedItems());
}

// Editing goes on at the start of the item that followed the deleted block, or at the end of the last item.
void KRCheckListView::deleteEditedOrSelectedItemsForward() {
    const KRIndexSet indexes = indexesForEditedOrSelectedItems();
    endEditing();
    removeItemsAtIndexes(indexes);
    const KRUInteger count = numberOfItems();
    const KRUInteger first = indexes.isEmpty() ? count : indexes.firstIndex();
    if (first < count) {
        beginEditingItemAtIndexSelectRange(first, KRCheckListCaretAtStart);
    }
    if (count > 0 && first >= count) {
        beginEditingItemAtIndexSelectRange(count - 1, KRCheckListCaretAtEnd);
    }
    checkListViewDeselectUnlessEditing();
}

bool KRCheckListView::checkListViewBeginEditingItemIfPresent(KRUInteger index, KRRange range) {
    if (index >= numberOfItems()) {
        return false;
    }
    beginEditingItemAtIndexSelectRange(index, range);
    return true;
}

// Deleting every item, or a data source that removed more than asked, leaves no row to edit; a selection
// the client did not set again would otherwise keep pointing past the rows.
void KRCheckListView::checkListViewDeselectUnlessEditing() {
    if (m_indexForEditedItem == KRNotFound && !m_indexesForSelectedItems.isEmpty()) {
        deselectAllItems();
    }
}

// Toggling
// ------------------------------------------------------------------------------------------------------

bool KRCheckListView::checkListViewAllItemsAtIndexesHaveStatus(const KRIndexSet& indexes, KRUInteger status) {
    for (KRUInteger index : indexes) {
        if (statusForItemAtIndex(index) != status) {
            return false;
        }
    }
    return true;
}

bool KRCheckListView::canToggleEditedOrSelectedItemsCompleted() const {
    return !indexesForEditedOrSelectedItems().isEmpty();
}

void KRCheckListView::toggleEditedOrSelectedItemsCompleted() {
    const KRIndexSet indexes = indexesForEditedOrSelectedItems();
    const KRUInteger status = checkListViewAllItemsAtIndexesHaveStatus(indexes, KRCheckListStatusCompleted)
                                  ? KRCheckListStatusOpen
                                  : KRCheckListStatusCompleted;
    setStatusForItemsAtIndexes(status, indexes);
}

bool KRCheckListView::canToggleEditedOrSelectedItemsCanceled() const {
    return !indexesForEditedOrSelectedItems().isEmpty();
}

void KRCheckListView::toggleEditedOrSelectedItemsCanceled() {
    const KRIndexSet indexes = indexesForEditedOrSelectedItems();
    const KRUInteger status = checkListViewAllItemsAtIndexesHaveStatus(indexes, KRCheckListStatusCanceled)
                                  ? KRCheckListStatusOpen
                                  : KRCheckListStatusCanceled;
    setStatusForItemsAtIndexes(status, indexes);
}

// Menu actions
// ------------------------------------------------------------------------------------------------------

namespace {

const KRSelector& cutAction() {
    static const KRSelector selector("cut:");
    return selector;
}
const KRSelector& copyAction() {
    static const KRSelector selector("copy:");
    return selector;
}
const KRSelector& pasteAction() {
    static const KRSelector selector("paste:");
    return selector;
}
const KRSelector& deleteAction() {
    static const KRSelector selector("delete:");
    return selector;
}
const KRSelector& selectAllAction() {
    static const KRSelector selector("selectAll:");
    return selector;
}

} // namespace

// Cut, copy and delete look at the selection only: an item that is merely edited is not theirs.
bool KRCheckListView::canCut() const {
    return !checkListViewIndexesForSelectedItemsInRows().isEmpty();
}

bool KRCheckListView::canCopy() const {
    return !checkListViewIndexesForSelectedItemsInRows().isEmpty();
}

bool KRCheckListView::canPaste() const {
    const std::shared_ptr<KRPasteboard> pasteboard = KRPasteboard::generalPasteboard();
    return pasteboard &&
           !pasteboard->availableTypeFromArray({KRCheckListItemsAsJSONPasteboardType, KRPasteboardTypeString})
                .isEmpty();
}

bool KRCheckListView::canDelete() const {
    return !checkListViewIndexesForSelectedItemsInRows().isEmpty();
}

void KRCheckListView::delete_() {
    deleteEditedOrSelectedItemsForward();
}

bool KRCheckListView::canSelectAll() const {
    return true;
}

void KRCheckListView::selectAll() {
    selectAllItems();
}

bool KRCheckListView::validateMenuItem(const KRSelector& action) const {
    if (action == cutAction()) {
        return canCut();
    }
    if (action == copyAction()) {
        return canCopy();
    }
    if (action == pasteAction()) {
        return canPaste();
    }
    if (action == deleteAction()) {
        return canDelete();
    }
    if (action == selectAllAction()) {
        return canSelectAll();
    }
    return false;
}

bool KRCheckListView::respondsToSelector(const KRSelector& selector) const {
    return selector == cutAction() || selector == copyAction() || selector == pasteAction() ||
           selector == deleteAction() || selector == selectAllAction() ||
           KRView::respondsToSelector(selector);
}

bool KRCheckListView::tryToPerform(const KRSelector& action, KRObject* sender) {
    if (action == cutAction()) {
        cut();
    } else if (action == copyAction()) {
        copy();
    } else if (action == pasteAction()) {
        paste();
    } else if (action == deleteAction()) {
        delete_();
    } else if (action == selectAllAction()) {
        selectAll();
    } else {
        return KRView::tryToPerform(action, sender);
    }
    return true;
}
