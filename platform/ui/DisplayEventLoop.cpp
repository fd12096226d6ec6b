#include "platform/ui/DisplayEventLoop.h"

#include <QGuiApplication>
#include <QIcon>
#include <cstdlib>
#include <cstring>
#include <string>

#include "platform/core/Log.h"

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
    adoptApplication(new QGuiApplication(argc, argv));
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
    const QString id = QString::fromStdString(desktopEntryId);
    QGuiApplication::setDesktopFileName(id);
    // The X11 class (the second string of WM_CLASS) is the application's name.
    QGuiApplication::setApplicationName(id);
}

void DisplayEventLoop::setWindowIconFile(const std::string& path) {
    QGuiApplication::setWindowIcon(QIcon(QString::fromStdString(path)));
}

}  // namespace platform
