#include "KRTodoShortcutsWindow.h"

#include "KRTodoDefaults.h"

#include "KRCheckListView.h"

#include "Text/KRKeyBindings.h"

#include <QAction>
#include <QMainWindow>
#include <QMenu>
#include <QMenuBar>
#include <QTextBrowser>
#include <QVBoxLayout>

#include <vector>

namespace {

QString row(const QString& keys, const QString& action) {
    return QStringLiteral("<tr><td style=\"padding-right:16px\"><b>%1</b></td><td>%2</td></tr>")
        .arg(keys.toHtmlEscaped(), action.toHtmlEscaped());
}

QString section(const QString& heading, const QString& rows) {
    return QStringLiteral("<h3>%1</h3><table>%2</table>").arg(heading.toHtmlEscaped(), rows);
}

// The keys this desktop binds to selector, or the chord the list reads itself.
QStringList keysForCommand(const KRCheckListView::KeyCommand& command, KRKeyBindings::Platform platform) {
    QStringList keys;
    for (const KRKeyBindings::Binding& binding : KRKeyBindings::bindings(platform)) {
        // The list reads a modified Return itself, whatever it is bound to.
        if (binding.selectors.contains(QLatin1String(command.selector)) &&
            !KRCheckListView::isCommitKey(binding.keyCode, binding.modifiers)) {
            keys << binding.keys;
        }
    }
    const char* chord = platform == KRKeyBindings::Platform::Mac ? command.chordMac : command.chordOther;
    if (chord) {
        keys << QString::fromUtf8(chord);
    }
    return keys;
}

} // namespace

KRTodoShortcutsWindow::KRTodoShortcutsWindow(QMainWindow& window) : QDialog(&window), m_window(window) {
    setWindowTitle(QStringLiteral("Keyboard Shortcuts"));
    m_browser = new QTextBrowser;
    auto* layout = new QVBoxLayout(this);
    layout->addWidget(m_browser);
    resize(KRTodoDefaults::shortcutsWindowSize());
    refresh();
}

void KRTodoShortcutsWindow::refresh() {
    m_browser->setHtml(section(QStringLiteral("In the checklist"), checklistRows()) +
                       section(QStringLiteral("Menus"), menuRows()));
}

QString KRTodoShortcutsWindow::text() const {
    return m_browser->toPlainText();
}

// One row per thing the list does; commands that do the same share a row and their keys.
QString KRTodoShortcutsWindow::checklistRows() const {
    const KRKeyBindings::Platform platform = KRKeyBindings::currentPlatform();
    std::vector<std::pair<QString, QStringList>> rows;
    for (const KRCheckListView::KeyCommand& command : KRCheckListView::keyCommands()) {
        const QString summary = QString::fromUtf8(command.summary);
        auto existing =
            std::find_if(rows.begin(), rows.end(), [&](const auto& each) { return each.first == summary; });
        if (existing == rows.end()) {
            rows.emplace_back(summary, QStringList());
            existing = rows.end() - 1;
        }
        for (const QString& keys : keysForCommand(command, platform)) {
            if (!existing->second.contains(keys)) {
                existing->second << keys;
            }
        }
    }
    QString html;
    for (const auto& [summary, keys] : rows) {
        html +=
            row(keys.isEmpty() ? QStringLiteral("no key on this desktop") : keys.join(QStringLiteral(", ")),
                summary);
    }
    html += row(QStringLiteral("Page Up, Page Down"), QStringLiteral("Scroll by a page"));
    return html;
}

QString KRTodoShortcutsWindow::menuRows() const {
    QString html;
    for (QAction* menuAction : m_window.menuBar()->actions()) {
        const QMenu* menu = menuAction->menu();
        if (!menu) {
            continue;
        }
        const QString menuName = QString(menuAction->text()).remove(QLatin1Char('&'));
        for (QAction* action : menu->actions()) {
            if (action->isSeparator() || action->shortcuts().isEmpty()) {
                continue;
            }
            QStringList keys;
            for (const QKeySequence& shortcut : action->shortcuts()) {
                keys << shortcut.toString(QKeySequence::NativeText);
            }
            html += row(keys.join(QStringLiteral(", ")),
                        menuName + QStringLiteral(" › ") + QString(action->text()).remove(QLatin1Char('&')));
        }
    }
    return html;
}
