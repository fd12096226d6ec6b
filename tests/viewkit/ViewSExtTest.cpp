#include "viewkit/ViewSExt.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <memory>
#include <vector>

using platform::NSMakeRect;
using platform::Rect;
using platform::View;

namespace {

// Sees every frame that reaches the virtual setter.
class FrameRecordingView : public View {
  public:
    using View::View;
    void setFrame(const Rect& frame) override {
        applied.push_back(frame);
        View::setFrame(frame);
    }
    std::vector<Rect> applied;
};

TEST(ViewSExt, GettersReadEdgesAndSize) {
    View view(NSMakeRect(10, 20, 50, 30));
    EXPECT_EQ(10, SExt::x(view));
    EXPECT_EQ(10, SExt::left(view));
    EXPECT_EQ(20, SExt::y(view));
    EXPECT_EQ(20, SExt::bottom(view));
    EXPECT_EQ(50, SExt::width(view));
    EXPECT_EQ(30, SExt::height(view));
    EXPECT_EQ(60, SExt::right(view));
    EXPECT_EQ(50, SExt::top(view));
}

TEST(ViewSExt, RightAndTopResizeRatherThanMove) {
    View view(NSMakeRect(10, 20, 50, 30));
    SExt::setRight(view, 100);
    EXPECT_EQ(NSMakeRect(10, 20, 90, 30), view.frame());
    SExt::setTop(view, 40);
    EXPECT_EQ(NSMakeRect(10, 20, 90, 20), view.frame());
    // Below the origin: a negative height, passed on as computed.
    SExt::setTop(view, 5);
    EXPECT_EQ(NSMakeRect(10, 20, 90, -15), view.frame());
}

TEST(ViewSExt, LeftBottomXYMoveAndKeepTheSize) {
    View view(NSMakeRect(10, 20, 50, 30));
    SExt::setLeft(view, 5);
    EXPECT_EQ(NSMakeRect(5, 20, 50, 30), view.frame());
    EXPECT_EQ(55, SExt::right(view));
    SExt::setBottom(view, -7.25);
    EXPECT_EQ(NSMakeRect(5, -7.25, 50, 30), view.frame());
    SExt::setX(view, 1.5);
    SExt::setY(view, 2.5);
    EXPECT_EQ(NSMakeRect(1.5, 2.5, 50, 30), view.frame());
    SExt::setWidth(view, -3);
    SExt::setHeight(view, 0.125);
    EXPECT_EQ(NSMakeRect(1.5, 2.5, -3, 0.125), view.frame());
}

TEST(ViewSExt, EverySetterGoesThroughTheVirtualFrameSetterOnce) {
    FrameRecordingView view(NSMakeRect(10, 20, 50, 30));
    SExt::setX(view, 1);
    SExt::setY(view, 2);
    SExt::setWidth(view, 3);
    SExt::setHeight(view, 4);
    SExt::setLeft(view, 5);
    SExt::setRight(view, 15);
    SExt::setTop(view, 12);
    SExt::setBottom(view, 6);
    const std::vector<Rect> expected = {
        NSMakeRect(1, 20, 50, 30), NSMakeRect(1, 2, 50, 30), NSMakeRect(1, 2, 3, 30),
        NSMakeRect(1, 2, 3, 4),    NSMakeRect(5, 2, 3, 4),   NSMakeRect(5, 2, 10, 4),
        NSMakeRect(5, 2, 10, 10),  NSMakeRect(5, 6, 10, 10),
    };
    ASSERT_EQ(expected.size(), view.applied.size());
    for (size_t i = 0; i < expected.size(); ++i)
        EXPECT_EQ(expected[i], view.applied[i]) << "setter " << i;
}

TEST(ViewSExt, CornerRadiusRoundsThroughTheLayerAndIgnoresNonPositiveValues) {
    View view(NSMakeRect(0, 0, 20, 20));
    EXPECT_EQ(nullptr, view.layer());
    EXPECT_EQ(0, SExt::cornerRadius(view));

    SExt::setCornerRadius(view, 0);
    SExt::setCornerRadius(view, -2);
    SExt::setCornerRadius(view, std::numeric_limits<double>::quiet_NaN());
    EXPECT_EQ(nullptr, view.layer()) << "a refused radius must not make a layer";

    SExt::setCornerRadius(view, 4);
    ASSERT_NE(nullptr, view.layer());
    EXPECT_TRUE(view.wantsLayer());
    EXPECT_TRUE(view.layer()->masksToBounds());
    EXPECT_EQ(4, SExt::cornerRadius(view));

    SExt::setCornerRadius(view, 0);
    SExt::setCornerRadius(view, -1);
    EXPECT_EQ(4, SExt::cornerRadius(view));
    SExt::setCornerRadius(view, 2.5);
    EXPECT_EQ(2.5, SExt::cornerRadius(view));
}

}  // namespace
