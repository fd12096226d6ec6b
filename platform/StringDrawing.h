#pragma once

#include <string>

#include "platform/Color.h"
#include "platform/Font.h"
#include "platform/Geometry.h"

namespace platform {

// NSStringDrawingOptions
enum StringDrawingOptions : unsigned {
    NSStringDrawingUsesLineFragmentOrigin = 1 << 0,
    NSStringDrawingUsesFontLeading = 1 << 1,
};

// The attributes of a run of text (NSFontAttributeName, NSForegroundColorAttributeName).
struct TextAttributes {
    FontPtr font;             // nullptr: the system font at its default size
    ColorPtr foregroundColor;  // nullptr: black
};

// boundingRectWithSize:options:attributes: of |text| laid out by Qt's text engine within
// |size| (wrapping at word boundaries when the width limits it). UTF-8 text.
Rect boundingRectWithSize(const std::string& text, Size size, unsigned options,
                          const TextAttributes& attributes);

}  // namespace platform
