#pragma once

#include <atomic>
#include <memory>

namespace platform {

// A Core-Graphics-like colour handle: reference counted by hand, as its C interface is.
struct CGColor;
using CGColorRef = CGColor*;

// Components in generic RGB. The caller owns the result (CGColorRelease).
CGColorRef CGColorCreateGenericRGB(double red, double green, double blue, double alpha);
// The same colour with its alpha replaced. The caller owns the result.
CGColorRef CGColorCreateCopyWithAlpha(CGColorRef color, double alpha);
CGColorRef CGColorRetain(CGColorRef color);
void CGColorRelease(CGColorRef color);  // nullptr is allowed
// Components of |color| (red, green, blue, alpha); all 0 for nullptr.
void CGColorGetComponents(CGColorRef color, double components[4]);

enum class ColorSpace { DeviceRGB, CalibratedWhite, GenericRGB, Pattern };

// An immutable colour: device RGB components or a calibrated white level, each a 64-bit float
// in 0..1. Shared by std::shared_ptr; a null pointer stands for "no colour" (nil).
class Color : public std::enable_shared_from_this<Color> {
  public:
    static std::shared_ptr<Color> colorWithDeviceRed(double r, double g, double b, double a);
    static std::shared_ptr<Color> colorWithCalibratedWhite(double white, double alpha);
    static std::shared_ptr<Color> colorWithWhite(double white, double alpha);
    static std::shared_ptr<Color> whiteColor();
    static std::shared_ptr<Color> blackColor();
    static std::shared_ptr<Color> clearColor();

    ColorSpace colorSpace() const { return space_; }
    // colorUsingColorSpace: nullptr when the colour cannot be expressed there.
    std::shared_ptr<Color> colorUsingColorSpace(ColorSpace space) const;
    // getRed:green:blue:alpha: of an RGB colour (a white colour answers its level thrice).
    void getRed(double* red, double* green, double* blue, double* alpha) const;
    double alphaComponent() const { return a_; }
    std::shared_ptr<Color> colorWithAlphaComponent(double alpha) const;

    // A handle owned by this colour (do not release it; retain it to keep it).
    CGColorRef CGColor() const;

    // set: makes this colour current for fill and stroke in the current graphics context.
    void set() const;
    void setFill() const;
    void setStroke() const;

    bool operator==(const Color& other) const;

    ~Color();

  private:
    Color(ColorSpace space, double r, double g, double b, double a);
    ColorSpace space_;
    double r_, g_, b_, a_;
    // Made on first request; atomic because colours are shared between threads.
    mutable std::atomic<CGColorRef> cg_{nullptr};
};

using ColorPtr = std::shared_ptr<Color>;

}  // namespace platform
