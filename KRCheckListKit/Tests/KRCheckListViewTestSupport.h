#pragma once

// Shared by the list tests: a data source that keeps its items in memory and reports its own changes to
// the list, a delegate that records every message, one log that both write into (so a test sees the exact
// interleaving of the list's messages), and a fixture that shows a list in a window.

#include "KRCheckListItemViewTestSupport.h"
#include "KRCheckListView.h"
#include "KRCheckListViewDataSource.h"
#include "KRCheckListViewDelegate.h"

#include "Foundation/KRAssertionHandler.h"
#include "Foundation/KRClock.h"
#include "Foundation/KRIndexSet.h"
#include "Foundation/KRLog.h"
#include "Foundation/KRRunLoop.h"
#include "Foundation/KRSelector.h"
#include "Text/KRTextView.h"
#include "Views/KREvent.h"
#include "Views/KRWindow.h"

#include <QJsonValue>
#include <QString>
#include <QStringList>

#include <gtest/gtest.h>

#include <functional>
#include <memory>
#include <optional>
#include <ostream>
#include <string>
#include <utility>
#include <vector>

namespace KRCheckListViewTesting {

// Readable arguments ------------------------------------------------------------------------------------

inline QString describeIndex(KRUInteger index) {
    return index == KRNotFound ? QStringLiteral("KRNotFound") : QString::number(index);
}

// "{}" or "{1, 4, 5}": every index, ascending.
inline QString describeIndexes(const KRIndexSet& indexes) {
    QStringList parts;
    for (KRUInteger index : indexes) {
        parts << describeIndex(index);
    }
    return QStringLiteral("{") + parts.join(QStringLiteral(", ")) + QStringLiteral("}");
}

inline QString describeFlag(bool flag) {
    return flag ? QStringLiteral("true") : QStringLiteral("false");
}

inline QString quoted(const QString& text) {
    return QStringLiteral("\"") + text + QStringLiteral("\"");
}

// Values compared in the tests, wrapped so that a failure prints them as text: a list of lines, and an
// index set as "{1, 4}".
struct Lines {
    QStringList lines;
    friend bool operator==(const Lines&, const Lines&) = default;
};
inline void PrintTo(const Lines& lines, std::ostream* os) {
    *os << "{";
    for (const QString& line : lines.lines) {
        *os << "\n    \"" << line.toStdString() << "\"";
    }
    *os << (lines.lines.isEmpty() ? "}" : "\n}");
}

inline Lines linesOf(const QStringList& lines) {
    return Lines{lines};
}

struct Indexes {
    KRIndexSet indexes;
    friend bool operator==(const Indexes&, const Indexes&) = default;
};
inline void PrintTo(const Indexes& indexes, std::ostream* os) {
    *os << describeIndexes(indexes.indexes).toStdString();
}
inline Indexes indexesOf(const KRIndexSet& indexes) {
    return Indexes{indexes};
}

// The log ------------------------------------------------------------------------------------------------

// Every message the recording clients received, in order, one readable line each ("willInsertItemsAtIndexes
// {2}", "titleForItemAtIndex 2"). onMessage runs right after a line is recorded, while the list is still
// inside the call that sent it.
class MessageLog {
public:
    void record(const QString& message) {
        m_messages << message;
        if (onMessage) {
            onMessage(message);
        }
    }
    const QStringList& messages() const { return m_messages; }
    void clear() { m_messages.clear(); }
    int count(const QString& message) const { return static_cast<int>(m_messages.count(message)); }
    bool contains(const QString& message) const { return m_messages.contains(message); }
    // Position of the first line equal to message, or -1.
    int indexOf(const QString& message) const { return static_cast<int>(m_messages.indexOf(message)); }

    // The lines that begin with one of the prefixes, in order.
    QStringList startingWith(const QStringList& prefixes) const {
        QStringList lines;
        for (const QString& message : m_messages) {
            for (const QString& prefix : prefixes) {
                if (message.startsWith(prefix)) {
                    lines << message;
                    break;
                }
            }
        }
        return lines;
    }
    // The lines that begin with none of the prefixes, in order.
    QStringList without(const QStringList& prefixes) const {
        QStringList lines;
        for (const QString& message : m_messages) {
            bool excluded = false;
            for (const QString& prefix : prefixes) {
                excluded = excluded || message.startsWith(prefix);
            }
            if (!excluded) {
                lines << message;
            }
        }
        return lines;
    }

    std::function<void(const QString& message)> onMessage;

private:
    QStringList m_messages;
};

// The data source --------------------------------------------------------------------------------------

struct Item {
    QString identifier;
    KRUInteger status = 0;
    QString title;
};

// Items named by their identifiers, open, titled "Item <identifier>".
inline std::vector<Item> itemsWithIdentifiers(const QStringList& identifiers) {
    std::vector<Item> items;
    for (const QString& identifier : identifiers) {
        items.push_back(Item{identifier, 0, QStringLiteral("Item ") + identifier});
    }
    return items;
}

// Keeps its items in memory and implements only the required methods. Inserts, removals and moves are
// applied at once (while appliesChanges is set) and, while reportsChanges is set, reported to the list from
// inside the call that asked for them (beginUpdates, the matching update, endUpdates). Status and title
// changes proposed by a row are accepted unless a validator answers otherwise.
class RecordingDataSource : public KRCheckListViewDataSource {
public:
    explicit RecordingDataSource(std::shared_ptr<MessageLog> log) : m_log(std::move(log)) {}

    KRUInteger checkListViewNumberOfItems(KRCheckListView*) override {
        record(QStringLiteral("numberOfItems"));
        return items.size();
    }
    QJsonValue checkListViewIdentifierForItemAtIndex(KRCheckListView*, KRUInteger index) override {
        record(QStringLiteral("identifierForItemAtIndex ") + describeIndex(index));
        return QJsonValue(items.at(index).identifier);
    }
    KRUInteger checkListViewStatusForItemAtIndex(KRCheckListView*, KRUInteger index) override {
        record(QStringLiteral("statusForItemAtIndex ") + describeIndex(index));
        return items.at(index).status;
    }
    QString checkListViewTitleForItemAtIndex(KRCheckListView*, KRUInteger index) override {
        record(QStringLiteral("titleForItemAtIndex ") + describeIndex(index));
        return items.at(index).title;
    }
    KRUInteger checkListViewValidateChangedStatusForItemAtIndex(KRCheckListView*, KRUInteger status,
                                                                KRUInteger index) override {
        record(QStringLiteral("validateChangedStatus %1 forItemAtIndex %2")
                   .arg(QString::number(status), describeIndex(index)));
        if (statusValidator) {
            return statusValidator(status, index);
        }
        items.at(index).status = status;
        return status;
    }
    QString checkListViewValidateChangedTitleForItemAtIndex(KRCheckListView*, const QString& title,
                                                            KRUInteger index) override {
        record(QStringLiteral("validateChangedTitle %1 forItemAtIndex %2")
                   .arg(quoted(title), describeIndex(index)));
        if (titleValidator) {
            return titleValidator(title, index);
        }
        items.at(index).title = title;
        return title;
    }
    void checkListViewInsertItemsAtIndexes(KRCheckListView* checkListView,
                                           const KRIndexSet& indexes) override {
        record(QStringLiteral("insertItemsAtIndexes ") + describeIndexes(indexes));
        if (appliesChanges) {
            for (KRUInteger index : indexes) {
                items.insert(items.begin() + static_cast<std::ptrdiff_t>(index), nextInsertedItem());
            }
        }
        if (reportsChanges) {
            checkListView->beginUpdates();
            checkListView->updateByInsertingItemsAtIndexes(indexes);
            checkListView->endUpdates();
        }
    }
    void checkListViewRemoveItemsAtIndexes(KRCheckListView* checkListView,
                                           const KRIndexSet& indexes) override {
        record(QStringLiteral("removeItemsAtIndexes ") + describeIndexes(indexes));
        if (appliesChanges) {
            std::vector<Item> kept;
            for (KRUInteger index = 0; index < items.size(); ++index) {
                if (!indexes.containsIndex(index)) {
                    kept.push_back(items[index]);
                }
            }
            items = kept;
        }
        if (reportsChanges) {
            checkListView->beginUpdates();
            checkListView->updateByRemovingItemsAtIndexes(indexes);
            checkListView->endUpdates();
        }
    }
    void checkListViewMoveItemsAtIndexesToIndex(KRCheckListView* checkListView, const KRIndexSet& indexes,
                                                KRUInteger toIndex) override {
        record(QStringLiteral("moveItemsAtIndexes %1 toIndex %2")
                   .arg(describeIndexes(indexes), describeIndex(toIndex)));
        if (appliesChanges) {
            items = itemsMoved(items, indexes, toIndex);
        }
        if (reportsChanges) {
            checkListView->beginUpdates();
            checkListView->updateByMovingItemsAtIndexesToIndex(indexes, toIndex);
            checkListView->endUpdates();
        }
    }

    // The items after moving those at indexes, as one block in ascending order, to stand before the item
    // that stood at toIndex (at the end when toIndex is the count).
    static std::vector<Item> itemsMoved(const std::vector<Item>& items, const KRIndexSet& indexes,
                                        KRUInteger toIndex) {
        std::vector<Item> block;
        for (KRUInteger index : indexes) {
            block.push_back(items.at(index));
        }
        std::vector<Item> moved;
        for (KRUInteger index = 0; index <= items.size(); ++index) {
            if (index == toIndex) {
                moved.insert(moved.end(), block.begin(), block.end());
            }
            if (index < items.size() && !indexes.containsIndex(index)) {
                moved.push_back(items[index]);
            }
        }
        return moved;
    }

    QStringList identifiers() const {
        QStringList names;
        for (const Item& item : items) {
            names << item.identifier;
        }
        return names;
    }

    std::vector<Item> items;
    // Items to hand out for insertions, first come first served; then "new1", "new2", … with empty titles.
    std::vector<Item> itemsToInsert;
    // Off, the data source only records what it is asked; reporting needs the change applied.
    bool appliesChanges = true;
    bool reportsChanges = true;
    std::function<KRUInteger(KRUInteger proposedStatus, KRUInteger index)> statusValidator;
    std::function<QString(const QString& proposedTitle, KRUInteger index)> titleValidator;

protected:
    void record(const QString& message) { m_log->record(message); }

private:
    Item nextInsertedItem() {
        if (!itemsToInsert.empty()) {
            Item item = itemsToInsert.front();
            itemsToInsert.erase(itemsToInsert.begin());
            return item;
        }
        ++m_insertedCount;
        return Item{QStringLiteral("new") + QString::number(m_insertedCount), 0, QString()};
    }

    std::shared_ptr<MessageLog> m_log;
    int m_insertedCount = 0;
};

// Also implements every optional method: grouping, and the deprecated setters, which apply the value.
class FullRecordingDataSource : public RecordingDataSource {
public:
    using RecordingDataSource::RecordingDataSource;

    void checkListViewBeginGrouping(KRCheckListView*) override { record(QStringLiteral("beginGrouping")); }
    void checkListViewEndGrouping(KRCheckListView*) override { record(QStringLiteral("endGrouping")); }
    void checkListViewSetStatusForItemAtIndex(KRCheckListView*, KRUInteger status,
                                              KRUInteger index) override {
        record(QStringLiteral("setStatus %1 forItemAtIndex %2")
                   .arg(QString::number(status), describeIndex(index)));
        items.at(index).status = status;
    }
    void checkListViewSetTitleForItemAtIndex(KRCheckListView*, const QString& title,
                                             KRUInteger index) override {
        record(QStringLiteral("setTitle %1 forItemAtIndex %2").arg(quoted(title), describeIndex(index)));
        items.at(index).title = title;
    }
};

// The delegates -----------------------------------------------------------------------------------------

// Overrides every delegate method, the deprecated ones included, and records each message with its
// arguments. Its answers to the two questions can be set.
class RecordingDelegate : public KRCheckListViewDelegate {
public:
    explicit RecordingDelegate(std::shared_ptr<MessageLog> log) : m_log(std::move(log)) {}

    void checkListViewWillReloadItems(KRCheckListView*) override {
        record(QStringLiteral("willReloadItems"));
    }
    void checkListViewDidReloadItems(KRCheckListView*) override { record(QStringLiteral("didReloadItems")); }
    void checkListViewWillBeginUpdates(KRCheckListView*) override {
        record(QStringLiteral("willBeginUpdates"));
    }
    void checkListViewDidEndUpdates(KRCheckListView*) override { record(QStringLiteral("didEndUpdates")); }
    void checkListViewWillUpdateByReloadingItemsAtIndexes(KRCheckListView*,
                                                          const KRIndexSet& indexes) override {
        recordIndexes(QStringLiteral("willUpdateByReloadingItemsAtIndexes"), indexes);
    }
    void checkListViewDidUpdateByReloadingItemsAtIndexes(KRCheckListView*,
                                                         const KRIndexSet& indexes) override {
        recordIndexes(QStringLiteral("didUpdateByReloadingItemsAtIndexes"), indexes);
    }
    void checkListViewWillUpdateByInsertingItemsAtIndexes(KRCheckListView*,
                                                          const KRIndexSet& indexes) override {
        recordIndexes(QStringLiteral("willUpdateByInsertingItemsAtIndexes"), indexes);
    }
    void checkListViewDidUpdateByInsertingItemsAtIndexes(KRCheckListView*,
                                                         const KRIndexSet& indexes) override {
        recordIndexes(QStringLiteral("didUpdateByInsertingItemsAtIndexes"), indexes);
    }
    void checkListViewWillUpdateByRemovingItemsAtIndexes(KRCheckListView*,
                                                         const KRIndexSet& indexes) override {
        recordIndexes(QStringLiteral("willUpdateByRemovingItemsAtIndexes"), indexes);
    }
    void checkListViewDidUpdateByRemovingItemsAtIndexes(KRCheckListView*,
                                                        const KRIndexSet& indexes) override {
        recordIndexes(QStringLiteral("didUpdateByRemovingItemsAtIndexes"), indexes);
    }
    void checkListViewWillUpdateByMovingItemsAtIndexesToIndex(KRCheckListView*, const KRIndexSet& indexes,
                                                              KRUInteger toIndex) override {
        recordMove(QStringLiteral("willUpdateByMovingItemsAtIndexes"), indexes, toIndex);
    }
    void checkListViewDidUpdateByMovingItemsAtIndexesToIndex(KRCheckListView*, const KRIndexSet& indexes,
                                                             KRUInteger toIndex) override {
        recordMove(QStringLiteral("didUpdateByMovingItemsAtIndexes"), indexes, toIndex);
    }

    void checkListViewWillBeginEditingItemAtIndex(KRCheckListView*, KRUInteger index) override {
        recordIndex(QStringLiteral("willBeginEditingItemAtIndex"), index);
    }
    void checkListViewDidBeginEditingItemAtIndex(KRCheckListView*, KRUInteger index) override {
        recordIndex(QStringLiteral("didBeginEditingItemAtIndex"), index);
    }
    void checkListViewWillEndEditingItemAtIndex(KRCheckListView*, KRUInteger index) override {
        recordIndex(QStringLiteral("willEndEditingItemAtIndex"), index);
    }
    void checkListViewDidEndEditingItemAtIndex(KRCheckListView*, KRUInteger index) override {
        recordIndex(QStringLiteral("didEndEditingItemAtIndex"), index);
    }
    void checkListViewWillSelectItemsAtIndexes(KRCheckListView*, const KRIndexSet& indexes) override {
        recordIndexes(QStringLiteral("willSelectItemsAtIndexes"), indexes);
    }
    void checkListViewDidSelectItemsAtIndexes(KRCheckListView*, const KRIndexSet& indexes) override {
        recordIndexes(QStringLiteral("didSelectItemsAtIndexes"), indexes);
    }

    void checkListViewDidChangeSizeThatFits(KRCheckListView*) override {
        record(QStringLiteral("didChangeSizeThatFits"));
    }

    void checkListViewWillSetStatusForItemAtIndex(KRCheckListView*, KRUInteger index) override {
        recordIndex(QStringLiteral("willSetStatusForItemAtIndex"), index);
    }
    void checkListViewDidSetStatusForItemAtIndex(KRCheckListView*, KRUInteger index) override {
        recordIndex(QStringLiteral("didSetStatusForItemAtIndex"), index);
    }
    void checkListViewWillSetTitleForItemAtIndex(KRCheckListView*, KRUInteger index) override {
        recordIndex(QStringLiteral("willSetTitleForItemAtIndex"), index);
    }
    void checkListViewDidSetTitleForItemAtIndex(KRCheckListView*, KRUInteger index) override {
        recordIndex(QStringLiteral("didSetTitleForItemAtIndex"), index);
    }
    void checkListViewWillInsertItemsAtIndexes(KRCheckListView*, const KRIndexSet& indexes) override {
        recordIndexes(QStringLiteral("willInsertItemsAtIndexes"), indexes);
    }
    void checkListViewDidInsertItemsAtIndexes(KRCheckListView*, const KRIndexSet& indexes) override {
        recordIndexes(QStringLiteral("didInsertItemsAtIndexes"), indexes);
    }
    void checkListViewWillRemoveItemsAtIndexes(KRCheckListView*, const KRIndexSet& indexes) override {
        recordIndexes(QStringLiteral("willRemoveItemsAtIndexes"), indexes);
    }
    void checkListViewDidRemoveItemsAtIndexes(KRCheckListView*, const KRIndexSet& indexes) override {
        recordIndexes(QStringLiteral("didRemoveItemsAtIndexes"), indexes);
    }
    void checkListViewWillMoveItemsAtIndexesToIndex(KRCheckListView*, const KRIndexSet& indexes,
                                                    KRUInteger toIndex) override {
        recordMove(QStringLiteral("willMoveItemsAtIndexes"), indexes, toIndex);
    }
    void checkListViewDidMoveItemsAtIndexesToIndex(KRCheckListView*, const KRIndexSet& indexes,
                                                   KRUInteger toIndex) override {
        recordMove(QStringLiteral("didMoveItemsAtIndexes"), indexes, toIndex);
    }

    void checkListViewDidCommitEditing(KRCheckListView*) override {
        record(QStringLiteral("didCommitEditing"));
    }
    void checkListViewDidCancelEditing(KRCheckListView*) override {
        record(QStringLiteral("didCancelEditing"));
    }
    void checkListViewWillGainFocus(KRCheckListView*) override { record(QStringLiteral("willGainFocus")); }
    void checkListViewDidGainFocus(KRCheckListView*) override { record(QStringLiteral("didGainFocus")); }
    void checkListViewWillLoseFocus(KRCheckListView*) override { record(QStringLiteral("willLoseFocus")); }
    void checkListViewDidLoseFocus(KRCheckListView*) override { record(QStringLiteral("didLoseFocus")); }

    bool checkListViewTextViewDoCommandBySelector(KRCheckListView*, KRTextView*,
                                                  const KRSelector& selector) override {
        record(QStringLiteral("textViewDoCommandBySelector ") + selector.name());
        return doCommandAnswer;
    }
    QUndoStack* checkListViewUndoManagerForTextView(KRCheckListView*, KRTextView*) override {
        record(QStringLiteral("undoManagerForTextView"));
        return undoManagerAnswer;
    }

    void checkListViewWillUpdateByReloadingItemsAtIndexesAnimated(KRCheckListView*, const KRIndexSet& indexes,
                                                                  bool animated) override {
        recordAnimated(QStringLiteral("willUpdateByReloadingItemsAtIndexes"), indexes, animated);
    }
    void checkListViewDidUpdateByReloadingItemsAtIndexesAnimated(KRCheckListView*, const KRIndexSet& indexes,
                                                                 bool animated) override {
        recordAnimated(QStringLiteral("didUpdateByReloadingItemsAtIndexes"), indexes, animated);
    }
    void checkListViewWillUpdateByInsertingItemsAtIndexesAnimated(KRCheckListView*, const KRIndexSet& indexes,
                                                                  bool animated) override {
        recordAnimated(QStringLiteral("willUpdateByInsertingItemsAtIndexes"), indexes, animated);
    }
    void checkListViewDidUpdateByInsertingItemsAtIndexesAnimated(KRCheckListView*, const KRIndexSet& indexes,
                                                                 bool animated) override {
        recordAnimated(QStringLiteral("didUpdateByInsertingItemsAtIndexes"), indexes, animated);
    }
    void checkListViewWillUpdateByRemovingItemsAtIndexesAnimated(KRCheckListView*, const KRIndexSet& indexes,
                                                                 bool animated) override {
        recordAnimated(QStringLiteral("willUpdateByRemovingItemsAtIndexes"), indexes, animated);
    }
    void checkListViewDidUpdateByRemovingItemsAtIndexesAnimated(KRCheckListView*, const KRIndexSet& indexes,
                                                                bool animated) override {
        recordAnimated(QStringLiteral("didUpdateByRemovingItemsAtIndexes"), indexes, animated);
    }
    void checkListViewWillUpdateByMovingItemsAtIndexesToIndexAnimated(KRCheckListView*,
                                                                      const KRIndexSet& indexes,
                                                                      KRUInteger toIndex,
                                                                      bool animated) override {
        recordAnimatedMove(QStringLiteral("willUpdateByMovingItemsAtIndexes"), indexes, toIndex, animated);
    }
    void checkListViewDidUpdateByMovingItemsAtIndexesToIndexAnimated(KRCheckListView*,
                                                                     const KRIndexSet& indexes,
                                                                     KRUInteger toIndex,
                                                                     bool animated) override {
        recordAnimatedMove(QStringLiteral("didUpdateByMovingItemsAtIndexes"), indexes, toIndex, animated);
    }

    bool doCommandAnswer = false;
    QUndoStack* undoManagerAnswer = nullptr;

private:
    void record(const QString& message) { m_log->record(message); }
    void recordIndex(const QString& name, KRUInteger index) {
        record(name + QStringLiteral(" ") + describeIndex(index));
    }
    void recordIndexes(const QString& name, const KRIndexSet& indexes) {
        record(name + QStringLiteral(" ") + describeIndexes(indexes));
    }
    void recordMove(const QString& name, const KRIndexSet& indexes, KRUInteger toIndex) {
        record(
            QStringLiteral("%1 %2 toIndex %3").arg(name, describeIndexes(indexes), describeIndex(toIndex)));
    }
    void recordAnimated(const QString& name, const KRIndexSet& indexes, bool animated) {
        record(
            QStringLiteral("%1 %2 animated %3").arg(name, describeIndexes(indexes), describeFlag(animated)));
    }
    void recordAnimatedMove(const QString& name, const KRIndexSet& indexes, KRUInteger toIndex,
                            bool animated) {
        record(QStringLiteral("%1 %2 toIndex %3 animated %4")
                   .arg(name, describeIndexes(indexes), describeIndex(toIndex), describeFlag(animated)));
    }

    std::shared_ptr<MessageLog> m_log;
};

// Implements no delegate method at all.
class EmptyDelegate : public KRCheckListViewDelegate {};

// Failures ----------------------------------------------------------------------------------------------

struct AssertionFailure {
    QString method;
    const KRObject* object = nullptr;
    QString file;
    QString message;
};

// Runs action under the default assertion handler (which throws) and answers the failure it raised, if any.
// The handler's log line is kept out of the test output.
inline std::optional<AssertionFailure> assertionFailureOf(const std::function<void()>& action) {
    KRAssertionHandler::setCurrentHandler(nullptr);
    KRLogCapture quiet;
    try {
        action();
    } catch (const KRInternalInconsistencyException& exception) {
        return AssertionFailure{exception.method(), exception.object(), exception.file(),
                                exception.message()};
    }
    return std::nullopt;
}

// The fixture --------------------------------------------------------------------------------------------

// A list in a window, with the recording clients at hand. showItems connects them and loads their items.
class KRCheckListViewTestCase : public ::testing::Test {
protected:
    void SetUp() override {
        KRTextView::installTextSystem();
        KREvent::setCurrentModifierFlags(0);
        window.setContentView(content);
        content->addSubview(list);
    }
    void TearDown() override {
        KRAssertionHandler::setCurrentHandler(nullptr);
        KREvent::setCurrentModifierFlags(0);
        window.makeFirstResponder(nullptr);
        KRClock::advance(1.0); // lets every animation a test started finish
        KRRunLoop::main().cancelAll();
    }

    // Connects the recording clients, gives the data source items with these identifiers and reloads; the
    // log starts empty afterwards.
    void showItems(const QStringList& identifiers) { showItemsFrom(dataSource, identifiers); }
    // The same with another data source (the list learns its optional methods from its type).
    template <class DataSource>
    void showItemsFrom(const std::shared_ptr<DataSource>& source, const QStringList& identifiers) {
        source->items = itemsWithIdentifiers(identifiers);
        list->setDataSource(source);
        list->setDelegate(delegate);
        list->reloadItems();
        log->clear();
    }

    // The identifiers the rows show, top to bottom.
    QStringList rowIdentifiers() const {
        QStringList identifiers;
        for (const std::shared_ptr<KRCheckListItemView>& row : list->checkListItemViews()) {
            identifiers << row->objectValue().toString();
        }
        return identifiers;
    }
    KRCheckListItemView* rowAt(KRUInteger index) const { return list->checkListItemViews().at(index).get(); }

    // Gives the list the keyboard focus, lets the deferred focus messages arrive, then edits the item with
    // the given text selection. The log starts empty afterwards.
    void editItem(KRUInteger index, KRRange selection) {
        window.makeFirstResponder(list.get());
        KRRunLoop::main().runUntilIdle();
        list->beginEditingItemAtIndexSelectRange(index, selection);
        KRRunLoop::main().runUntilIdle();
        log->clear();
    }
    // The text selection in the editor of the row at index ("{location, length}"), or "not edited".
    std::string selectionInTitleAtIndex(KRUInteger index) const {
        KRTextView* editor = list->checkListViewTitleTextFieldForIndex(index)->currentEditor();
        if (!editor) {
            return "not edited";
        }
        const KRRange range = editor->selectedRange();
        return QStringLiteral("{%1, %2}").arg(range.location).arg(range.length).toStdString();
    }

    // The indexes of the rows whose flag is set.
    KRIndexSet rowsWhere(const std::function<bool(const KRCheckListItemView&)>& flag) const {
        KRMutableIndexSet indexes;
        for (KRUInteger index = 0; index < list->numberOfItems(); ++index) {
            if (flag(*rowAt(index))) {
                indexes.addIndex(index);
            }
        }
        return indexes;
    }
    KRIndexSet editedRows() const {
        return rowsWhere([](const KRCheckListItemView& row) { return row.isEdited(); });
    }
    KRIndexSet selectedRows() const {
        return rowsWhere([](const KRCheckListItemView& row) { return row.isSelected(); });
    }

    KRWindow window;
    std::shared_ptr<KRView> content = std::make_shared<KRView>(KRRectMake(0, 0, 400, 800));
    std::shared_ptr<KRCheckListView> list = std::make_shared<KRCheckListView>(KRRectMake(0, 0, 320, 600));
    std::shared_ptr<MessageLog> log = std::make_shared<MessageLog>();
    std::shared_ptr<RecordingDataSource> dataSource = std::make_shared<RecordingDataSource>(log);
    std::shared_ptr<RecordingDelegate> delegate = std::make_shared<RecordingDelegate>(log);
};

} // namespace KRCheckListViewTesting
