#include "share/ShareViewController.h"

#include "platform/core/ItemProvider.h"
#include "platform/core/MainQueue.h"
#include "platform/core/WorkerPool.h"
#include "share/ControllerSupport.h"
#include "share/FileExport.h"

// The hand-off: an action takes the share lock, writes the entry and starts the link's or the
// files' delivery; the lock is kept until the host has had time to read the record.

namespace {
using controller_support::kErrorLog;
using controller_support::kLog;
}  // namespace

void ShareViewController::onClickSendToFriend() {
    kLog.write("onClickSendToFriend invoked.");
    takeAction(ShareEntrySendToFriend);
}

void ShareViewController::onClickFavToParley() {
    kLog.write("onClickFavToParley invoked.");
    takeAction(ShareEntryFavToParley);
}

void ShareViewController::takeAction(ShareEntry entry) {
    platform::MainQueue::assertMainThread("ShareViewController action");
    view();  // the store and the item come from the view loading
    // Before the hand-off starts: the export's last completion reads it.
    m_shareEntry = entry;
    auto self = strongSelf();
    platform::WorkerPool::shared().async([self, entry, typeWritten = shareTypeWritten_] {
        typeWritten.wait();  // start-up's write first; it is bounded
        self->handOver(entry);
    });
    // The sheet goes at once: the waits for another share and for the store run on the worker,
    // and the hand-off goes on in the loads' completions, which hold this controller.
    didFinishShare();
}

// From the entry until the host has read, the record is this share's alone. The type is written
// again before the entry: another sheet may have written its own since start-up.
void ShareViewController::handOver(ShareEntry entry) {
    std::string error;
    std::shared_ptr<platform::FileLock> lock =
        platform::FileLock::acquire(shareLockPath(), kShareLockWaitAtClick, error);
    if (!lock)
        return failHandoff("the share lock: " + error);
    {
        std::lock_guard<std::mutex> guard(shareLockMutex_);
        shareLock_ = std::move(lock);
    }
    if (!handoffRecord_->writeShareEntry(m_shareType, entry))
        return failHandoff("ParleyMacShareEntry");
    writeDataToSharedFolder();
    handoffRecord_->logShareEntry();
    if (m_shareType == ShareTypeUnknown)
        releaseShareLockAfter(std::chrono::milliseconds(0));  // nothing more is handed over
}

std::string ShareViewController::shareLockPath() const {
    return platform::DefaultsSuite::pathForSuite(m_shareFolderName, ".lock");
}

void ShareViewController::wakeHostThenRelease() {
    wakeupParley();
    releaseShareLockAfter(hostLaunched_ ? kLaunchedHostReadTime : kHostReadTime);
}

void ShareViewController::releaseShareLockAfter(std::chrono::milliseconds hold) {
    std::shared_ptr<platform::FileLock> lock;
    {
        std::lock_guard<std::mutex> guard(shareLockMutex_);
        lock = std::move(shareLock_);
    }
    // The delayed task holds the lock; it goes, and the lock with it, once the task has run.
    if (lock && hold.count() > 0)
        platform::MainQueue::after(std::chrono::nanoseconds(hold).count(), [lock] {});
}

void ShareViewController::failHandoff(const std::string& what) {
    releaseShareLockAfter(std::chrono::milliseconds(0));
    if (!handoffFailed_.exchange(true))
        kErrorLog.write("the hand-off record could not be written (" + what +
                        "); Parley is not woken.");
}

void ShareViewController::writeDataToSharedFolder() {
    switch (m_shareType) {
        case ShareTypeFile:
            writeFilesToSharedFolder();
            break;
        case ShareTypeUrl:
            writeUrlToSharedFolder();
            break;
        default:
            break;
    }
}

void ShareViewController::writeUrlToSharedFolder() {
    const std::shared_ptr<platform::ItemProvider> attachment =
        m_extensionItem->attachments().front();
    auto self = strongSelf();
    attachment->loadItemForTypeIdentifier(
        platform::kUTTypeURL, nullptr,
        [self](const std::optional<platform::Url>& item, const std::optional<platform::Error>&) {
            // No URL removes the key; the host is woken all the same.
            std::optional<std::string> url;
            if (item)
                url = item->absoluteString();
            if (!self->handoffRecord_->writeShareUrl(url))
                return self->failHandoff("ParleyMacShareUrl");
            self->wakeHostThenRelease();
        });
}

void ShareViewController::writeFilesToSharedFolder() {
    const auto& attachments = m_extensionItem->attachments();
    auto fileExport = std::make_shared<FileExport>(attachments.size());
    kLog.write("item.attachments count[" + std::to_string(attachments.size()) + "].");
    auto self = strongSelf();
    size_t position = 0;
    for (const auto& attachment : attachments) {
        ++position;
        if (!attachment) {
            // A missing provider delivers nothing, like a failed load, off the main thread.
            platform::WorkerPool::shared().async([self, fileExport, position] {
                self->exportFile(fileExport, position, std::nullopt);
            });
            continue;
        }
        // Every attachment is treated as a file, whatever its own types.
        attachment->loadItemForTypeIdentifier(
            platform::kUTTypeFileURL, nullptr,
            [self, fileExport, position](const std::optional<platform::Url>& item,
                                         const std::optional<platform::Error>&) {
                self->exportFile(fileExport, position, item);
            });
    }
}
