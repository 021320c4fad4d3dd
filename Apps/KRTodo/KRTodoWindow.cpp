#include "KRTodoWindow.h"

#include "KRTodoChecklists.h"
#include "KRTodoDefaults.h"
#include "KRTodoMenus.h"
#include "KRTodoShortcutsWindow.h"
#include "KRTodoSidebar.h"
#include "KRTodoStore.h"

#include "KRCheckListView.h"
#include "KRCheckListWidget.h"

#include "Foundation/KRClock.h"
#include "Foundation/KRRunLoop.h"
#include "Platform/KRHostWidget.h"
#include "Text/KRTextView.h"
#include "Views/KRWindow.h"

#include <QApplication>
#include <QCoreApplication>
#include <QDockWidget>
#include <QEvent>
#include <QFocusEvent>
#include <QKeyEvent>
#include <QLabel>
#include <QMenu>
#include <QMenuBar>
#include <QMouseEvent>
#include <QPointer>
#include <QScrollArea>
#include <QScrollBar>
#include <QStatusBar>
#include <QToolButton>
#include <QUndoStack>
#include <QVBoxLayout>

#include <algorithm>
#include <cmath>
#include <utility>

namespace {

// The window's first size.
constexpr int kInitialWindowWidth = 480;
constexpr int kInitialWindowHeight = 560;

} // namespace

KRTodoWindow::KRTodoWindow(std::shared_ptr<KRTodoStore> store, QWidget* parent)
    : QMainWindow(parent), m_store(std::move(store)) {
    setWindowTitle(titleForChecklist(m_store->name()));
    setUpCheckListView();
    setUpScrollArea();
    m_menus = std::make_unique<KRTodoMenus>(*this, *m_hostWidget, *m_checkListView);
    m_menus->setInsertedItemHandler([this](KRUInteger index) { m_store->noteItemInsertedByCommand(index); });
    m_menus->setCommandHandler([this](KRTodoMenus::Command command) {
        m_store->noteInputEvent(m_checkListView.get());
        // An item command from anywhere in the window goes on in the list: an inserted item is typed into.
        if (KRTodoMenus::isItemCommand(command) && !m_hostWidget->hasFocus()) {
            m_hostWidget->setFocus();
        }
    });
    followFocusForUndo();
    setUpHelpMenu();
    resize(kInitialWindowWidth, kInitialWindowHeight);
    m_checkListView->reloadItems();
    setUpEmptyHint();
}

QString KRTodoWindow::titleForChecklist(const QString& name) {
    return name.isEmpty() ? QStringLiteral("KRTodo") : QStringLiteral("%1 \u2014 KRTodo").arg(name);
}

QString KRTodoWindow::checklistSettingKey() {
    return QStringLiteral("window/checklist");
}

void KRTodoWindow::showReadOnlyReason(const QString& reason) {
    if (!m_readOnlyNotice) {
        m_readOnlyNotice = new QLabel;
        m_readOnlyNotice->setWordWrap(true);
        statusBar()->addWidget(m_readOnlyNotice, 1);
    }
    m_readOnlyNotice->setText(reason);
    m_menus->setReadOnly(true);
}

KRTodoWindow::~KRTodoWindow() {
    QObject::disconnect(qApp, &QApplication::focusChanged, this, nullptr);
    m_hostWidget->removeEventFilter(this);
    if (m_checklists) {
        m_checklists->setChangedHandler(nullptr);
    }
    detachStore();
}

void KRTodoWindow::setUpCheckListView() {
    m_checkListWidget = new KRCheckListWidget;
    m_checkListView = m_checkListWidget->sharedCheckListView();
    m_hostWidget = &m_checkListWidget->hostWidget();
    attachStore();
    m_hostWidget->installEventFilter(this);
}

void KRTodoWindow::setUpHelpMenu() {
    QMenu* help = menuBar()->addMenu(QStringLiteral("&Help"));
    QAction* shortcuts = help->addAction(QStringLiteral("&Keyboard Shortcuts"));
    // The desktop's help key (F1 on most): this window is KRTodo's help.
    shortcuts->setShortcuts(QKeySequence::keyBindings(QKeySequence::HelpContents));
    QObject::connect(shortcuts, &QAction::triggered, this, [this] { showKeyboardShortcuts(); });
}

KRTodoShortcutsWindow& KRTodoWindow::keyboardShortcutsWindow() {
    if (!m_shortcutsWindow) {
        m_shortcutsWindow = new KRTodoShortcutsWindow(*this);
    }
    return *m_shortcutsWindow;
}

void KRTodoWindow::showKeyboardShortcuts() {
    KRTodoShortcutsWindow& window = keyboardShortcutsWindow();
    window.refresh();
    window.show();
    window.raise();
    window.activateWindow();
}

void KRTodoWindow::setUpScrollArea() {
    setCentralWidget(m_checkListWidget);
    m_hostWidget->setFocus();
}

QScrollArea& KRTodoWindow::scrollArea() const {
    return *m_checkListWidget;
}

void KRTodoWindow::attachStore() {
    m_checkListView->setDataSource(m_store);
    m_checkListView->setDelegate(m_store);
    m_store->setSizeThatFitsChangedHandler([this](KRCheckListView*) { scheduleEmptyHintUpdate(); });
    m_store->setDidBeginEditingHandler([this](KRCheckListView*, KRUInteger) { scheduleCaretReveal(); });
}

void KRTodoWindow::detachStore() {
    m_store->setSizeThatFitsChangedHandler(nullptr);
    m_store->setDidBeginEditingHandler(nullptr);
}

void KRTodoWindow::showStore(std::shared_ptr<KRTodoStore> store) {
    if (!store || store == m_store) {
        return;
    }
    // What was typed into the checklist being left is kept before the list lets go of it.
    m_checkListView->endEditing();
    m_checkListView->deselectAllItems();
    m_store->commitTypedTitles();
    detachStore();
    m_store = std::move(store);
    attachStore();
    m_checkListView->reloadItems();
    setWindowTitle(titleForChecklist(m_store->name()));
    followFocusForUndo();
    scheduleEmptyHintUpdate();
    m_checkListWidget->verticalScrollBar()->setValue(0);
}

void KRTodoWindow::showChecklists(KRTodoChecklists& checklists) {
    m_checklists = &checklists;
    m_sidebar = new KRTodoSidebar(checklists);
    m_sidebar->setCurrentChecklist(m_store->checklist());
    m_sidebar->setCurrentChecklistChangedHandler([this](qint64 checklist) {
        showStore(m_checklists->store(checklist));
        m_checklists->database().setSetting(checklistSettingKey(), QString::number(checklist));
    });
    checklists.setChangedHandler([this] {
        m_sidebar->scheduleRefresh();
        setWindowTitle(titleForChecklist(m_store->name()));
    });
    auto* dock = new QDockWidget(QStringLiteral("Checklists"), this);
    dock->setObjectName(QStringLiteral("Checklists"));
    dock->setFeatures(QDockWidget::NoDockWidgetFeatures);
    dock->setWidget(m_sidebar);
    addDockWidget(Qt::LeftDockWidgetArea, dock);
    // The list keeps its width beside it.
    resize(width() + KRTodoDefaults::sidebarWidth(), height());
    resizeDocks({dock}, {KRTodoDefaults::sidebarWidth()}, Qt::Horizontal);
    // The keyboard stays with the list.
    m_hostWidget->setFocus();
    // Edit > Undo and Redo work on the checklists while the sidebar has the keyboard, else on the items.
    QObject::connect(qApp, &QApplication::focusChanged, this, [this] { followFocusForUndo(); });
}

void KRTodoWindow::followFocusForUndo() {
    const QWidget* focus = QApplication::focusWidget();
    const bool checklists = m_sidebar && focus && m_sidebar->isAncestorOf(focus);
    if (checklists) {
        QUndoStack* stack = &m_checklists->undoStack();
        m_menus->setUndoStack(
            stack, [stack] { stack->undo(); }, [stack] { stack->redo(); });
    } else {
        m_menus->setUndoStack(
            &m_store->undoStack(), [this] { m_store->undo(m_checkListView.get()); },
            [this] { m_store->redo(m_checkListView.get()); });
    }
}

// The list reports a new fitting size from inside its layout pass, when items come or go; the hint
// follows on a later turn, as the widget's host does.
void KRTodoWindow::scheduleEmptyHintUpdate() {
    if (m_emptyHintUpdateScheduled) {
        return;
    }
    m_emptyHintUpdateScheduled = true;
    KRRunLoop::main().performAfterDelay(0.0, [window = QPointer<KRTodoWindow>(this)] {
        if (window) {
            window->m_emptyHintUpdateScheduled = false;
            window->updateEmptyHint();
        }
    });
}

// Empty checklist
// -------------------------------------------------------------------------------------------------------

void KRTodoWindow::setUpEmptyHint() {
    m_emptyHint = new QWidget(m_checkListWidget->viewport());
    auto* layout = new QVBoxLayout(m_emptyHint);
    auto* text = new QLabel(QStringLiteral("No items yet.\nPress Ctrl+N, or click +, to add one."));
    text->setAlignment(Qt::AlignCenter);
    m_addButton = new QToolButton;
    m_addButton->setText(QStringLiteral("+"));
    m_addButton->setToolTip(QStringLiteral("Add an item"));
    m_addButton->setAccessibleName(QStringLiteral("Add Item"));
    // Reached with Tab from the list, but a click leaves the focus in the list it adds to.
    m_addButton->setFocusPolicy(Qt::TabFocus);
    layout->addWidget(text);
    layout->addWidget(m_addButton, 0, Qt::AlignHCenter);
    QObject::connect(m_addButton, &QToolButton::clicked, this, [this] { addItemFromButton(); });
    updateEmptyHint();
}

// Shown while the list has no items, in the middle of the viewport.
void KRTodoWindow::updateEmptyHint() {
    const bool empty = m_checkListView->numberOfItems() == 0;
    if (empty) {
        m_emptyHint->adjustSize();
        const QSize room = m_checkListWidget->viewport()->size();
        m_emptyHint->move((room.width() - m_emptyHint->width()) / 2,
                          (room.height() - m_emptyHint->height()) / 2);
    }
    m_emptyHint->setVisible(empty);
}

void KRTodoWindow::addItemFromButton() {
    if (m_menus->perform(KRTodoMenus::Command::InsertAtBottom)) {
        m_hostWidget->setFocus();
        scheduleCaretReveal();
    }
}

// Caret
// -------------------------------------------------------------------------------------------------------

bool KRTodoWindow::eventFilter(QObject* watched, QEvent* event) {
    if (watched != m_hostWidget) {
        return QMainWindow::eventFilter(watched, event);
    }
    switch (event->type()) {
    case QEvent::MouseButtonRelease:
        // A drag is one gesture from the press on: its move is undone to the state before the press.
        if (m_checkListView->isDragging()) {
            break;
        }
        [[fallthrough]];
    case QEvent::KeyPress:
    case QEvent::MouseButtonPress:
    case QEvent::MouseButtonDblClick:
        // Each input event is one step of the history at most: the last one's step ends here.
        m_store->noteInputEvent(m_checkListView.get());
        break;
    default:
        break;
    }
    if (m_readOnlyNotice) {
        if (event->type() == QEvent::InputMethod ||
            (event->type() == QEvent::KeyPress &&
             !isKeyAllowedWhileReadOnly(*static_cast<QKeyEvent*>(event)))) {
            return true;
        }
    }
    switch (event->type()) {
    case QEvent::KeyPress:
        if (const int key = static_cast<QKeyEvent*>(event)->key();
            key == Qt::Key_Tab || key == Qt::Key_Backtab) {
            // When the focus goes round to the list again, the item that was edited is the one selected.
            selectItemAfterFocusMove(m_checkListView->indexForEditedItem());
        }
        break;
    case QEvent::MouseButtonPress:
        endEditingForPressBelowRows(*static_cast<QMouseEvent*>(event));
        break;
    case QEvent::Resize:
        updateEmptyHint();
        break;
    case QEvent::FocusIn: {
        const Qt::FocusReason reason = static_cast<QFocusEvent*>(event)->reason();
        if (reason == Qt::TabFocusReason || reason == Qt::BacktabFocusReason) {
            // Tabbing in from another control hands the keys to the list, which edits as it always does
            // when made first responder; if it had them already, an item is selected instead.
            m_hostWidget->krWindow().makeFirstResponder(m_checkListView.get());
            selectItemAfterFocusMove(reason == Qt::TabFocusReason ? 0 : m_checkListView->numberOfItems() - 1);
        }
        break;
    }
    case QEvent::MouseButtonDblClick:
        if (insertItemForDoubleClickBelowRows(*static_cast<QMouseEvent*>(event))) {
            return true;
        }
        break;
    default:
        break;
    }
    return QMainWindow::eventFilter(watched, event);
}

void KRTodoWindow::selectItemAfterFocusMove(KRUInteger index) {
    KRRunLoop::main().performAfterDelay(0.0, [window = QPointer<KRTodoWindow>(this), index] {
        if (!window) {
            return;
        }
        KRCheckListView& list = *window->m_checkListView;
        const bool listHasTheKeys =
            window->m_hostWidget->hasFocus() && window->m_hostWidget->krWindow().firstResponder() == &list;
        if (listHasTheKeys && index < list.numberOfItems() && list.indexForEditedItem() == KRNotFound &&
            list.indexesForSelectedItems().count() == 0) {
            list.selectItemsAtIndexesByExtendingSelection(KRIndexSet(index), false);
        }
    });
}

// A read-only checklist takes the keys that move about in it and copy from it, and no others.
bool KRTodoWindow::isKeyAllowedWhileReadOnly(const QKeyEvent& event) {
    const Qt::KeyboardModifiers modifiers = event.modifiers() & ~Qt::KeypadModifier;
    switch (event.key()) {
    case Qt::Key_Up:
    case Qt::Key_Down:
    case Qt::Key_Left:
    case Qt::Key_Right:
    case Qt::Key_Home:
    case Qt::Key_End:
    case Qt::Key_PageUp:
    case Qt::Key_PageDown:
        return (modifiers & ~Qt::ShiftModifier) == Qt::NoModifier;
    case Qt::Key_Escape:
    case Qt::Key_Tab:
    case Qt::Key_Backtab:
        return true;
    case Qt::Key_C:
    case Qt::Key_A:
        return modifiers == Qt::ControlModifier;
    default:
        return false;
    }
}

bool KRTodoWindow::isBelowRows(const QMouseEvent& event) const {
    if (event.button() != Qt::LeftButton || event.modifiers() != Qt::NoModifier) {
        return false;
    }
    const KRCheckListView& list = *m_checkListView;
    const KRPoint point =
        list.convertPointFromView(KRPointMake(event.position().x(), event.position().y()), nullptr);
    const KRUInteger count = list.numberOfItems();
    return count == 0 || point.y >= KRRectGetMaxY(list.rectOfItemsInRange(KRRange{0, count}));
}

// A click on the empty area below the rows ends editing, as a click outside a text field does.
void KRTodoWindow::endEditingForPressBelowRows(const QMouseEvent& event) {
    if (isBelowRows(event) && m_checkListView->indexForEditedItem() != KRNotFound) {
        m_checkListView->endEditing();
    }
}

// A double-click there adds an item at the end to type into.
bool KRTodoWindow::insertItemForDoubleClickBelowRows(const QMouseEvent& event) {
    if (!isBelowRows(event) || !m_menus->perform(KRTodoMenus::Command::InsertAtBottom)) {
        return false;
    }
    scheduleCaretReveal();
    return true;
}

QRect KRTodoWindow::caretRectInHostWidget() const {
    return m_checkListWidget->caretRectInHostWidget();
}

void KRTodoWindow::scheduleCaretReveal() {
    m_checkListWidget->scheduleCaretReveal();
}

bool KRTodoWindow::isCaretRevealScheduled() const {
    return m_checkListWidget->isCaretRevealScheduled();
}

double KRTodoWindow::autoScrollSpeedAtViewportY(double y) const {
    return m_checkListWidget->autoScrollSpeedAtViewportY(y);
}

bool KRTodoWindow::isAutoScrollScheduled() const {
    return m_checkListWidget->isAutoScrollScheduled();
}

void KRTodoWindow::settle() {
    m_checkListWidget->settle();
    KRRunLoop::main().runUntilIdle();
}

QImage KRTodoWindow::renderCheckListToImage(double devicePixelRatio) {
    return m_hostWidget->renderToImage(devicePixelRatio);
}
