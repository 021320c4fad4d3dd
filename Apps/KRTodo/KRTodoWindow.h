#pragma once

#include "Foundation/KRTypes.h"

#include <QImage>
#include <QMainWindow>
#include <QPointF>
#include <QRect>

#include <memory>

class KRCheckListView;
class KRHostWidget;
class KRTodoChecklists;
class KRTodoMenus;
class KRTodoShortcutsWindow;
class KRTodoSidebar;
class KRTodoStore;
class QKeyEvent;
class QLabel;
class QMouseEvent;
class QScrollArea;
class QToolButton;

// KRTodo's main window: the store's checklist in a scroll area. The list is as wide as the scroll area's
// viewport and as tall as its rows; it scrolls when it is taller than the window, keeps the caret in view
// while the user types and moves from row to row, and scrolls by itself while a row is dragged near the
// viewport's top or bottom edge.
class KRTodoWindow : public QMainWindow {
public:
    explicit KRTodoWindow(std::shared_ptr<KRTodoStore> store, QWidget* parent = nullptr);
    ~KRTodoWindow() override;

    KRTodoStore& store() const { return *m_store; }
    const std::shared_ptr<KRTodoStore>& sharedStore() const { return m_store; }
    // Shows another checklist's store in the list, with its own undo history.
    void showStore(std::shared_ptr<KRTodoStore> store);
    // Shows the checklists in a sidebar, by which the user picks, adds, renames, deletes and reorders them.
    void showChecklists(KRTodoChecklists& checklists);
    KRTodoSidebar* sidebar() const { return m_sidebar; }
    KRCheckListView& checkListView() const { return *m_checkListView; }
    KRHostWidget& hostWidget() const { return *m_hostWidget; }
    QScrollArea& scrollArea() const { return *m_scrollArea; }
    KRTodoMenus& menus() const { return *m_menus; }
    // Shown over an empty checklist: what to press, and a button that adds an item to type into.
    QWidget& emptyHint() const { return *m_emptyHint; }
    QToolButton& addButton() const { return *m_addButton; }
    // Says why the checklist can't be changed, in the status bar; null while it can be.
    QLabel* readOnlyNotice() const { return m_readOnlyNotice; }

    // "Groceries — KRTodo": the checklist's name, or the app's alone while it has none.
    static QString titleForChecklist(const QString& name);
    // The database setting that names the checklist the window shows, so that it reopens on it.
    static QString checklistSettingKey();
    // Shows that the checklist can't be changed and why, and lets no key or menu change it.
    void showReadOnlyReason(const QString& reason);
    // Help › Keyboard Shortcuts, made when first asked for.
    KRTodoShortcutsWindow& keyboardShortcutsWindow();
    void showKeyboardShortcuts();

    // The caret of the edited title in the host widget's coordinates; null when nothing is edited.
    QRect caretRectInHostWidget() const;
    // Scrolls the caret into view on the next turn, once the list and the host have followed the change.
    void scheduleCaretReveal();
    bool isCaretRevealScheduled() const { return m_caretRevealScheduled; }

    // The speed at which the viewport scrolls by itself (points per second, negative upward) while a row is
    // dragged with the pointer at y in the viewport's coordinates: none outside the edge zones, faster the
    // deeper the pointer is in one, the most at the edge and beyond it.
    double autoScrollSpeedAtViewportY(double y) const;
    bool isAutoScrollScheduled() const { return m_autoScrollScheduled; }

    // Runs Qt's events and the toolkit's deferred work until the list's size has followed the window.
    void settle();
    // The whole list, also what lies outside the viewport, drawn at the given device pixel ratio.
    QImage renderCheckListToImage(double devicePixelRatio);

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    void setUpCheckListView();
    void attachStore();
    void detachStore();
    void followFocusForUndo();
    void setUpHelpMenu();
    void setUpScrollArea();
    void scheduleHeightUpdate();
    void updateHeight();
    void revealCaret();
    void setUpEmptyHint();
    void updateEmptyHint();
    void addItemFromButton();
    bool scrollByPageForKey(const QKeyEvent& event);
    static bool isKeyAllowedWhileReadOnly(const QKeyEvent& event);
    // After Tab or Shift+Tab leaves the list focused with nothing edited or selected, the item at index is
    // selected on the next turn, so that the arrows, Return and Delete have something to act on.
    void selectItemAfterFocusMove(KRUInteger index);
    bool isBelowRows(const QMouseEvent& event) const;
    void endEditingForPressBelowRows(const QMouseEvent& event);
    bool insertItemForDoubleClickBelowRows(const QMouseEvent& event);
    void followDraggingPointer(QPointF globalPosition);
    void scheduleAutoScroll();
    void autoScroll();

    std::shared_ptr<KRTodoStore> m_store;
    std::shared_ptr<KRCheckListView> m_checkListView;
    KRHostWidget* m_hostWidget = nullptr;
    QScrollArea* m_scrollArea = nullptr;
    // Declared after the list it works on, so it goes first.
    std::unique_ptr<KRTodoMenus> m_menus;
    QWidget* m_emptyHint = nullptr;
    QToolButton* m_addButton = nullptr;
    QLabel* m_readOnlyNotice = nullptr;
    KRTodoChecklists* m_checklists = nullptr;
    KRTodoSidebar* m_sidebar = nullptr;
    KRTodoShortcutsWindow* m_shortcutsWindow = nullptr;
    bool m_heightUpdateScheduled = false;
    bool m_caretRevealScheduled = false;
    // The pointer of the running drag (screen coordinates), and the auto-scroll steps: when the last one
    // ran, and the part of a point it left over.
    QPointF m_draggingPointer;
    bool m_autoScrollScheduled = false;
    double m_lastAutoScrollTime = 0.0;
    double m_autoScrollRemainder = 0.0;
};
