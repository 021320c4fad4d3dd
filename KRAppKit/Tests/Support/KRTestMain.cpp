// Test entry point: a QApplication on the offscreen platform (fonts, images and the clipboard need one),
// a manual clock so no test depends on wall time, and GoogleTest.
#include "Foundation/KRClock.h"

#include <QApplication>
#include <gtest/gtest.h>

int main(int argc, char** argv) {
    qputenv("QT_QPA_PLATFORM", "offscreen");
    QApplication application(argc, argv);
    KRClock::useManualTime(0.0);
    ::testing::InitGoogleTest(&argc, argv);
    return RUN_ALL_TESTS();
}
