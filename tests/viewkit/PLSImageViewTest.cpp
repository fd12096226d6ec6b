#include "viewkit/PLSImageView.h"

#include <gtest/gtest.h>

#include <chrono>

#include "platform/core/EventLoop.h"
#include "platform/ui/AppKitVersion.h"
#include "platform/ui/Bitmap.h"
#include "platform/ui/GraphicsContext.h"
#include "platform/ui/Window.h"
#include "tests/viewkit/RecordingResponders.h"

using platform::NSMakeRect;
using platform::NSMakeSize;
using platform::Rgba;

namespace {

// 200 x 100 points: red, then green across the middle half, then blue.
platform::ImagePtr stripes() {
    return platform::Image::imageWithBitmap(
        platform::Bitmap::drawn(NSMakeSize(200, 100), 1, [](platform::GraphicsContext& context) {
            const Rgba colours[] = {{255, 0, 0, 255}, {0, 255, 0, 255}, {0, 0, 255, 255}};
            const double edges[] = {0, 50, 150, 200};
            for (int i = 0; i < 3; ++i) {
                context.setFillColor(*platform::Color::colorWithDeviceRed(
                    colours[i].r / 255.0, colours[i].g / 255.0, colours[i].b / 255.0, 1));
                context.fillRect(NSMakeRect(edges[i], 0, edges[i + 1] - edges[i], 100));
            }
        }));
}

Rgba shown(PLSImageView& view, double x, double y) {
    return platform::Bitmap::renderView(view, 2)->pixelAtPoint(x, y);
}

class PLSImageViewTest : public ::testing::Test {
  protected:
    void TearDown() override { platform::setAppKitVersionNumber(0); }
};

TEST(PLSImageViewCrop, CoversTheViewAboutTheCentre) {
    const struct {
        double iw, ih, bw, bh;
        platform::Rect crop;
    } kCases[] = {
        {200, 100, 60, 60, NSMakeRect(50, 0, 100, 100)},
        {100, 300, 60, 60, NSMakeRect(0, 100, 100, 100)},
        {100, 100, 120, 60, NSMakeRect(0, 25, 100, 50)},
        {200, 100, 120, 60, NSMakeRect(0, 0, 200, 100)},
        {200, 100, 0, 60, platform::NSZeroRect},
    };
    for (const auto& c : kCases) {
        SCOPED_TRACE(platform::NSStringFromRect(c.crop));
        EXPECT_EQ(c.crop,
                  PLSImageView::aspectFillCrop(NSMakeSize(c.iw, c.ih), NSMakeSize(c.bw, c.bh)));
    }
}

// The sheet's order: the photo first, aspect fill after. At 1672.0 the rendition crops it, and
// the crop follows the view's later size.
TEST_F(PLSImageViewTest, RenditionAtVersion1672CropsAndFollowsAResize) {
    platform::setAppKitVersionNumber(1672.0);
    auto view = std::make_shared<PLSImageView>(NSMakeRect(0, 0, 60, 60));
    view->setImage(stripes());
    view->setDrawWithAspectFill(true);
    EXPECT_EQ(nullptr, view->layer());
    EXPECT_EQ((Rgba{0, 255, 0, 255}), shown(*view, 1, 30));
    EXPECT_EQ((Rgba{0, 255, 0, 255}), shown(*view, 59, 30));
    view->setFrame(NSMakeRect(0, 0, 120, 60));  // the image's own proportions: all of it
    EXPECT_EQ((Rgba{255, 0, 0, 255}), shown(*view, 1, 30));
    EXPECT_EQ((Rgba{0, 0, 255, 255}), shown(*view, 119, 30));
}

// Above 1672.0 a late aspect fill only stretches; each later image gets a fresh layer that crops.
TEST_F(PLSImageViewTest, LayerPathStretchesALateFillAndGivesEachImageAFreshLayer) {
    platform::setAppKitVersionNumber(1672.01);
    auto view = std::make_shared<PLSImageView>(NSMakeRect(0, 0, 60, 60));
    const auto photo = stripes();
    view->setImage(photo);
    view->setDrawWithAspectFill(true);
    EXPECT_EQ(nullptr, view->layer());
    EXPECT_EQ((Rgba{255, 0, 0, 255}), shown(*view, 1, 30));
    view->setImage(photo);
    platform::Layer* first = view->layer();
    ASSERT_NE(nullptr, first);
    EXPECT_EQ(photo, first->contents());
    EXPECT_EQ((Rgba{0, 255, 0, 255}), shown(*view, 1, 30));
    view->setImage(photo);
    EXPECT_NE(first, view->layer());
}

// A 20-point white square centred in 60 points, highlighted.
TEST_F(PLSImageViewTest, OverlaysAndTheRoundedClip) {
    const auto square = platform::Image::imageWithBitmap(
        platform::Bitmap::drawn(NSMakeSize(20, 20), 1, [](platform::GraphicsContext& context) {
            context.setFillColor(*platform::Color::whiteColor());
            context.fillRect(NSMakeRect(0, 0, 20, 20));
        }));
    const struct {
        int mode;
        double radius;
        Rgba centre, side, corner;
    } kCases[] = {
        {0, 0, {255, 255, 255, 255}, {0, 0, 0, 0}, {0, 0, 0, 0}},
        {1, 0, {153, 153, 153, 255}, {0, 0, 0, 102}, {0, 0, 0, 102}},
        {2, 0, {153, 153, 153, 255}, {0, 0, 0, 0}, {0, 0, 0, 0}},
        {3, 0, {255, 255, 255, 255}, {0, 0, 0, 0}, {0, 0, 0, 0}},
        // The clip draws the image stretched to the frame; mode 1 still darkens square bounds.
        {0, 10, {255, 255, 255, 255}, {255, 255, 255, 255}, {0, 0, 0, 0}},
        {1, 10, {153, 153, 153, 255}, {153, 153, 153, 255}, {0, 0, 0, 102}},
    };
    for (const auto& c : kCases) {
        SCOPED_TRACE("mode " + std::to_string(c.mode) + " radius " + std::to_string(c.radius));
        auto view = std::make_shared<PLSImageView>(NSMakeRect(0, 0, 60, 60));
        view->setImage(platform::Image::imageWithBitmap(square->bitmapAtScale(1)));
        view->setHighlightMode(c.mode);
        view->setPlCornerRadius(c.radius);
        view->setHighlighted(true);
        EXPECT_EQ(c.centre, shown(*view, 30, 30));
        EXPECT_EQ(c.side, shown(*view, 5, 30));
        EXPECT_EQ(c.corner, shown(*view, 0.5, 0.5));
    }
}

class ActionTarget : public platform::Responder {
  public:
    ActionTarget() {
        registerAction("open:",
                       [this](const std::shared_ptr<void>& sender) { senders.push_back(sender); });
    }
    std::vector<std::shared_ptr<void>> senders;
};

TEST_F(PLSImageViewTest, ReleaseInsideQueuesTheActionReleaseOutsideOnlyClearsTheHighlight) {
    platform::Window window(NSMakeRect(0, 0, 100, 100));
    window.setContentView(std::make_shared<platform::View>());
    auto view = std::make_shared<PLSImageView>(NSMakeRect(20, 20, 60, 60));
    window.contentView()->addSubview(view);
    auto target = std::make_shared<ActionTarget>();
    view->setTarget(target);
    view->setAction("open:");
    using platform::EventType;
    // The pointer's position decides, not the event's: 50 is inside the view, 90 outside.
    for (const double pointerX : {50.0, 90.0}) {
        SCOPED_TRACE(pointerX);
        window.sendEvent(*viewkit_test::mouse(EventType::LeftMouseDown, 50, 50));
        EXPECT_TRUE(view->isHighlighted());
        window.setMouseLocationOutsideOfEventStream(platform::NSMakePoint(pointerX, 50));
        view->mouseUp(*viewkit_test::mouse(EventType::LeftMouseUp, 140 - pointerX, 50));
        EXPECT_FALSE(view->isHighlighted());
        EXPECT_TRUE(target->senders.empty());
    }
    // Sent once (for the pointer at 50), after mouseUp returned, with the view as sender.
    ASSERT_TRUE(platform::EventLoop::runUntilIdle(std::chrono::seconds(10)));
    ASSERT_EQ(1u, target->senders.size());
    EXPECT_EQ(view.get(), target->senders[0].get());
}

// Records the gestures and touch ends that reach the view's superview.
class GestureParent : public platform::View {
  public:
    using View::View;
    void magnifyWithEvent(const platform::Event&) override { seen.push_back("magnify"); }
    void smartMagnifyWithEvent(const platform::Event&) override { seen.push_back("smart"); }
    void rightMouseUp(const platform::Event&) override { seen.push_back("right"); }
    void touchesEndedWithEvent(const platform::Event&) override { seen.push_back("touches"); }
    std::vector<std::string> seen;
};

TEST_F(PLSImageViewTest, ClosuresTakeEventsOverOrLeaveThemToTheBase) {
    using platform::EventType;
    for (const bool handled : {true, false}) {
        SCOPED_TRACE(handled);
        auto parent = std::make_shared<GestureParent>(NSMakeRect(0, 0, 60, 60));
        auto view = std::make_shared<PLSImageView>(NSMakeRect(0, 0, 60, 60));
        parent->addSubview(view);
        auto seen = &parent->seen;
        view->setMagnifyWithEventBlockIsHandled([=](const platform::Event&) {
            seen->push_back("magnify closure");
            return handled;
        });
        view->setSmartMagnifyWithEventBlock([=](const platform::Event&) { return handled; });
        view->setTouchesEndWithEventBlock(
            [=](const platform::Event&) { seen->push_back("touches closure"); });
        const auto gesture = platform::Event::magnifyEvent(EventType::Magnify, {}, 0.5);
        view->magnifyWithEvent(*gesture);
        view->smartMagnifyWithEvent(*gesture);
        view->touchesEndedWithEvent(*gesture);
        std::vector<std::string> expected = {"magnify closure", "touches", "touches closure"};
        if (!handled)
            expected = {"magnify closure", "magnify", "smart", "touches", "touches closure"};
        EXPECT_EQ(expected, parent->seen);
    }
}

TEST(PLSImageViewFlags, VibrancyAndWindowDragging) {
    PLSImageView view;
    const struct {
        int mode;
        bool allows;
    } kCases[] = {{0, false}, {1, false}, {2, true}, {3, false}};
    for (const auto& c : kCases) {
        view.setVibrancyMode(c.mode);
        EXPECT_EQ(c.allows, view.allowsVibrancy()) << c.mode;
    }
    EXPECT_FALSE(view.mouseDownCanMoveWindow());
    view.setForceWindowDraggable(true);
    EXPECT_TRUE(view.mouseDownCanMoveWindow());
    EXPECT_TRUE(view.acceptsTouchEvents());
}

}  // namespace
