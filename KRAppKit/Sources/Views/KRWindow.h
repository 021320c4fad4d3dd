#pragma once

#include "Geometry/KRGeometry.h"
#include "Views/KREvent.h"
#include "Views/KRResponder.h"

#include <functional>
#include <memory>
#include <optional>
#include <vector>

class KRView;
class KRTrackingArea;

// Holds the content view and routes events into it: mouse downs to the view hit, drags and the up to the
// view that took the down, keys to the first responder. Keeps the first responder, the shared field
// editor, the key view loop, the current event and the mapping to screen coordinates. Layout and display
// run in one pass per turn (updateIfNeeded), scheduled on the main run loop when something is marked.
class KRWindow : public KRResponder {
public:
    KRWindow();
    ~KRWindow() override;

    KRView* contentView() const { return m_contentView.get(); }
    void setContentView(std::shared_ptr<KRView> view);

    // First responder ------------------------------------------------------------------------------------
    KRResponder* firstResponder() const;
    // Asks the current first responder to resign and the new one to become; answers false (keeping the
    // old one) when the old one refuses. When the new one refuses, the window itself becomes first
    // responder. Null makes the window first responder.
    bool makeFirstResponder(KRResponder* responder);
    KRResponder* nextResponder() const override { return nullptr; }
    // A Tab (or Shift+Tab) no view took moves along the key view loop.
    void keyDown(const KREvent& event) override;

    // Events ---------------------------------------------------------------------------------------------
    // The event being dispatched (null outside sendEvent).
    const KREvent* currentEvent() const { return m_currentEvent; }
    void sendEvent(const KREvent& event);
    // The view that took the current mouse down (null when no button is held).
    KRView* mouseDownView() const;
    // Hands the rest of the current press, its drags and its release, to view: how a view follows the mouse
    // from press to release without a tracking loop of its own. Answers false when no press is under way.
    bool trackCurrentPressWithView(KRView* view);
    bool isKeyWindow() const { return m_keyWindow; }
    void setKeyWindow(bool key) { m_keyWindow = key; }

    // Field editor ---------------------------------------------------------------------------------------
    // The window's shared text editor for text fields; created on first request when createFlag is true,
    // by the factory the text module installs.
    std::shared_ptr<KRView> fieldEditor(bool createFlag, KRObject* forObject);
    using FieldEditorFactory = std::function<std::shared_ptr<KRView>()>;
    static void setDefaultFieldEditorFactory(FieldEditorFactory factory);
    static bool hasDefaultFieldEditorFactory();

    // Key view loop --------------------------------------------------------------------------------------
    // Walks the views that canBecomeKeyView in tree order (or a view's explicit nextKeyView), wrapping
    // around, and makes the found one first responder. Answers whether one was found.
    bool selectKeyViewFollowingView(KRView* view);
    bool selectKeyViewPrecedingView(KRView* view);
    bool selectNextKeyView() { return selectKeyViewFollowingView(nullptr); }
    bool selectPreviousKeyView() { return selectKeyViewPrecedingView(nullptr); }
    // The first (or last) view of the loop becomes first responder: where the focus enters from outside.
    bool selectFirstKeyView();
    bool selectLastKeyView();
    // A host with controls beside the window is asked before the loop wraps around past its last key view
    // (forward) or its first (backward); it answers true when it took the focus out of the window, and the
    // first responder then stays as it is.
    using KeyViewLoopExitHandler = std::function<bool(bool forward)>;
    void setKeyViewLoopExitHandler(KeyViewLoopExitHandler handler) {
        m_keyViewLoopExitHandler = std::move(handler);
    }

    // Screen mapping -------------------------------------------------------------------------------------
    // Where the window's origin lies on the screen (flipped screen coordinates, points).
    KRPoint screenOrigin() const { return m_screenOrigin; }
    void setScreenOrigin(KRPoint origin) { m_screenOrigin = origin; }
    double backingScaleFactor() const { return m_backingScaleFactor; }
    void setBackingScaleFactor(double scale) { m_backingScaleFactor = scale; }
    KRPoint convertPointToScreen(KRPoint point) const;
    KRPoint convertPointFromScreen(KRPoint point) const;
    KRRect convertRectToScreen(KRRect rect) const;
    KRRect convertRectFromScreen(KRRect rect) const;

    // Layout and display ---------------------------------------------------------------------------------
    // Schedules one pass on the next turn (once, however often it is asked).
    void setNeedsUpdate();
    bool isUpdateScheduled() const { return m_updateScheduled; }
    // Lays out what needs layout, refreshes tracking areas, then reports the dirty region for display.
    void updateIfNeeded();
    void setNeedsDisplayInRect(KRRect rectInWindow);
    // The region marked for display since the last call (null when nothing is dirty); clears it.
    KRRect takeDirtyRect();
    KRRect dirtyRect() const { return m_dirtyRect; }
    // The host repaints when told; tests leave it unset.
    void setDisplayHandler(std::function<void(KRRect dirtyRectInWindow)> handler) {
        m_displayHandler = std::move(handler);
    }
    void viewNeedsTrackingAreaUpdate(KRView* view);
    void viewWillBeRemoved(KRView* view);

    struct AdjacentKeyView {
        KRView* view = nullptr;
        bool wrapped = false; // reached by going round past the end (or the start) of the tree
    };

private:
    bool moveFocusToKeyView(const AdjacentKeyView& found, bool forward);
    void dispatchMouseDown(const KREvent& event);
    void dispatchMouseDragOrUp(const KREvent& event);
    void dispatchMouseMoved(const KREvent& event);
    void dispatchKey(const KREvent& event);
    void updateTrackingAreaStates(const KREvent& event);
    std::vector<KRView*> keyViewLoop() const;

    std::shared_ptr<KRView> m_contentView;
    KRWeak<KRResponder> m_firstResponder;
    KRWeak<KRView> m_mouseDownView;
    const KREvent* m_currentEvent = nullptr;
    std::shared_ptr<KRView> m_fieldEditor;
    std::vector<std::weak_ptr<KRTrackingArea>> m_areasContainingMouse; // tree order, back to front
    std::weak_ptr<KRTrackingArea> m_cursorArea; // the area whose cursorUpdate set the cursor last
    std::function<void(KRRect)> m_displayHandler;
    KeyViewLoopExitHandler m_keyViewLoopExitHandler;
    KRPoint m_screenOrigin;
    KRRect m_dirtyRect;
    double m_backingScaleFactor = 1.0;
    bool m_keyWindow = true;
    bool m_updateScheduled = false;
};
