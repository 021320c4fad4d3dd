#include "KRTodoUndoStep.h"

#include "KRTodoStore.h"

#include <algorithm>
#include <utility>

namespace {

// Every step of a checklist may merge with the one before it; the numbers decide whether it does.
constexpr int kMergeableStepId = 1;

bool hasKind(const std::vector<KRTodoChange>& changes, KRTodoChange::Kind kind) {
    return std::any_of(changes.begin(), changes.end(),
                       [kind](const KRTodoChange& change) { return change.kind == kind; });
}

QString statusName(const std::vector<KRTodoChange>& changes) {
    const KRUInteger status = changes.back().newStatus;
    const bool same = std::all_of(changes.begin(), changes.end(), [status](const KRTodoChange& change) {
        return change.kind == KRTodoChange::Kind::Status && change.newStatus == status;
    });
    if (!same) {
        return QStringLiteral("Status Change");
    }
    switch (status) {
    case KRTodoItem::Completed:
        return QStringLiteral("Complete");
    case KRTodoItem::Canceled:
        return QStringLiteral("Cancel");
    default:
        return QStringLiteral("Reopen");
    }
}

} // namespace

KRTodoUndoStep::KRTodoUndoStep(KRTodoStore& store, int number, Kind kind, KRTodoChange change,
                               KRTodoListState before)
    : m_store(store), m_number(number), m_kind(kind), m_before(std::move(before)) {
    m_changes.push_back(std::move(change));
    m_made = true;
    setText(name());
}

QString KRTodoUndoStep::name() const {
    using ChangeKind = KRTodoChange::Kind;
    if (m_kind == Kind::Typing) {
        return QStringLiteral("Typing");
    }
    if (m_kind == Kind::Paste) {
        return QStringLiteral("Paste");
    }
    const bool inserts = hasKind(m_changes, ChangeKind::Insert);
    const bool removes = hasKind(m_changes, ChangeKind::Remove);
    const bool titles = hasKind(m_changes, ChangeKind::Title);
    if (inserts && titles) {
        return QStringLiteral("Split");
    }
    if (removes && titles) {
        return QStringLiteral("Merge");
    }
    if (inserts && removes) {
        return QStringLiteral("Replace");
    }
    if (inserts) {
        return QStringLiteral("Insert");
    }
    if (removes) {
        return QStringLiteral("Delete");
    }
    if (hasKind(m_changes, ChangeKind::Move)) {
        return QStringLiteral("Move");
    }
    if (hasKind(m_changes, ChangeKind::Status)) {
        return statusName(m_changes);
    }
    return QStringLiteral("Edit Title");
}

int KRTodoUndoStep::id() const {
    return kMergeableStepId;
}

bool KRTodoUndoStep::mergeWith(const QUndoCommand* other) {
    const auto* step = dynamic_cast<const KRTodoUndoStep*>(other);
    if (!step || step->m_number != m_number) {
        return false;
    }
    for (const KRTodoChange& change : step->m_changes) {
        // Keystrokes in one title make one change from the first title to the last.
        if (!m_changes.empty() && change.kind == KRTodoChange::Kind::Title &&
            m_changes.back().kind == KRTodoChange::Kind::Title && m_changes.back().index == change.index) {
            m_changes.back().newTitle = change.newTitle;
            continue;
        }
        m_changes.push_back(change);
    }
    if (step->m_kind == Kind::Paste) {
        m_kind = Kind::Paste;
    }
    m_after = step->m_after;
    setText(name());
    // An item made and removed again untouched leaves nothing to undo.
    setObsolete(cancelsOut());
    return true;
}

bool KRTodoUndoStep::cancelsOut() const {
    if (m_changes.size() != 2) {
        return false;
    }
    const KRTodoChange& first = m_changes.front();
    const KRTodoChange& second = m_changes.back();
    return first.kind == KRTodoChange::Kind::Insert && second.kind == KRTodoChange::Kind::Remove &&
           first.indexes == second.indexes && first.items == second.items;
}

void KRTodoUndoStep::undo() {
    m_store.replay(m_changes, false, m_before);
    m_made = false;
}

void KRTodoUndoStep::redo() {
    if (m_made) {
        return;
    }
    m_store.replay(m_changes, true, m_after);
    m_made = true;
}
