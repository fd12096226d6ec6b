#pragma once

#include <cstddef>
#include <string>
#include <vector>

#include "platform/ui/Color.h"
#include "platform/ui/Font.h"
#include "platform/ui/Geometry.h"

namespace platform {

// NSStringDrawingOptions
enum StringDrawingOptions : unsigned {
    NSStringDrawingUsesLineFragmentOrigin = 1 << 0,
    NSStringDrawingUsesFontLeading = 1 << 1,
};

// NSTextAlignment values as the platform numbers them. Natural is left here.
enum class TextAlignment { Left = 0, Right = 1, Center = 2, Justified = 3, Natural = 4 };
// NSLineBreakMode values as the platform numbers them. The wrapping modes wrap onto more lines;
// the others keep one, the truncating ones ending it with an ellipsis.
enum class LineBreakMode {
    ByWordWrapping = 0,
    ByCharWrapping = 1,
    ByClipping = 2,
    ByTruncatingHead = 3,
    ByTruncatingTail = 4,
    ByTruncatingMiddle = 5,
};

// The attributes of a run of text (NSFontAttributeName, NSForegroundColorAttributeName).
struct TextAttributes {
    FontPtr font;              // nullptr: the system font at its default size
    ColorPtr foregroundColor;  // nullptr: black
};

// boundingRectWithSize:options:attributes: of |text| laid out by Qt's text engine within
// |size| (wrapping at word boundaries when the width limits it). UTF-8 text.
Rect boundingRectWithSize(const std::string& text,
                          Size size,
                          unsigned options,
                          const TextAttributes& attributes);

// Draws |text| in |rect| of the current graphics context (y-up user space, points), lines placed
// from the top of |rect|, aligned by |alignment| and broken by |lineBreakMode|. Drawing is
// clipped to |rect| unless |clipping| says otherwise (a text view's lines show whole, however
// tall they are). In the truncating modes a line at most |maxTightening| (a fraction) wider than
// |rect| has its letters closed up to fit instead of being truncated. Does nothing without a
// current context.
enum class TextClipping { ToRect, None };
void drawStringInRect(const std::string& text,
                      const Rect& rect,
                      const TextAttributes& attributes,
                      TextAlignment alignment,
                      LineBreakMode lineBreakMode,
                      TextClipping clipping = TextClipping::ToRect,
                      double maxTightening = 0);

// The rectangle that |text| wrapped at word boundaries to |width| occupies (lines of
// ascent + descent + leading), origin (0, 0); the width is the widest line's advance. Empty text
// gives a zero size. For a text view's layout manager.
Size usedSizeForText(const std::string& text, double width, const TextAttributes& attributes);

// Byte offset (UTF-8) of the character boundary nearest |point| in |text| laid out as by
// usedSizeForText, |point| measured from the top-left of the text, y growing downward.
size_t characterIndexForPointInText(const std::string& text,
                                    double width,
                                    const TextAttributes& attributes,
                                    Point point);

// The caret's rectangle before the character at byte offset |index| of |text| laid out as by
// usedSizeForText (top-left origin, y downward; width 0, the line's height).
Rect caretRectInText(const std::string& text,
                     double width,
                     const TextAttributes& attributes,
                     size_t index);
// One rectangle per line that the byte range [location, location + length) covers, in the same
// space as caretRectInText.
std::vector<Rect> selectionRectsInText(const std::string& text,
                                       double width,
                                       const TextAttributes& attributes,
                                       size_t location,
                                       size_t length);

}  // namespace platform
