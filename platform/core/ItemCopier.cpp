#include "platform/core/ItemCopier.h"

#include <dirent.h>
#include <fcntl.h>
#include <linux/fs.h>
#include <sys/ioctl.h>
#include <sys/sendfile.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <fstream>
#include <thread>

#include "platform/core/FileDescriptor.h"
#include "platform/core/LinkTarget.h"
#include "platform/core/Log.h"
#include "platform/core/PathText.h"
#include "platform/core/StallWatch.h"

namespace platform {

namespace {

const Logger kLog("FileManager: ");

// Folder nesting deeper than this is refused rather than running out of descriptors.
constexpr int kMaxDepth = 128;
// Data moves in slices of this, each one progress for the watch: a source that still delivers
// this much in the watch's quiet limit is not taken for a stalled one.
constexpr size_t kSlice = 1 << 20;
constexpr off_t kReflinkFrom = 64 << 10;
// Pauses before the attempts at copying a file that changed meanwhile: a writer saving it gets
// time to finish; one that never stops fails the copy within about a second.
constexpr std::chrono::milliseconds kPausesBeforeAttempts[] = {
    std::chrono::milliseconds(0), std::chrono::milliseconds(20), std::chrono::milliseconds(80),
    std::chrono::milliseconds(250), std::chrono::milliseconds(600)};

// Errors of a transfer that concern where the data goes rather than where it comes from.
bool isDestinationError(int code) {
    return code == ENOSPC || code == EDQUOT || code == EFBIG || code == EROFS;
}

int64_t nanoseconds(const struct timespec& time) {
    return int64_t(time.tv_sec) * 1000000000 + time.tv_nsec;
}

// The same version of a file: any write changes its size or its times.
bool sameVersion(const struct stat& before, const struct stat& after) {
    return before.st_size == after.st_size &&
           nanoseconds(before.st_mtim) == nanoseconds(after.st_mtim) &&
           nanoseconds(before.st_ctim) == nanoseconds(after.st_ctim);
}

// A write sets a file's times when it starts, from a clock that ticks coarsely: a write that
// began just before |status| was taken may still be going on, and a later one in the same tick
// leaves the times as they are, so neither would show once the copy is made. A file changed in
// the last few milliseconds is therefore left alone until that is over (a writer paused longer in
// the middle of one write still goes unseen; most write in many calls, and each one shows).
void waitOutARecentChange(const struct stat& status) {
    static const int64_t quiet = [] {
        struct timespec tick {};
        ::clock_getres(CLOCK_REALTIME_COARSE, &tick);
        return std::max<int64_t>(2 * nanoseconds(tick), 20000000);
    }();
    struct timespec now {};
    ::clock_gettime(CLOCK_REALTIME, &now);
    const int64_t since = nanoseconds(now) - nanoseconds(status.st_ctim);
    if (since >= 0 && since < quiet)
        std::this_thread::sleep_for(std::chrono::nanoseconds(quiet - since));
}

// The file creation mask, read once (it is not asked without being changed); all bits when
// unknown, so that every copy sets its mode itself.
mode_t creationMask() {
    static const mode_t mask = [] {
        std::ifstream status("/proc/self/status");
        for (std::string line; std::getline(status, line);) {
            if (line.rfind("Umask:", 0) == 0)
                return static_cast<mode_t>(std::strtoul(line.c_str() + 6, nullptr, 8));
        }
        return static_cast<mode_t>(07777);
    }();
    return mask;
}

FileIdentity identityOf(const struct stat& status) {
    return {status.st_dev, status.st_ino};
}

bool readNames(int folder, std::vector<std::string>& names, int& code) {
    DIR* listing = ::fdopendir(::dup(folder));
    if (!listing) {
        code = errno;
        return false;
    }
    errno = 0;
    while (const struct dirent* entry = ::readdir(listing)) {
        const std::string name = entry->d_name;
        if (name != "." && name != "..")
            names.push_back(name);
    }
    code = errno;
    ::closedir(listing);
    return code == 0;
}

}  // namespace

ItemCopier::ItemCopier(Settings settings) : settings_(std::move(settings)) {}

bool ItemCopier::copyEntry(const CopyEnds& ends) {
    return copyEntryAt(ends, 0, "");
}

bool ItemCopier::copyFileInto(const CopyEnd& source,
                              const struct stat& seen,
                              int destination,
                              const std::string& destinationShown) {
    return copyFile({source, {destination, "", destinationShown}}, seen, 0, destination);
}

bool ItemCopier::copyEntryAt(const CopyEnds& ends, int depth, const std::string& insideTop) {
    if (!carryOn())
        return false;
    const CopyEnd& source = ends.source;
    struct stat status {};
    if (::fstatat(source.folder, source.name.c_str(), &status, AT_SYMLINK_NOFOLLOW) != 0)
        return unreadable(source, std::strerror(errno), depth);
    if (S_ISREG(status.st_mode))
        return copyFile(ends, status, depth, -1);
    if (S_ISLNK(status.st_mode))
        return copyLink(ends, depth, insideTop);
    if (S_ISDIR(status.st_mode)) {
        const auto& leftOut = settings_.leftOut;
        if (depth > 0 &&
            std::find(leftOut.begin(), leftOut.end(), identityOf(status)) != leftOut.end()) {
            // The copy would otherwise copy itself, or another copy in progress.
            kLog.write(source.shown + " is where copies are made; left out of the copy.");
            return true;
        }
        return copyFolder(ends, status, depth, insideTop);
    }
    if (depth > 0) {
        // A pipe, socket or device has no contents to copy; the folder goes without it.
        kLog.write(source.shown +
                   " is not a regular file, folder or symbolic link; left out of the copy.");
        return true;
    }
    error_ = source.shown + ": not a regular file, folder or symbolic link; refused";
    return false;
}

bool ItemCopier::copyFile(const CopyEnds& ends,
                          const struct stat& seen,
                          int depth,
                          int openDestination) {
    const CopyEnd& source = ends.source;
    const CopyEnd& destination = ends.destination;
    // O_NONBLOCK: should a FIFO have been swapped in after the lstat, opening must not wait.
    FileDescriptor from(::openat(source.folder, source.name.c_str(),
                                 O_RDONLY | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC | O_NOCTTY));
    if (!from.isOpen())
        return unreadable(source, std::strerror(errno), depth);
    struct stat status {};
    if (::fstat(from.get(), &status) != 0)
        return unreadable(source, std::strerror(errno), depth);
    if (!S_ISREG(status.st_mode) || !(identityOf(status) == identityOf(seen)))
        return unreadable(source, "replaced while being copied", depth);

    FileDescriptor created;
    int to = openDestination;
    if (to < 0) {
        // O_EXCL|O_NOFOLLOW: fails on anything lying there, a dangling link included.
        created = FileDescriptor(::openat(
            destination.folder, destination.name.c_str(),
            O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC | O_NOCTTY, modeFor(seen)));
        if (!created.isOpen())
            return fail(destination.shown, errno);
        to = created.get();
    }
    const Data outcome = copyData(from.get(), status, modeFor(seen), to, ends,
                                  depth == 0 ? settings_.maxFileBytes : -1);
    if (outcome != Data::Whole && created.isOpen())
        ::unlinkat(destination.folder, destination.name.c_str(), 0);
    switch (outcome) {
        case Data::Whole:
            return true;
        case Data::ShortRead:
        case Data::SourceFailed:
            return unreadable(source, error_, depth);
        case Data::DestinationFailed:
        case Data::TooLarge:
        case Data::GaveUp:
            break;
    }
    return false;
}

mode_t ItemCopier::modeFor(const struct stat& source) {
    return source.st_mode & 07777 & ~static_cast<mode_t>(S_ISUID | S_ISGID);
}

ItemCopier::Data ItemCopier::copyData(int source,
                                      const struct stat& opened,
                                      mode_t createdWith,
                                      int destination,
                                      const CopyEnds& ends,
                                      int64_t limit) {
    struct stat before = opened;
    for (const auto pause : kPausesBeforeAttempts) {
        if (pause.count() > 0) {
            std::this_thread::sleep_for(pause);
            if (::ftruncate(destination, 0) != 0)
                return cannotWrite(ends.destination.shown, errno);
            if (::fstat(source, &before) != 0) {
                error_ = std::strerror(errno);
                return Data::SourceFailed;
            }
        }
        if (limit >= 0 && before.st_size > limit) {
            tooLarge_ = true;
            error_ =
                ends.source.shown + ": larger than " + std::to_string(limit) + " bytes; not copied";
            return Data::TooLarge;
        }
        waitOutARecentChange(before);
        const Data outcome = transfer(source, destination, before, ends);
        if (outcome != Data::Whole && outcome != Data::ShortRead)
            return outcome;
        struct stat after {};
        if (::fstat(source, &after) != 0) {
            error_ = std::strerror(errno);
            return Data::SourceFailed;
        }
        if (outcome == Data::Whole && sameVersion(before, after)) {
            // Made with the mode it was seen with, less what the creation mask took away.
            const mode_t mode = modeFor(after);
            if ((mode != createdWith || (mode & creationMask()) != 0) &&
                ::fchmod(destination, mode) != 0)
                return cannotWrite(ends.destination.shown, errno);
            const struct timespec times[2] = {after.st_atim, after.st_mtim};
            ::futimens(destination, times);  // dates are a courtesy; a failure does not spoil it
            return Data::Whole;
        }
    }
    error_ = "changed during each of " + std::to_string(std::size(kPausesBeforeAttempts)) +
             " attempts to copy it";
    return Data::ShortRead;
}

ItemCopier::Data ItemCopier::transfer(int source,
                                      int destination,
                                      const struct stat& status,
                                      const CopyEnds& ends) {
    const off_t size = status.st_size;
    if (size == 0)
        return Data::Whole;
    // Reflink: the blocks are shared at once where the file system can. Not tried for a small
    // file, which it would save little, while each refusal costs a system call.
    if (size >= kReflinkFrom && ::ioctl(destination, FICLONE, source) == 0)
        return Data::Whole;
    // Fewer blocks than bytes: holes, which are walked around so that they stay holes.
    bool sparse = int64_t(status.st_blocks) * 512 < int64_t(size);
    for (off_t at = 0; at < size;) {
        off_t dataStart = at;
        off_t dataEnd = size;
        if (sparse) {
            dataStart = ::lseek(source, at, SEEK_DATA);
            if (dataStart < 0 && errno == ENXIO)
                break;  // holes to the end
            if (dataStart < 0) {
                sparse = false;  // a file system that cannot tell
                continue;
            }
            dataEnd = std::min<off_t>(size, ::lseek(source, dataStart, SEEK_HOLE));
            if (dataEnd <= dataStart)
                dataEnd = size;
        }
        const Data copied = copyRange(source, destination, dataStart, dataEnd, ends);
        if (copied != Data::Whole)
            return copied;
        at = dataEnd;
    }
    // A hole at the end has no data to copy; the size makes it.
    if (sparse && ::ftruncate(destination, size) != 0)
        return cannotWrite(ends.destination.shown, errno);
    return Data::Whole;
}

ItemCopier::Data ItemCopier::copyRange(int source,
                                       int destination,
                                       off_t from,
                                       off_t to,
                                       const CopyEnds& ends) {
    off_t in = from;
    off_t out = from;
    bool positioned = false;
    while (in < to) {
        const size_t slice = static_cast<size_t>(std::min<off_t>(to - in, kSlice));
        ssize_t moved = -1;
        switch (method_) {
            case Method::CopyFileRange:
                moved = ::copy_file_range(source, &in, destination, &out, slice, 0);
                if (moved < 0 && (errno == EXDEV || errno == ENOSYS || errno == EINVAL ||
                                  errno == EOPNOTSUPP || errno == EBADF || errno == EPERM)) {
                    method_ = Method::Sendfile;
                    continue;
                }
                break;
            case Method::Sendfile:
                // sendfile writes at the file's own position.
                if (!positioned && ::lseek(destination, out, SEEK_SET) < 0)
                    return cannotWrite(ends.destination.shown, errno);
                positioned = true;
                moved = ::sendfile(destination, source, &in, slice);
                if (moved > 0)
                    out += moved;
                if (moved < 0 && (errno == EINVAL || errno == ENOSYS)) {
                    method_ = Method::ReadWrite;
                    continue;
                }
                break;
            case Method::ReadWrite:
                buffer_.resize(kSlice);
                moved = ::pread(source, buffer_.data(), slice, in);
                for (ssize_t written = 0; moved > 0 && written < moved;) {
                    const ssize_t n =
                        ::pwrite(destination, buffer_.data() + written, moved - written, out);
                    if (n < 0 && errno == EINTR)
                        continue;
                    if (n < 0)
                        return cannotWrite(ends.destination.shown, errno);
                    written += n;
                    out += n;
                }
                if (moved > 0)
                    in += moved;
                break;
        }
        if (moved < 0 && errno == EINTR)
            continue;
        if (moved < 0) {
            const int code = errno;
            if (isDestinationError(code))
                return cannotWrite(ends.destination.shown, code);
            error_ = std::strerror(code);
            return Data::SourceFailed;
        }
        if (moved == 0) {
            error_ = "ended before its size";
            return Data::ShortRead;
        }
        if (!carryOn())
            return Data::GaveUp;
    }
    return Data::Whole;
}

bool ItemCopier::copyLink(const CopyEnds& ends, int depth, const std::string& insideTop) {
    const CopyEnd& source = ends.source;
    std::vector<char> target(256);
    for (;;) {
        const ssize_t n =
            ::readlinkat(source.folder, source.name.c_str(), target.data(), target.size());
        if (n < 0)
            return unreadable(source, std::strerror(errno), depth);
        if (static_cast<size_t>(n) < target.size()) {
            target.resize(static_cast<size_t>(n));
            break;
        }
        target.resize(target.size() * 2);
    }
    const std::string relocated = LinkTarget::relocated(std::string(target.begin(), target.end()),
                                                        physicalFolder(insideTop), depth - 1);
    // At the top the link is made in its final place, whole in one step.
    if (depth == 0 && !settle())
        return false;
    if (::symlinkat(relocated.c_str(), ends.destination.folder, ends.destination.name.c_str()) != 0)
        return fail(ends.destination.shown, errno);
    return true;
}

bool ItemCopier::copyFolder(const CopyEnds& ends,
                            const struct stat& seen,
                            int depth,
                            const std::string& insideTop) {
    const CopyEnd& source = ends.source;
    const CopyEnd& destination = ends.destination;
    if (depth >= kMaxDepth) {
        error_ = source.shown + ": folders nested too deeply";
        return false;
    }
    FileDescriptor from(::openat(source.folder, source.name.c_str(),
                                 O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC));
    if (!from.isOpen())
        return unreadable(source, std::strerror(errno), depth);
    struct stat status {};
    if (::fstat(from.get(), &status) != 0)
        return unreadable(source, std::strerror(errno), depth);
    if (!(identityOf(status) == identityOf(seen)))
        return unreadable(source, "replaced while being copied", depth);
    // Listed before anything is made, so that an unreadable folder leaves nothing.
    std::vector<std::string> names;
    int code = 0;
    if (!readNames(from.get(), names, code))
        return unreadable(source, std::strerror(code), depth);

    // The folder stays private until complete.
    if (::mkdirat(destination.folder, destination.name.c_str(), 0700) != 0)
        return fail(destination.shown, errno);
    FileDescriptor to(::openat(destination.folder, destination.name.c_str(),
                               O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC));
    if (!to.isOpen())
        return fail(destination.shown, errno);
    // Where its entries lie, below the folder that holds the top of the copy.
    const std::string inside =
        depth == 0 ? PathText::lastPathComponent(source.name) : insideTop + "/" + source.name;
    for (const std::string& name : names) {
        if (!copyEntryAt({source.child(from.get(), name), destination.child(to.get(), name)},
                         depth + 1, inside))
            return false;
    }
    if (::fchmod(to.get(), status.st_mode & 07777) != 0)
        return fail(destination.shown, errno);
    const struct timespec times[2] = {status.st_atim, status.st_mtim};
    ::futimens(to.get(), times);
    return true;
}

bool ItemCopier::unreadable(const CopyEnd& source, const std::string& why, int depth) {
    if (depth == 0) {
        error_ = source.shown + ": " + why;
        return false;
    }
    kLog.write(source.shown + " cannot be read (" + why + "); left out of the copy.");
    error_.clear();
    return true;
}

bool ItemCopier::fail(const std::string& shown, int code) {
    error_ = shown + ": " + std::strerror(code);
    noSpace_ = noSpace_ || code == ENOSPC || code == EDQUOT;
    return false;
}

ItemCopier::Data ItemCopier::cannotWrite(const std::string& shown, int code) {
    fail(shown, code);
    return Data::DestinationFailed;
}

bool ItemCopier::carryOn() {
    if (!settings_.watch)
        return true;
    settings_.watch->progress();
    if (!settings_.watch->hasGivenUp())
        return true;
    error_ = "given up";
    return false;
}

bool ItemCopier::settle() {
    if (!settings_.watch || settings_.watch->settle())
        return true;
    error_ = "given up";
    return false;
}

std::string ItemCopier::physicalFolder(const std::string& insideTop) {
    if (physicalSourceFolder_.empty()) {
        // Measured once, when the first link needs it: most copies hold none.
        char* resolved = ::realpath(settings_.sourceFolder.c_str(), nullptr);
        physicalSourceFolder_ = resolved ? resolved : settings_.sourceFolder;
        std::free(resolved);
    }
    if (insideTop.empty())
        return physicalSourceFolder_;
    return (physicalSourceFolder_ == "/" ? "" : physicalSourceFolder_) + "/" + insideTop;
}

}  // namespace platform
