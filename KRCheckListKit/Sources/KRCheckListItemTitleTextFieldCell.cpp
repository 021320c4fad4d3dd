#include "KRCheckListItemTitleTextFieldCell.h"

#include "Foundation/KRTrace.h"

KRCheckListItemTitleTextFieldCell::KRCheckListItemTitleTextFieldCell(const QString& string)
    : KRTextFieldCell(string) {
    checkListItemTitleTextfieldCellLoad();
}

KRCheckListItemTitleTextFieldCell::~KRCheckListItemTitleTextFieldCell() {
    checkListItemTitleTextfieldCellUnload();
}

void KRCheckListItemTitleTextFieldCell::setDelegate(KRCheckListItemTitleTextFieldCellDelegate* delegate,
                                                    const KRObject* lifetimeOwner) {
    m_delegate.reset(delegate, lifetimeOwner);
}

// Load and unload
// ------------------------------------------------------------------------------------------------------

void KRCheckListItemTitleTextFieldCell::checkListItemTitleTextfieldCellLoad() {
    checkListItemTitleTextfieldCellSetUpSelf();
    checkListItemTitleTextfieldCellHookUp();
}

void KRCheckListItemTitleTextFieldCell::checkListItemTitleTextfieldCellUnload() {
    checkListItemTitleTextfieldCellBreakUp();
    checkListItemTitleTextfieldCellTearDownSelf();
}

void KRCheckListItemTitleTextFieldCell::checkListItemTitleTextfieldCellSetUpSelf() {
    KRTrace::step(this, "checkListItemTitleTextfieldCellSetUpSelf");
}

void KRCheckListItemTitleTextFieldCell::checkListItemTitleTextfieldCellTearDownSelf() {
    KRTrace::step(this, "checkListItemTitleTextfieldCellTearDownSelf");
}

void KRCheckListItemTitleTextFieldCell::checkListItemTitleTextfieldCellHookUp() {
    KRTrace::step(this, "checkListItemTitleTextfieldCellHookUp");
}

void KRCheckListItemTitleTextFieldCell::checkListItemTitleTextfieldCellBreakUp() {
    KRTrace::step(this, "checkListItemTitleTextfieldCellBreakUp");
}

// Editing
// ------------------------------------------------------------------------------------------------------

std::shared_ptr<KRTextView> KRCheckListItemTitleTextFieldCell::fieldEditorForView(KRView* view) {
    if (std::shared_ptr<KRTextView> editor = checkListItemTitleTextFieldCellFieldEditorForView(this, view)) {
        return editor;
    }
    return KRTextFieldCell::fieldEditorForView(view);
}

void KRCheckListItemTitleTextFieldCell::editWithFrameInViewEditorDelegateEvent(
    KRRect frame, KRView* controlView, const std::shared_ptr<KRTextView>& editor, KRTextField* delegate,
    const KREvent* event) {
    KRTextFieldCell::editWithFrameInViewEditorDelegateEvent(frame, controlView, editor, delegate, event);
}

std::shared_ptr<KRTextView>
KRCheckListItemTitleTextFieldCell::checkListItemTitleTextFieldCellFieldEditorForView(
    KRCheckListItemTitleTextFieldCell* cell, KRView* view) {
    KRCheckListItemTitleTextFieldCellDelegate* delegate = m_delegate.get();
    return delegate ? delegate->checkListItemTitleTextFieldCellFieldEditorForView(cell, view) : nullptr;
}

void KRCheckListItemTitleTextFieldCell::sizeMayHaveChanged() {
    if (KRCheckListItemTitleTextFieldCellDelegate* delegate = m_delegate.get()) {
        delegate->checkListItemTitleTextFieldCellSizeMayHaveChanged(this);
    }
}
