#include "platform/core/RunningApplication.h"

#include <QDBusMessage>
#include <QVariant>
#include <algorithm>

#include "platform/core/Log.h"
#include "platform/core/SessionBus.h"

namespace platform {

namespace {

const Logger kLog("RunningApplication: ");

QDBusMessage busDriverCall(const char* method) {
    return QDBusMessage::createMethodCall("org.freedesktop.DBus", "/org/freedesktop/DBus",
                                          "org.freedesktop.DBus", method);
}

}  // namespace

std::vector<RunningApplication> RunningApplication::runningApplicationsWithBundleIdentifier(
    const std::string& bundleIdentifier) {
    if (presenceOf(bundleIdentifier, SessionBus::kTimeout) != Presence::Running)
        return {};
    return {RunningApplication(bundleIdentifier)};
}

RunningApplication::Presence RunningApplication::presenceOf(const std::string& bundleIdentifier,
                                                            std::chrono::milliseconds timeout) {
    if (!SessionBus::isValidBusName(bundleIdentifier))
        return Presence::NotRunning;
    const auto deadline = std::chrono::steady_clock::now() + timeout;
    auto bus = SessionBus::connection("finding [" + bundleIdentifier + "]", timeout);
    if (!bus)
        return Presence::NoAnswer;
    const auto left =
        std::chrono::ceil<std::chrono::milliseconds>(deadline - std::chrono::steady_clock::now());
    QDBusMessage call = busDriverCall("NameHasOwner");
    call << QString::fromStdString(bundleIdentifier);
    QDBusMessage reply =
        bus->call(call, QDBus::Block, static_cast<int>(std::max<long long>(1, left.count())));
    if (reply.type() != QDBusMessage::ReplyMessage || reply.arguments().isEmpty()) {
        kLog.write("cannot ask the bus for [" + bundleIdentifier +
                   "]: " + reply.errorMessage().toStdString());
        return Presence::NoAnswer;
    }
    return reply.arguments().first().toBool() ? Presence::Running : Presence::NotRunning;
}

bool RunningApplication::registerAsRunning(const std::string& bundleIdentifier) {
    if (!SessionBus::isValidBusName(bundleIdentifier)) {
        kLog.write("[" + bundleIdentifier + "] is not a valid bus name.");
        return false;
    }
    auto bus = SessionBus::connection("registering [" + bundleIdentifier + "]");
    if (!bus)
        return false;
    constexpr uint kDoNotQueue = 4;
    constexpr uint kPrimaryOwner = 1, kAlreadyOwner = 4;
    QDBusMessage call = busDriverCall("RequestName");
    call << QString::fromStdString(bundleIdentifier) << kDoNotQueue;
    QDBusMessage reply = bus->call(call, QDBus::Block, 4 * SessionBus::kTimeoutMilliseconds);
    if (reply.type() != QDBusMessage::ReplyMessage || reply.arguments().isEmpty()) {
        kLog.write("cannot claim [" + bundleIdentifier +
                   "]: " + reply.errorMessage().toStdString());
        return false;
    }
    uint result = reply.arguments().first().toUInt();
    if (result != kPrimaryOwner && result != kAlreadyOwner) {
        kLog.write("[" + bundleIdentifier + "] is owned by another process.");
        return false;
    }
    return true;
}

}  // namespace platform
