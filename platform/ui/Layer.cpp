#include "platform/ui/Layer.h"

#include <algorithm>

#include "platform/ui/BezierPath.h"
#include "platform/ui/GraphicsContext.h"
#include "platform/ui/Image.h"

namespace platform {

namespace {

std::shared_ptr<BezierPath> boundsPath(const Rect& bounds, double cornerRadius) {
    if (cornerRadius > 0)
        return BezierPath::bezierPathWithRoundedRect(bounds, cornerRadius, cornerRadius);
    return BezierPath::bezierPathWithRect(bounds);
}

// Where the contents go in |bounds| for |gravity|, centred except for Resize.
Rect contentsRect(const Rect& bounds, Size imageSize, Layer::Gravity gravity) {
    if (gravity == Layer::Gravity::Resize || imageSize.width <= 0 || imageSize.height <= 0)
        return bounds;
    double width = imageSize.width;
    double height = imageSize.height;
    if (gravity != Layer::Gravity::Center) {
        double sx = bounds.size.width / imageSize.width;
        double sy = bounds.size.height / imageSize.height;
        double scale =
            gravity == Layer::Gravity::ResizeAspect ? std::min(sx, sy) : std::max(sx, sy);
        width *= scale;
        height *= scale;
    }
    return NSMakeRect(bounds.midX() - width / 2, bounds.midY() - height / 2, width, height);
}

}  // namespace

Layer::~Layer() {
    CGColorRelease(background_);
}

void Layer::setBackgroundColor(CGColorRef color) {
    // Retain first: |color| may be the colour we hold, whose last reference we would drop.
    CGColorRetain(color);
    CGColorRelease(background_);
    background_ = color;
}

void Layer::drawInContext(GraphicsContext& ctx, const Rect& bounds) const {
    GraphicsContext::Current current(&ctx);
    if (background_) {
        ctx.saveGraphicsState();
        ctx.setFillColorWithColor(background_);
        boundsPath(bounds, cornerRadius_)->fill();
        ctx.restoreGraphicsState();
    }
    if (contents_) {
        ctx.saveGraphicsState();
        if (masksToBounds_)
            clipToShape(ctx, bounds);
        // Aspect fill overflows the bounds: the overflow is cropped away.
        if (gravity_ == Gravity::ResizeAspectFill)
            ctx.clipToRect(bounds);
        contents_->drawInRect(contentsRect(bounds, contents_->size(), gravity_), 1.0);
        ctx.restoreGraphicsState();
    }
}

void Layer::clipToShape(GraphicsContext& ctx, const Rect& bounds) const {
    GraphicsContext::Current current(&ctx);
    boundsPath(bounds, cornerRadius_)->addClip();
}

}  // namespace platform
