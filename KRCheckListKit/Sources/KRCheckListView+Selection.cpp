// KRCheckListView: the selection: its one primitive and the wrappers built on it. Mouse clicks
// come later.
#include "KRCheckListView.h"

#include "Views/KRWindow.h"

KRIndexSet KRCheckListView::indexesForEditedOrSelectedItems() const {
    if (m_indexForEditedItem == KRNotFound) {
        return m_indexesForSelectedItems;
    }
    return m_indexesForSelectedItems.indexSetByAddingIndex(m_indexForEditedItem);
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
        KRCheckListItemView& itemView = *m_checkListItemViews[index];
        if (itemView.isSelected() != selected) {
            itemView.setSelected(selected);
        }
    }

    m_indexesForSelectedItems = selectedIndexes;
    checkListViewUpdateDividers();
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
