// Event routing through a window: mouse-downs to the view hit, drags and mouse-ups to the view
// pressed, keys to the first responder, click counts as given.
#include "tests/platform/ui/PixelTestSupport.h"

using namespace platform;

namespace {

// Records every event it takes as a word and its click count ("down2 drag1 up3 "), and where the
// last one was.
class RecordingView : public View {
  public:
    explicit RecordingView(const Rect& frame, bool acceptsFocus = false)
        : View(frame), acceptsFocus_(acceptsFocus) {}
    void mouseDown(const Event& e) override { record("down", e); }
    void mouseUp(const Event& e) override { record("up", e); }
    void mouseDragged(const Event& e) override { record("drag", e); }
    void rightMouseDown(const Event& e) override { record("right", e); }
    void mouseMoved(const Event& e) override { record("moved", e); }
    void magnifyWithEvent(const Event& e) override { record("magnify", e); }
    void keyDown(const Event& e) override { lastKey = e.keyCode(); }
    bool acceptsFirstResponder() const override { return acceptsFocus_; }

    std::string events;
    Point lastLocation;
    uint16_t lastKey = 0;

  private:
    void record(const char* name, const Event& e) {
        events += name + std::to_string(e.clickCount()) + " ";
        lastLocation = e.locationInWindow();
    }
    bool acceptsFocus_;
};

EventPtr mouse(EventType type, double x, double y, int clicks = 1) {
    return Event::mouseEvent(type, {x, y}, clicks);
}

class WindowEventTest : public ::testing::Test {
  protected:
    void SetUp() override {
        window.setContentView(content);
        content->addSubview(left);
        content->addSubview(right);
    }

    RecordingWindow window{NSMakeRect(0, 0, 200, 100)};
    std::shared_ptr<RecordingView> content = std::make_shared<RecordingView>(NSZeroRect);
    std::shared_ptr<RecordingView> left =
        std::make_shared<RecordingView>(NSMakeRect(0, 0, 100, 100), true);
    std::shared_ptr<RecordingView> right =
        std::make_shared<RecordingView>(NSMakeRect(100, 0, 100, 100));
};

}  // namespace

// A press, its drags (off the window too) and its release all go to the view pressed; without one,
// a release goes to the view under it. Click counts are delivered as given.
TEST_F(WindowEventTest, PressInsideReleaseOutsideGoesToThePressedView) {
    window.sendEvent(*mouse(EventType::LeftMouseDown, 10, 10, 2));
    window.sendEvent(*mouse(EventType::LeftMouseDragged, 250, 150));  // off the window
    window.sendEvent(*mouse(EventType::LeftMouseUp, 150, 50, 3));
    window.sendEvent(*mouse(EventType::LeftMouseUp, 150, 50));

    EXPECT_EQ("down2 drag1 up3 ", left->events);
    EXPECT_EQ(NSMakePoint(150, 50), left->lastLocation);
    EXPECT_EQ("up1 ", right->events);
    EXPECT_EQ("", content->events);
}

// Other pointer events go to the view under the pointer; the last pointer position is kept, keys
// carry none.
TEST_F(WindowEventTest, PointerEventsGoToTheViewUnderThePointer) {
    window.sendEvent(*mouse(EventType::RightMouseDown, 150, 10));
    window.sendEvent(*mouse(EventType::MouseMoved, 50, 10, 0));
    window.sendEvent(*Event::magnifyEvent(EventType::Magnify, {199, 99}, 0.5));
    window.sendEvent(*mouse(EventType::LeftMouseDown, 200, 50));  // past the right edge

    EXPECT_EQ("right1 magnify0 ", right->events);
    EXPECT_EQ("moved0 ", left->events);
    EXPECT_EQ("", content->events);

    window.sendEvent(*mouse(EventType::LeftMouseUp, 300, -5));
    window.sendEvent(*Event::keyEvent(EventType::KeyDown, 0, "a"));
    EXPECT_EQ(NSMakePoint(300, -5), window.mouseLocationOutsideOfEventStream());
}

TEST_F(WindowEventTest, KeysGoToTheFirstResponderOrTheWindow) {
    EXPECT_EQ(&window, window.firstResponder());
    window.sendEvent(*Event::keyEvent(EventType::KeyDown, kVK_Escape, "\x1b"));
    EXPECT_EQ(std::vector<uint16_t>{kVK_Escape}, window.keys);

    // A view that refuses first responder is not made one, by a click or by hand; nor is a view of
    // no window.
    window.sendEvent(*mouse(EventType::LeftMouseDown, 150, 50));
    EXPECT_EQ(&window, window.firstResponder());
    EXPECT_FALSE(window.makeFirstResponder(right.get()));
    auto stray = std::make_shared<RecordingView>(NSMakeRect(0, 0, 10, 10), true);
    EXPECT_FALSE(window.makeFirstResponder(stray.get()));

    // A click on a view that accepts makes it first responder.
    window.sendEvent(*mouse(EventType::LeftMouseDown, 50, 50));
    EXPECT_EQ(left.get(), window.firstResponder());
    window.sendEvent(*Event::keyEvent(EventType::KeyDown, kVK_Return, "\r"));
    EXPECT_EQ(kVK_Return, left->lastKey);
    EXPECT_EQ(1u, window.keys.size());

    // A first responder leaving the window hands the keys back to the window.
    left->removeFromSuperview();
    EXPECT_EQ(&window, window.firstResponder());
    window.sendEvent(*Event::keyEvent(EventType::KeyDown, kVK_Tab, "\t"));
    EXPECT_EQ(2u, window.keys.size());
}

TEST_F(WindowEventTest, APressedViewRemovedBeforeTheReleaseIsNotCalled) {
    window.sendEvent(*mouse(EventType::LeftMouseDown, 10, 10));
    left->removeFromSuperview();
    std::weak_ptr<RecordingView> gone = left;
    left.reset();
    EXPECT_TRUE(gone.expired());
    window.sendEvent(*mouse(EventType::LeftMouseDragged, 150, 50));
    window.sendEvent(*mouse(EventType::LeftMouseUp, 150, 50));
    EXPECT_EQ("up1 ", right->events);  // the release falls to the view under it
}

TEST(WindowTest, NumbersScaleAndSnapshotSize) {
    Window first(NSMakeRect(0, 0, 40, 30));
    Window second(NSMakeRect(0, 0, 40, 30));
    EXPECT_NE(first.windowNumber(), second.windowNumber());
    EXPECT_EQ(1.0, first.backingScaleFactor());
    EXPECT_EQ(NSMakeRect(0, 0, 1920, 1080), first.screenFrame());

    first.setContentView(std::make_shared<View>());
    first.makeKeyAndOrderFront();
    EXPECT_TRUE(first.isVisible());
    auto shot = first.snapshot(2.0);
    ASSERT_NE(nullptr, shot);
    EXPECT_EQ(80, shot->pixelWidth());
    EXPECT_EQ(60, shot->pixelHeight());
    first.close();
    EXPECT_FALSE(first.isVisible());
}
