#pragma once

#include "viewkit/PLSDivider.h"

// A divider painted black at alpha 0.06 (over whatever lies beneath). Main thread only.
class PLSLightDivider : public PLSDivider {
  public:
    explicit PLSLightDivider(const platform::Rect& frame = platform::NSZeroRect);
    std::string className() const override { return "PLSLightDivider"; }
};
