// The image view: placement by scaling, drawing, target/action and mouse pass-through.
#include "platform/ui/ImageView.h"

#include "tests/platform/ui/PixelTestSupport.h"

using namespace platform;
using namespace pixel_test;

static ImagePtr redImage(Size size) {
    return Image::imageWithSize(size, false, [](const Rect& destination) {
        fill(kRed, destination);
        return true;
    });
}

// Placement by scaling and drawing where it says. The action goes to a target that answers it, with
// the view as sender; the target is weak. A press on the image reaches the view holding it.
TEST(ImageViewTest, ImageRectByScalingDrawingActionAndPresses) {
    ImageView view(NSMakeRect(0, 0, 60, 40));
    EXPECT_EQ(NSZeroRect, view.imageRect());
    const struct {
        ImageScaling scaling;
        Size image;
        Rect expected;
    } cases[] = {
        {ImageScaling::ProportionallyDown, {120, 40}, NSMakeRect(0, 10, 60, 20)},  // shrunk
        {ImageScaling::ProportionallyUpOrDown, {20, 10}, NSMakeRect(0, 5, 60, 30)},
        {ImageScaling::AxesIndependently, {20, 10}, NSMakeRect(0, 0, 60, 40)},
        {ImageScaling::None, {100, 100}, NSMakeRect(-20, -30, 100, 100)},  // overhangs
        {ImageScaling::ProportionallyDown, {0, 0}, NSMakeRect(30, 20, 0, 0)},
        {ImageScaling::ProportionallyDown, {20, 10}, NSMakeRect(20, 15, 20, 10)},  // centred
    };
    for (const auto& c : cases) {
        view.setImageScaling(c.scaling);
        view.setImage(redImage(c.image));
        EXPECT_EQ(c.expected, view.imageRect()) << NSStringFromSize(c.image);
    }
    // Drawn where imageRect says: 20 x 10 centred in 60 x 40.
    expectPixels(*Bitmap::renderView(view, 2),
                 {{20.25, 15.25, kRed}, {19.75, 20, kClear}, {30, 25.25, kClear}});

    auto button = std::make_shared<ImageView>(NSMakeRect(30, 13, 23, 23));
    button->setImage(redImage({23, 23}));
    EXPECT_FALSE(button->sendAction());
    auto target = std::make_shared<Responder>();
    std::shared_ptr<void> sender;
    target->registerAction("open:", [&](const std::shared_ptr<void>& object) { sender = object; });
    button->setTarget(target);
    button->setAction("close:");
    EXPECT_FALSE(button->sendAction());
    button->setAction("open:");
    EXPECT_TRUE(button->sendAction());
    EXPECT_EQ(button.get(), static_cast<ImageView*>(sender.get()));
    target.reset();
    EXPECT_FALSE(button->sendAction());

    RecordingWindow window(NSMakeRect(0, 0, 100, 50));
    window.setContentView(std::make_shared<View>());
    window.contentView()->addSubview(button);
    window.sendEvent(*Event::mouseEvent(EventType::LeftMouseDown, {40, 20}, 1));
    EXPECT_EQ(1, window.mouseDowns);
}
