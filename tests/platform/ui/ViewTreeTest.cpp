// The view tree: geometry, hit testing, coordinate conversion, the responder chain and layers.
#include <gtest/gtest.h>

#include <memory>

#include "platform/ui/Event.h"
#include "platform/ui/View.h"
#include "platform/ui/ViewController.h"
#include "platform/ui/Window.h"
#include "tests/platform/ui/ViewTestSupport.h"

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

// Records the mouse-downs it takes; passes them on when asked to.
class RecordingResponder : public View {
  public:
    explicit RecordingResponder(const Rect& frame, bool passOn = false)
        : View(frame), passOn_(passOn) {}
    void mouseDown(const Event& event) override {
        ++mouseDowns;
        if (passOn_)
            View::mouseDown(event);
    }
    int mouseDowns = 0;

  private:
    bool passOn_;
};

}  // namespace

TEST(ViewTreeTest, HitTestFindsTheLastAddedVisibleSubviewWithHalfOpenEdges) {
    auto root = makeView(0, 0, 100, 100);
    auto below = makeView(10, 10, 50, 50);
    auto above = makeView(30, 30, 50, 50);
    root->addSubview(below);
    root->addSubview(above);

    EXPECT_EQ(above.get(), root->hitTest({40, 40}));  // overlap: the later sibling wins
    EXPECT_EQ(below.get(), root->hitTest({15, 15}));
    EXPECT_EQ(root.get(), root->hitTest({90, 5}));
    EXPECT_EQ(nullptr, root->hitTest({100, 50}));  // right edge of the root is outside

    // Left and bottom edges belong to the view; right and top edges do not.
    EXPECT_EQ(below.get(), root->hitTest({10, 10}));
    EXPECT_EQ(below.get(), root->hitTest({29.999, 59.999}));
    EXPECT_EQ(root.get(), root->hitTest({60, 20}));
    EXPECT_EQ(root.get(), root->hitTest({20, 60}));

    above->setHidden(true);
    EXPECT_EQ(below.get(), root->hitTest({40, 40}));
    root->setHidden(true);
    EXPECT_EQ(nullptr, root->hitTest({40, 40}));
}

TEST(ViewTreeTest, HitTestSkipsAHiddenSubtreeAndIgnoresSubviewsOutsideTheParent) {
    auto root = makeView(0, 0, 100, 100);
    auto parent = makeView(0, 0, 50, 50);
    auto child = makeView(10, 10, 80, 80);  // reaches past its parent
    parent->addSubview(child);
    root->addSubview(parent);

    EXPECT_EQ(child.get(), root->hitTest({20, 20}));
    EXPECT_EQ(root.get(), root->hitTest({70, 70}));  // inside the child, outside its parent
    parent->setHidden(true);
    EXPECT_EQ(root.get(), root->hitTest({20, 20}));
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
    EXPECT_EQ(NSMakePoint(16, 29), inner->convertPointToView({1, 2}, nullptr));
    EXPECT_EQ(NSMakePoint(6, 9), outer->convertPoint({1, 2}, inner.get()));
    EXPECT_EQ(NSMakePoint(1, 2), inner->convertPoint({6, 9}, outer.get()));
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
    EXPECT_EQ(content.get(), child->superview());
    EXPECT_EQ(&window, grandchild->window());
    EXPECT_TRUE(grandchild->isDescendantOf(content.get()));

    // A view cannot become its own ancestor.
    grandchild->addSubview(content);
    EXPECT_EQ(nullptr, content->superview());

    child->removeFromSuperview();
    EXPECT_TRUE(content->subviews().empty());
    EXPECT_EQ(nullptr, child->superview());
    EXPECT_EQ(nullptr, grandchild->window());
}

TEST(ViewTreeTest, SubviewsOutlivingTheirParentForgetIt) {
    auto child = makeView(0, 0, 10, 10);
    {
        auto parent = makeView(0, 0, 10, 10);
        parent->addSubview(child);
    }
    EXPECT_EQ(nullptr, child->superview());
    EXPECT_EQ(nullptr, child->nextResponder());
}

TEST(ViewTreeTest, OriginAndSizeSettersDoNotGoThroughSetFrame) {
    auto view = std::make_shared<FrameRecordingView>(NSMakeRect(1, 2, 3, 4));
    view->setFrameOrigin({5, 6});
    view->setFrameSize({7, 8});
    EXPECT_EQ(0, view->setFrameCalls);
    EXPECT_EQ(NSMakeRect(5, 6, 7, 8), view->frame());
    EXPECT_EQ(NSMakeRect(0, 0, 7, 8), view->bounds());
    view->setFrame(NSMakeRect(0, 0, 1, 1));
    EXPECT_EQ(1, view->setFrameCalls);
}

TEST(ViewTreeTest, EventsPassedOnClimbToTheWindowAndAreDroppedAfterIt) {
    Window window(NSMakeRect(0, 0, 100, 100));
    auto content = std::make_shared<RecordingResponder>(NSZeroRect);
    window.setContentView(content);
    auto middle = makeView(0, 0, 50, 50);
    auto leaf = std::make_shared<RecordingResponder>(NSMakeRect(0, 0, 10, 10), true);
    middle->addSubview(leaf);
    content->addSubview(middle);

    EXPECT_EQ(middle.get(), leaf->nextResponder());
    EXPECT_EQ(content.get(), middle->nextResponder());
    EXPECT_EQ(&window, content->nextResponder());
    EXPECT_EQ(nullptr, window.nextResponder());

    auto click = Event::mouseEvent(EventType::LeftMouseDown, {5, 5}, 1);
    leaf->mouseDown(*click);  // the plain middle view hands it on to the content view
    EXPECT_EQ(1, leaf->mouseDowns);
    EXPECT_EQ(1, content->mouseDowns);
    window.mouseDown(*click);  // the end of the chain: nothing happens
}

TEST(ViewTreeTest, LayersAreMadeOnDemandAndAGivenLayerIsKept) {
    auto plain = makeView(0, 0, 10, 10);
    EXPECT_EQ(nullptr, plain->layer());
    plain->setWantsLayer(true);
    ASSERT_NE(nullptr, plain->layer());
    Layer* made = plain->layer();
    plain->setWantsLayer(true);
    EXPECT_EQ(made, plain->layer());

    auto hosting = makeView(0, 0, 10, 10);
    auto given = std::make_shared<Layer>();
    hosting->setLayer(given);
    hosting->setWantsLayer(true);
    EXPECT_EQ(given.get(), hosting->layer());
}

TEST(ViewTreeTest, TargetActionThroughRegisteredSelectors) {
    Responder target;
    std::shared_ptr<void> received;
    int calls = 0;
    target.registerAction("didClick:", [&](const std::shared_ptr<void>& object) {
        ++calls;
        received = object;
    });
    EXPECT_TRUE(target.respondsToSelector("didClick:"));
    EXPECT_FALSE(target.respondsToSelector("other:"));
    auto object = std::make_shared<int>(7);
    target.performSelector("didClick:", object);
    target.performSelector("other:", object);  // logged, not fatal
    EXPECT_EQ(1, calls);
    EXPECT_EQ(object, received);
}

TEST(ViewTreeTest, ViewControllerLoadsAPlainViewOnce) {
    ViewController controller;
    EXPECT_FALSE(controller.isViewLoaded());
    const ViewPtr& first = controller.view();
    ASSERT_NE(nullptr, first);
    EXPECT_EQ(NSZeroRect, first->frame());
    EXPECT_EQ("NSView", first->className());
    View* loaded = first.get();
    EXPECT_EQ(loaded, controller.view().get());
}
