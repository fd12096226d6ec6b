#include "viewkit/PLSOutlineButton.h"

#include <gtest/gtest.h>

#include <cfloat>
#include <memory>
#include <string>
#include <vector>

#include "platform/ui/Bitmap.h"
#include "platform/ui/StringDrawing.h"
#include "platform/ui/Window.h"
#include "tests/viewkit/RecordingResponders.h"
#include "viewkit/ColorSExt.h"

using platform::Color;
using platform::EventType;
using platform::NSMakeRect;
using platform::Rgba;
using viewkit_test::mouse;

namespace {

// --- Title layout -------------------------------------------------------------------------------

TEST(PLSOutlineButtonLayout, LabelIsCentredAndRoundedUpKeepingItsHeight) {
    PLSOutlineButton button(platform::NSZeroRect);
    ASSERT_NE(nullptr, button.titleLabel());
    button.titleLabel()->setFrame(NSMakeRect(0, 0, 10, 17));

    button.setFrame(NSMakeRect(3, 4, 100.4, 30));
    EXPECT_EQ(NSMakeRect(0, 7, 101, 17), button.titleLabel()->frame());  // 6.5 up to 7

    button.setFrame(NSMakeRect(3, 4, 100, 10));
    EXPECT_EQ(NSMakeRect(0, -3, 100, 17), button.titleLabel()->frame());  // -3.5 up to -3

    // Single precision: 100.00000001 is 100 as a float, so no extra point.
    button.setFrame(NSMakeRect(0, 0, 100.00000001, 17));
    EXPECT_EQ(NSMakeRect(0, 0, 100, 17), button.titleLabel()->frame());
}

TEST(PLSOutlineButtonLayout, ZeroFrameLabelHasNoHeightUntilSizeToFit) {
    PLSOutlineButton button(platform::NSZeroRect);
    EXPECT_EQ(platform::NSZeroRect, button.titleLabel()->frame());
    button.setTitle("Cancel");
    button.setFrame(NSMakeRect(276, 28, 70, 23));
    EXPECT_EQ(NSMakeRect(0, 12, 70, 0), button.titleLabel()->frame());
    EXPECT_EQ(1u, button.subviews().size());
    EXPECT_EQ(button.titleLabel(), button.subviews()[0]);
}

TEST(PLSOutlineButtonLayout, SizeToFitTakesTheMeasuredTitleAndKeepsTheOrigin) {
    PLSOutlineButton button(NSMakeRect(5, 6, 1, 1));
    button.setTitle("Cancel");
    button.sizeToFit();
    platform::TextAttributes attributes;
    attributes.font = button.titleLabel()->font();
    const platform::Rect measured = platform::boundingRectWithSize(
        "Cancel", platform::NSMakeSize(DBL_MAX, DBL_MAX), 3, attributes);
    ASSERT_GT(measured.size.width, 0);
    ASSERT_GT(measured.size.height, 0);
    EXPECT_EQ(NSMakeRect(5, 6, measured.size.width, measured.size.height), button.frame());
    EXPECT_EQ(NSMakeRect(0, 0, measured.size.width, measured.size.height),
              button.titleLabel()->frame());

    // The sheet then forces its own size; the label keeps the measured height, centred.
    button.setFrame(NSMakeRect(276, 28, 70, 23));
    EXPECT_EQ(measured.size.height, button.titleLabel()->frame().size.height);
    EXPECT_EQ(70, button.titleLabel()->frame().size.width);
}

TEST(PLSOutlineButton, TitlePropertiesReachTheLabel) {
    PLSOutlineButton button(NSMakeRect(0, 0, 70, 23));
    const auto& label = *button.titleLabel();
    EXPECT_FALSE(label.isBordered());
    EXPECT_FALSE(label.isEditable());
    EXPECT_FALSE(label.isSelectable());
    EXPECT_EQ(platform::TextAlignment::Center, label.alignment());
    EXPECT_EQ(platform::LineBreakMode::ByTruncatingTail, label.lineBreakMode());
    EXPECT_EQ("PLSOutlineButton", button.className());

    EXPECT_EQ(0.0, button.titleAlpha());
    EXPECT_EQ(1.0, label.alphaValue());
    button.setTitleAlpha(0.5);
    EXPECT_EQ(0.5, button.titleAlpha());
    EXPECT_EQ(0.5, label.alphaValue());

    button.setTitleColor(nullptr);
    ASSERT_NE(nullptr, button.titleColor());
    EXPECT_TRUE(*Color::blackColor() == *button.titleColor());
    EXPECT_EQ(button.titleColor(), label.textColor());

    auto font = platform::Font::systemFontOfSize(17);
    button.setFont(font);
    EXPECT_EQ(font, button.font());
    EXPECT_EQ(font, label.font());

    button.setTitle("Cancel");
    EXPECT_EQ("Cancel", button.title());
    button.setTitle("");
    EXPECT_EQ("", button.title());
    EXPECT_EQ(NSMakeRect(0, 0, 70, 23), button.frame()) << "setTitle neither resizes nor lays out";
}

// --- Drawing ------------------------------------------------------------------------------------

std::shared_ptr<PLSOutlineButton> outlinedButton(double borderWidth, double radius) {
    auto button = std::make_shared<PLSOutlineButton>(NSMakeRect(0, 0, 100, 40));
    button->setBackgrounColor(Color::whiteColor());
    button->setBorderColor(SExt::colorWithHex("#000000"));
    button->setBorderWidth(borderWidth);
    button->setCornerRaidus(radius);
    return button;
}

bool isBlack(Rgba p) {
    return p.r < 10 && p.g < 10 && p.b < 10 && p.a > 245;
}
bool isWhite(Rgba p) {
    return p.r > 245 && p.g > 245 && p.b > 245 && p.a > 245;
}
bool isEmpty(Rgba p) {
    return p.a < 30;
}

::testing::AssertionResult pixelIs(bool (*test)(Rgba),
                                   const char* name,
                                   const platform::Bitmap& bitmap,
                                   double x,
                                   double y) {
    const Rgba p = bitmap.pixelAtPoint(x, y);
    if (test(p))
        return ::testing::AssertionSuccess();
    return ::testing::AssertionFailure() << "scale " << bitmap.scale() << " point (" << x << ", "
                                         << y << ") not " << name << ": rgba(" << int(p.r) << ", "
                                         << int(p.g) << ", " << int(p.b) << ", " << int(p.a) << ")";
}

#define EXPECT_PIXEL(kind, bitmap, x, y) EXPECT_TRUE(pixelIs(kind, #kind, bitmap, x, y))

TEST(PLSOutlineButtonDrawing, OnePointBorderWithRadiusThree) {
    auto button = outlinedButton(1, 3);
    for (double scale : {1.0, 2.0}) {
        const auto bitmap = platform::Bitmap::renderView(*button, scale);
        ASSERT_NE(nullptr, bitmap);
        EXPECT_EQ(int(100 * scale), bitmap->pixelWidth());
        // Body.
        EXPECT_PIXEL(isWhite, *bitmap, 50, 20);
        EXPECT_PIXEL(isWhite, *bitmap, 2.5, 20);
        // The border line covers points 1..2 from each edge.
        EXPECT_PIXEL(isBlack, *bitmap, 1.5, 20);
        EXPECT_PIXEL(isBlack, *bitmap, 98.5, 20);
        EXPECT_PIXEL(isBlack, *bitmap, 50, 1.5);
        EXPECT_PIXEL(isBlack, *bitmap, 50, 38.5);
        // Outside the line and outside the rounded corners.
        EXPECT_PIXEL(isEmpty, *bitmap, 0.5, 20);
        EXPECT_PIXEL(isEmpty, *bitmap, 50, 39.5);
        EXPECT_PIXEL(isEmpty, *bitmap, 1.5, 1.5);
        EXPECT_PIXEL(isEmpty, *bitmap, 98.5, 38.5);
    }
}

TEST(PLSOutlineButtonDrawing, TwoPointBorderSquareCornersUseTheSameRectangle) {
    auto button = outlinedButton(2, 0);
    const auto one = platform::Bitmap::renderView(*button, 1);
    EXPECT_PIXEL(isWhite, *one, 50, 20);
    EXPECT_PIXEL(isBlack, *one, 2.5, 20);  // the line is centred on x 2.5, two points wide
    EXPECT_PIXEL(isBlack, *one, 97.5, 20);
    EXPECT_PIXEL(isBlack, *one, 2.5, 2.5);  // square corner: the corner point is drawn
    EXPECT_PIXEL(isEmpty, *one, 0.5, 20);
    EXPECT_PIXEL(isWhite, *one, 4.5, 20);

    const auto two = platform::Bitmap::renderView(*button, 2);
    EXPECT_PIXEL(isEmpty, *two, 1.25, 20);
    EXPECT_PIXEL(isBlack, *two, 1.75, 20);
    EXPECT_PIXEL(isBlack, *two, 3.25, 20);
    EXPECT_PIXEL(isWhite, *two, 3.75, 20);
    EXPECT_PIXEL(isBlack, *two, 1.75, 1.75);
}

TEST(PLSOutlineButtonDrawing, TwoPointBorderWithRadiusThreeCutsTheCorner) {
    auto button = outlinedButton(2, 3);
    for (double scale : {1.0, 2.0}) {
        const auto bitmap = platform::Bitmap::renderView(*button, scale);
        EXPECT_PIXEL(isWhite, *bitmap, 50, 20);
        EXPECT_PIXEL(isBlack, *bitmap, 2.5, 20);
        EXPECT_PIXEL(isEmpty, *bitmap, 1.5, 1.5);
        EXPECT_PIXEL(isEmpty, *bitmap, 98.5, 38.5);
    }
}

TEST(PLSOutlineButtonDrawing, NoBorderWidthMeansNoBorderAndNoBackgroundMeansNoFill) {
    auto button = outlinedButton(0, 0);
    const auto filled = platform::Bitmap::renderView(*button, 1);
    EXPECT_PIXEL(isWhite, *filled, 50, 20);
    EXPECT_PIXEL(isWhite, *filled, 1.5, 20);  // body on (0.5, 0.5, 99, 39)
    EXPECT_FALSE(isBlack(filled->pixelAtPoint(0.5, 20)));

    button->setBackgrounColor(nullptr);
    button->setBorderWidth(1);
    button->setBorderColor(nullptr);  // draws black
    const auto outline = platform::Bitmap::renderView(*button, 1);
    EXPECT_PIXEL(isEmpty, *outline, 50, 20);
    EXPECT_PIXEL(isBlack, *outline, 1.5, 20);
}

// --- Press handling -----------------------------------------------------------------------------

class ActionTarget : public platform::Responder {
  public:
    explicit ActionTarget(std::vector<std::string>* log) {
        registerAction("cancel:", [log](const std::shared_ptr<void>& object) {
            log->push_back(object ? "cancel: with object" : "cancel:");
        });
    }
};

class PLSOutlineButtonPress : public ::testing::Test {
  protected:
    void SetUp() override {
        window = std::make_unique<platform::Window>(NSMakeRect(0, 0, 376, 370));
        root = std::make_shared<platform::View>(NSMakeRect(0, 0, 376, 370));
        button = std::make_shared<PLSOutlineButton>(NSMakeRect(276, 28, 70, 23));
        root->addSubview(button);
        window->setContentView(root);
        target = std::make_shared<ActionTarget>(&log);
        button->setTarget(target);
        button->setAction("cancel:");
        button->setDidLeftMouseDownBlock([this] {
            log.push_back(std::string("down, highlighted ") +
                          (button->highlighted() ? "yes" : "no"));
        });
        button->setDidLeftMouseUpBlock([this] {
            log.push_back(std::string("up, highlighted ") + (button->highlighted() ? "yes" : "no"));
        });
    }

    std::unique_ptr<platform::Window> window;
    std::shared_ptr<platform::View> root;
    std::shared_ptr<PLSOutlineButton> button;
    std::shared_ptr<ActionTarget> target;
    std::vector<std::string> log;
};

TEST_F(PLSOutlineButtonPress, ClickInsideRunsTheClosuresThenTheAction) {
    window->sendEvent(*mouse(EventType::LeftMouseDown, 300, 40));
    EXPECT_TRUE(button->highlighted());
    window->sendEvent(*mouse(EventType::LeftMouseUp, 301, 41));
    EXPECT_FALSE(button->highlighted());
    EXPECT_EQ((std::vector<std::string>{"down, highlighted yes", "up, highlighted no", "cancel:"}),
              log);
}

TEST_F(PLSOutlineButtonPress, ReleaseOutsideClearsTheHighlightAndSendsNoAction) {
    window->sendEvent(*mouse(EventType::LeftMouseDown, 300, 40));
    window->sendEvent(*mouse(EventType::LeftMouseUp, 100, 100));
    EXPECT_FALSE(button->highlighted());
    EXPECT_EQ((std::vector<std::string>{"down, highlighted yes", "up, highlighted no"}), log);
}

TEST_F(PLSOutlineButtonPress, TheActionFollowsThePointerNowNotTheEventsLocation) {
    window->setMouseLocationOutsideOfEventStream(platform::NSMakePoint(10, 10));
    button->mouseUp(*mouse(EventType::LeftMouseUp, 300, 40));
    EXPECT_EQ((std::vector<std::string>{"up, highlighted no"}), log);

    log.clear();
    window->setMouseLocationOutsideOfEventStream(platform::NSMakePoint(276, 28));  // corner: inside
    button->mouseUp(*mouse(EventType::LeftMouseUp, 10, 10));
    EXPECT_EQ((std::vector<std::string>{"up, highlighted no", "cancel:"}), log);

    log.clear();
    window->setMouseLocationOutsideOfEventStream(platform::NSMakePoint(346, 40));  // right edge
    button->mouseUp(*mouse(EventType::LeftMouseUp, 300, 40));
    EXPECT_EQ((std::vector<std::string>{"up, highlighted no"}), log);
}

TEST_F(PLSOutlineButtonPress, NoActionWithoutATargetThatAnswersIt) {
    button->setAction("other:");
    window->sendEvent(*mouse(EventType::LeftMouseDown, 300, 40));
    window->sendEvent(*mouse(EventType::LeftMouseUp, 300, 40));
    button->setAction("");
    window->sendEvent(*mouse(EventType::LeftMouseDown, 300, 40));
    window->sendEvent(*mouse(EventType::LeftMouseUp, 300, 40));
    button->setAction("cancel:");
    target.reset();  // the button does not keep its target
    EXPECT_TRUE(button->target().expired());
    window->sendEvent(*mouse(EventType::LeftMouseDown, 300, 40));
    window->sendEvent(*mouse(EventType::LeftMouseUp, 300, 40));
    EXPECT_EQ(6u, log.size());
    for (const std::string& line : log)
        EXPECT_NE("cancel:", line);
}

TEST_F(PLSOutlineButtonPress, EventsDoNotGoUpTheChainAndEnabledIsNotConsulted) {
    auto parent = std::make_shared<viewkit_test::RecordingView>(NSMakeRect(0, 0, 376, 370));
    window->setContentView(parent);
    button->removeFromSuperview();
    parent->addSubview(button);
    EXPECT_FALSE(button->enabled());
    window->sendEvent(*mouse(EventType::LeftMouseDown, 300, 40));
    window->sendEvent(*mouse(EventType::LeftMouseUp, 300, 40));
    EXPECT_TRUE(parent->received.mouse.empty());
    EXPECT_EQ(3u, log.size());
}

TEST_F(PLSOutlineButtonPress, TheReleaseClosureMayTearTheButtonDown) {
    button->setDidLeftMouseUpBlock([this] {
        log.push_back("up");
        button->removeFromSuperview();
        button.reset();
    });
    window->sendEvent(*mouse(EventType::LeftMouseDown, 300, 40));
    window->sendEvent(*mouse(EventType::LeftMouseUp, 300, 40));
    EXPECT_EQ((std::vector<std::string>{"down, highlighted yes", "up"}), log);
}

}  // namespace
