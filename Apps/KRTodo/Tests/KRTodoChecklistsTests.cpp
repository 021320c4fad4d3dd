#include "KRTodoChecklists.h"

#include "KRQtTestPrinters.h"

#include "KRTodoStore.h"

#include "Foundation/KRRunLoop.h"

#include <QTemporaryDir>
#include <QUndoStack>

#include <gtest/gtest.h>

#include <memory>
#include <ostream>
#include <vector>

namespace {

// Checklists of a database in a temporary directory: "Groceries" with three items (one done) and "Work"
// with one.
class KRTodoChecklistsTests : public ::testing::Test {
protected:
    void SetUp() override {
        ASSERT_TRUE(directory.isValid());
        path = directory.filePath(QStringLiteral("KRTodo.sqlite"));
        open();
        groceries = checklists->add(QStringLiteral("Groceries"));
        work = checklists->add(QStringLiteral("Work"));
        ASSERT_NE(groceries, 0);
        ASSERT_NE(work, 0);
        checklists->store(groceries)->insertItems({{QString(), KRTodoItem::Open, QStringLiteral("milk")},
                                                   {QString(), KRTodoItem::Completed, QStringLiteral("eggs")},
                                                   {QString(), KRTodoItem::Open, QStringLiteral("bread")}},
                                                  KRIndexSet(KRRange{0, 3}), nullptr);
        checklists->store(work)->insertItems({{QString(), KRTodoItem::Open, QStringLiteral("report")}},
                                             KRIndexSet(0), nullptr);
        checklists->undoStack().clear();
    }
    void TearDown() override {
        close();
        KRRunLoop::main().cancelAll();
    }

    void open() {
        database = KRTodoDatabase::open(path);
        ASSERT_EQ(database->problem(), KRTodoDatabase::Problem::None);
        checklists = std::make_unique<KRTodoChecklists>(database);
        checklists->setChangedHandler([this] { ++changes; });
    }
    void close() {
        checklists.reset();
        database.reset();
    }
    void reopen() {
        close();
        open();
    }
    QStringList names() const {
        QStringList names;
        for (const KRTodoChecklistRecord& record : checklists->records()) {
            names << record.name;
        }
        return names;
    }

    QTemporaryDir directory;
    QString path;
    std::shared_ptr<KRTodoDatabase> database;
    std::unique_ptr<KRTodoChecklists> checklists;
    qint64 groceries = 0;
    qint64 work = 0;
    int changes = 0;
};

} // namespace

TEST_F(KRTodoChecklistsTests, EachChecklistKeepsItsOwnItemsAcrossAReopen) {
    reopen();
    EXPECT_EQ(names(), (QStringList{QStringLiteral("Groceries"), QStringLiteral("Work")}));
    EXPECT_EQ(checklists->store(groceries)->dump(),
              QStringLiteral("open\tmilk\ncompleted\teggs\nopen\tbread\n"));
    EXPECT_EQ(checklists->store(work)->dump(), QStringLiteral("open\treport\n"));
    EXPECT_NE(&checklists->store(groceries)->undoStack(), &checklists->store(work)->undoStack())
        << "a history each";
}

TEST_F(KRTodoChecklistsTests, CountsTheOpenItems) {
    EXPECT_EQ(checklists->openItemCount(groceries), 2u);
    EXPECT_EQ(checklists->openItemCount(work), 1u);
    checklists->store(work)->setStatus(KRTodoItem::Completed, 0, nullptr);
    EXPECT_EQ(checklists->openItemCount(work), 0u);
}

TEST_F(KRTodoChecklistsTests, AddingIsOneStepAndStored) {
    const qint64 added = checklists->add(QStringLiteral("Trip"));
    EXPECT_EQ(names().last(), QStringLiteral("Trip"));
    EXPECT_EQ(checklists->undoStack().undoText(), QStringLiteral("New Checklist"));
    checklists->undoStack().undo();
    EXPECT_EQ(checklists->indexOf(added), -1);
    checklists->undoStack().redo();
    EXPECT_EQ(checklists->indexOf(added), 2);
    reopen();
    EXPECT_EQ(names(),
              (QStringList{QStringLiteral("Groceries"), QStringLiteral("Work"), QStringLiteral("Trip")}));
}

TEST_F(KRTodoChecklistsTests, RenamingIsOneStepAndStored) {
    const int before = changes;
    checklists->rename(work, QStringLiteral("Office"));
    EXPECT_GT(changes, before);
    EXPECT_EQ(checklists->store(work)->name(), QStringLiteral("Office"));
    EXPECT_EQ(checklists->undoStack().undoText(), QStringLiteral("Rename Checklist"));
    checklists->undoStack().undo();
    EXPECT_EQ(names(), (QStringList{QStringLiteral("Groceries"), QStringLiteral("Work")}));
    EXPECT_EQ(checklists->store(work)->name(), QStringLiteral("Work"));
    checklists->undoStack().redo();
    reopen();
    EXPECT_EQ(names(), (QStringList{QStringLiteral("Groceries"), QStringLiteral("Office")}));
}

TEST_F(KRTodoChecklistsTests, DeletingIsUndoneWithTheItemsTheirIdentifiersAndTheirHistory) {
    std::vector<KRTodoItem> items;
    {
        const std::shared_ptr<KRTodoStore> store = checklists->store(groceries);
        store->noteInputEvent(nullptr);
        store->removeItems(KRIndexSet(0), nullptr);
        ASSERT_TRUE(store->undoStack().canUndo());
        items = store->items();

        checklists->remove(groceries);
        EXPECT_EQ(names(), (QStringList{QStringLiteral("Work")}));
        EXPECT_EQ(checklists->undoStack().undoText(), QStringLiteral("Delete Checklist"));
        EXPECT_TRUE(database->items(groceries).empty()) << "its items left the file";
        checklists->undoStack().undo();
        EXPECT_EQ(names(), (QStringList{QStringLiteral("Groceries"), QStringLiteral("Work")}));
        EXPECT_EQ(checklists->store(groceries), store) << "the same store, with its history";
        EXPECT_TRUE(store->undoStack().canUndo());
    }
    reopen();
    EXPECT_EQ(checklists->store(groceries)->items(), items);
}

TEST_F(KRTodoChecklistsTests, TheLastChecklistCannotBeDeleted) {
    checklists->remove(groceries);
    checklists->remove(work);
    EXPECT_EQ(names(), (QStringList{QStringLiteral("Work")}));
    EXPECT_EQ(checklists->undoStack().count(), 1);
}

TEST_F(KRTodoChecklistsTests, MovingIsOneStepAndStored) {
    const qint64 trip = checklists->add(QStringLiteral("Trip"));
    checklists->move(trip, -2);
    EXPECT_EQ(names(),
              (QStringList{QStringLiteral("Trip"), QStringLiteral("Groceries"), QStringLiteral("Work")}));
    checklists->move(groceries, 1);
    EXPECT_EQ(names(),
              (QStringList{QStringLiteral("Trip"), QStringLiteral("Work"), QStringLiteral("Groceries")}));
    checklists->move(work, -1);
    EXPECT_EQ(names(),
              (QStringList{QStringLiteral("Work"), QStringLiteral("Trip"), QStringLiteral("Groceries")}));
    EXPECT_EQ(checklists->undoStack().undoText(), QStringLiteral("Move Checklist"));
    checklists->undoStack().undo();
    EXPECT_EQ(names(),
              (QStringList{QStringLiteral("Trip"), QStringLiteral("Work"), QStringLiteral("Groceries")}));
    reopen();
    EXPECT_EQ(names(),
              (QStringList{QStringLiteral("Trip"), QStringLiteral("Work"), QStringLiteral("Groceries")}));
}
