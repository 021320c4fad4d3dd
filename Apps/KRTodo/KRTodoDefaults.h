#pragma once

#include <QSize>

// The application's own metrics and speeds. No instances and no state.
class KRTodoDefaults {
public:
    KRTodoDefaults() = delete;

    // While a row is dragged near the top or bottom edge of the list's viewport, the viewport scrolls by
    // itself: from the minimum speed where the pointer enters the edge zone up to the maximum at the edge
    // and beyond it (points per second), in steps of one display frame (seconds).
    static double autoScrollEdgeZoneHeight();
    static double autoScrollMinimumSpeed();
    static double autoScrollMaximumSpeed();
    static double autoScrollInterval();

    // Typed titles are written to the database when their editing ends, and at the latest this long
    // (seconds) after the last keystroke.
    static double typingCommitDelay();

    // The checklists' sidebar's width when the window first shows it (the window grows by as much).
    static int sidebarWidth();

    // The first size of the Keyboard Shortcuts window.
    static QSize shortcutsWindowSize();
};
