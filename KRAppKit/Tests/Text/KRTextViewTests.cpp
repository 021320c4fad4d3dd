#include "Text/KRTextView.h"

#include "Foundation/KRClock.h"
#include "Foundation/KRRunLoop.h"
#include "Platform/KRPasteboard.h"
#include "Views/KREvent.h"
#include "Views/KRResponder.h"
#include "Views/KRView.h"
#include "Views/KRWindow.h"

#include <QImage>
#include <QPainter>
#include <QTextBlock>
#include <QTextCursor>
#include <QTextDocument>
#include <QUndoStack>

#include <gtest/gtest.h>

#include <memory>
#include <vector>

namespace {

constexpr double kLineHeight = 20.0;

class RecordingDelegate : public KRObject, public KRTextViewDelegate {
public:
    bool textViewDoCommandBySelector(KRTextView*, const KRSelector& selector) override {
        commands.push_back(selector.name());
        return vetoed.contains(selector.name());
    }
    void textDidChange(KRTextView*) override { ++changes; }
    void textDidBeginEditing(KRTextView*) override { ++begins; }
    void textDidEndEditing(KRTextView*, const KRSelector& movement) override {
        endings.push_back(movement.name());
    }
    QUndoStack* undoManagerForTextView(KRTextView*) override { return withUndo ? &stack : nullptr; }

    QStringList vetoed;
    QStringList commands;
    QStringList endings;
    int changes = 0;
    int begins = 0;
    bool withUndo = true;
    QUndoStack stack;
};

// Catches commands the text view passes up the chain.
class ChainEnd : public KRView {
public:
    bool tryToPerform(const KRSelector& action, KRObject*) override {
        received.push_back(action.name());
        return true;
    }
    QStringList received;
};

class KRTextViewTest : public ::testing::Test {
protected:
    void SetUp() override {
        m_savedInterpreter = KRResponder::keyEventInterpreter();
        KRResponder::setKeyEventInterpreter(nullptr);
        content = std::make_shared<ChainEnd>();
        content->setFrame(KRRectMake(0, 0, 400, 300));
        window.setContentView(content);
        textView = std::make_shared<KRTextView>(KRRectMake(10, 30, 200, 100));
        content->addSubview(textView);
        // A monospaced font and fixed line height keep every measurement exact.
        QFont font(QStringLiteral("DejaVu Sans Mono"));
        font.setPixelSize(10);
        textView->setDefaultFont(font);
        textView->setFixedLineHeight(kLineHeight);
        textView->setDelegate(&delegate);
        advance = QFontMetricsF(font).horizontalAdvance(QLatin1Char('a'));
    }
    void TearDown() override {
        textView->setDelegate(nullptr);
        KRRunLoop::main().cancelAll();
        KRResponder::setKeyEventInterpreter(m_savedInterpreter);
    }

    void command(const char* name) { textView->doCommandBySelector(KRSelector(name)); }
    KRUInteger caret() const { return textView->selectedRange().location; }
    // "abcdefgh ab abcdefgh" at 60 px: [0,9) "abcdefgh ", [9,12) "ab ", [12,20) "abcdefgh".
    void useWrappedText() {
        textView->setFrameSize(KRSizeMake(60, 100));
        textView->setString(QStringLiteral("abcdefgh ab abcdefgh"));
    }

    KRWindow window;
    std::shared_ptr<ChainEnd> content;
    std::shared_ptr<KRTextView> textView;
    RecordingDelegate delegate;
    double advance = 0.0;

private:
    KRResponder::KeyEventInterpreter m_savedInterpreter;
};

TEST_F(KRTextViewTest, TypingInsertsAndReplacesTheSelection) {
    textView->insertText(QStringLiteral("hello"));
    EXPECT_EQ(textView->string(), QStringLiteral("hello"));
    EXPECT_EQ(textView->selectedRange(), KRMakeRange(5, 0));
    textView->setSelectedRange(KRMakeRange(1, 3));
    textView->insertText(QStringLiteral("EY"));
    EXPECT_EQ(textView->string(), QStringLiteral("hEYo"));
    EXPECT_EQ(textView->selectedRange(), KRMakeRange(3, 0));
    EXPECT_EQ(delegate.changes, 2);
}

// The document holds paragraphs and whole characters.
TEST_F(KRTextViewTest, LineBreaksBecomeNewlinesAndLoneSurrogatesTheReplacementCharacter) {
    const QChar replacement(QChar::ReplacementCharacter);
    textView->setString(QStringLiteral("a\r\nb\rc") + QChar(0xD83D) + QStringLiteral("d") + QChar(0xDE00));
    EXPECT_EQ(textView->string(),
              QStringLiteral("a\nb\nc") + replacement + QStringLiteral("d") + replacement);
    const QString pair = QString::fromUtf8("\xF0\x9F\x98\x80");
    textView->insertText(QChar(0xDE00) + pair + QChar(0xD83D));
    EXPECT_EQ(textView->string().right(4), replacement + pair + replacement);
}

TEST_F(KRTextViewTest, KeyDownInsertsPrintableCharactersWithoutAnInterpreter) {
    textView->keyDown(KREvent::keyEvent(KREventType::KeyDown, 0, QStringLiteral("x"), QStringLiteral("x"),
                                        KRKeyCode::X, &window));
    textView->keyDown(KREvent::keyEvent(KREventType::KeyDown, KREventModifierFlagCommand, QStringLiteral("y"),
                                        QStringLiteral("y"), KRKeyCode::Y, &window));
    EXPECT_EQ(textView->string(), QStringLiteral("x"));
    EXPECT_EQ(delegate.commands, QStringList{QStringLiteral("noop:")});
}

TEST_F(KRTextViewTest, KeyDownInsertsCharactersOutsideTheBasicPlaneWhole) {
    const QString partyPopper = QString::fromUtf8("\xF0\x9F\x8E\x89");
    for (const QString& characters : {QStringLiteral("a"), partyPopper, QStringLiteral("b")}) {
        textView->keyDown(
            KREvent::keyEvent(KREventType::KeyDown, 0, characters, characters, KRKeyCode::A, &window));
    }
    EXPECT_EQ(textView->string(), QStringLiteral("a") + partyPopper + QStringLiteral("b"));
    EXPECT_EQ(textView->selectedRange(), KRMakeRange(4, 0));
}

TEST_F(KRTextViewTest, LeftAndRightMoveAndCollapseTheSelection) {
    textView->setString(QStringLiteral("abcdef"));
    textView->setSelectedRange(KRMakeRange(2, 0));
    command("moveLeft:");
    EXPECT_EQ(caret(), 1u);
    command("moveRight:");
    command("moveRight:");
    EXPECT_EQ(caret(), 3u);
    textView->setSelectedRange(KRMakeRange(1, 3));
    command("moveLeft:");
    EXPECT_EQ(textView->selectedRange(), KRMakeRange(1, 0));
    textView->setSelectedRange(KRMakeRange(1, 3));
    command("moveRight:");
    EXPECT_EQ(textView->selectedRange(), KRMakeRange(4, 0));
    command("moveForward:");
    EXPECT_EQ(caret(), 5u);
    command("moveBackward:");
    EXPECT_EQ(caret(), 4u);
    textView->setSelectedRange(KRMakeRange(0, 0));
    command("moveLeft:");
    EXPECT_EQ(caret(), 0u);
}

TEST_F(KRTextViewTest, ModifySelectionFormsKeepTheAnchor) {
    textView->setString(QStringLiteral("abcdef"));
    textView->setSelectedRange(KRMakeRange(2, 0));
    command("moveRightAndModifySelection:");
    command("moveRightAndModifySelection:");
    EXPECT_EQ(textView->selectedRange(), KRMakeRange(2, 2));
    command("moveLeftAndModifySelection:");
    command("moveLeftAndModifySelection:");
    command("moveLeftAndModifySelection:");
    EXPECT_EQ(textView->selectedRange(), KRMakeRange(1, 1));
    command("moveToEndOfDocumentAndModifySelection:");
    EXPECT_EQ(textView->selectedRange(), KRMakeRange(2, 4));
    command("moveToBeginningOfDocumentAndModifySelection:");
    EXPECT_EQ(textView->selectedRange(), KRMakeRange(0, 2));
    command("moveForwardAndModifySelection:");
    command("moveBackwardAndModifySelection:");
    EXPECT_EQ(textView->selectedRange(), KRMakeRange(0, 2));
    command("moveWordRightAndModifySelection:");
    EXPECT_EQ(textView->selectedRange(), KRMakeRange(2, 4));
}

TEST_F(KRTextViewTest, DocumentAndParagraphMoves) {
    textView->setString(QStringLiteral("first line\nsecond"));
    textView->setSelectedRange(KRMakeRange(3, 0));
    command("moveToEndOfParagraph:");
    EXPECT_EQ(caret(), 10u);
    command("moveToBeginningOfParagraph:");
    EXPECT_EQ(caret(), 0u);
    command("moveToEndOfDocument:");
    EXPECT_EQ(caret(), 17u);
    command("moveToBeginningOfParagraph:");
    EXPECT_EQ(caret(), 11u);
    command("moveToBeginningOfDocument:");
    EXPECT_EQ(caret(), 0u);
    textView->setSelectedRange(KRMakeRange(13, 0));
    command("moveToBeginningOfParagraphAndModifySelection:");
    EXPECT_EQ(textView->selectedRange(), KRMakeRange(11, 2));
    command("moveToEndOfParagraphAndModifySelection:");
    EXPECT_EQ(textView->selectedRange(), KRMakeRange(13, 4));
}

TEST_F(KRTextViewTest, ParagraphBackwardAndForwardExtendParagraphByParagraph) {
    textView->setString(QStringLiteral("one\ntwo\nthree"));
    textView->setSelectedRange(KRMakeRange(5, 0));
    command("moveParagraphBackwardAndModifySelection:");
    EXPECT_EQ(textView->selectedRange(), KRMakeRange(4, 1));
    command("moveParagraphBackwardAndModifySelection:");
    EXPECT_EQ(textView->selectedRange(), KRMakeRange(0, 5));
    textView->setSelectedRange(KRMakeRange(5, 0));
    command("moveParagraphForwardAndModifySelection:");
    EXPECT_EQ(textView->selectedRange(), KRMakeRange(5, 2));
    command("moveParagraphForwardAndModifySelection:");
    EXPECT_EQ(textView->selectedRange(), KRMakeRange(5, 8));
}

TEST_F(KRTextViewTest, WordMovesStepOverPunctuation) {
    textView->setString(QStringLiteral("foo, bar.baz qux"));
    textView->setSelectedRange(KRMakeRange(0, 0));
    std::vector<KRUInteger> stops;
    for (int i = 0; i < 8 && caret() < textView->length(); ++i) {
        command("moveWordRight:");
        stops.push_back(caret());
    }
    EXPECT_EQ(stops, (std::vector<KRUInteger>{3, 5, 8, 9, 13, 16}));
    command("moveWordLeft:");
    EXPECT_EQ(caret(), 13u);
    command("moveWordLeft:");
    EXPECT_EQ(caret(), 9u);
}

TEST_F(KRTextViewTest, WordMovesStepOverCJK) {
    // Two words of two ideographs each, then Latin: Qt splits the ideographs at dictionary-free boundaries.
    textView->setString(QStringLiteral("日本語 テキスト abc"));
    textView->setSelectedRange(KRMakeRange(0, 0));
    std::vector<KRUInteger> stops;
    for (int i = 0; i < 12 && caret() < textView->length(); ++i) {
        command("moveWordRight:");
        stops.push_back(caret());
    }
    ASSERT_FALSE(stops.empty());
    EXPECT_EQ(stops.back(), textView->length());
    // The space after the ideographs is a boundary, and no step lands inside the Latin word.
    EXPECT_NE(std::find(stops.begin(), stops.end(), 4u), stops.end());
    EXPECT_EQ(std::find(stops.begin(), stops.end(), 10u), stops.end());
    command("moveWordLeft:");
    EXPECT_EQ(caret(), 9u);
}

TEST_F(KRTextViewTest, LineEndsInWrappedTextAreVisualLines) {
    useWrappedText();
    textView->setSelectedRange(KRMakeRange(10, 0));
    command("moveToLeftEndOfLine:");
    EXPECT_EQ(caret(), 9u);
    command("moveToRightEndOfLine:");
    EXPECT_EQ(caret(), 12u);
    // The end of a wrapped line is also the next line's start: the caret stays on this line.
    EXPECT_EQ(textView->selectionAffinity(), KRTextView::SelectionAffinityUpstream);
    EXPECT_DOUBLE_EQ(textView->insertionPointRect().origin.y, kLineHeight);
    command("moveToLeftEndOfLine:");
    EXPECT_EQ(caret(), 9u);
    command("moveToRightEndOfLineAndModifySelection:");
    EXPECT_EQ(textView->selectedRange(), KRMakeRange(9, 3));
    textView->setSelectedRange(KRMakeRange(3, 0));
    command("moveToRightEndOfLine:");
    EXPECT_EQ(caret(), 9u);
    command("moveToEndOfParagraph:");
    EXPECT_EQ(caret(), 20u);
    EXPECT_DOUBLE_EQ(textView->insertionPointRect().origin.y, 2 * kLineHeight);
}

TEST_F(KRTextViewTest, UpAndDownKeepTheCaretColumnAcrossShortLines) {
    useWrappedText();
    textView->setSelectedRange(KRMakeRange(7, 0));
    const double startX = textView->insertionPointRect().origin.x;
    command("moveDown:");
    EXPECT_EQ(caret(), 11u); // the short line's last visible position, before its trailing space
    EXPECT_DOUBLE_EQ(textView->insertionPointRect().origin.y, kLineHeight);
    command("moveDown:");
    EXPECT_EQ(caret(), 19u);
    EXPECT_NEAR(textView->insertionPointRect().origin.x, startX, 0.5);
    command("moveUp:");
    command("moveUp:");
    EXPECT_EQ(caret(), 7u);
    // Another command forgets the column.
    command("moveDown:");
    command("moveLeft:");
    command("moveDown:");
    EXPECT_EQ(caret(), 13u);
}

TEST_F(KRTextViewTest, UpOnTheFirstLineAndDownOnTheLastGoToTheEnds) {
    useWrappedText();
    textView->setSelectedRange(KRMakeRange(4, 0));
    command("moveUp:");
    EXPECT_EQ(caret(), 0u);
    textView->setSelectedRange(KRMakeRange(14, 0));
    command("moveDown:");
    EXPECT_EQ(caret(), 20u);
    textView->setSelectedRange(KRMakeRange(14, 0));
    command("moveUpAndModifySelection:");
    EXPECT_EQ(textView->selectedRange(), KRMakeRange(11, 3));
    textView->setString(QStringLiteral("abc"));
    textView->setSelectedRange(KRMakeRange(1, 0));
    command("moveDownAndModifySelection:");
    EXPECT_EQ(textView->selectedRange(), KRMakeRange(1, 2));
}

TEST_F(KRTextViewTest, DeleteBackwardAtTheStartDoesNothing) {
    textView->setString(QStringLiteral("abc"));
    textView->setSelectedRange(KRMakeRange(0, 0));
    command("deleteBackward:");
    EXPECT_EQ(textView->string(), QStringLiteral("abc"));
    EXPECT_EQ(delegate.changes, 0);
    EXPECT_EQ(delegate.stack.count(), 0);
    textView->setSelectedRange(KRMakeRange(2, 0));
    command("deleteBackward:");
    EXPECT_EQ(textView->string(), QStringLiteral("ac"));
    EXPECT_EQ(caret(), 1u);
    EXPECT_EQ(delegate.changes, 1);
}

TEST_F(KRTextViewTest, DeleteCommandsRemoveTheirUnits) {
    textView->setString(QStringLiteral("one two three"));
    textView->setSelectedRange(KRMakeRange(4, 0));
    command("deleteForward:");
    EXPECT_EQ(textView->string(), QStringLiteral("one wo three"));
    command("deleteWordForward:");
    EXPECT_EQ(textView->string(), QStringLiteral("one three"));
    command("deleteWordBackward:");
    EXPECT_EQ(textView->string(), QStringLiteral("three"));
    textView->setString(QStringLiteral("first\nsecond line"));
    textView->setSelectedRange(KRMakeRange(2, 0));
    command("deleteToEndOfParagraph:");
    EXPECT_EQ(textView->string(), QStringLiteral("fi\nsecond line"));
    command("deleteToEndOfParagraph:"); // at the end it joins the paragraphs
    EXPECT_EQ(textView->string(), QStringLiteral("fisecond line"));
    textView->setSelectedRange(KRMakeRange(5, 0));
    command("deleteToBeginningOfLine:");
    EXPECT_EQ(textView->string(), QStringLiteral("ond line"));
    command("deleteToEndOfLine:");
    EXPECT_EQ(textView->string(), QString());
    textView->setString(QStringLiteral("abcdef"));
    textView->setSelectedRange(KRMakeRange(1, 2));
    command("deleteForward:");
    EXPECT_EQ(textView->string(), QStringLiteral("adef"));
}

TEST_F(KRTextViewTest, SelectionIsClampedAndAffinityStored) {
    textView->setString(QStringLiteral("abc"));
    textView->setSelectedRangeAffinityStillSelecting(KRMakeRange(1, 1), KRTextView::SelectionAffinityUpstream,
                                                     true);
    EXPECT_EQ(textView->selectedRange(), KRMakeRange(1, 1));
    EXPECT_EQ(textView->selectionAffinity(), KRTextView::SelectionAffinityUpstream);
    textView->setSelectedRangeAffinityStillSelecting(KRMakeRange(2, 50),
                                                     KRTextView::SelectionAffinityDownstream, false);
    EXPECT_EQ(textView->selectedRange(), KRMakeRange(2, 1));
    EXPECT_EQ(textView->selectionAffinity(), KRTextView::SelectionAffinityDownstream);
    textView->setSelectedRange(KRMakeRange(KRNotFound, 0));
    EXPECT_EQ(textView->selectedRange(), KRMakeRange(3, 0));
    command("selectAll:");
    EXPECT_EQ(textView->selectedRange(), KRMakeRange(0, 3));
}

TEST_F(KRTextViewTest, InsertTextReplacementRangeReplacesThatRange) {
    textView->setString(QStringLiteral("hello world"));
    textView->setSelectedRange(KRMakeRange(0, 0));
    textView->insertTextReplacementRange(QStringLiteral("there"), KRMakeRange(6, 5));
    EXPECT_EQ(textView->string(), QStringLiteral("hello there"));
    EXPECT_EQ(textView->selectedRange(), KRMakeRange(11, 0));
    textView->setSelectedRange(KRMakeRange(0, 5));
    textView->insertTextReplacementRange(QStringLiteral("hi"), KRMakeRange(KRNotFound, 0));
    EXPECT_EQ(textView->string(), QStringLiteral("hi there"));
}

TEST_F(KRTextViewTest, FieldEditorEndsEditingOnReturnTabAndBacktab) {
    textView->setFieldEditor(true);
    textView->setString(QStringLiteral("abc"));
    command("insertNewline:");
    command("insertTab:");
    command("insertBacktab:");
    command("cancelOperation:");
    EXPECT_EQ(textView->string(), QStringLiteral("abc"));
    EXPECT_EQ(delegate.endings,
              (QStringList{QStringLiteral("insertNewline:"), QStringLiteral("insertTab:"),
                           QStringLiteral("insertBacktab:"), QStringLiteral("cancelOperation:")}));
    EXPECT_TRUE(content->received.isEmpty());
}

TEST_F(KRTextViewTest, PlainTextViewInsertsNewlinesAndTabs) {
    textView->setString(QStringLiteral("ab"));
    textView->setSelectedRange(KRMakeRange(1, 0));
    command("insertNewline:");
    command("insertTab:");
    command("insertBacktab:");
    command("insertLineBreak:");
    EXPECT_EQ(textView->string(), QStringLiteral("a\n\t\nb"));
    EXPECT_EQ(caret(), 4u);
    EXPECT_TRUE(delegate.endings.isEmpty());
    // Escape is not ours outside a field editor: it travels up the chain.
    command("cancelOperation:");
    EXPECT_EQ(content->received, QStringList{QStringLiteral("cancelOperation:")});
    EXPECT_TRUE(textView->respondsToSelector(KRSelector("moveWordLeftAndModifySelection:")));
    EXPECT_FALSE(textView->respondsToSelector(KRSelector("launchRockets:")));
}

TEST_F(KRTextViewTest, DelegateCanTakeACommand) {
    textView->setFieldEditor(true);
    textView->setString(QStringLiteral("abc"));
    delegate.vetoed = {QStringLiteral("insertNewline:"), QStringLiteral("deleteBackward:")};
    command("insertNewline:");
    command("deleteBackward:");
    EXPECT_EQ(textView->string(), QStringLiteral("abc"));
    EXPECT_TRUE(delegate.endings.isEmpty());
    command("moveLeft:");
    EXPECT_EQ(caret(), 2u);
    EXPECT_EQ(delegate.commands.size(), 3);
}

TEST_F(KRTextViewTest, ConsecutiveTypingUndoesInOneStep) {
    textView->insertText(QStringLiteral("a"));
    textView->insertText(QStringLiteral("b"));
    textView->insertText(QStringLiteral("c"));
    EXPECT_EQ(delegate.stack.count(), 1);
    command("undo:");
    EXPECT_EQ(textView->string(), QString());
    command("redo:");
    EXPECT_EQ(textView->string(), QStringLiteral("abc"));
    EXPECT_EQ(caret(), 3u);
}

TEST_F(KRTextViewTest, ACaretMoveBreaksTypingCoalescing) {
    textView->insertText(QStringLiteral("ab"));
    textView->insertText(QStringLiteral("c"));
    command("moveLeft:");
    textView->insertText(QStringLiteral("X"));
    textView->insertText(QStringLiteral("Y"));
    EXPECT_EQ(textView->string(), QStringLiteral("abXYc"));
    EXPECT_EQ(delegate.stack.count(), 2);
    command("undo:");
    EXPECT_EQ(textView->string(), QStringLiteral("abc"));
    EXPECT_EQ(caret(), 2u);
    command("undo:");
    EXPECT_EQ(textView->string(), QString());
    command("redo:");
    command("redo:");
    EXPECT_EQ(textView->string(), QStringLiteral("abXYc"));
}

TEST_F(KRTextViewTest, UndoRestoresReplacedTextAndDeletions) {
    textView->setString(QStringLiteral("hello world"));
    textView->setSelectedRange(KRMakeRange(0, 5));
    textView->insertText(QStringLiteral("J"));
    command("deleteBackward:");
    EXPECT_EQ(textView->string(), QStringLiteral(" world"));
    EXPECT_EQ(delegate.stack.count(), 2);
    command("undo:");
    EXPECT_EQ(textView->string(), QStringLiteral("J world"));
    command("undo:");
    EXPECT_EQ(textView->string(), QStringLiteral("hello world"));
    EXPECT_EQ(textView->selectedRange(), KRMakeRange(0, 5));
}

TEST_F(KRTextViewTest, NoUndoManagerMeansNoUndo) {
    delegate.withUndo = false;
    textView->insertText(QStringLiteral("abc"));
    command("undo:");
    EXPECT_EQ(textView->string(), QStringLiteral("abc"));
    EXPECT_EQ(delegate.stack.count(), 0);
}

TEST_F(KRTextViewTest, CopyCutAndPastePlainText) {
    KRPasteboard::setGeneralPasteboard(KRPasteboard::makeInMemory());
    textView->setString(QStringLiteral("one\ntwo"));
    textView->setSelectedRange(KRMakeRange(2, 3));
    command("copy:");
    EXPECT_EQ(KRPasteboard::generalPasteboard()->stringForType(KRPasteboardTypeString),
              QStringLiteral("e\nt"));
    command("cut:");
    EXPECT_EQ(textView->string(), QStringLiteral("onwo"));
    const std::shared_ptr<KRPasteboard> pasteboard = KRPasteboard::generalPasteboard();
    pasteboard->declareTypes({KRPasteboardTypeString}, nullptr);
    pasteboard->setString(QStringLiteral("XY"), KRPasteboardTypeString);
    textView->setSelectedRange(KRMakeRange(0, 2));
    command("paste:");
    EXPECT_EQ(textView->string(), QStringLiteral("XYwo"));
    EXPECT_EQ(caret(), 2u);
    const QTextCharFormat format = textView->textStorage()->findBlock(0).begin().fragment().charFormat();
    EXPECT_EQ(format.font().pixelSize(), 10);
    KRPasteboard::setGeneralPasteboard(nullptr);
}

TEST_F(KRTextViewTest, PointsAndLineFragmentsAgree) {
    useWrappedText();
    KRRange effective;
    const KRRect second = textView->lineFragmentRectForCharacterAtIndex(10, &effective);
    EXPECT_EQ(effective, KRMakeRange(9, 3));
    EXPECT_DOUBLE_EQ(second.origin.y, kLineHeight);
    EXPECT_DOUBLE_EQ(second.size.height, kLineHeight);
    EXPECT_DOUBLE_EQ(second.size.width, 60.0);
    const KRRect third = textView->lineFragmentRectForCharacterAtIndex(15, &effective);
    EXPECT_EQ(effective, KRMakeRange(12, 8));
    EXPECT_DOUBLE_EQ(third.origin.y, 2 * kLineHeight);
    for (KRUInteger index = 0; index < 20; ++index) {
        KRRange range;
        const KRRect line = textView->lineFragmentRectForCharacterAtIndex(index, &range);
        const KRUInteger hit = textView->characterIndexForInsertionAtPoint(
            KRPointMake(advance * (index - range.location) + 1.0, line.origin.y + line.size.height / 2));
        EXPECT_EQ(hit, index) << index;
    }
    EXPECT_EQ(textView->characterIndexForInsertionAtPoint(KRPointMake(2 * advance + 1, -50)), 2u);
    EXPECT_EQ(textView->characterIndexForInsertionAtPoint(KRPointMake(2 * advance + 1, 500)), 14u);
    EXPECT_EQ(textView->characterIndexForInsertionAtPoint(KRPointMake(500, 500)), 20u);
    // Past the end of a wrapped line stays on that line (before its trailing space), not the next line.
    EXPECT_EQ(textView->characterIndexForInsertionAtPoint(KRPointMake(59, kLineHeight + 5)), 11u);
}

TEST_F(KRTextViewTest, InsertionPointMovesToTheNextLineWhenTextWraps) {
    textView->setFrameSize(KRSizeMake(60, 100));
    textView->insertText(QStringLiteral("abcd"));
    const KRRect first = textView->insertionPointRect();
    EXPECT_DOUBLE_EQ(first.origin.y, 0.0);
    EXPECT_NEAR(first.origin.x, 4 * advance, 0.5);
    EXPECT_DOUBLE_EQ(first.size.height, kLineHeight);
    textView->insertText(QStringLiteral(" efghijk"));
    const KRRect wrapped = textView->insertionPointRect();
    EXPECT_DOUBLE_EQ(wrapped.origin.y, kLineHeight);
    EXPECT_NEAR(wrapped.origin.x, 7 * advance, 0.5);
    EXPECT_DOUBLE_EQ(textView->usedHeight(), 2 * kLineHeight);
}

TEST_F(KRTextViewTest, SizeThatFitsMeasuresAtTheGivenWidth) {
    textView->setString(QStringLiteral("abcdefgh ab abcdefgh"));
    EXPECT_DOUBLE_EQ(textView->usedHeight(), kLineHeight);
    EXPECT_DOUBLE_EQ(textView->sizeThatFits(KRSizeMake(60, 0)).height, 3 * kLineHeight);
    EXPECT_DOUBLE_EQ(textView->sizeThatFits(KRSizeMake(200, 0)).height, kLineHeight);
    textView->setString(QStringLiteral("a\nb"));
    EXPECT_DOUBLE_EQ(textView->usedHeight(), 2 * kLineHeight);
}

TEST_F(KRTextViewTest, FirstRectForCharacterRangeIsInScreenCoordinatesAndStopsAtTheLineEnd) {
    window.setScreenOrigin(KRPointMake(100, 200));
    useWrappedText();
    KRRange actual;
    const KRRect rect = textView->firstRectForCharacterRange(KRMakeRange(10, 5), &actual);
    EXPECT_EQ(actual, KRMakeRange(10, 2));
    EXPECT_NEAR(rect.origin.x, 100 + 10 + advance, 0.5);
    EXPECT_DOUBLE_EQ(rect.origin.y, 200 + 30 + kLineHeight);
    EXPECT_NEAR(rect.size.width, 2 * advance, 0.5);
    const KRRect caretInWindow = textView->firstRectForCaret();
    EXPECT_DOUBLE_EQ(caretInWindow.origin.y, 30 + 2 * kLineHeight);
}

TEST_F(KRTextViewTest, MarkedTextIsUnderlinedThenCommitted) {
    textView->insertText(QStringLiteral("ab"));
    textView->setMarkedText(QStringLiteral("ni"), 2);
    EXPECT_TRUE(textView->hasMarkedText());
    EXPECT_EQ(textView->markedRange(), KRMakeRange(2, 2));
    EXPECT_EQ(textView->string(), QStringLiteral("abni"));
    QTextCursor cursor(textView->textStorage());
    cursor.setPosition(3);
    EXPECT_TRUE(cursor.charFormat().fontUnderline());
    textView->setMarkedText(QStringLiteral("日"), 1);
    EXPECT_EQ(textView->string(), QStringLiteral("ab日"));
    EXPECT_EQ(caret(), 3u);
    textView->insertText(QStringLiteral("日本"));
    EXPECT_FALSE(textView->hasMarkedText());
    EXPECT_EQ(textView->string(), QStringLiteral("ab日本"));
    cursor.setPosition(3);
    EXPECT_FALSE(cursor.charFormat().fontUnderline());
    // The composition joins the typing run: one undo removes it all.
    EXPECT_EQ(delegate.stack.count(), 1);
    command("undo:");
    EXPECT_EQ(textView->string(), QString());
}

TEST_F(KRTextViewTest, UnmarkKeepsTheCompositionAndEmptyMarkedTextRemovesIt) {
    textView->setMarkedText(QStringLiteral("ka"), 2);
    textView->setMarkedText(QString(), 0);
    EXPECT_FALSE(textView->hasMarkedText());
    EXPECT_EQ(textView->string(), QString());
    textView->setMarkedText(QStringLiteral("ka"), 2);
    textView->unmarkText();
    EXPECT_FALSE(textView->hasMarkedText());
    EXPECT_EQ(textView->string(), QStringLiteral("ka"));
    EXPECT_EQ(caret(), 2u);
}

TEST_F(KRTextViewTest, MouseClicksPlaceTheCaretAndSelectWordsAndParagraphs) {
    textView->setString(QStringLiteral("hello world\nnext"));
    const double y = 30 + kLineHeight / 2;
    window.sendEvent(
        KREvent::mouseEvent(KREventType::LeftMouseDown, KRPointMake(10 + 2 * advance + 1, y), 0, &window));
    EXPECT_EQ(window.firstResponder(), textView.get());
    EXPECT_EQ(textView->selectedRange(), KRMakeRange(2, 0));
    window.sendEvent(
        KREvent::mouseEvent(KREventType::LeftMouseDragged, KRPointMake(10 + 8 * advance + 1, y), 0, &window));
    window.sendEvent(
        KREvent::mouseEvent(KREventType::LeftMouseUp, KRPointMake(10 + 8 * advance + 1, y), 0, &window));
    EXPECT_EQ(textView->selectedRange(), KRMakeRange(2, 6));
    window.sendEvent(
        KREvent::mouseEvent(KREventType::LeftMouseDown, KRPointMake(10 + 7 * advance, y), 0, &window, 2));
    EXPECT_EQ(textView->selectedRange(), KRMakeRange(6, 5));
    window.sendEvent(
        KREvent::mouseEvent(KREventType::LeftMouseUp, KRPointMake(10 + 7 * advance, y), 0, &window, 2));
    window.sendEvent(
        KREvent::mouseEvent(KREventType::LeftMouseDown, KRPointMake(10 + 7 * advance, y), 0, &window, 3));
    EXPECT_EQ(textView->selectedRange(), KRMakeRange(0, 11));
    window.sendEvent(
        KREvent::mouseEvent(KREventType::LeftMouseUp, KRPointMake(10 + 7 * advance, y), 0, &window, 3));
}

TEST_F(KRTextViewTest, CaretBlinksOnlyWhileFirstResponder) {
    KRRunLoop& runLoop = KRRunLoop::main();
    EXPECT_TRUE(window.makeFirstResponder(textView.get()));
    EXPECT_EQ(delegate.begins, 0) << "editing begins with the first change";
    EXPECT_TRUE(textView->isFirstResponder());
    runLoop.runUntilIdle(); // the window's display pass; the blink tick is not due yet
    EXPECT_EQ(runLoop.pendingCount(), 1);
    EXPECT_TRUE(textView->isCaretVisibleNow());
    KRClock::advance(0.5);
    EXPECT_FALSE(textView->isCaretVisibleNow());
    runLoop.runUntilIdle();
    EXPECT_EQ(runLoop.pendingCount(), 1);      // rescheduled while first responder
    textView->insertText(QStringLiteral("a")); // typing shows the caret solid again
    EXPECT_TRUE(textView->isCaretVisibleNow());
    const auto caretPixel = [this] {
        QImage image(200, 100, QImage::Format_ARGB32);
        image.fill(Qt::white);
        {
            QPainter painter(&image);
            textView->draw(painter, textView->bounds());
        }
        const KRRect caretRect = textView->insertionPointRect();
        return image.pixelColor(static_cast<int>(caretRect.origin.x),
                                static_cast<int>(caretRect.origin.y + 10));
    };
    EXPECT_EQ(caretPixel(), QColor(Qt::black));
    KRClock::advance(0.5);
    EXPECT_EQ(caretPixel(), QColor(Qt::white)); // the hidden phase
    KRClock::advance(0.5);
    EXPECT_EQ(caretPixel(), QColor(Qt::black));
    window.makeFirstResponder(nullptr);
    EXPECT_EQ(caretPixel(), QColor(Qt::white));
    KRClock::advance(1.0);
    runLoop.runUntilIdle();
    EXPECT_EQ(runLoop.pendingCount(), 0);
    EXPECT_EQ(delegate.begins, 1);
    EXPECT_EQ(delegate.endings, QStringList{QString()}) << "resigning ends the edit, with no movement";
}

} // namespace
