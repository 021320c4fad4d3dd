#include "KRCheckListItemView.h"

#include "KRCheckListDefaults.h"
#include "KRCheckListResources.h"

#include "Animation/EZInterpolationFunctions.h"
#include "Animation/KRAnimationDurationMultiplier.h"
#include "Controls/KRDefaults.h"
#include "Controls/KRImage.h"
#include "Foundation/KRAssertionHandler.h"
#include "Foundation/KRTrace.h"
#include "Views/KRCursor.h"
#include "Views/KREvent.h"
#include "Views/KRTrackingArea.h"

#include <cmath>

const char* const KRCheckListItemViewObserveKeyPathsTriggeringSetNeedsUpdateContext =
    "KRCheckListItemViewObserveKeyPathsTriggeringSetNeedsUpdateContext";
const char* const KRCheckListItemViewObserveKeyPathsTriggeringSetNeedsLayoutContext =
    "KRCheckListItemViewObserveKeyPathsTriggeringSetNeedsLayoutContext";
const char* const KRCheckListItemViewObserveKeyPathsTriggeringUpdateHighlightViewContext =
    "KRCheckListItemViewObserveKeyPathsTriggeringUpdateHighlightViewContext";

namespace {

const void* const updateContext = &KRCheckListItemViewObserveKeyPathsTriggeringSetNeedsUpdateContext;
const void* const layoutContext = &KRCheckListItemViewObserveKeyPathsTriggeringSetNeedsLayoutContext;
const void* const highlightContext = &KRCheckListItemViewObserveKeyPathsTriggeringUpdateHighlightViewContext;

constexpr unsigned oldAndNew = KRKeyValueObservingOptionOld | KRKeyValueObservingOptionNew;

struct ObservedKeyPath {
    const char* keyPath;
    unsigned options;
    const void* context;
};

// Registered in this order at load and removed in the reverse order at unload. "showsHandle" names no key
// of the row; the registration is kept and simply never fires.
const ObservedKeyPath observedKeyPaths[] = {
    {"title", oldAndNew, updateContext},
    {"placeholder", oldAndNew, updateContext},
    {"status", oldAndNew, updateContext},
    {"edited", oldAndNew, updateContext},
    {"selected", oldAndNew, updateContext},
    {"dragged", oldAndNew, updateContext},
    {"showsHandle", oldAndNew, updateContext},
    {"minHeight", KRKeyValueObservingOptionNone, layoutContext},
    {"drawsTopDivider", oldAndNew, updateContext},
    {"drawsBottomDivider", oldAndNew, updateContext},
    {"drawsShadow", KRKeyValueObservingOptionNone, updateContext},
    {"highlighted", KRKeyValueObservingOptionNone, highlightContext},
};

const KRSelector& checkBoxActionSelector() {
    static const KRSelector selector("checkListItemViewHandleActionForCheckBoxButton:");
    return selector;
}

// Row geometry that is not a shared default: offsets of the controls and gaps around the title.
constexpr double largeBound = 99999999.0;
constexpr double checkBoxTop = 1.0;
constexpr double checkBoxLeftInset = 5.0;
constexpr double checkBoxWidthExtra = 3.0;
constexpr double titleGapAfterCheckBox = 3.0;
constexpr double titleGapBeforeHandle = 5.0;
constexpr double handleRightMargin = 2.0;
constexpr double handleTop = 6.0;
constexpr double dividerLeftInset = 6.0;

constexpr KREdgeInsets handleEdgeInsets{4.0, 4.0, 2.0, 4.0};
constexpr double handleAlphaWhenHoveredOrHighlighted = 0.3;
constexpr double checkBoxOuterScaleOnPress = 1.25;
constexpr double checkBoxOuterScaleDuration = 0.15;
constexpr double shapeShadowRadius = 3.0;
constexpr KRSize shapeShadowOffset{0.0, 1.0};
constexpr double shapeShadowOpacityWhileDragged = 0.1;
constexpr double highlightAlpha = 0.1;
constexpr double highlightFadeOutDuration = 0.5;
constexpr double editedFillFraction = 0.1;
constexpr double selectedFillFraction = 0.35;
constexpr double shapeBorderAlpha = 0.1;
constexpr double handleAlphaWhenActive = 0.2;
constexpr double finishedAlpha = 0.5;
constexpr double pressedImageScale = 2.0;

// What the state of a row looks like.
struct RowLooks {
    QColor shapeFill = KRDefaults::clearColor();
    QColor shapeBorderColor = KRDefaults::clearColor();
    QColor handleImageColor = KRDefaults::blackColor();
    double handleImageAlpha = 0.0;
    std::shared_ptr<KRImage> checkBoxImage;
    QColor checkBoxImageColor;
    QColor titleTextColor;
    double topDividerAlpha = 0.0;
    double bottomDividerAlpha = 0.0;
    bool strikethrough = false;
};

void applyShapeLooks(RowLooks& looks, bool edited, bool selectedOrDragged) {
    if (edited) {
        looks.shapeFill = KRDefaults::blendedColor(KRDefaults::whiteColor(), editedFillFraction,
                                                   KRDefaults::manateeGrayColor());
        looks.shapeBorderColor = KRDefaults::colorWithAlpha(KRDefaults::manateeGrayColor(), shapeBorderAlpha);
        looks.handleImageColor = KRDefaults::sharkBlackColor();
        looks.handleImageAlpha = handleAlphaWhenActive;
    }
    if (selectedOrDragged) {
        looks.shapeFill = KRDefaults::blendedColor(KRDefaults::whiteColor(), selectedFillFraction,
                                                   KRDefaults::vantorBlue3Color());
        looks.shapeBorderColor = KRDefaults::colorWithAlpha(KRDefaults::vantorBlue3Color(), shapeBorderAlpha);
        looks.handleImageColor = KRDefaults::sharkBlackColor();
        looks.handleImageAlpha = handleAlphaWhenActive;
    }
}

void applyStatusLooks(RowLooks& looks, KRUInteger status) {
    const QColor finishedColor =
        KRDefaults::colorWithAlpha(KRCheckListDefaults::defaultTextColor(), finishedAlpha);
    switch (status) {
    case 1:
        looks.checkBoxImage = KRCheckListResources::checkboxCompletedImage();
        looks.checkBoxImageColor = finishedColor;
        looks.titleTextColor = finishedColor;
        break;
    case 2:
        looks.checkBoxImage = KRCheckListResources::checkboxCanceledImage();
        looks.checkBoxImageColor = finishedColor;
        looks.titleTextColor = finishedColor;
        looks.strikethrough = true;
        break;
    default:
        looks.checkBoxImage = KRCheckListResources::checkboxNormalImage();
        looks.checkBoxImageColor = KRDefaults::vantorBlue8Color();
        looks.titleTextColor = KRCheckListDefaults::defaultTextColor();
        break;
    }
}

KRParagraphStyle titleParagraphStyle(double lineHeight) {
    KRParagraphStyle style;
    style.tighteningFactorForTruncation = 0.0;
    style.minimumLineHeight = lineHeight;
    style.maximumLineHeight = lineHeight;
    return style;
}

// Rows in the same state share one attribute set instead of each keeping a copy, and their title strings
// share it too: a list has only a few distinct sets (title per status, placeholder).
std::shared_ptr<const KRTextAttributes> sharedAttributes(const KRTextAttributes& attributes) {
    return KRAttributedString::sharedAttributes(attributes);
}

KRTextAttributes attributesOrNone(const std::shared_ptr<const KRTextAttributes>& attributes) {
    return attributes ? *attributes : KRTextAttributes();
}

std::shared_ptr<KRView> makeIdentifiedView(const QString& identifier) {
    auto view = std::make_shared<KRView>();
    view->setIdentifier(identifier);
    return view;
}

} // namespace

// Layout record
// ------------------------------------------------------------------------------------------------------

const QStringList& KRCheckListItemViewLayout::keys() {
    static const QStringList keys{
        QStringLiteral("shapeViewFrame"),
        QStringLiteral("highlightViewFrame"),
        QStringLiteral("maskViewFrame"),
        QStringLiteral("checkBoxButtonViewFrame"),
        QStringLiteral("checkBoxButtonViewEdgeInsets"),
        QStringLiteral("handleButtonViewFrame"),
        QStringLiteral("titleTextFieldFrame"),
        QStringLiteral("topDividerViewFrame"),
        QStringLiteral("bottomDividerViewFrame"),
        QStringLiteral("sizeThatFits"),
        QStringLiteral("size"),
    };
    return keys;
}

QVariantMap KRCheckListItemViewLayout::dictionary() const {
    const QVariantList values{
        QVariant::fromValue(shapeViewFrame),
        QVariant::fromValue(highlightViewFrame),
        QVariant::fromValue(maskViewFrame),
        QVariant::fromValue(checkBoxButtonViewFrame),
        QVariant::fromValue(checkBoxButtonViewEdgeInsets),
        QVariant::fromValue(handleButtonViewFrame),
        QVariant::fromValue(titleTextFieldFrame),
        QVariant::fromValue(topDividerViewFrame),
        QVariant::fromValue(bottomDividerViewFrame),
        QVariant::fromValue(sizeThatFits),
        QVariant::fromValue(size),
    };
    QVariantMap dictionary;
    for (qsizetype i = 0; i < values.size(); ++i) {
        dictionary.insert(keys().at(i), values.at(i));
    }
    return dictionary;
}

// Construction
// ------------------------------------------------------------------------------------------------------

KRCheckListItemView::KRCheckListItemView(KRRect frame) : KRView(frame) {
    checkListItemViewLoad();
}

KRCheckListItemView::~KRCheckListItemView() {
    checkListItemViewUnload();
}

void KRCheckListItemView::checkListItemViewLoad() {
    checkListItemViewSetUpSelf();
    checkListItemViewSetUpShapeView();
    checkListItemViewSetUpHighlightView();
    checkListItemViewSetUpMaskView();
    checkListItemViewSetUpCheckBoxButtonView();
    checkListItemViewSetUpTitleTextField();
    checkListItemViewSetUpHandleButtonView();
    checkListItemViewSetUpTopDividerView();
    checkListItemViewSetUpBottomDividerView();
    checkListItemViewHookUp();
    checkListItemViewBeginObservingKeyPaths();
    checkListItemViewBeginTrackingMouse();
}

void KRCheckListItemView::checkListItemViewUnload() {
    checkListItemViewEndTrackingMouse();
    checkListItemViewEndObservingKeyPaths();
    checkListItemViewBreakUp();
    checkListItemViewTearDownBottomDividerView();
    checkListItemViewTearDownTopDividerView();
    checkListItemViewTearDownHandleButtonView();
    checkListItemViewTearDownTitleTextField();
    checkListItemViewTearDownCheckBoxButtonView();
    checkListItemViewTearDownMaskView();
    checkListItemViewTearDownHighlightView();
    checkListItemViewTearDownShapeView();
    checkListItemViewTearDownSelf();
}

void KRCheckListItemView::checkListItemViewSetUpSelf() {
    KRTrace::step(this, "checkListItemViewSetUpSelf");
    // The drag shadow of the shape falls outside the row.
    setMasksToBounds(false);
    setStatus(0);
    setMinHeight(0.0);
}

void KRCheckListItemView::checkListItemViewTearDownSelf() {
    KRTrace::step(this, "checkListItemViewTearDownSelf");
    setMinHeight(0.0);
    setStatus(0);
}

void KRCheckListItemView::checkListItemViewSetUpShapeView() {
    KRTrace::step(this, "checkListItemViewSetUpShapeView");
    m_shapeView = makeIdentifiedView(QStringLiteral("shapeView"));
    m_shapeView->setShadowRadius(shapeShadowRadius);
    m_shapeView->setShadowOffset(shapeShadowOffset);
    m_shapeView->setBorderWidth(KRCheckListDefaults::borderWidth());
    m_shapeView->setCornerRadius(KRCheckListDefaults::cornerRadius());
}

void KRCheckListItemView::checkListItemViewTearDownShapeView() {
    KRTrace::step(this, "checkListItemViewTearDownShapeView");
    m_shapeView.reset();
}

void KRCheckListItemView::checkListItemViewSetUpHighlightView() {
    KRTrace::step(this, "checkListItemViewSetUpHighlightView");
    m_highlightView = makeIdentifiedView(QStringLiteral("highlightView"));
    m_highlightView->setIgnoresMouseEvents(true);
    m_highlightView->setCornerRadius(KRCheckListDefaults::cornerRadius());
    m_highlightView->setBackgroundColor(KRDefaults::manateeGrayColor());
    m_highlightView->setAlphaValue(0.0);
}

void KRCheckListItemView::checkListItemViewTearDownHighlightView() {
    KRTrace::step(this, "checkListItemViewTearDownHighlightView");
    m_highlightView.reset();
}

void KRCheckListItemView::checkListItemViewSetUpMaskView() {
    KRTrace::step(this, "checkListItemViewSetUpMaskView");
    m_maskView = makeIdentifiedView(QStringLiteral("maskView"));
    m_maskView->setMasksToBounds(true);
}

void KRCheckListItemView::checkListItemViewTearDownMaskView() {
    KRTrace::step(this, "checkListItemViewTearDownMaskView");
    m_maskView.reset();
}

void KRCheckListItemView::checkListItemViewSetUpCheckBoxButtonView() {
    KRTrace::step(this, "checkListItemViewSetUpCheckBoxButtonView");
    m_checkBoxButtonView = std::make_shared<KRButtonView>();
    KRButtonView& checkBox = *m_checkBoxButtonView;
    checkBox.beginUpdates();
    checkBox.setIgnoresImageAlpha(false);
    checkBox.setImage(KRCheckListResources::checkboxNormalImage());
    checkBox.setImageAlphaWhenPressed(1.0);
    checkBox.setOuterScaleOnPress(checkBoxOuterScaleOnPress);
    checkBox.setOuterScaleOnPressMode(KRButtonView::OuterScaleOnPressModeButton);
    checkBox.setOuterScaleAnimationFunction(EZInterpolationFunctions::easeInOutWithDuration(
        checkBoxOuterScaleDuration * KRAnimationDurationMultiplier));
    // The row clears the target when it tears the check box down, so nothing needs to watch the row.
    checkBox.setTarget(this, nullptr);
    checkBox.setAction(checkBoxActionSelector());
    checkBox.setCursor(KRCursor::arrowCursor());
    checkBox.endUpdates();
}

void KRCheckListItemView::checkListItemViewTearDownCheckBoxButtonView() {
    KRTrace::step(this, "checkListItemViewTearDownCheckBoxButtonView");
    m_checkBoxButtonView->setTarget(nullptr);
    m_checkBoxButtonView.reset();
}

void KRCheckListItemView::checkListItemViewSetUpTitleTextField() {
    KRTrace::step(this, "checkListItemViewSetUpTitleTextField");
    m_titleTextField = std::make_shared<KRCheckListItemTitleTextField>();
    KRCheckListItemTitleTextField& field = *m_titleTextField;
    field.setStringValue(QString());
    field.setPlaceholderString(QString());
    field.setBordered(false);
    field.setWantsLayer(true);
    field.setLayerContentsRedrawPolicy(1);
    field.setLineBreakMode(KRLineBreakByWordWrapping);
    field.setEditable(false);
    field.setDrawsBackground(false);
    field.setFont(KRCheckListDefaults::font());
    field.setAllowsEditingTextAttributes(true);
}

void KRCheckListItemView::checkListItemViewTearDownTitleTextField() {
    KRTrace::step(this, "checkListItemViewTearDownTitleTextField");
    m_titleTextField.reset();
}

void KRCheckListItemView::checkListItemViewSetUpHandleButtonView() {
    KRTrace::step(this, "checkListItemViewSetUpHandleButtonView");
    m_handleButtonView = std::make_shared<KRButtonView>();
    KRButtonView& handle = *m_handleButtonView;
    handle.beginUpdates();
    handle.setEdgeInsets(handleEdgeInsets);
    handle.setIgnoresImageAlpha(false);
    handle.setImage(KRCheckListResources::handleImage());
    handle.setImageAlpha(0.0);
    handle.setImageAlphaWhenHovered(handleAlphaWhenHoveredOrHighlighted);
    handle.setImageAlphaWhenHighlighted(handleAlphaWhenHoveredOrHighlighted);
    handle.setCursor(KRCursor::arrowCursor());
    handle.endUpdates();
}

void KRCheckListItemView::checkListItemViewTearDownHandleButtonView() {
    KRTrace::step(this, "checkListItemViewTearDownHandleButtonView");
    m_handleButtonView.reset();
}

void KRCheckListItemView::checkListItemViewSetUpTopDividerView() {
    KRTrace::step(this, "checkListItemViewSetUpTopDividerView");
    m_topDividerView = makeIdentifiedView(QStringLiteral("topDividerView"));
    m_topDividerView->setBackgroundColor(KRCheckListDefaults::dividerColor());
}

void KRCheckListItemView::checkListItemViewTearDownTopDividerView() {
    KRTrace::step(this, "checkListItemViewTearDownTopDividerView");
    m_topDividerView.reset();
}

void KRCheckListItemView::checkListItemViewSetUpBottomDividerView() {
    KRTrace::step(this, "checkListItemViewSetUpBottomDividerView");
    m_bottomDividerView = makeIdentifiedView(QStringLiteral("bottomDividerView"));
    m_bottomDividerView->setBackgroundColor(KRCheckListDefaults::dividerColor());
}

void KRCheckListItemView::checkListItemViewTearDownBottomDividerView() {
    KRTrace::step(this, "checkListItemViewTearDownBottomDividerView");
    m_bottomDividerView.reset();
}

void KRCheckListItemView::checkListItemViewHookUp() {
    KRTrace::step(this, "checkListItemViewHookUp");
    reserveSubviews(2);
    m_shapeView->reserveSubviews(1);
    m_maskView->reserveSubviews(5);
    addSubview(m_shapeView);
    m_shapeView->addSubview(m_maskView);
    m_maskView->addSubview(m_checkBoxButtonView);
    m_maskView->addSubview(m_titleTextField);
    m_maskView->addSubview(m_handleButtonView);
    m_maskView->addSubview(m_topDividerView);
    m_maskView->addSubview(m_bottomDividerView);
    addSubview(m_highlightView);
    // The row clears these in its break-up, before it goes: no lifetime needs watching.
    m_checkBoxButtonView->setDelegate(static_cast<KRButtonViewDelegate*>(this), nullptr);
    m_titleTextField->setDelegate(static_cast<KRTextFieldDelegate*>(this), nullptr);
    m_handleButtonView->setDelegate(static_cast<KRButtonViewDelegate*>(this), nullptr);
}

void KRCheckListItemView::checkListItemViewBreakUp() {
    KRTrace::step(this, "checkListItemViewBreakUp");
    m_handleButtonView->setDelegate(nullptr);
    m_titleTextField->setDelegate(nullptr);
    m_checkBoxButtonView->setDelegate(nullptr);
    m_bottomDividerView->removeFromSuperview();
    m_topDividerView->removeFromSuperview();
    m_handleButtonView->removeFromSuperview();
    m_titleTextField->removeFromSuperview();
    m_checkBoxButtonView->removeFromSuperview();
    m_maskView->removeFromSuperview();
    m_shapeView->removeFromSuperview();
}

void KRCheckListItemView::checkListItemViewBeginObservingKeyPaths() {
    KRTrace::step(this, "checkListItemViewBeginObservingKeyPaths");
    reserveObservations(std::size(observedKeyPaths));
    for (const ObservedKeyPath& observed : observedKeyPaths) {
        addObserver(this, observed.keyPath, observed.options, observed.context);
    }
}

void KRCheckListItemView::checkListItemViewEndObservingKeyPaths() {
    KRTrace::step(this, "checkListItemViewEndObservingKeyPaths");
    for (auto it = std::rbegin(observedKeyPaths); it != std::rend(observedKeyPaths); ++it) {
        removeObserver(this, it->keyPath, it->context);
    }
}

void KRCheckListItemView::checkListItemViewBeginTrackingMouse() {
    KRTrace::step(this, "checkListItemViewBeginTrackingMouse");
    const KRRect titleFrame = m_titleTextField->frame();
    const KRRect rect{titleFrame.origin.x, 0.0, titleFrame.size.width, bounds().size.height};
    m_textTrackingArea = std::make_shared<KRTrackingArea>(
        rect, KRTrackingCursorUpdate | KRTrackingActiveAlways, this, QVariantMap());
    addTrackingArea(m_textTrackingArea);
}

void KRCheckListItemView::checkListItemViewEndTrackingMouse() {
    KRTrace::step(this, "checkListItemViewEndTrackingMouse");
    removeTrackingArea(m_textTrackingArea.get());
    m_textTrackingArea.reset();
}

// State
// ------------------------------------------------------------------------------------------------------

QString KRCheckListItemView::title() const {
    return m_titleTextField->stringValue();
}

void KRCheckListItemView::setTitle(const QString& title) {
    const QString oldTitle = this->title();
    const QString text = title.isNull() ? QString(QLatin1String("")) : title;
    m_titleTextField->setAttributedStringValue(
        KRAttributedString::withSharedAttributes(text, m_placeholderAttributes));
    if (hasObserversForKey("title")) {
        didChangeValueForKey("title", oldTitle, this->title());
    }
}

QString KRCheckListItemView::placeholder() const {
    return m_titleTextField->placeholderString();
}

// Whether the field shows text as its placeholder with the current placeholder attributes already.
bool KRCheckListItemView::hasPlaceholder(const QString& text) const {
    static const KRTextAttributes none;
    const KRAttributedString& current = m_titleTextField->cell()->placeholderAttributedString();
    const KRAttributedString::Runs runs = current.runs();
    return current.string() == text && runs.size() == 1 &&
           runs.front().attributes == (m_placeholderAttributes ? *m_placeholderAttributes : none);
}

void KRCheckListItemView::setPlaceholder(const QString& placeholder) {
    // The list sets every row's placeholder after each change of its rows, and nearly all already show it:
    // nothing changes, so there is nothing to tell the observers either.
    if (placeholder.isEmpty() && m_showsCurrentEmptyPlaceholder) {
        return;
    }
    const QString text = placeholder.isNull() ? QString(QLatin1String("")) : placeholder;
    setShowsCurrentEmptyPlaceholder(text.isEmpty());
    if (hasPlaceholder(text)) {
        return;
    }
    const QString oldPlaceholder = this->placeholder();
    const KRAttributedString attributed =
        KRAttributedString::withSharedAttributes(text, m_placeholderAttributes);
    KRTextFieldDelegate* fieldDelegate = m_titleTextField->KRTextField::delegate();
    m_titleTextField->setDelegate(nullptr);
    m_titleTextField->setPlaceholderAttributedString(attributed);
    // The row itself goes back unwatched, as it was hooked up.
    const bool isRow = fieldDelegate == static_cast<KRTextFieldDelegate*>(this);
    m_titleTextField->setDelegate(fieldDelegate,
                                  isRow ? nullptr : dynamic_cast<const KRObject*>(fieldDelegate));
    if (hasObserversForKey("placeholder")) {
        didChangeValueForKey("placeholder", oldPlaceholder, this->placeholder());
    }
}

void KRCheckListItemView::setShowsCurrentEmptyPlaceholder(bool shows) {
    const bool stops = m_showsCurrentEmptyPlaceholder && !shows;
    m_showsCurrentEmptyPlaceholder = shows;
    if (stops) {
        checkListItemViewDidStopShowingEmptyPlaceholder(this);
    }
}

void KRCheckListItemView::clearPlaceholderOfTitleCell() {
    if (KRTextFieldCell* cell = m_titleTextField->cell()) {
        cell->setPlaceholderString(QStringLiteral(""));
        setShowsCurrentEmptyPlaceholder(false);
        m_titleTextField->setNeedsDisplay();
    }
}

void KRCheckListItemView::setStatus(KRUInteger status) {
    setValueNotifying("status", m_status, status);
}

void KRCheckListItemView::setMinHeight(double minHeight) {
    setValueNotifying("minHeight", m_minHeight, minHeight);
}

void KRCheckListItemView::setEdited(bool edited) {
    const bool changes = edited != m_edited;
    setValueNotifying("edited", m_edited, edited);
    if (changes) {
        checkListItemViewDidChangeDividerInputs(this);
    }
}

void KRCheckListItemView::setSelected(bool selected) {
    const bool changes = selected != m_selected;
    setValueNotifying("selected", m_selected, selected);
    if (changes) {
        checkListItemViewDidChangeDividerInputs(this);
    }
}

void KRCheckListItemView::setDragged(bool dragged) {
    const bool changes = dragged != m_dragged;
    setValueNotifying("dragged", m_dragged, dragged);
    if (changes) {
        checkListItemViewDidChangeDividerInputs(this);
    }
}

void KRCheckListItemView::setDrawsTopDivider(bool draws) {
    const bool changes = draws != m_drawsTopDivider;
    setValueNotifying("drawsTopDivider", m_drawsTopDivider, draws);
    if (changes) {
        checkListItemViewDidChangeDividerInputs(this);
    }
}

void KRCheckListItemView::setDrawsBottomDivider(bool draws) {
    const bool changes = draws != m_drawsBottomDivider;
    setValueNotifying("drawsBottomDivider", m_drawsBottomDivider, draws);
    if (changes) {
        checkListItemViewDidChangeDividerInputs(this);
    }
}

void KRCheckListItemView::setDrawsShadow(bool draws) {
    setValueNotifying("drawsShadow", m_drawsShadow, draws);
}

void KRCheckListItemView::setHighlighted(bool highlighted) {
    const bool changes = highlighted != m_highlighted;
    setValueNotifying("highlighted", m_highlighted, highlighted);
    if (changes) {
        checkListItemViewDidChangeDividerInputs(this);
    }
}

void KRCheckListItemView::setItemIdentifier(const QJsonValue& itemIdentifier) {
    checkListItemViewWillChangeItemIdentifier(this);
    m_itemIdentifier = itemIdentifier;
}

void KRCheckListItemView::setDelegate(KRCheckListItemViewDelegate* delegate, const KRObject* lifetimeOwner) {
    m_delegate.reset(delegate, lifetimeOwner);
}

void KRCheckListItemView::observeValueForKeyPath(const char* keyPath, KRObject* object,
                                                 const KRKeyValueChange& change, const void* context) {
    if (context == updateContext) {
        if (change.valuesDiffer()) {
            setNeedsUpdate(true);
        }
    } else if (context == layoutContext) {
        setNeedsLayout(true);
    } else if (context == highlightContext) {
        checkListItemViewUpdateHighlightView();
    } else {
        KRView::observeValueForKeyPath(keyPath, object, change, context);
    }
}

// Updates
// ------------------------------------------------------------------------------------------------------

void KRCheckListItemView::setNeedsUpdate(bool needsUpdate) {
    if (m_updating) {
        return;
    }
    if (m_updateCount < 1 && needsUpdate) {
        m_updateScheduled = true;
        updateIfNeeded();
    } else if (needsUpdate && !m_updateScheduled) {
        m_updateScheduled = true;
    } else if (!needsUpdate && m_updateScheduled) {
        m_updateScheduled = false;
    }
}

void KRCheckListItemView::updateIfNeeded() {
    if (!m_updateScheduled || m_updating) {
        return;
    }
    m_updating = true;
    update();
    m_updating = false;
    m_updateScheduled = false;
}

void KRCheckListItemView::beginUpdates() {
    m_updateCount += 1;
}

void KRCheckListItemView::endUpdates() {
    const KRInteger count = m_updateCount;
    m_updateCount = static_cast<std::int32_t>(count - 1);
    KRAssert(count >= 1, QStringLiteral("endUpdates"), this, QStringLiteral("KRCheckListItemView"), 132,
             QStringLiteral("[WARNING] Internal inconsistency, unbalanced begin/endUpdates detected for: %1")
                 .arg(description()));
    updateIfNeeded();
}

void KRCheckListItemView::update(const std::function<void()>& updates) {
    beginUpdates();
    if (updates) {
        updates();
    }
    endUpdates();
}

void KRCheckListItemView::update() {
    const QFont font = KRCheckListDefaults::font();
    const double lineHeight = KRCheckListDefaults::lineHeight();
    const KRUInteger status = m_status;
    const bool edited = m_edited;
    const bool selected = m_selected;
    const bool dragged = m_dragged;
    const bool drawsTopDivider = m_drawsTopDivider;
    const bool drawsBottomDivider = m_drawsBottomDivider;
    const bool drawsShadow = m_drawsShadow;

    RowLooks looks;
    applyShapeLooks(looks, edited, selected || dragged);
    applyStatusLooks(looks, status);
    looks.topDividerAlpha = drawsTopDivider ? 1.0 : 0.0;
    looks.bottomDividerAlpha = drawsBottomDivider ? 1.0 : 0.0;

    const KRParagraphStyle paragraphStyle = titleParagraphStyle(lineHeight);
    KRTextAttributes titleAttributes;
    titleAttributes.font = font;
    titleAttributes.foregroundColor = looks.titleTextColor;
    titleAttributes.strikethroughStyle = looks.strikethrough ? 1 : 0;
    titleAttributes.paragraphStyle = paragraphStyle;
    KRTextAttributes placeholderAttributes;
    placeholderAttributes.font = font;
    placeholderAttributes.foregroundColor = KRCheckListDefaults::placeholderColor();
    placeholderAttributes.paragraphStyle = paragraphStyle;

    // Shape and check box may follow an animation the caller opened around the change.
    m_shapeView->setBackgroundColor(looks.shapeFill);
    m_shapeView->setBorderColor(looks.shapeBorderColor);
    m_shapeView->setShadowOpacity(drawsShadow ? shapeShadowOpacityWhileDragged : 0.0);

    KRButtonView& checkBox = *m_checkBoxButtonView;
    if (checkBox.image() != looks.checkBoxImage) {
        // The check box's natural size comes from its image: the next size is measured afresh.
        forgetSizeThatFits();
    }
    checkBox.beginUpdates();
    checkBox.setImage(looks.checkBoxImage);
    checkBox.setPressedImage(
        looks.checkBoxImage ? looks.checkBoxImage->imageByLimitingToRepresentationWithScale(pressedImageScale)
                            : nullptr);
    checkBox.setImageColor(looks.checkBoxImageColor);
    checkBox.setImageAlpha(1.0);
    checkBox.endUpdates();

    // Handle, title colour and dividers never animate, whatever the caller opened around the change. The
    // block captures little enough for the function to hold it without allocating: rows update often.
    KRView::performWithoutAnimation([this, &looks] {
        KRButtonView& handle = *m_handleButtonView;
        handle.beginUpdates();
        handle.setImageColor(looks.handleImageColor);
        handle.setImageAlpha(looks.handleImageAlpha);
        handle.endUpdates();
        m_titleTextField->setTextColor(looks.titleTextColor);
        m_topDividerView->setAlphaValue(looks.topDividerAlpha);
        m_bottomDividerView->setAlphaValue(looks.bottomDividerAlpha);
    });

    // An update that leaves a set as it was keeps the shared one it has.
    if (!m_titleAttributes || !(*m_titleAttributes == titleAttributes)) {
        m_titleAttributes = sharedAttributes(titleAttributes);
    }
    if (!m_placeholderAttributes || !(*m_placeholderAttributes == placeholderAttributes)) {
        m_placeholderAttributes = sharedAttributes(placeholderAttributes);
        setShowsCurrentEmptyPlaceholder(false);
    }

    m_titleTextField->setAttributedStringValue(
        KRAttributedString::withSharedAttributes(m_titleTextField->stringValue(), m_titleAttributes));
    m_titleTextField->setNeedsDisplay();
}

// Layout
// ------------------------------------------------------------------------------------------------------

KRCheckListItemViewLayout KRCheckListItemView::checkListItemViewLayoutForSize(KRSize size) const {
    const double width = size.width;
    const double height = size.height;
    const double itemHeight = KRCheckListDefaults::itemHeight();
    const double lineHeight = std::ceil(KRCheckListDefaults::lineHeight());
    const double borderWidth = KRCheckListDefaults::borderWidth();

    const KRSize handleSize = m_handleButtonView->sizeThatFits(KRSizeZero);
    const KRSize checkBoxSize = m_checkBoxButtonView->sizeThatFitsEdgeInsets(
        KRSizeZero, KREdgeInsets{0.0, checkBoxLeftInset, 0.0, 0.0});

    KRCheckListItemViewLayout layout;
    layout.shapeViewFrame = KRRect{0.0, 0.0, width, height};
    layout.highlightViewFrame = layout.shapeViewFrame;
    layout.maskViewFrame = layout.shapeViewFrame;
    layout.checkBoxButtonViewFrame =
        KRRect{0.0, checkBoxTop, checkBoxSize.width + checkBoxWidthExtra, height - checkBoxTop};

    const double handleX = width - handleSize.width - handleRightMargin;
    layout.handleButtonViewFrame = KRRect{handleX, handleTop, handleSize.width, handleSize.height};

    const double titleX = checkBoxSize.width + checkBoxWidthExtra + titleGapAfterCheckBox;
    const double titleWidth = (handleX - titleGapBeforeHandle) - titleX;
    double titleHeight = lineHeight;
    double oneLineHeight = lineHeight;
    if (!m_titleTextField->stringValue().isEmpty()) {
        titleHeight = m_titleTextField->sizeThatFits(KRSize{titleWidth, largeBound}).height;
        oneLineHeight = m_titleTextField->sizeThatFits(KRSize{largeBound, largeBound}).height;
    }
    const double titleY = std::round(0.5 * (itemHeight - lineHeight)) - 1.0;
    layout.titleTextFieldFrame = KRRect{titleX, titleY, titleWidth, titleHeight};
    layout.checkBoxButtonViewEdgeInsets =
        KREdgeInsets{0.0, checkBoxLeftInset, titleHeight - oneLineHeight + 1.0, 0.0};

    layout.topDividerViewFrame = KRRect{dividerLeftInset, 0.0, width - dividerLeftInset, borderWidth};
    layout.bottomDividerViewFrame =
        KRRect{dividerLeftInset, height - borderWidth, width - dividerLeftInset, borderWidth};
    layout.sizeThatFits = KRSize{width, itemHeight - lineHeight + titleHeight};
    layout.size = size;
    return layout;
}

void KRCheckListItemView::layoutSubviews() {
    KRView::layoutSubviews();
    const KRCheckListItemViewLayout layout = checkListItemViewLayoutForSize(frame().size);
    m_shapeView->setFrame(layout.shapeViewFrame);
    m_highlightView->setFrame(layout.highlightViewFrame);
    m_maskView->setFrame(layout.maskViewFrame);
    m_checkBoxButtonView->setEdgeInsets(layout.checkBoxButtonViewEdgeInsets);
    m_checkBoxButtonView->setFrame(layout.checkBoxButtonViewFrame);
    m_titleTextField->setFrame(layout.titleTextFieldFrame);
    m_handleButtonView->setFrame(layout.handleButtonViewFrame);
    m_topDividerView->setFrame(layout.topDividerViewFrame);
    m_bottomDividerView->setFrame(layout.bottomDividerViewFrame);
    m_titleTextField->setNeedsDisplay();
    if (masksToBounds()) {
        setMasksToBounds(false);
    }
}

// The answer is kept until the title's cell says its size may have changed (or an editor came or went), so
// a list asking every row on every layout reads the row alone, not its title field and cell.
KRSize KRCheckListItemView::sizeThatFits(KRSize size) const {
    if (m_sizeThatFitsCacheValid && m_cachedFittingWidth == size.width) {
        return KRSize{m_cachedFittingWidth, m_cachedFittingHeight};
    }
    // While the title is edited its editor measures it; nothing is kept then.
    const KRTextFieldCell* titleCell = m_titleTextField->cell();
    if (!titleCell || titleCell->currentEditor()) {
        m_sizeThatFitsCacheValid = false;
        return checkListItemViewLayoutForSize(size).sizeThatFits;
    }
    const KRSize fitting = checkListItemViewLayoutForSize(size).sizeThatFits;
    m_cachedFittingWidth = size.width;
    m_cachedFittingHeight = fitting.height;
    m_sizeThatFitsCacheValid = fitting.width == size.width;
    return fitting;
}

void KRCheckListItemView::checkListItemTitleTextFieldSizeMayHaveChanged(KRCheckListItemTitleTextField*) {
    forgetSizeThatFits();
}

void KRCheckListItemView::forgetSizeThatFits() {
    m_sizeThatFitsCacheValid = false;
    checkListItemViewDidInvalidateSizeThatFits(this);
}

// Forwarders
// ------------------------------------------------------------------------------------------------------

QString KRCheckListItemView::checkListItemViewValidateChangedTitle(KRCheckListItemView* itemView,
                                                                   const QString& title) {
    KRCheckListItemViewDelegate* delegate = m_delegate.get();
    return delegate ? delegate->checkListItemViewValidateChangedTitle(itemView, title) : title;
}

KRUInteger KRCheckListItemView::checkListItemViewValidateChangedStatus(KRCheckListItemView* itemView,
                                                                       KRUInteger status) {
    KRCheckListItemViewDelegate* delegate = m_delegate.get();
    return delegate ? delegate->checkListItemViewValidateChangedStatus(itemView, status) : status;
}

bool KRCheckListItemView::checkListItemViewTextViewDoCommandBySelector(KRCheckListItemView* itemView,
                                                                       KRTextView* textView,
                                                                       const KRSelector& selector) {
    KRCheckListItemViewDelegate* delegate = m_delegate.get();
    return delegate && delegate->checkListItemViewTextViewDoCommandBySelector(itemView, textView, selector);
}

void KRCheckListItemView::checkListItemViewWillUpdate(KRCheckListItemView* itemView) {
    if (KRCheckListItemViewDelegate* delegate = m_delegate.get()) {
        delegate->checkListItemViewWillUpdate(itemView);
    }
}

void KRCheckListItemView::checkListItemViewDidUpdate(KRCheckListItemView* itemView) {
    if (KRCheckListItemViewDelegate* delegate = m_delegate.get()) {
        delegate->checkListItemViewDidUpdate(itemView);
    }
}

void KRCheckListItemView::checkListItemViewDidChangeSizeThatFits(KRCheckListItemView* itemView) {
    if (KRCheckListItemViewDelegate* delegate = m_delegate.get()) {
        delegate->checkListItemViewDidChangeSizeThatFits(itemView);
    }
}

void KRCheckListItemView::checkListItemViewDidEndEditingTitle(KRCheckListItemView* itemView) {
    if (KRCheckListItemViewDelegate* delegate = m_delegate.get()) {
        delegate->checkListItemViewDidEndEditingTitle(itemView);
    }
}

void KRCheckListItemView::checkListItemViewWillChangeHighlighted(KRCheckListItemView* itemView) {
    if (KRCheckListItemViewDelegate* delegate = m_delegate.get()) {
        delegate->checkListItemViewWillChangeHighlighted(itemView);
    }
}

void KRCheckListItemView::checkListItemViewDidChangeHighlighted(KRCheckListItemView* itemView) {
    if (KRCheckListItemViewDelegate* delegate = m_delegate.get()) {
        delegate->checkListItemViewDidChangeHighlighted(itemView);
    }
}

void KRCheckListItemView::checkListItemViewDidChangeDividerInputs(KRCheckListItemView* itemView) {
    if (KRCheckListItemViewDelegate* delegate = m_delegate.get()) {
        delegate->checkListItemViewDidChangeDividerInputs(itemView);
    }
}

void KRCheckListItemView::checkListItemViewDidStopShowingEmptyPlaceholder(KRCheckListItemView* itemView) {
    if (KRCheckListItemViewDelegate* delegate = m_delegate.get()) {
        delegate->checkListItemViewDidStopShowingEmptyPlaceholder(itemView);
    }
}

void KRCheckListItemView::checkListItemViewDidInvalidateSizeThatFits(KRCheckListItemView* itemView) {
    if (KRCheckListItemViewDelegate* delegate = m_delegate.get()) {
        delegate->checkListItemViewDidInvalidateSizeThatFits(itemView);
    }
}

void KRCheckListItemView::checkListItemViewDidChangeFrame(KRCheckListItemView* itemView) {
    if (KRCheckListItemViewDelegate* delegate = m_delegate.get()) {
        delegate->checkListItemViewDidChangeFrame(itemView);
    }
}

void KRCheckListItemView::checkListItemViewWillChangeItemIdentifier(KRCheckListItemView* itemView) {
    if (KRCheckListItemViewDelegate* delegate = m_delegate.get()) {
        delegate->checkListItemViewWillChangeItemIdentifier(itemView);
    }
}

bool KRCheckListItemView::checkListItemViewMouseDownHandle(KRCheckListItemView* itemView,
                                                           const KREvent& event) {
    KRCheckListItemViewDelegate* delegate = m_delegate.get();
    return delegate && delegate->checkListItemViewMouseDownHandle(itemView, event);
}

bool KRCheckListItemView::checkListItemViewMouseDraggedHandle(KRCheckListItemView* itemView,
                                                              const KREvent& event) {
    KRCheckListItemViewDelegate* delegate = m_delegate.get();
    return delegate && delegate->checkListItemViewMouseDraggedHandle(itemView, event);
}

bool KRCheckListItemView::checkListItemViewMouseUpHandle(KRCheckListItemView* itemView,
                                                         const KREvent& event) {
    KRCheckListItemViewDelegate* delegate = m_delegate.get();
    return delegate && delegate->checkListItemViewMouseUpHandle(itemView, event);
}

std::shared_ptr<KRTextView>
KRCheckListItemView::checkListItemViewFieldEditorForView(KRCheckListItemView* itemView, KRView* view) {
    KRCheckListItemViewDelegate* delegate = m_delegate.get();
    return delegate ? delegate->checkListItemViewFieldEditorForView(itemView, view) : nullptr;
}

bool KRCheckListItemView::checkListItemViewTextFieldValidateBecomeFirstResponder(
    KRCheckListItemView* itemView, KRTextField* textField, bool proposed) {
    KRCheckListItemViewDelegate* delegate = m_delegate.get();
    return delegate ? delegate->checkListItemViewTextFieldValidateBecomeFirstResponder(itemView, textField,
                                                                                       proposed)
                    : proposed;
}

bool KRCheckListItemView::checkListItemViewTextFieldValidateResignFirstResponder(
    KRCheckListItemView* itemView, KRTextField* textField, bool proposed) {
    KRCheckListItemViewDelegate* delegate = m_delegate.get();
    return delegate ? delegate->checkListItemViewTextFieldValidateResignFirstResponder(itemView, textField,
                                                                                       proposed)
                    : proposed;
}

// Controls
// ------------------------------------------------------------------------------------------------------

void KRCheckListItemView::checkListItemViewHandleActionForCheckBoxButton(KRButtonView*) {
    const bool optionHeld = (KREvent::currentModifierFlags() & KREventModifierFlagOption) != 0;
    const KRUInteger status = m_status;
    KRUInteger proposed = 0;
    if (status == 0) {
        proposed = optionHeld ? 2 : 1;
    }
    setStatus(checkListItemViewValidateChangedStatus(this, proposed));
    updateIfNeeded();
}

void KRCheckListItemView::checkListItemViewUpdateHighlightView() {
    m_highlightView->setAlphaValue(m_highlighted ? highlightAlpha : 0.0);
}

void KRCheckListItemView::highlightOn() {
    checkListItemViewWillChangeHighlighted(this);
    setHighlighted(true);
    updateIfNeeded();
    checkListItemViewDidChangeHighlighted(this);
}

void KRCheckListItemView::highlightOffAnimated() {
    checkListItemViewWillChangeHighlighted(this);
    KRView::animate([this](EZAnimationContext& context) {
        context.setInterpolationFunctionForKey(QStringLiteral("opacity"),
                                               EZInterpolationFunctions::easeOutWithDuration(
                                                   highlightFadeOutDuration * KRAnimationDurationMultiplier));
        setHighlighted(false);
        updateIfNeeded();
    });
    checkListItemViewDidChangeHighlighted(this);
}

bool KRCheckListItemView::tryToPerform(const KRSelector& action, KRObject* sender) {
    if (action == checkBoxActionSelector()) {
        checkListItemViewHandleActionForCheckBoxButton(dynamic_cast<KRButtonView*>(sender));
        return true;
    }
    return KRView::tryToPerform(action, sender);
}

bool KRCheckListItemView::respondsToSelector(const KRSelector& selector) const {
    return selector == checkBoxActionSelector() || KRView::respondsToSelector(selector);
}

void KRCheckListItemView::updateTrackingAreas() {
    checkListItemViewEndTrackingMouse();
    KRView::updateTrackingAreas();
    checkListItemViewBeginTrackingMouse();
}

void KRCheckListItemView::cursorUpdate(const KREvent& event) {
    const KRPoint location = convertPointFromView(event.locationInWindow(), nullptr);
    const KRRect area = m_textTrackingArea ? m_textTrackingArea->rect() : KRRectZero;
    if (KRRectContainsPoint(area, location)) {
        KRCursor::IBeamCursor().set();
        return;
    }
    KRView::cursorUpdate(event);
}

// KRButtonViewDelegate
// ------------------------------------------------------------------------------------------------------

bool KRCheckListItemView::buttonViewMouseDown(KRButtonView* buttonView, const KREvent& event) {
    if (buttonView == m_checkBoxButtonView.get()) {
        highlightOn();
        return false;
    }
    if (buttonView == m_handleButtonView.get()) {
        return checkListItemViewMouseDownHandle(this, event);
    }
    return false;
}

bool KRCheckListItemView::buttonViewMouseDragged(KRButtonView* buttonView, const KREvent& event) {
    if (buttonView == m_handleButtonView.get()) {
        return checkListItemViewMouseDraggedHandle(this, event);
    }
    return false;
}

bool KRCheckListItemView::buttonViewMouseUp(KRButtonView* buttonView, const KREvent& event) {
    if (buttonView == m_checkBoxButtonView.get()) {
        highlightOffAnimated();
        return false;
    }
    if (buttonView == m_handleButtonView.get()) {
        return checkListItemViewMouseUpHandle(this, event);
    }
    return false;
}

bool KRCheckListItemView::buttonViewValidatePressed(KRButtonView* buttonView, bool proposedPressed) {
    if (buttonView == m_handleButtonView.get()) {
        return m_dragged ? true : proposedPressed;
    }
    return proposedPressed;
}

bool KRCheckListItemView::buttonViewValidateCanBecomeKeyView(KRButtonView*, bool) {
    return false;
}

// Title field
// ------------------------------------------------------------------------------------------------------

void KRCheckListItemView::controlTextDidChange(KRTextField*) {
    checkListItemViewHandleTextChangeForTitleTextField(m_titleTextField.get());
}

void KRCheckListItemView::controlTextDidEndEditing(KRTextField*) {
    setNeedsUpdate(true);
    checkListItemViewDidEndEditingTitle(this);
}

bool KRCheckListItemView::controlTextViewDoCommandBySelector(KRTextField*, KRTextView* textView,
                                                             const KRSelector& selector) {
    return checkListItemViewTextViewDoCommandBySelector(this, textView, selector);
}

std::shared_ptr<KRTextView>
KRCheckListItemView::checkListItemTitleTextFieldFieldEditorForView(KRCheckListItemTitleTextField*,
                                                                   KRView* view) {
    return checkListItemViewFieldEditorForView(this, view);
}

bool KRCheckListItemView::checkListItemTitleTextFieldValidateBecomeFirstResponder(
    KRCheckListItemTitleTextField* field, bool proposed) {
    return checkListItemViewTextFieldValidateBecomeFirstResponder(this, field, proposed);
}

bool KRCheckListItemView::checkListItemTitleTextFieldValidateResignFirstResponder(
    KRCheckListItemTitleTextField* field, bool proposed) {
    return checkListItemViewTextFieldValidateResignFirstResponder(this, field, proposed);
}

void KRCheckListItemView::checkListItemViewHandleTextChangeForTitleTextField(
    KRCheckListItemTitleTextField* titleTextField) {
    const QString text = titleTextField->stringValue();
    const QString validated = checkListItemViewValidateChangedTitle(this, text);
    if (validated != text) {
        setTitle(validated);
    }
    const KRSize sizeThatFits = checkListItemViewLayoutForSize(bounds().size).sizeThatFits;
    if (KRTextView* editor = titleTextField->currentEditor()) {
        editor->setAttributesForRange(attributesOrNone(m_titleAttributes), KRRange{0, editor->length()});
    }
    if (sizeThatFits.width != m_sizeThatFitsAfterLastLayout.width ||
        sizeThatFits.height != m_sizeThatFitsAfterLastLayout.height) {
        setNeedsLayout(true);
        m_sizeThatFitsAfterLastLayout = sizeThatFits;
        checkListItemViewDidChangeSizeThatFits(this);
    }
}

// Geometry
// ------------------------------------------------------------------------------------------------------
// Whether the frame has an area is one of the divider inputs (a row without one draws no bottom divider).

namespace {
bool frameHasArea(KRRect frame) {
    return KRRectIntersectsRect(frame, frame);
}
} // namespace

void KRCheckListItemView::setFrameOrigin(KRPoint origin) {
    const KRRect oldFrame = frame();
    KRView::setFrameOrigin(origin);
    reportFrameChangeFrom(oldFrame);
}

void KRCheckListItemView::setFrameSize(KRSize size) {
    const KRRect oldFrame = frame();
    KRView::setFrameSize(size);
    reportFrameChangeFrom(oldFrame);
}

void KRCheckListItemView::reportFrameChangeFrom(KRRect oldFrame) {
    const KRRect newFrame = frame();
    if (newFrame == oldFrame) {
        return;
    }
    checkListItemViewDidChangeFrame(this);
    if (frameHasArea(newFrame) != frameHasArea(oldFrame)) {
        checkListItemViewDidChangeDividerInputs(this);
    }
}
