#include <chrono>

#include "platform/core/EventLoop.h"
#include "platform/ui/AppKitVersion.h"
#include "platform/ui/GraphicsContext.h"
#include "tests/viewkit/ViewKitTestSupport.h"
#include "viewkit/PLSImageView.h"

static constexpr Rgba kRed{255, 0, 0, 255}, kGreen{0, 255, 0, 255}, kBlue{0, 0, 255, 255};

// |width| x 100 points of solid colours side by side, left to right (white for "w").
static platform::ImagePtr bands(double width, const std::string& colours) {
    return platform::Image::imageWithBitmap(platform::Bitmap::drawn(
        platform::NSMakeSize(width, 100), 1, [&](platform::GraphicsContext& c) {
            const double step = width / colours.size();
            for (size_t i = 0; i < colours.size(); ++i) {
                const char k = colours[i];
                c.setFillColor(*Color::colorWithDeviceRed(
                    k == 'r' || k == 'w', k == 'g' || k == 'w', k == 'b' || k == 'w', 1));
                c.fillRect(NSMakeRect(i * step, 0, step, 100));
            }
        }));
}

static std::vector<Rgba> shown(PLSImageView& view, std::vector<platform::Point> points) {
    const auto bitmap = platform::Bitmap::renderView(view, 2);
    std::vector<Rgba> pixels;
    for (const platform::Point& p : points)
        pixels.push_back(bitmap->pixelAtPoint(p.x, p.y));
    return pixels;
}

class PLSImageViewTest : public ::testing::Test {
  protected:
    void TearDown() override { platform::setAppKitVersionNumber(0); }
    std::shared_ptr<PLSImageView> view_ = std::make_shared<PLSImageView>(NSMakeRect(0, 0, 60, 60));
    platform::ImagePtr photo_ = bands(200, "rggb");
};

// The sheet's order: the photo first, aspect fill after. At 1672.0 the rendition crops it (full
// height, trimmed width for a wide photo in a square) and follows the view's later size. Above
// 1672.0 a late aspect fill only stretches; a later image gets a layer that crops.
TEST_F(PLSImageViewTest, AspectFillByToolkitVersion) {
    platform::setAppKitVersionNumber(1672.0);
    view_->setImage(photo_);
    view_->setDrawWithAspectFill(true);
    EXPECT_EQ((std::vector<Rgba>{kGreen, kGreen}), shown(*view_, {{1, 30}, {59, 30}}));
    view_->setFrame(NSMakeRect(0, 0, 120, 60));  // the image's own proportions: all of it
    EXPECT_EQ((std::vector<Rgba>{kRed, kBlue}), shown(*view_, {{1, 30}, {119, 30}}));

    platform::setAppKitVersionNumber(1672.01);
    view_ = std::make_shared<PLSImageView>(NSMakeRect(0, 0, 60, 60));
    view_->setImage(photo_);
    view_->setDrawWithAspectFill(true);
    EXPECT_EQ((std::vector<Rgba>{kRed, kBlue}), shown(*view_, {{1, 30}, {59, 30}}));
    view_->setImage(photo_);
    ASSERT_TRUE(view_->layer() && view_->layer()->contents() == photo_);
    EXPECT_EQ(std::vector<Rgba>{kGreen}, shown(*view_, {{1, 30}}));
}

// A 20-point white square centred in 60 points, highlighted: the middle, beside the square, the
// corner.
TEST_F(PLSImageViewTest, OverlaysAndTheRoundedClip) {
    const Rgba white{255, 255, 255, 255}, grey{153, 153, 153, 255}, shade{0, 0, 0, 102}, clear{};
    const std::tuple<int, double, std::vector<Rgba>> cases[] = {{1, 0, {grey, shade, shade}},
                                                                {2, 0, {grey, clear, clear}},
                                                                {3, 0, {white, clear, clear}},
                                                                {1, 10, {grey, grey, shade}}};
    for (const auto& [mode, radius, pixels] : cases) {
        view_ = std::make_shared<PLSImageView>(NSMakeRect(0, 0, 60, 60));
        auto square = bands(20, "w");
        square->setSize(platform::NSMakeSize(20, 20));
        view_->setImage(square);
        view_->setHighlightMode(mode);
        view_->setPlCornerRadius(radius);
        view_->setHighlighted(true);
        EXPECT_EQ(pixels, shown(*view_, {{30, 30}, {5, 30}, {0.5, 0.5}})) << mode << radius;
    }
}

TEST_F(PLSImageViewTest, ReleaseWithThePointerInsideQueuesTheAction) {
    platform::Window window(NSMakeRect(0, 0, 60, 60));
    window.setContentView(view_);
    auto target = std::make_shared<platform::Responder>();
    std::vector<std::shared_ptr<void>> senders;
    target->registerAction("open:", [&](const std::shared_ptr<void>& s) { senders.push_back(s); });
    view_->setTarget(target);
    view_->setAction("open:");
    // The pointer's position decides, not the event's: 30 is inside the view, 90 outside.
    for (const double pointerX : {30.0, 90.0}) {
        window.sendEvent(*viewkit_test::mouse(EventType::LeftMouseDown, 30, 30));
        EXPECT_TRUE(view_->isHighlighted());
        window.setMouseLocationOutsideOfEventStream(platform::NSMakePoint(pointerX, 30));
        view_->mouseUp(*viewkit_test::mouse(EventType::LeftMouseUp, 120 - pointerX, 30));
        EXPECT_FALSE(view_->isHighlighted());
    }
    EXPECT_TRUE(senders.empty()) << "the action waits for a later turn";
    ASSERT_TRUE(platform::EventLoop::runUntilIdle(std::chrono::seconds(10)));
    EXPECT_EQ(std::vector<std::shared_ptr<void>>{view_}, senders);
}
