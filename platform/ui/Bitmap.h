#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <string>

class QImage;

#include "platform/ui/Geometry.h"

namespace platform {

class View;
class GraphicsContext;

// One 8-bit RGBA pixel, not premultiplied.
struct Rgba {
    uint8_t r = 0, g = 0, b = 0, a = 0;
    bool operator==(const Rgba& o) const { return r == o.r && g == o.g && b == o.b && a == o.a; }
};

// Rendered pixels (premultiplied ARGB inside). Pixel (0, 0) is the top-left pixel.
class Bitmap {
  public:
    Bitmap(int pixelWidth, int pixelHeight, double scale);
    ~Bitmap();
    Bitmap(const Bitmap&) = delete;
    Bitmap& operator=(const Bitmap&) = delete;

    int pixelWidth() const;
    int pixelHeight() const;
    double scale() const { return scale_; }
    Rgba pixelAt(int px, int py) const;
    // The pixel under the point (x, y) of a y-up space the bitmap's size in points.
    Rgba pixelAtPoint(double x, double y) const;

    bool writePNG(const std::string& path) const;
    static std::shared_ptr<Bitmap> readPNG(const std::string& path);

    // Renders |view| and its subviews offscreen as the window would show them (view background
    // transparent unless the view paints it) at |scale| (1 or 2).
    static std::shared_ptr<Bitmap> renderView(View& view, double scale);
    // A transparent bitmap |size| points large at |scale| (1 when not positive), with |draw| run
    // in a current graphics context whose y-up point space covers it.
    static std::shared_ptr<Bitmap> drawn(Size size,
                                         double scale,
                                         const std::function<void(GraphicsContext&)>& draw);

    // Platform internals.
    struct Pixels;
    Pixels& pixels() { return *pixels_; }
    const Pixels& pixels() const { return *pixels_; }
    // The pixels as a Qt image (premultiplied ARGB, top row first).
    QImage& qimage();
    const QImage& qimage() const;
    // Adopts |image| (converted to premultiplied ARGB) as the pixels of a bitmap at |scale|.
    static std::shared_ptr<Bitmap> fromQImage(const QImage& image, double scale);

  private:
    std::unique_ptr<Pixels> pixels_;
    double scale_;
};

}  // namespace platform
