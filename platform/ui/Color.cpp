#include "platform/ui/Color.h"

#include <atomic>

#include "platform/ui/GraphicsContext.h"

namespace platform {

struct CGColor {
    std::atomic<long> references{1};
    double components[4] = {0, 0, 0, 0};
};

CGColorRef CGColorCreateGenericRGB(double red, double green, double blue, double alpha) {
    auto* color = new CGColor;
    color->components[0] = red;
    color->components[1] = green;
    color->components[2] = blue;
    color->components[3] = alpha;
    return color;
}

CGColorRef CGColorCreateCopyWithAlpha(CGColorRef color, double alpha) {
    if (!color)
        return nullptr;
    return CGColorCreateGenericRGB(color->components[0], color->components[1], color->components[2],
                                   alpha);
}

CGColorRef CGColorRetain(CGColorRef color) {
    if (color)
        color->references.fetch_add(1, std::memory_order_relaxed);
    return color;
}

void CGColorRelease(CGColorRef color) {
    if (color && color->references.fetch_sub(1, std::memory_order_acq_rel) == 1)
        delete color;
}

void CGColorGetComponents(CGColorRef color, double components[4]) {
    for (int i = 0; i < 4; ++i)
        components[i] = color ? color->components[i] : 0.0;
}

Color::Color(ColorSpace space, double r, double g, double b, double a)
    : space_(space), r_(r), g_(g), b_(b), a_(a) {}

Color::~Color() {
    CGColorRelease(cg_.load());
}

std::shared_ptr<Color> Color::colorWithDeviceRed(double r, double g, double b, double a) {
    return std::shared_ptr<Color>(new Color(ColorSpace::DeviceRGB, r, g, b, a));
}

std::shared_ptr<Color> Color::colorWithCalibratedWhite(double white, double alpha) {
    return std::shared_ptr<Color>(
        new Color(ColorSpace::CalibratedWhite, white, white, white, alpha));
}

std::shared_ptr<Color> Color::colorWithWhite(double white, double alpha) {
    return colorWithCalibratedWhite(white, alpha);
}

std::shared_ptr<Color> Color::whiteColor() {
    return colorWithCalibratedWhite(1.0, 1.0);
}

std::shared_ptr<Color> Color::blackColor() {
    return colorWithCalibratedWhite(0.0, 1.0);
}

std::shared_ptr<Color> Color::clearColor() {
    return colorWithCalibratedWhite(0.0, 0.0);
}

std::shared_ptr<Color> Color::colorUsingColorSpace(ColorSpace space) const {
    if (space_ == ColorSpace::Pattern || space == ColorSpace::Pattern)
        return nullptr;
    if (space == ColorSpace::CalibratedWhite && !(r_ == g_ && g_ == b_)) {
        // Luma of the RGB components: the grey a monochrome rendition would show.
        double white = 0.299 * r_ + 0.587 * g_ + 0.114 * b_;
        return std::shared_ptr<Color>(new Color(space, white, white, white, a_));
    }
    return std::shared_ptr<Color>(new Color(space, r_, g_, b_, a_));
}

void Color::getRed(double* red, double* green, double* blue, double* alpha) const {
    bool pattern = space_ == ColorSpace::Pattern;
    if (red)
        *red = pattern ? 0 : r_;
    if (green)
        *green = pattern ? 0 : g_;
    if (blue)
        *blue = pattern ? 0 : b_;
    if (alpha)
        *alpha = pattern ? 0 : a_;
}

std::shared_ptr<Color> Color::colorWithAlphaComponent(double alpha) const {
    return std::shared_ptr<Color>(new Color(space_, r_, g_, b_, alpha));
}

CGColorRef Color::CGColor() const {
    CGColorRef existing = cg_.load(std::memory_order_acquire);
    if (existing)
        return existing;
    double r = 0, g = 0, b = 0, a = 0;
    getRed(&r, &g, &b, &a);
    CGColorRef made = CGColorCreateGenericRGB(r, g, b, a);
    if (cg_.compare_exchange_strong(existing, made, std::memory_order_acq_rel))
        return made;
    CGColorRelease(made);  // another thread made it first
    return existing;
}

void Color::set() const {
    if (GraphicsContext* context = GraphicsContext::currentContext()) {
        context->setFillColor(*this);
        context->setStrokeColor(*this);
    }
}

void Color::setFill() const {
    if (GraphicsContext* context = GraphicsContext::currentContext())
        context->setFillColor(*this);
}

void Color::setStroke() const {
    if (GraphicsContext* context = GraphicsContext::currentContext())
        context->setStrokeColor(*this);
}

bool Color::operator==(const Color& other) const {
    return space_ == other.space_ && r_ == other.r_ && g_ == other.g_ && b_ == other.b_ &&
           a_ == other.a_;
}

}  // namespace platform
