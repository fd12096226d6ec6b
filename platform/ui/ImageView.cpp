#include "platform/ui/ImageView.h"

#include <algorithm>

namespace platform {

ImageView::ImageView(const Rect& frame) : View(frame) {}

void ImageView::setImage(ImagePtr image) {
    image_ = std::move(image);
    setNeedsDisplay(true);
}

void ImageView::setImageScaling(ImageScaling scaling) {
    scaling_ = scaling;
    setNeedsDisplay(true);
}

void ImageView::setHighlighted(bool highlighted) {
    highlighted_ = highlighted;
    setNeedsDisplay(true);
}

bool ImageView::sendAction() {
    std::shared_ptr<Responder> receiver = target_.lock();
    if (!receiver || action_.empty() || !receiver->respondsToSelector(action_))
        return false;
    // The receiver may drop this view; the argument keeps it alive through the call.
    std::shared_ptr<View> self = weak_from_this().lock();
    receiver->performSelector(action_, self);
    return true;
}

Rect ImageView::imageRect() const {
    if (!image_)
        return NSZeroRect;
    const Size area = bounds().size;
    const Size natural = image_->size();
    Size shown = natural;
    switch (scaling_) {
        case ImageScaling::AxesIndependently:
            shown = area;
            break;
        case ImageScaling::None:
            break;
        case ImageScaling::ProportionallyDown:
        case ImageScaling::ProportionallyUpOrDown: {
            if (natural.width <= 0 || natural.height <= 0) {
                shown = {0, 0};
                break;
            }
            double factor = std::min(area.width / natural.width, area.height / natural.height);
            if (scaling_ == ImageScaling::ProportionallyDown)
                factor = std::min(factor, 1.0);
            shown = {natural.width * factor, natural.height * factor};
            break;
        }
    }
    return {{(area.width - shown.width) / 2, (area.height - shown.height) / 2}, shown};
}

void ImageView::drawRect(const Rect&) {
    if (!image_)
        return;
    const Rect destination = imageRect();
    if (destination.isEmpty())
        return;
    image_->drawInRect(destination, 1.0);
}

}  // namespace platform
