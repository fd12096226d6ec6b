#include "tests/platform/core/CoreTestSupport.h"

using Clock = std::chrono::steady_clock;

// Tasks from a worker run on the main thread: async ones in order, delayed ones by due time
// (equal times in order), never early.
TEST(MainQueueTest, TasksFromWorkersRunInOrderAndByDueTimeOnTheMainThread) {
    std::vector<int> order;  // touched on the main thread only
    std::vector<Clock::duration> late;
    Clock::time_point scheduled;
    auto record = [&](int name) {
        return [&, name] {
            order.push_back(MainQueue::isMainThread() ? name : 1000);
            late.push_back(Clock::now() - scheduled);
        };
    };
    std::thread([&] {
        scheduled = Clock::now();
        MainQueue::after(120'000'000, record(-1));
        MainQueue::after(30'000'000, record(-2));
        MainQueue::after(30'000'000, record(-3));
        for (int i = 0; i < 100; ++i)
            MainQueue::async(record(i));
    }).join();
    ASSERT_TRUE(EventLoop::runUntilIdle(5s));
    ASSERT_EQ(order.size(), 103u);
    EXPECT_TRUE(std::is_sorted(order.begin(), order.begin() + 100) && order[99] == 99);
    EXPECT_EQ(std::vector<int>(order.begin() + 100, order.end()), std::vector<int>({-2, -3, -1}));
    EXPECT_TRUE(late[100] >= 30ms && late[101] >= 30ms && late[102] >= 120ms);
}

// Pending work counts a delayed task until it runs; a task may post a task and run the loop; only
// the main thread is the main thread.
TEST(MainQueueTest, PendingWorkNestedRunsAndMainThreadChecks) {
    int depth = 0;
    MainQueue::after(50'000'000, [&] {
        MainQueue::async([&] { depth = 2; });
        depth = 1;
        EXPECT_TRUE(EventLoop::runUntil([&] { return depth == 2; }, 5s));
    });
    EventLoop::processEvents();
    EXPECT_TRUE(EventLoop::pendingWork() == 1 && depth == 0);
    ASSERT_TRUE(EventLoop::runUntilIdle(5s));
    EXPECT_EQ(depth, 2);
    bool workerIsMain = true;
    std::thread([&] { workerIsMain = MainQueue::isMainThread(); }).join();
    EXPECT_TRUE(MainQueue::isMainThread() && !workerIsMain);
    EXPECT_DEATH(std::thread([] { MainQueue::assertMainThread("worker"); }).join(), "");
}
