#pragma once

#include "Foundation/KRTypes.h"

#include <QImage>
#include <QMainWindow>
#include <QPointF>
#include <QRect>

#include <memory>

class KRCheckListView;
class KRCheckListWidget;
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

// KRTodo's main window: the store's checklist in a KRCheckListWidget, which makes the list as wide as its
// viewport and as tall as its rows, keeps the caret in view, scrolls with the wheel and the page keys and
// by itself while a row is dragged near an edge. The window adds the empty-checklist hint, what clicks
// below the rows do, the Tab rules, the menus, the sidebar and the undo history.
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
    KRCheckListWidget& checkListWidget() const { return *m_checkListWidget; }
    QScrollArea& scrollArea() const;
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
    bool isCaretRevealScheduled() const;

    // The speed at which the viewport scrolls by itself (points per second, negative upward) while a row is
    // dragged with the pointer at y in the viewport's coordinates: none outside the edge zones, faster the
    // deeper the pointer is in one, the most at the edge and beyond it.
    double autoScrollSpeedAtViewportY(double y) const;
    bool isAutoScrollScheduled() const;

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
    void scheduleEmptyHintUpdate();
    void setUpEmptyHint();
    void updateEmptyHint();
    void addItemFromButton();
    static bool isKeyAllowedWhileReadOnly(const QKeyEvent& event);
    // After Tab or Shift+Tab leaves the list focused with nothing edited or selected, the item at index is
    // selected on the next turn, so that the arrows, Return and Delete have something to act on.
    void selectItemAfterFocusMove(KRUInteger index);
    bool isBelowRows(const QMouseEvent& event) const;
    void endEditingForPressBelowRows(const QMouseEvent& event);
    bool insertItemForDoubleClickBelowRows(const QMouseEvent& event);

    std::shared_ptr<KRTodoStore> m_store;
    std::shared_ptr<KRCheckListView> m_checkListView;
    KRCheckListWidget* m_checkListWidget = nullptr;
    KRHostWidget* m_hostWidget = nullptr;
    // Declared after the list it works on, so it goes first.
    std::unique_ptr<KRTodoMenus> m_menus;
    QWidget* m_emptyHint = nullptr;
    QToolButton* m_addButton = nullptr;
    QLabel* m_readOnlyNotice = nullptr;
    KRTodoChecklists* m_checklists = nullptr;
    KRTodoSidebar* m_sidebar = nullptr;
    KRTodoShortcutsWindow* m_shortcutsWindow = nullptr;
    bool m_emptyHintUpdateScheduled = false;
};
