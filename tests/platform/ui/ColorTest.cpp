#include <gtest/gtest.h>

#include <array>

#include "platform/ui/Color.h"
#include "platform/ui/Layer.h"
#include "tests/platform/ui/PixelTestSupport.h"

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

TEST(ColorTest, NamedColoursAndWhiteLevels) {
    EXPECT_EQ((std::array<double, 4>{1, 1, 1, 1}), components(*Color::whiteColor()));
    EXPECT_EQ((std::array<double, 4>{0, 0, 0, 1}), components(*Color::blackColor()));
    EXPECT_EQ((std::array<double, 4>{0, 0, 0, 0}), components(*Color::clearColor()));
    EXPECT_EQ((std::array<double, 4>{0.25, 0.25, 0.25, 0.06}),
              components(*Color::colorWithCalibratedWhite(0.25, 0.06)));
    EXPECT_EQ(ColorSpace::CalibratedWhite, Color::colorWithWhite(0.5, 1)->colorSpace());
}

TEST(ColorTest, ConversionToGenericRgbKeepsComponentsExactly) {
    double third = 162.0f / 255.0f;
    auto device = Color::colorWithDeviceRed(0, third, 1, 0.5);
    auto generic = device->colorUsingColorSpace(ColorSpace::GenericRGB);
    ASSERT_TRUE(generic);
    EXPECT_EQ(ColorSpace::GenericRGB, generic->colorSpace());
    EXPECT_EQ((std::array<double, 4>{0, third, 1, 0.5}), components(*generic));

    auto white =
        Color::colorWithCalibratedWhite(0.8, 0.3)->colorUsingColorSpace(ColorSpace::GenericRGB);
    ASSERT_TRUE(white);
    EXPECT_EQ((std::array<double, 4>{0.8, 0.8, 0.8, 0.3}), components(*white));
    EXPECT_FALSE(device->colorUsingColorSpace(ColorSpace::Pattern));
}

TEST(ColorTest, AlphaVariantAndEquality) {
    auto red = Color::colorWithDeviceRed(1, 0, 0, 1);
    auto faded = red->colorWithAlphaComponent(0.25);
    EXPECT_EQ(0.25, faded->alphaComponent());
    EXPECT_EQ(1.0, red->alphaComponent());
    EXPECT_TRUE(*red == *Color::colorWithDeviceRed(1, 0, 0, 1));
    EXPECT_FALSE(*red == *faded);
    // Same components, different space: not the same colour.
    EXPECT_FALSE(*Color::whiteColor() == *Color::colorWithDeviceRed(1, 1, 1, 1));
}

TEST(ColorTest, CoreGraphicsColoursCountReferences) {
    CGColorRef color = CGColorCreateGenericRGB(0.1, 0.2, 0.3, 0.4);
    EXPECT_EQ((std::array<double, 4>{0.1, 0.2, 0.3, 0.4}), components(color));
    EXPECT_EQ(color, CGColorRetain(color));
    CGColorRelease(color);
    // Still alive after one release of two references: reading it must be valid (ASan checks).
    EXPECT_EQ(0.4, components(color)[3]);

    CGColorRef copy = CGColorCreateCopyWithAlpha(color, 0.9);
    CGColorRelease(color);
    EXPECT_EQ((std::array<double, 4>{0.1, 0.2, 0.3, 0.9}), components(copy));
    CGColorRelease(copy);

    CGColorRelease(nullptr);
    EXPECT_EQ(nullptr, CGColorRetain(nullptr));
    EXPECT_EQ(nullptr, CGColorCreateCopyWithAlpha(nullptr, 1));
    EXPECT_EQ((std::array<double, 4>{0, 0, 0, 0}), components(nullptr));
}

TEST(ColorTest, ColourOwnsOneCoreGraphicsHandle) {
    auto colour = Color::colorWithCalibratedWhite(0.5, 0.75);
    CGColorRef handle = colour->CGColor();
    EXPECT_EQ(handle, colour->CGColor());
    EXPECT_EQ((std::array<double, 4>{0.5, 0.5, 0.5, 0.75}), components(handle));
    // A retained handle outlives its colour.
    CGColorRetain(handle);
    colour.reset();
    EXPECT_EQ(0.75, components(handle)[3]);
    CGColorRelease(handle);
}

TEST(ColorTest, LayerRetainsItsBackground) {
    auto layer = std::make_unique<Layer>();
    CGColorRef first = CGColorCreateGenericRGB(1, 0, 0, 1);
    layer->setBackgroundColor(first);
    CGColorRelease(first);  // the layer's reference keeps it alive
    EXPECT_EQ(1.0, components(layer->backgroundColor())[0]);

    // Setting the colour it already holds must not free it on the way.
    layer->setBackgroundColor(layer->backgroundColor());
    EXPECT_EQ(1.0, components(layer->backgroundColor())[0]);

    CGColorRef second = CGColorCreateGenericRGB(0, 1, 0, 1);
    layer->setBackgroundColor(second);
    EXPECT_EQ(second, layer->backgroundColor());
    layer.reset();  // releases |second|'s extra reference
    EXPECT_EQ(1.0, components(second)[1]);
    CGColorRelease(second);

    Layer cleared;
    cleared.setBackgroundColor(nullptr);
    EXPECT_EQ(nullptr, cleared.backgroundColor());
}

TEST(ColorTest, SetMakesTheColourCurrentForFillAndStroke) {
    Color::blackColor()->set();  // no current context: nothing happens
    pixel_test::render(4, 4, 1, [](GraphicsContext& context) {
        auto red = Color::colorWithDeviceRed(1, 0, 0, 1);
        red->set();
        EXPECT_TRUE(*context.fillColor() == *red);
        EXPECT_TRUE(*context.strokeColor() == *red);
        Color::whiteColor()->setStroke();
        EXPECT_TRUE(*context.fillColor() == *red);
        EXPECT_TRUE(*context.strokeColor() == *Color::whiteColor());
        Color::blackColor()->setFill();
        EXPECT_TRUE(*context.fillColor() == *Color::blackColor());
    });
}
