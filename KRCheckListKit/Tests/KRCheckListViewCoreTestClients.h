#pragma once

// Clients for the list's lifecycle and editing tests: a data source holding items in memory and a delegate
// that records every message into a log shared with the data source, so the order across both shows.
// (Named apart from the edge-case tests' own support, which lives in KRCheckListViewTestSupport.h.)

#include "KRCheckListKit.h"

#include "Foundation/KRIndexSet.h"

#include <QJsonValue>
#include <QString>
#include <QStringList>

#include <functional>
#include <memory>
#include <string>
#include <vector>

namespace KRCheckListViewCoreTesting {

// The order of every message, as "method arguments".
struct MessageLog {
    QStringList lines;
    // Called with each line as it is logged, to look at the list at that moment.
    std::function<void(const QString& line)> onMessage;

    void add(const QString& line) {
        lines << line;
        if (onMessage) {
            onMessage(line);
        }
    }
    // The lines whose method starts with prefix.
    QStringList filtered(const QString& prefix) const {
        QStringList result;
        for (const QString& line : lines) {
            if (line.startsWith(prefix)) {
                result << line;
            }
        }
        return result;
    }
    void clear() { lines.clear(); }
};

// One line per message, for readable comparisons in test failures.
inline std::string joinedLines(const QStringList& lines) {
    return lines.join(QLatin1Char('\n')).toStdString();
}
#define KR_CORE_EXPECT_LINES(actual, expected)                                                               \
    EXPECT_EQ(KRCheckListViewCoreTesting::joinedLines(actual),                                               \
              KRCheckListViewCoreTesting::joinedLines(expected))

inline QString indexesText(const KRIndexSet& indexes) {
    return indexes.description();
}

struct Item {
    QJsonValue identifier;
    KRUInteger status = 0;
    QString title;
};

// Answers from its items. It implements the required methods only; the question for every row is logged
// only when logQueries is set. Insert, remove and move change the items and report the change in an
// update transaction at once.
class MemoryDataSource : public KRCheckListViewDataSource {
public:
    explicit MemoryDataSource(std::shared_ptr<MessageLog> messageLog) : log(std::move(messageLog)) {}

    static std::vector<Item> items(const QStringList& titles) {
        std::vector<Item> result;
        for (qsizetype index = 0; index < titles.size(); ++index) {
            result.push_back(Item{QJsonValue(QStringLiteral("item-%1").arg(index)), 0, titles.at(index)});
        }
        return result;
    }

    KRUInteger checkListViewNumberOfItems(KRCheckListView*) override {
        log->add(QStringLiteral("checkListViewNumberOfItems"));
        return itemList.size();
    }
    QJsonValue checkListViewIdentifierForItemAtIndex(KRCheckListView*, KRUInteger index) override {
        logQuery(QStringLiteral("checkListViewIdentifierForItemAtIndex %1").arg(index));
        return itemList.at(index).identifier;
    }
    KRUInteger checkListViewStatusForItemAtIndex(KRCheckListView*, KRUInteger index) override {
        logQuery(QStringLiteral("checkListViewStatusForItemAtIndex %1").arg(index));
        return itemList.at(index).status;
    }
    QString checkListViewTitleForItemAtIndex(KRCheckListView*, KRUInteger index) override {
        logQuery(QStringLiteral("checkListViewTitleForItemAtIndex %1").arg(index));
        return itemList.at(index).title;
    }
    KRUInteger checkListViewValidateChangedStatusForItemAtIndex(KRCheckListView*, KRUInteger status,
                                                                KRUInteger index) override {
        log->add(
            QStringLiteral("checkListViewValidateChangedStatusForItemAtIndex %1 %2").arg(status).arg(index));
        return statusAnswer ? statusAnswer(status) : status;
    }
    QString checkListViewValidateChangedTitleForItemAtIndex(KRCheckListView*, const QString& title,
                                                            KRUInteger index) override {
        log->add(
            QStringLiteral("checkListViewValidateChangedTitleForItemAtIndex %1 %2").arg(title).arg(index));
        return titleAnswer ? titleAnswer(title) : title;
    }
    void checkListViewInsertItemsAtIndexes(KRCheckListView* list, const KRIndexSet& indexes) override {
        log->add(QStringLiteral("checkListViewInsertItemsAtIndexes %1").arg(indexesText(indexes)));
        for (const KRUInteger index : indexes) {
            itemList.insert(itemList.begin() + static_cast<std::ptrdiff_t>(index),
                            Item{QJsonValue(QStringLiteral("new-%1").arg(nextIdentifier++)), 0, QString()});
        }
        list->beginUpdates();
        list->updateByInsertingItemsAtIndexes(indexes);
        list->endUpdates();
    }
    void checkListViewRemoveItemsAtIndexes(KRCheckListView* list, const KRIndexSet& indexes) override {
        log->add(QStringLiteral("checkListViewRemoveItemsAtIndexes %1").arg(indexesText(indexes)));
        const std::vector<KRUInteger> removed = indexes.indexes();
        for (auto it = removed.rbegin(); it != removed.rend(); ++it) {
            itemList.erase(itemList.begin() + static_cast<std::ptrdiff_t>(*it));
        }
        list->beginUpdates();
        list->updateByRemovingItemsAtIndexes(indexes);
        list->endUpdates();
    }
    void checkListViewMoveItemsAtIndexesToIndex(KRCheckListView* list, const KRIndexSet& indexes,
                                                KRUInteger toIndex) override {
        log->add(QStringLiteral("checkListViewMoveItemsAtIndexesToIndex %1 %2")
                     .arg(indexesText(indexes))
                     .arg(toIndex));
        std::vector<Item> moved;
        std::vector<Item> rest;
        KRUInteger restBeforeTarget = 0;
        for (KRUInteger index = 0; index < itemList.size(); ++index) {
            if (indexes.containsIndex(index)) {
                moved.push_back(itemList[index]);
            } else {
                rest.push_back(itemList[index]);
                restBeforeTarget += index < toIndex ? 1 : 0;
            }
        }
        rest.insert(rest.begin() + static_cast<std::ptrdiff_t>(restBeforeTarget), moved.begin(), moved.end());
        itemList = rest;
        list->beginUpdates();
        list->updateByMovingItemsAtIndexesToIndex(indexes, toIndex);
        list->endUpdates();
    }

    std::shared_ptr<MessageLog> log;
    std::vector<Item> itemList;
    bool logQueries = false;
    std::function<KRUInteger(KRUInteger)> statusAnswer;
    std::function<QString(const QString&)> titleAnswer;

private:
    void logQuery(const QString& line) {
        if (logQueries) {
            log->add(line);
        }
    }
    int nextIdentifier = 0;
};

// A data source that also has the optional methods, the two deprecated setters among them.
class MemoryDataSourceWithSetters : public MemoryDataSource {
public:
    using MemoryDataSource::MemoryDataSource;

    void checkListViewBeginGrouping(KRCheckListView*) override {
        log->add(QStringLiteral("checkListViewBeginGrouping"));
    }
    void checkListViewEndGrouping(KRCheckListView*) override {
        log->add(QStringLiteral("checkListViewEndGrouping"));
    }
    void checkListViewSetStatusForItemAtIndex(KRCheckListView*, KRUInteger status,
                                              KRUInteger index) override {
        log->add(QStringLiteral("checkListViewSetStatusForItemAtIndex %1 %2").arg(status).arg(index));
    }
    void checkListViewSetTitleForItemAtIndex(KRCheckListView*, const QString& title,
                                             KRUInteger index) override {
        log->add(QStringLiteral("checkListViewSetTitleForItemAtIndex %1 %2").arg(title).arg(index));
    }
};

// Implements every method of the delegate, deprecated ones included, and logs each call.
class RecordingDelegate : public KRCheckListViewDelegate {
public:
    explicit RecordingDelegate(std::shared_ptr<MessageLog> messageLog) : log(std::move(messageLog)) {}

#define KR_RECORD_LIST(method)                                                                               \
    void method(KRCheckListView*) override {                                                                 \
        log->add(QStringLiteral(#method));                                                                   \
    }
#define KR_RECORD_INDEXES(method)                                                                            \
    void method(KRCheckListView*, const KRIndexSet& indexes) override {                                      \
        log->add(QStringLiteral(#method " %1").arg(indexesText(indexes)));                                   \
    }
#define KR_RECORD_INDEX(method)                                                                              \
    void method(KRCheckListView*, KRUInteger index) override {                                               \
        log->add(QStringLiteral(#method " %1").arg(index));                                                  \
    }
#define KR_RECORD_INDEXES_TO_INDEX(method)                                                                   \
    void method(KRCheckListView*, const KRIndexSet& indexes, KRUInteger toIndex) override {                  \
        log->add(QStringLiteral(#method " %1 %2").arg(indexesText(indexes)).arg(toIndex));                   \
    }
#define KR_RECORD_INDEXES_ANIMATED(method)                                                                   \
    void method(KRCheckListView*, const KRIndexSet& indexes, bool animated) override {                       \
        log->add(QStringLiteral(#method " %1 %2").arg(indexesText(indexes)).arg(animated));                  \
    }
#define KR_RECORD_INDEXES_TO_INDEX_ANIMATED(method)                                                          \
    void method(KRCheckListView*, const KRIndexSet& indexes, KRUInteger toIndex, bool animated) override {   \
        log->add(QStringLiteral(#method " %1 %2 %3").arg(indexesText(indexes)).arg(toIndex).arg(animated));  \
    }

    KR_RECORD_LIST(checkListViewWillReloadItems)
    KR_RECORD_LIST(checkListViewDidReloadItems)
    KR_RECORD_LIST(checkListViewWillBeginUpdates)
    KR_RECORD_LIST(checkListViewDidEndUpdates)
    KR_RECORD_INDEXES(checkListViewWillUpdateByReloadingItemsAtIndexes)
    KR_RECORD_INDEXES(checkListViewDidUpdateByReloadingItemsAtIndexes)
    KR_RECORD_INDEXES(checkListViewWillUpdateByInsertingItemsAtIndexes)
    KR_RECORD_INDEXES(checkListViewDidUpdateByInsertingItemsAtIndexes)
    KR_RECORD_INDEXES(checkListViewWillUpdateByRemovingItemsAtIndexes)
    KR_RECORD_INDEXES(checkListViewDidUpdateByRemovingItemsAtIndexes)
    KR_RECORD_INDEXES_TO_INDEX(checkListViewWillUpdateByMovingItemsAtIndexesToIndex)
    KR_RECORD_INDEXES_TO_INDEX(checkListViewDidUpdateByMovingItemsAtIndexesToIndex)
    KR_RECORD_INDEX(checkListViewWillBeginEditingItemAtIndex)
    KR_RECORD_INDEX(checkListViewDidBeginEditingItemAtIndex)
    KR_RECORD_INDEX(checkListViewWillEndEditingItemAtIndex)
    KR_RECORD_INDEX(checkListViewDidEndEditingItemAtIndex)
    KR_RECORD_INDEXES(checkListViewWillSelectItemsAtIndexes)
    KR_RECORD_INDEXES(checkListViewDidSelectItemsAtIndexes)
    KR_RECORD_LIST(checkListViewDidChangeSizeThatFits)
    KR_RECORD_INDEX(checkListViewWillSetStatusForItemAtIndex)
    KR_RECORD_INDEX(checkListViewDidSetStatusForItemAtIndex)
    KR_RECORD_INDEX(checkListViewWillSetTitleForItemAtIndex)
    KR_RECORD_INDEX(checkListViewDidSetTitleForItemAtIndex)
    KR_RECORD_INDEXES(checkListViewWillInsertItemsAtIndexes)
    KR_RECORD_INDEXES(checkListViewDidInsertItemsAtIndexes)
    KR_RECORD_INDEXES(checkListViewWillRemoveItemsAtIndexes)
    KR_RECORD_INDEXES(checkListViewDidRemoveItemsAtIndexes)
    KR_RECORD_INDEXES_TO_INDEX(checkListViewWillMoveItemsAtIndexesToIndex)
    KR_RECORD_INDEXES_TO_INDEX(checkListViewDidMoveItemsAtIndexesToIndex)
    KR_RECORD_LIST(checkListViewDidCommitEditing)
    KR_RECORD_LIST(checkListViewDidCancelEditing)
    KR_RECORD_LIST(checkListViewWillGainFocus)
    KR_RECORD_LIST(checkListViewDidGainFocus)
    KR_RECORD_LIST(checkListViewWillLoseFocus)
    KR_RECORD_LIST(checkListViewDidLoseFocus)
    KR_RECORD_INDEXES_ANIMATED(checkListViewWillUpdateByReloadingItemsAtIndexesAnimated)
    KR_RECORD_INDEXES_ANIMATED(checkListViewDidUpdateByReloadingItemsAtIndexesAnimated)
    KR_RECORD_INDEXES_ANIMATED(checkListViewWillUpdateByInsertingItemsAtIndexesAnimated)
    KR_RECORD_INDEXES_ANIMATED(checkListViewDidUpdateByInsertingItemsAtIndexesAnimated)
    KR_RECORD_INDEXES_ANIMATED(checkListViewWillUpdateByRemovingItemsAtIndexesAnimated)
    KR_RECORD_INDEXES_ANIMATED(checkListViewDidUpdateByRemovingItemsAtIndexesAnimated)
    KR_RECORD_INDEXES_TO_INDEX_ANIMATED(checkListViewWillUpdateByMovingItemsAtIndexesToIndexAnimated)
    KR_RECORD_INDEXES_TO_INDEX_ANIMATED(checkListViewDidUpdateByMovingItemsAtIndexesToIndexAnimated)

#undef KR_RECORD_LIST
#undef KR_RECORD_INDEXES
#undef KR_RECORD_INDEX
#undef KR_RECORD_INDEXES_TO_INDEX
#undef KR_RECORD_INDEXES_ANIMATED
#undef KR_RECORD_INDEXES_TO_INDEX_ANIMATED

    bool checkListViewTextViewDoCommandBySelector(KRCheckListView*, KRTextView*,
                                                  const KRSelector& selector) override {
        log->add(QStringLiteral("checkListViewTextViewDoCommandBySelector %1").arg(selector.name()));
        return doCommandAnswer;
    }
    QUndoStack* checkListViewUndoManagerForTextView(KRCheckListView*, KRTextView*) override {
        log->add(QStringLiteral("checkListViewUndoManagerForTextView"));
        return undoManagerAnswer;
    }

    std::shared_ptr<MessageLog> log;
    bool doCommandAnswer = false;
    QUndoStack* undoManagerAnswer = nullptr;
};

} // namespace KRCheckListViewCoreTesting
