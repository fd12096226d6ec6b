#include "share/ShareViewController.h"

#include "platform/core/ItemProvider.h"
#include "platform/core/MainQueue.h"
#include "platform/core/WorkerPool.h"
#include "share/ControllerSupport.h"
#include "share/FileExport.h"

// The hand-off: an action writes the entry and starts the link's or the files' delivery.

namespace {
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
    handoffRecord_->writeShareEntry(entry);
    // Before the hand-off starts: the export's last completion reads it.
    m_shareEntry = entry;
    writeDataToSharedFolder();
    handoffRecord_->logShareEntry();
    // The hand-off goes on in the loads' completions, which hold this controller.
    didFinishShare();
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
            self->handoffRecord_->writeShareUrl(url);
            self->wakeupParley();
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
