// KRGallery: every look the toolkit draws, in one scrolling window. With --screenshot <path>, or when no
// display is available, it renders itself offscreen into a PNG at 2x (and one at 1x beside it) and exits.
#include "KRGalleryContent.h"

#include "Foundation/KRClock.h"
#include "Foundation/KRRunLoop.h"
#include "Platform/KRHostWidget.h"

#include <QApplication>
#include <QDir>
#include <QFileInfo>
#include <QMainWindow>
#include <QScrollArea>

#include <cstdio>
#include <cstring>

namespace {

bool hasNoDisplay() {
    if (qEnvironmentVariable("QT_QPA_PLATFORM") == QLatin1String("offscreen")) {
        return true;
    }
    return qEnvironmentVariableIsEmpty("DISPLAY") && qEnvironmentVariableIsEmpty("WAYLAND_DISPLAY");
}

} // namespace

int main(int argc, char** argv) {
    QString screenshotPath;
    for (int i = 1; i < argc; ++i) {
        if (std::strcmp(argv[i], "--screenshot") == 0 && i + 1 < argc) {
            screenshotPath = QString::fromLocal8Bit(argv[i + 1]);
        }
    }
    const bool noDisplay = hasNoDisplay();
    if (noDisplay) {
        qputenv("QT_QPA_PLATFORM", "offscreen");
        if (screenshotPath.isEmpty()) {
            screenshotPath = QStringLiteral("out/KRGallery.png");
        }
    }
    const bool screenshot = !screenshotPath.isEmpty();
    // A still frame needs time that stands still, so the animations can be stopped mid-way.
    if (screenshot) {
        KRClock::useManualTime(0.0);
    }

    QApplication application(argc, argv);
    QApplication::setApplicationName(QStringLiteral("KRGallery"));

    const KRGalleryContent content = KRMakeGalleryContent();
    auto* host = new KRHostWidget;
    host->setContentView(content.root);
    host->setResizesContentView(false);
    host->resize(host->sizeHint());
    if (content.editedField && host->krWindow().makeFirstResponder(content.editedField.get())) {
        content.editedField->currentEditor()->setSelectedRange(content.editedSelection);
    }

    if (screenshot) {
        KRRunLoop::main().runUntilIdle();
        KRClock::advance(content.animationLegDuration * 0.5);
        KRRunLoop::main().runUntilIdle();
        // The 2x picture is the one to look at; the 1x one shows how crisp the same content is on a plain
        // screen.
        const QImage image = host->renderToImage(2.0);
        const QImage plainImage = host->renderToImage(1.0);
        delete host;
        const QFileInfo info(screenshotPath);
        QDir().mkpath(info.absolutePath());
        const QString plainPath = info.dir().filePath(info.completeBaseName() + QStringLiteral("-1x.png"));
        if (!image.save(info.filePath(), "PNG") || !plainImage.save(plainPath, "PNG")) {
            std::fprintf(stderr, "KRGallery: could not write %s\n", qPrintable(info.filePath()));
            return 1;
        }
        std::printf("%s\n%s\n", qPrintable(info.filePath()), qPrintable(plainPath));
        return 0;
    }

    QMainWindow mainWindow;
    mainWindow.setWindowTitle(QStringLiteral("KRGallery"));
    auto* scrollArea = new QScrollArea;
    scrollArea->setWidget(host);
    scrollArea->setAlignment(Qt::AlignHCenter | Qt::AlignTop);
    mainWindow.setCentralWidget(scrollArea);
    mainWindow.resize(host->sizeHint().width() + 40, 760);
    mainWindow.show();
    return application.exec();
}
