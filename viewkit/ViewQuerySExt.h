#pragma once

#include <memory>

#include "platform/ui/View.h"

// Two small questions about a view. Main thread only, like the views themselves.
namespace SExt {

// The first direct subview, in subviews order, that is a ViewClass or of a class derived from
// it; deeper descendants are not searched. nullptr when there is none.
template <typename ViewClass>
std::shared_ptr<ViewClass> firstSubviewOfClass(const platform::View& view) {
    for (const auto& subview : view.subviews())
        if (auto match = std::dynamic_pointer_cast<ViewClass>(subview))
            return match;
    return nullptr;
}

// Whether the pointer is inside the view's bounds now (the window's current pointer position,
// not an event's). False for a view with no window or no superview.
bool isMouseReallyInside(const platform::View& view);

}  // namespace SExt
