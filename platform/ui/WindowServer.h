#pragma once

#include <memory>

#include "platform/ui/Geometry.h"

namespace platform {

class Bitmap;

// The display server's picture taking, as CGWindowListCreateImage offers it with the option
// that includes one given window only.
class WindowServer {
  public:
    // What the screen shows of the window numbered |windowNumber| alone under |screenRect|, in
    // the server's coordinates (points, origin at the top-left corner of the window's screen,
    // y down). nullptr when no window of this application has that number or the capture gives
    // no picture. Main thread only.
    static std::shared_ptr<Bitmap> createImageOfWindow(const Rect& screenRect, int windowNumber);
};

}  // namespace platform
