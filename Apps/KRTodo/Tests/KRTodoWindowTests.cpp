#include "KRTodoWindow.h"

#include "KRTodoStore.h"

#include "KRCheckListView.h"

#include "Foundation/KRRunLoop.h"
#include "Platform/KRHostWidget.h"

#include <QCoreApplication>
#include <QKeyEvent>
#include <QMouseEvent>
#include <QScrollArea>
#include <QScrollBar>
#include <QTest>

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <memory>

namespace {

// The sample checklist in a window that is laid out as if shown.
class KRTodoWindowTests : public ::testing::Test {
protected:
    void SetUp() override {
        window.setAttribute(Qt::WA_DontShowOnScreen);
        window.show();
        window.settle();
    }
    void TearDown() override { KRRunLoop::main().cancelAll(); }

    int fittingHeight() const {
        return static_cast<int>(std::ceil(window.checkListView().lastSizeThatFits().height));
    }
    // Where a view's centre lies in the host widget.
    QPointF centreInHost(const KRView& view) const {
        const KRRect bounds = view.bounds();
        const KRPoint centre =
            view.convertPointToView(KRPointMake(KRRectGetMidX(bounds), KRRectGetMidY(bounds)), nullptr);
        return QPointF(centre.x, centre.y);
    }
    void click(QPointF position, Qt::KeyboardModifiers modifiers = Qt::NoModifier) {
        KRHostWidget& host = window.hostWidget();
        QMouseEvent press(QEvent::MouseButtonPress, position, host.mapToGlobal(position), Qt::LeftButton,
                          Qt::LeftButton, modifiers);
        QCoreApplication::sendEvent(&host, &press);
        QMouseEvent release(QEvent::MouseButtonRelease, position, host.mapToGlobal(position), Qt::LeftButton,
                            Qt::NoButton, modifiers);
        QCoreApplication::sendEvent(&host, &release);
    }
    void type(const QString& text) {
        for (const QChar character : text) {
            QKeyEvent press(QEvent::KeyPress, 0, Qt::NoModifier, QString(character));
            QCoreApplication::sendEvent(&window.hostWidget(), &press);
            QKeyEvent release(QEvent::KeyRelease, 0, Qt::NoModifier, QString(character));
            QCoreApplication::sendEvent(&window.hostWidget(), &release);
        }
    }
    KRCheckListItemView& row(KRUInteger index) const {
        return *window.checkListView().checkListViewItemViewForItemAtIndex(index);
    }
    // Whether the caret of the edited title lies wholly inside the scroll area's viewport.
    bool isCaretInViewport() const {
        const QRect caret = window.caretRectInHostWidget();
        if (caret.isNull()) {
            return false;
        }
        QWidget* viewport = window.scrollArea().viewport();
        const QRect inViewport(window.hostWidget().mapTo(viewport, caret.topLeft()), caret.size());
        return viewport->rect().contains(inViewport);
    }
    int scrollPosition() const { return window.scrollArea().verticalScrollBar()->value(); }
    void pressKey(int key, const QString& text = QString()) {
        QKeyEvent press(QEvent::KeyPress, key, Qt::NoModifier, text);
        QCoreApplication::sendEvent(&window.hostWidget(), &press);
        QKeyEvent release(QEvent::KeyRelease, key, Qt::NoModifier, text);
        QCoreApplication::sendEvent(&window.hostWidget(), &release);
    }
    double listWidth() const { return window.checkListView().frame().size.width; }
    int viewportWidth() const { return window.scrollArea().viewport()->width(); }

    std::shared_ptr<KRTodoStore> store = KRTodoStore::makeSampleStore();
    KRTodoWindow window{store};
};

} // namespace

TEST_F(KRTodoWindowTests, ShowsTheStoresItemsInAScrollArea) {
    EXPECT_EQ(window.windowTitle(), QStringLiteral("KRTodo"));
    EXPECT_EQ(window.centralWidget(), &window.scrollArea());
    EXPECT_EQ(window.scrollArea().widget(), &window.hostWidget());
    EXPECT_EQ(window.hostWidget().contentView(), &window.checkListView());
    EXPECT_EQ(window.checkListView().numberOfItems(), store->count());
}

TEST_F(KRTodoWindowTests, ListIsAsWideAsTheViewportAndHostAsTallAsTheRows) {
    EXPECT_GT(viewportWidth(), 0);
    EXPECT_EQ(listWidth(), viewportWidth());
    EXPECT_GT(fittingHeight(), 0);
    EXPECT_EQ(window.hostWidget().minimumHeight(), fittingHeight());
    EXPECT_GE(window.checkListView().frame().size.height, fittingHeight());
}

TEST_F(KRTodoWindowTests, NarrowerWindowWrapsTitlesAndScrolls) {
    const int wideHeight = fittingHeight();
    window.resize(260, 300);
    window.settle();

    EXPECT_LT(viewportWidth(), 260);
    EXPECT_EQ(listWidth(), viewportWidth());
    EXPECT_GT(fittingHeight(), wideHeight);
    EXPECT_EQ(window.hostWidget().minimumHeight(), fittingHeight());
    EXPECT_EQ(window.hostWidget().height(), fittingHeight());
    EXPECT_TRUE(window.scrollArea().verticalScrollBar()->isVisible());
}

TEST_F(KRTodoWindowTests, InsertedItemMakesTheHostTaller) {
    const int before = fittingHeight();
    window.checkListView().insertItemAtIndex(0);
    window.settle();

    EXPECT_EQ(store->count(), window.checkListView().numberOfItems());
    EXPECT_GT(fittingHeight(), before);
    EXPECT_EQ(window.hostWidget().minimumHeight(), fittingHeight());
}

TEST_F(KRTodoWindowTests, CheckBoxClicksInTheWindowReachTheStore) {
    ASSERT_EQ(store->items()[3].status, KRTodoItem::Open);
    click(centreInHost(*row(3).checkBoxButtonView()));
    EXPECT_EQ(store->items()[3].status, KRTodoItem::Completed);
    EXPECT_EQ(row(3).status(), KRTodoItem::Completed);

    click(centreInHost(*row(6).checkBoxButtonView()), Qt::AltModifier);
    EXPECT_EQ(store->items()[6].status, KRTodoItem::Canceled);
}

TEST_F(KRTodoWindowTests, TitlesTypedInTheWindowReachTheStore) {
    const QString before = store->items()[3].title;
    window.checkListView().beginEditingItemAtIndexSelectRange(3, KRRange{KRUIntegerMax, 0});
    ASSERT_EQ(window.checkListView().indexForEditedItem(), 3u);
    type(QStringLiteral(" x2"));

    EXPECT_EQ(store->items()[3].title, before + QStringLiteral(" x2"));
    EXPECT_EQ(row(3).title(), store->items()[3].title);
}

TEST_F(KRTodoWindowTests, EditingAnItemBelowTheViewportScrollsToItsCaret) {
    window.resize(300, 160);
    window.settle();
    ASSERT_EQ(scrollPosition(), 0);
    const KRUInteger last = store->count() - 1;

    window.checkListView().beginEditingItemAtIndexSelectRange(last, KRRange{KRUIntegerMax, 0});
    EXPECT_TRUE(window.isCaretRevealScheduled());
    window.settle();
    EXPECT_GT(scrollPosition(), 0);
    EXPECT_TRUE(isCaretInViewport());

    window.checkListView().beginEditingItemAtIndexSelectRange(0, KRRange{0, 0});
    window.settle();
    EXPECT_EQ(scrollPosition(), 0);
    EXPECT_TRUE(isCaretInViewport());
}

TEST_F(KRTodoWindowTests, TypingScrollsTheCaretBackIntoView) {
    window.resize(300, 160);
    window.settle();
    const KRUInteger last = store->count() - 1;
    window.checkListView().beginEditingItemAtIndexSelectRange(last, KRRange{KRUIntegerMax, 0});
    window.settle();
    window.scrollArea().verticalScrollBar()->setValue(0);
    ASSERT_FALSE(isCaretInViewport());

    type(QStringLiteral("!"));
    window.settle();
    EXPECT_EQ(store->items()[last].title.back(), QLatin1Char('!'));
    EXPECT_TRUE(isCaretInViewport());
}

TEST_F(KRTodoWindowTests, ReturnOnTheLastRowGrowsTheHostAndKeepsTheNewCaretInView) {
    window.resize(300, 160);
    window.settle();
    const KRUInteger count = store->count();
    window.checkListView().beginEditingItemAtIndexSelectRange(count - 1, KRRange{KRUIntegerMax, 0});
    window.settle();
    const int before = scrollPosition();

    pressKey(Qt::Key_Return, QStringLiteral("\r"));
    window.settle();
    ASSERT_EQ(store->count(), count + 1);
    EXPECT_EQ(window.checkListView().indexForEditedItem(), count);
    EXPECT_GT(scrollPosition(), before);
    EXPECT_TRUE(isCaretInViewport());

    // Up arrows walk back line by line to the first row, and the view follows.
    constexpr int kMaximumUpArrows = 100;
    int upArrows = 0;
    while (upArrows < kMaximumUpArrows && !window.checkListView().isInsertionPointInFirstLine()) {
        pressKey(Qt::Key_Up);
        window.settle();
        ++upArrows;
        EXPECT_TRUE(isCaretInViewport()) << "after " << upArrows << " up arrows";
    }
    EXPECT_GT(upArrows, static_cast<int>(count));
    EXPECT_EQ(window.checkListView().indexForEditedItem(), 0u);
    EXPECT_EQ(scrollPosition(), 0);
}

TEST_F(KRTodoWindowTests, PageDownAndPageUpScrollByAPageAndKeepTheEdit) {
    window.resize(260, 300);
    window.settle();
    window.checkListView().beginEditingItemAtIndexSelectRange(0, KRRange{0, 0});
    window.settle();
    ASSERT_EQ(scrollPosition(), 0);
    QScrollBar& scrollBar = *window.scrollArea().verticalScrollBar();
    ASSERT_GT(scrollBar.maximum(), 0);

    pressKey(Qt::Key_PageDown);
    window.settle();
    EXPECT_EQ(scrollPosition(), std::min(scrollBar.pageStep(), scrollBar.maximum()));
    EXPECT_EQ(window.checkListView().indexForEditedItem(), 0u);
    pressKey(Qt::Key_PageUp);
    window.settle();
    EXPECT_EQ(scrollPosition(), 0);
    EXPECT_EQ(window.checkListView().indexForEditedItem(), 0u);
    EXPECT_EQ(store->items()[0].title, QStringLiteral("Renew passport"));
}

TEST_F(KRTodoWindowTests, ClickBelowTheRowsEndsEditing) {
    const int below = fittingHeight() + 10;
    ASSERT_LT(below, window.hostWidget().height());
    window.checkListView().beginEditingItemAtIndexSelectRange(2, KRRange{0, 0});
    window.settle();
    click(QPointF(40, below));
    window.settle();
    EXPECT_EQ(window.checkListView().indexForEditedItem(), KRNotFound);
    EXPECT_EQ(window.checkListView().numberOfItems(), 12u);
}

TEST_F(KRTodoWindowTests, DoubleClickBelowTheRowsAddsAnItemAtTheEndToTypeInto) {
    const int below = fittingHeight() + 10;
    ASSERT_LT(below, window.hostWidget().height());
    QTest::mouseDClick(&window.hostWidget(), Qt::LeftButton, Qt::NoModifier, QPoint(40, below));
    window.settle();
    ASSERT_EQ(store->count(), 13u);
    EXPECT_EQ(window.checkListView().indexForEditedItem(), 12u);
    type(QStringLiteral("Water the plants"));
    EXPECT_EQ(store->items()[12].title, QStringLiteral("Water the plants"));
}
