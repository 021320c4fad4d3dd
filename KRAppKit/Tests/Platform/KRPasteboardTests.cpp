#include "Platform/KRPasteboard.h"

#include <QClipboard>
#include <QGuiApplication>
#include <QMimeData>
#include <gtest/gtest.h>

namespace {

const QString kRowsType = QStringLiteral("com.krappkit.rows");

class KRPasteboardTests : public ::testing::Test {
protected:
    void TearDown() override { KRPasteboard::setGeneralPasteboard(nullptr); }
};

TEST_F(KRPasteboardTests, InMemoryHoldsTwoTypes) {
    auto pasteboard = KRPasteboard::makeInMemory();
    pasteboard->declareTypes({kRowsType, KRPasteboardTypeString}, nullptr);
    EXPECT_TRUE(pasteboard->setData(QByteArray("[1,2]"), kRowsType));
    EXPECT_TRUE(pasteboard->setString(QStringLiteral("one\ntwo"), KRPasteboardTypeString));

    EXPECT_EQ(pasteboard->dataForType(kRowsType), QByteArray("[1,2]"));
    EXPECT_EQ(pasteboard->stringForType(KRPasteboardTypeString), QStringLiteral("one\ntwo"));
    EXPECT_EQ(pasteboard->types(), (QStringList{kRowsType, KRPasteboardTypeString}));
}

TEST_F(KRPasteboardTests, AvailableTypeFollowsTheReadersPreference) {
    auto pasteboard = KRPasteboard::makeInMemory();
    pasteboard->declareTypes({KRPasteboardTypeString, kRowsType}, nullptr);
    pasteboard->setString(QStringLiteral("text"), KRPasteboardTypeString);
    pasteboard->setData(QByteArray("rows"), kRowsType);

    EXPECT_EQ(pasteboard->availableTypeFromArray({kRowsType, KRPasteboardTypeString}), kRowsType);
    EXPECT_EQ(pasteboard->availableTypeFromArray({KRPasteboardTypeString, kRowsType}),
              KRPasteboardTypeString);
    EXPECT_EQ(pasteboard->availableTypeFromArray({QStringLiteral("public.png"), kRowsType}), kRowsType);
    EXPECT_EQ(pasteboard->availableTypeFromArray({QStringLiteral("public.png")}), QString());
    EXPECT_TRUE(pasteboard->availableTypeFromArray({}).isEmpty());
}

TEST_F(KRPasteboardTests, RefusesATypeThatWasNotDeclared) {
    auto pasteboard = KRPasteboard::makeInMemory();
    pasteboard->declareTypes({KRPasteboardTypeString}, nullptr);
    EXPECT_FALSE(pasteboard->setData(QByteArray("rows"), kRowsType));
    EXPECT_FALSE(pasteboard->setString(QStringLiteral("rows"), kRowsType));
    EXPECT_FALSE(pasteboard->dataForType(kRowsType).has_value());
    EXPECT_TRUE(pasteboard->availableTypeFromArray({kRowsType}).isEmpty());
}

TEST_F(KRPasteboardTests, DeclaredTypeWithoutDataIsNotAvailable) {
    auto pasteboard = KRPasteboard::makeInMemory();
    pasteboard->declareTypes({kRowsType, KRPasteboardTypeString}, nullptr);
    pasteboard->setString(QStringLiteral("text"), KRPasteboardTypeString);
    EXPECT_EQ(pasteboard->types(), QStringList{KRPasteboardTypeString});
    EXPECT_EQ(pasteboard->availableTypeFromArray({kRowsType, KRPasteboardTypeString}),
              KRPasteboardTypeString);
    EXPECT_FALSE(pasteboard->stringForType(kRowsType).has_value());
}

TEST_F(KRPasteboardTests, DeclareTypesClearsTheOldContentsAndCountsTheChange) {
    auto pasteboard = KRPasteboard::makeInMemory();
    const KRInteger first = pasteboard->declareTypes({kRowsType}, nullptr);
    pasteboard->setData(QByteArray("rows"), kRowsType);
    EXPECT_EQ(pasteboard->changeCount(), first);

    const KRInteger second = pasteboard->declareTypes({KRPasteboardTypeString}, nullptr);
    EXPECT_GT(second, first);
    EXPECT_EQ(pasteboard->changeCount(), second);
    EXPECT_FALSE(pasteboard->dataForType(kRowsType).has_value());
    EXPECT_TRUE(pasteboard->types().isEmpty());
    // The old type is no longer declared either.
    EXPECT_FALSE(pasteboard->setData(QByteArray("rows"), kRowsType));
}

TEST_F(KRPasteboardTests, StringsAreStoredAsUtf8) {
    auto pasteboard = KRPasteboard::makeInMemory();
    pasteboard->declareTypes({kRowsType}, nullptr);
    pasteboard->setString(QStringLiteral("Grüße ✓"), kRowsType);
    EXPECT_EQ(pasteboard->dataForType(kRowsType), QStringLiteral("Grüße ✓").toUtf8());
    EXPECT_EQ(pasteboard->stringForType(kRowsType), QStringLiteral("Grüße ✓"));
}

TEST_F(KRPasteboardTests, KeepsItsOwnerWhileItLives) {
    auto pasteboard = KRPasteboard::makeInMemory();
    auto owner = std::make_unique<KRObject>();
    pasteboard->declareTypes({kRowsType}, owner.get());
    EXPECT_EQ(pasteboard->owner(), owner.get());
    owner.reset();
    EXPECT_EQ(pasteboard->owner(), nullptr);
}

TEST_F(KRPasteboardTests, GeneralPasteboardCanBeReplacedAndRestored) {
    auto clipboardBacked = KRPasteboard::generalPasteboard();
    ASSERT_NE(clipboardBacked, nullptr);
    EXPECT_EQ(KRPasteboard::generalPasteboard(), clipboardBacked);

    auto memory = KRPasteboard::makeInMemory();
    KRPasteboard::setGeneralPasteboard(memory);
    EXPECT_EQ(KRPasteboard::generalPasteboard(), memory);

    KRPasteboard::setGeneralPasteboard(nullptr);
    auto restored = KRPasteboard::generalPasteboard();
    ASSERT_NE(restored, nullptr);
    EXPECT_NE(restored, memory);
}

TEST_F(KRPasteboardTests, ClipboardRoundTripsTwoTypes) {
    auto pasteboard = KRPasteboard::generalPasteboard();
    pasteboard->declareTypes({kRowsType, KRPasteboardTypeString}, nullptr);
    ASSERT_TRUE(pasteboard->setData(QByteArray("{\"rows\":[3]}"), kRowsType));
    ASSERT_TRUE(pasteboard->setString(QStringLiteral("Buy milk"), KRPasteboardTypeString));

    // Both live in the system clipboard, plain text as text/plain.
    const QMimeData* mimeData = QGuiApplication::clipboard()->mimeData();
    ASSERT_NE(mimeData, nullptr);
    EXPECT_EQ(mimeData->text(), QStringLiteral("Buy milk"));
    EXPECT_EQ(mimeData->data(QStringLiteral("application/x-com.krappkit.rows")),
              QByteArray("{\"rows\":[3]}"));
    EXPECT_FALSE(mimeData->hasFormat(kRowsType)) << "a type that is no MIME name travels under one";

    EXPECT_EQ(pasteboard->stringForType(KRPasteboardTypeString), QStringLiteral("Buy milk"));
    EXPECT_EQ(pasteboard->dataForType(kRowsType), QByteArray("{\"rows\":[3]}"));
    EXPECT_EQ(pasteboard->availableTypeFromArray({kRowsType, KRPasteboardTypeString}), kRowsType);
    EXPECT_EQ(pasteboard->types(), (QStringList{kRowsType, KRPasteboardTypeString}));
}

TEST_F(KRPasteboardTests, ClipboardReadsTextCopiedElsewhere) {
    auto pasteboard = KRPasteboard::generalPasteboard();
    pasteboard->declareTypes({kRowsType}, nullptr);
    pasteboard->setData(QByteArray("rows"), kRowsType);
    const KRInteger before = pasteboard->changeCount();

    QGuiApplication::clipboard()->setText(QStringLiteral("from another app"));

    EXPECT_GT(pasteboard->changeCount(), before);
    EXPECT_EQ(pasteboard->stringForType(KRPasteboardTypeString), QStringLiteral("from another app"));
    EXPECT_FALSE(pasteboard->dataForType(kRowsType).has_value());
    EXPECT_EQ(pasteboard->availableTypeFromArray({kRowsType, KRPasteboardTypeString}),
              KRPasteboardTypeString);
}

// MIME names on the system clipboard
// ------------------------------------------------------------------------------------------------------

TEST_F(KRPasteboardTests, PlainTextTravelsAsTextPlain) {
    EXPECT_EQ(KRPasteboard::mimeTypeForType(KRPasteboardTypeString), QStringLiteral("text/plain"));
    EXPECT_EQ(KRPasteboard::typeForMimeType(QStringLiteral("text/plain")), KRPasteboardTypeString);
    EXPECT_EQ(KRPasteboard::typeForMimeType(QStringLiteral("text/plain;charset=utf-8")),
              KRPasteboardTypeString);
    EXPECT_EQ(KRPasteboard::typeForMimeType(QStringLiteral("text/plainish")),
              QStringLiteral("text/plainish"));
}

TEST_F(KRPasteboardTests, ATypeThatIsAMimeNameKeepsIt) {
    EXPECT_EQ(KRPasteboard::mimeTypeForType(KRPasteboardTypeHTML), QStringLiteral("text/html"));
    EXPECT_EQ(KRPasteboard::typeForMimeType(QStringLiteral("text/html")), KRPasteboardTypeHTML);
    EXPECT_EQ(KRPasteboard::typeForMimeType(QStringLiteral("image/png")), QStringLiteral("image/png"));
}

TEST_F(KRPasteboardTests, AnUnregisteredTypeTravelsUnderAPrivateMimeName) {
    EXPECT_EQ(KRPasteboard::mimeTypeForType(QStringLiteral("com.example.rows")),
              QStringLiteral("application/x-com.example.rows"));
    EXPECT_EQ(KRPasteboard::typeForMimeType(QStringLiteral("application/x-com.example.rows")),
              QStringLiteral("com.example.rows"));
    // A private MIME name whose remainder is itself a MIME name stands for no type of ours.
    EXPECT_EQ(KRPasteboard::typeForMimeType(QStringLiteral("application/x-text/plain")),
              QStringLiteral("application/x-text/plain"));
}

TEST_F(KRPasteboardTests, ARegisteredTypeTravelsUnderItsMimeName) {
    const QString type = QStringLiteral("com.krappkit.tests.RegisteredType");
    const QString mimeType = QStringLiteral("application/x-krappkit-tests-registered+json");
    EXPECT_EQ(KRPasteboard::registerMimeTypeForType(mimeType, type), type);
    EXPECT_EQ(KRPasteboard::mimeTypeForType(type), mimeType);
    EXPECT_EQ(KRPasteboard::typeForMimeType(mimeType), type);
    // Its default private name no longer stands for it.
    EXPECT_EQ(KRPasteboard::typeForMimeType(QStringLiteral("application/x-") + type),
              QStringLiteral("application/x-") + type);
}

TEST_F(KRPasteboardTests, EveryTypeComesBackFromItsMimeName) {
    KRPasteboard::registerMimeTypeForType(QStringLiteral("application/x-krappkit-tests-round-trip"),
                                          QStringLiteral("com.krappkit.tests.RoundTrip"));
    for (const QString& type :
         {KRPasteboardTypeString, KRPasteboardTypeHTML, QStringLiteral("com.krappkit.rows"),
          QStringLiteral("com.krappkit.tests.RoundTrip"), QStringLiteral("image/png"), QStringLiteral("x")}) {
        EXPECT_EQ(KRPasteboard::typeForMimeType(KRPasteboard::mimeTypeForType(type)), type)
            << type.toStdString();
    }
}

TEST_F(KRPasteboardTests, ClipboardHoldsARegisteredTypeUnderItsMimeName) {
    const QString type = QStringLiteral("com.krappkit.tests.Items");
    const QString mimeType = QStringLiteral("application/x-krappkit-tests-items+json");
    KRPasteboard::registerMimeTypeForType(mimeType, type);
    auto pasteboard = KRPasteboard::generalPasteboard();
    pasteboard->declareTypes({type, KRPasteboardTypeString}, nullptr);
    pasteboard->setData(QByteArray("[]"), type);
    pasteboard->setString(QStringLiteral("- a\n"), KRPasteboardTypeString);

    const QMimeData* mimeData = QGuiApplication::clipboard()->mimeData();
    ASSERT_NE(mimeData, nullptr);
    EXPECT_EQ(mimeData->data(mimeType), QByteArray("[]"));
    EXPECT_EQ(mimeData->text(), QStringLiteral("- a\n"));
}

// What another process (another copy of the application, or another application) puts on the clipboard.
TEST_F(KRPasteboardTests, ClipboardReadsARegisteredTypeCopiedElsewhere) {
    const QString type = QStringLiteral("com.krappkit.tests.Foreign");
    const QString mimeType = QStringLiteral("application/x-krappkit-tests-foreign+json");
    KRPasteboard::registerMimeTypeForType(mimeType, type);
    auto pasteboard = KRPasteboard::generalPasteboard();

    auto* mimeData = new QMimeData;
    mimeData->setData(QStringLiteral("image/png"), QByteArray("png"));
    mimeData->setData(mimeType, QByteArray("[{\"status\":1}]"));
    mimeData->setText(QStringLiteral("+ a"));
    QGuiApplication::clipboard()->setMimeData(mimeData);

    EXPECT_EQ(pasteboard->dataForType(type), QByteArray("[{\"status\":1}]"));
    EXPECT_EQ(pasteboard->stringForType(KRPasteboardTypeString), QStringLiteral("+ a"));
    EXPECT_EQ(pasteboard->availableTypeFromArray({type, KRPasteboardTypeString}), type);
    const QStringList types = pasteboard->types();
    EXPECT_TRUE(types.contains(type));
    EXPECT_TRUE(types.contains(KRPasteboardTypeString));
    EXPECT_TRUE(types.contains(QStringLiteral("image/png")));
    EXPECT_FALSE(types.contains(mimeType)) << "formats are answered as the types they stand for";
    EXPECT_EQ(types.count(KRPasteboardTypeString), 1);
}

} // namespace
