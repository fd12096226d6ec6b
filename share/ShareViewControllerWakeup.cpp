#include "share/ShareViewController.h"

#include "platform/core/DistributedNotificationCenter.h"
#include "platform/core/RunningApplication.h"
#include "platform/core/Workspace.h"
#include "share/ControllerSupport.h"

// Wake-up: a running host is notified, a stopped one launched.

void ShareViewController::wakeupParley() {
    const auto running =
        platform::RunningApplication::runningApplicationsWithBundleIdentifier(m_bundleId);
    if (!running.empty()) {
        controller_support::kLog.write("Parley is online.");
        platform::DistributedNotificationCenter::defaultCenter().postNotificationName(
            HandoffRecord::notificationName(), nullptr, nullptr, true);
    } else {
        controller_support::kLog.write("Parley is offline.");
        // The outcome of the launch is not examined: the store holds the record either way.
        platform::Workspace::sharedWorkspace().launchApplication(
            HandoffRecord::hostApplicationPath());
    }
}
