#pragma once

#include <vector>

namespace platform {

class Window;

// The application's side of its windows (NSApplication's windows): every window that exists,
// shown or not, in the order they were made. Main thread only.
class Application {
  public:
    static std::vector<Window*> windows();
    // nullptr when no window has |windowNumber| (0 is never a window's number).
    static Window* windowWithWindowNumber(int windowNumber);

    // Platform internals: a window joins the list when made and leaves it when destroyed.
    static void addWindow(Window* window);
    static void removeWindow(Window* window);
};

}  // namespace platform
