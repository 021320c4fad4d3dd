#pragma once

#include "Foundation/KRObject.h"
#include "Foundation/KRSelector.h"

#include <QString>

#include <functional>
#include <vector>

class KREvent;

// A link of the responder chain. Unhandled events and commands travel to nextResponder().
class KRResponder : public KRObject {
public:
    virtual KRResponder* nextResponder() const { return nullptr; }

    virtual bool acceptsFirstResponder() const { return false; }
    virtual bool becomeFirstResponder() { return true; }
    virtual bool resignFirstResponder() { return true; }

    // Mouse and key events; the defaults pass the event to nextResponder().
    virtual void mouseDown(const KREvent& event);
    virtual void mouseDragged(const KREvent& event);
    virtual void mouseUp(const KREvent& event);
    virtual void mouseMoved(const KREvent& event);
    virtual void mouseEntered(const KREvent& event);
    virtual void mouseExited(const KREvent& event);
    virtual void rightMouseDown(const KREvent& event);
    virtual void rightMouseDragged(const KREvent& event);
    virtual void rightMouseUp(const KREvent& event);
    virtual void scrollWheel(const KREvent& event);
    virtual void keyDown(const KREvent& event);
    virtual void keyUp(const KREvent& event);
    virtual void flagsChanged(const KREvent& event);
    virtual void cursorUpdate(const KREvent& event);

    // Turns key events into insertText / doCommandBySelector calls through the installed interpreter
    // (the key bindings). Without one, printable characters are inserted and everything else is "noop:".
    virtual void interpretKeyEvents(const std::vector<KREvent>& events);
    virtual void insertText(const QString& text);
    // Performs the command if this responder can (tryToPerform), else passes it up the chain.
    virtual void doCommandBySelector(const KRSelector& selector);

    // The function interpretKeyEvents hands each key event to.
    using KeyEventInterpreter = std::function<void(KRResponder& responder, const KREvent& event)>;
    static void setKeyEventInterpreter(KeyEventInterpreter interpreter);
    static const KeyEventInterpreter& keyEventInterpreter();
};
