#pragma once

#include <QDBusConnection>
#include <chrono>
#include <optional>
#include <string>

namespace platform {

// The process's connection to the D-Bus session bus, shared by the notification centre and the
// running-application lookup. Internal to platform/.
//
// QtDBus blocks (libdbus's 25 s) when a bus accepts a connection and never answers, so the bus
// is first probed with a plain socket: "AUTH EXTERNAL", then the driver's "Hello" call, bounded
// by a poll timeout; only a bus that answers the call is handed to QtDBus. The connection is cached
// per bus address and re-made when it drops. Thread-safe.
class SessionBus {
  public:
    // Every bus call is given this timeout unless its caller names another, and so is the probe.
    static constexpr int kTimeoutMilliseconds = 250;
    static constexpr std::chrono::milliseconds kTimeout{kTimeoutMilliseconds};

    // The connection, or nullopt (logged, mentioning |purpose|) when no bus answers within
    // |timeout|. After a failed probe the address is not probed again for a second by callers
    // that would not wait longer than that probe did.
    static std::optional<QDBusConnection> connection(const std::string& purpose,
                                                     std::chrono::milliseconds timeout = kTimeout);

    // D-Bus naming rules.
    static bool isValidMemberName(const std::string& name);
    static bool isValidBusName(const std::string& name);
};

}  // namespace platform
