// The image view: placement by scaling, drawing, target/action and mouse pass-through.
#include "tests/platform/ui/PixelTestSupport.h"

#include "platform/ui/ImageView.h"

using namespace platform;

namespace {

// An image of |size| painted solid red by its drawing handler.
ImagePtr redImage(Size size) {
    return Image::imageWithSize(size, false, [](const Rect& destination) {
        Color::colorWithDeviceRed(1, 0, 0, 1)->setFill();
        NSRectFill(destination);
        return true;
    });
}

class CountingContainer : public View {
  public:
    using View::View;
    void mouseDown(const Event&) override { ++mouseDowns; }
    void mouseUp(const Event&) override { ++mouseUps; }
    int mouseDowns = 0;
    int mouseUps = 0;
};

}  // namespace

TEST(ImageViewTest, ImageRectByScaling) {
    ImageView view(NSMakeRect(0, 0, 60, 40));
    EXPECT_EQ(NSZeroRect, view.imageRect());
    struct Case {
        ImageScaling scaling;
        Size image;
        Rect expected;
    } cases[] = {
        {ImageScaling::ProportionallyDown, {120, 40}, NSMakeRect(0, 10, 60, 20)},  // shrunk
        {ImageScaling::ProportionallyDown, {20, 10}, NSMakeRect(20, 15, 20, 10)},  // centred
        {ImageScaling::ProportionallyUpOrDown, {20, 10}, NSMakeRect(0, 5, 60, 30)},
        {ImageScaling::AxesIndependently, {20, 10}, NSMakeRect(0, 0, 60, 40)},
        {ImageScaling::None, {100, 100}, NSMakeRect(-20, -30, 100, 100)},  // overhangs
        {ImageScaling::ProportionallyDown, {0, 0}, NSMakeRect(30, 20, 0, 0)},
    };
    for (const Case& c : cases) {
        view.setImageScaling(c.scaling);
        view.setImage(redImage(c.image));
        EXPECT_EQ(c.expected, view.imageRect()) << NSStringFromSize(c.image);
    }
}

TEST(ImageViewTest, DrawsTheImageWhereImageRectSays) {
    auto view = std::make_shared<ImageView>(NSMakeRect(0, 0, 40, 40));
    view->setImage(redImage({20, 10}));
    EXPECT_EQ(ImageScaling::ProportionallyDown, view->imageScaling());
    const pixel_test::Probe pixels[] = {{20, 20, pixel_test::kRed},
                                        {10.5, 15.5, pixel_test::kRed},
                                        {9.5, 20, pixel_test::kClear},
                                        {20, 25.5, pixel_test::kClear}};
    pixel_test::expectPixels(*Bitmap::renderView(*view, 2), pixels);
}

// The action goes to a target that answers it, with the view as sender; the target is weak.
TEST(ImageViewTest, SendActionReachesATargetThatResponds) {
    auto view = std::make_shared<ImageView>(NSMakeRect(0, 0, 10, 10));
    EXPECT_FALSE(view->sendAction());
    auto target = std::make_shared<Responder>();
    std::shared_ptr<void> sender;
    target->registerAction("open:", [&](const std::shared_ptr<void>& object) { sender = object; });
    view->setTarget(target);
    view->setAction("close:");
    EXPECT_FALSE(view->sendAction());
    view->setAction("open:");
    EXPECT_TRUE(view->sendAction());
    EXPECT_EQ(view.get(), static_cast<ImageView*>(sender.get()));
    sender.reset();
    target.reset();
    EXPECT_FALSE(view->sendAction());
}

TEST(ImageViewTest, APressOnTheImageReachesTheViewHoldingIt) {
    Window window(NSMakeRect(0, 0, 100, 50));
    auto content = std::make_shared<View>();
    window.setContentView(content);
    auto row = std::make_shared<CountingContainer>(NSMakeRect(0, 0, 100, 50));
    auto icon = std::make_shared<ImageView>(NSMakeRect(30, 13, 23, 23));
    icon->setImage(redImage({23, 23}));
    row->addSubview(icon);
    content->addSubview(row);
    window.sendEvent(*Event::mouseEvent(EventType::LeftMouseDown, {40, 20}, 1));
    window.sendEvent(*Event::mouseEvent(EventType::LeftMouseUp, {40, 20}, 1));
    EXPECT_EQ(1, row->mouseDowns);
    EXPECT_EQ(1, row->mouseUps);
}
