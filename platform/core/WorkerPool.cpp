#include "platform/core/WorkerPool.h"

#include <algorithm>
#include <condition_variable>
#include <deque>
#include <exception>
#include <mutex>
#include <thread>

#include "platform/core/EventLoop.h"
#include "platform/core/Log.h"

namespace platform {

namespace {

// A fixed set of threads: enough that several completions really run at the same time even on
// a two-core machine. Never destroyed: its threads may still be parked when the process exits.
class Pool {
  public:
    Pool() {
        unsigned count = std::max(4u, std::thread::hardware_concurrency());
        for (unsigned i = 0; i < count; ++i)
            std::thread([this] { run(); }).detach();
    }

    void push(std::function<void()> task) {
        {
            std::lock_guard<std::mutex> lock(mutex_);
            tasks_.push_back(std::move(task));
        }
        wake_.notify_one();
    }

  private:
    void run() {
        for (;;) {
            std::function<void()> task;
            {
                std::unique_lock<std::mutex> lock(mutex_);
                wake_.wait(lock, [this] { return !tasks_.empty(); });
                task = std::move(tasks_.front());
                tasks_.pop_front();
            }
            try {
                task();
            } catch (const std::exception& e) {
                Log::write(std::string("WorkerPool: a task threw: ") + e.what());
            } catch (...) {
                Log::write("WorkerPool: a task threw.");
            }
            task = nullptr;  // captured state dies before the work is counted done
            EventLoop::endWork();
        }
    }

    std::mutex mutex_;
    std::condition_variable wake_;
    std::deque<std::function<void()>> tasks_;
};

Pool& pool() {
    static Pool* instance = new Pool;
    return *instance;
}

}  // namespace

WorkerPool& WorkerPool::shared() {
    static WorkerPool workerPool;
    return workerPool;
}

void WorkerPool::async(std::function<void()> task) {
    if (!task)
        return;
    EventLoop::beginWork();
    pool().push(std::move(task));
}

}  // namespace platform
