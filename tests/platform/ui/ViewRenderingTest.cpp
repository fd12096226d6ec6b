// How a view tree renders: order, clipping, hidden views, alpha; drawing clears needsDisplay.
#include "tests/platform/ui/PixelTestSupport.h"

using namespace platform;
using namespace pixel_test;

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
    EXPECT_FALSE(root->needsDisplay() || quarter->needsDisplay());
    // 25 % blue over 50 % red at (22, 22).
    expectPixels(*shot, {{0.25, 39.75, kGreen},
                         {5, 5, kRed},
                         {15, 15, kBlue},
                         {15, 25, kClear},
                         {22, 2, kClear},
                         {30, 25, {255, 0, 0, 128}},
                         {22, 22, {153, 0, 102, 159}}});
    quarter->setAlphaValue(0.25);
    EXPECT_TRUE(quarter->needsDisplay());
}
