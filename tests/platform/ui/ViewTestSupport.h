// Readable failure messages for geometry values in the view tests, and a window that records what
// reaches the end of its responder chain.
#pragma once

#include <ostream>
#include <vector>

#include "platform/ui/Event.h"
#include "platform/ui/Geometry.h"
#include "platform/ui/Window.h"

namespace platform {

inline void PrintTo(const Point& point, std::ostream* out) {
    *out << NSStringFromPoint(point);
}
inline void PrintTo(const Size& size, std::ostream* out) {
    *out << NSStringFromSize(size);
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
