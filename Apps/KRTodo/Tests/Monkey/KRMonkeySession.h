#pragma once

#include "KRMonkeyEvent.h"
#include "KRMonkeyFailure.h"

#include <QEvent>
#include <QPointF>
#include <QRectF>
#include <QString>
#include <QStringList>
#include <QTemporaryDir>

#include <cstddef>
#include <memory>
#include <optional>
#include <vector>

class KRCheckListView;
class KRHostWidget;
class KRLogCapture;
class KRTodoDatabase;
class KRTodoStore;
class KRTodoWindow;
class KRView;

// KRTodo's real window over a fresh sample store kept in a database file of its own (in a temporary
// directory), on the offscreen platform with the manual clock, ready
// for events. Every session starts from the same state (clock, run loop, pasteboard, modifiers), so the
// same events do the same things in every session: that is what replaying and shrinking rely on.
class KRMonkeySession {
public:
    KRMonkeySession();
    ~KRMonkeySession();
    KRMonkeySession(const KRMonkeySession&) = delete;
    KRMonkeySession& operator=(const KRMonkeySession&) = delete;

    KRTodoWindow& window() const { return *m_window; }
    KRTodoStore& store() const { return *m_store; }
    KRCheckListView& list() const;
    KRHostWidget& host() const;

    // Input as Qt delivers it to the host widget. Keys are pressed and released; shortcut keys go through
    // Qt's shortcut map first, as a user's do.
    void sendKey(int key, Qt::KeyboardModifiers modifiers, const QString& text);
    void sendShortcut(Qt::Key key, Qt::KeyboardModifiers modifiers);
    void sendInputMethod(const QString& preedit, const QString& commit);
    // millisecondsLater orders the parts of one gesture in time (the host counts clicks by timestamps).
    void sendMouse(QEvent::Type type, QPointF position, Qt::MouseButton button, Qt::MouseButtons buttons,
                   Qt::KeyboardModifiers modifiers, int millisecondsLater);

    // A view's bounds in the host widget's coordinates.
    QRectF rectInHost(const KRView& view) const;
    // The host's space below the last row; zero height when the rows fill the host.
    QRectF rectBelowRows() const;

    // Delivers event, lets the window settle, then checks the invariants. done receives what the event did.
    std::optional<KRMonkeyFailure> deliver(const KRMonkeyEvent& event, QString* done = nullptr);
    // The list shows exactly the store's items, and its selection and edited item lie among them; the file
    // holds the same items in the same order with the same statuses, and their titles once what was typed
    // has been written.
    std::optional<KRMonkeyFailure> checkInvariants() const;
    // The list's state in one line: items, edited item, selection.
    QString describeState() const;
    // What the toolkit logged while the last event was delivered.
    const QStringList& lastEventLog() const { return m_lastEventLog; }

    struct Replay {
        std::optional<KRMonkeyFailure> failure;
        // How many events were delivered: up to and including the failing one.
        std::size_t delivered = 0;
        // What each delivered event did.
        std::vector<QString> done;
    };
    // Delivers events to a fresh session, stopping at the first failure.
    static Replay replay(const std::vector<KRMonkeyEvent>& events);

private:
    void settle();
    std::optional<KRMonkeyFailure> takeException();

    std::optional<KRMonkeyFailure> checkStoredItems() const;

    std::unique_ptr<KRLogCapture> m_log;
    QTemporaryDir m_directory;
    std::shared_ptr<KRTodoDatabase> m_database;
    std::shared_ptr<KRTodoStore> m_store;
    std::unique_ptr<KRTodoWindow> m_window;
    QStringList m_lastEventLog;
    // The host counts clicks from event timestamps; they follow the manual clock.
    unsigned long long m_lastTimestamp = 0;
};
