#pragma once

#include "Animation/EZSampledFunction.h"
#include "Foundation/KRObject.h"
#include "Foundation/KRSelector.h"
#include "Foundation/KRWeakDelegate.h"
#include "Views/KRCursor.h"
#include "Views/KRView.h"

#include <QColor>

#include <functional>
#include <memory>
#include <optional>

class KRButtonView;
class KRImage;
class KRTrackingArea;

// Lets an owner take over parts of a button's mouse handling. A pure interface, so a view (already a
// KRObject) can implement it without a second KRObject base; the button watches the lifetime of the
// KRObject given with it.
class KRButtonViewDelegate {
public:
    virtual ~KRButtonViewDelegate() = default;

    // Answering true consumes the event: the button does no press tracking for it.
    virtual bool buttonViewMouseDown(KRButtonView* buttonView, const KREvent& event);
    virtual bool buttonViewMouseDragged(KRButtonView* buttonView, const KREvent& event);
    virtual bool buttonViewMouseUp(KRButtonView* buttonView, const KREvent& event);
    // Decides the pressed state the button proposes (a delegate may hold the button pressed).
    virtual bool buttonViewValidatePressed(KRButtonView* buttonView, bool proposedPressed);
    virtual bool buttonViewValidateCanBecomeKeyView(KRButtonView* buttonView, bool proposedCanBecomeKeyView);
};

// An image button: shows its image (or its pressed image while pressed), tinted and faded by state, and
// sends its action when a click is released inside it.
//
// Alphas: with ignoresImageAlpha (the default) the image always draws opaque. Otherwise the state picks
// imageAlphaWhenPressed, then WhenHighlighted, then WhenHovered, then imageAlpha; a state alpha that was
// never set (std::nullopt) falls back to imageAlpha.
//
// Setters store and redisplay; between beginUpdates and endUpdates they only mark, and the outermost
// endUpdates redisplays once.
class KRButtonView : public KRView {
public:
    enum OuterScaleOnPressMode : int {
        OuterScaleOnPressModeImage = 0,  // scales the image inside the button
        OuterScaleOnPressModeButton = 1, // scales the whole button about its centre (may leave its frame)
    };

    explicit KRButtonView(KRRect frame = KRRectZero);
    ~KRButtonView() override;

    // Images and looks -----------------------------------------------------------------------------------
    const std::shared_ptr<KRImage>& image() const { return appearance().image; }
    void setImage(std::shared_ptr<KRImage> image);
    // Shown while pressed; null shows image.
    const std::shared_ptr<KRImage>& pressedImage() const { return appearance().pressedImage; }
    void setPressedImage(std::shared_ptr<KRImage> image);
    // Tints template images; an invalid colour draws the image as is.
    QColor imageColor() const { return appearance().imageColor; }
    void setImageColor(const QColor& color);
    KREdgeInsets edgeInsets() const { return appearance().edgeInsets; }
    void setEdgeInsets(KREdgeInsets insets);

    double imageAlpha() const { return appearance().imageAlpha; }
    void setImageAlpha(double alpha);
    std::optional<double> imageAlphaWhenPressed() const { return appearance().imageAlphaWhenPressed; }
    void setImageAlphaWhenPressed(std::optional<double> alpha);
    std::optional<double> imageAlphaWhenHovered() const { return appearance().imageAlphaWhenHovered; }
    void setImageAlphaWhenHovered(std::optional<double> alpha);
    std::optional<double> imageAlphaWhenHighlighted() const { return appearance().imageAlphaWhenHighlighted; }
    void setImageAlphaWhenHighlighted(std::optional<double> alpha);
    bool ignoresImageAlpha() const { return appearance().ignoresImageAlpha; }
    void setIgnoresImageAlpha(bool ignores);

    double outerScaleOnPress() const { return appearance().outerScaleOnPress; }
    void setOuterScaleOnPress(double scale);
    int outerScaleOnPressMode() const { return appearance().outerScaleOnPressMode; }
    void setOuterScaleOnPressMode(int mode);
    // The curve of the return to full size on release (null: the default animation curve). The press
    // itself applies at once.
    const EZSampledFunctionRef& outerScaleAnimationFunction() const {
        return appearance().outerScaleAnimationFunction;
    }
    void setOuterScaleAnimationFunction(EZSampledFunctionRef function);

    // What draws now: the state's alpha (1 when alphas are ignored), the state's image, and the image's
    // scale inside the button (image mode; follows the running animation).
    double currentImageAlpha() const;
    std::shared_ptr<KRImage> currentImage() const;
    double currentImageScale() const;

    void beginUpdates();
    void endUpdates();

    // State ----------------------------------------------------------------------------------------------
    // Set by the owner (a selected row, an open menu).
    bool isHighlighted() const { return m_highlighted; }
    void setHighlighted(bool highlighted);
    bool isHovered() const { return m_hovered; }
    bool isPressed() const { return m_pressed; }
    bool isEnabled() const { return m_enabled; }
    // Disabling ends a press in progress.
    void setEnabled(bool enabled);
    // Asks the delegate again whether the button stays pressed (for a delegate that held it pressed).
    void revalidatePressed();

    KRCursor cursor() const { return appearance().cursor; }
    void setCursor(KRCursor cursor);

    // Action ---------------------------------------------------------------------------------------------
    KRObject* target() const { return m_actions ? m_actions->target.get() : nullptr; }
    // The target is dropped once it is destroyed. With a null lifetimeOwner the owner must clear the target
    // itself before it goes away (a row targeting its own check box, say), and no token is made for it.
    void setTarget(KRObject* target) { setTarget(target, target); }
    void setTarget(KRObject* target, const KRObject* lifetimeOwner) {
        mutableActions().target.reset(target, lifetimeOwner);
    }
    const KRSelector& action() const;
    void setAction(const KRSelector& action) { mutableActions().action = action; }
    // Runs after target/action, for C++ callers.
    void setOnAction(std::function<void(KRButtonView&)> onAction);
    // Sends the action as a click would.
    void performClick();

    // Delegate -------------------------------------------------------------------------------------------
    // The delegate is dropped once lifetimeOwner is destroyed. With a null lifetimeOwner the owner must
    // clear the delegate itself before it goes away.
    void setDelegate(KRButtonViewDelegate* delegate, const KRObject* lifetimeOwner);
    template <class T> void setDelegate(T* delegate) {
        setDelegate(static_cast<KRButtonViewDelegate*>(delegate), static_cast<const KRObject*>(delegate));
    }
    void setDelegate(std::nullptr_t) { setDelegate(nullptr, nullptr); }
    KRButtonViewDelegate* delegate() const;

    // Layout ---------------------------------------------------------------------------------------------
    // The image's size plus the edge insets (the insets alone without an image).
    KRSize sizeThatFits(KRSize size) const override;
    KRSize sizeThatFitsEdgeInsets(KRSize size, KREdgeInsets insets) const;

    // KRView ---------------------------------------------------------------------------------------------
    void draw(QPainter& painter, KRRect dirtyRect) override;
    bool canBecomeKeyView() const override;
    bool acceptsFirstMouse(const KREvent* event) const override;
    void updateTrackingAreas() override;
    void setFrameSize(KRSize size) override;
    void viewDidMoveToWindow() override;
    bool advanceAnimationsToTime(double now) override;

    // KRResponder ----------------------------------------------------------------------------------------
    void mouseDown(const KREvent& event) override;
    void mouseDragged(const KREvent& event) override;
    void mouseUp(const KREvent& event) override;
    void mouseEntered(const KREvent& event) override;
    void mouseExited(const KREvent& event) override;
    void cursorUpdate(const KREvent& event) override;

private:
    struct ImageScaleAnimation {
        double from;
        double beginTime;
        EZSampledFunctionRef function;
    };

    void noteLookChanged();
    bool validatePressed(bool proposed);
    void setPressedState(bool pressed);
    void applyPressScale();
    void restoreScaleAnimated();
    bool isInside(const KREvent& event) const;
    void sendAction();
    void rebuildTrackingArea();

    // What the button looks like in each state. Buttons configured alike (a list's check boxes) share
    // one immutable block; a setter swaps in a changed copy.
    struct Appearance {
        std::shared_ptr<KRImage> image;
        std::shared_ptr<KRImage> pressedImage;
        QColor imageColor;
        KREdgeInsets edgeInsets;
        double imageAlpha = 1.0;
        std::optional<double> imageAlphaWhenPressed;
        std::optional<double> imageAlphaWhenHovered;
        std::optional<double> imageAlphaWhenHighlighted;
        double outerScaleOnPress = 1.0;
        int outerScaleOnPressMode = OuterScaleOnPressModeImage;
        EZSampledFunctionRef outerScaleAnimationFunction;
        KRCursor cursor = KRCursor::arrowCursor();
        bool ignoresImageAlpha = true;

        friend bool operator==(const Appearance&, const Appearance&) = default;
    };
    // Where a click goes; only buttons that send actions have one.
    struct Actions {
        KRWeakDelegate<KRObject> target;
        KRSelector action;
        // Few buttons have a callback; kept apart so the block of those that only send actions stays small.
        std::unique_ptr<std::function<void(KRButtonView&)>> onAction;
    };

    const Appearance& appearance() const;
    template <class Change> void changeAppearance(Change change) {
        if (m_updateDepth > 0) {
            change(ownAppearance());
            return;
        }
        Appearance changed = appearance();
        change(changed);
        m_appearance = sharedAppearance(changed);
    }
    // Between beginUpdates and endUpdates the button edits a block of its own, shared once the outermost
    // endUpdates comes: a button set up look by look then finds one shared block, not one per step.
    Appearance& ownAppearance();
    void shareOwnAppearance();
    // Stores one look. Storing the value a look already has keeps the block: rows set every look of their
    // buttons on each update, and most stay as they were.
    template <class Field, class Value> void setAppearanceField(Field Appearance::*field, Value&& value) {
        if (appearance().*field == value) {
            return;
        }
        changeAppearance([&](Appearance& appearance) { appearance.*field = std::forward<Value>(value); });
    }
    static std::shared_ptr<const Appearance> sharedAppearance(const Appearance& appearance);
    Actions& mutableActions();

    std::shared_ptr<const Appearance> m_appearance;
    std::unique_ptr<Actions> m_actions;
    // Image mode: the model scale of the image and its return animation, if one runs.
    double m_imageScale = 1.0;
    std::unique_ptr<ImageScaleAnimation> m_imageScaleAnimation;
    KRWeakDelegate<KRButtonViewDelegate> m_delegate;
    std::shared_ptr<KRTrackingArea> m_trackingArea;

    int m_updateDepth = 0;
    bool m_needsDisplayAfterUpdates = false;
    bool m_highlighted = false;
    bool m_hovered = false;
    bool m_pressed = false;
    bool m_enabled = true;
    // The current click: whether it is tracked at all, and whether the delegate took it.
    bool m_trackingMouse = false;
    bool m_delegateConsumedClick = false;
};
