#include "platform/core/FileStatus.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include "platform/core/FileDescriptor.h"

namespace platform {

std::optional<FileStatus> FileStatus::lstat(const std::string& path) {
    struct stat status {};
    if (::lstat(path.c_str(), &status) != 0)
        return std::nullopt;
    FileStatus result;
    result.size = static_cast<int64_t>(status.st_size);
    return result;
}

bool FileStatus::isFolderWithin(const std::string& path, const std::string& folder) {
    struct stat at {};
    // Most shared items are files: one lstat answers for them.
    if (::lstat(path.c_str(), &at) != 0 || !S_ISDIR(at.st_mode))
        return false;
    struct stat wanted {};
    FileDescriptor current(::open(path.c_str(), O_PATH | O_NOFOLLOW | O_CLOEXEC));
    if (::stat(folder.c_str(), &wanted) != 0 || !current.isOpen() ||
        ::fstat(current.get(), &at) != 0)
        return false;
    // Up through "..", which names the physical parent, until the root names itself.
    for (;;) {
        if (at.st_dev == wanted.st_dev && at.st_ino == wanted.st_ino)
            return true;
        FileDescriptor parent(::openat(current.get(), "..", O_PATH | O_DIRECTORY | O_CLOEXEC));
        struct stat above {};
        if (!parent.isOpen() || ::fstat(parent.get(), &above) != 0 ||
            (above.st_dev == at.st_dev && above.st_ino == at.st_ino))
            return false;
        current = std::move(parent);
        at = above;
    }
}

}  // namespace platform
