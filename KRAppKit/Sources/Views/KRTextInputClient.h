#pragma once

#include "Geometry/KRGeometry.h"

#include <QString>

// What a view that edits text implements so input methods can compose into it. The host widget finds it
// on the window's first responder (a KRView that also derives from this). Committed text arrives through
// KRResponder::insertText, which replaces any marked text.
class KRTextInputClient {
public:
    virtual ~KRTextInputClient() = default;

    // Shows the composition in progress in place of the current marked text (or the selection);
    // cursorPosition is an offset into text. An empty text removes the marked text.
    virtual void setMarkedText(const QString& text, int cursorPosition) = 0;
    // Keeps the marked text as ordinary text and ends the composition.
    virtual void unmarkText() = 0;
    virtual bool hasMarkedText() const { return false; }
    // Where the caret is, in the window's coordinates: input methods place their candidate list there.
    virtual KRRect firstRectForCaret() const = 0;
};
