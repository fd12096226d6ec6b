#pragma once

#include <string>

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

    // Ties the windows made from now on to the desktop entry <desktopEntryId>.desktop, by which
    // Wayland names the program. On X11 the windows' class is the program's name (the
    // application's, which screen readers also read), for the entries' StartupWMClass to name.
    void setDesktopEntryId(const std::string& desktopEntryId);
    // The icon of the program's windows (title bars, taskbars), read from a PNG or SVG file
    // while the program goes on.
    void setWindowIconFile(const std::string& path);
};

}  // namespace platform
