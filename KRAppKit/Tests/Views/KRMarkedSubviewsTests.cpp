#include "Views/KRMarkedSubviews.h"
#include "Views/KRView.h"

#include <gtest/gtest.h>

#include <array>
#include <vector>

namespace {

// The lists only keep the views' addresses; these views stand in for a superview and its subviews.
class KRMarkedSubviewsTest : public ::testing::Test {
protected:
    // Under a superview with subviews to spare, so that listing never stops.
    void list(const KRView* listing, KRView* view) {
        EXPECT_TRUE(lists.add(listing, view, 1000, [this](KRView* taken) { unlisted.push_back(taken); }));
    }

    // Under a superview of 16 subviews, where listing stops at the third.
    bool listUnderFew(KRView* view) {
        return lists.add(&superview, view, 16, [this](KRView* taken) { unlisted.push_back(taken); });
    }

    std::vector<KRView*> drain(const KRView* listing) {
        std::vector<KRView*> visited;
        KRMarkedSubviews::Round round(lists, listing);
        while (KRView* view = round.next()) {
            visited.push_back(view);
        }
        return visited;
    }

    KRMarkedSubviews lists;
    std::vector<KRView*> unlisted;
    KRView superview;
    KRView otherSuperview;
    std::array<KRView, 5> subviews;
};

TEST_F(KRMarkedSubviewsTest, ARoundTakesTheSubviewsInTheOrderTheyWereAdded) {
    list(&superview, &subviews[3]);
    list(&superview, &subviews[0]);
    list(&superview, &subviews[2]);

    EXPECT_EQ(drain(&superview), (std::vector<KRView*>{&subviews[3], &subviews[0], &subviews[2]}));
    EXPECT_TRUE(drain(&superview).empty()) << "a round takes what it visits off the list";
}

TEST_F(KRMarkedSubviewsTest, ASuperviewWithoutAListHasAnEmptyRound) {
    KRMarkedSubviews::Round round(lists, &superview);
    EXPECT_EQ(round.next(), nullptr);
    EXPECT_EQ(round.ahead(0), nullptr);
}

TEST_F(KRMarkedSubviewsTest, ListsOfDifferentSuperviewsDoNotMix) {
    list(&superview, &subviews[0]);
    list(&otherSuperview, &subviews[1]);
    list(&superview, &subviews[2]);

    EXPECT_EQ(drain(&otherSuperview), (std::vector<KRView*>{&subviews[1]}));
    EXPECT_EQ(drain(&superview), (std::vector<KRView*>{&subviews[0], &subviews[2]}));
}

TEST_F(KRMarkedSubviewsTest, ARemovedSubviewIsNotTaken) {
    list(&superview, &subviews[0]);
    list(&superview, &subviews[1]);
    list(&superview, &subviews[2]);
    lists.remove(&superview, &subviews[1]);
    lists.remove(&otherSuperview, &subviews[2]);

    EXPECT_EQ(drain(&superview), (std::vector<KRView*>{&subviews[0], &subviews[2]}));
}

TEST_F(KRMarkedSubviewsTest, ASubviewRemovedDuringARoundIsSkippedAndTheOthersKeepTheirPlaces) {
    for (KRView& subview : subviews) {
        list(&superview, &subview);
    }
    std::vector<KRView*> visited;
    {
        KRMarkedSubviews::Round round(lists, &superview);
        visited.push_back(round.next());
        lists.remove(&superview, &subviews[2]);
        while (KRView* view = round.next()) {
            visited.push_back(view);
        }
    }

    EXPECT_EQ(visited, (std::vector<KRView*>{&subviews[0], &subviews[1], &subviews[3], &subviews[4]}));
    EXPECT_TRUE(drain(&superview).empty());
}

TEST_F(KRMarkedSubviewsTest, SubviewsAddedDuringARoundWaitForTheNextOne) {
    list(&superview, &subviews[0]);
    std::vector<KRView*> firstRound;
    {
        KRMarkedSubviews::Round round(lists, &superview);
        while (KRView* view = round.next()) {
            firstRound.push_back(view);
            list(&superview, &subviews[1]);
        }
    }

    EXPECT_EQ(firstRound, (std::vector<KRView*>{&subviews[0]}));
    EXPECT_EQ(drain(&superview), (std::vector<KRView*>{&subviews[1]}));
}

TEST_F(KRMarkedSubviewsTest, ANestedRoundGoesOnFromTheOuterOneWhichThenEnds) {
    for (KRView& subview : subviews) {
        list(&superview, &subview);
    }
    std::vector<KRView*> outer;
    std::vector<KRView*> inner;
    {
        KRMarkedSubviews::Round round(lists, &superview);
        outer.push_back(round.next());
        outer.push_back(round.next());
        inner = drain(&superview);
        EXPECT_EQ(round.next(), nullptr);
    }

    EXPECT_EQ(outer, (std::vector<KRView*>{&subviews[0], &subviews[1]}));
    EXPECT_EQ(inner, (std::vector<KRView*>{&subviews[2], &subviews[3], &subviews[4]}));
    EXPECT_TRUE(drain(&superview).empty());
}

TEST_F(KRMarkedSubviewsTest, RemoveIfTakesOffTheMatchingSubviewsInAndOutOfARound) {
    for (KRView& subview : subviews) {
        list(&superview, &subview);
    }
    const auto oddOnes = [this](const KRView* view) { return view == &subviews[1] || view == &subviews[3]; };
    lists.removeIf(&superview, oddOnes);
    EXPECT_EQ(drain(&superview), (std::vector<KRView*>{&subviews[0], &subviews[2], &subviews[4]}));

    for (KRView& subview : subviews) {
        list(&superview, &subview);
    }
    std::vector<KRView*> visited;
    {
        KRMarkedSubviews::Round round(lists, &superview);
        visited.push_back(round.next());
        lists.removeIf(&superview, [this](const KRView* view) { return view != &subviews[4]; });
        while (KRView* view = round.next()) {
            visited.push_back(view);
        }
    }
    EXPECT_EQ(visited, (std::vector<KRView*>{&subviews[0], &subviews[4]}));
}

TEST_F(KRMarkedSubviewsTest, AForgottenSuperviewHasNothingListed) {
    list(&superview, &subviews[0]);
    list(&otherSuperview, &subviews[1]);
    lists.forget(&superview);

    EXPECT_TRUE(drain(&superview).empty());
    EXPECT_EQ(drain(&otherSuperview), (std::vector<KRView*>{&subviews[1]}));
}

TEST_F(KRMarkedSubviewsTest, AheadLooksFurtherIntoTheRoundOnly) {
    list(&superview, &subviews[0]);
    list(&superview, &subviews[1]);
    list(&superview, &subviews[2]);
    KRMarkedSubviews::Round round(lists, &superview);
    list(&superview, &subviews[3]);

    EXPECT_EQ(round.next(), &subviews[0]);
    EXPECT_EQ(round.ahead(0), &subviews[1]);
    EXPECT_EQ(round.ahead(1), &subviews[2]);
    EXPECT_EQ(round.ahead(2), nullptr) << "listed after the round started";
}

TEST_F(KRMarkedSubviewsTest, AListRefusesAGoodShareOfTheSubviewsAndEmpties) {
    EXPECT_TRUE(listUnderFew(&subviews[0]));
    EXPECT_TRUE(listUnderFew(&subviews[1]));
    EXPECT_FALSE(listUnderFew(&subviews[2]));
    EXPECT_EQ(unlisted, (std::vector<KRView*>{&subviews[0], &subviews[1]}));
    EXPECT_TRUE(drain(&superview).empty());

    EXPECT_TRUE(listUnderFew(&subviews[3]));
    EXPECT_EQ(drain(&superview), (std::vector<KRView*>{&subviews[3]}));
}

TEST_F(KRMarkedSubviewsTest, ListingGoesOnPastTheShareDuringARound) {
    std::vector<KRView*> firstRound;
    {
        KRMarkedSubviews::Round round(lists, &superview);
        for (KRView& subview : subviews) {
            EXPECT_TRUE(listUnderFew(&subview));
        }
        EXPECT_EQ(round.next(), nullptr);
    }

    EXPECT_EQ(drain(&superview),
              (std::vector<KRView*>{&subviews[0], &subviews[1], &subviews[2], &subviews[3], &subviews[4]}));
    EXPECT_TRUE(unlisted.empty());
}

} // namespace
