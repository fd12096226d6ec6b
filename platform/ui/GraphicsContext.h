#pragma once

#include <functional>
#include <memory>
#include <vector>

#include "platform/ui/Color.h"
#include "platform/ui/Geometry.h"

class QPainter;

namespace platform {

class Image;
class GraphicsContext;
// The Core-Graphics view of a graphics context (borrowed; never released).
using CGContextRef = GraphicsContext*;

// Where drawing goes. While a view draws, the current context's coordinates are the view's own:
// origin bottom-left, y up, in points; the conversion to the device (top-left, pixels) is the
// context's transform, made from flippedPoint (Geometry.h). One current context per thread.
class GraphicsContext {
  public:
    // currentContext: the context a drawRect runs in; nullptr outside drawing.
    static GraphicsContext* currentContext();

    CGContextRef CGContext() { return this; }

    void saveGraphicsState();
    void restoreGraphicsState();

    void setFillColor(const Color& color);
    void setStrokeColor(const Color& color);
    void setFillColorWithColor(CGColorRef color);

    // NSRectFill / CGContextFillRect: fills |rect| with the fill colour (copy-over for NSRectFill
    // is not modelled: both blend source-over).
    void fillRect(const Rect& rect);
    // CGContextClipToMask: clips later drawing to |rect| by |mask|'s alpha.
    void clipToMask(const Rect& rect, const Image& mask);
    // Backing scale of the device (1 or 2).
    double backingScaleFactor() const;

    // CGContextTranslateCTM: moves the current coordinates' origin to (dx, dy) of the present
    // coordinates (a subview's frame origin, for instance). Undone by restoreGraphicsState.
    void translateBy(double dx, double dy);
    // NSRectClip / CGContextClipToRect: intersects the clip with |rect| (current coordinates).
    void clipToRect(const Rect& rect);
    // CGContextSetAlpha: opacity applied to later drawing (0..1); saved with the state, so a
    // view multiplies its alpha into the current one: setAlpha(alpha() * view alpha).
    void setAlpha(double alpha);
    double alpha() const;

    // Platform internals: the painter behind this context, set up with the flipped transform.
    QPainter& painter() { return *painter_; }
    // Makes a context over |painter| whose device is |deviceHeightPoints| high, at |scale|.
    GraphicsContext(QPainter* painter, double deviceHeightPoints, double scale);
    ~GraphicsContext();
    GraphicsContext(const GraphicsContext&) = delete;
    GraphicsContext& operator=(const GraphicsContext&) = delete;

    // Makes this the current context of the calling thread until the returned guard ends.
    class Current {
      public:
        explicit Current(GraphicsContext* context);
        ~Current();

      private:
        GraphicsContext* previous_;
    };

    // Converts a rect in the current (y-up, points) user space to the device's (top-left
    // origin, y down, pixels).
    Rect toDeviceSpace(const Rect& rect) const;
    // Platform internals: sets |painter|'s coordinates to y-down points with the origin at the
    // top-left corner of |rect| (a rect of the current coordinates), so that text and images
    // drawn there come out upright. Call within a save/restore of |painter|.
    static void applyTopDownTransform(QPainter& painter, const Rect& rect);
    // Platform internals: runs |draw| with a painter in the current coordinates, applying the
    // clip mask if one is set. All drawing of the toolkit goes through here.
    void paint(const std::function<void(QPainter&)>& draw);

    ColorPtr fillColor() const { return state_.fill; }
    ColorPtr strokeColor() const { return state_.stroke; }

  private:
    struct Mask;
    struct State {
        ColorPtr fill;
        ColorPtr stroke;
        std::shared_ptr<Mask> mask;  // alpha clip at device resolution, or none
    };
    QPainter* painter_;
    double deviceHeight_;
    double scale_;
    State state_;
    std::vector<State> saved_;
};

void NSRectFill(const Rect& rect);
void CGContextSetFillColorWithColor(CGContextRef context, CGColorRef color);
void CGContextFillRect(CGContextRef context, const Rect& rect);
void CGContextClipToMask(CGContextRef context, const Rect& rect, const Image& mask);

}  // namespace platform
