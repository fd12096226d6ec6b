#include "platform/ui/DisplayEventLoop.h"

#include <fontconfig/fontconfig.h>

#include <QGuiApplication>
#include <QIcon>
#include <QImage>
#include <QPixmap>
#include <cstdlib>
#include <cstring>
#include <string>
#include <thread>

#include "platform/core/Log.h"
#include "platform/core/MainQueue.h"
#include "platform/core/WorkerPool.h"

namespace platform {

namespace {

const Logger kLog("EventLoop: ");

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

DisplayEventLoop::DisplayEventLoop(int& argc, char** argv) {
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
    // Fontconfig reads its configuration and font caches (about 5 ms) on another core while Qt
    // connects to the display, so that the sheet's first text measured does not wait for them.
    std::thread loadFontConfiguration([] { FcInit(); });
    adoptApplication(new QGuiApplication(argc, argv));
    loadFontConfiguration.join();
    if (environmentHasDisplay() && !hasDisplay())
        kLog.write(
            "the display named in the environment cannot be opened; running "
            "offscreen.");
}

bool DisplayEventLoop::hasDisplay() {
    if (qobject_cast<QGuiApplication*>(QCoreApplication::instance())) {
        QString name = QGuiApplication::platformName();
        return name != QLatin1String("offscreen") && name != QLatin1String("minimal");
    }
    return environmentHasDisplay();
}

void DisplayEventLoop::setDesktopEntryId(const std::string& desktopEntryId) {
    QGuiApplication::setDesktopFileName(QString::fromStdString(desktopEntryId));
}

void DisplayEventLoop::setWindowIconFile(const std::string& path) {
    // Offscreen no window shows an icon: nothing to read.
    if (!hasDisplay())
        return;
    // Reading the file and finding its format take about a millisecond: a worker does it, and a
    // window shown meanwhile gets the icon a moment later.
    WorkerPool::shared().async([path] {
        const QImage icon(QString::fromStdString(path));
        if (icon.isNull()) {
            kLog.write("no window icon in " + path);
            return;
        }
        MainQueue::async(
            [icon] { QGuiApplication::setWindowIcon(QIcon(QPixmap::fromImage(icon))); });
    });
}

}  // namespace platform
