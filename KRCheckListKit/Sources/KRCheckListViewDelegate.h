#pragma once

#include "Foundation/KRClientMethods.h"
#include "Foundation/KRIndexSet.h"
#include "Foundation/KRSelector.h"
#include "Foundation/KRTypes.h"

class KRCheckListView;
class KRTextView;
class QUndoStack;

// The client told before and after everything a list does. Every method is optional: a delegate implements
// one by overriding it (see KRClientMethods). The list holds its delegate weakly.
class KRCheckListViewDelegate {
public:
    virtual ~KRCheckListViewDelegate() = default;

    virtual void checkListViewWillReloadItems(KRCheckListView*) {}
    virtual void checkListViewDidReloadItems(KRCheckListView*) {}
    virtual void checkListViewWillBeginUpdates(KRCheckListView*) {}
    virtual void checkListViewDidEndUpdates(KRCheckListView*) {}
    virtual void checkListViewWillUpdateByReloadingItemsAtIndexes(KRCheckListView*, const KRIndexSet&) {}
    virtual void checkListViewDidUpdateByReloadingItemsAtIndexes(KRCheckListView*, const KRIndexSet&) {}
    virtual void checkListViewWillUpdateByInsertingItemsAtIndexes(KRCheckListView*, const KRIndexSet&) {}
    virtual void checkListViewDidUpdateByInsertingItemsAtIndexes(KRCheckListView*, const KRIndexSet&) {}
    virtual void checkListViewWillUpdateByRemovingItemsAtIndexes(KRCheckListView*, const KRIndexSet&) {}
    virtual void checkListViewDidUpdateByRemovingItemsAtIndexes(KRCheckListView*, const KRIndexSet&) {}
    virtual void checkListViewWillUpdateByMovingItemsAtIndexesToIndex(KRCheckListView*, const KRIndexSet&,
                                                                      KRUInteger /*toIndex*/) {}
    virtual void checkListViewDidUpdateByMovingItemsAtIndexesToIndex(KRCheckListView*, const KRIndexSet&,
                                                                     KRUInteger /*toIndex*/) {}

    virtual void checkListViewWillBeginEditingItemAtIndex(KRCheckListView*, KRUInteger) {}
    virtual void checkListViewDidBeginEditingItemAtIndex(KRCheckListView*, KRUInteger) {}
    virtual void checkListViewWillEndEditingItemAtIndex(KRCheckListView*, KRUInteger) {}
    virtual void checkListViewDidEndEditingItemAtIndex(KRCheckListView*, KRUInteger) {}
    virtual void checkListViewWillSelectItemsAtIndexes(KRCheckListView*, const KRIndexSet&) {}
    virtual void checkListViewDidSelectItemsAtIndexes(KRCheckListView*, const KRIndexSet&) {}

    // The list's fitting size changed; a host sizes the list from it.
    virtual void checkListViewDidChangeSizeThatFits(KRCheckListView*) {}

    virtual void checkListViewWillSetStatusForItemAtIndex(KRCheckListView*, KRUInteger) {}
    virtual void checkListViewDidSetStatusForItemAtIndex(KRCheckListView*, KRUInteger) {}
    virtual void checkListViewWillSetTitleForItemAtIndex(KRCheckListView*, KRUInteger) {}
    virtual void checkListViewDidSetTitleForItemAtIndex(KRCheckListView*, KRUInteger) {}
    virtual void checkListViewWillInsertItemsAtIndexes(KRCheckListView*, const KRIndexSet&) {}
    virtual void checkListViewDidInsertItemsAtIndexes(KRCheckListView*, const KRIndexSet&) {}
    virtual void checkListViewWillRemoveItemsAtIndexes(KRCheckListView*, const KRIndexSet&) {}
    virtual void checkListViewDidRemoveItemsAtIndexes(KRCheckListView*, const KRIndexSet&) {}
    virtual void checkListViewWillMoveItemsAtIndexesToIndex(KRCheckListView*, const KRIndexSet&,
                                                            KRUInteger /*toIndex*/) {}
    virtual void checkListViewDidMoveItemsAtIndexesToIndex(KRCheckListView*, const KRIndexSet&,
                                                           KRUInteger /*toIndex*/) {}

    virtual void checkListViewDidCommitEditing(KRCheckListView*) {}
    virtual void checkListViewDidCancelEditing(KRCheckListView*) {}
    virtual void checkListViewWillGainFocus(KRCheckListView*) {}
    virtual void checkListViewDidGainFocus(KRCheckListView*) {}
    virtual void checkListViewWillLoseFocus(KRCheckListView*) {}
    virtual void checkListViewDidLoseFocus(KRCheckListView*) {}

    // True means the delegate performed the command itself.
    virtual bool checkListViewTextViewDoCommandBySelector(KRCheckListView*, KRTextView*, const KRSelector&) {
        return false;
    }
    // Where the field editor registers its undo steps; null means none.
    virtual QUndoStack* checkListViewUndoManagerForTextView(KRCheckListView*, KRTextView*) { return nullptr; }

    // Deprecated: sent after their non-animated twins, always with animated false, and each call is logged.
    virtual void checkListViewWillUpdateByReloadingItemsAtIndexesAnimated(KRCheckListView*, const KRIndexSet&,
                                                                          bool /*animated*/) {}
    virtual void checkListViewDidUpdateByReloadingItemsAtIndexesAnimated(KRCheckListView*, const KRIndexSet&,
                                                                         bool /*animated*/) {}
    virtual void checkListViewWillUpdateByInsertingItemsAtIndexesAnimated(KRCheckListView*, const KRIndexSet&,
                                                                          bool /*animated*/) {}
    virtual void checkListViewDidUpdateByInsertingItemsAtIndexesAnimated(KRCheckListView*, const KRIndexSet&,
                                                                         bool /*animated*/) {}
    virtual void checkListViewWillUpdateByRemovingItemsAtIndexesAnimated(KRCheckListView*, const KRIndexSet&,
                                                                         bool /*animated*/) {}
    virtual void checkListViewDidUpdateByRemovingItemsAtIndexesAnimated(KRCheckListView*, const KRIndexSet&,
                                                                        bool /*animated*/) {}
    virtual void checkListViewWillUpdateByMovingItemsAtIndexesToIndexAnimated(KRCheckListView*,
                                                                              const KRIndexSet&,
                                                                              KRUInteger /*toIndex*/,
                                                                              bool /*animated*/) {}
    virtual void checkListViewDidUpdateByMovingItemsAtIndexesToIndexAnimated(KRCheckListView*,
                                                                             const KRIndexSet&,
                                                                             KRUInteger /*toIndex*/,
                                                                             bool /*animated*/) {}
};

#define KR_CHECKLIST_VIEW_DELEGATE_METHODS(X)                                                                \
    X(checkListViewWillReloadItems)                                                                          \
    X(checkListViewDidReloadItems)                                                                           \
    X(checkListViewWillBeginUpdates)                                                                         \
    X(checkListViewDidEndUpdates)                                                                            \
    X(checkListViewWillUpdateByReloadingItemsAtIndexes)                                                      \
    X(checkListViewDidUpdateByReloadingItemsAtIndexes)                                                       \
    X(checkListViewWillUpdateByInsertingItemsAtIndexes)                                                      \
    X(checkListViewDidUpdateByInsertingItemsAtIndexes)                                                       \
    X(checkListViewWillUpdateByRemovingItemsAtIndexes)                                                       \
    X(checkListViewDidUpdateByRemovingItemsAtIndexes)                                                        \
    X(checkListViewWillUpdateByMovingItemsAtIndexesToIndex)                                                  \
    X(checkListViewDidUpdateByMovingItemsAtIndexesToIndex)                                                   \
    X(checkListViewWillBeginEditingItemAtIndex)                                                              \
    X(checkListViewDidBeginEditingItemAtIndex)                                                               \
    X(checkListViewWillEndEditingItemAtIndex)                                                                \
    X(checkListViewDidEndEditingItemAtIndex)                                                                 \
    X(checkListViewWillSelectItemsAtIndexes)                                                                 \
    X(checkListViewDidSelectItemsAtIndexes)                                                                  \
    X(checkListViewDidChangeSizeThatFits)                                                                    \
    X(checkListViewWillSetStatusForItemAtIndex)                                                              \
    X(checkListViewDidSetStatusForItemAtIndex)                                                               \
    X(checkListViewWillSetTitleForItemAtIndex)                                                               \
    X(checkListViewDidSetTitleForItemAtIndex)                                                                \
    X(checkListViewWillInsertItemsAtIndexes)                                                                 \
    X(checkListViewDidInsertItemsAtIndexes)                                                                  \
    X(checkListViewWillRemoveItemsAtIndexes)                                                                 \
    X(checkListViewDidRemoveItemsAtIndexes)                                                                  \
    X(checkListViewWillMoveItemsAtIndexesToIndex)                                                            \
    X(checkListViewDidMoveItemsAtIndexesToIndex)                                                             \
    X(checkListViewDidCommitEditing)                                                                         \
    X(checkListViewDidCancelEditing)                                                                         \
    X(checkListViewWillGainFocus)                                                                            \
    X(checkListViewDidGainFocus)                                                                             \
    X(checkListViewWillLoseFocus)                                                                            \
    X(checkListViewDidLoseFocus)                                                                             \
    X(checkListViewTextViewDoCommandBySelector)                                                              \
    X(checkListViewUndoManagerForTextView)                                                                   \
    X(checkListViewWillUpdateByReloadingItemsAtIndexesAnimated)                                              \
    X(checkListViewDidUpdateByReloadingItemsAtIndexesAnimated)                                               \
    X(checkListViewWillUpdateByInsertingItemsAtIndexesAnimated)                                              \
    X(checkListViewDidUpdateByInsertingItemsAtIndexesAnimated)                                               \
    X(checkListViewWillUpdateByRemovingItemsAtIndexesAnimated)                                               \
    X(checkListViewDidUpdateByRemovingItemsAtIndexesAnimated)                                                \
    X(checkListViewWillUpdateByMovingItemsAtIndexesToIndexAnimated)                                          \
    X(checkListViewDidUpdateByMovingItemsAtIndexesToIndexAnimated)

// The delegate's methods, numbered for KRClientMethods.
enum class KRCheckListViewDelegateMethod {
#define KR_ENUMERATE(method) method,
    KR_CHECKLIST_VIEW_DELEGATE_METHODS(KR_ENUMERATE)
#undef KR_ENUMERATE
};

// The methods that Client overrides.
template <class Client> KRClientMethods KRCheckListViewDelegateMethodsOf() {
    static_assert(std::is_base_of_v<KRCheckListViewDelegate, Client>);
    KRClientMethods methods;
#define KR_RECORD(method)                                                                                    \
    methods.set(static_cast<std::size_t>(KRCheckListViewDelegateMethod::method),                             \
                KR_CLIENT_OVERRIDES(Client, KRCheckListViewDelegate, method));
    KR_CHECKLIST_VIEW_DELEGATE_METHODS(KR_RECORD)
#undef KR_RECORD
    return methods;
}
