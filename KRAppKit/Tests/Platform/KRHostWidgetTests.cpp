#include "Animation/EZInterpolationFunctions.h"
#include "Animation/KRAnimationEngine.h"
#include "Foundation/KRClock.h"
#include "Foundation/KRRunLoop.h"
#include "Platform/KRHostWidget.h"
#include "Text/KRTextView.h"
#include "Views/KRCursor.h"
#include "Views/KREvent.h"
#include "Views/KRTextInputClient.h"
#include "Views/KRTrackingArea.h"
#include "Views/KRView.h"
#include "Views/KRWindow.h"

#include <QApplication>
#include <QFocusEvent>
#include <QInputMethodEvent>
#include <QKeyEvent>
#include <QMouseEvent>
#include <QPixmap>
#include <QResizeEvent>
#include <gtest/gtest.h>

#include <memory>
#include <vector>

namespace {

struct Received {
    KREventType type;
    KRPoint location;
    KREventModifierFlags flags;
    int clickCount;
    unsigned short keyCode;
    QString characters;
    QString charactersIgnoringModifiers;
};

// Takes focus and records what reaches it.
class RecordingView : public KRView {
public:
    using KRView::KRView;
    bool acceptsFirstResponder() const override { return true; }
    void mouseDown(const KREvent& event) override { record(event); }
    void mouseDragged(const KREvent& event) override { record(event); }
    void mouseUp(const KREvent& event) override { record(event); }
    void rightMouseDown(const KREvent& event) override { record(event); }
    void rightMouseUp(const KREvent& event) override { record(event); }
    void mouseEntered(const KREvent& event) override { record(event); }
    void mouseExited(const KREvent& event) override { record(event); }
    void keyDown(const KREvent& event) override { record(event); }
    void keyUp(const KREvent& event) override { record(event); }
    void flagsChanged(const KREvent& event) override { record(event); }

    void record(const KREvent& event) {
        events.push_back(Received{event.type(), event.locationInView(this), event.modifierFlags(),
                                  event.clickCount(), event.keyCode(), event.characters(),
                                  event.charactersIgnoringModifiers()});
    }
    std::vector<Received> events;
};

class ComposingView : public RecordingView, public KRTextInputClient {
public:
    using RecordingView::RecordingView;
    void setMarkedText(const QString& text, int cursorPosition) override {
        markedText = text;
        markedCursor = cursorPosition;
    }
    void unmarkText() override { markedText.clear(); }
    void insertText(const QString& text) override {
        inserted += text;
        markedText.clear();
    }
    KRRect firstRectForCaret() const override { return KRRectMake(30, 40, 2, 18); }

    QString markedText;
    int markedCursor = -1;
    QString inserted;
};

class KRHostWidgetTests : public ::testing::Test {
protected:
    void SetUp() override {
        KRClock::useManualTime(0.0);
        KRRunLoop::main().cancelAll();
        host = std::make_unique<KRHostWidget>();
        content = std::make_shared<KRView>(KRRectMake(0, 0, 200, 100));
        view = std::make_shared<RecordingView>(KRRectMake(10, 10, 80, 60));
        content->addSubview(view);
        host->setContentView(content);
    }
    void TearDown() override {
        host.reset();
        KRRunLoop::main().cancelAll();
    }

    void sendMouse(QEvent::Type type, QPointF position, Qt::MouseButton button, Qt::MouseButtons buttons,
                   Qt::KeyboardModifiers modifiers = Qt::NoModifier) {
        QMouseEvent event(type, position, host->mapToGlobal(position), button, buttons, modifiers);
        QCoreApplication::sendEvent(host.get(), &event);
    }
    void sendKey(QEvent::Type type, int key, Qt::KeyboardModifiers modifiers = Qt::NoModifier,
                 const QString& text = QString()) {
        QKeyEvent event(type, key, modifiers, text);
        QCoreApplication::sendEvent(host.get(), &event);
    }
    const Received& lastEvent() const { return view->events.back(); }

    std::unique_ptr<KRHostWidget> host;
    std::shared_ptr<KRView> content;
    std::shared_ptr<RecordingView> view;
};

TEST_F(KRHostWidgetTests, MapsQtModifiersToToolkitFlags) {
    EXPECT_EQ(KRHostWidget::modifierFlagsFromQt(Qt::ShiftModifier), KREventModifierFlagShift);
    EXPECT_EQ(KRHostWidget::modifierFlagsFromQt(Qt::ControlModifier), KREventModifierFlagCommand);
    EXPECT_EQ(KRHostWidget::modifierFlagsFromQt(Qt::MetaModifier), KREventModifierFlagControl);
    EXPECT_EQ(KRHostWidget::modifierFlagsFromQt(Qt::AltModifier), KREventModifierFlagOption);
    EXPECT_EQ(KRHostWidget::modifierFlagsFromQt(Qt::KeypadModifier), KREventModifierFlagNumericPad);
    EXPECT_EQ(KRHostWidget::modifierFlagsFromQt(Qt::ShiftModifier | Qt::ControlModifier),
              KREventModifierFlagShift | KREventModifierFlagCommand);
    EXPECT_EQ(KRHostWidget::modifierFlagsFromQt(Qt::NoModifier), 0u);
}

TEST_F(KRHostWidgetTests, MousePressDragAndReleaseReachTheViewWithModifiers) {
    sendMouse(QEvent::MouseButtonPress, QPointF(20, 30), Qt::LeftButton, Qt::LeftButton, Qt::ControlModifier);
    sendMouse(QEvent::MouseMove, QPointF(40, 35), Qt::NoButton, Qt::LeftButton, Qt::ControlModifier);
    sendMouse(QEvent::MouseButtonRelease, QPointF(45, 36), Qt::LeftButton, Qt::NoButton, Qt::AltModifier);

    ASSERT_EQ(view->events.size(), 3u);
    EXPECT_EQ(view->events[0].type, KREventType::LeftMouseDown);
    EXPECT_EQ(view->events[0].location, KRPointMake(10, 20));
    EXPECT_EQ(view->events[0].flags, KREventModifierFlagCommand);
    EXPECT_EQ(view->events[0].clickCount, 1);
    EXPECT_EQ(view->events[1].type, KREventType::LeftMouseDragged);
    EXPECT_EQ(view->events[1].location, KRPointMake(30, 25));
    EXPECT_EQ(view->events[2].type, KREventType::LeftMouseUp);
    EXPECT_EQ(view->events[2].flags, KREventModifierFlagOption);
    EXPECT_EQ(view->events[2].clickCount, 1);
}

TEST_F(KRHostWidgetTests, RightButtonGivesRightMouseEvents) {
    sendMouse(QEvent::MouseButtonPress, QPointF(20, 30), Qt::RightButton, Qt::RightButton, Qt::MetaModifier);
    sendMouse(QEvent::MouseButtonRelease, QPointF(20, 30), Qt::RightButton, Qt::NoButton);
    ASSERT_EQ(view->events.size(), 2u);
    EXPECT_EQ(view->events[0].type, KREventType::RightMouseDown);
    EXPECT_EQ(view->events[0].flags, KREventModifierFlagControl);
    EXPECT_EQ(view->events[1].type, KREventType::RightMouseUp);
}

TEST_F(KRHostWidgetTests, DoubleAndTripleClicksAreCounted) {
    sendMouse(QEvent::MouseButtonPress, QPointF(20, 30), Qt::LeftButton, Qt::LeftButton);
    sendMouse(QEvent::MouseButtonRelease, QPointF(20, 30), Qt::LeftButton, Qt::NoButton);
    sendMouse(QEvent::MouseButtonDblClick, QPointF(20, 30), Qt::LeftButton, Qt::LeftButton);
    sendMouse(QEvent::MouseButtonRelease, QPointF(20, 30), Qt::LeftButton, Qt::NoButton);
    sendMouse(QEvent::MouseButtonPress, QPointF(21, 30), Qt::LeftButton, Qt::LeftButton);
    sendMouse(QEvent::MouseButtonRelease, QPointF(21, 30), Qt::LeftButton, Qt::NoButton);

    ASSERT_EQ(view->events.size(), 6u);
    EXPECT_EQ(view->events[0].clickCount, 1);
    EXPECT_EQ(view->events[2].type, KREventType::LeftMouseDown);
    EXPECT_EQ(view->events[2].clickCount, 2);
    EXPECT_EQ(view->events[3].clickCount, 2);
    EXPECT_EQ(view->events[4].clickCount, 3);
}

TEST_F(KRHostWidgetTests, ClickFarFromTheLastOneStartsOver) {
    sendMouse(QEvent::MouseButtonPress, QPointF(20, 30), Qt::LeftButton, Qt::LeftButton);
    sendMouse(QEvent::MouseButtonRelease, QPointF(20, 30), Qt::LeftButton, Qt::NoButton);
    sendMouse(QEvent::MouseButtonPress, QPointF(70, 60), Qt::LeftButton, Qt::LeftButton);
    ASSERT_EQ(view->events.size(), 3u);
    EXPECT_EQ(view->events[2].clickCount, 1);
}

TEST_F(KRHostWidgetTests, APressWhoseReleaseIsLostEndsWhereThePointerWasLastWhenTheHostLosesItsInput) {
    const QEvent::Type losses[] = {QEvent::FocusOut, QEvent::WindowDeactivate, QEvent::Hide};
    for (const QEvent::Type loss : losses) {
        view->events.clear();
        sendMouse(QEvent::MouseButtonPress, QPointF(20, 30), Qt::LeftButton, Qt::LeftButton);
        sendMouse(QEvent::MouseMove, QPointF(140, 95), Qt::NoButton, Qt::LeftButton);
        if (loss == QEvent::FocusOut) {
            QFocusEvent event(QEvent::FocusOut, Qt::ActiveWindowFocusReason);
            QCoreApplication::sendEvent(host.get(), &event);
        } else {
            QEvent event(loss);
            QCoreApplication::sendEvent(host.get(), &event);
        }
        ASSERT_EQ(view->events.size(), 3u) << loss;
        EXPECT_EQ(view->events[2].type, KREventType::LeftMouseUp) << loss;
        EXPECT_EQ(view->events[2].location, KRPointMake(130, 85)) << loss;

        // The release Qt delivers late, and the moves after it, find no press.
        sendMouse(QEvent::MouseMove, QPointF(150, 95), Qt::NoButton, Qt::LeftButton);
        sendMouse(QEvent::MouseButtonRelease, QPointF(150, 95), Qt::LeftButton, Qt::NoButton);
        EXPECT_EQ(view->events.size(), 3u) << loss;
    }
}

TEST_F(KRHostWidgetTests, LosingTheFocusWithNoButtonHeldSendsNoRelease) {
    sendMouse(QEvent::MouseButtonPress, QPointF(20, 30), Qt::LeftButton, Qt::LeftButton);
    sendMouse(QEvent::MouseButtonRelease, QPointF(20, 30), Qt::LeftButton, Qt::NoButton);
    QFocusEvent event(QEvent::FocusOut, Qt::ActiveWindowFocusReason);
    QCoreApplication::sendEvent(host.get(), &event);
    EXPECT_EQ(view->events.size(), 2u);
}

TEST_F(KRHostWidgetTests, PressingAnotherButtonEndsTheHeldPressFirst) {
    sendMouse(QEvent::MouseButtonPress, QPointF(20, 30), Qt::LeftButton, Qt::LeftButton);
    sendMouse(QEvent::MouseMove, QPointF(30, 40), Qt::NoButton, Qt::LeftButton);
    sendMouse(QEvent::MouseButtonPress, QPointF(30, 40), Qt::RightButton, Qt::LeftButton | Qt::RightButton);
    ASSERT_EQ(view->events.size(), 4u);
    EXPECT_EQ(view->events[2].type, KREventType::LeftMouseUp);
    EXPECT_EQ(view->events[2].location, KRPointMake(20, 30));
    EXPECT_EQ(view->events[3].type, KREventType::RightMouseDown);
    // The left release that follows belongs to no press any more.
    sendMouse(QEvent::MouseButtonRelease, QPointF(30, 40), Qt::LeftButton, Qt::RightButton);
    sendMouse(QEvent::MouseButtonRelease, QPointF(30, 40), Qt::RightButton, Qt::NoButton);
    ASSERT_EQ(view->events.size(), 5u);
    EXPECT_EQ(view->events[4].type, KREventType::RightMouseUp);
}

TEST_F(KRHostWidgetTests, AMoveWithTheHeldButtonUpEndsThePressThere) {
    sendMouse(QEvent::MouseButtonPress, QPointF(20, 30), Qt::LeftButton, Qt::LeftButton);
    sendMouse(QEvent::MouseMove, QPointF(60, 50), Qt::NoButton, Qt::NoButton);
    ASSERT_EQ(view->events.size(), 2u);
    EXPECT_EQ(view->events[1].type, KREventType::LeftMouseUp);
    EXPECT_EQ(view->events[1].location, KRPointMake(50, 40));
}

TEST_F(KRHostWidgetTests, TheDoubleClickEventContinuesThePressItFollows) {
    sendMouse(QEvent::MouseButtonPress, QPointF(20, 30), Qt::LeftButton, Qt::LeftButton);
    sendMouse(QEvent::MouseButtonRelease, QPointF(20, 30), Qt::LeftButton, Qt::NoButton);
    // Some platforms deliver the second press and then a double click of the same button.
    sendMouse(QEvent::MouseButtonPress, QPointF(20, 30), Qt::LeftButton, Qt::LeftButton);
    sendMouse(QEvent::MouseButtonDblClick, QPointF(20, 30), Qt::LeftButton, Qt::LeftButton);
    sendMouse(QEvent::MouseButtonRelease, QPointF(20, 30), Qt::LeftButton, Qt::NoButton);
    ASSERT_EQ(view->events.size(), 5u);
    EXPECT_EQ(view->events[2].type, KREventType::LeftMouseDown);
    EXPECT_EQ(view->events[3].type, KREventType::LeftMouseDown);
    EXPECT_EQ(view->events[4].type, KREventType::LeftMouseUp);
}

TEST_F(KRHostWidgetTests, InputKeepsTheCurrentModifiersAndPointerLocation) {
    sendMouse(QEvent::MouseButtonPress, QPointF(25, 35), Qt::LeftButton, Qt::LeftButton,
              Qt::ShiftModifier | Qt::AltModifier);
    EXPECT_EQ(KREvent::currentModifierFlags(), KREventModifierFlagShift | KREventModifierFlagOption);
    EXPECT_EQ(KREvent::mouseLocation(), KRFromQPointF(host->mapToGlobal(QPointF(25, 35))));
    EXPECT_EQ(host->krWindow().screenOrigin(), KRFromQPointF(host->mapToGlobal(QPointF(0, 0))));
    sendMouse(QEvent::MouseButtonRelease, QPointF(25, 35), Qt::LeftButton, Qt::NoButton);
    EXPECT_EQ(KREvent::currentModifierFlags(), 0u);
}

TEST_F(KRHostWidgetTests, LeavingTheWidgetExitsTrackingAreas) {
    view->addTrackingArea(std::make_shared<KRTrackingArea>(
        KRRectMake(0, 0, 80, 60), KRTrackingMouseEnteredAndExited | KRTrackingActiveAlways, view.get()));
    sendMouse(QEvent::MouseMove, QPointF(30, 30), Qt::NoButton, Qt::NoButton);
    ASSERT_FALSE(view->events.empty());
    EXPECT_EQ(lastEvent().type, KREventType::MouseEntered);

    QEvent leave(QEvent::Leave);
    QCoreApplication::sendEvent(host.get(), &leave);
    EXPECT_EQ(lastEvent().type, KREventType::MouseExited);
}

TEST_F(KRHostWidgetTests, ArrowReturnAndBackspaceKeysCarryToolkitCodesAndCharacters) {
    ASSERT_TRUE(host->krWindow().makeFirstResponder(view.get()));

    sendKey(QEvent::KeyPress, Qt::Key_Up);
    EXPECT_EQ(lastEvent().type, KREventType::KeyDown);
    EXPECT_EQ(lastEvent().keyCode, 126);
    EXPECT_EQ(lastEvent().characters, QString(QChar(0xF700)));
    EXPECT_TRUE(lastEvent().flags & KREventModifierFlagFunction);

    sendKey(QEvent::KeyPress, Qt::Key_Return, Qt::NoModifier, QStringLiteral("\r"));
    EXPECT_EQ(lastEvent().keyCode, 36);
    EXPECT_EQ(lastEvent().characters, QStringLiteral("\r"));

    sendKey(QEvent::KeyPress, Qt::Key_Backspace, Qt::NoModifier, QStringLiteral("\b"));
    EXPECT_EQ(lastEvent().keyCode, 51);
    EXPECT_EQ(lastEvent().characters, QString(QChar(0x7F)));

    sendKey(QEvent::KeyPress, Qt::Key_Delete);
    EXPECT_EQ(lastEvent().keyCode, 117);
    EXPECT_EQ(lastEvent().characters, QString(QChar(0xF728)));

    sendKey(QEvent::KeyPress, Qt::Key_Left);
    EXPECT_EQ(lastEvent().keyCode, 123);
    EXPECT_EQ(lastEvent().characters, QString(QChar(0xF702)));

    sendKey(QEvent::KeyPress, Qt::Key_Enter, Qt::KeypadModifier, QStringLiteral("\r"));
    EXPECT_EQ(lastEvent().keyCode, 76);
}

TEST_F(KRHostWidgetTests, LetterKeysKeepTheUnshiftedCharacterWithoutModifiers) {
    ASSERT_TRUE(host->krWindow().makeFirstResponder(view.get()));

    sendKey(QEvent::KeyPress, Qt::Key_A, Qt::ShiftModifier, QStringLiteral("A"));
    EXPECT_EQ(lastEvent().keyCode, 0);
    EXPECT_EQ(lastEvent().characters, QStringLiteral("A"));
    EXPECT_EQ(lastEvent().charactersIgnoringModifiers, QStringLiteral("a"));
    EXPECT_EQ(lastEvent().flags, KREventModifierFlagShift);

    // Ctrl+C types a control character; the toolkit sees Command with the letter.
    sendKey(QEvent::KeyPress, Qt::Key_C, Qt::ControlModifier, QString(QChar(0x03)));
    EXPECT_EQ(lastEvent().keyCode, 8);
    EXPECT_EQ(lastEvent().flags, KREventModifierFlagCommand);
    EXPECT_EQ(lastEvent().characters, QStringLiteral("c"));
    EXPECT_EQ(lastEvent().charactersIgnoringModifiers, QStringLiteral("c"));

    sendKey(QEvent::KeyPress, Qt::Key_Exclam, Qt::ShiftModifier, QStringLiteral("!"));
    EXPECT_EQ(lastEvent().keyCode, 18);
    EXPECT_EQ(lastEvent().characters, QStringLiteral("!"));
    EXPECT_EQ(lastEvent().charactersIgnoringModifiers, QStringLiteral("1"));

    sendKey(QEvent::KeyRelease, Qt::Key_A, Qt::NoModifier, QStringLiteral("a"));
    EXPECT_EQ(lastEvent().type, KREventType::KeyUp);
    EXPECT_EQ(lastEvent().keyCode, 0);
}

TEST_F(KRHostWidgetTests, NamedKeysMapToTheirCodes) {
    ASSERT_TRUE(host->krWindow().makeFirstResponder(view.get()));
    struct Case {
        int key;
        unsigned short code;
        char16_t character;
    };
    const Case cases[] = {
        {Qt::Key_Escape, 53, 0x1B},    {Qt::Key_Home, 115, 0xF729},     {Qt::Key_End, 119, 0xF72B},
        {Qt::Key_PageUp, 116, 0xF72C}, {Qt::Key_PageDown, 121, 0xF72D}, {Qt::Key_Down, 125, 0xF701},
        {Qt::Key_Right, 124, 0xF703},  {Qt::Key_F1, 122, 0xF704},       {Qt::Key_F12, 111, 0xF70F},
        {Qt::Key_Space, 49, u' '},
    };
    for (const Case& each : cases) {
        sendKey(QEvent::KeyPress, each.key);
        EXPECT_EQ(lastEvent().keyCode, each.code) << each.key;
        EXPECT_EQ(lastEvent().characters, QString(QChar(each.character))) << each.key;
    }
}

TEST_F(KRHostWidgetTests, TabAndBacktabReachTheWindow) {
    ASSERT_TRUE(host->krWindow().makeFirstResponder(view.get()));
    sendKey(QEvent::KeyPress, Qt::Key_Tab, Qt::NoModifier, QStringLiteral("\t"));
    ASSERT_FALSE(view->events.empty());
    EXPECT_EQ(lastEvent().keyCode, 48);
    EXPECT_EQ(lastEvent().characters, QStringLiteral("\t"));

    const std::size_t before = view->events.size();
    sendKey(QEvent::KeyPress, Qt::Key_Backtab, Qt::ShiftModifier);
    ASSERT_EQ(view->events.size(), before + 1);
    EXPECT_EQ(lastEvent().keyCode, 48);
    EXPECT_TRUE(lastEvent().flags & KREventModifierFlagShift);
    EXPECT_EQ(lastEvent().charactersIgnoringModifiers, QStringLiteral("\t"));
}

TEST_F(KRHostWidgetTests, ModifierKeysAloneChangeFlags) {
    ASSERT_TRUE(host->krWindow().makeFirstResponder(view.get()));
    sendKey(QEvent::KeyPress, Qt::Key_Shift, Qt::NoModifier);
    EXPECT_EQ(lastEvent().type, KREventType::FlagsChanged);
    EXPECT_EQ(lastEvent().flags, KREventModifierFlagShift);
    EXPECT_EQ(KREvent::currentModifierFlags(), KREventModifierFlagShift);

    sendKey(QEvent::KeyRelease, Qt::Key_Shift, Qt::ShiftModifier);
    EXPECT_EQ(lastEvent().type, KREventType::FlagsChanged);
    EXPECT_EQ(lastEvent().flags, 0u);

    sendKey(QEvent::KeyPress, Qt::Key_Control, Qt::ControlModifier);
    EXPECT_EQ(lastEvent().flags, KREventModifierFlagCommand);
}

TEST_F(KRHostWidgetTests, FocusMakesTheWindowKey) {
    QFocusEvent out(QEvent::FocusOut, Qt::OtherFocusReason);
    QCoreApplication::sendEvent(host.get(), &out);
    EXPECT_FALSE(host->krWindow().isKeyWindow());
    QFocusEvent in(QEvent::FocusIn, Qt::OtherFocusReason);
    QCoreApplication::sendEvent(host.get(), &in);
    EXPECT_TRUE(host->krWindow().isKeyWindow());
}

TEST_F(KRHostWidgetTests, RendersTheContentViewAtTheRequestedPixelRatio) {
    content->setBackgroundColor(Qt::white);
    view->setBackgroundColor(Qt::red);
    const QImage image = host->renderToImage(2.0);
    EXPECT_EQ(image.size(), QSize(400, 200));
    EXPECT_DOUBLE_EQ(image.devicePixelRatio(), 2.0);
    EXPECT_EQ(image.pixelColor(4, 4), QColor(Qt::white));
    EXPECT_EQ(image.pixelColor(40, 40), QColor(Qt::red));
    EXPECT_EQ(image.pixelColor(185, 40), QColor(Qt::white));

    const QImage single = host->renderToImage();
    EXPECT_EQ(single.size(), QSize(200, 100));
    EXPECT_EQ(single.pixelColor(92, 20), QColor(Qt::white));
}

TEST_F(KRHostWidgetTests, ClearColorShowsWhereNothingIsDrawn) {
    host->setClearColor(Qt::green);
    const QImage image = host->renderToImage();
    EXPECT_EQ(image.pixelColor(150, 80), QColor(Qt::green));
}

TEST_F(KRHostWidgetTests, SizeHintIsTheContentSizeAndResizingResizesTheContent) {
    EXPECT_EQ(host->sizeHint(), QSize(200, 100));

    QResizeEvent resize(QSize(320, 240), QSize(200, 100));
    QCoreApplication::sendEvent(host.get(), &resize);
    EXPECT_EQ(content->frame().size, KRSizeMake(320, 240));

    host->setResizesContentView(false);
    QResizeEvent again(QSize(100, 50), QSize(320, 240));
    QCoreApplication::sendEvent(host.get(), &again);
    EXPECT_EQ(content->frame().size, KRSizeMake(320, 240));
}

TEST_F(KRHostWidgetTests, CursorChangesShowOnTheWidget) {
    KRCursor::IBeamCursor().set();
    EXPECT_EQ(host->cursor().shape(), Qt::IBeamCursor);
    KRCursor::pointingHandCursor().set();
    EXPECT_EQ(host->cursor().shape(), Qt::PointingHandCursor);
    KRCursor::closedHandCursor().set();
    EXPECT_EQ(host->cursor().shape(), Qt::ClosedHandCursor);
    KRCursor::arrowCursor().set();
    EXPECT_EQ(host->cursor().shape(), Qt::ArrowCursor);
}

TEST_F(KRHostWidgetTests, InputMethodComposesIntoATextInputClient) {
    auto composing = std::make_shared<ComposingView>(KRRectMake(100, 0, 100, 40));
    content->addSubview(composing);
    ASSERT_TRUE(host->krWindow().makeFirstResponder(composing.get()));
    EXPECT_TRUE(host->inputMethodQuery(Qt::ImEnabled).toBool());
    EXPECT_EQ(host->inputMethodQuery(Qt::ImCursorRectangle).toRect(), QRect(30, 40, 2, 18));

    QInputMethodEvent preedit(QStringLiteral("ni"), {{QInputMethodEvent::Cursor, 1, 1, QVariant()}});
    QCoreApplication::sendEvent(host.get(), &preedit);
    EXPECT_EQ(composing->markedText, QStringLiteral("ni"));
    EXPECT_EQ(composing->markedCursor, 1);

    QInputMethodEvent commit;
    commit.setCommitString(QStringLiteral("你"));
    QCoreApplication::sendEvent(host.get(), &commit);
    EXPECT_EQ(composing->inserted, QStringLiteral("你"));
    EXPECT_TRUE(composing->markedText.isEmpty());
}

TEST_F(KRHostWidgetTests, InputMethodIsOffForResponderThatCannotCompose) {
    ASSERT_TRUE(host->krWindow().makeFirstResponder(view.get()));
    EXPECT_FALSE(host->inputMethodQuery(Qt::ImEnabled).toBool());
}

TEST_F(KRHostWidgetTests, FrameTimerRunsOnlyWithRealTimeAnimations) {
    KRView::performAnimated(true, [&](EZAnimationContext& context) {
        context.setInterpolationFunction(EZInterpolationFunctions::linearWithDuration(1.0));
        view->setAlphaValue(0.5);
    });
    ASSERT_TRUE(KRAnimationEngine::shared().hasRunningAnimations());
    // The manual clock drives the engine itself.
    EXPECT_FALSE(host->isAnimationTimerActive());
    KRClock::advance(2.0);
    EXPECT_FALSE(KRAnimationEngine::shared().hasRunningAnimations());

    const double manualTime = KRClock::now();
    KRClock::useRealTime();
    KRView::performAnimated(true, [&](EZAnimationContext& context) {
        context.setInterpolationFunction(EZInterpolationFunctions::linearWithDuration(10.0));
        view->setAlphaValue(1.0);
    });
    const bool timerStarted = host->isAnimationTimerActive();
    // Destroying the view ends its real-time animation before the manual clock returns.
    view->removeFromSuperview();
    view.reset();
    KRClock::useManualTime(manualTime);
    EXPECT_TRUE(timerStarted);
    EXPECT_FALSE(KRAnimationEngine::shared().hasRunningAnimations());
}

TEST_F(KRHostWidgetTests, PaintEventPaintsTheContentAndTakesTheDirtyRect) {
    host->setResizesContentView(false);
    host->resize(200, 100);
    view->setBackgroundColor(Qt::blue);
    KRRunLoop::main().runUntilIdle();
    ASSERT_FALSE(KRRectIsNull(host->krWindow().dirtyRect()));

    const QImage image = host->grab().toImage();
    ASSERT_FALSE(image.isNull());
    const double ratio = image.devicePixelRatio();
    EXPECT_EQ(image.pixelColor(static_cast<int>(50 * ratio), static_cast<int>(50 * ratio)), QColor(Qt::blue));
    EXPECT_TRUE(KRRectIsNull(host->krWindow().dirtyRect()));
}

} // namespace

// Emoji, musical symbols and CJK Extension B arrive from the keyboard as one key event carrying a
// surrogate pair.
TEST_F(KRHostWidgetTests, TypedCharactersOutsideTheBasicPlaneReachTheTextViewWhole) {
    KRTextView::installTextSystem();
    auto textView = std::make_shared<KRTextView>(KRRectMake(10, 10, 180, 40));
    content->addSubview(textView);
    ASSERT_TRUE(host->krWindow().makeFirstResponder(textView.get()));
    const QString partyPopper = QString::fromUtf8("\xF0\x9F\x8E\x89");
    const QString gClef = QString::fromUtf8("\xF0\x9D\x84\x9E");
    const QString extensionB = QString::fromUtf8("\xF0\xA0\x80\x80");
    const QString typed = QStringLiteral("a") + partyPopper + QStringLiteral("b") + gClef + extensionB;
    sendKey(QEvent::KeyPress, Qt::Key_A, Qt::NoModifier, QStringLiteral("a"));
    sendKey(QEvent::KeyRelease, Qt::Key_A, Qt::NoModifier, QStringLiteral("a"));
    for (const QString& character : {partyPopper, QStringLiteral("b"), gClef, extensionB}) {
        const int key = character == QStringLiteral("b") ? Qt::Key_B : Qt::Key_unknown;
        sendKey(QEvent::KeyPress, key, Qt::NoModifier, character);
        sendKey(QEvent::KeyRelease, key, Qt::NoModifier, character);
    }
    EXPECT_EQ(textView->string(), typed);
    EXPECT_EQ(textView->selectedRange(), KRMakeRange(static_cast<KRUInteger>(typed.size()), 0));
    host->krWindow().makeFirstResponder(nullptr);
}
