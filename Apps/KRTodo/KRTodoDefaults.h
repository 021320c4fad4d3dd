#pragma once

#include <QSize>

// The application's own metrics and speeds. No instances and no state.
class KRTodoDefaults {
public:
    KRTodoDefaults() = delete;

    // Typed titles are written to the database when their editing ends, and at the latest this long
    // (seconds) after the last keystroke.
    static double typingCommitDelay();

    // The checklists' sidebar's width when the window first shows it (the window grows by as much).
    static int sidebarWidth();

    // The first size of the Keyboard Shortcuts window.
    static QSize shortcutsWindowSize();
};
