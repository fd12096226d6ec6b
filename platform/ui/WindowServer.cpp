#include "platform/ui/WindowServer.h"

#include "platform/ui/Application.h"
#include "platform/ui/Bitmap.h"
#include "platform/ui/Window.h"

namespace platform {

std::shared_ptr<Bitmap> WindowServer::createImageOfWindow(const Rect& screenRect,
                                                          int windowNumber) {
    const Window* window = Application::windowWithWindowNumber(windowNumber);
    return window ? window->imageOfScreenRect(screenRect) : nullptr;
}

}  // namespace platform
