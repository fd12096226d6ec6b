#include "platform/core/FileStatus.h"

#include <sys/stat.h>

namespace platform {

std::optional<FileStatus> FileStatus::lstat(const std::string& path) {
    struct stat status {};
    if (::lstat(path.c_str(), &status) != 0)
        return std::nullopt;
    FileStatus result;
    result.size = static_cast<int64_t>(status.st_size);
    return result;
}

}  // namespace platform
