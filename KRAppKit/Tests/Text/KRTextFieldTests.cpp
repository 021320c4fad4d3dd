#include "Text/KRTextField.h"

#include "Controls/KRDefaults.h"
#include "Foundation/KRRunLoop.h"
#include "Platform/KRHostWidget.h"
#include "Platform/KRPasteboard.h"
#include "Text/KRTextLayout.h"
#include "Views/KREvent.h"
#include "Views/KRResponder.h"
#include "Views/KRWindow.h"

#include <QApplication>
#include <QImage>
#include <QInputMethodEvent>
#include <QPainter>
#include <QUndoStack>

#include <gtest/gtest.h>

#include <cmath>
#include <memory>

namespace {

constexpr double kLineHeight = 18.0;

QFont testFont() {
    QFont font(QStringLiteral("DejaVu Sans"));
    font.setPixelSize(13);
    return font;
}

KRTextAttributes fixedAttributes() {
    KRTextAttributes attributes;
    attributes.font = testFont();
    attributes.foregroundColor = QColor(Qt::black);
    attributes.paragraphStyle = KRParagraphStyle{kLineHeight, kLineHeight};
    return attributes;
}

class RecordingFieldDelegate : public KRObject, public KRTextFieldDelegate {
public:
    void controlTextDidBeginEditing(KRTextField* field) override {
        events << QStringLiteral("begin:") + field->stringValue();
    }
    void controlTextDidChange(KRTextField* field) override {
        events << QStringLiteral("change:") + field->stringValue();
    }
    void controlTextDidEndEditing(KRTextField* field) override {
        events << QStringLiteral("end:") + field->stringValue();
    }
    bool controlTextViewDoCommandBySelector(KRTextField*, KRTextView*, const KRSelector& selector) override {
        events << QStringLiteral("command:") + selector.name();
        return vetoed.contains(selector.name());
    }
    QUndoStack* controlUndoManagerForTextView(KRTextField*, KRTextView*) override { return &undoStack; }

    QStringList events;
    QStringList vetoed;
    QUndoStack undoStack;
};

// A cell that supplies its own editor, as a list supplies its shared one.
class OwnEditorCell : public KRTextFieldCell {
public:
    using KRTextFieldCell::KRTextFieldCell;
    std::shared_ptr<KRTextView> fieldEditorForView(KRView*) override { return editor; }
    std::shared_ptr<KRTextView> editor = std::make_shared<KRTextView>();
};

class RinglessField : public KRTextField {
public:
    using KRTextField::KRTextField;
    void drawFocusRingMask(QPainter&) override { ++maskRequests; }
    int maskRequests = 0;
};

class KRTextFieldTest : public ::testing::Test {
protected:
    void SetUp() override {
        KRTextView::installTextSystem();
        content = std::make_shared<KRView>(KRRectMake(0, 0, 400, 300));
        window.setContentView(content);
        field = std::make_shared<KRTextField>(KRRectMake(20, 20, 200, 40));
        field->setBordered(false);
        field->setFont(testFont());
        field->setDelegate(&delegate);
        other = std::make_shared<KRTextField>(KRRectMake(20, 100, 200, 40));
        content->addSubview(field);
        content->addSubview(other);
        pasteboard = KRPasteboard::makeInMemory();
        KRPasteboard::setGeneralPasteboard(pasteboard);
    }
    void TearDown() override {
        window.makeFirstResponder(nullptr);
        KRPasteboard::setGeneralPasteboard(nullptr);
        KRRunLoop::main().cancelAll();
    }

    void type(const QString& characters) {
        for (const QChar character : characters) {
            window.sendEvent(KREvent::keyEvent(KREventType::KeyDown, 0, QString(character),
                                               QString(character), 0, &window));
        }
    }
    void press(unsigned short keyCode, const QString& characters, KREventModifierFlags flags = 0) {
        window.sendEvent(
            KREvent::keyEvent(KREventType::KeyDown, flags, characters, characters, keyCode, &window));
    }

    KRWindow window;
    std::shared_ptr<KRView> content;
    std::shared_ptr<KRTextField> field;
    std::shared_ptr<KRTextField> other;
    RecordingFieldDelegate delegate;
    std::shared_ptr<KRPasteboard> pasteboard;
};

TEST_F(KRTextFieldTest, FieldAndBareCellDefaults) {
    const KRTextField plain;
    EXPECT_TRUE(plain.isEditable());
    EXPECT_TRUE(plain.isSelectable());
    EXPECT_TRUE(plain.isBordered());
    EXPECT_TRUE(plain.drawsBackground());
    EXPECT_EQ(plain.lineBreakMode(), KRLineBreakByWordWrapping);
    EXPECT_FALSE(plain.allowsEditingTextAttributes());
    EXPECT_EQ(plain.stringValue(), QString());
    EXPECT_EQ(plain.currentEditor(), nullptr);

    const KRTextFieldCell cell(QStringLiteral("Title"));
    EXPECT_EQ(cell.stringValue(), QStringLiteral("Title"));
    EXPECT_FALSE(cell.isEditable());
    EXPECT_FALSE(cell.isSelectable());
    EXPECT_FALSE(cell.isBordered());
    EXPECT_FALSE(cell.drawsBackground());
    EXPECT_EQ(cell.placeholderString(), QString());
}

TEST_F(KRTextFieldTest, ValuesGoThroughTheCell) {
    field->setAttributedStringValue(KRAttributedString(QStringLiteral("Styled"), fixedAttributes()));
    EXPECT_EQ(field->stringValue(), QStringLiteral("Styled"));
    EXPECT_EQ(field->cell()->attributedStringValue().leadingAttributes(), fixedAttributes());
    field->setStringValue(QStringLiteral("Plain"));
    EXPECT_EQ(field->attributedStringValue().leadingAttributes().count(), 0u);
    field->setPlaceholderString(QStringLiteral("Checklist"));
    EXPECT_EQ(field->cell()->placeholderString(), QStringLiteral("Checklist"));
    field->setPlaceholderAttributedString(KRAttributedString(QStringLiteral("Hint"), fixedAttributes()));
    EXPECT_EQ(field->placeholderString(), QStringLiteral("Hint"));

    // Without a cell the field is empty and ignores values.
    field->setCell(nullptr);
    field->setStringValue(QStringLiteral("lost"));
    EXPECT_EQ(field->stringValue(), QString());
    EXPECT_FALSE(field->acceptsFirstResponder());
    EXPECT_FALSE(window.makeFirstResponder(field.get()));
}

TEST_F(KRTextFieldTest, BecomingFirstResponderPutsTheWindowsEditorOverTheFieldWithAllSelected) {
    field->setStringValue(QStringLiteral("Hello"));
    ASSERT_TRUE(window.makeFirstResponder(field.get()));
    KRTextView* editor = field->currentEditor();
    ASSERT_NE(editor, nullptr);
    EXPECT_EQ(editor, window.fieldEditor(false, nullptr).get());
    EXPECT_TRUE(editor->isFieldEditor());
    EXPECT_EQ(window.firstResponder(), editor);
    EXPECT_EQ(editor->superview()->superview(), field.get());
    EXPECT_EQ(editor->frame().size.width, 200.0);
    EXPECT_EQ(editor->string(), QStringLiteral("Hello"));
    EXPECT_EQ(editor->selectedRange(), KRMakeRange(0, 5));
    EXPECT_EQ(editor->defaultFont(), testFont());
    EXPECT_EQ(field->cell()->currentEditor(), editor);
    EXPECT_TRUE(delegate.events.isEmpty()) << "nothing is said before the first change";
}

TEST_F(KRTextFieldTest, CellMayChooseItsOwnEditor) {
    auto cell = std::make_shared<OwnEditorCell>(QStringLiteral("Own"));
    cell->setEditable(true);
    field->setCell(cell);
    ASSERT_TRUE(window.makeFirstResponder(field.get()));
    EXPECT_EQ(field->currentEditor(), cell->editor.get());
    EXPECT_EQ(window.fieldEditor(false, nullptr), nullptr) << "the shared editor was never needed";
}

TEST_F(KRTextFieldTest, ANonEditableFieldStillSelectsButDoesNotChange) {
    field->setStringValue(QStringLiteral("Read only"));
    field->setEditable(false);
    ASSERT_TRUE(window.makeFirstResponder(field.get()));
    type(QStringLiteral("x"));
    EXPECT_EQ(field->stringValue(), QStringLiteral("Read only"));
    field->setSelectable(false);
    window.makeFirstResponder(nullptr);
    EXPECT_FALSE(window.makeFirstResponder(field.get()));
}

TEST_F(KRTextFieldTest, NotificationsComeOncePerChangeAndOnceAtTheEnd) {
    field->setStringValue(QStringLiteral("ab"));
    ASSERT_TRUE(window.makeFirstResponder(field.get()));
    field->currentEditor()->setSelectedRange(KRMakeRange(2, 0));
    type(QStringLiteral("cd"));
    press(KRKeyCode::Delete, QStringLiteral("\x7f")); // Backspace
    EXPECT_EQ(field->stringValue(), QStringLiteral("abc"));
    EXPECT_EQ(field->cell()->stringValue(), QStringLiteral("abc"));
    window.makeFirstResponder(other.get());
    // The first change is announced by a begin, told after the text changed, then reported itself.
    EXPECT_EQ(delegate.events,
              (QStringList{QStringLiteral("begin:abc"), QStringLiteral("change:abc"),
                           QStringLiteral("change:abcd"), QStringLiteral("command:deleteBackward:"),
                           QStringLiteral("change:abc"), QStringLiteral("end:abc")}));
    EXPECT_EQ(field->currentEditor(), nullptr);
    EXPECT_NE(other->currentEditor(), nullptr) << "the shared editor moved on to the other field";
    EXPECT_EQ(field->stringValue(), QStringLiteral("abc"));
}

TEST_F(KRTextFieldTest, CommandsReachTheDelegateFirstAndAVetoStopsThem) {
    field->setStringValue(QStringLiteral("abc"));
    ASSERT_TRUE(window.makeFirstResponder(field.get()));
    KRTextView* editor = field->currentEditor();
    editor->setSelectedRange(KRMakeRange(3, 0));
    delegate.vetoed << QStringLiteral("deleteBackward:");
    press(KRKeyCode::Delete, QStringLiteral("\x7f"));
    EXPECT_EQ(field->stringValue(), QStringLiteral("abc"));
    press(KRKeyCode::LeftArrow, QString(QChar(0xF702)));
    EXPECT_EQ(editor->selectedRange(), KRMakeRange(2, 0));
    EXPECT_EQ(delegate.events,
              (QStringList{QStringLiteral("command:deleteBackward:"), QStringLiteral("command:moveLeft:")}));
}

TEST_F(KRTextFieldTest, TabEndsEditingOnceAndMovesToTheNextField) {
    field->setStringValue(QStringLiteral("one"));
    ASSERT_TRUE(window.makeFirstResponder(field.get()));
    press(KRKeyCode::Tab, QStringLiteral("\t"));
    EXPECT_EQ(delegate.events,
              (QStringList{QStringLiteral("command:insertTab:"), QStringLiteral("end:one")}));
    EXPECT_EQ(field->currentEditor(), nullptr);
    EXPECT_NE(other->currentEditor(), nullptr);
    EXPECT_EQ(field->stringValue(), QStringLiteral("one")) << "Tab is not typed into a field";
}

TEST_F(KRTextFieldTest, ReturnEndsEditingOnceAndSelectsTheTextAgain) {
    field->setStringValue(QStringLiteral("one"));
    ASSERT_TRUE(window.makeFirstResponder(field.get()));
    field->currentEditor()->setSelectedRange(KRMakeRange(3, 0));
    type(QStringLiteral("!"));
    press(KRKeyCode::Return, QStringLiteral("\r"));
    EXPECT_EQ(delegate.events.filter(QStringLiteral("end:")), QStringList{QStringLiteral("end:one!")});
    ASSERT_NE(field->currentEditor(), nullptr);
    EXPECT_EQ(field->currentEditor()->selectedRange(), KRMakeRange(0, 4));
    EXPECT_EQ(field->stringValue(), QStringLiteral("one!"));
}

TEST_F(KRTextFieldTest, TheCellEndingTheEditTakesTheEditorAwayWithoutNotifying) {
    field->setStringValue(QStringLiteral("x"));
    ASSERT_TRUE(window.makeFirstResponder(field.get()));
    KRTextView* editor = field->currentEditor();
    field->cell()->endEditing(editor);
    EXPECT_EQ(field->currentEditor(), nullptr);
    EXPECT_EQ(editor->superview(), nullptr);
    EXPECT_EQ(editor->delegate(), nullptr);
    EXPECT_TRUE(field->subviews().empty()) << "the editor's clip view went with it";
    EXPECT_EQ(window.firstResponder(), &window);
    EXPECT_TRUE(delegate.events.isEmpty());
}

TEST_F(KRTextFieldTest, RestylingTheEditedValueKeepsTheCaretAndNewTextReplacesIt) {
    field->setStringValue(QStringLiteral("keep me"));
    ASSERT_TRUE(window.makeFirstResponder(field.get()));
    KRTextView* editor = field->currentEditor();
    editor->setSelectedRange(KRMakeRange(2, 1));
    KRTextAttributes struck = fixedAttributes();
    struck.strikethroughStyle = 1;
    field->setAttributedStringValue(KRAttributedString(QStringLiteral("keep me"), struck));
    EXPECT_EQ(editor->selectedRange(), KRMakeRange(2, 1));
    EXPECT_EQ(editor->attributedString().leadingAttributes().strikethroughStyle, 1);
    EXPECT_EQ(editor->fixedLineHeight(), kLineHeight);
    field->setStringValue(QStringLiteral("new"));
    EXPECT_EQ(editor->string(), QStringLiteral("new"));
    EXPECT_EQ(editor->selectedRange(), KRMakeRange(3, 0));
    EXPECT_TRUE(delegate.events.isEmpty()) << "values set by code are not edits";
}

TEST_F(KRTextFieldTest, TypingIsUndoneThroughTheDelegatesUndoManager) {
    ASSERT_TRUE(window.makeFirstResponder(field.get()));
    type(QStringLiteral("word"));
    EXPECT_EQ(delegate.undoStack.count(), 1) << "typing coalesces into one step";
    delegate.undoStack.undo();
    EXPECT_EQ(field->stringValue(), QString());
}

TEST_F(KRTextFieldTest, MeasuresWrappedTextAndKeepsTheAnswerUntilTheValueChanges) {
    field->setAttributedStringValue(KRAttributedString(
        QStringLiteral("Book flights to Lisbon, hotel near Alfama, and a table at the fado place"),
        fixedAttributes()));
    const KRSize oneLine = field->sizeThatFits(KRSizeMake(99999999.0, 99999999.0));
    const KRSize wrapped = field->sizeThatFits(KRSizeMake(120.0, 99999999.0));
    EXPECT_EQ(oneLine.height, kLineHeight);
    EXPECT_EQ(wrapped.width, 120.0);
    EXPECT_GE(wrapped.height, 3 * kLineHeight);
    EXPECT_EQ(std::fmod(wrapped.height, kLineHeight), 0.0);
    EXPECT_EQ(field->sizeThatFits(KRSizeMake(120.0, 10.0)), wrapped) << "only the width matters";
    field->setAttributedStringValue(KRAttributedString(QStringLiteral("Short"), fixedAttributes()));
    EXPECT_EQ(field->sizeThatFits(KRSizeMake(120.0, 99999999.0)).height, kLineHeight);
    // A field that clips instead of wrapping measures one line at any width.
    field->setAttributedStringValue(
        KRAttributedString(QStringLiteral("Book flights to Lisbon, hotel near Alfama"), fixedAttributes()));
    field->setLineBreakMode(KRLineBreakByClipping);
    EXPECT_EQ(field->sizeThatFits(KRSizeMake(50.0, 99999999.0)).height, kLineHeight);
    // A bordered field adds its text insets all round.
    field->setLineBreakMode(KRLineBreakByWordWrapping);
    field->setAttributedStringValue(KRAttributedString(QStringLiteral("Short"), fixedAttributes()));
    field->setBordered(true);
    EXPECT_EQ(field->sizeThatFits(KRSizeMake(120.0, 99999999.0)).height,
              kLineHeight + 2 * KRDefaults::textFieldBorderedTextInset());
}

TEST_F(KRTextFieldTest, TheCellsSizeGenerationChangesWhenItsMeasurementsMayChange) {
    KRTextFieldCell* cell = field->cell();
    field->setAttributedStringValue(KRAttributedString(QStringLiteral("Short"), fixedAttributes()));
    std::uint32_t generation = cell->sizeGeneration();
    field->setAttributedStringValue(KRAttributedString(QStringLiteral("Short"), fixedAttributes()));
    field->setTextColor(QColor(Qt::red));
    EXPECT_EQ(cell->sizeGeneration(), generation) << "an equal value and a colour change nothing measured";
    field->setStringValue(QStringLiteral("Longer"));
    EXPECT_NE(cell->sizeGeneration(), generation);
    generation = cell->sizeGeneration();
    field->setFont(testFont());
    EXPECT_NE(cell->sizeGeneration(), generation);
    generation = cell->sizeGeneration();
    field->setLineBreakMode(KRLineBreakByClipping);
    EXPECT_NE(cell->sizeGeneration(), generation);
}

TEST_F(KRTextFieldTest, MeasuresWhatIsBeingTypedWhileEditing) {
    field->setAttributedStringValue(KRAttributedString(QStringLiteral("Short"), fixedAttributes()));
    field->setFrame(KRRectMake(20, 20, 120, 18));
    ASSERT_TRUE(window.makeFirstResponder(field.get()));
    field->currentEditor()->setSelectedRange(KRMakeRange(5, 0));
    type(QStringLiteral(" and then a lot more words"));
    const KRSize size = field->sizeThatFits(KRSizeMake(120.0, 99999999.0));
    EXPECT_GE(size.height, 2 * kLineHeight);
    EXPECT_EQ(size.height, field->currentEditor()->usedHeight());
}

TEST_F(KRTextFieldTest, TheEditorFollowsTheFieldsSize) {
    ASSERT_TRUE(window.makeFirstResponder(field.get()));
    field->setFrameSize(KRSizeMake(260.0, 60.0));
    EXPECT_EQ(field->currentEditor()->frame().size, KRSizeMake(260.0, 60.0));
    EXPECT_EQ(field->currentEditor()->superview()->frame(), KRRectMake(0, 0, 260.0, 60.0));
}

TEST_F(KRTextFieldTest, PastedStyledTextTakesTheAttributesTheOwnerSetsAgain) {
    field->setAllowsEditingTextAttributes(true);
    field->setAttributedStringValue(KRAttributedString(QStringLiteral("ab"), fixedAttributes()));
    ASSERT_TRUE(window.makeFirstResponder(field.get()));
    KRTextView* editor = field->currentEditor();
    editor->setSelectedRange(KRMakeRange(1, 0));
    pasteboard->declareTypes({KRPasteboardTypeHTML, KRPasteboardTypeString}, nullptr);
    pasteboard->setString(QStringLiteral("<b style=\"font-size:30px\">BIG</b><i>it</i>"),
                          KRPasteboardTypeHTML);
    pasteboard->setString(QStringLiteral("BIGit"), KRPasteboardTypeString);
    editor->doCommandBySelector(KRSelector("paste:"));
    EXPECT_EQ(field->stringValue(), QStringLiteral("aBIGitb"));
    EXPECT_GT(editor->attributedString().runs().size(), 1u) << "the paste kept its styles";
    editor->setAttributesForRange(fixedAttributes(), KRMakeRange(0, editor->length()));
    const KRAttributedString restyled = editor->attributedString();
    ASSERT_EQ(restyled.runs().size(), 1u);
    EXPECT_EQ(restyled.runs().front().attributes.font, testFont());
    EXPECT_EQ(restyled.runs().front().attributes.foregroundColor, QColor(Qt::black));

    // A plain field takes only the plain string.
    field->setAllowsEditingTextAttributes(false);
    window.makeFirstResponder(nullptr);
    field->setAttributedStringValue(KRAttributedString(QStringLiteral("ab"), fixedAttributes()));
    ASSERT_TRUE(window.makeFirstResponder(field.get()));
    field->currentEditor()->setSelectedRange(KRMakeRange(1, 0));
    field->currentEditor()->doCommandBySelector(KRSelector("paste:"));
    EXPECT_EQ(field->stringValue(), QStringLiteral("aBIGitb"));
    EXPECT_EQ(field->currentEditor()->attributedString().runs().size(), 1u);
}

TEST_F(KRTextFieldTest, MalformedStyledTextFallsBackToThePlainString) {
    field->setAllowsEditingTextAttributes(true);
    ASSERT_TRUE(window.makeFirstResponder(field.get()));
    pasteboard->declareTypes({KRPasteboardTypeHTML, KRPasteboardTypeString}, nullptr);
    pasteboard->setString(QStringLiteral("<<<>>"), KRPasteboardTypeHTML);
    pasteboard->setString(QStringLiteral("plain"), KRPasteboardTypeString);
    field->currentEditor()->doCommandBySelector(KRSelector("paste:"));
    EXPECT_EQ(field->stringValue(), QStringLiteral("plain"));
}

QImage renderOf(KRView& view) {
    QImage image(static_cast<int>(view.bounds().size.width), static_cast<int>(view.bounds().size.height),
                 QImage::Format_ARGB32_Premultiplied);
    image.fill(Qt::white);
    QPainter painter(&image);
    view.draw(painter, view.bounds());
    return image;
}

bool containsColor(const QImage& image, const QColor& color) {
    for (int y = 0; y < image.height(); ++y) {
        for (int x = 0; x < image.width(); ++x) {
            if (image.pixelColor(x, y) == color) {
                return true;
            }
        }
    }
    return false;
}

TEST_F(KRTextFieldTest, PlaceholderShowsOnlyWhileTheValueIsEmpty) {
    field->setPlaceholderString(QStringLiteral("Checklist"));
    const QImage empty = renderOf(*field);
    EXPECT_NE(empty, QImage(empty.size(), empty.format())) << "something was drawn";
    EXPECT_FALSE(containsColor(empty, QColor(Qt::black)));
    field->setStringValue(QStringLiteral("Checklist"));
    field->setTextColor(QColor(Qt::black));
    const QImage filled = renderOf(*field);
    EXPECT_NE(filled, empty) << "the value draws in the text colour, not the placeholder's";
    // While editing, the field leaves the value to the editor but keeps the placeholder for empty text.
    ASSERT_TRUE(window.makeFirstResponder(field.get()));
    window.setKeyWindow(false);
    QImage white(filled.size(), filled.format());
    white.fill(Qt::white);
    EXPECT_EQ(renderOf(*field), white);
    press(KRKeyCode::Delete, QStringLiteral("\x7f"));
    EXPECT_EQ(renderOf(*field), empty);
    window.setKeyWindow(true);
}

TEST_F(KRTextFieldTest, FocusRingIsDrawnThroughTheMaskWhichASubclassCanEmpty) {
    field->setStringValue(QStringLiteral("x"));
    ASSERT_TRUE(window.makeFirstResponder(field.get()));
    const QImage withRing = renderOf(*field);
    EXPECT_TRUE(containsColor(withRing, QColor(0xFF, 0xFF, 0xFF)));
    window.makeFirstResponder(nullptr);
    EXPECT_NE(withRing, renderOf(*field)) << "the ring shows only while editing";

    auto ringless = std::make_shared<RinglessField>(KRRectMake(20, 180, 200, 40));
    ringless->setBordered(false);
    ringless->setDrawsBackground(false);
    content->addSubview(ringless);
    const QImage before = renderOf(*ringless);
    ASSERT_TRUE(window.makeFirstResponder(ringless.get()));
    EXPECT_EQ(renderOf(*ringless), before);
    EXPECT_GT(ringless->maskRequests, 0);
}

// Input methods compose into the edited field through the host widget, and learn where the caret is.
TEST_F(KRTextFieldTest, InputMethodComposesThroughTheHostIntoTheEditedField) {
    KRHostWidget host;
    host.resize(300, 120);
    auto hosted = std::make_shared<KRTextField>(KRRectMake(10, 10, 200, 40));
    hosted->setBordered(false);
    hosted->setFont(testFont());
    hosted->setStringValue(QStringLiteral("ab"));
    hosted->setDelegate(&delegate);
    host.setContentView(std::make_shared<KRView>(KRRectMake(0, 0, 300, 120)));
    host.krWindow().contentView()->addSubview(hosted);
    ASSERT_TRUE(host.krWindow().makeFirstResponder(hosted.get()));
    KRTextView* editor = hosted->currentEditor();
    ASSERT_NE(editor, nullptr);
    editor->setSelectedRange(KRMakeRange(2, 0));

    QInputMethodEvent preedit(QStringLiteral("ni"), {{QInputMethodEvent::Cursor, 2, 1, QVariant()}});
    QApplication::sendEvent(&host, &preedit);
    EXPECT_TRUE(editor->hasMarkedText());
    EXPECT_EQ(editor->markedRange(), KRMakeRange(2, 2));
    EXPECT_EQ(editor->selectedRange(), KRMakeRange(4, 0));

    const QRect caret = host.inputMethodQuery(Qt::ImCursorRectangle).toRect();
    const KRRect expected = editor->convertRectToView(editor->insertionPointRect(), nullptr);
    EXPECT_EQ(caret.x(), static_cast<int>(expected.origin.x));
    EXPECT_EQ(caret.y(), static_cast<int>(expected.origin.y));
    EXPECT_GT(caret.x(), 10 + 10) << "the caret sits after the composed text, inside the field";

    QInputMethodEvent commit;
    commit.setCommitString(QStringLiteral("你"));
    QApplication::sendEvent(&host, &commit);
    EXPECT_FALSE(editor->hasMarkedText());
    EXPECT_EQ(hosted->stringValue(), QStringLiteral("ab你"));
    EXPECT_EQ(delegate.events.last(), QStringLiteral("change:ab你"));
    host.krWindow().makeFirstResponder(nullptr);
}

} // namespace
