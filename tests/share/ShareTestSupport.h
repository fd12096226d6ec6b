#pragma once

#include <gtest/gtest.h>

#include <chrono>
#include <filesystem>
#include <fstream>
#include <future>

#include "platform/core/Bundle.h"
#include "platform/core/DistributedNotificationCenter.h"
#include "platform/core/EventLoop.h"
#include "platform/core/ExtensionContext.h"
#include "platform/core/FileManager.h"
#include "platform/core/Log.h"
#include "platform/core/MainQueue.h"
#include "platform/ui/Bitmap.h"
#include "share/ShareViewController.h"
#include "tests/support/ProcessSupport.h"
#include "tests/support/TempDir.h"

namespace share_test {

namespace fs = std::filesystem;
using Clock = std::chrono::steady_clock;
using platform::ExtensionItem;
using platform::PropertyValue;
using platform::StringArray;
using State = platform::ExtensionContext::State;
using testing_support::onPrivateDisplay;
using testing_support::quoted;
using testing_support::readAll;
using testing_support::readLines;
using testing_support::run;
using Items = std::vector<std::shared_ptr<ExtensionItem>>;
using Providers = std::vector<std::shared_ptr<platform::ItemProvider>>;

inline const std::string kHostId = PARLEY_HOST_BUNDLE_ID;
inline const std::string kTeamId = PARLEY_TEAM_ID;
inline const std::string kGroup = kTeamId + kHostId;

inline std::string line(const std::string& text) {
    return "[ShareViewController]: " + text;
}

// The log line of a store read-back.
inline std::string readBackLine(const std::string& value, const std::string& key) {
    return line("NSUserDefaults set value [" + value + "] for key [" + key + "].");
}

// An opaque pixel within |tolerance| of (r, g, b) in each channel.
inline bool nearRgb(const platform::Rgba& pixel, int r, int g, int b, int tolerance = 2) {
    return std::abs(pixel.r - r) <= tolerance && std::abs(pixel.g - g) <= tolerance &&
           std::abs(pixel.b - b) <= tolerance && pixel.a == 255;
}

// A controller that records every wake-up (time, thread, what the store held) and then wakes the
// host as the real one does.
class RecordingController : public ShareViewController {
  public:
    explicit RecordingController(ConstructionKey key) : ShareViewController(key) {}
    struct Wakeup {
        Clock::time_point time;
        bool onMainThread;
        std::optional<PropertyValue> storedPaths, storedUrl;
    };
    void wakeupParley() override {
        platform::DefaultsSuite store(shareFolderName());
        std::unique_lock lock(mutex_);
        wakeups_.push_back({Clock::now(), platform::MainQueue::isMainThread(),
                            store.objectForKey("ParleyMacSharePathArray"),
                            store.objectForKey("ParleyMacShareUrl")});
        lock.unlock();
        ShareViewController::wakeupParley();
    }
    std::vector<Wakeup> wakeups() const {
        std::lock_guard lock(mutex_);
        return wakeups_;
    }
    int wakeupCount() const { return static_cast<int>(wakeups().size()); }

  private:
    mutable std::mutex mutex_;
    std::vector<Wakeup> wakeups_;
};

// A provider of |type| that delivers |item| on a worker thread only once released.
class GatedLoad {
  public:
    GatedLoad(std::optional<platform::Url> item, const std::string& type)
        : provider_(platform::ItemProvider::withTypes({type, platform::kUTTypeURL})) {
        // Bounded: a test that forgets to release still ends.
        provider_->registerItemForTypeIdentifier(type, [gate = gate_.get_future().share(), item] {
            gate.wait_for(std::chrono::seconds(30));
            return item;
        });
    }
    std::shared_ptr<platform::ItemProvider> provider() const { return provider_; }
    void release() { gate_.set_value(); }

  private:
    std::promise<void> gate_;
    std::shared_ptr<platform::ItemProvider> provider_;
};

// Every test: a private extension bundle as the main bundle, an empty applications folder (no host
// to launch) and a log capture.
class ShareTest : public ::testing::Test {
  public:
    void SetUp() override {
        setenv("PARLEY_APPLICATIONS_DIR", apps_.path().c_str(), 1);
        useBundle("<string>" + kTeamId + "</string>");
        resetLog();
    }
    void TearDown() override {
        // Nothing may still run against this test's files.
        EXPECT_TRUE(platform::EventLoop::runUntilIdle(std::chrono::seconds(60)));
        platform::Bundle::setMainBundle(nullptr);
    }

    // An extension bundle with |teamIdentifierXml| (a property-list value, or empty for none).
    void useBundle(const std::string& teamIdentifierXml,
                   const std::string& bundleIdentifier = PARLEY_EXTENSION_BUNDLE_ID) {
        static int serial = 0;
        const std::string path = apps_.file("Share" + std::to_string(serial++) + ".appex");
        std::filesystem::create_directories(path + "/Contents/Resources");
        std::ofstream(path + "/Contents/Info.plist")
            << "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<plist version=\"1.0\">\n<dict>\n"
               "<key>CFBundleIdentifier</key><string>"
            << bundleIdentifier << "</string>\n"
            << (teamIdentifierXml.empty() ? "" : "<key>TeamIdentifier</key>" + teamIdentifierXml)
            << "</dict>\n</plist>\n";
        platform::Bundle::setMainBundle(std::make_shared<platform::Bundle>(path));
    }

    static std::shared_ptr<platform::ItemProvider> fileProvider(const std::string& path) {
        return platform::ItemProvider::withURL(platform::Url::fileURLWithPath(path));
    }
    static std::shared_ptr<platform::ItemProvider> linkProvider(const std::string& url) {
        return platform::ItemProvider::withURL(*platform::Url::URLWithString(url));
    }
    // A controller with one input item holding |attachments| (or with |items|), its view loaded.
    std::shared_ptr<RecordingController> startShare(Providers attachments) {
        return startShareWithItems({std::make_shared<ExtensionItem>(std::move(attachments))});
    }
    std::shared_ptr<RecordingController> startShareWithItems(Items items) {
        context_ = std::make_shared<platform::ExtensionContext>(std::move(items));
        auto controller = ShareViewController::create<RecordingController>();
        controller->setExtensionContext(context_);
        controller->view();
        EXPECT_TRUE(waitFor([&] { return controller->readyToShow(); }));
        return controller;
    }

    static void runUntilIdle() {
        ASSERT_TRUE(platform::EventLoop::runUntilIdle(std::chrono::seconds(60)))
            << "the hand-off did not end";
    }
    static bool waitFor(const std::function<bool()>& done,
                        std::chrono::milliseconds timeout = std::chrono::seconds(30)) {
        const auto deadline = Clock::now() + timeout;
        // Short slices: |done| may turn true through another process, not through an event.
        while (!done() && Clock::now() < deadline)
            platform::EventLoop::runUntil(done, std::chrono::milliseconds(20));
        return done();
    }

    // The group's store as another process would read it now.
    static std::optional<PropertyValue> stored(const std::string& key,
                                               const std::string& group = kGroup) {
        return platform::DefaultsSuite(group).objectForKey(key);
    }
    // The store's keys in the order its file lists them, as plistutil reads the file.
    std::vector<std::string> keysOnDisk() const {
        run("plistutil -i " + quoted(platform::DefaultsSuite::pathForSuite(kGroup)) +
            " | sed -n 's|.*<key>\\(.*\\)</key>|\\1|p' >" + quoted(files_.file("keys")));
        return readLines(files_.file("keys"));
    }
    static void storeEarlierShare(
        const std::vector<std::pair<std::string, PropertyValue>>& values) {
        platform::DefaultsSuite store(kGroup);
        for (const auto& [key, value] : values)
            store.setObject(value, key);
        ASSERT_TRUE(store.synchronize());
    }
    static std::string containerPath() {
        std::string path = platform::FileManager::defaultManager()
                               .containerURLForSecurityApplicationGroupIdentifier(kGroup)
                               .value_or("");
        return path.erase(path.find_last_not_of('/') + 1);
    }

    std::vector<std::string> shareLines() const {
        std::vector<std::string> lines;
        for (const std::string& each : log_->lines())
            if (each.rfind("[ShareViewController]", 0) == 0)
                lines.push_back(each);
        return lines;
    }
    size_t countLine(const std::string& text) const { return log_->count(text); }
    void resetLog() { log_ = std::make_unique<platform::LogCapture>(); }

    std::shared_ptr<platform::ExtensionContext> context_;
    testing_support::TempDir apps_, files_;
    std::unique_ptr<platform::LogCapture> log_;
};

// Runs parley-share and parley-host as separate processes on this test's bus.
class ShareProgramsTest : public ShareTest {
  protected:
    // Starts parley-host in the background and waits until it reported its start.
    void startHost(const std::string& options) {
        ASSERT_EQ(
            std::system((quoted(PARLEY_APP_DIR "/Contents/MacOS/parley-host") + " " + options +
                         " --record-file " + quoted(records()) + " >/dev/null 2>&1 &")
                            .c_str()),
            0);
        ASSERT_TRUE(waitFor([&] { return readLines(records()).size() >= 1; }));
    }
    std::string records() const { return files_.file("records.jsonl"); }
    std::string shareErrors() const { return readAll(files_.file("share.err")); }
    // The shell command running parley-share with |arguments| in |environment| (env words).
    std::string shareCommand(const std::string& arguments,
                             const std::string& environment = "") const {
        return (environment.empty() ? "" : "env " + environment + " ") +
               quoted(PARLEY_APPEX_DIR "/Contents/MacOS/parley-share") + " " + arguments +
               " >/dev/null 2>" + quoted(files_.file("share.err"));
    }
    int share(const std::string& arguments, const std::string& environment = "") const {
        return run(shareCommand(arguments, environment));
    }
    // Runs parley-share with |arguments| on an X server of its own and, once the sheet shows,
    // |person| (shell words acting on the sheet's window, $w); returns the share's exit status.
    int shareOnDisplay(const std::string& arguments, const std::string& person) const {
        const std::string script =
            "timeout 60 " + shareCommand(arguments) +
            " & p=$!; w=$(timeout 30 xdotool search --sync --onlyvisible --name '^Parley$' | "
            "head -n 1); " +
            person + "; wait $p";
        return run(onPrivateDisplay("sh -c " + quoted(script)) + " >/dev/null");
    }
};

}  // namespace share_test
