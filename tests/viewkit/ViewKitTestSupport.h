#pragma once

// What the view kit tests share: the headers they all use, events, and a view that records what
// reached it.

#include <gtest/gtest.h>

#include "platform/ui/Bitmap.h"
#include "platform/ui/View.h"
#include "platform/ui/Window.h"
#include "viewkit/ColorSExt.h"

using platform::Color;
using platform::EventType;
using platform::NSMakeRect;
using platform::Rgba;

// A plain view that records the events reaching it (as a parent view up the responder chain).
class RecordingView : public platform::View {
  public:
    using View::View;
    // The click count of each press, release, entry and exit.
    void mouseDown(const platform::Event& event) override { clicks.push_back(event.clickCount()); }
    void mouseUp(const platform::Event& event) override { clicks.push_back(event.clickCount()); }
    void mouseEntered(const platform::Event& e) override { clicks.push_back(e.clickCount()); }
    void mouseExited(const platform::Event& e) override { clicks.push_back(e.clickCount()); }
    void mouseDragged(const platform::Event&) override { ++drags; }
    void keyDown(const platform::Event& event) override { keys.push_back(event.keyCode()); }
    void magnifyWithEvent(const platform::Event&) override { ++magnifies; }
    void smartMagnifyWithEvent(const platform::Event&) override { ++magnifies; }
    std::vector<int> clicks;
    std::vector<uint16_t> keys;
    int drags = 0, magnifies = 0;
};

inline std::shared_ptr<platform::Event> mouse(EventType type, double x, double y, int clicks = 1) {
    return platform::Event::mouseEvent(type, platform::NSMakePoint(x, y), clicks);
}

inline std::shared_ptr<platform::Event> key(uint16_t keyCode, const std::string& characters = {}) {
    return platform::Event::keyEvent(EventType::KeyDown, keyCode, characters);
}
