// KRCheckListView: reloading the rows from the data source, and the update transactions through which the
// data source reports each change it made.
//
// The row array and the identifier dictionary are never seen half changed: while the data source is asked
// about the rows being built, and while the delegate hears about the change, they hold either the old or the
// new rows. The new rows are built first (that is when the data source is asked); the collections are then
// changed in one step that calls out to nobody, so they need not be copied whole for every update.
#include "KRCheckListView.h"
#include "KRCheckListViewAssert.h"

#include "KRCheckListDefaults.h"

#include "Animation/KRAnimationTransaction.h"

#include <algorithm>
#include <iterator>
#include <limits>
#include <stdexcept>
#include <vector>

// Reload
// ------------------------------------------------------------------------------------------------------

void KRCheckListView::reloadItems() {
    checkListViewWillReloadItems(this);
    m_reloading = true;

    // The edit is dropped without endEditing (no end-editing messages); it begins again by index below.
    const KRUInteger editedIndex = m_indexForEditedItem;
    KRRange selectedRange{0, 0};
    if (editedIndex != KRNotFound) {
        selectedRange = m_fieldEditor->selectedRange();
        m_indexForEditedItem = KRNotFound;
    }

    const KRCheckListItemViews oldItemViews = m_checkListItemViews;

    m_dummyCheckListItemView->setTitle(QStringLiteral("Aq"));
    constexpr double largest = std::numeric_limits<double>::max();
    const double minHeight = m_dummyCheckListItemView->sizeThatFits(KRSize{largest, largest}).height;

    // All at once: one by one, each removal would shift every row behind it.
    std::vector<KRView*> oldSubviews;
    oldSubviews.reserve(oldItemViews.size());
    for (const std::shared_ptr<KRCheckListItemView>& itemView : oldItemViews) {
        oldSubviews.push_back(itemView.get());
    }
    removeSubviews(oldSubviews);
    if (!oldItemViews.empty()) {
        setNeedsLayout(true);
    }

    const KRUInteger count = checkListViewNumberOfItems(this);
    KRCheckListItemViews itemViews;
    itemViews.reserve(count);
    for (KRUInteger index = 0; index < count; ++index) {
        itemViews.push_back(checkListViewMakeItemViewForItemAtIndex(index, minHeight));
    }
    // Each row takes its first layout and its place just before it joins the window, at the size the list's
    // pass gives it, while its views are still in the processor's caches: its views then mark nothing for
    // display on the way, and the list marks itself whole once for all of them. Inside an animated block new
    // rows grow in the list's pass instead, as inserted rows do.
    const bool settlesItemViews = !KRAnimationTransaction::currentGroup();
    SettledItemViews settled;
    if (settlesItemViews) {
        constexpr double unknown = std::numeric_limits<double>::quiet_NaN();
        settled.size = bounds().size;
        settled.keptSizes.assign(itemViews.size(), KRSize{unknown, unknown});
        settled.frames.resize(itemViews.size());
    }
    {
        const SubviewDisplayCoverage displayCoverage(this);
        reserveSubviews(subviews().size() + itemViews.size());
        for (std::size_t index = 0; index < itemViews.size(); ++index) {
            if (settlesItemViews) {
                checkListViewSettleReloadedItemView(itemViews, index, settled);
            }
            addSubview(itemViews[index]);
            setNeedsLayout(true);
        }
    }
    m_checkListItemViews = std::move(itemViews);
    // Built from the new rows when someone asks (a later item with an equal identifier takes the entry).
    m_checkListItemViewsByIdentifier = KRCheckListItemViewsByIdentifier();
    m_identifierRegistryIsPending = true;
    if (settlesItemViews) {
        // What the passes below would find out row by row is known already.
        m_keptItemViewSizes = std::move(settled.keptSizes);
        m_keptItemViewSizesWidth = settled.size.width;
        m_sizeReports.clear();
        m_appliedItemViewFrames = std::move(settled.frames);
        m_frameReports.clear();
        m_placeholderReports.clear();
        m_dividerReports.clear();
        m_indexesWithStaleDividers = settled.staleDividers;
    } else {
        checkListViewMarkAllDividersStale();
        checkListViewForgetItemViewStates();
    }

    checkListViewUpdatePlaceholderForEachItemView();
    layoutIfNeeded();
    checkListViewDidReloadItems(this);
    m_reloading = false;

    // The edit follows the index, clamped to the last row.
    if (editedIndex != KRNotFound && count > 0) {
        beginEditingItemAtIndexSelectRange(std::min(count - 1, editedIndex), selectedRange);
    }
}

// Transactions
// ------------------------------------------------------------------------------------------------------

void KRCheckListView::checkListViewSettleReloadedItemView(const KRCheckListItemViews& itemViews,
                                                          std::size_t index, SettledItemViews& settled) {
    const std::size_t count = itemViews.size();
    KRCheckListItemView& itemView = *itemViews[index];
    const KRSize itemSize = itemView.sizeThatFits(settled.size);
    if (itemView.keepsSizeThatFits()) {
        settled.keptSizes[index] = itemSize;
    }
    itemView.setFrameSize(itemSize);
    itemView.layoutIfNeeded();
    // Where the resting layout puts it: rows overlap by one border width.
    itemView.setFrameOrigin(KRPoint{0.0, settled.nextY});
    settled.nextY += itemSize.height - KRCheckListDefaults::borderWidth();
    const KRRect frame = itemView.frame();
    settled.frames[index] = frame;
    // What the placeholder refresh gives every new row, the first one included (its own placeholder is
    // empty).
    itemView.setPlaceholder(QStringLiteral(""));
    // A new row is neither edited, selected, dragged nor highlighted, and neither is the row below it: at
    // rest only the first row has a top divider, and a row draws its bottom one when it has an area or is
    // the last.
    const bool drawsTopDivider = index == 0;
    const bool drawsBottomDivider = index + 1 == count || KRRectIntersectsRect(frame, frame);
    if (itemView.drawsTopDivider() != drawsTopDivider ||
        itemView.drawsBottomDivider() != drawsBottomDivider) {
        settled.staleDividers.addIndex(index);
    }
}

void KRCheckListView::beginUpdates() {
    KR_CHECKLIST_VIEW_ASSERT(!m_updating, "beginUpdates",
                             "Can't begin updates, an update is already in progress");
    m_updating = true;
    checkListViewWillBeginUpdates(this);
}

void KRCheckListView::endUpdates() {
    KR_CHECKLIST_VIEW_ASSERT(m_updating, "endUpdates", "Can't end updates, no upgrade in progress");
    checkListViewUpdatePlaceholderForEachItemView();
    layoutIfNeeded();
    m_updating = false;
    checkListViewDidEndUpdates(this);
}

KRRange KRCheckListView::checkListViewSelectedRangeOfTitleTextField(
    const KRCheckListItemTitleTextField* titleTextField) const {
    if (titleTextField) {
        if (const KRTextView* editor = titleTextField->currentEditor()) {
            return editor->selectedRange();
        }
    }
    return KRRange{0, 0};
}

// Reloading given items
// ------------------------------------------------------------------------------------------------------

void KRCheckListView::updateByReloadingItemsAtIndexes(const KRIndexSet& indexSet) {
    // A copy: the set passed in may be one of the list's own, which the messages below can replace.
    const KRIndexSet indexes = indexSet;
    KR_CHECKLIST_VIEW_ASSERT(m_updating, "updateByReloadingItemsAtIndexes:",
                             "Can't update by reloading items, no update in progress");
    const KRUInteger editedIndex = m_indexForEditedItem;
    const KRIndexSet selectedIndexes = m_indexesForSelectedItems;
    KRRange selectedRange{0, 0};
    if (editedIndex != KRNotFound) {
        selectedRange =
            checkListViewSelectedRangeOfTitleTextField(checkListViewTitleTextFieldForIndex(editedIndex));
    }

    checkListViewWillUpdateByReloadingItemsAtIndexes(this, indexes);

    // The rows are kept; a reloaded item keeps its identifier, so the dictionary stays as it is.
    for (const KRUInteger index : indexes) {
        KRCheckListItemView& itemView = *m_checkListItemViews.at(index);
        const QJsonValue identifier = checkListViewIdentifierForItemAtIndex(this, index);
        const KRUInteger status = checkListViewStatusForItemAtIndex(this, index);
        const QString title = checkListViewTitleForItemAtIndex(this, index);
        itemView.setBackgroundColor(backgroundColor());
        itemView.setItemIdentifier(identifier);
        itemView.setTitle(title);
        itemView.setStatus(status);
        itemView.setDelegate(this);
        setNeedsLayout(true);
    }

    selectItemsAtIndexesByExtendingSelection(selectedIndexes, false);
    checkListViewUpdatePlaceholderForEachItemView();
    if (editedIndex != KRNotFound) {
        beginEditingItemAtIndexSelectRange(editedIndex, selectedRange);
    }

    checkListViewDidUpdateByReloadingItemsAtIndexes(this, indexes);
}

void KRCheckListView::updateByReloadingItemAtIndex(KRUInteger index) {
    updateByReloadingItemsAtIndexes(KRIndexSet(index));
}

// Inserting
// ------------------------------------------------------------------------------------------------------

void KRCheckListView::updateByInsertingItemsAtIndexes(const KRIndexSet& indexSet) {
    // A copy: the set passed in may be one of the list's own, which the messages below can replace.
    const KRIndexSet indexes = indexSet;
    KR_CHECKLIST_VIEW_ASSERT(m_updating, "updateByInsertingItemsAtIndexes:",
                             "Can't update by inserting items, no update in progress");
    checkListViewWillUpdateByInsertingItemsAtIndexes(this, indexes);

    const SavedEdit savedEdit = checkListViewEndEditingSavingTheEdit();

    // Ascending, every index is a final position: all smaller new indexes are in place before it. An index
    // past the end of the array at its turn is the array's range failure, before anything changes.
    KRUInteger insertedBefore = 0;
    for (const KRUInteger index : indexes) {
        if (index > m_checkListItemViews.size() + insertedBefore) {
            throw std::out_of_range("updateByInsertingItemsAtIndexes: index beyond the end of the rows");
        }
        ++insertedBefore;
    }
    KRCheckListItemViews newItemViews;
    newItemViews.reserve(indexes.count());
    for (const KRUInteger index : indexes) {
        newItemViews.push_back(checkListViewMakeItemViewForItemAtIndex(index, std::nullopt));
    }

    // One pass merges the new rows into the old ones at their final indexes.
    KRCheckListItemViews itemViews;
    itemViews.reserve(m_checkListItemViews.size() + newItemViews.size());
    auto oldItemView = m_checkListItemViews.begin();
    auto newItemView = newItemViews.cbegin();
    for (const KRUInteger index : indexes) {
        while (itemViews.size() < index) {
            itemViews.push_back(std::move(*oldItemView++));
        }
        itemViews.push_back(*newItemView++);
    }
    std::move(oldItemView, m_checkListItemViews.end(), std::back_inserter(itemViews));
    m_checkListItemViews = std::move(itemViews);
    checkListViewMarkDividersStaleAfterInsertingItemsAtIndexes(indexes);
    checkListViewKeepItemViewStatesOverInsertedIndexes(indexes);
    checkListViewBuildIdentifierRegistryIfNeeded();
    for (const std::shared_ptr<KRCheckListItemView>& itemView : newItemViews) {
        m_placeholderReports.report(itemView.get());
        addSubview(itemView);
        m_checkListItemViewsByIdentifier.insert(itemView->itemIdentifier(), itemView);
        setNeedsLayout(true);
    }

    checkListViewResumeEditing(savedEdit);
    checkListViewUpdatePlaceholderForEachItemView();

    checkListViewDidUpdateByInsertingItemsAtIndexes(this, indexes);
}

void KRCheckListView::updateByInsertingItemAtIndex(KRUInteger index) {
    updateByInsertingItemsAtIndexes(KRIndexSet(index));
}

// Removing
// ------------------------------------------------------------------------------------------------------

void KRCheckListView::updateByRemovingItemsAtIndexes(const KRIndexSet& indexSet) {
    // A copy: the set passed in may be one of the list's own, which the messages below can replace.
    const KRIndexSet indexes = indexSet;
    KR_CHECKLIST_VIEW_ASSERT(m_updating, "updateByRemovingItemsAtIndexes:",
                             "Can't update by removing items, no update in progress");
    checkListViewWillUpdateByRemovingItemsAtIndexes(this, indexes);

    const SavedEdit savedEdit = checkListViewEndEditingSavingTheEdit();

    // Kept alive until the end of the update.
    KRCheckListItemViews removedItemViews;
    removedItemViews.reserve(indexes.count());
    for (const KRUInteger index : indexes) {
        removedItemViews.push_back(m_checkListItemViews.at(index));
    }
    for (const std::shared_ptr<KRCheckListItemView>& itemView : removedItemViews) {
        itemView->removeFromSuperview();
        setNeedsLayout(true);
    }

    KRCheckListItemViews itemViews;
    itemViews.reserve(m_checkListItemViews.size() - removedItemViews.size());
    KRUInteger nextRemovedIndex = indexes.firstIndex();
    for (std::size_t index = 0; index < m_checkListItemViews.size(); ++index) {
        if (index == nextRemovedIndex) {
            nextRemovedIndex = indexes.indexGreaterThanIndex(index);
            continue;
        }
        itemViews.push_back(std::move(m_checkListItemViews[index]));
    }
    m_checkListItemViews = std::move(itemViews);
    checkListViewMarkDividersStaleAfterRemovingItemsAtIndexes(indexes);
    checkListViewKeepItemViewStatesOverRemovedIndexes(indexes);
    checkListViewBuildIdentifierRegistryIfNeeded();
    for (const std::shared_ptr<KRCheckListItemView>& itemView : removedItemViews) {
        m_checkListItemViewsByIdentifier.remove(itemView->itemIdentifier());
    }

    checkListViewResumeEditing(savedEdit);
    checkListViewUpdatePlaceholderForEachItemView();

    checkListViewDidUpdateByRemovingItemsAtIndexes(this, indexes);
}

void KRCheckListView::updateByRemovingItemAtIndex(KRUInteger index) {
    updateByRemovingItemsAtIndexes(KRIndexSet(index));
}

// Moving
// ------------------------------------------------------------------------------------------------------

void KRCheckListView::updateByMovingItemsAtIndexesToIndex(const KRIndexSet& indexSet, KRUInteger toIndex) {
    // A copy: the set passed in may be one of the list's own, which the messages below can replace.
    const KRIndexSet indexes = indexSet;
    KR_CHECKLIST_VIEW_ASSERT(m_updating, "updateByMovingItemsAtIndexes:toIndex:",
                             "Can't update by moving items, no update in progress");
    checkListViewWillUpdateByMovingItemsAtIndexesToIndex(this, indexes, toIndex);

    const SavedEdit savedEdit = checkListViewEndEditingSavingTheEdit();

    // The moved rows, ascending, so the block keeps its order.
    const std::size_t count = m_checkListItemViews.size();
    KRCheckListItemViews movedItemViews;
    movedItemViews.reserve(indexes.count());
    for (const KRUInteger index : indexes) {
        movedItemViews.push_back(m_checkListItemViews.at(index));
    }
    if (toIndex > count) {
        throw std::out_of_range("updateByMovingItemsAtIndexes:toIndex: toIndex beyond the end of the rows");
    }

    // toIndex counts with the moved rows still in place: the block lands right before the row that stood
    // at toIndex (at the end when toIndex is the row count), and the moved rows leave their old places.
    KRCheckListItemViews itemViews;
    itemViews.reserve(count);
    for (std::size_t index = 0; index <= count; ++index) {
        if (index == toIndex) {
            itemViews.insert(itemViews.end(), movedItemViews.begin(), movedItemViews.end());
        }
        if (index < count && !indexes.containsIndex(index)) {
            itemViews.push_back(std::move(m_checkListItemViews[index]));
        }
    }

    // The selection follows the rows; identifiers don't move, so the dictionary stays.
    KRMutableIndexSet selectedIndexes;
    for (std::size_t index = 0; index < itemViews.size(); ++index) {
        if (itemViews[index]->isSelected()) {
            selectedIndexes.addIndex(index);
        }
    }
    m_checkListItemViews = std::move(itemViews);
    m_indexesForSelectedItems = selectedIndexes;
    checkListViewMarkAllDividersStale();
    checkListViewForgetItemViewStates();

    // Added again, the moved rows come to the front and are drawn above the others while they travel.
    for (const std::shared_ptr<KRCheckListItemView>& itemView : movedItemViews) {
        addSubview(itemView);
        setNeedsLayout(true);
    }

    checkListViewResumeEditing(savedEdit);
    checkListViewUpdatePlaceholderForEachItemView();

    checkListViewDidUpdateByMovingItemsAtIndexesToIndex(this, indexes, toIndex);
}

void KRCheckListView::updateByMovingItemAtIndexToIndex(KRUInteger index, KRUInteger toIndex) {
    updateByMovingItemsAtIndexesToIndex(KRIndexSet(index), toIndex);
}

void KRCheckListView::updateByMovingItemAtIndexToFinalIndex(KRUInteger index, KRUInteger finalIndex) {
    const KRUInteger toIndex = index <= finalIndex ? finalIndex + 1 : finalIndex;
    updateByMovingItemsAtIndexesToIndex(KRIndexSet(index), toIndex);
}

// Saving and resuming an edit across an update
// ------------------------------------------------------------------------------------------------------

KRCheckListView::SavedEdit KRCheckListView::checkListViewEndEditingSavingTheEdit() {
    SavedEdit savedEdit;
    if (m_indexForEditedItem != KRNotFound) {
        savedEdit.titleTextField = m_checkListItemViews.at(m_indexForEditedItem)->titleTextField();
        savedEdit.selectedRange = checkListViewSelectedRangeOfTitleTextField(savedEdit.titleTextField.get());
        endEditing();
    }
    return savedEdit;
}

// The edit follows its item to the item's new index; an item that is gone stays un-edited.
void KRCheckListView::checkListViewResumeEditing(const SavedEdit& savedEdit) {
    if (!savedEdit.titleTextField) {
        return;
    }
    const KRUInteger index = checkListViewIndexForTitleTextField(savedEdit.titleTextField.get());
    if (index != KRNotFound) {
        beginEditingItemAtIndexSelectRange(index, savedEdit.selectedRange);
    }
}
