// A text field's drawing, checked on rendered pixels.
#include <gtest/gtest.h>

#include <algorithm>
#include <memory>

#include "platform/ui/Bitmap.h"
#include "platform/ui/TextField.h"

using namespace platform;

namespace {

// The pixel box (top-left origin) of the pixels with some ink in them; empty when none.
struct InkBox {
    int left = 1 << 30, top = 1 << 30, right = -1, bottom = -1;
    bool empty() const { return right < 0; }
    double midX() const { return (left + right) / 2.0; }
};

InkBox inkOf(const Bitmap& bitmap) {
    InkBox box;
    for (int y = 0; y < bitmap.pixelHeight(); ++y)
        for (int x = 0; x < bitmap.pixelWidth(); ++x)
            if (bitmap.pixelAt(x, y).a > 64) {
                box.left = std::min(box.left, x);
                box.right = std::max(box.right, x);
                box.top = std::min(box.top, y);
                box.bottom = std::max(box.bottom, y);
            }
    return box;
}

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

TEST(TextFieldTest, DefaultsMatchThePlatformField) {
    TextField field;
    EXPECT_EQ("NSTextField", field.className());
    EXPECT_EQ(13.0, field.font()->pointSize());
    EXPECT_TRUE(*field.textColor() == *Color::blackColor());
    EXPECT_TRUE(field.isBordered());
    EXPECT_TRUE(field.drawsBackground());
    EXPECT_TRUE(field.isEditable());
    EXPECT_TRUE(field.isSelectable());
    EXPECT_EQ(LineBreakMode::ByClipping, field.lineBreakMode());
    EXPECT_EQ(TextAlignment::Natural, field.alignment());
}

TEST(TextFieldTest, TextSitsAtTheTopOfATallField) {
    auto field = label(NSMakeRect(0, 0, 120, 60), "Hello");
    auto shot = Bitmap::renderView(*field, 1);
    InkBox ink = inkOf(*shot);
    ASSERT_FALSE(ink.empty());
    EXPECT_LT(ink.bottom, 18);  // within the first line box, from the top edge down
    EXPECT_GE(ink.left, 2);     // the cell's inset
    EXPECT_LT(ink.left, 6);

    // A 16-high label with a 12-point font shows its whole line.
    auto small = label(NSMakeRect(0, 0, 120, 16), "Hg");
    InkBox smallInk = inkOf(*Bitmap::renderView(*small, 2));
    ASSERT_FALSE(smallInk.empty());
    EXPECT_LT(smallInk.top, 10);
}

TEST(TextFieldTest, AlignmentPlacesTheText) {
    auto field = label(NSMakeRect(0, 0, 200, 20), "centre");
    field->setAlignment(TextAlignment::Center);
    InkBox centred = inkOf(*Bitmap::renderView(*field, 1));
    ASSERT_FALSE(centred.empty());
    EXPECT_NEAR(100, centred.midX(), 4);

    field->setAlignment(TextAlignment::Right);
    InkBox right = inkOf(*Bitmap::renderView(*field, 1));
    EXPECT_GT(right.right, 190);
    EXPECT_LE(right.right, 198);
}

TEST(TextFieldTest, BackgroundAndBorderDrawOnlyWhenAsked) {
    auto field = std::make_shared<TextField>(NSMakeRect(0, 0, 40, 20));
    auto plain = Bitmap::renderView(*field, 1);
    EXPECT_EQ((Rgba{255, 255, 255, 255}), plain->pixelAtPoint(20, 10));
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

TEST(TextFieldTest, AlphaFadesTheText) {
    auto field = label(NSMakeRect(0, 0, 120, 20), "MMMM");
    int opaque = 0;
    auto full = Bitmap::renderView(*field, 1);
    for (int x = 0; x < full->pixelWidth(); ++x)
        for (int y = 0; y < full->pixelHeight(); ++y)
            opaque = std::max<int>(opaque, full->pixelAt(x, y).a);
    field->setAlphaValue(0.5);
    int faded = 0;
    auto half = Bitmap::renderView(*field, 1);
    for (int x = 0; x < half->pixelWidth(); ++x)
        for (int y = 0; y < half->pixelHeight(); ++y)
            faded = std::max<int>(faded, half->pixelAt(x, y).a);
    EXPECT_GT(opaque, 240);
    EXPECT_NEAR(opaque / 2.0, faded, 3);
}

TEST(TextFieldTest, TruncationKeepsTheTextInsideTheField) {
    auto clipped = label(NSMakeRect(0, 0, 60, 20), "A rather long title for a button");
    clipped->setLineBreakMode(LineBreakMode::ByTruncatingTail);
    InkBox ink = inkOf(*Bitmap::renderView(*clipped, 1));
    ASSERT_FALSE(ink.empty());
    EXPECT_LE(ink.right, 58);
    EXPECT_LT(ink.bottom, 18);  // one line, no wrapping
}
