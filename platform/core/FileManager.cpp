#include "platform/core/FileManager.h"

#include <dirent.h>
#include <fcntl.h>
#include <linux/fs.h>
#include <signal.h>
#include <sys/ioctl.h>
#include <sys/sendfile.h>
#include <sys/stat.h>
#include <sys/statvfs.h>
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <cerrno>
#include <condition_variable>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <mutex>
#include <set>
#include <vector>

#include "platform/core/Log.h"
#include "platform/core/PathRepair.h"
#include "platform/core/Paths.h"

namespace platform {

namespace {

const Logger kLog("FileManager: ");

// Folder nesting deeper than this is refused rather than running out of descriptors.
constexpr int kMaxDepth = 128;

// A copy in progress is named "<prefix><pid>-<n>" beside its destination; one whose process is
// gone was interrupted and is removed when the container is next looked up.
const char* const kPartialPrefix = ".parley-partial-";

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

// The copies this process is writing. Several copies of one share run at once, so one may find
// the disk full only because another's partial item holds the space, which goes when that copy
// fails. A copy that ran out of space therefore tries once more when no other is writing, one
// such retry at a time, if it fits in what is free by then.
class CopiesInProgress {
  public:
    static CopiesInProgress& shared() {
        static CopiesInProgress copies;
        return copies;
    }
    void begin() {
        std::lock_guard<std::mutex> lock(mutex_);
        ++writing_;
    }
    void end() {
        {
            std::lock_guard<std::mutex> lock(mutex_);
            --writing_;
        }
        changed_.notify_all();
    }
    // The turn to retry, taken once no copy is writing; held for the retry's length.
    std::unique_lock<std::mutex> retryTurn() {
        std::unique_lock<std::mutex> turn(retryMutex_);
        std::unique_lock<std::mutex> lock(mutex_);
        changed_.wait(lock, [this] { return writing_ == 0; });
        return turn;
    }

  private:
    std::mutex mutex_, retryMutex_;
    std::condition_variable changed_;
    int writing_ = 0;
};

// Whether |source| could fit in the free space of |folder|'s file system: a regular file by its
// size; a folder is not measured.
bool mayFit(const std::string& source, const std::string& folder) {
    struct stat st {};
    struct statvfs fs {};
    if (::stat(source.c_str(), &st) != 0 || !S_ISREG(st.st_mode) ||
        ::statvfs(folder.c_str(), &fs) != 0)
        return true;
    return uint64_t(st.st_size) <= uint64_t(fs.f_bavail) * fs.f_frsize;
}

// Copies one tree entry. Paths in messages are for people; the work is done relative to open
// directory descriptors so that nothing is followed through a link swapped in meanwhile.
class Copier {
  public:
    std::string error;
    // A regular file at the top larger than this when opened is not copied (-1: no limit).
    int64_t maxFileBytes = -1;
    bool tooLarge = false;
    // A write found the file system full.
    bool noSpace = false;

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
            return copyFile(srcDir, srcName, srcShown, st, dstDir, dstName, dstShown,
                            depth == 0 ? maxFileBytes : -1);
        if (S_ISLNK(st.st_mode))
            return copyLink(srcDir, srcName, srcShown, dstDir, dstName, dstShown);
        if (S_ISDIR(st.st_mode))
            return copyFolder(srcDir, srcName, srcShown, st, dstDir, dstName, dstShown, depth);
        if (depth > 0) {
            // A pipe, socket or device has no contents to copy; the folder goes without it.
            kLog.write("" + srcShown +
                       " is not a regular file, folder or symbolic link; left out of the copy.");
            return true;
        }
        error = srcShown + ": not a regular file, folder or symbolic link; refused";
        return false;
    }

  private:
    bool fail(const std::string& shown, int code) {
        error = shown + ": " + std::strerror(code);
        noSpace = noSpace || code == ENOSPC || code == EDQUOT;
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
                  const std::string& dstShown,
                  int64_t limit) {
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
        if (limit >= 0 && st.st_size > limit) {
            tooLarge = true;
            error = srcShown + ": larger than " + std::to_string(limit) + " bytes; not copied";
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
    // At most |size| bytes (the size when opened): what a writer appends meanwhile is left out.
    bool kernelCopy(int src,
                    int dst,
                    off_t size,
                    const std::string& srcShown,
                    const std::string& dstShown) {
        if (size > 0 && ::ioctl(dst, FICLONE, src) == 0)
            return ::ftruncate(dst, size) == 0 || fail(dstShown, errno);
        off_t left = size;
        auto chunk = [&left] { return static_cast<size_t>(std::min<off_t>(left, 1 << 30)); };
        bool useSendfile = false;
        while (left > 0) {
            ssize_t n = ::copy_file_range(src, nullptr, dst, nullptr, chunk(), 0);
            if (n > 0) {
                left -= n;
                continue;
            }
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
            while (left > 0) {
                ssize_t n = ::sendfile(dst, src, nullptr, chunk());
                if (n > 0) {
                    left -= n;
                    continue;
                }
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

std::string partialName() {
    static std::atomic<unsigned> counter{0};
    return kPartialPrefix + std::to_string(::getpid()) + "-" + std::to_string(counter++);
}

// Moves the finished copy |from| to |to| in |dir| unless something lies at |to| by then.
bool moveIntoPlace(int dir, const std::string& from, const std::string& to, std::string& error) {
    if (::renameat2(dir, from.c_str(), dir, to.c_str(), RENAME_NOREPLACE) == 0)
        return true;
    if (errno != EINVAL && errno != ENOSYS) {
        error = to + ": " + std::strerror(errno);
        return false;
    }
    // A file system without no-replace renames: a hard link does not replace either.
    struct stat st {};
    if (::fstatat(dir, from.c_str(), &st, AT_SYMLINK_NOFOLLOW) == 0 && !S_ISDIR(st.st_mode)) {
        if (::linkat(dir, from.c_str(), dir, to.c_str(), 0) != 0) {
            error = to + ": " + std::strerror(errno);
            return false;
        }
        ::unlinkat(dir, from.c_str(), 0);
        return true;
    }
    // A folder there: test, then rename (the gap between the two is the best this file system
    // allows).
    if (::fstatat(dir, to.c_str(), &st, AT_SYMLINK_NOFOLLOW) == 0) {
        error = to + ": " + std::strerror(EEXIST);
        return false;
    }
    if (::renameat(dir, from.c_str(), dir, to.c_str()) != 0) {
        error = to + ": " + std::strerror(errno);
        return false;
    }
    return true;
}

// Whether process |pid| still runs: it exists and has not exited (a killed process may linger as
// a zombie when nobody reaps it).
bool isRunning(long pid) {
    if (pid <= 0 || (::kill(static_cast<pid_t>(pid), 0) != 0 && errno == ESRCH))
        return false;
    std::ifstream stat("/proc/" + std::to_string(pid) + "/stat");
    const std::string text((std::istreambuf_iterator<char>(stat)), {});
    const size_t end = text.rfind(')');
    return end == std::string::npos || text.compare(end, 3, ") Z") != 0;
}

// Removes the copies in |folder| that a process which is gone left unfinished.
void removeInterruptedCopies(const std::string& folder) {
    std::error_code error;
    for (const auto& entry : std::filesystem::directory_iterator(folder, error)) {
        const std::string name = entry.path().filename().string();
        if (name.rfind(kPartialPrefix, 0) != 0)
            continue;
        const long pid = std::strtol(name.c_str() + std::strlen(kPartialPrefix), nullptr, 10);
        if (!isRunning(pid)) {
            std::error_code ignored;
            std::filesystem::remove_all(entry.path(), ignored);
            kLog.write("removed the interrupted copy " + entry.path().string() + ".");
        }
    }
}

// The length of the UTF-8 character at |at| (well formed, shortest form, no surrogates), or 0.
size_t utf8CharacterLength(const unsigned char* at, size_t left) {
    const unsigned char c = at[0];
    size_t length;
    unsigned lowest, first;
    if (c < 0x80)
        return 1;
    if ((c & 0xe0) == 0xc0) {
        length = 2, lowest = 0x80, first = c & 0x1f;
    } else if ((c & 0xf0) == 0xe0) {
        length = 3, lowest = 0x800, first = c & 0x0f;
    } else if ((c & 0xf8) == 0xf0) {
        length = 4, lowest = 0x10000, first = c & 0x07;
    } else {
        return 0;
    }
    if (left < length)
        return 0;
    unsigned value = first;
    for (size_t i = 1; i < length; ++i) {
        if ((at[i] & 0xc0) != 0x80)
            return 0;
        value = (value << 6) | (at[i] & 0x3f);
    }
    if (value < lowest || value > 0x10ffff || (value >= 0xd800 && value <= 0xdfff))
        return 0;
    return length;
}

}  // namespace

FileManager& FileManager::defaultManager() {
    static FileManager manager;
    return manager;
}

std::optional<std::string> FileManager::containerURLForSecurityApplicationGroupIdentifier(
    const std::string& groupIdentifier) {
    if (!Paths::isPlainName(groupIdentifier)) {
        kLog.write("group identifier [" + groupIdentifier + "] cannot name a container.");
        return std::nullopt;
    }
    std::string container = Paths::xdgDirectory("XDG_DATA_HOME", ".local/share") +
                            "/group-containers/" + groupIdentifier;
    // Anything but a folder where the group's folder belongs is kept aside (PathRepair).
    PathRepair::makeRoomFor(PathRepair::Kind::Directory, container);
    std::string error;
    if (!Paths::makeDirectories(container, 0700, error)) {
        kLog.write("cannot create the container of group [" + groupIdentifier + "]: " + error);
        return std::nullopt;
    }
    // Once per container and process: what an interrupted share left is cleared away.
    static std::mutex sweptMutex;
    static std::set<std::string> swept;
    std::lock_guard<std::mutex> lock(sweptMutex);
    if (swept.insert(container).second)
        removeInterruptedCopies(container);
    return container;
}

bool FileManager::copyItemAtPath(const std::string& source,
                                 const std::string& destination,
                                 std::string* error) {
    return copyItemAtPath(source, destination, -1, error) == CopyResult::Copied;
}

CopyResult FileManager::copyItemAtPath(const std::string& source,
                                       const std::string& destinationPath,
                                       int64_t maxFileBytes,
                                       std::string* error) {
    std::string reason;
    CopyResult result = CopyResult::Failed;
    std::string destination = destinationPath;
    while (destination.size() > 1 && destination.back() == '/')
        destination.pop_back();
    const std::string dstName = nameOf(destination);
    const std::string folder = parentOf(destination);
    struct stat existing {};
    if (source.empty() || destination.empty() || !Paths::isPlainName(dstName)) {
        reason = "cannot copy [" + source + "] to [" + destination + "]: not a usable path";
    } else {
        Fd dstParent(::open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
        if (dstParent.get() < 0) {
            reason = folder + ": " + std::strerror(errno);
        } else if (::fstatat(dstParent.get(), dstName.c_str(), &existing, AT_SYMLINK_NOFOLLOW) ==
                   0) {
            // Checked first so that a taken name costs no copy; the final move checks again.
            reason = destination + ": " + std::strerror(EEXIST);
        } else {
            std::string srcName = source;
            while (srcName.size() > 1 && srcName.back() == '/')
                srcName.pop_back();
            const std::string partial = partialName();
            CopiesInProgress& copies = CopiesInProgress::shared();
            bool noSpace = false;
            for (int attempt = 0; attempt < 2 && result == CopyResult::Failed; ++attempt) {
                std::unique_lock<std::mutex> retryTurn;
                if (attempt > 0) {
                    if (!noSpace)
                        break;
                    retryTurn = copies.retryTurn();
                    if (!mayFit(source, folder))
                        break;
                    reason.clear();
                }
                Copier copier;
                copier.maxFileBytes = maxFileBytes;
                copies.begin();
                const bool copied = copier.copyEntry(AT_FDCWD, srcName, source, dstParent.get(),
                                                     partial, destination, 0) &&
                                    moveIntoPlace(dstParent.get(), partial, dstName, reason);
                if (copied) {
                    result = CopyResult::Copied;
                } else {
                    if (reason.empty())
                        reason = copier.error;
                    if (copier.tooLarge)
                        result = CopyResult::TooLarge;
                    noSpace = copier.noSpace;
                    std::error_code ignored;
                    std::filesystem::remove_all(folder + "/" + partial, ignored);
                }
                copies.end();
            }
        }
    }
    if (result != CopyResult::Copied) {
        kLog.write("copy of [" + source + "] to [" + destination + "] failed: " + reason);
        if (error)
            *error = reason;
    }
    return result;
}

std::string FileManager::storableFileName(const std::string& name) {
    const auto* bytes = reinterpret_cast<const unsigned char*>(name.data());
    std::string out;
    bool escaped = false;
    for (size_t i = 0; i < name.size();) {
        const size_t length = utf8CharacterLength(bytes + i, name.size() - i);
        if (length > 0 && bytes[i] != '%') {
            out.append(name, i, length);
            i += length;
            continue;
        }
        char hex[4];
        std::snprintf(hex, sizeof hex, "%%%02X", bytes[i]);
        out += hex;
        escaped = escaped || length == 0;
        ++i;
    }
    // A name that is UTF-8 throughout is kept as it is, "%" included.
    return escaped ? out : name;
}

}  // namespace platform
