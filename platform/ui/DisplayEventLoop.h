#pragma once

#include "platform/core/EventLoop.h"

namespace platform {

// The event loop of a program that shows views: a GUI application object on the display named
// in the environment, or offscreen without one (no DISPLAY / WAYLAND_DISPLAY, or
// QT_QPA_PLATFORM=offscreen). Create one on the main thread before any view, image or font use.
class DisplayEventLoop : public EventLoop {
  public:
    DisplayEventLoop(int& argc, char** argv);

    // True when views show on a real display rather than offscreen.
    static bool hasDisplay();
};

}  // namespace platform
