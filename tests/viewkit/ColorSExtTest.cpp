#include "viewkit/ColorSExt.h"

#include <gtest/gtest.h>

#include <cmath>
#include <optional>
#include <string>

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

TEST(ColorSExt, SixDigitsWithOrWithoutHashAreOpaqueDeviceRGB) {
    for (const char* text : {"#00A2FF", "00A2FF", "#00a2ff"}) {
        const ColorPtr color = SExt::colorWithHex(std::string(text));
        ASSERT_NE(nullptr, color) << text;
        EXPECT_EQ(platform::ColorSpace::DeviceRGB, color->colorSpace());
        const Components c = componentsOf(color);
        EXPECT_EQ(0.0, c.r) << text;
        EXPECT_EQ(singlePrecision(162), c.g) << text;
        EXPECT_EQ(1.0, c.b) << text;
        EXPECT_EQ(1.0, c.a) << text;
    }
    EXPECT_TRUE(*SExt::colorWithHex("#e2e2e2") == *SExt::colorWithHex("#E2E2E2"));
}

TEST(ColorSExt, EightDigitsReadAlphaFirst) {
    const Components c = componentsOf(SExt::colorWithHex("#80FF0000"));
    EXPECT_EQ(1.0, c.r);
    EXPECT_EQ(0.0, c.g);
    EXPECT_EQ(0.0, c.b);
    EXPECT_EQ(singlePrecision(128), c.a);
    EXPECT_EQ(singlePrecision(0x12), componentsOf(SExt::colorWithHex("00123456")).r);
}

TEST(ColorSExt, ComponentsAreSinglePrecisionQuotientsWidened) {
    const double f7 = componentsOf(SExt::colorWithHex("#F7F7F7")).r;
    EXPECT_EQ(singlePrecision(247), f7);
    EXPECT_NE(247.0 / 255.0, f7);
    EXPECT_LT(std::fabs(247.0 / 255.0 - f7), 1e-8);
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
