// The image view: placement by scaling, drawing, target/action and mouse pass-through.
#include <gtest/gtest.h>

#include <memory>

#include "platform/ui/Bitmap.h"
#include "platform/ui/Event.h"
#include "platform/ui/GraphicsContext.h"
#include "platform/ui/Image.h"
#include "platform/ui/ImageView.h"
#include "platform/ui/Window.h"
#include "tests/platform/ui/ViewTestSupport.h"

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

    view.setImage(redImage({120, 40}));  // wider than the view: shrunk to fit
    EXPECT_EQ(ImageScaling::ProportionallyDown, view.imageScaling());
    EXPECT_EQ(NSMakeRect(0, 10, 60, 20), view.imageRect());

    view.setImage(redImage({20, 10}));  // smaller: never enlarged, centred
    EXPECT_EQ(NSMakeRect(20, 15, 20, 10), view.imageRect());

    view.setImageScaling(ImageScaling::ProportionallyUpOrDown);
    EXPECT_EQ(NSMakeRect(0, 5, 60, 30), view.imageRect());

    view.setImageScaling(ImageScaling::AxesIndependently);
    EXPECT_EQ(NSMakeRect(0, 0, 60, 40), view.imageRect());

    view.setImageScaling(ImageScaling::None);
    view.setImage(redImage({100, 100}));  // larger than the view, not scaled: overhangs
    EXPECT_EQ(NSMakeRect(-20, -30, 100, 100), view.imageRect());

    view.setImageScaling(ImageScaling::ProportionallyDown);
    view.setImage(redImage({0, 0}));
    EXPECT_TRUE(view.imageRect().isEmpty());
}

TEST(ImageViewTest, DrawsTheImageWhereImageRectSays) {
    auto view = std::make_shared<ImageView>(NSMakeRect(0, 0, 40, 40));
    view->setImage(redImage({20, 10}));
    auto shot = Bitmap::renderView(*view, 2);
    EXPECT_EQ((Rgba{255, 0, 0, 255}), shot->pixelAtPoint(20, 20));
    EXPECT_EQ((Rgba{255, 0, 0, 255}), shot->pixelAtPoint(10.5, 15.5));
    EXPECT_EQ(0, shot->pixelAtPoint(9.5, 20).a);
    EXPECT_EQ(0, shot->pixelAtPoint(20, 25.5).a);

    view->setImageScaling(ImageScaling::AxesIndependently);
    auto stretched = Bitmap::renderView(*view, 1);
    EXPECT_EQ(255, stretched->pixelAtPoint(0.5, 0.5).a);
    EXPECT_EQ(255, stretched->pixelAtPoint(39.5, 39.5).a);
}

TEST(ImageViewTest, SendActionReachesATargetThatResponds) {
    auto view = std::make_shared<ImageView>(NSMakeRect(0, 0, 10, 10));
    EXPECT_FALSE(view->sendAction());

    auto target = std::make_shared<Responder>();
    std::shared_ptr<void> sender;
    target->registerAction("open:", [&](const std::shared_ptr<void>& object) { sender = object; });
    view->setTarget(target);
    view->setAction("close:");
    EXPECT_FALSE(view->sendAction());  // the target does not answer it
    view->setAction("open:");
    EXPECT_TRUE(view->sendAction());
    EXPECT_EQ(view.get(), static_cast<ImageView*>(sender.get()));

    view->setHighlighted(true);
    EXPECT_TRUE(view->isHighlighted());

    sender.reset();
    target.reset();  // the target is weak
    EXPECT_EQ(nullptr, view->target());
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
