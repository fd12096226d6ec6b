#include "tests/platform/core/CoreTestSupport.h"

static bool post(const std::string& name) {
    return DistributedNotificationCenter::defaultCenter().postNotificationName(name, nullptr,
                                                                               nullptr, true);
}

static size_t running(const char* bundleIdentifier) {
    return RunningApplication::runningApplicationsWithBundleIdentifier(bundleIdentifier).size();
}

// Invalid names never reach the bus: even with no bus at all, a look-up has nothing to log.
TEST(BusServicesTest, NamesAndPostsFromAnyThreadReachTheMainThread) {
    EXPECT_EQ(running("com.parleyapp.NotRunning"), 0u);
    ASSERT_TRUE(RunningApplication::registerAsRunning("com.parleyapp.Parley"));
    EXPECT_TRUE(RunningApplication::registerAsRunning("com.parleyapp.Parley"));  // harmless
    EXPECT_EQ(running("com.parleyapp.Parley"), 1u);
    for (const char* invalid : {"", "nodots", "com..parley", "com.1parley", "com.par ley"}) {
        EXPECT_FALSE(RunningApplication::registerAsRunning(invalid)) << invalid;
        ScopedEnv noBus("DBUS_SESSION_BUS_ADDRESS", std::nullopt);
        LogCapture log;
        EXPECT_TRUE(running(invalid) == 0 && log.lines().empty()) << invalid;
    }

    // Posts from this process's threads and from another process reach the observer on the main
    // thread; other names, invalid ones and a destroyed observer hear nothing.
    std::atomic<int> received{0}, posted{0};  // a delivery off the main thread counts 100
    auto observer = DistributedNotificationCenter::defaultCenter().addObserverForName(
        "ParleyMacShare_Notification", [&] { received += MainQueue::isMainThread() ? 1 : 100; });
    for (int i = 0; i < 4; ++i)
        WorkerPool::shared().async([&] { posted += post("ParleyMacShare_Notification"); });
    EXPECT_TRUE(EventLoop::runUntil([&] { return received == 4; }, 5s));
    ASSERT_EQ(
        std::system("dbus-send --session --type=signal /org/parleyapp/DistributedNotification "
                    "org.parleyapp.DistributedNotification.ParleyMacShare_Notification"),
        0);
    EXPECT_TRUE(EventLoop::runUntil([&] { return received == 5; }, 5s));
    EXPECT_EQ(posted, 4);
    for (const char* name : {"", "has.dot", "has space", "1digit", "a-dash"}) {
        LogCapture log;
        EXPECT_FALSE(post(name) || log.lines().empty()) << name;
    }
    ASSERT_TRUE(post("SomethingElse"));
    observer.reset();
    ASSERT_TRUE(post("ParleyMacShare_Notification"));
    EventLoop::runUntil([] { return false; }, 100ms);
    EXPECT_EQ(received, 5);
}

// The first use of the bus may be on a worker; without a bus, or with nothing listening at its
// address, each use fails at once and says so.
TEST(BusServicesTest, FirstBusUseOnAWorkerAndMissingBus) {
    std::atomic<int> result{0};  // 1: failed, 2: worked
    WorkerPool::shared().async([&] {
        result = running("com.parleyapp.Other") == 0 && post("ParleyMacShare_Notification") ? 2 : 1;
    });
    EXPECT_TRUE(EventLoop::runUntil([&] { return result == 2; }, 5s));
    TempDir dir;
    for (auto address :
         {std::optional<std::string>(), std::optional("unix:path=" + dir.file("x"))}) {
        ScopedEnv bus("DBUS_SESSION_BUS_ADDRESS", address);
        LogCapture log;
        EXPECT_TRUE(running("com.parleyapp.Parley") == 0 && !post("ParleyMacShare_Notification"));
        EXPECT_GE(log.lines().size(), 2u);
    }
}
