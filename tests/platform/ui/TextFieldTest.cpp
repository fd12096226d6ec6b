// A text field's drawing, checked on rendered pixels.
#include "tests/platform/ui/PixelTestSupport.h"

#include "platform/ui/TextField.h"

using namespace platform;
using pixel_test::inkOf;

namespace {

// A label as the sheet makes them: no border, clear background.
std::shared_ptr<TextField> label(const Rect& frame, const std::string& text) {
    auto field = std::make_shared<TextField>(frame);
    field->setBordered(false);
    field->setBackgroundColor(Color::clearColor());
    field->setFont(Font::systemFontOfSize(12));
    field->setStringValue(text);
    return field;
}

}  // namespace

// A new field has a border, a white background and black 13-point text.
TEST(TextFieldTest, BackgroundAndBorderDrawOnlyWhenAsked) {
    auto field = std::make_shared<TextField>(NSMakeRect(0, 0, 40, 20));
    EXPECT_EQ(13.0, field->font()->pointSize());
    EXPECT_TRUE(*field->textColor() == *Color::blackColor());
    auto plain = Bitmap::renderView(*field, 1);
    EXPECT_EQ(pixel_test::kWhite, plain->pixelAtPoint(20, 10));
    const Rgba border = plain->pixelAtPoint(0.5, 10);
    EXPECT_EQ(255, border.a);
    EXPECT_LT(border.r, 200);  // grey, not the white background

    field->setBackgroundColor(Color::clearColor());
    field->setBordered(false);
    auto clear = Bitmap::renderView(*field, 1);
    EXPECT_EQ(0, clear->pixelAtPoint(20, 10).a);
    EXPECT_EQ(0, clear->pixelAtPoint(0.5, 10).a);
    field->setBackgroundColor(Color::whiteColor());
    field->setDrawsBackground(false);
    EXPECT_EQ(0, Bitmap::renderView(*field, 1)->pixelAtPoint(20, 10).a);
}

// Text sits at the top after the cell's inset, aligned as asked, truncated inside the field; a
// 16-high label with a 12-point font shows its whole line.
TEST(TextFieldTest, TextSitsAtTheTopOfATallField) {
    auto field = label(NSMakeRect(0, 0, 200, 60), "Hello");
    auto ink = inkOf(*Bitmap::renderView(*field, 1));
    ASSERT_FALSE(ink.empty());
    EXPECT_LT(ink.bottom, 18);
    EXPECT_GE(ink.left, 2);
    EXPECT_LT(ink.left, 6);
    field->setAlignment(TextAlignment::Center);
    EXPECT_NEAR(100, inkOf(*Bitmap::renderView(*field, 1)).midX(), 4);
    field->setAlignment(TextAlignment::Right);
    ink = inkOf(*Bitmap::renderView(*field, 1));
    EXPECT_GT(ink.right, 190);
    EXPECT_LE(ink.right, 198);

    auto small = label(NSMakeRect(0, 0, 120, 16), "Hg");
    EXPECT_LT(inkOf(*Bitmap::renderView(*small, 2)).top, 10);

    auto clipped = label(NSMakeRect(0, 0, 60, 20), "A rather long title for a button");
    clipped->setLineBreakMode(LineBreakMode::ByTruncatingTail);
    ink = inkOf(*Bitmap::renderView(*clipped, 1));
    EXPECT_LE(ink.right, 58);
    EXPECT_LT(ink.bottom, 18);  // one line, no wrapping
}
