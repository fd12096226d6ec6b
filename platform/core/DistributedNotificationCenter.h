#pragma once

#include <functional>
#include <memory>
#include <string>

namespace platform {

// Machine-wide notifications by name, carried as D-Bus signals on the session bus:
// path "/org/parleyapp/DistributedNotification", interface "org.parleyapp.DistributedNotification",
// member = the notification name (it must be a valid D-Bus member name), no arguments.
//
// No session bus, a dead one or one that never answers: a post gives up within a bounded time
// (well under a second), is logged, and returns.
class DistributedNotificationCenter {
  public:
    static DistributedNotificationCenter& defaultCenter();

    // postNotificationName:object:userInfo:deliverImmediately: (object and user information are
    // not carried; nothing is ever passed). Thread-safe. False when not sent (logged).
    bool postNotificationName(const std::string& name,
                              const std::string* object,
                              const void* userInfo,
                              bool deliverImmediately);

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
