#include "share/ShareViewController.h"

#include <cstdio>

#include "platform/core/FileManager.h"
#include "platform/core/FileStatus.h"
#include "platform/core/MainQueue.h"
#include "platform/core/StallWatch.h"
#include "platform/core/StorableFileName.h"
#include "share/ControllerSupport.h"
#include "share/FileExport.h"

// File export: each attachment measured, copied flat into the container or refused, and the
// lists written once the last one is accounted for.

namespace {

using controller_support::kLog;

// A source that delivers nothing for this long is given up: a read from a mount that no longer
// answers never returns.
constexpr std::chrono::seconds kSourceQuietLimit{5};

// What one attachment adds to the lists: its destination path, or a refused name and size text.
struct Accounted {
    std::string listedPath;
    std::string refusedName;
    std::string sizeText;
};

}  // namespace

// One attachment of a file export, on a worker thread. Measuring and copying happen outside the
// export's lock so that copies run in parallel; the appends, their log lines and the
// completeness test happen under it, so exactly one completion finishes the export.
//
// What is listed and what lies in the container agree:
// - a file is listed under the name it is copied to: its own name, or, when that name is not
//   UTF-8 (which the store cannot hold), the name with its stray bytes written as %XX;
// - the copy takes its name only when whole, so a killed share leaves nothing under that name,
//   and a file that grew past the limit since it was measured is refused instead;
// - an attachment that cannot be copied at all is listed as refused with a name the host can
//   show: one that delivered no file URL as "attachment N" (N counting from 1; the URL itself
//   when a web link came instead), the root folder as "/", the shared container itself or a
//   folder in it (a copy would copy itself), and any file when the group has no shared
//   container. Its size text is "?" when there is no size to tell.
// A copy that fails for another reason (the name already taken, no space, a file that never
// holds still, a source that delivers nothing for 5 s) is listed at its destination all the
// same: the host finds whatever lies there, which is nothing when the copy was not whole.
void ShareViewController::exportFile(const std::shared_ptr<FileExport>& fileExport,
                                     size_t position,
                                     const std::optional<platform::Url>& item) {
    platform::FileManager& files = platform::FileManager::defaultManager();
    const std::optional<std::string> container =
        files.containerURLForSecurityApplicationGroupIdentifier(m_shareFolderName);
    kLog.write("sharedFolder path[" + (container ? *container : std::string("(null)")) + "].");
    if (container) {
        std::call_once(fileExport->interruptedCopiesRemoved,
                       [&] { files.removeInterruptedCopies(*container); });
    }

    auto account = [self = strongSelf(), fileExport](const Accounted& entry,
                                                     const std::string& source) {
        platform::StringArray fileUrlArr;
        platform::StringArray invalidFileNameArr;
        platform::StringArray invalidFileSizeArr;
        {
            std::lock_guard<std::mutex> lock(fileExport->mutex);
            if (!entry.listedPath.empty()) {
                fileExport->fileUrlArr.push_back(entry.listedPath);
                kLog.write("fileUrlArr addObject [" + source + "].");
            } else {
                fileExport->invalidFileNameArr.push_back(entry.refusedName);
                fileExport->invalidFileSizeArr.push_back(entry.sizeText);
            }
            kLog.write("fileUrlArr count[" + std::to_string(fileExport->fileUrlArr.size()) + "].");
            if (!fileExport->isComplete())
                return;
            fileUrlArr = fileExport->fileUrlArr;
            invalidFileNameArr = fileExport->invalidFileNameArr;
            invalidFileSizeArr = fileExport->invalidFileSizeArr;
        }
        self->finishFileExport(fileUrlArr, invalidFileNameArr, invalidFileSizeArr);
    };

    const std::string source = item && item->isFileURL() ? item->path() : std::string();
    const std::string name =
        platform::StorableFileName::of(item ? item->lastPathComponent() : std::string());
    if (source.empty()) {
        kLog.write("attachment delivered no file URL; listed as refused.");
        account({"", item ? item->absoluteString() : "attachment " + std::to_string(position),
                 kUnknownSizeText},
                source);
        return;
    }
    const std::string destination = container && name != "/" ? *container + "/" + name : "";
    // Measuring and copying both read the source; should it stop answering, the attachment is
    // accounted for as a failed copy (or refused, with nowhere to copy to) all the same.
    const auto watch = platform::StallWatch::start(kSourceQuietLimit, [=] {
        kLog.write("copy of [" + source + "] given up: no data for " +
                   std::to_string(kSourceQuietLimit.count()) + " seconds.");
        account(destination.empty() ? Accounted{"", name, kUnknownSizeText}
                                    : Accounted{destination, "", ""},
                source);
    });
    Accounted entry{"", name, ""};
    if (isInvalidFile(source)) {
        entry.sizeText = invalidFileSizeString(source);
    } else if (!container) {
        entry.sizeText = invalidFileSizeString(source);
        kLog.write("no shared folder; not copied [" + source + "].");
    } else if (name == "/") {
        // The whole file system is never copied.
        entry.sizeText = invalidFileSizeString(source);
        kLog.write("the root folder has no name to copy to; not copied [" + source + "].");
    } else if (platform::FileStatus::isFolderWithin(source, *container)) {
        entry.sizeText = invalidFileSizeString(source);
        kLog.write("the shared container or a folder in it; not copied [" + source + "].");
    } else {
        platform::CopyOptions options;
        options.maxFileBytes = kMaxFileSize;
        options.watch = watch;
        switch (files.copyItemAtPath(source, destination, options)) {
            case platform::CopyResult::TooLarge:  // it grew past the limit since measured
            case platform::CopyResult::Refused:
                entry.sizeText = invalidFileSizeString(source);
                break;
            case platform::CopyResult::Copied:
            case platform::CopyResult::Failed:
                entry = {destination, "", ""};
                break;
        }
    }
    if (watch->settle())
        account(entry, source);
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
