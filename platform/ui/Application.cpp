#include "platform/ui/Application.h"

#include <algorithm>

#include "platform/ui/Window.h"

namespace platform {

namespace {

std::vector<Window*>& liveWindows() {
    static std::vector<Window*> windows;
    return windows;
}

}  // namespace

std::vector<Window*> Application::windows() {
    return liveWindows();
}

Window* Application::windowWithWindowNumber(int windowNumber) {
    for (Window* window : liveWindows())
        if (window->windowNumber() == windowNumber)
            return window;
    return nullptr;
}

void Application::addWindow(Window* window) {
    liveWindows().push_back(window);
}

void Application::removeWindow(Window* window) {
    auto& windows = liveWindows();
    windows.erase(std::remove(windows.begin(), windows.end(), window), windows.end());
}

}  // namespace platform
