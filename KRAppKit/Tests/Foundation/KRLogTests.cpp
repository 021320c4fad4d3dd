#include "Foundation/KRLog.h"

#include <gtest/gtest.h>

#include <memory>

TEST(KRLogTests, CaptureCollectsLinesInOrder) {
    KRLogCapture capture;
    KRLog(QStringLiteral("first"));
    KRLog(QStringLiteral("second"));
    EXPECT_EQ(capture.lines(), (QStringList{QStringLiteral("first"), QStringLiteral("second")}));
    capture.clear();
    EXPECT_TRUE(capture.lines().isEmpty());
}

TEST(KRLogTests, InnermostCaptureTakesTheLinesAndOuterResumesAfterwards) {
    KRLogCapture outer;
    KRLog(QStringLiteral("a"));
    {
        KRLogCapture inner;
        KRLog(QStringLiteral("b"));
        EXPECT_EQ(inner.lines(), QStringList{QStringLiteral("b")});
    }
    KRLog(QStringLiteral("c"));
    EXPECT_EQ(outer.lines(), (QStringList{QStringLiteral("a"), QStringLiteral("c")}));
}

TEST(KRLogTests, CaptureDestroyedOutOfOrderLeavesTheChainIntact) {
    KRLogCapture outer;
    auto middle = std::make_unique<KRLogCapture>();
    auto inner = std::make_unique<KRLogCapture>();
    middle.reset();
    KRLog(QStringLiteral("to inner"));
    EXPECT_EQ(inner->lines(), QStringList{QStringLiteral("to inner")});
    inner.reset();
    KRLog(QStringLiteral("to outer"));
    EXPECT_EQ(outer.lines(), QStringList{QStringLiteral("to outer")});
}

TEST(KRLogTests, LinesWithoutCaptureGoToStandardError) {
    testing::internal::CaptureStderr();
    KRLog(QStringLiteral("hello \u00e9"));
    const std::string output = testing::internal::GetCapturedStderr();
    EXPECT_EQ(output, "hello \xc3\xa9\n");
}
