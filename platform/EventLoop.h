#pragma once

#include <chrono>
#include <functional>

namespace platform {

// The process's application object and main event loop. Create one on the main thread before
// any view, image, queue or bus use. Without a display (no DISPLAY / WAYLAND_DISPLAY, or
// QT_QPA_PLATFORM=offscreen) it runs offscreen.
class EventLoop {
  public:
    EventLoop(int& argc, char** argv);
    ~EventLoop();
    EventLoop(const EventLoop&) = delete;
    EventLoop& operator=(const EventLoop&) = delete;

    static bool hasDisplay();

    // Runs the loop until |done| is true (checked after each event) or |timeout| passed.
    // Returns |done|'s final value.
    static bool runUntil(const std::function<bool()>& done, std::chrono::milliseconds timeout);
    // Runs the loop until no pending work is left: worker-pool tasks, main-queue tasks (delayed
    // ones included). Returns false when |timeout| passed first.
    static bool runUntilIdle(std::chrono::milliseconds timeout);
    // Processes what is queued now, without waiting.
    static void processEvents();

    // Pending-work accounting used by WorkerPool and MainQueue.
    static void beginWork();
    static void endWork();
    static int pendingWork();
};

}  // namespace platform
