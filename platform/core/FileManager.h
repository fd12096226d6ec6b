#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>

namespace platform {

class StallWatch;

// How a copy ended.
enum class CopyResult {
    Copied,
    // Nothing lies at the destination that this copy made.
    Failed,
    // The source is a regular file larger than the limit given (measured when opened): not
    // copied.
    TooLarge,
    // The source is the destination's folder or the copies' work folder: a copy of it would
    // copy itself. Nothing was written.
    Refused,
};

struct CopyOptions {
    // A regular file (not a folder) larger than this when opened is not copied (-1: no limit).
    int64_t maxFileBytes = -1;
    // Told of every step of the copy. Once it has given up, the copy stops, leaves nothing and
    // logs nothing: the watch's owner reports it.
    std::shared_ptr<StallWatch> watch;
};

// File operations with the platform's meaning. Thread-safe.
class FileManager {
  public:
    static FileManager& defaultManager();

    // containerURLForSecurityApplicationGroupIdentifier: the group's shared directory (see
    // GroupContainer), as a path without the trailing "/" (callers append "/" and a name).
    std::optional<std::string> containerURLForSecurityApplicationGroupIdentifier(
        const std::string& groupIdentifier);

    // copyItemAtPath:toPath:error: a regular file, a folder whole, a symbolic link as a link
    // (see ItemCopier for what each becomes). Fails when anything (even a dangling link) lies at
    // |destination|, and never writes through a link.
    //
    // The copy is built out of sight (see CopyStaging) and takes its name only when whole,
    // without replacing anything that appeared there meanwhile: an interrupted or failed copy
    // never leaves a partial item under |destination|. A folder that holds |destination|'s
    // folder is copied without it. A copy that finds the disk full while other copies of this
    // process are writing tries once more when they are done, if it fits in what is free then
    // (DiskFullRetry). A copy that did not succeed is logged once, with its reason, which
    // |error| (when given) receives too.
    CopyResult copyItemAtPath(const std::string& source,
                              const std::string& destination,
                              const CopyOptions& options,
                              std::string* error = nullptr);
    bool copyItemAtPath(const std::string& source,
                        const std::string& destination,
                        std::string* error = nullptr);

    // Removes what killed copies into |destinationFolder| left behind (InterruptedCopySweep).
    // Never called by the copies themselves: whoever copies decides when to sweep.
    void removeInterruptedCopies(const std::string& destinationFolder);
};

}  // namespace platform
