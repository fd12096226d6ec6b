#include "platform/core/StallWatch.h"

#include <condition_variable>
#include <limits>
#include <mutex>
#include <thread>
#include <vector>

namespace platform {

// The thread that checks every watch. Never destroyed: watches may outlive the application.
class StallWatchThread {
  public:
    static StallWatchThread& shared() {
        static auto* thread = new StallWatchThread;
        return *thread;
    }

    void add(const std::shared_ptr<StallWatch>& watch) {
        std::lock_guard<std::mutex> lock(mutex_);
        watch->place_ = watches_.insert(watches_.end(), watch);
        // Woken only for a deadline sooner than its own: one wake-up per burst of copies.
        if (watch->lastProgress_ + watch->quietLimit_ < wakeAt_)
            changed_.notify_one();
    }

    void remove(StallWatch* watch) {
        std::lock_guard<std::mutex> lock(mutex_);
        if (watch->place_ != watches_.end()) {
            watches_.erase(watch->place_);
            watch->place_ = watches_.end();
        }
    }

    std::list<std::shared_ptr<StallWatch>>::iterator nowhere() { return watches_.end(); }

  private:
    StallWatchThread() {
        std::thread([this] { run(); }).detach();
    }

    void run() {
        std::unique_lock<std::mutex> lock(mutex_);
        for (;;) {
            const int64_t now = StallWatch::now();
            int64_t next = std::numeric_limits<int64_t>::max();
            std::vector<std::shared_ptr<StallWatch>> givenUp;
            for (auto it = watches_.begin(); it != watches_.end();) {
                const std::shared_ptr<StallWatch>& watch = *it;
                const int64_t deadline = watch->lastProgress_ + watch->quietLimit_;
                auto watching = StallWatch::State::Watching;
                if (deadline > now ||
                    !watch->state_.compare_exchange_strong(watching, StallWatch::State::GivenUp)) {
                    // A settled watch is about to be removed by its work.
                    if (watching == StallWatch::State::Watching)
                        next = std::min(next, deadline);
                    ++it;
                    continue;
                }
                givenUp.push_back(watch);
                watch->place_ = watches_.end();
                it = watches_.erase(it);
            }
            if (!givenUp.empty()) {
                lock.unlock();
                for (const auto& watch : givenUp) {
                    // Queued before the stuck task stops counting: pending work never reads 0
                    // in between.
                    WorkerPool::shared().async(std::move(watch->onGiveUp_));
                    if (watch->task_)
                        WorkerPool::shared().abandon(watch->task_);
                }
                lock.lock();
                continue;
            }
            wakeAt_ = next;
            if (next == std::numeric_limits<int64_t>::max())
                changed_.wait(lock);
            else
                changed_.wait_for(lock, std::chrono::nanoseconds(next - now));
        }
    }

    std::mutex mutex_;
    std::condition_variable changed_;
    std::list<std::shared_ptr<StallWatch>> watches_;
    int64_t wakeAt_ = std::numeric_limits<int64_t>::max();
};

int64_t StallWatch::now() {
    return std::chrono::duration_cast<std::chrono::nanoseconds>(
               std::chrono::steady_clock::now().time_since_epoch())
        .count();
}

StallWatch::StallWatch(std::chrono::milliseconds quietLimit, std::function<void()> onGiveUp)
    : quietLimit_(std::chrono::duration_cast<std::chrono::nanoseconds>(quietLimit).count()),
      onGiveUp_(std::move(onGiveUp)),
      task_(WorkerPool::currentTask()),
      lastProgress_(now()),
      place_(StallWatchThread::shared().nowhere()) {}

std::shared_ptr<StallWatch> StallWatch::start(std::chrono::milliseconds quietLimit,
                                              std::function<void()> onGiveUp) {
    auto watch = std::make_shared<StallWatch>(quietLimit, std::move(onGiveUp));
    StallWatchThread::shared().add(watch);
    return watch;
}

void StallWatch::progress() {
    lastProgress_.store(now(), std::memory_order_relaxed);
}

bool StallWatch::settle() {
    auto watching = State::Watching;
    if (state_.compare_exchange_strong(watching, State::Settled)) {
        StallWatchThread::shared().remove(this);
        return true;
    }
    return watching == State::Settled;
}

}  // namespace platform
