#pragma once

#include "platform/ui/Color.h"
#include "viewkit/PLSDivider.h"

// A divider whose line is drawn in customColor at customAlpha over the "#e2e2e2" layer that every
// divider has, so a translucent colour shows that grey through it. New values show at the next
// drawing; setting them asks for none. Main thread only.
class PLSCustomDivider : public PLSDivider {
  public:
    using PLSDivider::PLSDivider;
    std::string className() const override { return "PLSCustomDivider"; }

    double customAlpha() const { return customAlpha_; }
    void setCustomAlpha(double alpha) { customAlpha_ = alpha; }
    const platform::ColorPtr& customColor() const { return customColor_; }
    void setCustomColor(platform::ColorPtr color) { customColor_ = std::move(color); }

    // Fills the whole bounds. A missing colour becomes "#e2e2e2" and an alpha of exactly 0 the
    // view's own alpha value; both substitutions are kept in the properties.
    void drawRect(const platform::Rect& dirtyRect) override;

  private:
    double customAlpha_ = 0;
    platform::ColorPtr customColor_;
};
