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

TEST_F(PLSViewRouting, PressAndReleaseInsideCallEachClosureOnceWithTheEvent) {
    installRecordingBlocks();
    window->sendEvent(*mouse(EventType::LeftMouseDown, 60, 40));
    window->sendEvent(*mouse(EventType::LeftMouseUp, 61, 41));
    EXPECT_EQ(std::vector<int>{1}, downs);
    EXPECT_EQ(std::vector<int>{1}, ups);
    ASSERT_EQ(1u, downLocations.size());
    EXPECT_EQ(platform::NSMakePoint(60, 40), downLocations[0]);
    EXPECT_TRUE(parent->received.mouse.empty()) << "a set closure takes the event over";
    EXPECT_TRUE(window->mouse.empty());
}

TEST_F(PLSViewRouting, ReleaseOutsideCallsOnlyThePressClosure) {
    installRecordingBlocks();
    window->sendEvent(*mouse(EventType::LeftMouseDown, 60, 40));
    window->sendEvent(*mouse(EventType::LeftMouseUp, 150, 90));
    EXPECT_EQ(std::vector<int>{1}, downs);
    EXPECT_TRUE(ups.empty());
    EXPECT_TRUE(parent->received.mouse.empty()) << "the release is dropped, not passed on";
}

TEST_F(PLSViewRouting, TheReleaseEndingADoubleClickIsIgnored) {
    installRecordingBlocks();
    for (int clicks = 1; clicks <= 3; ++clicks) {
        window->sendEvent(*mouse(EventType::LeftMouseDown, 60, 40, clicks));
        window->sendEvent(*mouse(EventType::LeftMouseUp, 60, 40, clicks));
    }
    EXPECT_EQ((std::vector<int>{1, 2, 3}), downs);
    EXPECT_EQ((std::vector<int>{1, 3}), ups);
}

TEST_F(PLSViewRouting, LeftAndBottomEdgesAreInsideRightAndTopEdgesOutside) {
    installRecordingBlocks();
    // The window's bottom-left corner of the row, then releases on each edge.
    window->sendEvent(*mouse(EventType::LeftMouseDown, 10, 20));
    EXPECT_EQ(1u, downs.size());
    window->sendEvent(*mouse(EventType::LeftMouseUp, 110, 40));  // right edge
    window->sendEvent(*mouse(EventType::LeftMouseDown, 10, 69.5));
    window->sendEvent(*mouse(EventType::LeftMouseUp, 50, 70));  // top edge
    window->sendEvent(*mouse(EventType::LeftMouseDown, 109.999, 20));
    window->sendEvent(*mouse(EventType::LeftMouseUp, 10, 45));  // left edge
    window->sendEvent(*mouse(EventType::LeftMouseDown, 50, 50));
    window->sendEvent(*mouse(EventType::LeftMouseUp, 50, 20));  // bottom edge
    EXPECT_EQ(4u, downs.size());
    EXPECT_EQ(2u, ups.size());

    // The press handler applies the same rule to a location the window did not route here.
    row->mouseDown(*mouse(EventType::LeftMouseDown, 110, 40));
    row->mouseDown(*mouse(EventType::LeftMouseDown, 50, 70));
    row->mouseDown(*mouse(EventType::LeftMouseDown, 9.999, 40));
    EXPECT_EQ(4u, downs.size());
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
