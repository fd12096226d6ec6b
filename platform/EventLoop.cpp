#include "platform/EventLoop.h"

#include <QEventLoop>
#include <QGuiApplication>
#include <QTimer>
#include <atomic>
#include <cstdlib>
#include <cstring>
#include <string>
#include <thread>

#include "platform/Log.h"
#include "platform/MainQueue.h"

namespace platform {

namespace {

std::atomic<int> pendingCount{0};
QGuiApplication* application = nullptr;

bool environmentHasDisplay() {
    const char* platformName = std::getenv("QT_QPA_PLATFORM");
    if (platformName &&
        (std::strcmp(platformName, "offscreen") == 0 || std::strcmp(platformName, "minimal") == 0))
        return false;
    const char* x11 = std::getenv("DISPLAY");
    const char* wayland = std::getenv("WAYLAND_DISPLAY");
    return (x11 && *x11) || (wayland && *wayland);
}

}  // namespace

EventLoop::EventLoop(int& argc, char** argv) {
    if (!std::getenv("QT_QPA_PLATFORM")) {
        // A display named in the environment may be gone (a stale DISPLAY, a closed session);
        // Qt aborts when its only platform cannot connect, so offscreen is always the fallback.
        std::string platforms;
        if (const char* wayland = std::getenv("WAYLAND_DISPLAY"); wayland && *wayland)
            platforms += "wayland;";
        if (const char* x11 = std::getenv("DISPLAY"); x11 && *x11)
            platforms += "xcb;";
        setenv("QT_QPA_PLATFORM", (platforms + "offscreen").c_str(), 1);
    }
    application = new QGuiApplication(argc, argv);
    if (environmentHasDisplay() && !hasDisplay())
        Log::write(
            "EventLoop: the display named in the environment cannot be opened; running "
            "offscreen.");
    MainQueue::attachToEventLoop();
}

EventLoop::~EventLoop() {
    MainQueue::detachFromEventLoop();
    delete application;
    application = nullptr;
}

bool EventLoop::hasDisplay() {
    if (application) {
        QString name = QGuiApplication::platformName();
        return name != QLatin1String("offscreen") && name != QLatin1String("minimal");
    }
    return environmentHasDisplay();
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
