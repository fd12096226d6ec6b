#include "platform/ui/BezierPath.h"

#include <QPainter>
#include <QPainterPath>
#include <QPen>
#include <algorithm>
#include <cmath>

#include "platform/ui/GraphicsContext.h"

namespace platform {

namespace {

QColor toQColor(const ColorPtr& color) {
    double r = 0, g = 0, b = 0, a = 1;
    if (color)
        color->getRed(&r, &g, &b, &a);
    auto unit = [](double v) { return static_cast<float>(std::clamp(v, 0.0, 1.0)); };
    return QColor::fromRgbF(unit(r), unit(g), unit(b), unit(a));
}

}  // namespace

struct BezierPath::Shape {
    QPainterPath path;
};

BezierPath::BezierPath() : shape_(std::make_unique<Shape>()) {}

BezierPath::~BezierPath() = default;

std::shared_ptr<BezierPath> BezierPath::bezierPathWithRect(const Rect& rect) {
    std::shared_ptr<BezierPath> path(new BezierPath);
    path->shape_->path.addRect(
        QRectF(rect.origin.x, rect.origin.y, rect.size.width, rect.size.height).normalized());
    return path;
}

std::shared_ptr<BezierPath> BezierPath::bezierPathWithRoundedRect(const Rect& rect,
                                                                  double xRadius,
                                                                  double yRadius) {
    std::shared_ptr<BezierPath> path(new BezierPath);
    QRectF area =
        QRectF(rect.origin.x, rect.origin.y, rect.size.width, rect.size.height).normalized();
    // A radius beyond half a side would make the corners overlap.
    double rx = std::clamp(std::isnan(xRadius) ? 0.0 : xRadius, 0.0, area.width() / 2);
    double ry = std::clamp(std::isnan(yRadius) ? 0.0 : yRadius, 0.0, area.height() / 2);
    if (rx <= 0 || ry <= 0)
        path->shape_->path.addRect(area);
    else
        path->shape_->path.addRoundedRect(area, rx, ry, Qt::AbsoluteSize);
    return path;
}

void BezierPath::fill() const {
    GraphicsContext* context = GraphicsContext::currentContext();
    if (!context)
        return;
    QColor color = toQColor(context->fillColor());
    context->paint([&](QPainter& painter) { painter.fillPath(shape_->path, color); });
}

void BezierPath::stroke() const {
    GraphicsContext* context = GraphicsContext::currentContext();
    if (!context || lineWidth_ < 0)
        return;
    QPen pen(toQColor(context->strokeColor()), lineWidth_, Qt::SolidLine, Qt::FlatCap,
             Qt::MiterJoin);
    context->paint([&](QPainter& painter) { painter.strokePath(shape_->path, pen); });
}

void BezierPath::addClip() const {
    GraphicsContext* context = GraphicsContext::currentContext();
    if (!context)
        return;
    QPainter& painter = context->painter();
    painter.setClipPath(shape_->path, painter.hasClipping() ? Qt::IntersectClip : Qt::ReplaceClip);
}

}  // namespace platform
