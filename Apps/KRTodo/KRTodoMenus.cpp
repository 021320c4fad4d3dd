#include "KRTodoMenus.h"

#include "KRCheckListView.h"

#include "Foundation/KRAssertionHandler.h"
#include "Foundation/KRLog.h"
#include "Platform/KRHostWidget.h"
#include "Text/KRTextView.h"
#include "Views/KRWindow.h"

#include <QAction>
#include <QApplication>
#include <QKeyEvent>
#include <QMainWindow>
#include <QMenu>
#include <QMenuBar>
#include <QUndoStack>

namespace {

using Command = KRTodoMenus::Command;

bool isEditCommand(Command command) {
    return !KRTodoMenus::editAction(command).isNull();
}

} // namespace

KRTodoMenus::KRTodoMenus(QMainWindow& window, KRHostWidget& hostWidget, KRCheckListView& checkListView)
    : m_window(window), m_hostWidget(hostWidget), m_checkListView(checkListView) {
    QMenuBar* menuBar = m_window.menuBar();
    m_fileMenu = menuBar->addMenu(QStringLiteral("&File"));
    m_editMenu = menuBar->addMenu(QStringLiteral("&Edit"));
    m_itemMenu = menuBar->addMenu(QStringLiteral("&Item"));

    addAction(*m_fileMenu, Command::Quit, QStringLiteral("&Quit"));

    addAction(*m_editMenu, Command::Undo, QStringLiteral("&Undo"));
    addAction(*m_editMenu, Command::Redo, QStringLiteral("&Redo"));
    m_editMenu->addSeparator();
    addAction(*m_editMenu, Command::Cut, QStringLiteral("Cu&t"));
    addAction(*m_editMenu, Command::Copy, QStringLiteral("&Copy"));
    addAction(*m_editMenu, Command::Paste, QStringLiteral("&Paste"));
    addAction(*m_editMenu, Command::Delete, QStringLiteral("&Delete"));
    m_editMenu->addSeparator();
    addAction(*m_editMenu, Command::SelectAll, QStringLiteral("Select &All"));

    addAction(*m_itemMenu, Command::InsertAbove, QStringLiteral("Insert &Above"));
    addAction(*m_itemMenu, Command::InsertBelow, QStringLiteral("Insert &Below"));
    addAction(*m_itemMenu, Command::InsertAtTop, QStringLiteral("Insert at &Top"));
    addAction(*m_itemMenu, Command::InsertAtBottom, QStringLiteral("Insert at B&ottom"));
    m_itemMenu->addSeparator();
    addAction(*m_itemMenu, Command::MoveUp, QStringLiteral("Move &Up"));
    addAction(*m_itemMenu, Command::MoveDown, QStringLiteral("Move &Down"));
    addAction(*m_itemMenu, Command::MoveToTop, QStringLiteral("Move to To&p"));
    addAction(*m_itemMenu, Command::MoveToBottom, QStringLiteral("Move to Botto&m"));
    m_itemMenu->addSeparator();
    addAction(*m_itemMenu, Command::ToggleCompleted, QStringLiteral("Toggle &Completed"));
    addAction(*m_itemMenu, Command::ToggleCanceled, QStringLiteral("Toggle Ca&nceled"));

    // The menu's own keys.
    // Not every platform theme names a key for Quit.
    QList<QKeySequence> quitKeys = QKeySequence::keyBindings(QKeySequence::Quit);
    if (quitKeys.isEmpty()) {
        quitKeys = {QKeySequence(Qt::CTRL | Qt::Key_Q)};
    }
    setMenuKeys(Command::Quit, quitKeys);
    setMenuKeys(Command::Undo, {QKeySequence(Qt::CTRL | Qt::Key_Z)});
    setMenuKeys(Command::Redo,
                {QKeySequence(Qt::CTRL | Qt::SHIFT | Qt::Key_Z), QKeySequence(Qt::CTRL | Qt::Key_Y)});
    setMenuKeys(Command::Cut, QKeySequence::keyBindings(QKeySequence::Cut));
    setMenuKeys(Command::Copy, QKeySequence::keyBindings(QKeySequence::Copy));
    setMenuKeys(Command::Paste, QKeySequence::keyBindings(QKeySequence::Paste));
    setMenuKeys(Command::SelectAll, QKeySequence::keyBindings(QKeySequence::SelectAll));
    setMenuKeys(Command::InsertBelow, {QKeySequence(Qt::CTRL | Qt::Key_N)});
    setMenuKeys(Command::InsertAbove, {QKeySequence(Qt::CTRL | Qt::SHIFT | Qt::Key_N)});
    // As Insert Below and Above, all the way.
    setMenuKeys(Command::InsertAtBottom, {QKeySequence(Qt::CTRL | Qt::ALT | Qt::Key_N)});
    setMenuKeys(Command::InsertAtTop, {QKeySequence(Qt::CTRL | Qt::ALT | Qt::SHIFT | Qt::Key_N)});
    setMenuKeys(Command::ToggleCompleted, {QKeySequence(Qt::CTRL | Qt::Key_D)});
    setMenuKeys(Command::ToggleCanceled, {QKeySequence(Qt::CTRL | Qt::SHIFT | Qt::Key_D)});
    // Keys the list answers itself (deleteForward:, moveToBeginningOfDocument: and so on): shown, not taken.
    setListKeys(Command::Delete, QKeySequence(QKeySequence::Delete));
    setListKeys(Command::MoveUp, QKeySequence(Qt::CTRL | Qt::Key_Up));
    setListKeys(Command::MoveDown, QKeySequence(Qt::CTRL | Qt::Key_Down));
    setListKeys(Command::MoveToTop, QKeySequence(Qt::CTRL | Qt::ALT | Qt::Key_Up));
    setListKeys(Command::MoveToBottom, QKeySequence(Qt::CTRL | Qt::ALT | Qt::Key_Down));

    for (QMenu* menu : {m_fileMenu, m_editMenu, m_itemMenu}) {
        QObject::connect(menu, &QMenu::aboutToShow, this, [this] { validateAll(); });
    }
    m_hostWidget.installEventFilter(this);
    validateAll();
}

KRTodoMenus::~KRTodoMenus() {
    m_hostWidget.removeEventFilter(this);
}

QAction& KRTodoMenus::addAction(QMenu& menu, Command command, const QString& text) {
    auto* action = new QAction(text, this);
    menu.addAction(action);
    QObject::connect(action, &QAction::triggered, this, [this, command] { perform(command); });
    m_actions[static_cast<std::size_t>(command)] = action;
    return *action;
}

void KRTodoMenus::setMenuKeys(Command command, const QList<QKeySequence>& keys) {
    action(command).setShortcuts(keys);
    action(command).setShortcutContext(Qt::WindowShortcut);
}

// A widget shortcut of an action that lives only in menus is live only while a menu has the focus: the key
// shows beside the item and goes on reaching the list.
void KRTodoMenus::setListKeys(Command command, const QKeySequence& keys) {
    action(command).setShortcut(keys);
    action(command).setShortcutContext(Qt::WidgetShortcut);
}

// Validation
// ------------------------------------------------------------------------------------------------------

KRSelector KRTodoMenus::editAction(Command command) {
    switch (command) {
    case Command::Cut:
        return KRSelector("cut:");
    case Command::Copy:
        return KRSelector("copy:");
    case Command::Paste:
        return KRSelector("paste:");
    case Command::Delete:
        return KRSelector("delete:");
    case Command::SelectAll:
        return KRSelector("selectAll:");
    default:
        return KRSelector();
    }
}

bool KRTodoMenus::validate(Command command) const {
    KRCheckListView& list = m_checkListView;
    if (m_readOnly && command != Command::Quit && command != Command::Copy && command != Command::SelectAll) {
        return false;
    }
    switch (command) {
    case Command::Quit:
        return true;
    case Command::Undo:
        return m_undoStack && m_undoStack->canUndo();
    case Command::Redo:
        return m_undoStack && m_undoStack->canRedo();
    case Command::Cut:
    case Command::Copy:
    case Command::Paste:
    case Command::Delete:
    case Command::SelectAll:
        return validateEditAction(editAction(command));
    case Command::InsertAbove:
        return list.canInsertItemAboveEditedOrSelectedItems();
    case Command::InsertBelow:
        return list.canInsertItemBelowEditedOrSelectedItems();
    case Command::InsertAtTop:
        return list.canInsertItemTop();
    case Command::InsertAtBottom:
        return list.canInsertItemBottom();
    case Command::MoveUp:
        return list.canMoveEditedOrSelectedItemsUp();
    case Command::MoveDown:
        return list.canMoveEditedOrSelectedItemsDown();
    case Command::MoveToTop:
        return list.canMoveEditedOrSelectedItemsTop();
    case Command::MoveToBottom:
        return list.canMoveEditedOrSelectedItemsBottom();
    case Command::ToggleCompleted:
        return list.canToggleEditedOrSelectedItemsCompleted();
    case Command::ToggleCanceled:
        return list.canToggleEditedOrSelectedItemsCanceled();
    }
    return false;
}

// A text view in the chain before the list copies and cuts its own selection. The list's field editor hands
// paste and select-all on to the list and has no delete, so for those, and whenever no text view comes
// first, the list's own validation answers.
bool KRTodoMenus::validateEditAction(const KRSelector& action) const {
    const bool textAction = action == "copy:" || action == "cut:";
    for (const KRResponder* responder = m_hostWidget.krWindow().firstResponder(); responder;
         responder = responder->nextResponder()) {
        if (responder == &m_checkListView) {
            break;
        }
        if (const auto* textView = dynamic_cast<const KRTextView*>(responder); textView && textAction) {
            return textView->selectedRange().length > 0 && (action == "copy:" || textView->isEditable());
        }
    }
    return m_checkListView.validateMenuItem(action);
}

void KRTodoMenus::validateAll() {
    for (std::size_t index = 0; index < CommandCount; ++index) {
        const auto command = static_cast<Command>(index);
        action(command).setEnabled(validate(command));
    }
    updateUndoTexts();
}

void KRTodoMenus::updateUndoTexts() {
    const QString undoName = m_undoStack ? m_undoStack->undoText() : QString();
    const QString redoName = m_undoStack ? m_undoStack->redoText() : QString();
    action(Command::Undo)
        .setText(undoName.isEmpty() ? QStringLiteral("&Undo") : QStringLiteral("&Undo %1").arg(undoName));
    action(Command::Redo)
        .setText(redoName.isEmpty() ? QStringLiteral("&Redo") : QStringLiteral("&Redo %1").arg(redoName));
}

void KRTodoMenus::setCommandHandler(std::function<void(Command)> handler) {
    m_commandHandler = std::move(handler);
}

bool KRTodoMenus::isItemCommand(Command command) {
    return command >= Command::InsertAbove && command <= Command::ToggleCanceled;
}

void KRTodoMenus::setUndoStack(QUndoStack* undoStack, std::function<void()> undo,
                               std::function<void()> redo) {
    QObject::disconnect(m_undoStackConnection);
    m_undoStack = undoStack;
    m_undo = std::move(undo);
    m_redo = std::move(redo);
    if (m_undoStack) {
        m_undoStackConnection =
            QObject::connect(m_undoStack, &QUndoStack::indexChanged, this, [this] { validateAll(); });
    }
    validateAll();
}

void KRTodoMenus::setReadOnly(bool readOnly) {
    m_readOnly = readOnly;
    validateAll();
}

// Performing
// ------------------------------------------------------------------------------------------------------

bool KRTodoMenus::perform(Command command) {
    // A key can come after the state changed without a validation in between.
    if (!validate(command)) {
        return false;
    }
    KRCheckListView& list = m_checkListView;
    if (m_commandHandler) {
        m_commandHandler(command);
    }
    switch (command) {
    case Command::Quit:
        m_window.close();
        break;
    case Command::Undo:
        if (m_undo) {
            m_undo();
        }
        break;
    case Command::Redo:
        if (m_redo) {
            m_redo();
        }
        break;
    case Command::Paste:
        pasteFromClipboard();
        break;
    case Command::Cut:
    case Command::Copy:
    case Command::Delete:
    case Command::SelectAll:
        sendActionToFirstResponder(editAction(command));
        break;
    case Command::InsertAbove:
        list.insertItemAboveEditedOrSelectedItems();
        noteInsertedItem();
        break;
    case Command::InsertBelow:
        list.insertItemBelowEditedOrSelectedItems();
        noteInsertedItem();
        break;
    case Command::InsertAtTop:
        list.insertItemTop();
        noteInsertedItem();
        break;
    case Command::InsertAtBottom:
        list.insertItemBottom();
        noteInsertedItem();
        break;
    case Command::MoveUp:
        list.moveEditedOrSelectedItemsUp();
        break;
    case Command::MoveDown:
        list.moveEditedOrSelectedItemsDown();
        break;
    case Command::MoveToTop:
        list.moveEditedOrSelectedItemsTop();
        break;
    case Command::MoveToBottom:
        list.moveEditedOrSelectedItemsBottom();
        break;
    case Command::ToggleCompleted:
        list.toggleEditedOrSelectedItemsCompleted();
        break;
    case Command::ToggleCanceled:
        list.toggleEditedOrSelectedItemsCanceled();
        break;
    }
    return true;
}

// Another application can put items under the list's own type that do not read, with no text beside them:
// the list refuses such a paste before it changes anything, and the app carries on.
void KRTodoMenus::pasteFromClipboard() {
    try {
        sendActionToFirstResponder(editAction(Command::Paste));
    } catch (const KRInternalInconsistencyException& exception) {
        KRLog(QStringLiteral("KRTodo: nothing to paste: %1").arg(QString::fromUtf8(exception.what())));
        QApplication::beep();
    }
}

void KRTodoMenus::setInsertedItemHandler(std::function<void(KRUInteger)> handler) {
    m_insertedItemHandler = std::move(handler);
}

// An Insert command edits the item it made.
void KRTodoMenus::noteInsertedItem() {
    if (m_insertedItemHandler && m_checkListView.indexForEditedItem() != KRNotFound) {
        m_insertedItemHandler(m_checkListView.indexForEditedItem());
    }
}

bool KRTodoMenus::sendActionToFirstResponder(const KRSelector& action) {
    for (KRResponder* responder = m_hostWidget.krWindow().firstResponder(); responder;
         responder = responder->nextResponder()) {
        if (responder->tryToPerform(action, nullptr)) {
            return true;
        }
    }
    return m_checkListView.tryToPerform(action, nullptr);
}

// Keys
// ------------------------------------------------------------------------------------------------------

bool KRTodoMenus::isKeyOfDisabledEditAction(const QKeyEvent& event) const {
    const QKeySequence pressed(event.keyCombination());
    for (std::size_t index = 0; index < CommandCount; ++index) {
        const auto command = static_cast<Command>(index);
        const QAction& candidate = action(command);
        if (!isEditCommand(command) || candidate.shortcutContext() != Qt::WindowShortcut ||
            candidate.isEnabled()) {
            continue;
        }
        if (candidate.shortcuts().contains(pressed)) {
            return true;
        }
    }
    return false;
}

bool KRTodoMenus::eventFilter(QObject* watched, QEvent* event) {
    if (watched != &m_hostWidget) {
        return false;
    }
    if (event->type() == QEvent::ShortcutOverride) {
        // Qt matches shortcuts right after this: let them see the current state.
        validateAll();
    } else if (event->type() == QEvent::KeyPress) {
        // The key of a disabled Edit item does nothing, as on the desktop the list was made for; passed on,
        // the list would paste from an empty pasteboard or copy an empty selection.
        return isKeyOfDisabledEditAction(static_cast<const QKeyEvent&>(*event));
    }
    return false;
}
