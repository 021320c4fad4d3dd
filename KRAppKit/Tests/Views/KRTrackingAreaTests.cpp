#include "Foundation/KRRunLoop.h"
#include "Views/KRCursor.h"
#include "Views/KREvent.h"
#include "Views/KRTrackingArea.h"
#include "Views/KRView.h"
#include "Views/KRWindow.h"

#include <gtest/gtest.h>

#include <memory>
#include <vector>

namespace {

// Logs the pointer events it owns areas for; sets the I-beam when asked for its cursor.
class HoverView : public KRView {
public:
    using KRView::KRView;
    void mouseEntered(const KREvent& event) override {
        log.push_back(QStringLiteral("entered"));
        lastArea = event.trackingArea();
    }
    void mouseExited(const KREvent& event) override {
        log.push_back(QStringLiteral("exited"));
        lastArea = event.trackingArea();
    }
    void mouseMoved(const KREvent&) override { ++moves; }
    void cursorUpdate(const KREvent& event) override {
        log.push_back(QStringLiteral("cursor"));
        lastArea = event.trackingArea();
        KRCursor::IBeamCursor().set();
    }
    void updateTrackingAreas() override { ++trackingAreaUpdates; }

    QStringList log;
    KRTrackingArea* lastArea = nullptr;
    int trackingAreaUpdates = 0;
    int moves = 0;
};

class KRTrackingAreaTests : public ::testing::Test {
protected:
    void SetUp() override {
        KRCursor::setCursorChangeHandler(
            [this](KRCursor cursor) { cursorChanges.push_back(cursor.shape()); });
        KRCursor::arrowCursor().set();
        cursorChanges.clear();
        content = std::make_shared<KRView>(KRRectMake(0, 0, 400, 400));
        window.setContentView(content);
    }
    void TearDown() override {
        KRCursor::setCursorChangeHandler({});
        KRRunLoop::main().cancelAll();
    }

    void moveTo(double x, double y) {
        window.sendEvent(KREvent::mouseEvent(KREventType::MouseMoved, KRPointMake(x, y), 0, &window));
    }

    std::shared_ptr<HoverView> addHoverView(KRRect frame, unsigned options) {
        auto view = std::make_shared<HoverView>(frame);
        view->addTrackingArea(std::make_shared<KRTrackingArea>(view->bounds(), options, view.get()));
        content->addSubview(view);
        return view;
    }

    KRWindow window;
    std::shared_ptr<KRView> content;
    std::vector<KRCursor::Shape> cursorChanges;
};

} // namespace

TEST_F(KRTrackingAreaTests, AreaStoresItsValues) {
    HoverView owner(KRRectMake(0, 0, 10, 10));
    const QVariantMap info{{QStringLiteral("row"), 3}};
    const KRTrackingArea area(KRRectMake(1, 2, 3, 4),
                              KRTrackingMouseEnteredAndExited | KRTrackingActiveAlways, &owner, info);
    EXPECT_EQ(area.rect(), KRRectMake(1, 2, 3, 4));
    EXPECT_EQ(area.options(), unsigned(KRTrackingMouseEnteredAndExited | KRTrackingActiveAlways));
    EXPECT_EQ(area.owner(), &owner);
    EXPECT_EQ(area.userInfo().value(QStringLiteral("row")).toInt(), 3);
}

TEST_F(KRTrackingAreaTests, AnAreaOutlivingTheViewThatOwnsAndHoldsItHasNoOwner) {
    auto owner = std::make_unique<HoverView>(KRRectMake(0, 0, 10, 10));
    auto area = std::make_shared<KRTrackingArea>(KRRectMake(1, 2, 3, 4), KRTrackingMouseEnteredAndExited,
                                                 owner.get());
    owner->addTrackingArea(area);
    owner.reset();
    EXPECT_EQ(area->owner(), nullptr);
}

TEST_F(KRTrackingAreaTests, EnteredAndExitedFollowThePointerOnce) {
    auto view = addHoverView(KRRectMake(50, 50, 100, 100), KRTrackingMouseEnteredAndExited);
    moveTo(10, 10);
    EXPECT_TRUE(view->log.isEmpty());
    moveTo(60, 60);
    moveTo(70, 80);
    EXPECT_EQ(view->log, QStringList{QStringLiteral("entered")});
    EXPECT_EQ(view->lastArea, view->trackingAreas().front().get());
    moveTo(200, 200);
    EXPECT_EQ(view->log, (QStringList{QStringLiteral("entered"), QStringLiteral("exited")}));
    moveTo(210, 210);
    EXPECT_EQ(view->log.size(), 2);
}

TEST_F(KRTrackingAreaTests, DraggingAlsoUpdatesEnteredAndExited) {
    auto view = addHoverView(KRRectMake(50, 50, 100, 100), KRTrackingMouseEnteredAndExited);
    window.sendEvent(KREvent::mouseEvent(KREventType::LeftMouseDragged, KRPointMake(60, 60), 0, &window));
    window.sendEvent(KREvent::mouseEvent(KREventType::LeftMouseDragged, KRPointMake(300, 60), 0, &window));
    EXPECT_EQ(view->log, (QStringList{QStringLiteral("entered"), QStringLiteral("exited")}));
}

TEST_F(KRTrackingAreaTests, IBeamAreaSetsItsCursorOnceAndArrowReturnsOutside) {
    auto field = addHoverView(KRRectMake(50, 50, 100, 20), KRTrackingCursorUpdate);
    moveTo(60, 55);
    moveTo(61, 56);
    moveTo(62, 57);
    EXPECT_EQ(field->log, QStringList{QStringLiteral("cursor")});
    EXPECT_EQ(KRCursor::currentCursor(), KRCursor::IBeamCursor());
    moveTo(300, 300);
    EXPECT_EQ(KRCursor::currentCursor(), KRCursor::arrowCursor());
    EXPECT_EQ(cursorChanges, (std::vector<KRCursor::Shape>{KRCursor::Shape::IBeam, KRCursor::Shape::Arrow}));
    moveTo(301, 300);
    EXPECT_EQ(cursorChanges.size(), 2u);
    moveTo(60, 55);
    EXPECT_EQ(field->log, QStringList(2, QStringLiteral("cursor")));
}

TEST_F(KRTrackingAreaTests, DeepestFrontmostCursorAreaWins) {
    auto outer = addHoverView(KRRectMake(0, 0, 300, 300), KRTrackingCursorUpdate);
    auto inner = std::make_shared<HoverView>(KRRectMake(10, 10, 50, 50));
    inner->addTrackingArea(
        std::make_shared<KRTrackingArea>(inner->bounds(), KRTrackingCursorUpdate, inner.get()));
    outer->addSubview(inner);
    // A later sibling covers part of outer: frontmost.
    auto sibling = addHoverView(KRRectMake(200, 200, 50, 50), KRTrackingCursorUpdate);

    moveTo(20, 20);
    EXPECT_EQ(inner->log, QStringList{QStringLiteral("cursor")});
    EXPECT_TRUE(outer->log.isEmpty());
    moveTo(100, 100);
    EXPECT_EQ(outer->log, QStringList{QStringLiteral("cursor")});
    moveTo(210, 210);
    EXPECT_EQ(sibling->log, QStringList{QStringLiteral("cursor")});
    EXPECT_EQ(outer->log.size(), 1);
}

TEST_F(KRTrackingAreaTests, MouseMovedAreasReportEveryMoveInside) {
    auto view = addHoverView(KRRectMake(0, 0, 100, 100), KRTrackingMouseMoved);
    moveTo(10, 10);
    moveTo(20, 20);
    moveTo(150, 150);
    // The view is also under the pointer, but hears of each move once.
    EXPECT_EQ(view->moves, 2);
}

TEST_F(KRTrackingAreaTests, HiddenAndClippedViewsDoNotTrack) {
    auto hidden = addHoverView(KRRectMake(0, 0, 100, 100), KRTrackingMouseEnteredAndExited);
    hidden->setHidden(true);
    auto clip = std::make_shared<KRView>(KRRectMake(200, 0, 50, 50));
    clip->setMasksToBounds(true);
    content->addSubview(clip);
    auto overflowing = std::make_shared<HoverView>(KRRectMake(0, 0, 50, 150));
    overflowing->addTrackingArea(std::make_shared<KRTrackingArea>(
        overflowing->bounds(), KRTrackingMouseEnteredAndExited, overflowing.get()));
    clip->addSubview(overflowing);

    moveTo(50, 50);
    moveTo(210, 100); // inside overflowing's frame, outside its clipping superview
    EXPECT_TRUE(hidden->log.isEmpty());
    EXPECT_TRUE(overflowing->log.isEmpty());
    moveTo(210, 10);
    EXPECT_EQ(overflowing->log, QStringList{QStringLiteral("entered")});
}

TEST_F(KRTrackingAreaTests, AreasOfScrolledContentUseTheViewsCoordinates) {
    auto scroller = std::make_shared<KRView>(KRRectMake(0, 0, 100, 100));
    content->addSubview(scroller);
    auto row = std::make_shared<HoverView>(KRRectMake(0, 500, 100, 20));
    row->addTrackingArea(
        std::make_shared<KRTrackingArea>(row->bounds(), KRTrackingMouseEnteredAndExited, row.get()));
    scroller->addSubview(row);
    scroller->setBoundsOrigin(KRPointMake(0, 490));
    moveTo(50, 15); // 505 in the scroller's bounds
    EXPECT_EQ(row->log, QStringList{QStringLiteral("entered")});
}

TEST_F(KRTrackingAreaTests, RemovedViewLeavesTheTrackingStateWithoutExit) {
    auto view = addHoverView(KRRectMake(0, 0, 100, 100), KRTrackingMouseEnteredAndExited);
    moveTo(10, 10);
    ASSERT_EQ(view->log, QStringList{QStringLiteral("entered")});
    view->removeFromSuperview();
    moveTo(200, 200);
    EXPECT_EQ(view->log, QStringList{QStringLiteral("entered")});
    content->addSubview(view);
    moveTo(10, 10);
    EXPECT_EQ(view->log, (QStringList{QStringLiteral("entered"), QStringLiteral("entered")}));
}

TEST_F(KRTrackingAreaTests, ManyRowsStillFindTheRowUnderThePointer) {
    auto list = std::make_shared<KRView>(KRRectMake(0, 0, 200, 400));
    list->setMasksToBounds(true);
    content->addSubview(list);
    auto document = std::make_shared<KRView>(KRRectMake(0, 0, 200, 10000 * 20));
    list->addSubview(document);
    std::vector<std::shared_ptr<HoverView>> rows;
    for (int i = 0; i < 10000; ++i) {
        auto row = std::make_shared<HoverView>(KRRectMake(0, i * 20, 200, 20));
        row->addTrackingArea(
            std::make_shared<KRTrackingArea>(row->bounds(), KRTrackingMouseEnteredAndExited, row.get()));
        document->addSubview(row);
        rows.push_back(row);
    }
    list->setBoundsOrigin(KRPointMake(0, 5000 * 20));
    moveTo(10, 25);
    EXPECT_EQ(rows[5001]->log, QStringList{QStringLiteral("entered")});
    moveTo(10, 45);
    EXPECT_EQ(rows[5001]->log, (QStringList{QStringLiteral("entered"), QStringLiteral("exited")}));
    EXPECT_EQ(rows[5002]->log, QStringList{QStringLiteral("entered")});
    EXPECT_TRUE(rows[0]->log.isEmpty());
}

TEST_F(KRTrackingAreaTests, WindowAsksChangedViewsToRebuildTheirAreasOncePerPass) {
    auto view = addHoverView(KRRectMake(0, 0, 100, 100), KRTrackingMouseEnteredAndExited);
    KRRunLoop::main().runUntilIdle();
    view->trackingAreaUpdates = 0;
    window.viewNeedsTrackingAreaUpdate(view.get());
    window.viewNeedsTrackingAreaUpdate(view.get());
    view->setFrame(KRRectMake(10, 10, 120, 120));
    EXPECT_EQ(view->trackingAreaUpdates, 0);
    KRRunLoop::main().runOneTurn();
    EXPECT_EQ(view->trackingAreaUpdates, 1);
    KRRunLoop::main().runUntilIdle();
    EXPECT_EQ(view->trackingAreaUpdates, 1);
}
