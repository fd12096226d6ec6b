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

struct LayerColour {
    double r, g, b, a;
};

LayerColour layerBackground(const platform::View& view) {
    double c[4] = {-1, -1, -1, -1};
    EXPECT_NE(nullptr, view.layer());
    if (view.layer())
        platform::CGColorGetComponents(view.layer()->backgroundColor(), c);
    return {c[0], c[1], c[2], c[3]};
}

void expectNear(Rgba expected, Rgba actual, int tolerance, const char* what) {
    EXPECT_LE(std::abs(expected.r - actual.r), tolerance) << what << " red " << int(actual.r);
    EXPECT_LE(std::abs(expected.g - actual.g), tolerance) << what << " green " << int(actual.g);
    EXPECT_LE(std::abs(expected.b - actual.b), tolerance) << what << " blue " << int(actual.b);
    EXPECT_LE(std::abs(expected.a - actual.a), tolerance) << what << " alpha " << int(actual.a);
}

TEST(PLSDivider, FixedDividersPaintTheirLayer) {
    const double grey = static_cast<double>(226.0f / 255.0f);
    PLSDivider divider(NSMakeRect(0, 0, 10, 1));
    const LayerColour plain = layerBackground(divider);
    EXPECT_DOUBLE_EQ(grey, plain.r);
    EXPECT_DOUBLE_EQ(grey, plain.g);
    EXPECT_DOUBLE_EQ(grey, plain.b);
    EXPECT_DOUBLE_EQ(1.0, plain.a);

    PLSLightDivider light(NSMakeRect(0, 0, 10, 1));
    const LayerColour l = layerBackground(light);
    EXPECT_DOUBLE_EQ(0.0, l.r);
    EXPECT_DOUBLE_EQ(0.0, l.b);
    EXPECT_DOUBLE_EQ(0.06, l.a);

    PLSExtraLightDivider extraLight(NSMakeRect(0, 0, 10, 1));
    const LayerColour e = layerBackground(extraLight);
    EXPECT_DOUBLE_EQ(0.0, e.g);
    EXPECT_DOUBLE_EQ(0.04, e.a);

    PLSCustomDivider custom(NSMakeRect(0, 0, 10, 1));
    EXPECT_DOUBLE_EQ(grey, layerBackground(custom).r);
    EXPECT_EQ(0.0, custom.customAlpha());
    EXPECT_EQ(nullptr, custom.customColor());
}

TEST(PLSCustomDivider, TranslucentColourShowsTheGreyLayerThrough) {
    for (double scale : {1.0, 2.0}) {
        auto divider = std::make_shared<PLSCustomDivider>(NSMakeRect(0, 0, 20, 4));
        divider->setCustomColor(SExt::colorWithHex("#000000"));
        divider->setCustomAlpha(0.1);
        const auto bitmap = platform::Bitmap::renderView(*divider, scale);
        ASSERT_NE(nullptr, bitmap);
        // 10 % black over #e2e2e2: 0.9 * 226 = 203.4.
        expectNear({204, 204, 204, 255}, bitmap->pixelAtPoint(10, 2), 1, "middle");
        expectNear({204, 204, 204, 255}, bitmap->pixelAtPoint(0.25, 0.25), 1, "corner");
        EXPECT_EQ(0.1, divider->customAlpha());
    }
}

TEST(PLSCustomDivider, UnsetColourAndAlphaBecomeGreyAtTheViewsAlpha) {
    auto divider = std::make_shared<PLSCustomDivider>(NSMakeRect(0, 0, 20, 4));
    const auto bitmap = platform::Bitmap::renderView(*divider, 1);
    expectNear({226, 226, 226, 255}, bitmap->pixelAtPoint(10, 2), 1, "default divider");
    ASSERT_NE(nullptr, divider->customColor());
    EXPECT_TRUE(*SExt::colorWithHex("#e2e2e2") == *divider->customColor());
    EXPECT_EQ(1.0, divider->customAlpha());
}

TEST(PLSCustomDivider, ZeroAlphaIsReplacedByTheViewsAlphaNotInvisible) {
    auto divider = std::make_shared<PLSCustomDivider>(NSMakeRect(0, 0, 20, 4));
    divider->setCustomColor(SExt::colorWithHex("#000000"));
    divider->setCustomAlpha(0.0);
    auto bitmap = platform::Bitmap::renderView(*divider, 1);
    expectNear({0, 0, 0, 255}, bitmap->pixelAtPoint(10, 2), 1, "opaque black");
    EXPECT_EQ(1.0, divider->customAlpha());

    auto faded = std::make_shared<PLSCustomDivider>(NSMakeRect(0, 0, 20, 4));
    faded->setAlphaValue(0.5);
    faded->setCustomColor(SExt::colorWithHex("#000000"));
    platform::Bitmap::renderView(*faded, 1);
    EXPECT_EQ(0.5, faded->customAlpha());
}

TEST(PLSCustomDivider, DrawingOutsideAnyContextOnlySettlesTheProperties) {
    PLSCustomDivider divider(NSMakeRect(0, 0, 20, 4));
    divider.drawRect(divider.bounds());
    EXPECT_NE(nullptr, divider.customColor());
    EXPECT_EQ(1.0, divider.customAlpha());
}

}  // namespace
