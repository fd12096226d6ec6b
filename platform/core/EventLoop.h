#pragma once

#include <chrono>
#include <functional>

class QCoreApplication;

namespace platform {

// The process's application object and main event loop. Create one on the main thread before
// any queue or bus use. This one needs no display; a program that shows views creates a
// DisplayEventLoop instead. From its creation on, SIGPIPE and SIGXFSZ are ignored: a write to a
// pipe nobody reads (standard error) or past the file-size limit fails with an error, which the
// writer handles, instead of ending the process.
class EventLoop {
  public:
    EventLoop(int& argc, char** argv);
    virtual ~EventLoop();
    EventLoop(const EventLoop&) = delete;
    EventLoop& operator=(const EventLoop&) = delete;

    // Runs the loop until |done| is true or |timeout| passed; returns |done|'s final value.
    // |done| is checked after each event and after each worker or main-queue task; the thread
    // sleeps in between. A change that none of these announces is noticed within
    // kUnannouncedChangeInterval.
    static bool runUntil(const std::function<bool()>& done, std::chrono::milliseconds timeout);
    static constexpr std::chrono::milliseconds kUnannouncedChangeInterval{250};
    // Runs the loop until no pending work is left: worker-pool tasks, main-queue tasks (delayed
    // ones included). Returns false when |timeout| passed first. Meanwhile a worker task wakes
    // the thread only when it is the last pending work, so that thousands of them cost one wake.
    static bool runUntilIdle(std::chrono::milliseconds timeout);
    // Processes what is queued now, without waiting.
    static void processEvents();

    // Pending-work accounting used by WorkerPool and MainQueue.
    static void beginWork();
    static void endWork();
    static int pendingWork();

  protected:
    // For a subclass that makes its own application object: it calls adoptApplication.
    EventLoop();
    // Takes ownership of the process's application object and hooks the main queue into it.
    void adoptApplication(QCoreApplication* application);
};

}  // namespace platform
