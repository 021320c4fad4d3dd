#include "Views/KRCursor.h"

#include <utility>

namespace {

KRCursor& currentCursorStorage() {
    static KRCursor cursor = KRCursor::arrowCursor();
    return cursor;
}

std::function<void(KRCursor)>& changeHandler() {
    static std::function<void(KRCursor)> handler;
    return handler;
}

} // namespace

void KRCursor::set() const {
    currentCursorStorage() = *this;
    // Copy first: the handler may replace itself while running.
    if (const auto handler = changeHandler()) {
        handler(*this);
    }
}

KRCursor KRCursor::currentCursor() {
    return currentCursorStorage();
}

void KRCursor::setCursorChangeHandler(std::function<void(KRCursor)> handler) {
    changeHandler() = std::move(handler);
}
