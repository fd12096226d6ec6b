#pragma once

#include <atomic>
#include <chrono>
#include <cstdint>
#include <future>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <type_traits>

#include "platform/core/DefaultsSuite.h"
#include "platform/core/ExtensionItem.h"
#include "platform/core/FileLock.h"
#include "platform/core/Url.h"
#include "platform/ui/ImageView.h"
#include "platform/ui/TextField.h"
#include "platform/ui/ViewController.h"
#include "share/HandoffRecord.h"
#include "share/ShareEntry.h"
#include "share/ShareType.h"
#include "viewkit/PLSCustomDivider.h"
#include "viewkit/PLSImageView.h"
#include "viewkit/PLSOutlineButton.h"
#include "viewkit/PLSTextView.h"
#include "viewkit/PLSView.h"

class FileExport;

// The extension's principal controller: one per share request. It classifies the shared item,
// writes the hand-off record into the store shared with the host, copies shared files into the
// group's shared container and wakes the host.
//
// Main thread only, except for the item-provider completions and the wake-up they call, which
// run on worker threads. Closures handed to the platform hold it strongly, so it lives until the
// last completion and the delayed wake-up have run; for that it must be owned by a shared pointer
// from the start, so create() is the only way to make one (a subclass too:
// ShareViewController::create<Subclass>(), its constructor taking the ConstructionKey).
//
// One share at a time per group, so that the host reads each record whole: a share takes the
// group's share lock (the file "<group>.lock" beside the store) briefly at start-up to write its
// type, and again at the click, holding it from the entry until its host has been woken and has
// had time to read. What waits for that lock, for the store's lock or for the bus waits on a
// worker thread, bounded (the constants below); the sheet is shown once start-up's write is done
// (readyToShow). A record that could not be written is never followed by a wake-up: one error
// line, and handoffFailed() is true.
//
// The definition is spread over files by concern: ShareViewController.cpp (start-up and
// classification), ...Handoff.cpp (the actions, the share lock and the link), ...FileExport.cpp
// (copies and lists), ...Wakeup.cpp (notify or launch the host), ...Sheet.cpp (Cancel, dividers,
// logo band, action rows) and ...Card.cpp (the preview card). The record's keys, values and
// flushes are HandoffRecord's.
class ShareViewController : public platform::ViewController {
  protected:
    // Only create() can make one; a subclass's constructor takes it and passes it on.
    class ConstructionKey {
        friend class ShareViewController;
        ConstructionKey() {}
    };

  public:
    template <typename Controller = ShareViewController>
    static std::shared_ptr<Controller> create() {
        static_assert(std::is_base_of_v<ShareViewController, Controller>);
        return std::make_shared<Controller>(ConstructionKey());
    }
    explicit ShareViewController(ConstructionKey);
    ~ShareViewController() override;
    ShareViewController(const ShareViewController&) = delete;
    ShareViewController& operator=(const ShareViewController&) = delete;

    // The interface the base view loading takes the root view from.
    std::string nibName() const override;
    // Base view loading, setup, the sheet, then start-up's write of the share type, on a worker.
    void loadView() override;
    // True once start-up's write of the share type has ended (written, or given up after the
    // waits below); the sheet is shown only then. Main thread.
    bool readyToShow() const;

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
    // Notifies a running host or launches a stopped one; when the bus does not tell in time
    // whether the host runs, notifies (never a second host). Runs on the thread that calls it.
    // Virtual so that tests can see when and on which thread the host is woken.
    virtual void wakeupParley();
    // True once a group of the record could not be written (the host is then not woken).
    bool handoffFailed() const { return handoffFailed_.load(); }

    // lstat size of |path| itself (a link as the link); -1 when it cannot be measured.
    static int64_t GetFileSize(const std::string& path);
    // True for files above the size limit; an unmeasurable path is never invalid.
    static bool isInvalidFile(const std::string& path);
    // "%.1fM" below 1 GiB, else "%.1fG", computed in single precision; kUnknownSizeText when
    // unmeasurable.
    static std::string invalidFileSizeString(const std::string& path);
    // The size text of a refused item that has no size to tell.
    static constexpr const char* kUnknownSizeText = "?";

    // Files strictly larger are listed by name and size instead of being copied.
    static constexpr int64_t kMaxFileSize = 104857600;
    // Delay before waking the host after files sent to a friend.
    static constexpr int64_t kSendToFriendWakeupDelayNanoseconds = 1000000000;

    // How long start-up waits for another share's hand-off before the sheet shows without its
    // type written (the click writes it), and how long the click waits, after the sheet has
    // gone, before the share fails. The store's own lock adds up to 5 s to either.
    static constexpr std::chrono::milliseconds kShareLockWaitAtStartup{3000};
    static constexpr std::chrono::milliseconds kShareLockWaitAtClick{60000};
    // How long the share lock is kept after the host was notified, or launched, for it to read.
    static constexpr std::chrono::milliseconds kHostReadTime{500};
    static constexpr std::chrono::milliseconds kLaunchedHostReadTime{2000};
    // How long the wake-up waits for the bus to say whether the host runs, and then for it to
    // take the notification.
    static constexpr std::chrono::milliseconds kBusAnswerWait{5000};
    static constexpr std::chrono::milliseconds kNotificationWait{3000};

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

    // The sheet's views, each set once while the view loads.
    const std::shared_ptr<PLSOutlineButton>& cancelBtn() const { return cancelBtn_; }
    void setCancelBtn(std::shared_ptr<PLSOutlineButton> v) { cancelBtn_ = std::move(v); }
    const std::shared_ptr<PLSCustomDivider>& bottomDivider() const { return bottomDivider_; }
    void setBottomDivider(std::shared_ptr<PLSCustomDivider> v) { bottomDivider_ = std::move(v); }
    const std::shared_ptr<PLSCustomDivider>& midDivider() const { return midDivider_; }
    void setMidDivider(std::shared_ptr<PLSCustomDivider> v) { midDivider_ = std::move(v); }
    const std::shared_ptr<PLSCustomDivider>& topDivider() const { return topDivider_; }
    void setTopDivider(std::shared_ptr<PLSCustomDivider> v) { topDivider_ = std::move(v); }
    const std::shared_ptr<PLSView>& favToParleyContainer() const { return favToParleyContainer_; }
    void setFavToParleyContainer(std::shared_ptr<PLSView> v) {
        favToParleyContainer_ = std::move(v);
    }
    const std::shared_ptr<platform::ImageView>& favIcon() const { return favIcon_; }
    void setFavIcon(std::shared_ptr<platform::ImageView> v) { favIcon_ = std::move(v); }
    const std::shared_ptr<PLSTextView>& favToParleyText() const { return favToParleyText_; }
    void setFavToParleyText(std::shared_ptr<PLSTextView> v) { favToParleyText_ = std::move(v); }
    const std::shared_ptr<platform::ImageView>& favArrow() const { return favArrow_; }
    void setFavArrow(std::shared_ptr<platform::ImageView> v) { favArrow_ = std::move(v); }
    const std::shared_ptr<PLSView>& sendToFriendContainer() const { return sendToFriendContainer_; }
    void setSendToFriendContainer(std::shared_ptr<PLSView> v) {
        sendToFriendContainer_ = std::move(v);
    }
    const std::shared_ptr<platform::ImageView>& sendIcon() const { return sendIcon_; }
    void setSendIcon(std::shared_ptr<platform::ImageView> v) { sendIcon_ = std::move(v); }
    const std::shared_ptr<PLSTextView>& sendToFriendText() const { return sendToFriendText_; }
    void setSendToFriendText(std::shared_ptr<PLSTextView> v) { sendToFriendText_ = std::move(v); }
    const std::shared_ptr<platform::ImageView>& sendArrow() const { return sendArrow_; }
    void setSendArrow(std::shared_ptr<platform::ImageView> v) { sendArrow_ = std::move(v); }
    const std::shared_ptr<platform::View>& contentContainer() const { return contentContainer_; }
    void setContentContainer(std::shared_ptr<platform::View> v) {
        contentContainer_ = std::move(v);
    }
    const std::shared_ptr<platform::TextField>& fileCount() const { return fileCount_; }
    void setFileCount(std::shared_ptr<platform::TextField> v) { fileCount_ = std::move(v); }
    const std::shared_ptr<PLSImageView>& fileImg() const { return fileImg_; }
    void setFileImg(std::shared_ptr<PLSImageView> v) { fileImg_ = std::move(v); }
    const std::shared_ptr<platform::View>& parleyLogoContainer() const {
        return parleyLogoContainer_;
    }
    void setParleyLogoContainer(std::shared_ptr<platform::View> v) {
        parleyLogoContainer_ = std::move(v);
    }
    const std::shared_ptr<platform::ImageView>& parleyLogo() const { return parleyLogo_; }
    void setParleyLogo(std::shared_ptr<platform::ImageView> v) { parleyLogo_ = std::move(v); }

    // The press tint of the two action rows.
    bool sendHighlighted() const { return sendHighlighted_; }
    void setSendHighlighted(bool highlighted);
    bool favHighlighted() const { return favHighlighted_; }
    void setFavHighlighted(bool highlighted);

    // The sheet's layout routines, run once each from loadView in this order.
    void layoutCancelBtn();
    void layoutDividers();
    void layoutFavToParley();
    void layoutSendToFriend();
    void layoutContent();
    void layoutFileContent();
    void layoutTop();

  private:
    std::shared_ptr<ShareViewController> strongSelf();
    // The sheet's views, built once after setup whatever the share type.
    void buildSheet();
    struct ActionRow {
        std::shared_ptr<PLSView> container;
        std::shared_ptr<platform::ImageView> icon;
        std::shared_ptr<PLSTextView> title;
        std::shared_ptr<platform::ImageView> arrow;
    };
    using HighlightSetter = void (ShareViewController::*)(bool);
    using Action = void (ShareViewController::*)();
    std::weak_ptr<ShareViewController> weakSelf();
    ActionRow makeActionRow(const platform::Rect& frame,
                            const std::string& iconName,
                            const std::string& titleKey);
    void addActionRow(const ActionRow& row);
    void installRowClosures(const ActionRow& row,
                            HighlightSetter own,
                            HighlightSetter other,
                            Action action);
    static void applyRowTint(platform::View& container, bool highlighted);

    // Records |entry| and starts the hand-off; the body of both actions.
    void takeAction(ShareEntry entry);
    // Start-up's write of the type under the share lock (worker), read back once |sheetBuilt| is
    // ready, then an early bus connection.
    void writeShareTypeUnderShareLock(std::shared_future<void> sheetBuilt);
    // The click's part on a worker: the share lock, the type again and the entry, then the data.
    void handOver(ShareEntry entry);
    std::string shareLockPath() const;
    // Wakes the host, then keeps the share lock for the host's read.
    void wakeHostThenRelease();
    void releaseShareLockAfter(std::chrono::milliseconds hold);
    // Ends a share whose record could not be written: one error line, no wake-up.
    void failHandoff(const std::string& what);
    void writeUrlToSharedFolder();
    void writeFilesToSharedFolder();
    // |position| counts attachments from 1, to name one that delivered nothing.
    void exportFile(const std::shared_ptr<FileExport>& fileExport,
                    size_t position,
                    const std::optional<platform::Url>& item);
    void finishFileExport(const platform::StringArray& fileUrlArr,
                          const platform::StringArray& invalidFileNameArr,
                          const platform::StringArray& invalidFileSizeArr);
    // The card's picture for the one shared file, once its URL has arrived (any thread); the
    // choice is shown on the main thread.
    void showSingleFilePicture(const std::optional<platform::Url>& item);

    std::string m_bundleId;
    std::string m_shareFolderName;
    std::shared_ptr<platform::DefaultsSuite> m_shareDefaults;
    // Writes the record into m_shareDefaults; set with it in setup, and only read after that.
    std::shared_ptr<HandoffRecord> handoffRecord_;
    std::shared_ptr<platform::ExtensionItem> m_extensionItem;
    ShareType m_shareType = ShareTypeUnknown;
    // Set on the main thread by an action, read by the export's last completion.
    std::atomic<ShareEntry> m_shareEntry{ShareEntryNone};
    // Ready once start-up's write of the type has ended. Main thread.
    std::shared_future<void> shareTypeWritten_;
    // The share lock, from the click until the host has had time to read.
    std::mutex shareLockMutex_;
    std::shared_ptr<platform::FileLock> shareLock_;
    std::atomic<bool> hostLaunched_{false};
    std::atomic<bool> handoffFailed_{false};

    std::shared_ptr<PLSOutlineButton> cancelBtn_;
    std::shared_ptr<PLSCustomDivider> bottomDivider_;
    std::shared_ptr<PLSCustomDivider> midDivider_;
    std::shared_ptr<PLSCustomDivider> topDivider_;
    std::shared_ptr<PLSView> favToParleyContainer_;
    std::shared_ptr<platform::ImageView> favIcon_;
    std::shared_ptr<PLSTextView> favToParleyText_;
    std::shared_ptr<platform::ImageView> favArrow_;
    std::shared_ptr<PLSView> sendToFriendContainer_;
    std::shared_ptr<platform::ImageView> sendIcon_;
    std::shared_ptr<PLSTextView> sendToFriendText_;
    std::shared_ptr<platform::ImageView> sendArrow_;
    std::shared_ptr<platform::View> contentContainer_;
    std::shared_ptr<platform::TextField> fileCount_;
    std::shared_ptr<PLSImageView> fileImg_;
    std::shared_ptr<platform::View> parleyLogoContainer_;
    std::shared_ptr<platform::ImageView> parleyLogo_;
    bool sendHighlighted_ = false;
    bool favHighlighted_ = false;
};
