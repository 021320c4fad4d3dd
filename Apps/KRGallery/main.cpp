// KRGallery: every look the toolkit draws, in one scrolling window. With --screenshot <path>, or when no
// display is available, it renders itself offscreen at 2x into a PNG and exits.
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
        const QImage image = host->renderToImage(2.0);
        delete host;
        const QFileInfo info(screenshotPath);
        QDir().mkpath(info.absolutePath());
        if (!image.save(info.filePath(), "PNG")) {
            std::fprintf(stderr, "KRGallery: could not write %s\n", qPrintable(info.filePath()));
            return 1;
        }
        std::printf("%s\n", qPrintable(info.filePath()));
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
