#pragma once

#include "Text/KRTextView.h"

class KRCheckListFieldEditor;

// Takes over clicks in the field editor (the list uses it to move an edit to another row).
class KRCheckListFieldEditorDelegate {
public:
    virtual ~KRCheckListFieldEditorDelegate() = default;

    // Answering true means the click was handled; the editor then does nothing with it.
    virtual bool checkListFieldEditorMouseDown(KRCheckListFieldEditor* fieldEditor, const KREvent& event) = 0;
};

// The one text view that edits every title of a list. Clicks, paste and select-all are offered up the chain
// (field → row → list) before the text view acts on them, and the editor is never narrower than the field
// it edits.
class KRCheckListFieldEditor : public KRTextView {
public:
    explicit KRCheckListFieldEditor(KRRect frame = KRRectZero);
    ~KRCheckListFieldEditor() override;

    void mouseDown(const KREvent& event) override;
    void setFrameSize(KRSize size) override;
    // Paste and select-all, from a menu or a key, travel as commands so the delegates see them.
    void paste();
    void selectAll();
    void doCommandBySelector(const KRSelector& selector) override;
    bool tryToPerform(const KRSelector& action, KRObject* sender) override;

    // The first in the chain editor delegate → its field's delegate → that row's delegate that takes clicks
    // answers; false when none does.
    bool checkListFieldEditorMouseDown(KRCheckListFieldEditor* fieldEditor, const KREvent& event);

private:
    static bool isRoutedCommand(const KRSelector& selector);
};
