// The sheet in a window, driven by mouse and key events as a person would drive it: which row
// is tinted after each event, and when an action or the cancellation runs.
#include "platform/ui/Bitmap.h"
#include "platform/ui/Event.h"
#include "platform/ui/Window.h"
#include "tests/share/ShareTestSupport.h"

namespace share_test {
namespace {

using platform::Bitmap;
using platform::Event;
using platform::EventType;
using platform::NSMakePoint;
using platform::NSMakeRect;
using platform::Point;
using platform::View;

bool grey(const platform::Rgba& pixel, int level) {
    return nearRgb(pixel, level, level, level);
}

// The sheet's grey, 10 % black over it (a tinted row or pressed Cancel), a line's grey, and 10 %
// black over a line.
constexpr int kSheet = 0xF7;
constexpr int kTinted = 222;
constexpr int kLine = 204;
constexpr int kTintedLine = 184;

class SheetEventTest : public ShareTest {
  protected:
    void SetUp() override {
        ShareTest::SetUp();
        controller_ = startShare({linkProvider("https://example.org/")});
        window_ = std::make_unique<platform::Window>(NSMakeRect(100, 100, 376, 370));
        window_->setContentView(controller_->view());
    }
    void TearDown() override {
        window_.reset();
        controller_.reset();
        ShareTest::TearDown();
    }

    // The middle of |view| in the window.
    static Point middleOf(const View& view) {
        return view.convertPointToView(NSMakePoint(view.bounds().midX(), view.bounds().midY()),
                                       nullptr);
    }
    void mouse(EventType type, Point where, int clickCount = 1) {
        window_->setMouseLocationOutsideOfEventStream(where);
        window_->sendEvent(*Event::mouseEvent(type, where, clickCount));
    }
    void down(Point where, int clickCount = 1) {
        mouse(EventType::LeftMouseDown, where, clickCount);
    }
    void up(Point where, int clickCount = 1) { mouse(EventType::LeftMouseUp, where, clickCount); }

    bool nothingHappened() const {
        return controller_->shareEntry() == ShareEntryNone &&
               context_->state() == platform::ExtensionContext::State::Pending;
    }
    std::shared_ptr<Bitmap> shown() const { return window_->snapshot(1.0); }

    // A point of each row's own background, between its title and its arrow.
    static constexpr Point kSendRowGap{250.5, 150.5};
    static constexpr Point kFavRowGap{250.5, 100.5};
    // The logo band: off both rows and off Cancel.
    static constexpr Point kOffTheRows{40.5, 320.5};

    std::shared_ptr<RecordingController> controller_;
    std::unique_ptr<platform::Window> window_;
};

TEST_F(SheetEventTest, AtRestNoRowIsTintedAndAllThreeLinesShowThroughTheRows) {
    auto picture = shown();
    EXPECT_TRUE(grey(picture->pixelAtPoint(kSendRowGap.x, kSendRowGap.y), kSheet));
    EXPECT_TRUE(grey(picture->pixelAtPoint(kFavRowGap.x, kFavRowGap.y), kSheet));
    for (double y : {79.5, 129.5, 179.5})
        EXPECT_TRUE(grey(picture->pixelAtPoint(200.5, y), kLine)) << y;
}

TEST_F(SheetEventTest, TitlePressTintsItsRowAndAReleaseAnywhereClicksIt) {
    down(middleOf(*controller_->favToParleyText()));
    EXPECT_TRUE(controller_->favHighlighted());
    EXPECT_FALSE(controller_->sendHighlighted());
    auto pressed = shown();
    EXPECT_TRUE(grey(pressed->pixelAtPoint(kFavRowGap.x, kFavRowGap.y), kTinted));
    // The tint lies over the line on the row's bottom edge, not the other lines.
    EXPECT_TRUE(grey(pressed->pixelAtPoint(200.5, 79.5), kTintedLine));
    EXPECT_TRUE(grey(pressed->pixelAtPoint(200.5, 129.5), kLine));
    EXPECT_TRUE(nothingHappened());

    up(kOffTheRows);
    EXPECT_FALSE(controller_->favHighlighted());
    EXPECT_FALSE(controller_->sendHighlighted());
    EXPECT_EQ(controller_->shareEntry(), ShareEntryFavToParley);
    EXPECT_EQ(countLine("[ShareViewController]: onClickFavToParley invoked."), 1u);
    EXPECT_EQ(context_->state(), platform::ExtensionContext::State::Completed);
    EXPECT_TRUE(grey(shown()->pixelAtPoint(kFavRowGap.x, kFavRowGap.y), kSheet));
}

TEST_F(SheetEventTest, ContainerReleaseOutsideItLeavesTheTintAndDoesNothing) {
    down(kSendRowGap);
    EXPECT_TRUE(controller_->sendHighlighted());
    up(kOffTheRows);
    EXPECT_TRUE(controller_->sendHighlighted());
    EXPECT_TRUE(nothingHappened());
    EXPECT_TRUE(grey(shown()->pixelAtPoint(kSendRowGap.x, kSendRowGap.y), kTinted));

    // The tint stays until a press on the other row clears it.
    down(kFavRowGap);
    EXPECT_FALSE(controller_->sendHighlighted());
    EXPECT_TRUE(controller_->favHighlighted());
}

TEST_F(SheetEventTest, ContainerReleaseInsideItClicksTheRow) {
    down(kSendRowGap);
    up(NSMakePoint(5, 170));
    EXPECT_FALSE(controller_->sendHighlighted());
    EXPECT_EQ(controller_->shareEntry(), ShareEntrySendToFriend);
    EXPECT_EQ(countLine("[ShareViewController]: onClickSendToFriend invoked."), 1u);
}

// The icon and the arrow have no handlers of their own: a click on them is a click on the row.
TEST_F(SheetEventTest, ClickOnARowsArrowClicksTheRow) {
    const Point arrow = middleOf(*controller_->favArrow());
    down(arrow);
    EXPECT_TRUE(controller_->favHighlighted());
    up(arrow);
    EXPECT_EQ(controller_->shareEntry(), ShareEntryFavToParley);
}

TEST_F(SheetEventTest, DoubleClickReleaseCountsOnTheTitleButNotOnTheContainer) {
    down(kFavRowGap, 2);
    up(kFavRowGap, 2);
    EXPECT_TRUE(controller_->favHighlighted());
    EXPECT_TRUE(nothingHappened());

    const Point title = middleOf(*controller_->sendToFriendText());
    down(title, 2);
    up(title, 2);
    EXPECT_FALSE(controller_->favHighlighted());
    EXPECT_FALSE(controller_->sendHighlighted());
    EXPECT_EQ(controller_->shareEntry(), ShareEntrySendToFriend);
}

TEST_F(SheetEventTest, PressingOneRowThenTheOtherMovesTheTint) {
    down(middleOf(*controller_->favToParleyText()));
    down(middleOf(*controller_->sendToFriendText()));
    EXPECT_TRUE(controller_->sendHighlighted());
    EXPECT_FALSE(controller_->favHighlighted());
    auto picture = shown();
    EXPECT_TRUE(grey(picture->pixelAtPoint(kSendRowGap.x, kSendRowGap.y), kTinted));
    EXPECT_TRUE(grey(picture->pixelAtPoint(kFavRowGap.x, kFavRowGap.y), kSheet));

    down(kFavRowGap);
    EXPECT_TRUE(controller_->favHighlighted());
    EXPECT_FALSE(controller_->sendHighlighted());
    EXPECT_TRUE(nothingHappened());
}

TEST_F(SheetEventTest, PointerMovesAndKeysDoNothingToTheRows) {
    for (Point where : {kSendRowGap, kFavRowGap, middleOf(*controller_->favToParleyText())})
        mouse(EventType::MouseMoved, where, 0);
    for (uint16_t key : {platform::kVK_Escape, platform::kVK_Return, platform::kVK_Tab}) {
        window_->sendEvent(*Event::keyEvent(EventType::KeyDown, key, ""));
        window_->sendEvent(*Event::keyEvent(EventType::KeyUp, key, ""));
    }
    EXPECT_FALSE(controller_->sendHighlighted());
    EXPECT_FALSE(controller_->favHighlighted());
    EXPECT_TRUE(nothingHappened());
}

TEST_F(SheetEventTest, PressedCancelIsTintedAndAReleaseOffItCancels) {
    const Point cancel = middleOf(*controller_->cancelBtn());
    down(cancel);
    auto pressed = shown();
    EXPECT_TRUE(grey(pressed->pixelAtPoint(280.5, 40.5), kTinted));
    EXPECT_TRUE(nearRgb(pressed->pixelAtPoint(311, 29.5), 0xb2, 0xb2, 0xb2, 12));
    EXPECT_TRUE(nothingHappened());

    up(kOffTheRows);
    EXPECT_EQ(context_->state(), platform::ExtensionContext::State::Cancelled);
    EXPECT_EQ(controller_->shareEntry(), ShareEntryNone);
    EXPECT_TRUE(grey(shown()->pixelAtPoint(280.5, 40.5), 255));
}

}  // namespace
}  // namespace share_test
