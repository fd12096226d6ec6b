#include <gtest/gtest.h>

#include "platform/ui/Bitmap.h"
#include "platform/ui/View.h"
#include "tests/platform/ui/PixelTestSupport.h"

using namespace platform;
using pixel_test::kBlue;
using pixel_test::kClear;
using pixel_test::kGreen;
using pixel_test::kRed;

namespace {

// A view that paints its bounds blue in drawRect.
class BlueView : public View {
  public:
    using View::View;
    void drawRect(const Rect&) override {
        Color::colorWithDeviceRed(0, 0, 1, 1)->setFill();
        NSRectFill(bounds());
    }
};

void setBackground(View& view, double r, double g, double b) {
    view.setWantsLayer(true);
    CGColorRef color = CGColorCreateGenericRGB(r, g, b, 1);
    view.layer()->setBackgroundColor(color);
    CGColorRelease(color);
}

class RenderViewTest : public ::testing::TestWithParam<double> {
  protected:
    double scale() const { return GetParam(); }
};

}  // namespace

TEST_P(RenderViewTest, LayerBackedTreeRendersFromItsFrameOrigin) {
    // The parent sits away from its superview's origin: the render starts at its frame.
    auto parent = std::make_shared<View>(NSMakeRect(5, 7, 40, 30));
    setBackground(*parent, 0, 1, 0);
    parent->layer()->setCornerRadius(6);
    parent->layer()->setMasksToBounds(true);
    auto overhanging = std::make_shared<View>(NSMakeRect(-5, 10, 20, 10));
    setBackground(*overhanging, 1, 0, 0);
    parent->addSubview(overhanging);
    parent->addSubview(std::make_shared<BlueView>(NSMakeRect(30, 0, 10, 10)));

    auto bitmap = Bitmap::renderView(*parent, scale());
    ASSERT_TRUE(bitmap);
    EXPECT_EQ(int(40 * scale()), bitmap->pixelWidth());
    EXPECT_EQ(int(30 * scale()), bitmap->pixelHeight());
    double half = 0.5 / scale();

    EXPECT_EQ(kGreen, bitmap->pixelAtPoint(20, 25));
    EXPECT_EQ(kRed, bitmap->pixelAtPoint(7.5, 15));
    EXPECT_EQ(kRed, bitmap->pixelAtPoint(half, 15));  // the overhang is cut at the edge
    EXPECT_EQ(kGreen, bitmap->pixelAtPoint(15 + half, 15));
    EXPECT_EQ(kBlue, bitmap->pixelAtPoint(35, 5));
    EXPECT_EQ(kBlue, bitmap->pixelAtPoint(30 + half, half));  // the child's own corner
    // The parent's rounded corners clip its children and its own background alike.
    EXPECT_EQ(kClear, bitmap->pixelAtPoint(40 - half, half));
    EXPECT_EQ(kClear, bitmap->pixelAtPoint(half, 30 - half));
    EXPECT_EQ(kGreen, bitmap->pixelAtPoint(half, 30 - 8));  // below the arc
}

TEST_P(RenderViewTest, EmptyViewGivesAnEmptyBitmap) {
    View view(NSMakeRect(3, 3, 0, 10));
    auto bitmap = Bitmap::renderView(view, scale());
    ASSERT_TRUE(bitmap);
    EXPECT_EQ(0, bitmap->pixelWidth());
    EXPECT_EQ(kClear, bitmap->pixelAtPoint(0, 0));
}

INSTANTIATE_TEST_SUITE_P(Scales, RenderViewTest, ::testing::Values(1.0, 2.0), [](const auto& info) {
    return info.param == 1.0 ? "1x" : "2x";
});
