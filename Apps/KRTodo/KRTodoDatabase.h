#pragma once

#include "KRTodoChecklistRecord.h"
#include "KRTodoItemRecord.h"

#include <QLockFile>
#include <QString>
#include <QStringList>

#include <functional>
#include <memory>
#include <optional>
#include <vector>

class QSqlDatabase;

// KRTodo's SQLite file: checklists and their items, and a few settings of the window.
//
// Opening never writes to a file it does not recognise: it takes a lock next to the file first (a second
// KRTodo on the same file is told so and goes away), checks the header, the schema's owner and version and
// the file's integrity through a read-only connection, and only then opens it for writing, switches it to a
// write-ahead log and migrates an older schema. A file that cannot be written to is opened read-only and
// every write is refused.
//
// Every write is one transaction, committed before the call returns, unless a batch (beginBatch …
// endBatch) gathers several into one.
class KRTodoDatabase {
public:
    enum class Problem {
        None,
        AlreadyOpen,
        NotADatabase,
        Foreign,
        Corrupt,
        Newer,
        ReadOnlyNeedsUpgrade,
        CannotOpen,
    };

    // The schema this build writes, and the application id that marks a file as KRTodo's ('KRTO').
    static constexpr int SchemaVersion = 2;
    static constexpr qint64 ApplicationId = 0x4B52544F;

    // Opens (or creates) the database at path. Never null; check problem() before using it.
    static std::unique_ptr<KRTodoDatabase> open(const QString& path);
    // KRTodo.sqlite in the platform's application data location.
    static QString defaultPath();

    ~KRTodoDatabase();
    KRTodoDatabase(const KRTodoDatabase&) = delete;
    KRTodoDatabase& operator=(const KRTodoDatabase&) = delete;

    Problem problem() const { return m_problem; }
    // One line that says what is wrong with the file (empty when nothing is), or why it is read-only.
    const QString& message() const { return m_message; }
    const QString& path() const { return m_path; }
    bool isReadOnly() const { return m_readOnly; }
    // Whether this open made the file: the first start shows a welcome checklist.
    bool wasCreated() const { return m_created; }

    // Checklists, in their order.
    std::vector<KRTodoChecklistRecord> checklists() const;
    std::optional<qint64> addChecklist(const QString& name, double position);
    // Puts a removed checklist back under its old identifier.
    bool restoreChecklist(const KRTodoChecklistRecord& checklist);
    KRUInteger openItemCount(qint64 checklist) const;
    bool renameChecklist(qint64 checklist, const QString& name);
    bool setChecklistPosition(qint64 checklist, double position);
    // Removes the checklist with its items.
    bool removeChecklist(qint64 checklist);

    // The items of a checklist, in order.
    std::vector<KRTodoItemRecord> items(qint64 checklist) const;
    bool insertItems(qint64 checklist, const std::vector<KRTodoItemRecord>& items);
    bool removeItems(qint64 checklist, const std::vector<QString>& identifiers);
    bool setPositions(qint64 checklist, const std::vector<std::pair<QString, double>>& positions);
    bool setStatus(qint64 checklist, const QString& identifier, KRUInteger status);
    bool setTitles(qint64 checklist, const std::vector<std::pair<QString, QString>>& titles);

    // Settings of the window (the checklist shown, its geometry), as text.
    QString setting(const QString& key) const;
    bool setSetting(const QString& key, const QString& value);

    // Gathers the writes until the matching endBatch into one transaction. Batches nest.
    void beginBatch();
    bool endBatch();

    // The schema version in the file, as read when it was opened.
    int openedVersion() const { return m_openedVersion; }

private:
    explicit KRTodoDatabase(QString path);
    void openFile();
    bool checkExistingFile();
    bool openConnection(bool readOnly);
    void closeConnection();
    bool createSchema();
    bool migrate(int fromVersion);
    bool execute(const QString& statement) const;
    bool write(const std::function<bool(QSqlDatabase&)>& work);
    void fail(Problem problem, const QString& message);
    QSqlDatabase connection() const;

    QString m_path;
    QString m_connectionName;
    std::unique_ptr<QLockFile> m_lock;
    // The write-ahead log and index files that reading the file for its checks made beside it.
    QStringList m_sideFilesMadeByChecks;
    Problem m_problem = Problem::None;
    QString m_message;
    bool m_readOnly = false;
    bool m_created = false;
    bool m_open = false;
    int m_openedVersion = 0;
    int m_batchDepth = 0;
    bool m_batchFailed = false;
};
