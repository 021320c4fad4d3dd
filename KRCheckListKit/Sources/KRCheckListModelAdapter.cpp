#include "KRCheckListModelAdapter.h"

#include "KRCheckListView.h"

#include <QAbstractItemModel>
#include <QJsonValue>
#include <QMap>

#include <algorithm>
#include <limits>
#include <utility>

namespace {

constexpr KRUInteger kOpen = 0;
constexpr KRUInteger kCompleted = 1;
constexpr KRUInteger kCanceled = 2;

} // namespace

KRCheckListModelAdapter::KRCheckListModelAdapter() = default;

KRCheckListModelAdapter::~KRCheckListModelAdapter() {
    disconnectModel();
}

void KRCheckListModelAdapter::setCheckListView(const std::shared_ptr<KRCheckListView>& checkListView) {
    m_checkListView = checkListView;
    if (checkListView) {
        checkListView->setDataSource(shared_from_this());
        checkListView->setDelegate(shared_from_this());
        reload();
    }
}

void KRCheckListModelAdapter::setModel(QAbstractItemModel* model) {
    if (m_model == model) {
        return;
    }
    disconnectModel();
    m_model = model;
    connectModel();
    reload();
}

void KRCheckListModelAdapter::setTitleRole(int role) {
    m_titleRole = role;
    reload();
}

void KRCheckListModelAdapter::setStatusRole(int role) {
    m_statusRole = role;
    reload();
}

void KRCheckListModelAdapter::setIdentifierRole(int role) {
    m_identifierRole = role;
    reload();
}

KRUInteger KRCheckListModelAdapter::statusForCheckState(const QVariant& checkState) {
    if (!checkState.isValid()) {
        return kOpen;
    }
    switch (checkState.toInt()) {
    case Qt::Checked:
        return kCompleted;
    case Qt::PartiallyChecked:
        return kCanceled;
    default:
        return kOpen;
    }
}

Qt::CheckState KRCheckListModelAdapter::checkStateForStatus(KRUInteger status) {
    switch (status) {
    case kCompleted:
        return Qt::Checked;
    case kCanceled:
        return Qt::PartiallyChecked;
    default:
        return Qt::Unchecked;
    }
}

// Model connection
// ------------------------------------------------------------------------------------------------------

void KRCheckListModelAdapter::connectModel() {
    if (!m_model) {
        return;
    }
    QAbstractItemModel* model = m_model;
    m_connections = {
        connect(model, &QAbstractItemModel::rowsInserted, this, &KRCheckListModelAdapter::modelInsertedRows),
        connect(model, &QAbstractItemModel::rowsRemoved, this, &KRCheckListModelAdapter::modelRemovedRows),
        connect(model, &QAbstractItemModel::rowsMoved, this, &KRCheckListModelAdapter::modelMovedRows),
        connect(model, &QAbstractItemModel::dataChanged, this, &KRCheckListModelAdapter::modelChangedData),
        connect(model, &QAbstractItemModel::modelReset, this, &KRCheckListModelAdapter::reload),
        connect(model, &QAbstractItemModel::layoutAboutToBeChanged, this,
                &KRCheckListModelAdapter::modelWillChangeLayout),
        connect(model, &QAbstractItemModel::layoutChanged, this,
                &KRCheckListModelAdapter::modelChangedLayout),
        connect(model, &QObject::destroyed, this, [this] { reload(); }),
    };
}

void KRCheckListModelAdapter::disconnectModel() {
    for (const QMetaObject::Connection& connection : m_connections) {
        disconnect(connection);
    }
    m_connections.clear();
}

void KRCheckListModelAdapter::reload() {
    const int rows = m_model ? m_model->rowCount() : 0;
    m_identifiers.resize(static_cast<std::size_t>(rows));
    for (quint64& identifier : m_identifiers) {
        identifier = m_nextIdentifier++;
    }
    if (const std::shared_ptr<KRCheckListView> list = m_checkListView.lock()) {
        list->reloadItems();
    }
}

QModelIndex KRCheckListModelAdapter::indexForItem(KRUInteger index) const {
    if (!m_model || index > static_cast<KRUInteger>(std::numeric_limits<int>::max())) {
        return {};
    }
    return m_model->index(static_cast<int>(index), 0);
}

bool KRCheckListModelAdapter::setDataQuietly(const QModelIndex& index, const QVariant& value, int role) {
    const bool wasSetting = std::exchange(m_settingData, true);
    const bool accepted = m_model->setData(index, value, role);
    m_settingData = wasSetting;
    return accepted;
}

// Data source
// ------------------------------------------------------------------------------------------------------

KRUInteger KRCheckListModelAdapter::checkListViewNumberOfItems(KRCheckListView*) {
    return m_model ? static_cast<KRUInteger>(m_model->rowCount()) : 0;
}

QJsonValue KRCheckListModelAdapter::checkListViewIdentifierForItemAtIndex(KRCheckListView*,
                                                                          KRUInteger index) {
    if (m_identifierRole >= 0) {
        return QJsonValue::fromVariant(indexForItem(index).data(m_identifierRole));
    }
    return index < m_identifiers.size() ? QJsonValue(static_cast<qint64>(m_identifiers[index]))
                                        : QJsonValue();
}

KRUInteger KRCheckListModelAdapter::checkListViewStatusForItemAtIndex(KRCheckListView*, KRUInteger index) {
    return statusForCheckState(indexForItem(index).data(m_statusRole));
}

QString KRCheckListModelAdapter::checkListViewTitleForItemAtIndex(KRCheckListView*, KRUInteger index) {
    return indexForItem(index).data(m_titleRole).toString();
}

KRUInteger KRCheckListModelAdapter::checkListViewValidateChangedStatusForItemAtIndex(KRCheckListView*,
                                                                                     KRUInteger status,
                                                                                     KRUInteger index) {
    const QModelIndex item = indexForItem(index);
    if (!item.isValid()) {
        return status;
    }
    setDataQuietly(item, checkStateForStatus(status), m_statusRole);
    return statusForCheckState(item.data(m_statusRole));
}

QString KRCheckListModelAdapter::checkListViewValidateChangedTitleForItemAtIndex(KRCheckListView*,
                                                                                 const QString& title,
                                                                                 KRUInteger index) {
    const QModelIndex item = indexForItem(index);
    if (!item.isValid()) {
        return title;
    }
    setDataQuietly(item, title, m_editRole);
    return item.data(m_titleRole).toString();
}

void KRCheckListModelAdapter::checkListViewSetStatusForItemAtIndex(KRCheckListView*, KRUInteger status,
                                                                   KRUInteger index) {
    // Not quietly: the model's dataChanged is how the list learns of the new status.
    if (const QModelIndex item = indexForItem(index); item.isValid()) {
        m_model->setData(item, checkStateForStatus(status), m_statusRole);
    }
}

void KRCheckListModelAdapter::checkListViewSetTitleForItemAtIndex(KRCheckListView*, const QString& title,
                                                                  KRUInteger index) {
    if (const QModelIndex item = indexForItem(index); item.isValid()) {
        m_model->setData(item, title, m_editRole);
    }
}

// Each run of consecutive indexes is one insertRows; the model's rowsInserted reports it to the list.
void KRCheckListModelAdapter::checkListViewInsertItemsAtIndexes(KRCheckListView*, const KRIndexSet& indexes) {
    if (!m_model) {
        return;
    }
    indexes.enumerateRangesUsingBlock([this](KRRange range, bool*) {
        m_model->insertRows(static_cast<int>(range.location), static_cast<int>(range.length));
    });
}

// From the last run to the first, so the earlier rows keep their numbers.
void KRCheckListModelAdapter::checkListViewRemoveItemsAtIndexes(KRCheckListView*, const KRIndexSet& indexes) {
    if (!m_model) {
        return;
    }
    std::vector<KRRange> ranges;
    indexes.enumerateRangesUsingBlock([&ranges](KRRange range, bool*) { ranges.push_back(range); });
    for (auto range = ranges.rbegin(); range != ranges.rend(); ++range) {
        m_model->removeRows(static_cast<int>(range->location), static_cast<int>(range->length));
    }
}

void KRCheckListModelAdapter::checkListViewMoveItemsAtIndexesToIndex(KRCheckListView*,
                                                                     const KRIndexSet& indexes,
                                                                     KRUInteger toIndex) {
    if (!m_model || indexes.count() == 0) {
        return;
    }
    const KRUInteger first = indexes.firstIndex();
    const bool contiguous = indexes.lastIndex() - first + 1 == indexes.count();
    if (contiguous &&
        m_model->moveRows(QModelIndex(), static_cast<int>(first), static_cast<int>(indexes.count()),
                          QModelIndex(), static_cast<int>(toIndex))) {
        return;
    }
    rewriteRowsInMovedOrder(indexes, toIndex);
}

// For a model that does not move rows: every row between the first moved and the destination takes the
// data of the row that lands there, and the list hears of one move.
void KRCheckListModelAdapter::rewriteRowsInMovedOrder(const KRIndexSet& indexes, KRUInteger toIndex) {
    const KRUInteger count = static_cast<KRUInteger>(m_model->rowCount());
    if (indexes.lastIndex() >= count || toIndex > count) {
        return;
    }
    std::vector<KRUInteger> order;
    order.reserve(count);
    for (KRUInteger row = 0; row < toIndex; ++row) {
        if (!indexes.containsIndex(row)) {
            order.push_back(row);
        }
    }
    indexes.enumerateIndexesUsingBlock([&order](KRUInteger index, bool*) { order.push_back(index); });
    for (KRUInteger row = toIndex; row < count; ++row) {
        if (!indexes.containsIndex(row)) {
            order.push_back(row);
        }
    }
    std::vector<QMap<int, QVariant>> data(count);
    for (KRUInteger row = 0; row < count; ++row) {
        data[row] = m_model->itemData(indexForItem(row));
    }
    const std::vector<quint64> identifiers = m_identifiers;
    const bool wasSetting = std::exchange(m_settingData, true);
    for (KRUInteger row = 0; row < count; ++row) {
        if (order[row] != row) {
            m_model->setItemData(indexForItem(row), data[order[row]]);
            if (row < m_identifiers.size() && order[row] < identifiers.size()) {
                m_identifiers[row] = identifiers[order[row]];
            }
        }
    }
    m_settingData = wasSetting;
    if (const std::shared_ptr<KRCheckListView> list = m_checkListView.lock()) {
        list->beginUpdates();
        list->updateByMovingItemsAtIndexesToIndex(indexes, toIndex);
        list->endUpdates();
    }
}

// Model signals
// ------------------------------------------------------------------------------------------------------

void KRCheckListModelAdapter::modelInsertedRows(const QModelIndex& parent, int first, int last) {
    if (parent.isValid()) {
        return;
    }
    std::vector<quint64> added;
    for (int row = first; row <= last; ++row) {
        added.push_back(m_nextIdentifier++);
    }
    m_identifiers.insert(m_identifiers.begin() + std::min<std::ptrdiff_t>(first, std::ssize(m_identifiers)),
                         added.begin(), added.end());
    if (const std::shared_ptr<KRCheckListView> list = m_checkListView.lock()) {
        list->beginUpdates();
        list->updateByInsertingItemsAtIndexes(
            KRIndexSet(KRRange{static_cast<KRUInteger>(first), static_cast<KRUInteger>(last - first + 1)}));
        list->endUpdates();
    }
}

void KRCheckListModelAdapter::modelRemovedRows(const QModelIndex& parent, int first, int last) {
    if (parent.isValid()) {
        return;
    }
    const auto begin = m_identifiers.begin() + std::min<std::ptrdiff_t>(first, std::ssize(m_identifiers));
    const auto end = m_identifiers.begin() + std::min<std::ptrdiff_t>(last + 1, std::ssize(m_identifiers));
    m_identifiers.erase(begin, end);
    if (const std::shared_ptr<KRCheckListView> list = m_checkListView.lock()) {
        list->beginUpdates();
        list->updateByRemovingItemsAtIndexes(
            KRIndexSet(KRRange{static_cast<KRUInteger>(first), static_cast<KRUInteger>(last - first + 1)}));
        list->endUpdates();
    }
}

// row counts in the order before the move, as the list's toIndex does.
void KRCheckListModelAdapter::modelMovedRows(const QModelIndex& parent, int first, int last,
                                             const QModelIndex& destination, int row) {
    if (parent.isValid() || destination.isValid()) {
        reload();
        return;
    }
    const auto begin = m_identifiers.begin() + first;
    const auto end = m_identifiers.begin() + last + 1;
    if (row < first) {
        std::rotate(m_identifiers.begin() + row, begin, end);
    } else {
        std::rotate(begin, end, m_identifiers.begin() + row);
    }
    if (const std::shared_ptr<KRCheckListView> list = m_checkListView.lock()) {
        list->beginUpdates();
        list->updateByMovingItemsAtIndexesToIndex(
            KRIndexSet(KRRange{static_cast<KRUInteger>(first), static_cast<KRUInteger>(last - first + 1)}),
            static_cast<KRUInteger>(row));
        list->endUpdates();
    }
}

void KRCheckListModelAdapter::modelChangedData(const QModelIndex& topLeft, const QModelIndex& bottomRight,
                                               const QList<int>& roles) {
    if (m_settingData || topLeft.parent().isValid() || topLeft.column() > 0) {
        return;
    }
    const bool shown = roles.isEmpty() || roles.contains(m_titleRole) || roles.contains(m_editRole) ||
                       roles.contains(m_statusRole) ||
                       (m_identifierRole >= 0 && roles.contains(m_identifierRole));
    const std::shared_ptr<KRCheckListView> list = m_checkListView.lock();
    if (!shown || !list) {
        return;
    }
    list->beginUpdates();
    list->updateByReloadingItemsAtIndexes(
        KRIndexSet(KRRange{static_cast<KRUInteger>(topLeft.row()),
                           static_cast<KRUInteger>(bottomRight.row() - topLeft.row() + 1)}));
    list->endUpdates();
}

void KRCheckListModelAdapter::modelWillChangeLayout() {
    m_rowsBeforeLayoutChange.clear();
    for (int row = 0; row < m_model->rowCount(); ++row) {
        m_rowsBeforeLayoutChange << QPersistentModelIndex(m_model->index(row, 0));
    }
    m_identifiersBeforeLayoutChange = m_identifiers;
}

// The rows keep their identifiers in their new places; the list shows the new order from scratch.
void KRCheckListModelAdapter::modelChangedLayout() {
    const int rows = m_model->rowCount();
    std::vector<quint64> identifiers(static_cast<std::size_t>(rows), 0);
    for (qsizetype old = 0; old < m_rowsBeforeLayoutChange.size(); ++old) {
        const QPersistentModelIndex& moved = m_rowsBeforeLayoutChange[old];
        if (moved.isValid() && moved.row() < rows &&
            static_cast<std::size_t>(old) < m_identifiersBeforeLayoutChange.size()) {
            identifiers[static_cast<std::size_t>(moved.row())] =
                m_identifiersBeforeLayoutChange[static_cast<std::size_t>(old)];
        }
    }
    for (quint64& identifier : identifiers) {
        if (identifier == 0) {
            identifier = m_nextIdentifier++;
        }
    }
    m_identifiers = std::move(identifiers);
    m_rowsBeforeLayoutChange.clear();
    if (const std::shared_ptr<KRCheckListView> list = m_checkListView.lock()) {
        list->reloadItems();
    }
}
