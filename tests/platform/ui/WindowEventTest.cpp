// Event routing through a window: mouse-downs to the view hit, drags and mouse-ups to the view
// pressed, keys to the first responder, click counts as given; keyboard access.
#include <map>

#include "tests/platform/ui/PixelTestSupport.h"

using namespace platform;

// Records every event it takes as a word and its click count ("down2 drag1 up3 ").
class RecordingView : public View {
  public:
    RecordingView(const Rect& frame, bool acceptsFocus)
        : View(frame), acceptsFocus_(acceptsFocus) {}
    void mouseDown(const Event& e) override { record("down", e); }
    void mouseUp(const Event& e) override { record("up", e); }
    void mouseDragged(const Event& e) override { record("drag", e); }
    void rightMouseDown(const Event& e) override { record("right", e); }
    void mouseMoved(const Event& e) override { record("moved", e); }
    void magnifyWithEvent(const Event& e) override { record("magnify", e); }
    void keyDown(const Event& e) override { record("key", e); }
    bool acceptsFirstResponder() const override { return acceptsFocus_; }
    std::string events;

  private:
    void record(const char* name, const Event& e) {
        events += name + std::to_string(e.clickCount()) + " ";
    }
    bool acceptsFocus_;
};

class WindowEventTest : public ::testing::Test {
  protected:
    void SetUp() override {
        window.setContentView(content);
        content->addSubview(left);
        content->addSubview(right);
    }
    void send(EventType type, double x, double y, int clicks = 1) {
        window.sendEvent(*Event::mouseEvent(type, {x, y}, clicks));
    }
    void sendKey(uint16_t code, const char* text) {
        window.sendEvent(*Event::keyEvent(EventType::KeyDown, code, text));
    }

    RecordingWindow window{NSMakeRect(0, 0, 200, 100)};
    std::shared_ptr<RecordingView> content = std::make_shared<RecordingView>(NSZeroRect, false);
    std::shared_ptr<RecordingView> left =
        std::make_shared<RecordingView>(NSMakeRect(0, 0, 100, 100), true);
    std::shared_ptr<RecordingView> right =
        std::make_shared<RecordingView>(NSMakeRect(100, 0, 100, 100), false);
};

// A press, its drags (off the window too) and its release go to the view pressed; other pointer
// events and a release with no press go to the view under the pointer.
TEST_F(WindowEventTest, PressesFollowThePressedViewOtherPointerEventsTheViewUnder) {
    send(EventType::LeftMouseDown, 10, 10, 2);
    send(EventType::LeftMouseDragged, 250, 150);
    send(EventType::LeftMouseUp, 150, 50, 3);
    send(EventType::LeftMouseUp, 150, 50);
    send(EventType::RightMouseDown, 150, 10);
    send(EventType::MouseMoved, 50, 10, 0);
    window.sendEvent(*Event::magnifyEvent(EventType::Magnify, {199, 99}, 0.5));
    send(EventType::LeftMouseDown, 200, 50);  // past the right edge
    EXPECT_EQ("down2 drag1 up3 moved0 ", left->events);
    EXPECT_EQ("up1 right1 magnify0 ", right->events);
    EXPECT_EQ("", content->events);
    send(EventType::LeftMouseUp, 300, -5);
    sendKey(0, "a");  // keys carry no pointer position
    EXPECT_EQ(NSMakePoint(300, -5), window.mouseLocationOutsideOfEventStream());
}

// Keys go to the first responder, else to the window. A view that refuses, or is in no window, is
// not made first responder; a pressed one is. A view removed from the window hands the keys back,
// and a pressed view removed before the release is not called.
TEST_F(WindowEventTest, ARemovedViewLosesTheKeysAndItsPress) {
    auto stray = std::make_shared<RecordingView>(NSMakeRect(0, 0, 10, 10), true);
    EXPECT_FALSE(window.makeFirstResponder(right.get()));
    EXPECT_FALSE(window.makeFirstResponder(stray.get()));
    send(EventType::LeftMouseDown, 10, 10);
    EXPECT_EQ(left.get(), window.firstResponder());
    left->removeFromSuperview();
    std::weak_ptr<RecordingView> gone = left;
    left.reset();
    EXPECT_TRUE(gone.expired());
    send(EventType::LeftMouseDragged, 150, 50);
    send(EventType::LeftMouseUp, 150, 50);
    sendKey(kVK_Tab, "\t");
    EXPECT_EQ("up1 ", right->events);
    EXPECT_EQ((std::vector<uint16_t>{kVK_Tab}), window.keys);
}

// Keyboard access: Tab and Shift+Tab go round the visible buttons in reading order (top first,
// then left), from no focus before the first Tab; Space and Return click the focused one at its
// centre; Escape clicks the view it is the key equivalent of, wherever the focus is.
TEST(WindowKeyboardTest, TabGoesRoundTheButtonsInReadingOrderAndKeysClickThem) {
    // T Tab, B Shift+Tab, S Space, R Return, E Escape; then the view clicked.
    const struct {
        const char* keys;
        const char* clicked;
    } kCases[] = {{"S", ""},
                  {"TS", "topLeft "},
                  {"TTR", "topRight "},
                  {"TTTS", "low "},
                  {"TTTTS", "topLeft "},
                  {"BS", "low "},
                  {"TTBS", "topLeft "},
                  {"TTE", "low "}};
    for (const auto& c : kCases) {
        SCOPED_TRACE(c.keys);
        Window window(NSMakeRect(0, 0, 200, 100));
        window.setContentView(std::make_shared<View>());
        std::map<std::string, std::shared_ptr<RecordingView>> views;
        auto add = [&](const char* name, const Rect& frame, AccessibilityRole role) {
            views[name] = std::make_shared<RecordingView>(frame, false);
            views[name]->setAccessibilityRole(role);
            window.contentView()->addSubview(views[name]);
        };
        // Added out of reading order.
        add("low", NSMakeRect(100, 0, 50, 20), AccessibilityRole::Button);
        add("topRight", NSMakeRect(100, 60, 50, 20), AccessibilityRole::Button);
        add("topLeft", NSMakeRect(0, 60, 50, 20), AccessibilityRole::Button);
        add("label", NSMakeRect(0, 30, 50, 20), AccessibilityRole::StaticText);
        add("hidden", NSMakeRect(0, 80, 50, 20), AccessibilityRole::Button);
        views["hidden"]->setHidden(true);
        views["low"]->setKeyEquivalent("\x1b");
        for (const char key : std::string(c.keys)) {
            const uint16_t code = key == 'S'   ? kVK_Space
                                  : key == 'R' ? kVK_Return
                                  : key == 'E' ? kVK_Escape
                                               : kVK_Tab;
            const std::string text = key == 'S'   ? " "
                                     : key == 'R' ? "\r"
                                     : key == 'E' ? "\x1b"
                                                  : "\t";
            window.sendEvent(*Event::keyEvent(EventType::KeyDown, code, text,
                                              key == 'B' ? uint64_t{NSEventModifierFlagShift} : 0));
        }
        std::string clicked;
        for (const auto& [name, view] : views) {
            if (view->events == "down1 up1 ")
                clicked += name + " ";
        }
        EXPECT_EQ(c.clicked, clicked);
    }
}
