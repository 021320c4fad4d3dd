#pragma once

#include "KRTodoChange.h"
#include "KRTodoItem.h"
#include "KRTodoListState.h"

#include "KRCheckListViewDataSource.h"
#include "KRCheckListViewDelegate.h"

#include "Foundation/KRIndexSet.h"

#include <QString>

#include <functional>
#include <memory>
#include <vector>

class KRCheckListView;
class KRTodoDatabase;
struct KRTodoItemRecord;
class QUndoStack;

// The to-do items of one checklist, kept in memory. It is the list's data source and delegate: it answers
// the items, keeps the titles and statuses the user types and clicks, and carries out the insertions,
// removals and moves the list asks for, reporting each one back to the list in an update transaction.
//
// With a database it writes every change through: structural changes and statuses at once, each one
// committed before the call that made it returns; typed titles when their editing ends and at the latest
// a moment after the last keystroke (KRTodoDefaults::typingCommitDelay). A read-only database makes the
// store refuse every change.
//
// Every change also joins the checklist's undo history: the keystrokes of one editing session of a title
// make one step, and so does everything one input event or one command changes (a split, a merge, a
// paste from its grouping's begin to its end). Undo and redo change the items through the same paths,
// report them to the list in one update transaction and put back the edited item or the selection.
class KRTodoStore : public KRCheckListViewDataSource,
                    public KRCheckListViewDelegate,
                    public std::enable_shared_from_this<KRTodoStore> {
public:
    KRTodoStore();
    // Items without an identifier get a fresh one.
    explicit KRTodoStore(std::vector<KRTodoItem> items);
    ~KRTodoStore() override;

    // The items of a checklist of database, which the store then keeps up to date.
    static std::shared_ptr<KRTodoStore> makeStore(std::shared_ptr<KRTodoDatabase> database, qint64 checklist,
                                                  const QString& name);
    // The first items of a new database, and their checklist's name.
    static std::vector<KRTodoItem> welcomeItems();
    static QString welcomeChecklistName();
    static std::vector<KRTodoItem> sampleItems();

    // The items with their order keys, as the database keeps them.
    std::vector<KRTodoItemRecord> records() const;
    // Called after every change of the items but typing (so that counts of open items can follow).
    void setItemsChangedHandler(std::function<void()> handler);

    const QString& name() const { return m_name; }
    void setName(const QString& name) { m_name = name; }
    qint64 checklist() const { return m_checklist; }
    bool isReadOnly() const;
    // Writes the titles typed since they were last written; answers whether there were any.
    bool commitTypedTitles();
    bool hasUncommittedTitles() const { return !m_uncommittedTitles.empty(); }

    // Undo ------------------------------------------------------------------------------------------------
    QUndoStack& undoStack() const { return *m_undoStack; }
    // Told before each input event and command: the step of the last one is complete, and the list's
    // state now is what undoing the next one puts back.
    void noteInputEvent(KRCheckListView* checkListView);
    void undo(KRCheckListView* checkListView);
    void redo(KRCheckListView* checkListView);
    // Makes the changes again (forward) or takes them back in reverse order, reporting them to the list in
    // one update transaction, then puts state back. Used by the undo steps.
    void replay(const std::vector<KRTodoChange>& changes, bool forward, const KRTodoListState& state);
    KRTodoListState listState(KRCheckListView* checkListView) const;

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
    // Recording and writing
    void record(KRTodoChange change, bool typing, KRCheckListView* checkListView);
    void closeTypingStep();
    void closeTurnStep(KRCheckListView* checkListView);
    void scheduleTurnEnd(KRCheckListView* checkListView);
    void scheduleTitleCommit();
    void forgetUncommittedTitle(const QString& identifier);
    void endGroupingBatch();
    bool isTyping(KRCheckListView* checkListView, const QString& title, KRUInteger index) const;
    void restoreState(const KRTodoListState& state, KRCheckListView* checkListView);
    void applyChange(const KRTodoChange& change, bool forward, KRCheckListView* checkListView);
    void moveBack(const KRTodoChange& change, KRCheckListView* checkListView);
    double positionForInsertAt(KRUInteger index) const;
    void placeMovedBlock(KRUInteger first, KRUInteger count);
    void renumberPositions();
    bool canChange() const;

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

    // Persistence: where the items live and the order keys of m_items, index by index.
    std::shared_ptr<KRTodoDatabase> m_database;
    qint64 m_checklist = 0;
    QString m_name;
    std::vector<double> m_positions;
    std::function<void()> m_itemsChangedHandler;
    std::vector<std::pair<QString, QString>> m_uncommittedTitles;
    int m_titleCommitGeneration = 0;

    // Undo: the history, the numbers of the steps still open (0: none), and the list's state before the
    // input event being handled.
    std::unique_ptr<QUndoStack> m_undoStack;
    KRCheckListView* m_replayList = nullptr;
    bool m_replaying = false;
    int m_lastStepNumber = 0;
    int m_turnStepNumber = 0;
    bool m_turnIsPaste = false;
    // The command being handled is a paste (from the veto the list offers first, until the next input).
    bool m_pasting = false;
    // The writes of a paste are one transaction, from its grouping's begin to its end.
    bool m_groupingBatchOpen = false;
    int m_typingStepNumber = 0;
    QString m_typingIdentifier;
    int m_itemInsertedByCommandStep = 0;
    int m_mergeIntoStep = 0;
    bool m_hasStateBeforeInput = false;
    KRTodoListState m_stateBeforeInput;
};
