#include "Views/KRWindow.h"

#include "Foundation/KRRunLoop.h"
#include "Views/KRCursor.h"
#include "Views/KREvent.h"
#include "Views/KRTrackingArea.h"
#include "Views/KRView.h"

#include <algorithm>
#include <unordered_set>
#include <utility>

namespace {

KRWindow::FieldEditorFactory& fieldEditorFactory() {
    static KRWindow::FieldEditorFactory factory;
    return factory;
}

KRPoint intoChild(KRPoint point, const KRView& child) {
    const KRRect frame = child.frame();
    const KRRect bounds = child.bounds();
    return KRPoint{point.x - frame.origin.x + bounds.origin.x, point.y - frame.origin.y + bounds.origin.y};
}

// Depth first, back to front, skipping hidden subtrees.
void collectVisibleViews(KRView* view, std::vector<KRView*>& views) {
    if (view->isHidden()) {
        return;
    }
    views.push_back(view);
    for (const auto& subview : view->subviews()) {
        collectVisibleViews(subview.get(), views);
    }
}

void collectTrackingAreas(const KRView* view, std::vector<std::shared_ptr<KRTrackingArea>>& areas) {
    const auto& own = view->trackingAreas();
    areas.insert(areas.end(), own.begin(), own.end());
    for (const auto& subview : view->subviews()) {
        collectTrackingAreas(subview.get(), areas);
    }
}

bool sameArea(const std::weak_ptr<KRTrackingArea>& a, const std::weak_ptr<KRTrackingArea>& b) {
    // Ownership comparison still tells areas apart after they are gone.
    return !a.owner_before(b) && !b.owner_before(a);
}

// Restores the window's current event however dispatch ends.
class CurrentEventScope {
public:
    CurrentEventScope(const KREvent*& slot, const KREvent* event) : m_slot(slot), m_previous(slot) {
        slot = event;
    }
    ~CurrentEventScope() { m_slot = m_previous; }
    CurrentEventScope(const CurrentEventScope&) = delete;
    CurrentEventScope& operator=(const CurrentEventScope&) = delete;

private:
    const KREvent*& m_slot;
    const KREvent* m_previous;
};

} // namespace

KRWindow::KRWindow() : m_dirtyRect(KRRectNull) {}

KRWindow::~KRWindow() {
    if (m_contentView) {
        m_contentView->setWindowRecursively(nullptr);
    }
}

void KRWindow::setContentView(std::shared_ptr<KRView> view) {
    if (view == m_contentView) {
        return;
    }
    if (view && view->superview()) {
        view->removeFromSuperview();
    }
    if (std::shared_ptr<KRView> old = std::move(m_contentView)) {
        setNeedsDisplayInRect(old->frame());
        viewWillBeRemoved(old.get());
        old->setWindowRecursively(nullptr);
    }
    m_contentView = std::move(view);
    if (m_contentView) {
        m_contentView->setWindowRecursively(this);
        setNeedsDisplayInRect(m_contentView->frame());
    }
}

// First responder ----------------------------------------------------------------------------------------

KRResponder* KRWindow::firstResponder() const {
    if (KRResponder* responder = m_firstResponder.get()) {
        return responder;
    }
    return const_cast<KRWindow*>(this);
}

bool KRWindow::makeFirstResponder(KRResponder* responder) {
    if (responder == this) {
        responder = nullptr;
    }
    KRResponder* current = m_firstResponder.get();
    if (current == responder) {
        return true;
    }
    if (current && !current->resignFirstResponder()) {
        return false;
    }
    m_firstResponder.reset();
    if (!responder) {
        return true;
    }
    const KRWeak<KRResponder> candidate(responder);
    if (!responder->becomeFirstResponder()) {
        return false;
    }
    // A responder may hand the focus on while becoming (a text field to the field editor); keep that one.
    if (!m_firstResponder && candidate) {
        m_firstResponder = candidate;
    }
    return true;
}

// Events -------------------------------------------------------------------------------------------------

void KRWindow::sendEvent(const KREvent& event) {
    const CurrentEventScope scope(m_currentEvent, &event);
    switch (event.type()) {
    case KREventType::LeftMouseDown:
    case KREventType::RightMouseDown:
        dispatchMouseDown(event);
        break;
    case KREventType::LeftMouseDragged:
    case KREventType::RightMouseDragged:
    case KREventType::LeftMouseUp:
    case KREventType::RightMouseUp:
        dispatchMouseDragOrUp(event);
        break;
    case KREventType::MouseMoved:
        dispatchMouseMoved(event);
        break;
    case KREventType::KeyDown:
    case KREventType::KeyUp:
    case KREventType::FlagsChanged:
        dispatchKey(event);
        break;
    case KREventType::ScrollWheel:
        if (KRView* hit = m_contentView ? m_contentView->hitTest(event.locationInWindow()) : nullptr) {
            hit->scrollWheel(event);
        }
        break;
    case KREventType::MouseEntered:
    case KREventType::MouseExited:
    case KREventType::CursorUpdate: {
        KRResponder* owner = event.trackingArea() ? event.trackingArea()->owner() : nullptr;
        if (!owner) {
            break;
        }
        if (event.type() == KREventType::MouseEntered) {
            owner->mouseEntered(event);
        } else if (event.type() == KREventType::MouseExited) {
            owner->mouseExited(event);
        } else {
            owner->cursorUpdate(event);
        }
        break;
    }
    }
}

KRView* KRWindow::mouseDownView() const {
    return m_mouseDownView.get();
}

bool KRWindow::trackCurrentPressWithView(KRView* view) {
    if (!m_mouseDownView) {
        return false;
    }
    m_mouseDownView = KRWeak<KRView>(view);
    return true;
}

void KRWindow::dispatchMouseDown(const KREvent& event) {
    KRView* hit = m_contentView ? m_contentView->hitTest(event.locationInWindow()) : nullptr;
    if (!hit) {
        return;
    }
    const KRWeak<KRView> target(hit);
    m_mouseDownView = target;
    if (hit->acceptsFirstResponder() && firstResponder() != hit) {
        makeFirstResponder(hit);
    }
    // Becoming first responder may have rebuilt the tree.
    if (!target) {
        return;
    }
    if (event.type() == KREventType::RightMouseDown) {
        hit->rightMouseDown(event);
    } else {
        hit->mouseDown(event);
    }
}

void KRWindow::dispatchMouseDragOrUp(const KREvent& event) {
    const bool isDrag =
        event.type() == KREventType::LeftMouseDragged || event.type() == KREventType::RightMouseDragged;
    if (isDrag) {
        updateTrackingAreaStates(event);
    }
    KRView* target = m_mouseDownView.get();
    if (!target && m_contentView) {
        target = m_contentView->hitTest(event.locationInWindow());
    }
    if (!isDrag) {
        // Cleared before delivery so a handler that starts a new press is not undone afterwards.
        m_mouseDownView.reset();
    }
    if (!target) {
        return;
    }
    switch (event.type()) {
    case KREventType::LeftMouseDragged:
        target->mouseDragged(event);
        break;
    case KREventType::RightMouseDragged:
        target->rightMouseDragged(event);
        break;
    case KREventType::LeftMouseUp:
        target->mouseUp(event);
        break;
    case KREventType::RightMouseUp:
        target->rightMouseUp(event);
        break;
    default:
        break;
    }
}

void KRWindow::dispatchMouseMoved(const KREvent& event) {
    updateTrackingAreaStates(event);
    // Owners of move-tracking areas and the view under the pointer each hear of the move once.
    std::vector<std::shared_ptr<KRTrackingArea>> areas;
    for (const auto& weakArea : m_areasContainingMouse) {
        if (auto area = weakArea.lock(); area && (area->options() & KRTrackingMouseMoved)) {
            areas.push_back(std::move(area));
        }
    }
    std::vector<KRWeak<KRResponder>> recipients;
    const auto addRecipient = [&recipients](KRResponder* responder) {
        if (responder && std::none_of(recipients.begin(), recipients.end(),
                                      [responder](const auto& each) { return each.get() == responder; })) {
            recipients.emplace_back(responder);
        }
    };
    for (const auto& area : areas) {
        addRecipient(area->owner());
    }
    addRecipient(m_contentView ? m_contentView->hitTest(event.locationInWindow()) : nullptr);
    for (const auto& recipient : recipients) {
        if (KRResponder* responder = recipient.get()) {
            responder->mouseMoved(event);
        }
    }
}

void KRWindow::dispatchKey(const KREvent& event) {
    KRResponder* responder = firstResponder();
    switch (event.type()) {
    case KREventType::KeyDown:
        responder->keyDown(event);
        break;
    case KREventType::KeyUp:
        responder->keyUp(event);
        break;
    case KREventType::FlagsChanged:
        responder->flagsChanged(event);
        break;
    default:
        break;
    }
}

// Tracking areas -----------------------------------------------------------------------------------------

void KRWindow::updateTrackingAreaStates(const KREvent& event) {
    const KRPoint location = event.locationInWindow();

    // Strong references for the whole pass: callbacks may remove areas or rebuild views.
    std::vector<std::shared_ptr<KRTrackingArea>> containing;
    if (m_contentView) {
        KRResponder* const focused = m_firstResponder.get();
        const auto isActive = [this, focused](const KRTrackingArea& area) {
            const unsigned options = area.options();
            if ((options & KRTrackingActiveWhenFirstResponder) && area.owner() != focused) {
                return false;
            }
            if ((options & KRTrackingActiveInKeyWindow) && !m_keyWindow) {
                return false;
            }
            return true;
        };
        // Only subtrees that can hold the pointer are walked, so a long list costs little per move.
        const auto visit = [&](const auto& self, const KRView& view, KRPoint pointInSuperview) -> void {
            if (view.isHidden()) {
                return;
            }
            const bool insideFrame = KRRectContainsPoint(view.frame(), pointInSuperview);
            if (!insideFrame && (view.masksToBounds() || view.subviews().empty())) {
                return;
            }
            const KRPoint local = intoChild(pointInSuperview, view);
            for (const auto& area : view.trackingAreas()) {
                const KRRect rect =
                    (area->options() & KRTrackingInVisibleRect) ? view.bounds() : area->rect();
                if (KRRectContainsPoint(rect, local) && isActive(*area)) {
                    containing.push_back(area);
                }
            }
            for (const auto& subview : view.subviews()) {
                self(self, *subview, local);
            }
        };
        visit(visit, *m_contentView, location);
    }

    const auto contains = [](const std::vector<std::shared_ptr<KRTrackingArea>>& areas,
                             const KRTrackingArea* area) {
        return std::any_of(areas.begin(), areas.end(),
                           [area](const auto& each) { return each.get() == area; });
    };

    std::vector<std::shared_ptr<KRTrackingArea>> previous;
    previous.reserve(m_areasContainingMouse.size());
    for (const auto& weakArea : m_areasContainingMouse) {
        if (auto area = weakArea.lock()) {
            previous.push_back(std::move(area));
        }
    }
    m_areasContainingMouse.assign(containing.begin(), containing.end());

    const KREventModifierFlags modifiers = event.modifierFlags();
    for (const auto& area : previous) {
        if ((area->options() & KRTrackingMouseEnteredAndExited) && !contains(containing, area.get())) {
            if (KRResponder* owner = area->owner()) {
                owner->mouseExited(
                    KREvent::trackingEvent(KREventType::MouseExited, location, area.get(), modifiers, this));
            }
        }
    }
    for (const auto& area : containing) {
        if ((area->options() & KRTrackingMouseEnteredAndExited) && !contains(previous, area.get())) {
            if (KRResponder* owner = area->owner()) {
                owner->mouseEntered(
                    KREvent::trackingEvent(KREventType::MouseEntered, location, area.get(), modifiers, this));
            }
        }
    }

    // The last cursor area in tree order belongs to the deepest, frontmost view.
    std::shared_ptr<KRTrackingArea> cursorArea;
    for (auto it = containing.rbegin(); it != containing.rend(); ++it) {
        if ((*it)->options() & KRTrackingCursorUpdate) {
            cursorArea = *it;
            break;
        }
    }
    const bool cursorAreaChanged =
        !sameArea(cursorArea, m_cursorArea) || (cursorArea && !contains(previous, cursorArea.get()));
    if (cursorAreaChanged) {
        m_cursorArea = cursorArea;
        if (cursorArea) {
            if (KRResponder* owner = cursorArea->owner()) {
                owner->cursorUpdate(KREvent::trackingEvent(KREventType::CursorUpdate, location,
                                                           cursorArea.get(), modifiers, this));
            }
        } else {
            KRCursor::arrowCursor().set();
        }
    }
}

// Field editor -------------------------------------------------------------------------------------------

std::shared_ptr<KRView> KRWindow::fieldEditor(bool createFlag, KRObject*) {
    if (!m_fieldEditor && createFlag) {
        if (const FieldEditorFactory& factory = fieldEditorFactory()) {
            m_fieldEditor = factory();
        }
    }
    return m_fieldEditor;
}

bool KRWindow::hasDefaultFieldEditorFactory() {
    return static_cast<bool>(fieldEditorFactory());
}

void KRWindow::setDefaultFieldEditorFactory(FieldEditorFactory factory) {
    fieldEditorFactory() = std::move(factory);
}

// Key view loop ------------------------------------------------------------------------------------------

std::vector<KRView*> KRWindow::keyViewLoop() const {
    std::vector<KRView*> views;
    if (m_contentView) {
        collectVisibleViews(m_contentView.get(), views);
    }
    std::erase_if(views, [](const KRView* view) { return !view->canBecomeKeyView(); });
    return views;
}

namespace {

bool isValidKeyView(const KRView* view, const KRWindow* window) {
    return view && view->window() == window && !view->isHiddenOrHasHiddenAncestor() &&
           view->canBecomeKeyView();
}

// Every view of the tree in order (hidden ones too, so a hidden starting view still has a place).
void collectAllViews(KRView* view, std::vector<KRView*>& views) {
    views.push_back(view);
    for (const auto& subview : view->subviews()) {
        collectAllViews(subview.get(), views);
    }
}

// The key view next to start in tree order (forward or backward, wrapping); the first or last one when
// start is not in the tree.
KRWindow::AdjacentKeyView adjacentKeyView(KRView* root, KRView* start, bool forward, const KRWindow* window) {
    std::vector<KRView*> views;
    collectAllViews(root, views);
    const auto count = static_cast<std::ptrdiff_t>(views.size());
    const auto found = std::find(views.begin(), views.end(), start);
    std::ptrdiff_t index = found == views.end() ? (forward ? -1 : count) : found - views.begin();
    bool wrapped = false;
    for (std::ptrdiff_t step = 0; step < count; ++step) {
        const std::ptrdiff_t next = forward ? index + 1 : index - 1;
        wrapped = wrapped || next == count || next < 0;
        index = (next + count) % count;
        if (isValidKeyView(views[static_cast<std::size_t>(index)], window)) {
            return {views[static_cast<std::size_t>(index)], wrapped};
        }
    }
    return {};
}

} // namespace

bool KRWindow::selectKeyViewFollowingView(KRView* view) {
    if (!m_contentView) {
        return false;
    }
    if (!view) {
        view = dynamic_cast<KRView*>(m_firstResponder.get());
    }
    AdjacentKeyView found;
    if (view && isValidKeyView(view->nextKeyView(), this)) {
        found.view = view->nextKeyView();
    } else {
        found = adjacentKeyView(m_contentView.get(), view, true, this);
    }
    return moveFocusToKeyView(found, true);
}

bool KRWindow::selectKeyViewPrecedingView(KRView* view) {
    if (!m_contentView) {
        return false;
    }
    if (!view) {
        view = dynamic_cast<KRView*>(m_firstResponder.get());
    }
    AdjacentKeyView found;
    if (view) {
        // The explicit previous key view is the one naming view as its next.
        const std::vector<KRView*> loop = keyViewLoop();
        const auto pointing = std::find_if(
            loop.begin(), loop.end(), [view](const KRView* each) { return each->nextKeyView() == view; });
        if (pointing != loop.end()) {
            found.view = *pointing;
        }
    }
    if (!found.view) {
        found = adjacentKeyView(m_contentView.get(), view, false, this);
    }
    return moveFocusToKeyView(found, false);
}

// Going round past an end of the loop, or finding no key view at all, first offers the focus to the host.
bool KRWindow::moveFocusToKeyView(const AdjacentKeyView& found, bool forward) {
    if ((found.wrapped || !found.view) && m_keyViewLoopExitHandler && m_keyViewLoopExitHandler(forward)) {
        return true;
    }
    return found.view && makeFirstResponder(found.view);
}

void KRWindow::keyDown(const KREvent& event) {
    const KREventModifierFlags chordFlags =
        KREventModifierFlagCommand | KREventModifierFlagControl | KREventModifierFlagOption;
    if (event.keyCode() != KRKeyCode::Tab || (event.modifierFlags() & chordFlags)) {
        KRResponder::keyDown(event);
        return;
    }
    const bool backward = (event.modifierFlags() & KREventModifierFlagShift) ||
                          event.charactersIgnoringModifiers() == QString(QChar(0x19));
    backward ? selectPreviousKeyView() : selectNextKeyView();
}

bool KRWindow::selectFirstKeyView() {
    const std::vector<KRView*> loop = keyViewLoop();
    return !loop.empty() && makeFirstResponder(loop.front());
}

bool KRWindow::selectLastKeyView() {
    const std::vector<KRView*> loop = keyViewLoop();
    return !loop.empty() && makeFirstResponder(loop.back());
}

// Screen mapping -----------------------------------------------------------------------------------------

KRPoint KRWindow::convertPointToScreen(KRPoint point) const {
    return KRPoint{point.x + m_screenOrigin.x, point.y + m_screenOrigin.y};
}

KRPoint KRWindow::convertPointFromScreen(KRPoint point) const {
    return KRPoint{point.x - m_screenOrigin.x, point.y - m_screenOrigin.y};
}

KRRect KRWindow::convertRectToScreen(KRRect rect) const {
    if (KRRectIsNull(rect)) {
        return rect;
    }
    return KRRectOffset(rect, m_screenOrigin.x, m_screenOrigin.y);
}

KRRect KRWindow::convertRectFromScreen(KRRect rect) const {
    if (KRRectIsNull(rect)) {
        return rect;
    }
    return KRRectOffset(rect, -m_screenOrigin.x, -m_screenOrigin.y);
}

// Layout and display -------------------------------------------------------------------------------------

void KRWindow::setNeedsUpdate() {
    if (m_updateScheduled) {
        return;
    }
    m_updateScheduled = true;
    KRRunLoop::main().performAfterDelay(0.0, [weakWindow = KRWeak<KRWindow>(this)] {
        // A pass run by hand in between leaves nothing for this one.
        KRWindow* window = weakWindow.get();
        if (window && window->m_updateScheduled) {
            window->updateIfNeeded();
        }
    });
}

void KRWindow::updateIfNeeded() {
    m_updateScheduled = false;
    if (const std::shared_ptr<KRView> content = m_contentView) {
        content->layoutIfNeeded();
    }

    if (const std::shared_ptr<KRView> content = m_contentView) {
        content->updateTrackingAreasIfNeeded();
    }

    if (!KRRectIsNull(m_dirtyRect) && m_displayHandler) {
        const auto handler = m_displayHandler;
        handler(m_dirtyRect);
    }
}

void KRWindow::setNeedsDisplayInRect(KRRect rectInWindow) {
    if (KRRectIsEmpty(rectInWindow)) {
        return;
    }
    m_dirtyRect = KRRectUnion(m_dirtyRect, rectInWindow);
    setNeedsUpdate();
}

KRRect KRWindow::takeDirtyRect() {
    const KRRect dirty = m_dirtyRect;
    m_dirtyRect = KRRectNull;
    return dirty;
}

void KRWindow::viewNeedsTrackingAreaUpdate(KRView* view) {
    if (!view) {
        return;
    }
    if (view->window() == this) {
        view->setNeedsTrackingAreaUpdate();
    }
}

void KRWindow::viewWillBeRemoved(KRView* view) {
    if (!view) {
        return;
    }
    if (const auto* focused = dynamic_cast<const KRView*>(m_firstResponder.get());
        focused && focused->isDescendantOf(view)) {
        m_firstResponder.reset();
    }
    if (KRView* pressed = m_mouseDownView.get(); pressed && pressed->isDescendantOf(view)) {
        m_mouseDownView.reset();
    }
    if (!m_areasContainingMouse.empty()) {
        std::vector<std::shared_ptr<KRTrackingArea>> leaving;
        collectTrackingAreas(view, leaving);
        std::erase_if(m_areasContainingMouse, [&leaving](const std::weak_ptr<KRTrackingArea>& weakArea) {
            const auto area = weakArea.lock();
            return !area || std::find(leaving.begin(), leaving.end(), area) != leaving.end();
        });
    }
}
