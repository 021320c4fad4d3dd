#pragma once

#include "KRCheckListView.h"

#include <QJsonValue>
#include <QString>

#include <vector>

// The list's items in memory. Insertions and removals the list asks for change the items and are reported
// back in an update transaction, as a real data source does; titles typed are kept.
class KRBenchmarkEditedItems : public KRCheckListViewDataSource {
public:
    struct Item {
        QJsonValue identifier;
        KRUInteger status = 0;
        QString title;
    };

    explicit KRBenchmarkEditedItems(const std::vector<QString>& titles) {
        for (const QString& title : titles) {
            m_items.push_back(makeItem(title));
        }
    }

    const std::vector<Item>& items() const { return m_items; }
    // Replaces every item with fresh ones of these titles.
    void setTitles(const std::vector<QString>& titles) {
        m_items.clear();
        for (const QString& title : titles) {
            m_items.push_back(makeItem(title));
        }
    }

    KRUInteger checkListViewNumberOfItems(KRCheckListView*) override { return m_items.size(); }
    QJsonValue checkListViewIdentifierForItemAtIndex(KRCheckListView*, KRUInteger index) override {
        return m_items[index].identifier;
    }
    KRUInteger checkListViewStatusForItemAtIndex(KRCheckListView*, KRUInteger index) override {
        return m_items[index].status;
    }
    QString checkListViewTitleForItemAtIndex(KRCheckListView*, KRUInteger index) override {
        return m_items[index].title;
    }
    KRUInteger checkListViewValidateChangedStatusForItemAtIndex(KRCheckListView*, KRUInteger status,
                                                                KRUInteger index) override {
        m_items[index].status = status;
        return status;
    }
    QString checkListViewValidateChangedTitleForItemAtIndex(KRCheckListView*, const QString& title,
                                                            KRUInteger index) override {
        m_items[index].title = title;
        return title;
    }
    void checkListViewInsertItemsAtIndexes(KRCheckListView* list, const KRIndexSet& indexes) override {
        for (const KRUInteger index : indexes) {
            m_items.insert(m_items.begin() + static_cast<std::ptrdiff_t>(index), makeItem(QString()));
        }
        list->beginUpdates();
        list->updateByInsertingItemsAtIndexes(indexes);
        list->endUpdates();
    }
    void checkListViewRemoveItemsAtIndexes(KRCheckListView* list, const KRIndexSet& indexes) override {
        const std::vector<KRUInteger> positions = indexes.indexes();
        for (auto position = positions.rbegin(); position != positions.rend(); ++position) {
            m_items.erase(m_items.begin() + static_cast<std::ptrdiff_t>(*position));
        }
        list->beginUpdates();
        list->updateByRemovingItemsAtIndexes(indexes);
        list->endUpdates();
    }
    void checkListViewMoveItemsAtIndexesToIndex(KRCheckListView*, const KRIndexSet&, KRUInteger) override {}

private:
    Item makeItem(const QString& title) { return Item{QJsonValue(m_nextIdentifier++), 0, title}; }

    std::vector<Item> m_items;
    qint64 m_nextIdentifier = 1;
};
