#pragma once

#include "viewkit/PLSView.h"

// A thin separating line: the view's backing layer painted "#e2e2e2". Its thickness is the
// frame's height (or width) chosen by the owner. Main thread only.
class PLSDivider : public PLSView {
  public:
    explicit PLSDivider(const platform::Rect& frame = platform::NSZeroRect);
    std::string className() const override { return "PLSDivider"; }
};
