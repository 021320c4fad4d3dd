// The drop placeholder view: its look, its fitting size and its load and unload sequences.
#include "KRCheckListDropPlaceholderView.h"

#include "KRCheckListDefaults.h"
#include "KRCheckListItemViewTestSupport.h"

#include <gtest/gtest.h>

#include <memory>

using KRCheckListItemViewTesting::TraceRecorder;

namespace {

TEST(KRCheckListDropPlaceholderViewTests, LooksLikeARoundedRectangleInTheDropPlaceholderColour) {
    const KRCheckListDropPlaceholderView placeholder;
    EXPECT_EQ(placeholder.cornerRadius(), KRCheckListDefaults::cornerRadius());
    EXPECT_EQ(placeholder.backgroundColor(), KRCheckListDefaults::dropPlaceholderColor());
    EXPECT_EQ(placeholder.borderWidth(), 0.0);
    EXPECT_TRUE(placeholder.subviews().empty());
    EXPECT_FALSE(placeholder.isActive());
}

TEST(KRCheckListDropPlaceholderViewTests, SizeThatFitsIsTenByItemHeightWhateverIsProposed) {
    const KRCheckListDropPlaceholderView placeholder;
    const KRSize expected{10.0, KRCheckListDefaults::itemHeight()};
    EXPECT_EQ(placeholder.sizeThatFits(KRSizeZero), expected);
    EXPECT_EQ(placeholder.sizeThatFits(KRSizeMake(320, 600)), expected);
    EXPECT_EQ(placeholder.sizeThatFits(KRSizeMake(-5, 1.0e9)), expected);
    EXPECT_EQ(KRCheckListDefaults::dropPlaceholderWidth(), 10.0);
}

TEST(KRCheckListDropPlaceholderViewTests, ActiveIsAPlainProperty) {
    KRCheckListDropPlaceholderView placeholder;
    placeholder.setActive(true);
    EXPECT_TRUE(placeholder.isActive());
    EXPECT_EQ(placeholder.backgroundColor(), KRCheckListDefaults::dropPlaceholderColor());
    placeholder.setActive(false);
    EXPECT_FALSE(placeholder.isActive());
}

TEST(KRCheckListDropPlaceholderViewTests, LoadSetsUpThenHooksUpAndUnloadRunsTheReverse) {
    TraceRecorder trace;
    auto placeholder = std::make_unique<KRCheckListDropPlaceholderView>();
    const void* object = placeholder.get();
    EXPECT_EQ(trace.stepsOf(object), (QStringList{QStringLiteral("checkListDropPlaceholderViewSetUpSelf"),
                                                  QStringLiteral("checkListDropPlaceholderViewHookUp")}));
    trace.clear();
    placeholder.reset();
    EXPECT_EQ(trace.stepsOf(object),
              (QStringList{QStringLiteral("checkListDropPlaceholderViewBreakUp"),
                           QStringLiteral("checkListDropPlaceholderViewTearDownSelf")}));
}

TEST(KRCheckListDropPlaceholderViewTests, TearingDownClearsTheBackgroundColour) {
    KRCheckListDropPlaceholderView placeholder;
    placeholder.checkListDropPlaceholderViewUnload();
    EXPECT_FALSE(placeholder.backgroundColor().isValid());
    placeholder.checkListDropPlaceholderViewLoad();
    EXPECT_EQ(placeholder.backgroundColor(), KRCheckListDefaults::dropPlaceholderColor());
}

} // namespace
