// Tab and Shift+Tab walk the window's key views and, past either end, the Qt controls beside the host, in
// one loop: the focus always lands on something that takes keys, and comes back.
#include "Foundation/KRRunLoop.h"
#include "Platform/KRHostWidget.h"
#include "Text/KRKeyBindings.h"
#include "Text/KRTextField.h"
#include "Views/KRView.h"
#include "Views/KRWindow.h"

#include <QApplication>
#include <QKeyEvent>
#include <QLineEdit>
#include <QVBoxLayout>
#include <QWidget>

#include <gtest/gtest.h>

#include <memory>

namespace {

class KRHostWidgetFocusTests : public ::testing::Test {
protected:
    void SetUp() override {
        KRKeyBindings::setPlatformOverride(KRKeyBindings::Platform::Other);
        before = new QLineEdit(&top);
        host = new KRHostWidget(&top);
        after = new QLineEdit(&top);
        auto* layout = new QVBoxLayout(&top);
        layout->addWidget(before);
        layout->addWidget(host);
        layout->addWidget(after);
        host->setMinimumSize(300, 120);
        host->setContentView(std::make_shared<KRView>(KRRectMake(0, 0, 300, 120)));
        first = std::make_shared<KRTextField>(KRRectMake(10, 10, 200, 30));
        second = std::make_shared<KRTextField>(KRRectMake(10, 60, 200, 30));
        host->krWindow().contentView()->addSubview(first);
        host->krWindow().contentView()->addSubview(second);
        top.show();
        top.activateWindow();
        QApplication::processEvents();
    }
    void TearDown() override {
        host->krWindow().makeFirstResponder(nullptr);
        KRRunLoop::main().cancelAll();
        KRKeyBindings::setPlatformOverride(std::nullopt);
    }

    void pressTab(QWidget* target, bool backward = false) {
        const Qt::KeyboardModifiers modifiers = backward ? Qt::ShiftModifier : Qt::NoModifier;
        QKeyEvent press(QEvent::KeyPress, backward ? Qt::Key_Backtab : Qt::Key_Tab, modifiers,
                        backward ? QString() : QStringLiteral("\t"));
        QApplication::sendEvent(target, &press);
        QKeyEvent release(QEvent::KeyRelease, backward ? Qt::Key_Backtab : Qt::Key_Tab, modifiers,
                          backward ? QString() : QStringLiteral("\t"));
        QApplication::sendEvent(target, &release);
        QApplication::processEvents();
    }
    // The field being edited, whose editor is the window's first responder.
    KRTextField* editedField() const {
        for (KRTextField* field : {first.get(), second.get()}) {
            if (field->currentEditor() && host->krWindow().firstResponder() == field->currentEditor()) {
                return field;
            }
        }
        return nullptr;
    }

    QWidget top;
    QLineEdit* before = nullptr;
    KRHostWidget* host = nullptr;
    QLineEdit* after = nullptr;
    std::shared_ptr<KRTextField> first;
    std::shared_ptr<KRTextField> second;
};

TEST_F(KRHostWidgetFocusTests, TabGoesThroughTheKeyViewsThenOnToTheNextControlAndBackIn) {
    ASSERT_EQ(QApplication::activeWindow(), &top) << "the test window must be active to hold the focus";
    host->setFocus(Qt::OtherFocusReason);
    ASSERT_TRUE(host->krWindow().makeFirstResponder(first.get()));
    ASSERT_EQ(editedField(), first.get());

    pressTab(host);
    EXPECT_TRUE(host->hasFocus());
    EXPECT_EQ(editedField(), second.get());

    pressTab(host);
    EXPECT_TRUE(after->hasFocus())
        << "past the last key view the focus goes on to the control after the host";
    EXPECT_FALSE(host->krWindow().isKeyWindow());

    pressTab(after);
    EXPECT_TRUE(before->hasFocus()) << "the Qt window's own loop wraps around";
    pressTab(before);
    EXPECT_TRUE(host->hasFocus());
    EXPECT_TRUE(host->krWindow().isKeyWindow());
    EXPECT_EQ(editedField(), first.get()) << "coming in by Tab starts at the first key view";
}

TEST_F(KRHostWidgetFocusTests, ShiftTabWalksTheSameLoopBackward) {
    ASSERT_EQ(QApplication::activeWindow(), &top);
    host->setFocus(Qt::OtherFocusReason);
    ASSERT_TRUE(host->krWindow().makeFirstResponder(second.get()));

    pressTab(host, true);
    EXPECT_EQ(editedField(), first.get());
    pressTab(host, true);
    EXPECT_TRUE(before->hasFocus());

    pressTab(before, true);
    EXPECT_TRUE(after->hasFocus());
    pressTab(after, true);
    EXPECT_TRUE(host->hasFocus());
    EXPECT_EQ(editedField(), second.get()) << "coming in by Shift+Tab starts at the last key view";
}

TEST_F(KRHostWidgetFocusTests, WithNothingElseToFocusTheLoopWrapsInsideTheHost) {
    ASSERT_EQ(QApplication::activeWindow(), &top);
    before->setFocusPolicy(Qt::NoFocus);
    after->setEnabled(false);
    host->setFocus(Qt::OtherFocusReason);
    ASSERT_TRUE(host->krWindow().makeFirstResponder(second.get()));

    pressTab(host);
    EXPECT_TRUE(host->hasFocus());
    EXPECT_EQ(editedField(), first.get());
    pressTab(host, true);
    EXPECT_EQ(editedField(), second.get());
}

TEST_F(KRHostWidgetFocusTests, AWindowWithoutKeyViewsPassesTabOnAtOnce) {
    ASSERT_EQ(QApplication::activeWindow(), &top);
    first->removeFromSuperview();
    second->removeFromSuperview();
    host->setFocus(Qt::OtherFocusReason);
    pressTab(host);
    EXPECT_TRUE(after->hasFocus());
    host->setFocus(Qt::OtherFocusReason);
    pressTab(host, true);
    EXPECT_TRUE(before->hasFocus());
}

} // namespace
