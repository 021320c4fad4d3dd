#include "Views/KREvent.h"
#include "Views/KRResponder.h"
#include "Views/KRView.h"

#include <gtest/gtest.h>

#include <memory>
#include <vector>

namespace {

// Records what reaches it; performs only the selectors it is given.
class RecordingResponder : public KRResponder {
public:
    KRResponder* nextResponder() const override { return next; }
    void mouseDown(const KREvent&) override { calls.push_back(QStringLiteral("mouseDown")); }
    void keyDown(const KREvent&) override { calls.push_back(QStringLiteral("keyDown")); }
    void insertText(const QString& text) override { calls.push_back(QStringLiteral("insertText:") + text); }
    void doCommandBySelector(const KRSelector& selector) override {
        calls.push_back(QStringLiteral("command:") + selector.name());
        KRResponder::doCommandBySelector(selector);
    }
    bool tryToPerform(const KRSelector& selector, KRObject*) override {
        if (performs.contains(selector.name())) {
            performed.push_back(selector.name());
            return true;
        }
        return false;
    }

    KRResponder* next = nullptr;
    QStringList performs;
    QStringList calls;
    QStringList performed;
};

// A superview that counts the events its subviews pass up.
class RecordingView : public KRView {
public:
    using KRView::KRView;
    void mouseDown(const KREvent&) override { ++mouseDowns; }
    void scrollWheel(const KREvent&) override { ++scrolls; }
    int mouseDowns = 0;
    int scrolls = 0;
};

// Default handlers only, so every call forwards.
class PassingResponder : public KRResponder {
public:
    KRResponder* nextResponder() const override { return next; }
    KRResponder* next = nullptr;
};

KREvent keyDown(const QString& characters, KREventModifierFlags flags = 0) {
    return KREvent::keyEvent(KREventType::KeyDown, flags, characters, characters, 0, nullptr);
}

class KRResponderTests : public ::testing::Test {
protected:
    void TearDown() override { KRResponder::setKeyEventInterpreter({}); }
};

} // namespace

TEST_F(KRResponderTests, ViewForwardsUnhandledMouseEventsToItsSuperview) {
    auto parent = std::make_shared<RecordingView>(KRRectMake(0, 0, 100, 100));
    auto child = std::make_shared<KRView>(KRRectMake(10, 10, 20, 20));
    parent->addSubview(child);
    const KREvent down = KREvent::mouseEvent(KREventType::LeftMouseDown, KRPointMake(15, 15), 0, nullptr);
    child->mouseDown(down);
    child->scrollWheel(KREvent::scrollEvent(KRPointMake(15, 15), 0, 3, 0, nullptr));
    EXPECT_EQ(parent->mouseDowns, 1);
    EXPECT_EQ(parent->scrolls, 1);
}

TEST_F(KRResponderTests, DefaultHandlersPassEveryKindOfEventAlong) {
    RecordingResponder end;
    PassingResponder middle;
    middle.next = &end;
    middle.mouseDown(KREvent::mouseEvent(KREventType::LeftMouseDown, KRPointZero, 0, nullptr));
    middle.keyDown(keyDown(QStringLiteral("x")));
    EXPECT_EQ(end.calls, (QStringList{QStringLiteral("mouseDown"), QStringLiteral("keyDown")}));

    // Without a next responder nothing happens (and nothing crashes).
    PassingResponder alone;
    alone.mouseDown(KREvent::mouseEvent(KREventType::LeftMouseDown, KRPointZero, 0, nullptr));
    alone.insertText(QStringLiteral("lost"));
    alone.doCommandBySelector(KRSelector("moveUp:"));
}

TEST_F(KRResponderTests, CommandTravelsUpToTheResponderThatPerformsIt) {
    RecordingResponder top;
    top.performs = QStringList{QStringLiteral("moveUp:")};
    PassingResponder middle;
    middle.next = &top;
    RecordingResponder bottom;
    bottom.next = &middle;

    bottom.doCommandBySelector(KRSelector("moveUp:"));
    EXPECT_EQ(top.performed, QStringList{QStringLiteral("moveUp:")});
    EXPECT_EQ(top.calls, QStringList{QStringLiteral("command:moveUp:")});
    EXPECT_TRUE(bottom.performed.isEmpty());
}

TEST_F(KRResponderTests, CommandStopsAtTheFirstResponderThatPerformsIt) {
    RecordingResponder top;
    top.performs = QStringList{QStringLiteral("copy:")};
    RecordingResponder bottom;
    bottom.performs = QStringList{QStringLiteral("copy:")};
    bottom.next = &top;

    bottom.doCommandBySelector(KRSelector("copy:"));
    EXPECT_EQ(bottom.performed, QStringList{QStringLiteral("copy:")});
    EXPECT_TRUE(top.calls.isEmpty());

    // An unknown command falls off the end of the chain quietly.
    bottom.doCommandBySelector(KRSelector("unknown:"));
    EXPECT_EQ(top.calls, QStringList{QStringLiteral("command:unknown:")});
    EXPECT_TRUE(top.performed.size() == 0);
}

TEST_F(KRResponderTests, InsertTextForwardsUpTheChain) {
    RecordingResponder top;
    PassingResponder bottom;
    bottom.next = &top;
    bottom.insertText(QStringLiteral("hello"));
    EXPECT_EQ(top.calls, QStringList{QStringLiteral("insertText:hello")});
}

TEST_F(KRResponderTests, InterpretKeyEventsInsertsPrintableCharacters) {
    RecordingResponder responder;
    responder.interpretKeyEvents(
        {keyDown(QStringLiteral("a")), keyDown(QStringLiteral("É ")),
         keyDown(QStringLiteral("z"), KREventModifierFlagShift | KREventModifierFlagOption)});
    EXPECT_EQ(responder.calls, (QStringList{QStringLiteral("insertText:a"), QStringLiteral("insertText:É "),
                                            QStringLiteral("insertText:z")}));
}

TEST_F(KRResponderTests, InterpretKeyEventsTurnsEverythingElseIntoNoop) {
    RecordingResponder responder;
    responder.interpretKeyEvents({keyDown(QStringLiteral("\r")), keyDown(QString()),
                                  keyDown(QStringLiteral("c"), KREventModifierFlagCommand),
                                  keyDown(QStringLiteral("e"), KREventModifierFlagControl),
                                  keyDown(QStringLiteral("a\t"))});
    const QStringList expected(5, QStringLiteral("command:noop:"));
    EXPECT_EQ(responder.calls, expected);
}

TEST_F(KRResponderTests, InstalledInterpreterReceivesEachKeyEvent) {
    QStringList seen;
    KRResponder::setKeyEventInterpreter([&seen](KRResponder& responder, const KREvent& event) {
        seen.push_back(event.characters());
        responder.doCommandBySelector(KRSelector("insertNewline:"));
    });
    ASSERT_TRUE(static_cast<bool>(KRResponder::keyEventInterpreter()));
    RecordingResponder responder;
    responder.interpretKeyEvents({keyDown(QStringLiteral("a")), keyDown(QStringLiteral("\r"))});
    EXPECT_EQ(seen, (QStringList{QStringLiteral("a"), QStringLiteral("\r")}));
    EXPECT_EQ(responder.calls, QStringList(2, QStringLiteral("command:insertNewline:")));

    KRResponder::setKeyEventInterpreter({});
    responder.calls.clear();
    responder.interpretKeyEvents({keyDown(QStringLiteral("a"))});
    EXPECT_EQ(responder.calls, QStringList{QStringLiteral("insertText:a")});
}
