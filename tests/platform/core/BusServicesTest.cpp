#include <sys/socket.h>
#include <sys/un.h>
#include "tests/platform/core/CoreTestSupport.h"

#include <cstring>
#include <optional>

#include "platform/core/DistributedNotificationCenter.h"
#include "platform/core/RunningApplication.h"

using platform::DistributedNotificationCenter;
using platform::EventLoop;
using platform::RunningApplication;
using namespace std::chrono_literals;

namespace {

bool post(const std::string& name) {
    return DistributedNotificationCenter::defaultCenter().postNotificationName(name, nullptr,
                                                                               nullptr, true);
}

// A unix socket that takes connections into its backlog and never says a word.
class SilentBus {
  public:
    explicit SilentBus(const std::string& path)
        : path_(path), fd_(::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0)) {
        struct sockaddr_un addr {};
        addr.sun_family = AF_UNIX;
        std::strncpy(addr.sun_path, path.c_str(), sizeof addr.sun_path - 1);
        EXPECT_EQ(::bind(fd_, reinterpret_cast<sockaddr*>(&addr), sizeof addr), 0);
        EXPECT_EQ(::listen(fd_, 16), 0);
    }
    ~SilentBus() { ::close(fd_); }
    std::string address() const { return "unix:path=" + path_; }

  private:
    std::string path_;
    int fd_;
};

template <typename F>
std::chrono::milliseconds timed(F&& f) {
    auto start = std::chrono::steady_clock::now();
    f();
    return std::chrono::duration_cast<std::chrono::milliseconds>(std::chrono::steady_clock::now() -
                                                                 start);
}

std::vector<RunningApplication> running(const char* bundleIdentifier) {
    return RunningApplication::runningApplicationsWithBundleIdentifier(bundleIdentifier);
}

}  // namespace

TEST(BusServicesTest, RunningApplicationFollowsBusNameOwnership) {
    EXPECT_TRUE(running("com.parleyapp.NotRunning").empty());
    ASSERT_TRUE(RunningApplication::registerAsRunning("com.parleyapp.Parley"));
    EXPECT_TRUE(RunningApplication::registerAsRunning("com.parleyapp.Parley"));  // harmless
    ASSERT_EQ(running("com.parleyapp.Parley").size(), 1u);
    EXPECT_EQ(running("com.parleyapp.Parley")[0].bundleIdentifier(), "com.parleyapp.Parley");

    // Invalid names never reach the bus: even with no bus at all, a look-up has nothing to log.
    for (const char* invalid : {"", "nodots", "com..parley", "com.1parley", "com.par ley"}) {
        EXPECT_FALSE(RunningApplication::registerAsRunning(invalid)) << invalid;
        ScopedEnv noBus("DBUS_SESSION_BUS_ADDRESS", std::nullopt);
        platform::LogCapture log;
        EXPECT_TRUE(running(invalid).empty()) << invalid;
        EXPECT_TRUE(log.lines().empty()) << invalid;
    }
}

// Posts from this process's threads and from another process reach the observer, always on the main
// thread; other names and a destroyed observer hear nothing.
TEST(BusServicesTest, ObserverReceivesPostsFromAnyThreadOnTheMainThread) {
    std::atomic<int> received{0};
    std::atomic<bool> offMain{false};
    auto observer = DistributedNotificationCenter::defaultCenter().addObserverForName(
        "ParleyMacShare_Notification", [&] {
            offMain = offMain || !platform::MainQueue::isMainThread();
            ++received;
        });
    ASSERT_TRUE(observer);
    ASSERT_TRUE(post("ParleyMacShare_Notification"));
    EXPECT_TRUE(EventLoop::runUntil([&] { return received == 1; }, 5s));

    std::atomic<int> posted{0};
    for (int i = 0; i < 4; ++i)
        platform::WorkerPool::shared().async(
            [&] { posted += post("ParleyMacShare_Notification"); });
    EXPECT_TRUE(EventLoop::runUntil([&] { return received == 5; }, 5s));
    ASSERT_EQ(std::system("dbus-send --session --type=signal "
                          "/org/parleyapp/DistributedNotification "
                          "org.parleyapp.DistributedNotification.ParleyMacShare_Notification"),
              0);
    EXPECT_TRUE(EventLoop::runUntil([&] { return received == 6; }, 5s));
    EXPECT_EQ(posted, 4);
    EXPECT_FALSE(offMain);

    ASSERT_TRUE(post("SomethingElse"));
    observer.reset();
    ASSERT_TRUE(post("ParleyMacShare_Notification"));
    EventLoop::runUntil([] { return false; }, 100ms);
    EXPECT_EQ(received, 6);
}

TEST(BusServicesTest, FirstBusUseMayBeOnAWorkerThread) {
    std::atomic<bool> done{false}, found{true}, posted{false};
    platform::WorkerPool::shared().async([&] {
        found = !running("com.parleyapp.Other").empty();
        posted = post("ParleyMacShare_Notification");
        done = true;
    });
    ASSERT_TRUE(EventLoop::runUntil([&] { return done.load(); }, 5s));
    EXPECT_FALSE(found);
    EXPECT_TRUE(posted);
}

TEST(BusServicesTest, InvalidNotificationNamesAreRefused) {
    for (const char* name : {"", "has.dot", "has space", "1digit", "a-dash"}) {
        platform::LogCapture log;
        EXPECT_FALSE(post(name)) << name;
        EXPECT_FALSE(log.lines().empty()) << name;
    }
    EXPECT_FALSE(
        DistributedNotificationCenter::defaultCenter().addObserverForName("bad.name", [] {}));
}

// No bus at all, an address where nothing listens, or a bus that never answers: each gives up
// within a bound and says so; back on the real bus everything works again.
TEST(BusServicesTest, MissingDeadOrSilentBusGivesUpAtOnce) {
    testing_support::TempDir dir;
    SilentBus silent(dir.file("silent.sock"));
    const std::optional<std::string> addresses[] = {
        std::nullopt, "unix:path=" + dir.file("no-socket"), silent.address()};
    for (const auto& address : addresses) {
        SCOPED_TRACE(address.value_or("no bus"));
        ScopedEnv bus("DBUS_SESSION_BUS_ADDRESS", address);
        platform::LogCapture log;
        EXPECT_LT(timed([] { EXPECT_TRUE(running("com.parleyapp.Parley").empty()); }), 1000ms);
        EXPECT_LT(timed([] { EXPECT_FALSE(post("ParleyMacShare_Notification")); }), 1000ms);
        EXPECT_GE(log.lines().size(), 2u);
    }
    EXPECT_TRUE(RunningApplication::registerAsRunning("com.parleyapp.Parley"));
    EXPECT_EQ(running("com.parleyapp.Parley").size(), 1u);
}
