#pragma once

#include "KRCheckListViewDataSource.h"
#include "KRCheckListViewDelegate.h"

#include <QList>
#include <QObject>
#include <QPersistentModelIndex>
#include <QPointer>

#include <memory>
#include <vector>

class KRCheckListView;
class QAbstractItemModel;

// Makes a flat QAbstractItemModel (the rows of its root, column 0) a list's data source and delegate.
//
// An item's title is the row's Qt::DisplayRole, written back with setData on Qt::EditRole; its status is
// Qt::CheckStateRole: Unchecked is open, Checked completed and PartiallyChecked canceled. The roles can be
// changed. Identifiers come from a role of the model when one is set, else the adapter gives each row one
// of its own that follows the row through inserts, removals, moves and layout changes.
//
// What the list asks for goes to the model: inserts through insertRows, removals through removeRows and
// moves through moveRows — or, for a model that does not move rows (QStandardItemModel), by rewriting the
// rows' data in their new order. The model's signals (rowsInserted, rowsRemoved, rowsMoved, dataChanged,
// modelReset, layoutChanged) become the list's update transactions and reloads, so a change made anywhere
// else shows at once. A model that refuses a change leaves the list as it was; a refused title or status
// keeps what the model holds.
class KRCheckListModelAdapter : public QObject,
                                public KRCheckListViewDataSource,
                                public KRCheckListViewDelegate,
                                public std::enable_shared_from_this<KRCheckListModelAdapter> {
public:
    KRCheckListModelAdapter();
    ~KRCheckListModelAdapter() override;

    // Becomes list's data source and delegate (both held weakly by the list) and reloads it.
    void setCheckListView(const std::shared_ptr<KRCheckListView>& checkListView);
    KRCheckListView* checkListView() const { return m_checkListView.lock().get(); }
    // The model is not owned; the list is reloaded when it changes.
    void setModel(QAbstractItemModel* model);
    QAbstractItemModel* model() const { return m_model; }

    int titleRole() const { return m_titleRole; }
    void setTitleRole(int role);
    int editRole() const { return m_editRole; }
    void setEditRole(int role) { m_editRole = role; }
    int statusRole() const { return m_statusRole; }
    void setStatusRole(int role);
    // A negative role (the default) lets the adapter keep the identifiers.
    int identifierRole() const { return m_identifierRole; }
    void setIdentifierRole(int role);

    // The list's statuses and the model's check states.
    static KRUInteger statusForCheckState(const QVariant& checkState);
    static Qt::CheckState checkStateForStatus(KRUInteger status);

    // Data source ----------------------------------------------------------------------------------------
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
    // The list's own toggle commands hand their statuses and titles over through these (it logs that they
    // are deprecated); they go to the model like the validated ones.
    void checkListViewSetStatusForItemAtIndex(KRCheckListView* checkListView, KRUInteger status,
                                              KRUInteger index) override;
    void checkListViewSetTitleForItemAtIndex(KRCheckListView* checkListView, const QString& title,
                                             KRUInteger index) override;

private:
    void connectModel();
    void disconnectModel();
    void reload();
    QModelIndex indexForItem(KRUInteger index) const;
    // Writes a value the list chose; the model's dataChanged for it is not reported back to the list.
    bool setDataQuietly(const QModelIndex& index, const QVariant& value, int role);
    void rewriteRowsInMovedOrder(const KRIndexSet& indexes, KRUInteger toIndex);

    void modelInsertedRows(const QModelIndex& parent, int first, int last);
    void modelRemovedRows(const QModelIndex& parent, int first, int last);
    void modelMovedRows(const QModelIndex& parent, int first, int last, const QModelIndex& destination,
                        int row);
    void modelChangedData(const QModelIndex& topLeft, const QModelIndex& bottomRight,
                          const QList<int>& roles);
    void modelWillChangeLayout();
    void modelChangedLayout();

    std::weak_ptr<KRCheckListView> m_checkListView;
    QPointer<QAbstractItemModel> m_model;
    QList<QMetaObject::Connection> m_connections;
    int m_titleRole = Qt::DisplayRole;
    int m_editRole = Qt::EditRole;
    int m_statusRole = Qt::CheckStateRole;
    int m_identifierRole = -1;
    // The adapter's identifiers, in row order, while it keeps them.
    std::vector<quint64> m_identifiers;
    quint64 m_nextIdentifier = 1;
    // Rows with their identifiers across a layout change.
    QList<QPersistentModelIndex> m_rowsBeforeLayoutChange;
    std::vector<quint64> m_identifiersBeforeLayoutChange;
    bool m_settingData = false;
};
