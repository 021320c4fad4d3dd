// KRCheckListView: the item commands on the edited or selected items, and the menu actions.
#include "KRCheckListView.h"

KRUInteger KRCheckListView::targetIndexForInsertingItemAboveEditedOrSelectedItems() const {
    return 0;
}
KRUInteger KRCheckListView::targetIndexForInsertingItemBelowEditedOrSelectedItems() const {
    return 0;
}
KRUInteger KRCheckListView::targetIndexForMovingEditedOrSelectedItemsUp() const {
    return 0;
}
KRUInteger KRCheckListView::targetIndexForMovingEditedOrSelectedItemsDown() const {
    return 0;
}
bool KRCheckListView::canInsertItemTop() const {
    return false;
}
void KRCheckListView::insertItemTop() {}
bool KRCheckListView::canInsertItemBottom() const {
    return false;
}
void KRCheckListView::insertItemBottom() {}
bool KRCheckListView::canInsertItemAboveEditedOrSelectedItems() const {
    return false;
}
void KRCheckListView::insertItemAboveEditedOrSelectedItems() {}
bool KRCheckListView::canInsertItemBelowEditedOrSelectedItems() const {
    return false;
}
void KRCheckListView::insertItemBelowEditedOrSelectedItems() {}
bool KRCheckListView::canMoveEditedOrSelectedItemsTop() const {
    return false;
}
void KRCheckListView::moveEditedOrSelectedItemsTop() {}
bool KRCheckListView::canMoveEditedOrSelectedItemsBottom() const {
    return false;
}
void KRCheckListView::moveEditedOrSelectedItemsBottom() {}
bool KRCheckListView::canMoveEditedOrSelectedItemsUp() const {
    return false;
}
void KRCheckListView::moveEditedOrSelectedItemsUp() {}
bool KRCheckListView::canMoveEditedOrSelectedItemsDown() const {
    return false;
}
void KRCheckListView::moveEditedOrSelectedItemsDown() {}
bool KRCheckListView::canDeleteEditedOrSelectedItemsBackward() const {
    return false;
}
void KRCheckListView::deleteEditedOrSelectedItemsBackward() {}
bool KRCheckListView::canDeleteEditedOrSelectedItemsForward() const {
    return false;
}
void KRCheckListView::deleteEditedOrSelectedItemsForward() {}
bool KRCheckListView::canToggleEditedOrSelectedItemsCompleted() const {
    return false;
}
void KRCheckListView::toggleEditedOrSelectedItemsCompleted() {}
bool KRCheckListView::canToggleEditedOrSelectedItemsCanceled() const {
    return false;
}
void KRCheckListView::toggleEditedOrSelectedItemsCanceled() {}
bool KRCheckListView::checkListViewAllItemsAtIndexesHaveStatus(const KRIndexSet&, KRUInteger) {
    return false;
}
bool KRCheckListView::canCut() const {
    return false;
}
void KRCheckListView::cut() {}
bool KRCheckListView::canCopy() const {
    return false;
}
void KRCheckListView::copy() {}
bool KRCheckListView::canPaste() const {
    return false;
}
void KRCheckListView::paste() {}
bool KRCheckListView::canDelete() const {
    return false;
}
void KRCheckListView::delete_() {}
bool KRCheckListView::canSelectAll() const {
    return false;
}
void KRCheckListView::selectAll() {}
bool KRCheckListView::validateMenuItem(const KRSelector&) const {
    return false;
}
bool KRCheckListView::tryToPerform(const KRSelector& action, KRObject* sender) {
    return KRView::tryToPerform(action, sender);
}
bool KRCheckListView::respondsToSelector(const KRSelector& selector) const {
    return KRView::respondsToSelector(selector);
}

void KRCheckListView::mouseDown(const KREvent& event) {
    KRView::mouseDown(event);
}
void KRCheckListView::mouseDragged(const KREvent& event) {
    KRView::mouseDragged(event);
}
void KRCheckListView::mouseUp(const KREvent& event) {
    KRView::mouseUp(event);
}
bool KRCheckListView::checkListViewHandleMouseClick(const KREvent&) {
    return false;
}
bool KRCheckListView::checkListViewHandleMouseClickForItemAtIndex(const KREvent&, KRUInteger) {
    return true;
}
bool KRCheckListView::checkListViewHandleMouseClickWithShiftKeyPressedForItemAtIndex(const KREvent&,
                                                                                     KRUInteger) {
    return true;
}
bool KRCheckListView::checkListViewHandleMouseClickWithCommandKeyPressedForItemAtIndex(const KREvent&,
                                                                                       KRUInteger) {
    return true;
}
KRPoint KRCheckListView::checkListViewMouseLocationInView(const KRView*) const {
    return KRPointZero;
}
KRView* KRCheckListView::hitTest(KRPoint point) {
    return KRView::hitTest(point);
}
void KRCheckListView::mouseMoved(const KREvent& event) {
    KRView::mouseMoved(event);
}
void KRCheckListView::flagsChanged(const KREvent& event) {
    KRView::flagsChanged(event);
}
void KRCheckListView::beginEditingAtPoint(KRPoint) {}
void KRCheckListView::checkListViewBeginEditingCheckListItemView(KRCheckListItemView*) {}
bool KRCheckListView::isInsertionPointInFirstLine() const {
    return false;
}
bool KRCheckListView::isInsertionPointInLastLine() const {
    return false;
}
void KRCheckListView::checkListViewDetermineWetherInsertionPointIsInFirstLineInLastLine(bool*, bool*) const {}
KRUInteger
KRCheckListView::checkListViewCharacterIndexForInsertionAtPointInTextView(KRPoint, const KRTextView*) const {
    return 0;
}
void KRCheckListView::keyDown(const KREvent& event) {
    KRView::keyDown(event);
}
void KRCheckListView::doCommandBySelector(const KRSelector& selector) {
    KRView::doCommandBySelector(selector);
}
bool KRCheckListView::checkListViewHandleCommand(const KRSelector&) {
    return false;
}
bool KRCheckListView::checkListItemViewTextViewDoCommandBySelector(KRCheckListItemView*, KRTextView*,
                                                                   const KRSelector&) {
    return false;
}
