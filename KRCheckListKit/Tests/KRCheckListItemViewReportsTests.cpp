#include "KRCheckListItemViewReports.h"

#include "KRCheckListItemView.h"

#include <gtest/gtest.h>

#include <memory>
#include <vector>

namespace {

class KRCheckListItemViewReportsTests : public ::testing::Test {
protected:
    void makeRows(int count) {
        for (int i = 0; i < count; ++i) {
            rows.push_back(std::make_shared<KRCheckListItemView>());
        }
    }
    std::vector<KRUInteger> take() {
        KRMutableIndexSet indexes;
        reports.takeIndexes(rows, indexes);
        return KRIndexSet(indexes).indexes();
    }

    std::vector<std::shared_ptr<KRCheckListItemView>> rows;
    KRCheckListItemViewReports reports;
};

TEST_F(KRCheckListItemViewReportsTests, StartsWithEveryRowReported) {
    EXPECT_TRUE(reports.allReported());
    EXPECT_FALSE(reports.isEmpty());
    reports.clear();
    EXPECT_FALSE(reports.allReported());
    EXPECT_TRUE(reports.isEmpty());
}

TEST_F(KRCheckListItemViewReportsTests, FindsTheIndexesOfTheReportedRowsOnceEach) {
    makeRows(10);
    reports.clear();
    reports.report(rows[7].get());
    reports.report(rows[2].get());
    reports.report(rows[7].get());

    EXPECT_EQ(take(), (std::vector<KRUInteger>{2, 7}));
    EXPECT_TRUE(reports.isEmpty());
    EXPECT_TRUE(take().empty());
}

TEST_F(KRCheckListItemViewReportsTests, RowsOutsideTheListAreNotFound) {
    makeRows(5);
    const auto stranger = std::make_shared<KRCheckListItemView>();
    reports.clear();
    reports.report(stranger.get());
    reports.report(rows[4].get());

    EXPECT_EQ(take(), (std::vector<KRUInteger>{4}));
}

// The first look goes to the rows around the last one found; rows far from it are still found.
TEST_F(KRCheckListItemViewReportsTests, FindsRowsNearAndFarFromTheLastOneFound) {
    makeRows(300);
    reports.clear();
    reports.report(rows[150].get());
    EXPECT_EQ(take(), (std::vector<KRUInteger>{150}));

    reports.report(rows[151].get());
    reports.report(rows[140].get());
    EXPECT_EQ(take(), (std::vector<KRUInteger>{140, 151}));

    reports.report(rows[149].get());
    reports.report(rows[3].get());
    reports.report(rows[299].get());
    EXPECT_EQ(take(), (std::vector<KRUInteger>{3, 149, 299}));
}

TEST_F(KRCheckListItemViewReportsTests, TooManyReportsCountAsEveryRow) {
    makeRows(100);
    reports.clear();
    for (int i = 0; i < 64; ++i) {
        reports.report(rows[static_cast<std::size_t>(i)].get());
    }
    EXPECT_FALSE(reports.allReported());

    reports.report(rows[64].get());

    EXPECT_TRUE(reports.allReported());
    // Nothing is found then: the caller visits every row instead.
    EXPECT_TRUE(take().empty());
    reports.report(rows[1].get());
    EXPECT_TRUE(reports.allReported());
}

} // namespace
