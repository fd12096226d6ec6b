#include "viewkit/PLSView.h"

#include <gtest/gtest.h>

#include <memory>
#include <vector>

#include "platform/ui/Window.h"
#include "tests/viewkit/RecordingResponders.h"

using platform::EventType;
using platform::NSMakeRect;
using viewkit_test::mouse;
using viewkit_test::RecordingView;
using viewkit_test::RecordingWindow;

namespace {

// A row-like PLSView at (10, 20, 100, 50) inside a recording parent that fills a real window.
class PLSViewRouting : public ::testing::Test {
  protected:
    void SetUp() override {
        window = std::make_unique<RecordingWindow>(NSMakeRect(100, 100, 200, 100));
        parent = std::make_shared<RecordingView>(NSMakeRect(0, 0, 200, 100));
        row = std::make_shared<PLSView>(NSMakeRect(10, 20, 100, 50));
        parent->addSubview(row);
        window->setContentView(parent);
    }

    void installRecordingBlocks() {
        row->setMouseDownInsideBlock([this](const platform::Event& event) {
            downs.push_back(event.clickCount());
            downLocations.push_back(event.locationInWindow());
        });
        row->setMouseUpInsideBlock(
            [this](const platform::Event& event) { ups.push_back(event.clickCount()); });
    }

    std::unique_ptr<RecordingWindow> window;
    std::shared_ptr<RecordingView> parent;
    std::shared_ptr<PLSView> row;
    std::vector<int> downs;
    std::vector<int> ups;
    std::vector<platform::Point> downLocations;
};

// Each press inside calls its closure with the event; a release inside calls its closure unless it
// ends a double click; a release outside is dropped. Left and bottom edges are inside, right and
// top edges outside. A set closure takes the event over from the responder chain.
TEST_F(PLSViewRouting, ClosuresSeePressesAndReleasesInsideTheBounds) {
    installRecordingBlocks();
    const struct {
        double downX, downY, upX, upY;
        int clicks;
        bool down, up;
    } cases[] = {
        {60, 40, 61, 41, 1, true, true},      {60, 40, 150, 90, 1, true, false},
        {60, 40, 60, 40, 2, true, false},     {60, 40, 60, 40, 3, true, true},
        {10, 20, 110, 40, 1, true, false},    {10, 69.5, 50, 70, 1, true, false},
        {109.999, 20, 10, 45, 1, true, true}, {50, 50, 50, 20, 1, true, true},
    };
    for (const auto& c : cases) {
        downs.clear();
        ups.clear();
        window->sendEvent(*mouse(EventType::LeftMouseDown, c.downX, c.downY, c.clicks));
        window->sendEvent(*mouse(EventType::LeftMouseUp, c.upX, c.upY, c.clicks));
        EXPECT_EQ(c.down ? std::vector<int>{c.clicks} : std::vector<int>{}, downs) << c.downX;
        EXPECT_EQ(c.up ? std::vector<int>{c.clicks} : std::vector<int>{}, ups) << c.upX;
    }
    EXPECT_EQ(platform::NSMakePoint(50, 50), downLocations.back());
    EXPECT_TRUE(parent->received.mouse.empty());
    EXPECT_TRUE(window->mouse.empty());
    // The press handler applies the same rule to a location the window did not route here.
    downs.clear();
    for (double x : {110.0, 9.999})
        row->mouseDown(*mouse(EventType::LeftMouseDown, x, 40));
    row->mouseDown(*mouse(EventType::LeftMouseDown, 50, 70));
    EXPECT_TRUE(downs.empty());
}

TEST_F(PLSViewRouting, WithoutClosuresEventsGoUpTheResponderChain) {
    window->sendEvent(*mouse(EventType::LeftMouseDown, 60, 40));
    window->sendEvent(*mouse(EventType::LeftMouseUp, 60, 40, 2));
    EXPECT_EQ((std::vector<EventType>{EventType::LeftMouseDown, EventType::LeftMouseUp}),
              parent->received.mouse);

    // Only the release closure set: the press still goes to the base class.
    row->setMouseUpInsideBlock([this](const platform::Event& e) { ups.push_back(e.clickCount()); });
    window->sendEvent(*mouse(EventType::LeftMouseDown, 60, 40));
    window->sendEvent(*mouse(EventType::LeftMouseUp, 60, 40));
    EXPECT_EQ(3u, parent->received.mouse.size());
    EXPECT_EQ(std::vector<int>{1}, ups);
}

TEST(PLSView, WithoutClosuresAContentViewPassesEventsToItsWindow) {
    RecordingWindow window(NSMakeRect(0, 0, 80, 60));
    auto content = std::make_shared<PLSView>(NSMakeRect(0, 0, 80, 60));
    window.setContentView(content);
    window.sendEvent(*mouse(EventType::LeftMouseDown, 5, 5));
    window.sendEvent(*mouse(EventType::LeftMouseUp, 5, 5));
    EXPECT_EQ((std::vector<EventType>{EventType::LeftMouseDown, EventType::LeftMouseUp}),
              window.mouse);
    EXPECT_EQ("PLSView", content->className());
}

TEST(PLSView, AClosureMayReplaceItselfWhileRunning) {
    auto view = std::make_shared<PLSView>(NSMakeRect(0, 0, 10, 10));
    int first = 0, second = 0;
    view->setMouseDownInsideBlock([&](const platform::Event&) {
        ++first;
        view->setMouseDownInsideBlock([&](const platform::Event&) { ++second; });
    });
    view->mouseDown(*mouse(EventType::LeftMouseDown, 5, 5));
    view->mouseDown(*mouse(EventType::LeftMouseDown, 5, 5));
    EXPECT_EQ(1, first);
    EXPECT_EQ(1, second);
}

}  // namespace
