#include "Foundation/KRCompactArray.h"

#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <vector>

namespace {

std::vector<std::string> contents(const KRCompactArray<std::string>& array) {
    return std::vector<std::string>(array.begin(), array.end());
}

TEST(KRCompactArrayTests, AnEmptyArrayIsOnePointerAndHoldsNoBlock) {
    const KRCompactArray<std::shared_ptr<int>> array;
    EXPECT_EQ(sizeof(array), sizeof(void*));
    EXPECT_TRUE(array.empty());
    EXPECT_EQ(array.capacity(), 0u);
    EXPECT_EQ(array.begin(), array.end());
}

TEST(KRCompactArrayTests, InsertKeepsTheOrderAtEitherEndAndInTheMiddle) {
    KRCompactArray<std::string> array;
    array.push_back("b");
    array.insert(array.begin(), "a");
    array.push_back("d");
    const auto at = array.insert(array.begin() + 2, "c");
    EXPECT_EQ(*at, "c");
    EXPECT_EQ(contents(array), (std::vector<std::string>{"a", "b", "c", "d"}));
    EXPECT_EQ(array.front(), "a");
    EXPECT_EQ(array.back(), "d");
    EXPECT_EQ(array[1], "b");
}

TEST(KRCompactArrayTests, GrowsByDoublingFromOneAndReservesExactly) {
    KRCompactArray<int> growing;
    growing.push_back(1);
    EXPECT_EQ(growing.capacity(), 1u);
    growing.push_back(2);
    growing.push_back(3);
    EXPECT_EQ(growing.capacity(), 4u);

    KRCompactArray<int> reserved;
    reserved.reserve(5);
    for (int i = 0; i < 5; ++i) {
        reserved.push_back(i);
    }
    EXPECT_EQ(reserved.capacity(), 5u);
    EXPECT_EQ(reserved.size(), 5u);
}

TEST(KRCompactArrayTests, InsertingAnElementOfTheArrayItselfWhileGrowingCopiesItFirst) {
    KRCompactArray<std::string> array;
    array.push_back("first");
    array.push_back(array.front());
    EXPECT_EQ(contents(array), (std::vector<std::string>{"first", "first"}));
}

TEST(KRCompactArrayTests, EraseRemovesOneOrARangeAndReleasesTheElements) {
    auto shared = std::make_shared<int>(7);
    KRCompactArray<std::shared_ptr<int>> array;
    array.push_back(nullptr);
    array.push_back(shared);
    array.push_back(nullptr);
    EXPECT_EQ(shared.use_count(), 2);
    array.erase(array.begin() + 1);
    EXPECT_EQ(shared.use_count(), 1);
    EXPECT_EQ(array.size(), 2u);

    KRCompactArray<std::string> words;
    for (const char* word : {"a", "b", "c", "d", "e"}) {
        words.push_back(word);
    }
    words.erase(words.begin() + 1, words.begin() + 3);
    EXPECT_EQ(contents(words), (std::vector<std::string>{"a", "d", "e"}));
    words.clear();
    EXPECT_TRUE(words.empty());
}

TEST(KRCompactArrayTests, CopiesAreIndependentAndCompareEqualToRangesWithTheSameElements) {
    KRCompactArray<std::string> original;
    original.push_back("x");
    original.push_back("y");
    KRCompactArray<std::string> copy = original;
    EXPECT_EQ(copy, original);
    EXPECT_EQ(copy, (std::vector<std::string>{"x", "y"}));
    copy.push_back("z");
    EXPECT_NE(copy, original);
    EXPECT_EQ(contents(original), (std::vector<std::string>{"x", "y"}));

    KRCompactArray<std::string> moved = std::move(copy);
    EXPECT_EQ(moved.size(), 3u);
}

} // namespace
