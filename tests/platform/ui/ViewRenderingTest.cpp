// How a view tree renders: order, clipping, hidden views, alpha, layers.
#include "tests/platform/ui/PixelTestSupport.h"

using namespace platform;
using namespace pixel_test;

// Later siblings draw above, subviews are clipped to their parent, frames are bottom-left with y
// up; hidden subtrees draw nothing; alpha multiplies down the tree.
TEST(ViewRenderingTest, LaterSiblingsDrawAboveAndSubviewsAreClippedToTheirParent) {
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

    auto shot = Bitmap::renderView(*root, 2);
    EXPECT_EQ(kGreen, shot->pixelAt(0, 0));
    const Probe pixels[] = {{5, 5, kRed},    {15, 15, kBlue}, {15, 25, kClear},
                            {25, 5, kClear}, {22, 2, kClear}, {30, 25, {255, 0, 0, 128}}};
    expectPixels(*shot, pixels);
    // 25 % blue over 50 % red.
    const Rgba mixed = shot->pixelAtPoint(22, 22);
    EXPECT_NEAR(255 * (0.5 + 0.25 * 0.5), mixed.a, 3);
    EXPECT_GT(mixed.b, 0);
    EXPECT_GT(mixed.r, mixed.b);
}

TEST(ViewRenderingTest, DrawingClearsNeedsDisplayAndChangesSetIt) {
    auto root = std::make_shared<View>(NSMakeRect(0, 0, 20, 20));
    auto child = filled(0, 0, 5, 5, kRed);
    root->addSubview(child);
    EXPECT_TRUE(child->needsDisplay());
    Bitmap::renderView(*root, 1);
    EXPECT_FALSE(root->needsDisplay());
    EXPECT_FALSE(child->needsDisplay());
    child->setAlphaValue(0.5);
    EXPECT_TRUE(child->needsDisplay());
}
