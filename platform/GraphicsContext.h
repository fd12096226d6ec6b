#pragma once

#include <memory>

#include "platform/Color.h"
#include "platform/Geometry.h"

class QPainter;

namespace platform {

class Image;
class GraphicsContext;
// The Core-Graphics view of a graphics context (borrowed; never released).
using CGContextRef = GraphicsContext*;

// Where drawing goes. While a view draws, the current context's coordinates are the view's own:
// origin bottom-left, y up, in points; the conversion to the device (top-left, pixels) is the
// context's transform and happens nowhere else. One current context per thread.
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

    // Converts a rect in the current (y-up) user space to the painter's y-down space: the one
    // place where the two spaces meet for text and image drawing that must not be mirrored.
    Rect toDeviceSpace(const Rect& rect) const;

private:
    QPainter* painter_;
    double deviceHeight_;
    double scale_;
    ColorPtr fill_;
    ColorPtr stroke_;
};

void NSRectFill(const Rect& rect);
void CGContextSetFillColorWithColor(CGContextRef context, CGColorRef color);
void CGContextFillRect(CGContextRef context, const Rect& rect);
void CGContextClipToMask(CGContextRef context, const Rect& rect, const Image& mask);

}  // namespace platform
