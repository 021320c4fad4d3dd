#include "KRTodoMenus.h"

#include "KRQtTestPrinters.h"
#include "KRTodoStore.h"
#include "KRTodoWindow.h"

#include "KRCheckListView.h"

#include "Foundation/KRRunLoop.h"
#include "Platform/KRHostWidget.h"
#include "Platform/KRPasteboard.h"
#include "Text/KRKeyBindings.h"
#include "Text/KRTextView.h"
#include "Views/KREvent.h"
#include "Views/KRWindow.h"

#include <QAction>
#include <QApplication>
#include <QMenu>
#include <QMenuBar>
#include <QSet>
#include <QTest>

#include <gtest/gtest.h>

#include <memory>
#include <ostream>
#include <utility>
#include <vector>

namespace {

using Command = KRTodoMenus::Command;

// The store that also writes down every title the list asks it to validate.
class TitleRecordingStore : public KRTodoStore {
public:
    using KRTodoStore::KRTodoStore;

    QString checkListViewValidateChangedTitleForItemAtIndex(KRCheckListView* checkListView,
                                                            const QString& title, KRUInteger index) override {
        validatedTitles.emplace_back(index, title);
        return KRTodoStore::checkListViewValidateChangedTitleForItemAtIndex(checkListView, title, index);
    }

    // The commands the list's command decision offers the delegate first.
    bool checkListViewTextViewDoCommandBySelector(KRCheckListView* checkListView, KRTextView* textView,
                                                  const KRSelector& selector) override {
        commands << selector.name();
        return KRTodoStore::checkListViewTextViewDoCommandBySelector(checkListView, textView, selector);
    }

    std::vector<std::pair<KRUInteger, QString>> validatedTitles;
    QStringList commands;
};

std::shared_ptr<TitleRecordingStore> makeStore(const std::vector<QString>& titles) {
    std::vector<KRTodoItem> items;
    for (const QString& title : titles) {
        items.push_back(KRTodoItem{QString(), KRTodoItem::Open, title});
    }
    return std::make_shared<TitleRecordingStore>(std::move(items));
}

// A shown, active window (the offscreen platform gives it a platform window), so that Qt's shortcuts are
// live and keys go through them as a user's would.
class KRTodoMenusTests : public ::testing::Test {
protected:
    void SetUp() override {
        KRPasteboard::setGeneralPasteboard(KRPasteboard::makeInMemory());
        window = std::make_unique<KRTodoWindow>(store);
        window->show();
        window->activateWindow();
        window->hostWidget().setFocus();
        window->settle();
    }
    void TearDown() override {
        window.reset();
        KRRunLoop::main().cancelAll();
        KRPasteboard::setGeneralPasteboard(nullptr);
    }

    KRCheckListView& list() const { return window->checkListView(); }
    KRTodoMenus& menus() const { return window->menus(); }
    QAction& action(Command command) const { return menus().action(command); }
    QStringList storeTitles() const {
        QStringList titles;
        for (const KRTodoItem& item : store->items()) {
            titles << item.title;
        }
        return titles;
    }
    // A key as the user presses it: Qt's shortcuts first, then the host widget.
    void press(Qt::Key key, Qt::KeyboardModifiers modifiers = Qt::NoModifier) {
        QTest::keyClick(&window->hostWidget(), key, modifiers);
        window->settle();
    }
    void type(const QString& text) {
        QTest::keyClicks(&window->hostWidget(), text);
        window->settle();
    }
    void edit(KRUInteger index, KRRange range) {
        list().beginEditingItemAtIndexSelectRange(index, range);
        window->settle();
        ASSERT_EQ(list().indexForEditedItem(), index);
    }
    void openMenu(QMenu& menu) { Q_EMIT menu.aboutToShow(); }
    // A click in the middle of the title of the row at index, as the user makes it.
    void clickTitle(KRUInteger index) {
        const KRView& title = *list().checkListViewItemViewForItemAtIndex(index)->titleTextField();
        const KRRect bounds = title.bounds();
        const KRPoint centre =
            title.convertPointToView(KRPointMake(KRRectGetMidX(bounds), KRRectGetMidY(bounds)), nullptr);
        QTest::mouseClick(&window->hostWidget(), Qt::LeftButton, Qt::NoModifier,
                          QPoint(static_cast<int>(centre.x), static_cast<int>(centre.y)));
        window->settle();
    }
    // Click a title, then Ctrl+A twice: the title's text, then every item.
    void selectEveryItem() {
        clickTitle(1);
        ASSERT_EQ(list().indexForEditedItem(), 1u);
        press(Qt::Key_A, Qt::ControlModifier);
        press(Qt::Key_A, Qt::ControlModifier);
        ASSERT_EQ(list().indexesForSelectedItems(), KRIndexSet(KRRange{0, 5}));
    }
    void expectNothingLeftSelectedOrEdited() {
        EXPECT_EQ(store->count(), 0u);
        EXPECT_EQ(list().numberOfItems(), 0u);
        EXPECT_TRUE(list().indexesForSelectedItems().isEmpty());
        EXPECT_EQ(list().indexForEditedItem(), KRNotFound);
    }
    KRTextView* fieldEditor() const {
        return dynamic_cast<KRTextView*>(window->hostWidget().krWindow().firstResponder());
    }

    std::shared_ptr<TitleRecordingStore> store =
        makeStore({QStringLiteral("alpha"), QStringLiteral("bravo"), QStringLiteral("charlie"),
                   QStringLiteral("delta"), QStringLiteral("echo")});
    std::unique_ptr<KRTodoWindow> window;
};

// What each Item action's enabled state must equal, read from the list.
std::vector<std::pair<Command, bool>> itemPredicates(const KRCheckListView& list) {
    return {
        {Command::InsertAbove, list.canInsertItemAboveEditedOrSelectedItems()},
        {Command::InsertBelow, list.canInsertItemBelowEditedOrSelectedItems()},
        {Command::InsertAtTop, list.canInsertItemTop()},
        {Command::InsertAtBottom, list.canInsertItemBottom()},
        {Command::MoveUp, list.canMoveEditedOrSelectedItemsUp()},
        {Command::MoveDown, list.canMoveEditedOrSelectedItemsDown()},
        {Command::MoveToTop, list.canMoveEditedOrSelectedItemsTop()},
        {Command::MoveToBottom, list.canMoveEditedOrSelectedItemsBottom()},
        {Command::ToggleCompleted, list.canToggleEditedOrSelectedItemsCompleted()},
        {Command::ToggleCanceled, list.canToggleEditedOrSelectedItemsCanceled()},
    };
}

} // namespace

TEST_F(KRTodoMenusTests, MenuBarHasFileEditItemAndHelpMenus) {
    const QList<QAction*> bar = window->menuBar()->actions();
    ASSERT_EQ(bar.size(), 4);
    EXPECT_EQ(bar[0]->menu(), &menus().fileMenu());
    EXPECT_EQ(bar[1]->menu(), &menus().editMenu());
    EXPECT_EQ(bar[2]->menu(), &menus().itemMenu());
    EXPECT_EQ(bar[3]->text(), QStringLiteral("&Help"));

    QStringList editTexts;
    for (const QAction* item : menus().editMenu().actions()) {
        if (!item->isSeparator()) {
            editTexts << item->text().remove(QLatin1Char('&'));
        }
    }
    EXPECT_EQ(editTexts, (QStringList{QStringLiteral("Undo"), QStringLiteral("Redo"), QStringLiteral("Cut"),
                                      QStringLiteral("Copy"), QStringLiteral("Paste"),
                                      QStringLiteral("Delete"), QStringLiteral("Select All")}));
    QStringList itemTexts;
    for (const QAction* item : menus().itemMenu().actions()) {
        if (!item->isSeparator()) {
            itemTexts << item->text().remove(QLatin1Char('&'));
        }
    }
    EXPECT_EQ(itemTexts,
              (QStringList{QStringLiteral("Insert Above"), QStringLiteral("Insert Below"),
                           QStringLiteral("Insert at Top"), QStringLiteral("Insert at Bottom"),
                           QStringLiteral("Move Up"), QStringLiteral("Move Down"),
                           QStringLiteral("Move to Top"), QStringLiteral("Move to Bottom"),
                           QStringLiteral("Toggle Completed"), QStringLiteral("Toggle Canceled")}));
}

TEST_F(KRTodoMenusTests, EditItemsShowTheStandardKeys) {
    EXPECT_TRUE(action(Command::Cut).shortcuts().contains(QKeySequence(Qt::CTRL | Qt::Key_X)));
    EXPECT_TRUE(action(Command::Copy).shortcuts().contains(QKeySequence(Qt::CTRL | Qt::Key_C)));
    EXPECT_TRUE(action(Command::Paste).shortcuts().contains(QKeySequence(Qt::CTRL | Qt::Key_V)));
    EXPECT_TRUE(action(Command::SelectAll).shortcuts().contains(QKeySequence(Qt::CTRL | Qt::Key_A)));
    EXPECT_EQ(action(Command::Cut).shortcuts(), QKeySequence::keyBindings(QKeySequence::Cut));
    EXPECT_EQ(action(Command::Copy).shortcuts(), QKeySequence::keyBindings(QKeySequence::Copy));
    EXPECT_EQ(action(Command::Paste).shortcuts(), QKeySequence::keyBindings(QKeySequence::Paste));
    EXPECT_EQ(action(Command::SelectAll).shortcuts(), QKeySequence::keyBindings(QKeySequence::SelectAll));
    EXPECT_EQ(action(Command::Delete).shortcut(), QKeySequence(QKeySequence::Delete));
    // Delete is the list's deleteForward: key; the menu only shows it.
    EXPECT_EQ(action(Command::Delete).shortcutContext(), Qt::WidgetShortcut);
}

// A live item shortcut on a key the list binds would take the key from the list.
TEST_F(KRTodoMenusTests, LiveItemKeysAreKeysTheListLeavesUnbound) {
    struct Key {
        Command command;
        unsigned short keyCode;
        QChar character;
        KREventModifierFlags flags;
    };
    const std::vector<Key> keys = {
        {Command::InsertBelow, KRKeyCode::N, QLatin1Char('n'), KREventModifierFlagCommand},
        {Command::InsertAbove, KRKeyCode::N, QLatin1Char('N'),
         KREventModifierFlagCommand | KREventModifierFlagShift},
        {Command::InsertAtBottom, KRKeyCode::N, QLatin1Char('n'),
         KREventModifierFlagCommand | KREventModifierFlagOption},
        {Command::InsertAtTop, KRKeyCode::N, QLatin1Char('N'),
         KREventModifierFlagCommand | KREventModifierFlagOption | KREventModifierFlagShift},
        {Command::ToggleCompleted, KRKeyCode::D, QLatin1Char('d'), KREventModifierFlagCommand},
        {Command::ToggleCanceled, KRKeyCode::D, QLatin1Char('D'),
         KREventModifierFlagCommand | KREventModifierFlagShift},
        {Command::Quit, KRKeyCode::Q, QLatin1Char('q'), KREventModifierFlagCommand},
    };
    for (const Key& key : keys) {
        EXPECT_EQ(action(key.command).shortcutContext(), Qt::WindowShortcut);
        ASSERT_FALSE(action(key.command).shortcuts().isEmpty());
        const KREvent event = KREvent::keyEvent(KREventType::KeyDown, key.flags, QString(key.character),
                                                QString(key.character.toLower()), key.keyCode, nullptr);
        EXPECT_TRUE(KRKeyBindings::selectorsForEvent(event, KRKeyBindings::Platform::Other).isEmpty())
            << action(key.command).text().toStdString();
    }
    // Items whose keys the list has show them without taking them.
    for (const Command command :
         {Command::MoveUp, Command::MoveDown, Command::MoveToTop, Command::MoveToBottom}) {
        EXPECT_EQ(action(command).shortcutContext(), Qt::WidgetShortcut);
        EXPECT_FALSE(action(command).shortcut().isEmpty());
    }
}

// Alt and a letter open a menu or choose an item in it, so no two entries of one menu may share one.
TEST_F(KRTodoMenusTests, EveryMenuEntryHasAMnemonicOfItsOwn) {
    const QList<QAction*> bar = window->menuBar()->actions();
    std::vector<QList<QAction*>> menusAndBar = {bar};
    for (const QAction* menu : bar) {
        menusAndBar.push_back(menu->menu()->actions());
    }
    for (const QList<QAction*>& entries : menusAndBar) {
        QSet<QChar> mnemonics;
        for (const QAction* entry : entries) {
            if (entry->isSeparator()) {
                continue;
            }
            const QString text = entry->text();
            const qsizetype ampersand = text.indexOf(QLatin1Char('&'));
            ASSERT_TRUE(ampersand >= 0 && ampersand + 1 < text.size()) << text.toStdString() << " has none";
            const QChar mnemonic = text.at(ampersand + 1).toLower();
            EXPECT_FALSE(mnemonics.contains(mnemonic))
                << text.toStdString() << " repeats '" << QString(mnemonic).toStdString() << "'";
            mnemonics.insert(mnemonic);
        }
    }
}

TEST_F(KRTodoMenusTests, InsertAtTopAndBottomKeysInsertAndEdit) {
    edit(2, KRRange{0, 0});
    press(Qt::Key_N, Qt::ControlModifier | Qt::AltModifier);
    EXPECT_EQ(store->count(), 6u);
    EXPECT_EQ(list().indexForEditedItem(), 5u);
    type(QStringLiteral("last"));
    press(Qt::Key_N, Qt::ControlModifier | Qt::AltModifier | Qt::ShiftModifier);
    EXPECT_EQ(list().indexForEditedItem(), 0u);
    type(QStringLiteral("first"));
    EXPECT_EQ(storeTitles(), (QStringList{"first", "alpha", "bravo", "charlie", "delta", "echo", "last"}));
}

TEST_F(KRTodoMenusTests, ItemMenuEnablingFollowsTheListsPredicates) {
    // Nothing edited or selected, then an item edited, then two selected.
    openMenu(menus().itemMenu());
    for (const auto& [command, enabled] : itemPredicates(list())) {
        EXPECT_EQ(action(command).isEnabled(), enabled) << action(command).text().toStdString();
    }
    EXPECT_FALSE(action(Command::ToggleCompleted).isEnabled());
    EXPECT_FALSE(action(Command::ToggleCanceled).isEnabled());

    edit(2, KRRange{0, 0});
    openMenu(menus().itemMenu());
    for (const auto& [command, enabled] : itemPredicates(list())) {
        EXPECT_EQ(action(command).isEnabled(), enabled) << action(command).text().toStdString();
    }
    EXPECT_TRUE(action(Command::ToggleCompleted).isEnabled());
    EXPECT_TRUE(action(Command::InsertAbove).isEnabled());

    list().selectItemsAtIndexesByExtendingSelection(KRIndexSet(KRRange{1, 2}), false);
    window->settle();
    openMenu(menus().itemMenu());
    for (const auto& [command, enabled] : itemPredicates(list())) {
        EXPECT_EQ(action(command).isEnabled(), enabled) << action(command).text().toStdString();
    }
    EXPECT_TRUE(action(Command::ToggleCanceled).isEnabled());
}

TEST_F(KRTodoMenusTests, EditMenuEnablingFollowsTheListAndTheFieldEditor) {
    // Nothing edited or selected: nothing to cut, copy or delete; select all always works.
    openMenu(menus().editMenu());
    for (const Command command : {Command::Cut, Command::Copy, Command::Delete, Command::SelectAll}) {
        EXPECT_EQ(action(command).isEnabled(), list().validateMenuItem(KRTodoMenus::editAction(command)))
            << action(command).text().toStdString();
    }
    EXPECT_FALSE(action(Command::Copy).isEnabled());
    EXPECT_TRUE(action(Command::SelectAll).isEnabled());

    // Selected items: the list cuts, copies and deletes them.
    list().selectItemsAtIndexesByExtendingSelection(KRIndexSet(KRRange{1, 2}), false);
    window->settle();
    openMenu(menus().editMenu());
    for (const Command command : {Command::Cut, Command::Copy, Command::Delete}) {
        EXPECT_TRUE(list().validateMenuItem(KRTodoMenus::editAction(command)));
        EXPECT_TRUE(action(command).isEnabled()) << action(command).text().toStdString();
    }

    // An edited title: copy and cut follow the field editor's selection, paste the pasteboard.
    edit(0, KRRange{0, 0});
    openMenu(menus().editMenu());
    EXPECT_FALSE(action(Command::Copy).isEnabled());
    EXPECT_FALSE(action(Command::Cut).isEnabled());
    EXPECT_FALSE(action(Command::Delete).isEnabled());
    EXPECT_EQ(action(Command::Paste).isEnabled(), list().validateMenuItem(KRSelector("paste:")));
    ASSERT_NE(fieldEditor(), nullptr);
    fieldEditor()->setSelectedRange(KRRange{0, 3});
    openMenu(menus().editMenu());
    EXPECT_TRUE(action(Command::Copy).isEnabled());
    EXPECT_TRUE(action(Command::Cut).isEnabled());
}

TEST_F(KRTodoMenusTests, CopyWhileEditingCopiesTheFieldEditorsText) {
    edit(1, KRRange{1, 3});
    ASSERT_TRUE(menus().perform(Command::Copy));
    EXPECT_EQ(KRPasteboard::generalPasteboard()->stringForType(KRPasteboardTypeString).value_or(QString()),
              QStringLiteral("rav"));
    EXPECT_EQ(storeTitles()[1], QStringLiteral("bravo"));

    ASSERT_TRUE(menus().perform(Command::Cut));
    EXPECT_EQ(storeTitles()[1], QStringLiteral("bo"));
}

TEST_F(KRTodoMenusTests, ItemActionsChangeTheStore) {
    edit(2, KRRange{KRUIntegerMax, 0});
    ASSERT_TRUE(menus().perform(Command::MoveDown));
    window->settle();
    EXPECT_EQ(storeTitles(),
              (QStringList{QStringLiteral("alpha"), QStringLiteral("bravo"), QStringLiteral("delta"),
                           QStringLiteral("charlie"), QStringLiteral("echo")}));
    EXPECT_EQ(list().indexForEditedItem(), 3u);

    ASSERT_TRUE(menus().perform(Command::MoveToTop));
    window->settle();
    EXPECT_EQ(storeTitles()[0], QStringLiteral("charlie"));

    ASSERT_TRUE(menus().perform(Command::ToggleCompleted));
    window->settle();
    EXPECT_EQ(store->items()[0].status, KRTodoItem::Completed);
    ASSERT_TRUE(menus().perform(Command::ToggleCanceled));
    window->settle();
    EXPECT_EQ(store->items()[0].status, KRTodoItem::Canceled);

    ASSERT_TRUE(menus().perform(Command::InsertBelow));
    window->settle();
    EXPECT_EQ(store->count(), 6u);
    EXPECT_EQ(storeTitles()[1], QString());
    EXPECT_EQ(list().indexForEditedItem(), 1u);

    ASSERT_TRUE(menus().perform(Command::InsertAtBottom));
    window->settle();
    EXPECT_EQ(store->count(), 7u);
    EXPECT_EQ(list().indexForEditedItem(), 6u);

    ASSERT_TRUE(menus().perform(Command::MoveUp));
    window->settle();
    EXPECT_EQ(storeTitles()[6], QStringLiteral("echo"));
    EXPECT_EQ(storeTitles()[5], QString());
}

TEST_F(KRTodoMenusTests, ItemShortcutsReachTheList) {
    edit(3, KRRange{KRUIntegerMax, 0});
    press(Qt::Key_D, Qt::ControlModifier);
    EXPECT_EQ(store->items()[3].status, KRTodoItem::Completed);
    EXPECT_EQ(storeTitles()[3], QStringLiteral("delta"));

    press(Qt::Key_N, Qt::ControlModifier | Qt::ShiftModifier);
    EXPECT_EQ(store->count(), 6u);
    EXPECT_EQ(list().indexForEditedItem(), 2u);
}

// The menus' keys must leave the list's own keys alone.
TEST_F(KRTodoMenusTests, ListKeysStillReachTheListBesideTheMenus) {
    // Delete at the end of a title merges the next one into it (deleteForward:, not the menu's delete:).
    edit(0, KRRange{KRUIntegerMax, 0});
    press(Qt::Key_Delete);
    EXPECT_EQ(storeTitles(), (QStringList{QStringLiteral("alphabravo"), QStringLiteral("charlie"),
                                          QStringLiteral("delta"), QStringLiteral("echo")}));

    // Ctrl+Down moves the edited item down.
    press(Qt::Key_Down, Qt::ControlModifier);
    EXPECT_EQ(storeTitles(), (QStringList{QStringLiteral("charlie"), QStringLiteral("alphabravo"),
                                          QStringLiteral("delta"), QStringLiteral("echo")}));
    EXPECT_EQ(list().indexForEditedItem(), 1u);

    // Ctrl+A selects the title, then every item.
    press(Qt::Key_A, Qt::ControlModifier);
    ASSERT_NE(fieldEditor(), nullptr);
    EXPECT_EQ(fieldEditor()->selectedRange().length, 10u);
    press(Qt::Key_A, Qt::ControlModifier);
    EXPECT_EQ(list().indexesForSelectedItems(), KRIndexSet(KRRange{0, 4}));
}

// While a title is edited, Paste and Select All reach the list's command decision, whether they come from
// the menu or from their keys.
TEST_F(KRTodoMenusTests, PasteAndSelectAllWhileEditingReachTheListAsCommands) {
    list().setDelegate(store);
    auto pasteboard = KRPasteboard::generalPasteboard();
    pasteboard->declareTypes({KRPasteboardTypeString}, nullptr);
    pasteboard->setString(QStringLiteral("foxtrot\ngolf\n"), KRPasteboardTypeString);
    edit(1, KRRange{KRUIntegerMax, 0});
    store->commands.clear();

    press(Qt::Key_V, Qt::ControlModifier);
    ASSERT_TRUE(menus().perform(Command::Paste));
    // Each paste inserts the two lines as items and edits the last of them on the next turn.
    window->settle();
    ASSERT_TRUE(menus().perform(Command::SelectAll));
    EXPECT_EQ(store->commands, (QStringList{QStringLiteral("paste:"), QStringLiteral("paste:"),
                                            QStringLiteral("selectAll:")}));
    EXPECT_EQ(storeTitles().mid(1, 5), (QStringList{"bravo", "foxtrot", "golf", "foxtrot", "golf"}));
    // The first Select All selects the edited title.
    ASSERT_NE(fieldEditor(), nullptr);
    EXPECT_EQ(list().indexForEditedItem(), 5u);
    EXPECT_EQ(fieldEditor()->selectedRange().length, 4u);
}

TEST_F(KRTodoMenusTests, KeyOfADisabledEditItemDoesNothing) {
    // An empty pasteboard: Paste is disabled, and Ctrl+V neither pastes nor types.
    edit(1, KRRange{KRUIntegerMax, 0});
    openMenu(menus().editMenu());
    ASSERT_FALSE(action(Command::Paste).isEnabled());
    press(Qt::Key_V, Qt::ControlModifier);
    EXPECT_EQ(storeTitles()[1], QStringLiteral("bravo"));
    EXPECT_EQ(store->count(), 5u);
}

TEST_F(KRTodoMenusTests, TypedTitlesReachTheStoreThroughValidation) {
    edit(4, KRRange{KRUIntegerMax, 0});
    store->validatedTitles.clear();
    type(QStringLiteral("s!"));

    EXPECT_EQ(storeTitles()[4], QStringLiteral("echos!"));
    ASSERT_EQ(store->validatedTitles.size(), 2u);
    EXPECT_EQ(store->validatedTitles[0], std::make_pair(KRUInteger{4}, QStringLiteral("echos")));
    EXPECT_EQ(store->validatedTitles[1], std::make_pair(KRUInteger{4}, QStringLiteral("echos!")));
}

TEST_F(KRTodoMenusTests, QuitKeyClosesTheWindow) {
    ASSERT_TRUE(window->isVisible());
    press(Qt::Key_Q, Qt::ControlModifier);
    EXPECT_FALSE(window->isVisible());
}

// Select every item, remove them all, press an arrow: nothing may stay selected past the empty list.
TEST_F(KRTodoMenusTests, BackspaceOnEveryItemThenRightLeavesAnEmptyListWithNothingSelected) {
    selectEveryItem();
    press(Qt::Key_Backspace);
    expectNothingLeftSelectedOrEdited();
    EXPECT_NO_THROW(press(Qt::Key_Right));
    expectNothingLeftSelectedOrEdited();
}

TEST_F(KRTodoMenusTests, CutOfEveryItemThenRightLeavesAnEmptyListWithNothingSelected) {
    selectEveryItem();
    press(Qt::Key_X, Qt::ControlModifier);
    expectNothingLeftSelectedOrEdited();
    EXPECT_NO_THROW(press(Qt::Key_Right));
    expectNothingLeftSelectedOrEdited();
}

TEST_F(KRTodoMenusTests, DeleteKeyOnEveryItemThenLeftLeavesAnEmptyListWithNothingSelected) {
    selectEveryItem();
    press(Qt::Key_Delete);
    expectNothingLeftSelectedOrEdited();
    EXPECT_NO_THROW(press(Qt::Key_Left));
    expectNothingLeftSelectedOrEdited();
}

TEST_F(KRTodoMenusTests, DeleteMenuItemOnEveryItemThenDownLeavesAnEmptyListWithNothingSelected) {
    selectEveryItem();
    openMenu(menus().editMenu());
    ASSERT_TRUE(action(Command::Delete).isEnabled());
    action(Command::Delete).trigger();
    window->settle();
    expectNothingLeftSelectedOrEdited();
    EXPECT_NO_THROW(press(Qt::Key_Down));
    expectNothingLeftSelectedOrEdited();
    openMenu(menus().editMenu());
    EXPECT_FALSE(action(Command::Delete).isEnabled());
    EXPECT_FALSE(action(Command::Cut).isEnabled());
}

// The store sets the selection again after removing items, so what stays selected names the same items.
TEST_F(KRTodoMenusTests, DeletingSomeSelectedItemsEditsTheItemAboveAndLeavesNothingSelected) {
    clickTitle(3);
    press(Qt::Key_Home);
    press(Qt::Key_Up, Qt::ShiftModifier);
    ASSERT_EQ(list().indexesForSelectedItems(), KRIndexSet(KRRange{2, 2}));
    press(Qt::Key_Backspace);
    EXPECT_EQ(storeTitles(), (QStringList{"alpha", "bravo", "echo"}));
    EXPECT_TRUE(list().indexesForSelectedItems().isEmpty());
    EXPECT_EQ(list().indexForEditedItem(), 1u);
}

// Escape and the Insert commands
// ------------------------------------------------------------------------------------------------------

TEST_F(KRTodoMenusTests, EscapeSelectsTheItemThatWasEditedSoTheArrowsGoOn) {
    edit(2, KRRange{1, 0});
    press(Qt::Key_Escape);
    EXPECT_EQ(list().indexForEditedItem(), KRNotFound);
    EXPECT_EQ(list().indexesForSelectedItems(), KRIndexSet(2));
    press(Qt::Key_Down);
    EXPECT_EQ(list().indexForEditedItem(), 3u);
    type(QStringLiteral("x"));
    EXPECT_EQ(storeTitles()[3], QStringLiteral("deltax"));
}

TEST_F(KRTodoMenusTests, EscapeWithItemsSelectedLeavesNothingSelected) {
    edit(2, KRRange{KRUIntegerMax, 0});
    press(Qt::Key_Down, Qt::ShiftModifier);
    ASSERT_FALSE(list().indexesForSelectedItems().isEmpty());
    press(Qt::Key_Escape);
    EXPECT_TRUE(list().indexesForSelectedItems().isEmpty());
    EXPECT_EQ(list().indexForEditedItem(), KRNotFound);
}

TEST_F(KRTodoMenusTests, InsertBelowThenEscapeLeavesNoEmptyItemBehind) {
    edit(1, KRRange{0, 0});
    press(Qt::Key_N, Qt::ControlModifier);
    ASSERT_EQ(store->count(), 6u);
    ASSERT_EQ(list().indexForEditedItem(), 2u);
    press(Qt::Key_Escape);
    EXPECT_EQ(storeTitles(), (QStringList{"alpha", "bravo", "charlie", "delta", "echo"}));
    EXPECT_EQ(list().numberOfItems(), 5u);
    EXPECT_FALSE(store->hasItemInsertedByCommand());
    // The item it was inserted below is selected, so the keys go on from there.
    EXPECT_EQ(list().indexesForSelectedItems(), KRIndexSet(1));
    press(Qt::Key_Down);
    EXPECT_EQ(list().indexForEditedItem(), 2u);
}

TEST_F(KRTodoMenusTests, InsertAtTopThenEscapeSelectsTheItemBelowIt) {
    edit(3, KRRange{0, 0});
    press(Qt::Key_N, Qt::ControlModifier | Qt::AltModifier | Qt::ShiftModifier);
    ASSERT_EQ(list().indexForEditedItem(), 0u);
    press(Qt::Key_Escape);
    EXPECT_EQ(storeTitles(), (QStringList{"alpha", "bravo", "charlie", "delta", "echo"}));
    EXPECT_EQ(list().indexesForSelectedItems(), KRIndexSet(0));
}

TEST_F(KRTodoMenusTests, InsertedItemLeftEmptyByAClickElsewhereIsRemoved) {
    edit(1, KRRange{0, 0});
    press(Qt::Key_N, Qt::ControlModifier);
    ASSERT_EQ(store->count(), 6u);
    clickTitle(4);
    EXPECT_EQ(storeTitles(), (QStringList{"alpha", "bravo", "charlie", "delta", "echo"}));
    EXPECT_EQ(list().indexForEditedItem(), 3u);
}

TEST_F(KRTodoMenusTests, InsertedItemWithATitleStaysAndEscapeSelectsIt) {
    edit(4, KRRange{0, 0});
    press(Qt::Key_N, Qt::ControlModifier);
    type(QStringLiteral("foxtrot"));
    press(Qt::Key_Escape);
    EXPECT_EQ(storeTitles(), (QStringList{"alpha", "bravo", "charlie", "delta", "echo", "foxtrot"}));
    EXPECT_EQ(list().indexesForSelectedItems(), KRIndexSet(5));
}

TEST_F(KRTodoMenusTests, InsertedItemStaysWhileAnUpdateEndsAndResumesItsEdit) {
    edit(4, KRRange{0, 0});
    press(Qt::Key_N, Qt::ControlModifier);
    ASSERT_EQ(list().indexForEditedItem(), 5u);
    // An insertion above the edited item ends its edit and begins it again at its new index.
    store->insertItems({store->makeItem(QStringLiteral("zulu"))}, KRIndexSet(0), &list());
    window->settle();
    EXPECT_EQ(store->count(), 7u);
    EXPECT_EQ(list().indexForEditedItem(), 6u);
    EXPECT_TRUE(store->hasItemInsertedByCommand());
}

// Paste
// ------------------------------------------------------------------------------------------------------

TEST_F(KRTodoMenusTests, PasteOfLinesIsOneGroupingForTheStore) {
    KRPasteboard& pasteboard = *KRPasteboard::generalPasteboard();
    pasteboard.declareTypes({KRPasteboardTypeString}, nullptr);
    pasteboard.setString(QStringLiteral("- one\n+ two\n"), KRPasteboardTypeString);
    edit(4, KRRange{KRUIntegerMax, 0});
    press(Qt::Key_V, Qt::ControlModifier);
    EXPECT_EQ(storeTitles(), (QStringList{"alpha", "bravo", "charlie", "delta", "echo", "one", "two"}));
    EXPECT_EQ(store->items()[6].status, KRTodoItem::Completed);
    EXPECT_EQ(store->completedGroupings(), 1u);
    EXPECT_FALSE(store->isGrouping());
}

// Items under the list's own type that do not read, and no text: the paste changes nothing and the app goes
// on.
TEST_F(KRTodoMenusTests, PasteOfUnreadableItemsWithoutTextChangesNothing) {
    KRPasteboard& pasteboard = *KRPasteboard::generalPasteboard();
    pasteboard.declareTypes({KRCheckListItemsAsJSONPasteboardType}, nullptr);
    pasteboard.setData(QByteArrayLiteral("{not json"), KRCheckListItemsAsJSONPasteboardType);
    edit(1, KRRange{0, 0});
    EXPECT_NO_THROW(press(Qt::Key_V, Qt::ControlModifier));
    EXPECT_EQ(storeTitles(), (QStringList{"alpha", "bravo", "charlie", "delta", "echo"}));
    EXPECT_EQ(list().indexForEditedItem(), 1u);
    EXPECT_EQ(store->completedGroupings(), 0u);
}
