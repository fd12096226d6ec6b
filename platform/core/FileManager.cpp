#include "platform/core/FileManager.h"

#include <dirent.h>
#include <fcntl.h>
#include <linux/fs.h>
#include <sys/ioctl.h>
#include <sys/sendfile.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <filesystem>
#include <vector>

#include "platform/core/Log.h"
#include "platform/core/Paths.h"

namespace platform {

namespace {

// Folder nesting deeper than this is refused rather than running out of descriptors.
constexpr int kMaxDepth = 128;

class Fd {
  public:
    explicit Fd(int fd = -1) : fd_(fd) {}
    ~Fd() {
        if (fd_ >= 0)
            ::close(fd_);
    }
    Fd(const Fd&) = delete;
    Fd& operator=(const Fd&) = delete;
    int get() const { return fd_; }
    int release() {
        int fd = fd_;
        fd_ = -1;
        return fd;
    }

  private:
    int fd_;
};

// Copies one tree entry. Paths in messages are for people; the work is done relative to open
// directory descriptors so that nothing is followed through a link swapped in meanwhile.
class Copier {
  public:
    std::string error;
    // The top-level folder was made by this copy, so a failed copy may remove it whole.
    bool createdTopFolder = false;

    bool copyEntry(int srcDir,
                   const std::string& srcName,
                   const std::string& srcShown,
                   int dstDir,
                   const std::string& dstName,
                   const std::string& dstShown,
                   int depth) {
        struct stat st {};
        if (::fstatat(srcDir, srcName.c_str(), &st, AT_SYMLINK_NOFOLLOW) != 0)
            return fail(srcShown, errno);
        if (S_ISREG(st.st_mode))
            return copyFile(srcDir, srcName, srcShown, st, dstDir, dstName, dstShown);
        if (S_ISLNK(st.st_mode))
            return copyLink(srcDir, srcName, srcShown, dstDir, dstName, dstShown);
        if (S_ISDIR(st.st_mode))
            return copyFolder(srcDir, srcName, srcShown, st, dstDir, dstName, dstShown, depth);
        error = srcShown + ": not a regular file, folder or symbolic link; refused";
        return false;
    }

  private:
    bool fail(const std::string& shown, int code) {
        error = shown + ": " + std::strerror(code);
        return false;
    }

    bool copyLink(int srcDir,
                  const std::string& srcName,
                  const std::string& srcShown,
                  int dstDir,
                  const std::string& dstName,
                  const std::string& dstShown) {
        std::vector<char> target(256);
        for (;;) {
            ssize_t n = ::readlinkat(srcDir, srcName.c_str(), target.data(), target.size());
            if (n < 0)
                return fail(srcShown, errno);
            if (static_cast<size_t>(n) < target.size()) {
                target.resize(static_cast<size_t>(n));
                break;
            }
            target.resize(target.size() * 2);
        }
        std::string text(target.begin(), target.end());
        if (::symlinkat(text.c_str(), dstDir, dstName.c_str()) != 0)
            return fail(dstShown, errno);
        return true;
    }

    bool copyFile(int srcDir,
                  const std::string& srcName,
                  const std::string& srcShown,
                  const struct stat& seen,
                  int dstDir,
                  const std::string& dstName,
                  const std::string& dstShown) {
        // O_NONBLOCK: should a FIFO have been swapped in after the lstat, opening must not wait.
        Fd src(::openat(srcDir, srcName.c_str(),
                        O_RDONLY | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC | O_NOCTTY));
        if (src.get() < 0)
            return fail(srcShown, errno);
        struct stat st {};
        if (::fstat(src.get(), &st) != 0)
            return fail(srcShown, errno);
        if (!S_ISREG(st.st_mode) || st.st_ino != seen.st_ino || st.st_dev != seen.st_dev) {
            error = srcShown + ": changed while being copied; refused";
            return false;
        }
        // O_EXCL|O_NOFOLLOW: fails on anything lying there, a dangling link included.
        Fd dst(::openat(dstDir, dstName.c_str(),
                        O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC | O_NOCTTY, 0600));
        if (dst.get() < 0)
            return fail(dstShown, errno);

        bool ok = kernelCopy(src.get(), dst.get(), st.st_size, srcShown, dstShown) &&
                  finishAttributes(dst.get(), st, dstShown);
        if (!ok)
            ::unlinkat(dstDir, dstName.c_str(), 0);
        return ok;
    }

    bool finishAttributes(int fd, const struct stat& st, const std::string& shown) {
        if (::fchmod(fd, st.st_mode & 07777 & ~static_cast<mode_t>(S_ISUID | S_ISGID)) != 0)
            return fail(shown, errno);
        struct timespec times[2] = {st.st_atim, st.st_mtim};
        ::futimens(fd, times);  // dates are a courtesy; a failure does not spoil the copy
        return true;
    }

    // Reflink, else copy_file_range, else sendfile: the data never passes through user space.
    bool kernelCopy(int src,
                    int dst,
                    off_t size,
                    const std::string& srcShown,
                    const std::string& dstShown) {
        if (size > 0 && ::ioctl(dst, FICLONE, src) == 0)
            return true;
        bool useSendfile = false;
        for (;;) {
            ssize_t n = ::copy_file_range(src, nullptr, dst, nullptr, 1 << 30, 0);
            if (n > 0)
                continue;
            if (n == 0)
                return true;
            if (errno == EINTR)
                continue;
            if (errno == EXDEV || errno == ENOSYS || errno == EINVAL || errno == EOPNOTSUPP ||
                errno == EBADF || errno == EPERM) {
                useSendfile = true;
                break;
            }
            return fail(dstShown, errno);
        }
        if (useSendfile) {
            // copy_file_range may have moved part of the data before refusing; carry on from
            // the current offsets.
            for (;;) {
                ssize_t n = ::sendfile(dst, src, nullptr, 1 << 30);
                if (n > 0)
                    continue;
                if (n == 0)
                    return true;
                if (errno == EINTR)
                    continue;
                return fail(srcShown + " -> " + dstShown, errno);
            }
        }
        return true;
    }

    bool copyFolder(int srcDir,
                    const std::string& srcName,
                    const std::string& srcShown,
                    const struct stat& seen,
                    int dstDir,
                    const std::string& dstName,
                    const std::string& dstShown,
                    int depth) {
        if (depth >= kMaxDepth) {
            error = srcShown + ": folders nested too deeply";
            return false;
        }
        Fd src(::openat(srcDir, srcName.c_str(), O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC));
        if (src.get() < 0)
            return fail(srcShown, errno);
        struct stat st {};
        if (::fstat(src.get(), &st) != 0)
            return fail(srcShown, errno);
        if (st.st_ino != seen.st_ino || st.st_dev != seen.st_dev) {
            error = srcShown + ": changed while being copied; refused";
            return false;
        }
        // mkdir fails on anything already there; the folder stays private until complete.
        if (::mkdirat(dstDir, dstName.c_str(), 0700) != 0)
            return fail(dstShown, errno);
        if (depth == 0)
            createdTopFolder = true;
        Fd dst(::openat(dstDir, dstName.c_str(), O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC));
        if (dst.get() < 0)
            return fail(dstShown, errno);

        DIR* listing = ::fdopendir(::dup(src.get()));
        if (!listing)
            return fail(srcShown, errno);
        std::vector<std::string> names;
        errno = 0;
        while (struct dirent* entry = ::readdir(listing)) {
            std::string name = entry->d_name;
            if (name != "." && name != "..")
                names.push_back(name);
        }
        int listError = errno;
        ::closedir(listing);
        if (listError != 0)
            return fail(srcShown, listError);

        for (const auto& name : names) {
            if (!copyEntry(src.get(), name, srcShown + "/" + name, dst.get(), name,
                           dstShown + "/" + name, depth + 1))
                return false;
        }
        if (::fchmod(dst.get(), st.st_mode & 07777) != 0)
            return fail(dstShown, errno);
        struct timespec times[2] = {st.st_atim, st.st_mtim};
        ::futimens(dst.get(), times);
        return true;
    }
};

std::string parentOf(const std::string& path) {
    size_t slash = path.rfind('/');
    if (slash == std::string::npos)
        return ".";
    if (slash == 0)
        return "/";
    return path.substr(0, slash);
}

std::string nameOf(std::string path) {
    while (path.size() > 1 && path.back() == '/')
        path.pop_back();
    size_t slash = path.rfind('/');
    return slash == std::string::npos ? path : path.substr(slash + 1);
}

}  // namespace

FileManager& FileManager::defaultManager() {
    static FileManager manager;
    return manager;
}

std::optional<std::string> FileManager::containerURLForSecurityApplicationGroupIdentifier(
    const std::string& groupIdentifier) {
    if (!Paths::isPlainName(groupIdentifier)) {
        Log::write("FileManager: group identifier [" + groupIdentifier +
                   "] cannot name a container.");
        return std::nullopt;
    }
    std::string container = Paths::xdgDirectory("XDG_DATA_HOME", ".local/share") +
                            "/group-containers/" + groupIdentifier;
    std::string error;
    if (!Paths::makeDirectories(container, 0700, error)) {
        Log::write("FileManager: cannot create the container of group [" + groupIdentifier +
                   "]: " + error);
        return std::nullopt;
    }
    return container;
}

bool FileManager::copyItemAtPath(const std::string& source,
                                 const std::string& destinationPath,
                                 std::string* error) {
    std::string reason;
    bool ok = false;
    std::string destination = destinationPath;
    while (destination.size() > 1 && destination.back() == '/')
        destination.pop_back();
    std::string dstName = nameOf(destination);
    if (source.empty() || destination.empty() || dstName == "/" || dstName == "." ||
        dstName == "..") {
        reason = "cannot copy [" + source + "] to [" + destination + "]: not a usable path";
    } else {
        Fd dstParent(::open(parentOf(destination).c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
        if (dstParent.get() < 0) {
            reason = parentOf(destination) + ": " + std::strerror(errno);
        } else {
            Copier copier;
            std::string srcName = source;
            while (srcName.size() > 1 && srcName.back() == '/')
                srcName.pop_back();
            ok = copier.copyEntry(AT_FDCWD, srcName, source, dstParent.get(), dstName, destination,
                                  0);
            if (!ok) {
                reason = copier.error;
                // A folder copied in part is ours alone (mkdir created it): remove it whole.
                if (copier.createdTopFolder) {
                    std::error_code ignored;
                    std::filesystem::remove_all(destination, ignored);
                }
            }
        }
    }
    if (!ok) {
        Log::write("FileManager: copy of [" + source + "] to [" + destination +
                   "] failed: " + reason);
        if (error)
            *error = reason;
    }
    return ok;
}

}  // namespace platform
