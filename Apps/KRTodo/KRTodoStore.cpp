#include "KRTodoStore.h"

#include "KRCheckListView.h"

#include "Foundation/KRRunLoop.h"

#include <QJsonValue>

#include <algorithm>
#include <iterator>
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

KRTodoStore::KRTodoStore(std::vector<KRTodoItem> items) : m_items(std::move(items)) {
    for (KRTodoItem& item : m_items) {
        if (item.identifier.isEmpty()) {
            item.identifier = makeIdentifier();
        }
    }
}

std::shared_ptr<KRTodoStore> KRTodoStore::makeSampleStore() {
    auto store = std::make_shared<KRTodoStore>();
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
    for (const auto& [status, title] : checklist) {
        store->m_items.push_back(store->makeItem(title, status));
    }
    return store;
}

KRTodoItem KRTodoStore::makeItem(const QString& title, KRUInteger status) {
    return KRTodoItem{makeIdentifier(), knownStatus(status), title};
}

// Changes
// -----------------------------------------------------------------------------------------------------

void KRTodoStore::insertItems(std::vector<KRTodoItem> items, const KRIndexSet& indexes,
                              KRCheckListView* checkListView) {
    // Ascending final positions: every smaller new index is already in place when the next one goes in.
    KRMutableIndexSet inserted;
    std::size_t next = 0;
    for (const KRUInteger index : indexes) {
        KRTodoItem item = next < items.size() ? std::move(items[next]) : makeItem();
        ++next;
        if (item.identifier.isEmpty()) {
            item.identifier = makeIdentifier();
        }
        const KRUInteger position = std::min<KRUInteger>(index, m_items.size());
        m_items.insert(m_items.begin() + static_cast<std::ptrdiff_t>(position), std::move(item));
        inserted.addIndex(position);
    }
    if (inserted.isEmpty()) {
        return;
    }
    reportToList(checkListView,
                 [&](KRCheckListView& list) { list.updateByInsertingItemsAtIndexes(inserted); });
    if (checkListView) {
        followSelection(checkListView,
                        selectionAfterInserting(checkListView->indexesForSelectedItems(), inserted));
    }
}

void KRTodoStore::removeItems(const KRIndexSet& indexes, KRCheckListView* checkListView) {
    const KRIndexSet removed = indexesBelow(indexes, m_items.size());
    if (removed.isEmpty()) {
        return;
    }
    const std::vector<KRUInteger> positions = removed.indexes();
    for (auto position = positions.rbegin(); position != positions.rend(); ++position) {
        m_items.erase(m_items.begin() + static_cast<std::ptrdiff_t>(*position));
    }
    reportToList(checkListView, [&](KRCheckListView& list) { list.updateByRemovingItemsAtIndexes(removed); });
    if (checkListView) {
        followSelection(checkListView,
                        selectionAfterRemoving(checkListView->indexesForSelectedItems(), removed));
    }
}

void KRTodoStore::moveItems(const KRIndexSet& indexes, KRUInteger toIndex, KRCheckListView* checkListView) {
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
    // The block lands directly before the item that stood at the target, or at the end.
    std::vector<KRTodoItem> reordered;
    reordered.reserve(m_items.size());
    for (KRUInteger index = 0; index <= m_items.size(); ++index) {
        if (index == target) {
            std::move(block.begin(), block.end(), std::back_inserter(reordered));
        }
        if (index < m_items.size() && !moved.containsIndex(index)) {
            reordered.push_back(std::move(m_items[index]));
        }
    }
    m_items = std::move(reordered);
    reportToList(checkListView,
                 [&](KRCheckListView& list) { list.updateByMovingItemsAtIndexesToIndex(moved, target); });
}

void KRTodoStore::setStatus(KRUInteger status, KRUInteger index, KRCheckListView* checkListView) {
    if (!hasItemAtIndex(index)) {
        return;
    }
    m_items[index].status = knownStatus(status);
    reportReloadedItem(index, checkListView);
}

void KRTodoStore::setTitle(const QString& title, KRUInteger index, KRCheckListView* checkListView) {
    if (!hasItemAtIndex(index)) {
        return;
    }
    m_items[index].title = title;
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

KRUInteger KRTodoStore::checkListViewValidateChangedStatusForItemAtIndex(KRCheckListView*, KRUInteger status,
                                                                         KRUInteger index) {
    if (!hasItemAtIndex(index)) {
        return status;
    }
    m_items[index].status = knownStatus(status);
    return m_items[index].status;
}

QString KRTodoStore::checkListViewValidateChangedTitleForItemAtIndex(KRCheckListView*, const QString& title,
                                                                     KRUInteger index) {
    if (!hasItemAtIndex(index)) {
        return title;
    }
    m_items[index].title = title;
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

void KRTodoStore::checkListViewBeginGrouping(KRCheckListView*) {
    ++m_openGroupings;
}

void KRTodoStore::checkListViewEndGrouping(KRCheckListView*) {
    if (m_openGroupings > 0) {
        --m_openGroupings;
        ++m_completedGroupings;
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
    checkListView->removeItemAtIndex(index);
}

bool KRTodoStore::checkListViewTextViewDoCommandBySelector(KRCheckListView*, KRTextView*, const KRSelector&) {
    m_itemEndedByCommand.clear();
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
