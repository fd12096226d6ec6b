#include <gtest/gtest.h>
#include <poll.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

#include <atomic>
#include <chrono>
#include <cstring>
#include <optional>
#include <string>
#include <thread>
#include <utility>
#include <vector>

#include "platform/core/DistributedNotificationCenter.h"
#include "platform/core/EventLoop.h"
#include "platform/core/Log.h"
#include "platform/core/MainQueue.h"
#include "platform/core/RunningApplication.h"
#include "platform/core/WorkerPool.h"
#include "tests/support/ScopedEnv.h"
#include "tests/support/TempDir.h"

using platform::DistributedNotificationCenter;
using platform::EventLoop;
using platform::RunningApplication;
using namespace std::chrono_literals;

namespace {

bool post(const std::string& name) {
    return DistributedNotificationCenter::defaultCenter().postNotificationName(name, nullptr,
                                                                               nullptr, true);
}

// A unix socket that accepts connections and never says a word.
class SilentBus {
  public:
    explicit SilentBus(const std::string& path) : path_(path) {
        fd_ = ::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0);
        struct sockaddr_un addr {};
        addr.sun_family = AF_UNIX;
        std::strncpy(addr.sun_path, path.c_str(), sizeof addr.sun_path - 1);
        EXPECT_EQ(::bind(fd_, reinterpret_cast<sockaddr*>(&addr), sizeof addr), 0);
        EXPECT_EQ(::listen(fd_, 16), 0);
        thread_ = std::thread([this] {
            while (!stop_) {
                struct pollfd p = {fd_, POLLIN, 0};
                if (::poll(&p, 1, 20) > 0) {
                    int client = ::accept(fd_, nullptr, nullptr);
                    if (client >= 0)
                        clients_.push_back(client);
                }
            }
        });
    }
    ~SilentBus() {
        stop_ = true;
        thread_.join();
        for (int client : clients_)
            ::close(client);
        ::close(fd_);
    }
    std::string address() const { return "unix:path=" + path_; }

  private:
    std::string path_;
    int fd_ = -1;
    std::atomic<bool> stop_{false};
    std::thread thread_;
    std::vector<int> clients_;
};

template <typename F>
std::chrono::milliseconds timed(F&& f) {
    auto start = std::chrono::steady_clock::now();
    f();
    return std::chrono::duration_cast<std::chrono::milliseconds>(std::chrono::steady_clock::now() -
                                                                 start);
}

}  // namespace

TEST(BusServicesTest, RunningApplicationFollowsBusNameOwnership) {
    EXPECT_TRUE(
        RunningApplication::runningApplicationsWithBundleIdentifier("com.parleyapp.NotRunning")
            .empty());
    ASSERT_TRUE(RunningApplication::registerAsRunning("com.parleyapp.Parley"));
    auto running =
        RunningApplication::runningApplicationsWithBundleIdentifier("com.parleyapp.Parley");
    ASSERT_EQ(running.size(), 1u);
    EXPECT_EQ(running[0].bundleIdentifier(), "com.parleyapp.Parley");
    // Registering twice is harmless.
    EXPECT_TRUE(RunningApplication::registerAsRunning("com.parleyapp.Parley"));

    for (const char* invalid : {"", "nodots", "com..parley", "com.1parley", "com.par ley"})
        EXPECT_TRUE(RunningApplication::runningApplicationsWithBundleIdentifier(invalid).empty())
            << invalid;
    EXPECT_FALSE(RunningApplication::registerAsRunning("not a name"));
}

TEST(BusServicesTest, ObserverReceivesPostsFromAnyThreadOnTheMainThread) {
    std::atomic<int> received{0};
    std::atomic<bool> offMain{false};
    auto observer = DistributedNotificationCenter::defaultCenter().addObserverForName(
        "ParleyMacShare_Notification", [&] {
            if (!platform::MainQueue::isMainThread())
                offMain = true;
            ++received;
        });
    ASSERT_TRUE(observer);

    ASSERT_TRUE(post("ParleyMacShare_Notification"));
    EXPECT_TRUE(EventLoop::runUntil([&] { return received == 1; }, 5s));

    std::atomic<int> posted{0};
    for (int i = 0; i < 4; ++i)
        platform::WorkerPool::shared().async([&] {
            if (post("ParleyMacShare_Notification"))
                ++posted;
        });
    EXPECT_TRUE(EventLoop::runUntil([&] { return received == 5; }, 5s));
    EXPECT_TRUE(EventLoop::runUntilIdle(5s));
    EXPECT_EQ(posted, 4);
    EXPECT_FALSE(offMain);

    // Other names are not delivered; a destroyed observer hears nothing more.
    ASSERT_TRUE(post("SomethingElse"));
    observer.reset();
    ASSERT_TRUE(post("ParleyMacShare_Notification"));
    EXPECT_TRUE(EventLoop::runUntilIdle(5s));
    EventLoop::runUntil([] { return false; }, 100ms);
    EXPECT_EQ(received, 5);
}

TEST(BusServicesTest, FirstBusUseMayBeOnAWorkerThread) {
    std::atomic<bool> done{false}, found{true}, posted{false};
    platform::WorkerPool::shared().async([&] {
        found = !RunningApplication::runningApplicationsWithBundleIdentifier("com.parleyapp.Other")
                     .empty();
        posted = post("ParleyMacShare_Notification");
        done = true;
    });
    ASSERT_TRUE(EventLoop::runUntil([&] { return done.load(); }, 5s));
    EXPECT_FALSE(found);
    EXPECT_TRUE(posted);
}

TEST(BusServicesTest, ObserverHearsAnotherProcess) {
    std::atomic<int> received{0};
    auto observer = DistributedNotificationCenter::defaultCenter().addObserverForName(
        "FromAnotherProcess", [&] { ++received; });
    ASSERT_TRUE(observer);
    int status = std::system(
        "dbus-send --session --type=signal /org/parleyapp/DistributedNotification "
        "org.parleyapp.DistributedNotification.FromAnotherProcess");
    ASSERT_EQ(status, 0);
    EXPECT_TRUE(EventLoop::runUntil([&] { return received == 1; }, 5s));
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

// No bus at all, or an address where nothing listens: both give up at once, and say so.
TEST(BusServicesTest, MissingOrDeadBusGivesUpAtOnce) {
    testing_support::TempDir dir;
    const std::pair<std::optional<std::string>, size_t> cases[] = {
        {std::nullopt, 2u}, {"unix:path=" + dir.file("no-socket"), 1u}};
    for (const auto& [address, minimumLogLines] : cases) {
        ScopedEnv bus("DBUS_SESSION_BUS_ADDRESS", address);
        platform::LogCapture log;
        auto elapsed = timed([] {
            EXPECT_TRUE(
                RunningApplication::runningApplicationsWithBundleIdentifier("com.parleyapp.Parley")
                    .empty());
            EXPECT_FALSE(post("ParleyMacShare_Notification"));
        });
        EXPECT_LT(elapsed, 1000ms) << address.value_or("no bus");
        EXPECT_GE(log.lines().size(), minimumLogLines) << address.value_or("no bus");
    }
}

TEST(BusServicesTest, SilentBusGivesUpWithinBoundedTime) {
    testing_support::TempDir dir;
    SilentBus silent(dir.file("silent.sock"));
    {
        ScopedEnv address("DBUS_SESSION_BUS_ADDRESS", silent.address());
        platform::LogCapture log;
        auto lookup = timed([] {
            EXPECT_TRUE(
                RunningApplication::runningApplicationsWithBundleIdentifier("com.parleyapp.Parley")
                    .empty());
        });
        auto posting = timed([] { EXPECT_FALSE(post("ParleyMacShare_Notification")); });
        EXPECT_LT(lookup, 1000ms);
        EXPECT_LT(posting, 1000ms);
        EXPECT_FALSE(log.lines().empty());
    }
    // Back on the real bus, everything works again.
    EXPECT_TRUE(RunningApplication::registerAsRunning("com.parleyapp.Parley"));
    EXPECT_EQ(
        RunningApplication::runningApplicationsWithBundleIdentifier("com.parleyapp.Parley").size(),
        1u);
}
