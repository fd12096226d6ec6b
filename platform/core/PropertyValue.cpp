#include "platform/core/PropertyValue.h"

namespace platform {

std::string describe(const std::optional<PropertyValue>& value) {
    if (!value)
        return "(null)";
    if (const auto* text = std::get_if<std::string>(&*value))
        return *text;
    const auto& array = std::get<StringArray>(*value);
    std::string out = "(\n";
    for (size_t i = 0; i < array.size(); ++i) {
        out += "    " + array[i];
        out += i + 1 < array.size() ? ",\n" : "\n";
    }
    return out + ")";
}

}  // namespace platform
