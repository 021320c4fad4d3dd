#include "KRTodoDatabase.h"

#include "Foundation/KRLog.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QSqlDatabase>
#include <QSqlError>
#include <QSqlQuery>
#include <QStandardPaths>
#include <QVariant>

#include <algorithm>
#include <atomic>

namespace {

// What every SQLite 3 file begins with.
constexpr char kSQLiteHeader[] = "SQLite format 3";
constexpr qsizetype kSQLiteHeaderLength = sizeof(kSQLiteHeader); // with its NUL, as in the file

QString nextConnectionName() {
    static std::atomic<int> counter{0};
    return QStringLiteral("KRTodoDatabase-%1").arg(++counter);
}

// Titles are never NULL in the file: a title nobody typed yet is the empty string.
QString storedTitle(const QString& title) {
    return title.isNull() ? QString::fromLatin1("") : title;
}

QString quoted(const QString& path) {
    return QStringLiteral("\"%1\"").arg(QDir::toNativeSeparators(path));
}

// The statements of the current schema. Items are ordered by a real-valued key, so that an insert or a move
// writes only the rows it places and never renumbers the others.
const QStringList& currentSchema() {
    static const QStringList statements = {
        QStringLiteral("CREATE TABLE checklists (id INTEGER PRIMARY KEY, name TEXT NOT NULL, "
                       "position REAL NOT NULL)"),
        QStringLiteral("CREATE TABLE items (checklist INTEGER NOT NULL REFERENCES checklists(id) ON DELETE "
                       "CASCADE, identifier TEXT NOT NULL, position REAL NOT NULL, status INTEGER NOT NULL "
                       "DEFAULT 0, title TEXT NOT NULL DEFAULT '', PRIMARY KEY (checklist, identifier))"),
        QStringLiteral("CREATE INDEX items_in_order ON items (checklist, position)"),
        QStringLiteral("CREATE TABLE settings (key TEXT PRIMARY KEY, value TEXT NOT NULL)"),
    };
    return statements;
}

} // namespace

std::unique_ptr<KRTodoDatabase> KRTodoDatabase::open(const QString& path) {
    std::unique_ptr<KRTodoDatabase> database(new KRTodoDatabase(path));
    database->openFile();
    return database;
}

QString KRTodoDatabase::defaultPath() {
    const QString directory = QStandardPaths::writableLocation(QStandardPaths::AppDataLocation);
    return QDir(directory).filePath(QStringLiteral("KRTodo.sqlite"));
}

KRTodoDatabase::KRTodoDatabase(QString path)
    : m_path(QFileInfo(path).absoluteFilePath()), m_connectionName(nextConnectionName()) {}

KRTodoDatabase::~KRTodoDatabase() {
    closeConnection();
}

void KRTodoDatabase::fail(Problem problem, const QString& message) {
    m_problem = problem;
    m_message = message;
    closeConnection();
    // A refused file is left as it was found, without the files SQLite put beside it to read it.
    for (const QString& sideFile : std::as_const(m_sideFilesMadeByChecks)) {
        QFile::remove(sideFile);
    }
    m_sideFilesMadeByChecks.clear();
    // The lock goes with the failure: nothing of this KRTodo keeps the file any longer.
    m_lock.reset();
}

QSqlDatabase KRTodoDatabase::connection() const {
    return QSqlDatabase::database(m_connectionName, false);
}

bool KRTodoDatabase::openConnection(bool readOnly) {
    {
        QSqlDatabase database = QSqlDatabase::addDatabase(QStringLiteral("QSQLITE"), m_connectionName);
        database.setDatabaseName(m_path);
        database.setConnectOptions(readOnly ? QStringLiteral("QSQLITE_OPEN_READONLY") : QString());
        if (!database.open()) {
            const QString reason = database.lastError().text();
            database = QSqlDatabase();
            QSqlDatabase::removeDatabase(m_connectionName);
            fail(Problem::CannotOpen, QStringLiteral("%1 can't be opened: %2").arg(quoted(m_path), reason));
            return false;
        }
    }
    m_open = true;
    return true;
}

void KRTodoDatabase::closeConnection() {
    if (!m_open) {
        return;
    }
    {
        QSqlDatabase database = connection();
        database.close();
    }
    QSqlDatabase::removeDatabase(m_connectionName);
    m_open = false;
}

bool KRTodoDatabase::execute(const QString& statement) const {
    QSqlQuery query(connection());
    if (!query.exec(statement)) {
        KRLog(QStringLiteral("KRTodo: %1 failed: %2").arg(statement, query.lastError().text()));
        return false;
    }
    return true;
}

// Opening
// ------------------------------------------------------------------------------------------------------

void KRTodoDatabase::openFile() {
    const QFileInfo info(m_path);
    if (!QDir().mkpath(info.absolutePath())) {
        fail(Problem::CannotOpen,
             QStringLiteral("%1 can't be created: its folder can't be made.").arg(quoted(m_path)));
        return;
    }
    // Only a running process holds the lock: the lock of one that was killed is taken over.
    m_lock = std::make_unique<QLockFile>(m_path + QStringLiteral(".lock"));
    m_lock->setStaleLockTime(0);
    if (!m_lock->tryLock(0)) {
        if (m_lock->error() == QLockFile::LockFailedError) {
            fail(Problem::AlreadyOpen,
                 QStringLiteral("%1 is already open in another KRTodo.").arg(quoted(m_path)));
            return;
        }
        // A folder that can't take the lock can't take changes either: the file is only read.
        m_lock.reset();
    }

    if (!info.exists()) {
        if (!m_lock) {
            fail(Problem::CannotOpen,
                 QStringLiteral("%1 can't be created: its folder is read-only.").arg(quoted(m_path)));
            return;
        }
        if (!openConnection(false) || !execute(QStringLiteral("PRAGMA journal_mode = WAL")) ||
            !createSchema()) {
            if (m_problem == Problem::None) {
                fail(Problem::CannotOpen, QStringLiteral("%1 can't be created.").arg(quoted(m_path)));
            }
            return;
        }
        execute(QStringLiteral("PRAGMA synchronous = NORMAL"));
        m_created = true;
        m_openedVersion = SchemaVersion;
        return;
    }
    if (!checkExistingFile()) {
        return;
    }
    // A file without write permission is read-only for everyone, the superuser too, who could write it.
    const QFileDevice::Permissions writeBits =
        QFileDevice::WriteOwner | QFileDevice::WriteGroup | QFileDevice::WriteOther;
    const bool writable = m_lock && info.isWritable() && (info.permissions() & writeBits) &&
                          QFileInfo(info.absolutePath()).isWritable();
    if (!writable) {
        if (m_openedVersion < SchemaVersion) {
            fail(Problem::ReadOnlyNeedsUpgrade,
                 QStringLiteral("%1 is read-only and was written by an older KRTodo (schema version %2); "
                                "it can't be upgraded.")
                     .arg(quoted(m_path))
                     .arg(m_openedVersion));
            return;
        }
        // The checking connection stays: it can only read.
        m_readOnly = true;
        m_message = QStringLiteral("%1 is read-only: KRTodo shows its items and refuses every change.")
                        .arg(quoted(m_path));
        return;
    }
    closeConnection();
    if (!openConnection(false)) {
        return;
    }
    execute(QStringLiteral("PRAGMA journal_mode = WAL"));
    execute(QStringLiteral("PRAGMA synchronous = NORMAL"));
    execute(QStringLiteral("PRAGMA foreign_keys = ON"));
    if (m_openedVersion < SchemaVersion && !migrate(m_openedVersion)) {
        fail(Problem::CannotOpen, QStringLiteral("%1 could not be upgraded from schema version %2; it was "
                                                 "left as it was.")
                                      .arg(quoted(m_path))
                                      .arg(m_openedVersion));
    }
}

// Everything here reads: the header with plain file I/O, then the schema and the pages through a
// connection that SQLite opens read-only.
bool KRTodoDatabase::checkExistingFile() {
    QFile file(m_path);
    if (!file.open(QIODevice::ReadOnly)) {
        fail(Problem::CannotOpen,
             QStringLiteral("%1 can't be read: %2").arg(quoted(m_path), file.errorString()));
        return false;
    }
    const QByteArray header = file.read(kSQLiteHeaderLength);
    file.close();
    if (header != QByteArray(kSQLiteHeader, kSQLiteHeaderLength)) {
        fail(Problem::NotADatabase,
             QStringLiteral("%1 is not a KRTodo database (it is not an SQLite file); KRTodo left it as it "
                            "was.")
                 .arg(quoted(m_path)));
        return false;
    }
    for (const QString& suffix : {QStringLiteral("-wal"), QStringLiteral("-shm")}) {
        if (!QFile::exists(m_path + suffix)) {
            m_sideFilesMadeByChecks << m_path + suffix;
        }
    }
    if (!openConnection(true)) {
        return false;
    }
    QSqlQuery query(connection());
    if (!query.exec(QStringLiteral("PRAGMA quick_check")) || !query.next() ||
        query.value(0).toString() != QLatin1String("ok")) {
        const QString reason =
            query.lastError().isValid() ? query.lastError().databaseText() : query.value(0).toString();
        query = QSqlQuery();
        fail(Problem::Corrupt,
             QStringLiteral("%1 is damaged (%2); KRTodo left it as it was.").arg(quoted(m_path), reason));
        return false;
    }
    qint64 applicationId = 0;
    if (query.exec(QStringLiteral("PRAGMA application_id")) && query.next()) {
        applicationId = query.value(0).toLongLong();
    }
    if (query.exec(QStringLiteral("PRAGMA user_version")) && query.next()) {
        m_openedVersion = query.value(0).toInt();
    }
    query = QSqlQuery();
    if (applicationId != ApplicationId || m_openedVersion < 1) {
        fail(Problem::Foreign,
             QStringLiteral("%1 is not a KRTodo database (it is another application's SQLite file); "
                            "KRTodo left it as it was.")
                 .arg(quoted(m_path)));
        return false;
    }
    if (m_openedVersion > SchemaVersion) {
        fail(Problem::Newer, QStringLiteral("%1 was written by a newer KRTodo (schema version %2; this one "
                                            "reads up to %3); KRTodo left it as it was.")
                                 .arg(quoted(m_path))
                                 .arg(m_openedVersion)
                                 .arg(SchemaVersion));
        return false;
    }
    m_sideFilesMadeByChecks.clear();
    return true;
}

bool KRTodoDatabase::createSchema() {
    QSqlDatabase database = connection();
    database.transaction();
    bool done = true;
    for (const QString& statement : currentSchema()) {
        done = done && execute(statement);
    }
    done = done && execute(QStringLiteral("PRAGMA application_id = %1").arg(ApplicationId)) &&
           execute(QStringLiteral("PRAGMA user_version = %1").arg(SchemaVersion));
    if (!done) {
        database.rollback();
        return false;
    }
    return database.commit();
}

// Version 1 kept one list: items (identifier, position, status, title) ordered by an integer position.
// Version 2 keeps several checklists; the old items become the first one's. One transaction: a failure
// leaves the file at version 1.
bool KRTodoDatabase::migrate(int fromVersion) {
    if (fromVersion != 1) {
        return false;
    }
    QSqlDatabase database = connection();
    database.transaction();
    const bool done =
        execute(QStringLiteral("ALTER TABLE items RENAME TO items_version_1")) &&
        std::all_of(currentSchema().begin(), currentSchema().end(),
                    [this](const QString& statement) { return execute(statement); }) &&
        execute(QStringLiteral("INSERT INTO checklists (id, name, position) VALUES (1, 'Checklist', 1.0)")) &&
        execute(QStringLiteral("INSERT INTO items (checklist, identifier, position, status, title) SELECT 1, "
                               "identifier, CAST(position AS REAL), status, title FROM items_version_1")) &&
        execute(QStringLiteral("DROP TABLE items_version_1")) &&
        execute(QStringLiteral("PRAGMA user_version = %1").arg(SchemaVersion));
    if (!done) {
        database.rollback();
        return false;
    }
    return database.commit();
}

// Writing
// ------------------------------------------------------------------------------------------------------

void KRTodoDatabase::beginBatch() {
    if (m_batchDepth++ == 0 && m_open && !m_readOnly) {
        m_batchFailed = false;
        connection().transaction();
    }
}

bool KRTodoDatabase::endBatch() {
    if (m_batchDepth == 0 || --m_batchDepth > 0 || !m_open || m_readOnly) {
        return !m_batchFailed;
    }
    QSqlDatabase database = connection();
    if (m_batchFailed) {
        database.rollback();
        return false;
    }
    return database.commit();
}

bool KRTodoDatabase::write(const std::function<bool(QSqlDatabase&)>& work) {
    if (!m_open || m_readOnly || m_problem != Problem::None) {
        return false;
    }
    QSqlDatabase database = connection();
    if (m_batchDepth > 0) {
        const bool done = work(database);
        m_batchFailed = m_batchFailed || !done;
        return done;
    }
    database.transaction();
    if (!work(database)) {
        database.rollback();
        return false;
    }
    return database.commit();
}

namespace {

bool run(QSqlQuery& query) {
    if (!query.exec()) {
        KRLog(QStringLiteral("KRTodo: %1 failed: %2").arg(query.lastQuery(), query.lastError().text()));
        return false;
    }
    return true;
}

} // namespace

std::vector<KRTodoChecklistRecord> KRTodoDatabase::checklists() const {
    std::vector<KRTodoChecklistRecord> records;
    if (!m_open) {
        return records;
    }
    QSqlQuery query(connection());
    query.setForwardOnly(true);
    if (!query.exec(QStringLiteral("SELECT id, name, position FROM checklists ORDER BY position, id"))) {
        return records;
    }
    while (query.next()) {
        records.push_back(
            {query.value(0).toLongLong(), query.value(1).toString(), query.value(2).toDouble()});
    }
    return records;
}

std::optional<qint64> KRTodoDatabase::addChecklist(const QString& name, double position) {
    std::optional<qint64> identifier;
    write([&](QSqlDatabase& database) {
        QSqlQuery query(database);
        query.prepare(QStringLiteral("INSERT INTO checklists (name, position) VALUES (?, ?)"));
        query.addBindValue(name);
        query.addBindValue(position);
        if (!run(query)) {
            return false;
        }
        identifier = query.lastInsertId().toLongLong();
        return true;
    });
    return identifier;
}

bool KRTodoDatabase::restoreChecklist(const KRTodoChecklistRecord& checklist) {
    return write([&](QSqlDatabase& database) {
        QSqlQuery query(database);
        query.prepare(QStringLiteral("INSERT INTO checklists (id, name, position) VALUES (?, ?, ?)"));
        query.addBindValue(checklist.identifier);
        query.addBindValue(checklist.name);
        query.addBindValue(checklist.position);
        return run(query);
    });
}

KRUInteger KRTodoDatabase::openItemCount(qint64 checklist) const {
    if (!m_open) {
        return 0;
    }
    QSqlQuery query(connection());
    query.prepare(QStringLiteral("SELECT count(*) FROM items WHERE checklist = ? AND status = 0"));
    query.addBindValue(checklist);
    if (!query.exec() || !query.next()) {
        return 0;
    }
    return query.value(0).toULongLong();
}

bool KRTodoDatabase::renameChecklist(qint64 checklist, const QString& name) {
    return write([&](QSqlDatabase& database) {
        QSqlQuery query(database);
        query.prepare(QStringLiteral("UPDATE checklists SET name = ? WHERE id = ?"));
        query.addBindValue(name);
        query.addBindValue(checklist);
        return run(query);
    });
}

bool KRTodoDatabase::setChecklistPosition(qint64 checklist, double position) {
    return write([&](QSqlDatabase& database) {
        QSqlQuery query(database);
        query.prepare(QStringLiteral("UPDATE checklists SET position = ? WHERE id = ?"));
        query.addBindValue(position);
        query.addBindValue(checklist);
        return run(query);
    });
}

bool KRTodoDatabase::removeChecklist(qint64 checklist) {
    return write([&](QSqlDatabase& database) {
        QSqlQuery items(database);
        items.prepare(QStringLiteral("DELETE FROM items WHERE checklist = ?"));
        items.addBindValue(checklist);
        QSqlQuery query(database);
        query.prepare(QStringLiteral("DELETE FROM checklists WHERE id = ?"));
        query.addBindValue(checklist);
        return run(items) && run(query);
    });
}

std::vector<KRTodoItemRecord> KRTodoDatabase::items(qint64 checklist) const {
    std::vector<KRTodoItemRecord> records;
    if (!m_open) {
        return records;
    }
    QSqlQuery query(connection());
    query.setForwardOnly(true);
    query.prepare(QStringLiteral("SELECT identifier, status, title, position FROM items WHERE checklist = ? "
                                 "ORDER BY position"));
    query.addBindValue(checklist);
    if (!query.exec()) {
        return records;
    }
    while (query.next()) {
        records.push_back(
            {KRTodoItem{query.value(0).toString(), query.value(1).toULongLong(), query.value(2).toString()},
             query.value(3).toDouble()});
    }
    return records;
}

bool KRTodoDatabase::insertItems(qint64 checklist, const std::vector<KRTodoItemRecord>& items) {
    return write([&](QSqlDatabase& database) {
        QSqlQuery query(database);
        query.prepare(QStringLiteral("INSERT OR REPLACE INTO items (checklist, identifier, position, status, "
                                     "title) VALUES (?, ?, ?, ?, ?)"));
        for (const KRTodoItemRecord& record : items) {
            query.bindValue(0, checklist);
            query.bindValue(1, record.item.identifier);
            query.bindValue(2, record.position);
            query.bindValue(3, static_cast<qulonglong>(record.item.status));
            query.bindValue(4, storedTitle(record.item.title));
            if (!run(query)) {
                return false;
            }
        }
        return true;
    });
}

bool KRTodoDatabase::removeItems(qint64 checklist, const std::vector<QString>& identifiers) {
    return write([&](QSqlDatabase& database) {
        QSqlQuery query(database);
        query.prepare(QStringLiteral("DELETE FROM items WHERE checklist = ? AND identifier = ?"));
        for (const QString& identifier : identifiers) {
            query.bindValue(0, checklist);
            query.bindValue(1, identifier);
            if (!run(query)) {
                return false;
            }
        }
        return true;
    });
}

bool KRTodoDatabase::setPositions(qint64 checklist,
                                  const std::vector<std::pair<QString, double>>& positions) {
    return write([&](QSqlDatabase& database) {
        QSqlQuery query(database);
        query.prepare(QStringLiteral("UPDATE items SET position = ? WHERE checklist = ? AND identifier = ?"));
        for (const auto& [identifier, position] : positions) {
            query.bindValue(0, position);
            query.bindValue(1, checklist);
            query.bindValue(2, identifier);
            if (!run(query)) {
                return false;
            }
        }
        return true;
    });
}

bool KRTodoDatabase::setStatus(qint64 checklist, const QString& identifier, KRUInteger status) {
    return write([&](QSqlDatabase& database) {
        QSqlQuery query(database);
        query.prepare(QStringLiteral("UPDATE items SET status = ? WHERE checklist = ? AND identifier = ?"));
        query.addBindValue(static_cast<qulonglong>(status));
        query.addBindValue(checklist);
        query.addBindValue(identifier);
        return run(query);
    });
}

bool KRTodoDatabase::setTitles(qint64 checklist, const std::vector<std::pair<QString, QString>>& titles) {
    return write([&](QSqlDatabase& database) {
        QSqlQuery query(database);
        query.prepare(QStringLiteral("UPDATE items SET title = ? WHERE checklist = ? AND identifier = ?"));
        for (const auto& [identifier, title] : titles) {
            query.bindValue(0, storedTitle(title));
            query.bindValue(1, checklist);
            query.bindValue(2, identifier);
            if (!run(query)) {
                return false;
            }
        }
        return true;
    });
}

QString KRTodoDatabase::setting(const QString& key) const {
    if (!m_open) {
        return QString();
    }
    QSqlQuery query(connection());
    query.prepare(QStringLiteral("SELECT value FROM settings WHERE key = ?"));
    query.addBindValue(key);
    if (!query.exec() || !query.next()) {
        return QString();
    }
    return query.value(0).toString();
}

bool KRTodoDatabase::setSetting(const QString& key, const QString& value) {
    return write([&](QSqlDatabase& database) {
        QSqlQuery query(database);
        query.prepare(QStringLiteral("INSERT OR REPLACE INTO settings (key, value) VALUES (?, ?)"));
        query.addBindValue(key);
        query.addBindValue(value);
        return run(query);
    });
}
