#pragma once

#include <QWidget>

#include <functional>

class KRTodoChecklists;
class QToolButton;
class QTreeWidget;
class QTreeWidgetItem;

// The checklists beside the list: each by name with the count of its open items. A checklist's name is
// renamed in place (double-click or F2); checklists are dragged into another order; the buttons add a
// checklist, delete the current one and move it up or down. Picking a checklist shows it.
class KRTodoSidebar : public QWidget {
public:
    explicit KRTodoSidebar(KRTodoChecklists& checklists, QWidget* parent = nullptr);
    ~KRTodoSidebar() override;

    QTreeWidget& tree() const { return *m_tree; }
    QToolButton& addButton() const { return *m_addButton; }
    QToolButton& deleteButton() const { return *m_deleteButton; }
    QToolButton& moveUpButton() const { return *m_moveUpButton; }
    QToolButton& moveDownButton() const { return *m_moveDownButton; }

    qint64 currentChecklist() const { return m_current; }
    // Makes checklist the current one, without telling the handler; the sidebar shows it on the next turn.
    void setCurrentChecklist(qint64 checklist);
    // Told when the user picks another checklist, or the current one goes away.
    void setCurrentChecklistChangedHandler(std::function<void(qint64)> handler);

    // The names and counts again, on the next turn (changes come in bursts).
    void scheduleRefresh();
    void refresh();
    // What a row says: the name, and the open items' count.
    QString nameAt(int row) const;
    QString countAt(int row) const;

    // Adds a checklist and starts renaming it in place.
    void addChecklist();
    void deleteCurrentChecklist();
    void moveCurrentChecklist(int offset);

private:
    void pick(QTreeWidgetItem* item);
    void itemRenamed(QTreeWidgetItem* item, int column);
    void itemDropped(int row);
    void updateButtons();

    KRTodoChecklists& m_checklists;
    QTreeWidget* m_tree = nullptr;
    QToolButton* m_addButton = nullptr;
    QToolButton* m_deleteButton = nullptr;
    QToolButton* m_moveUpButton = nullptr;
    QToolButton* m_moveDownButton = nullptr;
    qint64 m_current = 0;
    bool m_refreshing = false;
    bool m_refreshScheduled = false;
    std::function<void(qint64)> m_currentChecklistChangedHandler;
    std::shared_ptr<bool> m_alive = std::make_shared<bool>(true);
};
