#include <gtest/gtest.h>

#include <cfloat>

#include "platform/ui/StringDrawing.h"
#include "tests/platform/ui/PixelTestSupport.h"

using namespace platform;

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

// Ink extent of a rendering, in pixel rows and columns; -1 when there is no ink.
struct Ink {
    int top = -1, bottom = -1, left = -1, right = -1;
};

Ink inkOf(const Bitmap& bitmap) {
    Ink ink;
    for (int y = 0; y < bitmap.pixelHeight(); ++y)
        for (int x = 0; x < bitmap.pixelWidth(); ++x)
            if (bitmap.pixelAt(x, y).a > 96) {
                if (ink.top < 0)
                    ink.top = y;
                ink.bottom = y;
                ink.left = ink.left < 0 ? x : std::min(ink.left, x);
                ink.right = std::max(ink.right, x);
            }
    return ink;
}

}  // namespace

TEST(StringDrawingTest, SystemFontIsDejaVuWithPlausibleMetrics) {
    auto font = Font::systemFontOfSize(20);
    EXPECT_EQ("Liberation Sans", font->familyName());
    EXPECT_EQ(20, font->pointSize());
    EXPECT_GT(font->ascender(), 0);
    EXPECT_LT(font->descender(), 0);
    EXPECT_GE(font->leading(), 0);
    double height = font->ascender() - font->descender();
    // Metrics are in points whatever the screen's resolution: about 1.16 em for this face.
    EXPECT_GT(height, 20);
    EXPECT_LT(height, 26);
    EXPECT_NEAR(2 * Font::systemFontOfSize(10)->ascender(), font->ascender(), 1.0 / 32);
}

TEST(StringDrawingTest, EmptyStringMeasuresNothing) {
    auto attributes = attributesOfSize(13);
    EXPECT_EQ(NSZeroRect, boundingRectWithSize("", kUnlimited, kFragmentAndLeading, attributes));
    EXPECT_EQ(NSZeroRect, boundingRectWithSize("", kUnlimited, 0, attributes));
    EXPECT_EQ(Size(), usedSizeForText("", 100, attributes));
}

TEST(StringDrawingTest, OneLineIsOneLineHighWithOrWithoutLeading) {
    auto attributes = attributesOfSize(13);
    const Font& font = *attributes.font;
    Rect both = boundingRectWithSize("Cancel", kUnlimited, kFragmentAndLeading, attributes);
    Rect fragmentOnly = boundingRectWithSize("Cancel", kUnlimited,
                                             NSStringDrawingUsesLineFragmentOrigin, attributes);
    EXPECT_EQ(Point(), both.origin);
    EXPECT_DOUBLE_EQ(lineHeight(font, true), both.size.height);
    EXPECT_DOUBLE_EQ(lineHeight(font, false), fragmentOnly.size.height);
    EXPECT_EQ(both.size.width, fragmentOnly.size.width);
    EXPECT_GT(both.size.width, 30);
    EXPECT_LT(both.size.width, 60);
    // The natural advance, not rounded to whole points.
    EXPECT_NE(std::floor(both.size.width), both.size.width);

    // Without the line fragment origin the rectangle hangs from the baseline.
    Rect baseline = boundingRectWithSize("Cancel", kUnlimited, 0, attributes);
    EXPECT_DOUBLE_EQ(font.descender(), baseline.origin.y);
    EXPECT_EQ(both.size.width, baseline.size.width);
}

TEST(StringDrawingTest, NarrowWidthWrapsAtWords) {
    auto attributes = attributesOfSize(13);
    double perLine = lineHeight(*attributes.font, true);
    std::string text = "Send to a friend and add to favourites";
    Rect single = boundingRectWithSize(text, kUnlimited, kFragmentAndLeading, attributes);
    Rect wrapped = boundingRectWithSize(text, {100, DBL_MAX}, kFragmentAndLeading, attributes);
    EXPECT_DOUBLE_EQ(perLine, single.size.height);
    EXPECT_GE(wrapped.size.height, 3 * perLine);
    EXPECT_DOUBLE_EQ(0, std::fmod(wrapped.size.height, perLine));
    EXPECT_LE(wrapped.size.width, 100);
    EXPECT_LT(wrapped.size.width, single.size.width);

    // An explicit newline starts a line; the width is the wider line's.
    Rect twoLines = boundingRectWithSize("short\nmuch longer line", kUnlimited, kFragmentAndLeading,
                                         attributes);
    EXPECT_DOUBLE_EQ(2 * perLine, twoLines.size.height);
    EXPECT_DOUBLE_EQ(
        boundingRectWithSize("much longer line", kUnlimited, kFragmentAndLeading, attributes)
            .size.width,
        twoLines.size.width);

    Size used = usedSizeForText(text, 100, attributes);
    EXPECT_EQ(wrapped.size, used);
}

TEST(StringDrawingTest, CaretAndSelectionFollowUtf8Offsets) {
    auto attributes = attributesOfSize(13);
    std::string text = "caf\xc3\xa9 au lait";  // "café au lait": é is two bytes
    double lineH = lineHeight(*attributes.font, true);
    Rect start = caretRectInText(text, 1000, attributes, 0);
    EXPECT_EQ(NSMakeRect(0, 0, 0, lineH), start);
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

TEST(StringDrawingTest, DrawnTextIsUprightAndScalesWithTheBacking) {
    TextAttributes attributes{Font::systemFontOfSize(20), Color::blackColor()};
    Ink inkAt[3];
    for (int scale : {1, 2}) {
        auto bitmap = pixel_test::render(40, 40, scale, [&](GraphicsContext&) {
            drawStringInRect("T", NSMakeRect(0, 0, 40, 40), attributes, 0, 2);
        });
        Ink ink = inkOf(*bitmap);
        ASSERT_GE(ink.top, 0) << "scale " << scale;
        // Lines start at the top of the rect.
        EXPECT_LT(ink.top, 8 * scale);
        // The bar of the T is its widest row, and it is at the top: the glyph is not mirrored.
        int barWidth = 0, barRow = -1;
        for (int y = ink.top; y <= ink.bottom; ++y) {
            int width = 0;
            for (int x = 0; x < bitmap->pixelWidth(); ++x)
                width += bitmap->pixelAt(x, y).a > 96;
            if (width > barWidth) {
                barWidth = width;
                barRow = y;
            }
        }
        EXPECT_LE(barRow - ink.top, scale) << "scale " << scale;
        inkAt[scale] = ink;
    }
    int height1 = inkAt[1].bottom - inkAt[1].top + 1;
    int height2 = inkAt[2].bottom - inkAt[2].top + 1;
    EXPECT_NEAR(2 * height1, height2, 2);
}

TEST(StringDrawingTest, AlignmentAndClipping) {
    TextAttributes attributes{Font::systemFontOfSize(12), Color::blackColor()};
    auto drawAligned = [&](int alignment) {
        return inkOf(*pixel_test::render(100, 20, 1, [&](GraphicsContext&) {
            drawStringInRect("abc", NSMakeRect(0, 0, 100, 20), attributes, alignment, 2);
        }));
    };
    Ink left = drawAligned(0);
    Ink right = drawAligned(1);
    Ink centre = drawAligned(2);
    Ink natural = drawAligned(4);
    EXPECT_LE(left.left, 2);
    EXPECT_GE(right.right, 96);
    EXPECT_NEAR(50, (centre.left + centre.right) / 2.0, 2);
    EXPECT_EQ(left.left, natural.left);

    // Text wider than its rect never draws outside it, whatever the line-break mode.
    std::string longText = "a title far too long for the narrow field it is given";
    for (int mode : {2, 4, 0}) {
        auto bitmap = pixel_test::render(60, 40, 1, [&](GraphicsContext&) {
            drawStringInRect(longText, NSMakeRect(10, 20, 40, 16), attributes, 0, mode);
        });
        Ink ink = inkOf(*bitmap);
        ASSERT_GE(ink.top, 0) << "mode " << mode;
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
    const Ink first = drawn("Send", 14, 0, 200);
    const Ink again = drawn("Send", 14, 0, 200);
    EXPECT_EQ(first.left, again.left);
    EXPECT_EQ(first.right, again.right);
    EXPECT_GT(drawn("Send to a friend", 14, 0, 200).right, first.right);
    EXPECT_GT(drawn("Send", 20, 0, 200).right, first.right);
    EXPECT_GT(drawn("Send", 14, 2, 200).left, first.left + 50);
    EXPECT_LT(drawn("Send", 14, 2, 100).left, drawn("Send", 14, 2, 200).left);
}
