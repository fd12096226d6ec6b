#include <gtest/gtest.h>

#include <cmath>

#include "platform/ui/Geometry.h"

using namespace platform;

TEST(GeometryTest, PointInRectIncludesLeftAndBottomEdgesOnly) {
    Rect rect = NSMakeRect(10, 20, 50, 30);
    EXPECT_TRUE(NSPointInRect({10, 20}, rect));   // bottom-left corner
    EXPECT_TRUE(NSPointInRect({10, 35}, rect));   // left edge
    EXPECT_TRUE(NSPointInRect({35, 20}, rect));   // bottom edge
    EXPECT_FALSE(NSPointInRect({60, 35}, rect));  // right edge
    EXPECT_FALSE(NSPointInRect({35, 50}, rect));  // top edge
    EXPECT_FALSE(NSPointInRect({60, 50}, rect));  // top-right corner
    EXPECT_TRUE(NSPointInRect({59.999, 49.999}, rect));
    EXPECT_FALSE(NSPointInRect({9.999, 35}, rect));
    EXPECT_FALSE(NSPointInRect({35, 19.999}, rect));
}

TEST(GeometryTest, EmptyAndNegativeRectsContainNothing) {
    EXPECT_FALSE(NSPointInRect({0, 0}, NSZeroRect));
    EXPECT_FALSE(NSPointInRect({5, 5}, NSMakeRect(10, 10, -10, -10)));
    EXPECT_FALSE(NSPointInRect({NAN, 5}, NSMakeRect(0, 0, 10, 10)));
}

TEST(GeometryTest, RectTextUsesShortestRoundTripNumbers) {
    EXPECT_EQ("{{10, 20}, {50, 30}}", NSStringFromRect(NSMakeRect(10, 20, 50, 30)));
    EXPECT_EQ("{{0.5, 1}, {2.25, 3}}", NSStringFromRect(NSMakeRect(0.5, 1, 2.25, 3)));
    EXPECT_EQ("{{-3, 0}, {0.1, 0.30000000000000004}}",
              NSStringFromRect(NSMakeRect(-3, 0, 0.1, 0.1 + 0.2)));
    EXPECT_EQ("{1.5, -2}", NSStringFromPoint({1.5, -2}));
    EXPECT_EQ("{376, 370}", NSStringFromSize({376, 370}));
}

TEST(GeometryTest, IntersectionAndOffset) {
    EXPECT_EQ(NSMakeRect(5, 5, 5, 5),
              NSIntersectionRect(NSMakeRect(0, 0, 10, 10), NSMakeRect(5, 5, 10, 10)));
    // Rects that only touch have no area in common.
    EXPECT_EQ(NSZeroRect, NSIntersectionRect(NSMakeRect(0, 0, 10, 10), NSMakeRect(10, 0, 5, 5)));
    EXPECT_EQ(NSMakeRect(3, -1, 10, 10), NSOffsetRect(NSMakeRect(1, 1, 10, 10), 2, -2));
}
