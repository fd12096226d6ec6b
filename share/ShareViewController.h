#pragma once

#include <atomic>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>

#include "platform/DefaultsSuite.h"
#include "platform/ExtensionItem.h"
#include "platform/Url.h"
#include "platform/ViewController.h"
#include "share/ShareEntry.h"
#include "share/ShareType.h"

class FileExport;

// The extension's principal controller: one per share request. It classifies the shared item,
// writes the hand-off record into the store shared with the host, copies shared files into the
// group's shared container and wakes the host.
//
// Main thread only, except for the item-provider completions and the wake-up they call, which
// run on worker threads. Create it with std::make_shared: closures handed to the platform hold
// it strongly, so it lives until the last completion and the delayed wake-up have run.
class ShareViewController : public platform::ViewController {
  public:
    ShareViewController();
    ~ShareViewController() override;

    // The interface the base view loading takes the root view from.
    std::string nibName() const override;
    // Base view loading, setup, then the sheet.
    void loadView() override;

    // Identity, hand-off store and classification; called only from loadView.
    void setup();
    // Ends the request as cancelled by the user; writes nothing.
    void cancel();
    // Completes the request, returning nothing.
    void didFinishShare();

    // The two actions of the sheet: record the entry, start the hand-off, complete the request.
    void onClickSendToFriend();
    void onClickFavToParley();
    // Starts the hand-off of the shared data by share type; returns once the loads are started.
    void writeDataToSharedFolder();
    // Notifies a running host or launches a stopped one. Runs on the thread that calls it.
    // Virtual so that tests can see when and on which thread the host is woken.
    virtual void wakeupParley();

    // lstat size of |path| itself (a link as the link); -1 when it cannot be measured.
    static int64_t GetFileSize(const std::string& path);
    // True for files above the size limit; an unmeasurable path is never invalid.
    static bool isInvalidFile(const std::string& path);
    // "%.1fM" below 1 GiB, else "%.1fG", computed in single precision; "" when unmeasurable.
    static std::string invalidFileSizeString(const std::string& path);

    // Files strictly larger are listed by name and size instead of being copied.
    static constexpr int64_t kMaxFileSize = 104857600;
    // Delay before waking the host after files sent to a friend.
    static constexpr int64_t kSendToFriendWakeupDelayNanoseconds = 1000000000;

    // Read access for the app and tests.
    const std::string& bundleId() const { return m_bundleId; }
    const std::string& shareFolderName() const { return m_shareFolderName; }
    const std::shared_ptr<platform::DefaultsSuite>& shareDefaults() const {
        return m_shareDefaults;
    }
    const std::shared_ptr<platform::ExtensionItem>& extensionItem() const {
        return m_extensionItem;
    }
    ShareType shareType() const { return m_shareType; }
    ShareEntry shareEntry() const { return m_shareEntry.load(); }

  private:
    std::shared_ptr<ShareViewController> strongSelf();
    // The sheet's views, built once after setup whatever the share type.
    void buildSheet();

    // Records |entry| under the entry key and starts the hand-off; the body of both actions.
    void takeAction(ShareEntry entry, const char* entryText);
    void writeUrlToSharedFolder();
    void writeFilesToSharedFolder();
    void exportFile(const std::shared_ptr<FileExport>& fileExport,
                    const std::optional<platform::Url>& item);
    void finishFileExport(const platform::StringArray& fileUrlArr,
                          const platform::StringArray& invalidFileNameArr,
                          const platform::StringArray& invalidFileSizeArr);
    // Flushes nothing: reads |key| back from the store and logs it.
    void logStoredValue(const std::string& key);

    std::string m_bundleId;
    std::string m_shareFolderName;
    std::shared_ptr<platform::DefaultsSuite> m_shareDefaults;
    std::shared_ptr<platform::ExtensionItem> m_extensionItem;
    ShareType m_shareType = ShareTypeUnknown;
    // Set on the main thread by an action, read by the export's last completion.
    std::atomic<ShareEntry> m_shareEntry{ShareEntryNone};
};
