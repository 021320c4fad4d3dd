// KRCheckListView: the item operations. Each one only announces the change to the delegate and
// asks the data source to make it; the rows change when the data source reports back with an update
// transaction (KRCheckListView+Updates.cpp).
#include "KRCheckListView.h"

// Checks
// ------------------------------------------------------------------------------------------------------

// An empty set has no last index (KRNotFound) and is refused; the position just past the last row is fine.
bool KRCheckListView::canInsertItemsAtIndexes(const KRIndexSet& indexes) const {
    return indexes.lastIndex() <= numberOfItems();
}

bool KRCheckListView::canInsertItemAtIndex(KRUInteger index) const {
    return canInsertItemsAtIndexes(KRIndexSet(index));
}

// The list itself limits neither removals nor moves.
bool KRCheckListView::canRemoveItemsAtIndexes(const KRIndexSet&) const {
    return true;
}

bool KRCheckListView::canRemoveItemAtIndex(KRUInteger index) const {
    return canRemoveItemsAtIndexes(KRIndexSet(index));
}

bool KRCheckListView::canMoveItemsAtIndexesToIndex(const KRIndexSet&, KRUInteger) const {
    return true;
}

bool KRCheckListView::canMoveItemAtIndexToIndex(KRUInteger index, KRUInteger toIndex) const {
    return canMoveItemsAtIndexesToIndex(KRIndexSet(index), toIndex);
}

// Insert, remove, move: will, ask the data source, did
// ------------------------------------------------------------------------------------------------------

void KRCheckListView::insertItemsAtIndexes(const KRIndexSet& indexSet) {
    // A copy: the set passed in may be one of the list's own, which the messages below can replace.
    const KRIndexSet indexes = indexSet;
    checkListViewWillInsertItemsAtIndexes(this, indexes);
    checkListViewInsertItemsAtIndexes(this, indexes);
    checkListViewDidInsertItemsAtIndexes(this, indexes);
}

void KRCheckListView::insertItemAtIndex(KRUInteger index) {
    insertItemsAtIndexes(KRIndexSet(index));
}

void KRCheckListView::removeItemsAtIndexes(const KRIndexSet& indexSet) {
    // A copy: the set passed in may be one of the list's own, which the messages below can replace.
    const KRIndexSet indexes = indexSet;
    checkListViewWillRemoveItemsAtIndexes(this, indexes);
    checkListViewRemoveItemsAtIndexes(this, indexes);
    checkListViewDidRemoveItemsAtIndexes(this, indexes);
}

void KRCheckListView::removeItemAtIndex(KRUInteger index) {
    removeItemsAtIndexes(KRIndexSet(index));
}

void KRCheckListView::moveItemsAtIndexesToIndex(const KRIndexSet& indexSet, KRUInteger toIndex) {
    // A copy: the set passed in may be one of the list's own, which the messages below can replace.
    const KRIndexSet indexes = indexSet;
    checkListViewWillMoveItemsAtIndexesToIndex(this, indexes, toIndex);
    checkListViewMoveItemsAtIndexesToIndex(this, indexes, toIndex);
    checkListViewDidMoveItemsAtIndexesToIndex(this, indexes, toIndex);
}

void KRCheckListView::moveItemAtIndexToIndex(KRUInteger index, KRUInteger toIndex) {
    moveItemsAtIndexesToIndex(KRIndexSet(index), toIndex);
}

// Status and title: the deprecated data-source setters carry the value; the rows change with the next
// reload update the data source sends.
// ------------------------------------------------------------------------------------------------------

void KRCheckListView::setStatusForItemsAtIndexes(KRUInteger status, const KRIndexSet& indexSet) {
    // A copy: the set passed in may be one of the list's own, which the messages below can replace.
    const KRIndexSet indexes = indexSet;
    for (const KRUInteger index : indexes) {
        checkListViewWillSetStatusForItemAtIndex(this, index);
        checkListViewSetStatusForItemAtIndex(this, status, index);
        checkListViewDidSetStatusForItemAtIndex(this, index);
    }
}

void KRCheckListView::setStatusForItemAtIndex(KRUInteger status, KRUInteger index) {
    setStatusForItemsAtIndexes(status, KRIndexSet(index));
}

void KRCheckListView::setTitleForItemAtIndex(const QString& title, KRUInteger index) {
    checkListViewWillSetTitleForItemAtIndex(this, index);
    checkListViewSetTitleForItemAtIndex(this, title, index);
    checkListViewDidSetTitleForItemAtIndex(this, index);
}
