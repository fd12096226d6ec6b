#include "tests/platform/ui/PixelTestSupport.h"

#include <cfloat>

#include "platform/ui/StringDrawing.h"

using namespace platform;
using pixel_test::InkBox;
using pixel_test::inkOf;

namespace {

constexpr unsigned kFragmentAndLeading =
    NSStringDrawingUsesLineFragmentOrigin | NSStringDrawingUsesFontLeading;
const Size kUnlimited{DBL_MAX, DBL_MAX};

TextAttributes attributesOfSize(double size) {
    return {Font::systemFontOfSize(size), nullptr};
}

double lineHeight(const Font& font, bool withLeading) {
    return font.ascender() - font.descender() + (withLeading ? font.leading() : 0);
}

}  // namespace

TEST(StringDrawingTest, SystemFontIsDejaVuWithPlausibleMetrics) {
    auto font = Font::systemFontOfSize(20);
    EXPECT_EQ("Liberation Sans", font->familyName());
    EXPECT_LT(font->descender(), 0);
    EXPECT_GE(font->leading(), 0);
    // Metrics are in points whatever the screen's resolution: about 1.16 em for this face.
    EXPECT_GT(font->ascender() - font->descender(), 20);
    EXPECT_LT(font->ascender() - font->descender(), 26);
    EXPECT_NEAR(2 * Font::systemFontOfSize(10)->ascender(), font->ascender(), 1.0 / 32);
}

// A line is as high as the font with or without leading; its width is the natural advance. Without
// the line fragment origin the rectangle hangs from the baseline.
TEST(StringDrawingTest, OneLineIsOneLineHighWithOrWithoutLeading) {
    auto attributes = attributesOfSize(13);
    const Font& font = *attributes.font;
    EXPECT_EQ(NSZeroRect, boundingRectWithSize("", kUnlimited, kFragmentAndLeading, attributes));
    EXPECT_EQ(Size(), usedSizeForText("", 100, attributes));
    Rect both = boundingRectWithSize("Cancel", kUnlimited, kFragmentAndLeading, attributes);
    Rect fragmentOnly = boundingRectWithSize("Cancel", kUnlimited,
                                             NSStringDrawingUsesLineFragmentOrigin, attributes);
    Rect baseline = boundingRectWithSize("Cancel", kUnlimited, 0, attributes);
    EXPECT_EQ(Point(), both.origin);
    EXPECT_DOUBLE_EQ(lineHeight(font, true), both.size.height);
    EXPECT_DOUBLE_EQ(lineHeight(font, false), fragmentOnly.size.height);
    EXPECT_DOUBLE_EQ(font.descender(), baseline.origin.y);
    EXPECT_EQ(both.size.width, baseline.size.width);
    EXPECT_GT(both.size.width, 30);
    EXPECT_LT(both.size.width, 60);
    EXPECT_NE(std::floor(both.size.width),
              both.size.width);  // not rounded to whole points
}

TEST(StringDrawingTest, NarrowWidthWrapsAtWords) {
    auto attributes = attributesOfSize(13);
    double perLine = lineHeight(*attributes.font, true);
    std::string text = "Send to a friend and add to favourites";
    Rect single = boundingRectWithSize(text, kUnlimited, kFragmentAndLeading, attributes);
    Rect wrapped = boundingRectWithSize(text, {100, DBL_MAX}, kFragmentAndLeading, attributes);
    EXPECT_GE(wrapped.size.height, 3 * perLine);
    EXPECT_DOUBLE_EQ(0, std::fmod(wrapped.size.height, perLine));
    EXPECT_LE(wrapped.size.width, 100);
    EXPECT_LT(wrapped.size.width, single.size.width);
    EXPECT_EQ(wrapped.size, usedSizeForText(text, 100, attributes));

    // An explicit newline starts a line; the width is the wider line's.
    Rect twoLines = boundingRectWithSize("short\nmuch longer line", kUnlimited, kFragmentAndLeading,
                                         attributes);
    EXPECT_DOUBLE_EQ(2 * perLine, twoLines.size.height);
    EXPECT_DOUBLE_EQ(
        boundingRectWithSize("much longer line", kUnlimited, kFragmentAndLeading, attributes)
            .size.width,
        twoLines.size.width);
}

TEST(StringDrawingTest, CaretAndSelectionFollowUtf8Offsets) {
    auto attributes = attributesOfSize(13);
    std::string text = "caf\xc3\xa9 au lait";  // "café au lait": é is two bytes
    double lineH = lineHeight(*attributes.font, true);
    EXPECT_EQ(NSMakeRect(0, 0, 0, lineH), caretRectInText(text, 1000, attributes, 0));
    Rect end = caretRectInText(text, 1000, attributes, text.size());
    EXPECT_NEAR(usedSizeForText(text, 1000, attributes).width, end.origin.x, 0.01);

    EXPECT_EQ(0u, characterIndexForPointInText(text, 1000, attributes, {-5, 2}));
    EXPECT_EQ(text.size(), characterIndexForPointInText(text, 1000, attributes, {900, 2}));
    Rect afterE = caretRectInText(text, 1000, attributes, 5);
    EXPECT_EQ(5u, characterIndexForPointInText(text, 1000, attributes, {afterE.origin.x, 2}));
    auto rects = selectionRectsInText(text, 1000, attributes, 0, 5);
    ASSERT_EQ(1u, rects.size());
    EXPECT_NEAR(afterE.origin.x, rects[0].size.width, 0.01);

    // A selection over a wrap covers one rectangle per line, each a line lower.
    auto wrapped = selectionRectsInText("alpha beta gamma", 40, attributes, 0, 16);
    ASSERT_GE(wrapped.size(), 2u);
    EXPECT_DOUBLE_EQ(lineH, wrapped[1].origin.y);
}

// Lines start at the top of the rect; the glyph is not mirrored (the bar of a T is at the top) and
// grows with the backing scale.
TEST(StringDrawingTest, DrawnTextIsUprightAndScalesWithTheBacking) {
    TextAttributes attributes{Font::systemFontOfSize(20), Color::blackColor()};
    int heights[3] = {};
    for (int scale : {1, 2}) {
        SCOPED_TRACE(scale);
        auto bitmap = pixel_test::render(40, 40, scale, [&](GraphicsContext&) {
            drawStringInRect("T", NSMakeRect(0, 0, 40, 40), attributes, 0, 2);
        });
        InkBox ink = inkOf(*bitmap);
        ASSERT_FALSE(ink.empty());
        EXPECT_LT(ink.top, 8 * scale);
        auto inkInRow = [&](int y) {
            int count = 0;
            for (int x = 0; x < bitmap->pixelWidth(); ++x)
                count += bitmap->pixelAt(x, y).a > 96;
            return count;
        };
        EXPECT_GT(inkInRow(ink.top),
                  2 * inkInRow(ink.bottom));  // the bar above the stem
        heights[scale] = ink.height();
    }
    EXPECT_NEAR(2 * heights[1], heights[2], 2);
}

// Alignment places the text; text wider than its rect never draws outside it, whatever the
// line-break mode.
TEST(StringDrawingTest, AlignmentAndClipping) {
    TextAttributes attributes{Font::systemFontOfSize(12), Color::blackColor()};
    auto drawn = [&](const std::string& text, Rect rect, int alignment, int mode) {
        return inkOf(*pixel_test::render(100, 40, 1, [&](GraphicsContext&) {
            drawStringInRect(text, rect, attributes, alignment, mode);
        }));
    };
    const Rect line = NSMakeRect(0, 20, 100, 20);
    EXPECT_LE(drawn("abc", line, 0, 2).left, 2);
    EXPECT_GE(drawn("abc", line, 1, 2).right, 96);
    EXPECT_NEAR(50, drawn("abc", line, 2, 2).midX(), 2);
    EXPECT_EQ(drawn("abc", line, 0, 2).left, drawn("abc", line, 4, 2).left);

    for (int mode : {2, 4, 0}) {
        InkBox ink = drawn("a title far too long for the narrow field it is given",
                           NSMakeRect(10, 20, 40, 16), 0, mode);
        ASSERT_FALSE(ink.empty()) << "mode " << mode;
        EXPECT_GE(ink.left, 10) << "mode " << mode;
        EXPECT_LT(ink.right, 50) << "mode " << mode;
        EXPECT_GE(ink.top, 4) << "mode " << mode;
        EXPECT_LT(ink.bottom, 20) << "mode " << mode;
    }
}

// Layouts are reused between drawings: a redraw must still follow every change of text, font,
// alignment and box, and drawing the same text twice gives the same pixels.
TEST(StringDrawingTest, RedrawsFollowEveryChangeDespiteReusedLayouts) {
    auto drawn = [](const std::string& text, double size, int alignment, double width) {
        return inkOf(*pixel_test::render(200, 40, 1, [&](GraphicsContext&) {
            drawStringInRect(text, NSMakeRect(0, 0, width, 40), attributesOfSize(size), alignment,
                             4);
        }));
    };
    const InkBox first = drawn("Send", 14, 0, 200);
    const InkBox again = drawn("Send", 14, 0, 200);
    EXPECT_EQ(first.left, again.left);
    EXPECT_EQ(first.right, again.right);
    EXPECT_GT(drawn("Send to a friend", 14, 0, 200).right, first.right);
    EXPECT_GT(drawn("Send", 20, 0, 200).right, first.right);
    EXPECT_GT(drawn("Send", 14, 2, 200).left, first.left + 50);
    EXPECT_LT(drawn("Send", 14, 2, 100).left, drawn("Send", 14, 2, 200).left);
}
