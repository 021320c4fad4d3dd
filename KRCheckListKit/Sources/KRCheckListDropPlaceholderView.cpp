#include "KRCheckListDropPlaceholderView.h"

#include "KRCheckListDefaults.h"

#include "Foundation/KRTrace.h"

KRCheckListDropPlaceholderView::KRCheckListDropPlaceholderView(KRRect frame) : KRView(frame) {
    checkListDropPlaceholderViewLoad();
}

KRCheckListDropPlaceholderView::~KRCheckListDropPlaceholderView() {
    checkListDropPlaceholderViewUnload();
}

void KRCheckListDropPlaceholderView::checkListDropPlaceholderViewLoad() {
    checkListDropPlaceholderViewSetUpSelf();
    checkListDropPlaceholderViewHookUp();
}

void KRCheckListDropPlaceholderView::checkListDropPlaceholderViewUnload() {
    checkListDropPlaceholderViewBreakUp();
    checkListDropPlaceholderViewTearDownSelf();
}

void KRCheckListDropPlaceholderView::checkListDropPlaceholderViewSetUpSelf() {
    KRTrace::step(this, "checkListDropPlaceholderViewSetUpSelf");
    setCornerRadius(KRCheckListDefaults::cornerRadius());
    setBackgroundColor(KRCheckListDefaults::dropPlaceholderColor());
}

void KRCheckListDropPlaceholderView::checkListDropPlaceholderViewTearDownSelf() {
    KRTrace::step(this, "checkListDropPlaceholderViewTearDownSelf");
    setBackgroundColor(QColor());
}

// Hooks kept as named steps so that set-up and tear-down stay symmetric; a placeholder wires up nothing.
void KRCheckListDropPlaceholderView::checkListDropPlaceholderViewHookUp() {
    KRTrace::step(this, "checkListDropPlaceholderViewHookUp");
}

void KRCheckListDropPlaceholderView::checkListDropPlaceholderViewBreakUp() {
    KRTrace::step(this, "checkListDropPlaceholderViewBreakUp");
}

KRSize KRCheckListDropPlaceholderView::sizeThatFits(KRSize) const {
    return KRSize{KRCheckListDefaults::dropPlaceholderWidth(), KRCheckListDefaults::itemHeight()};
}
