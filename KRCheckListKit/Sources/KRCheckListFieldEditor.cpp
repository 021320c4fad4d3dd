#include "KRCheckListFieldEditor.h"

#include "KRCheckListItemView.h"

#include "Text/KRTextField.h"

namespace {

const KRSelector& pasteSelector() {
    static const KRSelector selector("paste:");
    return selector;
}

const KRSelector& selectAllSelector() {
    static const KRSelector selector("selectAll:");
    return selector;
}

} // namespace

KRCheckListFieldEditor::KRCheckListFieldEditor(KRRect frame) : KRTextView(frame) {}

KRCheckListFieldEditor::~KRCheckListFieldEditor() = default;

// Mouse
// ------------------------------------------------------------------------------------------------------

void KRCheckListFieldEditor::mouseDown(const KREvent& event) {
    if (!checkListFieldEditorMouseDown(this, event)) {
        KRTextView::mouseDown(event);
    }
}

bool KRCheckListFieldEditor::checkListFieldEditorMouseDown(KRCheckListFieldEditor* fieldEditor,
                                                           const KREvent& event) {
    KRTextViewDelegate* editorDelegate = delegate();
    if (auto* receiver = dynamic_cast<KRCheckListFieldEditorDelegate*>(editorDelegate)) {
        return receiver->checkListFieldEditorMouseDown(fieldEditor, event);
    }
    auto* field = dynamic_cast<KRTextField*>(editorDelegate);
    if (!field) {
        return false;
    }
    KRTextFieldDelegate* fieldDelegate = field->delegate();
    if (auto* receiver = dynamic_cast<KRCheckListFieldEditorDelegate*>(fieldDelegate)) {
        return receiver->checkListFieldEditorMouseDown(fieldEditor, event);
    }
    auto* row = dynamic_cast<KRCheckListItemView*>(fieldDelegate);
    if (!row) {
        return false;
    }
    if (auto* receiver = dynamic_cast<KRCheckListFieldEditorDelegate*>(row->delegate())) {
        return receiver->checkListFieldEditorMouseDown(fieldEditor, event);
    }
    return false;
}

// Geometry
// ------------------------------------------------------------------------------------------------------

void KRCheckListFieldEditor::setFrameSize(KRSize size) {
    KRView* clipView = superview();
    if (auto* field = dynamic_cast<KRTextField*>(clipView ? clipView->superview() : nullptr)) {
        size.width = std::max(size.width, field->frame().size.width);
    }
    KRTextView::setFrameSize(size);
}

// Commands
// ------------------------------------------------------------------------------------------------------

void KRCheckListFieldEditor::paste() {
    doCommandBySelector(pasteSelector());
}

void KRCheckListFieldEditor::selectAll() {
    doCommandBySelector(selectAllSelector());
}

bool KRCheckListFieldEditor::isRoutedCommand(const KRSelector& selector) {
    return selector == pasteSelector() || selector == selectAllSelector();
}

void KRCheckListFieldEditor::doCommandBySelector(const KRSelector& selector) {
    if (!isRoutedCommand(selector)) {
        KRTextView::doCommandBySelector(selector);
        return;
    }
    if (KRTextViewDelegate* delegate = this->delegate()) {
        if (delegate->textViewDoCommandBySelector(this, selector)) {
            return;
        }
    }
    // Nobody took it: the text view's own paste or select-all, without coming back through paste().
    if (!KRTextView::tryToPerform(selector, this)) {
        if (KRResponder* next = nextResponder()) {
            next->doCommandBySelector(selector);
        }
    }
}

bool KRCheckListFieldEditor::tryToPerform(const KRSelector& action, KRObject* sender) {
    if (action == pasteSelector()) {
        paste();
        return true;
    }
    if (action == selectAllSelector()) {
        selectAll();
        return true;
    }
    return KRTextView::tryToPerform(action, sender);
}
