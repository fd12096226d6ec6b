#include "tests/platform/ui/PixelTestSupport.h"

using namespace platform;
using namespace pixel_test;

namespace {

class RenderViewTest : public ScaledTest {};

ViewPtr layered(const Rect& frame, const Rgba& background) {
    auto view = std::make_shared<View>(frame);
    view->setWantsLayer(true);
    view->layer()->setBackgroundColor(colorOf(background)->CGColor());
    return view;
}

}  // namespace

// The render starts at the view's frame origin, whatever its superview; the parent's rounded
// corners clip its children and its own background alike.
TEST_P(RenderViewTest, LayerBackedTreeRendersFromItsFrameOrigin) {
    auto parent = layered(NSMakeRect(5, 7, 40, 30), kGreen);
    parent->layer()->setCornerRadius(6);
    parent->layer()->setMasksToBounds(true);
    parent->addSubview(layered(NSMakeRect(-5, 10, 20, 10), kRed));  // overhangs the left edge
    parent->addSubview(filled(30, 0, 10, 10, kBlue));
    auto bitmap = Bitmap::renderView(*parent, scale());
    ASSERT_TRUE(bitmap);
    EXPECT_EQ(int(40 * scale()), bitmap->pixelWidth());
    EXPECT_EQ(int(30 * scale()), bitmap->pixelHeight());
    const double h = half();
    expectPixels(*bitmap, {{20, 25, kGreen},
                           {h, 15, kRed},
                           {15 + h, 15, kGreen},
                           {30 + h, h, kBlue},
                           {40 - h, h, kClear},
                           {h, 30 - h, kClear},
                           {h, 30 - 8, kGreen}});
    parent->setWantsLayer(false);  // a layer the view does not want is not drawn
    EXPECT_EQ(kClear, Bitmap::renderView(*parent, scale())->pixelAtPoint(20, 25));
    View empty(NSMakeRect(3, 3, 0, 10));
    EXPECT_EQ(0, Bitmap::renderView(empty, scale())->pixelWidth());
}

INSTANTIATE_TEST_SUITE_P(Scales, RenderViewTest, ::testing::Values(1.0, 2.0));
