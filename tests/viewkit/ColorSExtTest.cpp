#include "tests/viewkit/ViewKitTestSupport.h"

static std::vector<double> rgba(const platform::Color& color) {
    std::vector<double> c(4, -1);
    color.getRed(&c[0], &c[1], &c[2], &c[3]);
    return c;
}

static double singlePrecision(int v) {
    return static_cast<float>(v) / 255.0f;
}

// Components are single-precision quotients widened to double (247/255 as a float is not the double
// quotient); eight digits read alpha first. The forward-compatible colour has the same components.
TEST(ColorSExt, HexDigitsGiveDeviceRGBComponentsAndMalformedOnesNoColour) {
    const std::pair<const char*, std::vector<double>> cases[] = {
        {"F7a2FF", {singlePrecision(247), singlePrecision(162), 1, 1}},
        {"#80FF0012", {1, 0, singlePrecision(0x12), singlePrecision(128)}},
    };
    for (const auto& [text, expected] : cases) {
        const platform::ColorPtr color = SExt::colorWithHex(std::string(text));
        ASSERT_NE(nullptr, color) << text;
        EXPECT_EQ(platform::ColorSpace::DeviceRGB, color->colorSpace());
        EXPECT_EQ(expected, rgba(*color)) << text;
        platform::CGColorRef cg = SExt::forwardCompatibilityCGColor(*color);
        std::vector<double> components(4, -1);
        platform::CGColorGetComponents(cg, components.data());
        platform::CGColorRelease(cg);
        EXPECT_EQ(expected, components) << text;
    }
    // Malformed strings give no colour.
    EXPECT_EQ(nullptr, SExt::colorWithHex(std::nullopt));
    for (const char* text :
         {"", "#", "#FFF", "#FFFFFFF", "##FFFFFF", "#FFFFFFFFF", " FFFFFF", "0xFFFFFF", "#GG0000",
          "#0G0000", "#12 456", "#+1FFFF", "#FF\u00e9FFF", "#FFFF\U0001F600", "\u00e9\u00e9FFFF"})
        EXPECT_EQ(nullptr, SExt::colorWithHex(std::string(text))) << '"' << text << '"';
}
