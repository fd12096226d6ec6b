#include "tests/viewkit/ViewKitTestSupport.h"
#include "viewkit/PLSCustomDivider.h"
#include "viewkit/PLSExtraLightDivider.h"
#include "viewkit/PLSLightDivider.h"

// Fixed dividers paint their layer. The custom colour is drawn over the grey layer; an unset colour
// is #e2e2e2 and an unset or zero alpha becomes the view's own alpha, so a divider is never
// invisible.
TEST(PLSDivider, FixedDividersPaintTheirLayerACustomOneItsColourOverTheGrey) {
    const double grey = static_cast<double>(226.0f / 255.0f);
    const std::pair<std::shared_ptr<platform::View>, std::vector<double>> cases[] = {
        {std::make_shared<PLSDivider>(NSMakeRect(0, 0, 10, 1)), {grey, grey, 1.0}},
        {std::make_shared<PLSLightDivider>(NSMakeRect(0, 0, 10, 1)), {0, 0, 0.06}},
        {std::make_shared<PLSExtraLightDivider>(NSMakeRect(0, 0, 10, 1)), {0, 0, 0.04}},
    };
    for (const auto& [divider, expected] : cases) {
        SCOPED_TRACE(divider->className());
        double rgba[4] = {-1, -1, -1, -1};
        platform::CGColorGetComponents(divider->layer()->backgroundColor(), rgba);
        EXPECT_EQ(expected, (std::vector<double>{rgba[0], rgba[2], rgba[3]}));
    }
    // Colour, alpha (-1 unset), the view's alpha, the alpha it settles on, the grey level at full
    // opacity (-1 for nothing opaque).
    const std::tuple<const char*, double, double, double, int> custom[] = {
        {"#000000", 0.1, 1.0, 0.1, 204},  // 0.9 * 226 = 203.4
        {nullptr, -1, 1.0, 1.0, 226},
        {"#000000", 0.0, 0.5, 0.5, -1},
    };
    for (const auto& [colour, alpha, viewAlpha, settledAlpha, grey] : custom) {
        SCOPED_TRACE(std::string(colour ? colour : "unset") + " at " + std::to_string(alpha));
        auto divider = std::make_shared<PLSCustomDivider>(NSMakeRect(0, 0, 20, 4));
        divider->setAlphaValue(viewAlpha);
        if (colour)
            divider->setCustomColor(SExt::colorWithHex(colour));
        if (alpha >= 0)
            divider->setCustomAlpha(alpha);
        const Rgba p = platform::Bitmap::renderView(*divider, 1)->pixelAtPoint(10, 2);
        EXPECT_EQ(settledAlpha, divider->customAlpha());
        if (grey < 0) {
            EXPECT_LT(p.a, 255);
            continue;
        }
        EXPECT_NEAR(grey, p.r, 1);
        EXPECT_EQ(p.r, p.g);
        EXPECT_EQ(255, p.a);
    }
}
