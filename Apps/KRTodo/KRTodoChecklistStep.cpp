#include "KRTodoChecklistStep.h"

#include <utility>

KRTodoChecklistStep::KRTodoChecklistStep(const QString& name, std::function<void()> make,
                                         std::function<void()> takeBack)
    : QUndoCommand(name), m_make(std::move(make)), m_takeBack(std::move(takeBack)) {}

void KRTodoChecklistStep::undo() {
    m_takeBack();
}

void KRTodoChecklistStep::redo() {
    m_make();
}
