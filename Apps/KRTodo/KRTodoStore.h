#pragma once

#include "KRTodoItem.h"

#include "KRCheckListViewDataSource.h"
#include "KRCheckListViewDelegate.h"

#include "Foundation/KRIndexSet.h"

#include <QString>

#include <functional>
#include <memory>
#include <vector>

class KRCheckListView;

// The to-do items of one checklist, kept in memory. It is the list's data source and delegate: it answers
// the items, keeps the titles and statuses the user types and clicks, and carries out the insertions,
// removals and moves the list asks for, reporting each one back to the list in an update transaction.
class KRTodoStore : public KRCheckListViewDataSource,
                    public KRCheckListViewDelegate,
                    public std::enable_shared_from_this<KRTodoStore> {
public:
    KRTodoStore() = default;
    // Items without an identifier get a fresh one.
    explicit KRTodoStore(std::vector<KRTodoItem> items);

    // A trip's checklist: a dozen items, some done, one canceled, a few long enough to wrap.
    static std::shared_ptr<KRTodoStore> makeSampleStore();

    const std::vector<KRTodoItem>& items() const { return m_items; }
    KRUInteger count() const { return m_items.size(); }
    // A new open item with an identifier no item of the store has.
    KRTodoItem makeItem(const QString& title = QString(), KRUInteger status = KRTodoItem::Open);

    // Changes of the items. Each one changes the items, then reports the change to checkListView, when
    // there is one, between beginUpdates and endUpdates. Indexes mean what the list's updates take: the
    // final positions of inserted items, the positions before a removal, and for a move both the moved
    // indexes and toIndex counted before the move. After an insertion or a removal the list's selection is
    // set again so that it names the same items (a removed item leaves it).
    void insertItems(std::vector<KRTodoItem> items, const KRIndexSet& indexes,
                     KRCheckListView* checkListView);
    void removeItems(const KRIndexSet& indexes, KRCheckListView* checkListView);
    void moveItems(const KRIndexSet& indexes, KRUInteger toIndex, KRCheckListView* checkListView);
    void setStatus(KRUInteger status, KRUInteger index, KRCheckListView* checkListView);
    void setTitle(const QString& title, KRUInteger index, KRCheckListView* checkListView);

    // One line per item, in order: the status's name, a tab, and the title on one line.
    QString dump() const;
    static QString statusName(KRUInteger status);

    // The item at index was made by an Insert command to be typed into: if its editing ends while its title
    // is still empty, it is removed again on the next turn, so that nothing is left over.
    void noteItemInsertedByCommand(KRUInteger index);
    bool hasItemInsertedByCommand() const { return !m_itemInsertedByCommand.isEmpty(); }

    // A paste brackets its inserts and its removal in one grouping: open while it runs, counted when it ends.
    bool isGrouping() const { return m_openGroupings > 0; }
    KRUInteger completedGroupings() const { return m_completedGroupings; }

    // Called whenever the list's fitting size changes, so that its host can follow it.
    void setSizeThatFitsChangedHandler(std::function<void(KRCheckListView*)> handler);
    // Called whenever the list has begun editing an item, so that its host can show the caret.
    void setDidBeginEditingHandler(std::function<void(KRCheckListView*, KRUInteger)> handler);

    // KRCheckListViewDataSource ---------------------------------------------------------------------------
    KRUInteger checkListViewNumberOfItems(KRCheckListView* checkListView) override;
    QJsonValue checkListViewIdentifierForItemAtIndex(KRCheckListView* checkListView,
                                                     KRUInteger index) override;
    KRUInteger checkListViewStatusForItemAtIndex(KRCheckListView* checkListView, KRUInteger index) override;
    QString checkListViewTitleForItemAtIndex(KRCheckListView* checkListView, KRUInteger index) override;
    KRUInteger checkListViewValidateChangedStatusForItemAtIndex(KRCheckListView* checkListView,
                                                                KRUInteger status, KRUInteger index) override;
    QString checkListViewValidateChangedTitleForItemAtIndex(KRCheckListView* checkListView,
                                                            const QString& title, KRUInteger index) override;
    void checkListViewInsertItemsAtIndexes(KRCheckListView* checkListView,
                                           const KRIndexSet& indexes) override;
    void checkListViewRemoveItemsAtIndexes(KRCheckListView* checkListView,
                                           const KRIndexSet& indexes) override;
    void checkListViewMoveItemsAtIndexesToIndex(KRCheckListView* checkListView, const KRIndexSet& indexes,
                                                KRUInteger toIndex) override;
    void checkListViewBeginGrouping(KRCheckListView* checkListView) override;
    void checkListViewEndGrouping(KRCheckListView* checkListView) override;
    // The toggle commands hand their statuses over only through these.
    void checkListViewSetStatusForItemAtIndex(KRCheckListView* checkListView, KRUInteger status,
                                              KRUInteger index) override;
    void checkListViewSetTitleForItemAtIndex(KRCheckListView* checkListView, const QString& title,
                                             KRUInteger index) override;

    // KRCheckListViewDelegate -----------------------------------------------------------------------------
    void checkListViewDidChangeSizeThatFits(KRCheckListView* checkListView) override;
    void checkListViewDidBeginEditingItemAtIndex(KRCheckListView* checkListView, KRUInteger index) override;
    void checkListViewDidEndEditingItemAtIndex(KRCheckListView* checkListView, KRUInteger index) override;
    // Escape leaves the item that was edited selected, so that the keys go on working on it.
    void checkListViewDidCancelEditing(KRCheckListView* checkListView) override;
    bool checkListViewTextViewDoCommandBySelector(KRCheckListView* checkListView, KRTextView* textView,
                                                  const KRSelector& selector) override;

private:
    bool hasItemAtIndex(KRUInteger index) const { return index < m_items.size(); }
    bool hasIdentifier(const QString& identifier) const;
    QString makeIdentifier();
    static KRUInteger knownStatus(KRUInteger status);
    static void reportReloadedItem(KRUInteger index, KRCheckListView* checkListView);
    KRUInteger indexOfIdentifier(const QString& identifier) const;
    void removeItemInsertedByCommandIfStillEmpty(KRCheckListView* checkListView);

    std::vector<KRTodoItem> m_items;
    KRUInteger m_nextIdentifierNumber = 1;
    KRUInteger m_openGroupings = 0;
    KRUInteger m_completedGroupings = 0;
    QString m_itemInsertedByCommand;
    // The item whose editing the command being handled ended; cleared as each command begins.
    QString m_itemEndedByCommand;
    std::function<void(KRCheckListView*)> m_sizeThatFitsChangedHandler;
    std::function<void(KRCheckListView*, KRUInteger)> m_didBeginEditingHandler;
};
