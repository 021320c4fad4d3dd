#include "KRTodoSidebar.h"

#include "KRQtTestPrinters.h"

#include "KRTodoChecklists.h"
#include "KRTodoMenus.h"
#include "KRTodoStore.h"
#include "KRTodoWindow.h"

#include "KRCheckListView.h"

#include "Foundation/KRRunLoop.h"
#include "Platform/KRHostWidget.h"

#include <QAction>
#include <QApplication>
#include <QLineEdit>
#include <QTemporaryDir>
#include <QTest>
#include <QToolButton>
#include <QTreeWidget>
#include <QUndoStack>

#include <gtest/gtest.h>

#include <memory>
#include <ostream>

namespace {

// KRTodo's window with the checklists of a database beside the list: "Groceries" (two of three items
// open) and "Work" (one open item); Groceries is shown.
class KRTodoSidebarTests : public ::testing::Test {
protected:
    void SetUp() override {
        ASSERT_TRUE(directory.isValid());
        database = KRTodoDatabase::open(directory.filePath(QStringLiteral("KRTodo.sqlite")));
        ASSERT_EQ(database->problem(), KRTodoDatabase::Problem::None);
        checklists = std::make_unique<KRTodoChecklists>(database);
        groceries = checklists->add(QStringLiteral("Groceries"));
        work = checklists->add(QStringLiteral("Work"));
        checklists->store(groceries)->insertItems({{QString(), KRTodoItem::Open, QStringLiteral("milk")},
                                                   {QString(), KRTodoItem::Completed, QStringLiteral("eggs")},
                                                   {QString(), KRTodoItem::Open, QStringLiteral("bread")}},
                                                  KRIndexSet(KRRange{0, 3}), nullptr);
        checklists->store(work)->insertItems({{QString(), KRTodoItem::Open, QStringLiteral("report")}},
                                             KRIndexSet(0), nullptr);
        checklists->undoStack().clear();
        window = std::make_unique<KRTodoWindow>(checklists->store(groceries));
        window->showChecklists(*checklists);
        window->show();
        window->activateWindow();
        window->hostWidget().setFocus();
        settle();
    }
    void TearDown() override {
        window.reset();
        checklists.reset();
        database.reset();
        KRRunLoop::main().cancelAll();
    }

    void settle() {
        window->settle();
        KRRunLoop::main().runUntilIdle();
    }
    KRTodoSidebar& sidebar() const { return *window->sidebar(); }
    QTreeWidget& tree() const { return sidebar().tree(); }
    QStringList names() const {
        QStringList names;
        for (int row = 0; row < tree().topLevelItemCount(); ++row) {
            names << sidebar().nameAt(row);
        }
        return names;
    }
    QString title() const { return window->windowTitle(); }
    // Types into the in-place editor of the current row's name and presses Return.
    void typeName(const QString& name) {
        auto* editor = qobject_cast<QLineEdit*>(QApplication::focusWidget());
        ASSERT_NE(editor, nullptr) << "the name is being edited in place";
        editor->selectAll();
        QTest::keyClicks(editor, name);
        QTest::keyClick(editor, Qt::Key_Return);
        settle();
    }

    QTemporaryDir directory;
    std::shared_ptr<KRTodoDatabase> database;
    std::unique_ptr<KRTodoChecklists> checklists;
    std::unique_ptr<KRTodoWindow> window;
    qint64 groceries = 0;
    qint64 work = 0;
};

} // namespace

TEST_F(KRTodoSidebarTests, ListsTheChecklistsByNameWithTheirOpenItems) {
    EXPECT_EQ(names(), (QStringList{QStringLiteral("Groceries"), QStringLiteral("Work")}));
    EXPECT_EQ(sidebar().countAt(0), QStringLiteral("2"));
    EXPECT_EQ(sidebar().countAt(1), QStringLiteral("1"));
    EXPECT_EQ(tree().currentItem(), tree().topLevelItem(0));
    EXPECT_EQ(title(), QStringLiteral("Groceries \u2014 KRTodo"));
}

TEST_F(KRTodoSidebarTests, PickingAChecklistShowsItsItemsAndNamesIt) {
    tree().setCurrentItem(tree().topLevelItem(1));
    settle();
    EXPECT_EQ(window->store().checklist(), work);
    EXPECT_EQ(window->checkListView().numberOfItems(), 1u);
    EXPECT_EQ(window->checkListView().titleForItemAtIndex(0), QStringLiteral("report"));
    EXPECT_EQ(title(), QStringLiteral("Work \u2014 KRTodo"));
    EXPECT_EQ(database->setting(QStringLiteral("window/checklist")), QString::number(work))
        << "the window reopens on it";
    tree().setCurrentItem(tree().topLevelItem(0));
    settle();
    EXPECT_EQ(window->checkListView().numberOfItems(), 3u);
}

TEST_F(KRTodoSidebarTests, TheCountFollowsTheItems) {
    window->checkListView().selectItemsAtIndexesByExtendingSelection(KRIndexSet(0), false);
    window->menus().perform(KRTodoMenus::Command::ToggleCompleted);
    settle();
    EXPECT_EQ(sidebar().countAt(0), QStringLiteral("1"));
    window->menus().perform(KRTodoMenus::Command::Undo);
    settle();
    EXPECT_EQ(sidebar().countAt(0), QStringLiteral("2"));
}

TEST_F(KRTodoSidebarTests, ANameIsRenamedInPlace) {
    tree().setFocus();
    tree().setCurrentItem(tree().topLevelItem(1));
    QTest::keyClick(&tree(), Qt::Key_F2);
    typeName(QStringLiteral("Office"));
    EXPECT_EQ(names(), (QStringList{QStringLiteral("Groceries"), QStringLiteral("Office")}));
    EXPECT_EQ(title(), QStringLiteral("Office \u2014 KRTodo"));
    EXPECT_EQ(database->checklists().at(1).name, QStringLiteral("Office"));
}

TEST_F(KRTodoSidebarTests, AddingAChecklistShowsItAndRenamesItInPlace) {
    tree().setFocus();
    QTest::mouseClick(&sidebar().addButton(), Qt::LeftButton);
    settle();
    typeName(QStringLiteral("Trip"));
    EXPECT_EQ(names(),
              (QStringList{QStringLiteral("Groceries"), QStringLiteral("Work"), QStringLiteral("Trip")}));
    EXPECT_EQ(title(), QStringLiteral("Trip \u2014 KRTodo"));
    EXPECT_EQ(window->checkListView().numberOfItems(), 0u);
}

TEST_F(KRTodoSidebarTests, DeletingShowsTheNextChecklistAndUndoInTheSidebarBringsItBack) {
    tree().setFocus();
    settle();
    QTest::mouseClick(&sidebar().deleteButton(), Qt::LeftButton);
    settle();
    EXPECT_EQ(names(), (QStringList{QStringLiteral("Work")}));
    EXPECT_EQ(title(), QStringLiteral("Work \u2014 KRTodo"));
    EXPECT_FALSE(sidebar().deleteButton().isEnabled()) << "the last checklist stays";

    // With the sidebar focused, Edit > Undo is the checklists'.
    window->menus().validateAll();
    EXPECT_EQ(window->menus().action(KRTodoMenus::Command::Undo).text(),
              QStringLiteral("&Undo Delete Checklist"));
    QTest::keyClick(&tree(), Qt::Key_Z, Qt::ControlModifier);
    settle();
    EXPECT_EQ(names(), (QStringList{QStringLiteral("Groceries"), QStringLiteral("Work")}));
    tree().setCurrentItem(tree().topLevelItem(0));
    settle();
    EXPECT_EQ(window->store().dump(), QStringLiteral("open\tmilk\ncompleted\teggs\nopen\tbread\n"));
}

TEST_F(KRTodoSidebarTests, TheButtonsMoveTheCurrentChecklist) {
    EXPECT_FALSE(sidebar().moveUpButton().isEnabled());
    QTest::mouseClick(&sidebar().moveDownButton(), Qt::LeftButton);
    settle();
    EXPECT_EQ(names(), (QStringList{QStringLiteral("Work"), QStringLiteral("Groceries")}));
    EXPECT_EQ(tree().currentItem(), tree().topLevelItem(1)) << "Groceries stays current";
    EXPECT_EQ(database->checklists().at(0).name, QStringLiteral("Work"));
}

TEST_F(KRTodoSidebarTests, ADraggedChecklistMovesWhereItIsDropped) {
    checklists->add(QStringLiteral("Trip"));
    settle();
    ASSERT_EQ(names(),
              (QStringList{QStringLiteral("Groceries"), QStringLiteral("Work"), QStringLiteral("Trip")}));
    // What the tree does with a row dropped above the first one: takes it out and puts it in there.
    QTreeWidgetItem* trip = tree().takeTopLevelItem(2);
    tree().insertTopLevelItem(0, trip);
    settle();
    EXPECT_EQ(names(),
              (QStringList{QStringLiteral("Trip"), QStringLiteral("Groceries"), QStringLiteral("Work")}));
    EXPECT_EQ(database->checklists().at(0).name, QStringLiteral("Trip"));
    EXPECT_EQ(checklists->undoStack().undoText(), QStringLiteral("Move Checklist"));
    EXPECT_FALSE(tree().topLevelItem(0)->flags() & Qt::ItemIsDropEnabled) << "nothing lands in a checklist";
}
