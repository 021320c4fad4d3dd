#include "Foundation/KRTrace.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

TEST(KRTraceTests, StepsReachTheInstalledSinkInOrderWithTheirObject) {
    std::vector<std::pair<const void*, std::string>> steps;
    KRTrace::setSink([&](const void* object, const char* step) { steps.emplace_back(object, step); });
    int a = 0;
    int b = 0;
    KRTrace::step(&a, "first");
    KRTrace::step(&b, "second");
    KRTrace::setSink({});

    ASSERT_EQ(steps.size(), 2u);
    EXPECT_EQ(steps[0].first, &a);
    EXPECT_EQ(steps[0].second, "first");
    EXPECT_EQ(steps[1].first, &b);
    EXPECT_EQ(steps[1].second, "second");
}

TEST(KRTraceTests, StepsWithoutASinkGoNowhere) {
    int calls = 0;
    KRTrace::setSink([&](const void*, const char*) { ++calls; });
    KRTrace::setSink({});
    KRTrace::step(&calls, "unheard");
    EXPECT_EQ(calls, 0);
}
