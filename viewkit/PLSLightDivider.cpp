#include "viewkit/PLSLightDivider.h"

PLSLightDivider::PLSLightDivider(const platform::Rect& frame) : PLSDivider(frame) {
    layer()->setBackgroundColor(platform::Color::colorWithCalibratedWhite(0.0, 0.06)->CGColor());
}
