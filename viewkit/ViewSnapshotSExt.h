#pragma once

#include "platform/ui/Geometry.h"
#include "platform/ui/Image.h"
#include "platform/ui/View.h"

// Pictures of a view, for debugging: drawn offscreen, or taken from what the screen shows.
// Main thread only, like the views themselves.
namespace SExt {

// The view and all its subviews drawn offscreen into an image the size of the bounds in
// points, with pixels at the window's backing scale (1 for a view in no window).
platform::ImagePtr imageWithSubviews(platform::View& view);

// What the screen shows of the view's window alone under the view's bounds, as an image the
// size of the bounds. nullptr for a view of zero or negative width or height, a view in no
// window, or a capture that gives no picture.
platform::ImagePtr screenCacheImageForView(const platform::View& view);
// The same under |rect| (in the view's coordinates), as an image of |rect|'s size; nullptr
// also for a |rect| of zero or negative width or height.
platform::ImagePtr screenCacheImageForViewWithRect(const platform::View& view,
                                                   const platform::Rect& rect);

}  // namespace SExt
