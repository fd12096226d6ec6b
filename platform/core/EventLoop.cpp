#include "platform/core/EventLoop.h"

#include <QCoreApplication>
#include <QEventLoop>
#include <QTimer>
#include <atomic>
#include <csignal>
#include <thread>

#include "platform/core/MainQueue.h"
#include "platform/core/WorkerPool.h"

namespace platform {

namespace {

std::atomic<int> pendingCount{0};
// Whether the main thread has been woken since it last looked at its wait's condition: one wake
// serves every worker task that ends meanwhile, rather than one wake each.
std::atomic<bool> mainThreadWoken{false};
// Set while the main thread waits for no pending work: only the end of the last piece of work
// can change its answer, so the ends of the others do not wake it.
std::atomic<bool> waitingForIdle{false};
QCoreApplication* application = nullptr;

// A write to a closed pipe (standard error read by nobody) and one past the file-size limit
// (ulimit -f) end the process by default. Ignored, they fail with EPIPE and EFBIG instead, which
// the writers handle: the hand-off runs to its end.
void ignoreSignalsOfFailedWrites() {
    struct sigaction ignore {};
    ignore.sa_handler = SIG_IGN;
    ::sigaction(SIGPIPE, &ignore, nullptr);
    ::sigaction(SIGXFSZ, &ignore, nullptr);
}

}  // namespace

EventLoop::EventLoop() {
    // Before the application object is made: it may write to standard error already.
    ignoreSignalsOfFailedWrites();
}

EventLoop::EventLoop(int& argc, char** argv) : EventLoop() {
    adoptApplication(new QCoreApplication(argc, argv));
}

void EventLoop::adoptApplication(QCoreApplication* made) {
    application = made;
    MainQueue::attachToEventLoop();
}

EventLoop::~EventLoop() {
    WorkerPool::shared().finish();
    MainQueue::detachFromEventLoop();
    delete application;
    application = nullptr;
}

bool EventLoop::runUntil(const std::function<bool()>& done, std::chrono::milliseconds timeout) {
    if (done())
        return true;
    auto deadline = std::chrono::steady_clock::now() + timeout;
    if (!QCoreApplication::instance()) {
        // No loop to run: only other threads can make |done| true.
        while (!done() && std::chrono::steady_clock::now() < deadline)
            std::this_thread::sleep_for(kUnannouncedChangeInterval / 10);
        return done();
    }
    // The thread sleeps until an event comes: the end of a worker task wakes it (endWork), so do
    // the deadline and, for changes that nothing announces (another process, a thread of its
    // own), a slow recheck.
    QTimer deadlineTimer;
    deadlineTimer.setTimerType(Qt::PreciseTimer);
    deadlineTimer.setSingleShot(true);
    deadlineTimer.start(
        std::chrono::ceil<std::chrono::milliseconds>(deadline - std::chrono::steady_clock::now()));
    QTimer recheck;
    recheck.start(kUnannouncedChangeInterval);
    for (;;) {
        // Cleared before the condition is read: work ending after that wakes the thread again.
        mainThreadWoken.store(false);
        if (done() || std::chrono::steady_clock::now() >= deadline)
            break;
        QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
    }
    return done();
}

bool EventLoop::runUntilIdle(std::chrono::milliseconds timeout) {
    const bool outer = !waitingForIdle.exchange(true);
    const bool idle = runUntil([] { return pendingWork() == 0; }, timeout);
    if (outer)
        waitingForIdle = false;
    return idle;
}

void EventLoop::processEvents() {
    if (QCoreApplication::instance())
        QCoreApplication::processEvents(QEventLoop::AllEvents);
}

void EventLoop::beginWork() {
    pendingCount.fetch_add(1, std::memory_order_acq_rel);
}

void EventLoop::endWork() {
    const int left = pendingCount.fetch_sub(1, std::memory_order_acq_rel) - 1;
    // A waiting main thread re-checks its condition: the work may have been what it waits for.
    if ((left > 0 && waitingForIdle.load()) || mainThreadWoken.exchange(true))
        return;
    if (!MainQueue::isMainThread())
        MainQueue::wakeMainThread();
}

int EventLoop::pendingWork() {
    return pendingCount.load(std::memory_order_acquire);
}

}  // namespace platform
