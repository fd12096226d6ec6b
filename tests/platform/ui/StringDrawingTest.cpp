#include "platform/ui/StringDrawing.h"

#include <cfloat>

#include "tests/platform/ui/PixelTestSupport.h"

using namespace platform;
using namespace pixel_test;

constexpr unsigned kFragmentAndLeading =
    NSStringDrawingUsesLineFragmentOrigin | NSStringDrawingUsesFontLeading;
const TextAttributes kAttributes{Font::systemFontOfSize(13), nullptr};

static double lineHeight(bool withLeading) {
    const Font& font = *kAttributes.font;
    return font.ascender() - font.descender() + (withLeading ? font.leading() : 0);
}

static Rect bounding(std::string s, double w = DBL_MAX, unsigned options = kFragmentAndLeading) {
    return boundingRectWithSize(s, {w, DBL_MAX}, options, kAttributes);
}

// The ink of |text| drawn into |rect| of a 100 x 40 canvas.
static InkBox drawn(const std::string& text,
                    Rect rect,
                    TextAlignment alignment,
                    LineBreakMode mode,
                    double size = 12) {
    TextAttributes attributes{Font::systemFontOfSize(size), Color::blackColor()};
    return inkOf(*pixel_test::render(100, 40, 1, [&](GraphicsContext&) {
        drawStringInRect(text, rect, attributes, alignment, mode);
    }));
}

// Font metrics are in points whatever the screen's resolution: about 1.16 em for this face. A line
// is as high as the font with or without leading, as wide as its natural advance (not rounded);
// without the line fragment origin it hangs from the baseline. Narrow widths wrap at words;
// newlines start lines.
TEST(StringDrawingTest, FontMetricsBoundingRectsCaretsAndSelections) {
    auto font = Font::systemFontOfSize(20);
    const double height = font->ascender() - font->descender();
    EXPECT_EQ("Liberation Sans", font->familyName());
    EXPECT_GT(height, 20);
    EXPECT_LT(height, 26);
    EXPECT_NEAR(2 * Font::systemFontOfSize(10)->ascender(), font->ascender(), 1.0 / 32);
    EXPECT_EQ(NSZeroRect, bounding(""));
    const Rect both = bounding("Cancel");
    EXPECT_EQ(Point(), both.origin);
    EXPECT_DOUBLE_EQ(lineHeight(true), both.size.height);
    EXPECT_DOUBLE_EQ(
        lineHeight(false),
        bounding("Cancel", DBL_MAX, NSStringDrawingUsesLineFragmentOrigin).size.height);
    const Rect baseline = bounding("Cancel", DBL_MAX, 0);
    EXPECT_DOUBLE_EQ(kAttributes.font->descender(), baseline.origin.y);
    EXPECT_GT(both.size.width, 30);
    EXPECT_LT(both.size.width, 60);
    EXPECT_NE(std::floor(both.size.width), both.size.width);  // not rounded

    const std::string text = "Send to a friend and add to favourites";
    const Rect wrapped = bounding(text, 100);
    EXPECT_GE(wrapped.size.height, 3 * lineHeight(true));
    EXPECT_DOUBLE_EQ(0, std::fmod(wrapped.size.height, lineHeight(true)));
    EXPECT_LE(wrapped.size.width, 100);
    EXPECT_EQ(wrapped.size, usedSizeForText(text, 100, kAttributes));
    const Rect twoLines = bounding("short\nmuch longer line");
    EXPECT_DOUBLE_EQ(2 * lineHeight(true), twoLines.size.height);
    EXPECT_DOUBLE_EQ(bounding("much longer line").size.width, twoLines.size.width);

    // Carets and selections follow UTF-8 offsets; an empty text's caret is a line high; a wrapped
    // selection has a rectangle per line, each a line lower.
    const std::string cafe = "caf\xc3\xa9 au lait";  // é is two bytes
    EXPECT_EQ(NSMakeRect(0, 0, 0, lineHeight(true)), caretRectInText("", 1000, kAttributes, 0));
    const Rect afterE = caretRectInText(cafe, 1000, kAttributes, 5);
    EXPECT_EQ(5u, characterIndexForPointInText(cafe, 1000, kAttributes, {afterE.origin.x, 2}));
    auto perLine = selectionRectsInText("alpha beta gamma", 40, kAttributes, 0, 16);
    ASSERT_GE(perLine.size(), 2u);
    EXPECT_DOUBLE_EQ(lineHeight(true), perLine[1].origin.y);
}

// Alignment places the text, also after reusing a layout; text wider than its rect never draws
// outside it, whatever the line-break mode.
TEST(StringDrawingTest, AlignmentReuseAndClipping) {
    constexpr auto kLeft = TextAlignment::Left, kCenter = TextAlignment::Center;
    constexpr auto kTail = LineBreakMode::ByTruncatingTail;
    const Rect line = NSMakeRect(0, 20, 100, 20);
    const InkBox first = drawn("Send", line, kLeft, kTail, 14);
    EXPECT_LE(first.left, 2);
    EXPECT_EQ(first.right, drawn("Send", line, kLeft, kTail, 14).right);
    EXPECT_GE(drawn("Send", line, TextAlignment::Right, kTail, 14).right, 96);
    EXPECT_NEAR(50, drawn("Send", line, kCenter, kTail, 14).midX(), 2);
    EXPECT_LT(drawn("Send", NSMakeRect(0, 20, 50, 20), kCenter, kTail, 14).left, 20);
    EXPECT_EQ(first.left, drawn("Send", line, TextAlignment::Natural, kTail, 14).left);
    EXPECT_GT(drawn("Send to a friend", line, kLeft, kTail, 14).right, first.right);
    EXPECT_GT(drawn("Send", line, kLeft, kTail, 20).right, first.right);
    for (LineBreakMode mode : {LineBreakMode::ByClipping, kTail, LineBreakMode::ByWordWrapping}) {
        SCOPED_TRACE(static_cast<int>(mode));
        const InkBox ink = drawn("a title far too long for the narrow field it is given",
                                 NSMakeRect(10, 20, 40, 16), kLeft, mode);
        ASSERT_FALSE(ink.empty());
        EXPECT_GE(ink.left, 10);
        EXPECT_LT(ink.right, 50);
        EXPECT_GE(ink.top, 4);
        EXPECT_LT(ink.bottom, 20);
    }
}
