#pragma once

// What the view toolkit tests share: offscreen canvases, pixel probes, readable geometry in
// failure messages, and a window that records what reaches the end of its responder chain.

#include <gtest/gtest.h>

#include <QPainter>
#include <algorithm>
#include <cmath>
#include <functional>

#include "platform/ui/BezierPath.h"
#include "platform/ui/Bitmap.h"
#include "platform/ui/Event.h"
#include "platform/ui/GraphicsContext.h"
#include "platform/ui/Image.h"
#include "platform/ui/Layer.h"
#include "platform/ui/View.h"
#include "platform/ui/Window.h"

namespace platform {

inline void PrintTo(const Rgba& p, std::ostream* out) {
    *out << "rgba(" << int(p.r) << ", " << int(p.g) << ", " << int(p.b) << ", " << int(p.a) << ")";
}
inline void PrintTo(const Point& point, std::ostream* out) {
    *out << NSStringFromPoint(point);
}
inline void PrintTo(const Rect& rect, std::ostream* out) {
    *out << NSStringFromRect(rect);
}

class RecordingWindow : public Window {
  public:
    using Window::Window;
    void keyDown(const Event& e) override { keys.push_back(e.keyCode()); }
    void mouseDown(const Event&) override { ++mouseDowns; }
    std::vector<uint16_t> keys;
    int mouseDowns = 0;
};

}  // namespace platform

namespace pixel_test {

using namespace platform;

// Runs |draw| with a current context over a transparent canvas of |width| x |height| points at
// |scale|, and returns the pixels.
inline std::shared_ptr<Bitmap> render(double width,
                                      double height,
                                      double scale,
                                      const std::function<void(GraphicsContext&)>& draw) {
    auto bitmap = std::make_shared<Bitmap>(int(std::ceil(width * scale)),
                                           int(std::ceil(height * scale)), scale);
    QPainter painter(&bitmap->qimage());
    GraphicsContext context(&painter, height, scale);
    GraphicsContext::Current current(&context);
    draw(context);
    return bitmap;
}

constexpr Rgba kClear{0, 0, 0, 0}, kRed{255, 0, 0, 255}, kGreen{0, 255, 0, 255},
    kBlue{0, 0, 255, 255}, kWhite{255, 255, 255, 255}, kBlack{0, 0, 0, 255};

inline ColorPtr colorOf(const Rgba& c, double alpha = 1) {
    return Color::colorWithDeviceRed(c.r / 255.0, c.g / 255.0, c.b / 255.0, alpha);
}

inline void fill(const Rgba& c, const Rect& rect, double alpha = 1) {
    colorOf(c, alpha)->setFill();
    NSRectFill(rect);
}

// A point and the pixel expected there.
struct Probe {
    double x, y;
    Rgba expected;
};

// Checks each probe, allowing 2 levels per channel for blending.
inline void expectPixels(const Bitmap& bitmap, const std::vector<Probe>& probes) {
    for (const Probe& p : probes) {
        const Rgba got = bitmap.pixelAtPoint(p.x, p.y), want = p.expected;
        const int off = std::max({std::abs(got.r - want.r), std::abs(got.g - want.g),
                                  std::abs(got.b - want.b), std::abs(got.a - want.a)});
        EXPECT_LE(off, 2) << "at (" << p.x << ", " << p.y << "): " << ::testing::PrintToString(got)
                          << ", not " << ::testing::PrintToString(want);
    }
}

// The box of pixels (rows from the top) that pass |isInk|; empty when none.
struct InkBox {
    int left = 1 << 30, top = 1 << 30, right = -1, bottom = -1;
    bool empty() const { return right < 0; }
    double midX() const { return (left + right) / 2.0; }
};

inline InkBox inkOf(
    const Bitmap& bitmap,
    const std::function<bool(const Rgba&)>& isInk = [](const Rgba& p) { return p.a > 96; }) {
    InkBox box;
    for (int y = 0; y < bitmap.pixelHeight(); ++y)
        for (int x = 0; x < bitmap.pixelWidth(); ++x)
            if (isInk(bitmap.pixelAt(x, y))) {
                box.left = std::min(box.left, x);
                box.right = std::max(box.right, x);
                box.top = std::min(box.top, y);
                box.bottom = std::max(box.bottom, y);
            }
    return box;
}

// A view that fills its bounds with one colour.
class FilledView : public View {
  public:
    FilledView(const Rect& frame, Rgba color) : View(frame), color_(color) {}
    void drawRect(const Rect&) override { fill(color_, bounds()); }

  private:
    Rgba color_;
};

inline std::shared_ptr<FilledView> filled(double x, double y, double w, double h, Rgba c) {
    return std::make_shared<FilledView>(NSMakeRect(x, y, w, h), c);
}

// Pixel tests run at both backing scales; half() is the centre of the outermost pixel, in points.
class ScaledTest : public ::testing::TestWithParam<double> {
  protected:
    double scale() const { return GetParam(); }
    double half() const { return 0.5 / GetParam(); }
};

}  // namespace pixel_test
