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
        SCOPED_TRACE(invalid);
        EXPECT_FALSE(RunningApplication::registerAsRunning(invalid));
        ScopedEnv noBus("DBUS_SESSION_BUS_ADDRESS", std::nullopt);
        LogCapture log;
        EXPECT_EQ(0u, running(invalid));
        EXPECT_TRUE(log.lines().empty());
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
        SCOPED_TRACE(name);
        LogCapture log;
        EXPECT_FALSE(post(name));
        EXPECT_FALSE(log.lines().empty());
    }
    // A later observer hearing the last post proves the quiet: posts arrive in order.
    std::atomic<bool> heard{false};
    auto witness = DistributedNotificationCenter::defaultCenter().addObserverForName(
        "ParleyMacShare_Notification", [&] { heard = true; });
    ASSERT_TRUE(post("SomethingElse"));
    observer.reset();
    ASSERT_TRUE(post("ParleyMacShare_Notification"));
    ASSERT_TRUE(EventLoop::runUntil([&] { return heard.load(); }, 5s));
    EXPECT_EQ(5, received);
}

// The first use of the bus may be on a worker; without a bus, or with nothing listening at its
// address, each use fails at once and says so.
TEST(BusServicesTest, FirstBusUseOnAWorkerAndMissingBus) {
    std::atomic<int> found{-1}, posted{-1};
    WorkerPool::shared().async([&] {
        found = static_cast<int>(running("com.parleyapp.Other"));
        posted = post("ParleyMacShare_Notification");
    });
    ASSERT_TRUE(EventLoop::runUntil([&] { return posted >= 0; }, 5s));
    EXPECT_EQ(0, found);
    EXPECT_EQ(1, posted);
    TempDir dir;
    for (auto address :
         {std::optional<std::string>(), std::optional("unix:path=" + dir.file("x"))}) {
        ScopedEnv bus("DBUS_SESSION_BUS_ADDRESS", address);
        LogCapture log;
        EXPECT_EQ(0u, running("com.parleyapp.Parley"));
        EXPECT_FALSE(post("ParleyMacShare_Notification"));
        EXPECT_GE(log.lines().size(), 2u);
    }
}
