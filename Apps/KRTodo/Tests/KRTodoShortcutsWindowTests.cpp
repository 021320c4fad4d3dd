#include "KRTodoShortcutsWindow.h"

#include "KRTodoStore.h"
#include "KRTodoWindow.h"

#include "KRCheckListView.h"

#include "Foundation/KRRunLoop.h"
#include "Text/KRKeyBindings.h"

#include <QAction>
#include <QDir>
#include <QMenu>
#include <QMenuBar>

#include <gtest/gtest.h>

#include <memory>
#include <string>

namespace {

class KRTodoShortcutsWindowTests : public ::testing::TestWithParam<KRKeyBindings::Platform> {
protected:
    void SetUp() override {
        KRKeyBindings::setPlatformOverride(GetParam());
        window.setAttribute(Qt::WA_DontShowOnScreen);
        window.show();
        window.settle();
    }
    void TearDown() override {
        KRKeyBindings::setPlatformOverride(std::nullopt);
        KRRunLoop::main().cancelAll();
    }

    QAction* helpAction() const {
        for (QAction* menu : window.menuBar()->actions()) {
            if (menu->text() == QStringLiteral("&Help")) {
                return menu->menu()->actions().value(0);
            }
        }
        return nullptr;
    }

    std::shared_ptr<KRTodoStore> store = KRTodoStore::makeSampleStore();
    KRTodoWindow window{store};
};

TEST_P(KRTodoShortcutsWindowTests, HelpOpensIt) {
    QAction* action = helpAction();
    ASSERT_NE(action, nullptr);
    EXPECT_EQ(action->text(), QStringLiteral("&Keyboard Shortcuts"));
    EXPECT_EQ(action->shortcuts(), QKeySequence::keyBindings(QKeySequence::HelpContents));
    EXPECT_FALSE(action->shortcuts().isEmpty()) << "the desktop's help key";
    action->trigger();
    EXPECT_TRUE(window.keyboardShortcutsWindow().isVisible());
    EXPECT_EQ(window.keyboardShortcutsWindow().windowTitle(), QStringLiteral("Keyboard Shortcuts"));
}

// Every command of the list's table is there with what it does, and so is every key this desktop binds
// to one of them.
TEST_P(KRTodoShortcutsWindowTests, ListsEveryCommandOfTheChecklistWithItsKeys) {
    const QString text = window.keyboardShortcutsWindow().text();
    for (const KRCheckListView::KeyCommand& command : KRCheckListView::keyCommands()) {
        EXPECT_TRUE(text.contains(QString::fromUtf8(command.summary))) << command.selector;
        const char* chord =
            GetParam() == KRKeyBindings::Platform::Mac ? command.chordMac : command.chordOther;
        if (chord) {
            EXPECT_TRUE(text.contains(QString::fromUtf8(chord))) << command.selector;
        }
        for (const KRKeyBindings::Binding& binding : KRKeyBindings::bindings(GetParam())) {
            if (binding.selectors.contains(QLatin1String(command.selector)) &&
                !KRCheckListView::isCommitKey(binding.keyCode, binding.modifiers)) {
                EXPECT_TRUE(text.contains(binding.keys))
                    << binding.keys.toStdString() << " for " << command.selector << " is missing";
            }
        }
    }
}

TEST_P(KRTodoShortcutsWindowTests, ListsEveryMenuShortcut) {
    const QString text = window.keyboardShortcutsWindow().text();
    int shortcuts = 0;
    for (QAction* menu : window.menuBar()->actions()) {
        for (QAction* action : menu->menu()->actions()) {
            for (const QKeySequence& key : action->shortcuts()) {
                ++shortcuts;
                EXPECT_TRUE(text.contains(key.toString(QKeySequence::NativeText)))
                    << action->text().toStdString() << " " << key.toString().toStdString();
                EXPECT_TRUE(text.contains(QString(action->text()).remove(QLatin1Char('&'))))
                    << action->text().toStdString();
            }
        }
    }
    EXPECT_GT(shortcuts, 10) << "the menus have their keys";
}

TEST_P(KRTodoShortcutsWindowTests, AScreenshotToLookAt) {
    KRTodoShortcutsWindow& shortcuts = window.keyboardShortcutsWindow();
    shortcuts.setAttribute(Qt::WA_DontShowOnScreen);
    shortcuts.show();
    QDir().mkpath(QStringLiteral("out"));
    const QString name =
        GetParam() == KRKeyBindings::Platform::Mac ? QStringLiteral("mac") : QStringLiteral("other");
    EXPECT_TRUE(shortcuts.grab().save(QStringLiteral("out/KRTodo-shortcuts-%1.png").arg(name)));
}

std::string desktopName(const ::testing::TestParamInfo<KRKeyBindings::Platform>& desktop) {
    return desktop.param == KRKeyBindings::Platform::Mac ? "Mac" : "WindowsAndLinux";
}

INSTANTIATE_TEST_SUITE_P(BothDesktops, KRTodoShortcutsWindowTests,
                         ::testing::Values(KRKeyBindings::Platform::Other, KRKeyBindings::Platform::Mac),
                         desktopName);

} // namespace
