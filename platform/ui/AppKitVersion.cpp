#include "platform/ui/AppKitVersion.h"

#include <atomic>

namespace platform {

namespace {

std::atomic<double> reportedVersion{kAppKitVersionNumberDefault};

}  // namespace

double NSAppKitVersionNumber() {
    return reportedVersion.load(std::memory_order_relaxed);
}

void setAppKitVersionNumber(double version) {
    reportedVersion.store(version > 0 ? version : kAppKitVersionNumberDefault,
                          std::memory_order_relaxed);
}

}  // namespace platform
