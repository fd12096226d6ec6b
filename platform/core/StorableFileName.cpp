#include "platform/core/StorableFileName.h"

#include <cstdio>

namespace platform {

namespace {

// The length of the UTF-8 character at |at| (well formed, shortest form, no surrogates), or 0.
size_t utf8CharacterLength(const unsigned char* at, size_t left) {
    const unsigned char c = at[0];
    size_t length;
    unsigned lowest, first;
    if (c < 0x80)
        return 1;
    if ((c & 0xe0) == 0xc0) {
        length = 2, lowest = 0x80, first = c & 0x1f;
    } else if ((c & 0xf0) == 0xe0) {
        length = 3, lowest = 0x800, first = c & 0x0f;
    } else if ((c & 0xf8) == 0xf0) {
        length = 4, lowest = 0x10000, first = c & 0x07;
    } else {
        return 0;
    }
    if (left < length)
        return 0;
    unsigned value = first;
    for (size_t i = 1; i < length; ++i) {
        if ((at[i] & 0xc0) != 0x80)
            return 0;
        value = (value << 6) | (at[i] & 0x3f);
    }
    if (value < lowest || value > 0x10ffff || (value >= 0xd800 && value <= 0xdfff))
        return 0;
    return length;
}

}  // namespace

std::string StorableFileName::of(const std::string& name) {
    const auto* bytes = reinterpret_cast<const unsigned char*>(name.data());
    std::string out;
    bool escaped = false;
    for (size_t i = 0; i < name.size();) {
        const size_t length = utf8CharacterLength(bytes + i, name.size() - i);
        if (length > 0 && bytes[i] != '%') {
            out.append(name, i, length);
            i += length;
            continue;
        }
        char hex[4];
        std::snprintf(hex, sizeof hex, "%%%02X", bytes[i]);
        out += hex;
        escaped = escaped || length == 0;
        ++i;
    }
    // A name that is UTF-8 throughout is kept as it is, "%" included.
    return escaped ? out : name;
}

}  // namespace platform
