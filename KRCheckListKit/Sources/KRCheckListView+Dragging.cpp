// KRCheckListView: reordering by dragging a row's handle. The handle's press lifts the dragged rows, its
// drags move them under the pointer while the others make room, its release moves their items into the
// gap; the dragging layout, the elastic damping beyond the list's edges, and the drop placeholder that fades
// in where the rows will land.
#include "KRCheckListView.h"
#include "KRCheckListViewAssert.h"

#include "KRCheckListDefaults.h"
#include "KRCheckListDraggingSession.h"
#include "KRCheckListDropPlaceholderContentView.h"
#include "KRCheckListDropPlaceholderView.h"

#include "Animation/EZInterpolationFunctions.h"
#include "Animation/KRAnimationDurationMultiplier.h"

#include <algorithm>
#include <cmath>

namespace {

// The elastic limit: a deflection of kElasticDeflectionScale points reaches 99 % of the maximum, since
// kElasticExponentAtScale is ln 100.
constexpr double kElasticExponentAtScale = 4.605170185988092;
constexpr double kElasticDeflectionScale = 1000.0;

EZSampledFunctionRef draggingInterpolationFunction() {
    return EZInterpolationFunctions::springWithDampingRatio(KRCheckListDefaults::draggingDampingRatio(),
                                                            KRCheckListDefaults::draggingDuration() *
                                                                KRAnimationDurationMultiplier);
}

} // namespace

// The handle's press, drags and release
// ------------------------------------------------------------------------------------------------------

bool KRCheckListView::checkListItemViewMouseDownHandle(KRCheckListItemView* itemView, const KREvent& event) {
    // A drag whose release never came ends where its pointer was last before another begins.
    if (m_dragging && m_draggingSession) {
        checkListViewDropDraggedItemsWithMouseLocation(m_draggingSession->mouseLocation());
    }
    if (checkListViewIndexForItemView(itemView) == KRNotFound) {
        return false;
    }

    auto session = std::make_shared<KRCheckListDraggingSession>();
    const KRRect frame = itemView->frame();
    const KRPoint location = event.locationInView(this);
    const EZSampledFunctionRef interpolationFunction = draggingInterpolationFunction();
    const double draggingOffsetX = location.x - frame.origin.x;
    const double draggingOffsetY = location.y - frame.origin.y;

    // Pressing a selected row's handle drags the whole selection; an unselected row is dragged alone.
    const KRUInteger pressedIndex = checkListViewIndexForItemView(itemView);
    selectItemAtIndexByExtendingSelection(pressedIndex,
                                          m_indexesForSelectedItems.containsIndex(pressedIndex));
    // The delegate heard of the selection and may have changed the rows meanwhile.
    const KRUInteger index = checkListViewIndexForItemView(itemView);
    if (index == KRNotFound) {
        return false;
    }
    // Numbers a client left past the rows are no rows to drag.
    const KRIndexSet indexes = checkListViewIndexesForSelectedItemsInRows().indexSetByAddingIndex(index);
    std::vector<std::shared_ptr<KRCheckListItemView>> draggedItemViews;
    draggedItemViews.reserve(indexes.count());
    draggedItemViews.push_back(m_checkListItemViews[index]);
    for (const KRUInteger draggedIndex : indexes) {
        if (draggedIndex != index) {
            draggedItemViews.push_back(m_checkListItemViews[draggedIndex]);
        }
    }

    session->setInterpolationFunction(interpolationFunction);
    session->setIndexOfDraggedItem(index);
    session->setIndexesOfDraggedItems(indexes);
    session->setDraggedItemViews(draggedItemViews);
    session->setDraggingOffsetX(draggingOffsetX);
    session->setDraggingOffsetY(draggingOffsetY);
    session->setMouseLocation(location);
    m_dragging = true;
    m_draggingSession = session;

    // Last to first, each to the front: the pressed row ends in front of all, the other dragged rows behind
    // it with the lowest index nearest the front.
    for (auto view = draggedItemViews.rbegin(); view != draggedItemViews.rend(); ++view) {
        addSubviewPositionedRelativeTo(*view, KRWindowOrderingMode::Above, nullptr);
    }
    for (const std::shared_ptr<KRCheckListItemView>& draggedItemView : draggedItemViews) {
        draggedItemView->setDragged(true);
    }

    // The lift, the closing of the dragged rows' places and the opening of the gap, on one spring.
    KRView::performAnimated(true, [this, &session](EZAnimationContext& context) {
        context.setInterpolationFunction(session->interpolationFunction());
        session->draggedItemViews().front()->setDrawsShadow(true);
        setNeedsLayout(true);
        layoutIfNeeded();
    });
    checkListViewShowOrHideDropPlaceholderIfNeededAnimated(false);
    return false;
}

bool KRCheckListView::checkListItemViewMouseDraggedHandle(KRCheckListItemView*, const KREvent& event) {
    if (!m_dragging || !m_draggingSession) {
        return false;
    }
    const std::shared_ptr<KRCheckListDraggingSession> session = m_draggingSession;
    session->setMouseLocation(event.locationInView(this));
    // The layout pass places the dragged rows at once (the event is a left-mouse drag), so they stick to the
    // pointer; the others move on the spring.
    KRView::performAnimated(true, [this, &session](EZAnimationContext& context) {
        context.setInterpolationFunction(session->interpolationFunction());
        setNeedsLayout(true);
        layoutIfNeeded();
    });
    checkListViewShowOrHideDropPlaceholderIfNeededAnimated(true);
    return false;
}

bool KRCheckListView::checkListItemViewMouseUpHandle(KRCheckListItemView*, const KREvent& event) {
    if (!m_dragging || !m_draggingSession) {
        return false;
    }
    checkListViewDropDraggedItemsWithMouseLocation(event.locationInView(this));
    return false;
}

void KRCheckListView::checkListViewDropDraggedItemsWithMouseLocation(KRPoint mouseLocation) {
    const std::shared_ptr<KRCheckListDraggingSession> session = m_draggingSession;
    session->setMouseLocation(mouseLocation);
    for (const std::shared_ptr<KRCheckListItemView>& draggedItemView : session->draggedItemViews()) {
        draggedItemView->setDragged(false);
    }
    // The drag is over before anything else happens: whatever the data source does with the move, no row
    // stays lifted and the next layout is a resting one. No layout runs until the move, so
    // dropPlaceholderIndex still holds the drop index of the last dragging layout.
    m_dragging = false;
    m_draggingSession.reset();

    const std::weak_ptr<bool> alive = m_alive;
    KRView::performAnimated(
        true,
        [this, session](EZAnimationContext& context) {
            context.setInterpolationFunction(session->interpolationFunction());
            session->draggedItemViews().front()->setDrawsShadow(false);
            const KRUInteger dropIndex = m_dropPlaceholderIndex;
            // The rows may have changed under the drag (a reload, a client's update): only rows that are
            // still there move, and never past the end.
            const KRUInteger count = numberOfItems();
            const KRIndexSet indexes =
                session->indexesOfDraggedItems().indexSetByIntersectingIndexes(KRIndexSet(KRRange{0, count}));
            if (dropIndex != KRNotFound && dropIndex <= count && indexes.count() > 0) {
                moveItemsAtIndexesToIndex(indexes, dropIndex);
            }
            setNeedsLayout(true);
            layoutIfNeeded();
        },
        [this, alive] {
            if (!alive.expired()) {
                checkListViewShowOrHideDropPlaceholderIfNeededAnimated(false);
            }
        });
}

// Dragging layout
// ------------------------------------------------------------------------------------------------------

double
KRCheckListView::checkListViewApplyElasticDampingToDeflectionMaxDampedDeflection(double deflection,
                                                                                 double maxDampedDeflection) {
    if (deflection == 0.0) {
        return 0.0;
    }
    const double sign = deflection > 0.0 ? 1.0 : -1.0;
    return sign * (maxDampedDeflection -
                   maxDampedDeflection /
                       std::exp(std::fabs(deflection) * kElasticExponentAtScale / kElasticDeflectionScale));
}

KRCheckListViewLayout KRCheckListView::checkListViewDraggingLayoutForSize(KRSize size) const {
    KRCheckListViewLayout layout = checkListViewLayoutForSize(size);
    const double hoverOffsetX = KRCheckListDefaults::hoverOffsetX();
    const double hoverOffsetY = KRCheckListDefaults::hoverOffsetY();
    const double maxDragOutX = KRCheckListDefaults::maxDragOutX();
    const double maxDragOutY = KRCheckListDefaults::maxDragOutY();
    const double borderWidth = KRCheckListDefaults::borderWidth();
    const double itemHeight = KRCheckListDefaults::itemHeight();

    std::vector<KRRect>& frames = layout.itemViewFrames;
    const KRUInteger count = frames.size();
    double fittingHeight = layout.sizeThatFits.height;

    KR_CHECKLIST_VIEW_ASSERT(m_draggingSession != nullptr, "checkListViewDraggingLayoutForSize:",
                             "Internal inconsistency, can't compute dragging layout, no dragging session was "
                             "is set");
    if (!m_draggingSession) {
        return layout;
    }
    const KRCheckListDraggingSession& session = *m_draggingSession;
    const KRUInteger pressedIndex = session.indexOfDraggedItem();
    // Dragged rows that are no longer there (the rows changed under the drag) take no part.
    const KRIndexSet draggedIndexes =
        session.indexesOfDraggedItems().indexSetByIntersectingIndexes(KRIndexSet(KRRange{0, count}));
    const double offsetX = session.draggingOffsetX();
    const double offsetY = session.draggingOffsetY();
    const KRPoint pointer = session.mouseLocation();
    // The gap keeps the pressed row's resting height, however many rows are dragged.
    const double gapHeight = pressedIndex < count ? frames[pressedIndex].size.height - borderWidth : 0.0;

    // Close ranks: each row moves up by the dragged rows above it and its own, as if they were gone.
    double shift = 0.0;
    for (KRUInteger index = 0; index < count; ++index) {
        if (draggedIndexes.containsIndex(index)) {
            shift -= frames[index].size.height - borderWidth;
            fittingHeight -= frames[index].size.height - borderWidth;
        }
        frames[index].origin.y += shift;
    }

    // The drop index: the first remaining row reaching below the pointer itself, or the end.
    KRUInteger dropIndex = count;
    for (KRUInteger index = 0; index < count; ++index) {
        if (!draggedIndexes.containsIndex(index) && KRRectGetMaxY(frames[index]) > pointer.y) {
            dropIndex = index;
            break;
        }
    }

    // Open the gap, starting on the bottom border line of the last remaining row above it.
    KRRect gapFrame{KRPointZero, KRSize{size.width, gapHeight}};
    for (KRUInteger index = 0; index < count; ++index) {
        if (draggedIndexes.containsIndex(index)) {
            continue;
        }
        if (index < dropIndex) {
            gapFrame.origin.y = frames[index].origin.y + frames[index].size.height - borderWidth;
        } else {
            frames[index].origin.y += gapHeight;
        }
    }

    // The dragged rows, all at one origin under the pointer (std::round rounds half away from zero), held
    // inside the list with elastic limits beyond its edges; the others show as one-line cards behind the
    // pressed row.
    const double anchorX = std::round(pointer.x - offsetX);
    const double anchorY = std::round(pointer.y - offsetY);
    for (const KRUInteger index : draggedIndexes) {
        KRRect& frame = frames[index];
        if (index != pressedIndex) {
            frame.size.height = itemHeight;
        }
        const double height = frame.size.height;
        double clampedX = std::max(0.0, anchorX);
        if (clampedX + frame.size.width > size.width) {
            clampedX = size.width - frame.size.width;
        }
        double clampedY = std::max(0.0, anchorY);
        if (clampedY + height > size.height) {
            clampedY = size.height - height;
        }
        frame.origin.x = std::round(checkListViewApplyElasticDampingToDeflectionMaxDampedDeflection(
                             anchorX - clampedX, maxDragOutX)) +
                         clampedX + hoverOffsetX;
        frame.origin.y = std::round(checkListViewApplyElasticDampingToDeflectionMaxDampedDeflection(
                             anchorY - clampedY, maxDragOutY)) +
                         clampedY + hoverOffsetY;
    }

    fittingHeight += gapHeight;
    layout.dropPlaceholderIndex = dropIndex;
    layout.dropPlaceholderFrame = gapFrame;
    layout.sizeThatFits = KRSize{layout.sizeThatFits.width, fittingHeight};
    return layout;
}

// Drop placeholder
// ------------------------------------------------------------------------------------------------------

void KRCheckListView::checkListViewShowOrHideDropPlaceholderIfNeededAnimated(bool animated) {
    const KRRect shownFrame = m_dropPlaceholderView ? m_dropPlaceholderView->frame() : KRRectZero;
    const KRRect placeholderFrame = m_dropPlaceholderFrame;
    // An unchanged gap does nothing at all, so a drag that keeps its gap causes no flicker.
    const bool changed = shownFrame != placeholderFrame;
    const bool shows = placeholderFrame.size.height > 0.0 && changed;
    const EZSampledFunctionRef interpolationFunction = EZInterpolationFunctions::linearWithDuration(
        KRCheckListDefaults::dropPlaceholderFadeDuration() * KRAnimationDurationMultiplier);

    // The old placeholder fades out where it stands.
    if (m_dropPlaceholderView && changed) {
        const std::shared_ptr<KRCheckListDropPlaceholderView> fadingView = std::move(m_dropPlaceholderView);
        m_dropPlaceholderView.reset();
        KRView::performAnimated(animated, [&fadingView, &interpolationFunction](EZAnimationContext& context) {
            context.setInterpolationFunction(interpolationFunction);
            fadingView->setAlphaValue(0.0);
        });
    }
    if (!shows) {
        return;
    }

    const std::shared_ptr<KRCheckListDropPlaceholderView> view = checkListViewReusableDropPlaceholderView();
    // A recycled view jumps to the new place while it is invisible.
    KRView::performWithoutAnimation([&view, placeholderFrame] { view->setFrame(placeholderFrame); });
    KRView::performAnimated(animated, [&view, &interpolationFunction](EZAnimationContext& context) {
        context.setInterpolationFunction(interpolationFunction);
        view->setAlphaValue(1.0);
    });
    m_dropPlaceholderView = view;
}

// Only a placeholder that has finished fading out is taken again; one still fading stays where it is.
std::shared_ptr<KRCheckListDropPlaceholderView> KRCheckListView::checkListViewReusableDropPlaceholderView() {
    for (const std::shared_ptr<KRView>& subview : m_dropPlaceholderContentView->subviews()) {
        if (subview->presentationAlphaValue() == 0.0) {
            if (auto view = std::dynamic_pointer_cast<KRCheckListDropPlaceholderView>(subview)) {
                return view;
            }
        }
    }
    auto view = std::make_shared<KRCheckListDropPlaceholderView>();
    KRView::performWithoutAnimation([&view] { view->setAlphaValue(0.0); });
    m_dropPlaceholderContentView->addSubview(view);
    return view;
}
