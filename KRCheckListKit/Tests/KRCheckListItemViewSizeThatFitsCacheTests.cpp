// A row keeps its last fitting size: a list asks every row on every layout pass, and most rows have not
// changed. The kept answer must always be the one a fresh layout would give.
#include "KRCheckListItemView.h"

#include "KRCheckListItemViewTestSupport.h"

#include "Text/KRTextView.h"
#include "Views/KRWindow.h"

#include <gtest/gtest.h>

#include <memory>

namespace {

constexpr double kRowWidth = 300.0;
const QString kLongTitle =
    QStringLiteral("Book flights to Lisbon, a hotel near Alfama and a table at the fado "
                   "place on Friday, and email Sam about the slides before the review");

class KRCheckListItemViewSizeThatFitsCacheTests : public ::testing::Test {
protected:
    KRSize fresh(KRSize size) const { return row->checkListItemViewLayoutForSize(size).sizeThatFits; }
    void expectFresh(KRSize size, int line) const {
        SCOPED_TRACE(testing::Message() << "fitting size checked at line " << line);
        EXPECT_EQ(row->sizeThatFits(size), fresh(size));
    }

    std::shared_ptr<KRCheckListItemView> row =
        std::make_shared<KRCheckListItemView>(KRRectMake(0, 0, kRowWidth, 28));
};

} // namespace

TEST_F(KRCheckListItemViewSizeThatFitsCacheTests, TheSameWidthAndTitleGetTheKeptAnswer) {
    row->setTitle(kLongTitle);
    const KRSize first = row->sizeThatFits(KRSizeMake(kRowWidth, 1000));
    EXPECT_EQ(first, fresh(KRSizeMake(kRowWidth, 1000)));
    EXPECT_GT(first.height, 28.0);
    // Only the width counts, as in a fresh layout.
    EXPECT_EQ(row->sizeThatFits(KRSizeMake(kRowWidth, 5)), first);

    // Given again without measuring: the handle's insets, fixed at set-up and so not compared, show it.
    row->handleButtonView()->setEdgeInsets(KREdgeInsets{4.0, 120.0, 2.0, 4.0});
    EXPECT_EQ(row->sizeThatFits(KRSizeMake(kRowWidth, 1000)), first);
    EXPECT_NE(fresh(KRSizeMake(kRowWidth, 1000)), first);
}

TEST_F(KRCheckListItemViewSizeThatFitsCacheTests, AnotherWidthIsMeasuredAfresh) {
    row->setTitle(kLongTitle);
    expectFresh(KRSizeMake(kRowWidth, 28), __LINE__);
    expectFresh(KRSizeMake(180, 28), __LINE__);
    expectFresh(KRSizeMake(kRowWidth, 28), __LINE__);
}

TEST_F(KRCheckListItemViewSizeThatFitsCacheTests, ANewTitleIsMeasuredAfreshHoweverItIsSet) {
    expectFresh(KRSizeMake(kRowWidth, 28), __LINE__);
    row->setTitle(kLongTitle);
    expectFresh(KRSizeMake(kRowWidth, 28), __LINE__);
    row->titleTextField()->setStringValue(QStringLiteral("Short"));
    expectFresh(KRSizeMake(kRowWidth, 28), __LINE__);
    row->update([&] { row->setTitle(kLongTitle + kLongTitle); });
    expectFresh(KRSizeMake(kRowWidth, 28), __LINE__);
    row->titleTextField()->setBordered(true);
    expectFresh(KRSizeMake(kRowWidth, 28), __LINE__);
    row->setTitle(QString());
    EXPECT_EQ(row->sizeThatFits(KRSizeMake(kRowWidth, 28)).height, 28.0);
}

TEST_F(KRCheckListItemViewSizeThatFitsCacheTests, StateChangesThatDoNotTouchTheTitleKeepTheAnswer) {
    row->setTitle(kLongTitle);
    const KRSize before = row->sizeThatFits(KRSizeMake(kRowWidth, 28));
    row->setSelected(true);
    row->setDrawsBottomDivider(true);
    row->setStatus(2);
    row->setStatus(1);
    expectFresh(KRSizeMake(kRowWidth, 28), __LINE__);
    EXPECT_EQ(row->sizeThatFits(KRSizeMake(kRowWidth, 28)), before);
}

TEST_F(KRCheckListItemViewSizeThatFitsCacheTests, WhileTheTitleIsEditedWhatIsTypedIsMeasured) {
    KRTextView::installTextSystem();
    KRWindow window;
    auto content = std::make_shared<KRView>(KRRectMake(0, 0, 400, 400));
    window.setContentView(content);
    content->addSubview(row);
    row->setTitle(QStringLiteral("Short"));
    row->layoutIfNeeded();
    const KRSize before = row->sizeThatFits(KRSizeMake(kRowWidth, 28));
    row->titleTextField()->setEditable(true);
    ASSERT_TRUE(window.makeFirstResponder(row->titleTextField().get()));
    KRTextView* editor = row->titleTextField()->currentEditor();
    ASSERT_NE(editor, nullptr);
    editor->setSelectedRange(KRRange{5, 0});
    editor->insertText(
        QStringLiteral(" and then a great many more words, enough to wrap the title twice over"));
    const KRSize typed = row->sizeThatFits(KRSizeMake(kRowWidth, 28));
    EXPECT_GT(typed.height, before.height);
    EXPECT_EQ(typed, fresh(KRSizeMake(kRowWidth, 28)));
    window.makeFirstResponder(nullptr);
    expectFresh(KRSizeMake(kRowWidth, 28), __LINE__);
}

namespace {

// Counts what the row reports of the states a list keeps about it.
class ReportCountingDelegate : public KRObject, public KRCheckListItemViewDelegate {
public:
    void checkListItemViewDidStopShowingEmptyPlaceholder(KRCheckListItemView*) override {
        ++placeholderReports;
    }
    void checkListItemViewDidInvalidateSizeThatFits(KRCheckListItemView*) override { ++sizeReports; }
    void checkListItemViewDidChangeFrame(KRCheckListItemView*) override { ++frameReports; }

    int placeholderReports = 0;
    int sizeReports = 0;
    int frameReports = 0;
};

class KRCheckListItemViewReportTests : public KRCheckListItemViewSizeThatFitsCacheTests {
protected:
    void SetUp() override { row->setDelegate(delegate.get()); }
    void TearDown() override { row->setDelegate(nullptr); }

    std::shared_ptr<ReportCountingDelegate> delegate = std::make_shared<ReportCountingDelegate>();
};

} // namespace

// While the row keeps its answer, whoever keeps it too may: every end of a kept answer is reported.
TEST_F(KRCheckListItemViewReportTests, EveryEndOfAKeptSizeIsReported) {
    row->setTitle(QStringLiteral("Short"));
    row->sizeThatFits(KRSizeMake(kRowWidth, 28));
    ASSERT_TRUE(row->keepsSizeThatFits());
    const int before = delegate->sizeReports;

    row->setTitle(kLongTitle);
    EXPECT_FALSE(row->keepsSizeThatFits());
    EXPECT_GT(delegate->sizeReports, before);

    row->sizeThatFits(KRSizeMake(kRowWidth, 28));
    ASSERT_TRUE(row->keepsSizeThatFits());
    const int beforeStatus = delegate->sizeReports;
    // A canceled item's check box shows another image, whose size the next answer measures.
    row->setStatus(2);
    row->updateIfNeeded();
    EXPECT_FALSE(row->keepsSizeThatFits());
    EXPECT_GT(delegate->sizeReports, beforeStatus);
}

TEST_F(KRCheckListItemViewReportTests, EveryFrameChangeIsReportedAndNothingElse) {
    row->setFrame(KRRectMake(0, 0, kRowWidth, 28));
    const int before = delegate->frameReports;
    row->setFrame(KRRectMake(0, 0, kRowWidth, 28));
    EXPECT_EQ(delegate->frameReports, before);

    row->setFrameOrigin(KRPointMake(0, 40));
    EXPECT_EQ(delegate->frameReports, before + 1);
    row->setFrameSize(KRSizeMake(kRowWidth, 56));
    EXPECT_EQ(delegate->frameReports, before + 2);
}

TEST_F(KRCheckListItemViewReportTests, StoppingToShowAnEmptyPlaceholderIsReported) {
    row->setPlaceholder(QString());
    ASSERT_TRUE(row->showsCurrentEmptyPlaceholder());
    const int before = delegate->placeholderReports;

    row->setPlaceholder(QStringLiteral("Add an item"));
    EXPECT_FALSE(row->showsCurrentEmptyPlaceholder());
    EXPECT_EQ(delegate->placeholderReports, before + 1);

    // Still not showing one: nothing new to report.
    row->setPlaceholder(QStringLiteral("Another"));
    EXPECT_EQ(delegate->placeholderReports, before + 1);

    row->setPlaceholder(QString());
    row->clearPlaceholderOfTitleCell();
    EXPECT_FALSE(row->showsCurrentEmptyPlaceholder());
    EXPECT_EQ(delegate->placeholderReports, before + 2);
}
