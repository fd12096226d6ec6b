// The view tree: geometry, hit testing, coordinate conversion, the responder chain and layers.
#include <thread>

#include "platform/ui/ViewController.h"
#include "tests/platform/ui/PixelTestSupport.h"

using namespace platform;

static ViewPtr makeView(double x, double y, double w, double h) {
    return std::make_shared<View>(NSMakeRect(x, y, w, h));
}

// Counts the calls of setFrame, to show which setter runs it.
class FrameRecordingView : public View {
  public:
    using View::View;
    void setFrame(const Rect& frame) override {
        ++setFrameCalls;
        View::setFrame(frame);
    }
    int setFrameCalls = 0;
};

// Rect text uses the shortest numbers that read back the same; rects that only touch have no area
// in common.
TEST(GeometryTest, RectTextIntersectionAndOffset) {
    EXPECT_EQ("{{-3, 0.5}, {0.1, 0.30000000000000004}}",
              NSStringFromRect(NSMakeRect(-3, 0.5, 0.1, 0.1 + 0.2)));
    EXPECT_EQ(NSZeroRect, NSIntersectionRect(NSMakeRect(0, 0, 10, 10), NSMakeRect(10, 0, 5, 5)));
    EXPECT_EQ(NSMakeRect(3, -1, 10, 10), NSOffsetRect(NSMakeRect(1, 1, 10, 10), 2, -2));
}

// The last added visible subview wins; left and bottom edges belong to a view, right and top edges
// do not; hidden subtrees and subviews outside their parent are not hit.
TEST(ViewTreeTest, HitTestWithHalfOpenEdgesAndConvertingPoints) {
    auto root = makeView(0, 0, 100, 100), below = makeView(10, 10, 50, 50),
         above = makeView(30, 30, 50, 50), child = makeView(30, 30, 30, 30);
    below->addSubview(child);  // reaches past |below|
    root->addSubview(below);
    root->addSubview(above);
    const std::pair<Point, View*> cases[] = {
        {{40, 40}, above.get()}, {{10, 10}, below.get()}, {{29.999, 59.999}, below.get()},
        {{60, 20}, root.get()},  {{20, 60}, root.get()},  {{100, 50}, nullptr}};
    for (const auto& [point, expected] : cases)
        EXPECT_EQ(expected, root->hitTest(point)) << NSStringFromPoint(point);
    above->setHidden(true);
    EXPECT_EQ(child.get(), root->hitTest({45, 45}));
    EXPECT_EQ(root.get(), root->hitTest({65, 65}));  // in the child, outside its parent
    below->setHidden(true);
    EXPECT_EQ(root.get(), root->hitTest({45, 45}));
    root->setHidden(true);
    EXPECT_EQ(nullptr, root->hitTest({50, 50}));

    // Without a view, conversions are to and from the base: the root's coordinates.
    auto content = makeView(0, 0, 300, 200), outer = makeView(10, 20, 200, 100),
         inner = makeView(5, 7, 50, 50), sibling = makeView(150, 150, 20, 20);
    outer->addSubview(inner);
    content->addSubview(outer);
    content->addSubview(sibling);
    EXPECT_EQ(NSMakePoint(1, 2), inner->convertPoint({16, 29}, nullptr));
    EXPECT_EQ(NSMakePoint(6, 9), outer->convertPoint({1, 2}, inner.get()));
    EXPECT_EQ(NSMakePoint(-134, -121), sibling->convertPoint({1, 2}, inner.get()));
    EXPECT_EQ(NSMakePoint(-134, -121), inner->convertPointToView({1, 2}, sibling.get()));
    EXPECT_EQ(NSMakeRect(16, 29, 3, 4), inner->convertRectToView(NSMakeRect(1, 2, 3, 4), nullptr));
    EXPECT_EQ(NSMakeRect(1, 2, 3, 4), inner->convertRect(NSMakeRect(16, 29, 3, 4), nullptr));
}

// Adding moves a view and sets the window on its whole subtree; a view cannot become its own
// ancestor; a parent that dies is forgotten. Origin and size setters do not go through setFrame.
TEST(ViewTreeTest, AddSubviewMovesTheViewAndSetsTheWindowOnTheWholeSubtree) {
    Window window(NSMakeRect(0, 0, 100, 100));
    auto content = std::make_shared<View>();
    window.setContentView(content);
    auto detached = makeView(0, 0, 10, 10), grandchild = makeView(0, 0, 5, 5);
    auto child = std::make_shared<FrameRecordingView>(NSMakeRect(1, 2, 3, 4));
    child->addSubview(grandchild);
    detached->addSubview(child);
    content->addSubview(child);
    EXPECT_TRUE(detached->subviews().empty());
    EXPECT_EQ(&window, grandchild->window());
    EXPECT_TRUE(grandchild->isDescendantOf(content.get()));
    grandchild->addSubview(content);
    EXPECT_EQ(nullptr, content->superview());
    child->removeFromSuperview();
    EXPECT_TRUE(content->subviews().empty());
    EXPECT_EQ(nullptr, grandchild->window());
    makeView(0, 0, 10, 10)->addSubview(child);
    EXPECT_EQ(nullptr, child->superview());
    EXPECT_EQ(nullptr, child->nextResponder());

    child->setFrameCalls = 0;
    child->setFrameOrigin({5, 6});
    child->setFrameSize({7, 8});
    EXPECT_EQ(0, child->setFrameCalls);
    EXPECT_EQ(NSMakeRect(5, 6, 7, 8), child->frame());
    EXPECT_EQ(NSMakeRect(0, 0, 7, 8), child->bounds());
    // A layer is made on demand, once.
    child->setWantsLayer(true);
    Layer* made = child->layer();
    child->setWantsLayer(true);
    ASSERT_NE(nullptr, made);
    EXPECT_EQ(made, child->layer());
}

// Views, windows and view controllers belong to the main thread: made or changed on another, the
// program stops with a line naming the place instead of corrupting the tree.
TEST(MainThreadDeathTest, ViewsWindowsAndControllersStopOffTheMainThread) {
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    auto view = std::make_shared<View>();
    Window window(NSMakeRect(0, 0, 10, 10));
    const std::pair<std::function<void()>, const char*> cases[] = {
        {[] { View(); }, "View must run on the main thread; aborting"},
        {[&] { view->setHidden(true); }, "View::setNeedsDisplay must run on the main thread"},
        {[&] { window.sendEvent(*Event::keyEvent(EventType::KeyDown, 53, "")); },
         "Window::sendEvent must run on the main thread"},
        {[] { ViewController(); }, "ViewController must run on the main thread"},
    };
    for (const auto& [offMain, line] : cases) {
        SCOPED_TRACE(line);
        EXPECT_DEATH(std::thread(offMain).join(), line);
    }
}
