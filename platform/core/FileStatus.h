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
};

}  // namespace platform
