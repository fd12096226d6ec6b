// The view tree: geometry, hit testing, coordinate conversion, the responder chain and layers.
#include "tests/platform/ui/PixelTestSupport.h"

#include "platform/ui/ViewController.h"

using namespace platform;

namespace {

ViewPtr makeView(double x, double y, double w, double h) {
    return std::make_shared<View>(NSMakeRect(x, y, w, h));
}

// Counts the frame setters a subclass sees, to show which setter runs which.
class FrameRecordingView : public View {
  public:
    using View::View;
    void setFrame(const Rect& frame) override {
        ++setFrameCalls;
        View::setFrame(frame);
    }
    int setFrameCalls = 0;
};

}  // namespace

// The last added visible subview wins; left and bottom edges belong to a view, right and top edges
// do not; hidden subtrees and subviews outside their parent are not hit.
TEST(ViewTreeTest, HitTestFindsTheLastAddedVisibleSubviewWithHalfOpenEdges) {
    auto root = makeView(0, 0, 100, 100);
    auto below = makeView(10, 10, 50, 50);
    auto above = makeView(30, 30, 50, 50);
    auto child = makeView(30, 30, 30, 30);  // reaches past |below|
    below->addSubview(child);
    root->addSubview(below);
    root->addSubview(above);
    struct Case {
        Point point;
        View* expected;
    } cases[] = {{{40, 40}, above.get()}, {{15, 15}, below.get()},
                 {{10, 10}, below.get()}, {{29.999, 59.999}, below.get()},
                 {{60, 20}, root.get()},  {{20, 60}, root.get()},
                 {{100, 50}, nullptr},    {{45, 45}, above.get()},
                 {{85, 20}, root.get()},  {{59, 20}, below.get()}};
    for (const Case& c : cases)
        EXPECT_EQ(c.expected, root->hitTest(c.point)) << NSStringFromPoint(c.point);

    above->setHidden(true);
    EXPECT_EQ(child.get(), root->hitTest({45, 45}));
    EXPECT_EQ(root.get(), root->hitTest({65, 65}));  // in the child, outside its parent
    below->setHidden(true);
    EXPECT_EQ(root.get(), root->hitTest({45, 45}));
    root->setHidden(true);
    EXPECT_EQ(nullptr, root->hitTest({50, 50}));
}

TEST(ViewTreeTest, ConvertPointBetweenNestedViewsAndTheWindow) {
    Window window(NSMakeRect(100, 100, 300, 200));
    auto content = std::make_shared<View>();
    window.setContentView(content);
    EXPECT_EQ(NSMakeRect(0, 0, 300, 200), content->frame());

    auto outer = makeView(10, 20, 200, 100);
    auto inner = makeView(5, 7, 50, 50);
    auto sibling = makeView(150, 150, 20, 20);
    outer->addSubview(inner);
    content->addSubview(outer);
    content->addSubview(sibling);

    EXPECT_EQ(NSMakePoint(1, 2), inner->convertPoint({16, 29}, nullptr));
    EXPECT_EQ(NSMakePoint(6, 9), outer->convertPoint({1, 2}, inner.get()));
    // Across branches of the tree.
    EXPECT_EQ(NSMakePoint(-134, -121), sibling->convertPoint({1, 2}, inner.get()));
    EXPECT_EQ(NSMakePoint(-134, -121), inner->convertPointToView({1, 2}, sibling.get()));
    EXPECT_EQ(NSMakeRect(16, 29, 3, 4), inner->convertRectToView(NSMakeRect(1, 2, 3, 4), nullptr));
    EXPECT_EQ(NSMakeRect(1, 2, 3, 4), inner->convertRect(NSMakeRect(16, 29, 3, 4), nullptr));
}

TEST(ViewTreeTest, AddSubviewMovesTheViewAndSetsTheWindowOnTheWholeSubtree) {
    Window window(NSMakeRect(0, 0, 100, 100));
    auto content = std::make_shared<View>();
    window.setContentView(content);
    auto detached = makeView(0, 0, 10, 10);
    auto child = makeView(0, 0, 10, 10);
    auto grandchild = makeView(0, 0, 5, 5);
    child->addSubview(grandchild);
    detached->addSubview(child);
    EXPECT_EQ(nullptr, grandchild->window());

    content->addSubview(child);
    EXPECT_TRUE(detached->subviews().empty());
    EXPECT_EQ(&window, grandchild->window());
    EXPECT_TRUE(grandchild->isDescendantOf(content.get()));
    grandchild->addSubview(content);  // a view cannot become its own ancestor
    EXPECT_EQ(nullptr, content->superview());

    child->removeFromSuperview();
    EXPECT_TRUE(content->subviews().empty());
    EXPECT_EQ(nullptr, grandchild->window());
    {
        auto parent = makeView(0, 0, 10, 10);
        parent->addSubview(child);
    }
    EXPECT_EQ(nullptr, child->superview());  // a parent that dies is forgotten
    EXPECT_EQ(nullptr, child->nextResponder());
}

TEST(ViewTreeTest, OriginAndSizeSettersDoNotGoThroughSetFrame) {
    auto view = std::make_shared<FrameRecordingView>(NSMakeRect(1, 2, 3, 4));
    view->setFrameOrigin({5, 6});
    view->setFrameSize({7, 8});
    EXPECT_EQ(0, view->setFrameCalls);
    EXPECT_EQ(NSMakeRect(5, 6, 7, 8), view->frame());
    EXPECT_EQ(NSMakeRect(0, 0, 7, 8), view->bounds());
}

TEST(ViewTreeTest, EventsPassedOnClimbToTheWindowAndAreDroppedAfterIt) {
    RecordingWindow window(NSMakeRect(0, 0, 100, 100));
    auto content = std::make_shared<View>();
    window.setContentView(content);
    auto middle = makeView(0, 0, 50, 50);
    auto leaf = makeView(0, 0, 10, 10);
    middle->addSubview(leaf);
    content->addSubview(middle);
    EXPECT_EQ(nullptr, window.nextResponder());

    auto click = Event::mouseEvent(EventType::LeftMouseDown, {5, 5}, 1);
    leaf->mouseDown(*click);  // plain views hand it on, up to the window
    EXPECT_EQ(1, window.mouseDowns);
    window.Window::mouseDown(*click);  // the end of the chain: nothing happens
}

// Layers are made on demand, once; a given layer is kept. Actions reach registered selectors.
TEST(ViewTreeTest, LayersAreMadeOnDemandAndAGivenLayerIsKept) {
    auto plain = makeView(0, 0, 10, 10);
    EXPECT_EQ(nullptr, plain->layer());
    plain->setWantsLayer(true);
    Layer* made = plain->layer();
    ASSERT_NE(nullptr, made);
    plain->setWantsLayer(true);
    EXPECT_EQ(made, plain->layer());
    auto given = std::make_shared<Layer>();
    plain->setLayer(given);
    plain->setWantsLayer(true);
    EXPECT_EQ(given.get(), plain->layer());

    Responder target;
    std::shared_ptr<void> received;
    target.registerAction("didClick:",
                          [&](const std::shared_ptr<void>& object) { received = object; });
    EXPECT_FALSE(target.respondsToSelector("other:"));
    auto object = std::make_shared<int>(7);
    target.performSelector("other:", object);  // logged, not fatal
    EXPECT_EQ(nullptr, received);
    target.performSelector("didClick:", object);
    EXPECT_EQ(object, received);
}

TEST(ViewTreeTest, ViewControllerLoadsAPlainViewOnce) {
    ViewController controller;
    EXPECT_FALSE(controller.isViewLoaded());
    View* loaded = controller.view().get();
    ASSERT_NE(nullptr, loaded);
    EXPECT_EQ(NSZeroRect, loaded->frame());
    EXPECT_EQ(loaded, controller.view().get());
}
