#include "platform/core/FileManager.h"

#include <fcntl.h>
#include <sys/stat.h>

#include <algorithm>
#include <cerrno>
#include <cstring>

#include "platform/core/CopyEnds.h"
#include "platform/core/CopyStaging.h"
#include "platform/core/DiskFullRetry.h"
#include "platform/core/FileDescriptor.h"
#include "platform/core/GroupContainer.h"
#include "platform/core/InterruptedCopySweep.h"
#include "platform/core/ItemCopier.h"
#include "platform/core/Log.h"
#include "platform/core/PathText.h"
#include "platform/core/Paths.h"
#include "platform/core/StallWatch.h"

namespace platform {

namespace {

const Logger kLog("FileManager: ");

constexpr off_t kCheckNameBeforeCopyingFrom = 1 << 20;

// One copy of a top-level item into an open folder, from the first attempt to its final name.
class TopLevelCopy {
  public:
    TopLevelCopy(const std::string& source,
                 const std::string& destination,
                 const CopyOptions& options)
        : source_(source),
          destination_(destination),
          folder_(PathText::folderOf(destination)),
          name_(PathText::lastPathComponent(destination)),
          options_(options) {}

    CopyResult run(std::string& reason) {
        if (source_.empty() || !Paths::isPlainName(name_)) {
            reason = "not a usable path";
            return CopyResult::Failed;
        }
        target_ = FileDescriptor(::open(folder_.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
        struct stat status {};
        if (!target_.isOpen()) {
            reason = folder_ + ": " + std::strerror(errno);
            return CopyResult::Failed;
        }
        if (::lstat(source_.c_str(), &seen_) != 0) {
            reason = source_ + ": " + std::strerror(errno);
            return CopyResult::Failed;
        }
        // Checked first so that a taken name costs no copy (the final step checks again); a small
        // file costs less to copy than a system call per file.
        if ((!S_ISREG(seen_.st_mode) || seen_.st_size >= kCheckNameBeforeCopyingFrom) &&
            ::fstatat(target_.get(), name_.c_str(), &status, AT_SYMLINK_NOFOLLOW) == 0) {
            reason = destination_ + ": " + std::strerror(EEXIST);
            return CopyResult::Failed;
        }
        ItemCopier::Settings settings{
            options_.maxFileBytes, options_.watch, {}, PathText::folderOf(source_)};
        // Only a folder can hold the folders where copies are made.
        if (S_ISDIR(seen_.st_mode)) {
            auto& leftOut = settings.leftOut;
            if (::fstat(target_.get(), &status) == 0)
                leftOut.push_back({status.st_dev, status.st_ino});
            if (::stat(CopyStaging::workFolderFor(folder_).c_str(), &status) == 0)
                leftOut.push_back({status.st_dev, status.st_ino});
            const FileIdentity identity{seen_.st_dev, seen_.st_ino};
            if (std::find(leftOut.begin(), leftOut.end(), identity) != leftOut.end()) {
                reason = source_ + ": copies are made there; a copy of it would copy itself";
                return CopyResult::Refused;
            }
        }
        return withDiskFullRetry(settings, reason);
    }

  private:
    CopyResult withDiskFullRetry(const ItemCopier::Settings& settings, std::string& reason) {
        DiskFullRetry& retry = DiskFullRetry::shared();
        for (int attempt = 0; attempt < 2; ++attempt) {
            std::unique_ptr<DiskFullRetry::RetryTurn> retryTurn;
            if (attempt > 0) {
                retryTurn = retry.retryTurn(options_.watch);
                if (!DiskFullRetry::mayFit(source_, folder_))
                    break;
            }
            const auto writing = retry.beginWriting(options_.watch);
            ItemCopier copier(settings);
            if (place(copier, reason))
                return CopyResult::Copied;
            if (reason.empty())
                reason = copier.error();
            if (copier.tooLarge())
                return CopyResult::TooLarge;
            if (!copier.noSpace() || gaveUp())
                break;
            reason.clear();
        }
        return CopyResult::Failed;
    }

    // Builds the copy out of sight and gives it its name.
    bool place(ItemCopier& copier, std::string& reason) {
        const CopyEnd from{AT_FDCWD, source_, source_};
        if (S_ISREG(seen_.st_mode)) {
            FileDescriptor unnamed(
                CopyStaging::openUnnamedFile(target_.get(), ItemCopier::modeFor(seen_)));
            if (unnamed.isOpen()) {
                if (!copier.copyFileInto(from, seen_, unnamed.get(), destination_) || !settle())
                    return false;
                if (CopyStaging::linkUnnamedFile(unnamed.get(), target_.get(), name_))
                    return true;
                reason = destination_ + ": " + std::strerror(errno);
                return false;
            }
        }
        // A link is made in its place whole, in one step.
        if (S_ISLNK(seen_.st_mode))
            return copier.copyEntry({from, {target_.get(), name_, destination_}});
        const std::unique_ptr<CopyStaging> staging =
            CopyStaging::enter(folder_, target_.get(), reason);
        if (!staging)
            return false;
        copier.leaveOut(staging->workFolder());
        if (!copier.copyEntry({from, {staging->folder(), name_, destination_}}) || !settle())
            return false;
        std::string why;
        if (staging->moveIntoPlace(name_, target_.get(), why))
            return true;
        reason = destination_ + ": " + why;
        return false;
    }

    bool settle() const { return !options_.watch || options_.watch->settle(); }
    bool gaveUp() const { return options_.watch && options_.watch->hasGivenUp(); }

    const std::string source_, destination_, folder_, name_;
    const CopyOptions& options_;
    FileDescriptor target_;
    struct stat seen_ {};
};

}  // namespace

FileManager& FileManager::defaultManager() {
    static FileManager manager;
    return manager;
}

std::optional<std::string> FileManager::containerURLForSecurityApplicationGroupIdentifier(
    const std::string& groupIdentifier) {
    return GroupContainer::pathFor(groupIdentifier);
}

CopyResult FileManager::copyItemAtPath(const std::string& source,
                                       const std::string& destination,
                                       const CopyOptions& options,
                                       std::string* error) {
    std::string reason;
    const CopyResult result = TopLevelCopy(PathText::withoutTrailingSlashes(source),
                                           PathText::withoutTrailingSlashes(destination), options)
                                  .run(reason);
    // A copy given up is reported by whoever watched it, once.
    if (result == CopyResult::Copied || (options.watch && options.watch->hasGivenUp()))
        return result;
    kLog.write("copy of [" + source + "] to [" + destination + "] " +
               (result == CopyResult::Refused ? "refused: " : "failed: ") + reason);
    if (error)
        *error = reason;
    return result;
}

bool FileManager::copyItemAtPath(const std::string& source,
                                 const std::string& destination,
                                 std::string* error) {
    return copyItemAtPath(source, destination, CopyOptions(), error) == CopyResult::Copied;
}

void FileManager::removeInterruptedCopies(const std::string& destinationFolder) {
    InterruptedCopySweep::run(destinationFolder);
}

}  // namespace platform
