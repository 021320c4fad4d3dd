#include "Foundation/KRRunLoop.h"
#include "Views/KREvent.h"
#include "Views/KRView.h"
#include "Views/KRWindow.h"

#include <gtest/gtest.h>

#include <memory>
#include <optional>
#include <vector>

namespace {

// Records every event and focus change it receives, in order.
class RecordingView : public KRView {
public:
    explicit RecordingView(KRRect frame, QString viewName = {}, bool acceptsFocus = false)
        : KRView(frame), name(std::move(viewName)), accepts(acceptsFocus) {}

    bool acceptsFirstResponder() const override { return accepts; }
    bool becomeFirstResponder() override {
        log.push_back(QStringLiteral("become"));
        return allowBecome;
    }
    bool resignFirstResponder() override {
        log.push_back(QStringLiteral("resign"));
        return allowResign;
    }
    void mouseDown(const KREvent& event) override {
        log.push_back(QStringLiteral("down"));
        if (event.window()) {
            sawCurrentEvent = event.window()->currentEvent() == &event;
        }
    }
    void rightMouseDown(const KREvent&) override { log.push_back(QStringLiteral("rightDown")); }
    void mouseDragged(const KREvent&) override { log.push_back(QStringLiteral("dragged")); }
    void mouseUp(const KREvent&) override { log.push_back(QStringLiteral("up")); }
    void rightMouseUp(const KREvent&) override { log.push_back(QStringLiteral("rightUp")); }
    void mouseMoved(const KREvent&) override { log.push_back(QStringLiteral("moved")); }
    void scrollWheel(const KREvent&) override { log.push_back(QStringLiteral("scroll")); }
    void keyDown(const KREvent& event) override {
        log.push_back(QStringLiteral("key:") + event.characters());
    }
    void keyUp(const KREvent&) override { log.push_back(QStringLiteral("keyUp")); }
    void flagsChanged(const KREvent&) override { log.push_back(QStringLiteral("flags")); }
    void layoutSubviews() override { ++layouts; }

    QString name;
    bool accepts;
    bool allowBecome = true;
    bool allowResign = true;
    bool sawCurrentEvent = false;
    int layouts = 0;
    QStringList log;
};

// A bare responder outside any view tree.
class FocusResponder : public KRResponder {
public:
    bool becomeFirstResponder() override { return allowBecome; }
    bool resignFirstResponder() override { return allowResign; }
    bool allowBecome = true;
    bool allowResign = true;
};

class KRWindowTests : public ::testing::Test {
protected:
    void SetUp() override {
        KRRunLoop::main().cancelAll();
        content = std::make_shared<RecordingView>(KRRectMake(0, 0, 500, 500), QStringLiteral("content"));
        window.setContentView(content);
    }
    void TearDown() override {
        KRRunLoop::main().cancelAll();
        KRWindow::setDefaultFieldEditorFactory({});
    }

    std::shared_ptr<RecordingView> add(KRRect frame, const QString& name, bool accepts = false,
                                       KRView* parent = nullptr) {
        auto view = std::make_shared<RecordingView>(frame, name, accepts);
        (parent ? parent : content.get())->addSubview(view);
        return view;
    }
    void mouse(KREventType type, double x, double y) {
        window.sendEvent(KREvent::mouseEvent(type, KRPointMake(x, y), 0, &window));
    }
    void key(const QString& characters, KREventType type = KREventType::KeyDown) {
        window.sendEvent(KREvent::keyEvent(type, 0, characters, characters, 0, &window));
    }

    KRWindow window;
    std::shared_ptr<RecordingView> content;
};

} // namespace

TEST_F(KRWindowTests, ContentViewTreeJoinsAndLeavesTheWindow) {
    auto child = add(KRRectMake(10, 10, 50, 50), QStringLiteral("child"));
    EXPECT_EQ(content->window(), &window);
    EXPECT_EQ(child->window(), &window);
    EXPECT_EQ(window.contentView(), content.get());
    EXPECT_EQ(content->frame(), KRRectMake(0, 0, 500, 500));

    auto replacement = std::make_shared<KRView>(KRRectMake(3, 4, 10, 10));
    window.setContentView(replacement);
    EXPECT_EQ(content->window(), nullptr);
    EXPECT_EQ(child->window(), nullptr);
    EXPECT_EQ(replacement->window(), &window);
    EXPECT_EQ(replacement->frame(), KRRectMake(3, 4, 10, 10));
    EXPECT_EQ(replacement->nextResponder(), &window);
}

TEST_F(KRWindowTests, DestroyingTheWindowDetachesItsContentView) {
    auto view = std::make_shared<KRView>(KRRectMake(0, 0, 10, 10));
    {
        KRWindow temporary;
        temporary.setContentView(view);
        EXPECT_EQ(view->window(), &temporary);
    }
    EXPECT_EQ(view->window(), nullptr);
    KRRunLoop::main().runUntilIdle(); // the pass it scheduled finds the window gone
}

TEST_F(KRWindowTests, WindowIsFirstResponderUntilSomethingAccepts) {
    EXPECT_EQ(window.firstResponder(), &window);
    auto field = add(KRRectMake(0, 0, 10, 10), QStringLiteral("field"), true);
    EXPECT_TRUE(window.makeFirstResponder(field.get()));
    EXPECT_EQ(window.firstResponder(), field.get());
    EXPECT_EQ(field->log, QStringList{QStringLiteral("become")});
    // Asking again changes nothing.
    EXPECT_TRUE(window.makeFirstResponder(field.get()));
    EXPECT_EQ(field->log.size(), 1);

    EXPECT_TRUE(window.makeFirstResponder(nullptr));
    EXPECT_EQ(window.firstResponder(), &window);
    EXPECT_EQ(field->log, (QStringList{QStringLiteral("become"), QStringLiteral("resign")}));
}

TEST_F(KRWindowTests, FirstResponderThatRefusesToResignStays) {
    auto first = add(KRRectMake(0, 0, 10, 10), QStringLiteral("first"), true);
    auto second = add(KRRectMake(20, 0, 10, 10), QStringLiteral("second"), true);
    ASSERT_TRUE(window.makeFirstResponder(first.get()));
    first->allowResign = false;
    EXPECT_FALSE(window.makeFirstResponder(second.get()));
    EXPECT_EQ(window.firstResponder(), first.get());
    EXPECT_TRUE(second->log.isEmpty());
}

TEST_F(KRWindowTests, ResponderThatRefusesToBecomeLeavesTheWindowFirstResponder) {
    FocusResponder current;
    FocusResponder refusing;
    refusing.allowBecome = false;
    ASSERT_TRUE(window.makeFirstResponder(&current));
    EXPECT_FALSE(window.makeFirstResponder(&refusing));
    EXPECT_EQ(window.firstResponder(), &window);
}

TEST_F(KRWindowTests, DestroyedFirstResponderFallsBackToTheWindow) {
    {
        FocusResponder transient;
        ASSERT_TRUE(window.makeFirstResponder(&transient));
        EXPECT_EQ(window.firstResponder(), &transient);
    }
    EXPECT_EQ(window.firstResponder(), &window);
}

TEST_F(KRWindowTests, DragAndUpGoToTheViewThatTookTheDown) {
    auto left = add(KRRectMake(0, 0, 100, 100), QStringLiteral("left"));
    auto right = add(KRRectMake(200, 0, 100, 100), QStringLiteral("right"));
    mouse(KREventType::LeftMouseDown, 10, 10);
    EXPECT_EQ(window.mouseDownView(), left.get());
    mouse(KREventType::LeftMouseDragged, 250, 50);
    mouse(KREventType::LeftMouseUp, 250, 50);
    EXPECT_EQ(left->log,
              (QStringList{QStringLiteral("down"), QStringLiteral("dragged"), QStringLiteral("up")}));
    EXPECT_TRUE(right->log.isEmpty());
    EXPECT_EQ(window.mouseDownView(), nullptr);

    // With no press under way, drags and ups go to the view under the pointer.
    mouse(KREventType::LeftMouseUp, 250, 50);
    EXPECT_EQ(right->log, QStringList{QStringLiteral("up")});
}

TEST_F(KRWindowTests, RightButtonPressIsTrackedLikeTheLeft) {
    auto left = add(KRRectMake(0, 0, 100, 100), QStringLiteral("left"));
    auto right = add(KRRectMake(200, 0, 100, 100), QStringLiteral("right"));
    mouse(KREventType::RightMouseDown, 10, 10);
    mouse(KREventType::RightMouseUp, 250, 10);
    EXPECT_EQ(left->log, (QStringList{QStringLiteral("rightDown"), QStringLiteral("rightUp")}));
    EXPECT_TRUE(right->log.isEmpty());
}

TEST_F(KRWindowTests, MouseDownViewDestroyedMidDragIsForgotten) {
    auto doomed = add(KRRectMake(0, 0, 100, 100), QStringLiteral("doomed"));
    mouse(KREventType::LeftMouseDown, 10, 10);
    doomed->removeFromSuperview();
    doomed.reset();
    EXPECT_EQ(window.mouseDownView(), nullptr);
    mouse(KREventType::LeftMouseDragged, 10, 10);
    EXPECT_EQ(content->log, QStringList{QStringLiteral("dragged")});
}

TEST_F(KRWindowTests, ClickOnAcceptingViewMakesItFirstResponder) {
    auto plain = add(KRRectMake(0, 0, 100, 100), QStringLiteral("plain"));
    auto field = add(KRRectMake(200, 0, 100, 100), QStringLiteral("field"), true);
    mouse(KREventType::LeftMouseDown, 10, 10);
    EXPECT_EQ(window.firstResponder(), &window);
    mouse(KREventType::LeftMouseUp, 10, 10);
    mouse(KREventType::LeftMouseDown, 210, 10);
    EXPECT_EQ(window.firstResponder(), field.get());
    // Focus first, then the click.
    EXPECT_EQ(field->log, (QStringList{QStringLiteral("become"), QStringLiteral("down")}));
    EXPECT_TRUE(field->sawCurrentEvent);
    mouse(KREventType::LeftMouseUp, 210, 10);
    mouse(KREventType::LeftMouseDown, 210, 10);
    EXPECT_EQ(field->log.count(QStringLiteral("become")), 1);
}

TEST_F(KRWindowTests, ClickOutsideEveryViewGoesNowhere) {
    content->setFrame(KRRectMake(100, 100, 200, 200));
    auto field = add(KRRectMake(0, 0, 50, 50), QStringLiteral("field"), true);
    mouse(KREventType::LeftMouseDown, 20, 20);
    mouse(KREventType::LeftMouseUp, 20, 20);
    EXPECT_TRUE(content->log.isEmpty());
    EXPECT_TRUE(field->log.isEmpty());
    EXPECT_EQ(window.mouseDownView(), nullptr);
    EXPECT_EQ(window.firstResponder(), &window);
    // The content view's origin is in window coordinates.
    mouse(KREventType::LeftMouseDown, 110, 110);
    EXPECT_EQ(field->log, (QStringList{QStringLiteral("become"), QStringLiteral("down")}));
}

TEST_F(KRWindowTests, HitTestingPrefersTheFrontmostVisibleSibling) {
    auto back = add(KRRectMake(0, 0, 100, 100), QStringLiteral("back"));
    auto front = add(KRRectMake(50, 50, 100, 100), QStringLiteral("front"));
    auto hiddenTop = add(KRRectMake(0, 0, 200, 200), QStringLiteral("hidden"));
    hiddenTop->setHidden(true);

    mouse(KREventType::LeftMouseDown, 60, 60);
    mouse(KREventType::LeftMouseUp, 60, 60);
    mouse(KREventType::LeftMouseDown, 20, 20);
    mouse(KREventType::LeftMouseUp, 20, 20);
    mouse(KREventType::LeftMouseDown, 300, 300);
    EXPECT_EQ(front->log, (QStringList{QStringLiteral("down"), QStringLiteral("up")}));
    EXPECT_EQ(back->log, (QStringList{QStringLiteral("down"), QStringLiteral("up")}));
    EXPECT_TRUE(hiddenTop->log.isEmpty());
    EXPECT_EQ(content->log, QStringList{QStringLiteral("down")});
}

TEST_F(KRWindowTests, MovesAndScrollsGoToTheViewUnderThePointer) {
    auto row = add(KRRectMake(0, 0, 100, 20), QStringLiteral("row"));
    mouse(KREventType::MouseMoved, 10, 10);
    window.sendEvent(KREvent::scrollEvent(KRPointMake(10, 10), 0, -4, 0, &window));
    window.sendEvent(KREvent::scrollEvent(KRPointMake(10, 300), 0, -4, 0, &window));
    EXPECT_EQ(row->log, (QStringList{QStringLiteral("moved"), QStringLiteral("scroll")}));
    EXPECT_EQ(content->log, QStringList{QStringLiteral("scroll")});
}

TEST_F(KRWindowTests, KeysGoToTheFirstResponder) {
    auto field = add(KRRectMake(0, 0, 100, 20), QStringLiteral("field"), true);
    key(QStringLiteral("a")); // the window is first responder: nobody hears it
    EXPECT_TRUE(content->log.isEmpty());
    ASSERT_TRUE(window.makeFirstResponder(field.get()));
    key(QStringLiteral("b"));
    key(QStringLiteral("b"), KREventType::KeyUp);
    window.sendEvent(
        KREvent::keyEvent(KREventType::FlagsChanged, KREventModifierFlagShift, {}, {}, 56, &window));
    EXPECT_EQ(field->log, (QStringList{QStringLiteral("become"), QStringLiteral("key:b"),
                                       QStringLiteral("keyUp"), QStringLiteral("flags")}));
}

TEST_F(KRWindowTests, CurrentEventIsSetDuringDispatchAndRestoredAfterNesting) {
    EXPECT_EQ(window.currentEvent(), nullptr);
    class NestingView : public KRView {
    public:
        using KRView::KRView;
        void keyDown(const KREvent& event) override {
            outer = window()->currentEvent();
            const KREvent inner = KREvent::keyEvent(KREventType::KeyUp, 0, {}, {}, 0, window());
            window()->sendEvent(inner);
            restored = window()->currentEvent() == &event;
        }
        bool acceptsFirstResponder() const override { return true; }
        const KREvent* outer = nullptr;
        bool restored = false;
    };
    auto view = std::make_shared<NestingView>(KRRectMake(0, 0, 10, 10));
    content->addSubview(view);
    ASSERT_TRUE(window.makeFirstResponder(view.get()));
    const KREvent event = KREvent::keyEvent(KREventType::KeyDown, 0, QStringLiteral("x"), {}, 0, &window);
    window.sendEvent(event);
    EXPECT_EQ(view->outer, &event);
    EXPECT_TRUE(view->restored);
    EXPECT_EQ(window.currentEvent(), nullptr);
}

TEST_F(KRWindowTests, KeyViewLoopWrapsAroundInTreeOrder) {
    auto group = add(KRRectMake(0, 0, 200, 200), QStringLiteral("group"));
    auto a = add(KRRectMake(0, 0, 10, 10), QStringLiteral("a"), true, group.get());
    auto b = add(KRRectMake(0, 20, 10, 10), QStringLiteral("b"), true, group.get());
    auto skipped = add(KRRectMake(0, 40, 10, 10), QStringLiteral("skipped"), true);
    skipped->setHidden(true);
    auto c = add(KRRectMake(0, 300, 10, 10), QStringLiteral("c"), true);

    EXPECT_TRUE(window.selectNextKeyView());
    EXPECT_EQ(window.firstResponder(), a.get());
    EXPECT_TRUE(window.selectNextKeyView());
    EXPECT_EQ(window.firstResponder(), b.get());
    EXPECT_TRUE(window.selectNextKeyView());
    EXPECT_EQ(window.firstResponder(), c.get());
    EXPECT_TRUE(window.selectNextKeyView());
    EXPECT_EQ(window.firstResponder(), a.get());
    EXPECT_TRUE(window.selectPreviousKeyView());
    EXPECT_EQ(window.firstResponder(), c.get());
    EXPECT_TRUE(window.selectKeyViewPrecedingView(b.get()));
    EXPECT_EQ(window.firstResponder(), a.get());
    EXPECT_TRUE(window.selectKeyViewFollowingView(group.get()));
    EXPECT_EQ(window.firstResponder(), a.get());
    EXPECT_TRUE(skipped->log.isEmpty());
}

TEST_F(KRWindowTests, ExplicitNextKeyViewIsFollowedWhenItCanBeKey) {
    auto a = add(KRRectMake(0, 0, 10, 10), QStringLiteral("a"), true);
    auto b = add(KRRectMake(0, 20, 10, 10), QStringLiteral("b"), true);
    auto c = add(KRRectMake(0, 40, 10, 10), QStringLiteral("c"), true);
    a->setNextKeyView(c.get());
    EXPECT_TRUE(window.selectKeyViewFollowingView(a.get()));
    EXPECT_EQ(window.firstResponder(), c.get());
    EXPECT_TRUE(window.selectKeyViewPrecedingView(c.get()));
    EXPECT_EQ(window.firstResponder(), a.get());

    c->accepts = false; // no longer a key view: fall back to tree order
    EXPECT_TRUE(window.selectKeyViewFollowingView(a.get()));
    EXPECT_EQ(window.firstResponder(), b.get());
}

TEST_F(KRWindowTests, EmptyKeyViewLoopSelectsNothing) {
    add(KRRectMake(0, 0, 10, 10), QStringLiteral("plain"));
    EXPECT_FALSE(window.selectNextKeyView());
    EXPECT_FALSE(window.selectPreviousKeyView());
    EXPECT_EQ(window.firstResponder(), &window);
}

TEST_F(KRWindowTests, FieldEditorFactoryIsUsedOnce) {
    EXPECT_EQ(window.fieldEditor(true, nullptr), nullptr);
    int made = 0;
    KRWindow::setDefaultFieldEditorFactory([&made] {
        ++made;
        return std::make_shared<KRView>(KRRectMake(0, 0, 100, 20));
    });
    EXPECT_EQ(window.fieldEditor(false, nullptr), nullptr);
    EXPECT_EQ(made, 0);
    const auto editor = window.fieldEditor(true, content.get());
    ASSERT_NE(editor, nullptr);
    EXPECT_EQ(window.fieldEditor(true, nullptr), editor);
    EXPECT_EQ(window.fieldEditor(false, nullptr), editor);
    EXPECT_EQ(made, 1);
}

TEST_F(KRWindowTests, ScreenMappingIsAnOffset) {
    window.setScreenOrigin(KRPointMake(100, 50));
    EXPECT_EQ(window.convertPointToScreen(KRPointMake(1, 2)), KRPointMake(101, 52));
    EXPECT_EQ(window.convertPointFromScreen(KRPointMake(101, 52)), KRPointMake(1, 2));
    EXPECT_EQ(window.convertRectToScreen(KRRectMake(1, 2, 3, 4)), KRRectMake(101, 52, 3, 4));
    EXPECT_EQ(window.convertRectFromScreen(KRRectMake(101, 52, 3, 4)), KRRectMake(1, 2, 3, 4));
    auto child = add(KRRectMake(10, 10, 20, 20), QStringLiteral("child"));
    EXPECT_EQ(child->convertPointToScreen(KRPointMake(1, 1)), KRPointMake(111, 61));
}

TEST_F(KRWindowTests, ManyUpdateRequestsScheduleOnePass) {
    KRRunLoop::main().runUntilIdle();
    ASSERT_FALSE(window.isUpdateScheduled());
    const int before = KRRunLoop::main().pendingCount();
    for (int i = 0; i < 50; ++i) {
        window.setNeedsUpdate();
    }
    const int layoutsBefore = content->layouts;
    content->setNeedsLayout(true);
    EXPECT_TRUE(window.isUpdateScheduled());
    EXPECT_EQ(KRRunLoop::main().pendingCount(), before + 1);
    EXPECT_EQ(content->layouts, layoutsBefore);
    EXPECT_EQ(KRRunLoop::main().runOneTurn(), 1);
    EXPECT_FALSE(window.isUpdateScheduled());
    EXPECT_EQ(content->layouts, layoutsBefore + 1);
}

TEST_F(KRWindowTests, UpdatePassReportsTheDirtyRegionAndLeavesItForThePainter) {
    window.takeDirtyRect();
    KRRunLoop::main().runUntilIdle();
    std::vector<KRRect> reported;
    window.setDisplayHandler([&reported](KRRect rect) { reported.push_back(rect); });
    window.updateIfNeeded();
    EXPECT_TRUE(reported.empty()); // nothing dirty, nothing to show

    window.setNeedsDisplayInRect(KRRectMake(10, 10, 10, 10));
    window.setNeedsDisplayInRect(KRRectMake(50, 40, 10, 10));
    EXPECT_EQ(window.dirtyRect(), KRRectMake(10, 10, 50, 40));
    EXPECT_TRUE(window.isUpdateScheduled());
    KRRunLoop::main().runOneTurn();
    ASSERT_EQ(reported.size(), 1u);
    EXPECT_EQ(reported[0], KRRectMake(10, 10, 50, 40));
    EXPECT_EQ(window.takeDirtyRect(), KRRectMake(10, 10, 50, 40));
    EXPECT_TRUE(KRRectIsNull(window.dirtyRect()));
    EXPECT_TRUE(KRRectIsNull(window.takeDirtyRect()));
}

TEST_F(KRWindowTests, DestroyedWindowIgnoresItsScheduledPass) {
    auto temporary = std::make_unique<KRWindow>();
    int shown = 0;
    temporary->setDisplayHandler([&shown](KRRect) { ++shown; });
    temporary->setNeedsDisplayInRect(KRRectMake(0, 0, 5, 5));
    ASSERT_TRUE(temporary->isUpdateScheduled());
    temporary.reset();
    EXPECT_GE(KRRunLoop::main().runUntilIdle(), 1);
    EXPECT_EQ(shown, 0);
}

TEST_F(KRWindowTests, RemovingTheFirstRespondersViewResetsFocus) {
    auto group = add(KRRectMake(0, 0, 200, 200), QStringLiteral("group"));
    auto field = add(KRRectMake(0, 0, 50, 20), QStringLiteral("field"), true, group.get());
    ASSERT_TRUE(window.makeFirstResponder(field.get()));
    field->allowResign = false; // removal does not ask
    group->removeFromSuperview();
    EXPECT_EQ(window.firstResponder(), &window);
    EXPECT_FALSE(field->log.contains(QStringLiteral("resign")));

    // An unrelated removal leaves focus alone.
    auto other = add(KRRectMake(0, 0, 50, 20), QStringLiteral("other"), true);
    auto bystander = add(KRRectMake(0, 100, 50, 20), QStringLiteral("bystander"));
    ASSERT_TRUE(window.makeFirstResponder(other.get()));
    bystander->removeFromSuperview();
    EXPECT_EQ(window.firstResponder(), other.get());
}
