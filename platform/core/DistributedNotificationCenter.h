#pragma once

#include <chrono>
#include <functional>
#include <memory>
#include <string>

namespace platform {

// Machine-wide notifications by name, carried as D-Bus signals on the session bus:
// path "/org/parleyapp/DistributedNotification", interface "org.parleyapp.DistributedNotification",
// member = the notification name (it must be a valid D-Bus member name), no arguments.
//
// No session bus, a dead one or one that never answers: a post gives up within its timeout (250 ms
// unless the caller names another), is logged, and returns.
class DistributedNotificationCenter {
  public:
    static DistributedNotificationCenter& defaultCenter();

    // postNotificationName:object:userInfo:deliverImmediately: (object and user information are
    // not carried; nothing is ever passed). Thread-safe. False when not sent (logged).
    // |timeout| bounds the whole post: the wait for a bus to connect to, when there is no
    // connection yet, and then for the bus to confirm that it has taken the notification. One it
    // has not confirmed stays queued in this process's connection, and reaches the bus if it wakes
    // while the process lives.
    bool postNotificationName(const std::string& name,
                              const std::string* object,
                              const void* userInfo,
                              bool deliverImmediately,
                              std::chrono::milliseconds timeout = std::chrono::milliseconds(250));

    // Connects to the bus ahead of the first post, waiting up to |timeout|: a later post then
    // needs no new connection, so a bus that has stalled since takes it into its queue rather
    // than refusing it. False (logged) when no bus answered.
    bool connect(std::chrono::milliseconds timeout);

    // A live subscription; destroying it stops delivery.
    class Observer {
      public:
        virtual ~Observer() = default;
    };
    // Calls |handler| on the main thread for each notification |name|. nullptr (logged) when
    // the bus cannot be reached.
    std::unique_ptr<Observer> addObserverForName(const std::string& name,
                                                 std::function<void()> handler);
};

}  // namespace platform
