// The layout and tracking-area passes under a view with many subviews (a long list), which visit the
// subviews that asked in the order they asked, and what happens to those subviews on the way.
#include "Foundation/KRRunLoop.h"
#include "Views/KRTrackingArea.h"
#include "Views/KRView.h"
#include "Views/KRWindow.h"

#include <gtest/gtest.h>

#include <functional>
#include <memory>
#include <vector>

namespace {

// Well past the point where a view starts listing the subviews that ask for a pass.
constexpr int kManySubviews = 200;

// Logs its number each time it lays out, and each time it updates its areas, in logs its siblings share,
// so the logs outlive views that a test destroys.
class LoggingView : public KRView {
public:
    LoggingView(int viewNumber, std::shared_ptr<std::vector<int>> layouts,
                std::shared_ptr<std::vector<int>> areaUpdates)
        : KRView(KRRectMake(0, 0, 10, 10)), number(viewNumber), m_layouts(std::move(layouts)),
          m_areaUpdates(std::move(areaUpdates)) {}
    void layoutSubviews() override {
        m_layouts->push_back(number);
        if (onLayout) {
            onLayout();
        }
    }
    void updateTrackingAreas() override {
        m_areaUpdates->push_back(number);
        if (onUpdateTrackingAreas) {
            onUpdateTrackingAreas();
        }
    }
    void giveTrackingArea() {
        addTrackingArea(std::make_shared<KRTrackingArea>(KRRectZero, KRTrackingCursorUpdate, this));
    }

    const int number;
    std::function<void()> onLayout;
    std::function<void()> onUpdateTrackingAreas;

private:
    std::shared_ptr<std::vector<int>> m_layouts;
    std::shared_ptr<std::vector<int>> m_areaUpdates;
};

class KRViewManySubviewsTest : public ::testing::Test {
protected:
    void TearDown() override { KRRunLoop::main().cancelAll(); }

    std::shared_ptr<LoggingView> makeView(int number) {
        return std::make_shared<LoggingView>(number, log, areaLog);
    }

    // A view with count subviews numbered from 0, all laid out once, and the log emptied.
    std::shared_ptr<LoggingView> makeParent(int number, int count) {
        auto parent = makeView(number);
        parent->reserveSubviews(static_cast<std::size_t>(count));
        for (int i = 0; i < count; ++i) {
            parent->addSubview(makeView(i));
        }
        parent->layoutIfNeeded();
        log->clear();
        return parent;
    }

    static LoggingView& subview(const KRView& parent, std::size_t index) {
        return static_cast<LoggingView&>(*parent.subviews()[index]);
    }

    std::shared_ptr<std::vector<int>> log = std::make_shared<std::vector<int>>();
    std::shared_ptr<std::vector<int>> areaLog = std::make_shared<std::vector<int>>();
};

// Layout ---------------------------------------------------------------------------------------------------

TEST_F(KRViewManySubviewsTest, OnlyTheSubviewsThatAskedAreLaidOutInTheOrderTheyAsked) {
    auto parent = makeParent(-1, kManySubviews);
    subview(*parent, 150).setNeedsLayout(true);
    subview(*parent, 20).setNeedsLayout(true);
    subview(*parent, 150).setNeedsLayout(true);

    parent->layoutIfNeeded();

    EXPECT_EQ(*log, (std::vector<int>{150, 20}));
    EXPECT_FALSE(subview(*parent, 150).needsLayout());
    parent->layoutIfNeeded();
    EXPECT_EQ(log->size(), 2u) << "nothing is left listed";
}

TEST_F(KRViewManySubviewsTest, WhenMostSubviewsAskedAllAreLaidOutInSubviewOrderThenListingResumes) {
    auto parent = makeParent(-1, kManySubviews);
    std::vector<int> everyOne;
    for (int i = kManySubviews - 1; i >= 0; --i) {
        subview(*parent, static_cast<std::size_t>(i)).setNeedsLayout(true);
        everyOne.insert(everyOne.begin(), i);
    }

    parent->layoutIfNeeded();
    EXPECT_EQ(*log, everyOne);

    log->clear();
    subview(*parent, 9).setNeedsLayout(true);
    subview(*parent, 3).setNeedsLayout(true);
    parent->layoutIfNeeded();
    EXPECT_EQ(*log, (std::vector<int>{9, 3}));
}

TEST_F(KRViewManySubviewsTest, AViewWithFewSubviewsLaysThemOutInSubviewOrder) {
    auto parent = makeParent(-1, 5);
    subview(*parent, 3).setNeedsLayout(true);
    subview(*parent, 1).setNeedsLayout(true);

    parent->layoutIfNeeded();

    EXPECT_EQ(*log, (std::vector<int>{1, 3}));
}

TEST_F(KRViewManySubviewsTest, SubviewsThatAskedBeforeTheViewHadManyAreLaidOut) {
    auto parent = makeView(-1);
    parent->layoutIfNeeded();
    parent->addSubview(makeView(1000));
    parent->addSubview(makeView(1001));
    for (int i = 0; i < kManySubviews; ++i) {
        auto clean = makeView(i);
        clean->layoutIfNeeded();
        parent->addSubview(clean);
    }
    log->clear();

    parent->layoutIfNeeded();

    EXPECT_EQ(*log, (std::vector<int>{1000, 1001}));
}

TEST_F(KRViewManySubviewsTest, ViewsAddedWithPendingLayoutAreLaidOutWhereverTheyGo) {
    auto parent = makeParent(-1, kManySubviews);
    const KRView* const middle = parent->subviews()[100].get();
    parent->addSubview(makeView(1000));
    parent->addSubviewPositionedRelativeTo(makeView(1001), KRWindowOrderingMode::Below, middle);
    parent->addSubviewPositionedRelativeTo(makeView(1002), KRWindowOrderingMode::Below, nullptr);
    auto marked = makeView(1003);
    marked->layoutIfNeeded();
    marked->setNeedsLayout(true);
    parent->addSubviewPositionedRelativeTo(marked, KRWindowOrderingMode::Above, middle);
    log->clear();

    parent->layoutIfNeeded();

    EXPECT_EQ(*log, (std::vector<int>{1000, 1001, 1002, 1003}));
}

TEST_F(KRViewManySubviewsTest, ASubviewWhoseDescendantAskedIsVisitedAndLaysOutOnlyThatDescendant) {
    auto parent = makeParent(-1, kManySubviews);
    auto child = makeView(1000);
    child->addSubview(makeView(1001));
    child->layoutIfNeeded();
    parent->addSubview(child);
    parent->layoutIfNeeded();
    log->clear();

    subview(*child, 0).setNeedsLayout(true);
    parent->layoutIfNeeded();

    EXPECT_EQ(*log, (std::vector<int>{1001}));
}

TEST_F(KRViewManySubviewsTest, MarkedSubviewsRemovedAndDestroyedBeforeThePassAreNotVisited) {
    auto parent = makeParent(-1, kManySubviews);
    for (const int index : {10, 20, 30, 40, 50}) {
        subview(*parent, static_cast<std::size_t>(index)).setNeedsLayout(true);
    }
    std::weak_ptr<KRView> removedAlone = parent->subviews()[20];
    std::weak_ptr<KRView> removedTogether = parent->subviews()[40];
    parent->subviews()[20]->removeFromSuperview();
    std::vector<KRView*> leaving{parent->subviews()[29].get(), parent->subviews()[39].get()};
    parent->removeSubviews(leaving); // the subviews numbered 30 and 40
    ASSERT_TRUE(removedAlone.expired());
    ASSERT_TRUE(removedTogether.expired());

    parent->layoutIfNeeded();

    EXPECT_EQ(*log, (std::vector<int>{10, 50}));
}

TEST_F(KRViewManySubviewsTest, AMarkedSubviewMovedToAnotherViewIsLaidOutThereOnly) {
    auto first = makeParent(-1, kManySubviews);
    auto second = makeParent(-2, kManySubviews);
    auto moving = std::static_pointer_cast<LoggingView>(first->subviews()[7]);
    moving->setNeedsLayout(true);
    second->addSubview(moving);

    first->layoutIfNeeded();
    EXPECT_TRUE(log->empty());
    second->layoutIfNeeded();
    EXPECT_EQ(*log, (std::vector<int>{7}));
}

TEST_F(KRViewManySubviewsTest, ASubviewLaidOutDirectlyIsNotLaidOutAgainAndCanAskAgain) {
    auto parent = makeParent(-1, kManySubviews);
    LoggingView& child = subview(*parent, 60);
    child.setNeedsLayout(true);
    child.layoutIfNeeded();
    parent->layoutIfNeeded();
    EXPECT_EQ(*log, (std::vector<int>{60}));

    child.setNeedsLayout(true);
    parent->layoutIfNeeded();
    EXPECT_EQ(*log, (std::vector<int>{60, 60}));
}

TEST_F(KRViewManySubviewsTest, SiblingsMarkedDuringASubviewsLayoutAreLaidOutInTheSamePass) {
    auto parent = makeParent(-1, kManySubviews);
    subview(*parent, 50).onLayout = [&] {
        subview(*parent, 90).setNeedsLayout(true);
        subview(*parent, 10).setNeedsLayout(true);
    };
    subview(*parent, 50).setNeedsLayout(true);

    parent->layoutIfNeeded();

    EXPECT_EQ(*log, (std::vector<int>{50, 90, 10}));
    EXPECT_FALSE(subview(*parent, 10).needsLayout());
}

TEST_F(KRViewManySubviewsTest, ASubviewThatAlwaysAsksAgainEndsThePassAndIsVisitedByTheNext) {
    auto parent = makeParent(-1, kManySubviews);
    LoggingView& restless = subview(*parent, 30);
    restless.onLayout = [&restless] { restless.setNeedsLayout(true); };
    restless.setNeedsLayout(true);

    parent->layoutIfNeeded();
    const std::size_t firstPass = log->size();
    EXPECT_GT(firstPass, 1u);
    EXPECT_TRUE(restless.needsLayout());

    parent->layoutIfNeeded();
    EXPECT_GT(log->size(), firstPass) << "still listed for the next pass";
}

TEST_F(KRViewManySubviewsTest, ASubviewRemovingItselfDuringItsLayoutFinishesItsPassFirst) {
    auto parent = makeParent(-1, kManySubviews);
    std::weak_ptr<KRView> leaving = parent->subviews()[70];
    LoggingView& child = subview(*parent, 70);
    child.addSubview(
        makeView(1000)); // laid out after the child's own layout, so the child must still be there
    child.onLayout = [&child] { child.removeFromSuperview(); };
    child.setNeedsLayout(true);
    log->clear();

    parent->layoutIfNeeded();

    EXPECT_EQ(*log, (std::vector<int>{70, 1000}));
    EXPECT_TRUE(leaving.expired());
    EXPECT_EQ(parent->subviews().size(), static_cast<std::size_t>(kManySubviews - 1));
}

TEST_F(KRViewManySubviewsTest, ASubviewRemovingSiblingsListedAfterItSkipsThem) {
    auto parent = makeParent(-1, kManySubviews);
    LoggingView& remover = subview(*parent, 5);
    remover.onLayout = [&] {
        subview(*parent, 80).removeFromSuperview();
        std::vector<KRView*> leaving{parent->subviews()[119].get()}; // numbered 120 once 80 has left
        parent->removeSubviews(leaving);
    };
    remover.setNeedsLayout(true);
    subview(*parent, 80).setNeedsLayout(true);
    subview(*parent, 120).setNeedsLayout(true);
    subview(*parent, 150).setNeedsLayout(true);

    parent->layoutIfNeeded();

    EXPECT_EQ(*log, (std::vector<int>{5, 150}));
}

TEST_F(KRViewManySubviewsTest, ASubviewLayingOutItsSuperviewAgainLeavesNothingForTheOuterPass) {
    auto parent = makeParent(-1, kManySubviews);
    subview(*parent, 40).onLayout = [&] {
        subview(*parent, 100).setNeedsLayout(true);
        parent->layoutIfNeeded();
        EXPECT_EQ(*log, (std::vector<int>{40, 10, 190, 100})) << "the inner pass lays out every one";
    };
    for (const int index : {40, 10, 190}) {
        subview(*parent, static_cast<std::size_t>(index)).setNeedsLayout(true);
    }

    parent->layoutIfNeeded();

    EXPECT_EQ(*log, (std::vector<int>{40, 10, 190, 100}));
}

TEST_F(KRViewManySubviewsTest, SubviewsOfADestroyedViewCanBeListedByTheirNextSuperview) {
    auto first = makeParent(-1, kManySubviews);
    auto kept = std::static_pointer_cast<LoggingView>(first->subviews()[3]);
    kept->setNeedsLayout(true);
    first.reset();
    ASSERT_EQ(kept->superview(), nullptr);

    auto second = makeParent(-2, kManySubviews);
    second->addSubview(kept);
    second->layoutIfNeeded();

    EXPECT_EQ(*log, (std::vector<int>{3}));
}

TEST_F(KRViewManySubviewsTest, TheWindowsPassLaysOutTheSubviewsThatAsked) {
    KRWindow window;
    auto content = makeParent(-1, kManySubviews);
    window.setContentView(content);
    KRRunLoop::main().runUntilIdle();
    log->clear();

    subview(*content, 199).setFrameSize(KRSize{20, 20});
    subview(*content, 0).setNeedsLayout(true);
    KRRunLoop::main().runUntilIdle();

    EXPECT_EQ(*log, (std::vector<int>{199, 0}));
}

// Tracking areas -------------------------------------------------------------------------------------------

class KRViewManySubviewsTrackingTest : public KRViewManySubviewsTest {
protected:
    // A window whose content view has many subviews with one area each, past their first update.
    void SetUp() override {
        content = makeParent(-1, kManySubviews);
        for (const auto& child : content->subviews()) {
            static_cast<LoggingView&>(*child).giveTrackingArea();
        }
        window.setContentView(content);
        KRRunLoop::main().runUntilIdle();
        log->clear();
        areaLog->clear();
    }

    void resize(std::size_t index) { subview(*content, index).setFrameSize(KRSize{30, 30}); }

    KRWindow window;
    std::shared_ptr<LoggingView> content;
};

TEST_F(KRViewManySubviewsTrackingTest, EverySubviewWithAnAreaIsUpdatedWhenItJoinsTheWindow) {
    window.setContentView(nullptr);
    KRWindow other;
    other.setContentView(content);
    KRRunLoop::main().runUntilIdle();

    EXPECT_EQ(areaLog->size(), static_cast<std::size_t>(kManySubviews));
}

TEST_F(KRViewManySubviewsTrackingTest, OnlyTheSubviewsThatChangedAreUpdatedInTheOrderTheyAsked) {
    resize(70);
    resize(5);
    KRRunLoop::main().runUntilIdle();

    EXPECT_EQ(*areaLog, (std::vector<int>{70, 5}));
}

TEST_F(KRViewManySubviewsTrackingTest, ManySubviewsAskingAndOneLeavingAreAllUpdatedOnceInSubviewOrder) {
    std::vector<int> expected;
    for (int i = kManySubviews - 1; i >= 0; --i) {
        resize(static_cast<std::size_t>(i));
        if (i != 150) {
            expected.insert(expected.begin(), i);
        }
    }
    content->subviews()[150]->removeFromSuperview();
    KRRunLoop::main().runUntilIdle();

    EXPECT_EQ(*areaLog, expected);
}

TEST_F(KRViewManySubviewsTrackingTest, ASubviewRemovedBeforeThePassIsNotUpdated) {
    resize(70);
    resize(5);
    std::weak_ptr<KRView> removed = content->subviews()[70];
    content->subviews()[70]->removeFromSuperview();
    ASSERT_TRUE(removed.expired());
    KRRunLoop::main().runUntilIdle();

    EXPECT_EQ(*areaLog, (std::vector<int>{5}));
}

TEST_F(KRViewManySubviewsTrackingTest, AnUpdateRemovingItselfAndALaterSiblingIsSafe) {
    std::weak_ptr<KRView> self = content->subviews()[10];
    LoggingView& remover = subview(*content, 10);
    remover.onUpdateTrackingAreas = [&] {
        subview(*content, 60).removeFromSuperview();
        remover.removeFromSuperview();
    };
    resize(10);
    resize(60);
    resize(61);
    KRRunLoop::main().runUntilIdle();

    EXPECT_EQ(*areaLog, (std::vector<int>{10, 61}));
    EXPECT_TRUE(self.expired());
}

TEST_F(KRViewManySubviewsTrackingTest, ASiblingAskingDuringThePassIsUpdatedByTheNextOne) {
    subview(*content, 90).onUpdateTrackingAreas = [&] {
        resize(20);
        resize(120);
    };
    resize(90);
    window.updateIfNeeded();
    EXPECT_EQ(*areaLog, (std::vector<int>{90}));

    KRRunLoop::main().runUntilIdle();
    EXPECT_EQ(*areaLog, (std::vector<int>{90, 20, 120}));
}

TEST_F(KRViewManySubviewsTrackingTest, ASubviewWithPendingAreasMovedWithinTheWindowIsUpdatedThere) {
    auto other = makeParent(-2, kManySubviews);
    content->addSubview(other);
    KRRunLoop::main().runUntilIdle();
    areaLog->clear();

    auto moving = content->subviews()[33];
    resize(33);
    other->addSubview(moving);
    KRRunLoop::main().runUntilIdle();

    EXPECT_EQ(*areaLog, (std::vector<int>{33}));
}

} // namespace
