// KRCheckListView: the resting layout record, the layout pass that applies it, the list's fitting size,
// the geometry queries and the divider rules.
//
// Work per row is kept to what a pass needs: a row answers its fitting size from its title field's cached
// measurements, frames and divider flags are only set when they change, and nothing looks a row up by view.
#include "KRCheckListView.h"

#include "KRCheckListDefaults.h"
#include "KRCheckListDropPlaceholderContentView.h"

#include "Views/KREvent.h"
#include "Views/KRWindow.h"

#include <algorithm>

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
    KRCheckListViewLayout layout;
    layout.size = size;
    layout.itemViewFrames.reserve(m_checkListItemViews.size());
    double y = 0.0;
    for (const std::shared_ptr<KRCheckListItemView>& itemView : m_checkListItemViews) {
        const KRSize itemSize = itemView->sizeThatFits(size);
        layout.itemViewFrames.push_back(KRRect{KRPoint{0.0, y}, itemSize});
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

// Layout pass
// ------------------------------------------------------------------------------------------------------

void KRCheckListView::layoutSubviews() {
    KRView::layoutSubviews();
    const KRRect bounds = this->bounds();
    const KRWindow* window = this->window();
    const KREvent* currentEvent = window ? window->currentEvent() : nullptr;
    const bool isLeftMouseDragged = currentEvent && currentEvent->type() == KREventType::LeftMouseDragged;

    // While a drag runs, the dragging layout of the drag session takes the resting layout's place
    // here; both produce the same record.
    const KRCheckListViewLayout layout = checkListViewLayoutForSize(bounds.size);

    const std::size_t frameCount = layout.itemViewFrames.size();
    // Once one row moves, the whole list is marked for display, and the rows it covers need not each mark
    // where they were and where they go: inserting at the top of a long list moves every row below.
    std::optional<KRView::SubviewDisplayCoverage> displayCoverage;
    for (std::size_t index = 0; index < m_checkListItemViews.size(); ++index) {
        KRCheckListItemView* itemView = m_checkListItemViews[index].get();
        const KRRect frame = index < frameCount ? layout.itemViewFrames[index] : KRRectZero;
        if (itemView->frame() == frame) {
            continue;
        }
        if (!displayCoverage) {
            displayCoverage.emplace(this);
        }
        // A dragged row that the mouse moves is placed at once: it sticks to the pointer while the others
        // glide along whatever animation the caller opened. (performNonAnimated with false only runs its
        // block, so every other row is placed directly.)
        if (itemView->isDragged() && isLeftMouseDragged) {
            KRView::performNonAnimated(true, [itemView, frame] { itemView->setFrame(frame); });
        } else {
            itemView->setFrame(frame);
        }
    }
    m_dropPlaceholderContentView->setFrame(layout.dropPlaceholderContentViewFrame);
    m_dropPlaceholderIndex = layout.dropPlaceholderIndex;
    m_dropPlaceholderFrame = layout.dropPlaceholderFrame;

    // The delegate hears of a new size before it is stored, so it still reads the old one meanwhile.
    if (layout.sizeThatFits.width != m_lastSizeThatFits.width ||
        layout.sizeThatFits.height != m_lastSizeThatFits.height) {
        checkListViewDidChangeSizeThatFits(this);
        m_lastSizeThatFits = layout.sizeThatFits;
    }
    checkListViewUpdateDividers();
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
    // The drag session's indexesOfDraggedItems while a drag runs; none at rest.
    return KRIndexSet();
}

void KRCheckListView::checkListViewUpdateDividers() {
    const KRUInteger count = m_checkListItemViews.size();
    const bool dragging = isDragging();
    const KRRect placeholderFrame = m_dropPlaceholderFrame;
    const KRUInteger placeholderIndex = m_dropPlaceholderIndex;
    // At rest every row remains; the set of remaining rows is only built while a drag runs.
    KRIndexSet remainingIndexes;
    KRUInteger first = count == 0 ? KRNotFound : 0;
    KRUInteger last = count == 0 ? KRNotFound : count - 1;
    if (dragging && count > 0) {
        remainingIndexes =
            KRIndexSet(KRRange{0, count}).indexSetByRemovingIndexes(checkListViewIndexesOfDraggedItems());
        first = remainingIndexes.firstIndex();
        last = remainingIndexes.lastIndex();
    }
    const bool gapAboveFirst = dragging && placeholderIndex <= first;
    const bool gapBelowLast = dragging && last < placeholderIndex;
    // A placeholder of no height never touches a row.
    const bool placeholderHasHeight = placeholderFrame.size.height > 0.0;

    // This pass runs after every layout, selection and edit: it reads each row once and writes only the rows
    // whose flags change, since a long list touches thousands of rows here.
    for (KRUInteger index = 0; index < count; ++index) {
        if (index + kListPassPrefetchDistance < count) {
            m_checkListItemViews[index + kListPassPrefetchDistance]->prefetchListPassState();
        }
        KRCheckListItemView& itemView = *m_checkListItemViews[index];
        const bool edited = itemView.isEdited();
        const bool selected = itemView.isSelected();
        const bool dragged = itemView.isDragged();
        const bool highlighted = itemView.isHighlighted();
        // Selected, edited, dragged and highlighted rows bring their own fill and need no hairline.
        const bool marked = edited || selected || dragged || highlighted;

        // Only the topmost remaining row ever draws a top divider.
        const bool drawsTopDivider = index == first && !marked && !gapAboveFirst;

        bool drawsBottomDivider = false;
        if (index == last) {
            drawsBottomDivider = !marked && !gapBelowLast;
        } else if (!dragged && !highlighted && !edited && !selected) {
            // The next remaining row below; dragged rows are skipped.
            const KRUInteger nextIndex = dragging ? remainingIndexes.indexGreaterThanIndex(index)
                                                  : (index + 1 < count ? index + 1 : KRNotFound);
            if (nextIndex != KRNotFound) {
                const KRCheckListItemView& nextItemView = *m_checkListItemViews[nextIndex];
                const KRRect frame = itemView.frame();
                const bool placeholderTouches =
                    placeholderHasHeight && KRRectIntersectsRect(placeholderFrame, frame);
                drawsBottomDivider = !placeholderTouches && !nextItemView.isHighlighted();
                if (drawsBottomDivider && !nextItemView.isDragged()) {
                    // The test of the frame against itself is deliberate: it asks whether the row has an
                    // area.
                    drawsBottomDivider = !nextItemView.isEdited() && !nextItemView.isSelected() &&
                                         KRRectIntersectsRect(frame, frame);
                }
            }
        }

        // Both flags inside one update of the row, top first, so the row redraws once for the pair; a row
        // whose flags stay as they are is left alone.
        if (itemView.drawsTopDivider() != drawsTopDivider ||
            itemView.drawsBottomDivider() != drawsBottomDivider) {
            itemView.update([&itemView, drawsTopDivider, drawsBottomDivider] {
                itemView.setDrawsTopDivider(drawsTopDivider);
                itemView.setDrawsBottomDivider(drawsBottomDivider);
            });
        }
    }
}
