#pragma once

#include "Foundation/KRSelector.h"
#include "Foundation/KRTypes.h"

#include <QKeySequence>
#include <QList>
#include <QObject>

#include <array>
#include <cstddef>
#include <functional>

class KRCheckListView;
class KRHostWidget;
class QAction;
class QEvent;
class QKeyEvent;
class QMainWindow;
class QMenu;
class QUndoStack;

// KRTodo's File, Edit and Item menus, in a window's menu bar.
//
// Edit actions are sent along the first responder chain of the host's window, so while a title is edited
// Copy and Cut act on the field editor's text and Paste and Select All reach the list as commands. Their
// keys (Ctrl+X, C, V, A) are the menu's, as the desktop the list was made for has it; the commands they
// send are the ones the key bindings would produce, and a disabled item's key does nothing. Delete and the
// item commands the list has keys for show those keys but leave them to the list, so that Delete still
// merges titles and Ctrl+Up still moves an item. The other item commands get keys the list leaves unbound.
//
// Every item is validated when its menu opens and before a key could reach a shortcut.
class KRTodoMenus : public QObject {
public:
    enum class Command : std::size_t {
        Quit,
        Undo,
        Redo,
        Cut,
        Copy,
        Paste,
        Delete,
        SelectAll,
        InsertAbove,
        InsertBelow,
        InsertAtTop,
        InsertAtBottom,
        MoveUp,
        MoveDown,
        MoveToTop,
        MoveToBottom,
        ToggleCompleted,
        ToggleCanceled,
    };
    static constexpr std::size_t CommandCount = static_cast<std::size_t>(Command::ToggleCanceled) + 1;

    KRTodoMenus(QMainWindow& window, KRHostWidget& hostWidget, KRCheckListView& checkListView);
    ~KRTodoMenus() override;

    QAction& action(Command command) const { return *m_actions[static_cast<std::size_t>(command)]; }
    QMenu& fileMenu() const { return *m_fileMenu; }
    QMenu& editMenu() const { return *m_editMenu; }
    QMenu& itemMenu() const { return *m_itemMenu; }

    // Whether the command can run now, asked of the responder chain and the list's predicates.
    bool validate(Command command) const;
    // Enables every action as validate answers.
    void validateAll();
    // Runs the command if it validates; answers whether it ran.
    bool perform(Command command);
    // Told the index of the item each Insert command made (the item it then edits).
    void setInsertedItemHandler(std::function<void(KRUInteger)> handler);
    // Told before every command runs, as the host is told of every input event.
    void setCommandHandler(std::function<void(Command)> handler);
    // Whether the command works on the list's items (Insert, Move, Toggle …).
    static bool isItemCommand(Command command);
    // The checklist's history: Undo and Redo are enabled by it and name its next steps ("Undo Typing");
    // undo and redo run them.
    void setUndoStack(QUndoStack* undoStack, std::function<void()> undo, std::function<void()> redo);
    // A checklist that can't be changed: only Quit, Copy and Select All stay enabled.
    void setReadOnly(bool readOnly);
    bool isReadOnly() const { return m_readOnly; }
    // Undo and Redo with the names of the steps they would undo and redo.
    void updateUndoTexts();

    // The responder action an Edit command sends ("copy:", …); null for the others.
    static KRSelector editAction(Command command);
    // Offers action to the window's first responder and on up its chain; when nobody takes it (nothing is
    // edited or selected, so the window itself is first responder) the list, the window's content, may.
    bool sendActionToFirstResponder(const KRSelector& action);

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    QAction& addAction(QMenu& menu, Command command, const QString& text);
    void setMenuKeys(Command command, const QList<QKeySequence>& keys);
    void setListKeys(Command command, const QKeySequence& keys);
    bool validateEditAction(const KRSelector& action) const;
    bool isKeyOfDisabledEditAction(const QKeyEvent& event) const;
    void noteInsertedItem();
    void pasteFromClipboard();

    QMainWindow& m_window;
    KRHostWidget& m_hostWidget;
    KRCheckListView& m_checkListView;
    QMenu* m_fileMenu = nullptr;
    QMenu* m_editMenu = nullptr;
    QMenu* m_itemMenu = nullptr;
    std::array<QAction*, CommandCount> m_actions{};
    std::function<void(KRUInteger)> m_insertedItemHandler;
    std::function<void(Command)> m_commandHandler;
    QUndoStack* m_undoStack = nullptr;
    QMetaObject::Connection m_undoStackConnection;
    std::function<void()> m_undo;
    std::function<void()> m_redo;
    bool m_readOnly = false;
};
