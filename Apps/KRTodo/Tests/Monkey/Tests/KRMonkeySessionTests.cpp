#include "KRMonkeyClickEventKind.h"
#include "KRMonkeyKeyEventKind.h"
#include "KRMonkeySession.h"
#include "KRMonkeyTypingEventKind.h"

#include "KRTodoStore.h"

#include "KRCheckListView.h"

#include <gtest/gtest.h>

namespace {

KRMonkeyEvent clickTitle(std::uint64_t row, Qt::KeyboardModifiers modifiers = Qt::NoModifier) {
    KRMonkeyClickEventKind::Click click;
    click.target = KRMonkeyClickEventKind::Target::Title;
    click.row = row;
    click.modifiers = modifiers;
    return KRMonkeyClickEventKind::makeClickEvent(click);
}

KRMonkeyEvent shortcut(Qt::Key key, Qt::KeyboardModifiers modifiers) {
    return KRMonkeyEvent{QStringLiteral("shortcut"), QStringLiteral("shortcut"),
                         [=](KRMonkeySession& session) {
                             session.sendShortcut(key, modifiers);
                             return QString();
                         }};
}

} // namespace

TEST(KRMonkeySessionTests, StartsOnTheSampleStoreWithNothingEdited) {
    KRMonkeySession session;
    EXPECT_EQ(session.list().numberOfItems(), KRTodoStore::makeSampleStore()->count());
    EXPECT_EQ(session.list().indexForEditedItem(), KRNotFound);
    EXPECT_FALSE(session.checkInvariants().has_value());
}

TEST(KRMonkeySessionTests, ClickOnATitleEditsThatRow) {
    KRMonkeySession session;
    EXPECT_FALSE(session.deliver(clickTitle(4)).has_value());
    EXPECT_EQ(session.list().indexForEditedItem(), 4u);
    EXPECT_FALSE(session.deliver(clickTitle(6, Qt::ControlModifier)).has_value());
    EXPECT_EQ(session.list().indexesForSelectedItems(), KRIndexSet({4, 6}));
}

TEST(KRMonkeySessionTests, TypedTextReachesTheStore) {
    KRMonkeySession session;
    ASSERT_FALSE(session.deliver(clickTitle(0)).has_value());
    const QString before = session.store().items()[0].title;
    ASSERT_FALSE(
        session.deliver(KRMonkeyKeyEventKind::makeKeyEvent(Qt::Key_Home, Qt::NoModifier)).has_value());
    EXPECT_FALSE(session.deliver(KRMonkeyTypingEventKind::makeTypingEvent(QStringLiteral("Éa"))).has_value());
    EXPECT_FALSE(
        session.deliver(KRMonkeyTypingEventKind::makeInputMethodEvent(QStringLiteral("日本\U0001F600")))
            .has_value());
    EXPECT_EQ(session.store().items()[0].title, QStringLiteral("Éa日本\U0001F600") + before);
}

TEST(KRMonkeySessionTests, MenuShortcutsGoThroughQtsShortcuts) {
    KRMonkeySession session;
    ASSERT_FALSE(session.deliver(clickTitle(3)).has_value());
    ASSERT_EQ(session.store().items()[3].status, 0u);
    EXPECT_FALSE(session.deliver(shortcut(Qt::Key_D, Qt::ControlModifier)).has_value());
    EXPECT_EQ(session.store().items()[3].status, 1u);
    const KRUInteger count = session.store().count();
    EXPECT_FALSE(session.deliver(shortcut(Qt::Key_N, Qt::ControlModifier)).has_value());
    EXPECT_EQ(session.store().count(), count + 1);
    EXPECT_EQ(session.list().indexForEditedItem(), 4u);
}

TEST(KRMonkeySessionTests, StoreChangedBehindTheListsBackBreaksAnInvariant) {
    KRMonkeySession session;
    session.store().setTitle(QStringLiteral("changed"), 2, nullptr);
    const std::optional<KRMonkeyFailure> failure = session.checkInvariants();
    ASSERT_TRUE(failure.has_value());
    EXPECT_EQ(failure->signature, QStringLiteral("a row shows another title than the store has"));
}

TEST(KRMonkeySessionTests, ThrowingEventIsAFailureWithItsText) {
    KRMonkeySession session;
    const KRMonkeyEvent throwing{
        QStringLiteral("test"), QStringLiteral("throws"),
        [](KRMonkeySession&) -> QString { throw std::out_of_range("index 7 beyond bounds"); }};
    const std::optional<KRMonkeyFailure> failure = session.deliver(throwing);
    ASSERT_TRUE(failure.has_value());
    EXPECT_EQ(failure->message, QStringLiteral("std::out_of_range thrown: index 7 beyond bounds"));
    EXPECT_EQ(failure->signature, QStringLiteral("std::out_of_range thrown: index # beyond bounds"));
}
