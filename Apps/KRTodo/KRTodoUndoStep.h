#pragma once

#include "KRTodoChange.h"
#include "KRTodoListState.h"

#include <QUndoCommand>

#include <vector>

class KRTodoStore;

// One step of a checklist's undo history: the changes one user action made, in order, with the list's
// state before and after it. The changes have already been made when the step is pushed, so its first redo
// does nothing; later ones make them again through the store, which reports them to the list.
//
// The changes of one action arrive one by one: each comes as a step of its own with the action's number,
// and merges into the step on top of the stack that has the same number.
class KRTodoUndoStep : public QUndoCommand {
public:
    enum class Kind { Typing, Paste, Command };

    KRTodoUndoStep(KRTodoStore& store, int number, Kind kind, KRTodoChange change, KRTodoListState before);

    int number() const { return m_number; }
    Kind kind() const { return m_kind; }
    const std::vector<KRTodoChange>& changes() const { return m_changes; }
    const KRTodoListState& stateBefore() const { return m_before; }
    const KRTodoListState& stateAfter() const { return m_after; }
    void setStateAfter(const KRTodoListState& state) { m_after = state; }

    // What the menu calls the step: "Typing", "Paste", "Move", "Split", …
    QString name() const;

    int id() const override;
    bool mergeWith(const QUndoCommand* other) override;
    void undo() override;
    void redo() override;

private:
    bool cancelsOut() const;

    KRTodoStore& m_store;
    int m_number = 0;
    Kind m_kind = Kind::Command;
    std::vector<KRTodoChange> m_changes;
    KRTodoListState m_before;
    KRTodoListState m_after;
    bool m_made = true;
};
