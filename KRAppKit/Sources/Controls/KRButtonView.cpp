#include "Controls/KRButtonView.h"

#include "Animation/KRAnimationEngine.h"
#include "Animation/KRAnimationTransaction.h"
#include "Controls/KRImage.h"
#include "Foundation/KRClock.h"
#include "Foundation/KRSharedValues.h"
#include "Views/KREvent.h"
#include "Views/KRTrackingArea.h"

#include <QPainter>

#include <algorithm>

namespace {
// The key the image-mode scale animation reads its curve under (a block may set one per key).
constexpr const char* kImageScaleKey = "scale";
} // namespace

// Delegate defaults ----------------------------------------------------------------------------------------

bool KRButtonViewDelegate::buttonViewMouseDown(KRButtonView*, const KREvent&) {
    return false;
}
bool KRButtonViewDelegate::buttonViewMouseDragged(KRButtonView*, const KREvent&) {
    return false;
}
bool KRButtonViewDelegate::buttonViewMouseUp(KRButtonView*, const KREvent&) {
    return false;
}
bool KRButtonViewDelegate::buttonViewValidatePressed(KRButtonView*, bool proposedPressed) {
    return proposedPressed;
}
bool KRButtonViewDelegate::buttonViewValidateCanBecomeKeyView(KRButtonView*, bool proposedCanBecomeKeyView) {
    return proposedCanBecomeKeyView;
}

// Lifetime -------------------------------------------------------------------------------------------------

KRButtonView::KRButtonView(KRRect frame) : KRView(frame) {
    rebuildTrackingArea();
}

KRButtonView::~KRButtonView() = default;

// Looks ----------------------------------------------------------------------------------------------------

const KRButtonView::Appearance& KRButtonView::appearance() const {
    static const Appearance defaults;
    return m_appearance ? *m_appearance : defaults;
}

std::shared_ptr<const KRButtonView::Appearance> KRButtonView::sharedAppearance(const Appearance& appearance) {
    // A list's buttons go through the same sequence of appearances while they are set up, then a handful
    // of states.
    static KRSharedValues<Appearance, 32> recent;
    return recent.shared(appearance);
}

// A block only this button holds is its own: the cache lets go of the blocks it drops, and makes them
// mutable, so editing one in place is safe.
KRButtonView::Appearance& KRButtonView::ownAppearance() {
    if (!m_appearance || m_appearance.use_count() != 1) {
        m_appearance = std::make_shared<Appearance>(appearance());
    }
    return const_cast<Appearance&>(*m_appearance);
}

void KRButtonView::shareOwnAppearance() {
    if (m_appearance && m_appearance.use_count() == 1) {
        m_appearance = sharedAppearance(*m_appearance);
    }
}

void KRButtonView::setCursor(KRCursor cursor) {
    setAppearanceField(&Appearance::cursor, cursor);
}

void KRButtonView::noteLookChanged() {
    if (m_updateDepth > 0) {
        m_needsDisplayAfterUpdates = true;
        return;
    }
    setNeedsDisplay();
}

void KRButtonView::beginUpdates() {
    ++m_updateDepth;
}

void KRButtonView::endUpdates() {
    if (m_updateDepth == 0) {
        return;
    }
    if (--m_updateDepth == 0) {
        shareOwnAppearance();
    }
    if (m_updateDepth == 0 && m_needsDisplayAfterUpdates) {
        m_needsDisplayAfterUpdates = false;
        setNeedsDisplay();
    }
}

void KRButtonView::setImage(std::shared_ptr<KRImage> image) {
    setAppearanceField(&Appearance::image, std::move(image));
    noteLookChanged();
}

void KRButtonView::setPressedImage(std::shared_ptr<KRImage> image) {
    setAppearanceField(&Appearance::pressedImage, std::move(image));
    noteLookChanged();
}

void KRButtonView::setImageColor(const QColor& color) {
    setAppearanceField(&Appearance::imageColor, color);
    noteLookChanged();
}

void KRButtonView::setEdgeInsets(KREdgeInsets insets) {
    setAppearanceField(&Appearance::edgeInsets, insets);
    noteLookChanged();
}

void KRButtonView::setImageAlpha(double alpha) {
    setAppearanceField(&Appearance::imageAlpha, alpha);
    noteLookChanged();
}

void KRButtonView::setImageAlphaWhenPressed(std::optional<double> alpha) {
    setAppearanceField(&Appearance::imageAlphaWhenPressed, alpha);
    noteLookChanged();
}

void KRButtonView::setImageAlphaWhenHovered(std::optional<double> alpha) {
    setAppearanceField(&Appearance::imageAlphaWhenHovered, alpha);
    noteLookChanged();
}

void KRButtonView::setImageAlphaWhenHighlighted(std::optional<double> alpha) {
    setAppearanceField(&Appearance::imageAlphaWhenHighlighted, alpha);
    noteLookChanged();
}

void KRButtonView::setIgnoresImageAlpha(bool ignores) {
    setAppearanceField(&Appearance::ignoresImageAlpha, ignores);
    noteLookChanged();
}

void KRButtonView::setOuterScaleOnPress(double scale) {
    setAppearanceField(&Appearance::outerScaleOnPress, scale);
    if (m_pressed) {
        applyPressScale();
    }
    noteLookChanged();
}

void KRButtonView::setOuterScaleOnPressMode(int mode) {
    if (mode == outerScaleOnPressMode()) {
        return;
    }
    // Leaves no scale behind in the mode being left.
    if (outerScaleOnPressMode() == OuterScaleOnPressModeButton) {
        KRView::performWithoutAnimation([this] { setScale(1.0); });
    } else {
        m_imageScale = 1.0;
        m_imageScaleAnimation.reset();
    }
    setAppearanceField(&Appearance::outerScaleOnPressMode, mode);
    if (m_pressed) {
        applyPressScale();
    }
    noteLookChanged();
}

void KRButtonView::setOuterScaleAnimationFunction(EZSampledFunctionRef function) {
    setAppearanceField(&Appearance::outerScaleAnimationFunction, std::move(function));
    noteLookChanged();
}

double KRButtonView::currentImageAlpha() const {
    if (ignoresImageAlpha()) {
        return 1.0;
    }
    if (m_pressed) {
        return imageAlphaWhenPressed().value_or(imageAlpha());
    }
    if (m_highlighted) {
        return imageAlphaWhenHighlighted().value_or(imageAlpha());
    }
    if (m_hovered) {
        return imageAlphaWhenHovered().value_or(imageAlpha());
    }
    return imageAlpha();
}

std::shared_ptr<KRImage> KRButtonView::currentImage() const {
    if (m_pressed && pressedImage()) {
        return pressedImage();
    }
    return image();
}

double KRButtonView::currentImageScale() const {
    if (!m_imageScaleAnimation) {
        return m_imageScale;
    }
    const ImageScaleAnimation& animation = *m_imageScaleAnimation;
    const double progress = animation.function->valueAtTime(KRClock::now() - animation.beginTime);
    return animation.from + (m_imageScale - animation.from) * progress;
}

// State ----------------------------------------------------------------------------------------------------

void KRButtonView::setHighlighted(bool highlighted) {
    if (highlighted == m_highlighted) {
        return;
    }
    m_highlighted = highlighted;
    noteLookChanged();
}

void KRButtonView::setEnabled(bool enabled) {
    if (enabled == m_enabled) {
        return;
    }
    m_enabled = enabled;
    if (!enabled) {
        m_trackingMouse = false;
        m_delegateConsumedClick = false;
        setPressedState(false);
    }
    noteLookChanged();
}

void KRButtonView::revalidatePressed() {
    if (m_trackingMouse) {
        return; // the click in progress decides
    }
    setPressedState(validatePressed(false));
}

bool KRButtonView::validatePressed(bool proposed) {
    KRButtonViewDelegate* delegate = this->delegate();
    return delegate ? delegate->buttonViewValidatePressed(this, proposed) : proposed;
}

void KRButtonView::setPressedState(bool pressed) {
    if (pressed == m_pressed) {
        return;
    }
    m_pressed = pressed;
    if (pressed) {
        applyPressScale();
    } else {
        restoreScaleAnimated();
    }
    noteLookChanged();
}

void KRButtonView::applyPressScale() {
    if (outerScaleOnPressMode() == OuterScaleOnPressModeButton) {
        KRView::performWithoutAnimation([this] { setScale(outerScaleOnPress()); });
        return;
    }
    m_imageScaleAnimation.reset();
    m_imageScale = outerScaleOnPress();
}

void KRButtonView::restoreScaleAnimated() {
    KRView::performAnimated(true, [this](EZAnimationContext& context) {
        if (outerScaleAnimationFunction()) {
            context.setInterpolationFunction(outerScaleAnimationFunction());
        }
        if (outerScaleOnPressMode() == OuterScaleOnPressModeButton) {
            setScale(1.0);
            return;
        }
        // Image mode animates on the button's own clock, along the block's curve for the scale.
        const double from = currentImageScale();
        m_imageScale = 1.0;
        m_imageScaleAnimation.reset();
        EZSampledFunctionRef function = KRAnimationTransaction::functionForKey(kImageScaleKey);
        if (!function || from == 1.0) {
            return;
        }
        m_imageScaleAnimation = std::make_unique<ImageScaleAnimation>(
            ImageScaleAnimation{from, KRClock::now(), std::move(function)});
        beginAnimating();
    });
}

bool KRButtonView::advanceAnimationsToTime(double now) {
    bool running = KRView::advanceAnimationsToTime(now);
    if (m_imageScaleAnimation) {
        setNeedsDisplay();
        if (now - m_imageScaleAnimation->beginTime >= m_imageScaleAnimation->function->duration()) {
            m_imageScaleAnimation.reset();
        } else {
            running = true;
        }
    }
    return running;
}

// Action ---------------------------------------------------------------------------------------------------

KRButtonView::Actions& KRButtonView::mutableActions() {
    if (!m_actions) {
        m_actions = std::make_unique<Actions>();
    }
    return *m_actions;
}

void KRButtonView::setOnAction(std::function<void(KRButtonView&)> onAction) {
    Actions& actions = mutableActions();
    if (!onAction) {
        actions.onAction.reset();
        return;
    }
    actions.onAction = std::make_unique<std::function<void(KRButtonView&)>>(std::move(onAction));
}

const KRSelector& KRButtonView::action() const {
    static const KRSelector none;
    return m_actions ? m_actions->action : none;
}

void KRButtonView::performClick() {
    sendAction();
}

void KRButtonView::sendAction() {
    // The action may remove the button from its superview; keep it alive until we are done.
    const std::shared_ptr<KRView> keepAlive = sharedFromSuperview();
    if (!m_actions) {
        return;
    }
    if (KRObject* target = m_actions->target.get(); target && !m_actions->action.isNull()) {
        target->tryToPerform(m_actions->action, this);
    }
    if (m_actions && m_actions->onAction && *m_actions->onAction) {
        const std::function<void(KRButtonView&)> callback = *m_actions->onAction;
        callback(*this);
    }
}

// Delegate -------------------------------------------------------------------------------------------------

void KRButtonView::setDelegate(KRButtonViewDelegate* delegate, const KRObject* lifetimeOwner) {
    m_delegate.reset(delegate, lifetimeOwner);
}

KRButtonViewDelegate* KRButtonView::delegate() const {
    return m_delegate.get();
}

// Layout and drawing ---------------------------------------------------------------------------------------

KRSize KRButtonView::sizeThatFits(KRSize size) const {
    return sizeThatFitsEdgeInsets(size, edgeInsets());
}

KRSize KRButtonView::sizeThatFitsEdgeInsets(KRSize, KREdgeInsets insets) const {
    const KRSize imageSize = image() ? image()->size() : KRSizeZero;
    return KRSize{imageSize.width + insets.left + insets.right,
                  imageSize.height + insets.top + insets.bottom};
}

void KRButtonView::draw(QPainter& painter, KRRect) {
    const std::shared_ptr<KRImage> image = currentImage();
    if (!image) {
        return;
    }
    const KRRect bounds = this->bounds();
    const double contentX = bounds.origin.x + edgeInsets().left;
    const double contentY = bounds.origin.y + edgeInsets().top;
    const double contentWidth = bounds.size.width - edgeInsets().left - edgeInsets().right;
    const double contentHeight = bounds.size.height - edgeInsets().top - edgeInsets().bottom;
    const double midX = contentX + contentWidth / 2.0;
    const double midY = contentY + contentHeight / 2.0;

    const KRSize imageSize = image->size();
    const double scale = outerScaleOnPressMode() == OuterScaleOnPressModeImage ? currentImageScale() : 1.0;
    const double width = imageSize.width * scale;
    const double height = imageSize.height * scale;
    double x = midX - width / 2.0;
    double y = midY - height / 2.0;
    if (scale == 1.0) {
        // Whole points keep an unscaled bitmap sharp.
        x = KRRound(x);
        y = KRRound(y);
    }
    image->draw(painter, KRRectMake(x, y, width, height), currentImageAlpha(), imageColor());
}

bool KRButtonView::canBecomeKeyView() const {
    const bool proposed = KRView::canBecomeKeyView();
    KRButtonViewDelegate* delegate = this->delegate();
    return delegate ? delegate->buttonViewValidateCanBecomeKeyView(const_cast<KRButtonView*>(this), proposed)
                    : proposed;
}

bool KRButtonView::acceptsFirstMouse(const KREvent*) const {
    return true;
}

// Tracking -------------------------------------------------------------------------------------------------

void KRButtonView::rebuildTrackingArea() {
    const KRRect rect = bounds();
    if (m_trackingArea && m_trackingArea->rect() == rect) {
        return;
    }
    if (m_trackingArea) {
        removeTrackingArea(m_trackingArea.get());
    }
    m_trackingArea = std::make_shared<KRTrackingArea>(
        rect, KRTrackingMouseEnteredAndExited | KRTrackingCursorUpdate | KRTrackingActiveAlways, this);
    addTrackingArea(m_trackingArea);
}

void KRButtonView::updateTrackingAreas() {
    KRView::updateTrackingAreas();
    rebuildTrackingArea();
}

void KRButtonView::setFrameSize(KRSize size) {
    KRView::setFrameSize(size);
    rebuildTrackingArea();
}

void KRButtonView::viewDidMoveToWindow() {
    KRView::viewDidMoveToWindow();
    rebuildTrackingArea();
    if (!window() && m_hovered) {
        m_hovered = false;
        noteLookChanged();
    }
}

void KRButtonView::mouseEntered(const KREvent& event) {
    if (event.trackingArea() && event.trackingArea() != m_trackingArea.get()) {
        KRView::mouseEntered(event);
        return;
    }
    if (!m_hovered) {
        m_hovered = true;
        noteLookChanged();
    }
}

void KRButtonView::mouseExited(const KREvent& event) {
    if (event.trackingArea() && event.trackingArea() != m_trackingArea.get()) {
        KRView::mouseExited(event);
        return;
    }
    if (m_hovered) {
        m_hovered = false;
        noteLookChanged();
    }
}

void KRButtonView::cursorUpdate(const KREvent&) {
    cursor().set();
}

// Mouse ----------------------------------------------------------------------------------------------------

bool KRButtonView::isInside(const KREvent& event) const {
    return KRRectContainsPoint(bounds(), event.locationInView(this));
}

void KRButtonView::mouseDown(const KREvent& event) {
    m_trackingMouse = false;
    m_delegateConsumedClick = false;
    if (!m_enabled) {
        return;
    }
    m_trackingMouse = true;
    // What the delegate does may take the button out of its tree (a row rebuilt); it lives to the end here.
    const std::shared_ptr<KRView> keepAlive = sharedFromSuperview();
    if (KRButtonViewDelegate* delegate = this->delegate();
        delegate && delegate->buttonViewMouseDown(this, event)) {
        m_delegateConsumedClick = true;
        return;
    }
    setPressedState(validatePressed(true));
}

void KRButtonView::mouseDragged(const KREvent& event) {
    if (!m_trackingMouse) {
        return;
    }
    const std::shared_ptr<KRView> keepAlive = sharedFromSuperview();
    KRButtonViewDelegate* delegate = this->delegate();
    if (delegate && delegate->buttonViewMouseDragged(this, event)) {
        return;
    }
    if (m_delegateConsumedClick) {
        return;
    }
    setPressedState(validatePressed(isInside(event)));
}

void KRButtonView::mouseUp(const KREvent& event) {
    if (!m_trackingMouse) {
        return;
    }
    m_trackingMouse = false;
    const bool consumedClick = m_delegateConsumedClick;
    m_delegateConsumedClick = false;
    const std::shared_ptr<KRView> keepAlive = sharedFromSuperview();
    KRButtonViewDelegate* delegate = this->delegate();
    const bool consumedUp = delegate && delegate->buttonViewMouseUp(this, event);
    if (consumedClick) {
        return;
    }
    const bool fire = !consumedUp && m_pressed && isInside(event);
    // The press ends before the action runs, so the action sees the button at rest. A consumed up still
    // ends the press: the button would otherwise stay pressed with no click left to release it.
    setPressedState(validatePressed(false));
    if (fire) {
        sendAction();
    }
}
