#include "KRCheckListItemTitleTextField.h"

#include "Foundation/KRTrace.h"

// The field's own cell is made and installed by its load.
KRCheckListItemTitleTextField::KRCheckListItemTitleTextField(KRRect frame)
    : KRTextField(frame, WithoutDefaultCell{}) {
    checkListItemTitleTextFieldLoad();
}

KRCheckListItemTitleTextField::~KRCheckListItemTitleTextField() {
    checkListItemTitleTextFieldUnload();
}

KRCheckListItemTitleTextFieldDelegate* KRCheckListItemTitleTextField::delegate() const {
    return dynamic_cast<KRCheckListItemTitleTextFieldDelegate*>(KRTextField::delegate());
}

// Load and unload
// ------------------------------------------------------------------------------------------------------

void KRCheckListItemTitleTextField::checkListItemTitleTextFieldLoad() {
    checkListItemTitleTextFieldSetUpSelf();
    checkListItemTitleTextFieldSetUpCell();
    checkListItemTitleTextFieldHookUp();
}

void KRCheckListItemTitleTextField::checkListItemTitleTextFieldUnload() {
    checkListItemTitleTextFieldBreakUp();
    checkListItemTitleTextFieldTearDownCell();
    checkListItemTitleTextFieldTearDownSelf();
}

void KRCheckListItemTitleTextField::checkListItemTitleTextFieldSetUpSelf() {
    KRTrace::step(this, "checkListItemTitleTextFieldSetUpSelf");
}

void KRCheckListItemTitleTextField::checkListItemTitleTextFieldTearDownSelf() {
    KRTrace::step(this, "checkListItemTitleTextFieldTearDownSelf");
}

void KRCheckListItemTitleTextField::checkListItemTitleTextFieldSetUpCell() {
    KRTrace::step(this, "checkListItemTitleTextFieldSetUpCell");
    m_titleTextFieldCell = std::make_shared<KRCheckListItemTitleTextFieldCell>(QString());
}

void KRCheckListItemTitleTextField::checkListItemTitleTextFieldTearDownCell() {
    KRTrace::step(this, "checkListItemTitleTextFieldTearDownCell");
    m_titleTextFieldCell.reset();
}

void KRCheckListItemTitleTextField::checkListItemTitleTextFieldHookUp() {
    KRTrace::step(this, "checkListItemTitleTextFieldHookUp");
    setCell(m_titleTextFieldCell);
    // The field owns its cell and clears the delegate in its break-up, so nothing needs to watch it.
    m_titleTextFieldCell->setDelegate(static_cast<KRCheckListItemTitleTextFieldCellDelegate*>(this), nullptr);
}

void KRCheckListItemTitleTextField::checkListItemTitleTextFieldBreakUp() {
    KRTrace::step(this, "checkListItemTitleTextFieldBreakUp");
    m_titleTextFieldCell->setDelegate(nullptr);
    setCell(nullptr);
}

// Responder
// ------------------------------------------------------------------------------------------------------

bool KRCheckListItemTitleTextField::becomeFirstResponder() {
    const bool proposed = KRTextField::becomeFirstResponder();
    return checkListItemTitleTextFieldValidateBecomeFirstResponder(this, proposed);
}

bool KRCheckListItemTitleTextField::resignFirstResponder() {
    const bool proposed = KRTextField::resignFirstResponder();
    return checkListItemTitleTextFieldValidateResignFirstResponder(this, proposed);
}

void KRCheckListItemTitleTextField::drawFocusRingMask(QPainter&) {}

// Forwarders
// ------------------------------------------------------------------------------------------------------

std::shared_ptr<KRTextView> KRCheckListItemTitleTextField::checkListItemTitleTextFieldFieldEditorForView(
    KRCheckListItemTitleTextField* field, KRView* view) {
    KRCheckListItemTitleTextFieldDelegate* delegate = this->delegate();
    return delegate ? delegate->checkListItemTitleTextFieldFieldEditorForView(field, view) : nullptr;
}

bool KRCheckListItemTitleTextField::checkListItemTitleTextFieldValidateBecomeFirstResponder(
    KRCheckListItemTitleTextField* field, bool proposed) {
    KRCheckListItemTitleTextFieldDelegate* delegate = this->delegate();
    return delegate ? delegate->checkListItemTitleTextFieldValidateBecomeFirstResponder(field, proposed)
                    : proposed;
}

bool KRCheckListItemTitleTextField::checkListItemTitleTextFieldValidateResignFirstResponder(
    KRCheckListItemTitleTextField* field, bool proposed) {
    KRCheckListItemTitleTextFieldDelegate* delegate = this->delegate();
    return delegate ? delegate->checkListItemTitleTextFieldValidateBecomeFirstResponder(field, proposed)
                    : proposed;
}

std::shared_ptr<KRTextView> KRCheckListItemTitleTextField::checkListItemTitleTextFieldCellFieldEditorForView(
    KRCheckListItemTitleTextFieldCell*, KRView* view) {
    return checkListItemTitleTextFieldFieldEditorForView(this, view);
}

void KRCheckListItemTitleTextField::checkListItemTitleTextFieldCellSizeMayHaveChanged(
    KRCheckListItemTitleTextFieldCell*) {
    if (KRCheckListItemTitleTextFieldDelegate* delegate = this->delegate()) {
        delegate->checkListItemTitleTextFieldSizeMayHaveChanged(this);
    }
}
