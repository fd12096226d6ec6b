#pragma once

// Offscreen canvases for pixel tests of the drawing toolkit.

#include <QPainter>
#include <cmath>
#include <functional>
#include <memory>
#include <ostream>

#include "platform/ui/Bitmap.h"
#include "platform/ui/GraphicsContext.h"

namespace platform {

inline std::ostream& operator<<(std::ostream& out, const Rgba& p) {
    return out << "rgba(" << int(p.r) << ", " << int(p.g) << ", " << int(p.b) << ", " << int(p.a)
               << ")";
}

}  // namespace platform

namespace pixel_test {

// Runs |draw| with a current context over a transparent canvas of |width| x |height| points
// at |scale|, and returns the pixels.
inline std::shared_ptr<platform::Bitmap> render(
    double width,
    double height,
    double scale,
    const std::function<void(platform::GraphicsContext&)>& draw) {
    auto bitmap = std::make_shared<platform::Bitmap>(int(std::ceil(width * scale)),
                                                     int(std::ceil(height * scale)), scale);
    QPainter painter(&bitmap->qimage());
    {
        platform::GraphicsContext context(&painter, height, scale);
        platform::GraphicsContext::Current current(&context);
        draw(context);
    }
    painter.end();
    return bitmap;
}

constexpr platform::Rgba kClear{0, 0, 0, 0};
constexpr platform::Rgba kRed{255, 0, 0, 255};
constexpr platform::Rgba kGreen{0, 255, 0, 255};
constexpr platform::Rgba kBlue{0, 0, 255, 255};

// True when a pixel has any ink at all.
inline bool inked(const platform::Rgba& p) {
    return p.a > 0;
}

}  // namespace pixel_test
