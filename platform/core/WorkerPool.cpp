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

struct WorkerPool::Task {
    // Both under the pool's mutex.
    bool returned = false;
    bool abandoned = false;
};

namespace {

const Logger kLog("WorkerPool: ");

thread_local std::shared_ptr<WorkerPool::Task> currentRun;

// A fixed number of running threads: enough that several completions really run at the same
// time even on a two-core machine. Never destroyed: its threads may still be parked, or stuck in
// an abandoned task, when the process exits.
class Pool {
  public:
    Pool() {
        unsigned count = std::max(4u, std::thread::hardware_concurrency());
        for (unsigned i = 0; i < count; ++i)
            startThread();
    }

    // Starts no queued task any more and waits until the running ones have returned.
    void finish() {
        std::unique_lock<std::mutex> lock(mutex_);
        finishing_ = true;
        tasks_.clear();
        idle_.wait(lock, [this] { return running_ == 0; });
    }

    bool hasAbandoned() {
        std::lock_guard<std::mutex> lock(mutex_);
        return abandoned_ > 0;
    }

    void push(std::function<void()> task) {
        {
            std::lock_guard<std::mutex> lock(mutex_);
            tasks_.push_back(std::move(task));
        }
        wake_.notify_one();
    }

    void abandon(const std::shared_ptr<WorkerPool::Task>& run) {
        {
            std::lock_guard<std::mutex> lock(mutex_);
            if (run->returned || run->abandoned)
                return;
            run->abandoned = true;
            --running_;
            ++abandoned_;
            startThread();
        }
        idle_.notify_all();
        EventLoop::endWork();
    }

  private:
    void startThread() {
        std::thread([this] { work(); }).detach();
    }

    void work() {
        for (;;) {
            std::function<void()> task;
            auto run = std::make_shared<WorkerPool::Task>();
            {
                std::unique_lock<std::mutex> lock(mutex_);
                wake_.wait(lock, [this] { return !tasks_.empty() && !finishing_; });
                task = std::move(tasks_.front());
                tasks_.pop_front();
                ++running_;
            }
            currentRun = run;
            try {
                task();
            } catch (const std::exception& e) {
                kLog.write(std::string("a task threw: ") + e.what());
            } catch (...) {
                kLog.write("a task threw.");
            }
            task = nullptr;  // captured state dies before the work is counted done
            currentRun = nullptr;
            {
                std::lock_guard<std::mutex> lock(mutex_);
                run->returned = true;
                // Its place was given to another thread, and it was counted done then.
                if (run->abandoned) {
                    --abandoned_;
                    return;
                }
                --running_;
            }
            EventLoop::endWork();
            idle_.notify_all();
        }
    }

    std::mutex mutex_;
    std::condition_variable wake_, idle_;
    std::deque<std::function<void()>> tasks_;
    int running_ = 0;
    int abandoned_ = 0;
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

std::shared_ptr<WorkerPool::Task> WorkerPool::currentTask() {
    return currentRun;
}

bool WorkerPool::hasAbandonedTasks() {
    return pool().hasAbandoned();
}

void WorkerPool::abandon(const std::shared_ptr<Task>& task) {
    if (task)
        pool().abandon(task);
}

}  // namespace platform
