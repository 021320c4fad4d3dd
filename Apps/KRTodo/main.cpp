// KRTodo: a to-do checklist in a window. With --screenshot <path>, or when no display is available, it
// renders the list offscreen into a PNG at 2x (and one at 1x beside it) and exits. With --dump it prints
// the items, one per line, when it ends; --dump-file <path> writes the same lines to a file. --empty starts
// with no items instead of the sample checklist.
#include "KRTodoStore.h"
#include "KRTodoWindow.h"

#include "Foundation/KRClock.h"

#include <QApplication>
#include <QDir>
#include <QFileInfo>
#include <QSaveFile>

#include <cstdio>
#include <cstring>

namespace {

struct Options {
    QString screenshotPath;
    QString dumpPath;
    bool dump = false;
    bool empty = false;
};

Options parseOptions(int argc, char** argv) {
    Options options;
    for (int i = 1; i < argc; ++i) {
        if (std::strcmp(argv[i], "--screenshot") == 0 && i + 1 < argc) {
            options.screenshotPath = QString::fromLocal8Bit(argv[++i]);
        } else if (std::strcmp(argv[i], "--dump") == 0) {
            options.dump = true;
        } else if (std::strcmp(argv[i], "--dump-file") == 0 && i + 1 < argc) {
            options.dumpPath = QString::fromLocal8Bit(argv[++i]);
        } else if (std::strcmp(argv[i], "--empty") == 0) {
            options.empty = true;
        }
    }
    return options;
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

} // namespace

int main(int argc, char** argv) {
    Options options = parseOptions(argc, argv);
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
    QApplication::setApplicationName(QStringLiteral("KRTodo"));

    const std::shared_ptr<KRTodoStore> store =
        options.empty ? std::make_shared<KRTodoStore>() : KRTodoStore::makeSampleStore();
    KRTodoWindow window(store);
    // Offscreen the window is laid out as if shown, without a platform window of its own.
    window.setAttribute(Qt::WA_DontShowOnScreen, screenshot);
    window.show();

    int status = 0;
    if (screenshot) {
        window.settle();
        status = writeScreenshots(window, options.screenshotPath) ? 0 : 1;
    } else {
        status = QApplication::exec();
    }
    if (options.dump) {
        dumpStore(*store);
    }
    if (!options.dumpPath.isEmpty() && !dumpStoreToFile(*store, options.dumpPath)) {
        status = 1;
    }
    return status;
}
