#pragma once

#include <memory>
#include <vector>

#include "platform/ui/Event.h"
#include "platform/ui/View.h"
#include "platform/ui/Window.h"

namespace viewkit_test {

// What reached a responder's default handlers, in order.
struct Received {
    std::vector<platform::EventType> mouse;
    std::vector<int> clickCounts;
    std::vector<uint16_t> keys;
};

// A plain view that records the events reaching it (as a parent view up the responder chain).
class RecordingView : public platform::View {
  public:
    using View::View;
    void mouseDown(const platform::Event& event) override { note(event); }
    void mouseUp(const platform::Event& event) override { note(event); }
    void mouseEntered(const platform::Event& event) override { note(event); }
    void mouseExited(const platform::Event& event) override { note(event); }
    void keyDown(const platform::Event& event) override {
        received.keys.push_back(event.keyCode());
    }
    Received received;

  private:
    void note(const platform::Event& event) {
        received.mouse.push_back(event.type());
        received.clickCounts.push_back(event.clickCount());
    }
};

// A window that records the mouse events reaching the end of the responder chain.
class RecordingWindow : public platform::Window {
  public:
    using Window::Window;
    void mouseDown(const platform::Event& event) override { mouse.push_back(event.type()); }
    void mouseUp(const platform::Event& event) override { mouse.push_back(event.type()); }
    std::vector<platform::EventType> mouse;
};

inline std::shared_ptr<platform::Event> mouse(platform::EventType type,
                                              double x,
                                              double y,
                                              int clickCount = 1) {
    return platform::Event::mouseEvent(type, platform::NSMakePoint(x, y), clickCount);
}

inline std::shared_ptr<platform::Event> key(uint16_t keyCode, const std::string& characters = {}) {
    return platform::Event::keyEvent(platform::EventType::KeyDown, keyCode, characters);
}

}  // namespace viewkit_test
