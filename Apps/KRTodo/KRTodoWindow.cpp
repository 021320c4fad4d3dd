#include "KRTodoWindow.h"

#include "KRTodoChecklists.h"
#include "KRTodoDefaults.h"
#include "KRTodoMenus.h"
#include "KRTodoShortcutsWindow.h"
#include "KRTodoSidebar.h"
#include "KRTodoStore.h"

#include "KRCheckListView.h"

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

// The list's width until the window gives it its own, and the window's first size.
constexpr double kInitialListWidth = 480.0;
constexpr int kInitialWindowWidth = 480;
constexpr int kInitialWindowHeight = 560;
// How many rounds of events settle() runs at most; a round in which nothing changes ends it earlier.
constexpr int kMaximumSettleRounds = 50;
// How much room the caret keeps from the viewport's top and bottom edges when it is scrolled into view.
constexpr int kCaretMargin = 8;

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
    m_checkListView = std::make_shared<KRCheckListView>(KRRectMake(0.0, 0.0, kInitialListWidth, 0.0));
    attachStore();

    // The host sizes the list to itself: as wide as the viewport, and at least as tall as the rows.
    m_hostWidget = new KRHostWidget;
    m_hostWidget->setContentView(m_checkListView);
    m_hostWidget->setResizesContentView(true);
    m_hostWidget->installEventFilter(this);
}

void KRTodoWindow::setUpHelpMenu() {
    QMenu* help = menuBar()->addMenu(QStringLiteral("&Help"));
    QAction* shortcuts = help->addAction(QStringLiteral("&Keyboard Shortcuts"));
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
    m_scrollArea = new QScrollArea;
    m_scrollArea->setFrameShape(QFrame::NoFrame);
    m_scrollArea->setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    m_scrollArea->setWidgetResizable(true);
    // The list inside takes the focus; the frame around it is no stop of its own for Tab.
    m_scrollArea->setFocusPolicy(Qt::NoFocus);
    m_scrollArea->setWidget(m_hostWidget);
    setCentralWidget(m_scrollArea);
    m_hostWidget->setFocus();
}

void KRTodoWindow::attachStore() {
    m_checkListView->setDataSource(m_store);
    m_checkListView->setDelegate(m_store);
    m_store->setSizeThatFitsChangedHandler([this](KRCheckListView*) { scheduleHeightUpdate(); });
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
    scheduleHeightUpdate();
    m_scrollArea->verticalScrollBar()->setValue(0);
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

// The list reports a new fitting size from inside its layout pass. The host follows on a later turn, so
// that resizing the host never lays the list out again while it is laying itself out.
void KRTodoWindow::scheduleHeightUpdate() {
    if (m_heightUpdateScheduled) {
        return;
    }
    m_heightUpdateScheduled = true;
    KRRunLoop::main().performAfterDelay(0.0, [window = QPointer<KRTodoWindow>(this)] {
        if (window) {
            window->updateHeight();
        }
    });
}

// Empty checklist
// -------------------------------------------------------------------------------------------------------

void KRTodoWindow::setUpEmptyHint() {
    m_emptyHint = new QWidget(m_scrollArea->viewport());
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
        const QSize room = m_scrollArea->viewport()->size();
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

void KRTodoWindow::updateHeight() {
    m_heightUpdateScheduled = false;
    updateEmptyHint();
    // A zero size asks for the fitting size of the last layout pass without laying out again.
    const KRSize fitting = m_checkListView->sizeThatFits(KRSizeZero);
    m_hostWidget->setMinimumHeight(static_cast<int>(std::ceil(fitting.height)));
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
        if (scrollByPageForKey(*static_cast<QKeyEvent*>(event))) {
            return true;
        }
        if (const int key = static_cast<QKeyEvent*>(event)->key();
            key == Qt::Key_Tab || key == Qt::Key_Backtab) {
            // When the focus goes round to the list again, the item that was edited is the one selected.
            selectItemAfterFocusMove(m_checkListView->indexForEditedItem());
        }
        // Typing and moving between rows move the caret, and may add rows that the host has yet to grow for.
        scheduleCaretReveal();
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
    case QEvent::MouseMove: {
        // A drag runs from the press on a handle; its moves come to the host wherever the pointer is.
        const auto* move = static_cast<const QMouseEvent*>(event);
        if ((move->buttons() & Qt::LeftButton) && m_checkListView->isDragging()) {
            followDraggingPointer(move->globalPosition());
        }
        break;
    }
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

// Page Up and Page Down scroll by a page whatever is edited or selected, and leave both as they are.
bool KRTodoWindow::scrollByPageForKey(const QKeyEvent& event) {
    const bool pageUp = event.key() == Qt::Key_PageUp;
    if ((!pageUp && event.key() != Qt::Key_PageDown) ||
        (event.modifiers() & ~(Qt::ShiftModifier | Qt::KeypadModifier))) {
        return false;
    }
    m_scrollArea->verticalScrollBar()->triggerAction(pageUp ? QAbstractSlider::SliderPageStepSub
                                                            : QAbstractSlider::SliderPageStepAdd);
    return true;
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
    // While a title is edited its field editor is the window's first responder.
    const auto* editor = dynamic_cast<const KRTextView*>(m_hostWidget->krWindow().firstResponder());
    if (!editor || !editor->window()) {
        return QRect();
    }
    // The host's coordinates are its window's.
    const KRRect caret = editor->convertRectToView(editor->insertionPointRect(), nullptr);
    if (KRRectIsNull(caret)) {
        return QRect();
    }
    return KRToQRectF(caret).toAlignedRect();
}

void KRTodoWindow::scheduleCaretReveal() {
    if (m_caretRevealScheduled) {
        return;
    }
    m_caretRevealScheduled = true;
    KRRunLoop::main().performAfterDelay(0.0, [window = QPointer<KRTodoWindow>(this)] {
        if (window) {
            window->revealCaret();
        }
    });
}

void KRTodoWindow::revealCaret() {
    m_caretRevealScheduled = false;
    // The caret's place is known after the list's pass, and reachable once the host has its new height.
    m_hostWidget->krWindow().updateIfNeeded();
    if (m_heightUpdateScheduled) {
        updateHeight();
    }
    const QRect caret = caretRectInHostWidget();
    if (caret.isNull()) {
        return;
    }
    const QPoint centre = caret.center();
    m_scrollArea->ensureVisible(centre.x(), centre.y(), 0, caret.height() / 2 + kCaretMargin);
}

// Auto-scroll
// -------------------------------------------------------------------------------------------------------

double KRTodoWindow::autoScrollSpeedAtViewportY(double y) const {
    const double height = m_scrollArea->viewport()->height();
    // A viewport too low for two full zones shares it between them.
    const double zone = std::min(KRTodoDefaults::autoScrollEdgeZoneHeight(), height / 2.0);
    if (zone <= 0.0) {
        return 0.0;
    }
    const double minimum = KRTodoDefaults::autoScrollMinimumSpeed();
    const double maximum = KRTodoDefaults::autoScrollMaximumSpeed();
    // 0 where the pointer enters a zone, 1 at the viewport's edge and beyond it.
    const auto speedAtDepth = [&](double depth) {
        return minimum + (maximum - minimum) * std::clamp(depth, 0.0, 1.0);
    };
    if (y < zone) {
        return -speedAtDepth((zone - y) / zone);
    }
    if (y > height - zone) {
        return speedAtDepth((y - (height - zone)) / zone);
    }
    return 0.0;
}

void KRTodoWindow::followDraggingPointer(QPointF globalPosition) {
    m_draggingPointer = globalPosition;
    const double y = m_scrollArea->viewport()->mapFromGlobal(globalPosition).y();
    if (autoScrollSpeedAtViewportY(y) != 0.0 && !m_autoScrollScheduled) {
        m_lastAutoScrollTime = KRClock::now();
        m_autoScrollRemainder = 0.0;
        scheduleAutoScroll();
    }
}

void KRTodoWindow::scheduleAutoScroll() {
    m_autoScrollScheduled = true;
    KRRunLoop::main().performAfterDelay(KRTodoDefaults::autoScrollInterval(),
                                        [window = QPointer<KRTodoWindow>(this)] {
                                            if (window) {
                                                window->autoScroll();
                                            }
                                        });
}

// One step: scroll by the speed times the time since the last step, then hand the pointer to the host
// again, so that the dragged row stays under it in the list's coordinates.
void KRTodoWindow::autoScroll() {
    m_autoScrollScheduled = false;
    if (!m_checkListView->isDragging()) {
        return;
    }
    const double y = m_scrollArea->viewport()->mapFromGlobal(m_draggingPointer).y();
    const double speed = autoScrollSpeedAtViewportY(y);
    if (speed == 0.0) {
        return;
    }
    const double now = KRClock::now();
    const double distance = speed * (now - m_lastAutoScrollTime) + m_autoScrollRemainder;
    m_lastAutoScrollTime = now;
    const double whole = std::trunc(distance);
    m_autoScrollRemainder = distance - whole;
    QScrollBar* scrollBar = m_scrollArea->verticalScrollBar();
    const int before = scrollBar->value();
    scrollBar->setValue(before + static_cast<int>(whole));
    // The next step first: the move below passes the event filter, which would otherwise start over.
    scheduleAutoScroll();
    if (scrollBar->value() != before) {
        const QPointF position = m_hostWidget->mapFromGlobal(m_draggingPointer);
        QMouseEvent move(QEvent::MouseMove, position, m_draggingPointer, Qt::NoButton, Qt::LeftButton,
                         Qt::NoModifier);
        QCoreApplication::sendEvent(m_hostWidget, &move);
    }
}

void KRTodoWindow::settle() {
    for (int round = 0; round < kMaximumSettleRounds; ++round) {
        const QSize hostSize = m_hostWidget->size();
        const KRSize fitting = m_checkListView->lastSizeThatFits();
        QCoreApplication::processEvents();
        KRRunLoop::main().runUntilIdle();
        m_hostWidget->krWindow().updateIfNeeded();
        const bool unchanged =
            hostSize == m_hostWidget->size() && fitting == m_checkListView->lastSizeThatFits();
        if (unchanged && !m_heightUpdateScheduled) {
            return;
        }
    }
}

QImage KRTodoWindow::renderCheckListToImage(double devicePixelRatio) {
    return m_hostWidget->renderToImage(devicePixelRatio);
}
