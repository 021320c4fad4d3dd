#include "KRCheckListFieldEditor.h"
#include "KRCheckListItemView.h"

#include "Foundation/KRRunLoop.h"
#include "Platform/KRPasteboard.h"
#include "Views/KREvent.h"
#include "Views/KRWindow.h"

#include <QStringList>

#include <gtest/gtest.h>

#include <memory>

namespace {

// Takes clicks in the field editor when asked to, and records them.
class ClickTaker : public KRCheckListFieldEditorDelegate {
public:
    bool checkListFieldEditorMouseDown(KRCheckListFieldEditor* fieldEditor, const KREvent&) override {
        clicks << name;
        lastEditor = fieldEditor;
        return takesClicks;
    }
    QString name;
    QStringList clicks;
    KRCheckListFieldEditor* lastEditor = nullptr;
    bool takesClicks = true;
};

// A text view delegate that also takes clicks: the first link of the chain.
class ClickTakingTextDelegate : public KRObject, public KRTextViewDelegate, public ClickTaker {};

// A field's owner that takes clicks: the second link.
class ClickTakingFieldDelegate : public KRObject, public KRTextFieldDelegate, public ClickTaker {
public:
    bool controlTextViewDoCommandBySelector(KRTextField*, KRTextView*, const KRSelector& selector) override {
        commands << selector.name();
        return handlesCommands;
    }
    QStringList commands;
    bool handlesCommands = false;
};

// A row's owner (the list) that takes clicks: the third link.
class ClickTakingRowDelegate : public KRObject, public KRCheckListItemViewDelegate, public ClickTaker {
public:
    std::shared_ptr<KRTextView> checkListItemViewFieldEditorForView(KRCheckListItemView*, KRView*) override {
        return editor;
    }
    bool checkListItemViewTextViewDoCommandBySelector(KRCheckListItemView*, KRTextView*,
                                                      const KRSelector& selector) override {
        commands << selector.name();
        return handlesCommands;
    }
    std::shared_ptr<KRTextView> editor;
    QStringList commands;
    bool handlesCommands = false;
};

class KRCheckListFieldEditorTest : public ::testing::Test {
protected:
    void SetUp() override {
        KRTextView::installTextSystem();
        content = std::make_shared<KRView>(KRRect{0, 0, 400, 200});
        window.setContentView(content);
        editor = std::make_shared<KRCheckListFieldEditor>();
        editor->setFieldEditor(true);
        field = std::make_shared<KRTextField>(KRRect{20, 20, 200, 20});
        field->setBordered(false);
        field->setStringValue(QStringLiteral("Call the plumber"));
        content->addSubview(field);
        pasteboard = KRPasteboard::makeInMemory();
        KRPasteboard::setGeneralPasteboard(pasteboard);
    }
    void TearDown() override {
        window.makeFirstResponder(nullptr);
        KRPasteboard::setGeneralPasteboard(nullptr);
        KRRunLoop::main().cancelAll();
    }

    // Puts the editor over the field as the field's own editing would, with the caret at the end.
    void editField() {
        field->cell()->selectWithFrameInViewEditorDelegateStartLength(field->bounds(), field.get(), editor,
                                                                      field.get(), 16, 0);
        ASSERT_EQ(field->currentEditor(), editor.get());
    }
    KREvent clickAtStart() {
        const KRPoint start = editor->convertPointToView(KRPoint{1, 5}, nullptr);
        return KREvent::mouseEvent(KREventType::LeftMouseDown, start, 0, &window);
    }
    void putOnPasteboard(const QString& text) {
        pasteboard->declareTypes({KRPasteboardTypeString}, nullptr);
        pasteboard->setString(text, KRPasteboardTypeString);
    }

    KRWindow window;
    std::shared_ptr<KRView> content;
    std::shared_ptr<KRCheckListFieldEditor> editor;
    std::shared_ptr<KRTextField> field;
    std::shared_ptr<KRPasteboard> pasteboard;
};

} // namespace

TEST_F(KRCheckListFieldEditorTest, WithNoTakerInTheChainAClickPlacesTheCaret) {
    editField();
    EXPECT_FALSE(editor->checkListFieldEditorMouseDown(editor.get(), clickAtStart()));
    editor->mouseDown(clickAtStart());
    EXPECT_EQ(editor->selectedRange(), (KRRange{0, 0}));
}

TEST_F(KRCheckListFieldEditorTest, TheEditorsOwnDelegateIsAskedFirst) {
    ClickTakingTextDelegate direct;
    direct.name = QStringLiteral("direct");
    editor->setDelegate(&direct);
    EXPECT_TRUE(editor->checkListFieldEditorMouseDown(editor.get(), clickAtStart()));
    EXPECT_EQ(direct.clicks, QStringList{QStringLiteral("direct")});
    EXPECT_EQ(direct.lastEditor, editor.get());
    editor->setDelegate(nullptr);
}

TEST_F(KRCheckListFieldEditorTest, AFieldsDelegateTakesClicksAndAHandledClickLeavesTheSelection) {
    ClickTakingFieldDelegate owner;
    owner.name = QStringLiteral("field owner");
    field->setDelegate(&owner);
    editField();

    editor->mouseDown(clickAtStart());
    EXPECT_EQ(owner.clicks, QStringList{QStringLiteral("field owner")});
    EXPECT_EQ(editor->selectedRange(), (KRRange{16, 0}));

    owner.takesClicks = false;
    editor->mouseDown(clickAtStart());
    EXPECT_EQ(owner.clicks.size(), 2);
    EXPECT_EQ(editor->selectedRange(), (KRRange{0, 0}));
}

TEST_F(KRCheckListFieldEditorTest, ARowPassesClicksOnToItsDelegate) {
    auto row = std::make_shared<KRCheckListItemView>(KRRect{0, 100, 300, 28});
    content->addSubview(row);
    ClickTakingRowDelegate list;
    list.name = QStringLiteral("list");
    list.editor = editor;
    row->setDelegate(&list);
    row->setTitle(QStringLiteral("Book the tickets"));
    row->layoutIfNeeded();
    row->titleTextField()->setEditable(true);
    ASSERT_TRUE(window.makeFirstResponder(row->titleTextField().get()));
    ASSERT_EQ(row->titleTextField()->currentEditor(), editor.get());

    EXPECT_TRUE(editor->checkListFieldEditorMouseDown(editor.get(), clickAtStart()));
    EXPECT_EQ(list.clicks, QStringList{QStringLiteral("list")});

    row->setDelegate(nullptr);
    EXPECT_FALSE(editor->checkListFieldEditorMouseDown(editor.get(), clickAtStart()));
}

TEST_F(KRCheckListFieldEditorTest, PasteFromAKeyReachesTheDelegatesAsACommand) {
    ClickTakingFieldDelegate owner;
    owner.handlesCommands = true;
    field->setDelegate(&owner);
    editField();
    putOnPasteboard(QStringLiteral(" today"));

    editor->doCommandBySelector(KRSelector("paste:"));
    EXPECT_EQ(owner.commands, QStringList{QStringLiteral("paste:")});
    EXPECT_EQ(editor->string(), QStringLiteral("Call the plumber"));
}

TEST_F(KRCheckListFieldEditorTest, PasteFromTheMenuBecomesACommandToo) {
    ClickTakingFieldDelegate owner;
    owner.handlesCommands = true;
    field->setDelegate(&owner);
    editField();
    putOnPasteboard(QStringLiteral(" today"));

    EXPECT_TRUE(editor->tryToPerform(KRSelector("paste:"), nullptr));
    EXPECT_EQ(owner.commands, QStringList{QStringLiteral("paste:")});
    EXPECT_EQ(editor->string(), QStringLiteral("Call the plumber"));
}

TEST_F(KRCheckListFieldEditorTest, AnUnhandledPastePastesOnceWithoutComingBack) {
    ClickTakingFieldDelegate owner;
    field->setDelegate(&owner);
    editField();
    putOnPasteboard(QStringLiteral(" today"));

    EXPECT_TRUE(editor->tryToPerform(KRSelector("paste:"), nullptr));
    EXPECT_EQ(owner.commands, QStringList{QStringLiteral("paste:")});
    EXPECT_EQ(editor->string(), QStringLiteral("Call the plumber today"));
}

TEST_F(KRCheckListFieldEditorTest, SelectAllIsOfferedAsACommandAndFallsBackToSelectingEverything) {
    ClickTakingFieldDelegate owner;
    owner.handlesCommands = true;
    field->setDelegate(&owner);
    editField();

    editor->selectAll();
    EXPECT_EQ(owner.commands, QStringList{QStringLiteral("selectAll:")});
    EXPECT_EQ(editor->selectedRange(), (KRRange{16, 0}));

    owner.handlesCommands = false;
    EXPECT_TRUE(editor->tryToPerform(KRSelector("selectAll:"), nullptr));
    EXPECT_EQ(owner.commands.size(), 2);
    EXPECT_EQ(editor->selectedRange(), (KRRange{0, 16}));
}

TEST_F(KRCheckListFieldEditorTest, OtherCommandsTakeTheTextViewsUsualRoute) {
    ClickTakingFieldDelegate owner;
    field->setDelegate(&owner);
    editField();
    editor->doCommandBySelector(KRSelector("moveToBeginningOfLine:"));
    EXPECT_EQ(owner.commands, QStringList{QStringLiteral("moveToBeginningOfLine:")});
    EXPECT_EQ(editor->selectedRange(), (KRRange{0, 0}));
}

TEST_F(KRCheckListFieldEditorTest, TheEditorIsNeverNarrowerThanTheFieldItEdits) {
    editField();
    editor->setFrameSize(KRSize{50, 40});
    EXPECT_EQ(editor->frame().size, (KRSize{200, 40}));
    editor->setFrameSize(KRSize{320, 18});
    EXPECT_EQ(editor->frame().size, (KRSize{320, 18}));
}

TEST_F(KRCheckListFieldEditorTest, OutsideAFieldTheRequestedSizeIsUsed) {
    editor->setFrameSize(KRSize{50, 40});
    EXPECT_EQ(editor->frame().size, (KRSize{50, 40}));
    auto plainParent = std::make_shared<KRView>(KRRect{0, 0, 300, 30});
    auto clip = std::make_shared<KRView>(KRRect{0, 0, 300, 30});
    plainParent->addSubview(clip);
    clip->addSubview(editor);
    editor->setFrameSize(KRSize{60, 20});
    EXPECT_EQ(editor->frame().size, (KRSize{60, 20}));
}
