#include "Views/KRView.h"

#include "Animation/KRAnimationTransaction.h"
#include "Foundation/KRClock.h"
#include "Views/KRMarkedSubviews.h"
#include "Views/KRTrackingArea.h"
#include "Views/KRWindow.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <limits>
#include <unordered_set>
#include <utility>

namespace {

// How many subviews ahead a pass over all subviews asks for their state: enough to cover a load from memory.
constexpr std::size_t kSubviewPrefetchDistance = 8;

// From this many subviews on, a view lists the subviews that ask for a pass rather than have the pass read
// every one; below it, reading them all is cheap and needs no bookkeeping.
constexpr std::size_t kListedSubviewsThreshold = 32;

// Never destroyed: views torn down during static destruction still take themselves off.
KRMarkedSubviews& layoutRequests() {
    static auto* const lists = new KRMarkedSubviews();
    return *lists;
}

KRMarkedSubviews& trackingAreaRequests() {
    static auto* const lists = new KRMarkedSubviews();
    return *lists;
}

// The subviews that passes over listed subviews are visiting, innermost first. Such a pass holds its
// subview by nothing else, so one that leaves its superview during its own visit parks its owning pointer
// here and goes away when the visit ends, as it would under a pass that held it.
struct SubviewVisit;
SubviewVisit* innermostSubviewVisit = nullptr;

struct SubviewVisit {
    explicit SubviewVisit(const KRView* visited) : view(visited), outer(innermostSubviewVisit) {
        innermostSubviewVisit = this;
    }
    ~SubviewVisit() { innermostSubviewVisit = outer; }
    SubviewVisit(const SubviewVisit&) = delete;
    SubviewVisit& operator=(const SubviewVisit&) = delete;

    const KRView* view;
    SubviewVisit* outer;
    std::shared_ptr<KRView> parked;
};

void parkIfVisited(std::shared_ptr<KRView>& owner) {
    for (SubviewVisit* visit = innermostSubviewVisit; visit; visit = visit->outer) {
        if (visit->view == owner.get()) {
            if (!visit->parked) {
                visit->parked = std::move(owner);
            }
            return;
        }
    }
}

const char* const KRFrameOriginKey = "frameOrigin";
const char* const KRFrameSizeKey = "frameSize";
const char* const KROpacityKey = "opacity";
const char* const KRBackgroundColorKey = "backgroundColor";
const char* const KRBorderColorKey = "borderColor";
const char* const KRShadowOpacityKey = "shadowOpacity";
const char* const KRScaleKey = "scale";

bool sameColor(const QColor& a, const QColor& b) {
    if (a.isValid() != b.isValid()) {
        return false;
    }
    return !a.isValid() || a.rgba64() == b.rgba64();
}

KRPoint offsetIntoChild(KRPoint point, const KRView& child) {
    const KRRect frame = child.frame();
    const KRRect bounds = child.bounds();
    return KRPoint{point.x - frame.origin.x + bounds.origin.x, point.y - frame.origin.y + bounds.origin.y};
}

KRPoint offsetIntoParent(KRPoint point, const KRView& child) {
    const KRRect frame = child.frame();
    const KRRect bounds = child.bounds();
    return KRPoint{point.x - bounds.origin.x + frame.origin.x, point.y - bounds.origin.y + frame.origin.y};
}

} // namespace

struct KRView::Animations final : KRAnimatable {
    explicit Animations(KRView* owner) : view(owner) {}
    bool advanceAnimationsToTime(double now) override { return view->advanceAnimationsToTime(now); }

    KRView* view;
    std::vector<RunningAnimation> running;
};

KRView::KRView(KRRect frame) : m_frame(frame) {}

KRView::~KRView() {
    for (const auto& area : m_trackingAreas) {
        area->ownerWillBeDestroyed(this);
    }
    if (m_animations) {
        KRAnimationEngine::shared().removeAnimatingObject(m_animations.get());
        auto finished = std::move(m_animations);
    }
    KRWindow* const formerWindow = window();
    for (const auto& subview : m_subviews) {
        subview->m_parent = 0;
        subview->m_listedForLayout = false;
        subview->m_listedForTrackingAreas = false;
        if (formerWindow) {
            subview->windowDidChange(nullptr);
        }
    }
    if (m_listsMarkedSubviews) {
        layoutRequests().forget(this);
        trackingAreaRequests().forget(this);
    }
    releaseLooks(std::exchange(m_looks, nullptr));
}

// Built in place and never destroyed: reading the defaults allocates nothing, and a view torn down during
// static destruction still reads valid ones.
const KRView::Looks& KRView::defaultLooks() {
    static const Looks defaults;
    return defaults;
}

const KRView::Looks* KRView::sharedLooks(const Looks& looks) {
    if (looks == defaultLooks()) {
        return nullptr;
    }
    // A row's views go through the same few looks while it is set up and updated. The cache holds a
    // reference to each block it keeps, most recently used first; it is never destroyed, so views torn
    // down during static destruction still release into it safely.
    constexpr std::size_t capacity = 32;
    static auto* const recent = new std::vector<const Looks*>();
    const auto found = std::find_if(recent->begin(), recent->end(),
                                    [&looks](const Looks* known) { return *known == looks; });
    if (found != recent->end()) {
        std::rotate(recent->begin(), found, std::next(found));
    } else {
        if (recent->size() == capacity) {
            releaseLooks(recent->back());
            recent->pop_back();
        }
        auto* created = new Looks(looks);
        created->references = 1;
        recent->insert(recent->begin(), created);
    }
    const Looks* shared = recent->front();
    ++shared->references;
    return shared;
}

void KRView::releaseLooks(const Looks* looks) {
    if (looks && --looks->references == 0) {
        delete looks;
    }
}

const KRView::Identity& KRView::defaultIdentity() {
    union Holder {
        Holder() : identity() {}
        ~Holder() {}
        Identity identity;
    };
    static const Holder holder;
    return holder.identity;
}

KRView::Identity& KRView::mutableIdentity() {
    if (!m_identity) {
        m_identity = std::make_unique<Identity>();
    }
    return *m_identity;
}

// Tree ---------------------------------------------------------------------------------------------------

void KRView::addSubview(const std::shared_ptr<KRView>& view) {
    addSubviewPositionedRelativeTo(view, KRWindowOrderingMode::Above, nullptr);
}

void KRView::addSubviewPositionedRelativeTo(const std::shared_ptr<KRView>& view, KRWindowOrderingMode place,
                                            const KRView* relativeTo) {
    if (!view || view.get() == this || place == KRWindowOrderingMode::Out) {
        return;
    }
    const std::shared_ptr<KRView> keepAlive = view;
    const bool movingAmongSiblings = view->superview() == this;
    if (movingAmongSiblings) {
        m_subviews.erase(std::find(m_subviews.begin(), m_subviews.end(), view));
    } else {
        view->viewWillMoveToSuperview(this);
        if (view->superview()) {
            view->removeFromSuperview();
        }
    }

    auto position = place == KRWindowOrderingMode::Above ? m_subviews.end() : m_subviews.begin();
    if (relativeTo) {
        auto sibling = std::find_if(m_subviews.begin(), m_subviews.end(), [relativeTo](const auto& subview) {
            return subview.get() == relativeTo;
        });
        if (sibling != m_subviews.end()) {
            position = place == KRWindowOrderingMode::Above ? sibling + 1 : sibling;
        }
    }
    m_subviews.insert(position, view);

    if (!movingAmongSiblings) {
        KRWindow* const formerWindow = view->window();
        view->m_parent = reinterpret_cast<std::uintptr_t>(this);
        if (!m_listsMarkedSubviews && m_subviews.size() >= kListedSubviewsThreshold) {
            beginListingMarkedSubviews();
        }
        if (KRWindow* const newWindow = window(); newWindow != formerWindow) {
            view->windowDidChange(newWindow);
        }
        view->carryMarksIntoSuperview();
        view->viewDidMoveToSuperview();
    }
    view->setNeedsDisplay();
}

void KRView::removeFromSuperview() {
    if (!superview()) {
        return;
    }
    setNeedsDisplay();
    if (KRWindow* const window = this->window()) {
        window->viewWillBeRemoved(this);
    }
    viewWillMoveToSuperview(nullptr);
    detachFromSuperview();
}

void KRView::removeSubviews(std::span<KRView* const> views) {
    std::unordered_set<const KRView*> leaving;
    leaving.reserve(views.size());
    std::vector<KRView*> order;
    order.reserve(views.size());
    KRWindow* const window = this->window();
    for (KRView* view : views) {
        if (!view || view->superview() != this || !leaving.insert(view).second) {
            continue;
        }
        order.push_back(view);
        view->setNeedsDisplay();
        if (window) {
            window->viewWillBeRemoved(view);
        }
        view->viewWillMoveToSuperview(nullptr);
    }
    if (order.empty()) {
        return;
    }
    KRWindow* const formerWindow = this->window();
    // The views stay alive until every one of them has heard that it left.
    std::vector<std::shared_ptr<KRView>> keepAlive;
    keepAlive.reserve(order.size());
    auto kept = m_subviews.begin();
    for (auto& subview : m_subviews) {
        if (leaving.contains(subview.get())) {
            subview->m_parent = 0;
            subview->m_listedForLayout = false;
            subview->m_listedForTrackingAreas = false;
            keepAlive.push_back(std::move(subview));
        } else {
            *kept++ = std::move(subview);
        }
    }
    m_subviews.erase(kept, m_subviews.end());
    if (m_listsMarkedSubviews) {
        const auto left = [this](const KRView* view) { return view->superview() != this; };
        layoutRequests().removeIf(this, left);
        trackingAreaRequests().removeIf(this, left);
    }
    // A view that a hook took out meanwhile has heard of that move already.
    std::vector<const KRView*> removed;
    removed.reserve(keepAlive.size());
    for (const auto& view : keepAlive) {
        removed.push_back(view.get());
    }
    std::sort(removed.begin(), removed.end());
    for (KRView* view : order) {
        if (!std::binary_search(removed.begin(), removed.end(), view)) {
            continue;
        }
        if (formerWindow) {
            view->windowDidChange(nullptr);
        }
        view->viewDidMoveToSuperview();
    }
    if (innermostSubviewVisit) {
        for (auto& view : keepAlive) {
            parkIfVisited(view);
        }
    }
}

// Kept separate so the last owner can go away at the very end, after nothing touches this view any more.
void KRView::detachFromSuperview() {
    KRWindow* const formerWindow = window();
    leaveSuperviewsLists();
    auto& siblings = superview()->m_subviews;
    auto it = std::find_if(siblings.begin(), siblings.end(),
                           [this](const auto& subview) { return subview.get() == this; });
    std::shared_ptr<KRView> keepAlive;
    if (it != siblings.end()) {
        keepAlive = std::move(*it);
        siblings.erase(it);
    }
    m_parent = 0;
    if (formerWindow) {
        windowDidChange(nullptr);
    }
    viewDidMoveToSuperview();
    parkIfVisited(keepAlive);
}

// A view with pending work that joins a superview makes its new ancestors pass by it.
void KRView::carryMarksIntoSuperview() {
    if (m_needsLayout || m_subtreeNeedsLayout) {
        noteSubtreeNeedsLayout();
    }
    if (m_needsTrackingAreaUpdate || m_subtreeNeedsTrackingAreaUpdate) {
        noteSubtreeNeedsTrackingAreaUpdate();
        if (KRWindow* const window = this->window()) {
            window->setNeedsUpdate();
        }
    }
}

// Once a view has many subviews, for the rest of its life; those that asked before are listed now.
void KRView::beginListingMarkedSubviews() {
    m_listsMarkedSubviews = true;
    for (const auto& subview : m_subviews) {
        if (subview->m_needsLayout || subview->m_subtreeNeedsLayout) {
            subview->listForLayoutUnder(this);
        }
        if (subview->m_needsTrackingAreaUpdate || subview->m_subtreeNeedsTrackingAreaUpdate) {
            subview->listForTrackingAreasUnder(this);
        }
    }
}

void KRView::listForLayoutUnder(KRView* parent) {
    if (!parent->m_listsMarkedSubviews || parent->m_readsAllSubviewsForLayout || m_listedForLayout) {
        return;
    }
    const auto unlist = [](KRView* listed) { listed->m_listedForLayout = false; };
    if (layoutRequests().add(parent, this, parent->m_subviews.size(), unlist)) {
        m_listedForLayout = true;
    } else {
        parent->m_readsAllSubviewsForLayout = true;
    }
}

void KRView::listForTrackingAreasUnder(KRView* parent) {
    if (!parent->m_listsMarkedSubviews || parent->m_readsAllSubviewsForTrackingAreas ||
        m_listedForTrackingAreas) {
        return;
    }
    const auto unlist = [](KRView* listed) { listed->m_listedForTrackingAreas = false; };
    if (trackingAreaRequests().add(parent, this, parent->m_subviews.size(), unlist)) {
        m_listedForTrackingAreas = true;
    } else {
        parent->m_readsAllSubviewsForTrackingAreas = true;
    }
}

// Lists hold a view only while it is a subview, so that they never hold one that is gone.
void KRView::leaveSuperviewsLists() {
    if (m_listedForLayout) {
        m_listedForLayout = false;
        layoutRequests().remove(superview(), this);
    }
    if (m_listedForTrackingAreas) {
        m_listedForTrackingAreas = false;
        trackingAreaRequests().remove(superview(), this);
    }
}

bool KRView::isDescendantOf(const KRView* view) const {
    for (const KRView* ancestor = this; ancestor; ancestor = ancestor->superview()) {
        if (ancestor == view) {
            return true;
        }
    }
    return false;
}

KRWindow* KRView::window() const {
    const KRView* root = this;
    while (KRView* up = root->superview()) {
        root = up;
    }
    return (root->m_parent & kWindowTag) ? reinterpret_cast<KRWindow*>(root->m_parent & ~kWindowTag)
                                         : nullptr;
}

std::shared_ptr<KRView> KRView::sharedFromSuperview() const {
    const KRView* parent = superview();
    if (!parent) {
        return nullptr;
    }
    for (const auto& subview : parent->m_subviews) {
        if (subview.get() == this) {
            return subview;
        }
    }
    return nullptr;
}

void KRView::viewWillMoveToSuperview(KRView*) {}
void KRView::viewDidMoveToSuperview() {}
void KRView::viewDidMoveToWindow() {}

// Only a view without a superview keeps a window of its own.
void KRView::setWindowRecursively(KRWindow* window) {
    if (superview() || this->window() == window) {
        return;
    }
    static_assert(alignof(KRWindow) > kWindowTag);
    m_parent = window ? reinterpret_cast<std::uintptr_t>(window) | kWindowTag : 0;
    windowDidChange(window);
}

// The whole subtree already answers the new window; each view hears of it after its subviews.
void KRView::windowDidChange(KRWindow* window) {
    for (const auto& subview : m_subviews) {
        subview->windowDidChange(window);
    }
    if (window) {
        if (m_needsLayout || m_subtreeNeedsLayout) {
            window->setNeedsUpdate();
        }
        // The window is known: no walk up to find it.
        if (!trackingAreas().empty()) {
            m_needsTrackingAreaUpdate = true;
            noteSubtreeNeedsTrackingAreaUpdate();
            window->setNeedsUpdate();
        }
    }
    viewDidMoveToWindow();
}

// Geometry -----------------------------------------------------------------------------------------------

void KRView::setFrame(KRRect frame) {
    setFrameOrigin(frame.origin);
    setFrameSize(frame.size);
}

void KRView::setFrameOrigin(KRPoint origin) {
    if (origin == m_frame.origin) {
        return;
    }
    if (movesQuietlyTo(origin)) {
        m_frame.origin = origin;
        if (hasObserversForKey("frame")) {
            didChangeValueForKey("frame", QVariant(), QVariant::fromValue(m_frame));
        }
        return;
    }
    setNeedsDisplay();
    if (mayAnimateFrame()) {
        animateKey(KRFrameOriginKey, KRAnimatableValue::fromPoint(presentationFrame().origin),
                   KRAnimatableValue::fromPoint(origin));
    }
    m_frame.origin = origin;
    frameDidChange(false);
}

void KRView::setFrameSize(KRSize size) {
    if (size == m_frame.size) {
        return;
    }
    setNeedsDisplay();
    if (mayAnimateFrame()) {
        animateKey(KRFrameSizeKey, KRAnimatableValue::fromSize(presentationFrame().size),
                   KRAnimatableValue::fromSize(size));
    }
    m_frame.size = size;
    frameDidChange(true);
}

// A frame change starts an animation only inside an animation block, and stops one only if one runs:
// outside both, moving thousands of rows needs no animation bookkeeping at all.
bool KRView::mayAnimateFrame() const {
    return m_animations || KRAnimationTransaction::depth() > 0;
}

void KRView::frameDidChange(bool sizeChanged) {
    if (sizeChanged) {
        setNeedsLayout(true);
    }
    setNeedsDisplay();
    // Areas are in the view's own coordinates: moving the view moves them along.
    if (sizeChanged && !trackingAreas().empty()) {
        setNeedsTrackingAreaUpdate();
    }
    if (hasObserversForKey("frame")) {
        didChangeValueForKey("frame", QVariant(), QVariant::fromValue(m_frame));
    }
}

void KRView::setBoundsOrigin(KRPoint origin) {
    if (origin == identity().boundsOrigin) {
        return;
    }
    mutableIdentity().boundsOrigin = origin;
    setNeedsDisplay();
}

KRRect KRView::presentationFrame() const {
    if (!hasRunningAnimations()) {
        return m_frame;
    }
    const double now = KRClock::now();
    KRRect frame = m_frame;
    if (const auto* animation = runningAnimation(KRFrameOriginKey)) {
        frame.origin = animation->valueAtTime(now).toPoint();
    }
    if (const auto* animation = runningAnimation(KRFrameSizeKey)) {
        frame.size = animation->valueAtTime(now).toSize();
    }
    return frame;
}

// Identity and value -------------------------------------------------------------------------------------

// Each setter leaves the block unallocated while it only writes the default again.
void KRView::setIdentifier(const QString& identifier) {
    m_identifier = identifier;
}

void KRView::setObjectValue(const QJsonValue& value) {
    if (!m_identity && value.isNull()) {
        return;
    }
    mutableIdentity().objectValue = value;
}

void KRView::setTag(int tag) {
    if (!m_identity && tag == 0) {
        return;
    }
    mutableIdentity().tag = tag;
}

// Visibility and layer looks -----------------------------------------------------------------------------

void KRView::setHidden(bool hidden) {
    if (hidden == m_hidden) {
        return;
    }
    setValueNotifying("hidden", m_hidden, hidden);
    setNeedsDisplay();
}

bool KRView::isHiddenOrHasHiddenAncestor() const {
    for (const KRView* view = this; view; view = view->superview()) {
        if (view->m_hidden) {
            return true;
        }
    }
    return false;
}

void KRView::setAlphaValue(double alpha) {
    setAnimatedDouble(KROpacityKey, "alphaValue", m_alphaValue, std::clamp(alpha, 0.0, 1.0));
}

double KRView::presentationAlphaValue() const {
    return presentationDouble(KROpacityKey, m_alphaValue);
}

void KRView::setBackgroundColor(const QColor& color) {
    setAnimatedColor(KRBackgroundColorKey, m_backgroundColor, color);
}

QColor KRView::presentationBackgroundColor() const {
    return presentationColor(KRBackgroundColorKey, m_backgroundColor);
}

void KRView::setBorderColor(const QColor& color) {
    if (sameColor(color, borderColor())) {
        return;
    }
    animateKey(KRBorderColorKey, KRAnimatableValue::fromColor(presentationBorderColor()),
               KRAnimatableValue::fromColor(color));
    changeLooks([&](Looks& looks) { looks.borderColor = color; });
    setNeedsDisplay();
}

QColor KRView::presentationBorderColor() const {
    return presentationColor(KRBorderColorKey, borderColor());
}

void KRView::setBorderWidth(double width) {
    if (width == borderWidth()) {
        return;
    }
    changeLooks([&](Looks& looks) { looks.borderWidth = width; });
    setNeedsDisplay();
}

void KRView::setCornerRadius(double radius) {
    if (radius == cornerRadius()) {
        return;
    }
    changeLooks([&](Looks& looks) { looks.cornerRadius = radius; });
    setNeedsDisplay();
}

void KRView::setMasksToBounds(bool masks) {
    if (masks == m_masksToBounds) {
        return;
    }
    m_masksToBounds = masks;
    setNeedsDisplay();
}

void KRView::setShadowOpacity(double opacity) {
    if (opacity == shadowOpacity()) {
        return;
    }
    setNeedsDisplay();
    animateKey(KRShadowOpacityKey, KRAnimatableValue::fromDouble(presentationShadowOpacity()),
               KRAnimatableValue::fromDouble(opacity));
    changeLooks([&](Looks& looks) { looks.shadowOpacity = opacity; });
    setNeedsDisplay();
}

double KRView::presentationShadowOpacity() const {
    return presentationDouble(KRShadowOpacityKey, shadowOpacity());
}

void KRView::setShadowRadius(double radius) {
    if (radius == shadowRadius()) {
        return;
    }
    setNeedsDisplay();
    changeLooks([&](Looks& looks) { looks.shadowRadius = radius; });
    setNeedsDisplay();
}

void KRView::setShadowOffset(KRSize offset) {
    if (offset == shadowOffset()) {
        return;
    }
    setNeedsDisplay();
    changeLooks([&](Looks& looks) { looks.shadowOffset = offset; });
    setNeedsDisplay();
}

void KRView::setShadowColor(const QColor& color) {
    if (sameColor(color, shadowColor())) {
        return;
    }
    changeLooks([&](Looks& looks) { looks.shadowColor = color; });
    setNeedsDisplay();
}

void KRView::setScale(double scale) {
    if (scale == this->scale()) {
        return;
    }
    setNeedsDisplay();
    animateKey(KRScaleKey, KRAnimatableValue::fromDouble(presentationScale()),
               KRAnimatableValue::fromDouble(scale));
    changeLooks([&](Looks& looks) { looks.scale = scale; });
    setNeedsDisplay();
}

double KRView::presentationScale() const {
    return presentationDouble(KRScaleKey, this->scale());
}

// The animatable looks share one path: invalidate what is on screen now (a shadow or scale may be
// shrinking), animate from the presentation value, store, and invalidate the new look.
void KRView::setAnimatedDouble(const char* key, const char* observedKeyPath, double& field, double value) {
    if (value == field) {
        return;
    }
    setNeedsDisplay();
    animateKey(key, KRAnimatableValue::fromDouble(presentationDouble(key, field)),
               KRAnimatableValue::fromDouble(value));
    if (observedKeyPath) {
        setValueNotifying(observedKeyPath, field, value);
    } else {
        field = value;
    }
    setNeedsDisplay();
}

void KRView::setAnimatedColor(const char* key, QColor& field, const QColor& color) {
    if (sameColor(color, field)) {
        return;
    }
    animateKey(key, KRAnimatableValue::fromColor(presentationColor(key, field)),
               KRAnimatableValue::fromColor(color));
    field = color;
    setNeedsDisplay();
}

double KRView::presentationDouble(const char* key, double modelValue) const {
    const auto* animation = runningAnimation(key);
    return animation ? animation->valueAtTime(KRClock::now()).toDouble() : modelValue;
}

QColor KRView::presentationColor(const char* key, const QColor& modelValue) const {
    const auto* animation = runningAnimation(key);
    return animation ? animation->valueAtTime(KRClock::now()).toColor() : modelValue;
}

// Layout -------------------------------------------------------------------------------------------------

void KRView::setNeedsLayout(bool needsLayout) {
    if (!needsLayout) {
        m_needsLayout = false;
        return;
    }
    if (m_needsLayout) {
        return;
    }
    m_needsLayout = true;
    noteSubtreeNeedsLayout();
}

// Ancestors remember that something below them needs layout, so a pass skips clean subtrees; one with many
// subviews also lists which of them to visit.
void KRView::noteSubtreeNeedsLayout() {
    KRView* marked = this;
    KRView* ancestor = superview();
    for (; ancestor; marked = ancestor, ancestor = ancestor->superview()) {
        marked->listForLayoutUnder(ancestor);
        if (ancestor->m_subtreeNeedsLayout) {
            break;
        }
        ancestor->m_subtreeNeedsLayout = true;
    }
    // From where the walk stopped: the root above it is the same.
    if (KRWindow* const window = ancestor ? ancestor->window() : this->window()) {
        window->setNeedsUpdate();
    }
}

void KRView::layoutIfNeeded() {
    // layoutSubviews may mark views again (a parent resizing a child); a few rounds settle it, and the
    // bound keeps a view that always marks itself from hanging the pass.
    constexpr int maximumRounds = 8;
    for (int round = 0; round < maximumRounds && (m_needsLayout || m_subtreeNeedsLayout); ++round) {
        if (m_needsLayout) {
            m_needsLayout = false;
            layoutSubviews();
        }
        if (m_subtreeNeedsLayout) {
            m_subtreeNeedsLayout = false;
            if (m_listsMarkedSubviews) {
                layoutListedSubviews();
            } else {
                layoutSubviewsThatNeedIt();
            }
        }
    }
}

// The clean subviews are only read (a little ahead), and only a subview laid out is held while it lays out.
void KRView::layoutSubviewsThatNeedIt() {
    for (std::size_t i = 0; i < m_subviews.size(); ++i) {
        if (i + kSubviewPrefetchDistance < m_subviews.size()) {
            __builtin_prefetch(&m_subviews[i + kSubviewPrefetchDistance]->m_needsLayout);
        }
        const KRView& subview = *m_subviews[i];
        if (subview.m_needsLayout || subview.m_subtreeNeedsLayout) {
            const std::shared_ptr<KRView> laidOut = m_subviews[i];
            laidOut->layoutIfNeeded();
        }
    }
}

// A list of thousands of rows comes through here for the one row that changed, and visits that row alone.
// The rows listed when the round starts go in the order they asked; rows that ask meanwhile (a row's layout
// marking a sibling) go in the caller's next round. When a good share of the rows asked (new rows), all are
// read, in subview order.
void KRView::layoutListedSubviews() {
    if (m_readsAllSubviewsForLayout) {
        m_readsAllSubviewsForLayout = false;
        layoutSubviewsThatNeedIt();
        return;
    }
    KRMarkedSubviews::Round round(layoutRequests(), this);
    while (KRView* const subview = round.next()) {
        if (const KRView* const later = round.ahead(kSubviewPrefetchDistance)) {
            __builtin_prefetch(&later->m_needsLayout);
        }
        subview->m_listedForLayout = false;
        if (subview->m_needsLayout || subview->m_subtreeNeedsLayout) {
            const SubviewVisit visit(subview);
            subview->layoutIfNeeded();
        }
    }
}

KRSize KRView::sizeThatFits(KRSize) const {
    return m_frame.size;
}

void KRView::sizeToFit() {
    setFrameSize(sizeThatFits(m_frame.size));
}

// Display ------------------------------------------------------------------------------------------------

namespace {
// The coverage in force (see SubviewDisplayCoverage); innermost first.
const KRView::SubviewDisplayCoverage* currentDisplayCoverage = nullptr;
} // namespace

KRView::SubviewDisplayCoverage::SubviewDisplayCoverage(KRView* view) : m_previous(currentDisplayCoverage) {
    view->setNeedsDisplay();
    KRWindow* window = view->window();
    // A scaled view draws its subviews elsewhere than their frames say; it gets no shortcut.
    if (!window || view->looks().scale != 1.0 || view->presentationScale() != 1.0) {
        return;
    }
    m_view = view;
    const KRPoint offsetToWindow = view->convertPointToView(KRPointZero, nullptr);
    const KRRect markedInWindow =
        view->superview() ? view->superview()->convertRectToView(view->m_frame, nullptr) : view->m_frame;
    const KRView* content = window->contentView();
    const KRRect contentInWindow = content ? content->frame() : KRRectNull;
    m_marked = edgesOf(KRRectOffset(markedInWindow, -offsetToWindow.x, -offsetToWindow.y));
    m_content = edgesOf(KRRectOffset(contentInWindow, -offsetToWindow.x, -offsetToWindow.y));
    currentDisplayCoverage = this;
}

KRView::SubviewDisplayCoverage::~SubviewDisplayCoverage() {
    if (currentDisplayCoverage == this) {
        currentDisplayCoverage = m_previous;
    }
}

bool KRView::SubviewDisplayCoverage::looksAreCoveredAfterAll(const Looks* looks) const {
    const Looks& shown = looks ? *looks : defaultLooks();
    if (shown.shadowOpacity > 0.0 || shown.scale != 1.0) {
        return false;
    }
    m_coveredLooks = looks;
    return true;
}

// A move that animates nothing and whose marks for display a coverage makes unnecessary, both where the
// view is and where it goes, only stores the origin (and tells observers). A long list moves thousands of
// rows this way when one is inserted near the top.
bool KRView::movesQuietlyTo(KRPoint origin) const {
    if (!currentDisplayCoverage || mayAnimateFrame()) {
        return false;
    }
    return currentDisplayCoverage->coversMove(*this, KRRect{origin, m_frame.size});
}

void KRView::setNeedsDisplay() {
    if (currentDisplayCoverage && currentDisplayCoverage->covers(*this)) {
        return;
    }
    // Views mark themselves many times while a list builds and places its rows: the walks up to the window
    // stay free of calls, and a view that does not animate skips looking up presentation values.
    const KRView* root = this;
    while (const KRView* up = root->superview()) {
        root = up;
    }
    if (!(root->m_parent & kWindowTag)) {
        return;
    }
    auto* const window = reinterpret_cast<KRWindow*>(root->m_parent & ~kWindowTag);
    const bool animating = hasRunningAnimations();
    KRRect visual = KRRectUnion(m_frame, animating ? presentationFrame() : m_frame);
    // A moving view must also repaint where it has been: mark the whole path of a frame animation, with
    // room for a spring's overshoot.
    const auto* originAnimation = animating ? runningAnimation(KRFrameOriginKey) : nullptr;
    const auto* sizeAnimation = animating ? runningAnimation(KRFrameSizeKey) : nullptr;
    if (originAnimation || sizeAnimation) {
        KRRect start = m_frame;
        if (originAnimation) {
            start.origin = originAnimation->fromValue().toPoint();
        }
        if (sizeAnimation) {
            start.size = sizeAnimation->fromValue().toSize();
        }
        const double overshootX = 0.25 * std::fabs(start.origin.x - m_frame.origin.x) +
                                  0.25 * std::fabs(start.size.width - m_frame.size.width);
        const double overshootY = 0.25 * std::fabs(start.origin.y - m_frame.origin.y) +
                                  0.25 * std::fabs(start.size.height - m_frame.size.height);
        visual = KRRectInset(KRRectUnion(visual, start), -overshootX, -overshootY);
    }
    const Looks& looks = this->looks();
    const double shadowOpacity =
        animating ? std::max(looks.shadowOpacity, presentationShadowOpacity()) : looks.shadowOpacity;
    if (shadowOpacity > 0.0) {
        const double extent = 2.0 * looks.shadowRadius + std::max(std::fabs(looks.shadowOffset.width),
                                                                  std::fabs(looks.shadowOffset.height));
        visual = KRRectInset(visual, -extent, -extent);
    }
    const double scale = animating ? std::max(looks.scale, presentationScale()) : looks.scale;
    if (scale > 1.0) {
        visual = KRRectInset(visual, -visual.size.width * (scale - 1.0) * 0.5,
                             -visual.size.height * (scale - 1.0) * 0.5);
    }
    // A view that does not clip may draw subviews outside its frame; they report their own areas, so
    // marking the frame is enough here. Into window coordinates as convertRectToView goes, step by step.
    if (superview() && !KRRectIsNull(visual)) {
        visual = KRRectStandardize(visual);
        for (const KRView* ancestor = superview(); ancestor; ancestor = ancestor->superview()) {
            visual.origin = offsetIntoParent(visual.origin, *ancestor);
        }
    }
    window->setNeedsDisplayInRect(visual);
}

void KRView::setNeedsDisplayInRect(KRRect rect) {
    if (KRWindow* const window = this->window()) {
        window->setNeedsDisplayInRect(convertRectToView(rect, nullptr));
    }
}

void KRView::draw(QPainter&, KRRect) {}

// Hit testing and conversion -----------------------------------------------------------------------------

KRView* KRView::hitTest(KRPoint point) {
    if (m_hidden || m_ignoresMouseEvents || !KRRectContainsPoint(m_frame, point)) {
        return nullptr;
    }
    const KRPoint local = offsetIntoChild(point, *this);
    for (auto it = m_subviews.rbegin(); it != m_subviews.rend(); ++it) {
        if (KRView* hit = (*it)->hitTest(local)) {
            return hit;
        }
    }
    return this;
}

KRPoint KRView::convertPointToView(KRPoint point, const KRView* view) const {
    // Up to the root (whose superview coordinates are the window's), then down into view.
    for (const KRView* current = this; current; current = current->superview()) {
        point = offsetIntoParent(point, *current);
    }
    return view ? view->convertPointFromView(point, nullptr) : point;
}

KRPoint KRView::convertPointFromView(KRPoint point, const KRView* view) const {
    if (view) {
        point = view->convertPointToView(point, nullptr);
    }
    std::vector<const KRView*> chain;
    for (const KRView* current = this; current; current = current->superview()) {
        chain.push_back(current);
    }
    for (auto it = chain.rbegin(); it != chain.rend(); ++it) {
        point = offsetIntoChild(point, **it);
    }
    return point;
}

KRRect KRView::convertRectToView(KRRect rect, const KRView* view) const {
    if (KRRectIsNull(rect)) {
        return rect;
    }
    rect = KRRectStandardize(rect);
    return KRRect{convertPointToView(rect.origin, view), rect.size};
}

KRRect KRView::convertRectFromView(KRRect rect, const KRView* view) const {
    if (KRRectIsNull(rect)) {
        return rect;
    }
    rect = KRRectStandardize(rect);
    return KRRect{convertPointFromView(rect.origin, view), rect.size};
}

KRPoint KRView::convertPointToScreen(KRPoint point) const {
    const KRPoint inWindow = convertPointToView(point, nullptr);
    KRWindow* const window = this->window();
    return window ? window->convertPointToScreen(inWindow) : inWindow;
}

KRPoint KRView::convertPointFromScreen(KRPoint point) const {
    KRWindow* const window = this->window();
    const KRPoint inWindow = window ? window->convertPointFromScreen(point) : point;
    return convertPointFromView(inWindow, nullptr);
}

KRRect KRView::convertRectToScreen(KRRect rect) const {
    const KRRect inWindow = convertRectToView(rect, nullptr);
    KRWindow* const window = this->window();
    return window ? window->convertRectToScreen(inWindow) : inWindow;
}

KRRect KRView::convertRectFromScreen(KRRect rect) const {
    KRWindow* const window = this->window();
    const KRRect inWindow = window ? window->convertRectFromScreen(rect) : rect;
    return convertRectFromView(inWindow, nullptr);
}

// Tracking areas -----------------------------------------------------------------------------------------

void KRView::addTrackingArea(const std::shared_ptr<KRTrackingArea>& area) {
    if (!area) {
        return;
    }
    m_trackingAreas.push_back(area);
}

void KRView::removeTrackingArea(const KRTrackingArea* area) {
    m_trackingAreas.erase(std::remove_if(m_trackingAreas.begin(), m_trackingAreas.end(),
                                         [area](const auto& each) { return each.get() == area; }),
                          m_trackingAreas.end());
}

// Marks the view and the path to it, so the window's pass visits only the views that asked.
void KRView::setNeedsTrackingAreaUpdate() {
    KRWindow* const window = this->window();
    if (!window) {
        return;
    }
    m_needsTrackingAreaUpdate = true;
    noteSubtreeNeedsTrackingAreaUpdate();
    window->setNeedsUpdate();
}

// As for layout: ancestors remember the way down, and one with many subviews lists which of them to visit.
void KRView::noteSubtreeNeedsTrackingAreaUpdate() {
    KRView* marked = this;
    for (KRView* ancestor = superview(); ancestor; marked = ancestor, ancestor = ancestor->superview()) {
        marked->listForTrackingAreasUnder(ancestor);
        if (ancestor->m_subtreeNeedsTrackingAreaUpdate) {
            return;
        }
        ancestor->m_subtreeNeedsTrackingAreaUpdate = true;
    }
}

void KRView::updateTrackingAreasIfNeeded() {
    if (m_needsTrackingAreaUpdate) {
        m_needsTrackingAreaUpdate = false;
        updateTrackingAreas();
    }
    if (!m_subtreeNeedsTrackingAreaUpdate) {
        return;
    }
    m_subtreeNeedsTrackingAreaUpdate = false;
    if (m_listsMarkedSubviews) {
        updateTrackingAreasOfListedSubviews();
    } else {
        updateTrackingAreasOfSubviews();
    }
}

// By index: an update may change the tree. Only a subview that is updated is held while it updates; the
// others are only read (a little ahead).
void KRView::updateTrackingAreasOfSubviews() {
    for (std::size_t i = 0; i < m_subviews.size(); ++i) {
        if (i + kSubviewPrefetchDistance < m_subviews.size()) {
            __builtin_prefetch(&m_subviews[i + kSubviewPrefetchDistance]->m_needsLayout);
        }
        const KRView& subview = *m_subviews[i];
        if (subview.m_needsTrackingAreaUpdate || subview.m_subtreeNeedsTrackingAreaUpdate) {
            const std::shared_ptr<KRView> updated = m_subviews[i];
            updated->updateTrackingAreasIfNeeded();
        }
    }
}

// The subviews listed when the pass starts, in the order they asked (or all, in subview order, when a good
// share asked); those that ask during it are for the next pass, which their asking schedules.
void KRView::updateTrackingAreasOfListedSubviews() {
    if (m_readsAllSubviewsForTrackingAreas) {
        m_readsAllSubviewsForTrackingAreas = false;
        updateTrackingAreasOfSubviews();
        return;
    }
    KRMarkedSubviews::Round round(trackingAreaRequests(), this);
    while (KRView* const subview = round.next()) {
        subview->m_listedForTrackingAreas = false;
        if (subview->m_needsTrackingAreaUpdate || subview->m_subtreeNeedsTrackingAreaUpdate) {
            const SubviewVisit visit(subview);
            subview->updateTrackingAreasIfNeeded();
        }
    }
}

// Responder and key views --------------------------------------------------------------------------------

void KRView::setNextResponder(KRResponder* responder) {
    if (!m_identity && !responder) {
        return;
    }
    mutableIdentity().nextResponder.reset(responder);
}

void KRView::setNextKeyView(KRView* view) {
    if (!m_identity && !view) {
        return;
    }
    mutableIdentity().nextKeyView.reset(view);
}

KRResponder* KRView::nextResponder() const {
    if (KRResponder* explicitNext = identity().nextResponder.get()) {
        return explicitNext;
    }
    if (KRView* parent = superview()) {
        return parent;
    }
    return window();
}

bool KRView::acceptsFirstMouse(const KREvent*) const {
    return false;
}

bool KRView::canBecomeKeyView() const {
    return acceptsFirstResponder() && !isHiddenOrHasHiddenAncestor();
}

// Dragging destination ----------------------------------------------------------------------------------

void KRView::registerForDraggedTypes(const QStringList& types) {
    if (!m_identity && types.isEmpty()) {
        return;
    }
    QStringList& registered = mutableIdentity().registeredDraggedTypes;
    for (const QString& type : types) {
        if (!registered.contains(type)) {
            registered.append(type);
        }
    }
}

void KRView::unregisterDraggedTypes() {
    if (!m_identity) {
        return;
    }
    m_identity->registeredDraggedTypes.clear();
}

// Animation ----------------------------------------------------------------------------------------------

void KRView::performAnimated(bool animated, const std::function<void(EZAnimationContext&)>& animations,
                             std::function<void()> completion) {
    KRAnimationTransaction::perform(animated, animations, std::move(completion));
}

void KRView::animate(const std::function<void(EZAnimationContext&)>& animations,
                     std::function<void()> completion) {
    KRAnimationTransaction::perform(true, animations, std::move(completion));
}

void KRView::performWithoutAnimation(const std::function<void()>& block) {
    KRAnimationTransaction::performWithoutAnimation(block);
}

void KRView::performNonAnimated(bool nonAnimated, const std::function<void()>& block) {
    KRAnimationTransaction::performNonAnimated(nonAnimated, block);
}

bool KRView::hasRunningAnimationForKey(const char* key) const {
    return runningAnimation(key) != nullptr;
}

const KRPropertyAnimation* KRView::runningAnimation(const char* key) const {
    if (!m_animations) {
        return nullptr;
    }
    for (const auto& running : m_animations->running) {
        if (std::strcmp(running.key, key) == 0) {
            return &running.animation;
        }
    }
    return nullptr;
}

void KRView::animateKey(const char* key, const KRAnimatableValue& presentationValue,
                        const KRAnimatableValue& to) {
    EZSampledFunctionRef function = KRAnimationTransaction::functionForKey(key);
    if (!function) {
        cancelAnimation(key);
        return;
    }
    // The replaced animation is stopped only after the new one is in place, so a group shared by both
    // never sees a moment with nothing running.
    std::vector<RunningAnimation> replaced;
    beginAnimating();
    auto& animations = m_animations->running;
    for (auto it = animations.begin(); it != animations.end(); ++it) {
        if (std::strcmp(it->key, key) == 0) {
            replaced.push_back(std::move(*it));
            animations.erase(it);
            break;
        }
    }
    animations.push_back(
        RunningAnimation{key, KRPropertyAnimation(presentationValue, to, KRClock::now(), std::move(function),
                                                  KRAnimationTransaction::currentGroup())});
    setNeedsDisplay();
}

void KRView::cancelAnimation(const char* key) {
    if (!m_animations) {
        return;
    }
    std::vector<RunningAnimation> cancelled;
    auto& animations = m_animations->running;
    for (auto it = animations.begin(); it != animations.end(); ++it) {
        if (std::strcmp(it->key, key) == 0) {
            cancelled.push_back(std::move(*it));
            animations.erase(it);
            break;
        }
    }
    if (!cancelled.empty()) {
        setNeedsDisplay();
    }
    // Leaving scope stops the cancelled animation, which may complete its group.
}

bool KRView::advanceAnimationsToTime(double now) {
    if (!m_animations) {
        return false;
    }
    setNeedsDisplay();
    // Finished animations are moved out before they are destroyed: destroying one may complete its
    // group, and a completion may start new animations on this very view.
    std::vector<RunningAnimation> finished;
    auto& animations = m_animations->running;
    for (auto it = animations.begin(); it != animations.end();) {
        if (it->animation.isFinishedAtTime(now)) {
            finished.push_back(std::move(*it));
            it = animations.erase(it);
        } else {
            ++it;
        }
    }
    finished.clear();
    return hasRunningAnimations();
}

bool KRView::hasRunningAnimations() const {
    return m_animations && !m_animations->running.empty();
}

void KRView::beginAnimating() {
    if (!m_animations) {
        m_animations = std::make_unique<Animations>(this);
    }
    KRAnimationEngine::shared().addAnimatingObject(m_animations.get());
}
