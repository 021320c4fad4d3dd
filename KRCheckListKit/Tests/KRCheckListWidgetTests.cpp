// The list in a scroll area, as an application puts it in a window: the host follows the list's fitting
// size, the caret stays in view as it moves and as titles split at the bottom of a long list, the wheel and
// the page keys scroll, and a row dragged near the bottom edge scrolls the view.
#include "KRCheckListWidget.h"

#include "KRCheckListDefaults.h"
#include "KRCheckListView.h"
#include "KRCheckListViewTestSupport.h"

#include "Foundation/KRClock.h"
#include "Foundation/KRRunLoop.h"
#include "Platform/KRHostWidget.h"
#include "Text/KRKeyBindings.h"

#include <QApplication>
#include <QKeyEvent>
#include <QMouseEvent>
#include <QScrollBar>
#include <QWheelEvent>

#include <gtest/gtest.h>

#include <cmath>
#include <memory>

using namespace KRCheckListViewTesting;

namespace {

constexpr int kItems = 40;

class KRCheckListWidgetTests : public ::testing::Test {
protected:
    void SetUp() override {
        ASSERT_TRUE(KRClock::isManual());
        KRKeyBindings::setPlatformOverride(KRKeyBindings::Platform::Other);
        QStringList identifiers;
        for (int index = 0; index < kItems; ++index) {
            identifiers << QString::number(index);
        }
        dataSource->items = itemsWithIdentifiers(identifiers);
        widget.checkListView().setDataSource(dataSource);
        widget.checkListView().setDelegate(delegate);
        widget.checkListView().reloadItems();
        widget.setAttribute(Qt::WA_DontShowOnScreen);
        widget.resize(320, 300);
        widget.show();
        widget.settle();
    }
    void TearDown() override {
        widget.hostWidget().krWindow().makeFirstResponder(nullptr);
        KRClock::advance(1.0);
        KRRunLoop::main().cancelAll();
        KRKeyBindings::setPlatformOverride(std::nullopt);
    }

    int fittingHeight() const {
        return static_cast<int>(std::ceil(widget.checkListView().lastSizeThatFits().height));
    }
    QScrollBar& scrollBar() const { return *widget.verticalScrollBar(); }
    void pressKey(int key, Qt::KeyboardModifiers modifiers = Qt::NoModifier,
                  const QString& text = QString()) {
        QKeyEvent press(QEvent::KeyPress, key, modifiers, text);
        QCoreApplication::sendEvent(&widget.hostWidget(), &press);
        QKeyEvent release(QEvent::KeyRelease, key, modifiers, text);
        QCoreApplication::sendEvent(&widget.hostWidget(), &release);
        widget.settle();
    }
    bool isCaretInViewport() const {
        const QRect caret = widget.caretRectInHostWidget();
        if (caret.isNull()) {
            return false;
        }
        const QRect inViewport(widget.hostWidget().mapTo(widget.viewport(), caret.topLeft()), caret.size());
        return widget.viewport()->rect().contains(inViewport);
    }
    QPointF centreInHost(const KRView& view) const {
        const KRRect bounds = view.bounds();
        const KRPoint centre =
            view.convertPointToView(KRPointMake(KRRectGetMidX(bounds), KRRectGetMidY(bounds)), nullptr);
        return QPointF(centre.x, centre.y);
    }
    void sendMouse(QEvent::Type type, QPointF inHost, Qt::MouseButton button, Qt::MouseButtons buttons) {
        QMouseEvent event(type, inHost, widget.hostWidget().mapToGlobal(inHost), button, buttons,
                          Qt::NoModifier);
        QCoreApplication::sendEvent(&widget.hostWidget(), &event);
    }

    std::shared_ptr<MessageLog> log = std::make_shared<MessageLog>();
    std::shared_ptr<RecordingDataSource> dataSource = std::make_shared<RecordingDataSource>(log);
    std::shared_ptr<RecordingDelegate> delegate = std::make_shared<RecordingDelegate>(log);
    KRCheckListWidget widget;
};

TEST_F(KRCheckListWidgetTests, TheHostIsAsTallAsTheRowsAndAsWideAsTheViewport) {
    EXPECT_EQ(widget.hostWidget().height(), fittingHeight());
    EXPECT_GT(fittingHeight(), widget.viewport()->height()) << "forty rows scroll";
    EXPECT_EQ(widget.hostWidget().width(), widget.viewport()->width());
    EXPECT_DOUBLE_EQ(widget.checkListView().frame().size.width, widget.viewport()->width());
}

TEST_F(KRCheckListWidgetTests, TheHostFollowsItemsInsertedByTheDataSource) {
    const int before = widget.hostWidget().height();
    dataSource->items.push_back(Item{QStringLiteral("new"), 0, QStringLiteral("A new item")});
    widget.checkListView().beginUpdates();
    widget.checkListView().updateByInsertingItemAtIndex(kItems);
    widget.checkListView().endUpdates();
    widget.settle();
    EXPECT_GT(widget.hostWidget().height(), before);
    EXPECT_EQ(widget.hostWidget().height(), fittingHeight());
}

TEST_F(KRCheckListWidgetTests, TheCaretStaysInViewWhileMovingDownAndSplittingAtTheBottom) {
    widget.checkListView().beginEditingItemAtIndexSelectRange(0, KRMakeRange(0, 0));
    widget.settle();
    for (int row = 1; row < kItems; ++row) {
        pressKey(Qt::Key_Down);
        ASSERT_TRUE(isCaretInViewport()) << "after moving down to row " << row;
    }
    EXPECT_EQ(widget.checkListView().indexForEditedItem(), static_cast<KRUInteger>(kItems - 1));
    EXPECT_EQ(scrollBar().value(), scrollBar().maximum());
    pressKey(Qt::Key_End);
    pressKey(Qt::Key_Left);
    pressKey(Qt::Key_Return, Qt::NoModifier, QStringLiteral("\r"));
    EXPECT_EQ(widget.checkListView().numberOfItems(), static_cast<KRUInteger>(kItems + 1));
    EXPECT_TRUE(isCaretInViewport()) << "the new last row, split off, is scrolled into view";
    EXPECT_EQ(widget.hostWidget().height(), fittingHeight());
}

TEST_F(KRCheckListWidgetTests, TheWheelAndThePageKeysScroll) {
    ASSERT_EQ(scrollBar().value(), 0);
    const QPointF inViewport(100, 100);
    QWheelEvent wheel(inViewport, widget.viewport()->mapToGlobal(inViewport), QPoint(), QPoint(0, -120),
                      Qt::NoButton, Qt::NoModifier, Qt::NoScrollPhase, false);
    QCoreApplication::sendEvent(widget.viewport(), &wheel);
    EXPECT_GT(scrollBar().value(), 0);

    scrollBar().setValue(0);
    widget.checkListView().beginEditingItemAtIndexSelectRange(0, KRMakeRange(0, 0));
    widget.settle();
    pressKey(Qt::Key_PageDown);
    EXPECT_EQ(scrollBar().value(), scrollBar().pageStep());
    EXPECT_EQ(widget.checkListView().indexForEditedItem(), 0u) << "the edit stays where it was";
    pressKey(Qt::Key_PageUp);
    EXPECT_EQ(scrollBar().value(), 0);
}

TEST_F(KRCheckListWidgetTests, ARowDraggedToTheBottomEdgeScrollsTheViewAndFollowsThePointer) {
    KRCheckListItemView& first = *widget.checkListView().checkListViewItemViewForItemAtIndex(0);
    const QPointF handle = centreInHost(*first.handleButtonView());
    sendMouse(QEvent::MouseButtonPress, handle, Qt::LeftButton, Qt::LeftButton);
    const double bottom = widget.viewport()->height() - 2.0;
    const QPointF atBottom(
        handle.x(), widget.hostWidget().mapFrom(widget.viewport(), QPoint(0, static_cast<int>(bottom))).y());
    sendMouse(QEvent::MouseMove, atBottom, Qt::NoButton, Qt::LeftButton);
    ASSERT_TRUE(widget.checkListView().isDragging());
    EXPECT_DOUBLE_EQ(
        widget.autoScrollSpeedAtViewportY(bottom),
        KRCheckListDefaults::autoScrollMinimumSpeed() +
            (KRCheckListDefaults::autoScrollMaximumSpeed() - KRCheckListDefaults::autoScrollMinimumSpeed()) *
                ((bottom - (widget.viewport()->height() - KRCheckListDefaults::autoScrollEdgeZoneHeight())) /
                 KRCheckListDefaults::autoScrollEdgeZoneHeight()));
    for (int frame = 0; frame < 30; ++frame) {
        KRClock::advance(KRCheckListDefaults::autoScrollInterval());
        KRRunLoop::main().runOneTurn();
    }
    EXPECT_GT(scrollBar().value(), 100) << "half a second near the edge";
    sendMouse(QEvent::MouseButtonRelease, atBottom, Qt::LeftButton, Qt::NoButton);
    widget.settle();
    EXPECT_FALSE(widget.checkListView().isDragging());
}

} // namespace
