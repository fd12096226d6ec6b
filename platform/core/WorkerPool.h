#pragma once

#include <functional>

namespace platform {

// The threads on which item providers run their loads and completions. Built on standard
// threads and locks (not Qt's pool) so that ThreadSanitizer sees every synchronisation.
class WorkerPool {
  public:
    static WorkerPool& shared();

    // Runs |task| on one of the pool's threads. Counts as pending work (see EventLoop) until it
    // has returned.
    void async(std::function<void()> task);
};

}  // namespace platform
