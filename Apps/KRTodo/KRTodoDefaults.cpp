#include "KRTodoDefaults.h"

double KRTodoDefaults::autoScrollEdgeZoneHeight() {
    return 48.0;
}

double KRTodoDefaults::autoScrollMinimumSpeed() {
    return 60.0;
}

double KRTodoDefaults::autoScrollMaximumSpeed() {
    return 1200.0;
}

double KRTodoDefaults::autoScrollInterval() {
    return 1.0 / 60.0;
}

double KRTodoDefaults::typingCommitDelay() {
    return 0.5;
}

int KRTodoDefaults::sidebarWidth() {
    return 170;
}

QSize KRTodoDefaults::shortcutsWindowSize() {
    return QSize(620, 640);
}
