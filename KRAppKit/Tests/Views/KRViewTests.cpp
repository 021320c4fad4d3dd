#include "Foundation/KRRunLoop.h"
#include "Views/KRTrackingArea.h"
#include "Views/KRView.h"
#include "Views/KRWindow.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <vector>

namespace {

class CountingLayoutView : public KRView {
public:
    using KRView::KRView;
    void layoutSubviews() override {
        ++layoutCount;
        order->push_back(this);
        if (onLayout) {
            onLayout();
        }
    }
    int layoutCount = 0;
    std::shared_ptr<std::vector<const KRView*>> order = std::make_shared<std::vector<const KRView*>>();
    std::function<void()> onLayout;
};

class FittingView : public KRView {
public:
    using KRView::KRView;
    KRSize sizeThatFits(KRSize size) const override { return KRSize{size.width, 42.0}; }
};

// Logs each move hook with what the view sees of its tree at that moment.
class MoveRecordingView : public KRView {
public:
    MoveRecordingView(std::string name, std::shared_ptr<std::vector<std::string>> log)
        : KRView(KRRectMake(0, 0, 10, 10)), m_name(std::move(name)), m_log(std::move(log)) {}
    void viewWillMoveToSuperview(KRView* newSuperview) override { record("will", newSuperview); }
    void viewDidMoveToSuperview() override { record("did", nullptr); }
    void viewDidMoveToWindow() override { record("window", nullptr); }
    bool acceptsFirstResponder() const override { return true; }

private:
    void record(const char* hook, const KRView* newSuperview) {
        const KRView* parent = superview();
        const bool listedByParent =
            parent && std::any_of(parent->subviews().begin(), parent->subviews().end(),
                                  [this](const auto& subview) { return subview.get() == this; });
        m_log->push_back(m_name + " " + hook + (newSuperview ? " to a superview" : "") +
                         (parent ? " in" : " out") + (listedByParent ? " listed" : "") +
                         (window() ? " windowed" : ""));
    }

    std::string m_name;
    std::shared_ptr<std::vector<std::string>> m_log;
};

std::shared_ptr<KRView> makeView(double x, double y, double width, double height) {
    return std::make_shared<KRView>(KRRectMake(x, y, width, height));
}

std::vector<KRView*> subviewPointers(const KRView& view) {
    std::vector<KRView*> result;
    for (const auto& subview : view.subviews()) {
        result.push_back(subview.get());
    }
    return result;
}

class KRViewTest : public ::testing::Test {
protected:
    void TearDown() override { KRRunLoop::main().cancelAll(); }
};

TEST_F(KRViewTest, NewViewHasFrameAndZeroOriginBounds) {
    KRView view(KRRectMake(10, 20, 30, 40));
    EXPECT_EQ(view.frame(), KRRectMake(10, 20, 30, 40));
    EXPECT_EQ(view.bounds(), KRRectMake(0, 0, 30, 40));
    EXPECT_EQ(view.superview(), nullptr);
    EXPECT_EQ(view.window(), nullptr);
    EXPECT_DOUBLE_EQ(view.alphaValue(), 1.0);
    EXPECT_FALSE(view.isHidden());
}

TEST_F(KRViewTest, AddSubviewAppendsInFrontAndSetsSuperview) {
    auto parent = makeView(0, 0, 100, 100);
    auto a = makeView(0, 0, 10, 10);
    auto b = makeView(0, 0, 10, 10);
    parent->addSubview(a);
    parent->addSubview(b);
    EXPECT_EQ(subviewPointers(*parent), (std::vector<KRView*>{a.get(), b.get()}));
    EXPECT_EQ(a->superview(), parent.get());
}

TEST_F(KRViewTest, AddingAnExistingSubviewAgainBringsItToTheFront) {
    auto parent = makeView(0, 0, 100, 100);
    auto a = makeView(0, 0, 10, 10);
    auto b = makeView(0, 0, 10, 10);
    auto c = makeView(0, 0, 10, 10);
    parent->addSubview(a);
    parent->addSubview(b);
    parent->addSubview(c);
    parent->addSubviewPositionedRelativeTo(a, KRWindowOrderingMode::Above, nullptr);
    EXPECT_EQ(subviewPointers(*parent), (std::vector<KRView*>{b.get(), c.get(), a.get()}));
    EXPECT_EQ(parent->subviews().size(), 3u);
}

TEST_F(KRViewTest, PositionedBelowAndAboveASibling) {
    auto parent = makeView(0, 0, 100, 100);
    auto a = makeView(0, 0, 10, 10);
    auto b = makeView(0, 0, 10, 10);
    auto c = makeView(0, 0, 10, 10);
    parent->addSubview(a);
    parent->addSubview(b);
    parent->addSubviewPositionedRelativeTo(c, KRWindowOrderingMode::Below, b.get());
    EXPECT_EQ(subviewPointers(*parent), (std::vector<KRView*>{a.get(), c.get(), b.get()}));
    parent->addSubviewPositionedRelativeTo(a, KRWindowOrderingMode::Above, b.get());
    EXPECT_EQ(subviewPointers(*parent), (std::vector<KRView*>{c.get(), b.get(), a.get()}));
    parent->addSubviewPositionedRelativeTo(a, KRWindowOrderingMode::Below, nullptr);
    EXPECT_EQ(subviewPointers(*parent), (std::vector<KRView*>{a.get(), c.get(), b.get()}));
}

TEST_F(KRViewTest, AddingToAnotherParentMovesTheView) {
    auto first = makeView(0, 0, 100, 100);
    auto second = makeView(0, 0, 100, 100);
    auto child = makeView(0, 0, 10, 10);
    first->addSubview(child);
    second->addSubview(child);
    EXPECT_TRUE(first->subviews().empty());
    EXPECT_EQ(child->superview(), second.get());
}

TEST_F(KRViewTest, RemoveFromSuperviewDetachesAndReleasesOwnership) {
    auto parent = makeView(0, 0, 100, 100);
    std::weak_ptr<KRView> weakChild;
    {
        auto child = makeView(0, 0, 10, 10);
        weakChild = child;
        parent->addSubview(child);
    }
    ASSERT_FALSE(weakChild.expired()) << "the superview owns its subviews";
    weakChild.lock()->removeFromSuperview();
    EXPECT_TRUE(weakChild.expired());
    EXPECT_TRUE(parent->subviews().empty());
}

TEST_F(KRViewTest, RemovingSubviewsAtOnceKeepsTheOthersInOrderAndReleasesTheRemoved) {
    auto parent = makeView(0, 0, 100, 100);
    std::vector<std::shared_ptr<KRView>> children;
    for (int i = 0; i < 6; ++i) {
        children.push_back(makeView(0, 0, 10, 10));
        parent->addSubview(children.back());
    }
    const std::weak_ptr<KRView> weakRemoved = children[1];
    const std::vector<KRView*> removed{children[4].get(), children[1].get(), children[2].get()};
    children[1].reset();
    parent->removeSubviews(removed);
    EXPECT_EQ(subviewPointers(*parent),
              (std::vector<KRView*>{children[0].get(), children[3].get(), children[5].get()}));
    EXPECT_EQ(children[4]->superview(), nullptr);
    EXPECT_EQ(children[2]->superview(), nullptr);
    EXPECT_EQ(children[3]->superview(), parent.get());
    EXPECT_TRUE(weakRemoved.expired()) << "the superview gave up its ownership";
}

TEST_F(KRViewTest, RemovingSubviewsAtOnceSkipsViewsThatAreNotSubviews) {
    auto parent = makeView(0, 0, 100, 100);
    auto other = makeView(0, 0, 100, 100);
    auto child = makeView(0, 0, 10, 10);
    auto elsewhere = makeView(0, 0, 10, 10);
    auto loose = makeView(0, 0, 10, 10);
    parent->addSubview(child);
    other->addSubview(elsewhere);
    parent->removeSubviews(
        std::vector<KRView*>{nullptr, elsewhere.get(), loose.get(), child.get(), child.get()});
    EXPECT_TRUE(parent->subviews().empty());
    EXPECT_EQ(child->superview(), nullptr);
    EXPECT_EQ(elsewhere->superview(), other.get());
    EXPECT_EQ(subviewPointers(*other), (std::vector<KRView*>{elsewhere.get()}));
    parent->removeSubviews(std::vector<KRView*>{});
    EXPECT_TRUE(parent->subviews().empty());
}

TEST_F(KRViewTest, RemovingSubviewsAtOnceTellsEachViewBeforeAnyLeavesAndAfterAllHaveLeft) {
    KRWindow window;
    auto root = makeView(0, 0, 100, 100);
    window.setContentView(root);
    auto log = std::make_shared<std::vector<std::string>>();
    auto first = std::make_shared<MoveRecordingView>("first", log);
    auto second = std::make_shared<MoveRecordingView>("second", log);
    auto grandchild = std::make_shared<MoveRecordingView>("grandchild", log);
    root->addSubview(first);
    root->addSubview(second);
    second->addSubview(grandchild);
    log->clear();
    root->removeSubviews(std::vector<KRView*>{second.get(), first.get()});
    EXPECT_EQ(*log, (std::vector<std::string>{
                        "second will in listed windowed",
                        "first will in listed windowed",
                        "grandchild window in listed",
                        "second window out",
                        "second did out",
                        "first window out",
                        "first did out",
                    }));
    EXPECT_EQ(grandchild->window(), nullptr);
    EXPECT_EQ(grandchild->superview(), second.get());
    EXPECT_TRUE(root->subviews().empty());
}

TEST_F(KRViewTest, RemovingSubviewsAtOnceMarksTheirAreasAndDropsTheFirstResponderInside) {
    KRWindow window;
    auto root = makeView(0, 0, 200, 200);
    auto kept = makeView(0, 0, 10, 10);
    auto left = makeView(20, 30, 40, 50);
    auto log = std::make_shared<std::vector<std::string>>();
    auto focused = std::make_shared<MoveRecordingView>("focused", log);
    root->addSubview(kept);
    root->addSubview(left);
    left->addSubview(focused);
    window.setContentView(root);
    ASSERT_TRUE(window.makeFirstResponder(focused.get()));
    window.takeDirtyRect();
    root->removeSubviews(std::vector<KRView*>{left.get()});
    EXPECT_EQ(window.takeDirtyRect(), KRRectMake(20, 30, 40, 50));
    EXPECT_EQ(window.firstResponder(), &window);
    EXPECT_EQ(subviewPointers(*root), (std::vector<KRView*>{kept.get()}));
}

TEST_F(KRViewTest, DestroyingAParentClearsItsChildrensSuperview) {
    auto child = makeView(0, 0, 10, 10);
    {
        auto parent = makeView(0, 0, 100, 100);
        parent->addSubview(child);
    }
    EXPECT_EQ(child->superview(), nullptr);
}

TEST_F(KRViewTest, IsDescendantOfIncludesSelfAndAncestors) {
    auto root = makeView(0, 0, 100, 100);
    auto middle = makeView(0, 0, 50, 50);
    auto leaf = makeView(0, 0, 10, 10);
    root->addSubview(middle);
    middle->addSubview(leaf);
    EXPECT_TRUE(leaf->isDescendantOf(leaf.get()));
    EXPECT_TRUE(leaf->isDescendantOf(root.get()));
    EXPECT_FALSE(root->isDescendantOf(leaf.get()));
}

TEST_F(KRViewTest, ConversionsAcrossNestedOffsets) {
    auto root = makeView(5, 7, 300, 300);
    auto middle = makeView(10, 20, 200, 200);
    auto leaf = makeView(3, 4, 50, 50);
    root->addSubview(middle);
    middle->addSubview(leaf);
    EXPECT_EQ(leaf->convertPointToView(KRPoint{1, 1}, nullptr), (KRPoint{19, 32}));
    EXPECT_EQ(leaf->convertPointFromView(KRPoint{19, 32}, nullptr), (KRPoint{1, 1}));
    EXPECT_EQ(leaf->convertPointToView(KRPoint{0, 0}, middle.get()), (KRPoint{3, 4}));
    EXPECT_EQ(middle->convertPointFromView(KRPoint{0, 0}, leaf.get()), (KRPoint{3, 4}));
    EXPECT_EQ(leaf->convertRectToView(KRRectMake(0, 0, 10, 10), root.get()), KRRectMake(13, 24, 10, 10));
}

TEST_F(KRViewTest, BoundsOriginShiftsTheContent) {
    auto root = makeView(0, 0, 100, 100);
    auto scroller = makeView(0, 0, 100, 50);
    auto content = makeView(0, 100, 100, 10);
    root->addSubview(scroller);
    scroller->addSubview(content);
    scroller->setBoundsOrigin(KRPoint{0, 95});
    EXPECT_EQ(content->convertPointToView(KRPoint{0, 0}, nullptr), (KRPoint{0, 5}));
    EXPECT_EQ(root->hitTest(KRPoint{1, 6}), content.get());
}

TEST_F(KRViewTest, HitTestPrefersTheFrontmostOverlappingSibling) {
    auto root = makeView(0, 0, 100, 100);
    auto back = makeView(0, 0, 60, 60);
    auto front = makeView(40, 40, 60, 60);
    root->addSubview(back);
    root->addSubview(front);
    EXPECT_EQ(root->hitTest(KRPoint{50, 50}), front.get());
    EXPECT_EQ(root->hitTest(KRPoint{10, 10}), back.get());
    EXPECT_EQ(root->hitTest(KRPoint{90, 10}), root.get());
}

TEST_F(KRViewTest, HitTestSkipsHiddenAndIgnoringSiblings) {
    auto root = makeView(0, 0, 100, 100);
    auto back = makeView(0, 0, 60, 60);
    auto front = makeView(0, 0, 60, 60);
    root->addSubview(back);
    root->addSubview(front);
    front->setHidden(true);
    EXPECT_EQ(root->hitTest(KRPoint{10, 10}), back.get());
    front->setHidden(false);
    front->setIgnoresMouseEvents(true);
    EXPECT_EQ(root->hitTest(KRPoint{10, 10}), back.get());
}

TEST_F(KRViewTest, HitTestExcludesTheMaxEdges) {
    auto root = makeView(0, 0, 100, 100);
    auto child = makeView(10, 10, 20, 20);
    root->addSubview(child);
    EXPECT_EQ(root->hitTest(KRPoint{10, 10}), child.get());
    EXPECT_EQ(root->hitTest(KRPoint{30, 15}), root.get());
    EXPECT_EQ(root->hitTest(KRPoint{100, 50}), nullptr);
}

TEST_F(KRViewTest, HitTestMissesChildrenOutsideTheParentFrame) {
    auto root = makeView(0, 0, 100, 100);
    auto parent = makeView(0, 0, 20, 20);
    auto outside = makeView(30, 30, 10, 10);
    root->addSubview(parent);
    parent->addSubview(outside);
    EXPECT_EQ(root->hitTest(KRPoint{35, 35}), root.get());
}

TEST_F(KRViewTest, ManySetNeedsLayoutCallsRunOneLayoutPass) {
    KRWindow window;
    auto root = std::make_shared<CountingLayoutView>(KRRectMake(0, 0, 100, 100));
    window.setContentView(root);
    for (int i = 0; i < 50; ++i) {
        root->setNeedsLayout(true);
    }
    EXPECT_EQ(root->layoutCount, 0) << "nothing lays out from inside a setter";
    KRRunLoop::main().runOneTurn();
    EXPECT_EQ(root->layoutCount, 1);
    KRRunLoop::main().runOneTurn();
    EXPECT_EQ(root->layoutCount, 1);
}

TEST_F(KRViewTest, LayoutIfNeededLaysOutParentsBeforeChildrenAndSkipsCleanViews) {
    auto order = std::make_shared<std::vector<const KRView*>>();
    auto root = std::make_shared<CountingLayoutView>(KRRectMake(0, 0, 100, 100));
    auto child = std::make_shared<CountingLayoutView>(KRRectMake(0, 0, 10, 10));
    auto clean = std::make_shared<CountingLayoutView>(KRRectMake(0, 0, 10, 10));
    root->order = child->order = clean->order = order;
    root->addSubview(child);
    root->addSubview(clean);
    root->layoutIfNeeded(); // every new view has its first layout
    order->clear();
    child->setNeedsLayout(true);
    root->setNeedsLayout(true);
    root->layoutIfNeeded();
    EXPECT_EQ(*order, (std::vector<const KRView*>{root.get(), child.get()}));
    EXPECT_EQ(clean->layoutCount, 1);
    EXPECT_FALSE(root->needsLayout());
    EXPECT_FALSE(child->needsLayout());
}

TEST_F(KRViewTest, ChildMarkedDuringParentLayoutIsLaidOutInTheSamePass) {
    auto root = std::make_shared<CountingLayoutView>(KRRectMake(0, 0, 100, 100));
    auto child = std::make_shared<CountingLayoutView>(KRRectMake(0, 0, 10, 10));
    root->addSubview(child);
    root->onLayout = [&] { child->setFrameSize(KRSize{root->bounds().size.width, 10}); };
    root->setNeedsLayout(true);
    root->layoutIfNeeded();
    EXPECT_EQ(child->frame().size.width, 100);
    EXPECT_EQ(child->layoutCount, 1) << "a size change marks the child for layout";
}

TEST_F(KRViewTest, SetNeedsLayoutFalseCancelsThePendingLayout) {
    auto root = std::make_shared<CountingLayoutView>(KRRectMake(0, 0, 100, 100));
    root->setNeedsLayout(true);
    root->setNeedsLayout(false);
    root->layoutIfNeeded();
    EXPECT_EQ(root->layoutCount, 0);
}

TEST_F(KRViewTest, ANewViewNeedsItsFirstLayoutOnce) {
    auto view = std::make_shared<CountingLayoutView>(KRRectMake(0, 0, 100, 100));
    EXPECT_TRUE(view->needsLayout());
    view->layoutIfNeeded();
    view->layoutIfNeeded();
    EXPECT_EQ(view->layoutCount, 1);
    EXPECT_FALSE(view->needsLayout());
}

TEST_F(KRViewTest, OriginChangeDoesNotRequestLayoutButSizeChangeDoes) {
    auto view = std::make_shared<CountingLayoutView>(KRRectMake(0, 0, 100, 100));
    view->layoutIfNeeded();
    view->setFrameOrigin(KRPoint{5, 5});
    EXPECT_FALSE(view->needsLayout());
    view->setFrameSize(KRSize{50, 50});
    EXPECT_TRUE(view->needsLayout());
}

TEST_F(KRViewTest, SizeToFitKeepsTheOriginAndTakesTheFittingSize) {
    auto view = std::make_shared<FittingView>(KRRectMake(3, 4, 80, 10));
    view->sizeToFit();
    EXPECT_EQ(view->frame(), KRRectMake(3, 4, 80, 42));
    KRView plain(KRRectMake(0, 0, 12, 13));
    EXPECT_EQ(plain.sizeThatFits(KRSize{100, 100}), (KRSize{12, 13}));
}

TEST_F(KRViewTest, ViewsJoiningAWindowWithPendingLayoutScheduleAPass) {
    KRWindow window;
    auto root = makeView(0, 0, 100, 100);
    window.setContentView(root);
    KRRunLoop::main().runUntilIdle();
    auto child = std::make_shared<CountingLayoutView>(KRRectMake(0, 0, 10, 10));
    child->setNeedsLayout(true);
    root->addSubview(child);
    EXPECT_EQ(child->window(), &window);
    KRRunLoop::main().runOneTurn();
    EXPECT_EQ(child->layoutCount, 1);
}

TEST_F(KRViewTest, SetNeedsDisplayMarksTheViewsRectInWindowCoordinates) {
    KRWindow window;
    auto root = makeView(0, 0, 200, 200);
    auto child = makeView(20, 30, 40, 50);
    root->addSubview(child);
    window.setContentView(root);
    window.takeDirtyRect();
    child->setNeedsDisplay();
    EXPECT_EQ(window.takeDirtyRect(), KRRectMake(20, 30, 40, 50));
    child->setNeedsDisplayInRect(KRRectMake(1, 2, 3, 4));
    EXPECT_EQ(window.takeDirtyRect(), KRRectMake(21, 32, 3, 4));
}

TEST_F(KRViewTest, ShadowWidensTheDisplayedArea) {
    KRWindow window;
    auto root = makeView(0, 0, 200, 200);
    auto card = makeView(50, 50, 40, 40);
    root->addSubview(card);
    window.setContentView(root);
    card->setShadowRadius(3.0);
    card->setShadowOffset(KRSize{0, 1});
    card->setShadowOpacity(0.5);
    window.takeDirtyRect();
    card->setNeedsDisplay();
    const KRRect dirty = window.takeDirtyRect();
    EXPECT_TRUE(KRRectContainsRect(dirty, KRRectMake(44, 44, 52, 52)));
}

TEST_F(KRViewTest, AlphaIsClampedAndReported) {
    KRView view;
    view.setAlphaValue(1.5);
    EXPECT_DOUBLE_EQ(view.alphaValue(), 1.0);
    view.setAlphaValue(-1.0);
    EXPECT_DOUBLE_EQ(view.alphaValue(), 0.0);
}

TEST_F(KRViewTest, LayerLooksAreStored) {
    KRView view;
    view.setBackgroundColor(Qt::red);
    view.setBorderColor(Qt::blue);
    view.setBorderWidth(2.0);
    view.setCornerRadius(4.0);
    view.setMasksToBounds(true);
    view.setShadowOpacity(0.1);
    view.setShadowRadius(3.0);
    view.setShadowOffset(KRSize{0, 1});
    EXPECT_EQ(view.backgroundColor(), QColor(Qt::red));
    EXPECT_EQ(view.presentationBackgroundColor(), QColor(Qt::red));
    EXPECT_EQ(view.borderColor(), QColor(Qt::blue));
    EXPECT_DOUBLE_EQ(view.borderWidth(), 2.0);
    EXPECT_DOUBLE_EQ(view.cornerRadius(), 4.0);
    EXPECT_TRUE(view.masksToBounds());
    EXPECT_DOUBLE_EQ(view.shadowOpacity(), 0.1);
    EXPECT_EQ(view.shadowOffset(), (KRSize{0, 1}));
}

TEST_F(KRViewTest, HiddenAncestorHidesTheSubtree) {
    auto root = makeView(0, 0, 100, 100);
    auto child = makeView(0, 0, 10, 10);
    root->addSubview(child);
    EXPECT_FALSE(child->isHiddenOrHasHiddenAncestor());
    root->setHidden(true);
    EXPECT_TRUE(child->isHiddenOrHasHiddenAncestor());
    EXPECT_FALSE(child->isHidden());
}

TEST_F(KRViewTest, NextResponderIsTheSuperviewThenTheWindow) {
    KRWindow window;
    auto root = makeView(0, 0, 100, 100);
    auto child = makeView(0, 0, 10, 10);
    root->addSubview(child);
    window.setContentView(root);
    EXPECT_EQ(child->nextResponder(), root.get());
    EXPECT_EQ(root->nextResponder(), &window);
    KRView other;
    child->setNextResponder(&other);
    EXPECT_EQ(child->nextResponder(), &other);
}

TEST_F(KRViewTest, WindowIsSetAndClearedThroughTheTree) {
    KRWindow window;
    auto root = makeView(0, 0, 100, 100);
    auto child = makeView(0, 0, 10, 10);
    auto grandchild = makeView(0, 0, 5, 5);
    child->addSubview(grandchild);
    root->addSubview(child);
    window.setContentView(root);
    EXPECT_EQ(grandchild->window(), &window);
    child->removeFromSuperview();
    EXPECT_EQ(grandchild->window(), nullptr);
}

TEST_F(KRViewTest, TrackingAreasAreAddedAndRemoved) {
    KRView view(KRRectMake(0, 0, 100, 100));
    auto area = std::make_shared<KRTrackingArea>(KRRectMake(0, 0, 10, 10),
                                                 KRTrackingCursorUpdate | KRTrackingActiveAlways, &view);
    view.addTrackingArea(area);
    ASSERT_EQ(view.trackingAreas().size(), 1u);
    EXPECT_EQ(view.trackingAreas().front()->options(), 132u);
    view.removeTrackingArea(area.get());
    EXPECT_TRUE(view.trackingAreas().empty());
}

TEST_F(KRViewTest, FrameChangeOfAViewWithTrackingAreasAsksItToUpdateThem) {
    class TrackingView : public KRView {
    public:
        using KRView::KRView;
        void updateTrackingAreas() override { ++updates; }
        int updates = 0;
    };
    KRWindow window;
    auto root = makeView(0, 0, 100, 100);
    auto tracker = std::make_shared<TrackingView>(KRRectMake(0, 0, 10, 10));
    tracker->addTrackingArea(
        std::make_shared<KRTrackingArea>(KRRectZero, KRTrackingCursorUpdate, tracker.get()));
    root->addSubview(tracker);
    window.setContentView(root);
    KRRunLoop::main().runUntilIdle();
    const int afterJoining = tracker->updates;
    EXPECT_GE(afterJoining, 1);
    tracker->setFrameSize(KRSize{20, 20});
    KRRunLoop::main().runUntilIdle();
    EXPECT_EQ(tracker->updates, afterJoining + 1);
}

TEST_F(KRViewTest, FrameObserversAreTold) {
    class Observer : public KRObject {
    public:
        void observeValueForKeyPath(const char*, KRObject*, const KRKeyValueChange& change,
                                    const void*) override {
            frames.push_back(change.newValue.value<KRRect>());
        }
        std::vector<KRRect> frames;
    };
    KRView view;
    Observer observer;
    view.addObserver(&observer, "frame", KRKeyValueObservingOptionNew, nullptr);
    view.setFrame(KRRectMake(1, 2, 3, 4));
    view.removeObserver(&observer, "frame", nullptr);
    ASSERT_FALSE(observer.frames.empty());
    EXPECT_EQ(observer.frames.back(), KRRectMake(1, 2, 3, 4));
}

TEST_F(KRViewTest, DraggedTypesAddUpOnceEachInTheOrderFirstRegistered) {
    KRView view;
    EXPECT_TRUE(view.registeredDraggedTypes().isEmpty());
    view.registerForDraggedTypes({QStringLiteral("public.text"), QStringLiteral("org.example.items")});
    view.registerForDraggedTypes({QStringLiteral("org.example.items"), QStringLiteral("public.url")});
    EXPECT_EQ(view.registeredDraggedTypes(),
              (QStringList{QStringLiteral("public.text"), QStringLiteral("org.example.items"),
                           QStringLiteral("public.url")}));
    view.unregisterDraggedTypes();
    EXPECT_TRUE(view.registeredDraggedTypes().isEmpty());
}

} // namespace
