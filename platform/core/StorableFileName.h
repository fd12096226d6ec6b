#pragma once

#include <string>

namespace platform {

// File names as text that a property list can hold (UTF-8).
class StorableFileName {
  public:
    // The name itself when it is valid UTF-8; otherwise every byte that is not part of a UTF-8
    // character, and every "%", written as "%XX" (upper-case hex). Two different names never give
    // the same text unless one of them is valid UTF-8 and spells the other's escapes.
    static std::string of(const std::string& name);
};

}  // namespace platform
