#include "platform/core/PathRepair.h"

#include <fcntl.h>
#include <sys/stat.h>

#include <cerrno>
#include <cstdio>
#include <cstring>

#include "platform/core/Log.h"

namespace platform {

namespace {

const Logger kLog("PathRepair: ");

enum class Found { Nothing, Fitting, Stray };

// What lies at |path| with respect to |kind|; a path that cannot be looked at is left to the
// caller, whose own use of it reports why.
Found lookAt(PathRepair::Kind kind, const std::string& path, std::string& what) {
    struct stat st {};
    if (::lstat(path.c_str(), &st) != 0)
        return errno == ENOENT ? Found::Nothing : Found::Fitting;
    if (kind == PathRepair::Kind::RegularFile && S_ISREG(st.st_mode))
        return Found::Fitting;
    if (kind == PathRepair::Kind::Directory) {
        struct stat target {};
        if (S_ISDIR(st.st_mode) ||
            (S_ISLNK(st.st_mode) && ::stat(path.c_str(), &target) == 0 && S_ISDIR(target.st_mode)))
            return Found::Fitting;
    }
    what = S_ISDIR(st.st_mode)    ? "a folder"
           : S_ISLNK(st.st_mode)  ? "a symbolic link"
           : S_ISFIFO(st.st_mode) ? "a FIFO"
           : S_ISSOCK(st.st_mode) ? "a socket"
           : S_ISREG(st.st_mode)  ? "a file"
                                  : "a device";
    return Found::Stray;
}

// rename without replacing anything at |to|.
bool renameNoReplace(const std::string& from, const std::string& to) {
    if (::renameat2(AT_FDCWD, from.c_str(), AT_FDCWD, to.c_str(), RENAME_NOREPLACE) == 0)
        return true;
    if (errno != EINVAL)
        return false;
    // A file system without RENAME_NOREPLACE: look first (a race here only costs a retry name).
    struct stat st {};
    if (::lstat(to.c_str(), &st) == 0) {
        errno = EEXIST;
        return false;
    }
    return ::rename(from.c_str(), to.c_str()) == 0;
}

}  // namespace

bool PathRepair::makeRoomFor(Kind kind, const std::string& path) {
    std::string what;
    if (lookAt(kind, path, what) != Found::Stray)
        return true;
    constexpr int kNames = 100;
    for (int n = 1; n <= kNames; ++n) {
        const std::string aside = path + ".corrupt" + (n == 1 ? "" : "-" + std::to_string(n));
        if (renameNoReplace(path, aside)) {
            std::string moved;
            if (lookAt(kind, aside, moved) == Found::Fitting) {
                // Another process made room first and put the right kind in place; it goes back.
                renameNoReplace(aside, path);
                return true;
            }
            kLog.write(path + " was " + what + " where " +
                       (kind == Kind::RegularFile ? "a file" : "a folder") + " belongs; kept as " +
                       aside + ".");
            return true;
        }
        if (errno == ENOENT)
            return true;  // another process moved it first
        if (errno != EEXIST) {
            kLog.write("cannot set aside " + path + " (" + what + "): " + std::strerror(errno));
            return false;
        }
    }
    kLog.write("cannot set aside " + path + " (" + what + "): no free name beside it.");
    return false;
}

}  // namespace platform
