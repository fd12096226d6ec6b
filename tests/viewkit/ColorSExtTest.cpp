#include "viewkit/ColorSExt.h"

#include <gtest/gtest.h>

#include <cmath>
#include <optional>
#include <string>
#include <vector>

using platform::ColorPtr;

namespace {

struct Components {
    double r, g, b, a;
};

Components componentsOf(const ColorPtr& color) {
    Components c{-1, -1, -1, -1};
    color->getRed(&c.r, &c.g, &c.b, &c.a);
    return c;
}

double singlePrecision(int v) {
    return static_cast<double>(static_cast<float>(v) / 255.0f);
}

// Components are single-precision quotients widened to double (247/255 as a float is not the
// double quotient); eight digits read alpha first.
TEST(ColorSExt, HexDigitsGiveDeviceRGBComponents) {
    const struct {
        const char* text;
        double r, g, b, a;
    } cases[] = {
        {"#00A2FF", 0, singlePrecision(162), 1, 1},
        {"00A2FF", 0, singlePrecision(162), 1, 1},
        {"#00a2ff", 0, singlePrecision(162), 1, 1},
        {"#F7F7F7", singlePrecision(247), singlePrecision(247), singlePrecision(247), 1},
        {"#80FF0000", 1, 0, 0, singlePrecision(128)},
        {"00123456", singlePrecision(0x12), singlePrecision(0x34), singlePrecision(0x56), 0},
    };
    for (const auto& c : cases) {
        const ColorPtr color = SExt::colorWithHex(std::string(c.text));
        ASSERT_NE(nullptr, color) << c.text;
        EXPECT_EQ(platform::ColorSpace::DeviceRGB, color->colorSpace());
        const Components got = componentsOf(color);
        EXPECT_EQ((std::vector<double>{c.r, c.g, c.b, c.a}),
                  (std::vector<double>{got.r, got.g, got.b, got.a}))
            << c.text;
    }
    EXPECT_NE(247.0 / 255.0, singlePrecision(247));
}

TEST(ColorSExt, MalformedStringsGiveNoColour) {
    EXPECT_EQ(nullptr, SExt::colorWithHex(std::nullopt));
    for (const char* text :
         {"", "#", "#FFF", "FFF", "#FFFFFFF", "##FFFFFF", "#FFFFFFFFF", " FFFFFF", "#FFFFFF ",
          "0xFFFFFF", "#GG0000", "#0G0000", "#00000G", "#12 456", "#+1FFFF", "#-1FFFF",
          "#FF\xC3\xA9"
          "FFF",
          "#\xC3\xA9"
          "FFFFF",
          "#FFFF\xF0\x9F\x98\x80"}) {
        EXPECT_EQ(nullptr, SExt::colorWithHex(std::string(text))) << '"' << text << '"';
    }
    // A string that is 8 bytes but 6 UTF-16 units (two accented letters) is still no colour.
    EXPECT_EQ(nullptr, SExt::colorWithHex(std::string("\xC3\xA9\xC3\xA9"
                                                      "FFFF")));
}

TEST(ColorSExt, ForwardCompatibilityCGColorCopiesTheComponents) {
    const ColorPtr source = SExt::colorWithHex("#8000A2FF");
    platform::CGColorRef cg = SExt::forwardCompatibilityCGColor(*source);
    ASSERT_NE(nullptr, cg);
    double components[4];
    platform::CGColorGetComponents(cg, components);
    const Components expected = componentsOf(source);
    EXPECT_DOUBLE_EQ(expected.r, components[0]);
    EXPECT_DOUBLE_EQ(expected.g, components[1]);
    EXPECT_DOUBLE_EQ(expected.b, components[2]);
    EXPECT_DOUBLE_EQ(expected.a, components[3]);
    platform::CGColorRelease(cg);

    cg = SExt::forwardCompatibilityCGColor(*platform::Color::colorWithCalibratedWhite(0.25, 0.5));
    platform::CGColorGetComponents(cg, components);
    EXPECT_DOUBLE_EQ(0.25, components[0]);
    EXPECT_DOUBLE_EQ(0.25, components[1]);
    EXPECT_DOUBLE_EQ(0.25, components[2]);
    EXPECT_DOUBLE_EQ(0.5, components[3]);
    platform::CGColorRelease(cg);
}

}  // namespace
