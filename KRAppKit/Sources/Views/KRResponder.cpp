#include "Views/KRResponder.h"

#include "Views/KREvent.h"

#include <utility>

namespace {

KRResponder::KeyEventInterpreter& interpreterStorage() {
    static KRResponder::KeyEventInterpreter interpreter;
    return interpreter;
}

bool isInsertable(const KREvent& event) {
    if (event.modifierFlags() & (KREventModifierFlagCommand | KREventModifierFlagControl)) {
        return false;
    }
    return event.typesText();
}

} // namespace

void KRResponder::mouseDown(const KREvent& event) {
    if (KRResponder* next = nextResponder()) {
        next->mouseDown(event);
    }
}

void KRResponder::mouseDragged(const KREvent& event) {
    if (KRResponder* next = nextResponder()) {
        next->mouseDragged(event);
    }
}

void KRResponder::mouseUp(const KREvent& event) {
    if (KRResponder* next = nextResponder()) {
        next->mouseUp(event);
    }
}

void KRResponder::mouseMoved(const KREvent& event) {
    if (KRResponder* next = nextResponder()) {
        next->mouseMoved(event);
    }
}

void KRResponder::mouseEntered(const KREvent& event) {
    if (KRResponder* next = nextResponder()) {
        next->mouseEntered(event);
    }
}

void KRResponder::mouseExited(const KREvent& event) {
    if (KRResponder* next = nextResponder()) {
        next->mouseExited(event);
    }
}

void KRResponder::rightMouseDown(const KREvent& event) {
    if (KRResponder* next = nextResponder()) {
        next->rightMouseDown(event);
    }
}

void KRResponder::rightMouseDragged(const KREvent& event) {
    if (KRResponder* next = nextResponder()) {
        next->rightMouseDragged(event);
    }
}

void KRResponder::rightMouseUp(const KREvent& event) {
    if (KRResponder* next = nextResponder()) {
        next->rightMouseUp(event);
    }
}

void KRResponder::scrollWheel(const KREvent& event) {
    if (KRResponder* next = nextResponder()) {
        next->scrollWheel(event);
    }
}

void KRResponder::keyDown(const KREvent& event) {
    if (KRResponder* next = nextResponder()) {
        next->keyDown(event);
    }
}

void KRResponder::keyUp(const KREvent& event) {
    if (KRResponder* next = nextResponder()) {
        next->keyUp(event);
    }
}

void KRResponder::flagsChanged(const KREvent& event) {
    if (KRResponder* next = nextResponder()) {
        next->flagsChanged(event);
    }
}

void KRResponder::cursorUpdate(const KREvent& event) {
    if (KRResponder* next = nextResponder()) {
        next->cursorUpdate(event);
    }
}

void KRResponder::interpretKeyEvents(const std::vector<KREvent>& events) {
    for (const KREvent& event : events) {
        // Copy: the interpreter may install another one while running.
        if (const KeyEventInterpreter interpreter = interpreterStorage()) {
            interpreter(*this, event);
        } else if (isInsertable(event)) {
            insertText(event.characters());
        } else {
            doCommandBySelector(KRSelector("noop:"));
        }
    }
}

void KRResponder::insertText(const QString& text) {
    if (KRResponder* next = nextResponder()) {
        next->insertText(text);
    }
}

void KRResponder::doCommandBySelector(const KRSelector& selector) {
    if (tryToPerform(selector, this)) {
        return;
    }
    if (KRResponder* next = nextResponder()) {
        next->doCommandBySelector(selector);
    }
}

void KRResponder::setKeyEventInterpreter(KeyEventInterpreter interpreter) {
    interpreterStorage() = std::move(interpreter);
}

const KRResponder::KeyEventInterpreter& KRResponder::keyEventInterpreter() {
    return interpreterStorage();
}
