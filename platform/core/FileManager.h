#pragma once

#include <optional>
#include <string>

namespace platform {

// File operations with the platform's meaning. Thread-safe.
class FileManager {
  public:
    static FileManager& defaultManager();

    // containerURLForSecurityApplicationGroupIdentifier: the group's shared directory,
    // ${XDG_DATA_HOME:-$HOME/.local/share}/group-containers/<group>/, created 0700 on first use.
    // Returned as a path without the trailing "/" (callers append "/" and a name).
    // nullopt (logged) when it cannot be created or the identifier is unusable as a name.
    std::optional<std::string> containerURLForSecurityApplicationGroupIdentifier(
        const std::string& groupIdentifier);

    // copyItemAtPath:toPath:error: regular files, folders whole, symbolic links as links. Fails
    // when anything (even a dangling link) lies at |destination|, and never writes through a link.
    // Data moves by kernel copy (reflink where the file system has one, else copy_file_range or
    // sendfile) without a per-file fsync. A FIFO, socket or device is refused and never opened.
    // On failure |error| (when given) receives a readable reason; a partly written destination
    // is removed.
    bool copyItemAtPath(const std::string& source,
                        const std::string& destination,
                        std::string* error = nullptr);
};

}  // namespace platform
