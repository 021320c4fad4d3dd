#pragma once

#include <QDialog>
#include <QString>

class QMainWindow;
class QTextBrowser;

// Help › Keyboard Shortcuts: every key the checklist and the app's menus handle, read from the tables the
// code dispatches on — the list's command table with the key bindings of this desktop, and the actions of
// the window's menu bar — so it lists what the keys do today and nothing else.
class KRTodoShortcutsWindow : public QDialog {
public:
    explicit KRTodoShortcutsWindow(QMainWindow& window);

    // Reads the tables again (the menus may have changed since the window was made).
    void refresh();
    // What the window shows, as plain text.
    QString text() const;

private:
    QString checklistRows() const;
    QString menuRows() const;

    QMainWindow& m_window;
    QTextBrowser* m_browser = nullptr;
};
