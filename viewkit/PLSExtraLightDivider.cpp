#include "viewkit/PLSExtraLightDivider.h"

PLSExtraLightDivider::PLSExtraLightDivider(const platform::Rect& frame) : PLSDivider(frame) {
    layer()->setBackgroundColor(platform::Color::colorWithCalibratedWhite(0.0, 0.04)->CGColor());
}
