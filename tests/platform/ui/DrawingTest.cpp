#include "tests/platform/ui/PixelTestSupport.h"

using namespace platform;
using namespace pixel_test;

class DrawingTest : public ScaledTest {};

static ImagePtr imageOf(Size size, std::function<void()> draw) {
    return Image::imageWithSize(size, false, [draw](const Rect&) {
        draw();
        return true;
    });
}

// The origin is the bottom-left corner; colours blend over what is there; save and restore nest
// translations, colours, clips and alpha; an unbalanced restore is ignored.
TEST_P(DrawingTest, SaveAndRestoreNestTransformsColoursAndClips) {
    auto bitmap = render(40, 10, scale(), [](GraphicsContext& context) {
        colorOf(kRed)->setFill();
        context.saveGraphicsState();
        context.translateBy(10, 0);
        colorOf(kGreen)->setFill();
        context.saveGraphicsState();
        context.translateBy(10, 0);
        context.clipToRect(NSMakeRect(0, 0, 5, 10));
        context.setAlpha(0.5);
        NSRectFill(NSMakeRect(0, 0, 10, 10));  // at 20..25 only, half green
        context.restoreGraphicsState();
        context.fillRect(NSMakeRect(0, 0, 5, 5));  // green at 10..15
        context.restoreGraphicsState();
        context.fillRect(NSMakeRect(0, 0, 5, 5));  // red at the origin again
        context.restoreGraphicsState();            // unbalanced: logged and ignored
        EXPECT_EQ(1.0, context.alpha());
        CGContextSetFillColorWithColor(context.CGContext(), colorOf(kBlack)->CGColor());
        CGContextFillRect(context.CGContext(), NSMakeRect(30, 0, 10, 10));
        fill(kGreen, NSMakeRect(30, 0, 10, 10), 0.5);  // half green over black
    });
    expectPixels(*bitmap, {{2.5, 2.5, kRed}, {12.5, 2.5, kGreen}, {12.5, 7.5, kClear}});
    expectPixels(*bitmap, {{22.5, 7.5, {0, 255, 0, 128}}, {27.5, 7.5, kClear}});
    expectPixels(*bitmap, {{35, 5, {0, 128, 0, 255}}});
}

// Rounded rects: radii clamped to half each side; strokes centred on the path, mitred at square
// corners; a path clip limits drawing until restored.
TEST_P(DrawingTest, RoundedRectsStrokesAndPathClips) {
    const double h = half();
    auto rounded = render(40, 30, scale(), [](GraphicsContext&) {
        colorOf(kRed)->set();
        BezierPath::bezierPathWithRoundedRect(NSMakeRect(0, 0, 40, 30), 10, 10)->fill();
    });
    expectPixels(*rounded,
                 {{h, 15, kRed}, {4.5, 4.5, kRed}, {h, h, kClear}, {40 - h, 30 - h, kClear}});

    auto strokes = render(40, 30, scale(), [](GraphicsContext& context) {
        colorOf(kRed)->set();
        BezierPath::bezierPathWithRoundedRect(NSMakeRect(0.5, 0.5, 39, 29), 6, 6)->stroke();
        colorOf(kBlue)->setStroke();
        auto path = BezierPath::bezierPathWithRect(NSMakeRect(11, 11, 18, 8));
        path->setLineWidth(2);
        path->stroke();
        context.saveGraphicsState();
        BezierPath::bezierPathWithRoundedRect(NSMakeRect(14, 12, 12, 6), 3, 3)->addClip();
        fill(kGreen, NSMakeRect(0, 0, 40, 30));
        context.restoreGraphicsState();
    });
    expectPixels(*strokes, {{h, 15, kRed}, {1 + h, 15, kClear}, {h, h, kClear}});
    expectPixels(*strokes, {{10 + h, 15, kBlue}, {12 + h, 15, kClear}, {10 + h, 10 + h, kBlue}});
    expectPixels(*strokes, {{20, 15, kGreen}});
    EXPECT_LT(strokes->pixelAtPoint(14 + h, 12 + h).a, 64);  // the clip's rounded corner
}

// Aspect fill covers and crops (inside a rounded mask too), aspect fit fits, resize stretches,
// centre keeps the natural size.
TEST_P(DrawingTest, LayerContentsFollowGravity) {
    using G = Layer::Gravity;
    Layer layer;
    layer.setContents(imageOf({20, 10}, [] {
        fill(kRed, NSMakeRect(0, 0, 10, 10));
        fill(kBlue, NSMakeRect(10, 0, 10, 10));
    }));
    auto check = [&](Layer::Gravity gravity, const std::vector<Probe>& probes) {
        layer.setContentsGravity(gravity);
        auto drawn = render(30, 30, scale(), [&](GraphicsContext& context) {
            layer.drawInContext(context, NSMakeRect(10, 10, 10, 10));
        });
        expectPixels(*drawn, probes);
    };
    check(G::ResizeAspectFill, {{12.5, 11.5, kRed}, {17.5, 15, kBlue}, {7.5, 15, kClear}});
    check(G::ResizeAspect, {{12.5, 15, kRed}, {12.5, 11.5, kClear}});
    check(G::Resize, {{12.5, 11, kRed}, {17.5, 19, kBlue}});
    check(G::Center, {{7.5, 15, kRed}, {22.5, 15, kBlue}});
    layer.setCornerRadius(4);
    layer.setMasksToBounds(true);
    check(G::ResizeAspectFill, {{12.5, 15, kRed}, {10 + half(), 10 + half(), kClear}});
}

// Masks keep their alpha, intersect, apply to paths and alpha alike, and end at restore.
TEST_P(DrawingTest, ClipToMaskKeepsTheMasksAlpha) {
    auto mask = imageOf({10, 10}, [] {
        fill(kRed, NSMakeRect(0, 0, 5, 10));
        fill(kRed, NSMakeRect(5, 0, 5, 10), 0.5);
    });
    auto right = imageOf({10, 10}, [] { fill(kRed, NSMakeRect(2, 0, 8, 10)); });
    auto bitmap = render(40, 10, scale(), [&](GraphicsContext& context) {
        context.saveGraphicsState();
        CGContextClipToMask(context.CGContext(), NSMakeRect(10, 0, 10, 10), *mask);
        context.clipToMask(NSMakeRect(10, 0, 10, 10), *right);
        colorOf(kBlue)->set();
        BezierPath::bezierPathWithRect(NSMakeRect(0, 0, 30, 10))->fill();
        context.setAlpha(0.5);
        fill(kGreen, NSMakeRect(0, 0, 14, 5));
        context.restoreGraphicsState();
        fill(kGreen, NSMakeRect(35, 0, 5, 10));  // the mask is gone after restore
    });
    expectPixels(*bitmap, {{5, 5, kClear}, {11, 5, kClear}, {13.5, 7.5, kBlue}});
    expectPixels(*bitmap, {{17.5, 5, {0, 0, 255, 128}}, {13.5, 2.5, {0, 128, 127, 255}}});
    expectPixels(*bitmap, {{37.5, 5, kGreen}});
}

INSTANTIATE_TEST_SUITE_P(Scales, DrawingTest, ::testing::Values(1.0, 2.0));
