// KRCheckListView: the resting layout record, the layout pass that applies it, the list's fitting size,
// the geometry queries and the divider rules.
//
// Work per row is kept to what a pass needs: a row answers its fitting size from its title field's cached
// measurements, frames and divider flags are only set when they change, and nothing looks a row up by view.
#include "KRCheckListView.h"

#include "KRCheckListDefaults.h"
#include "KRCheckListDraggingSession.h"
#include "KRCheckListDropPlaceholderContentView.h"

#include "Views/KREvent.h"
#include "Views/KRWindow.h"

#include <algorithm>
#include <cmath>
#include <limits>

namespace {
// How many rows ahead a pass over all rows asks for their state: enough to cover a load from memory.
constexpr std::size_t kListPassPrefetchDistance = 8;
} // namespace

// Layout record
// ------------------------------------------------------------------------------------------------------

const QStringList& KRCheckListViewLayout::keys() {
    static const QStringList keys{
        QStringLiteral("size"),
        QStringLiteral("itemViewFrames"),
        QStringLiteral("dropPlaceholderContentViewFrame"),
        QStringLiteral("dropPlaceholderIndex"),
        QStringLiteral("dropPlaceholderFrame"),
        QStringLiteral("sizeThatFits"),
    };
    return keys;
}

QVariantMap KRCheckListViewLayout::dictionary() const {
    QVariantList frames;
    frames.reserve(static_cast<qsizetype>(itemViewFrames.size()));
    for (const KRRect& frame : itemViewFrames) {
        frames.append(QVariant::fromValue(frame));
    }
    const QVariantList values{
        QVariant::fromValue(size),
        frames,
        QVariant::fromValue(dropPlaceholderContentViewFrame),
        QVariant::fromValue(static_cast<qulonglong>(dropPlaceholderIndex)),
        QVariant::fromValue(dropPlaceholderFrame),
        QVariant::fromValue(sizeThatFits),
    };
    QVariantMap dictionary;
    for (qsizetype i = 0; i < values.size(); ++i) {
        dictionary.insert(keys().at(i), values.at(i));
    }
    return dictionary;
}

// Resting layout
// ------------------------------------------------------------------------------------------------------

// Rows stack from the top; consecutive rows overlap by one border width so that their borders share a line.
// A row's frame takes the row's own width.
KRCheckListViewLayout KRCheckListView::checkListViewLayoutForSize(KRSize size) const {
    const double borderWidth = KRCheckListDefaults::borderWidth();
    checkListViewTakeReportedSizes(size.width);
    KRCheckListViewLayout layout;
    layout.size = size;
    const std::size_t count = m_checkListItemViews.size();
    layout.itemViewFrames.resize(count);
    KRRect* const frames = layout.itemViewFrames.data();
    const KRSize* const kept = m_keptItemViewSizes.data();
    double y = 0.0;
    for (std::size_t index = 0; index < count; ++index) {
        // Most rows have a kept size; only the others are asked.
        const KRSize itemSize = std::isnan(kept[index].height)
                                    ? checkListViewSizeThatFitsOfItemAtIndex(index, size)
                                    : kept[index];
        frames[index] = KRRect{KRPoint{0.0, y}, itemSize};
        y += itemSize.height - borderWidth;
    }
    // An empty list wants no height at all, not even a border.
    const double stackedHeight = m_checkListItemViews.empty() ? 0.0 : y + borderWidth;
    layout.dropPlaceholderContentViewFrame = KRRect{KRPointZero, size};
    layout.dropPlaceholderIndex = KRNotFound;
    layout.dropPlaceholderFrame = KRRectZero;
    layout.sizeThatFits = KRSize{size.width, stackedHeight};
    return layout;
}

// Kept states by index
// ------------------------------------------------------------------------------------------------------
// A layout pass over a long list reads what it keeps here, and only the rows that reported a change or
// have nothing kept: a row is a few cache lines far from the last one, these are next to each other.

namespace {

constexpr double kUnknown = std::numeric_limits<double>::quiet_NaN();
constexpr KRSize kUnknownSize{kUnknown, kUnknown};
constexpr KRRect kUnknownFrame{KRPoint{kUnknown, kUnknown}, KRSize{kUnknown, kUnknown}};

// Ascending, every inserted index is a final position. Kept values that do not line up with the rows are
// all forgotten.
template <class Value>
void keepOverInsertedIndexes(std::vector<Value>& kept, KRCheckListItemViewReports& reports,
                             const KRIndexSet& indexes, const Value& unknown) {
    if (reports.allReported()) {
        return;
    }
    std::vector<Value> merged;
    merged.reserve(kept.size() + indexes.count());
    auto next = kept.cbegin();
    for (const KRUInteger index : indexes) {
        if (index > merged.size() + static_cast<std::size_t>(kept.cend() - next)) {
            reports.reportAll();
            return;
        }
        while (merged.size() < index) {
            merged.push_back(*next++);
        }
        merged.push_back(unknown);
    }
    merged.insert(merged.end(), next, kept.cend());
    kept = std::move(merged);
}

template <class Value>
void keepOverRemovedIndexes(std::vector<Value>& kept, KRCheckListItemViewReports& reports,
                            const KRIndexSet& indexes) {
    if (reports.allReported() || indexes.isEmpty() || indexes.lastIndex() >= kept.size()) {
        reports.reportAll();
        return;
    }
    KRUInteger nextRemovedIndex = indexes.firstIndex();
    std::size_t keptCount = 0;
    for (std::size_t index = 0; index < kept.size(); ++index) {
        if (index == nextRemovedIndex) {
            nextRemovedIndex = indexes.indexGreaterThanIndex(index);
            continue;
        }
        kept[keptCount++] = kept[index];
    }
    kept.resize(keptCount);
}

} // namespace

void KRCheckListView::checkListViewKeepItemViewStatesOverInsertedIndexes(const KRIndexSet& indexes) {
    keepOverInsertedIndexes(m_keptItemViewSizes, m_sizeReports, indexes, kUnknownSize);
    keepOverInsertedIndexes(m_appliedItemViewFrames, m_frameReports, indexes, kUnknownFrame);
}

void KRCheckListView::checkListViewKeepItemViewStatesOverRemovedIndexes(const KRIndexSet& indexes) {
    keepOverRemovedIndexes(m_keptItemViewSizes, m_sizeReports, indexes);
    keepOverRemovedIndexes(m_appliedItemViewFrames, m_frameReports, indexes);
}

void KRCheckListView::checkListViewForgetItemViewStates() {
    m_placeholderReports.reportAll();
    m_sizeReports.reportAll();
    m_frameReports.reportAll();
}

void KRCheckListView::checkListViewTakeReportedSizes(double width) const {
    const std::size_t count = m_checkListItemViews.size();
    if (m_sizeReports.allReported() || width != m_keptItemViewSizesWidth ||
        m_keptItemViewSizes.size() != count) {
        m_keptItemViewSizes.assign(count, kUnknownSize);
        m_keptItemViewSizesWidth = width;
        m_sizeReports.clear();
        return;
    }
    KRMutableIndexSet indexes;
    m_sizeReports.takeIndexes(m_checkListItemViews, indexes);
    for (const KRUInteger index : indexes) {
        m_keptItemViewSizes[index] = kUnknownSize;
    }
}

KRSize KRCheckListView::checkListViewSizeThatFitsOfItemAtIndex(KRUInteger index, KRSize size) const {
    KRSize& kept = m_keptItemViewSizes[index];
    if (!std::isnan(kept.height)) {
        return kept;
    }
    const KRCheckListItemView& itemView = *m_checkListItemViews[index];
    const KRSize itemSize = itemView.sizeThatFits(size);
    if (itemView.keepsSizeThatFits()) {
        kept = itemSize;
    }
    return itemSize;
}

void KRCheckListView::checkListItemViewDidInvalidateSizeThatFits(KRCheckListItemView* itemView) {
    m_sizeReports.report(itemView);
}

void KRCheckListView::checkListItemViewDidChangeFrame(KRCheckListItemView* itemView) {
    if (itemView != m_itemViewBeingPlaced) {
        m_frameReports.report(itemView);
    }
}

// Layout pass
// ------------------------------------------------------------------------------------------------------

void KRCheckListView::layoutSubviews() {
    KRView::layoutSubviews();
    const KRRect bounds = this->bounds();
    const KRWindow* window = this->window();
    const KREvent* currentEvent = window ? window->currentEvent() : nullptr;
    const bool isLeftMouseDragged = currentEvent && currentEvent->type() == KREventType::LeftMouseDragged;

    // While a drag runs the dragging layout takes the resting layout's place; both produce the same record.
    const KRCheckListViewLayout layout = m_dragging ? checkListViewDraggingLayoutForSize(bounds.size)
                                                    : checkListViewLayoutForSize(bounds.size);

    checkListViewApplyItemViewFrames(layout.itemViewFrames, isLeftMouseDragged);
    m_dropPlaceholderContentView->setFrame(layout.dropPlaceholderContentViewFrame);
    m_dropPlaceholderIndex = layout.dropPlaceholderIndex;
    m_dropPlaceholderFrame = layout.dropPlaceholderFrame;

    // The delegate hears of a new size before it is stored, so it still reads the old one meanwhile.
    if (layout.sizeThatFits.width != m_lastSizeThatFits.width ||
        layout.sizeThatFits.height != m_lastSizeThatFits.height) {
        checkListViewDidChangeSizeThatFits(this);
        m_lastSizeThatFits = layout.sizeThatFits;
    }
    checkListViewUpdateStaleDividers();
}

// A row is read only when its frame may differ from the one it is to get: it has none kept, it reported a
// frame given by someone else, or its new frame differs from the kept one.
void KRCheckListView::checkListViewApplyItemViewFrames(const std::vector<KRRect>& frames,
                                                       bool placesDraggedRowsAtOnce) {
    const std::size_t count = m_checkListItemViews.size();
    if (m_frameReports.allReported() || m_appliedItemViewFrames.size() != count) {
        m_appliedItemViewFrames.assign(count, kUnknownFrame);
        m_frameReports.clear();
    } else {
        KRMutableIndexSet indexes;
        m_frameReports.takeIndexes(m_checkListItemViews, indexes);
        for (const KRUInteger index : indexes) {
            m_appliedItemViewFrames[index] = kUnknownFrame;
        }
    }
    // The rows whose frames may change, found among the kept frames alone: a rows' worth of comparisons.
    std::vector<std::size_t> changedIndexes;
    const std::size_t framed = std::min(count, frames.size());
    for (std::size_t index = 0; index < framed; ++index) {
        if (m_appliedItemViewFrames[index] != frames[index]) {
            changedIndexes.push_back(index);
        }
    }
    for (std::size_t index = framed; index < count; ++index) {
        if (m_appliedItemViewFrames[index] != KRRectZero) {
            changedIndexes.push_back(index);
        }
    }
    // Once one row moves, the whole list is marked for display, and the rows it covers need not each mark
    // where they were and where they go: inserting at the top of a long list moves every row below.
    std::optional<KRView::SubviewDisplayCoverage> displayCoverage;
    for (std::size_t position = 0; position < changedIndexes.size(); ++position) {
        // Rows that move are read one after the other: ask for those a little ahead so as not to wait on
        // each.
        if (position + kListPassPrefetchDistance < changedIndexes.size()) {
            m_checkListItemViews[changedIndexes[position + kListPassPrefetchDistance]]
                ->prefetchPlacementState();
        }
        const std::size_t index = changedIndexes[position];
        const KRRect frame = index < framed ? frames[index] : KRRectZero;
        KRCheckListItemView* itemView = m_checkListItemViews[index].get();
        if (itemView->frame() != frame) {
            if (!displayCoverage) {
                displayCoverage.emplace(this);
            }
            checkListViewPlaceItemView(*itemView, frame, placesDraggedRowsAtOnce);
        }
        m_appliedItemViewFrames[index] = itemView->frame();
    }
}

void KRCheckListView::checkListViewPlaceItemView(KRCheckListItemView& itemView, KRRect frame,
                                                 bool placesDraggedRowsAtOnce) {
    m_itemViewBeingPlaced = &itemView;
    // A dragged row that the mouse moves is placed at once: it sticks to the pointer while the others glide
    // along whatever animation the caller opened. (performNonAnimated with false only runs its block, so
    // every other row is placed directly.)
    if (itemView.isDragged() && placesDraggedRowsAtOnce) {
        KRView::performNonAnimated(true, [&itemView, frame] { itemView.setFrame(frame); });
    } else if (itemView.frame().size == frame.size) {
        // Rows pushed down by an insertion only move.
        itemView.setFrameOrigin(frame.origin);
    } else {
        itemView.setFrame(frame);
    }
    m_itemViewBeingPlaced = nullptr;
}

// Always the resting layout, also while a drag runs. The zero size answers the last applied size unmeasured.
KRSize KRCheckListView::sizeThatFits(KRSize size) const {
    if (size.width == 0.0 && size.height == 0.0) {
        return m_lastSizeThatFits;
    }
    return checkListViewLayoutForSize(size).sizeThatFits;
}

void KRCheckListView::updateTrackingAreas() {
    checkListViewEndTrackingMouse();
    KRView::updateTrackingAreas();
    checkListViewBeginTrackingMouse();
}

// Geometry queries
// ------------------------------------------------------------------------------------------------------
// A row's bounds converted into the list's coordinates are its frame: every row is a direct subview.

KRIndexSet KRCheckListView::indexesOfItemsInRect(KRRect rect) {
    layoutIfNeeded();
    KRMutableIndexSet indexes;
    for (std::size_t index = 0; index < m_checkListItemViews.size(); ++index) {
        if (KRRectIntersectsRect(m_checkListItemViews[index]->frame(), rect)) {
            indexes.addIndex(index);
        }
    }
    return indexes;
}

// The 1×1 rect centred on the point; where two rows share their border line, the upper one wins.
KRUInteger KRCheckListView::indexOfItemAtPoint(KRPoint point) {
    return indexesOfItemsInRect(KRRect{KRPoint{point.x - 0.5, point.y - 0.5}, KRSize{1.0, 1.0}}).firstIndex();
}

KRRect KRCheckListView::rectOfItemsInRange(KRRange range) const {
    if (range.length == 0) {
        return KRRectZero;
    }
    const KRRect first = m_checkListItemViews.at(range.location)->frame();
    const KRRect last = m_checkListItemViews.at(range.location + range.length - 1)->frame();
    return KRRectUnion(first, last);
}

KRRect KRCheckListView::rectOfItemAtIndex(KRUInteger index) const {
    return rectOfItemsInRange(KRRange{index, 1});
}

// The upper bounds apply last, so a rect of negative extent yields its max edge.
KRPoint KRCheckListView::checkListViewMovePoint(KRPoint point, KRRect insideRect) {
    const double x = std::min(KRRectGetMaxX(insideRect), std::max(KRRectGetMinX(insideRect), point.x));
    const double y = std::min(KRRectGetMaxY(insideRect), std::max(KRRectGetMinY(insideRect), point.y));
    return KRPoint{x, y};
}

// Dividers
// ------------------------------------------------------------------------------------------------------

KRIndexSet KRCheckListView::checkListViewIndexesOfDraggedItems() const {
    if (!m_dragging || !m_draggingSession) {
        return KRIndexSet();
    }
    return m_draggingSession->indexesOfDraggedItems();
}

struct KRCheckListView::DividerContext {
    KRUInteger count = 0;
    bool dragging = false;
    KRRect placeholderFrame;
    // A placeholder of no height never touches a row.
    bool placeholderHasHeight = false;
    // At rest every row remains; the set of remaining rows is only built while a drag runs.
    KRIndexSet remainingIndexes;
    KRUInteger first = KRNotFound;
    KRUInteger last = KRNotFound;
    bool gapAboveFirst = false;
    bool gapBelowLast = false;
};

KRCheckListView::DividerContext KRCheckListView::checkListViewDividerContext() const {
    DividerContext context;
    context.count = m_checkListItemViews.size();
    context.dragging = isDragging();
    context.placeholderFrame = m_dropPlaceholderFrame;
    context.placeholderHasHeight = m_dropPlaceholderFrame.size.height > 0.0;
    if (context.count > 0) {
        context.first = 0;
        context.last = context.count - 1;
    }
    if (context.dragging && context.count > 0) {
        context.remainingIndexes = KRIndexSet(KRRange{0, context.count})
                                       .indexSetByRemovingIndexes(checkListViewIndexesOfDraggedItems());
        context.first = context.remainingIndexes.firstIndex();
        context.last = context.remainingIndexes.lastIndex();
    }
    context.gapAboveFirst = context.dragging && m_dropPlaceholderIndex <= context.first;
    context.gapBelowLast = context.dragging && context.last < m_dropPlaceholderIndex;
    return context;
}

void KRCheckListView::checkListViewUpdateDividersOfItemAtIndex(KRUInteger index,
                                                               const DividerContext& context) {
    KRCheckListItemView& itemView = *m_checkListItemViews[index];
    const bool edited = itemView.isEdited();
    const bool selected = itemView.isSelected();
    const bool dragged = itemView.isDragged();
    const bool highlighted = itemView.isHighlighted();
    // Selected, edited, dragged and highlighted rows bring their own fill and need no hairline.
    const bool marked = edited || selected || dragged || highlighted;

    // Only the topmost remaining row ever draws a top divider.
    const bool drawsTopDivider = index == context.first && !marked && !context.gapAboveFirst;

    bool drawsBottomDivider = false;
    if (index == context.last) {
        drawsBottomDivider = !marked && !context.gapBelowLast;
    } else if (!dragged && !highlighted && !edited && !selected) {
        // The next remaining row below; dragged rows are skipped.
        const KRUInteger nextIndex = context.dragging ? context.remainingIndexes.indexGreaterThanIndex(index)
                                                      : (index + 1 < context.count ? index + 1 : KRNotFound);
        if (nextIndex != KRNotFound) {
            const KRCheckListItemView& nextItemView = *m_checkListItemViews[nextIndex];
            const KRRect frame = itemView.frame();
            const bool placeholderTouches =
                context.placeholderHasHeight && KRRectIntersectsRect(context.placeholderFrame, frame);
            drawsBottomDivider = !placeholderTouches && !nextItemView.isHighlighted();
            if (drawsBottomDivider && !nextItemView.isDragged()) {
                // The test of the frame against itself is deliberate: it asks whether the row has an area.
                drawsBottomDivider = !nextItemView.isEdited() && !nextItemView.isSelected() &&
                                     KRRectIntersectsRect(frame, frame);
            }
        }
    }

    // Both flags inside one update of the row, top first, so the row redraws once for the pair; a row whose
    // flags stay as they are is left alone.
    if (itemView.drawsTopDivider() != drawsTopDivider ||
        itemView.drawsBottomDivider() != drawsBottomDivider) {
        itemView.update([&itemView, drawsTopDivider, drawsBottomDivider] {
            itemView.setDrawsTopDivider(drawsTopDivider);
            itemView.setDrawsBottomDivider(drawsBottomDivider);
        });
    }
}

void KRCheckListView::checkListViewUpdateDividers() {
    const DividerContext context = checkListViewDividerContext();
    for (KRUInteger index = 0; index < context.count; ++index) {
        // A long list is read row after row: ask for the rows a little ahead so as not to wait on each.
        if (index + kListPassPrefetchDistance < context.count) {
            m_checkListItemViews[index + kListPassPrefetchDistance]->prefetchListPassState();
        }
        checkListViewUpdateDividersOfItemAtIndex(index, context);
    }
    m_indexesWithStaleDividers.removeAllIndexes();
    // The rows whose flags this pass changed reported it; that is no news to the next pass.
    m_dividerReports.clear();
    m_dividersFollowDrag = context.dragging || context.placeholderHasHeight;
}

// Gives the same flags as the pass over every row: a row's flags depend only on its own inputs, the next
// row's and whether it is the first or the last, and every change of those since the last pass is marked.
void KRCheckListView::checkListViewUpdateStaleDividers() {
    if (m_dividerReports.allReported() || m_dividersFollowDrag || isDragging() ||
        m_dropPlaceholderFrame.size.height > 0.0) {
        checkListViewUpdateDividers();
        return;
    }
    const DividerContext context = checkListViewDividerContext();
    m_dividerReports.takeIndexes(m_checkListItemViews, m_indexesWithStaleDividers);
    const KRIndexSet staleIndexes = m_indexesWithStaleDividers;
    m_indexesWithStaleDividers.removeAllIndexes();
    KRUInteger nextToUpdate = 0;
    for (const KRUInteger index : staleIndexes) {
        // The row above reads this row's state for its bottom divider.
        for (KRUInteger row = index > 0 ? index - 1 : 0; row <= index && row < context.count; ++row) {
            if (row >= nextToUpdate) {
                checkListViewUpdateDividersOfItemAtIndex(row, context);
                nextToUpdate = row + 1;
            }
        }
    }
}

namespace {

// Marks taken before an insertion follow their rows to their new indexes. Ascending, each inserted index is
// a final position: every one at or above a row pushes it down.
void shiftMarksOverInsertedIndexes(KRMutableIndexSet& marks, const KRIndexSet& inserted) {
    const std::vector<KRUInteger> earlierMarks = marks.indexes();
    marks.removeAllIndexes();
    for (KRUInteger mark : earlierMarks) {
        for (const KRUInteger index : inserted) {
            if (index <= mark) {
                ++mark;
            }
        }
        marks.addIndex(mark);
    }
}

// A mark on a removed row goes to the row that takes its place.
void shiftMarksOverRemovedIndexes(KRMutableIndexSet& marks, const KRIndexSet& removed) {
    const std::vector<KRUInteger> earlierMarks = marks.indexes();
    marks.removeAllIndexes();
    for (const KRUInteger mark : earlierMarks) {
        KRUInteger removedAbove = 0;
        for (const KRUInteger index : removed) {
            if (index >= mark) {
                break;
            }
            ++removedAbove;
        }
        marks.addIndex(mark - removedAbove);
    }
}

} // namespace

void KRCheckListView::checkListViewMarkDividersStaleAtIndex(KRUInteger index) {
    if (!m_dividerReports.allReported()) {
        m_indexesWithStaleDividers.addIndex(index);
    }
}

void KRCheckListView::checkListViewMarkAllDividersStale() {
    m_dividerReports.reportAll();
    m_indexesWithStaleDividers.removeAllIndexes();
}

void KRCheckListView::checkListItemViewDidChangeDividerInputs(KRCheckListItemView* itemView) {
    m_dividerReports.report(itemView);
}

void KRCheckListView::checkListViewMarkDividersStaleAfterInsertingItemsAtIndexes(const KRIndexSet& indexes) {
    shiftMarksOverInsertedIndexes(m_indexesWithStaleDividers, indexes);
    for (const KRUInteger index : indexes) {
        checkListViewMarkDividersStaleAtIndex(index);
        // The row pushed down may have been the first.
        checkListViewMarkDividersStaleAtIndex(index + 1);
    }
    checkListViewMarkDividersStaleAtIndex(0);
    if (!m_checkListItemViews.empty()) {
        checkListViewMarkDividersStaleAtIndex(m_checkListItemViews.size() - 1);
    }
}

void KRCheckListView::checkListViewMarkDividersStaleAfterRemovingItemsAtIndexes(const KRIndexSet& indexes) {
    shiftMarksOverRemovedIndexes(m_indexesWithStaleDividers, indexes);
    // Each removed index, counted after the removal, is where the next remaining row now stands.
    KRUInteger removedBefore = 0;
    for (const KRUInteger index : indexes) {
        checkListViewMarkDividersStaleAtIndex(index - removedBefore);
        ++removedBefore;
    }
    checkListViewMarkDividersStaleAtIndex(0);
    if (!m_checkListItemViews.empty()) {
        checkListViewMarkDividersStaleAtIndex(m_checkListItemViews.size() - 1);
    }
}
