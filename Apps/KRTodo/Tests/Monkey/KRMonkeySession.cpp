#include "KRMonkeySession.h"

#include "KRMonkeyApplication.h"

#include "KRTodoDatabase.h"
#include "KRTodoStore.h"
#include "KRTodoWindow.h"

#include "KRCheckListItemView.h"
#include "KRCheckListView.h"

#include "Foundation/KRClock.h"
#include "Foundation/KRLog.h"
#include "Foundation/KRRunLoop.h"
#include "Platform/KRHostWidget.h"
#include "Platform/KRPasteboard.h"
#include "Views/KREvent.h"

#include <QApplication>
#include <QCoreApplication>
#include <QInputMethodEvent>
#include <QKeyEvent>
#include <QMouseEvent>
#include <QTest>
#include <QUndoStack>

#include <algorithm>
#include <cmath>
#include <utility>

namespace {

// Where the manual clock starts: far from zero, because the host reads a zero timestamp as "none".
constexpr double kStartTime = 1000.0;
// After each event: this many rounds of Qt's events, a run loop turn and a step of the clock. The steps add
// up to more than the double-click interval and the longest animation, so separate clicks never count as
// one double click and every animation has ended before the next event.
constexpr int kSettleRounds = 4;
constexpr double kSettleStep = 0.15;

QString describeRow(KRUInteger index, const QString& title, KRUInteger status) {
    return QStringLiteral("row %1 (status %2, title \"%3\")").arg(index).arg(status).arg(title);
}

} // namespace

KRMonkeySession::KRMonkeySession() {
    // Nothing of an earlier session may reach this one.
    KRRunLoop::main().cancelAll();
    KRClock::useManualTime(kStartTime);
    KREvent::setCurrentModifierFlags(0);
    KREvent::setMouseLocation(KRPointMake(0.0, 0.0));
    KRPasteboard::setGeneralPasteboard(KRPasteboard::makeInMemory());
    KRMonkeyApplication::takeCaughtException();

    m_log = std::make_unique<KRLogCapture>();
    m_database = KRTodoDatabase::open(m_directory.filePath(QStringLiteral("KRTodo.sqlite")));
    const qint64 checklist = m_database->addChecklist(QStringLiteral("Trip"), 1.0).value_or(0);
    m_store = KRTodoStore::makeStore(m_database, checklist, QStringLiteral("Trip"));
    const std::vector<KRTodoItem> sample = KRTodoStore::sampleItems();
    m_store->insertItems(sample, KRIndexSet(KRRange{0, sample.size()}), nullptr);
    m_store->undoStack().clear();
    m_window = std::make_unique<KRTodoWindow>(m_store);
    m_window->setAttribute(Qt::WA_DontShowOnScreen);
    m_window->show();
    QApplication::setActiveWindow(m_window.get());
    // Active and focused, so that window shortcuts are live and keys reach the host.
    m_window->activateWindow();
    m_window->hostWidget().setFocus();
    m_window->settle();
    m_log->clear();
}

KRMonkeySession::~KRMonkeySession() {
    m_window.reset();
    m_store.reset();
    m_database.reset();
    KRRunLoop::main().cancelAll();
    KRPasteboard::setGeneralPasteboard(nullptr);
    KRMonkeyApplication::takeCaughtException();
    m_log.reset();
}

KRCheckListView& KRMonkeySession::list() const {
    return m_window->checkListView();
}

KRHostWidget& KRMonkeySession::host() const {
    return m_window->hostWidget();
}

// Input ------------------------------------------------------------------------------------------------

void KRMonkeySession::sendKey(int key, Qt::KeyboardModifiers modifiers, const QString& text) {
    QKeyEvent press(QEvent::KeyPress, key, modifiers, text);
    QCoreApplication::sendEvent(&host(), &press);
    QKeyEvent release(QEvent::KeyRelease, key, modifiers, text);
    QCoreApplication::sendEvent(&host(), &release);
}

void KRMonkeySession::sendShortcut(Qt::Key key, Qt::KeyboardModifiers modifiers) {
    QTest::keyClick(&host(), key, modifiers);
}

void KRMonkeySession::sendInputMethod(const QString& preedit, const QString& commit) {
    if (!preedit.isEmpty()) {
        QList<QInputMethodEvent::Attribute> attributes;
        attributes << QInputMethodEvent::Attribute(QInputMethodEvent::Cursor,
                                                   static_cast<int>(preedit.size()), 1, QVariant());
        QInputMethodEvent composing(preedit, attributes);
        QCoreApplication::sendEvent(&host(), &composing);
    }
    QInputMethodEvent committing;
    committing.setCommitString(commit);
    QCoreApplication::sendEvent(&host(), &committing);
}

void KRMonkeySession::sendMouse(QEvent::Type type, QPointF position, Qt::MouseButton button,
                                Qt::MouseButtons buttons, Qt::KeyboardModifiers modifiers,
                                int millisecondsLater) {
    KRHostWidget& widget = host();
    QMouseEvent event(type, position, widget.mapToGlobal(position), button, buttons, modifiers);
    const auto base = static_cast<unsigned long long>(std::llround(KRClock::now() * 1000.0));
    m_lastTimestamp = std::max(m_lastTimestamp, base + static_cast<unsigned long long>(millisecondsLater));
    event.setTimestamp(m_lastTimestamp);
    QCoreApplication::sendEvent(&widget, &event);
}

QRectF KRMonkeySession::rectInHost(const KRView& view) const {
    // The host's coordinates are its window's.
    const KRRect rect = view.convertRectToView(view.bounds(), nullptr);
    return QRectF(rect.origin.x, rect.origin.y, rect.size.width, rect.size.height);
}

QRectF KRMonkeySession::rectBelowRows() const {
    double top = 0.0;
    const KRUInteger count = list().numberOfItems();
    if (count > 0) {
        top = rectInHost(*list().checkListViewItemViewForItemAtIndex(count - 1)).bottom();
    }
    const double bottom = std::max(top, static_cast<double>(host().height()));
    return QRectF(0.0, top, host().width(), bottom - top);
}

// Delivery and checks ------------------------------------------------------------------------------------

std::optional<KRMonkeyFailure> KRMonkeySession::takeException() {
    if (std::optional<QString> caught = KRMonkeyApplication::takeCaughtException()) {
        return KRMonkeyFailure::exception(*caught);
    }
    return std::nullopt;
}

void KRMonkeySession::settle() {
    for (int round = 0; round < kSettleRounds; ++round) {
        QCoreApplication::processEvents();
        KRRunLoop::main().runOneTurn();
        KRClock::advance(kSettleStep);
    }
    QCoreApplication::processEvents();
    KRRunLoop::main().runOneTurn();
}

std::optional<KRMonkeyFailure> KRMonkeySession::deliver(const KRMonkeyEvent& event, QString* done) {
    m_log->clear();
    std::optional<KRMonkeyFailure> failure;
    try {
        const QString what = event.deliver(*this);
        if (done) {
            *done = what;
        }
    } catch (...) {
        failure = KRMonkeyFailure::exception(KRMonkeyApplication::describeCurrentException());
    }
    // One caught inside Qt's delivery came first.
    if (std::optional<KRMonkeyFailure> caught = takeException()) {
        failure = caught;
    }
    if (!failure) {
        try {
            settle();
        } catch (...) {
            failure = KRMonkeyFailure::exception(KRMonkeyApplication::describeCurrentException());
        }
        if (std::optional<KRMonkeyFailure> caught = takeException()) {
            failure = caught;
        }
    }
    m_lastEventLog = m_log->lines();
    if (failure) {
        return failure;
    }
    return checkInvariants();
}

std::optional<KRMonkeyFailure> KRMonkeySession::checkInvariants() const {
    const KRCheckListView& checkList = list();
    const KRUInteger count = m_store->count();
    const KRUInteger shown = checkList.numberOfItems();
    if (shown != count) {
        return KRMonkeyFailure::brokenInvariant(
            QStringLiteral("the list shows another number of items than the store has"),
            QStringLiteral("%1 rows, %2 items").arg(shown).arg(count));
    }
    for (KRUInteger index = 0; index < count; ++index) {
        const KRTodoItem& item = m_store->items()[index];
        const QJsonValue identifier = checkList.identifierForItemAtIndex(index);
        if (identifier != QJsonValue(item.identifier)) {
            return KRMonkeyFailure::brokenInvariant(
                QStringLiteral("a row shows another item's identifier"),
                QStringLiteral("row %1 has \"%2\", the store's item \"%3\"")
                    .arg(index)
                    .arg(identifier.toVariant().toString(), item.identifier));
        }
        const QString title = checkList.titleForItemAtIndex(index);
        const KRUInteger status = checkList.statusForItemAtIndex(index);
        if (title != item.title) {
            return KRMonkeyFailure::brokenInvariant(
                QStringLiteral("a row shows another title than the store has"),
                QStringLiteral("%1; the store has \"%2\"")
                    .arg(describeRow(index, title, status), item.title));
        }
        if (status != item.status) {
            return KRMonkeyFailure::brokenInvariant(
                QStringLiteral("a row shows another status than the store has"),
                QStringLiteral("%1; the store has status %2")
                    .arg(describeRow(index, title, status))
                    .arg(item.status));
        }
    }
    const KRIndexSet& selected = checkList.indexesForSelectedItems();
    if (!selected.isEmpty() && selected.lastIndex() >= count) {
        return KRMonkeyFailure::brokenInvariant(
            QStringLiteral("a selected index is at or past the count"),
            QStringLiteral("selected index %1, %2 items").arg(selected.lastIndex()).arg(count));
    }
    const KRUInteger edited = checkList.indexForEditedItem();
    if (edited != KRNotFound && edited >= count) {
        return KRMonkeyFailure::brokenInvariant(
            QStringLiteral("the edited index is at or past the count"),
            QStringLiteral("edited index %1, %2 items").arg(edited).arg(count));
    }
    if (edited != KRNotFound && selected.containsIndex(edited)) {
        return KRMonkeyFailure::brokenInvariant(QStringLiteral("the edited item is also selected"),
                                                QStringLiteral("edited index %1").arg(edited));
    }
    return checkStoredItems();
}

std::optional<KRMonkeyFailure> KRMonkeySession::checkStoredItems() const {
    const std::vector<KRTodoItemRecord> stored = m_database->items(m_store->checklist());
    const std::vector<KRTodoItem>& items = m_store->items();
    if (stored.size() != items.size()) {
        return KRMonkeyFailure::brokenInvariant(
            QStringLiteral("the file holds another number of items than the store"),
            QStringLiteral("%1 stored, %2 in the store").arg(stored.size()).arg(items.size()));
    }
    for (std::size_t index = 0; index < items.size(); ++index) {
        const KRTodoItem& item = stored[index].item;
        if (item.identifier != items[index].identifier || item.status != items[index].status) {
            return KRMonkeyFailure::brokenInvariant(
                QStringLiteral("the file holds another item or status than the store"),
                QStringLiteral("at %1 the file has %2 (status %3), the store %4 (status %5)")
                    .arg(index)
                    .arg(item.identifier)
                    .arg(item.status)
                    .arg(items[index].identifier)
                    .arg(items[index].status));
        }
        // Typing is written a moment later: until then the file may hold the title before it.
        if (!m_store->hasUncommittedTitles() && item.title != items[index].title) {
            return KRMonkeyFailure::brokenInvariant(
                QStringLiteral("the file holds another title than the store"),
                QStringLiteral("at %1 the file has \"%2\", the store \"%3\"")
                    .arg(index)
                    .arg(item.title, items[index].title));
        }
    }
    return std::nullopt;
}

QString KRMonkeySession::describeState() const {
    const KRCheckListView& checkList = list();
    QStringList selected;
    for (const KRRange& range : checkList.indexesForSelectedItems().ranges()) {
        selected
            << (range.length == 1
                    ? QString::number(range.location)
                    : QStringLiteral("%1-%2").arg(range.location).arg(range.location + range.length - 1));
    }
    const KRUInteger edited = checkList.indexForEditedItem();
    return QStringLiteral("%1 items, edited %2, selected {%3}")
        .arg(m_store->count())
        .arg(edited == KRNotFound ? QStringLiteral("none") : QString::number(edited))
        .arg(selected.join(QStringLiteral(", ")));
}

KRMonkeySession::Replay KRMonkeySession::replay(const std::vector<KRMonkeyEvent>& events) {
    Replay result;
    KRMonkeySession session;
    for (const KRMonkeyEvent& event : events) {
        QString done;
        std::optional<KRMonkeyFailure> failure = session.deliver(event, &done);
        result.done.push_back(done.isEmpty() ? event.description : done);
        ++result.delivered;
        if (failure) {
            result.failure = std::move(failure);
            break;
        }
    }
    return result;
}
