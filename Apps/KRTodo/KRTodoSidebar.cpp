#include "KRTodoSidebar.h"

#include "KRTodoChecklists.h"

#include "Foundation/KRRunLoop.h"

#include <QHBoxLayout>
#include <QHeaderView>
#include <QToolButton>
#include <QTreeWidget>
#include <QVBoxLayout>

#include <algorithm>
#include <utility>

namespace {

enum Column { NameColumn, CountColumn };
constexpr int kChecklistRole = Qt::UserRole;

QToolButton* makeButton(const QString& text, const QString& tip) {
    auto* button = new QToolButton;
    button->setText(text);
    button->setToolTip(tip);
    button->setAccessibleName(tip);
    button->setFocusPolicy(Qt::NoFocus);
    return button;
}

} // namespace

KRTodoSidebar::KRTodoSidebar(KRTodoChecklists& checklists, QWidget* parent)
    : QWidget(parent), m_checklists(checklists) {
    m_tree = new QTreeWidget;
    m_tree->setColumnCount(2);
    m_tree->setHeaderHidden(true);
    m_tree->setRootIsDecorated(false);
    m_tree->setEditTriggers(QAbstractItemView::DoubleClicked | QAbstractItemView::EditKeyPressed);
    m_tree->header()->setStretchLastSection(false);
    m_tree->header()->setSectionResizeMode(NameColumn, QHeaderView::Stretch);
    m_tree->header()->setSectionResizeMode(CountColumn, QHeaderView::ResizeToContents);
    m_tree->setAccessibleName(QStringLiteral("Checklists"));
    // Checklists are dragged into another order; they land between others, never in one.
    m_tree->setDragDropMode(QAbstractItemView::InternalMove);
    m_tree->setDefaultDropAction(Qt::MoveAction);

    m_addButton = makeButton(QStringLiteral("+"), QStringLiteral("New Checklist"));
    m_deleteButton = makeButton(QStringLiteral("\u2212"), QStringLiteral("Delete Checklist"));
    m_moveUpButton = makeButton(QStringLiteral("\u25B2"), QStringLiteral("Move Checklist Up"));
    m_moveDownButton = makeButton(QStringLiteral("\u25BC"), QStringLiteral("Move Checklist Down"));
    auto* buttons = new QHBoxLayout;
    for (QToolButton* button : {m_addButton, m_deleteButton, m_moveUpButton, m_moveDownButton}) {
        buttons->addWidget(button);
    }
    buttons->addStretch();
    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->addWidget(m_tree);
    layout->addLayout(buttons);

    QObject::connect(m_addButton, &QToolButton::clicked, this, [this] { addChecklist(); });
    QObject::connect(m_deleteButton, &QToolButton::clicked, this, [this] { deleteCurrentChecklist(); });
    QObject::connect(m_moveUpButton, &QToolButton::clicked, this, [this] { moveCurrentChecklist(-1); });
    QObject::connect(m_moveDownButton, &QToolButton::clicked, this, [this] { moveCurrentChecklist(1); });
    QObject::connect(m_tree, &QTreeWidget::currentItemChanged, this,
                     [this](QTreeWidgetItem* item) { pick(item); });
    QObject::connect(m_tree, &QTreeWidget::itemChanged, this,
                     [this](QTreeWidgetItem* item, int column) { itemRenamed(item, column); });
    QObject::connect(m_tree->model(), &QAbstractItemModel::rowsInserted, this,
                     [this](const QModelIndex& rowParent, int first, int) {
                         if (!m_refreshing && !rowParent.isValid()) {
                             itemDropped(first);
                         }
                     });
    refresh();
}

KRTodoSidebar::~KRTodoSidebar() {
    *m_alive = false;
}

void KRTodoSidebar::setCurrentChecklistChangedHandler(std::function<void(qint64)> handler) {
    m_currentChecklistChangedHandler = std::move(handler);
}

void KRTodoSidebar::setCurrentChecklist(qint64 checklist) {
    m_current = checklist;
    scheduleRefresh();
}

void KRTodoSidebar::scheduleRefresh() {
    if (m_refreshScheduled) {
        return;
    }
    m_refreshScheduled = true;
    KRRunLoop::main().performAfterDelay(0.0, [this, alive = std::weak_ptr<bool>(m_alive)] {
        if (alive.lock()) {
            refresh();
        }
    });
}

void KRTodoSidebar::refresh() {
    m_refreshScheduled = false;
    m_refreshing = true;
    const std::vector<KRTodoChecklistRecord>& records = m_checklists.records();
    while (m_tree->topLevelItemCount() > static_cast<int>(records.size())) {
        delete m_tree->takeTopLevelItem(m_tree->topLevelItemCount() - 1);
    }
    while (m_tree->topLevelItemCount() < static_cast<int>(records.size())) {
        auto* item = new QTreeWidgetItem;
        // A read-only file's checklists are neither renamed nor reordered; none is a place to drop in.
        Qt::ItemFlags flags = Qt::ItemIsSelectable | Qt::ItemIsEnabled;
        if (!m_checklists.database().isReadOnly()) {
            flags |= Qt::ItemIsEditable | Qt::ItemIsDragEnabled;
        }
        item->setFlags(flags);
        item->setTextAlignment(CountColumn, Qt::AlignRight | Qt::AlignVCenter);
        m_tree->addTopLevelItem(item);
    }
    QTreeWidgetItem* current = nullptr;
    for (std::size_t row = 0; row < records.size(); ++row) {
        QTreeWidgetItem* item = m_tree->topLevelItem(static_cast<int>(row));
        const KRTodoChecklistRecord& record = records[row];
        item->setData(NameColumn, kChecklistRole, record.identifier);
        if (!m_tree->isPersistentEditorOpen(item, NameColumn) && item->text(NameColumn) != record.name) {
            item->setText(NameColumn, record.name);
        }
        const KRUInteger open = m_checklists.openItemCount(record.identifier);
        item->setText(CountColumn, open > 0 ? QString::number(open) : QString());
        if (record.identifier == m_current) {
            current = item;
        }
    }
    m_refreshing = false;
    // The current checklist went away (deleted): the one now in its place, or the last, is shown.
    if (!current && m_tree->topLevelItemCount() > 0) {
        m_tree->setCurrentItem(m_tree->topLevelItem(0));
    } else if (current && m_tree->currentItem() != current) {
        m_refreshing = true;
        m_tree->setCurrentItem(current);
        m_refreshing = false;
    }
    updateButtons();
}

QString KRTodoSidebar::nameAt(int row) const {
    const QTreeWidgetItem* item = m_tree->topLevelItem(row);
    return item ? item->text(NameColumn) : QString();
}

QString KRTodoSidebar::countAt(int row) const {
    const QTreeWidgetItem* item = m_tree->topLevelItem(row);
    return item ? item->text(CountColumn) : QString();
}

void KRTodoSidebar::updateButtons() {
    const int row = m_checklists.indexOf(m_current);
    const int count = static_cast<int>(m_checklists.records().size());
    const bool writable = !m_checklists.database().isReadOnly();
    m_addButton->setEnabled(writable);
    m_deleteButton->setEnabled(writable && count > 1);
    m_moveUpButton->setEnabled(writable && row > 0);
    m_moveDownButton->setEnabled(writable && row >= 0 && row < count - 1);
}

void KRTodoSidebar::pick(QTreeWidgetItem* item) {
    if (m_refreshing || !item) {
        return;
    }
    const qint64 checklist = item->data(NameColumn, kChecklistRole).toLongLong();
    if (checklist == m_current) {
        return;
    }
    m_current = checklist;
    updateButtons();
    if (m_currentChecklistChangedHandler) {
        m_currentChecklistChangedHandler(checklist);
    }
}

void KRTodoSidebar::itemRenamed(QTreeWidgetItem* item, int column) {
    if (m_refreshing || column != NameColumn) {
        return;
    }
    const qint64 checklist = item->data(NameColumn, kChecklistRole).toLongLong();
    const QString name = item->text(NameColumn).trimmed();
    const int row = m_checklists.indexOf(checklist);
    if (row < 0) {
        return;
    }
    if (name.isEmpty()) {
        // A checklist keeps a name: an emptied one gets its old name back.
        scheduleRefresh();
        return;
    }
    m_checklists.rename(checklist, name);
}

// A row dragged to row: its checklist moves there. The tree has moved the row already; the checklists
// follow, and the rows are shown again from them on the next turn.
void KRTodoSidebar::itemDropped(int row) {
    const QTreeWidgetItem* item = m_tree->topLevelItem(row);
    if (!item) {
        return;
    }
    const qint64 checklist = item->data(NameColumn, kChecklistRole).toLongLong();
    const int from = m_checklists.indexOf(checklist);
    if (from >= 0 && from != row) {
        m_checklists.move(checklist, row - from);
    }
    scheduleRefresh();
}

void KRTodoSidebar::addChecklist() {
    const qint64 checklist = m_checklists.add(QStringLiteral("New Checklist"));
    if (checklist == 0) {
        return;
    }
    refresh();
    const int row = m_checklists.indexOf(checklist);
    QTreeWidgetItem* item = m_tree->topLevelItem(row);
    if (item) {
        m_tree->setCurrentItem(item);
        m_tree->editItem(item, NameColumn);
    }
}

void KRTodoSidebar::deleteCurrentChecklist() {
    const int row = m_checklists.indexOf(m_current);
    m_checklists.remove(m_current);
    if (m_checklists.indexOf(m_current) >= 0 || m_checklists.records().empty()) {
        return;
    }
    // The checklist that took its place is shown, or the one above when it was the last.
    const int next = std::min(row, static_cast<int>(m_checklists.records().size()) - 1);
    m_current = m_checklists.records()[static_cast<std::size_t>(next)].identifier;
    refresh();
    if (m_currentChecklistChangedHandler) {
        m_currentChecklistChangedHandler(m_current);
    }
}

void KRTodoSidebar::moveCurrentChecklist(int offset) {
    m_checklists.move(m_current, offset);
    refresh();
}
