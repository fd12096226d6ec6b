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

const Logger kLog("WorkerPool: ");

// A fixed set of threads: enough that several completions really run at the same time even on
// a two-core machine. Never destroyed: its threads may still be parked when the process exits.
class Pool {
  public:
    Pool() {
        unsigned count = std::max(4u, std::thread::hardware_concurrency());
        for (unsigned i = 0; i < count; ++i)
            std::thread([this] { run(); }).detach();
    }

    // Starts no queued task any more and waits until the running ones have returned.
    void finish() {
        std::unique_lock<std::mutex> lock(mutex_);
        finishing_ = true;
        tasks_.clear();
        idle_.wait(lock, [this] { return running_ == 0; });
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
                wake_.wait(lock, [this] { return !tasks_.empty() && !finishing_; });
                task = std::move(tasks_.front());
                tasks_.pop_front();
                ++running_;
            }
            try {
                task();
            } catch (const std::exception& e) {
                kLog.write(std::string("a task threw: ") + e.what());
            } catch (...) {
                kLog.write("a task threw.");
            }
            task = nullptr;  // captured state dies before the work is counted done
            EventLoop::endWork();
            {
                std::lock_guard<std::mutex> lock(mutex_);
                --running_;
            }
            idle_.notify_all();
        }
    }

    std::mutex mutex_;
    std::condition_variable wake_, idle_;
    std::deque<std::function<void()>> tasks_;
    int running_ = 0;
    bool finishing_ = false;
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

void WorkerPool::finish() {
    pool().finish();
}

void WorkerPool::async(std::function<void()> task) {
    if (!task)
        return;
    EventLoop::beginWork();
    pool().push(std::move(task));
}

}  // namespace platform
