#pragma once

#include "Animation/EZSampledFunction.h"
#include "Foundation/KRIndexSet.h"
#include "Foundation/KRTypes.h"
#include "Geometry/KRGeometry.h"

#include <memory>
#include <vector>

class KRCheckListItemView;

// One drag of a row's handle, from the press to the end of the drop: what the list needs to lay the dragged
// rows out under the pointer and to move their items on release. Properties only; the list does the work.
class KRCheckListDraggingSession {
public:
    KRCheckListDraggingSession();
    ~KRCheckListDraggingSession();

    // The curve of every animation of the gesture.
    const EZSampledFunctionRef& interpolationFunction() const { return m_interpolationFunction; }
    void setInterpolationFunction(EZSampledFunctionRef function) {
        m_interpolationFunction = std::move(function);
    }
    // The row whose handle was pressed.
    KRUInteger indexOfDraggedItem() const { return m_indexOfDraggedItem; }
    void setIndexOfDraggedItem(KRUInteger index) { m_indexOfDraggedItem = index; }
    // Every dragged row: the selection when the handle was pressed.
    const KRIndexSet& indexesOfDraggedItems() const { return m_indexesOfDraggedItems; }
    void setIndexesOfDraggedItems(const KRIndexSet& indexes) { m_indexesOfDraggedItems = indexes; }
    // The pressed row first, then the other dragged rows in ascending index order.
    const std::vector<std::shared_ptr<KRCheckListItemView>>& draggedItemViews() const {
        return m_draggedItemViews;
    }
    void setDraggedItemViews(std::vector<std::shared_ptr<KRCheckListItemView>> itemViews) {
        m_draggedItemViews = std::move(itemViews);
    }
    // Where the pointer was inside the pressed row when the handle was pressed.
    double draggingOffsetX() const { return m_draggingOffsetX; }
    void setDraggingOffsetX(double offset) { m_draggingOffsetX = offset; }
    double draggingOffsetY() const { return m_draggingOffsetY; }
    void setDraggingOffsetY(double offset) { m_draggingOffsetY = offset; }
    // The latest pointer position, in the list's coordinates.
    KRPoint mouseLocation() const { return m_mouseLocation; }
    void setMouseLocation(KRPoint location) { m_mouseLocation = location; }

private:
    EZSampledFunctionRef m_interpolationFunction;
    KRUInteger m_indexOfDraggedItem = 0;
    KRIndexSet m_indexesOfDraggedItems;
    std::vector<std::shared_ptr<KRCheckListItemView>> m_draggedItemViews;
    double m_draggingOffsetX = 0.0;
    double m_draggingOffsetY = 0.0;
    KRPoint m_mouseLocation;
};
