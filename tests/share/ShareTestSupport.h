#pragma once

#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <condition_variable>
#include <functional>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <thread>
#include <vector>

#include "platform/core/Bundle.h"
#include "platform/core/DefaultsSuite.h"
#include "platform/core/DistributedNotificationCenter.h"
#include "platform/core/ExtensionContext.h"
#include "platform/core/ExtensionItem.h"
#include "platform/core/ItemProvider.h"
#include "platform/core/Log.h"
#include "platform/core/PropertyValue.h"
#include "platform/ui/Bitmap.h"
#include "share/ShareViewController.h"
#include "tests/support/ProcessSupport.h"
#include "tests/support/TempDir.h"

namespace share_test {

using Clock = std::chrono::steady_clock;
using platform::StringArray;

inline const std::string kHostId = PARLEY_HOST_BUNDLE_ID;
inline const std::string kExtensionId = PARLEY_EXTENSION_BUNDLE_ID;
inline const std::string kTeamId = PARLEY_TEAM_ID;
inline const std::string kGroup = kTeamId + kHostId;

// A controller that records every wake-up (time, thread, what the store held) and then wakes
// the host as the real one does.
class RecordingController : public ShareViewController {
  public:
    explicit RecordingController(ConstructionKey key) : ShareViewController(key) {}
    struct Wakeup {
        Clock::time_point time;
        bool onMainThread = false;
        std::optional<platform::PropertyValue> storedPaths;
        std::optional<platform::PropertyValue> storedUrl;
    };

    void wakeupParley() override;

    int wakeupCount() const;
    std::vector<Wakeup> wakeups() const;

  private:
    mutable std::mutex mutex_;
    std::vector<Wakeup> wakeups_;
};

// Counts "ParleyMacShare_Notification" deliveries to this process.
class NotificationCounter {
  public:
    NotificationCounter();
    int count() const { return count_; }
    Clock::time_point lastTime() const { return last_; }

  private:
    int count_ = 0;
    Clock::time_point last_;
    std::unique_ptr<platform::DistributedNotificationCenter::Observer> observer_;
};

// A provider that offers a file URL and delivers it only once released, on a worker thread.
class GatedLoad {
  public:
    explicit GatedLoad(std::optional<platform::Url> item, const std::string& type);
    std::shared_ptr<platform::ItemProvider> provider() const { return provider_; }
    // Lets the load deliver its item; returns when the loader has returned it.
    void release();
    bool started() const { return state_->started; }

  private:
    struct State {
        std::mutex mutex;
        std::condition_variable changed;
        bool released = false;
        std::atomic<bool> started{false};
        std::atomic<bool> returned{false};
    };
    std::shared_ptr<State> state_;
    std::shared_ptr<platform::ItemProvider> provider_;
};

// Every test: a private extension bundle as the main bundle, an empty applications folder (no
// host to launch unless a test puts one there) and a log capture.
class ShareTest : public ::testing::Test {
  public:
    void SetUp() override;
    void TearDown() override;

    // Writes an extension bundle with |teamIdentifierXml| as the TeamIdentifier value (an XML
    // property-list value, or empty for none) and makes it the main bundle.
    void useBundle(const std::string& teamIdentifierXml,
                   const std::string& bundleIdentifier = kExtensionId);

    static std::shared_ptr<platform::ItemProvider> fileProvider(const std::string& path);
    static std::shared_ptr<platform::ItemProvider> linkProvider(const std::string& url);

    // A controller with one input item holding |attachments|, its view loaded.
    std::shared_ptr<RecordingController> startShare(
        std::vector<std::shared_ptr<platform::ItemProvider>> attachments);
    std::shared_ptr<RecordingController> startShareWithItems(
        std::vector<std::shared_ptr<platform::ExtensionItem>> items);

    // Runs the loop until every load and wake-up has run; fails the test on timeout.
    static void runUntilIdle(std::chrono::milliseconds timeout = std::chrono::seconds(60));
    // Runs the loop until |done| or the timeout; returns |done|'s final value.
    static bool waitFor(const std::function<bool()>& done,
                        std::chrono::milliseconds timeout = std::chrono::seconds(30));

    // The group's store as another process would read it now.
    static std::optional<platform::PropertyValue> stored(const std::string& key,
                                                         const std::string& group = kGroup);
    // Writes |values| to the store the way an earlier share would have.
    static void storeEarlierShare(
        const std::vector<std::pair<std::string, platform::PropertyValue>>& values);
    static std::string containerPath(const std::string& group = kGroup);

    // The controller's lines, in order.
    std::vector<std::string> shareLines() const;
    size_t countLine(const std::string& line) const;

    // A fake host application at $PARLEY_APPLICATIONS_DIR/Parley.app whose executable appends a
    // line to launchMarker().
    void installFakeHost();
    std::string launchMarker() const { return apps_.file("launches"); }
    int launchCount() const;

    std::shared_ptr<platform::ExtensionContext> context_;
    testing_support::TempDir bundleDir_;
    testing_support::TempDir apps_;
    testing_support::TempDir files_;
    std::unique_ptr<platform::LogCapture> log_;
};

// The built programs, as the Share menu and the desktop run them.
inline const std::string kShareProgram =
    std::string(PARLEY_APPEX_DIR) + "/Contents/MacOS/parley-share";
inline const std::string kHostProgram = std::string(PARLEY_APP_DIR) + "/Contents/MacOS/parley-host";

using testing_support::quoted;
using testing_support::readAll;
using testing_support::readLines;
using testing_support::run;

// Runs parley-share and parley-host as separate processes on this test's bus.
class ShareProgramsTest : public ShareTest {
  protected:
    void SetUp() override;
    // Starts parley-host in the background and waits until it reported its start.
    void startHost(const std::string& options);
    std::string records() const { return files_.file("records.jsonl"); }
    std::string shareErrors() const { return files_.file("share.err"); }
    // parley-share with |arguments| (shell words) in |environment| (env words); its exit status.
    int share(const std::string& arguments, const std::string& environment = "");
};

// An opaque pixel within |tolerance| of (r, g, b) in each channel.
bool nearRgb(const platform::Rgba& pixel, int r, int g, int b, int tolerance = 2);

// The log line of a store read-back.
std::string readBackLine(const std::string& value, const std::string& key);
std::string line(const std::string& text);

}  // namespace share_test
