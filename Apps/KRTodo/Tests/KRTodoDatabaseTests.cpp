#include "KRTodoDatabase.h"

#include "KRQtTestPrinters.h"

#include "KRTodoDefaults.h"
#include "KRTodoStore.h"

#include "KRCheckListItemView.h"
#include "KRCheckListView.h"

#include "Foundation/KRClock.h"
#include "Foundation/KRRunLoop.h"
#include "Text/KRTextView.h"
#include "Views/KRWindow.h"

#include <QCryptographicHash>
#include <QFile>
#include <QSqlDatabase>
#include <QSqlQuery>
#include <QTemporaryDir>
#include <QUndoStack>
#include <QVariant>

#include <gtest/gtest.h>

#include <memory>
#include <ostream>
#include <vector>

inline void PrintTo(const KRTodoItem& item, std::ostream* os) {
    *os << '{' << item.identifier.toStdString() << ' ' << item.status << " \"" << item.title.toStdString()
        << "\"}";
}

namespace {

constexpr double kListWidth = 480.0;

std::vector<KRTodoItem> itemsOf(const std::vector<KRTodoItemRecord>& records) {
    std::vector<KRTodoItem> items;
    for (const KRTodoItemRecord& record : records) {
        items.push_back(record.item);
    }
    return items;
}

std::vector<KRTodoItem> openItems(const std::vector<QString>& titles) {
    std::vector<KRTodoItem> items;
    for (const QString& title : titles) {
        items.push_back(KRTodoItem{QString(), KRTodoItem::Open, title});
    }
    return items;
}

QByteArray fileHash(const QString& path) {
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly)) {
        return QByteArray();
    }
    return QCryptographicHash::hash(file.readAll(), QCryptographicHash::Sha256);
}

// Runs SQL on a file through a connection of its own, as another program would.
class RawConnection {
public:
    explicit RawConnection(const QString& path) : m_name(QStringLiteral("raw-%1").arg(++s_count)) {
        QSqlDatabase database = QSqlDatabase::addDatabase(QStringLiteral("QSQLITE"), m_name);
        database.setDatabaseName(path);
        m_open = database.open();
    }
    ~RawConnection() {
        {
            QSqlDatabase database = QSqlDatabase::database(m_name, false);
            database.close();
        }
        QSqlDatabase::removeDatabase(m_name);
    }
    bool isOpen() const { return m_open; }
    bool run(const QString& statement) {
        QSqlQuery query(QSqlDatabase::database(m_name, false));
        return query.exec(statement);
    }
    QVariant value(const QString& statement) {
        QSqlQuery query(QSqlDatabase::database(m_name, false));
        if (!query.exec(statement) || !query.next()) {
            return QVariant();
        }
        return query.value(0);
    }

private:
    static inline int s_count = 0;
    QString m_name;
    bool m_open = false;
};

class KRTodoDatabaseTests : public ::testing::Test {
protected:
    void SetUp() override {
        ASSERT_TRUE(directory.isValid());
        path = directory.filePath(QStringLiteral("KRTodo.sqlite"));
    }

    // A new database with one checklist holding items, closed again.
    void makeDatabase(const std::vector<KRTodoItem>& items) {
        std::shared_ptr<KRTodoDatabase> database = KRTodoDatabase::open(path);
        ASSERT_EQ(database->problem(), KRTodoDatabase::Problem::None) << database->message().toStdString();
        const std::optional<qint64> checklist = database->addChecklist(QStringLiteral("Groceries"), 1.0);
        ASSERT_TRUE(checklist.has_value());
        std::shared_ptr<KRTodoStore> store = KRTodoStore::makeStore(database, *checklist, QString());
        KRMutableIndexSet indexes;
        for (std::size_t index = 0; index < items.size(); ++index) {
            indexes.addIndex(index);
        }
        store->insertItems(items, indexes, nullptr);
    }
    // Opening a file KRTodo must not use: it says why, and the file is exactly as it was.
    void expectRefused(KRTodoDatabase::Problem problem, const QString& wording) {
        const QByteArray before = fileHash(path);
        ASSERT_FALSE(before.isEmpty());
        {
            std::unique_ptr<KRTodoDatabase> database = KRTodoDatabase::open(path);
            EXPECT_EQ(database->problem(), problem);
            EXPECT_TRUE(database->message().contains(path)) << database->message().toStdString();
            EXPECT_TRUE(database->message().contains(wording)) << database->message().toStdString();
            EXPECT_TRUE(database->items(1).empty());
        }
        EXPECT_EQ(fileHash(path), before);
        EXPECT_FALSE(QFile::exists(path + QStringLiteral("-wal")));
        EXPECT_FALSE(QFile::exists(path + QStringLiteral(".lock"))) << "the lock goes with the refusal";
    }

    QTemporaryDir directory;
    QString path;
};

} // namespace

TEST_F(KRTodoDatabaseTests, ANewFileGetsTheCurrentSchemaAWriteAheadLogAndKRTodosApplicationId) {
    {
        std::unique_ptr<KRTodoDatabase> database = KRTodoDatabase::open(path);
        ASSERT_EQ(database->problem(), KRTodoDatabase::Problem::None);
        EXPECT_TRUE(database->wasCreated());
        EXPECT_FALSE(database->isReadOnly());
        EXPECT_TRUE(QFile::exists(path + QStringLiteral(".lock")));
    }
    EXPECT_FALSE(QFile::exists(path + QStringLiteral(".lock")));
    RawConnection raw(path);
    ASSERT_TRUE(raw.isOpen());
    EXPECT_EQ(raw.value(QStringLiteral("PRAGMA user_version")).toInt(), KRTodoDatabase::SchemaVersion);
    EXPECT_EQ(raw.value(QStringLiteral("PRAGMA application_id")).toLongLong(), KRTodoDatabase::ApplicationId);
    EXPECT_EQ(raw.value(QStringLiteral("PRAGMA journal_mode")).toString(), QStringLiteral("wal"));
}

TEST_F(KRTodoDatabaseTests, ReopeningAFileReadsWhatWasWrittenAndMakesNothingNew) {
    makeDatabase(openItems({QStringLiteral("milk"), QStringLiteral("eggs")}));
    std::unique_ptr<KRTodoDatabase> database = KRTodoDatabase::open(path);
    ASSERT_EQ(database->problem(), KRTodoDatabase::Problem::None);
    EXPECT_FALSE(database->wasCreated());
    ASSERT_EQ(database->checklists().size(), 1u);
    EXPECT_EQ(database->checklists()[0].name, QStringLiteral("Groceries"));
    const std::vector<KRTodoItem> items = itemsOf(database->items(database->checklists()[0].identifier));
    ASSERT_EQ(items.size(), 2u);
    EXPECT_EQ(items[0].title, QStringLiteral("milk"));
    EXPECT_EQ(items[1].title, QStringLiteral("eggs"));
    EXPECT_NE(items[0].identifier, items[1].identifier);
}

TEST_F(KRTodoDatabaseTests, ASecondOpenOfTheSameFileSaysItIsAlreadyOpenAndLeavesItAlone) {
    makeDatabase(openItems({QStringLiteral("milk")}));
    std::unique_ptr<KRTodoDatabase> first = KRTodoDatabase::open(path);
    ASSERT_EQ(first->problem(), KRTodoDatabase::Problem::None);
    const QByteArray before = fileHash(path);
    std::unique_ptr<KRTodoDatabase> second = KRTodoDatabase::open(path);
    EXPECT_EQ(second->problem(), KRTodoDatabase::Problem::AlreadyOpen);
    EXPECT_EQ(second->message(), QStringLiteral("\"%1\" is already open in another KRTodo.").arg(path));
    EXPECT_EQ(fileHash(path), before);
    second.reset();
    EXPECT_TRUE(QFile::exists(path + QStringLiteral(".lock"))) << "the first one keeps its lock";
    EXPECT_EQ(itemsOf(first->items(first->checklists()[0].identifier)).size(), 1u);
}

TEST_F(KRTodoDatabaseTests, AFileThatIsNotSQLiteIsRefusedUntouched) {
    QFile file(path);
    ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    file.write("- milk\n- eggs\nThis is a shopping list, not a database.\n");
    file.close();
    expectRefused(KRTodoDatabase::Problem::NotADatabase, QStringLiteral("is not a KRTodo database"));
}

TEST_F(KRTodoDatabaseTests, AnEmptyFileIsRefusedUntouched) {
    QFile file(path);
    ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    file.close();
    const std::unique_ptr<KRTodoDatabase> database = KRTodoDatabase::open(path);
    EXPECT_EQ(database->problem(), KRTodoDatabase::Problem::NotADatabase);
    EXPECT_EQ(QFileInfo(path).size(), 0);
}

TEST_F(KRTodoDatabaseTests, AnotherApplicationsSQLiteFileIsRefusedUntouched) {
    {
        RawConnection raw(path);
        ASSERT_TRUE(raw.run(QStringLiteral("CREATE TABLE photos (id INTEGER PRIMARY KEY, name TEXT)")));
        ASSERT_TRUE(raw.run(QStringLiteral("INSERT INTO photos (name) VALUES ('beach.jpg')")));
    }
    expectRefused(KRTodoDatabase::Problem::Foreign, QStringLiteral("another application's SQLite file"));
}

TEST_F(KRTodoDatabaseTests, ACorruptFileIsRefusedUntouched) {
    std::vector<KRTodoItem> items;
    for (int index = 0; index < 400; ++index) {
        items.push_back(KRTodoItem{QString(), KRTodoItem::Open, QStringLiteral("item number %1").arg(index)});
    }
    makeDatabase(items);
    {
        // Checkpointed into the main file, so that the damage below hits the items' pages.
        RawConnection raw(path);
        raw.run(QStringLiteral("PRAGMA wal_checkpoint(TRUNCATE)"));
        raw.run(QStringLiteral("PRAGMA journal_mode = DELETE"));
    }
    QFile file(path);
    ASSERT_TRUE(file.open(QIODevice::ReadWrite));
    const qint64 size = file.size();
    ASSERT_GT(size, 8192);
    // Garbage over every page but the first (the header stays SQLite's).
    for (qint64 offset = 4096; offset < size; offset += 4096) {
        file.seek(offset + 8);
        file.write(QByteArray(64, '\xA5'));
    }
    file.close();
    expectRefused(KRTodoDatabase::Problem::Corrupt, QStringLiteral("is damaged"));
}

TEST_F(KRTodoDatabaseTests, AFileOfANewerSchemaIsRefusedUntouched) {
    makeDatabase(openItems({QStringLiteral("milk")}));
    {
        RawConnection raw(path);
        ASSERT_TRUE(
            raw.run(QStringLiteral("PRAGMA user_version = %1").arg(KRTodoDatabase::SchemaVersion + 1)));
        raw.run(QStringLiteral("PRAGMA wal_checkpoint(TRUNCATE)"));
    }
    expectRefused(KRTodoDatabase::Problem::Newer,
                  QStringLiteral("was written by a newer KRTodo (schema version %1; this one reads up to %2)")
                      .arg(KRTodoDatabase::SchemaVersion + 1)
                      .arg(KRTodoDatabase::SchemaVersion));
}

TEST_F(KRTodoDatabaseTests, AReadOnlyFileOpensReadOnlyShowsItsItemsAndRefusesEveryChange) {
    makeDatabase(openItems({QStringLiteral("milk"), QStringLiteral("eggs")}));
    {
        RawConnection raw(path);
        raw.run(QStringLiteral("PRAGMA wal_checkpoint(TRUNCATE)"));
    }
    ASSERT_TRUE(QFile::setPermissions(path, QFileDevice::ReadOwner | QFileDevice::ReadGroup));
    const QByteArray before = fileHash(path);
    {
        std::shared_ptr<KRTodoDatabase> database = KRTodoDatabase::open(path);
        ASSERT_EQ(database->problem(), KRTodoDatabase::Problem::None);
        EXPECT_TRUE(database->isReadOnly());
        EXPECT_EQ(database->message(),
                  QStringLiteral("\"%1\" is read-only: KRTodo shows its items and refuses every change.")
                      .arg(path));
        const qint64 checklist = database->checklists().at(0).identifier;
        std::shared_ptr<KRTodoStore> store = KRTodoStore::makeStore(database, checklist, QString());
        ASSERT_EQ(store->count(), 2u);
        EXPECT_TRUE(store->isReadOnly());

        KRWindow window;
        auto list = std::make_shared<KRCheckListView>(KRRectMake(0.0, 0.0, kListWidth, 0.0));
        window.setContentView(list);
        list->setDataSource(store);
        list->setDelegate(store);
        list->reloadItems();
        list->insertItemAtIndex(0);
        list->removeItemAtIndex(1);
        list->moveItemAtIndexToIndex(0, 2);
        EXPECT_EQ(
            store->checkListViewValidateChangedStatusForItemAtIndex(list.get(), KRTodoItem::Completed, 0),
            KRTodoItem::Open);
        EXPECT_EQ(
            store->checkListViewValidateChangedTitleForItemAtIndex(list.get(), QStringLiteral("cheese"), 0),
            QStringLiteral("milk"));
        EXPECT_EQ(store->dump(), QStringLiteral("open\tmilk\nopen\teggs\n"));
        EXPECT_EQ(list->numberOfItems(), 2u);
        EXPECT_FALSE(database->setSetting(QStringLiteral("window/checklist"), QStringLiteral("1")));
        EXPECT_FALSE(store->undoStack().canUndo());
        window.setContentView(nullptr);
    }
    EXPECT_EQ(fileHash(path), before);
    QFile::setPermissions(path, QFileDevice::ReadOwner | QFileDevice::WriteOwner);
}

TEST_F(KRTodoDatabaseTests, AVersion1FileIsMigratedWithItsItemsInOrder) {
    {
        RawConnection raw(path);
        ASSERT_TRUE(
            raw.run(QStringLiteral("CREATE TABLE items (identifier TEXT PRIMARY KEY, position INTEGER NOT "
                                   "NULL, status INTEGER NOT NULL, title TEXT NOT NULL)")));
        ASSERT_TRUE(
            raw.run(QStringLiteral("INSERT INTO items VALUES ('a', 2, 1, 'second'), ('b', 1, 0, 'first'), "
                                   "('c', 3, 2, 'third')")));
        ASSERT_TRUE(raw.run(QStringLiteral("PRAGMA application_id = %1").arg(KRTodoDatabase::ApplicationId)));
        ASSERT_TRUE(raw.run(QStringLiteral("PRAGMA user_version = 1")));
    }
    {
        std::unique_ptr<KRTodoDatabase> database = KRTodoDatabase::open(path);
        ASSERT_EQ(database->problem(), KRTodoDatabase::Problem::None) << database->message().toStdString();
        EXPECT_EQ(database->openedVersion(), 1);
        ASSERT_EQ(database->checklists().size(), 1u);
        const std::vector<KRTodoItem> items = itemsOf(database->items(database->checklists()[0].identifier));
        EXPECT_EQ(items, (std::vector<KRTodoItem>{{QStringLiteral("b"), 0, QStringLiteral("first")},
                                                  {QStringLiteral("a"), 1, QStringLiteral("second")},
                                                  {QStringLiteral("c"), 2, QStringLiteral("third")}}));
    }
    RawConnection raw(path);
    EXPECT_EQ(raw.value(QStringLiteral("PRAGMA user_version")).toInt(), KRTodoDatabase::SchemaVersion);
    EXPECT_EQ(raw.value(QStringLiteral("SELECT count(*) FROM sqlite_master WHERE name = 'items_version_1'"))
                  .toInt(),
              0);
}

// Every change through the real list, then the file opened again
// -------------------------------------------------------------------------------------------------------

namespace {

class KRTodoDatabaseStoreTests : public KRTodoDatabaseTests {
protected:
    void SetUp() override {
        KRTodoDatabaseTests::SetUp();
        ASSERT_TRUE(KRClock::isManual());
        KRTextView::installTextSystem();
        makeDatabase(openItems({QStringLiteral("alpha"), QStringLiteral("bravo"), QStringLiteral("charlie"),
                                QStringLiteral("delta")}));
        open();
    }
    void TearDown() override {
        close();
        KRRunLoop::main().cancelAll();
    }

    void open() {
        database = KRTodoDatabase::open(path);
        ASSERT_EQ(database->problem(), KRTodoDatabase::Problem::None);
        const qint64 checklist = database->checklists().at(0).identifier;
        store = KRTodoStore::makeStore(database, checklist, QStringLiteral("Groceries"));
        list = std::make_shared<KRCheckListView>(KRRectMake(0.0, 0.0, kListWidth, 0.0));
        window.setContentView(list);
        list->setDataSource(store);
        list->setDelegate(store);
        list->reloadItems();
    }
    void close() {
        window.makeFirstResponder(nullptr);
        window.setContentView(nullptr);
        list.reset();
        store.reset();
        database.reset();
    }
    // What another open of the file reads, without this one's memory.
    std::vector<KRTodoItem> storedItems() {
        std::vector<KRTodoItem> items;
        {
            QSqlDatabase connection =
                QSqlDatabase::addDatabase(QStringLiteral("QSQLITE"), QStringLiteral("probe"));
            connection.setDatabaseName(path);
            connection.setConnectOptions(QStringLiteral("QSQLITE_OPEN_READONLY"));
            if (connection.open()) {
                QSqlQuery rows(connection);
                rows.exec(QStringLiteral("SELECT identifier, status, title FROM items ORDER BY position"));
                while (rows.next()) {
                    items.push_back(KRTodoItem{rows.value(0).toString(), rows.value(1).toULongLong(),
                                               rows.value(2).toString()});
                }
            }
            connection.close();
        }
        QSqlDatabase::removeDatabase(QStringLiteral("probe"));
        return items;
    }
    // Closes everything and opens the file again: the store then holds exactly what was stored.
    void expectReopenedEqual(const std::vector<KRTodoItem> expected) {
        EXPECT_EQ(storedItems(), expected);
        close();
        open();
        EXPECT_EQ(store->items(), expected);
        EXPECT_EQ(list->numberOfItems(), expected.size());
    }
    void typeIntoEditedTitle(const QString& text) {
        for (const QChar character : text) {
            list->fieldEditor()->insertText(QString(character));
        }
    }

    KRWindow window;
    std::shared_ptr<KRTodoDatabase> database;
    std::shared_ptr<KRTodoStore> store;
    std::shared_ptr<KRCheckListView> list;
};

} // namespace

TEST_F(KRTodoDatabaseStoreTests, InsertsRemovalsMovesAndStatusesAreStoredAtOnce) {
    list->insertItemAtIndex(1);
    std::vector<KRTodoItem> expected = store->items();
    ASSERT_EQ(expected.size(), 5u);
    EXPECT_EQ(storedItems(), expected) << "inserted";

    list->removeItemsAtIndexes(KRIndexSet(KRRange{2, 2}));
    expected = store->items();
    EXPECT_EQ(storedItems(), expected) << "removed";

    list->moveItemAtIndexToIndex(0, 3);
    expected = store->items();
    EXPECT_EQ(expected.back().title, QStringLiteral("alpha"));
    EXPECT_EQ(storedItems(), expected) << "moved";

    // A click on the check box of the first row, as the row reports it.
    KRCheckListItemView* first = list->checkListViewItemViewForItemAtIndex(0);
    first->checkListItemViewValidateChangedStatus(first, KRTodoItem::Completed);
    list->setStatusForItemsAtIndexes(KRTodoItem::Canceled, KRIndexSet(1));
    expected = store->items();
    EXPECT_EQ(expected[0].status, KRTodoItem::Completed);
    EXPECT_EQ(expected[1].status, KRTodoItem::Canceled);
    expectReopenedEqual(expected);
}

TEST_F(KRTodoDatabaseStoreTests, ManyMovesToTheSameGapKeepTheOrderWhenTheKeysRunOut) {
    // Each move halves the gap between the first two items; after some fifty the keys are renumbered.
    for (int round = 0; round < 80; ++round) {
        list->moveItemAtIndexToIndex(3, 1);
    }
    const std::vector<KRTodoItem> expected = store->items();
    expectReopenedEqual(expected);
}

TEST_F(KRTodoDatabaseStoreTests, TypingIsStoredAMomentAfterTheLastKeystrokeAndWhenEditingEnds) {
    list->beginEditingItemAtIndexSelectRange(1, KRRange{KRUIntegerMax, 0});
    typeIntoEditedTitle(QStringLiteral(" two"));
    ASSERT_EQ(store->items()[1].title, QStringLiteral("bravo two"));
    EXPECT_EQ(storedItems()[1].title, QStringLiteral("bravo")) << "not yet";

    // Each keystroke puts the commit off again.
    KRClock::advance(KRTodoDefaults::typingCommitDelay() * 0.6);
    KRRunLoop::main().runUntilIdle();
    typeIntoEditedTitle(QStringLiteral("!"));
    KRClock::advance(KRTodoDefaults::typingCommitDelay() * 0.6);
    KRRunLoop::main().runUntilIdle();
    EXPECT_EQ(storedItems()[1].title, QStringLiteral("bravo")) << "less than the delay after the last key";
    KRClock::advance(KRTodoDefaults::typingCommitDelay() * 0.5);
    KRRunLoop::main().runUntilIdle();
    EXPECT_EQ(storedItems()[1].title, QStringLiteral("bravo two!"));

    typeIntoEditedTitle(QStringLiteral("?"));
    list->endEditing();
    EXPECT_EQ(storedItems()[1].title, QStringLiteral("bravo two!?")) << "editing ended";
    expectReopenedEqual(store->items());
}

TEST_F(KRTodoDatabaseStoreTests, ASplitAndAMergeAreStoredAtOnce) {
    list->beginEditingItemAtIndexSelectRange(1, KRRange{2, 0});
    list->doCommandBySelector(KRSelector("insertNewline:"));
    ASSERT_EQ(store->dump(),
              QStringLiteral("open\talpha\nopen\tbr\nopen\tavo\nopen\tcharlie\nopen\tdelta\n"));
    EXPECT_EQ(storedItems(), store->items()) << "split";

    list->beginEditingItemAtIndexSelectRange(3, KRRange{0, 0});
    list->doCommandBySelector(KRSelector("deleteBackward:"));
    ASSERT_EQ(store->dump(), QStringLiteral("open\talpha\nopen\tbr\nopen\tavocharlie\nopen\tdelta\n"));
    EXPECT_EQ(storedItems(), store->items()) << "merged";
    expectReopenedEqual(store->items());
}

TEST_F(KRTodoDatabaseStoreTests, ASplitRightAfterTypingStaysSplitWhenTheTypingIsCommitted) {
    list->beginEditingItemAtIndexSelectRange(1, KRRange{KRUIntegerMax, 0});
    typeIntoEditedTitle(QStringLiteral("charlie"));
    // The caret goes back within the same edit, as the arrow keys move it: the typing is not written yet.
    list->fieldEditor()->setSelectedRange(KRRange{5, 0});
    ASSERT_TRUE(store->hasUncommittedTitles());
    list->doCommandBySelector(KRSelector("insertNewline:"));
    ASSERT_EQ(store->items()[1].title, QStringLiteral("bravo"));
    ASSERT_EQ(store->items()[2].title, QStringLiteral("charlie"));
    KRClock::advance(KRTodoDefaults::typingCommitDelay());
    KRRunLoop::main().runUntilIdle();
    list->endEditing();
    expectReopenedEqual(store->items());
}

TEST_F(KRTodoDatabaseStoreTests, UndoneChangesAreStoredToo) {
    // Two input events, two steps.
    store->noteInputEvent(list.get());
    list->removeItemAtIndex(0);
    store->noteInputEvent(list.get());
    list->moveItemAtIndexToIndex(2, 0);
    const std::vector<KRTodoItem> afterBoth = store->items();
    store->undo(list.get());
    store->undo(list.get());
    EXPECT_EQ(store->dump(), QStringLiteral("open\talpha\nopen\tbravo\nopen\tcharlie\nopen\tdelta\n"));
    EXPECT_EQ(storedItems(), store->items());
    store->redo(list.get());
    store->redo(list.get());
    EXPECT_EQ(store->items(), afterBoth);
    store->undo(list.get());
    expectReopenedEqual(store->items());
}
