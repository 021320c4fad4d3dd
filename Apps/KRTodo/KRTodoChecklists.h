#pragma once

#include "KRTodoDatabase.h"

#include <QString>

#include <functional>
#include <map>
#include <memory>
#include <vector>

class KRTodoStore;
class QUndoStack;

// The checklists of a database, in their order, with a store for each one that has been shown (kept, so
// that each keeps its own undo history). Adding, renaming, deleting and moving checklists are steps of a
// history of their own; a deleted checklist's items come back with it.
class KRTodoChecklists {
public:
    explicit KRTodoChecklists(std::shared_ptr<KRTodoDatabase> database);
    ~KRTodoChecklists();
    KRTodoChecklists(const KRTodoChecklists&) = delete;
    KRTodoChecklists& operator=(const KRTodoChecklists&) = delete;

    KRTodoDatabase& database() const { return *m_database; }
    const std::vector<KRTodoChecklistRecord>& records() const { return m_records; }
    // The index of the checklist in records(), or -1.
    int indexOf(qint64 checklist) const;
    // The checklist's store, made on first use.
    std::shared_ptr<KRTodoStore> store(qint64 checklist);
    // How many of the checklist's items are open.
    KRUInteger openItemCount(qint64 checklist) const;

    // Each of these is one undoable step. add answers the new checklist's identifier (0 when refused).
    qint64 add(const QString& name);
    void rename(qint64 checklist, const QString& name);
    void remove(qint64 checklist);
    // Moves the checklist by offset places (negative: up).
    void move(qint64 checklist, int offset);

    QUndoStack& undoStack() const { return *m_undoStack; }
    // Told after every change of the checklists (and of their open counts), to show them again.
    void setChangedHandler(std::function<void()> handler);
    void notifyChanged();

private:
    void reload();
    double positionForNewChecklist() const;

    std::shared_ptr<KRTodoDatabase> m_database;
    std::vector<KRTodoChecklistRecord> m_records;
    std::map<qint64, std::shared_ptr<KRTodoStore>> m_stores;
    std::unique_ptr<QUndoStack> m_undoStack;
    std::function<void()> m_changedHandler;
};
