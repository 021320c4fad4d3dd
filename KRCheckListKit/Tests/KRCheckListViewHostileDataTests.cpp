// Data sources that answer what nobody expects: statuses outside 0–2, titles of a megabyte, titles with
// line feeds, NUL and other control characters or unpaired UTF-16 surrogates, and identifiers that two
// items share. The list shows them, edits them, copies and pastes them and moves them, without undefined
// behaviour. A title is shown as it is given; once edited, its line breaks are "\n" and a surrogate without
// its other half is U+FFFD, as the field editor keeps text.
#include "KRCheckListView.h"

#include "KRCheckListViewHostTestSupport.h"

#include "KRCheckListResources.h"

#include "Platform/KRPasteboard.h"
#include "Text/KRKeyBindings.h"

#include <gtest/gtest.h>

#include <ostream>
#include <string>

using namespace KRCheckListViewTesting;

namespace {

class KRCheckListViewHostileDataTests : public KRCheckListViewHostTestCase {
protected:
    void SetUp() override {
        KRCheckListViewHostTestCase::SetUp();
        KRKeyBindings::setPlatformOverride(KRKeyBindings::Platform::Other);
        KRPasteboard::setGeneralPasteboard(KRPasteboard::makeInMemory());
    }
    void TearDown() override {
        KRPasteboard::setGeneralPasteboard(nullptr);
        KRKeyBindings::setPlatformOverride(std::nullopt);
        KRCheckListViewHostTestCase::TearDown();
    }

    // Edits every row, types at its end, copies everything and pastes it after the last item.
    void workThroughEveryRow() {
        for (KRUInteger index = 0; index < list->numberOfItems(); ++index) {
            click(pointInTitleOfRow(index, 2.0));
            pressKey(Qt::Key_End);
            typeText(QStringLiteral("x"));
        }
        list->endEditing();
        list->selectAllItems();
        settle();
        list->copy();
        list->deselectAllItems();
        list->paste();
        settle();
    }
};

// A status the list has no look for is kept as the data source gave it and drawn like an open one; a click
// on its check box proposes open, and a copy writes it as it is.
TEST_F(KRCheckListViewHostileDataTests, AStatusOutsideZeroToTwoIsDrawnAsOpen) {
    dataSource->items = {Item{QStringLiteral("a"), 7, QStringLiteral("seven")},
                         Item{QStringLiteral("b"), KRNotFound, QStringLiteral("not found")},
                         Item{QStringLiteral("c"), 2, QStringLiteral("canceled")}};
    showItems();
    EXPECT_EQ(rowAt(0)->status(), 7u);
    EXPECT_EQ(rowAt(1)->status(), KRNotFound);
    EXPECT_EQ(rowAt(0)->checkBoxButtonView()->image(), KRCheckListResources::checkboxNormalImage());
    EXPECT_EQ(rowAt(1)->checkBoxButtonView()->image(), KRCheckListResources::checkboxNormalImage());
    EXPECT_EQ(rowAt(2)->checkBoxButtonView()->image(), KRCheckListResources::checkboxCanceledImage());
    workThroughEveryRow();
    EXPECT_EQ(list->numberOfItems(), 6u);
    EXPECT_EQ(rowTitles(), storedTitles());
}

TEST_F(KRCheckListViewHostileDataTests, TitlesWithControlCharactersAndLoneSurrogatesAreShownEditedAndCopied) {
    const QString lineFeeds = QStringLiteral("one\ntwo\r\nthree");
    const QString controls = QString(QChar(0)) + QStringLiteral("nul\x01\x07\x1b[31mbell");
    const QString loneHigh = QStringLiteral("high ") + QChar(0xD83D) + QStringLiteral(" end");
    const QString loneLow = QChar(0xDE00) + QStringLiteral(" low first");
    const QString reversed = QStringLiteral("pair ") + QChar(0xDE00) + QChar(0xD83D);
    dataSource->items = {Item{QStringLiteral("a"), 0, lineFeeds}, Item{QStringLiteral("b"), 1, controls},
                         Item{QStringLiteral("c"), 0, loneHigh}, Item{QStringLiteral("d"), 2, loneLow},
                         Item{QStringLiteral("e"), 0, reversed}};
    showItems();
    EXPECT_EQ(rowTitles(), (QStringList{lineFeeds, controls, loneHigh, loneLow, reversed}));
    workThroughEveryRow();
    EXPECT_EQ(list->numberOfItems(), 10u);
    EXPECT_EQ(rowTitles(), storedTitles());
    // Typing at the end of the first line of each: an edited title's line breaks are "\n", and a lone
    // surrogate is U+FFFD; control characters stay.
    const QStringList typed = {QStringLiteral("onex\ntwo\nthree"), controls + QStringLiteral("x"),
                               QStringLiteral("high ") + QChar(QChar::ReplacementCharacter) +
                                   QStringLiteral(" endx"),
                               QChar(QChar::ReplacementCharacter) + QStringLiteral(" low firstx"),
                               QStringLiteral("pair ") + QChar(QChar::ReplacementCharacter) +
                                   QChar(QChar::ReplacementCharacter) + QStringLiteral("x")};
    EXPECT_EQ(rowTitles().mid(0, 5), typed);
    EXPECT_EQ(rowTitles().mid(5, 5), typed) << "the pasted copies are the titles as typed, whole";
}

TEST_F(KRCheckListViewHostileDataTests, AMegabyteTitleIsShownAndEdited) {
    QString huge;
    huge.reserve(1 << 20);
    while (huge.size() < (1 << 20)) {
        huge += QStringLiteral("lorem ipsum dolor sit amet ");
    }
    dataSource->items = {Item{QStringLiteral("a"), 0, QStringLiteral("small")},
                         Item{QStringLiteral("b"), 0, huge}};
    showItems();
    EXPECT_EQ(rowAt(1)->title().size(), huge.size());
    click(pointInTitleOfRow(1, 2.0));
    pressKey(Qt::Key_Home);
    typeText(QStringLiteral("x"));
    EXPECT_EQ(editedText().size(), huge.size() + 1);
    list->endEditing();
    settle();
    EXPECT_GT(list->rectOfItemsInRange(KRRange{1, 1}).size.height, 1000.0) << "the whole title is laid out";
}

// Two items with one identifier are still two rows; moves and removals keep the rows and the data source
// in step.
TEST_F(KRCheckListViewHostileDataTests, ItemsSharingAnIdentifierAreStillTwoRows) {
    dataSource->items = {Item{QStringLiteral("same"), 0, QStringLiteral("first")},
                         Item{QStringLiteral("other"), 0, QStringLiteral("middle")},
                         Item{QStringLiteral("same"), 1, QStringLiteral("second")}};
    showItems();
    EXPECT_EQ(rowTitles(),
              (QStringList{QStringLiteral("first"), QStringLiteral("middle"), QStringLiteral("second")}));
    list->selectItemsAtIndexesByExtendingSelection(KRIndexSet(2), false);
    list->moveEditedOrSelectedItemsTop();
    KRClock::advance(1.0);
    settle();
    EXPECT_EQ(rowTitles(), storedTitles());
    list->selectItemsAtIndexesByExtendingSelection(KRIndexSet(0), false);
    list->deleteEditedOrSelectedItemsBackward();
    settle();
    EXPECT_EQ(rowTitles(), storedTitles());
    EXPECT_EQ(list->numberOfItems(), 2u);
    workThroughEveryRow();
    EXPECT_EQ(rowTitles(), storedTitles());
}

} // namespace
