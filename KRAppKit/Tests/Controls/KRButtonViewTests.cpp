#include "Controls/KRButtonView.h"
#include "Controls/KRImage.h"

#include "Animation/EZInterpolationFunctions.h"
#include "Foundation/KRClock.h"
#include "Foundation/KRRunLoop.h"
#include "Views/KRCursor.h"
#include "Views/KREvent.h"
#include "Views/KRTrackingArea.h"
#include "Views/KRView.h"
#include "Views/KRWindow.h"

#include <QPainter>

#include <malloc.h>

#include <memory>
#include <optional>
#include <vector>

#include <gtest/gtest.h>

namespace {

class ActionTarget : public KRObject {
public:
    bool tryToPerform(const KRSelector& action, KRObject* sender) override {
        ++count;
        lastAction = action;
        lastSender = sender;
        return true;
    }
    int count = 0;
    KRSelector lastAction;
    KRObject* lastSender = nullptr;
};

class RecordingDelegate : public KRObject, public KRButtonViewDelegate {
public:
    bool buttonViewMouseDown(KRButtonView*, const KREvent&) override {
        ++downs;
        return consumeDown;
    }
    bool buttonViewMouseDragged(KRButtonView*, const KREvent&) override {
        ++drags;
        return false;
    }
    bool buttonViewMouseUp(KRButtonView*, const KREvent&) override {
        ++ups;
        return false;
    }
    bool buttonViewValidatePressed(KRButtonView*, bool proposed) override {
        return forcePressed ? true : proposed;
    }
    bool buttonViewValidateCanBecomeKeyView(KRButtonView*, bool) override { return canBecomeKeyView; }

    bool consumeDown = false;
    bool forcePressed = false;
    bool canBecomeKeyView = true;
    int downs = 0;
    int drags = 0;
    int ups = 0;
};

QImage filledImage(int width, int height, const QColor& color) {
    QImage image(width, height, QImage::Format_ARGB32);
    image.fill(color);
    return image;
}

class KRButtonViewTests : public ::testing::Test {
protected:
    void SetUp() override {
        m_content = std::make_shared<KRView>(KRRectMake(0, 0, 200, 200));
        m_window.setContentView(m_content);
        m_button = std::make_shared<KRButtonView>(KRRectMake(20, 20, 40, 40));
        m_button->setImage(KRImage::imageWithRepresentations({{filledImage(20, 20, Qt::red), 1.0}}, true));
        m_button->setTarget(&m_target);
        m_button->setAction(KRSelector("toggle:"));
        m_content->addSubview(m_button);
    }
    void TearDown() override { KRRunLoop::main().runUntilIdle(); }

    void send(KREventType type, double x, double y) {
        m_window.sendEvent(KREvent::mouseEvent(type, KRPointMake(x, y), 0, &m_window));
    }
    void down(double x, double y) { send(KREventType::LeftMouseDown, x, y); }
    void drag(double x, double y) { send(KREventType::LeftMouseDragged, x, y); }
    void up(double x, double y) { send(KREventType::LeftMouseUp, x, y); }

    // The button's own drawing, in its bounds coordinates.
    QImage render() {
        QImage canvas(40, 40, QImage::Format_ARGB32_Premultiplied);
        canvas.fill(Qt::transparent);
        QPainter painter(&canvas);
        m_button->draw(painter, m_button->bounds());
        return canvas;
    }

    KRWindow m_window;
    std::shared_ptr<KRView> m_content;
    std::shared_ptr<KRButtonView> m_button;
    ActionTarget m_target;
};

} // namespace

TEST_F(KRButtonViewTests, SendsTheActionOnReleaseInside) {
    down(30, 30);
    EXPECT_TRUE(m_button->isPressed());
    EXPECT_EQ(m_target.count, 0);
    up(30, 30);
    EXPECT_FALSE(m_button->isPressed());
    EXPECT_EQ(m_target.count, 1);
    EXPECT_EQ(m_target.lastAction, KRSelector("toggle:"));
    EXPECT_EQ(m_target.lastSender, m_button.get());
}

TEST_F(KRButtonViewTests, DraggingOutAndReleasingOutsideSendsNothing) {
    down(30, 30);
    drag(150, 150);
    EXPECT_FALSE(m_button->isPressed());
    up(150, 150);
    EXPECT_EQ(m_target.count, 0);
}

TEST_F(KRButtonViewTests, DraggingBackInPressesAgain) {
    down(30, 30);
    drag(150, 150);
    drag(40, 40);
    EXPECT_TRUE(m_button->isPressed());
    up(40, 40);
    EXPECT_EQ(m_target.count, 1);
}

TEST_F(KRButtonViewTests, OnActionRunsAfterTargetAction) {
    std::vector<int> order;
    m_button->setOnAction([&](KRButtonView& button) {
        EXPECT_EQ(&button, m_button.get());
        order.push_back(m_target.count);
    });
    down(30, 30);
    up(30, 30);
    ASSERT_EQ(order.size(), 1u);
    EXPECT_EQ(order[0], 1);
}

TEST_F(KRButtonViewTests, ClearedOnActionLeavesTargetActionAlone) {
    int calls = 0;
    m_button->setOnAction([&](KRButtonView&) { ++calls; });
    m_button->setOnAction({});
    down(30, 30);
    up(30, 30);
    EXPECT_EQ(calls, 0);
    EXPECT_EQ(m_target.count, 1);
}

TEST_F(KRButtonViewTests, TargetIsDroppedWithItsOwner) {
    {
        ActionTarget shortLived;
        m_button->setTarget(&shortLived);
        EXPECT_EQ(m_button->target(), &shortLived);
    }
    EXPECT_EQ(m_button->target(), nullptr);
    down(30, 30);
    up(30, 30);
    EXPECT_EQ(m_target.count, 0);
}

TEST_F(KRButtonViewTests, TargetWithoutALifetimeOwnerStaysUntilCleared) {
    ActionTarget other;
    m_button->setTarget(&other, nullptr);
    EXPECT_EQ(m_button->target(), &other);
    down(30, 30);
    up(30, 30);
    EXPECT_EQ(other.count, 1);
    m_button->setTarget(nullptr);
    EXPECT_EQ(m_button->target(), nullptr);
}

TEST_F(KRButtonViewTests, DisabledButtonIgnoresClicks) {
    m_button->setEnabled(false);
    down(30, 30);
    EXPECT_FALSE(m_button->isPressed());
    up(30, 30);
    EXPECT_EQ(m_target.count, 0);
}

TEST_F(KRButtonViewTests, DelegateConsumingMouseDownPreventsPressAndAction) {
    RecordingDelegate delegate;
    delegate.consumeDown = true;
    m_button->setDelegate(&delegate);
    down(30, 30);
    EXPECT_FALSE(m_button->isPressed());
    drag(35, 35);
    EXPECT_FALSE(m_button->isPressed());
    up(35, 35);
    EXPECT_EQ(m_target.count, 0);
    EXPECT_EQ(delegate.downs, 1);
    EXPECT_EQ(delegate.drags, 1);
    EXPECT_EQ(delegate.ups, 1);
}

TEST_F(KRButtonViewTests, DelegateCanHoldTheButtonPressed) {
    RecordingDelegate delegate;
    delegate.forcePressed = true;
    m_button->setDelegate(&delegate);
    down(30, 30);
    drag(150, 150);
    EXPECT_TRUE(m_button->isPressed());
    up(150, 150);
    EXPECT_TRUE(m_button->isPressed());
    EXPECT_EQ(m_target.count, 0);

    delegate.forcePressed = false;
    m_button->revalidatePressed();
    EXPECT_FALSE(m_button->isPressed());
}

TEST_F(KRButtonViewTests, DelegateIsDroppedWithItsOwner) {
    auto delegate = std::make_unique<RecordingDelegate>();
    m_button->setDelegate(delegate.get());
    EXPECT_EQ(m_button->delegate(), delegate.get());
    delegate.reset();
    EXPECT_EQ(m_button->delegate(), nullptr);
    down(30, 30); // must not reach the dead delegate
    up(30, 30);
    EXPECT_EQ(m_target.count, 1);
}

TEST_F(KRButtonViewTests, DelegateDecidesWhetherTheButtonCanBecomeKeyView) {
    const bool byDefault = m_button->canBecomeKeyView();
    RecordingDelegate delegate;
    delegate.canBecomeKeyView = !byDefault;
    m_button->setDelegate(&delegate);
    EXPECT_EQ(m_button->canBecomeKeyView(), !byDefault);
    m_button->setDelegate(nullptr);
    EXPECT_EQ(m_button->canBecomeKeyView(), byDefault);
    EXPECT_TRUE(m_button->acceptsFirstMouse(nullptr));
}

TEST_F(KRButtonViewTests, StateAlphasAreIgnoredByDefault) {
    m_button->setImageAlpha(0.5);
    m_button->setImageAlphaWhenPressed(0.2);
    EXPECT_TRUE(m_button->ignoresImageAlpha());
    EXPECT_EQ(m_button->currentImageAlpha(), 1.0);
    down(30, 30);
    EXPECT_EQ(m_button->currentImageAlpha(), 1.0);
    EXPECT_EQ(render().pixelColor(20, 20).alpha(), 255);
}

TEST_F(KRButtonViewTests, StateAlphasApplyInOrderPressedHighlightedHovered) {
    m_button->setIgnoresImageAlpha(false);
    m_button->setImageAlpha(0.8);
    m_button->setImageAlphaWhenPressed(0.2);
    m_button->setImageAlphaWhenHighlighted(0.4);
    m_button->setImageAlphaWhenHovered(0.6);
    EXPECT_DOUBLE_EQ(m_button->currentImageAlpha(), 0.8);

    m_button->mouseEntered(KREvent::trackingEvent(KREventType::MouseEntered, KRPointMake(30, 30),
                                                  m_button->trackingAreas().front().get(), 0, &m_window));
    EXPECT_DOUBLE_EQ(m_button->currentImageAlpha(), 0.6);
    m_button->setHighlighted(true);
    EXPECT_DOUBLE_EQ(m_button->currentImageAlpha(), 0.4);
    down(30, 30);
    EXPECT_DOUBLE_EQ(m_button->currentImageAlpha(), 0.2);
    EXPECT_NEAR(render().pixelColor(20, 20).alpha(), 0.2 * 255, 2);
    up(30, 30);

    m_button->setImageAlphaWhenHighlighted(std::nullopt);
    EXPECT_FALSE(m_button->imageAlphaWhenHighlighted().has_value());
    EXPECT_DOUBLE_EQ(m_button->currentImageAlpha(), 0.8); // unset falls back to imageAlpha
}

TEST_F(KRButtonViewTests, TrackingAreaCoversBoundsAndDrivesHover) {
    ASSERT_EQ(m_button->trackingAreas().size(), 1u);
    const auto& area = m_button->trackingAreas().front();
    EXPECT_EQ(area->rect(), m_button->bounds());
    EXPECT_TRUE(area->options() & KRTrackingMouseEnteredAndExited);
    EXPECT_TRUE(area->options() & KRTrackingCursorUpdate);
    EXPECT_TRUE(area->options() & KRTrackingActiveAlways);

    m_button->setFrameSize(KRSizeMake(60, 30));
    m_button->updateTrackingAreas();
    ASSERT_EQ(m_button->trackingAreas().size(), 1u);
    EXPECT_EQ(m_button->trackingAreas().front()->rect(), KRRectMake(0, 0, 60, 30));

    KRTrackingArea* current = m_button->trackingAreas().front().get();
    m_button->mouseEntered(
        KREvent::trackingEvent(KREventType::MouseEntered, KRPointMake(30, 30), current, 0, &m_window));
    EXPECT_TRUE(m_button->isHovered());
    m_button->mouseExited(
        KREvent::trackingEvent(KREventType::MouseExited, KRPointMake(150, 150), current, 0, &m_window));
    EXPECT_FALSE(m_button->isHovered());
}

TEST_F(KRButtonViewTests, PointerMovesThroughTheWindowHoverTheButton) {
    m_window.updateIfNeeded();
    send(KREventType::MouseMoved, 30, 30);
    EXPECT_TRUE(m_button->isHovered());
    send(KREventType::MouseMoved, 150, 150);
    EXPECT_FALSE(m_button->isHovered());
}

TEST_F(KRButtonViewTests, CursorUpdateSetsTheButtonsCursor) {
    EXPECT_EQ(m_button->cursor(), KRCursor::arrowCursor());
    m_button->setCursor(KRCursor::pointingHandCursor());
    KRCursor::arrowCursor().set();
    m_button->cursorUpdate(KREvent::trackingEvent(KREventType::CursorUpdate, KRPointMake(30, 30),
                                                  m_button->trackingAreas().front().get(), 0, &m_window));
    EXPECT_EQ(KRCursor::currentCursor(), KRCursor::pointingHandCursor());
}

TEST_F(KRButtonViewTests, PressedImageShowsWhilePressed) {
    const auto pressed = KRImage::imageWithRepresentations({{filledImage(20, 20, Qt::blue), 1.0}}, false);
    EXPECT_EQ(m_button->currentImage(), m_button->image());
    down(30, 30);
    EXPECT_EQ(m_button->currentImage(), m_button->image()); // no pressed image: the image
    m_button->setPressedImage(pressed);
    EXPECT_EQ(m_button->currentImage(), pressed);
    EXPECT_EQ(render().pixelColor(20, 20), QColor(Qt::blue));
    up(30, 30);
    EXPECT_EQ(m_button->currentImage(), m_button->image());
}

TEST_F(KRButtonViewTests, ButtonModeScalesTheButtonAtOnceAndAnimatesBack) {
    m_button->setOuterScaleOnPressMode(KRButtonView::OuterScaleOnPressModeButton);
    m_button->setOuterScaleOnPress(0.8);
    m_button->setOuterScaleAnimationFunction(EZInterpolationFunctions::linearWithDuration(0.2));
    down(30, 30);
    EXPECT_DOUBLE_EQ(m_button->scale(), 0.8);
    EXPECT_NEAR(m_button->presentationScale(), 0.8, 1e-9);
    EXPECT_DOUBLE_EQ(m_button->currentImageScale(), 1.0);

    up(30, 30);
    EXPECT_DOUBLE_EQ(m_button->scale(), 1.0);
    EXPECT_NEAR(m_button->presentationScale(), 0.8, 1e-6);
    KRClock::advance(0.1);
    EXPECT_NEAR(m_button->presentationScale(), 0.9, 1e-3);
    KRClock::advance(0.15);
    EXPECT_NEAR(m_button->presentationScale(), 1.0, 1e-9);
    EXPECT_FALSE(m_button->hasRunningAnimations());
}

TEST_F(KRButtonViewTests, ImageModeScalesOnlyTheImageAndAnimatesBack) {
    m_button->setOuterScaleOnPress(0.5);
    m_button->setOuterScaleAnimationFunction(EZInterpolationFunctions::linearWithDuration(0.2));
    EXPECT_EQ(m_button->outerScaleOnPressMode(), KRButtonView::OuterScaleOnPressModeImage);
    down(30, 30);
    EXPECT_DOUBLE_EQ(m_button->currentImageScale(), 0.5);
    EXPECT_DOUBLE_EQ(m_button->scale(), 1.0);
    // The 20 pt image shrinks to 10 pt around the centre (20, 20).
    QImage pressed = render();
    EXPECT_EQ(pressed.pixelColor(12, 20).alpha(), 0);
    EXPECT_EQ(pressed.pixelColor(20, 20).alpha(), 255);

    up(30, 30);
    EXPECT_NEAR(m_button->currentImageScale(), 0.5, 1e-6);
    m_window.updateIfNeeded();
    m_window.takeDirtyRect();
    KRClock::advance(0.1);
    EXPECT_NEAR(m_button->currentImageScale(), 0.75, 1e-3);
    EXPECT_FALSE(KRRectIsNull(m_window.takeDirtyRect())); // each frame of the animation redisplays
    KRClock::advance(0.15);
    EXPECT_DOUBLE_EQ(m_button->currentImageScale(), 1.0);
    EXPECT_EQ(render().pixelColor(12, 20).alpha(), 255);
}

TEST_F(KRButtonViewTests, SizeThatFitsIsTheImageSizePlusInsets) {
    m_button->setEdgeInsets(KREdgeInsetsMake(1, 2, 3, 4));
    EXPECT_EQ(m_button->sizeThatFits(KRSizeMake(500, 500)), KRSizeMake(26, 24));
    EXPECT_EQ(m_button->sizeThatFitsEdgeInsets(KRSizeZero, KREdgeInsetsMake(5, 5, 5, 5)), KRSizeMake(30, 30));
    m_button->setImage(nullptr);
    EXPECT_EQ(m_button->sizeThatFits(KRSizeZero), KRSizeMake(6, 4));
}

TEST_F(KRButtonViewTests, DrawsTheTintedImageCentredInTheInsetBounds) {
    m_button->setImageColor(QColor(0, 0, 255));
    m_button->setEdgeInsets(KREdgeInsetsMake(0, 10, 0, 0)); // content 10..40, image 15..35
    QImage canvas = render();
    EXPECT_EQ(canvas.pixelColor(16, 20), QColor(0, 0, 255));
    EXPECT_EQ(canvas.pixelColor(34, 20), QColor(0, 0, 255));
    EXPECT_EQ(canvas.pixelColor(13, 20).alpha(), 0);
    EXPECT_EQ(canvas.pixelColor(36, 20).alpha(), 0);

    m_button->setImageColor(QColor());
    EXPECT_EQ(render().pixelColor(16, 20), QColor(Qt::red));
}

TEST_F(KRButtonViewTests, UpdatesBatchRedisplayUntilTheOutermostEnd) {
    m_window.updateIfNeeded();
    m_window.takeDirtyRect();
    m_button->beginUpdates();
    m_button->beginUpdates();
    m_button->setImageColor(QColor(0, 0, 255));
    m_button->setImageAlpha(0.5);
    m_button->endUpdates();
    EXPECT_TRUE(KRRectIsNull(m_window.takeDirtyRect()));
    m_button->endUpdates();
    const KRRect dirty = m_window.takeDirtyRect();
    EXPECT_FALSE(KRRectIsNull(dirty));
    EXPECT_TRUE(KRRectContainsRect(dirty, m_button->frame()));

    m_button->setImageAlpha(0.7); // outside a batch: at once
    EXPECT_FALSE(KRRectIsNull(m_window.takeDirtyRect()));
}

TEST_F(KRButtonViewTests, LooksSetInsideABatchReadBackAtOnceAndStayAfterIt) {
    const auto pressed = KRImage::imageWithRepresentations({{filledImage(20, 20, Qt::blue), 1.0}}, true);
    m_button->beginUpdates();
    m_button->setImageAlpha(0.25);
    m_button->setEdgeInsets(KREdgeInsetsMake(1, 2, 3, 4));
    EXPECT_DOUBLE_EQ(m_button->imageAlpha(), 0.25);
    m_button->beginUpdates();
    m_button->setPressedImage(pressed);
    m_button->setImageAlphaWhenHovered(0.5);
    m_button->endUpdates();
    EXPECT_EQ(m_button->edgeInsets(), KREdgeInsetsMake(1, 2, 3, 4));
    m_button->endUpdates();
    EXPECT_DOUBLE_EQ(m_button->imageAlpha(), 0.25);
    EXPECT_EQ(m_button->edgeInsets(), KREdgeInsetsMake(1, 2, 3, 4));
    EXPECT_EQ(m_button->pressedImage(), pressed);
    EXPECT_EQ(m_button->imageAlphaWhenHovered(), std::optional<double>(0.5));

    // Looks changed after the batch leave the other buttons that showed the same looks alone.
    KRButtonView twin;
    twin.beginUpdates();
    twin.setImage(m_button->image());
    twin.setImageAlpha(0.25);
    twin.setEdgeInsets(KREdgeInsetsMake(1, 2, 3, 4));
    twin.setPressedImage(pressed);
    twin.setImageAlphaWhenHovered(0.5);
    twin.endUpdates();
    m_button->setImageAlpha(0.75);
    twin.beginUpdates();
    twin.setEdgeInsets(KREdgeInsetsZero);
    twin.endUpdates();
    EXPECT_DOUBLE_EQ(m_button->imageAlpha(), 0.75);
    EXPECT_EQ(m_button->edgeInsets(), KREdgeInsetsMake(1, 2, 3, 4));
    EXPECT_DOUBLE_EQ(twin.imageAlpha(), 0.25);
    EXPECT_EQ(twin.edgeInsets(), KREdgeInsetsZero);
}

TEST_F(KRButtonViewTests, ButtonsSetUpAlikeInBatchesShareTheirLooks) {
#if defined(__SANITIZE_ADDRESS__)
    GTEST_SKIP() << "the sanitizer's allocator keeps no count of bytes in use";
#endif
    const auto image = m_button->image();
    const auto setUp = [&image](KRButtonView& button) {
        button.beginUpdates();
        button.setImage(image);
        button.setImageColor(QColor(0, 0, 255));
        button.setImageAlpha(0.5);
        button.setEdgeInsets(KREdgeInsetsMake(1, 2, 3, 4));
        button.setImageAlphaWhenHighlighted(0.3);
        button.endUpdates();
    };
    constexpr int count = 64;
    // Far less than a block of looks per button: the allocator's bookkeeping varies by a few bytes.
    constexpr std::size_t allowancePerButton = 16;
    std::vector<std::unique_ptr<KRButtonView>> plain;
    std::vector<std::unique_ptr<KRButtonView>> alike;
    plain.reserve(count);
    alike.reserve(count + 1);
    alike.push_back(std::make_unique<KRButtonView>());
    setUp(*alike.back()); // the first one makes the shared block

    const auto beforePlain = mallinfo2().uordblks;
    for (int i = 0; i < count; ++i) {
        plain.push_back(std::make_unique<KRButtonView>());
    }
    const auto plainBytes = mallinfo2().uordblks - beforePlain;
    const auto beforeAlike = mallinfo2().uordblks;
    for (int i = 0; i < count; ++i) {
        alike.push_back(std::make_unique<KRButtonView>());
        setUp(*alike.back());
    }
    const auto alikeBytes = mallinfo2().uordblks - beforeAlike;
    EXPECT_LT(alikeBytes, plainBytes + count * allowancePerButton)
        << "no button keeps a copy of its own once its batch ends";
    EXPECT_DOUBLE_EQ(alike.back()->imageAlpha(), 0.5);
}

TEST_F(KRButtonViewTests, SettingALookItAlreadyHasStillRedisplays) {
    m_button->setImageAlpha(0.5);
    m_window.updateIfNeeded();
    m_window.takeDirtyRect();
    m_button->setImageAlpha(0.5);
    EXPECT_TRUE(KRRectContainsRect(m_window.takeDirtyRect(), m_button->frame()));
    m_button->beginUpdates();
    m_button->setImage(m_button->image());
    m_button->endUpdates();
    EXPECT_TRUE(KRRectContainsRect(m_window.takeDirtyRect(), m_button->frame()));
}
