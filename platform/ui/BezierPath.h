#pragma once

#include <memory>

#include "platform/ui/Geometry.h"

namespace platform {

// A path in the current view's coordinates, filled and stroked in the current graphics context.
class BezierPath {
  public:
    static std::shared_ptr<BezierPath> bezierPathWithRect(const Rect& rect);
    static std::shared_ptr<BezierPath> bezierPathWithRoundedRect(const Rect& rect,
                                                                 double xRadius,
                                                                 double yRadius);
    ~BezierPath();

    void setLineWidth(double width) { lineWidth_ = width; }
    double lineWidth() const { return lineWidth_; }

    void fill() const;     // with the current fill colour, antialiased
    void stroke() const;   // centred on the path, with lineWidth
    void addClip() const;  // intersects the current clip with the path

  private:
    BezierPath();
    struct Shape;
    std::unique_ptr<Shape> shape_;
    double lineWidth_ = 1.0;
};

}  // namespace platform
