#include <gtest/gtest.h>

#include <cstdlib>
#include <memory>

#include "platform/ui/Bitmap.h"
#include "viewkit/ColorSExt.h"
#include "viewkit/PLSCustomDivider.h"
#include "viewkit/PLSDivider.h"
#include "viewkit/PLSExtraLightDivider.h"
#include "viewkit/PLSLightDivider.h"

using platform::NSMakeRect;
using platform::Rgba;

namespace {

::testing::AssertionResult near(Rgba expected, Rgba actual) {
    if (std::abs(expected.r - actual.r) <= 1 && std::abs(expected.g - actual.g) <= 1 &&
        std::abs(expected.b - actual.b) <= 1 && std::abs(expected.a - actual.a) <= 1)
        return ::testing::AssertionSuccess();
    return ::testing::AssertionFailure() << "rgba(" << int(actual.r) << ", " << int(actual.g)
                                         << ", " << int(actual.b) << ", " << int(actual.a) << ")";
}

TEST(PLSDivider, FixedDividersPaintTheirLayer) {
    const double grey = static_cast<double>(226.0f / 255.0f);
    const struct {
        std::shared_ptr<platform::View> divider;
        double r, a;
    } cases[] = {
        {std::make_shared<PLSDivider>(NSMakeRect(0, 0, 10, 1)), grey, 1.0},
        {std::make_shared<PLSLightDivider>(NSMakeRect(0, 0, 10, 1)), 0.0, 0.06},
        {std::make_shared<PLSExtraLightDivider>(NSMakeRect(0, 0, 10, 1)), 0.0, 0.04},
        {std::make_shared<PLSCustomDivider>(NSMakeRect(0, 0, 10, 1)), grey, 1.0},
    };
    for (const auto& c : cases) {
        ASSERT_NE(nullptr, c.divider->layer());
        double rgba[4] = {-1, -1, -1, -1};
        platform::CGColorGetComponents(c.divider->layer()->backgroundColor(), rgba);
        EXPECT_DOUBLE_EQ(c.r, rgba[0]) << c.divider->className();
        EXPECT_DOUBLE_EQ(c.r, rgba[2]) << c.divider->className();
        EXPECT_DOUBLE_EQ(c.a, rgba[3]) << c.divider->className();
    }
}

// The custom colour is drawn over the grey layer; an unset colour is #e2e2e2 and an unset or
// zero alpha becomes the view's own alpha, so a divider is never invisible.
TEST(PLSCustomDivider, ColourAndAlphaOverTheGreyLayer) {
    const struct {
        const char* colour;
        double alpha, viewAlpha, scale;
        Rgba middle;
        double settledAlpha;
    } cases[] = {
        {"#000000", 0.1, 1.0, 1, {204, 204, 204, 255}, 0.1},  // 0.9 * 226 = 203.4
        {"#000000", 0.1, 1.0, 2, {204, 204, 204, 255}, 0.1},
        {nullptr, -1, 1.0, 1, {226, 226, 226, 255}, 1.0},
        {"#000000", 0.0, 1.0, 1, {0, 0, 0, 255}, 1.0},
        {"#000000", -1, 0.5, 1, {0, 0, 0, 0}, 0.5},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.colour ? c.colour : "(unset)");
        auto divider = std::make_shared<PLSCustomDivider>(NSMakeRect(0, 0, 20, 4));
        divider->setAlphaValue(c.viewAlpha);
        if (c.colour)
            divider->setCustomColor(SExt::colorWithHex(c.colour));
        if (c.alpha >= 0)
            divider->setCustomAlpha(c.alpha);
        const auto bitmap = platform::Bitmap::renderView(*divider, c.scale);
        if (c.middle.a) {
            EXPECT_TRUE(near(c.middle, bitmap->pixelAtPoint(10, 2)));
        }
        EXPECT_EQ(c.settledAlpha, divider->customAlpha());
        ASSERT_NE(nullptr, divider->customColor());
    }
    auto grey = std::make_shared<PLSCustomDivider>(NSMakeRect(0, 0, 20, 4));
    grey->drawRect(grey->bounds());  // outside any context: only the properties settle
    EXPECT_TRUE(*SExt::colorWithHex("#e2e2e2") == *grey->customColor());
    EXPECT_EQ(1.0, grey->customAlpha());
}

}  // namespace
