#include "Foundation/KRIndexSet.h"

#include <gtest/gtest.h>

#include <chrono>

namespace {

std::vector<KRRange> rangesOf(std::initializer_list<KRRange> ranges) {
    return std::vector<KRRange>(ranges);
}

} // namespace

TEST(KRIndexSetTests, EmptySetAnswersNotFound) {
    const KRIndexSet set;
    EXPECT_TRUE(set.isEmpty());
    EXPECT_EQ(set.count(), 0u);
    EXPECT_EQ(set.firstIndex(), KRNotFound);
    EXPECT_EQ(set.lastIndex(), KRNotFound);
    EXPECT_EQ(set.indexGreaterThanIndex(0), KRNotFound);
    EXPECT_EQ(set.indexLessThanIndex(100), KRNotFound);
    EXPECT_EQ(set.indexGreaterThanOrEqualToIndex(0), KRNotFound);
    EXPECT_EQ(set.indexLessThanOrEqualToIndex(100), KRNotFound);
    EXPECT_FALSE(set.containsIndex(0));
    EXPECT_EQ(set.description(), QStringLiteral("(empty)"));
}

TEST(KRIndexSetTests, AdjacentAddsCompressIntoOneRange) {
    KRMutableIndexSet set;
    set.addIndex(2);
    set.addIndex(0);
    set.addIndex(1);
    EXPECT_EQ(set.ranges(), rangesOf({KRMakeRange(0, 3)}));
    set.addIndexesInRange(KRMakeRange(3, 2));
    EXPECT_EQ(set.ranges(), rangesOf({KRMakeRange(0, 5)}));
    EXPECT_EQ(set.count(), 5u);
}

TEST(KRIndexSetTests, AddingARangeBridgesTheGapBetweenRanges) {
    KRMutableIndexSet set(KRIndexSet{0, 1, 5, 6, 10});
    EXPECT_EQ(set.ranges(), rangesOf({KRMakeRange(0, 2), KRMakeRange(5, 2), KRMakeRange(10, 1)}));
    set.addIndexesInRange(KRMakeRange(2, 3));
    EXPECT_EQ(set.ranges(), rangesOf({KRMakeRange(0, 7), KRMakeRange(10, 1)}));
}

TEST(KRIndexSetTests, DuplicateAddsAreIgnored) {
    const KRIndexSet set{4, 4, 4};
    EXPECT_EQ(set.count(), 1u);
    EXPECT_EQ(set.indexSetByAddingIndex(4), set);
}

TEST(KRIndexSetTests, RemovingFromTheMiddleSplitsARange) {
    KRMutableIndexSet set(KRIndexSet(KRMakeRange(0, 10)));
    set.removeIndex(4);
    EXPECT_EQ(set.ranges(), rangesOf({KRMakeRange(0, 4), KRMakeRange(5, 5)}));
    set.removeIndexesInRange(KRMakeRange(2, 5));
    EXPECT_EQ(set.ranges(), rangesOf({KRMakeRange(0, 2), KRMakeRange(7, 3)}));
    set.removeIndexesInRange(KRMakeRange(0, 100));
    EXPECT_TRUE(set.isEmpty());
}

TEST(KRIndexSetTests, RemovingAcrossSeveralRangesKeepsTheOutsideParts) {
    KRMutableIndexSet set(KRIndexSet{0, 1, 2, 5, 6, 9, 10, 11});
    set.removeIndexesInRange(KRMakeRange(1, 10));
    EXPECT_EQ(set.ranges(), rangesOf({KRMakeRange(0, 1), KRMakeRange(11, 1)}));
    set.removeIndex(50);
    EXPECT_EQ(set.count(), 2u);
}

TEST(KRIndexSetTests, UnionMergesOverlappingAndAdjacentRanges) {
    const KRIndexSet a{0, 1, 2, 10};
    const KRIndexSet b{3, 4, 9, 20};
    const KRIndexSet sum = a.indexSetByAddingIndexes(b);
    EXPECT_EQ(sum.ranges(), rangesOf({KRMakeRange(0, 5), KRMakeRange(9, 2), KRMakeRange(20, 1)}));
    EXPECT_EQ(b.indexSetByAddingIndexes(a), sum);
    EXPECT_EQ(a.indexSetByAddingIndexes(KRIndexSet()), a);
}

TEST(KRIndexSetTests, MinusRemovesEveryIndexOfTheOtherSet) {
    const KRIndexSet a(KRMakeRange(0, 20));
    const KRIndexSet b{0, 5, 6, 7, 19, 30};
    const KRIndexSet difference = a.indexSetByRemovingIndexes(b);
    EXPECT_EQ(difference.ranges(), rangesOf({KRMakeRange(1, 4), KRMakeRange(8, 11)}));
    EXPECT_EQ(difference.count(), 15u);
    EXPECT_TRUE((KRIndexSet{1, 2}).indexSetByRemovingIndexes(KRIndexSet(KRMakeRange(0, 5))).isEmpty());
}

TEST(KRIndexSetTests, MinusWithARangeSpanningSeveralOfOurs) {
    const KRIndexSet a{0, 2, 4, 6, 8};
    const KRIndexSet b(KRMakeRange(1, 6));
    EXPECT_EQ(a.indexSetByRemovingIndexes(b), (KRIndexSet{0, 8}));
    KRMutableIndexSet mutableSet(a);
    mutableSet.removeIndexes(b);
    EXPECT_EQ(mutableSet, (KRIndexSet{0, 8}));
}

TEST(KRIndexSetTests, IntersectionKeepsOnlyCommonIndexes) {
    const KRIndexSet a(KRMakeRange(0, 10));
    const KRIndexSet b{3, 4, 9, 10, 11};
    EXPECT_EQ(a.indexSetByIntersectingIndexes(b), (KRIndexSet{3, 4, 9}));
    EXPECT_TRUE(a.indexSetByIntersectingIndexes(KRIndexSet{20, 30}).isEmpty());
    EXPECT_TRUE(a.indexSetByIntersectingIndexes(KRIndexSet()).isEmpty());
}

TEST(KRIndexSetTests, GreaterAndLessQueriesSkipGaps) {
    const KRIndexSet set{2, 3, 7};
    EXPECT_EQ(set.firstIndex(), 2u);
    EXPECT_EQ(set.lastIndex(), 7u);
    EXPECT_EQ(set.indexGreaterThanIndex(0), 2u);
    EXPECT_EQ(set.indexGreaterThanIndex(2), 3u);
    EXPECT_EQ(set.indexGreaterThanIndex(3), 7u);
    EXPECT_EQ(set.indexGreaterThanIndex(7), KRNotFound);
    EXPECT_EQ(set.indexLessThanIndex(7), 3u);
    EXPECT_EQ(set.indexLessThanIndex(3), 2u);
    EXPECT_EQ(set.indexLessThanIndex(2), KRNotFound);
    EXPECT_EQ(set.indexLessThanIndex(0), KRNotFound);
    EXPECT_EQ(set.indexGreaterThanOrEqualToIndex(3), 3u);
    EXPECT_EQ(set.indexGreaterThanOrEqualToIndex(4), 7u);
    EXPECT_EQ(set.indexLessThanOrEqualToIndex(6), 3u);
    EXPECT_EQ(set.indexLessThanOrEqualToIndex(100), 7u);
    EXPECT_EQ(set.indexGreaterThanIndex(KRUIntegerMax), KRNotFound);
}

TEST(KRIndexSetTests, ContainsChecksIndexesRangesAndSets) {
    const KRIndexSet set{1, 2, 3, 8};
    EXPECT_TRUE(set.containsIndex(1));
    EXPECT_TRUE(set.containsIndex(3));
    EXPECT_FALSE(set.containsIndex(4));
    EXPECT_FALSE(set.containsIndex(0));
    EXPECT_TRUE(set.containsIndexesInRange(KRMakeRange(1, 3)));
    EXPECT_FALSE(set.containsIndexesInRange(KRMakeRange(1, 4)));
    EXPECT_FALSE(set.containsIndexesInRange(KRMakeRange(3, 6)));
    EXPECT_TRUE(set.containsIndexes(KRIndexSet{2, 8}));
    EXPECT_FALSE(set.containsIndexes(KRIndexSet{2, 9}));
    EXPECT_TRUE(set.intersectsIndexesInRange(KRMakeRange(4, 5)));
    EXPECT_FALSE(set.intersectsIndexesInRange(KRMakeRange(4, 4)));
    EXPECT_FALSE(set.intersectsIndexesInRange(KRMakeRange(2, 0)));
}

TEST(KRIndexSetTests, EnumerationIsAscending) {
    const KRIndexSet set{9, 1, 5, 2};
    std::vector<KRUInteger> seen;
    set.enumerateIndexesUsingBlock([&](KRUInteger index, bool*) { seen.push_back(index); });
    EXPECT_EQ(seen, (std::vector<KRUInteger>{1, 2, 5, 9}));
    EXPECT_EQ(set.indexes(), seen);
}

TEST(KRIndexSetTests, EnumerationStopsWhenAsked) {
    const KRIndexSet set(KRMakeRange(0, 100));
    std::vector<KRUInteger> seen;
    set.enumerateIndexesUsingBlock([&](KRUInteger index, bool* stop) {
        seen.push_back(index);
        if (index == 2) {
            *stop = true;
        }
    });
    EXPECT_EQ(seen, (std::vector<KRUInteger>{0, 1, 2}));

    int rangesSeen = 0;
    KRIndexSet{0, 5, 10}.enumerateRangesUsingBlock([&](KRRange, bool* stop) {
        ++rangesSeen;
        *stop = true;
    });
    EXPECT_EQ(rangesSeen, 1);
}

TEST(KRIndexSetTests, IteratorVisitsEveryIndexInOrder) {
    const KRIndexSet set{0, 1, 4, 6, 7, 8};
    std::vector<KRUInteger> seen;
    for (KRUInteger index : set) {
        seen.push_back(index);
    }
    EXPECT_EQ(seen, (std::vector<KRUInteger>{0, 1, 4, 6, 7, 8}));
    EXPECT_TRUE(KRIndexSet().begin() == KRIndexSet().end());
}

TEST(KRIndexSetTests, DescriptionListsRangesAndSingles) {
    EXPECT_EQ((KRIndexSet{0, 1, 2, 5}).description(), QStringLiteral("[0-2, 5]"));
    EXPECT_EQ(KRIndexSet(7).description(), QStringLiteral("[7]"));
}

TEST(KRIndexSetTests, AddingToALargeContiguousSetStaysOneRangeAndIsFast) {
    KRMutableIndexSet set;
    const auto start = std::chrono::steady_clock::now();
    for (KRUInteger index = 0; index < 10000; ++index) {
        set.addIndex(index);
    }
    for (int round = 0; round < 10000; ++round) {
        set.addIndex(5000);
        EXPECT_TRUE(set.containsIndex(9999));
    }
    const auto elapsed = std::chrono::steady_clock::now() - start;
    EXPECT_EQ(set.ranges().size(), 1u);
    EXPECT_EQ(set.count(), 10000u);
    // Range storage keeps each operation independent of the index count; a per-index store would be far
    // slower than this generous bound.
    EXPECT_LT(std::chrono::duration<double>(elapsed).count(), 2.0);
}

TEST(KRIndexSetTests, ImmutableOperationsLeaveTheReceiverUnchanged) {
    const KRIndexSet set{1, 2, 3};
    const KRIndexSet added = set.indexSetByAddingIndexesInRange(KRMakeRange(10, 2));
    const KRIndexSet removed = set.indexSetByRemovingIndex(2);
    const KRIndexSet removedRange = set.indexSetByRemovingIndexesInRange(KRMakeRange(0, 2));
    EXPECT_EQ(set, (KRIndexSet{1, 2, 3}));
    EXPECT_EQ(added, (KRIndexSet{1, 2, 3, 10, 11}));
    EXPECT_EQ(removed, (KRIndexSet{1, 3}));
    EXPECT_EQ(removedRange, (KRIndexSet{2, 3}));
    KRMutableIndexSet mutableSet(set);
    mutableSet.addIndexes(KRIndexSet{4, 8});
    EXPECT_EQ(mutableSet.description(), QStringLiteral("[1-4, 8]"));
    mutableSet.removeAllIndexes();
    EXPECT_TRUE(mutableSet.isEmpty());
}
