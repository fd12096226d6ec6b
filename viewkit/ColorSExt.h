#pragma once

#include <optional>
#include <string>

#include "platform/ui/Color.h"

// Colour helpers. Both keep no state and may be called from any thread.
namespace SExt {

// "#RRGGBB" (opaque) or "#AARRGGBB" (alpha first); the "#" is optional and either case of digit
// is read. Each component is v / 255 computed in single precision and widened. Returns a device
// RGB colour, or nullptr for a missing or empty string, a length (in UTF-16 units, after the one
// optional "#") other than 6 or 8, or a pair that is not exactly two hexadecimal digits.
platform::ColorPtr colorWithHex(const std::optional<std::string>& hex);

// A new generic RGB colour of |color|'s components; transparent black when |color| cannot be
// expressed in generic RGB. The caller owns the result (CGColorRelease).
platform::CGColorRef forwardCompatibilityCGColor(const platform::Color& color);

}  // namespace SExt
