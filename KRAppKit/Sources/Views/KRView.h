#pragma once

#include "Animation/EZAnimationContext.h"
#include "Animation/KRAnimationEngine.h"
#include "Animation/KRPropertyAnimation.h"
#include "Foundation/KRCompactArray.h"
#include "Geometry/KRGeometry.h"
#include "Views/KRCursor.h"
#include "Views/KRResponder.h"

#include <QColor>
#include <QJsonValue>
#include <QString>
#include <QStringList>

#include <algorithm>
#include <cstdint>
#include <functional>
#include <limits>
#include <memory>
#include <span>
#include <vector>

class KREvent;
class KRTrackingArea;
class KRWindow;
class QPainter;

enum class KRWindowOrderingMode { Below = -1, Out = 0, Above = 1 };

// A retained view: a rectangle in its superview with layer looks, subviews and a layout pass. Views are
// plain C++ objects drawn by one host widget (KRHostWidget), so a view costs little. Coordinates are
// flipped (origin top left, y grows downward). A superview owns its subviews.
//
// Setters store their value and mark what must be redone (layout or display); the window runs one pass
// per turn. Looks and identity that most views leave at their defaults live in a block allocated by the
// first setter that changes one of them, so a plain view stays small. Inside KRView::performAnimated, changes
// of frame, alpha, colours, shadow opacity and scale start implicit animations from what is on screen (the
// presentation value) to the new model value.
class KRView : public KRResponder {
public:
    explicit KRView(KRRect frame = KRRectZero);
    ~KRView() override;

    // Tree -----------------------------------------------------------------------------------------------
    KRView* superview() const {
        return (m_parent & kWindowTag) ? nullptr : reinterpret_cast<KRView*>(m_parent);
    }
    // Back to front.
    const KRCompactArray<std::shared_ptr<KRView>>& subviews() const { return m_subviews; }
    // Adds view in front of its siblings (removing it from a former superview first).
    void addSubview(const std::shared_ptr<KRView>& view);
    // Above/Below relativeTo (front/back of all siblings when relativeTo is null). Adding a view that is
    // already a subview moves it.
    void addSubviewPositionedRelativeTo(const std::shared_ptr<KRView>& view, KRWindowOrderingMode place,
                                        const KRView* relativeTo);
    void removeFromSuperview();
    // Removes those of views that are subviews of this view, as removeFromSuperview on each would, in one
    // pass over the subview array, so that clearing thousands of subviews stays linear. In the order given,
    // each view is marked for display and hears viewWillMoveToSuperview(nullptr) while all are still in
    // place; then all leave at once, and each hears of its new window and viewDidMoveToSuperview.
    void removeSubviews(std::span<KRView* const> views);
    bool isDescendantOf(const KRView* view) const; // true for the view itself
    // Room for count subviews, for a view that knows how many it is about to get.
    void reserveSubviews(std::size_t count) { m_subviews.reserve(count); }
    KRWindow* window() const;
    std::shared_ptr<KRView> sharedFromSuperview() const; // the owning pointer held by the superview
    virtual void viewWillMoveToSuperview(KRView* newSuperview);
    virtual void viewDidMoveToSuperview();
    virtual void viewDidMoveToWindow();

    // Geometry -------------------------------------------------------------------------------------------
    KRRect frame() const { return m_frame; }
    // Asks the processor to load the frame ahead of use: a pass over thousands of views calls this a few
    // views ahead, so that it does not wait on memory at every view.
    void prefetchFrame() const {
        __builtin_prefetch(&m_frame);
        __builtin_prefetch(&m_frame.size.height);
    }
    // What moving a view reads besides its frame: its superview, looks, animations and tracking areas.
    void prefetchViewState() const {
        __builtin_prefetch(&m_parent);
        __builtin_prefetch(&m_looks);
        __builtin_prefetch(&m_animations);
    }
    void setFrame(KRRect frame); // setFrameOrigin, then setFrameSize
    virtual void setFrameOrigin(KRPoint origin);
    virtual void setFrameSize(KRSize size);
    // Bounds share the frame's size; their origin shifts the content (scrolling).
    KRRect bounds() const {
        return KRRect{m_identity ? m_identity->boundsOrigin : KRPointZero, m_frame.size};
    }
    void setBoundsOrigin(KRPoint origin);
    // What is on screen now: the model value, or the running animation's current value.
    KRRect presentationFrame() const;

    // Identity and value ---------------------------------------------------------------------------------
    const QString& identifier() const { return m_identifier; }
    void setIdentifier(const QString& identifier);
    virtual QJsonValue objectValue() const { return identity().objectValue; }
    virtual void setObjectValue(const QJsonValue& value);
    int tag() const { return identity().tag; }
    void setTag(int tag);

    // Visibility and layer looks ---------------------------------------------------------------------------
    bool isHidden() const { return m_hidden; }
    void setHidden(bool hidden);
    bool isHiddenOrHasHiddenAncestor() const;
    // Applies to the whole subtree, composited as one layer.
    double alphaValue() const { return m_alphaValue; }
    void setAlphaValue(double alpha);
    double presentationAlphaValue() const;
    // An invalid colour means none.
    QColor backgroundColor() const { return m_backgroundColor; }
    void setBackgroundColor(const QColor& color);
    QColor presentationBackgroundColor() const;
    QColor borderColor() const { return looks().borderColor; }
    void setBorderColor(const QColor& color);
    QColor presentationBorderColor() const;
    double borderWidth() const { return looks().borderWidth; }
    void setBorderWidth(double width);
    double cornerRadius() const { return looks().cornerRadius; }
    void setCornerRadius(double radius);
    bool masksToBounds() const { return m_masksToBounds; }
    void setMasksToBounds(bool masks);
    // The shadow falls outside the view, behind its background; it is not clipped by the view itself.
    double shadowOpacity() const { return looks().shadowOpacity; }
    void setShadowOpacity(double opacity);
    double presentationShadowOpacity() const;
    double shadowRadius() const { return looks().shadowRadius; }
    void setShadowRadius(double radius);
    KRSize shadowOffset() const { return looks().shadowOffset; }
    void setShadowOffset(KRSize offset);
    QColor shadowColor() const { return looks().shadowColor; }
    void setShadowColor(const QColor& color);
    // A scale about the view's centre, applied when drawing (hit testing ignores it).
    double scale() const { return looks().scale; }
    void setScale(double scale);
    double presentationScale() const;
    // A view that ignores mouse events is skipped by hitTest, with its subtree.
    bool ignoresMouseEvents() const { return m_ignoresMouseEvents; }
    void setIgnoresMouseEvents(bool ignores) { m_ignoresMouseEvents = ignores; }

    // Layout ---------------------------------------------------------------------------------------------
    bool needsLayout() const { return m_needsLayout; }
    // Marks the view; the window lays it out once on its next pass (or layoutIfNeeded does it now).
    void setNeedsLayout(bool needsLayout);
    // Lays out this view if it needs it, then every descendant that needs it, parents before children.
    // Siblings go in subview order, except under a view with many subviews of which few asked: there they go
    // in the order they asked.
    void layoutIfNeeded();
    virtual void layoutSubviews() {}
    virtual KRSize sizeThatFits(KRSize size) const;
    void sizeToFit();

    // Display --------------------------------------------------------------------------------------------
    void setNeedsDisplay();
    void setNeedsDisplayInRect(KRRect rect);
    // Marks view whole for display; while the object lives, direct subviews of view that show no shadow or
    // scale and do not animate skip marking themselves when they lie inside that marked area or outside the
    // window's content. For views that move thousands of subviews at once (a long list shifting its rows).
    class SubviewDisplayCoverage;
    // Draws the view's own content in its bounds coordinates; background, border and shadow are drawn for
    // it. The painter is already translated, clipped (when masksToBounds) and faded.
    virtual void draw(QPainter& painter, KRRect dirtyRect);

    // Hit testing and conversion -------------------------------------------------------------------------
    // point is in the superview's coordinates. Answers the frontmost descendant containing it, the view
    // itself, or null (hidden, ignoring mouse events, or outside the frame).
    virtual KRView* hitTest(KRPoint point);
    bool mouseInRect(KRPoint point, KRRect rect) const { return KRRectContainsPoint(rect, point); }
    // A null view means the window.
    KRPoint convertPointFromView(KRPoint point, const KRView* view) const;
    KRPoint convertPointToView(KRPoint point, const KRView* view) const;
    KRRect convertRectFromView(KRRect rect, const KRView* view) const;
    KRRect convertRectToView(KRRect rect, const KRView* view) const;
    // Through the window's screen mapping (the window's coordinates when the view has no window).
    KRPoint convertPointToScreen(KRPoint point) const;
    KRPoint convertPointFromScreen(KRPoint point) const;
    KRRect convertRectToScreen(KRRect rect) const;
    KRRect convertRectFromScreen(KRRect rect) const;

    // Tracking areas and cursors -------------------------------------------------------------------------
    void addTrackingArea(const std::shared_ptr<KRTrackingArea>& area);
    void removeTrackingArea(const KRTrackingArea* area);
    const KRCompactArray<std::shared_ptr<KRTrackingArea>>& trackingAreas() const { return m_trackingAreas; }
    // Called by the window's next pass after the geometry of a view that owns tracking areas changed, and
    // when such a view joins a window; subclasses rebuild their areas here. A view that wants these calls
    // adds its area up front (an empty rect will do).
    virtual void updateTrackingAreas() {}

    // Responder and key views ----------------------------------------------------------------------------
    KRResponder* nextResponder() const override;
    void setNextResponder(KRResponder* responder);
    virtual bool acceptsFirstMouse(const KREvent* event) const;
    virtual bool canBecomeKeyView() const;
    KRView* nextKeyView() const { return identity().nextKeyView.get(); }
    void setNextKeyView(KRView* view);

    // Dragging destination -------------------------------------------------------------------------------
    // The pasteboard types the view accepts as a drag destination, in the order first registered.
    // Registering adds to the types already registered; a type is kept once.
    void registerForDraggedTypes(const QStringList& types);
    const QStringList& registeredDraggedTypes() const { return identity().registeredDraggedTypes; }
    void unregisterDraggedTypes();

    // Animation ------------------------------------------------------------------------------------------
    // Changes made by animations animate when animated is true, along the curve the block sets on the
    // context. completion runs once all animations started by the block have ended (at once if none).
    static void performAnimated(bool animated, const std::function<void(EZAnimationContext&)>& animations,
                                std::function<void()> completion = {});
    static void animate(const std::function<void(EZAnimationContext&)>& animations,
                        std::function<void()> completion = {});
    static void performWithoutAnimation(const std::function<void()>& block);
    static void performNonAnimated(bool nonAnimated, const std::function<void()>& block);
    bool hasRunningAnimations() const;
    bool hasRunningAnimationForKey(const char* key) const;
    // Drops the animations finished at `now` and redisplays; answers whether any still runs.
    virtual bool advanceAnimationsToTime(double now);

protected:
    // Asks the animation engine to advance this view (advanceAnimationsToTime) until it answers false.
    void beginAnimating();
    // Window bookkeeping: the window sets itself on its content view, and views joining or leaving a tree
    // tell their subtree when that changes the window.
    void setWindowRecursively(KRWindow* window);
    void windowDidChange(KRWindow* window);
    void setNeedsTrackingAreaUpdate();
    // Runs updateTrackingAreas on this view and every descendant that asked, parents first.
    void updateTrackingAreasIfNeeded();
    friend class KRWindow;

private:
    // Layer looks most views leave at their defaults. Views that look alike (every row's background, say)
    // share one immutable block; a setter swaps in a changed copy. No block means the defaults below.
    struct Looks {
        KRSize shadowOffset{0.0, 3.0}; // downward: y grows down
        double borderWidth = 0.0;
        double cornerRadius = 0.0;
        double shadowOpacity = 0.0;
        double shadowRadius = 3.0;
        double scale = 1.0;
        QColor borderColor;
        QColor shadowColor{0, 0, 0};
        // Holders of a shared block: the views that show it and the cache of recent ones. A count of its
        // own, rather than a shared_ptr, keeps the view's handle to one word.
        mutable std::uint32_t references = 0;

        bool operator==(const Looks& other) const {
            return shadowOffset == other.shadowOffset && borderWidth == other.borderWidth &&
                   cornerRadius == other.cornerRadius && shadowOpacity == other.shadowOpacity &&
                   shadowRadius == other.shadowRadius && scale == other.scale &&
                   borderColor == other.borderColor && shadowColor == other.shadowColor;
        }
    };
    // Identity and wiring that few views have, allocated by the first setter that needs it.
    struct Identity {
        KRPoint boundsOrigin;
        QJsonValue objectValue;
        KRWeak<KRResponder> nextResponder;
        KRWeak<KRView> nextKeyView;
        QStringList registeredDraggedTypes;
        int tag = 0;
    };
    static const Looks& defaultLooks();
    const Looks& looks() const { return m_looks ? *m_looks : defaultLooks(); }
    // Replaces the looks by a copy that change has edited, shared with other views that look the same.
    template <class Change> void changeLooks(Change change) {
        Looks changed = looks();
        change(changed);
        const Looks* shared = sharedLooks(changed);
        releaseLooks(m_looks);
        m_looks = shared;
    }
    // A shared block equal to looks with a reference taken for the caller, or null for the defaults.
    static const Looks* sharedLooks(const Looks& looks);
    static void releaseLooks(const Looks* looks);
    static const Identity& defaultIdentity();
    const Identity& identity() const { return m_identity ? *m_identity : defaultIdentity(); }
    Identity& mutableIdentity();

    struct RunningAnimation {
        const char* key;
        KRPropertyAnimation animation;
    };
    // The running animations and the engine's handle on the view; only animating views have one.
    struct Animations;
    // Starts, replaces or cancels the animation of key for a change from the on-screen value to `to`.
    bool mayAnimateFrame() const;
    bool movesQuietlyTo(KRPoint origin) const;
    void animateKey(const char* key, const KRAnimatableValue& presentationValue, const KRAnimatableValue& to);
    const KRPropertyAnimation* runningAnimation(const char* key) const;
    void setAnimatedDouble(const char* key, const char* observedKeyPath, double& field, double value);
    void setAnimatedColor(const char* key, QColor& field, const QColor& color);
    double presentationDouble(const char* key, double modelValue) const;
    QColor presentationColor(const char* key, const QColor& modelValue) const;
    void cancelAnimation(const char* key);
    void noteSubtreeNeedsLayout();
    void layoutSubviewsThatNeedIt();
    void layoutListedSubviews();
    void noteSubtreeNeedsTrackingAreaUpdate();
    void updateTrackingAreasOfSubviews();
    void updateTrackingAreasOfListedSubviews();
    void beginListingMarkedSubviews();
    void listForLayoutUnder(KRView* parent);
    void listForTrackingAreasUnder(KRView* parent);
    void carryMarksIntoSuperview();
    void leaveSuperviewsLists();
    void frameDidChange(bool sizeChanged);
    void detachFromSuperview();

    // List rows are built from about ten views each, so every byte stored here is paid ten times a row.
    // The superview, or for a window's content view the window, tagged in the low bit. Other views find their
    // window through their root.
    static constexpr std::uintptr_t kWindowTag = 1;
    std::uintptr_t m_parent = 0;
    KRCompactArray<std::shared_ptr<KRView>> m_subviews;
    KRRect m_frame;
    double m_alphaValue = 1.0;
    QColor m_backgroundColor;
    // Kept out of the rare block: rows name most of their views, and a literal identifier costs nothing here.
    QString m_identifier;
    const Looks* m_looks = nullptr;
    std::unique_ptr<Identity> m_identity;
    KRCompactArray<std::shared_ptr<KRTrackingArea>> m_trackingAreas;
    std::unique_ptr<Animations> m_animations;
    bool m_hidden = false;
    bool m_masksToBounds = false;
    bool m_ignoresMouseEvents = false;
    // A new view has never been laid out.
    bool m_needsLayout = true;
    bool m_subtreeNeedsLayout = false;
    bool m_needsTrackingAreaUpdate = false;
    bool m_subtreeNeedsTrackingAreaUpdate = false;
    // A view with many subviews lists those that ask for a pass (KRMarkedSubviews) rather than have the pass
    // read them all, unless so many asked that its next pass reads them all anyway; the last two bits say
    // whether this view is on its superview's lists. They fill the byte the flags above leave over.
    bool m_listsMarkedSubviews : 1 = false;
    bool m_readsAllSubviewsForLayout : 1 = false;
    bool m_readsAllSubviewsForTrackingAreas : 1 = false;
    bool m_listedForLayout : 1 = false;
    bool m_listedForTrackingAreas : 1 = false;
};

class KRView::SubviewDisplayCoverage {
public:
    explicit SubviewDisplayCoverage(KRView* view);
    ~SubviewDisplayCoverage();
    SubviewDisplayCoverage(const SubviewDisplayCoverage&) = delete;
    SubviewDisplayCoverage& operator=(const SubviewDisplayCoverage&) = delete;

    // Whether marking subview's frame would add nothing. Called for every row a long list moves: a few
    // comparisons on the subview's own fields, inline.
    bool covers(const KRView& subview) const {
        return mayCover(subview) && coversEdges(edgesOf(subview.m_frame));
    }
    // Whether marking subview where it is and at newFrame would add nothing.
    bool coversMove(const KRView& subview, KRRect newFrame) const {
        return mayCover(subview) && coversEdges(edgesOf(subview.m_frame)) && coversEdges(edgesOf(newFrame));
    }

private:
    // The edges of a rect in the covering view's coordinates, min past max when there is no such area.
    struct Edges {
        double minX = 0.0;
        double maxX = -1.0;
        double minY = 0.0;
        double maxY = -1.0;
    };
    // A null rect has no edges: nothing lies inside it and nothing meets it.
    static Edges edgesOf(KRRect rect) {
        if (KRRectIsNull(rect)) {
            constexpr double infinity = std::numeric_limits<double>::infinity();
            return Edges{infinity, -infinity, infinity, -infinity};
        }
        const KRRect r = KRRectStandardize(rect);
        return Edges{r.origin.x, r.origin.x + r.size.width, r.origin.y, r.origin.y + r.size.height};
    }
    bool mayCover(const KRView& subview) const {
        return m_view && subview.m_parent == reinterpret_cast<std::uintptr_t>(m_view) &&
               !(subview.m_animations && subview.hasRunningAnimations()) &&
               (subview.m_looks == m_coveredLooks || looksAreCoveredAfterAll(subview.m_looks));
    }
    bool coversEdges(const Edges& frame) const {
        const bool insideMarked = frame.minX >= m_marked.minX && frame.minY >= m_marked.minY &&
                                  frame.maxX <= m_marked.maxX && frame.maxY <= m_marked.maxY;
        // Strict, as for intersecting rects: touching the content's edge does not reach into it.
        return insideMarked ||
               !(std::max(frame.minX, m_content.minX) < std::min(frame.maxX, m_content.maxX) &&
                 std::max(frame.minY, m_content.minY) < std::min(frame.maxY, m_content.maxY));
    }
    // Looks other than the last ones found covered: checked, and remembered when they are.
    bool looksAreCoveredAfterAll(const Looks* looks) const;

    const KRView* m_view = nullptr;
    // Where the view marked itself, and the window's content, both in the view's own coordinates (where
    // its subviews' frames are).
    Edges m_marked;
    Edges m_content;
    // The last looks found free of shadow and scale: thousands of rows share a few looks blocks. Null
    // stands for the default looks, which have neither.
    mutable const Looks* m_coveredLooks = nullptr;
    const SubviewDisplayCoverage* m_previous = nullptr;
};
