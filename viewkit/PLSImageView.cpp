#include "viewkit/PLSImageView.h"

#include "platform/core/MainQueue.h"
#include "platform/ui/AppKitVersion.h"
#include "platform/ui/BezierPath.h"
#include "platform/ui/Color.h"
#include "platform/ui/GraphicsContext.h"
#include "platform/ui/Layer.h"
#include "platform/ui/Window.h"
#include "viewkit/ViewSExt.h"

using platform::Image;
using platform::ImagePtr;
using platform::Rect;
using platform::Size;

namespace {

// Whether |closure| is set and takes |event| over. It runs from a copy: it may replace itself.
bool handledBy(PLSImageView::HandlingBlock closure, const platform::Event& event) {
    return closure && closure(event);
}

// Toolkit releases above this one show aspect fill through a layer.
constexpr double kLayerAspectFillVersion = 1672.0;
// The overlay of a highlighted view: black at this alpha.
constexpr double kHighlightAlpha = 0.4;

}  // namespace

PLSImageView::PLSImageView(const Rect& frame) : ImageView(frame) {
    setPlCornerRadius(0.0);
}

bool PLSImageView::usesLayerPath() {
    return platform::NSAppKitVersionNumber() > kLayerAspectFillVersion;
}

void PLSImageView::setVibrancyMode(int32_t mode) {
    vibrancyMode_ = mode;
    setNeedsDisplay(true);
}

void PLSImageView::setHighlightMode(int32_t mode) {
    highlightMode_ = mode;
    setNeedsDisplay(true);
}

void PLSImageView::setHighlighted(bool highlighted) {
    ImageView::setHighlighted(highlighted);
    setNeedsDisplay(true);
}

bool PLSImageView::mouseDownCanMoveWindow() const {
    return forceWindowDraggable_ || ImageView::mouseDownCanMoveWindow();
}

bool PLSImageView::allowsVibrancy() const {
    if (vibrancyMode_ == 0)
        return ImageView::allowsVibrancy();
    return vibrancyMode_ == 2;
}

// --- Aspect fill ------------------------------------------------------------------------------

void PLSImageView::setImage(ImagePtr image) {
    platform::MainQueue::assertMainThread("PLSImageView::setImage");
    if (!drawWithAspectFill_) {
        ImageView::setImage(std::move(image));
        return;
    }
    if (usesLayerPath()) {
        // A new layer given before layers are switched on is the one the view hosts.
        auto layer = std::make_shared<platform::Layer>();
        setLayer(layer);
        layer->setContentsGravity(platform::Layer::Gravity::ResizeAspectFill);
        layer->setContents(image);
        setWantsLayer(true);
        hostsLayer_ = true;
        ImageView::setImage(std::move(image));
        return;
    }
    ImageView::setImage(_generateAspectFillImage(image));
}

void PLSImageView::setDrawWithAspectFill(bool drawWithAspectFill) {
    drawWithAspectFill_ = drawWithAspectFill;
    if (drawWithAspectFill_ && image()) {
        setImageScaling(platform::ImageScaling::AxesIndependently);
        // The layer path installs its layer only at the next setImage.
        if (!usesLayerPath())
            setImage(_generateAspectFillImage(image()));
    }
    setNeedsDisplay(true);
}

Rect PLSImageView::aspectFillCrop(Size imageSize, Size viewSize) {
    const double iw = imageSize.width;
    const double ih = imageSize.height;
    if (iw <= 0 || ih <= 0 || viewSize.width <= 0 || viewSize.height <= 0)
        return platform::NSZeroRect;
    const double q = viewSize.height / viewSize.width;
    const double p = ih / iw;
    const double cw = q > p ? ih / q : iw;
    const double ch = q > p ? ih : iw * q;
    return platform::NSMakeRect(iw * 0.5 - cw * 0.5, ih * 0.5 - ch * 0.5, cw, ch);
}

ImagePtr PLSImageView::_generateAspectFillImage(const ImagePtr& source) {
    const Size madeAt = bounds().size;
    // Weak: the view holds the rendition as its image.
    const std::weak_ptr<platform::View> weakView = weak_from_this();
    auto rendition =
        Image::imageWithSize(madeAt, false, [source, weakView, madeAt](const Rect& destination) {
            if (!source)
                return true;
            const std::shared_ptr<platform::View> view = weakView.lock();
            // Read at every drawing: a view resized since keeps its picture covering it.
            const Size viewSize = view ? view->bounds().size : madeAt;
            const Rect crop = aspectFillCrop(source->size(), viewSize);
            if (crop.isEmpty())
                return true;
            platform::ImageHints hints;
            hints.interpolation = platform::ImageInterpolation::High;
            source->drawInRect(destination, crop, platform::CompositingOperation::Copy, 1.0, true,
                               hints);
            return true;
        });
    rendition->setCacheMode(platform::ImageCacheMode::Never);
    return rendition;
}

// --- Drawing ----------------------------------------------------------------------------------

void PLSImageView::drawRect(const Rect& dirtyRect) {
    if (hostsLayer_)
        return;
    platform::GraphicsContext* context = platform::GraphicsContext::currentContext();
    if (plCornerRadius_ > 0 && context) {
        context->saveGraphicsState();
        const Rect whole = platform::NSMakeRect(0, 0, SExt::width(*this), SExt::height(*this));
        platform::BezierPath::bezierPathWithRoundedRect(whole, plCornerRadius_, plCornerRadius_)
            ->addClip();
        if (const ImagePtr& shown = image()) {
            // The image object itself takes the view's size, for every holder of it.
            shown->setSize(whole.size);
            shown->drawInRect(whole, platform::NSZeroRect,
                              platform::CompositingOperation::SourceOver, 1.0);
        }
        context->restoreGraphicsState();
    } else {
        ImageView::drawRect(dirtyRect);
    }
    if (isHighlighted())
        drawHighlightOverlay();
}

void PLSImageView::drawHighlightOverlay() {
    platform::CGContextRef context = platform::GraphicsContext::currentContext();
    if (!context)
        return;
    platform::CGContextSetFillColorWithColor(
        context, platform::Color::colorWithWhite(0.0, kHighlightAlpha)->CGColor());
    if (highlightMode_ == 2) {
        const ImagePtr& mask = image();
        if (!mask)
            return;
        const Size frameSize = frame().size;
        const Size imageSize = mask->size();
        const Rect area = platform::NSMakeRect(frameSize.width * 0.5 - imageSize.width * 0.5,
                                               frameSize.height * 0.5 - imageSize.height * 0.5,
                                               imageSize.width, imageSize.height);
        context->saveGraphicsState();
        platform::CGContextClipToMask(context, area, *mask);
        platform::CGContextFillRect(context, area);
        context->restoreGraphicsState();
    } else if (highlightMode_ == 1) {
        platform::CGContextFillRect(context, bounds());
    }
}

// --- Events -----------------------------------------------------------------------------------

void PLSImageView::mouseDown(const platform::Event& event) {
    if (!isClickable()) {
        ImageView::mouseDown(event);
        return;
    }
    setHighlighted(true);
}

void PLSImageView::mouseUp(const platform::Event& event) {
    if (isClickable()) {
        setHighlighted(false);
        // Where the pointer is now, not where the event was recorded.
        if (platform::Window* window = this->window()) {
            const platform::Point point =
                convertPoint(window->mouseLocationOutsideOfEventStream(), nullptr);
            if (platform::NSPointInRect(point, bounds())) {
                // Like a message queued to the main run loop: target and view are held until
                // the action has run, on a later turn, after this handler returned.
                std::shared_ptr<platform::Responder> receiver = target();
                std::shared_ptr<platform::View> self = shared_from_this();
                platform::MainQueue::async([receiver, self, selector = action()] {
                    if (receiver->respondsToSelector(selector))
                        receiver->performSelector(selector, self);
                });
            }
        }
    }
    ImageView::mouseUp(event);
}

void PLSImageView::rightMouseUp(const platform::Event& event) {
    if (rightMouseUpEventBlock_) {
        const EventBlock block = rightMouseUpEventBlock_;  // the closure may replace itself
        block(event, *this);
        return;
    }
    ImageView::rightMouseUp(event);
}

void PLSImageView::magnifyWithEvent(const platform::Event& event) {
    if (!handledBy(magnifyWithEventBlockIsHandled_, event))
        ImageView::magnifyWithEvent(event);
}

void PLSImageView::smartMagnifyWithEvent(const platform::Event& event) {
    if (!handledBy(smartMagnifyWithEventBlock_, event))
        ImageView::smartMagnifyWithEvent(event);
}

void PLSImageView::touchesEndedWithEvent(const platform::Event& event) {
    ImageView::touchesEndedWithEvent(event);
    if (touchesEndWithEventBlock_) {
        const TouchBlock block = touchesEndWithEventBlock_;
        block(event);
    }
}
