#pragma once

#include <optional>

#include "apps/parley-share/ShareCommandLine.h"
#include "platform/ui/Geometry.h"

namespace platform {
class View;
class Window;
}  // namespace platform
class ShareViewController;

// Plays a person's pointer on the sheet shown in a window: presses and clicks the middle of a
// row's title or of the Cancel button, through the window's own event dispatch, so that the
// sheet's handlers run exactly as for a real mouse.
class SheetPointer {
  public:
    SheetPointer(ShareViewController& controller, platform::Window& window);

    // A mouse-down only: the target shows its pressed state. False when the sheet lacks it.
    bool press(ShareCommandLine::Action target);
    // A mouse-down and the mouse-up that completes it, at the same point.
    bool click(ShareCommandLine::Action target);
    // Tab until the keyboard focus is on |target|; false when no Tab reaches it.
    bool focus(ShareCommandLine::Action target);

  private:
    // The middle of |target| in the window's coordinates; nullopt when the sheet lacks it.
    std::optional<platform::Point> locationOf(ShareCommandLine::Action target) const;
    platform::View* viewOf(ShareCommandLine::Action target) const;
    bool send(ShareCommandLine::Action target, bool release);

    ShareViewController& controller_;
    platform::Window& window_;
};
