#include <array>

#include "platform/ui/Color.h"
#include "tests/platform/ui/PixelTestSupport.h"

using namespace platform;
using Components = std::array<double, 4>;

static Components components(const Color& color) {
    Components c{};
    color.getRed(&c[0], &c[1], &c[2], &c[3]);
    return c;
}

// Conversion to generic RGB keeps components exactly; a colour equals another only in the same
// space.
TEST(ColorTest, ConversionToGenericRgbKeepsComponentsExactly) {
    const double third = 162.0f / 255.0f;
    auto generic =
        Color::colorWithDeviceRed(0, third, 1, 0.5)->colorUsingColorSpace(ColorSpace::GenericRGB);
    ASSERT_TRUE(generic);
    EXPECT_EQ(ColorSpace::GenericRGB, generic->colorSpace());
    EXPECT_EQ((Components{0, third, 1, 0.5}), components(*generic));
    EXPECT_FALSE(generic->colorUsingColorSpace(ColorSpace::Pattern));

    Color::blackColor()->set();  // no current context: nothing happens
    auto red = Color::colorWithDeviceRed(1, 0, 0, 1);
    EXPECT_TRUE(*red == *Color::colorWithDeviceRed(1, 0, 0, 1));
    EXPECT_FALSE(*red == *red->colorWithAlphaComponent(0.25));
    EXPECT_FALSE(*Color::whiteColor() == *Color::colorWithDeviceRed(1, 1, 1, 1));
    EXPECT_TRUE(*Color::whiteColor() == *Color::colorWithWhite(1, 1));
}
