#include "viewkit/PLSImageView.h"

#include <gtest/gtest.h>

#include <chrono>

#include "platform/core/EventLoop.h"
#include "platform/ui/AppKitVersion.h"
#include "platform/ui/Bitmap.h"
#include "platform/ui/GraphicsContext.h"
#include "platform/ui/Window.h"
#include "tests/viewkit/RecordingResponders.h"

using platform::EventType;
using platform::NSMakeRect;
using platform::NSMakeSize;
using platform::Rgba;

namespace {

constexpr Rgba kRed{255, 0, 0, 255}, kGreen{0, 255, 0, 255}, kBlue{0, 0, 255, 255};

// |width| x 100 points of solid colours side by side, left to right (white for "w").
platform::ImagePtr bands(double width, const std::string& colours) {
    return platform::Image::imageWithBitmap(
        platform::Bitmap::drawn(NSMakeSize(width, 100), 1, [&](platform::GraphicsContext& c) {
            const double step = width / colours.size();
            for (size_t i = 0; i < colours.size(); ++i) {
                const char k = colours[i];
                c.setFillColor(*platform::Color::colorWithDeviceRed(
                    k == 'r' || k == 'w', k == 'g' || k == 'w', k == 'b' || k == 'w', 1));
                c.fillRect(NSMakeRect(i * step, 0, step, 100));
            }
        }));
}

Rgba shown(PLSImageView& view, double x, double y) {
    return platform::Bitmap::renderView(view, 2)->pixelAtPoint(x, y);
}

class PLSImageViewTest : public ::testing::Test {
  protected:
    void TearDown() override { platform::setAppKitVersionNumber(0); }
    std::shared_ptr<PLSImageView> view_ = std::make_shared<PLSImageView>(NSMakeRect(0, 0, 60, 60));
};

// The sheet's order: the photo first, aspect fill after. At 1672.0 the rendition crops it (full
// height, trimmed width for a wide photo in a square), and the crop follows the view's later size
// (equal proportions: the whole photo).
TEST_F(PLSImageViewTest, RenditionAtVersion1672CropsAndFollowsAResize) {
    platform::setAppKitVersionNumber(1672.0);
    view_->setImage(bands(200, "rggb"));
    view_->setDrawWithAspectFill(true);
    EXPECT_EQ(nullptr, view_->layer());
    EXPECT_EQ(kGreen, shown(*view_, 1, 30));
    EXPECT_EQ(kGreen, shown(*view_, 59, 30));
    view_->setFrame(NSMakeRect(0, 0, 120, 60));  // the image's own proportions: all of it
    EXPECT_EQ(kRed, shown(*view_, 1, 30));
    EXPECT_EQ(kBlue, shown(*view_, 119, 30));
}

// Above 1672.0 a late aspect fill only stretches; each later image gets a fresh layer that crops.
TEST_F(PLSImageViewTest, LayerPathStretchesALateFillAndGivesEachImageAFreshLayer) {
    platform::setAppKitVersionNumber(1672.01);
    const auto photo = bands(200, "rggb");
    view_->setImage(photo);
    view_->setDrawWithAspectFill(true);
    EXPECT_EQ(nullptr, view_->layer());
    EXPECT_EQ(kRed, shown(*view_, 1, 30));
    view_->setImage(photo);
    platform::Layer* first = view_->layer();
    ASSERT_NE(nullptr, first);
    EXPECT_EQ(photo, first->contents());
    EXPECT_EQ(kGreen, shown(*view_, 1, 30));
    view_->setImage(photo);
    EXPECT_NE(first, view_->layer());
}

// A 20-point white square centred in 60 points, highlighted: the middle, beside the square, the
// corner.
TEST_F(PLSImageViewTest, OverlaysAndTheRoundedClip) {
    const Rgba white{255, 255, 255, 255}, grey{153, 153, 153, 255}, shade{0, 0, 0, 102}, clear{};
    const struct {
        int mode;
        double radius;
        Rgba centre, side, corner;
    } kCases[] = {{0, 0, white, clear, clear},  {1, 0, grey, shade, shade},
                  {2, 0, grey, clear, clear},   {3, 0, white, clear, clear},
                  {0, 10, white, white, clear}, {1, 10, grey, grey, shade}};
    for (const auto& c : kCases) {
        SCOPED_TRACE("mode " + std::to_string(c.mode) + " radius " + std::to_string(c.radius));
        view_ = std::make_shared<PLSImageView>(NSMakeRect(0, 0, 60, 60));
        auto square = bands(20, "w");
        square->setSize(NSMakeSize(20, 20));
        view_->setImage(square);
        view_->setHighlightMode(c.mode);
        view_->setPlCornerRadius(c.radius);
        view_->setHighlighted(true);
        EXPECT_EQ(c.centre, shown(*view_, 30, 30));
        EXPECT_EQ(c.side, shown(*view_, 5, 30));
        EXPECT_EQ(c.corner, shown(*view_, 0.5, 0.5));
    }
}

TEST_F(PLSImageViewTest, ReleaseWithThePointerInsideQueuesTheAction) {
    platform::Window window(NSMakeRect(0, 0, 100, 100));
    window.setContentView(std::make_shared<platform::View>());
    view_->setFrame(NSMakeRect(20, 20, 60, 60));
    window.contentView()->addSubview(view_);
    auto target = std::make_shared<platform::Responder>();
    std::vector<std::shared_ptr<void>> senders;
    target->registerAction("open:", [&](const std::shared_ptr<void>& s) { senders.push_back(s); });
    view_->setTarget(target);
    view_->setAction("open:");
    // The pointer's position decides, not the event's: 50 is inside the view, 90 outside.
    for (const double pointerX : {50.0, 90.0}) {
        window.sendEvent(*viewkit_test::mouse(EventType::LeftMouseDown, 50, 50));
        EXPECT_TRUE(view_->isHighlighted());
        window.setMouseLocationOutsideOfEventStream(platform::NSMakePoint(pointerX, 50));
        view_->mouseUp(*viewkit_test::mouse(EventType::LeftMouseUp, 140 - pointerX, 50));
        EXPECT_FALSE(view_->isHighlighted());
        EXPECT_TRUE(senders.empty());
    }
    ASSERT_TRUE(platform::EventLoop::runUntilIdle(std::chrono::seconds(10)));
    ASSERT_EQ(1u, senders.size());
    EXPECT_EQ(view_.get(), senders[0].get());
}

// Counts the pinches that reach the view's superview.
class GestureParent : public platform::View {
  public:
    void magnifyWithEvent(const platform::Event&) override { ++magnified; }
    int magnified = 0;
};

TEST_F(PLSImageViewTest, MagnifyClosureThatHandlesKeepsTheGestureFromTheBase) {
    for (const bool handled : {true, false}) {
        auto parent = std::make_shared<GestureParent>();
        parent->addSubview(view_);
        view_->setMagnifyWithEventBlockIsHandled([=](const platform::Event&) { return handled; });
        view_->magnifyWithEvent(*platform::Event::magnifyEvent(EventType::Magnify, {}, 0.5));
        EXPECT_EQ(handled ? 0 : 1, parent->magnified);
    }
}

}  // namespace
