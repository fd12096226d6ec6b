#include <gtest/gtest.h>

#include "platform/ui/BezierPath.h"
#include "platform/ui/Image.h"
#include "platform/ui/Layer.h"
#include "tests/platform/ui/PixelTestSupport.h"

using namespace platform;
using pixel_test::kBlue;
using pixel_test::kClear;
using pixel_test::kGreen;
using pixel_test::kRed;
using pixel_test::render;

namespace {

// Pixel tests run at both backing scales; probes are at pixel centres of both.
class DrawingTest : public ::testing::TestWithParam<double> {
  protected:
    double scale() const { return GetParam(); }
};

// An image of |size| whose left half is opaque red and right half half-transparent red.
ImagePtr halfAndHalfImage(Size size) {
    return Image::imageWithSize(size, false, [size](const Rect&) {
        Color::colorWithDeviceRed(1, 0, 0, 1)->setFill();
        NSRectFill(NSMakeRect(0, 0, size.width / 2, size.height));
        Color::colorWithDeviceRed(1, 0, 0, 0.5)->setFill();
        NSRectFill(NSMakeRect(size.width / 2, 0, size.width / 2, size.height));
        return true;
    });
}

}  // namespace

TEST_P(DrawingTest, OriginIsTheBottomLeftCorner) {
    auto bitmap = render(20, 10, scale(), [](GraphicsContext&) {
        Color::colorWithDeviceRed(1, 0, 0, 1)->setFill();
        NSRectFill(NSMakeRect(0, 0, 20, 1));
        Color::colorWithDeviceRed(0, 0, 1, 1)->setFill();
        NSRectFill(NSMakeRect(0, 0, 1, 10));
    });
    int bottomRow = bitmap->pixelHeight() - 1;
    EXPECT_EQ(kRed, bitmap->pixelAt(bitmap->pixelWidth() - 1, bottomRow));
    EXPECT_EQ(kRed, bitmap->pixelAt(bitmap->pixelWidth() - 1, bottomRow + 1 - int(scale())));
    EXPECT_EQ(kClear, bitmap->pixelAt(bitmap->pixelWidth() - 1, bottomRow - int(scale())));
    EXPECT_EQ(kBlue, bitmap->pixelAt(0, 0));
    EXPECT_EQ(kClear, bitmap->pixelAt(int(scale()), 0));
    EXPECT_EQ(kRed, bitmap->pixelAtPoint(10.5, 0.5));
    EXPECT_EQ(kBlue, bitmap->pixelAtPoint(0.5, 9.5));
}

TEST_P(DrawingTest, FillRectBlendsItsColour) {
    auto bitmap = render(10, 10, scale(), [](GraphicsContext& context) {
        CGColorRef half = CGColorCreateGenericRGB(0, 1, 0, 0.5);
        CGContextSetFillColorWithColor(context.CGContext(), half);
        CGColorRelease(half);
        CGContextFillRect(context.CGContext(), NSMakeRect(0, 0, 5, 10));
        Color::blackColor()->setFill();
        context.fillRect(NSMakeRect(5, 0, 5, 5));
        Color::colorWithDeviceRed(0, 1, 0, 0.5)->setFill();
        context.fillRect(NSMakeRect(5, 0, 5, 5));  // half green over black
    });
    Rgba halfGreen = bitmap->pixelAtPoint(2.5, 5);
    EXPECT_EQ(0, halfGreen.r);
    EXPECT_EQ(255, halfGreen.g);
    EXPECT_NEAR(128, halfGreen.a, 1);
    Rgba blended = bitmap->pixelAtPoint(7.5, 2.5);
    EXPECT_NEAR(128, blended.g, 1);
    EXPECT_EQ(255, blended.a);
    EXPECT_EQ(kClear, bitmap->pixelAtPoint(7.5, 7.5));
}

TEST_P(DrawingTest, SaveAndRestoreNestTransformsColoursAndClips) {
    auto bitmap = render(30, 10, scale(), [](GraphicsContext& context) {
        Color::colorWithDeviceRed(1, 0, 0, 1)->setFill();
        context.saveGraphicsState();
        context.translateBy(10, 0);
        Color::colorWithDeviceRed(0, 1, 0, 1)->setFill();
        context.saveGraphicsState();
        context.translateBy(10, 0);
        context.clipToRect(NSMakeRect(0, 0, 5, 10));
        NSRectFill(NSMakeRect(0, 0, 10, 10));  // at 20..25 only: clipped
        context.restoreGraphicsState();
        context.fillRect(NSMakeRect(0, 0, 5, 5));  // green at 10..15
        context.restoreGraphicsState();
        context.fillRect(NSMakeRect(0, 0, 5, 5));  // red at the origin again
        context.restoreGraphicsState();            // unbalanced: logged and ignored
    });
    EXPECT_EQ(kRed, bitmap->pixelAtPoint(2.5, 2.5));
    EXPECT_EQ(kGreen, bitmap->pixelAtPoint(12.5, 2.5));
    EXPECT_EQ(kGreen, bitmap->pixelAtPoint(22.5, 7.5));
    EXPECT_EQ(kClear, bitmap->pixelAtPoint(27.5, 7.5));
    EXPECT_EQ(kClear, bitmap->pixelAtPoint(12.5, 7.5));
}

TEST_P(DrawingTest, DeviceSpaceIsPixelsFromTheTop) {
    render(40, 30, scale(), [this](GraphicsContext& context) {
        EXPECT_EQ(scale(), context.backingScaleFactor());
        EXPECT_EQ(NSMakeRect(10 * scale(), 20 * scale(), 5 * scale(), 5 * scale()),
                  context.toDeviceSpace(NSMakeRect(10, 5, 5, 5)));
        context.translateBy(10, 10);
        EXPECT_EQ(NSMakeRect(10 * scale(), 15 * scale(), 5 * scale(), 5 * scale()),
                  context.toDeviceSpace(NSMakeRect(0, 0, 5, 5)));
    });
}

TEST_P(DrawingTest, RoundedRectFillKeepsCornersClear) {
    auto bitmap = render(40, 30, scale(), [](GraphicsContext&) {
        Color::colorWithDeviceRed(1, 0, 0, 1)->set();
        BezierPath::bezierPathWithRoundedRect(NSMakeRect(0, 0, 40, 30), 10, 10)->fill();
    });
    double half = 0.5 / scale();  // centre of the outermost pixel
    EXPECT_EQ(kRed, bitmap->pixelAtPoint(20, 15));
    EXPECT_EQ(kRed, bitmap->pixelAtPoint(half, 15));       // left edge
    EXPECT_EQ(kRed, bitmap->pixelAtPoint(20, 30 - half));  // top edge
    for (Point corner : {Point{half, half}, Point{40 - half, half}, Point{half, 30 - half},
                         Point{40 - half, 30 - half}})
        EXPECT_EQ(kClear, bitmap->pixelAtPoint(corner.x, corner.y)) << corner.x << "," << corner.y;
    // Well inside the corner's arc: filled.
    EXPECT_EQ(kRed, bitmap->pixelAtPoint(4.5, 4.5));
}

TEST_P(DrawingTest, OversizedRadiiAreClampedToHalfEachSide) {
    auto bitmap = render(40, 20, scale(), [](GraphicsContext&) {
        Color::colorWithDeviceRed(0, 0, 1, 1)->set();
        BezierPath::bezierPathWithRoundedRect(NSMakeRect(0, 0, 40, 20), 100, 100)->fill();
    });
    // Radii 20 and 10: the rect becomes an ellipse (a capsule would cover (6, 18)).
    EXPECT_EQ(kBlue, bitmap->pixelAtPoint(20, 10));
    EXPECT_EQ(kBlue, bitmap->pixelAtPoint(2, 10));
    EXPECT_EQ(kClear, bitmap->pixelAtPoint(2, 2));
    EXPECT_EQ(kClear, bitmap->pixelAtPoint(6, 18));
}

TEST_P(DrawingTest, StrokesAreCentredOnThePath) {
    // Width 1 on a rect inset by half a point covers exactly the outer point ring.
    auto thin = render(40, 30, scale(), [](GraphicsContext&) {
        Color::colorWithDeviceRed(1, 0, 0, 1)->set();
        BezierPath::bezierPathWithRoundedRect(NSMakeRect(0.5, 0.5, 39, 29), 6, 6)->stroke();
    });
    double half = 0.5 / scale();
    EXPECT_EQ(kRed, thin->pixelAtPoint(half, 15));
    EXPECT_EQ(kRed, thin->pixelAtPoint(1 - half, 15));
    EXPECT_EQ(kClear, thin->pixelAtPoint(1 + half, 15));
    EXPECT_EQ(kRed, thin->pixelAtPoint(20, 30 - half));
    EXPECT_EQ(kClear, thin->pixelAtPoint(20, 15));
    EXPECT_EQ(kClear, thin->pixelAtPoint(half, half));  // the corner is rounded off
    EXPECT_EQ(kClear, thin->pixelAtPoint(3, 3));        // inside the rounded corner

    auto thick = render(40, 30, scale(), [](GraphicsContext&) {
        Color::colorWithDeviceRed(0, 0, 1, 1)->set();
        auto path = BezierPath::bezierPathWithRect(NSMakeRect(1, 1, 38, 28));
        path->setLineWidth(2);
        EXPECT_EQ(2, path->lineWidth());
        path->stroke();
    });
    EXPECT_EQ(kBlue, thick->pixelAtPoint(half, 15));
    EXPECT_EQ(kBlue, thick->pixelAtPoint(2 - half, 15));
    EXPECT_EQ(kClear, thick->pixelAtPoint(2 + half, 15));
    EXPECT_EQ(kBlue, thick->pixelAtPoint(half, half));  // square corner: mitred
    EXPECT_EQ(kBlue, thick->pixelAtPoint(40 - half, 30 - half));
    EXPECT_EQ(kClear, thick->pixelAtPoint(20, 15));
}

TEST_P(DrawingTest, PathClipLimitsLaterDrawing) {
    auto bitmap = render(40, 40, scale(), [](GraphicsContext& context) {
        context.saveGraphicsState();
        BezierPath::bezierPathWithRoundedRect(NSMakeRect(0, 0, 40, 40), 20, 20)->addClip();
        Color::colorWithDeviceRed(1, 0, 0, 1)->setFill();
        NSRectFill(NSMakeRect(0, 0, 40, 40));
        context.restoreGraphicsState();
        Color::colorWithDeviceRed(0, 0, 1, 1)->setFill();
        NSRectFill(NSMakeRect(36, 36, 4, 4));  // outside the former clip, after restore
    });
    EXPECT_EQ(kRed, bitmap->pixelAtPoint(20, 20));
    EXPECT_EQ(kClear, bitmap->pixelAtPoint(2, 2));
    EXPECT_EQ(kBlue, bitmap->pixelAtPoint(39, 39));
}

TEST_P(DrawingTest, LayerPaintsRoundedBackgroundAndClipsToItsShape) {
    Layer layer;
    CGColorRef green = CGColorCreateGenericRGB(0, 1, 0, 1);
    layer.setBackgroundColor(green);
    CGColorRelease(green);
    layer.setCornerRadius(8);
    layer.setMasksToBounds(true);
    Rect bounds = NSMakeRect(10, 10, 40, 30);
    auto bitmap = render(60, 50, scale(), [&](GraphicsContext& context) {
        layer.drawInContext(context, bounds);
        context.saveGraphicsState();
        layer.clipToShape(context, bounds);
        Color::colorWithDeviceRed(1, 0, 0, 1)->setFill();
        NSRectFill(NSMakeRect(0, 0, 30, 50));  // a child that overhangs the layer
        context.restoreGraphicsState();
    });
    double half = 0.5 / scale();
    EXPECT_EQ(kRed, bitmap->pixelAtPoint(20, 25));
    EXPECT_EQ(kGreen, bitmap->pixelAtPoint(40, 25));
    EXPECT_EQ(kGreen, bitmap->pixelAtPoint(50 - half, 25));
    EXPECT_EQ(kClear, bitmap->pixelAtPoint(50 + half, 25));
    EXPECT_EQ(kClear, bitmap->pixelAtPoint(5, 25));                 // overhang clipped
    EXPECT_EQ(kClear, bitmap->pixelAtPoint(10 + half, 10 + half));  // rounded corner
    EXPECT_EQ(kClear, bitmap->pixelAtPoint(50 - half, 40 - half));
    EXPECT_EQ(kRed, bitmap->pixelAtPoint(10 + half, 25));
}

TEST_P(DrawingTest, LayerContentsFollowGravity) {
    // A 20 x 10 image: red left half, blue right half.
    auto image = Image::imageWithSize({20, 10}, false, [](const Rect&) {
        Color::colorWithDeviceRed(1, 0, 0, 1)->setFill();
        NSRectFill(NSMakeRect(0, 0, 10, 10));
        Color::colorWithDeviceRed(0, 0, 1, 1)->setFill();
        NSRectFill(NSMakeRect(10, 0, 10, 10));
        return true;
    });
    Layer layer;
    layer.setContents(image);
    Rect square = NSMakeRect(10, 10, 10, 10);
    auto draw = [&](Layer::Gravity gravity) {
        layer.setContentsGravity(gravity);
        return render(30, 30, scale(),
                      [&](GraphicsContext& context) { layer.drawInContext(context, square); });
    };

    // Aspect fill: scaled to cover the height, centred, the overflow cropped.
    auto fill = draw(Layer::Gravity::ResizeAspectFill);
    EXPECT_EQ(kRed, fill->pixelAtPoint(12.5, 15));
    EXPECT_EQ(kBlue, fill->pixelAtPoint(17.5, 15));
    EXPECT_EQ(kClear, fill->pixelAtPoint(7.5, 15));
    EXPECT_EQ(kClear, fill->pixelAtPoint(22.5, 15));

    // Aspect fit: 10 x 5, centred vertically.
    auto fit = draw(Layer::Gravity::ResizeAspect);
    EXPECT_EQ(kRed, fit->pixelAtPoint(12.5, 15));
    EXPECT_EQ(kBlue, fit->pixelAtPoint(17.5, 15));
    EXPECT_EQ(kClear, fit->pixelAtPoint(12.5, 11.5));
    EXPECT_EQ(kClear, fit->pixelAtPoint(12.5, 18.5));

    // Resize: stretched to the bounds.
    auto stretched = draw(Layer::Gravity::Resize);
    EXPECT_EQ(kRed, stretched->pixelAtPoint(12.5, 11));
    EXPECT_EQ(kBlue, stretched->pixelAtPoint(17.5, 19));

    // Centre: natural size, overhanging on both sides (no mask).
    auto centred = draw(Layer::Gravity::Center);
    EXPECT_EQ(kRed, centred->pixelAtPoint(7.5, 15));
    EXPECT_EQ(kBlue, centred->pixelAtPoint(22.5, 15));
    EXPECT_EQ(kClear, centred->pixelAtPoint(3, 15));
}

TEST_P(DrawingTest, ClipToMaskKeepsTheMasksAlpha) {
    auto mask = halfAndHalfImage({10, 10});
    auto bitmap = render(30, 10, scale(), [&](GraphicsContext& context) {
        context.saveGraphicsState();
        CGContextClipToMask(context.CGContext(), NSMakeRect(10, 0, 10, 10), *mask);
        Color::colorWithDeviceRed(0, 0, 1, 1)->setFill();
        NSRectFill(NSMakeRect(0, 0, 30, 10));
        context.restoreGraphicsState();
        Color::colorWithDeviceRed(0, 1, 0, 1)->setFill();
        NSRectFill(NSMakeRect(25, 0, 5, 10));  // the mask is gone after restore
    });
    EXPECT_EQ(kClear, bitmap->pixelAtPoint(5, 5));
    EXPECT_EQ(kBlue, bitmap->pixelAtPoint(12.5, 5));
    Rgba halfBlue = bitmap->pixelAtPoint(17.5, 5);
    EXPECT_EQ(255, halfBlue.b);
    EXPECT_NEAR(128, halfBlue.a, 2);
    EXPECT_EQ(kClear, bitmap->pixelAtPoint(22.5, 5));
    EXPECT_EQ(kGreen, bitmap->pixelAtPoint(27.5, 5));
}

TEST_P(DrawingTest, MasksIntersectAndApplyToPaths) {
    auto left = Image::imageWithSize({10, 10}, false, [](const Rect&) {
        Color::blackColor()->setFill();
        NSRectFill(NSMakeRect(0, 0, 6, 10));
        return true;
    });
    auto right = Image::imageWithSize({10, 10}, false, [](const Rect&) {
        Color::blackColor()->setFill();
        NSRectFill(NSMakeRect(4, 0, 6, 10));
        return true;
    });
    auto bitmap = render(10, 10, scale(), [&](GraphicsContext& context) {
        context.clipToMask(NSMakeRect(0, 0, 10, 10), *left);
        context.clipToMask(NSMakeRect(0, 0, 10, 10), *right);
        Color::colorWithDeviceRed(1, 0, 0, 1)->set();
        BezierPath::bezierPathWithRect(NSMakeRect(0, 0, 10, 10))->fill();
    });
    EXPECT_EQ(kClear, bitmap->pixelAtPoint(2, 5));
    EXPECT_EQ(kRed, bitmap->pixelAtPoint(5, 5));
    EXPECT_EQ(kClear, bitmap->pixelAtPoint(8, 5));
}

TEST_P(DrawingTest, AlphaAppliesToLaterDrawing) {
    auto bitmap = render(10, 10, scale(), [](GraphicsContext& context) {
        Color::colorWithDeviceRed(1, 0, 0, 1)->setFill();
        context.saveGraphicsState();
        context.setAlpha(0.5);
        EXPECT_EQ(0.5, context.alpha());
        NSRectFill(NSMakeRect(0, 0, 5, 10));
        context.restoreGraphicsState();
        EXPECT_EQ(1.0, context.alpha());
        NSRectFill(NSMakeRect(5, 0, 5, 10));
    });
    EXPECT_NEAR(128, bitmap->pixelAtPoint(2.5, 5).a, 1);
    EXPECT_EQ(kRed, bitmap->pixelAtPoint(7.5, 5));
}

INSTANTIATE_TEST_SUITE_P(Scales, DrawingTest, ::testing::Values(1.0, 2.0), [](const auto& info) {
    return info.param == 1.0 ? "1x" : "2x";
});
