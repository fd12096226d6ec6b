#include "viewkit/PLSCustomDivider.h"

#include "platform/ui/GraphicsContext.h"
#include "viewkit/ColorSExt.h"

void PLSCustomDivider::drawRect(const platform::Rect& /*dirtyRect*/) {
    platform::GraphicsContext* context = platform::GraphicsContext::currentContext();
    if (!customColor_)
        customColor_ = SExt::colorWithHex("#e2e2e2");
    if (customAlpha_ == 0.0)
        customAlpha_ = alphaValue();
    if (!context || !customColor_)
        return;

    platform::CGContextRef cg = context->CGContext();
    // The alpha replaces the colour's own rather than multiplying it.
    platform::CGColorRef fill =
        platform::CGColorCreateCopyWithAlpha(customColor_->CGColor(), customAlpha_);
    platform::CGContextSetFillColorWithColor(cg, fill);
    platform::CGColorRelease(fill);
    platform::CGContextFillRect(cg, bounds());
}
