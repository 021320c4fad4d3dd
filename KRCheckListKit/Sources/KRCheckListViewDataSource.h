#pragma once

#include "Foundation/KRClientMethods.h"
#include "Foundation/KRIndexSet.h"
#include "Foundation/KRTypes.h"

#include <QJsonValue>
#include <QString>

class KRCheckListView;

// The client that owns a list's items. Pure virtual methods are required; the others are optional, and a
// data source implements one by overriding it (see KRClientMethods). The list holds its data source weakly.
//
// The selection after a change: an update that inserts or removes items leaves the list's selection as it
// was, and a data source that inserts or removes items while some are selected sets the selection again
// itself (selectItemsAtIndexesByExtendingSelection). The list's own commands that remove items (delete,
// cut, the merges of Return and Backspace, a paste that replaces the selection) end with an edited item or
// with nothing selected. A data source that forgets leaves selected numbers that may name other items, or
// none: numbers at or past numberOfItems() are ignored by every command, predicate, key and click (they
// count as not selected) until the selection is next set. A data source that does not carry out an insert
// or removal the list asked for is likewise tolerated: the list then begins no edit on a row that is not
// there, and a split whose new row did not appear leaves the title whole.
//
// Answers out of the ordinary: a status other than 0 (open), 1 (completed) or 2 (canceled) is kept as given
// and drawn like an open one (a click on its check box proposes open). A title is shown as given, however
// long and whatever characters it holds; once it is edited, its line breaks (CR LF, CR) are "\n" and a
// surrogate without its other half is U+FFFD, which is what the validate message then proposes. Items that
// share an identifier are still separate rows.
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
