#include "viewkit/ViewSnapshotSExt.h"

#include "platform/ui/Bitmap.h"
#include "platform/ui/Window.h"
#include "platform/ui/WindowServer.h"

namespace SExt {

using platform::Image;
using platform::ImagePtr;
using platform::Rect;
using platform::View;

ImagePtr imageWithSubviews(View& view) {
    const platform::Size size = view.bounds().size;
    const double scale = view.window() ? view.window()->backingScaleFactor() : 1.0;
    ImagePtr image = Image::imageWithBitmap(platform::Bitmap::renderView(view, scale));
    if (image)
        image->setSize(size);
    return image;
}

ImagePtr screenCacheImageForView(const View& view) {
    return screenCacheImageForViewWithRect(view, view.bounds());
}

ImagePtr screenCacheImageForViewWithRect(const View& view, const Rect& rect) {
    if (view.bounds().isEmpty() || rect.isEmpty())
        return nullptr;
    const platform::Window* window = view.window();
    const View* contentView = window ? window->contentView().get() : nullptr;
    const Rect inContent = view.convertRectToView(rect, contentView);

    // The server's space has its origin at the top-left corner of the window's screen, y down.
    // The content view's runs up from the window's bottom-left corner: flip within the height
    // from there to the screen's top, then move by the window's x. A missing window or screen
    // measures 0.
    const Rect windowFrame = window ? window->frame() : platform::NSZeroRect;
    const double screenHeight = window ? window->screenFrame().size.height : 0;
    const Rect captureRect = platform::NSOffsetRect(
        platform::flippedRect(inContent, screenHeight - windowFrame.origin.y), windowFrame.origin.x,
        0);
    const auto capture = platform::WindowServer::createImageOfWindow(
        captureRect, window ? window->windowNumber() : 0);
    if (!capture)
        return nullptr;
    ImagePtr image = Image::imageWithBitmap(capture);
    image->setSize(rect.size);
    return image;
}

}  // namespace SExt
