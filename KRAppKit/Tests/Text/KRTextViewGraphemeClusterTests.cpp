// What a user sees as one character may be several code points and more UTF-16 units: an emoji with a
// skin tone, a family joined with zero-width joiners, a flag, a letter with a combining accent, a Hangul
// syllable spelled in jamo, a character outside the Basic Multilingual Plane. Typed through real key
// events or committed by an input method, each arrives whole, and the caret and every selection step over
// it as one unit: arrows, Shift-arrows, word moves, Backspace, Delete, clicks and double clicks.
#include "Text/KRTextField.h"

#include "Foundation/KRRunLoop.h"
#include "Platform/KRHostWidget.h"
#include "Text/KRKeyBindings.h"
#include "Text/KRTextView.h"
#include "Views/KREvent.h"
#include "Views/KRWindow.h"

#include <QCoreApplication>
#include <QInputMethodEvent>
#include <QKeyEvent>
#include <QMouseEvent>
#include <QTextBoundaryFinder>

#include <gtest/gtest.h>

#include <memory>
#include <ostream>
#include <string>

namespace {

struct Cluster {
    const char* name;
    QString text;
};

void PrintTo(const Cluster& cluster, std::ostream* out) {
    *out << cluster.name;
}

const Cluster kClusters[] = {
    {"EmojiWithSkinTone", QString::fromUtf8("\xF0\x9F\x91\x8D\xF0\x9F\x8F\xBD")},
    {"ZeroWidthJoinedFamily",
     QString::fromUtf8("\xF0\x9F\x91\xA8\xE2\x80\x8D\xF0\x9F\x91\xA9\xE2\x80\x8D\xF0\x9F\x91\xA7")},
    {"Flag", QString::fromUtf8("\xF0\x9F\x87\xA9\xF0\x9F\x87\xAA")},
    {"CombiningAccent", QStringLiteral("e\u0301")},
    {"HangulJamo", QStringLiteral("\u1100\u1161\u11A8")},
    {"SurrogatePair", QString::fromUtf8("\xF0\x9D\x84\x9E")},
};

// Each code point of a string, as a keyboard that cannot compose sends them: one key event apiece.
QStringList codePoints(const QString& text) {
    QStringList points;
    for (qsizetype index = 0; index < text.size(); ++index) {
        const bool pair = text.at(index).isHighSurrogate() && index + 1 < text.size();
        points << text.mid(index, pair ? 2 : 1);
        index += pair ? 1 : 0;
    }
    return points;
}

bool isClusterBoundary(const QString& text, KRUInteger position) {
    QTextBoundaryFinder finder(QTextBoundaryFinder::Grapheme, text);
    finder.setPosition(static_cast<qsizetype>(position));
    return finder.isAtBoundary();
}

enum class Input { KeyEvents, InputMethod };

class KRTextViewGraphemeClusterTests : public ::testing::TestWithParam<std::tuple<Cluster, Input>> {
protected:
    void SetUp() override {
        KRKeyBindings::setPlatformOverride(KRKeyBindings::Platform::Other);
        KRTextView::installTextSystem();
        host = std::make_unique<KRHostWidget>();
        host->resize(400, 120);
        host->setContentView(std::make_shared<KRView>(KRRectMake(0, 0, 400, 120)));
        field = std::make_shared<KRTextField>(KRRectMake(10, 10, 300, 40));
        field->setBordered(false);
        QFont font(QStringLiteral("DejaVu Sans"));
        font.setPixelSize(20);
        field->setFont(font);
        host->krWindow().contentView()->addSubview(field);
        ASSERT_TRUE(host->krWindow().makeFirstResponder(field.get()));
        editor = field->currentEditor();
        ASSERT_NE(editor, nullptr);
    }
    void TearDown() override {
        host->krWindow().makeFirstResponder(nullptr);
        KRRunLoop::main().cancelAll();
        host.reset();
        KRKeyBindings::setPlatformOverride(std::nullopt);
    }

    const QString& cluster() const { return std::get<0>(GetParam()).text; }
    KRUInteger clusterLength() const { return static_cast<KRUInteger>(cluster().size()); }

    void sendKey(int key, Qt::KeyboardModifiers modifiers = Qt::NoModifier, const QString& text = QString()) {
        QKeyEvent press(QEvent::KeyPress, key, modifiers, text);
        QCoreApplication::sendEvent(host.get(), &press);
        QKeyEvent release(QEvent::KeyRelease, key, modifiers, text);
        QCoreApplication::sendEvent(host.get(), &release);
    }
    void typeLetter(char letter) {
        sendKey(Qt::Key_A + (letter - 'a'), Qt::NoModifier, QString(QLatin1Char(letter)));
    }
    // The cluster arrives the way the test's parameter says: key by key, or committed by an input method.
    void typeCluster() {
        if (std::get<1>(GetParam()) == Input::InputMethod) {
            QInputMethodEvent composing(cluster(), {});
            QCoreApplication::sendEvent(host.get(), &composing);
            QInputMethodEvent commit;
            commit.setCommitString(cluster());
            QCoreApplication::sendEvent(host.get(), &commit);
            return;
        }
        for (const QString& point : codePoints(cluster())) {
            sendKey(Qt::Key_unknown, Qt::NoModifier, point);
        }
    }
    // "a", the cluster, "b": the cluster occupies [1, 1 + its length).
    void typeAClusterB() {
        typeLetter('a');
        typeCluster();
        typeLetter('b');
    }
    QString aClusterB() const { return QStringLiteral("a") + cluster() + QStringLiteral("b"); }
    KRRange caret(KRUInteger location) const { return KRMakeRange(location, 0); }

    void click(KRPoint pointInEditor, int clicks) {
        const KRPoint inWindow = editor->convertPointToView(pointInEditor, nullptr);
        for (int click = 0; click < clicks; ++click) {
            m_timestamp += click == 0 ? 10000 : 10;
            QMouseEvent press(QEvent::MouseButtonPress, QPointF(inWindow.x, inWindow.y),
                              QPointF(inWindow.x, inWindow.y), Qt::LeftButton, Qt::LeftButton,
                              Qt::NoModifier);
            press.setTimestamp(m_timestamp);
            QCoreApplication::sendEvent(host.get(), &press);
            QMouseEvent release(QEvent::MouseButtonRelease, QPointF(inWindow.x, inWindow.y),
                                QPointF(inWindow.x, inWindow.y), Qt::LeftButton, Qt::NoButton,
                                Qt::NoModifier);
            release.setTimestamp(m_timestamp);
            QCoreApplication::sendEvent(host.get(), &release);
        }
    }
    // x of the caret at a position, in the editor's coordinates.
    double caretX(KRUInteger position) {
        editor->setSelectedRange(caret(position));
        return editor->insertionPointRect().origin.x;
    }

    std::unique_ptr<KRHostWidget> host;
    std::shared_ptr<KRTextField> field;
    KRTextView* editor = nullptr;

private:
    quint64 m_timestamp = 0;
};

TEST_P(KRTextViewGraphemeClusterTests, ArrivesWhole) {
    typeAClusterB();
    EXPECT_EQ(editor->string(), aClusterB());
    EXPECT_EQ(field->stringValue(), aClusterB());
    EXPECT_EQ(editor->selectedRange(), caret(clusterLength() + 2));
}

TEST_P(KRTextViewGraphemeClusterTests, ArrowsStepOverItAsOneCharacter) {
    typeAClusterB();
    sendKey(Qt::Key_Left);
    EXPECT_EQ(editor->selectedRange(), caret(clusterLength() + 1));
    sendKey(Qt::Key_Left);
    EXPECT_EQ(editor->selectedRange(), caret(1));
    sendKey(Qt::Key_Left);
    EXPECT_EQ(editor->selectedRange(), caret(0));
    sendKey(Qt::Key_Right);
    EXPECT_EQ(editor->selectedRange(), caret(1));
    sendKey(Qt::Key_Right);
    EXPECT_EQ(editor->selectedRange(), caret(clusterLength() + 1));
    EXPECT_EQ(editor->string(), aClusterB());
}

TEST_P(KRTextViewGraphemeClusterTests, ShiftArrowsSelectItWhole) {
    typeAClusterB();
    sendKey(Qt::Key_Left);
    sendKey(Qt::Key_Left, Qt::ShiftModifier);
    EXPECT_EQ(editor->selectedRange(), KRMakeRange(1, clusterLength()));
    sendKey(Qt::Key_Left, Qt::ShiftModifier);
    EXPECT_EQ(editor->selectedRange(), KRMakeRange(0, clusterLength() + 1));
    sendKey(Qt::Key_Right, Qt::ShiftModifier);
    EXPECT_EQ(editor->selectedRange(), KRMakeRange(1, clusterLength()));
    // Typing over the selection replaces the whole cluster.
    typeLetter('x');
    EXPECT_EQ(editor->string(), QStringLiteral("axb"));
    EXPECT_EQ(editor->selectedRange(), caret(2));
}

TEST_P(KRTextViewGraphemeClusterTests, BackspaceAndDeleteRemoveItWhole) {
    typeAClusterB();
    sendKey(Qt::Key_Left);
    sendKey(Qt::Key_Backspace, Qt::NoModifier, QStringLiteral("\b"));
    EXPECT_EQ(editor->string(), QStringLiteral("ab"));
    EXPECT_EQ(editor->selectedRange(), caret(1));

    typeCluster();
    EXPECT_EQ(editor->string(), aClusterB());
    EXPECT_EQ(editor->selectedRange(), caret(clusterLength() + 1));
    sendKey(Qt::Key_Left);
    sendKey(Qt::Key_Delete);
    EXPECT_EQ(editor->string(), QStringLiteral("ab"));
    EXPECT_EQ(editor->selectedRange(), caret(1));
}

TEST_P(KRTextViewGraphemeClusterTests, WordMovesNeverStopInsideIt) {
    typeLetter('x');
    sendKey(Qt::Key_Space, Qt::NoModifier, QStringLiteral(" "));
    typeAClusterB();
    sendKey(Qt::Key_Space, Qt::NoModifier, QStringLiteral(" "));
    typeLetter('y');
    const QString text = editor->string();
    ASSERT_EQ(text, QStringLiteral("x ") + aClusterB() + QStringLiteral(" y"));

    sendKey(Qt::Key_Home);
    for (int step = 0; step < 6; ++step) {
        sendKey(Qt::Key_Right, Qt::ControlModifier);
        EXPECT_TRUE(isClusterBoundary(text, editor->selectedRange().location))
            << "right word move " << step << " stopped at " << editor->selectedRange().location;
    }
    EXPECT_EQ(editor->selectedRange(), caret(static_cast<KRUInteger>(text.size())));
    for (int step = 0; step < 6; ++step) {
        sendKey(Qt::Key_Left, Qt::ControlModifier | Qt::ShiftModifier);
        const KRRange selection = editor->selectedRange();
        EXPECT_TRUE(isClusterBoundary(text, selection.location))
            << "left word selection " << step << " starts at " << selection.location;
    }
    EXPECT_EQ(editor->selectedRange(), KRMakeRange(0, static_cast<KRUInteger>(text.size())));
}

TEST_P(KRTextViewGraphemeClusterTests, ClicksLandBesideItAndADoubleClickSelectsTheWordHoldingIt) {
    typeLetter('x');
    sendKey(Qt::Key_Space, Qt::NoModifier, QStringLiteral(" "));
    typeAClusterB();
    const QString text = editor->string();
    const KRUInteger start = 3;
    const KRUInteger end = start + clusterLength();
    const double left = caretX(start);
    const double right = caretX(end);
    ASSERT_LT(left, right) << "the cluster draws with a width";
    const double y = editor->insertionPointRect().origin.y + 2.0;

    for (const double fraction : {0.25, 0.5, 0.75}) {
        click(KRPointMake(left + fraction * (right - left), y), 1);
        const KRUInteger location = editor->selectedRange().location;
        EXPECT_TRUE(location == start || location == end)
            << "a click at " << fraction << " of the cluster put the caret at " << location;
        EXPECT_EQ(editor->selectedRange().length, 0u);
    }
    click(KRPointMake(0.5 * (left + right), y), 2);
    EXPECT_EQ(editor->selectedRange(), KRMakeRange(2, clusterLength() + 2)) << "the word a…b, whole";
    EXPECT_EQ(editor->string(), text);
}

// Ranges set from outside, as the list sets them when it carries the caret from row to row or joins two
// titles, are widened to whole clusters.
TEST_P(KRTextViewGraphemeClusterTests, RangesSetInsideItTakeItWhole) {
    typeAClusterB();
    for (KRUInteger inside = 2; inside < clusterLength() + 1; ++inside) {
        editor->setSelectedRange(caret(inside));
        EXPECT_EQ(editor->selectedRange(), caret(clusterLength() + 1)) << "caret set at " << inside;
        editor->setSelectedRange(KRMakeRange(inside, 1));
        EXPECT_EQ(editor->selectedRange(), KRMakeRange(1, clusterLength()))
            << "one unit selected at " << inside;
    }
    editor->setSelectedRange(KRMakeRange(0, 2));
    EXPECT_EQ(editor->selectedRange(), KRMakeRange(0, clusterLength() + 1));
    EXPECT_EQ(editor->rangeOfComposedCharacterSequencesForRange(KRMakeRange(1, 1)),
              KRMakeRange(1, clusterLength()));
    EXPECT_EQ(editor->rangeOfComposedCharacterSequencesForRange(KRMakeRange(clusterLength() + 1, 0)),
              caret(clusterLength() + 1));
}

std::string clusterTestName(const ::testing::TestParamInfo<std::tuple<Cluster, Input>>& info) {
    return std::string(std::get<0>(info.param).name) +
           (std::get<1>(info.param) == Input::InputMethod ? "CommittedByAnInputMethod" : "TypedAsKeys");
}

INSTANTIATE_TEST_SUITE_P(EveryKindOfCluster, KRTextViewGraphemeClusterTests,
                         ::testing::Combine(::testing::ValuesIn(kClusters),
                                            ::testing::Values(Input::KeyEvents, Input::InputMethod)),
                         clusterTestName);

} // namespace
