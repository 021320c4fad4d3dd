#include "KRTodoWindow.h"

#include "KRTodoDatabase.h"
#include "KRTodoDefaults.h"
#include "KRTodoMenus.h"
#include "KRTodoStore.h"

#include "KRCheckListDefaults.h"
#include "KRCheckListItemView.h"
#include "KRCheckListView.h"

#include "Foundation/KRClock.h"
#include "Foundation/KRRunLoop.h"
#include "KRCheckListDraggingSession.h"
#include "Platform/KRHostWidget.h"

#include <QApplication>
#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include <QKeyEvent>
#include <QLabel>
#include <QMouseEvent>
#include <QScrollArea>
#include <QScrollBar>
#include <QTemporaryDir>
#include <QTest>
#include <QToolButton>

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

// With no other control in the window, Tab ends the edit, the focus stays in the list and the item that
// was edited is selected, so the list's keys go on working: Down edits the item below it.
TEST_F(KRTodoWindowTests, TabWhileEditingEndsTheEditSelectsTheItemAndTheFocusStaysInTheList) {
    QApplication::setActiveWindow(&window); // a window kept off the screen is activated by hand
    ASSERT_EQ(QApplication::activeWindow(), &window) << "the window must be active to hold the focus";
    window.hostWidget().setFocus(Qt::OtherFocusReason);
    click(centreInHost(*row(1).titleTextField()));
    window.settle();
    ASSERT_EQ(window.checkListView().indexForEditedItem(), 1u);

    QTest::keyClick(&window.hostWidget(), Qt::Key_Tab);
    window.settle();
    EXPECT_EQ(window.checkListView().indexForEditedItem(), KRNotFound);
    EXPECT_TRUE(window.hostWidget().hasFocus());
    EXPECT_EQ(window.hostWidget().krWindow().firstResponder(), &window.checkListView());
    EXPECT_EQ(window.checkListView().indexesForSelectedItems(), KRIndexSet(1));

    QTest::keyClick(&window.hostWidget(), Qt::Key_Backtab, Qt::ShiftModifier);
    window.settle();
    EXPECT_TRUE(window.hostWidget().hasFocus());
    EXPECT_EQ(window.checkListView().indexesForSelectedItems(), KRIndexSet(1));

    pressKey(Qt::Key_Down);
    window.settle();
    EXPECT_EQ(window.checkListView().indexForEditedItem(), 2u);
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

// Auto-scroll while a row is dragged
// -------------------------------------------------------------------------------------------------------

namespace {

class KRTodoWindowAutoScrollTests : public KRTodoWindowTests {
protected:
    void SetUp() override {
        ASSERT_TRUE(KRClock::isManual());
        KRTodoWindowTests::SetUp();
        // Low enough that the list scrolls.
        window.resize(480, 200);
        window.settle();
        ASSERT_GT(scrollBar().maximum(), 200);
    }
    void TearDown() override {
        KRClock::advance(1.0);
        KRTodoWindowTests::TearDown();
    }

    QScrollBar& scrollBar() const { return *window.scrollArea().verticalScrollBar(); }
    QWidget& viewport() const { return *window.scrollArea().viewport(); }
    int viewportHeight() const { return viewport().height(); }
    // Sends a mouse event to the host at a point given in the viewport's coordinates.
    void sendAtViewportPoint(QEvent::Type type, QPointF inViewport, Qt::MouseButton button,
                             Qt::MouseButtons buttons) {
        KRHostWidget& host = window.hostWidget();
        const QPointF global = viewport().mapToGlobal(inViewport);
        const QPointF position = host.mapFromGlobal(global);
        QMouseEvent event(type, position, global, button, buttons, Qt::NoModifier);
        QCoreApplication::sendEvent(&host, &event);
    }
    // Presses the handle of a row that the viewport shows and answers the point (viewport coordinates).
    QPointF pressHandleOfRow(KRUInteger index) {
        const QPointF inHost = centreInHost(*row(index).handleButtonView());
        const QPointF inViewport = viewport().mapFromGlobal(window.hostWidget().mapToGlobal(inHost));
        sendAtViewportPoint(QEvent::MouseButtonPress, inViewport, Qt::LeftButton, Qt::LeftButton);
        return inViewport;
    }
    void dragToViewportY(double x, double y) {
        sendAtViewportPoint(QEvent::MouseMove, QPointF(x, y), Qt::NoButton, Qt::LeftButton);
    }
    // One display frame: the clock moves on and the due step runs.
    void runFrames(int count) {
        for (int frame = 0; frame < count; ++frame) {
            KRClock::advance(KRCheckListDefaults::autoScrollInterval());
            KRRunLoop::main().runOneTurn();
        }
    }
    double speedAt(double y) const { return window.autoScrollSpeedAtViewportY(y); }
};

} // namespace

TEST_F(KRTodoWindowAutoScrollTests, TheSpeedIsZeroAwayFromTheEdgesAndGrowsWithTheDepthInAZone) {
    const double h = viewportHeight();
    const double zone = KRCheckListDefaults::autoScrollEdgeZoneHeight();
    const double minimum = KRCheckListDefaults::autoScrollMinimumSpeed();
    const double maximum = KRCheckListDefaults::autoScrollMaximumSpeed();
    ASSERT_GT(h, 2 * zone);

    EXPECT_EQ(speedAt(h / 2), 0.0);
    EXPECT_EQ(speedAt(zone), 0.0) << "the zone's inner edge";
    EXPECT_EQ(speedAt(h - zone), 0.0);
    EXPECT_DOUBLE_EQ(speedAt(zone / 2), -(minimum + maximum) / 2);
    EXPECT_DOUBLE_EQ(speedAt(h - zone / 2), (minimum + maximum) / 2);
    EXPECT_LT(speedAt(zone / 4), speedAt(zone / 2)) << "deeper upward is faster";
    EXPECT_GT(speedAt(h - zone / 4), speedAt(h - zone / 2)) << "deeper downward is faster";
    EXPECT_DOUBLE_EQ(speedAt(0), -maximum);
    EXPECT_DOUBLE_EQ(speedAt(h), maximum);
    EXPECT_DOUBLE_EQ(speedAt(-500), -maximum) << "beyond the edge";
    EXPECT_DOUBLE_EQ(speedAt(h + 500), maximum);
}

TEST_F(KRTodoWindowAutoScrollTests, DraggingARowNearTheBottomEdgeScrollsDownAndTheRowFollowsThePointer) {
    KRCheckListView& list = window.checkListView();
    const QPointF pressed = pressHandleOfRow(1);
    ASSERT_TRUE(list.isDragging());
    const double y = viewportHeight() - KRCheckListDefaults::autoScrollEdgeZoneHeight() / 2;
    dragToViewportY(pressed.x(), y);
    ASSERT_EQ(scrollBar().value(), 0);
    const double offset = list.checkListViewItemViewForItemAtIndex(1)->frame().origin.y -
                          list.draggingSession()->mouseLocation().y;

    runFrames(15);

    // A quarter of a second at the speed of the zone's middle.
    const double expected = speedAt(y) * 15 * KRCheckListDefaults::autoScrollInterval();
    EXPECT_NEAR(scrollBar().value(), expected, 1.0);
    // The pointer stays where it is on the screen, so in the list it has moved down by the scrolled distance.
    EXPECT_EQ(list.draggingSession()->mouseLocation().y, y + scrollBar().value());
    EXPECT_EQ(list.checkListViewItemViewForItemAtIndex(1)->frame().origin.y,
              list.draggingSession()->mouseLocation().y + offset);
    EXPECT_GT(list.dropPlaceholderIndex(), 2u) << "the gap follows to rows further down";
}

TEST_F(KRTodoWindowAutoScrollTests, DeeperInTheZoneScrollsFaster) {
    const QPointF pressed = pressHandleOfRow(1);
    const double zone = KRCheckListDefaults::autoScrollEdgeZoneHeight();
    dragToViewportY(pressed.x(), viewportHeight() - zone * 0.75);
    runFrames(6);
    const int shallow = scrollBar().value();

    dragToViewportY(pressed.x(), viewportHeight() - zone * 0.25);
    runFrames(6);
    const int deep = scrollBar().value() - shallow;

    EXPECT_GT(shallow, 0);
    EXPECT_GT(deep, 2 * shallow);
}

TEST_F(KRTodoWindowAutoScrollTests, DraggingAboveTheViewportScrollsUpAtTheMaximumSpeed) {
    scrollBar().setValue(scrollBar().maximum());
    window.settle();
    const int start = scrollBar().value();
    KRCheckListView& list = window.checkListView();
    const KRUInteger last = list.numberOfItems() - 1;
    const QPointF pressed = pressHandleOfRow(last);
    ASSERT_TRUE(list.isDragging());

    dragToViewportY(pressed.x(), -30.0);
    runFrames(6);

    const double expected =
        KRCheckListDefaults::autoScrollMaximumSpeed() * 6 * KRCheckListDefaults::autoScrollInterval();
    EXPECT_NEAR(start - scrollBar().value(), expected, 1.0);
    EXPECT_EQ(list.draggingSession()->mouseLocation().y, -30.0 + scrollBar().value());
}

TEST_F(KRTodoWindowAutoScrollTests, NoScrollingAwayFromTheEdgesAndNoneAfterTheDrop) {
    const QPointF pressed = pressHandleOfRow(1);
    dragToViewportY(pressed.x(), viewportHeight() / 2.0);
    runFrames(10);
    EXPECT_EQ(scrollBar().value(), 0);
    EXPECT_FALSE(window.isAutoScrollScheduled());

    const QPointF nearBottom(pressed.x(), viewportHeight() - 5.0);
    dragToViewportY(nearBottom.x(), nearBottom.y());
    runFrames(3);
    const int scrolled = scrollBar().value();
    EXPECT_GT(scrolled, 0);
    sendAtViewportPoint(QEvent::MouseButtonRelease, nearBottom, Qt::LeftButton, Qt::NoButton);
    EXPECT_FALSE(window.checkListView().isDragging());
    runFrames(10);
    EXPECT_EQ(scrollBar().value(), scrolled);
    EXPECT_FALSE(window.isAutoScrollScheduled());
}

// An empty checklist
// -------------------------------------------------------------------------------------------------------

namespace {

class KRTodoEmptyWindowTests : public ::testing::Test {
protected:
    void SetUp() override {
        window.setAttribute(Qt::WA_DontShowOnScreen);
        window.show();
        window.settle();
    }
    void TearDown() override { KRRunLoop::main().cancelAll(); }

    std::shared_ptr<KRTodoStore> store = std::make_shared<KRTodoStore>();
    KRTodoWindow window{store};
};

} // namespace

TEST_F(KRTodoEmptyWindowTests, AnEmptyChecklistShowsWhatToPressAndAnAddButton) {
    EXPECT_TRUE(window.emptyHint().isVisible());
    EXPECT_TRUE(window.addButton().isVisible());
    const QRect hint = window.emptyHint().geometry();
    const QRect viewport = window.scrollArea().viewport()->rect();
    EXPECT_TRUE(viewport.contains(hint));
    EXPECT_LE(std::abs(hint.center().x() - viewport.center().x()), 1);
    // A look at it: build/out/KRTodo-empty.png.
    QDir().mkpath(QStringLiteral("out"));
    EXPECT_TRUE(window.grab().save(QStringLiteral("out/KRTodo-empty.png")));
}

TEST_F(KRTodoEmptyWindowTests, TheAddButtonAddsAnItemToTypeIntoAndTheHintGoes) {
    QTest::mouseClick(&window.addButton(), Qt::LeftButton);
    window.settle();
    ASSERT_EQ(store->count(), 1u);
    EXPECT_EQ(window.checkListView().indexForEditedItem(), 0u);
    EXPECT_FALSE(window.emptyHint().isVisible());
    for (const QChar character : QStringLiteral("Milk")) {
        QKeyEvent press(QEvent::KeyPress, 0, Qt::NoModifier, QString(character));
        QCoreApplication::sendEvent(&window.hostWidget(), &press);
    }
    window.settle();
    EXPECT_EQ(store->items()[0].title, QStringLiteral("Milk"));
}

// Tab goes from the list to the + button and back, and the list has the keys again.
TEST_F(KRTodoEmptyWindowTests, TabGoesFromTheListToTheAddButtonAndBack) {
    QApplication::setActiveWindow(&window); // a window kept off the screen is activated by hand
    ASSERT_EQ(QApplication::activeWindow(), &window) << "the window must be active to hold the focus";
    window.hostWidget().setFocus(Qt::OtherFocusReason);
    for (int round = 0; round < 2; ++round) {
        QTest::keyClick(&window.hostWidget(), Qt::Key_Tab);
        EXPECT_TRUE(window.addButton().hasFocus()) << "round " << round;
        QTest::keyClick(&window.addButton(), Qt::Key_Tab);
        EXPECT_TRUE(window.hostWidget().hasFocus()) << "round " << round;
        EXPECT_EQ(window.hostWidget().krWindow().firstResponder(), &window.checkListView());
    }
    QTest::keyClick(&window.hostWidget(), Qt::Key_Backtab, Qt::ShiftModifier);
    EXPECT_TRUE(window.addButton().hasFocus());
    QTest::keyClick(&window.addButton(), Qt::Key_Space);
    window.settle();
    EXPECT_EQ(store->count(), 1u) << "the button focused by Tab adds an item with Space";
}

TEST_F(KRTodoEmptyWindowTests, TheHintComesBackWhenTheLastItemGoes) {
    window.checkListView().insertItemAtIndex(0);
    window.settle();
    EXPECT_FALSE(window.emptyHint().isVisible());
    window.checkListView().removeItemAtIndex(0);
    window.settle();
    EXPECT_TRUE(window.emptyHint().isVisible());
}

// Titles in every script
// -------------------------------------------------------------------------------------------------------

namespace {

// The list of one item with this title, drawn.
QImage drawTitle(const QString& title) {
    const auto store =
        std::make_shared<KRTodoStore>(std::vector<KRTodoItem>{{QString(), KRTodoItem::Open, title}});
    KRTodoWindow window(store);
    window.setAttribute(Qt::WA_DontShowOnScreen);
    window.show();
    window.settle();
    return window.renderCheckListToImage(1.0);
}

} // namespace

TEST(KRTodoWindowScriptTests, EmojiDrawInColour) {
    // Red apples: a colour emoji font draws red; a missing glyph is a grey box, text is grey or black.
    const QImage image = drawTitle(QStringLiteral("\U0001F34E\U0001F34E\U0001F34E"));
    int red = 0;
    for (int y = 0; y < image.height(); ++y) {
        for (int x = 0; x < image.width(); ++x) {
            const QColor colour = image.pixelColor(x, y);
            if (colour.red() > 180 && colour.green() < 90 && colour.blue() < 90) {
                ++red;
            }
        }
    }
    EXPECT_GT(red, 20);
}

TEST(KRTodoWindowScriptTests, ChineseJapaneseAndKoreanDrawTheirOwnGlyphs) {
    // Missing glyphs all draw as the same box; real ones differ from each other.
    const QImage sun = drawTitle(QStringLiteral("\u65E5\u65E5\u65E5"));
    const QImage book = drawTitle(QStringLiteral("\u672C\u672C\u672C"));
    const QImage hangul = drawTitle(QStringLiteral("\uD55C\uD55C\uD55C"));
    const QImage kana = drawTitle(QStringLiteral("\u30BF\u30BF\u30BF"));
    EXPECT_NE(sun, book);
    EXPECT_NE(sun, hangul);
    EXPECT_NE(book, kana);
    EXPECT_NE(hangul, kana);
}

// A read-only checklist
// -------------------------------------------------------------------------------------------------------

TEST(KRTodoReadOnlyWindowTests, SaysWhyAndTakesNoChangeFromKeysMenusOrClicks) {
    QTemporaryDir directory;
    const QString path = directory.filePath(QStringLiteral("KRTodo.sqlite"));
    {
        std::shared_ptr<KRTodoDatabase> database = KRTodoDatabase::open(path);
        const qint64 checklist = database->addChecklist(QStringLiteral("Groceries"), 1.0).value_or(0);
        KRTodoStore::makeStore(database, checklist, QString())
            ->insertItems({{QString(), KRTodoItem::Open, QStringLiteral("milk")}}, KRIndexSet(0), nullptr);
    }
    ASSERT_TRUE(QFile::setPermissions(path, QFileDevice::ReadOwner));
    std::shared_ptr<KRTodoDatabase> database = KRTodoDatabase::open(path);
    ASSERT_TRUE(database->isReadOnly());
    const auto store = KRTodoStore::makeStore(database, database->checklists().at(0).identifier, QString());
    KRTodoWindow window(store);
    window.showReadOnlyReason(database->message());
    window.show();
    window.activateWindow();
    window.hostWidget().setFocus();
    window.settle();

    ASSERT_NE(window.readOnlyNotice(), nullptr);
    EXPECT_TRUE(window.readOnlyNotice()->isVisible());
    EXPECT_EQ(window.readOnlyNotice()->text(), database->message());
    for (const KRTodoMenus::Command command :
         {KRTodoMenus::Command::InsertBelow, KRTodoMenus::Command::Paste, KRTodoMenus::Command::Undo,
          KRTodoMenus::Command::ToggleCompleted, KRTodoMenus::Command::MoveDown}) {
        EXPECT_FALSE(window.menus().validate(command));
    }

    window.checkListView().beginEditingItemAtIndexSelectRange(0, KRRange{KRUIntegerMax, 0});
    window.settle();
    QTest::keyClicks(&window.hostWidget(), QStringLiteral("shake"));
    QTest::keyClick(&window.hostWidget(), Qt::Key_Return);
    QTest::keyClick(&window.hostWidget(), Qt::Key_N, Qt::ControlModifier);
    QTest::keyClick(&window.hostWidget(), Qt::Key_D, Qt::ControlModifier);
    window.settle();
    KRCheckListItemView& row = *window.checkListView().checkListViewItemViewForItemAtIndex(0);
    row.checkListItemViewValidateChangedStatus(&row, KRTodoItem::Completed);
    window.settle();
    EXPECT_EQ(store->dump(), QStringLiteral("open\tmilk\n"));
    EXPECT_EQ(window.checkListView().titleForItemAtIndex(0), QStringLiteral("milk"));
    EXPECT_EQ(window.checkListView().statusForItemAtIndex(0), KRTodoItem::Open);
    QFile::setPermissions(path, QFileDevice::ReadOwner | QFileDevice::WriteOwner);
}
