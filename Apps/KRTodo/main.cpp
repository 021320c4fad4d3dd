// KRTodo: a to-do checklist in a window, kept in an SQLite database (the application data location's
// KRTodo.sqlite, or --database <path>). With --screenshot <path>, or when no display is available, it
// renders the list offscreen into a PNG at 2x (and one at 1x beside it) and exits. With --dump it prints
// the items, one per line, when it ends; --dump-file <path> writes the same lines to a file. A new database
// starts with a welcome checklist, or with no items (--empty), or with a trip's sample checklist (--sample).
// --help lists the options.
#include "KRTodoChecklists.h"
#include "KRTodoDatabase.h"
#include "KRTodoStore.h"
#include "KRTodoWindow.h"

#include "Foundation/KRClock.h"

#include <QApplication>
#include <QCommandLineParser>
#include <QDir>
#include <QFileInfo>
#include <QMessageBox>
#include <QSaveFile>

#include <cstdio>
#include <optional>

namespace {

struct Options {
    QString screenshotPath;
    QString dumpPath;
    QString databasePath;
    bool dump = false;
    bool empty = false;
    bool sample = false;
};

// The settings the window keeps in the database.
const QString kGeometrySetting = QStringLiteral("window/geometry");
const QString kChecklistSetting = KRTodoWindow::checklistSettingKey();

// What the command line asks for, or the exit status when it asks only for help or the version, or is
// wrong: help and version go to stdout with status 0, mistakes to stderr with status 2.
std::optional<int> parseOptions(int argc, char** argv, Options& options) {
    QStringList arguments;
    for (int i = 0; i < argc; ++i) {
        arguments << QString::fromLocal8Bit(argv[i]);
    }
    QCommandLineParser parser;
    parser.setApplicationDescription(QStringLiteral("A to-do checklist."));
    const QCommandLineOption help = parser.addHelpOption();
    const QCommandLineOption version = parser.addVersionOption();
    const QCommandLineOption empty(QStringLiteral("empty"),
                                   QStringLiteral("A new database starts with no items."));
    const QCommandLineOption sample(QStringLiteral("sample"),
                                    QStringLiteral("A new database starts with a trip's sample checklist."));
    const QCommandLineOption database(
        QStringLiteral("database"),
        QStringLiteral("Keep the checklists in the SQLite file <path> instead of "
                       "the application data location's KRTodo.sqlite."),
        QStringLiteral("path"));
    const QCommandLineOption dump(QStringLiteral("dump"),
                                  QStringLiteral("When KRTodo ends, print the items, one per line: "
                                                 "status, a tab, the title."));
    const QCommandLineOption dumpFile(QStringLiteral("dump-file"),
                                      QStringLiteral("When KRTodo ends, write the same lines to <path>."),
                                      QStringLiteral("path"));
    const QCommandLineOption screenshot(QStringLiteral("screenshot"),
                                        QStringLiteral("Draw the list into <path> (2x) and a -1x PNG beside "
                                                       "it, then exit."),
                                        QStringLiteral("path"));
    parser.addOptions({database, empty, sample, dump, dumpFile, screenshot});

    const auto fail = [](const QString& message) {
        std::fprintf(stderr, "KRTodo: %s\nTry 'KRTodo --help' for more information.\n", qPrintable(message));
        return 2;
    };
    if (!parser.parse(arguments)) {
        return fail(parser.errorText());
    }
    if (parser.isSet(help)) {
        std::fputs(qPrintable(parser.helpText()), stdout);
        return 0;
    }
    if (parser.isSet(version)) {
        std::printf("%s %s\n", qPrintable(QCoreApplication::applicationName()),
                    qPrintable(QCoreApplication::applicationVersion()));
        return 0;
    }
    if (!parser.positionalArguments().isEmpty()) {
        return fail(
            QStringLiteral("unexpected argument '%1'").arg(parser.positionalArguments().constFirst()));
    }
    for (const QCommandLineOption& option : {dumpFile, screenshot, database}) {
        if (parser.isSet(option) && parser.value(option).isEmpty()) {
            return fail(QStringLiteral("--%1 needs a path").arg(option.names().constFirst()));
        }
    }
    if (parser.isSet(empty) && parser.isSet(sample)) {
        return fail(QStringLiteral("--empty and --sample exclude each other"));
    }
    options.empty = parser.isSet(empty);
    options.sample = parser.isSet(sample);
    options.databasePath = parser.value(database);
    options.dump = parser.isSet(dump);
    options.dumpPath = parser.value(dumpFile);
    options.screenshotPath = parser.value(screenshot);
    return std::nullopt;
}

bool hasNoDisplay() {
    if (qEnvironmentVariable("QT_QPA_PLATFORM") == QLatin1String("offscreen")) {
        return true;
    }
    return qEnvironmentVariableIsEmpty("DISPLAY") && qEnvironmentVariableIsEmpty("WAYLAND_DISPLAY");
}

// Writes the list at 2x to path and at 1x beside it, and prints both paths.
bool writeScreenshots(KRTodoWindow& window, const QString& path) {
    const QImage image = window.renderCheckListToImage(2.0);
    const QImage plainImage = window.renderCheckListToImage(1.0);
    const QFileInfo info(path);
    QDir().mkpath(info.absolutePath());
    const QString plainPath = info.dir().filePath(info.completeBaseName() + QStringLiteral("-1x.png"));
    if (!image.save(info.filePath(), "PNG") || !plainImage.save(plainPath, "PNG")) {
        std::fprintf(stderr, "KRTodo: could not write %s\n", qPrintable(info.filePath()));
        return false;
    }
    std::printf("%s\n%s\n", qPrintable(info.filePath()), qPrintable(plainPath));
    return true;
}

void dumpStore(const KRTodoStore& store) {
    std::fputs(store.dump().toUtf8().constData(), stdout);
    std::fflush(stdout);
}

// Written whole or not at all, so that a reader waiting for the file never sees half of it.
bool dumpStoreToFile(const KRTodoStore& store, const QString& path) {
    QSaveFile file(path);
    if (!file.open(QIODevice::WriteOnly) || file.write(store.dump().toUtf8()) < 0 || !file.commit()) {
        std::fprintf(stderr, "KRTodo: could not write %s\n", qPrintable(path));
        return false;
    }
    return true;
}

// A file KRTodo can't use: the same line on stderr and, with a display, in a dialog.
void reportProblem(const QString& message, bool showDialog) {
    std::fprintf(stderr, "KRTodo: %s\n", qPrintable(message));
    if (showDialog) {
        QMessageBox::critical(nullptr, QStringLiteral("KRTodo"), message);
    }
}

// The first checklist of a new database, or of one whose checklists were all deleted.
std::optional<KRTodoChecklistRecord> makeFirstChecklist(KRTodoDatabase& database, const Options& options) {
    const QString name =
        options.sample ? QStringLiteral("Trip to Lisbon") : KRTodoStore::welcomeChecklistName();
    const std::optional<qint64> checklist = database.addChecklist(name, 1.0);
    if (!checklist) {
        return std::nullopt;
    }
    std::vector<KRTodoItem> items;
    if (database.wasCreated() && !options.empty) {
        items = options.sample ? KRTodoStore::sampleItems() : KRTodoStore::welcomeItems();
    }
    // A store writes the items as it inserts them.
    const std::shared_ptr<KRTodoStore> store = KRTodoStore::makeStore(
        std::shared_ptr<KRTodoDatabase>(&database, [](KRTodoDatabase*) {}), *checklist, name);
    KRMutableIndexSet indexes;
    for (std::size_t index = 0; index < items.size(); ++index) {
        indexes.addIndex(index);
    }
    store->insertItems(std::move(items), indexes, nullptr);
    return KRTodoChecklistRecord{*checklist, name, 1.0};
}

// The checklist the window showed last, or the first one.
std::optional<KRTodoChecklistRecord> openingChecklist(KRTodoDatabase& database, const Options& options) {
    const std::vector<KRTodoChecklistRecord> checklists = database.checklists();
    if (checklists.empty()) {
        if (database.isReadOnly()) {
            return KRTodoChecklistRecord{0, QStringLiteral("Checklist"), 0.0};
        }
        return makeFirstChecklist(database, options);
    }
    bool number = false;
    const qint64 last = database.setting(kChecklistSetting).toLongLong(&number);
    for (const KRTodoChecklistRecord& checklist : checklists) {
        if (number && checklist.identifier == last) {
            return checklist;
        }
    }
    return checklists.front();
}

} // namespace

int main(int argc, char** argv) {
    QCoreApplication::setApplicationName(QStringLiteral("KRTodo"));
    QCoreApplication::setApplicationVersion(QStringLiteral(KRTODO_VERSION));
    Options options;
    if (const std::optional<int> status = parseOptions(argc, argv, options)) {
        return *status;
    }
    if (hasNoDisplay()) {
        qputenv("QT_QPA_PLATFORM", "offscreen");
        if (options.screenshotPath.isEmpty()) {
            options.screenshotPath = QStringLiteral("out/KRTodo.png");
        }
    }
    const bool screenshot = !options.screenshotPath.isEmpty();
    // A still frame needs time that stands still.
    if (screenshot) {
        KRClock::useManualTime(0.0);
    }

    QApplication application(argc, argv);

    const QString databasePath =
        options.databasePath.isEmpty() ? KRTodoDatabase::defaultPath() : options.databasePath;
    const std::shared_ptr<KRTodoDatabase> database = KRTodoDatabase::open(databasePath);
    if (database->problem() != KRTodoDatabase::Problem::None) {
        reportProblem(database->message(), !screenshot);
        return 1;
    }
    const std::optional<KRTodoChecklistRecord> checklist = openingChecklist(*database, options);
    if (!checklist) {
        reportProblem(QStringLiteral("%1 has no checklist and none could be made.").arg(database->path()),
                      !screenshot);
        return 1;
    }
    KRTodoChecklists checklists(database);
    std::shared_ptr<KRTodoStore> store = checklists.store(checklist->identifier);
    if (!store) {
        // A read-only file without checklists shows an empty one.
        store = KRTodoStore::makeStore(database, checklist->identifier, checklist->name);
    }
    database->setSetting(kChecklistSetting, QString::number(checklist->identifier));
    KRTodoWindow window(store);
    window.showChecklists(checklists);
    if (database->isReadOnly()) {
        std::fprintf(stderr, "KRTodo: %s\n", qPrintable(database->message()));
        window.showReadOnlyReason(database->message());
    }
    // The window comes back where it was, as large as it was.
    const QByteArray geometry = QByteArray::fromBase64(database->setting(kGeometrySetting).toLatin1());
    if (!geometry.isEmpty() && !screenshot) {
        window.restoreGeometry(geometry);
    }
    // Offscreen the window is laid out as if shown, without a platform window of its own.
    window.setAttribute(Qt::WA_DontShowOnScreen, screenshot);
    window.show();

    int status = 0;
    if (screenshot) {
        window.settle();
        status = writeScreenshots(window, options.screenshotPath) ? 0 : 1;
    } else {
        status = QApplication::exec();
        database->setSetting(kGeometrySetting, QString::fromLatin1(window.saveGeometry().toBase64()));
    }
    window.store().commitTypedTitles();
    if (options.dump) {
        dumpStore(window.store());
    }
    if (!options.dumpPath.isEmpty() && !dumpStoreToFile(window.store(), options.dumpPath)) {
        status = 1;
    }
    return status;
}
