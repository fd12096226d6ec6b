#include "platform/core/CopyStaging.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <atomic>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <filesystem>

#include "platform/core/CopyEnds.h"
#include "platform/core/FileDescriptor.h"
#include "platform/core/PathText.h"

namespace platform {

namespace {

std::string newEntryName() {
    static std::atomic<unsigned> counter{0};
    return std::to_string(::getpid()) + "-" + std::to_string(counter++);
}

// Creates the entry and locks it while holding the work folder shared, so that a sweep (which
// holds it exclusively) never sees an entry that is made but not yet locked.
FileDescriptor makeLockedEntry(int workFolder, std::string& name, std::string& error) {
    ::flock(workFolder, LOCK_SH);
    FileDescriptor entry;
    for (int tries = 0; tries < 100 && !entry.isOpen(); ++tries) {
        name = newEntryName();
        if (::mkdirat(workFolder, name.c_str(), 0700) != 0) {
            if (errno == EEXIST)
                continue;  // left by an earlier process with the same id
            error = std::strerror(errno);
            break;
        }
        entry = FileDescriptor(
            ::openat(workFolder, name.c_str(), O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC));
        if (!entry.isOpen())
            error = std::strerror(errno);
        // Where locks are not to be had (some network file systems) the sweep cannot take one
        // either, so it leaves the entry alone.
        else
            ::flock(entry.get(), LOCK_EX | LOCK_NB);
    }
    ::flock(workFolder, LOCK_UN);
    return entry;
}

}  // namespace

std::string CopyStaging::workFolderFor(const std::string& destinationFolder) {
    const std::string parent = PathText::folderOf(destinationFolder);
    return (parent == "/" ? "" : parent) + "/" + kWorkFolderName;
}

int CopyStaging::openUnnamedFile(int folder, unsigned mode) {
    return ::openat(folder, ".", O_TMPFILE | O_WRONLY | O_CLOEXEC, mode);
}

bool CopyStaging::linkUnnamedFile(int file, int folder, const std::string& name) {
    const std::string self = "/proc/self/fd/" + std::to_string(file);
    if (::linkat(AT_FDCWD, self.c_str(), folder, name.c_str(), AT_SYMLINK_FOLLOW) == 0)
        return true;
    // Without /proc, the descriptor itself (which needs privileges on older kernels).
    return errno == ENOENT && ::linkat(file, "", folder, name.c_str(), AT_EMPTY_PATH) == 0;
}

std::unique_ptr<CopyStaging> CopyStaging::enter(const std::string& destinationFolder,
                                                int destination,
                                                std::string& error) {
    const std::string path = workFolderFor(destinationFolder);
    if (::mkdir(path.c_str(), 0700) != 0 && errno != EEXIST) {
        error = path + ": " + std::strerror(errno);
        return nullptr;
    }
    FileDescriptor workFolder(
        ::open(path.c_str(), O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC));
    struct stat work {
    }, target{};
    if (!workFolder.isOpen() || ::fstat(workFolder.get(), &work) != 0 ||
        ::fstat(destination, &target) != 0) {
        error = path + ": " + std::strerror(errno);
        return nullptr;
    }
    if (work.st_dev != target.st_dev) {
        error = path + ": not on the file system of " + destinationFolder +
                ", so a copy built there cannot be moved into place";
        return nullptr;
    }
    std::string entryName;
    FileDescriptor entry = makeLockedEntry(workFolder.get(), entryName, error);
    if (!entry.isOpen()) {
        error = path + ": " + error;
        return nullptr;
    }
    return std::unique_ptr<CopyStaging>(new CopyStaging(path + "/" + entryName, entry.release(),
                                                        FileIdentity{work.st_dev, work.st_ino}));
}

CopyStaging::CopyStaging(std::string entryPath, int entry, FileIdentity workFolder)
    : entryPath_(std::move(entryPath)), entry_(entry), workFolder_(workFolder) {}

CopyStaging::~CopyStaging() {
    // Removed while still locked, so that a sweep never races this removal.
    std::error_code ignored;
    std::filesystem::remove_all(entryPath_, ignored);
    ::close(entry_);
}

bool CopyStaging::moveIntoPlace(const std::string& name, int destination, std::string& error) {
    if (::renameat2(entry_, name.c_str(), destination, name.c_str(), RENAME_NOREPLACE) == 0)
        return true;
    if (errno != EINVAL && errno != ENOSYS) {
        error = std::strerror(errno);
        return false;
    }
    // A file system without no-replace renames: a hard link does not replace either.
    struct stat st {};
    if (::fstatat(entry_, name.c_str(), &st, AT_SYMLINK_NOFOLLOW) == 0 && !S_ISDIR(st.st_mode)) {
        if (::linkat(entry_, name.c_str(), destination, name.c_str(), 0) != 0) {
            error = std::strerror(errno);
            return false;
        }
        return true;
    }
    // A folder: test, then rename (the gap between the two is the best this file system allows).
    if (::fstatat(destination, name.c_str(), &st, AT_SYMLINK_NOFOLLOW) == 0) {
        error = std::strerror(EEXIST);
        return false;
    }
    if (::renameat(entry_, name.c_str(), destination, name.c_str()) != 0) {
        error = std::strerror(errno);
        return false;
    }
    return true;
}

}  // namespace platform
