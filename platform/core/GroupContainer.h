#pragma once

#include <optional>
#include <string>

namespace platform {

// Where an application group's shared container lies. Thread-safe.
class GroupContainer {
  public:
    // ${XDG_DATA_HOME:-$HOME/.local/share}/group-containers/<group>, without a trailing "/",
    // created 0700 when missing. Asked for every file of a share, so a container that exists
    // costs one stat. nullopt (logged) when it cannot be made, or when |groupIdentifier| is
    // unusable as a folder name or is the name of the copies' work folder there.
    static std::optional<std::string> pathFor(const std::string& groupIdentifier);
};

}  // namespace platform
