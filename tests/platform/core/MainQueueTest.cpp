#include "tests/platform/core/CoreTestSupport.h"

using platform::EventLoop;
using platform::MainQueue;
using namespace std::chrono_literals;
using Clock = std::chrono::steady_clock;

TEST(MainQueueTest, AsyncFromWorkersRunsInOrderOnTheMainThread) {
    std::vector<int> order;  // touched on the main thread only
    std::atomic<bool> allOnMain{true};
    std::thread producer([&] {
        for (int i = 0; i < 200; ++i)
            MainQueue::async([&, i] {
                if (!MainQueue::isMainThread())
                    allOnMain = false;
                order.push_back(i);
            });
    });
    producer.join();
    ASSERT_TRUE(EventLoop::runUntilIdle(5s));
    ASSERT_EQ(order.size(), 200u);
    for (int i = 0; i < 200; ++i)
        EXPECT_EQ(order[static_cast<size_t>(i)], i);
    EXPECT_TRUE(allOnMain);
}

TEST(MainQueueTest, AfterRunsByDueTimeNeverEarly) {
    std::string order;
    std::vector<Clock::duration> late;  // how long after scheduling each ran
    std::mutex scheduledMutex;
    Clock::time_point scheduled;
    auto record = [&](char name) {
        return [&, name] {
            order += name;
            late.push_back(Clock::now() - scheduled);
        };
    };
    std::thread scheduler([&] {
        std::lock_guard<std::mutex> lock(scheduledMutex);
        scheduled = Clock::now();
        MainQueue::after(120'000'000, record('A'));
        MainQueue::after(30'000'000, record('B'));
        MainQueue::after(30'000'000, record('C'));
        MainQueue::after(-5, record('D'));
    });
    scheduler.join();
    ASSERT_TRUE(EventLoop::runUntilIdle(5s));
    std::lock_guard<std::mutex> lock(scheduledMutex);
    ASSERT_EQ(order, "DBCA");
    EXPECT_GE(late[1], 30ms);
    EXPECT_GE(late[2], 30ms);
    EXPECT_GE(late[3], 120ms);
}

TEST(MainQueueTest, PendingWorkCountsQueuedTasksUntilTheyRun) {
    ASSERT_EQ(EventLoop::pendingWork(), 0);
    bool ran = false;
    MainQueue::after(50'000'000, [&] { ran = true; });
    EXPECT_EQ(EventLoop::pendingWork(), 1);
    EventLoop::processEvents();
    EXPECT_FALSE(ran);
    ASSERT_TRUE(EventLoop::runUntilIdle(5s));
    EXPECT_TRUE(ran);
    EXPECT_FALSE(EventLoop::runUntil([] { return false; }, 20ms));
}

TEST(MainQueueTest, NestedRunsAndTasksPostingTasks) {
    int depth = 0;
    MainQueue::async([&] {
        MainQueue::async([&] { depth = 2; });
        depth = 1;
        EXPECT_TRUE(EventLoop::runUntil([&] { return depth == 2; }, 5s));
    });
    ASSERT_TRUE(EventLoop::runUntilIdle(5s));
    EXPECT_EQ(depth, 2);
}

TEST(MainQueueTest, MainThreadChecks) {
    EXPECT_TRUE(MainQueue::isMainThread());
    bool workerIsMain = true;
    std::thread([&] { workerIsMain = MainQueue::isMainThread(); }).join();
    EXPECT_FALSE(workerIsMain);
    MainQueue::assertMainThread("MainThreadChecks");  // returns on the main thread
    EXPECT_DEATH(std::thread([] { MainQueue::assertMainThread("worker"); }).join(), "");
}
