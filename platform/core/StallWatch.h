#pragma once

#include <atomic>
#include <chrono>
#include <functional>
#include <list>
#include <memory>

#include "platform/core/WorkerPool.h"

namespace platform {

// Gives up on work that stops moving: a read from a mount that no longer answers never returns,
// and no signal reliably ends it. The work reports progress(); when none comes for the quiet
// limit, the watch gives up: its give-up closure runs as a new worker-pool task, and the pool
// stops waiting for the stuck task (and replaces its thread), so that what depends on the work
// completes and the process can end. Exactly one side owns the outcome: the work, if it settles
// first, or the give-up closure.
//
// Watches are checked by one thread of their own, started with the first watch.
class StallWatch {
  public:
    // Watches the work the calling thread is about to do (a worker-pool task, or any thread).
    static std::shared_ptr<StallWatch> start(std::chrono::milliseconds quietLimit,
                                             std::function<void()> onGiveUp);

    // The work moved on: the quiet period starts again. Cheap; any thread.
    void progress();
    // The work takes its outcome: true, and the watch never gives up after; false when it has
    // given up already (the work must then leave no trace and report nothing). Repeatable.
    bool settle();
    bool hasGivenUp() const { return state_.load() == State::GivenUp; }

    // Internal: use start().
    StallWatch(std::chrono::milliseconds quietLimit, std::function<void()> onGiveUp);

  private:
    friend class StallWatchThread;
    enum class State { Watching, Settled, GivenUp };
    static int64_t now();

    const int64_t quietLimit_;
    std::function<void()> onGiveUp_;
    std::shared_ptr<WorkerPool::Task> task_;
    std::atomic<int64_t> lastProgress_;
    std::atomic<State> state_{State::Watching};
    // Where the watch stands in the watching thread's list, while it is there.
    std::list<std::shared_ptr<StallWatch>>::iterator place_;
};

}  // namespace platform
