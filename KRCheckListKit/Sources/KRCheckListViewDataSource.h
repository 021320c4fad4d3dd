#pragma once

#include "Foundation/KRClientMethods.h"
#include "Foundation/KRIndexSet.h"
#include "Foundation/KRTypes.h"

#include <QJsonValue>
#include <QString>

class KRCheckListView;

// The client that owns a list's items. Pure virtual methods are required; the others are optional, and a
// data source implements one by overriding it (see KRClientMethods). The list holds its data source weakly.
class KRCheckListViewDataSource {
public:
    virtual ~KRCheckListViewDataSource() = default;

    // Required ---------------------------------------------------------------------------------------------
    virtual KRUInteger checkListViewNumberOfItems(KRCheckListView* checkListView) = 0;
    virtual QJsonValue checkListViewIdentifierForItemAtIndex(KRCheckListView* checkListView,
                                                             KRUInteger index) = 0;
    virtual KRUInteger checkListViewStatusForItemAtIndex(KRCheckListView* checkListView,
                                                         KRUInteger index) = 0;
    virtual QString checkListViewTitleForItemAtIndex(KRCheckListView* checkListView, KRUInteger index) = 0;
    // The status to show after a click on a check box proposed one.
    virtual KRUInteger checkListViewValidateChangedStatusForItemAtIndex(KRCheckListView* checkListView,
                                                                        KRUInteger status,
                                                                        KRUInteger index) = 0;
    // The title to keep for one being typed.
    virtual QString checkListViewValidateChangedTitleForItemAtIndex(KRCheckListView* checkListView,
                                                                    const QString& title,
                                                                    KRUInteger index) = 0;
    // The data source changes its items, then reports the change inside beginUpdates/endUpdates.
    virtual void checkListViewInsertItemsAtIndexes(KRCheckListView* checkListView,
                                                   const KRIndexSet& indexes) = 0;
    virtual void checkListViewRemoveItemsAtIndexes(KRCheckListView* checkListView,
                                                   const KRIndexSet& indexes) = 0;
    // toIndex counts in the order before the move.
    virtual void checkListViewMoveItemsAtIndexesToIndex(KRCheckListView* checkListView,
                                                        const KRIndexSet& indexes, KRUInteger toIndex) = 0;

    // Optional ---------------------------------------------------------------------------------------------
    // Bracket a compound change (a paste) that undoes as one step.
    virtual void checkListViewBeginGrouping(KRCheckListView*) {}
    virtual void checkListViewEndGrouping(KRCheckListView*) {}
    // Deprecated: the list logs a warning on every call. They carry the values the list's own setters set.
    virtual void checkListViewSetStatusForItemAtIndex(KRCheckListView*, KRUInteger /*status*/,
                                                      KRUInteger /*index*/) {}
    virtual void checkListViewSetTitleForItemAtIndex(KRCheckListView*, const QString& /*title*/,
                                                     KRUInteger /*index*/) {}
};

#define KR_CHECKLIST_VIEW_DATA_SOURCE_OPTIONAL_METHODS(X)                                                    \
    X(checkListViewBeginGrouping)                                                                            \
    X(checkListViewEndGrouping)                                                                              \
    X(checkListViewSetStatusForItemAtIndex)                                                                  \
    X(checkListViewSetTitleForItemAtIndex)

// The optional methods, numbered for KRClientMethods.
enum class KRCheckListViewDataSourceMethod {
#define KR_ENUMERATE(method) method,
    KR_CHECKLIST_VIEW_DATA_SOURCE_OPTIONAL_METHODS(KR_ENUMERATE)
#undef KR_ENUMERATE
};

// The optional methods that Client overrides.
template <class Client> KRClientMethods KRCheckListViewDataSourceMethodsOf() {
    static_assert(std::is_base_of_v<KRCheckListViewDataSource, Client>);
    KRClientMethods methods;
#define KR_RECORD(method)                                                                                    \
    methods.set(static_cast<std::size_t>(KRCheckListViewDataSourceMethod::method),                           \
                KR_CLIENT_OVERRIDES(Client, KRCheckListViewDataSource, method));
    KR_CHECKLIST_VIEW_DATA_SOURCE_OPTIONAL_METHODS(KR_RECORD)
#undef KR_RECORD
    return methods;
}
