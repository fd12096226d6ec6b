#pragma once

#include "viewkit/PLSDivider.h"

// A divider painted black at alpha 0.04 (over whatever lies beneath). Main thread only.
class PLSExtraLightDivider : public PLSDivider {
  public:
    explicit PLSExtraLightDivider(const platform::Rect& frame = platform::NSZeroRect);
    std::string className() const override { return "PLSExtraLightDivider"; }
};
