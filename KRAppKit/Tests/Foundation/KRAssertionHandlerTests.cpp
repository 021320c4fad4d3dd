#include "Foundation/KRAssertionHandler.h"

#include "Foundation/KRLog.h"
#include "Foundation/KRObject.h"

#include <gtest/gtest.h>

#include <string>

namespace {

// Records failures instead of throwing.
class RecordingHandler : public KRAssertionHandler {
public:
    void handleFailureInMethod(const QString& method, const KRObject*, const QString&, int,
                               const QString& message) override {
        failures.append(method + QStringLiteral(": ") + message);
    }
    QStringList failures;
};

// Puts the default handler back whatever a test installed.
class KRAssertionHandlerTests : public ::testing::Test {
protected:
    void TearDown() override { KRAssertionHandler::setCurrentHandler(nullptr); }
};

} // namespace

TEST_F(KRAssertionHandlerTests, DefaultHandlerThrowsWithEveryDetail) {
    KRObject object;
    KRLogCapture capture;
    try {
        KRAssertionHandler::currentHandler().handleFailureInMethod(QStringLiteral("-[KRView setFrame:]"),
                                                                   &object, QStringLiteral("KRView.cpp"), 42,
                                                                   QStringLiteral("frame is not finite"));
        FAIL() << "the default handler returned";
    } catch (const KRInternalInconsistencyException& exception) {
        EXPECT_STREQ(exception.what(), "frame is not finite");
        EXPECT_EQ(exception.method(), QStringLiteral("-[KRView setFrame:]"));
        EXPECT_EQ(exception.object(), &object);
        EXPECT_EQ(exception.file(), QStringLiteral("KRView.cpp"));
        EXPECT_EQ(exception.line(), 42);
        EXPECT_EQ(exception.message(), QStringLiteral("frame is not finite"));
    }
}

TEST_F(KRAssertionHandlerTests, DefaultHandlerLogsOneLineNamingMethodFileAndLine) {
    KRLogCapture capture;
    EXPECT_THROW(KRAssertionHandler::currentHandler().handleFailureInMethod(
                     QStringLiteral("-[KRTableView reloadData]"), nullptr, QStringLiteral("KRTableView.cpp"),
                     7, QStringLiteral("bad row count")),
                 KRInternalInconsistencyException);
    ASSERT_EQ(capture.lines().size(), 1);
    const QString& line = capture.lines().first();
    EXPECT_TRUE(line.startsWith(
        QStringLiteral("*** Assertion failure in -[KRTableView reloadData], KRTableView.cpp:7")))
        << line.toStdString();
    EXPECT_TRUE(line.contains(QStringLiteral("bad row count"))) << line.toStdString();
}

TEST_F(KRAssertionHandlerTests, ExceptionTextIsUtf8) {
    const QString message = QStringLiteral("caf\u00e9 \u2014 na\u00efve");
    const KRInternalInconsistencyException exception(QStringLiteral("m"), nullptr, QStringLiteral("f"), 1,
                                                     message);
    EXPECT_EQ(std::string(exception.what()), message.toUtf8().toStdString());
    EXPECT_EQ(QString::fromUtf8(exception.what()), message);
}

TEST_F(KRAssertionHandlerTests, InstalledHandlerReceivesFailuresAndDefaultComesBack) {
    auto recorder = std::make_shared<RecordingHandler>();
    EXPECT_EQ(KRAssertionHandler::setCurrentHandler(recorder), nullptr);
    EXPECT_EQ(&KRAssertionHandler::currentHandler(), recorder.get());
    KRAssert(1 + 1 == 3, QStringLiteral("-[KRMath add]"), nullptr, QStringLiteral(__FILE__), __LINE__,
             QStringLiteral("arithmetic broke"));
    EXPECT_EQ(recorder->failures, QStringList{QStringLiteral("-[KRMath add]: arithmetic broke")});

    EXPECT_EQ(KRAssertionHandler::setCurrentHandler(nullptr), recorder);
    KRLogCapture capture;
    EXPECT_THROW(KRAssert(false, QStringLiteral("m"), nullptr, QStringLiteral("f"), 1, QStringLiteral("x")),
                 KRInternalInconsistencyException);
    EXPECT_EQ(recorder->failures.size(), 1);
}

TEST_F(KRAssertionHandlerTests, SetCurrentHandlerReturnsThePreviousOne) {
    auto first = std::make_shared<RecordingHandler>();
    auto second = std::make_shared<RecordingHandler>();
    KRAssertionHandler::setCurrentHandler(first);
    EXPECT_EQ(KRAssertionHandler::setCurrentHandler(second), first);
    EXPECT_EQ(KRAssertionHandler::setCurrentHandler(nullptr), second);
    EXPECT_EQ(KRAssertionHandler::setCurrentHandler(nullptr), nullptr);
}

TEST_F(KRAssertionHandlerTests, PassingAssertionDoesNothing) {
    auto recorder = std::make_shared<RecordingHandler>();
    KRAssertionHandler::setCurrentHandler(recorder);
    int evaluations = 0;
    KRAssert(++evaluations == 1, QStringLiteral("m"), nullptr, QStringLiteral("f"), 1, QStringLiteral("x"));
    EXPECT_EQ(evaluations, 1);
    EXPECT_TRUE(recorder->failures.isEmpty());
}

TEST_F(KRAssertionHandlerTests, GenericExceptionCarriesItsMessage) {
    const KRGenericException exception(QStringLiteral("file not found"));
    EXPECT_STREQ(exception.what(), "file not found");
    EXPECT_EQ(exception.message(), QStringLiteral("file not found"));
}
