#include "Views/KRCursor.h"

#include <gtest/gtest.h>

#include <vector>

TEST(KRCursorTests, SetMakesTheCursorCurrentAndTellsTheHandler) {
    std::vector<KRCursor::Shape> shapes;
    KRCursor::setCursorChangeHandler([&shapes](KRCursor cursor) { shapes.push_back(cursor.shape()); });
    KRCursor::IBeamCursor().set();
    EXPECT_EQ(KRCursor::currentCursor(), KRCursor::IBeamCursor());
    KRCursor::pointingHandCursor().set();
    EXPECT_EQ(KRCursor::currentCursor().shape(), KRCursor::Shape::PointingHand);
    ASSERT_EQ(shapes.size(), 2u);
    EXPECT_EQ(shapes[0], KRCursor::Shape::IBeam);
    EXPECT_EQ(shapes[1], KRCursor::Shape::PointingHand);

    KRCursor::setCursorChangeHandler({});
    KRCursor::arrowCursor().set();
    EXPECT_EQ(shapes.size(), 2u);
    EXPECT_EQ(KRCursor::currentCursor(), KRCursor::arrowCursor());
}

TEST(KRCursorTests, CursorsCompareByShape) {
    EXPECT_EQ(KRCursor::openHandCursor(), KRCursor::openHandCursor());
    EXPECT_FALSE(KRCursor::openHandCursor() == KRCursor::closedHandCursor());
    EXPECT_EQ(KRCursor::closedHandCursor().shape(), KRCursor::Shape::ClosedHand);
}
