#include <gtest/gtest.h>

#include <cmath>

#include "platform/ui/Geometry.h"

using namespace platform;

// Left and bottom edges belong to a rect, right and top edges do not; empty, negative and NaN never
// contain.
TEST(GeometryTest, PointInRectIncludesLeftAndBottomEdgesOnly) {
    const Rect rect = NSMakeRect(10, 20, 50, 30);
    for (Point inside : {Point{10, 20}, Point{59.999, 49.999}})
        EXPECT_TRUE(NSPointInRect(inside, rect)) << NSStringFromPoint(inside);
    for (Point outside : {Point{60, 35}, Point{35, 50}, Point{9.999, 35}, Point{35, 19.999}})
        EXPECT_FALSE(NSPointInRect(outside, rect)) << NSStringFromPoint(outside);
    EXPECT_FALSE(NSPointInRect({5, 5}, NSMakeRect(10, 10, -10, -10)));
    EXPECT_FALSE(NSPointInRect({NAN, 5}, NSMakeRect(0, 0, 10, 10)));
}

// Rect text uses the shortest numbers that read back the same; rects that only touch have no area
// in common.
TEST(GeometryTest, RectTextIntersectionAndOffset) {
    EXPECT_EQ("{{-3, 0.5}, {0.1, 0.30000000000000004}}",
              NSStringFromRect(NSMakeRect(-3, 0.5, 0.1, 0.1 + 0.2)));
    EXPECT_EQ("{1.5, -2}", NSStringFromPoint({1.5, -2}));
    EXPECT_EQ("{376, 370}", NSStringFromSize({376, 370}));
    EXPECT_EQ(NSMakeRect(5, 5, 5, 5),
              NSIntersectionRect(NSMakeRect(0, 0, 10, 10), NSMakeRect(5, 5, 10, 10)));
    EXPECT_EQ(NSZeroRect, NSIntersectionRect(NSMakeRect(0, 0, 10, 10), NSMakeRect(10, 0, 5, 5)));
    EXPECT_EQ(NSMakeRect(3, -1, 10, 10), NSOffsetRect(NSMakeRect(1, 1, 10, 10), 2, -2));
}
