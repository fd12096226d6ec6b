#include "platform/core/EventLoop.h"

#include <QCoreApplication>
#include <QEventLoop>
#include <QTimer>
#include <atomic>
#include <thread>

#include "platform/core/MainQueue.h"

namespace platform {

namespace {
std::atomic<int> pendingCount{0};
QCoreApplication* application = nullptr;
}  // namespace

EventLoop::EventLoop(int& argc, char** argv) {
    adoptApplication(new QCoreApplication(argc, argv));
}

void EventLoop::adoptApplication(QCoreApplication* made) {
    application = made;
    MainQueue::attachToEventLoop();
}

EventLoop::~EventLoop() {
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
            std::this_thread::sleep_for(std::chrono::milliseconds(1));
        return done();
    }
    QEventLoop loop;
    QTimer poll;
    poll.setTimerType(Qt::PreciseTimer);
    poll.setInterval(1);
    QObject::connect(&poll, &QTimer::timeout, [&] {
        if (done() || std::chrono::steady_clock::now() >= deadline)
            loop.quit();
    });
    poll.start();
    loop.exec();
    return done();
}

bool EventLoop::runUntilIdle(std::chrono::milliseconds timeout) {
    return runUntil([] { return pendingWork() == 0; }, timeout);
}

void EventLoop::processEvents() {
    if (QCoreApplication::instance())
        QCoreApplication::processEvents(QEventLoop::AllEvents);
}

void EventLoop::beginWork() {
    pendingCount.fetch_add(1, std::memory_order_acq_rel);
}

void EventLoop::endWork() {
    pendingCount.fetch_sub(1, std::memory_order_acq_rel);
}

int EventLoop::pendingWork() {
    return pendingCount.load(std::memory_order_acquire);
}

}  // namespace platform
