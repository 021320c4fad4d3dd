#include "KRCheckListItemView.h"

#include <gtest/gtest.h>

TEST(KRCheckListItemViewSmokeTests, RowLaysOutOneLineTitleAt28) {
    auto row = std::make_shared<KRCheckListItemView>(KRRect{0, 0, 300, 28});
    row->setTitle(QStringLiteral("Buy milk"));
    EXPECT_EQ(row->sizeThatFits(KRSize{300, 28}).height, 28.0);
    row->setTitle(
        QStringLiteral("Buy milk and a great many other things that will need more than a single line here"));
    EXPECT_GT(row->sizeThatFits(KRSize{300, 28}).height, 28.0);
}
