#include "Text/KRKeyBindings.h"
#include "Views/KREvent.h"
#include "Views/KRResponder.h"

#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <gtest/gtest.h>

#include <vector>

namespace {

using Platform = KRKeyBindings::Platform;

// Records the text and commands the bindings hand it.
class RecordingResponder : public KRResponder {
public:
    void insertText(const QString& text) override { calls.push_back(QStringLiteral("insertText:") + text); }
    void doCommandBySelector(const KRSelector& selector) override {
        calls.push_back(QStringLiteral("command:") + selector.name());
    }
    QStringList calls;
};

// The characters and extra flags the host attaches to a key, so lookups prove they ignore the latter.
struct KeyTraits {
    QString characters;
    KREventModifierFlags flags = 0;
};

KeyTraits traitsFor(unsigned short keyCode, KREventModifierFlags modifiers) {
    const KREventModifierFlags function = KREventModifierFlagFunction;
    const KREventModifierFlags arrow = KREventModifierFlagFunction | KREventModifierFlagNumericPad;
    switch (keyCode) {
    case KRKeyCode::UpArrow:
        return {QString(QChar(0xF700)), arrow};
    case KRKeyCode::DownArrow:
        return {QString(QChar(0xF701)), arrow};
    case KRKeyCode::LeftArrow:
        return {QString(QChar(0xF702)), arrow};
    case KRKeyCode::RightArrow:
        return {QString(QChar(0xF703)), arrow};
    case KRKeyCode::ForwardDelete:
        return {QString(QChar(0xF728)), function};
    case KRKeyCode::Home:
        return {QString(QChar(0xF729)), function};
    case KRKeyCode::End:
        return {QString(QChar(0xF72B)), function};
    case KRKeyCode::PageUp:
        return {QString(QChar(0xF72C)), function};
    case KRKeyCode::PageDown:
        return {QString(QChar(0xF72D)), function};
    case KRKeyCode::Delete:
        return {QStringLiteral("\x7f"), 0};
    case KRKeyCode::Return:
        return {QStringLiteral("\r"), 0};
    case KRKeyCode::KeypadEnter:
        return {QStringLiteral("\x03"), KREventModifierFlagNumericPad};
    case KRKeyCode::Tab:
        return {(modifiers & KREventModifierFlagShift) ? QStringLiteral("\x19") : QStringLiteral("\t"), 0};
    case KRKeyCode::Escape:
        return {QStringLiteral("\x1b"), 0};
    default:
        break;
    }
    static const struct {
        unsigned short code;
        char16_t letter;
    } letters[] = {{KRKeyCode::A, u'a'}, {KRKeyCode::B, u'b'}, {KRKeyCode::C, u'c'}, {KRKeyCode::D, u'd'},
                   {KRKeyCode::E, u'e'}, {KRKeyCode::F, u'f'}, {KRKeyCode::H, u'h'}, {KRKeyCode::K, u'k'},
                   {KRKeyCode::N, u'n'}, {KRKeyCode::P, u'p'}, {KRKeyCode::V, u'v'}, {KRKeyCode::X, u'x'},
                   {KRKeyCode::Y, u'y'}, {KRKeyCode::Z, u'z'}};
    for (const auto& entry : letters) {
        if (entry.code == keyCode) {
            // Control turns letters into control characters (Control-A is U+0001).
            if (modifiers & KREventModifierFlagControl) {
                return {QString(QChar(static_cast<char16_t>(entry.letter - u'a' + 1))), 0};
            }
            const QChar letter(entry.letter);
            return {(modifiers & KREventModifierFlagShift) ? QString(letter.toUpper()) : QString(letter), 0};
        }
    }
    ADD_FAILURE() << "no characters for key code " << keyCode;
    return {};
}

KREvent keyDown(unsigned short keyCode, KREventModifierFlags modifiers) {
    const KeyTraits traits = traitsFor(keyCode, modifiers);
    return KREvent::keyEvent(KREventType::KeyDown, modifiers | traits.flags, traits.characters,
                             traits.characters, keyCode, nullptr);
}

QStringList names(const QList<KRSelector>& selectors) {
    QStringList result;
    for (const KRSelector& selector : selectors) {
        result << selector.name();
    }
    return result;
}

std::string describe(Platform platform) {
    return platform == Platform::Mac ? "Mac" : "Other";
}

// The README at the top of the source tree, which the build names: the build directory may be anywhere.
QString readReadme() {
    QFile file(QDir(QStringLiteral(KR_SOURCE_DIRECTORY)).filePath(QStringLiteral("README.md")));
    if (!file.open(QIODevice::ReadOnly)) {
        return {};
    }
    const QString contents = QString::fromUtf8(file.readAll());
    return contents.contains(QStringLiteral("## Keyboard")) ? contents : QString();
}

class KRKeyBindingsTests : public ::testing::Test {
protected:
    void SetUp() override { m_previousInterpreter = KRResponder::keyEventInterpreter(); }
    void TearDown() override {
        KRResponder::setKeyEventInterpreter(m_previousInterpreter);
        KRKeyBindings::setPlatformOverride(std::nullopt);
    }

private:
    KRResponder::KeyEventInterpreter m_previousInterpreter;
};

TEST_F(KRKeyBindingsTests, EveryBindingResolvesToItsSelectors) {
    for (const Platform platform : {Platform::Mac, Platform::Other}) {
        const auto& table = KRKeyBindings::bindings(platform);
        EXPECT_FALSE(table.empty());
        for (const KRKeyBindings::Binding& binding : table) {
            const KREvent event = keyDown(binding.keyCode, binding.modifiers);
            EXPECT_EQ(names(KRKeyBindings::selectorsForEvent(event, platform)), binding.selectors)
                << describe(platform) << " " << binding.keys.toStdString();
        }
    }
}

TEST_F(KRKeyBindingsTests, EachChordIsBoundOnce) {
    for (const Platform platform : {Platform::Mac, Platform::Other}) {
        const auto& table = KRKeyBindings::bindings(platform);
        for (size_t i = 0; i < table.size(); ++i) {
            EXPECT_FALSE(table[i].keys.isEmpty());
            EXPECT_FALSE(table[i].selectors.isEmpty());
            for (size_t j = i + 1; j < table.size(); ++j) {
                EXPECT_FALSE(table[i].keyCode == table[j].keyCode && table[i].modifiers == table[j].modifiers)
                    << describe(platform) << " " << table[i].keys.toStdString();
            }
        }
    }
}

TEST_F(KRKeyBindingsTests, KeysReadAsEachPlatformWritesThem) {
    const auto keysFor = [](Platform platform, unsigned short keyCode, KREventModifierFlags modifiers) {
        for (const KRKeyBindings::Binding& binding : KRKeyBindings::bindings(platform)) {
            if (binding.keyCode == keyCode && binding.modifiers == modifiers) {
                return binding.keys;
            }
        }
        return QString();
    };
    EXPECT_EQ(keysFor(Platform::Mac, KRKeyCode::LeftArrow, KREventModifierFlagCommand), QStringLiteral("⌘←"));
    EXPECT_EQ(keysFor(Platform::Mac, KRKeyCode::Z, KREventModifierFlagShift | KREventModifierFlagCommand),
              QStringLiteral("⇧⌘Z"));
    EXPECT_EQ(keysFor(Platform::Other, KRKeyCode::LeftArrow, KREventModifierFlagCommand),
              QStringLiteral("Ctrl+Left"));
    EXPECT_EQ(keysFor(Platform::Other, KRKeyCode::Z, KREventModifierFlagShift | KREventModifierFlagCommand),
              QStringLiteral("Ctrl+Shift+Z"));
}

TEST_F(KRKeyBindingsTests, PlatformsFollowTheirOwnConventions) {
    const KREvent commandLeft = keyDown(KRKeyCode::LeftArrow, KREventModifierFlagCommand);
    EXPECT_EQ(names(KRKeyBindings::selectorsForEvent(commandLeft, Platform::Mac)),
              QStringList{QStringLiteral("moveToLeftEndOfLine:")});
    EXPECT_EQ(names(KRKeyBindings::selectorsForEvent(commandLeft, Platform::Other)),
              QStringList{QStringLiteral("moveWordLeft:")});

    const KREvent home = keyDown(KRKeyCode::Home, 0);
    EXPECT_EQ(names(KRKeyBindings::selectorsForEvent(home, Platform::Mac)),
              QStringList{QStringLiteral("scrollToBeginningOfDocument:")});
    EXPECT_EQ(names(KRKeyBindings::selectorsForEvent(home, Platform::Other)),
              QStringList{QStringLiteral("moveToLeftEndOfLine:")});

    const KREvent controlReturn = keyDown(KRKeyCode::Return, KREventModifierFlagControl);
    EXPECT_EQ(names(KRKeyBindings::selectorsForEvent(controlReturn, Platform::Mac)),
              QStringList{QStringLiteral("insertLineBreak:")});
    EXPECT_EQ(names(KRKeyBindings::selectorsForEvent(controlReturn, Platform::Other)),
              QStringList{QStringLiteral("insertNewline:")});
}

TEST_F(KRKeyBindingsTests, KeyUpAndUnboundKeysHaveNoSelectors) {
    const KREvent up = KREvent::keyEvent(KREventType::KeyUp, 0, QString(QChar(0xF700)),
                                         QString(QChar(0xF700)), KRKeyCode::UpArrow, nullptr);
    EXPECT_TRUE(KRKeyBindings::selectorsForEvent(up, Platform::Mac).isEmpty());
    EXPECT_TRUE(
        KRKeyBindings::selectorsForEvent(keyDown(KRKeyCode::F, KREventModifierFlagControl), Platform::Other)
            .isEmpty());
}

TEST_F(KRKeyBindingsTests, PlainLetterInsertsText) {
    for (const Platform platform : {Platform::Mac, Platform::Other}) {
        RecordingResponder responder;
        KRKeyBindings::interpretKeyEvent(responder, keyDown(KRKeyCode::A, 0), platform);
        EXPECT_EQ(responder.calls, QStringList{QStringLiteral("insertText:a")}) << describe(platform);
    }
}

TEST_F(KRKeyBindingsTests, UnboundCommandChordsAreNoop) {
    const KREventModifierFlags commandOption = KREventModifierFlagCommand | KREventModifierFlagOption;
    for (const Platform platform : {Platform::Mac, Platform::Other}) {
        for (const unsigned short keyCode : {KRKeyCode::UpArrow, KRKeyCode::DownArrow}) {
            RecordingResponder responder;
            KRKeyBindings::interpretKeyEvent(responder, keyDown(keyCode, commandOption), platform);
            EXPECT_EQ(responder.calls, QStringList{QStringLiteral("command:noop:")})
                << describe(platform) << " key " << keyCode;
        }
    }
}

TEST_F(KRKeyBindingsTests, CommandLetterWithoutBindingIsNoop) {
    RecordingResponder responder;
    const KREvent commandQ =
        KREvent::keyEvent(KREventType::KeyDown, KREventModifierFlagCommand, QStringLiteral("q"),
                          QStringLiteral("q"), KRKeyCode::Q, nullptr);
    KRKeyBindings::interpretKeyEvent(responder, commandQ, Platform::Mac);
    EXPECT_EQ(responder.calls, QStringList{QStringLiteral("command:noop:")});
}

TEST_F(KRKeyBindingsTests, AltGrCharactersInsertOnOtherPlatforms) {
    const KREvent altGrQ =
        KREvent::keyEvent(KREventType::KeyDown, KREventModifierFlagCommand | KREventModifierFlagOption,
                          QStringLiteral("@"), QStringLiteral("q"), KRKeyCode::Q, nullptr);
    RecordingResponder other;
    KRKeyBindings::interpretKeyEvent(other, altGrQ, Platform::Other);
    EXPECT_EQ(other.calls, QStringList{QStringLiteral("insertText:@")});
    RecordingResponder mac;
    KRKeyBindings::interpretKeyEvent(mac, altGrQ, Platform::Mac);
    EXPECT_EQ(mac.calls, QStringList{QStringLiteral("command:noop:")});
}

TEST_F(KRKeyBindingsTests, OptionUpSendsBothCommandsInOrder) {
    for (const Platform platform : {Platform::Mac, Platform::Other}) {
        RecordingResponder responder;
        KRKeyBindings::interpretKeyEvent(responder, keyDown(KRKeyCode::UpArrow, KREventModifierFlagOption),
                                         platform);
        EXPECT_EQ(responder.calls, (QStringList{QStringLiteral("command:moveBackward:"),
                                                QStringLiteral("command:moveToBeginningOfParagraph:")}))
            << describe(platform);
    }
}

TEST_F(KRKeyBindingsTests, PlatformOverrideDecidesTheTwoArgumentForm) {
    KRKeyBindings::setPlatformOverride(Platform::Mac);
    EXPECT_EQ(KRKeyBindings::currentPlatform(), Platform::Mac);
    RecordingResponder mac;
    KRKeyBindings::interpretKeyEvent(mac, keyDown(KRKeyCode::Home, 0));
    EXPECT_EQ(mac.calls, QStringList{QStringLiteral("command:scrollToBeginningOfDocument:")});

    KRKeyBindings::setPlatformOverride(Platform::Other);
    EXPECT_EQ(KRKeyBindings::currentPlatform(), Platform::Other);
    RecordingResponder other;
    KRKeyBindings::interpretKeyEvent(other, keyDown(KRKeyCode::Home, 0));
    EXPECT_EQ(other.calls, QStringList{QStringLiteral("command:moveToLeftEndOfLine:")});
}

TEST_F(KRKeyBindingsTests, InstallRoutesInterpretKeyEvents) {
    KRKeyBindings::setPlatformOverride(Platform::Mac);
    KRKeyBindings::install();
    ASSERT_TRUE(static_cast<bool>(KRResponder::keyEventInterpreter()));
    RecordingResponder responder;
    responder.interpretKeyEvents({keyDown(KRKeyCode::LeftArrow, KREventModifierFlagCommand),
                                  keyDown(KRKeyCode::A, 0),
                                  keyDown(KRKeyCode::UpArrow, KREventModifierFlagOption)});
    EXPECT_EQ(responder.calls,
              (QStringList{QStringLiteral("command:moveToLeftEndOfLine:"), QStringLiteral("insertText:a"),
                           QStringLiteral("command:moveBackward:"),
                           QStringLiteral("command:moveToBeginningOfParagraph:")}));
}

TEST_F(KRKeyBindingsTests, MarkdownTableListsEveryBinding) {
    for (const Platform platform : {Platform::Mac, Platform::Other}) {
        const QString table = KRKeyBindings::markdownTable(platform);
        EXPECT_TRUE(table.startsWith(QStringLiteral("| Keys | Command(s) |\n")));
        for (const KRKeyBindings::Binding& binding : KRKeyBindings::bindings(platform)) {
            EXPECT_TRUE(table.contains(QStringLiteral("| ") + binding.keys + QStringLiteral(" | `") +
                                       binding.selectors.join(QStringLiteral("`, `")) +
                                       QStringLiteral("` |")))
                << binding.keys.toStdString();
        }
    }
}

TEST_F(KRKeyBindingsTests, ReadmeDocumentsEveryBinding) {
    const QString readme = readReadme();
    ASSERT_FALSE(readme.isEmpty()) << "no README.md with a Keyboard section in " << KR_SOURCE_DIRECTORY;
    const QString keyboard = readme.mid(readme.indexOf(QStringLiteral("## Keyboard")));
    const qsizetype macHeading = keyboard.indexOf(QStringLiteral("### macOS"));
    ASSERT_GT(keyboard.indexOf(QStringLiteral("### Windows and Linux")), 0);
    ASSERT_GT(macHeading, keyboard.indexOf(QStringLiteral("### Windows and Linux")));
    const QString sections[] = {keyboard.mid(macHeading), keyboard.left(macHeading)};
    const Platform platforms[] = {Platform::Mac, Platform::Other};
    for (int i = 0; i < 2; ++i) {
        const QString table = KRKeyBindings::markdownTable(platforms[i]);
        for (const QString& row : table.split(QLatin1Char('\n'), Qt::SkipEmptyParts)) {
            EXPECT_TRUE(sections[i].contains(row))
                << describe(platforms[i]) << " row missing from README.md: " << row.toStdString()
                << "\nexpected table:\n"
                << table.toStdString();
        }
    }
}

} // namespace
