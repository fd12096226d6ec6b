#pragma once

#include <chrono>
#include <string>
#include <vector>

namespace platform {

// A running application, found by the bus name it owns: a host owns its bundle identifier as its
// well-known session-bus name, as D-Bus-activatable desktop applications do.
class RunningApplication {
  public:
    explicit RunningApplication(std::string bundleIdentifier)
        : bundleIdentifier_(std::move(bundleIdentifier)) {}

    // runningApplicationsWithBundleIdentifier: empty when no one owns the name, when the name is
    // not a valid bus name, and (logged) when the bus is absent or does not answer in 250 ms.
    static std::vector<RunningApplication> runningApplicationsWithBundleIdentifier(
        const std::string& bundleIdentifier);

    // The same question, telling "no" from "no answer": NotRunning when the bus says no one owns
    // the name (or it is not a valid bus name), NoAnswer (logged) when no bus answered within
    // |timeout|, connecting included.
    enum class Presence { Running, NotRunning, NoAnswer };
    static Presence presenceOf(const std::string& bundleIdentifier,
                               std::chrono::milliseconds timeout);

    const std::string& bundleIdentifier() const { return bundleIdentifier_; }

    // For a host: claims |bundleIdentifier| as this process's bus name. False (logged) when
    // the bus is unreachable or the name is taken.
    static bool registerAsRunning(const std::string& bundleIdentifier);

  private:
    std::string bundleIdentifier_;
};

}  // namespace platform
