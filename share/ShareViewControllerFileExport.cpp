#include "share/ShareViewController.h"

#include <cstdio>

#include "platform/core/FileManager.h"
#include "platform/core/FileStatus.h"
#include "platform/core/MainQueue.h"
#include "share/ControllerSupport.h"
#include "share/FileExport.h"

// File export: each attachment measured, copied flat into the container or refused, and the
// lists written once the last one is accounted for.

namespace {

using controller_support::kLog;

// The container's path as a directory name, so that "/" + name gives one separator.
std::string withoutTrailingSlash(std::string path) {
    while (path.size() > 1 && path.back() == '/')
        path.pop_back();
    return path;
}

}  // namespace

// One attachment of a file export, on a worker thread. Measuring and copying happen outside the
// export's lock so that copies run in parallel; the appends, their log lines and the
// completeness test happen under it, so exactly one completion finishes the export.
//
// What is listed and what lies in the container agree:
// - a file is listed under the name it is copied to: its own name, or, when that name is not
//   UTF-8 (which the store cannot hold), the name with its stray bytes written as %XX;
// - the copy moves into place only when whole, so a killed share leaves no partial file under
//   that name, and a file that grew past the limit since it was measured is refused instead;
// - an attachment that cannot be copied at all is listed as refused with a name the host can
//   show: one that delivered no file URL as "attachment N" (N counting from 1; the URL itself
//   when a web link came instead), the root folder as "/", and any file when the group has no
//   shared container. Its size text is "?" when there is no size to tell.
// A copy that fails for another reason (the name already taken, no space, no permission) is
// listed at its destination all the same: the host finds whatever lies there.
void ShareViewController::exportFile(const std::shared_ptr<FileExport>& fileExport,
                                     size_t position,
                                     const std::optional<platform::Url>& item) {
    std::optional<std::string> container =
        platform::FileManager::defaultManager().containerURLForSecurityApplicationGroupIdentifier(
            m_shareFolderName);
    if (container)
        container = withoutTrailingSlash(*container);
    kLog.write("sharedFolder path[" + (container ? *container : std::string("(null)")) + "].");

    const std::string source = item && item->isFileURL() ? item->path() : std::string();
    const std::string name =
        platform::FileManager::storableFileName(item ? item->lastPathComponent() : std::string());
    bool accepted = false;
    std::string refusedName = name;
    std::string sizeText;
    std::string destination;
    if (source.empty()) {
        refusedName = item ? item->absoluteString() : "attachment " + std::to_string(position);
        sizeText = kUnknownSizeText;
        kLog.write("attachment delivered no file URL; listed as refused.");
    } else if (isInvalidFile(source)) {
        sizeText = invalidFileSizeString(source);
    } else if (!container) {
        sizeText = invalidFileSizeString(source);
        kLog.write("no shared folder; not copied [" + source + "].");
    } else if (name == "/") {
        // The whole file system is never copied.
        sizeText = invalidFileSizeString(source);
        kLog.write("the root folder has no name to copy to; not copied [" + source + "].");
    } else {
        destination = *container + "/" + name;
        accepted =
            platform::FileManager::defaultManager().copyItemAtPath(
                source, destination, kMaxFileSize, nullptr) != platform::CopyResult::TooLarge;
        if (!accepted)
            sizeText = invalidFileSizeString(source);  // it grew past the limit since measured
    }

    platform::StringArray fileUrlArr;
    platform::StringArray invalidFileNameArr;
    platform::StringArray invalidFileSizeArr;
    {
        std::lock_guard<std::mutex> lock(fileExport->mutex);
        if (accepted) {
            fileExport->fileUrlArr.push_back(destination);
            kLog.write("fileUrlArr addObject [" + source + "].");
        } else {
            fileExport->invalidFileNameArr.push_back(refusedName);
            fileExport->invalidFileSizeArr.push_back(sizeText);
        }
        kLog.write("fileUrlArr count[" + std::to_string(fileExport->fileUrlArr.size()) + "].");
        if (!fileExport->isComplete())
            return;
        fileUrlArr = fileExport->fileUrlArr;
        invalidFileNameArr = fileExport->invalidFileNameArr;
        invalidFileSizeArr = fileExport->invalidFileSizeArr;
    }
    finishFileExport(fileUrlArr, invalidFileNameArr, invalidFileSizeArr);
}

void ShareViewController::finishFileExport(const platform::StringArray& fileUrlArr,
                                           const platform::StringArray& invalidFileNameArr,
                                           const platform::StringArray& invalidFileSizeArr) {
    if (!handoffRecord_->writeFileLists(fileUrlArr, invalidFileNameArr, invalidFileSizeArr))
        return failHandoff("the file lists");

    switch (m_shareEntry.load()) {
        case ShareEntryFavToParley:
            wakeHostThenRelease();
            break;
        case ShareEntrySendToFriend: {
            // The share lock stays through the delay: the record is read after it.
            auto self = strongSelf();
            platform::MainQueue::after(kSendToFriendWakeupDelayNanoseconds,
                                       [self] { self->wakeHostThenRelease(); });
            break;
        }
        default:
            releaseShareLockAfter(std::chrono::milliseconds(0));
            break;
    }
}

int64_t ShareViewController::GetFileSize(const std::string& path) {
    const std::optional<platform::FileStatus> status = platform::FileStatus::lstat(path);
    return status ? status->size : -1;
}

bool ShareViewController::isInvalidFile(const std::string& path) {
    return GetFileSize(path) > kMaxFileSize;
}

std::string ShareViewController::invalidFileSizeString(const std::string& path) {
    const int64_t n = GetFileSize(path);
    // A file that vanished since it was refused has no size to tell.
    if (n < 0)
        return kUnknownSizeText;
    // Single precision on purpose: 1,073,741,823 bytes rounds up to 1024.0M.
    const float f = static_cast<float>(n);
    char text[64];
    if (n < 1073741824) {
        const float v = f * 0x1p-20f;
        std::snprintf(text, sizeof text, "%.1fM", static_cast<double>(v));
    } else {
        const float v = f * 0x1p-30f;
        std::snprintf(text, sizeof text, "%.1fG", static_cast<double>(v));
    }
    return text;
}
