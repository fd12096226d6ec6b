#include "platform/core/EventLoop.h"
#include "platform/ui/AppKitVersion.h"
#include "platform/ui/GraphicsContext.h"
#include "tests/viewkit/ViewKitTestSupport.h"
#include "viewkit/PLSImageView.h"

static constexpr Rgba kRed{255, 0, 0, 255}, kGreen{0, 255, 0, 255}, kBlue{0, 0, 255, 255};

// |width| x 100 points of solid colours side by side, left to right.
static platform::ImagePtr bands(double width, const std::vector<const char*>& colours) {
    return platform::Image::imageWithBitmap(platform::Bitmap::drawn(
        platform::NSMakeSize(width, 100), 1, [&](platform::GraphicsContext& c) {
            for (size_t i = 0; i < colours.size(); ++i) {
                c.setFillColor(*SExt::colorWithHex(colours[i]));
                c.fillRect(NSMakeRect(i * width / colours.size(), 0, width / colours.size(), 100));
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
    std::shared_ptr<PLSImageView> view = std::make_shared<PLSImageView>(NSMakeRect(20, 20, 60, 60));
    platform::ImagePtr photo = bands(200, {"#FF0000", "#00FF00", "#00FF00", "#0000FF"});
};

// The sheet's order: the photo first, aspect fill after. At 1672.0 the rendition crops it (full
// height, trimmed width for a wide photo in a square) and follows the view's later size. Above
// 1672.0 a late aspect fill only stretches; a later image gets a layer that crops.
TEST_F(PLSImageViewTest, AspectFillByToolkitVersion) {
    platform::setAppKitVersionNumber(1672.0);
    view->setImage(photo);
    view->setDrawWithAspectFill(true);
    EXPECT_EQ((std::vector<Rgba>{kGreen, kGreen}), shown(*view, {{1, 30}, {59, 30}}));
    view->setFrame(NSMakeRect(0, 0, 120, 60));  // the image's own proportions: all of it
    EXPECT_EQ((std::vector<Rgba>{kRed, kBlue}), shown(*view, {{1, 30}, {119, 30}}));

    platform::setAppKitVersionNumber(1672.01);
    view = std::make_shared<PLSImageView>(NSMakeRect(0, 0, 60, 60));
    view->setImage(photo);
    view->setDrawWithAspectFill(true);
    EXPECT_EQ((std::vector<Rgba>{kRed, kBlue}), shown(*view, {{1, 30}, {59, 30}}));
    view->setImage(photo);
    ASSERT_NE(nullptr, view->layer());
    EXPECT_EQ(photo, view->layer()->contents());
    EXPECT_EQ(std::vector<Rgba>{kGreen}, shown(*view, {{1, 30}}));
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
        view = std::make_shared<PLSImageView>(NSMakeRect(0, 0, 60, 60));
        auto square = bands(20, {"#FFFFFF"});
        square->setSize(platform::NSMakeSize(20, 20));
        view->setImage(square);
        view->setHighlightMode(mode);
        view->setPlCornerRadius(radius);
        view->setHighlighted(true);
        EXPECT_EQ(pixels, shown(*view, {{30, 30}, {5, 30}, {0.5, 0.5}})) << mode << radius;
    }
}

// A release with the pointer inside queues the action; a magnify or smart magnify closure that
// handles the gesture keeps it from the base, which passes it up.
TEST_F(PLSImageViewTest, ReleaseQueuesTheActionAndAHandledPinchStops) {
    platform::Window window(NSMakeRect(0, 0, 100, 100));
    auto parent = std::make_shared<RecordingView>();
    window.setContentView(parent);
    parent->addSubview(view);
    auto target = std::make_shared<platform::Responder>();
    std::vector<std::shared_ptr<void>> senders;
    target->registerAction("open:", [&](const std::shared_ptr<void>& s) { senders.push_back(s); });
    view->setTarget(target);
    view->setAction("open:");
    // The pointer's position decides, not the event's: 50 is inside the view, 90 outside.
    for (const double pointerX : {50.0, 90.0}) {
        window.sendEvent(*mouse(EventType::LeftMouseDown, 50, 50));
        EXPECT_TRUE(view->isHighlighted());
        window.setMouseLocationOutsideOfEventStream(platform::NSMakePoint(pointerX, 50));
        view->mouseUp(*mouse(EventType::LeftMouseUp, 140 - pointerX, 50));
        EXPECT_FALSE(view->isHighlighted());
    }
    EXPECT_TRUE(senders.empty()) << "the action waits for a later turn";
    ASSERT_TRUE(platform::EventLoop::runUntilIdle(std::chrono::seconds(10)));
    EXPECT_EQ(std::vector<std::shared_ptr<void>>{view}, senders);
    for (const bool handled : {true, false}) {
        view->setMagnifyWithEventBlockIsHandled([=](const platform::Event&) { return handled; });
        view->magnifyWithEvent(*platform::Event::magnifyEvent(EventType::Magnify, {}, 0.5));
    }
    view->setSmartMagnifyWithEventBlock([](const platform::Event&) { return true; });
    view->smartMagnifyWithEvent(*platform::Event::magnifyEvent(EventType::SmartMagnify, {}, 0));
    EXPECT_EQ(1, parent->magnifies);
}
