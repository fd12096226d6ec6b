#pragma once

#include <cstdint>
#include <optional>
#include <string>

namespace platform {

// How a copy ended.
enum class CopyResult {
    Copied,
    // Nothing lies at the destination that this copy made.
    Failed,
    // The source is a regular file larger than the limit given (measured when opened): not
    // copied.
    TooLarge,
};

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
    // sendfile) without a per-file fsync. A FIFO, socket or device is refused and never opened;
    // inside a folder such an entry is left out (logged) and the rest is copied.
    //
    // The copy is made under a hidden temporary name beside |destination| and moved to its name
    // only when whole, without replacing anything that appeared there meanwhile: an interrupted
    // or failed copy never leaves a partial item under |destination|. A file is copied as it was
    // when opened: data it gains during the copy is left out. A copy that finds the disk full
    // while other copies of this process are writing tries once more when they are done, if it
    // fits in what is free then. On failure |error| (when given) receives a readable reason.
    bool copyItemAtPath(const std::string& source,
                        const std::string& destination,
                        std::string* error = nullptr);
    // The same; a regular file (not a folder) larger than |maxFileBytes| when opened is not copied.
    CopyResult copyItemAtPath(const std::string& source,
                              const std::string& destination,
                              int64_t maxFileBytes,
                              std::string* error);

    // A file name as text that a property list can hold (UTF-8): the name itself when it is
    // valid UTF-8; otherwise every byte that is not part of a UTF-8 character, and every "%",
    // written as "%XX" (upper-case hex). Two different names never give the same text unless
    // one of them is valid UTF-8 and spells the other's escapes.
    static std::string storableFileName(const std::string& name);
};

}  // namespace platform
