#include "platform/core/MainQueue.h"

#include <sys/eventfd.h>
#include <unistd.h>

#include <QSocketNotifier>
#include <QTimer>
#include <algorithm>
#include <cerrno>
#include <chrono>
#include <cstdlib>
#include <deque>
#include <map>
#include <memory>
#include <mutex>
#include <optional>
#include <utility>

#include "platform/core/EventLoop.h"
#include "platform/core/Log.h"

namespace platform {

namespace {

const Logger kLog("MainQueue: ");

using Clock = std::chrono::steady_clock;

// Tasks cross threads through this state only (a std::mutex and an eventfd), so that
// ThreadSanitizer sees every hand-off; Qt is used on the main thread alone to wait for the fd and
// to time delayed tasks.
struct QueueState {
    std::mutex mutex;
    std::deque<std::function<void()>> ready;
    // Ordered by due time, then by submission, so equal delays keep their order.
    std::map<std::pair<Clock::time_point, uint64_t>, std::function<void()>> delayed;
    uint64_t sequence = 0;
    int wakeFd = ::eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK);

    // Main-thread objects, present while an event loop is attached.
    std::unique_ptr<QSocketNotifier> notifier;
    std::unique_ptr<QTimer> timer;
};

QueueState& state() {
    static QueueState* queue = new QueueState;  // outlives every thread that may post
    return *queue;
}

void wake() {
    uint64_t one = 1;
    while (::write(state().wakeFd, &one, sizeof one) < 0 && errno == EINTR) {
    }
}

void runTask(std::function<void()>& task) {
    task();
    task = nullptr;
    EventLoop::endWork();
}

// Main thread: runs what is ready now and re-arms the timer for the next delayed task. Tasks
// queued while it runs are left for the next round so the loop stays responsive.
void drain() {
    QueueState& queue = state();
    uint64_t count = 0;
    while (::read(queue.wakeFd, &count, sizeof count) < 0 && errno == EINTR) {
    }

    size_t readyCount;
    {
        std::lock_guard<std::mutex> lock(queue.mutex);
        readyCount = queue.ready.size();
    }
    for (size_t i = 0; i < readyCount; ++i) {
        std::function<void()> task;
        {
            std::lock_guard<std::mutex> lock(queue.mutex);
            if (queue.ready.empty())
                break;
            task = std::move(queue.ready.front());
            queue.ready.pop_front();
        }
        runTask(task);
    }

    auto now = Clock::now();
    for (;;) {
        std::function<void()> task;
        {
            std::lock_guard<std::mutex> lock(queue.mutex);
            if (queue.delayed.empty() || queue.delayed.begin()->first.first > now)
                break;
            task = std::move(queue.delayed.begin()->second);
            queue.delayed.erase(queue.delayed.begin());
        }
        runTask(task);
    }

    std::optional<Clock::time_point> next;
    {
        std::lock_guard<std::mutex> lock(queue.mutex);
        if (!queue.delayed.empty())
            next = queue.delayed.begin()->first.first;
    }
    if (!queue.timer)
        return;
    if (!next) {
        queue.timer->stop();
        return;
    }
    // Round up: a delayed task never runs early.
    auto wait = std::chrono::ceil<std::chrono::milliseconds>(*next - Clock::now()).count();
    queue.timer->start(static_cast<int>(std::max<int64_t>(0, std::min<int64_t>(wait, 1 << 30))));
}

}  // namespace

void MainQueue::async(std::function<void()> task) {
    if (!task)
        return;
    EventLoop::beginWork();
    {
        std::lock_guard<std::mutex> lock(state().mutex);
        state().ready.push_back(std::move(task));
    }
    wake();
}

void MainQueue::after(int64_t delayNanoseconds, std::function<void()> task) {
    if (!task)
        return;
    auto due = Clock::now() + std::chrono::nanoseconds(std::max<int64_t>(0, delayNanoseconds));
    EventLoop::beginWork();
    {
        std::lock_guard<std::mutex> lock(state().mutex);
        state().delayed.emplace(std::make_pair(due, state().sequence++), std::move(task));
    }
    wake();
}

bool MainQueue::isMainThread() {
    // Every view entry point asks: each thread learns its answer once, as the two system calls
    // cost microseconds on some machines.
    thread_local const bool isMain = gettid() == getpid();
    return isMain;
}

void MainQueue::assertMainThread(const char* where) {
    if (isMainThread())
        return;
    kLog.write(std::string(where ? where : "?") + " must run on the main thread; aborting.");
    std::abort();
}

void MainQueue::attachToEventLoop() {
    QueueState& queue = state();
    if (queue.notifier || queue.wakeFd < 0)
        return;
    queue.notifier = std::make_unique<QSocketNotifier>(queue.wakeFd, QSocketNotifier::Read);
    QObject::connect(queue.notifier.get(), &QSocketNotifier::activated, [] { drain(); });
    queue.timer = std::make_unique<QTimer>();
    queue.timer->setSingleShot(true);
    queue.timer->setTimerType(Qt::PreciseTimer);
    QObject::connect(queue.timer.get(), &QTimer::timeout, [] { drain(); });
    wake();  // tasks queued before the loop existed
}

void MainQueue::wakeMainThread() {
    wake();
}

void MainQueue::detachFromEventLoop() {
    QueueState& queue = state();
    queue.timer.reset();
    queue.notifier.reset();
}

}  // namespace platform
