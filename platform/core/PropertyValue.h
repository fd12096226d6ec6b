#pragma once

#include <optional>
#include <string>
#include <variant>
#include <vector>

namespace platform {

using StringArray = std::vector<std::string>;

// A property-list value as the hand-off store and Info.plist readers expose it: a string or an
// array of strings. Other property-list types are not exchanged between extension and host.
using PropertyValue = std::variant<std::string, StringArray>;

// The text "%@" gives a value: a string as is, an array as "(\n    a,\n    b\n)", and an
// absent value as "(null)".
std::string describe(const std::optional<PropertyValue>& value);

}  // namespace platform
