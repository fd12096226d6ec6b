#include "viewkit/ColorSExt.h"

#include <charconv>
#include <cstddef>

namespace SExt {

using platform::Color;
using platform::ColorPtr;

namespace {

// Length as the platform's strings count it: UTF-16 units of the UTF-8 text. A byte that does
// not continue a sequence starts a character; a four-byte sequence needs a surrogate pair.
size_t utf16Length(const std::string& text) {
    size_t units = 0;
    for (unsigned char byte : text) {
        if ((byte & 0xC0) == 0x80)
            continue;
        units += byte >= 0xF0 ? 2 : 1;
    }
    return units;
}

// The component of the pair at |offset|, or a negative value when the pair is not two hex digits.
double pairComponent(const std::string& digits, size_t offset) {
    const char* pair = digits.data() + offset;
    unsigned value = 0;
    const auto [end, error] = std::from_chars(pair, pair + 2, value, 16);
    if (error != std::errc() || end != pair + 2)
        return -1;
    // Single-precision quotient, widened: the colour the rest of the system expects for "F7" is
    // 247/255 rounded to float, not the double quotient.
    const float component = static_cast<float>(value) / 255.0f;
    return static_cast<double>(component);
}

}  // namespace

ColorPtr colorWithHex(const std::optional<std::string>& hex) {
    if (!hex || hex->empty())
        return nullptr;
    const std::string digits = (*hex)[0] == '#' ? hex->substr(1) : *hex;
    const size_t length = utf16Length(digits);
    if (length != 6 && length != 8)
        return nullptr;
    // A non-ASCII character can never be a digit; with one present the byte offsets below would
    // not be the character offsets either.
    if (digits.size() != length)
        return nullptr;

    double components[4];  // in reading order
    const size_t pairs = length / 2;
    for (size_t i = 0; i < pairs; ++i) {
        components[i] = pairComponent(digits, i * 2);
        if (components[i] < 0)
            return nullptr;
    }
    if (pairs == 3)
        return Color::colorWithDeviceRed(components[0], components[1], components[2], 1.0);
    return Color::colorWithDeviceRed(components[1], components[2], components[3], components[0]);
}

platform::CGColorRef forwardCompatibilityCGColor(const Color& color) {
    double red = 0, green = 0, blue = 0, alpha = 0;
    if (ColorPtr generic = color.colorUsingColorSpace(platform::ColorSpace::GenericRGB))
        generic->getRed(&red, &green, &blue, &alpha);
    return platform::CGColorCreateGenericRGB(red, green, blue, alpha);
}

}  // namespace SExt
