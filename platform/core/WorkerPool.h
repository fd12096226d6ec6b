#pragma once

#include <functional>
#include <memory>

namespace platform {

// The threads on which item providers run their loads and completions. Built on standard
// threads and locks (not Qt's pool) so that ThreadSanitizer sees every synchronisation.
class WorkerPool {
  public:
    static WorkerPool& shared();

    // Runs |task| on one of the pool's threads. Counts as pending work (see EventLoop) until it
    // has returned, or until it is abandoned.
    void async(std::function<void()> task);
    // Starts no queued task any more and waits until the running ones have returned, so that no
    // task outlives the application object and the statics it uses. Called as the event loop
    // goes away; tasks given afterwards never run. Abandoned tasks are not waited for.
    void finish();

    // One run of a task, to name in abandon().
    struct Task;
    // The task running on the calling thread; null on a thread not of the pool.
    static std::shared_ptr<Task> currentTask();
    // Stops counting |task| as pending or running, if it still runs, and gives the pool a new
    // thread in place of its own: for a task stuck where nothing can wake it (a read from a
    // mount that no longer answers). Its thread ends if the task ever returns. Any thread.
    void abandon(const std::shared_ptr<Task>& task);
    // Whether a task was abandoned and has not returned since.
    bool hasAbandonedTasks();
};

}  // namespace platform
