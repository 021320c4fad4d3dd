#include "KRCheckListFieldEditor.h"
#include "KRCheckListItemTitleTextField.h"

#include "Foundation/KRRunLoop.h"
#include "Foundation/KRTrace.h"
#include "Views/KRWindow.h"

#include <QImage>
#include <QPainter>
#include <QStringList>

#include <gtest/gtest.h>

#include <memory>

namespace {

// A title field's owner that records what it is asked and answers as configured.
class RecordingTitleFieldDelegate : public KRObject, public KRCheckListItemTitleTextFieldDelegate {
public:
    std::shared_ptr<KRTextView>
    checkListItemTitleTextFieldFieldEditorForView(KRCheckListItemTitleTextField* field,
                                                  KRView* view) override {
        calls << QStringLiteral("fieldEditorForView");
        lastField = field;
        lastView = view;
        return editor;
    }
    bool checkListItemTitleTextFieldValidateBecomeFirstResponder(KRCheckListItemTitleTextField*,
                                                                 bool proposed) override {
        calls << QStringLiteral("become:%1").arg(proposed);
        return proposed && allowsBecome;
    }
    bool checkListItemTitleTextFieldValidateResignFirstResponder(KRCheckListItemTitleTextField*,
                                                                 bool proposed) override {
        calls << QStringLiteral("resign:%1").arg(proposed);
        return proposed;
    }

    QStringList calls;
    std::shared_ptr<KRTextView> editor;
    bool allowsBecome = true;
    KRCheckListItemTitleTextField* lastField = nullptr;
    KRView* lastView = nullptr;
};

class KRCheckListItemTitleTextFieldTest : public ::testing::Test {
protected:
    void SetUp() override {
        KRTextView::installTextSystem();
        content = std::make_shared<KRView>(KRRect{0, 0, 400, 200});
        window.setContentView(content);
        field = std::make_shared<KRCheckListItemTitleTextField>(KRRect{20, 20, 200, 18});
        field->setEditable(true);
        field->setStringValue(QStringLiteral("Water the plants"));
        content->addSubview(field);
        other = std::make_shared<KRCheckListItemTitleTextField>(KRRect{20, 60, 200, 18});
        other->setEditable(true);
        content->addSubview(other);
    }
    void TearDown() override {
        window.makeFirstResponder(nullptr);
        KRRunLoop::main().cancelAll();
    }

    KRWindow window;
    std::shared_ptr<KRView> content;
    std::shared_ptr<KRCheckListItemTitleTextField> field;
    std::shared_ptr<KRCheckListItemTitleTextField> other;
    RecordingTitleFieldDelegate delegate;
};

QStringList stepsOf(const std::vector<std::pair<quintptr, QString>>& steps, quintptr object) {
    QStringList result;
    for (const auto& [owner, step] : steps) {
        if (owner == object) {
            result << step;
        }
    }
    return result;
}

} // namespace

TEST(KRCheckListItemTitleTextFieldLifecycleTests, LoadsAndUnloadsInMirroredOrder) {
    // Addresses only identify the steps' objects; they are compared after the objects are gone.
    std::vector<std::pair<quintptr, QString>> steps;
    KRTrace::setSink([&](const void* object, const char* step) {
        steps.emplace_back(reinterpret_cast<quintptr>(object), QString::fromLatin1(step));
    });
    quintptr fieldAddress = 0;
    quintptr cellAddress = 0;
    {
        KRCheckListItemTitleTextField field;
        fieldAddress = reinterpret_cast<quintptr>(&field);
        cellAddress = reinterpret_cast<quintptr>(field.titleTextFieldCell().get());
    }
    KRTrace::setSink({});

    EXPECT_EQ(
        stepsOf(steps, fieldAddress),
        (QStringList{"checkListItemTitleTextFieldSetUpSelf", "checkListItemTitleTextFieldSetUpCell",
                     "checkListItemTitleTextFieldHookUp", "checkListItemTitleTextFieldBreakUp",
                     "checkListItemTitleTextFieldTearDownCell", "checkListItemTitleTextFieldTearDownSelf"}));
    EXPECT_EQ(stepsOf(steps, cellAddress),
              (QStringList{"checkListItemTitleTextfieldCellSetUpSelf",
                           "checkListItemTitleTextfieldCellHookUp", "checkListItemTitleTextfieldCellBreakUp",
                           "checkListItemTitleTextfieldCellTearDownSelf"}));
}

TEST(KRCheckListItemTitleTextFieldLifecycleTests, TheFieldInstallsItsOwnCellAndIsItsDelegate) {
    KRCheckListItemTitleTextField field;
    ASSERT_TRUE(field.titleTextFieldCell());
    EXPECT_EQ(field.cell(), field.titleTextFieldCell().get());
    EXPECT_EQ(field.titleTextFieldCell()->delegate(),
              static_cast<KRCheckListItemTitleTextFieldCellDelegate*>(&field));
    EXPECT_EQ(field.titleTextFieldCell()->stringValue(), QString());
}

TEST(KRCheckListItemTitleTextFieldLifecycleTests, AnOrdinaryControlDelegateIsNotATitleFieldDelegate) {
    class PlainDelegate : public KRObject, public KRTextFieldDelegate {};
    PlainDelegate plain;
    KRCheckListItemTitleTextField field;
    field.setDelegate(&plain);
    EXPECT_EQ(field.KRTextField::delegate(), static_cast<KRTextFieldDelegate*>(&plain));
    EXPECT_EQ(field.delegate(), nullptr);
    EXPECT_EQ(field.checkListItemTitleTextFieldFieldEditorForView(&field, &field), nullptr);
    EXPECT_FALSE(field.checkListItemTitleTextFieldValidateBecomeFirstResponder(&field, false));
    EXPECT_TRUE(field.checkListItemTitleTextFieldValidateResignFirstResponder(&field, true));
}

TEST_F(KRCheckListItemTitleTextFieldTest, WithoutADelegateTheFieldEditsWithTheWindowsEditor) {
    ASSERT_TRUE(window.makeFirstResponder(field.get()));
    KRTextView* editor = field->currentEditor();
    ASSERT_NE(editor, nullptr);
    EXPECT_EQ(editor, window.fieldEditor(false, nullptr).get());
    EXPECT_EQ(window.firstResponder(), editor);
}

TEST_F(KRCheckListItemTitleTextFieldTest, TheCellTakesTheEditorTheFieldsDelegateSupplies) {
    auto listEditor = std::make_shared<KRCheckListFieldEditor>();
    listEditor->setFieldEditor(true);
    delegate.editor = listEditor;
    field->setDelegate(&delegate);

    EXPECT_EQ(field->titleTextFieldCell()->fieldEditorForView(field.get()), listEditor);
    EXPECT_EQ(delegate.lastField, field.get());
    EXPECT_EQ(delegate.lastView, field.get());

    ASSERT_TRUE(window.makeFirstResponder(field.get()));
    EXPECT_EQ(field->currentEditor(), listEditor.get());
    EXPECT_EQ(listEditor->string(), QStringLiteral("Water the plants"));
}

TEST_F(KRCheckListItemTitleTextFieldTest, ANullAnswerFallsBackToTheWindowsEditor) {
    field->setDelegate(&delegate);
    EXPECT_EQ(field->titleTextFieldCell()->fieldEditorForView(field.get()), nullptr);
    ASSERT_TRUE(window.makeFirstResponder(field.get()));
    EXPECT_EQ(field->currentEditor(), window.fieldEditor(false, nullptr).get());
    EXPECT_TRUE(delegate.calls.contains(QStringLiteral("fieldEditorForView")));
}

TEST_F(KRCheckListItemTitleTextFieldTest, BecomingFirstResponderIsJudgedByTheDelegateWithTheBaseAnswer) {
    field->setDelegate(&delegate);
    EXPECT_TRUE(field->becomeFirstResponder());
    EXPECT_EQ(delegate.calls.last(), QStringLiteral("become:1"));

    delegate.calls.clear();
    delegate.allowsBecome = false;
    other->setDelegate(&delegate);
    EXPECT_FALSE(other->becomeFirstResponder());
    EXPECT_EQ(delegate.calls.last(), QStringLiteral("become:1"));
}

TEST_F(KRCheckListItemTitleTextFieldTest, ANonEditableFieldProposesNoToItsDelegate) {
    field->setEditable(false);
    field->setSelectable(false);
    field->setDelegate(&delegate);
    EXPECT_FALSE(field->becomeFirstResponder());
    EXPECT_EQ(delegate.calls, QStringList{QStringLiteral("become:0")});
}

TEST_F(KRCheckListItemTitleTextFieldTest, ResigningAsksTheDelegatesBecomeMethodNotItsResignMethod) {
    field->setDelegate(&delegate);
    EXPECT_TRUE(field->resignFirstResponder());
    EXPECT_EQ(delegate.calls, QStringList{QStringLiteral("become:1")});

    delegate.calls.clear();
    delegate.allowsBecome = false;
    EXPECT_FALSE(field->resignFirstResponder());
    EXPECT_FALSE(delegate.calls.contains(QStringLiteral("resign:1")));
}

TEST_F(KRCheckListItemTitleTextFieldTest, WithoutADelegateTheProposalsStand) {
    EXPECT_TRUE(field->checkListItemTitleTextFieldValidateBecomeFirstResponder(field.get(), true));
    EXPECT_FALSE(field->checkListItemTitleTextFieldValidateBecomeFirstResponder(field.get(), false));
    EXPECT_TRUE(field->checkListItemTitleTextFieldValidateResignFirstResponder(field.get(), true));
    EXPECT_FALSE(field->checkListItemTitleTextFieldValidateResignFirstResponder(field.get(), false));
    EXPECT_EQ(field->checkListItemTitleTextFieldFieldEditorForView(field.get(), field.get()), nullptr);
    EXPECT_EQ(field->titleTextFieldCell()->checkListItemTitleTextFieldCellFieldEditorForView(
                  field->titleTextFieldCell().get(), field.get()),
              nullptr);
}

TEST_F(KRCheckListItemTitleTextFieldTest, TheFieldNeverDrawsAFocusRing) {
    QImage image(64, 32, QImage::Format_ARGB32_Premultiplied);
    image.fill(Qt::transparent);
    {
        QPainter painter(&image);
        painter.setPen(QPen(Qt::black, 3));
        painter.setBrush(Qt::black);
        field->drawFocusRingMask(painter);
    }
    QImage blank(image.size(), image.format());
    blank.fill(Qt::transparent);
    EXPECT_EQ(image, blank);
}

TEST_F(KRCheckListItemTitleTextFieldTest, TheCellPassesAnEditOnToItsBaseUnchanged) {
    auto editor = std::make_shared<KRCheckListFieldEditor>();
    editor->setFieldEditor(true);
    field->titleTextFieldCell()->editWithFrameInViewEditorDelegateEvent(KRRect{0, 0, 200, 18}, field.get(),
                                                                        editor, field.get(), nullptr);
    EXPECT_EQ(field->titleTextFieldCell()->currentEditor(), editor.get());
    EXPECT_EQ(editor->delegate(), static_cast<KRTextViewDelegate*>(field.get()));
    EXPECT_EQ(editor->superview()->superview(), field.get());
    EXPECT_EQ(window.firstResponder(), editor.get());
}
