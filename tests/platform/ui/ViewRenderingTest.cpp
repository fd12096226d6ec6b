// How a view tree renders: order, clipping, hidden views, alpha; drawing clears needsDisplay.
#include "tests/platform/ui/PixelTestSupport.h"

using namespace platform;
using namespace pixel_test;

class RenderViewTest : public ScaledTest {};

static ViewPtr layered(const Rect& frame, const Rgba& background) {
    auto view = std::make_shared<View>(frame);
    view->setWantsLayer(true);
    view->layer()->setBackgroundColor(colorOf(background)->CGColor());
    return view;
}

// Later siblings draw above, subviews are clipped to a parent that asks, frames are bottom-left
// with y up; hidden subtrees draw nothing; alpha multiplies down the tree.
TEST(ViewRenderingTest, OrderClippingHiddenAndAlpha) {
    auto root = std::make_shared<View>(NSMakeRect(0, 0, 40, 40));
    auto parent = filled(0, 0, 20, 20, kRed);
    parent->addSubview(filled(10, 10, 20, 20, kBlue));  // half outside its parent
    parent->setClipsToBounds(true);
    root->addSubview(parent);
    root->addSubview(filled(0, 30, 5, 10, kGreen));  // the top-left corner
    auto hidden = filled(20, 0, 20, 20, kRed);
    hidden->addSubview(filled(0, 0, 5, 5, kBlue));
    hidden->setHidden(true);
    root->addSubview(hidden);
    auto faded = filled(20, 20, 20, 10, kRed);
    faded->setAlphaValue(0.5);
    auto quarter = filled(0, 0, 5, 5, kBlue);
    quarter->setAlphaValue(0.5);
    faded->addSubview(quarter);
    root->addSubview(faded);
    EXPECT_TRUE(quarter->needsDisplay());

    auto shot = Bitmap::renderView(*root, 2);
    EXPECT_FALSE(root->needsDisplay());
    EXPECT_FALSE(quarter->needsDisplay());
    // 25 % blue over 50 % red at (22, 22).
    expectPixels(*shot, {{0.25, 39.75, kGreen}, {5, 5, kRed}, {15, 15, kBlue}, {15, 25, kClear}});
    expectPixels(*shot, {{22, 2, kClear}, {30, 25, {255, 0, 0, 128}}});
    expectPixels(*shot, {{22, 22, {153, 0, 102, 159}}});
    quarter->setAlphaValue(0.25);
    EXPECT_TRUE(quarter->needsDisplay());
}

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
    expectPixels(*bitmap, {{20, 25, kGreen}, {h, 15, kRed}, {15 + h, 15, kGreen}});
    expectPixels(*bitmap, {{30 + h, h, kBlue}, {40 - h, h, kClear}, {h, 30 - h, kClear}});
    expectPixels(*bitmap, {{h, 30 - 8, kGreen}});
    parent->setWantsLayer(false);  // a layer the view does not want is not drawn
    EXPECT_EQ(kClear, Bitmap::renderView(*parent, scale())->pixelAtPoint(20, 25));
    View empty(NSMakeRect(3, 3, 0, 10));
    EXPECT_EQ(0, Bitmap::renderView(empty, scale())->pixelWidth());
}

INSTANTIATE_TEST_SUITE_P(Scales, RenderViewTest, ::testing::Values(1.0, 2.0));
