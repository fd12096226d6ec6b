// How a view tree renders: order, clipping, hidden views, alpha, layers.
#include <gtest/gtest.h>

#include <memory>

#include "platform/ui/Bitmap.h"
#include "platform/ui/Color.h"
#include "platform/ui/GraphicsContext.h"
#include "platform/ui/View.h"

using namespace platform;

namespace {

// Fills its bounds with one colour.
class FilledView : public View {
  public:
    FilledView(const Rect& frame, ColorPtr color) : View(frame), color_(std::move(color)) {}
    void drawRect(const Rect&) override {
        color_->setFill();
        NSRectFill(bounds());
    }

  private:
    ColorPtr color_;
};

std::shared_ptr<FilledView> filled(double x, double y, double w, double h, ColorPtr color) {
    return std::make_shared<FilledView>(NSMakeRect(x, y, w, h), std::move(color));
}

ColorPtr red() {
    return Color::colorWithDeviceRed(1, 0, 0, 1);
}
ColorPtr blue() {
    return Color::colorWithDeviceRed(0, 0, 1, 1);
}

const Rgba kRed{255, 0, 0, 255};
const Rgba kBlue{0, 0, 255, 255};
const Rgba kClear{0, 0, 0, 0};

}  // namespace

TEST(ViewRenderingTest, LaterSiblingsDrawAboveAndSubviewsAreClippedToTheirParent) {
    auto root = std::make_shared<View>(NSMakeRect(0, 0, 40, 40));
    auto parent = filled(0, 0, 20, 20, red());
    auto overflowing = filled(10, 10, 20, 20, blue());  // half outside its parent
    parent->addSubview(overflowing);
    parent->setClipsToBounds(true);
    root->addSubview(parent);

    auto shot = Bitmap::renderView(*root, 1);
    EXPECT_EQ(kRed, shot->pixelAtPoint(5, 5));
    EXPECT_EQ(kBlue, shot->pixelAtPoint(15, 15));
    EXPECT_EQ(kClear, shot->pixelAtPoint(25, 25));  // outside the parent: clipped
    EXPECT_EQ(kClear, shot->pixelAtPoint(15, 25));

    auto above = filled(5, 5, 10, 10, blue());
    auto below = filled(0, 0, 10, 10, red());
    auto overlap = std::make_shared<View>(NSMakeRect(0, 0, 20, 20));
    overlap->addSubview(above);
    overlap->addSubview(below);
    auto stacked = Bitmap::renderView(*overlap, 1);
    EXPECT_EQ(kRed, stacked->pixelAtPoint(7, 7));  // the later sibling covers the earlier
    EXPECT_EQ(kBlue, stacked->pixelAtPoint(12, 12));
}

TEST(ViewRenderingTest, FramesAreBottomLeftWithYUp) {
    auto root = std::make_shared<View>(NSMakeRect(0, 0, 40, 40));
    root->addSubview(filled(0, 30, 10, 10, red()));  // top-left corner of the root
    auto shot = Bitmap::renderView(*root, 2);
    EXPECT_EQ(kRed, shot->pixelAt(0, 0));
    EXPECT_EQ(kClear, shot->pixelAt(0, 79));
    EXPECT_EQ(kRed, shot->pixelAt(19, 19));
    EXPECT_EQ(kClear, shot->pixelAt(20, 20));
}

TEST(ViewRenderingTest, DrawingClearsNeedsDisplayAndChangesSetIt) {
    auto root = std::make_shared<View>(NSMakeRect(0, 0, 20, 20));
    auto child = filled(0, 0, 5, 5, red());
    root->addSubview(child);
    EXPECT_TRUE(child->needsDisplay());
    Bitmap::renderView(*root, 1);
    EXPECT_FALSE(root->needsDisplay());
    EXPECT_FALSE(child->needsDisplay());
    child->setAlphaValue(0.5);
    EXPECT_TRUE(child->needsDisplay());
}

TEST(ViewRenderingTest, HiddenViewsAndTheirSubviewsDrawNothing) {
    auto root = std::make_shared<View>(NSMakeRect(0, 0, 20, 20));
    auto hidden = filled(0, 0, 20, 20, red());
    hidden->addSubview(filled(0, 0, 5, 5, blue()));
    hidden->setHidden(true);
    root->addSubview(hidden);
    auto shot = Bitmap::renderView(*root, 1);
    EXPECT_EQ(kClear, shot->pixelAtPoint(2, 2));
    EXPECT_EQ(kClear, shot->pixelAtPoint(10, 10));
}

TEST(ViewRenderingTest, AlphaMultipliesDownTheTree) {
    auto root = std::make_shared<View>(NSMakeRect(0, 0, 20, 20));
    auto half = filled(0, 0, 20, 20, red());
    half->setAlphaValue(0.5);
    auto quarter = filled(0, 0, 5, 5, blue());
    quarter->setAlphaValue(0.5);
    half->addSubview(quarter);
    root->addSubview(half);
    auto shot = Bitmap::renderView(*root, 1);
    const Rgba halfRed = shot->pixelAtPoint(10, 10);
    EXPECT_EQ(255, halfRed.r);
    EXPECT_NEAR(128, halfRed.a, 2);
    // 25 % blue over 50 % red.
    const Rgba mixed = shot->pixelAtPoint(2, 2);
    EXPECT_NEAR(255 * (0.5 + 0.25 * 0.5), mixed.a, 3);
    EXPECT_GT(mixed.b, 0);
    EXPECT_GT(mixed.r, mixed.b);
}

TEST(ViewRenderingTest, ALayerPaintsBeneathAndMasksItsRoundedShape) {
    auto root = std::make_shared<View>(NSMakeRect(0, 0, 40, 40));
    auto card = std::make_shared<View>(NSMakeRect(0, 0, 40, 40));
    card->setWantsLayer(true);
    card->layer()->setBackgroundColor(red()->CGColor());
    card->layer()->setCornerRadius(10);
    card->layer()->setMasksToBounds(true);
    card->addSubview(filled(0, 0, 40, 20, blue()));  // the lower half
    root->addSubview(card);

    auto shot = Bitmap::renderView(*root, 1);
    EXPECT_EQ(kRed, shot->pixelAtPoint(20, 30));
    EXPECT_EQ(kBlue, shot->pixelAtPoint(20, 10));
    EXPECT_EQ(kClear, shot->pixelAtPoint(0.5, 0.5));  // rounded away, subview clipped too
    EXPECT_EQ(kClear, shot->pixelAtPoint(0.5, 39.5));

    // A layer the view does not want is not drawn.
    card->setWantsLayer(false);
    auto plain = Bitmap::renderView(*root, 1);
    EXPECT_EQ(kClear, plain->pixelAtPoint(20, 30));
}
