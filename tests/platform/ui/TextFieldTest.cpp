// A text field's drawing, checked on rendered pixels.
#include "platform/ui/StringDrawing.h"
#include "platform/ui/TextField.h"

#include "tests/platform/ui/PixelTestSupport.h"

using namespace platform;
using namespace pixel_test;

static std::shared_ptr<TextField> label(const Rect& frame, const std::string& text) {
    auto field = std::make_shared<TextField>(frame);
    field->setBordered(false);
    field->setBackgroundColor(Color::clearColor());
    field->setFont(Font::systemFontOfSize(12));
    field->setStringValue(text);
    return field;
}

static QImage drawnTitle(double width, bool tightens) {
    auto field = label(NSMakeRect(0, 0, width, 20), "Abbrechen");
    field->setLineBreakMode(LineBreakMode::ByTruncatingTail);
    field->setAllowsDefaultTighteningForTruncation(tightens);
    return Bitmap::renderView(*field, 2)->qimage();
}

// A new field draws a grey border and a white background, each only when asked. Text sits at the
// top after the cell's inset, aligned as asked, truncated inside the field; a 16-high label with a
// 12-point font shows its whole line.
TEST(TextFieldTest, BackgroundBorderTextPlacementAndTightening) {
    auto plain = std::make_shared<TextField>(NSMakeRect(0, 0, 40, 20));
    expectPixels(*Bitmap::renderView(*plain, 1),
                 {{20, 10, kWhite}, {0.5, 10, {153, 153, 153, 255}}});
    plain->setBordered(false);
    plain->setDrawsBackground(false);
    expectPixels(*Bitmap::renderView(*plain, 1), {{20, 10, kClear}, {0.5, 10, kClear}});

    auto field = label(NSMakeRect(0, 0, 200, 60), "Hello");
    auto ink = inkOf(*Bitmap::renderView(*field, 1));
    EXPECT_LT(ink.bottom, 18);
    EXPECT_GE(ink.left, 2);
    EXPECT_LT(ink.left, 6);
    field->setAlignment(TextAlignment::Center);
    EXPECT_NEAR(100, inkOf(*Bitmap::renderView(*field, 1)).midX(), 4);
    field->setAlignment(TextAlignment::Right);
    ink = inkOf(*Bitmap::renderView(*field, 1));
    EXPECT_GT(ink.right, 190);
    EXPECT_LE(ink.right, 198);
    EXPECT_LT(inkOf(*Bitmap::renderView(*label(NSMakeRect(0, 0, 120, 16), "Hg"), 2)).top, 10);
    auto clipped = label(NSMakeRect(0, 0, 60, 20), "A rather long title for a button");
    clipped->setLineBreakMode(LineBreakMode::ByTruncatingTail);
    ink = inkOf(*Bitmap::renderView(*clipped, 1));
    EXPECT_LE(ink.right, 58);
    EXPECT_LT(ink.bottom, 18);  // one line, no wrapping

    // A truncating label a little too narrow for its title closes the letters up instead of cutting
    // the title; one far too narrow still truncates, as does every label that does not allow it.
    const double natural =
        boundingRectWithSize("Abbrechen", {1e6, 1e6}, 3, {Font::systemFontOfSize(12), nullptr})
            .size.width;
    for (auto [tooWide, tightens] : {std::pair{1.05, true}, {1.10, false}}) {
        const double width = natural / tooWide + 4;  // the cell keeps 2 points each side
        EXPECT_NE(drawnTitle(width, false) == drawnTitle(width, true), tightens) << tooWide;
    }
}

// Truncating the tail keeps the title's start, as the middle does; truncating the head does not.
TEST(TextFieldTest, TruncationKeepsTheStartUnlessTheHeadGoes) {
    const auto start = [](LineBreakMode mode) {
        auto field = label(NSMakeRect(0, 0, 60, 20), "A rather long title for a button");
        field->setLineBreakMode(mode);
        return Bitmap::renderView(*field, 2)->qimage().copy(0, 0, 40, 40);
    };
    const QImage clipped = start(LineBreakMode::ByClipping);
    const std::pair<LineBreakMode, bool> cases[] = {{LineBreakMode::ByTruncatingHead, false},
                                                    {LineBreakMode::ByTruncatingMiddle, true},
                                                    {LineBreakMode::ByTruncatingTail, true}};
    for (const auto& [mode, keepsStart] : cases) {
        SCOPED_TRACE(static_cast<int>(mode));
        EXPECT_EQ(keepsStart, start(mode) == clipped);
    }
}
