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
    // Starts no queued task any more and waits until the running ones have returned, so that no
    // task outlives the application object and the statics it uses. Called as the event loop
    // goes away; tasks given afterwards never run.
    void finish();
};

}  // namespace platform
