#include <numeric>

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
    std::vector<int> expected(100);
    std::iota(expected.begin(), expected.end(), 0);
    expected.insert(expected.end(), {-2, -3, -1});
    ASSERT_EQ(expected, order);
    for (const auto& [index, least] : {std::pair{100, 30ms}, {101, 30ms}, {102, 120ms}})
        EXPECT_GE(late[index], least) << index;
}
