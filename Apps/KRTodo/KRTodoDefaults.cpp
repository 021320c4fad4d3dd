#include "KRTodoDefaults.h"

double KRTodoDefaults::typingCommitDelay() {
    return 0.5;
}

int KRTodoDefaults::sidebarWidth() {
    return 170;
}

QSize KRTodoDefaults::shortcutsWindowSize() {
    return QSize(620, 640);
}
