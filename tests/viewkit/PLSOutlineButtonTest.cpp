#include "tests/viewkit/ViewKitTestSupport.h"
#include "viewkit/PLSOutlineButton.h"

TEST(PLSOutlineButton, TheLabelIsCentredRoundedUpInSinglePrecisionAndFitsTheTitle) {
    PLSOutlineButton button(platform::NSZeroRect);
    const auto& label = *button.titleLabel();
    EXPECT_FALSE(label.isBordered());
    EXPECT_FALSE(label.isEditable());
    EXPECT_FALSE(label.isSelectable());
    EXPECT_EQ(platform::TextAlignment::Center, label.alignment());
    EXPECT_EQ(platform::LineBreakMode::ByTruncatingTail, label.lineBreakMode());
    button.setTitleAlpha(0.5);
    button.setTitleColor(nullptr);
    EXPECT_EQ(0.5, label.alphaValue());
    EXPECT_EQ(*Color::blackColor(), *label.textColor());
    button.titleLabel()->setFrame(NSMakeRect(0, 0, 10, 17));
    const std::pair<platform::Rect, platform::Rect> cases[] = {
        {NSMakeRect(0, 0, 100.00000001, 17), NSMakeRect(0, 0, 100, 17)},  // 100 as a float
        {NSMakeRect(3, 4, 100.4, 30), NSMakeRect(0, 7, 101, 17)},         // 6.5 up to 7
        {NSMakeRect(3, 4, 100, 10), NSMakeRect(0, -3, 100, 17)},          // -3.5 up to -3
    };
    for (const auto& [frame, labelFrame] : cases) {
        button.setFrame(frame);
        EXPECT_EQ(labelFrame, label.frame());
    }
    button.setTitle("Cancel");
    button.sizeToFit();
    const platform::Size fitted = button.frame().size;
    EXPECT_GT(fitted.width, fitted.height);
    EXPECT_GT(fitted.height, 10);
    EXPECT_EQ(NSMakeRect(0, 0, fitted.width, fitted.height), label.frame());
    EXPECT_EQ(platform::NSMakePoint(3, 4), button.frame().origin);
}

// What a probe shows: black ('B'), white ('W'), nothing ('-'), or something else ('?').
static char inkAt(Rgba p) {
    if (p.a < 30)
        return '-';
    if (p.a <= 245 || p.g != p.r)
        return '?';
    return p.r < 10 ? 'B' : p.r > 245 ? 'W' : '?';
}

// A 100 x 40 button, white unless without a background, the border black unless without a colour:
// the line is stroked on the rectangle inset by half a point plus half the line, with the corner
// radius cutting the corners.
TEST(PLSOutlineButton, BorderLinesAndCornersAtBothScales) {
    // Border width, corner radius, scale, where, what, whether background and border have colours.
    const std::tuple<double, double, double, double, double, char, bool> probes[] = {
        {1, 3, 1, 1.5, 20, 'B', true},  {1, 3, 2, 98.5, 20, 'B', true},
        {1, 3, 1, 1.5, 1.5, '-', true}, {2, 0, 2, 1.25, 20, '-', true},
        {2, 0, 2, 3.25, 20, 'B', true}, {2, 0, 2, 3.75, 20, 'W', true},
        {1, 0, 1, 1.5, 20, 'B', false}, {1, 0, 1, 50, 20, '-', false},
    };
    for (const auto& [borderWidth, radius, scale, x, y, ink, coloured] : probes) {
        SCOPED_TRACE(std::to_string(borderWidth) + " " + std::to_string(radius) + " at " +
                     std::to_string(scale) + "x (" + std::to_string(x) + ", " + std::to_string(y) +
                     ")");
        PLSOutlineButton button(NSMakeRect(0, 0, 100, 40));
        if (coloured) {
            button.setBackgrounColor(Color::whiteColor());
            button.setBorderColor(SExt::colorWithHex("#000000"));
        }
        button.setBorderWidth(borderWidth);
        button.setCornerRaidus(radius);
        const Rgba pixel = platform::Bitmap::renderView(button, scale)->pixelAtPoint(x, y);
        EXPECT_EQ(ink, inkAt(pixel));
    }
}

// The closures run (the press highlighted, the release not), then the action if the pointer is
// inside now, wherever the event says it was; events never go up the chain and enabled is not
// consulted. No action without a target that answers it; the release closure may tear the button
// down.
TEST(PLSOutlineButton, PressRunsTheClosuresThenTheActionWhereThePointerIsNow) {
    platform::Window window{NSMakeRect(0, 0, 376, 370)};
    auto parent = std::make_shared<RecordingView>(NSMakeRect(0, 0, 376, 370));
    auto button = std::make_shared<PLSOutlineButton>(NSMakeRect(276, 28, 70, 23));
    parent->addSubview(button);
    window.setContentView(parent);
    auto target = std::make_shared<platform::Responder>();
    std::vector<std::string> log;
    target->registerAction("cancel:", [&](const auto&) { log.push_back("cancel:"); });
    button->setTarget(target);
    button->setAction("cancel:");
    button->setDidLeftMouseDownBlock(
        [&] { log.push_back(button->highlighted() ? "DOWN" : "down"); });
    button->setDidLeftMouseUpBlock([&] { log.push_back(button->highlighted() ? "UP" : "up"); });
    const auto press = [&](platform::Point pointer, platform::Point event) {
        window.sendEvent(*mouse(EventType::LeftMouseDown, 300, 40));
        window.setMouseLocationOutsideOfEventStream(pointer);
        button->mouseUp(*mouse(EventType::LeftMouseUp, event.x, event.y));
    };
    // Inside, the bottom-left corner (inside), the right edge and far off (outside).
    press({300, 40}, {10, 10});
    press({276, 28}, {10, 10});
    press({346, 40}, {300, 40});
    press({10, 10}, {300, 40});
    button->setAction("other:");
    press({300, 40}, {300, 40});
    button->setAction("cancel:");
    target.reset();  // the button does not keep its target
    press({300, 40}, {300, 40});
    EXPECT_EQ(std::vector<std::string>({"DOWN", "up", "cancel:", "DOWN", "up", "cancel:", "DOWN",
                                        "up", "DOWN", "up", "DOWN", "up", "DOWN", "up"}),
              log);
    EXPECT_TRUE(parent->clicks.empty());
    button->setDidLeftMouseUpBlock([&] { button->removeFromSuperview(), button.reset(); });
    window.sendEvent(*mouse(EventType::LeftMouseDown, 300, 40));
    window.sendEvent(*mouse(EventType::LeftMouseUp, 300, 40));
    EXPECT_EQ(nullptr, button);
}
