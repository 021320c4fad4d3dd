#include "KRCheckListItemView.h"

#include "KRCheckListDefaults.h"
#include "KRCheckListFieldEditor.h"
#include "KRCheckListItemViewTestSupport.h"
#include "KRCheckListResources.h"

#include "Animation/EZInterpolationFunctions.h"
#include "Animation/KRAnimationDurationMultiplier.h"
#include "Foundation/KRClock.h"
#include "Foundation/KRRunLoop.h"
#include "Platform/KRPasteboard.h"
#include "Text/KRTextView.h"
#include "Views/KREvent.h"
#include "Views/KRWindow.h"

#include <QTextBlock>
#include <QTextCharFormat>
#include <QTextDocument>

#include <gtest/gtest.h>

#include <memory>

using namespace KRCheckListItemViewTesting;

namespace {

const QString kValidateTitle = QStringLiteral("checkListItemViewValidateChangedTitle");
const QString kValidateStatus = QStringLiteral("checkListItemViewValidateChangedStatus");
const QString kDoCommand = QStringLiteral("checkListItemViewTextViewDoCommandBySelector");
const QString kWillUpdate = QStringLiteral("checkListItemViewWillUpdate");
const QString kDidUpdate = QStringLiteral("checkListItemViewDidUpdate");
const QString kDidChangeSize = QStringLiteral("checkListItemViewDidChangeSizeThatFits");
const QString kDidEndEditing = QStringLiteral("checkListItemViewDidEndEditingTitle");
const QString kWillHighlight = QStringLiteral("checkListItemViewWillChangeHighlighted");
const QString kDidHighlight = QStringLiteral("checkListItemViewDidChangeHighlighted");
const QString kMouseDownHandle = QStringLiteral("checkListItemViewMouseDownHandle");
const QString kMouseDraggedHandle = QStringLiteral("checkListItemViewMouseDraggedHandle");
const QString kMouseUpHandle = QStringLiteral("checkListItemViewMouseUpHandle");
const QString kFieldEditor = QStringLiteral("checkListItemViewFieldEditorForView");
const QString kValidateBecome = QStringLiteral("checkListItemViewTextFieldValidateBecomeFirstResponder");
const QString kValidateResign = QStringLiteral("checkListItemViewTextFieldValidateResignFirstResponder");

// A row in a window, laid out and updated once, as a list shows it.
class KRCheckListItemViewControlsTests : public ::testing::Test {
protected:
    void SetUp() override {
        KRTextView::installTextSystem();
        KREvent::setCurrentModifierFlags(0);
        window.setContentView(content);
        content->addSubview(row);
        row->setNeedsUpdate(true);
        row->setNeedsLayout(true);
        row->layoutIfNeeded();
    }
    void TearDown() override {
        KREvent::setCurrentModifierFlags(0);
        window.makeFirstResponder(nullptr);
        KRPasteboard::setGeneralPasteboard(nullptr);
        KRClock::advance(1.0); // lets every animation a test started finish
        row->removeFromSuperview();
        KRRunLoop::main().cancelAll();
    }

    void send(KREventType type, KRPoint locationInWindow) {
        window.sendEvent(
            KREvent::mouseEvent(type, locationInWindow, KREvent::currentModifierFlags(), &window));
    }
    KRPoint centreInWindow(const KRView& view) const {
        const KRRect bounds = view.bounds();
        return view.convertPointToView(KRPointMake(KRRectGetMidX(bounds), KRRectGetMidY(bounds)), nullptr);
    }
    void clickCheckBox(KREventModifierFlags flags = 0) {
        KREvent::setCurrentModifierFlags(flags);
        const KRPoint point = centreInWindow(*row->checkBoxButtonView());
        send(KREventType::LeftMouseDown, point);
        send(KREventType::LeftMouseUp, point);
        KREvent::setCurrentModifierFlags(0);
    }
    static KREvent mouseEvent(KREventType type) { return KREvent::mouseEvent(type, KRPointZero, 0, nullptr); }

    // Title editing --------------------------------------------------------------------------------------
    KRTextView* beginEditing() {
        row->titleTextField()->setEditable(true);
        if (!window.makeFirstResponder(row->titleTextField().get())) {
            return nullptr;
        }
        return row->titleTextField()->currentEditor();
    }
    void expectOnlyTitleAttributes(KRTextView& editor, int line) const {
        SCOPED_TRACE(testing::Message() << "title attributes expected at line " << line);
        ASSERT_TRUE(row->titleAttributes() != nullptr);
        const KRTextAttributes& title = *row->titleAttributes();
        const KRAttributedString text = editor.attributedString();
        EXPECT_TRUE(text.hasUniformAttributes());
        const KRTextAttributes& leading = text.leadingAttributes();
        EXPECT_EQ(leading.font, title.font);
        EXPECT_EQ(leading.foregroundColor, title.foregroundColor);
        EXPECT_EQ(leading.strikethroughStyle, title.strikethroughStyle);
        EXPECT_EQ(leading.fixedLineHeight(), title.fixedLineHeight());
        // Every run of the storage carries exactly the title's character attributes.
        const QTextCharFormat expected = title.charFormat();
        for (QTextBlock block = editor.textStorage()->begin(); block.isValid(); block = block.next()) {
            for (auto it = block.begin(); !it.atEnd(); ++it) {
                EXPECT_EQ(it.fragment().charFormat(), expected) << it.fragment().text().toStdString();
            }
        }
    }

    KRWindow window;
    std::shared_ptr<KRView> content = std::make_shared<KRView>(KRRectMake(0, 0, 400, 300));
    std::shared_ptr<KRCheckListItemView> row =
        std::make_shared<KRCheckListItemView>(KRRectMake(0, 0, 300, 28));
    RecordingItemViewDelegate delegate;
};

#define EXPECT_ONLY_TITLE_ATTRIBUTES(editor) expectOnlyTitleAttributes((editor), __LINE__)

} // namespace

// The check box cycles the status
// ------------------------------------------------------------------------------------------------------

TEST_F(KRCheckListItemViewControlsTests, ClickOnAnOpenCheckBoxCompletesIt) {
    clickCheckBox();
    EXPECT_EQ(row->status(), 1u);
    EXPECT_EQ(row->checkBoxButtonView()->image(), KRCheckListResources::checkboxCompletedImage());
    EXPECT_EQ(row->titleTextField()->textColor(), finishedColor());
}

TEST_F(KRCheckListItemViewControlsTests, OptionClickOnAnOpenCheckBoxCancelsIt) {
    clickCheckBox(KREventModifierFlagOption);
    EXPECT_EQ(row->status(), 2u);
    EXPECT_EQ(row->checkBoxButtonView()->image(), KRCheckListResources::checkboxCanceledImage());
    EXPECT_EQ(row->titleAttributes()->strikethroughStyle, std::optional<int>(1));
}

TEST_F(KRCheckListItemViewControlsTests, ClickOnAFinishedOrUnknownStatusReopensWithOrWithoutOption) {
    for (KRUInteger status : {1u, 2u, 5u}) {
        for (KREventModifierFlags flags : {KREventModifierFlags{0}, KREventModifierFlagOption}) {
            SCOPED_TRACE(testing::Message() << "status " << status << " flags " << flags);
            row->setStatus(status);
            clickCheckBox(flags);
            EXPECT_EQ(row->status(), 0u);
            EXPECT_EQ(row->checkBoxButtonView()->image(), KRCheckListResources::checkboxNormalImage());
        }
    }
}

TEST_F(KRCheckListItemViewControlsTests, ShiftAndCommandDoNotChangeWhatAClickProposes) {
    for (KREventModifierFlags flags : {KREventModifierFlagShift, KREventModifierFlagCommand}) {
        SCOPED_TRACE(flags);
        row->setStatus(0);
        clickCheckBox(flags);
        EXPECT_EQ(row->status(), 1u);
        clickCheckBox(flags);
        EXPECT_EQ(row->status(), 0u);
    }
}

TEST_F(KRCheckListItemViewControlsTests, WithoutADelegateTheActionTakesTheProposedStatus) {
    ASSERT_EQ(row->delegate(), nullptr);
    EXPECT_EQ(row->checkListItemViewValidateChangedStatus(row.get(), 2), 2u);
    KRButtonView* checkBox = row->checkBoxButtonView().get();
    row->checkListItemViewHandleActionForCheckBoxButton(checkBox);
    EXPECT_EQ(row->status(), 1u);
    row->checkListItemViewHandleActionForCheckBoxButton(checkBox);
    EXPECT_EQ(row->status(), 0u);
    KREvent::setCurrentModifierFlags(KREventModifierFlagOption);
    row->checkListItemViewHandleActionForCheckBoxButton(checkBox);
    EXPECT_EQ(row->status(), 2u);
    row->checkListItemViewHandleActionForCheckBoxButton(checkBox);
    EXPECT_EQ(row->status(), 0u);
}

TEST_F(KRCheckListItemViewControlsTests, DelegateDecidesWhichStatusTheRowTakes) {
    row->setDelegate(&delegate);
    delegate.statusAnswer = 2;
    clickCheckBox();
    EXPECT_EQ(row->status(), 2u);
    EXPECT_EQ(row->checkBoxButtonView()->image(), KRCheckListResources::checkboxCanceledImage());
    ASSERT_EQ(delegate.count(kValidateStatus), 1);
    const RecordedCall& call = delegate.calls.back();
    EXPECT_EQ(call.method, kValidateStatus);
    EXPECT_EQ(call.itemView, row.get());
    EXPECT_EQ(call.status, 1u) << "the click proposed completing the item";
}

TEST_F(KRCheckListItemViewControlsTests, DelegateKeepingTheCurrentStatusLeavesTheRowUntouched) {
    row->setDelegate(&delegate);
    delegate.statusAnswer = 0;
    row->shapeView()->setBackgroundColor(sentinelColor());
    row->checkListItemViewHandleActionForCheckBoxButton(row->checkBoxButtonView().get());
    EXPECT_EQ(row->status(), 0u);
    EXPECT_EQ(row->shapeView()->backgroundColor(), sentinelColor()) << "no update ran";
    EXPECT_FALSE(row->isUpdateScheduled());
    EXPECT_EQ(delegate.count(kValidateStatus), 1);
}

// Highlight while the check box is pressed
// ------------------------------------------------------------------------------------------------------

TEST_F(KRCheckListItemViewControlsTests, MouseDownOnTheCheckBoxHighlightsAtOnce) {
    row->setDelegate(&delegate);
    send(KREventType::LeftMouseDown, centreInWindow(*row->checkBoxButtonView()));
    EXPECT_EQ(delegate.methods(), (QStringList{kWillHighlight, kDidHighlight}));
    ASSERT_EQ(delegate.calls.size(), 2u);
    EXPECT_EQ(delegate.calls[0].itemView, row.get());
    EXPECT_FALSE(delegate.calls[0].rowHighlighted);
    EXPECT_EQ(delegate.calls[0].highlightAlpha, 0.0);
    EXPECT_EQ(delegate.calls[1].itemView, row.get());
    EXPECT_TRUE(delegate.calls[1].rowHighlighted);
    EXPECT_DOUBLE_EQ(delegate.calls[1].highlightAlpha, 0.1);

    EXPECT_TRUE(row->isHighlighted());
    EXPECT_DOUBLE_EQ(row->highlightView()->alphaValue(), 0.1);
    EXPECT_DOUBLE_EQ(row->highlightView()->presentationAlphaValue(), 0.1);
    EXPECT_FALSE(row->highlightView()->hasRunningAnimationForKey("opacity"));
    EXPECT_TRUE(row->checkBoxButtonView()->isPressed()) << "the button goes on with its press";
    EXPECT_EQ(row->status(), 0u) << "nothing changes before the release";
}

TEST_F(KRCheckListItemViewControlsTests, MouseUpOnTheCheckBoxFadesTheHighlightOutOverHalfASecond) {
    row->setDelegate(&delegate);
    const KRPoint point = centreInWindow(*row->checkBoxButtonView());
    send(KREventType::LeftMouseDown, point);
    delegate.calls.clear();
    const double start = KRClock::now();
    send(KREventType::LeftMouseUp, point);

    EXPECT_EQ(delegate.methods(), (QStringList{kWillHighlight, kDidHighlight, kValidateStatus}));
    ASSERT_EQ(delegate.calls.size(), 3u);
    EXPECT_TRUE(delegate.calls[0].rowHighlighted);
    EXPECT_FALSE(delegate.calls[1].rowHighlighted);
    EXPECT_FALSE(row->isHighlighted());
    EXPECT_EQ(row->status(), 1u);

    const KRView& veil = *row->highlightView();
    EXPECT_EQ(veil.alphaValue(), 0.0);
    EXPECT_TRUE(veil.hasRunningAnimationForKey("opacity"));
    EXPECT_NEAR(veil.presentationAlphaValue(), 0.1, 1e-9);

    const double duration = 0.5 * KRAnimationDurationMultiplier;
    const EZSampledFunctionRef easeOut = EZInterpolationFunctions::easeOutWithDuration(duration);
    KRClock::advance(start + duration / 2 - KRClock::now());
    const double halfway = veil.presentationAlphaValue();
    EXPECT_GT(halfway, 0.0);
    EXPECT_LT(halfway, 0.1);
    EXPECT_NEAR(halfway, 0.1 * (1.0 - easeOut->valueAtTime(duration / 2)), 1e-6);

    KRClock::advance(start + duration - KRClock::now());
    EXPECT_NEAR(veil.presentationAlphaValue(), 0.0, 1e-12);
    EXPECT_FALSE(veil.hasRunningAnimationForKey("opacity"));
}

TEST_F(KRCheckListItemViewControlsTests, CheckBoxMouseEventsAreNeverConsumed) {
    KRButtonView* checkBox = row->checkBoxButtonView().get();
    row->setDelegate(&delegate);
    delegate.mouseDownHandleAnswer = true;
    delegate.mouseDraggedHandleAnswer = true;
    delegate.mouseUpHandleAnswer = true;
    EXPECT_FALSE(row->buttonViewMouseDown(checkBox, mouseEvent(KREventType::LeftMouseDown)));
    EXPECT_TRUE(row->isHighlighted());
    EXPECT_FALSE(row->buttonViewMouseDragged(checkBox, mouseEvent(KREventType::LeftMouseDragged)));
    EXPECT_FALSE(row->buttonViewMouseUp(checkBox, mouseEvent(KREventType::LeftMouseUp)));
    EXPECT_FALSE(row->isHighlighted());
    EXPECT_EQ(delegate.count(kMouseDownHandle) + delegate.count(kMouseDraggedHandle) +
                  delegate.count(kMouseUpHandle),
              0);
}

// The handle and other buttons
// ------------------------------------------------------------------------------------------------------

TEST_F(KRCheckListItemViewControlsTests, HandleMouseEventsAreDecidedByTheDelegate) {
    KRButtonView* handle = row->handleButtonView().get();
    EXPECT_FALSE(row->buttonViewMouseDown(handle, mouseEvent(KREventType::LeftMouseDown)));
    EXPECT_FALSE(row->buttonViewMouseDragged(handle, mouseEvent(KREventType::LeftMouseDragged)));
    EXPECT_FALSE(row->buttonViewMouseUp(handle, mouseEvent(KREventType::LeftMouseUp)));

    row->setDelegate(&delegate);
    EXPECT_FALSE(row->buttonViewMouseDown(handle, mouseEvent(KREventType::LeftMouseDown)));
    delegate.mouseDownHandleAnswer = true;
    delegate.mouseDraggedHandleAnswer = true;
    delegate.mouseUpHandleAnswer = true;
    EXPECT_TRUE(row->buttonViewMouseDown(handle, mouseEvent(KREventType::LeftMouseDown)));
    EXPECT_TRUE(row->buttonViewMouseDragged(handle, mouseEvent(KREventType::LeftMouseDragged)));
    EXPECT_TRUE(row->buttonViewMouseUp(handle, mouseEvent(KREventType::LeftMouseUp)));

    EXPECT_EQ(delegate.methods(),
              (QStringList{kMouseDownHandle, kMouseDownHandle, kMouseDraggedHandle, kMouseUpHandle}));
    ASSERT_EQ(delegate.calls.size(), 4u);
    EXPECT_EQ(delegate.calls[1].eventType, KREventType::LeftMouseDown);
    EXPECT_EQ(delegate.calls[2].eventType, KREventType::LeftMouseDragged);
    EXPECT_EQ(delegate.calls[3].eventType, KREventType::LeftMouseUp);
    for (const RecordedCall& call : delegate.calls) {
        EXPECT_EQ(call.itemView, row.get());
    }
    EXPECT_FALSE(row->isHighlighted()) << "the handle does not highlight the row";
}

TEST_F(KRCheckListItemViewControlsTests, PressingTheHandleInTheWindowAsksTheDelegate) {
    row->setDelegate(&delegate);
    delegate.mouseDownHandleAnswer = true;
    const KRPoint point = centreInWindow(*row->handleButtonView());
    send(KREventType::LeftMouseDown, point);
    send(KREventType::LeftMouseDragged, KRPointMake(point.x, point.y + 30));
    send(KREventType::LeftMouseUp, KRPointMake(point.x, point.y + 30));
    EXPECT_EQ(delegate.methods(), (QStringList{kMouseDownHandle, kMouseDraggedHandle, kMouseUpHandle}));
    EXPECT_FALSE(row->handleButtonView()->isPressed()) << "the delegate took the click";
}

TEST_F(KRCheckListItemViewControlsTests, OtherButtonsGetFalseForTheirMouseEventsAndReachNoDelegate) {
    KRButtonView other;
    row->setDelegate(&delegate);
    delegate.mouseDownHandleAnswer = true;
    delegate.mouseDraggedHandleAnswer = true;
    delegate.mouseUpHandleAnswer = true;
    EXPECT_FALSE(row->buttonViewMouseDown(&other, mouseEvent(KREventType::LeftMouseDown)));
    EXPECT_FALSE(row->buttonViewMouseDragged(&other, mouseEvent(KREventType::LeftMouseDragged)));
    EXPECT_FALSE(row->buttonViewMouseUp(&other, mouseEvent(KREventType::LeftMouseUp)));
    EXPECT_TRUE(delegate.calls.empty());
    EXPECT_FALSE(row->isHighlighted());
}

TEST_F(KRCheckListItemViewControlsTests, HandleStaysPressedWhileTheRowIsDragged) {
    KRButtonView* handle = row->handleButtonView().get();
    KRButtonView* checkBox = row->checkBoxButtonView().get();
    EXPECT_FALSE(row->buttonViewValidatePressed(handle, false));
    EXPECT_TRUE(row->buttonViewValidatePressed(handle, true));
    row->setDragged(true);
    EXPECT_TRUE(row->buttonViewValidatePressed(handle, false));
    EXPECT_TRUE(row->buttonViewValidatePressed(handle, true));
    EXPECT_FALSE(row->buttonViewValidatePressed(checkBox, false));
    EXPECT_TRUE(row->buttonViewValidatePressed(checkBox, true));
    row->setDragged(false);
    EXPECT_FALSE(row->buttonViewValidatePressed(checkBox, false));
    EXPECT_TRUE(row->buttonViewValidatePressed(checkBox, true));
}

TEST_F(KRCheckListItemViewControlsTests, NeitherButtonCanBecomeKeyView) {
    EXPECT_FALSE(row->buttonViewValidateCanBecomeKeyView(row->checkBoxButtonView().get(), true));
    EXPECT_FALSE(row->buttonViewValidateCanBecomeKeyView(row->handleButtonView().get(), true));
    EXPECT_FALSE(row->checkBoxButtonView()->canBecomeKeyView());
    EXPECT_FALSE(row->handleButtonView()->canBecomeKeyView());
}

// Forwarding to the delegate
// ------------------------------------------------------------------------------------------------------

TEST_F(KRCheckListItemViewControlsTests, ForwardersAnswerTheDefaultsWithoutADelegate) {
    KRCheckListItemView* self = row.get();
    KRTextField* field = row->titleTextField().get();
    KRTextView editor;
    EXPECT_EQ(row->checkListItemViewValidateChangedTitle(self, QStringLiteral("Proposed")),
              QStringLiteral("Proposed"));
    EXPECT_EQ(row->checkListItemViewValidateChangedStatus(self, 2), 2u);
    EXPECT_FALSE(
        row->checkListItemViewTextViewDoCommandBySelector(self, &editor, KRSelector("insertNewline:")));
    EXPECT_EQ(row->checkListItemViewFieldEditorForView(self, field), nullptr);
    EXPECT_TRUE(row->checkListItemViewTextFieldValidateBecomeFirstResponder(self, field, true));
    EXPECT_FALSE(row->checkListItemViewTextFieldValidateBecomeFirstResponder(self, field, false));
    EXPECT_TRUE(row->checkListItemViewTextFieldValidateResignFirstResponder(self, field, true));
    EXPECT_FALSE(row->checkListItemViewTextFieldValidateResignFirstResponder(self, field, false));
    EXPECT_FALSE(row->checkListItemViewMouseDownHandle(self, mouseEvent(KREventType::LeftMouseDown)));
    EXPECT_FALSE(row->checkListItemViewMouseDraggedHandle(self, mouseEvent(KREventType::LeftMouseDragged)));
    EXPECT_FALSE(row->checkListItemViewMouseUpHandle(self, mouseEvent(KREventType::LeftMouseUp)));
    // The notifications have nobody to reach and change nothing.
    row->checkListItemViewWillUpdate(self);
    row->checkListItemViewDidUpdate(self);
    row->checkListItemViewDidChangeSizeThatFits(self);
    row->checkListItemViewDidEndEditingTitle(self);
    row->checkListItemViewWillChangeHighlighted(self);
    row->checkListItemViewDidChangeHighlighted(self);
    EXPECT_FALSE(row->isHighlighted());
    EXPECT_EQ(row->status(), 0u);
}

TEST_F(KRCheckListItemViewControlsTests, ForwardersHandTheirArgumentsToTheDelegateAndReturnItsAnswers) {
    row->setDelegate(&delegate);
    auto other = std::make_shared<KRCheckListItemView>();
    KRCheckListItemView* itemView = other.get(); // any row given is passed on as it is
    KRTextField* field = row->titleTextField().get();
    KRTextView editor;
    auto customEditor = std::make_shared<KRCheckListFieldEditor>();
    delegate.titleValidator = [](const QString& title) { return title.toUpper(); };
    delegate.statusAnswer = 7;
    delegate.doCommandAnswer = true;
    delegate.fieldEditorAnswer = customEditor;
    delegate.becomeAnswer = false;
    delegate.resignAnswer = true;
    delegate.mouseDownHandleAnswer = true;
    delegate.mouseDraggedHandleAnswer = true;
    delegate.mouseUpHandleAnswer = true;

    EXPECT_EQ(row->checkListItemViewValidateChangedTitle(itemView, QStringLiteral("milk")),
              QStringLiteral("MILK"));
    EXPECT_EQ(row->checkListItemViewValidateChangedStatus(itemView, 1), 7u);
    EXPECT_TRUE(
        row->checkListItemViewTextViewDoCommandBySelector(itemView, &editor, KRSelector("insertTab:")));
    row->checkListItemViewWillUpdate(itemView);
    row->checkListItemViewDidUpdate(itemView);
    row->checkListItemViewDidChangeSizeThatFits(itemView);
    row->checkListItemViewDidEndEditingTitle(itemView);
    row->checkListItemViewWillChangeHighlighted(itemView);
    row->checkListItemViewDidChangeHighlighted(itemView);
    EXPECT_TRUE(row->checkListItemViewMouseDownHandle(itemView, mouseEvent(KREventType::LeftMouseDown)));
    EXPECT_TRUE(
        row->checkListItemViewMouseDraggedHandle(itemView, mouseEvent(KREventType::LeftMouseDragged)));
    EXPECT_TRUE(row->checkListItemViewMouseUpHandle(itemView, mouseEvent(KREventType::LeftMouseUp)));
    EXPECT_EQ(row->checkListItemViewFieldEditorForView(itemView, field), customEditor);
    EXPECT_FALSE(row->checkListItemViewTextFieldValidateBecomeFirstResponder(itemView, field, true));
    EXPECT_TRUE(row->checkListItemViewTextFieldValidateResignFirstResponder(itemView, field, false));

    EXPECT_EQ(
        delegate.methods(),
        (QStringList{kValidateTitle, kValidateStatus, kDoCommand, kWillUpdate, kDidUpdate, kDidChangeSize,
                     kDidEndEditing, kWillHighlight, kDidHighlight, kMouseDownHandle, kMouseDraggedHandle,
                     kMouseUpHandle, kFieldEditor, kValidateBecome, kValidateResign}));
    for (const RecordedCall& call : delegate.calls) {
        EXPECT_EQ(call.itemView, itemView) << call.method.toStdString();
    }
    const std::vector<RecordedCall>& calls = delegate.calls;
    EXPECT_EQ(calls[0].title, QStringLiteral("milk"));
    EXPECT_EQ(calls[1].status, 1u);
    EXPECT_EQ(calls[2].textView, &editor);
    EXPECT_EQ(calls[2].selector, QStringLiteral("insertTab:"));
    EXPECT_EQ(calls[9].eventType, KREventType::LeftMouseDown);
    EXPECT_EQ(calls[10].eventType, KREventType::LeftMouseDragged);
    EXPECT_EQ(calls[11].eventType, KREventType::LeftMouseUp);
    EXPECT_EQ(calls[12].view, static_cast<KRView*>(field));
    EXPECT_EQ(calls[13].textField, field);
    EXPECT_TRUE(calls[13].proposed);
    EXPECT_EQ(calls[14].textField, field);
    EXPECT_FALSE(calls[14].proposed);
}

TEST_F(KRCheckListItemViewControlsTests, TitleFieldQuestionsReachTheDelegateWithTheRow) {
    row->setDelegate(&delegate);
    KRCheckListItemTitleTextField* field = row->titleTextField().get();
    KRTextView editor;
    auto customEditor = std::make_shared<KRCheckListFieldEditor>();
    delegate.fieldEditorAnswer = customEditor;
    delegate.doCommandAnswer = true;
    delegate.becomeAnswer = false;
    delegate.resignAnswer = false;

    EXPECT_TRUE(row->controlTextViewDoCommandBySelector(field, &editor, KRSelector("cancelOperation:")));
    EXPECT_EQ(row->checkListItemTitleTextFieldFieldEditorForView(field, field), customEditor);
    EXPECT_FALSE(row->checkListItemTitleTextFieldValidateBecomeFirstResponder(field, true));
    EXPECT_FALSE(row->checkListItemTitleTextFieldValidateResignFirstResponder(field, true));

    EXPECT_EQ(delegate.methods(), (QStringList{kDoCommand, kFieldEditor, kValidateBecome, kValidateResign}));
    for (const RecordedCall& call : delegate.calls) {
        EXPECT_EQ(call.itemView, row.get()) << call.method.toStdString();
    }
    EXPECT_EQ(delegate.calls[0].textView, &editor);
    EXPECT_EQ(delegate.calls[0].selector, QStringLiteral("cancelOperation:"));
    EXPECT_EQ(delegate.calls[1].view, static_cast<KRView*>(field));
    EXPECT_EQ(delegate.calls[2].textField, static_cast<KRTextField*>(field));
    EXPECT_TRUE(delegate.calls[2].proposed);
    EXPECT_EQ(delegate.calls[3].textField, static_cast<KRTextField*>(field));
    EXPECT_TRUE(delegate.calls[3].proposed);
}

// Editing the title
// ------------------------------------------------------------------------------------------------------

TEST_F(KRCheckListItemViewControlsTests, WithoutADelegateTheTitleIsEditedByTheWindowsFieldEditor) {
    ASSERT_EQ(row->delegate(), nullptr);
    KRTextView* editor = beginEditing();
    ASSERT_NE(editor, nullptr);
    EXPECT_EQ(editor, window.fieldEditor(false, nullptr).get());
    EXPECT_EQ(window.firstResponder(), editor);
}

TEST_F(KRCheckListItemViewControlsTests, DelegatesFieldEditorEditsTheTitle) {
    row->setDelegate(&delegate);
    auto customEditor = std::make_shared<KRCheckListFieldEditor>();
    delegate.fieldEditorAnswer = customEditor;
    KRTextView* editor = beginEditing();
    EXPECT_EQ(editor, customEditor.get());
    ASSERT_GE(delegate.count(kFieldEditor), 1);
    EXPECT_EQ(delegate.calls.front().method, kFieldEditor);
    EXPECT_EQ(delegate.calls.front().itemView, row.get());
    EXPECT_EQ(delegate.calls.front().view, static_cast<KRView*>(row->titleTextField().get()));
}

TEST_F(KRCheckListItemViewControlsTests, EveryChangeOfTheTextAsksTheDelegateToValidateTheTitle) {
    row->setDelegate(&delegate);
    KRTextView* editor = beginEditing();
    ASSERT_NE(editor, nullptr);
    delegate.calls.clear();
    editor->insertText(QStringLiteral("T"));
    editor->insertText(QStringLiteral("ea"));
    QStringList validated;
    for (const RecordedCall& call : delegate.calls) {
        if (call.method == kValidateTitle) {
            EXPECT_EQ(call.itemView, row.get());
            validated << call.title;
        }
    }
    EXPECT_EQ(validated, (QStringList{QStringLiteral("T"), QStringLiteral("Tea")}));
    EXPECT_EQ(row->title(), QStringLiteral("Tea"));
}

TEST_F(KRCheckListItemViewControlsTests, ADifferentAnswerReplacesTheTitle) {
    row->setDelegate(&delegate);
    delegate.titleValidator = [](const QString& title) { return title.toUpper(); };
    KRTextView* editor = beginEditing();
    ASSERT_NE(editor, nullptr);
    editor->insertText(QStringLiteral("b"));
    EXPECT_EQ(row->title(), QStringLiteral("B"));
    EXPECT_EQ(editor->string(), QStringLiteral("B"));
    editor->insertText(QStringLiteral("read"));
    EXPECT_EQ(row->title(), QStringLiteral("BREAD"));
    EXPECT_EQ(editor->string(), QStringLiteral("BREAD"));
}

TEST_F(KRCheckListItemViewControlsTests, FirstEditAlwaysReportsANewFittingSize) {
    row->setDelegate(&delegate);
    ASSERT_EQ(row->sizeThatFitsAfterLastLayout(), KRSizeZero);
    KRTextView* editor = beginEditing();
    ASSERT_NE(editor, nullptr);
    editor->insertText(QStringLiteral("a"));
    EXPECT_EQ(delegate.count(kDidChangeSize), 1);
    EXPECT_EQ(row->sizeThatFitsAfterLastLayout(), KRSizeMake(300, 28));
    EXPECT_TRUE(row->needsLayout());
    editor->insertText(QStringLiteral("b"));
    EXPECT_EQ(delegate.count(kDidChangeSize), 1) << "same fitting size, nothing to report";
}

TEST_F(KRCheckListItemViewControlsTests, WrappingToASecondLineReportsTheSizeChangeOnce) {
    row->setDelegate(&delegate);
    KRTextView* editor = beginEditing();
    ASSERT_NE(editor, nullptr);
    const QString text = QStringLiteral(
        "Remember to water the plants on the balcony and in the kitchen before leaving for the weekend");
    int wrapIndex = -1;
    for (int i = 0; i < text.size(); ++i) {
        SCOPED_TRACE(i);
        editor->insertText(QString(text[i]));
        const double height = row->sizeThatFits(row->bounds().size).height;
        if (wrapIndex < 0 && height == 46.0) {
            wrapIndex = i;
            EXPECT_EQ(delegate.count(kDidChangeSize), 2) << "one report for the first edit, one for the wrap";
            EXPECT_EQ(row->sizeThatFitsAfterLastLayout(), KRSizeMake(300, 46));
        } else if (wrapIndex < 0) {
            ASSERT_EQ(height, 28.0);
            EXPECT_EQ(delegate.count(kDidChangeSize), 1);
        } else {
            ASSERT_EQ(height, 46.0);
            EXPECT_EQ(delegate.count(kDidChangeSize), 2)
                << "more characters on the second line report nothing";
            if (i >= wrapIndex + 3) {
                break;
            }
        }
    }
    EXPECT_GT(wrapIndex, 0) << "the text never wrapped";
}

TEST_F(KRCheckListItemViewControlsTests, InsertedStyledTextTakesOnlyTheTitleAttributes) {
    row->setStatus(1); // finished looks: a title colour of its own
    KRTextView* editor = beginEditing();
    ASSERT_NE(editor, nullptr);
    editor->insertText(QStringLiteral("Plain "));
    QTextCharFormat styled;
    styled.setForeground(QColor(Qt::red));
    styled.setFontWeight(QFont::Bold);
    styled.setFontStrikeOut(true);
    styled.setFontPointSize(30);
    editor->setTypingAttributes(styled);
    editor->insertText(QStringLiteral("styled"));
    EXPECT_EQ(editor->string(), QStringLiteral("Plain styled"));
    EXPECT_ONLY_TITLE_ATTRIBUTES(*editor);
}

TEST_F(KRCheckListItemViewControlsTests, PastedStyledTextTakesOnlyTheTitleAttributes) {
    row->setDelegate(&delegate);
    KRPasteboard::setGeneralPasteboard(KRPasteboard::makeInMemory());
    const std::shared_ptr<KRPasteboard> pasteboard = KRPasteboard::generalPasteboard();
    pasteboard->declareTypes({KRPasteboardTypeHTML, KRPasteboardTypeString}, nullptr);
    pasteboard->setString(QStringLiteral("<span style=\"color:#ff0000; font-size:30px; font-weight:bold; "
                                         "text-decoration:line-through\">Red</span> <i>tape</i>"),
                          KRPasteboardTypeHTML);
    pasteboard->setString(QStringLiteral("Red tape"), KRPasteboardTypeString);
    KRTextView* editor = beginEditing();
    ASSERT_NE(editor, nullptr);
    ASSERT_TRUE(editor->isRichText());
    delegate.calls.clear();
    editor->doCommandBySelector(KRSelector("paste:"));
    EXPECT_EQ(editor->string(), QStringLiteral("Red tape"));
    EXPECT_EQ(row->title(), QStringLiteral("Red tape"));
    EXPECT_EQ(delegate.count(kDoCommand), 1) << "the delegate saw the paste first";
    EXPECT_EQ(delegate.count(kValidateTitle), 1);
    EXPECT_ONLY_TITLE_ATTRIBUTES(*editor);
}

TEST_F(KRCheckListItemViewControlsTests, EndingTheEditUpdatesTheRowThenTellsTheDelegate) {
    row->setDelegate(&delegate);
    KRTextView* editor = beginEditing();
    ASSERT_NE(editor, nullptr);
    editor->insertText(QStringLiteral("Done"));
    row->shapeView()->setBackgroundColor(sentinelColor());
    delegate.calls.clear();
    window.makeFirstResponder(nullptr);
    ASSERT_EQ(delegate.count(kDidEndEditing), 1);
    const RecordedCall& call = delegate.calls.back();
    EXPECT_EQ(call.method, kDidEndEditing);
    EXPECT_EQ(call.itemView, row.get());
    EXPECT_NE(call.shapeBackground, sentinelColor()) << "the update ran before the delegate heard of the end";
    EXPECT_EQ(row->title(), QStringLiteral("Done"));
    EXPECT_EQ(row->titleTextField()->attributedStringValue().leadingAttributes(), *row->titleAttributes());
}

TEST_F(KRCheckListItemViewControlsTests, EndingTheEditInsideABatchLeavesTheUpdateScheduled) {
    row->setDelegate(&delegate);
    row->shapeView()->setBackgroundColor(sentinelColor());
    row->beginUpdates();
    row->controlTextDidEndEditing(row->titleTextField().get());
    ASSERT_EQ(delegate.count(kDidEndEditing), 1);
    EXPECT_TRUE(delegate.calls.back().rowUpdateScheduled);
    EXPECT_EQ(row->shapeView()->backgroundColor(), sentinelColor());
    row->endUpdates();
    EXPECT_EQ(row->shapeView()->backgroundColor(), KRDefaults::clearColor());
}
