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

    // Ties the windows made from now on to the desktop entry <desktopEntryId>.desktop: the entry
    // names the program on Wayland, and on X11 the windows' class is that same id, which the
    // entry's StartupWMClass repeats, so that taskbars show the entry's name and icon.
    void setDesktopEntryId(const std::string& desktopEntryId);
    // The icon of the program's windows (title bars, taskbars), read from a PNG or SVG file
    // while the program goes on.
    void setWindowIconFile(const std::string& path);
};

}  // namespace platform
