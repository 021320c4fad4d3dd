#include "Views/KREvent.h"
#include "Views/KRTrackingArea.h"
#include "Views/KRView.h"
#include "Views/KRWindow.h"

#include <gtest/gtest.h>

#include <memory>

TEST(KREventTests, MouseEventFactoryFillsItsFields) {
    KRWindow window;
    const KREvent event = KREvent::mouseEvent(KREventType::LeftMouseDown, KRPointMake(12, 34),
                                              KREventModifierFlagShift, &window, 2, 5.5);
    EXPECT_EQ(event.type(), KREventType::LeftMouseDown);
    EXPECT_EQ(event.locationInWindow(), KRPointMake(12, 34));
    EXPECT_EQ(event.modifierFlags(), KREventModifierFlagShift);
    EXPECT_EQ(event.window(), &window);
    EXPECT_EQ(event.clickCount(), 2);
    EXPECT_DOUBLE_EQ(event.timestamp(), 5.5);
    EXPECT_EQ(event.trackingArea(), nullptr);
    EXPECT_TRUE(event.isMouseEvent());
    EXPECT_FALSE(event.isKeyEvent());
}

TEST(KREventTests, KeyEventFactoryFillsItsFields) {
    KRWindow window;
    const KREvent event =
        KREvent::keyEvent(KREventType::KeyDown, KREventModifierFlagCommand, QStringLiteral("a"),
                          QStringLiteral("A"), KRKeyCode::A, &window, true, 2.0);
    EXPECT_EQ(event.type(), KREventType::KeyDown);
    EXPECT_EQ(event.modifierFlags(), KREventModifierFlagCommand);
    EXPECT_EQ(event.characters(), QStringLiteral("a"));
    EXPECT_EQ(event.charactersIgnoringModifiers(), QStringLiteral("A"));
    EXPECT_EQ(event.keyCode(), KRKeyCode::A);
    EXPECT_EQ(event.window(), &window);
    EXPECT_TRUE(event.isARepeat());
    EXPECT_DOUBLE_EQ(event.timestamp(), 2.0);
    EXPECT_TRUE(event.isKeyEvent());
    EXPECT_FALSE(event.isMouseEvent());
}

TEST(KREventTests, ScrollAndTrackingEventsCarryDeltasAndTheirArea) {
    const KREvent scroll =
        KREvent::scrollEvent(KRPointMake(1, 2), -3.0, 7.5, KREventModifierFlagOption, nullptr);
    EXPECT_EQ(scroll.type(), KREventType::ScrollWheel);
    EXPECT_DOUBLE_EQ(scroll.deltaX(), -3.0);
    EXPECT_DOUBLE_EQ(scroll.deltaY(), 7.5);
    EXPECT_EQ(scroll.modifierFlags(), KREventModifierFlagOption);
    EXPECT_TRUE(scroll.isMouseEvent());

    KRTrackingArea area(KRRectMake(0, 0, 10, 10), KRTrackingMouseEnteredAndExited, nullptr);
    const KREvent entered =
        KREvent::trackingEvent(KREventType::MouseEntered, KRPointMake(4, 5), &area, 0, nullptr);
    EXPECT_EQ(entered.type(), KREventType::MouseEntered);
    EXPECT_EQ(entered.trackingArea(), &area);
    EXPECT_EQ(entered.locationInWindow(), KRPointMake(4, 5));
    EXPECT_TRUE(entered.isMouseEvent());

    const KREvent cursor = KREvent::trackingEvent(KREventType::CursorUpdate, KRPointZero, &area, 0, nullptr);
    EXPECT_FALSE(cursor.isMouseEvent());
    const KREvent flags =
        KREvent::keyEvent(KREventType::FlagsChanged, KREventModifierFlagShift, {}, {}, 56, nullptr);
    EXPECT_FALSE(flags.isMouseEvent());
    EXPECT_FALSE(flags.isKeyEvent());
}

TEST(KREventTests, LocationInViewFollowsNestedOffsetsAndScrolling) {
    KRWindow window;
    auto content = std::make_shared<KRView>(KRRectMake(10, 20, 300, 300));
    auto child = std::make_shared<KRView>(KRRectMake(5, 5, 100, 100));
    auto grandchild = std::make_shared<KRView>(KRRectMake(1, 2, 50, 50));
    content->addSubview(child);
    child->addSubview(grandchild);
    child->setBoundsOrigin(KRPointMake(0, 30));
    window.setContentView(content);

    const KREvent event = KREvent::mouseEvent(KREventType::LeftMouseDown, KRPointMake(40, 60), 0, &window);
    EXPECT_EQ(event.locationInView(nullptr), KRPointMake(40, 60));
    EXPECT_EQ(event.locationInView(content.get()), KRPointMake(30, 40));
    EXPECT_EQ(event.locationInView(child.get()), KRPointMake(25, 65));
    EXPECT_EQ(event.locationInView(grandchild.get()), KRPointMake(24, 63));
}

TEST(KREventTests, CurrentModifierFlagsAndMouseLocationKeepWhatWasSet) {
    KREvent::setCurrentModifierFlags(KREventModifierFlagShift | KREventModifierFlagCommand);
    EXPECT_EQ(KREvent::currentModifierFlags(), KREventModifierFlagShift | KREventModifierFlagCommand);
    KREvent::setMouseLocation(KRPointMake(640, 480));
    EXPECT_EQ(KREvent::mouseLocation(), KRPointMake(640, 480));
    KREvent::setCurrentModifierFlags(0);
    KREvent::setMouseLocation(KRPointZero);
    EXPECT_EQ(KREvent::currentModifierFlags(), 0u);
}

TEST(KREventTests, CharactersOutsideTheBasicPlaneAndFormatCharactersTypeText) {
    KRWindow window;
    const auto typed = [&window](const QString& characters) {
        return KREvent::keyEvent(KREventType::KeyDown, 0, characters, characters, 0, &window).typesText();
    };
    EXPECT_TRUE(typed(QStringLiteral("a")));
    EXPECT_TRUE(typed(QString::fromUtf8("\xF0\x9F\x8E\x89"))); // party popper, a surrogate pair
    EXPECT_TRUE(typed(QString::fromUtf8("a\xF0\x9D\x84\x9E"
                                        "b")));                // G clef between letters
    EXPECT_TRUE(typed(QString::fromUtf8("\xF0\xA0\x80\x80"))); // CJK Extension B
    EXPECT_TRUE(typed(QString(QChar(0x200D))));                // zero-width joiner
    EXPECT_TRUE(typed(QString(QChar(0x200F))));                // right-to-left mark
    EXPECT_FALSE(typed(QString()));
    EXPECT_FALSE(typed(QString(QChar(0xD83C))));                    // a lone high surrogate
    EXPECT_FALSE(typed(QString(QChar(0xDF89)) + QLatin1Char('a'))); // a lone low surrogate
    EXPECT_FALSE(typed(QStringLiteral("\t")));
    EXPECT_FALSE(typed(QString(QChar(0x7f))));
    EXPECT_FALSE(typed(QString(QChar(0xF700)))); // an arrow key's character
}
