#include "platform/core/FileLock.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <thread>

#include "platform/core/PathRepair.h"
#include "platform/core/Paths.h"

namespace platform {

namespace {

// A descriptor of the regular file at |path|, made when missing; -1 with |error| set otherwise.
// A stray of another kind is set aside and the open tried once more.
int openLockFile(const std::string& path, std::string& error) {
    for (int attempt = 0; attempt < 2; ++attempt) {
        // Read-only is enough for flock, and opens a lock file on a read-only mount. Non-blocking:
        // a FIFO there must not hold us up before it is seen for what it is.
        const int fd =
            ::open(path.c_str(), O_RDONLY | O_CREAT | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC, 0600);
        const int openError = fd < 0 ? errno : 0;
        struct stat st {};
        if (fd >= 0 && ::fstat(fd, &st) == 0 && S_ISREG(st.st_mode))
            return fd;
        if (fd >= 0)
            ::close(fd);
        error = path + ": " + (openError ? std::strerror(openError) : "not a regular file");
        if (!PathRepair::makeRoomFor(PathRepair::Kind::RegularFile, path))
            break;
    }
    return -1;
}

}  // namespace

std::unique_ptr<FileLock> FileLock::acquire(const std::string& path,
                                            std::chrono::milliseconds wait,
                                            std::string& error) {
    const size_t slash = path.rfind('/');
    if (slash != std::string::npos && slash > 0 &&
        !Paths::makeDirectories(path.substr(0, slash), 0700, error))
        return nullptr;
    const int fd = openLockFile(path, error);
    if (fd < 0)
        return nullptr;
    const auto deadline = std::chrono::steady_clock::now() + wait;
    auto pause = std::chrono::milliseconds(1);
    while (::flock(fd, LOCK_EX | LOCK_NB) != 0) {
        if (errno == EINTR)
            continue;
        const auto now = std::chrono::steady_clock::now();
        if (errno != EWOULDBLOCK || now >= deadline) {
            error = path + ": " +
                    (errno == EWOULDBLOCK ? std::string("held too long by another holder")
                                          : std::string(std::strerror(errno)));
            ::close(fd);
            return nullptr;
        }
        std::this_thread::sleep_for(
            std::min<std::chrono::steady_clock::duration>(pause, deadline - now));
        pause = std::min(pause * 2, std::chrono::milliseconds(10));
    }
    return std::unique_ptr<FileLock>(new FileLock(fd));
}

FileLock::~FileLock() {
    ::close(fd_);  // closing releases the flock
}

}  // namespace platform
