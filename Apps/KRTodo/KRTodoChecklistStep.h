#pragma once

#include <QUndoCommand>

#include <functional>

// One undoable change of the checklists themselves (a new one, a rename, a deletion, a move), made by the
// functions it is given. The change is made when the step is pushed, by its first redo.
class KRTodoChecklistStep : public QUndoCommand {
public:
    KRTodoChecklistStep(const QString& name, std::function<void()> make, std::function<void()> takeBack);

    void undo() override;
    void redo() override;

private:
    std::function<void()> m_make;
    std::function<void()> m_takeBack;
};
