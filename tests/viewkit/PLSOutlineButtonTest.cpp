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

TEST(PLSOutlineButtonLayout, LabelIsCentredAndRoundedUpInSinglePrecisionKeepingItsHeight) {
    PLSOutlineButton button(platform::NSZeroRect);
    EXPECT_EQ(button.subviews(), std::vector<std::shared_ptr<platform::View>>{button.titleLabel()});
    button.titleLabel()->setFrame(NSMakeRect(0, 0, 10, 17));
    const struct {
        platform::Rect frame;
        platform::Rect label;
    } cases[] = {
        {NSMakeRect(3, 4, 100.4, 30), NSMakeRect(0, 7, 101, 17)},         // 6.5 up to 7
        {NSMakeRect(3, 4, 100, 10), NSMakeRect(0, -3, 100, 17)},          // -3.5 up to -3
        {NSMakeRect(0, 0, 100.00000001, 17), NSMakeRect(0, 0, 100, 17)},  // 100 as a float
    };
    for (const auto& c : cases) {
        button.setFrame(c.frame);
        EXPECT_EQ(c.label, button.titleLabel()->frame());
    }
}

TEST(PLSOutlineButtonLayout, SizeToFitTakesTheMeasuredTitleThenAForcedSizeCentresIt) {
    PLSOutlineButton unsized(platform::NSZeroRect);
    unsized.setTitle("Cancel");
    unsized.setFrame(NSMakeRect(276, 28, 70, 23));
    EXPECT_EQ(NSMakeRect(0, 12, 70, 0), unsized.titleLabel()->frame());  // no height until fit

    PLSOutlineButton button(NSMakeRect(5, 6, 1, 1));
    button.setTitle("Cancel");
    button.sizeToFit();
    platform::TextAttributes attributes;
    attributes.font = button.titleLabel()->font();
    const platform::Size measured =
        platform::boundingRectWithSize("Cancel", platform::NSMakeSize(DBL_MAX, DBL_MAX), 3,
                                       attributes)
            .size;
    ASSERT_GT(measured.height, 0);
    EXPECT_EQ(NSMakeRect(5, 6, measured.width, measured.height), button.frame());
    EXPECT_EQ(NSMakeRect(0, 0, measured.width, measured.height), button.titleLabel()->frame());
    button.setFrame(NSMakeRect(276, 28, 70, 23));
    EXPECT_EQ(measured.height, button.titleLabel()->frame().size.height);
    EXPECT_EQ(70, button.titleLabel()->frame().size.width);
}

TEST(PLSOutlineButton, TitlePropertiesReachTheLabel) {
    PLSOutlineButton button(NSMakeRect(0, 0, 70, 23));
    const auto& label = *button.titleLabel();
    EXPECT_FALSE(label.isBordered() || label.isEditable() || label.isSelectable());
    EXPECT_EQ(platform::TextAlignment::Center, label.alignment());
    EXPECT_EQ(platform::LineBreakMode::ByTruncatingTail, label.lineBreakMode());
    EXPECT_EQ(1.0, label.alphaValue());
    button.setTitleAlpha(0.5);
    EXPECT_EQ(0.5, label.alphaValue());
    button.setTitleColor(nullptr);
    ASSERT_NE(nullptr, label.textColor());
    EXPECT_TRUE(*Color::blackColor() == *label.textColor());
    auto font = platform::Font::systemFontOfSize(17);
    button.setFont(font);
    EXPECT_EQ(font, label.font());
    button.setTitle("Cancel");
    EXPECT_EQ("Cancel", label.stringValue());
    EXPECT_EQ(NSMakeRect(0, 0, 70, 23), button.frame()) << "setTitle neither resizes nor lays out";
}

enum class Ink { Black, White, Empty };

bool is(Ink ink, Rgba p) {
    switch (ink) {
        case Ink::Black:
            return p.r < 10 && p.g < 10 && p.b < 10 && p.a > 245;
        case Ink::White:
            return p.r > 245 && p.g > 245 && p.b > 245 && p.a > 245;
        case Ink::Empty:
            return p.a < 30;
    }
    return false;
}

// A white 100 x 40 button with a black border: the border line is stroked on the rectangle
// inset by half a point plus half the line, with the corner radius cutting the corners.
TEST(PLSOutlineButtonDrawing, BorderLinesAndCornersAtBothScales) {
    const struct {
        double borderWidth, radius, scale, x, y;
        Ink ink;
    } probes[] = {
        {1, 3, 1, 50, 20, Ink::White},   {1, 3, 2, 2.5, 20, Ink::White},
        {1, 3, 1, 1.5, 20, Ink::Black},  {1, 3, 2, 98.5, 20, Ink::Black},
        {1, 3, 1, 50, 1.5, Ink::Black},  {1, 3, 2, 50, 38.5, Ink::Black},
        {1, 3, 1, 0.5, 20, Ink::Empty},  {1, 3, 2, 50, 39.5, Ink::Empty},
        {1, 3, 1, 1.5, 1.5, Ink::Empty}, {1, 3, 2, 98.5, 38.5, Ink::Empty},
        {2, 0, 1, 2.5, 20, Ink::Black},  {2, 0, 1, 97.5, 20, Ink::Black},
        {2, 0, 1, 2.5, 2.5, Ink::Black}, {2, 0, 1, 0.5, 20, Ink::Empty},
        {2, 0, 1, 4.5, 20, Ink::White},  {2, 0, 2, 1.25, 20, Ink::Empty},
        {2, 0, 2, 1.75, 20, Ink::Black}, {2, 0, 2, 3.25, 20, Ink::Black},
        {2, 0, 2, 3.75, 20, Ink::White}, {2, 0, 2, 1.75, 1.75, Ink::Black},
        {2, 3, 1, 2.5, 20, Ink::Black},  {2, 3, 2, 1.5, 1.5, Ink::Empty},
        {0, 0, 1, 1.5, 20, Ink::White},  {0, 0, 1, 50, 20, Ink::White},
    };
    for (const auto& p : probes) {
        PLSOutlineButton button(NSMakeRect(0, 0, 100, 40));
        button.setBackgrounColor(Color::whiteColor());
        button.setBorderColor(SExt::colorWithHex("#000000"));
        button.setBorderWidth(p.borderWidth);
        button.setCornerRaidus(p.radius);
        const auto bitmap = platform::Bitmap::renderView(button, p.scale);
        const Rgba pixel = bitmap->pixelAtPoint(p.x, p.y);
        EXPECT_TRUE(is(p.ink, pixel))
            << "border " << p.borderWidth << " radius " << p.radius << " scale " << p.scale
            << " at (" << p.x << ", " << p.y << "): " << int(pixel.r) << "," << int(pixel.a);
    }
}

TEST(PLSOutlineButtonDrawing, NoBorderColourDrawsBlackAndNoBackgroundNoFill) {
    PLSOutlineButton button(NSMakeRect(0, 0, 100, 40));
    button.setBorderWidth(1);
    const auto bitmap = platform::Bitmap::renderView(button, 1);
    EXPECT_TRUE(is(Ink::Empty, bitmap->pixelAtPoint(50, 20)));
    EXPECT_TRUE(is(Ink::Black, bitmap->pixelAtPoint(1.5, 20)));
}

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
        parent = std::make_shared<viewkit_test::RecordingView>(NSMakeRect(0, 0, 376, 370));
        button = std::make_shared<PLSOutlineButton>(NSMakeRect(276, 28, 70, 23));
        parent->addSubview(button);
        window->setContentView(parent);
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
    void click(double downX, double downY, double upX, double upY) {
        window->sendEvent(*mouse(EventType::LeftMouseDown, downX, downY));
        window->sendEvent(*mouse(EventType::LeftMouseUp, upX, upY));
    }

    std::unique_ptr<platform::Window> window;
    std::shared_ptr<viewkit_test::RecordingView> parent;
    std::shared_ptr<PLSOutlineButton> button;
    std::shared_ptr<ActionTarget> target;
    std::vector<std::string> log;
};

// The closures run, then the action; events never go up the chain and enabled is not consulted.
TEST_F(PLSOutlineButtonPress, ClickInsideRunsTheClosuresThenTheAction) {
    EXPECT_FALSE(button->enabled());
    window->sendEvent(*mouse(EventType::LeftMouseDown, 300, 40));
    EXPECT_TRUE(button->highlighted());
    window->sendEvent(*mouse(EventType::LeftMouseUp, 301, 41));
    EXPECT_FALSE(button->highlighted());
    EXPECT_EQ((std::vector<std::string>{"down, highlighted yes", "up, highlighted no", "cancel:"}),
              log);
    EXPECT_TRUE(parent->received.mouse.empty());
}

TEST_F(PLSOutlineButtonPress, ReleaseOutsideClearsTheHighlightAndSendsNoAction) {
    click(300, 40, 100, 100);
    EXPECT_FALSE(button->highlighted());
    EXPECT_EQ((std::vector<std::string>{"down, highlighted yes", "up, highlighted no"}), log);
}

// The action follows where the pointer is now, not where the event says it was.
TEST_F(PLSOutlineButtonPress, TheActionFollowsThePointerNowNotTheEventsLocation) {
    const struct {
        double pointerX, pointerY, eventX, eventY;
        bool acts;
    } cases[] = {
        {10, 10, 300, 40, false},
        {276, 28, 10, 10, true},    // the corner is inside
        {346, 40, 300, 40, false},  // the right edge is outside
    };
    for (const auto& c : cases) {
        log.clear();
        window->setMouseLocationOutsideOfEventStream(platform::NSMakePoint(c.pointerX, c.pointerY));
        button->mouseUp(*mouse(EventType::LeftMouseUp, c.eventX, c.eventY));
        EXPECT_EQ(c.acts, log.size() == 2 && log.back() == "cancel:") << c.pointerX;
    }
}

TEST_F(PLSOutlineButtonPress, NoActionWithoutATargetThatAnswersIt) {
    button->setAction("other:");
    click(300, 40, 300, 40);
    button->setAction("");
    click(300, 40, 300, 40);
    button->setAction("cancel:");
    target.reset();  // the button does not keep its target
    click(300, 40, 300, 40);
    EXPECT_EQ(6u, log.size());
    for (const std::string& line : log)
        EXPECT_NE("cancel:", line);
}

TEST_F(PLSOutlineButtonPress, TheReleaseClosureMayTearTheButtonDown) {
    button->setDidLeftMouseUpBlock([this] {
        log.push_back("up");
        button->removeFromSuperview();
        button.reset();
    });
    click(300, 40, 300, 40);
    EXPECT_EQ((std::vector<std::string>{"down, highlighted yes", "up"}), log);
}

}  // namespace
