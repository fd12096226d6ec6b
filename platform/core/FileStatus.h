#pragma once

#include <cstdint>
#include <optional>
#include <string>

namespace platform {

// lstat from the C library: the status of a path itself, a symbolic link measured as the link.
struct FileStatus {
    // st_size: bytes of a file, the link text's length for a link, the entry's size for a folder.
    int64_t size = 0;

    // nullopt when the path cannot be examined (missing, a component not searchable, ...).
    static std::optional<FileStatus> lstat(const std::string& path);

    // Whether |path| itself (a link is not followed) is a folder that is |folder| or lies
    // somewhere inside it, judged by the folders it physically lies in, whatever links the two
    // paths pass through. False when either cannot be examined.
    static bool isFolderWithin(const std::string& path, const std::string& folder);
};

}  // namespace platform
