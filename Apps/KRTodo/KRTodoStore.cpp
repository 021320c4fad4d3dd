#include "KRTodoStore.h"

#include "KRTodoDatabase.h"
#include "KRTodoDefaults.h"
#include "KRTodoUndoStep.h"

#include "KRCheckListFieldEditor.h"
#include "KRCheckListView.h"

#include "Foundation/KRRunLoop.h"

#include <QJsonValue>
#include <QSet>
#include <QUndoStack>

#include <algorithm>
#include <cmath>
#include <iterator>
#include <limits>
#include <utility>

namespace {

// Runs the list's update calls for one change of the items inside an update transaction, opening one
// only if the list is not already in the middle of one.
template <class Updates> void reportToList(KRCheckListView* checkListView, Updates updates) {
    if (!checkListView) {
        return;
    }
    const bool opensTransaction = !checkListView->isUpdating();
    if (opensTransaction) {
        checkListView->beginUpdates();
    }
    updates(*checkListView);
    if (opensTransaction) {
        checkListView->endUpdates();
    }
}

// The indexes of the set that name an item of a collection of `count` items.
KRIndexSet indexesBelow(const KRIndexSet& indexes, KRUInteger count) {
    return indexes.indexSetByIntersectingIndexes(KRIndexSet(KRRange{0, count}));
}

// Where the selected items are after items were inserted at the final positions `inserted`.
KRIndexSet selectionAfterInserting(const KRIndexSet& selected, const KRIndexSet& inserted) {
    KRMutableIndexSet shifted;
    for (KRUInteger index : selected) {
        for (const KRUInteger insertedIndex : inserted) {
            if (insertedIndex > index) {
                break;
            }
            ++index;
        }
        shifted.addIndex(index);
    }
    return shifted;
}

// Where the selected items that remain are after the items at `removed` went away.
KRIndexSet selectionAfterRemoving(const KRIndexSet& selected, const KRIndexSet& removed) {
    KRMutableIndexSet shifted;
    for (const KRUInteger index : selected) {
        if (removed.containsIndex(index)) {
            continue;
        }
        KRUInteger removedBefore = 0;
        for (const KRRange range : removed.ranges()) {
            if (range.location >= index) {
                break;
            }
            removedBefore += range.length;
        }
        shifted.addIndex(index - removedBefore);
    }
    return shifted;
}

// A client that inserts or removes items sets the list's selection itself: the list leaves it as it was.
void followSelection(KRCheckListView* checkListView, const KRIndexSet& selected) {
    if (checkListView && selected != checkListView->indexesForSelectedItems()) {
        checkListView->selectItemsAtIndexesByExtendingSelection(selected, false);
    }
}

// Titles are one paragraph; a dump keeps every item on its own line.
QString titleOnOneLine(QString title) {
    for (const QChar lineBreak :
         {QChar(u'\n'), QChar(u'\r'), QChar(QChar::LineSeparator), QChar(QChar::ParagraphSeparator)}) {
        title.replace(lineBreak, QLatin1Char(' '));
    }
    return title;
}

} // namespace

KRTodoStore::KRTodoStore() : m_undoStack(std::make_unique<QUndoStack>()) {}

KRTodoStore::KRTodoStore(std::vector<KRTodoItem> items)
    : m_items(std::move(items)), m_undoStack(std::make_unique<QUndoStack>()) {
    // Numbered identifiers go on after the highest one already taken, so none is tried twice.
    for (const KRTodoItem& item : m_items) {
        if (item.identifier.startsWith(QLatin1String("todo-"))) {
            bool number = false;
            const KRUInteger value = item.identifier.mid(5).toULongLong(&number);
            if (number && value >= m_nextIdentifierNumber) {
                m_nextIdentifierNumber = value + 1;
            }
        }
    }
    for (KRTodoItem& item : m_items) {
        if (item.identifier.isEmpty()) {
            item.identifier = makeIdentifier();
        }
    }
    renumberPositions();
}

KRTodoStore::~KRTodoStore() {
    endGroupingBatch();
    commitTypedTitles();
    // The steps refer to the store: they go first.
    m_undoStack.reset();
}

std::shared_ptr<KRTodoStore> KRTodoStore::makeStore(std::shared_ptr<KRTodoDatabase> database,
                                                    qint64 checklist, const QString& name) {
    std::vector<KRTodoItemRecord> records = database->items(checklist);
    std::vector<KRTodoItem> items;
    std::vector<double> positions;
    items.reserve(records.size());
    positions.reserve(records.size());
    for (KRTodoItemRecord& record : records) {
        items.push_back(std::move(record.item));
        positions.push_back(record.position);
    }
    auto store = std::make_shared<KRTodoStore>(std::move(items));
    store->m_positions = std::move(positions);
    store->m_database = std::move(database);
    store->m_checklist = checklist;
    store->m_name = name;
    return store;
}

QString KRTodoStore::welcomeChecklistName() {
    return QStringLiteral("To Do");
}

std::vector<KRTodoItem> KRTodoStore::welcomeItems() {
    const std::vector<std::pair<KRUInteger, QString>> checklist = {
        {KRTodoItem::Open, QStringLiteral("Welcome to KRTodo! Type to change an item, Return to add one")},
        {KRTodoItem::Open, QStringLiteral("Click a check box, or press Ctrl+D, to complete an item")},
        {KRTodoItem::Completed, QStringLiteral("Completed items stay until you delete them")},
        {KRTodoItem::Canceled, QStringLiteral("Alt+click a check box, or press Ctrl+Shift+D, to cancel one")},
        {KRTodoItem::Open, QStringLiteral("Drag a handle, or press Ctrl+Up and Ctrl+Down, to move items")},
        {KRTodoItem::Open, QStringLiteral("Everything is saved as you go, and Ctrl+Z undoes any change")},
    };
    std::vector<KRTodoItem> items;
    for (const auto& [status, title] : checklist) {
        items.push_back(KRTodoItem{QString(), status, title});
    }
    return items;
}

std::shared_ptr<KRTodoStore> KRTodoStore::makeSampleStore() {
    return std::make_shared<KRTodoStore>(sampleItems());
}

std::vector<KRTodoItem> KRTodoStore::sampleItems() {
    const std::vector<std::pair<KRUInteger, QString>> checklist = {
        {KRTodoItem::Completed, QStringLiteral("Renew passport")},
        {KRTodoItem::Completed, QStringLiteral("Book flights to Lisbon")},
        {KRTodoItem::Open,
         QStringLiteral("Ask Sam whether the flat in Alfama is still free for the second week "
                        "of May; if it isn't, find two others near a tram stop, with a kitchen "
                        "and a washing machine")},
        {KRTodoItem::Open, QStringLiteral("Buy a travel adapter")},
        {KRTodoItem::Completed, QStringLiteral("Tell the bank the card will be used abroad")},
        {KRTodoItem::Canceled, QStringLiteral("Reserve a table at the fado place Rita recommended")},
        {KRTodoItem::Open, QStringLiteral("Download offline maps of Lisbon and Sintra")},
        {KRTodoItem::Open,
         QStringLiteral("Print the boarding passes and the car rental confirmation and put them "
                        "in the blue folder with the insurance papers")},
        {KRTodoItem::Open, QStringLiteral("Ask the neighbours to water the plants and take in the post")},
        {KRTodoItem::Completed, QStringLiteral("Charge the camera batteries")},
        {KRTodoItem::Open, QStringLiteral("Pack sunscreen, hats and the good walking shoes")},
        {KRTodoItem::Open, QStringLiteral("Set an out-of-office reply")},
    };
    std::vector<KRTodoItem> items;
    for (const auto& [status, title] : checklist) {
        items.push_back(KRTodoItem{QString(), status, title});
    }
    return items;
}

KRTodoItem KRTodoStore::makeItem(const QString& title, KRUInteger status) {
    return KRTodoItem{makeIdentifier(), knownStatus(status), title};
}

// Changes
// -----------------------------------------------------------------------------------------------------

void KRTodoStore::insertItems(std::vector<KRTodoItem> items, const KRIndexSet& indexes,
                              KRCheckListView* checkListView) {
    if (!canChange()) {
        return;
    }
    // Ascending final positions: every smaller new index is already in place when the next one goes in.
    KRMutableIndexSet inserted;
    std::vector<KRTodoItem> insertedItems;
    std::vector<KRTodoItemRecord> records;
    bool renumbered = false;
    std::size_t next = 0;
    for (const KRUInteger index : indexes) {
        KRTodoItem item = next < items.size() ? std::move(items[next]) : makeItem();
        ++next;
        if (item.identifier.isEmpty()) {
            item.identifier = makeIdentifier();
        }
        const KRUInteger position = std::min<KRUInteger>(index, m_items.size());
        double key = positionForInsertAt(position);
        if (std::isnan(key)) {
            renumberPositions();
            renumbered = true;
            key = positionForInsertAt(position);
        }
        m_positions.insert(m_positions.begin() + static_cast<std::ptrdiff_t>(position), key);
        insertedItems.push_back(item);
        records.push_back({item, key});
        m_items.insert(m_items.begin() + static_cast<std::ptrdiff_t>(position), std::move(item));
        inserted.addIndex(position);
    }
    if (inserted.isEmpty()) {
        return;
    }
    if (m_database) {
        m_database->beginBatch();
        if (renumbered) {
            std::vector<std::pair<QString, double>> positions;
            for (std::size_t index = 0; index < m_items.size(); ++index) {
                positions.emplace_back(m_items[index].identifier, m_positions[index]);
            }
            m_database->setPositions(m_checklist, positions);
        }
        m_database->insertItems(m_checklist, records);
        m_database->endBatch();
    }
    record(KRTodoChange{KRTodoChange::Kind::Insert, inserted, insertedItems}, false, checkListView);
    reportToList(checkListView,
                 [&](KRCheckListView& list) { list.updateByInsertingItemsAtIndexes(inserted); });
    if (checkListView && !m_replaying) {
        followSelection(checkListView,
                        selectionAfterInserting(checkListView->indexesForSelectedItems(), inserted));
    }
}

void KRTodoStore::removeItems(const KRIndexSet& indexes, KRCheckListView* checkListView) {
    if (!canChange()) {
        return;
    }
    const KRIndexSet removed = indexesBelow(indexes, m_items.size());
    if (removed.isEmpty()) {
        return;
    }
    std::vector<KRTodoItem> removedItems;
    std::vector<QString> identifiers;
    for (const KRUInteger index : removed) {
        removedItems.push_back(m_items[index]);
        identifiers.push_back(m_items[index].identifier);
    }
    const std::vector<KRUInteger> positions = removed.indexes();
    for (auto position = positions.rbegin(); position != positions.rend(); ++position) {
        m_items.erase(m_items.begin() + static_cast<std::ptrdiff_t>(*position));
        m_positions.erase(m_positions.begin() + static_cast<std::ptrdiff_t>(*position));
    }
    if (m_database) {
        m_database->removeItems(m_checklist, identifiers);
    }
    record(KRTodoChange{KRTodoChange::Kind::Remove, removed, removedItems}, false, checkListView);
    reportToList(checkListView, [&](KRCheckListView& list) { list.updateByRemovingItemsAtIndexes(removed); });
    if (checkListView && !m_replaying) {
        followSelection(checkListView,
                        selectionAfterRemoving(checkListView->indexesForSelectedItems(), removed));
    }
}

void KRTodoStore::moveItems(const KRIndexSet& indexes, KRUInteger toIndex, KRCheckListView* checkListView) {
    if (!canChange()) {
        return;
    }
    const KRIndexSet moved = indexesBelow(indexes, m_items.size());
    if (moved.isEmpty()) {
        return;
    }
    const KRUInteger target = std::min<KRUInteger>(toIndex, m_items.size());
    std::vector<KRTodoItem> block;
    block.reserve(moved.count());
    for (const KRUInteger index : moved) {
        block.push_back(m_items[index]);
    }
    std::vector<KRTodoItem> movedItems = block;
    // The block lands directly before the item that stood at the target, or at the end.
    std::vector<KRTodoItem> reordered;
    std::vector<double> positions;
    reordered.reserve(m_items.size());
    positions.reserve(m_items.size());
    KRUInteger first = 0;
    for (KRUInteger index = 0; index <= m_items.size(); ++index) {
        if (index == target) {
            first = reordered.size();
            std::move(block.begin(), block.end(), std::back_inserter(reordered));
            positions.insert(positions.end(), movedItems.size(), 0.0);
        }
        if (index < m_items.size() && !moved.containsIndex(index)) {
            reordered.push_back(std::move(m_items[index]));
            positions.push_back(m_positions[index]);
        }
    }
    m_items = std::move(reordered);
    m_positions = std::move(positions);
    placeMovedBlock(first, movedItems.size());
    KRTodoChange change{KRTodoChange::Kind::Move, moved, std::move(movedItems)};
    change.toIndex = target;
    record(std::move(change), false, checkListView);
    reportToList(checkListView,
                 [&](KRCheckListView& list) { list.updateByMovingItemsAtIndexesToIndex(moved, target); });
}

void KRTodoStore::setStatus(KRUInteger status, KRUInteger index, KRCheckListView* checkListView) {
    if (!hasItemAtIndex(index) || !canChange()) {
        return;
    }
    KRTodoChange change{KRTodoChange::Kind::Status};
    change.index = index;
    change.oldStatus = m_items[index].status;
    m_items[index].status = knownStatus(status);
    change.newStatus = m_items[index].status;
    if (m_database) {
        m_database->setStatus(m_checklist, m_items[index].identifier, m_items[index].status);
    }
    if (change.oldStatus != change.newStatus) {
        record(std::move(change), false, checkListView);
    }
    reportReloadedItem(index, checkListView);
}

void KRTodoStore::setTitle(const QString& title, KRUInteger index, KRCheckListView* checkListView) {
    if (!hasItemAtIndex(index) || !canChange()) {
        return;
    }
    KRTodoChange change{KRTodoChange::Kind::Title};
    change.index = index;
    change.oldTitle = m_items[index].title;
    change.newTitle = title;
    m_items[index].title = title;
    if (m_database) {
        forgetUncommittedTitle(m_items[index].identifier);
        m_database->setTitles(m_checklist, {{m_items[index].identifier, title}});
    }
    if (change.oldTitle != change.newTitle) {
        record(std::move(change), false, checkListView);
    }
    reportReloadedItem(index, checkListView);
}

void KRTodoStore::reportReloadedItem(KRUInteger index, KRCheckListView* checkListView) {
    reportToList(checkListView, [&](KRCheckListView& list) { list.updateByReloadingItemAtIndex(index); });
}

// Dump
// --------------------------------------------------------------------------------------------------------

QString KRTodoStore::dump() const {
    QString text;
    for (const KRTodoItem& item : m_items) {
        text += statusName(item.status) + QLatin1Char('\t') + titleOnOneLine(item.title) + QLatin1Char('\n');
    }
    return text;
}

QString KRTodoStore::statusName(KRUInteger status) {
    switch (status) {
    case KRTodoItem::Completed:
        return QStringLiteral("completed");
    case KRTodoItem::Canceled:
        return QStringLiteral("canceled");
    default:
        return QStringLiteral("open");
    }
}

void KRTodoStore::setSizeThatFitsChangedHandler(std::function<void(KRCheckListView*)> handler) {
    m_sizeThatFitsChangedHandler = std::move(handler);
}

void KRTodoStore::setDidBeginEditingHandler(std::function<void(KRCheckListView*, KRUInteger)> handler) {
    m_didBeginEditingHandler = std::move(handler);
}

// Identifiers and statuses -------------------------------------------------------------------------------

bool KRTodoStore::hasIdentifier(const QString& identifier) const {
    return std::any_of(m_items.begin(), m_items.end(),
                       [&](const KRTodoItem& item) { return item.identifier == identifier; });
}

QString KRTodoStore::makeIdentifier() {
    QString identifier;
    do {
        identifier = QStringLiteral("todo-%1").arg(m_nextIdentifierNumber++);
    } while (hasIdentifier(identifier));
    return identifier;
}

KRUInteger KRTodoStore::knownStatus(KRUInteger status) {
    return status <= KRTodoItem::Canceled ? status : KRTodoItem::Open;
}

// KRCheckListViewDataSource -------------------------------------------------------------------------------

KRUInteger KRTodoStore::checkListViewNumberOfItems(KRCheckListView*) {
    return m_items.size();
}

QJsonValue KRTodoStore::checkListViewIdentifierForItemAtIndex(KRCheckListView*, KRUInteger index) {
    return hasItemAtIndex(index) ? QJsonValue(m_items[index].identifier) : QJsonValue();
}

KRUInteger KRTodoStore::checkListViewStatusForItemAtIndex(KRCheckListView*, KRUInteger index) {
    return hasItemAtIndex(index) ? m_items[index].status : KRTodoItem::Open;
}

QString KRTodoStore::checkListViewTitleForItemAtIndex(KRCheckListView*, KRUInteger index) {
    return hasItemAtIndex(index) ? m_items[index].title : QString();
}

KRUInteger KRTodoStore::checkListViewValidateChangedStatusForItemAtIndex(KRCheckListView* checkListView,
                                                                         KRUInteger status,
                                                                         KRUInteger index) {
    if (!hasItemAtIndex(index)) {
        return status;
    }
    if (!canChange()) {
        return m_items[index].status;
    }
    KRTodoChange change{KRTodoChange::Kind::Status};
    change.index = index;
    change.oldStatus = m_items[index].status;
    m_items[index].status = knownStatus(status);
    change.newStatus = m_items[index].status;
    if (change.oldStatus != change.newStatus) {
        if (m_database) {
            m_database->setStatus(m_checklist, m_items[index].identifier, change.newStatus);
        }
        record(std::move(change), false, checkListView);
    }
    return m_items[index].status;
}

QString KRTodoStore::checkListViewValidateChangedTitleForItemAtIndex(KRCheckListView* checkListView,
                                                                     const QString& title, KRUInteger index) {
    if (!hasItemAtIndex(index)) {
        return title;
    }
    if (!canChange()) {
        return m_items[index].title;
    }
    if (m_items[index].title == title) {
        return title;
    }
    KRTodoChange change{KRTodoChange::Kind::Title};
    change.index = index;
    change.oldTitle = m_items[index].title;
    change.newTitle = title;
    m_items[index].title = title;
    // Keystrokes are written a moment later, together; a title the list's commands set (a split, a merge)
    // belongs to a structural change and is written with it.
    const bool typing = isTyping(checkListView, title, index);
    if (m_database) {
        if (typing) {
            const QString& identifier = m_items[index].identifier;
            const auto pending = std::find_if(
                m_uncommittedTitles.begin(), m_uncommittedTitles.end(),
                [&](const std::pair<QString, QString>& entry) { return entry.first == identifier; });
            if (pending == m_uncommittedTitles.end()) {
                m_uncommittedTitles.emplace_back(identifier, title);
            } else {
                pending->second = title;
            }
            scheduleTitleCommit();
        } else {
            forgetUncommittedTitle(m_items[index].identifier);
            m_database->setTitles(m_checklist, {{m_items[index].identifier, title}});
        }
    }
    record(std::move(change), typing, checkListView);
    return title;
}

void KRTodoStore::checkListViewInsertItemsAtIndexes(KRCheckListView* checkListView,
                                                    const KRIndexSet& indexes) {
    insertItems({}, indexes, checkListView);
}

void KRTodoStore::checkListViewRemoveItemsAtIndexes(KRCheckListView* checkListView,
                                                    const KRIndexSet& indexes) {
    removeItems(indexes, checkListView);
}

void KRTodoStore::checkListViewMoveItemsAtIndexesToIndex(KRCheckListView* checkListView,
                                                         const KRIndexSet& indexes, KRUInteger toIndex) {
    moveItems(indexes, toIndex, checkListView);
}

void KRTodoStore::checkListViewBeginGrouping(KRCheckListView* checkListView) {
    ++m_openGroupings;
    // Everything up to the end of the grouping is one step.
    closeTypingStep();
    if (m_turnStepNumber == 0) {
        m_turnStepNumber = ++m_lastStepNumber;
        scheduleTurnEnd(checkListView);
    }
    m_turnIsPaste = true;
    // A paste reaches the file whole or not at all.
    if (m_database && !m_groupingBatchOpen) {
        m_database->beginBatch();
        m_groupingBatchOpen = true;
    }
}

void KRTodoStore::checkListViewEndGrouping(KRCheckListView*) {
    if (m_openGroupings > 0) {
        --m_openGroupings;
        ++m_completedGroupings;
    }
    if (m_openGroupings == 0) {
        endGroupingBatch();
    }
}

void KRTodoStore::endGroupingBatch() {
    if (m_groupingBatchOpen) {
        m_groupingBatchOpen = false;
        m_database->endBatch();
    }
}

void KRTodoStore::checkListViewSetStatusForItemAtIndex(KRCheckListView* checkListView, KRUInteger status,
                                                       KRUInteger index) {
    setStatus(status, index, checkListView);
}

void KRTodoStore::checkListViewSetTitleForItemAtIndex(KRCheckListView* checkListView, const QString& title,
                                                      KRUInteger index) {
    setTitle(title, index, checkListView);
}

// KRCheckListViewDelegate ---------------------------------------------------------------------------------

void KRTodoStore::checkListViewDidChangeSizeThatFits(KRCheckListView* checkListView) {
    if (m_sizeThatFitsChangedHandler) {
        m_sizeThatFitsChangedHandler(checkListView);
    }
}

void KRTodoStore::checkListViewDidBeginEditingItemAtIndex(KRCheckListView* checkListView, KRUInteger index) {
    if (m_didBeginEditingHandler) {
        m_didBeginEditingHandler(checkListView, index);
    }
}

// Leftovers and cancel
// ---------------------------------------------------------------------------------------

void KRTodoStore::noteItemInsertedByCommand(KRUInteger index) {
    m_itemInsertedByCommand = hasItemAtIndex(index) ? m_items[index].identifier : QString();
    m_itemInsertedByCommandStep = m_turnStepNumber;
}

KRUInteger KRTodoStore::indexOfIdentifier(const QString& identifier) const {
    const auto item = std::find_if(m_items.begin(), m_items.end(), [&](const KRTodoItem& candidate) {
        return candidate.identifier == identifier;
    });
    return item == m_items.end() ? KRNotFound : static_cast<KRUInteger>(item - m_items.begin());
}

void KRTodoStore::checkListViewDidEndEditingItemAtIndex(KRCheckListView* checkListView, KRUInteger index) {
    if (!hasItemAtIndex(index)) {
        return;
    }
    // An update ends the edit only to begin it again: the typing goes on.
    if (!checkListView->isUpdating() && !m_replaying) {
        if (m_typingIdentifier == m_items[index].identifier) {
            closeTypingStep();
        }
        commitTypedTitles();
    }
    m_itemEndedByCommand = m_items[index].identifier;
    if (m_itemInsertedByCommand != m_items[index].identifier) {
        return;
    }
    // An update ends an edit and begins it again at once: only an edit still ended on the next turn counts.
    const std::weak_ptr<KRTodoStore> weakSelf = weak_from_this();
    const KRWeak<KRCheckListView> weakList(checkListView);
    KRRunLoop::main().performAfterDelay(0.0, [weakSelf, weakList] {
        const std::shared_ptr<KRTodoStore> store = weakSelf.lock();
        if (store && weakList.get()) {
            store->removeItemInsertedByCommandIfStillEmpty(weakList.get());
        }
    });
}

void KRTodoStore::removeItemInsertedByCommandIfStillEmpty(KRCheckListView* checkListView) {
    const KRUInteger index = indexOfIdentifier(m_itemInsertedByCommand);
    if (index == KRNotFound || !m_items[index].title.isEmpty()) {
        m_itemInsertedByCommand.clear();
        return;
    }
    if (checkListView->indexForEditedItem() == index || checkListView->isUpdating()) {
        return;
    }
    m_itemInsertedByCommand.clear();
    // It goes with the step that made it: an item made and left empty leaves no step behind.
    m_mergeIntoStep = m_itemInsertedByCommandStep;
    checkListView->removeItemAtIndex(index);
    m_mergeIntoStep = 0;
}

bool KRTodoStore::checkListViewTextViewDoCommandBySelector(KRCheckListView*, KRTextView*,
                                                           const KRSelector& selector) {
    m_itemEndedByCommand.clear();
    // A line pasted into a title is typed into it, but undoes as the paste it was.
    m_pasting = selector == "paste:";
    return false;
}

void KRTodoStore::checkListViewDidCancelEditing(KRCheckListView* checkListView) {
    KRUInteger index = indexOfIdentifier(m_itemEndedByCommand);
    m_itemEndedByCommand.clear();
    if (index == KRNotFound) {
        return;
    }
    // An empty item an Insert command made goes away on the next turn: its neighbour is selected instead,
    // the one above it where there is one.
    if (m_items[index].identifier == m_itemInsertedByCommand && m_items[index].title.isEmpty()) {
        if (m_items.size() < 2) {
            return;
        }
        index = index > 0 ? index - 1 : index + 1;
    }
    checkListView->selectItemAtIndexByExtendingSelection(index, false);
}

// Persistence
// ------------------------------------------------------------------------------------------------------

bool KRTodoStore::isReadOnly() const {
    return m_database && m_database->isReadOnly();
}

bool KRTodoStore::canChange() const {
    return !isReadOnly();
}

// The order key for an item about to be inserted at index: halfway between its neighbours, one beyond
// the end ones; NaN when the neighbours are too close for one between them.
double KRTodoStore::positionForInsertAt(KRUInteger index) const {
    if (m_positions.empty()) {
        return 1.0;
    }
    if (index == 0) {
        return m_positions.front() - 1.0;
    }
    if (index >= m_positions.size()) {
        return m_positions.back() + 1.0;
    }
    const double below = m_positions[index - 1];
    const double above = m_positions[index];
    const double middle = below + (above - below) / 2.0;
    return middle > below && middle < above ? middle : std::numeric_limits<double>::quiet_NaN();
}

// Order keys for the count items moved to first onwards, evenly between the items around them. Writes
// them, or every key anew when there is no room between the neighbours.
void KRTodoStore::placeMovedBlock(KRUInteger first, KRUInteger count) {
    const bool hasBelow = first > 0;
    const bool hasAbove = first + count < m_positions.size();
    const double below =
        hasBelow ? m_positions[first - 1]
                 : (hasAbove ? m_positions[first + count] : 0.0) - static_cast<double>(count) - 1.0;
    const double above = hasAbove ? m_positions[first + count] : below + static_cast<double>(count) + 1.0;
    const double step = (above - below) / static_cast<double>(count + 1);
    bool room = step > 0.0;
    double previous = below;
    for (KRUInteger offset = 0; offset < count && room; ++offset) {
        const double key = below + step * static_cast<double>(offset + 1);
        room = key > previous && key < above;
        m_positions[first + offset] = key;
        previous = key;
    }
    std::vector<std::pair<QString, double>> written;
    if (room) {
        for (KRUInteger offset = 0; offset < count; ++offset) {
            written.emplace_back(m_items[first + offset].identifier, m_positions[first + offset]);
        }
    } else {
        renumberPositions();
        for (std::size_t index = 0; index < m_items.size(); ++index) {
            written.emplace_back(m_items[index].identifier, m_positions[index]);
        }
    }
    if (m_database) {
        m_database->setPositions(m_checklist, written);
    }
}

void KRTodoStore::renumberPositions() {
    m_positions.resize(m_items.size());
    for (std::size_t index = 0; index < m_positions.size(); ++index) {
        m_positions[index] = static_cast<double>(index + 1);
    }
}

bool KRTodoStore::commitTypedTitles() {
    if (m_uncommittedTitles.empty()) {
        return false;
    }
    ++m_titleCommitGeneration;
    if (m_database) {
        m_database->setTitles(m_checklist, m_uncommittedTitles);
    }
    m_uncommittedTitles.clear();
    return true;
}

// A title written now makes the keystrokes before it old news: a later commit must not bring them back.
void KRTodoStore::forgetUncommittedTitle(const QString& identifier) {
    std::erase_if(m_uncommittedTitles,
                  [&](const std::pair<QString, QString>& entry) { return entry.first == identifier; });
}

// One commit a moment after the last keystroke: each keystroke puts it off again.
void KRTodoStore::scheduleTitleCommit() {
    const int generation = ++m_titleCommitGeneration;
    const std::weak_ptr<KRTodoStore> weakSelf = weak_from_this();
    KRRunLoop::main().performAfterDelay(KRTodoDefaults::typingCommitDelay(), [weakSelf, generation] {
        const std::shared_ptr<KRTodoStore> store = weakSelf.lock();
        if (store && store->m_titleCommitGeneration == generation) {
            store->commitTypedTitles();
        }
    });
}

// Typing changes the edited title to what its field editor holds; the list's commands set titles the
// editor does not hold (yet).
bool KRTodoStore::isTyping(KRCheckListView* checkListView, const QString& title, KRUInteger index) const {
    if (!checkListView || checkListView->indexForEditedItem() != index || checkListView->isUpdating()) {
        return false;
    }
    const std::shared_ptr<KRCheckListFieldEditor>& editor = checkListView->fieldEditor();
    return editor && editor->string() == title;
}

// Undo
// ------------------------------------------------------------------------------------------------------

KRTodoListState KRTodoStore::listState(KRCheckListView* checkListView) const {
    KRTodoListState state;
    if (!checkListView) {
        return state;
    }
    const KRUInteger edited = checkListView->indexForEditedItem();
    if (edited != KRNotFound && hasItemAtIndex(edited)) {
        state.editedIdentifier = m_items[edited].identifier;
        if (checkListView->fieldEditor()) {
            state.selectedRange = checkListView->fieldEditor()->selectedRange();
        }
    }
    for (const KRUInteger index : checkListView->indexesForSelectedItems()) {
        if (hasItemAtIndex(index)) {
            state.selectedIdentifiers << m_items[index].identifier;
        }
    }
    return state;
}

void KRTodoStore::noteInputEvent(KRCheckListView* checkListView) {
    if (m_replaying || (checkListView && checkListView->isUpdating())) {
        return;
    }
    closeTurnStep(checkListView);
    m_pasting = false;
    // A grouping the list never ended (it threw) keeps nothing of the file waiting.
    if (m_groupingBatchOpen) {
        m_openGroupings = 0;
        endGroupingBatch();
    }
    m_stateBeforeInput = listState(checkListView);
    m_hasStateBeforeInput = true;
    // Whatever the last step left settles before the next input (a paste begins its edit a turn later):
    // that is what redoing it puts back.
    if (m_undoStack->index() > 0) {
        auto* step = dynamic_cast<KRTodoUndoStep*>(
            const_cast<QUndoCommand*>(m_undoStack->command(m_undoStack->index() - 1)));
        if (step && step->number() == m_lastStepNumber) {
            step->setStateAfter(m_stateBeforeInput);
        }
    }
}

void KRTodoStore::closeTypingStep() {
    m_typingStepNumber = 0;
    m_typingIdentifier.clear();
}

void KRTodoStore::closeTurnStep(KRCheckListView* checkListView) {
    if (m_turnStepNumber == 0) {
        return;
    }
    // What the action left is what redoing it puts back.
    if (checkListView && m_undoStack->index() > 0) {
        auto* step = dynamic_cast<KRTodoUndoStep*>(
            const_cast<QUndoCommand*>(m_undoStack->command(m_undoStack->index() - 1)));
        if (step && step->number() == m_turnStepNumber) {
            step->setStateAfter(listState(checkListView));
        }
    }
    m_turnStepNumber = 0;
    m_turnIsPaste = false;
}

void KRTodoStore::scheduleTurnEnd(KRCheckListView* checkListView) {
    const std::weak_ptr<KRTodoStore> weakSelf = weak_from_this();
    const KRWeak<KRCheckListView> weakList(checkListView);
    const int number = m_turnStepNumber;
    KRRunLoop::main().performAfterDelay(0.0, [weakSelf, weakList, number] {
        const std::shared_ptr<KRTodoStore> store = weakSelf.lock();
        if (store && store->m_turnStepNumber == number && store->m_openGroupings == 0) {
            store->closeTurnStep(weakList.get());
        }
    });
}

std::vector<KRTodoItemRecord> KRTodoStore::records() const {
    std::vector<KRTodoItemRecord> records;
    records.reserve(m_items.size());
    for (std::size_t index = 0; index < m_items.size(); ++index) {
        records.push_back({m_items[index], index < m_positions.size() ? m_positions[index] : 0.0});
    }
    return records;
}

void KRTodoStore::setItemsChangedHandler(std::function<void()> handler) {
    m_itemsChangedHandler = std::move(handler);
}

void KRTodoStore::record(KRTodoChange change, bool typing, KRCheckListView* checkListView) {
    if (m_itemsChangedHandler && change.kind != KRTodoChange::Kind::Title) {
        m_itemsChangedHandler();
    }
    if (m_replaying) {
        return;
    }
    const KRTodoListState before = m_hasStateBeforeInput ? m_stateBeforeInput : listState(checkListView);
    int number = 0;
    KRTodoUndoStep::Kind kind = KRTodoUndoStep::Kind::Command;
    if (m_mergeIntoStep != 0) {
        number = m_mergeIntoStep;
    } else if (typing && m_turnStepNumber == 0 && !m_pasting) {
        const QString& identifier =
            change.index < m_items.size() ? m_items[change.index].identifier : QString();
        if (m_typingStepNumber == 0 || m_typingIdentifier != identifier) {
            m_typingStepNumber = ++m_lastStepNumber;
            m_typingIdentifier = identifier;
        }
        number = m_typingStepNumber;
        kind = KRTodoUndoStep::Kind::Typing;
    } else {
        closeTypingStep();
        if (m_turnStepNumber == 0) {
            m_turnStepNumber = ++m_lastStepNumber;
            scheduleTurnEnd(checkListView);
        }
        number = m_turnStepNumber;
        if (m_turnIsPaste || m_pasting) {
            kind = KRTodoUndoStep::Kind::Paste;
        }
    }
    auto* step = new KRTodoUndoStep(*this, number, kind, std::move(change), before);
    step->setStateAfter(listState(checkListView));
    m_undoStack->push(step);
}

void KRTodoStore::undo(KRCheckListView* checkListView) {
    noteInputEvent(checkListView);
    closeTypingStep();
    commitTypedTitles();
    if (!m_undoStack->canUndo() || !canChange()) {
        return;
    }
    // The steps report to the list that asked, and only while they run.
    m_replayList = checkListView;
    m_undoStack->undo();
    m_replayList = nullptr;
}

void KRTodoStore::redo(KRCheckListView* checkListView) {
    noteInputEvent(checkListView);
    closeTypingStep();
    commitTypedTitles();
    if (!m_undoStack->canRedo() || !canChange()) {
        return;
    }
    m_replayList = checkListView;
    m_undoStack->redo();
    m_replayList = nullptr;
}

void KRTodoStore::replay(const std::vector<KRTodoChange>& changes, bool forward,
                         const KRTodoListState& state) {
    KRCheckListView* checkListView = m_replayList;
    m_replaying = true;
    if (checkListView && checkListView->indexForEditedItem() != KRNotFound) {
        checkListView->endEditing();
    }
    if (m_database) {
        m_database->beginBatch();
    }
    const bool opensTransaction = checkListView && !checkListView->isUpdating();
    if (opensTransaction) {
        checkListView->beginUpdates();
    }
    if (forward) {
        for (const KRTodoChange& change : changes) {
            applyChange(change, true, checkListView);
        }
    } else {
        for (auto change = changes.rbegin(); change != changes.rend(); ++change) {
            applyChange(*change, false, checkListView);
        }
    }
    if (opensTransaction) {
        checkListView->endUpdates();
    }
    if (m_database) {
        m_database->endBatch();
    }
    m_replaying = false;
    restoreState(state, checkListView);
}

void KRTodoStore::applyChange(const KRTodoChange& change, bool forward, KRCheckListView* checkListView) {
    switch (change.kind) {
    case KRTodoChange::Kind::Insert:
    case KRTodoChange::Kind::Remove:
        // A removal taken back is the same items inserted at the same places, and the other way round.
        if ((change.kind == KRTodoChange::Kind::Insert) == forward) {
            insertItems(change.items, change.indexes, checkListView);
        } else {
            removeItems(change.indexes, checkListView);
        }
        break;
    case KRTodoChange::Kind::Move:
        if (forward) {
            moveItems(change.indexes, change.toIndex, checkListView);
        } else {
            moveBack(change, checkListView);
        }
        break;
    case KRTodoChange::Kind::Status:
        setStatus(forward ? change.newStatus : change.oldStatus, change.index, checkListView);
        break;
    case KRTodoChange::Kind::Title:
        setTitle(forward ? change.newTitle : change.oldTitle, change.index, checkListView);
        break;
    }
}

// A move of scattered items is taken back one item at a time: the order before the move is the one after
// it with the moved items out and back at their old indexes; each item not yet in its place is moved there.
void KRTodoStore::moveBack(const KRTodoChange& change, KRCheckListView* checkListView) {
    std::vector<QString> order;
    order.reserve(m_items.size());
    QSet<QString> moved;
    for (const KRTodoItem& item : change.items) {
        moved.insert(item.identifier);
    }
    for (const KRTodoItem& item : m_items) {
        if (!moved.contains(item.identifier)) {
            order.push_back(item.identifier);
        }
    }
    std::size_t next = 0;
    for (const KRUInteger index : change.indexes) {
        const auto at = std::min<std::size_t>(index, order.size());
        order.insert(order.begin() + static_cast<std::ptrdiff_t>(at), change.items[next++].identifier);
    }
    for (std::size_t place = 0; place < order.size() && place < m_items.size(); ++place) {
        if (m_items[place].identifier == order[place]) {
            continue;
        }
        const KRUInteger from = indexOfIdentifier(order[place]);
        if (from == KRNotFound) {
            continue;
        }
        moveItems(KRIndexSet(from), place, checkListView);
    }
}

void KRTodoStore::restoreState(const KRTodoListState& state, KRCheckListView* checkListView) {
    if (!checkListView) {
        return;
    }
    const KRUInteger edited = indexOfIdentifier(state.editedIdentifier);
    if (!state.editedIdentifier.isEmpty() && edited != KRNotFound) {
        checkListView->beginEditingItemAtIndexSelectRange(edited, state.selectedRange);
        return;
    }
    if (checkListView->indexForEditedItem() != KRNotFound) {
        checkListView->endEditing();
    }
    KRMutableIndexSet selected;
    for (const QString& identifier : state.selectedIdentifiers) {
        const KRUInteger index = indexOfIdentifier(identifier);
        if (index != KRNotFound) {
            selected.addIndex(index);
        }
    }
    checkListView->selectItemsAtIndexesByExtendingSelection(selected, false);
}
