#include "KRTodoUndoStep.h"

#include "KRTodoDatabase.h"
#include "KRTodoMenus.h"
#include "KRTodoStore.h"
#include "KRTodoWindow.h"

#include "KRCheckListItemView.h"
#include "KRCheckListView.h"

#include "Foundation/KRClock.h"
#include "Foundation/KRRunLoop.h"
#include "Platform/KRHostWidget.h"
#include "Platform/KRPasteboard.h"
#include "Text/KRTextView.h"
#include "Views/KRWindow.h"

#include <QAction>
#include <QCoreApplication>
#include <QMouseEvent>
#include <QTemporaryDir>
#include <QTest>
#include <QUndoStack>

#include <gtest/gtest.h>

#include <functional>
#include <memory>
#include <ostream>
#include <random>
#include <vector>

inline void PrintTo(const KRTodoItem& item, std::ostream* os) {
    *os << '{' << item.identifier.toStdString() << ' ' << item.status << " \"" << item.title.toStdString()
        << "\"}";
}

namespace {

using Command = KRTodoMenus::Command;

// What the user sees of the checklist: the items in order (identifiers too: an undone removal brings the
// same items back), the edited item with its text selection, and the selected items.
struct Snapshot {
    QString dump;
    QStringList identifiers;
    KRUInteger edited = KRNotFound;
    KRRange range{0, 0};
    QString selection;

    friend bool operator==(const Snapshot&, const Snapshot&) = default;
};

void PrintTo(const Snapshot& snapshot, std::ostream* os) {
    *os << "\n  items: " << snapshot.dump.toStdString() << "  edited: "
        << (snapshot.edited == KRNotFound ? std::string("none") : std::to_string(snapshot.edited)) << " at {"
        << snapshot.range.location << ", " << snapshot.range.length
        << "}, selected: " << snapshot.selection.toStdString();
}

// KRTodo's window on a checklist of a real database, shown and active so that keys go through Qt's
// shortcuts as a user's do.
class KRTodoUndoStepTests : public ::testing::Test {
protected:
    void SetUp() override {
        ASSERT_TRUE(KRClock::isManual());
        ASSERT_TRUE(directory.isValid());
        KRPasteboard::setGeneralPasteboard(KRPasteboard::makeInMemory());
        path = directory.filePath(QStringLiteral("KRTodo.sqlite"));
        database = KRTodoDatabase::open(path);
        ASSERT_EQ(database->problem(), KRTodoDatabase::Problem::None);
        const std::optional<qint64> checklist = database->addChecklist(QStringLiteral("Groceries"), 1.0);
        ASSERT_TRUE(checklist.has_value());
        store = KRTodoStore::makeStore(database, *checklist, QStringLiteral("Groceries"));
        std::vector<KRTodoItem> items;
        for (const char* title : {"alpha", "bravo", "charlie", "delta", "echo"}) {
            items.push_back(KRTodoItem{QString(), KRTodoItem::Open, QString::fromLatin1(title)});
        }
        store->insertItems(items, KRIndexSet(KRRange{0, 5}), nullptr);
        store->undoStack().clear();
        window = std::make_unique<KRTodoWindow>(store);
        window->show();
        window->activateWindow();
        window->hostWidget().setFocus();
        settle();
    }
    void TearDown() override {
        window.reset();
        store.reset();
        database.reset();
        KRClock::advance(1.0);
        KRRunLoop::main().runUntilIdle();
        KRRunLoop::main().cancelAll();
        KRPasteboard::setGeneralPasteboard(nullptr);
    }

    void settle() {
        window->settle();
        // The animations of moves end, and what waited for them runs.
        KRClock::advance(1.0);
        window->settle();
    }
    KRCheckListView& list() const { return window->checkListView(); }
    QUndoStack& stack() const { return store->undoStack(); }
    QAction& action(Command command) const { return window->menus().action(command); }
    Snapshot snapshot() const {
        Snapshot snapshot;
        snapshot.dump = store->dump();
        for (const KRTodoItem& item : store->items()) {
            snapshot.identifiers << item.identifier;
        }
        snapshot.edited = list().indexForEditedItem();
        if (snapshot.edited != KRNotFound) {
            snapshot.range = list().fieldEditor()->selectedRange();
        }
        snapshot.selection = list().indexesForSelectedItems().description();
        return snapshot;
    }
    // The items as the file holds them, read past the store's memory.
    std::vector<KRTodoItem> storedItems() const {
        std::vector<KRTodoItem> items;
        for (const KRTodoItemRecord& record : database->items(store->checklist())) {
            items.push_back(record.item);
        }
        return items;
    }
    std::vector<KRTodoItem> storeItems() const { return store->items(); }

    void press(Qt::Key key, Qt::KeyboardModifiers modifiers = Qt::NoModifier) {
        QTest::keyClick(&window->hostWidget(), key, modifiers);
        settle();
    }
    void type(const QString& text) {
        QTest::keyClicks(&window->hostWidget(), text);
        settle();
    }
    void edit(KRUInteger index, KRRange range) {
        list().beginEditingItemAtIndexSelectRange(index, range);
        settle();
        ASSERT_EQ(list().indexForEditedItem(), index);
    }
    QPointF centreInHost(const KRView& view) const {
        const KRRect bounds = view.bounds();
        const KRPoint centre =
            view.convertPointToView(KRPointMake(KRRectGetMidX(bounds), KRRectGetMidY(bounds)), nullptr);
        return QPointF(centre.x, centre.y);
    }
    void sendMouse(QEvent::Type type, QPointF position, Qt::MouseButton button, Qt::MouseButtons buttons) {
        KRHostWidget& host = window->hostWidget();
        QMouseEvent event(type, position, host.mapToGlobal(position), button, buttons, Qt::NoModifier);
        QCoreApplication::sendEvent(&host, &event);
    }
    KRCheckListItemView& row(KRUInteger index) const {
        return *list().checkListViewItemViewForItemAtIndex(index);
    }

    // The action is one step named name: Ctrl+Z takes it back to the state before, Ctrl+Shift+Z and Ctrl+Y
    // make it again; the file follows each time.
    void expectOneStep(const QString& name, const std::function<void()>& act) {
        const Snapshot before = snapshot();
        const int steps = stack().index();
        act();
        const Snapshot after = snapshot();
        ASSERT_NE(after.dump, before.dump) << "the action changed nothing";
        EXPECT_EQ(stack().index(), steps + 1);
        window->menus().validateAll();
        EXPECT_EQ(action(Command::Undo).text(), QStringLiteral("&Undo ") + name);
        EXPECT_TRUE(action(Command::Undo).isEnabled());
        EXPECT_EQ(storedItems(), storeItems()) << "the change itself is stored";

        press(Qt::Key_Z, Qt::ControlModifier);
        EXPECT_EQ(snapshot(), before) << "undone";
        EXPECT_EQ(stack().index(), steps);
        EXPECT_EQ(action(Command::Redo).text(), QStringLiteral("&Redo ") + name);
        EXPECT_EQ(storedItems(), storeItems()) << "the undone state is stored";

        press(Qt::Key_Z, Qt::ControlModifier | Qt::ShiftModifier);
        EXPECT_EQ(snapshot(), after) << "redone with Ctrl+Shift+Z";
        EXPECT_EQ(storedItems(), storeItems());

        press(Qt::Key_Z, Qt::ControlModifier);
        EXPECT_EQ(snapshot(), before) << "undone again";
        press(Qt::Key_Y, Qt::ControlModifier);
        EXPECT_EQ(snapshot(), after) << "redone with Ctrl+Y";
        EXPECT_EQ(storedItems(), storeItems());
    }

    QTemporaryDir directory;
    QString path;
    std::shared_ptr<KRTodoDatabase> database;
    std::shared_ptr<KRTodoStore> store;
    std::unique_ptr<KRTodoWindow> window;
};

} // namespace

TEST_F(KRTodoUndoStepTests, TheTypingOfOneEditingSessionIsOneStep) {
    edit(1, KRRange{5, 0});
    expectOneStep(QStringLiteral("Typing"), [&] {
        type(QStringLiteral(" and"));
        press(Qt::Key_Backspace);
        type(QStringLiteral("d!"));
    });
    EXPECT_EQ(store->items()[1].title, QStringLiteral("bravo and!"));
}

TEST_F(KRTodoUndoStepTests, TypingInTwoTitlesIsTwoSteps) {
    edit(1, KRRange{5, 0});
    type(QStringLiteral("1"));
    press(Qt::Key_Down);
    type(QStringLiteral("2"));
    EXPECT_EQ(stack().count(), 2);
    press(Qt::Key_Z, Qt::ControlModifier);
    EXPECT_EQ(store->dump(),
              QStringLiteral("open\talpha\nopen\tbravo1\nopen\tcharlie\nopen\tdelta\nopen\techo\n"));
    press(Qt::Key_Z, Qt::ControlModifier);
    EXPECT_EQ(store->dump(),
              QStringLiteral("open\talpha\nopen\tbravo\nopen\tcharlie\nopen\tdelta\nopen\techo\n"));
    EXPECT_EQ(list().indexForEditedItem(), 1u);
    EXPECT_EQ(list().fieldEditor()->selectedRange(), (KRRange{5, 0}));
}

TEST_F(KRTodoUndoStepTests, AClickOnACheckBoxIsOneStep) {
    expectOneStep(QStringLiteral("Complete"), [&] {
        const QPointF box = centreInHost(*row(2).checkBoxButtonView());
        sendMouse(QEvent::MouseButtonPress, box, Qt::LeftButton, Qt::LeftButton);
        sendMouse(QEvent::MouseButtonRelease, box, Qt::LeftButton, Qt::NoButton);
        settle();
    });
    EXPECT_EQ(store->items()[2].status, KRTodoItem::Completed);
}

TEST_F(KRTodoUndoStepTests, AToggleIsOneStep) {
    edit(3, KRRange{2, 0});
    expectOneStep(QStringLiteral("Complete"), [&] { press(Qt::Key_D, Qt::ControlModifier); });
    expectOneStep(QStringLiteral("Cancel"),
                  [&] { press(Qt::Key_D, Qt::ControlModifier | Qt::ShiftModifier); });
}

TEST_F(KRTodoUndoStepTests, AnInsertIsOneStep) {
    edit(1, KRRange{2, 0});
    expectOneStep(QStringLiteral("Insert"), [&] { press(Qt::Key_N, Qt::ControlModifier); });
    EXPECT_EQ(store->count(), 6u);
}

TEST_F(KRTodoUndoStepTests, AnInsertLeftEmptyWithEscapeLeavesNothingToUndo) {
    edit(1, KRRange{2, 0});
    press(Qt::Key_N, Qt::ControlModifier);
    ASSERT_EQ(stack().count(), 1);
    press(Qt::Key_Escape);
    ASSERT_EQ(store->count(), 5u);
    EXPECT_EQ(stack().count(), 0);
    window->menus().validateAll();
    EXPECT_FALSE(action(Command::Undo).isEnabled());
}

TEST_F(KRTodoUndoStepTests, ADeleteOfSeveralItemsIsOneStep) {
    list().selectItemsAtIndexesByExtendingSelection(KRIndexSet(KRRange{1, 2}), false);
    settle();
    expectOneStep(QStringLiteral("Delete"), [&] { press(Qt::Key_Delete); });
    EXPECT_EQ(store->dump(), QStringLiteral("open\talpha\nopen\tdelta\nopen\techo\n"));
}

TEST_F(KRTodoUndoStepTests, ASplitWithReturnIsOneStep) {
    edit(1, KRRange{2, 0});
    expectOneStep(QStringLiteral("Split"), [&] { press(Qt::Key_Return); });
    EXPECT_EQ(store->items()[1].title, QStringLiteral("br"));
    EXPECT_EQ(store->items()[2].title, QStringLiteral("avo"));
}

TEST_F(KRTodoUndoStepTests, AMergeWithBackspaceIsOneStep) {
    edit(2, KRRange{0, 0});
    expectOneStep(QStringLiteral("Merge"), [&] { press(Qt::Key_Backspace); });
    EXPECT_EQ(store->items()[1].title, QStringLiteral("bravocharlie"));
}

TEST_F(KRTodoUndoStepTests, AMergeWithDeleteIsOneStep) {
    edit(1, KRRange{5, 0});
    expectOneStep(QStringLiteral("Merge"), [&] { press(Qt::Key_Delete); });
    EXPECT_EQ(store->items()[1].title, QStringLiteral("bravocharlie"));
}

TEST_F(KRTodoUndoStepTests, AMoveWithTheKeyboardIsOneStep) {
    edit(1, KRRange{3, 0});
    expectOneStep(QStringLiteral("Move"), [&] { press(Qt::Key_Down, Qt::ControlModifier); });
    EXPECT_EQ(store->items()[2].title, QStringLiteral("bravo"));
}

TEST_F(KRTodoUndoStepTests, AMoveFromTheMenuIsOneStep) {
    list().selectItemsAtIndexesByExtendingSelection(KRIndexSet(KRRange{2, 2}), false);
    settle();
    expectOneStep(QStringLiteral("Move"), [&] {
        action(Command::MoveToTop).trigger();
        settle();
    });
    EXPECT_EQ(store->items()[0].title, QStringLiteral("charlie"));
}

TEST_F(KRTodoUndoStepTests, ADragIsOneStep) {
    expectOneStep(QStringLiteral("Move"), [&] {
        const QPointF handle = centreInHost(*row(0).handleButtonView());
        const double pitch = row(1).frame().origin.y - row(0).frame().origin.y;
        const QPointF target(handle.x(), handle.y() + 2.5 * pitch);
        sendMouse(QEvent::MouseButtonPress, handle, Qt::LeftButton, Qt::LeftButton);
        sendMouse(QEvent::MouseMove, (handle + target) / 2, Qt::NoButton, Qt::LeftButton);
        sendMouse(QEvent::MouseMove, target, Qt::NoButton, Qt::LeftButton);
        sendMouse(QEvent::MouseButtonRelease, target, Qt::LeftButton, Qt::NoButton);
        settle();
    });
    EXPECT_EQ(store->items()[2].title, QStringLiteral("alpha"));
}

TEST_F(KRTodoUndoStepTests, APasteOfFiveLinesIsOneStep) {
    KRPasteboard& pasteboard = *KRPasteboard::generalPasteboard();
    pasteboard.declareTypes({KRPasteboardTypeString}, nullptr);
    pasteboard.setString(QStringLiteral("one\ntwo\nthree\nfour\nfive\n"), KRPasteboardTypeString);
    edit(2, KRRange{KRUIntegerMax, 0});
    expectOneStep(QStringLiteral("Paste"), [&] { press(Qt::Key_V, Qt::ControlModifier); });
    EXPECT_EQ(store->count(), 10u);
    EXPECT_EQ(store->items()[3].title, QStringLiteral("one"));
    EXPECT_EQ(store->items()[7].title, QStringLiteral("five"));
}

TEST_F(KRTodoUndoStepTests, ALinePastedIntoATitleIsOneStepNamedPaste) {
    KRPasteboard& pasteboard = *KRPasteboard::generalPasteboard();
    pasteboard.declareTypes({KRPasteboardTypeString}, nullptr);
    pasteboard.setString(QStringLiteral(" and more"), KRPasteboardTypeString);
    edit(1, KRRange{5, 0});
    type(QStringLiteral("!"));
    expectOneStep(QStringLiteral("Paste"), [&] { press(Qt::Key_V, Qt::ControlModifier); });
    EXPECT_EQ(store->items()[1].title, QStringLiteral("bravo! and more"));
    press(Qt::Key_Z, Qt::ControlModifier);
    EXPECT_EQ(action(Command::Undo).text(), QStringLiteral("&Undo Typing"))
        << "the typing before it is a step";
}

TEST_F(KRTodoUndoStepTests, StepsUndoInReverseOrderAndTheUndoneStateIsWhatIsStored) {
    edit(1, KRRange{5, 0});
    type(QStringLiteral("!"));
    press(Qt::Key_Return);
    type(QStringLiteral("new"));
    press(Qt::Key_D, Qt::ControlModifier);
    ASSERT_EQ(store->dump(),
              QStringLiteral(
                  "open\talpha\nopen\tbravo!\ncompleted\tnew\nopen\tcharlie\nopen\tdelta\nopen\techo\n"));
    ASSERT_EQ(stack().count(), 4);
    for (int step = 0; step < 3; ++step) {
        press(Qt::Key_Z, Qt::ControlModifier);
    }
    EXPECT_EQ(store->dump(),
              QStringLiteral("open\talpha\nopen\tbravo!\nopen\tcharlie\nopen\tdelta\nopen\techo\n"));
    window.reset();
    const qint64 checklist = store->checklist();
    store.reset();
    database.reset();
    database = KRTodoDatabase::open(path);
    ASSERT_EQ(database->problem(), KRTodoDatabase::Problem::None);
    const std::shared_ptr<KRTodoStore> reopened = KRTodoStore::makeStore(database, checklist, QString());
    EXPECT_EQ(reopened->dump(),
              QStringLiteral("open\talpha\nopen\tbravo!\nopen\tcharlie\nopen\tdelta\nopen\techo\n"));
}

TEST_F(KRTodoUndoStepTests, AnyMixOfStepsUndoesBackToTheStartAndRedoesToTheEnd) {
    const std::vector<KRTodoItem> start = store->items();
    std::mt19937 random(7);
    const auto pick = [&random](KRUInteger count) { return static_cast<KRUInteger>(random() % count); };
    int steps = 0;
    for (int round = 0; round < 60; ++round) {
        store->noteInputEvent(&list());
        const KRUInteger count = list().numberOfItems();
        const int before = stack().index();
        switch (random() % 6) {
        case 0:
            list().insertItemAtIndex(pick(count + 1));
            break;
        case 1:
            if (count > 2) {
                const KRUInteger first = pick(count - 1);
                list().removeItemsAtIndexes(KRIndexSet(KRRange{first, 1 + pick(2)}));
            }
            break;
        case 2:
            if (count > 1) {
                KRMutableIndexSet moved;
                moved.addIndex(pick(count));
                moved.addIndex(pick(count));
                list().moveItemsAtIndexesToIndex(moved, pick(count + 1));
            }
            break;
        case 3:
            if (count > 0) {
                list().setStatusForItemsAtIndexes(pick(3), KRIndexSet(pick(count)));
            }
            break;
        case 4:
            if (count > 0) {
                list().beginEditingItemAtIndexSelectRange(pick(count), KRRange{pick(4), 0});
                store->noteInputEvent(&list());
                list().doCommandBySelector(KRSelector("insertNewline:"));
            }
            break;
        default:
            if (count > 1) {
                list().beginEditingItemAtIndexSelectRange(1 + pick(count - 1), KRRange{0, 0});
                store->noteInputEvent(&list());
                list().doCommandBySelector(KRSelector("deleteBackward:"));
            }
            break;
        }
        settle();
        ASSERT_LE(stack().index(), before + 1) << "one step at most, round " << round;
        steps += stack().index() - before;
        ASSERT_EQ(storedItems(), storeItems()) << "round " << round;
    }
    ASSERT_GT(steps, 30);
    const std::vector<KRTodoItem> end = store->items();
    while (stack().canUndo()) {
        store->undo(&list());
        settle();
    }
    EXPECT_EQ(store->items(), start);
    EXPECT_EQ(storedItems(), start);
    EXPECT_EQ(list().numberOfItems(), start.size());
    while (stack().canRedo()) {
        store->redo(&list());
        settle();
    }
    EXPECT_EQ(store->items(), end);
    EXPECT_EQ(storedItems(), end);
    for (KRUInteger index = 0; index < list().numberOfItems(); ++index) {
        EXPECT_EQ(list().titleForItemAtIndex(index), end[index].title) << "row " << index;
        EXPECT_EQ(list().statusForItemAtIndex(index), end[index].status) << "row " << index;
    }
}
