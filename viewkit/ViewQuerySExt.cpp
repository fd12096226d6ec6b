#include "viewkit/ViewQuerySExt.h"

#include "platform/ui/Window.h"

namespace SExt {

bool isMouseReallyInside(const platform::View& view) {
    const platform::Window* window = view.window();
    if (!window || !view.superview())
        return false;
    const platform::Point point =
        view.convertPoint(window->mouseLocationOutsideOfEventStream(), nullptr);
    return platform::NSPointInRect(point, view.bounds());
}

}  // namespace SExt
