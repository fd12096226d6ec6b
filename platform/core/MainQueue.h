#pragma once

#include <cstdint>
#include <functional>

namespace platform {

// The main dispatch queue: tasks run in order on the main thread's event loop. Callable from any
// thread. Each task counts as pending work (see EventLoop) until it has run.
class MainQueue {
  public:
    // dispatch_async
    static void async(std::function<void()> task);
    // dispatch_after with a delay in nanoseconds from now.
    static void after(int64_t delayNanoseconds, std::function<void()> task);

    static bool isMainThread();
    // Aborts with a message when called off the main thread (views and controllers are
    // main-thread only).
    static void assertMainThread(const char* where);

  private:
    friend class EventLoop;
    // The event loop hooks the queue into the main thread's Qt loop when it starts, and unhooks
    // it before the application object goes. Tasks queued before that wait for the hook.
    static void attachToEventLoop();
    static void detachFromEventLoop();
    // Wakes the main thread's loop (from any thread), whether or not a task is queued.
    static void wakeMainThread();
};

}  // namespace platform
