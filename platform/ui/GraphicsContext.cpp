#include "platform/ui/GraphicsContext.h"

#include <QImage>
#include <QPainter>
#include <QPainterPath>
#include <QTransform>
#include <algorithm>

#include "platform/core/Log.h"
#include "platform/ui/Image.h"

namespace platform {

namespace {

const Logger kLog("GraphicsContext: ");

thread_local GraphicsContext* currentContextOfThread = nullptr;

QColor toQColor(const Color& color) {
    double r = 0, g = 0, b = 0, a = 0;
    color.getRed(&r, &g, &b, &a);
    auto unit = [](double v) { return static_cast<float>(std::clamp(v, 0.0, 1.0)); };
    return QColor::fromRgbF(unit(r), unit(g), unit(b), unit(a));
}

// flippedPoint as a painter transform (read off the images of the origin and the unit axes), so
// that drawing and geometry flip the same way.
QTransform flipTransform(double height) {
    const Point origin = flippedPoint({0, 0}, height);
    const Point unitX = flippedPoint({1, 0}, height);
    const Point unitY = flippedPoint({0, 1}, height);
    return QTransform(unitX.x - origin.x, unitX.y - origin.y, unitY.x - origin.x,
                      unitY.y - origin.y, origin.x, origin.y);
}

QRectF toQRect(const Rect& rect) {
    return QRectF(rect.origin.x, rect.origin.y, rect.size.width, rect.size.height).normalized();
}

}  // namespace

// The clip mask: an image the size of the device whose alpha is the coverage later drawing keeps.
struct GraphicsContext::Mask {
    QImage alpha;
};

GraphicsContext* GraphicsContext::currentContext() {
    return currentContextOfThread;
}

GraphicsContext::Current::Current(GraphicsContext* context) : previous_(currentContextOfThread) {
    currentContextOfThread = context;
}

GraphicsContext::Current::~Current() {
    currentContextOfThread = previous_;
}

GraphicsContext::GraphicsContext(QPainter* painter, double deviceHeightPoints, double scale)
    : painter_(painter), deviceHeight_(deviceHeightPoints), scale_(scale) {
    // Points with y up become pixels with y down.
    painter_->setWorldTransform(flipTransform(deviceHeightPoints) *
                                QTransform::fromScale(scale, scale));
    painter_->setRenderHints(QPainter::Antialiasing | QPainter::SmoothPixmapTransform |
                             QPainter::TextAntialiasing);
    state_.fill = Color::blackColor();
    state_.stroke = Color::blackColor();
}

GraphicsContext::~GraphicsContext() {
    // Balance saves a drawing left open so the painter can be reused or ended cleanly.
    while (!saved_.empty()) {
        painter_->restore();
        saved_.pop_back();
    }
}

void GraphicsContext::saveGraphicsState() {
    painter_->save();
    saved_.push_back(state_);
}

void GraphicsContext::restoreGraphicsState() {
    if (saved_.empty()) {
        kLog.write("restoreGraphicsState without a matching save");
        return;
    }
    painter_->restore();
    state_ = saved_.back();
    saved_.pop_back();
}

void GraphicsContext::setFillColor(const Color& color) {
    state_.fill = std::const_pointer_cast<Color>(color.shared_from_this());
}

void GraphicsContext::setStrokeColor(const Color& color) {
    state_.stroke = std::const_pointer_cast<Color>(color.shared_from_this());
}

void GraphicsContext::setFillColorWithColor(CGColorRef color) {
    double c[4];
    CGColorGetComponents(color, c);
    state_.fill = Color::colorWithDeviceRed(c[0], c[1], c[2], c[3]);
}

void GraphicsContext::fillRect(const Rect& rect) {
    QColor color = toQColor(*state_.fill);
    QRectF area = toQRect(rect);
    paint([&](QPainter& painter) { painter.fillRect(area, color); });
}

void GraphicsContext::clipToMask(const Rect& rect, const Image& mask) {
    QImage coverage(painter_->device()->width(), painter_->device()->height(),
                    QImage::Format_ARGB32_Premultiplied);
    coverage.fill(Qt::transparent);
    {
        QPainter maskPainter(&coverage);
        GraphicsContext maskContext(&maskPainter, deviceHeight_, scale_);
        maskPainter.setWorldTransform(painter_->worldTransform());
        Current current(&maskContext);
        mask.drawInRect(rect, 1.0);
        if (state_.mask) {
            // A second mask narrows the first: keep only what both cover.
            maskPainter.resetTransform();
            maskPainter.setCompositionMode(QPainter::CompositionMode_DestinationIn);
            maskPainter.drawImage(0, 0, state_.mask->alpha);
        }
    }
    state_.mask = std::make_shared<Mask>(Mask{std::move(coverage)});
}

double GraphicsContext::backingScaleFactor() const {
    return scale_;
}

void GraphicsContext::translateBy(double dx, double dy) {
    painter_->translate(dx, dy);
}

void GraphicsContext::clipToRect(const Rect& rect) {
    painter_->setClipRect(toQRect(rect),
                          painter_->hasClipping() ? Qt::IntersectClip : Qt::ReplaceClip);
}

void GraphicsContext::setAlpha(double alpha) {
    painter_->setOpacity(std::clamp(alpha, 0.0, 1.0));
}

double GraphicsContext::alpha() const {
    return painter_->opacity();
}

Rect GraphicsContext::toDeviceSpace(const Rect& rect) const {
    QRectF device = painter_->worldTransform().mapRect(toQRect(rect));
    return NSMakeRect(device.x(), device.y(), device.width(), device.height());
}

void GraphicsContext::applyTopDownTransform(QPainter& painter, const Rect& rect) {
    painter.setWorldTransform(
        flipTransform(rect.size.height) * QTransform::fromTranslate(rect.origin.x, rect.origin.y),
        true);
}

void GraphicsContext::paint(const std::function<void(QPainter&)>& draw) {
    if (!state_.mask) {
        draw(*painter_);
        return;
    }
    // Draw into a layer of the device's size, keep what the mask covers, then composite the
    // layer through the painter's own clip.
    QImage layer(painter_->device()->width(), painter_->device()->height(),
                 QImage::Format_ARGB32_Premultiplied);
    layer.fill(Qt::transparent);
    {
        QPainter layerPainter(&layer);
        layerPainter.setRenderHints(painter_->renderHints());
        layerPainter.setWorldTransform(painter_->worldTransform());
        layerPainter.setOpacity(painter_->opacity());
        draw(layerPainter);
        layerPainter.resetTransform();
        layerPainter.setOpacity(1.0);
        layerPainter.setClipping(false);
        layerPainter.setCompositionMode(QPainter::CompositionMode_DestinationIn);
        layerPainter.drawImage(0, 0, state_.mask->alpha);
    }
    painter_->save();
    painter_->resetTransform();
    painter_->setOpacity(1.0);
    painter_->drawImage(0, 0, layer);
    painter_->restore();
}

void NSRectFill(const Rect& rect) {
    if (GraphicsContext* context = GraphicsContext::currentContext())
        context->fillRect(rect);
}

void CGContextSetFillColorWithColor(CGContextRef context, CGColorRef color) {
    if (context)
        context->setFillColorWithColor(color);
}

void CGContextFillRect(CGContextRef context, const Rect& rect) {
    if (context)
        context->fillRect(rect);
}

void CGContextClipToMask(CGContextRef context, const Rect& rect, const Image& mask) {
    if (context)
        context->clipToMask(rect, mask);
}

}  // namespace platform
