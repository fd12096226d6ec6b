#include "tests/share/ShareTestSupport.h"

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <sstream>

#include "platform/core/EventLoop.h"
#include "platform/core/FileManager.h"
#include "platform/core/MainQueue.h"

namespace share_test {

namespace fs = std::filesystem;

std::string line(const std::string& text) {
    return "[ShareViewController]: " + text;
}

std::string readBackLine(const std::string& value, const std::string& key) {
    return line("NSUserDefaults set value [" + value + "] for key [" + key + "].");
}

void RecordingController::wakeupParley() {
    Wakeup wakeup;
    wakeup.time = Clock::now();
    wakeup.onMainThread = platform::MainQueue::isMainThread();
    wakeup.storedPaths = ShareTest::stored("ParleyMacSharePathArray", shareFolderName());
    wakeup.storedUrl = ShareTest::stored("ParleyMacShareUrl", shareFolderName());
    {
        std::lock_guard<std::mutex> lock(mutex_);
        wakeups_.push_back(wakeup);
    }
    ShareViewController::wakeupParley();
}

int RecordingController::wakeupCount() const {
    std::lock_guard<std::mutex> lock(mutex_);
    return static_cast<int>(wakeups_.size());
}

std::vector<RecordingController::Wakeup> RecordingController::wakeups() const {
    std::lock_guard<std::mutex> lock(mutex_);
    return wakeups_;
}

NotificationCounter::NotificationCounter() {
    observer_ = platform::DistributedNotificationCenter::defaultCenter().addObserverForName(
        "ParleyMacShare_Notification", [this] {
            ++count_;
            last_ = Clock::now();
        });
    EXPECT_NE(observer_, nullptr) << "cannot observe the session bus";
}

GatedLoad::GatedLoad(std::optional<platform::Url> item, const std::string& type)
    : state_(std::make_shared<State>()) {
    std::vector<std::string> types{type};
    if (type == platform::kUTTypeFileURL)
        types.push_back(platform::kUTTypeURL);
    provider_ = platform::ItemProvider::withTypes(types);
    auto state = state_;
    provider_->registerItemForTypeIdentifier(type, [state, item]() -> std::optional<platform::Url> {
        state->started = true;
        std::unique_lock<std::mutex> lock(state->mutex);
        // Bounded: a test that forgets to release still ends.
        state->changed.wait_for(lock, std::chrono::seconds(30), [&] { return state->released; });
        return item;
    });
}

void GatedLoad::release() {
    {
        std::lock_guard<std::mutex> lock(state_->mutex);
        state_->released = true;
    }
    state_->changed.notify_all();
}

void ShareTest::SetUp() {
    setenv("PARLEY_APPLICATIONS_DIR", apps_.path().c_str(), 1);
    useBundle("<string>" + kTeamId + "</string>");
    log_ = std::make_unique<platform::LogCapture>();
}

void ShareTest::TearDown() {
    // Nothing may still run against this test's files.
    EXPECT_TRUE(platform::EventLoop::runUntilIdle(std::chrono::seconds(60)));
    log_.reset();
    platform::Bundle::setMainBundle(nullptr);
}

void ShareTest::useBundle(const std::string& teamIdentifierXml,
                          const std::string& bundleIdentifier) {
    static int serial = 0;
    const std::string path = bundleDir_.file("ParleyShare" + std::to_string(serial++) + ".appex");
    fs::create_directories(path + "/Contents/Resources");
    std::ofstream info(path + "/Contents/Info.plist");
    info << "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
            "<plist version=\"1.0\">\n<dict>\n"
            "<key>CFBundleIdentifier</key><string>"
         << bundleIdentifier << "</string>\n";
    if (!teamIdentifierXml.empty())
        info << "<key>TeamIdentifier</key>" << teamIdentifierXml << "\n";
    info << "</dict>\n</plist>\n";
    info.close();
    platform::Bundle::setMainBundle(std::make_shared<platform::Bundle>(path));
}

std::shared_ptr<platform::ItemProvider> ShareTest::fileProvider(const std::string& path) {
    return platform::ItemProvider::withURL(platform::Url::fileURLWithPath(path));
}

std::shared_ptr<platform::ItemProvider> ShareTest::linkProvider(const std::string& url) {
    return platform::ItemProvider::withURL(*platform::Url::URLWithString(url));
}

std::shared_ptr<RecordingController> ShareTest::startShare(
    std::vector<std::shared_ptr<platform::ItemProvider>> attachments) {
    return startShareWithItems({std::make_shared<platform::ExtensionItem>(std::move(attachments))});
}

std::shared_ptr<RecordingController> ShareTest::startShareWithItems(
    std::vector<std::shared_ptr<platform::ExtensionItem>> items) {
    context_ = std::make_shared<platform::ExtensionContext>(std::move(items));
    auto controller = ShareViewController::create<RecordingController>();
    controller->setExtensionContext(context_);
    controller->view();
    return controller;
}

void ShareTest::runUntilIdle(std::chrono::milliseconds timeout) {
    ASSERT_TRUE(platform::EventLoop::runUntilIdle(timeout)) << "the hand-off did not end";
}

bool ShareTest::waitFor(const std::function<bool()>& done, std::chrono::milliseconds timeout) {
    const auto deadline = Clock::now() + timeout;
    while (!done()) {
        if (Clock::now() >= deadline)
            return false;
        // Short slices: |done| may turn true through another process, not through an event.
        platform::EventLoop::runUntil(done, std::chrono::milliseconds(20));
    }
    return true;
}

std::optional<platform::PropertyValue> ShareTest::stored(const std::string& key,
                                                         const std::string& group) {
    return platform::DefaultsSuite(group).objectForKey(key);
}

void ShareTest::storeEarlierShare(
    const std::vector<std::pair<std::string, platform::PropertyValue>>& values) {
    platform::DefaultsSuite store(kGroup);
    for (const auto& [key, value] : values)
        store.setObject(value, key);
    ASSERT_TRUE(store.synchronize());
}

std::string ShareTest::containerPath(const std::string& group) {
    std::string path = platform::FileManager::defaultManager()
                           .containerURLForSecurityApplicationGroupIdentifier(group)
                           .value_or("");
    while (path.size() > 1 && path.back() == '/')
        path.pop_back();
    return path;
}

std::vector<std::string> ShareTest::shareLines() const {
    std::vector<std::string> lines;
    for (const std::string& each : log_->lines())
        if (each.rfind("[ShareViewController]", 0) == 0)
            lines.push_back(each);
    return lines;
}

size_t ShareTest::countLine(const std::string& text) const {
    return log_->count(text);
}

void ShareTest::installFakeHost() {
    const std::string app = apps_.file("Parley.app");
    fs::create_directories(app + "/Contents/MacOS");
    std::ofstream info(app + "/Contents/Info.plist");
    info << "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<plist version=\"1.0\">\n<dict>\n"
            "<key>CFBundleIdentifier</key><string>"
         << kHostId
         << "</string>\n<key>CFBundleExecutable</key><string>fake-host</string>\n"
            "</dict>\n</plist>\n";
    info.close();
    const std::string script = app + "/Contents/MacOS/fake-host";
    std::ofstream out(script);
    out << "#!/bin/sh\necho launched >> '" << launchMarker() << "'\n";
    out.close();
    fs::permissions(script, fs::perms::owner_all | fs::perms::group_read | fs::perms::others_read);
}

int ShareTest::launchCount() const {
    std::ifstream in(launchMarker());
    int count = 0;
    std::string text;
    while (std::getline(in, text))
        ++count;
    return count;
}

void ShareProgramsTest::SetUp() {
    ShareTest::SetUp();
    ASSERT_TRUE(fs::exists(kShareProgram)) << "build parley-share first";
    ASSERT_TRUE(fs::exists(kHostProgram)) << "build parley-host first";
}

void ShareProgramsTest::startHost(const std::string& options) {
    ASSERT_EQ(
        std::system((quoted(kHostProgram) + " " + options + " --record-file " + quoted(records()) +
                     " >/dev/null 2>" + quoted(files_.file("host.err")) + " &")
                        .c_str()),
        0);
    ASSERT_TRUE(waitFor([&] { return readLines(records()).size() >= 1; }))
        << readAll(files_.file("host.err"));
}

int ShareProgramsTest::share(const std::string& arguments, const std::string& environment) {
    return run((environment.empty() ? "" : "env " + environment + " ") + quoted(kShareProgram) +
               " " + arguments + " >/dev/null 2>" + quoted(shareErrors()));
}

bool nearRgb(const platform::Rgba& pixel, int r, int g, int b, int tolerance) {
    return std::abs(pixel.r - r) <= tolerance && std::abs(pixel.g - g) <= tolerance &&
           std::abs(pixel.b - b) <= tolerance && pixel.a == 255;
}

}  // namespace share_test
