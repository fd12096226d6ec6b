#include "tests/platform/ui/PixelTestSupport.h"

#include <array>

#include "platform/ui/Color.h"

using namespace platform;

namespace {

std::array<double, 4> components(const Color& color) {
    std::array<double, 4> c{};
    color.getRed(&c[0], &c[1], &c[2], &c[3]);
    return c;
}

std::array<double, 4> components(CGColorRef color) {
    std::array<double, 4> c{};
    CGColorGetComponents(color, c.data());
    return c;
}

}  // namespace

// Named colours are white levels; conversion to generic RGB keeps components exactly; a colour
// equals another only in the same space.
TEST(ColorTest, ConversionToGenericRgbKeepsComponentsExactly) {
    EXPECT_EQ((std::array<double, 4>{1, 1, 1, 1}), components(*Color::whiteColor()));
    EXPECT_EQ((std::array<double, 4>{0, 0, 0, 1}), components(*Color::blackColor()));
    EXPECT_EQ((std::array<double, 4>{0, 0, 0, 0}), components(*Color::clearColor()));
    double third = 162.0f / 255.0f;
    auto device = Color::colorWithDeviceRed(0, third, 1, 0.5);
    auto generic = device->colorUsingColorSpace(ColorSpace::GenericRGB);
    ASSERT_TRUE(generic);
    EXPECT_EQ(ColorSpace::GenericRGB, generic->colorSpace());
    EXPECT_EQ((std::array<double, 4>{0, third, 1, 0.5}), components(*generic));
    auto white =
        Color::colorWithCalibratedWhite(0.8, 0.3)->colorUsingColorSpace(ColorSpace::GenericRGB);
    EXPECT_EQ((std::array<double, 4>{0.8, 0.8, 0.8, 0.3}), components(*white));
    EXPECT_FALSE(device->colorUsingColorSpace(ColorSpace::Pattern));

    auto red = Color::colorWithDeviceRed(1, 0, 0, 1);
    EXPECT_EQ(0.25, red->colorWithAlphaComponent(0.25)->alphaComponent());
    EXPECT_TRUE(*red == *Color::colorWithDeviceRed(1, 0, 0, 1));
    EXPECT_FALSE(*red == *red->colorWithAlphaComponent(0.25));
    EXPECT_FALSE(*Color::whiteColor() == *Color::colorWithDeviceRed(1, 1, 1, 1));
    EXPECT_TRUE(*Color::whiteColor() == *Color::colorWithWhite(1, 1));
}

// A colour owns one handle; handles count references, a copy with another alpha is new, and null is
// harmless everywhere. (Use after free shows under AddressSanitizer.)
TEST(ColorTest, CoreGraphicsColoursCountReferences) {
    auto colour = Color::colorWithCalibratedWhite(0.5, 0.75);
    CGColorRef handle = colour->CGColor();
    EXPECT_EQ(handle, colour->CGColor());
    EXPECT_EQ((std::array<double, 4>{0.5, 0.5, 0.5, 0.75}), components(handle));
    EXPECT_EQ(handle, CGColorRetain(handle));
    colour.reset();  // a retained handle outlives its colour
    CGColorRef copy = CGColorCreateCopyWithAlpha(handle, 0.9);
    CGColorRelease(handle);
    EXPECT_EQ((std::array<double, 4>{0.5, 0.5, 0.5, 0.9}), components(copy));
    CGColorRelease(copy);

    CGColorRelease(nullptr);
    EXPECT_EQ(nullptr, CGColorRetain(nullptr));
    EXPECT_EQ(nullptr, CGColorCreateCopyWithAlpha(nullptr, 1));
    EXPECT_EQ((std::array<double, 4>{0, 0, 0, 0}), components(nullptr));
}

TEST(ColorTest, LayerRetainsItsBackground) {
    auto layer = std::make_unique<Layer>();
    CGColorRef first = CGColorCreateGenericRGB(1, 0, 0, 1);
    layer->setBackgroundColor(first);
    CGColorRelease(first);  // the layer's reference keeps it alive
    // Setting the colour it already holds must not free it on the way.
    layer->setBackgroundColor(layer->backgroundColor());
    EXPECT_EQ(1.0, components(layer->backgroundColor())[0]);

    CGColorRef second = CGColorCreateGenericRGB(0, 1, 0, 1);
    layer->setBackgroundColor(second);
    layer.reset();  // releases |second|'s extra reference
    EXPECT_EQ(1.0, components(second)[1]);
    CGColorRelease(second);
}

TEST(ColorTest, SetMakesTheColourCurrentForFillAndStroke) {
    Color::blackColor()->set();  // no current context: nothing happens
    pixel_test::render(4, 4, 1, [](GraphicsContext& context) {
        auto red = Color::colorWithDeviceRed(1, 0, 0, 1);
        red->set();
        EXPECT_TRUE(*context.strokeColor() == *red);
        Color::whiteColor()->setStroke();
        EXPECT_TRUE(*context.fillColor() == *red);
        EXPECT_TRUE(*context.strokeColor() == *Color::whiteColor());
        Color::blackColor()->setFill();
        EXPECT_TRUE(*context.fillColor() == *Color::blackColor());
    });
}
