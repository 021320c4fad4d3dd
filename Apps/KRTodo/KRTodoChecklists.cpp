#include "KRTodoChecklists.h"

#include "KRTodoChecklistStep.h"
#include "KRTodoStore.h"

#include <QUndoStack>

#include <algorithm>
#include <utility>

namespace {

// A checklist taken out of the database with everything needed to put it back as it was.
struct DetachedChecklist {
    KRTodoChecklistRecord record;
    std::vector<KRTodoItemRecord> items;
    std::shared_ptr<KRTodoStore> store;
};

} // namespace

KRTodoChecklists::KRTodoChecklists(std::shared_ptr<KRTodoDatabase> database)
    : m_database(std::move(database)), m_undoStack(std::make_unique<QUndoStack>()) {
    reload();
}

KRTodoChecklists::~KRTodoChecklists() {
    // The steps call back into this object: they go first.
    m_undoStack.reset();
    for (const auto& [checklist, store] : m_stores) {
        store->setItemsChangedHandler(nullptr);
    }
}

void KRTodoChecklists::reload() {
    m_records = m_database->checklists();
}

int KRTodoChecklists::indexOf(qint64 checklist) const {
    for (std::size_t index = 0; index < m_records.size(); ++index) {
        if (m_records[index].identifier == checklist) {
            return static_cast<int>(index);
        }
    }
    return -1;
}

std::shared_ptr<KRTodoStore> KRTodoChecklists::store(qint64 checklist) {
    const auto found = m_stores.find(checklist);
    if (found != m_stores.end()) {
        return found->second;
    }
    const int index = indexOf(checklist);
    if (index < 0) {
        return nullptr;
    }
    std::shared_ptr<KRTodoStore> store =
        KRTodoStore::makeStore(m_database, checklist, m_records[static_cast<std::size_t>(index)].name);
    store->setItemsChangedHandler([this] { notifyChanged(); });
    m_stores[checklist] = store;
    return store;
}

KRUInteger KRTodoChecklists::openItemCount(qint64 checklist) const {
    return m_database->openItemCount(checklist);
}

void KRTodoChecklists::setChangedHandler(std::function<void()> handler) {
    m_changedHandler = std::move(handler);
}

void KRTodoChecklists::notifyChanged() {
    if (m_changedHandler) {
        m_changedHandler();
    }
}

double KRTodoChecklists::positionForNewChecklist() const {
    return m_records.empty() ? 1.0 : m_records.back().position + 1.0;
}

// Steps
// ------------------------------------------------------------------------------------------------------

qint64 KRTodoChecklists::add(const QString& name) {
    if (m_database->isReadOnly()) {
        return 0;
    }
    const std::optional<qint64> made = m_database->addChecklist(name, positionForNewChecklist());
    if (!made) {
        return 0;
    }
    const qint64 checklist = *made;
    reload();
    auto detached = std::make_shared<DetachedChecklist>();
    auto first = std::make_shared<bool>(true);
    // Taking a new checklist back keeps what was put into it meanwhile, for the redo.
    m_undoStack->push(new KRTodoChecklistStep(
        QStringLiteral("New Checklist"),
        [this, detached, first] {
            if (*first) {
                *first = false;
                return;
            }
            m_database->beginBatch();
            m_database->restoreChecklist(detached->record);
            m_database->insertItems(detached->record.identifier, detached->items);
            m_database->endBatch();
            if (detached->store) {
                m_stores[detached->record.identifier] = detached->store;
            }
            reload();
            notifyChanged();
        },
        [this, detached, checklist] {
            const int index = indexOf(checklist);
            if (index < 0) {
                return;
            }
            detached->record = m_records[static_cast<std::size_t>(index)];
            detached->store = m_stores.count(checklist) ? m_stores[checklist] : nullptr;
            if (detached->store) {
                detached->store->commitTypedTitles();
            }
            detached->items = m_database->items(checklist);
            m_database->removeChecklist(checklist);
            m_stores.erase(checklist);
            reload();
            notifyChanged();
        }));
    notifyChanged();
    return checklist;
}

void KRTodoChecklists::rename(qint64 checklist, const QString& name) {
    const int index = indexOf(checklist);
    if (index < 0 || m_database->isReadOnly() || m_records[static_cast<std::size_t>(index)].name == name) {
        return;
    }
    const QString old = m_records[static_cast<std::size_t>(index)].name;
    const auto setName = [this, checklist](const QString& value) {
        m_database->renameChecklist(checklist, value);
        if (const auto found = m_stores.find(checklist); found != m_stores.end()) {
            found->second->setName(value);
        }
        reload();
        notifyChanged();
    };
    m_undoStack->push(new KRTodoChecklistStep(
        QStringLiteral("Rename Checklist"), [setName, name] { setName(name); },
        [setName, old] { setName(old); }));
}

void KRTodoChecklists::remove(qint64 checklist) {
    // The last checklist stays: the window always shows one.
    if (indexOf(checklist) < 0 || m_records.size() < 2 || m_database->isReadOnly()) {
        return;
    }
    auto detached = std::make_shared<DetachedChecklist>();
    m_undoStack->push(new KRTodoChecklistStep(
        QStringLiteral("Delete Checklist"),
        [this, detached, checklist] {
            const int index = indexOf(checklist);
            if (index < 0) {
                return;
            }
            detached->record = m_records[static_cast<std::size_t>(index)];
            detached->store = store(checklist);
            detached->store->commitTypedTitles();
            detached->items = m_database->items(checklist);
            m_database->removeChecklist(checklist);
            m_stores.erase(checklist);
            reload();
            notifyChanged();
        },
        [this, detached] {
            m_database->beginBatch();
            m_database->restoreChecklist(detached->record);
            m_database->insertItems(detached->record.identifier, detached->items);
            m_database->endBatch();
            m_stores[detached->record.identifier] = detached->store;
            reload();
            notifyChanged();
        }));
}

void KRTodoChecklists::move(qint64 checklist, int offset) {
    const int index = indexOf(checklist);
    const int count = static_cast<int>(m_records.size());
    const int target = std::clamp(index + offset, 0, count - 1);
    if (index < 0 || target == index || m_database->isReadOnly()) {
        return;
    }
    // Its new key lies between the two checklists it lands between.
    const auto positionAt = [this](int at) { return m_records[static_cast<std::size_t>(at)].position; };
    double position = 0.0;
    if (target == 0) {
        position = positionAt(0) - 1.0;
    } else if (target == count - 1) {
        position = positionAt(count - 1) + 1.0;
    } else {
        const int neighbour = offset < 0 ? target - 1 : target + 1;
        position = (positionAt(target) + positionAt(neighbour)) / 2.0;
    }
    const double old = positionAt(index);
    const auto setPosition = [this, checklist](double value) {
        m_database->setChecklistPosition(checklist, value);
        reload();
        notifyChanged();
    };
    m_undoStack->push(new KRTodoChecklistStep(
        QStringLiteral("Move Checklist"), [setPosition, position] { setPosition(position); },
        [setPosition, old] { setPosition(old); }));
}
