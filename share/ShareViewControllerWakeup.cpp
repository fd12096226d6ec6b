#include "share/ShareViewController.h"

#include "platform/core/DistributedNotificationCenter.h"
#include "platform/core/RunningApplication.h"
#include "platform/core/Workspace.h"
#include "share/ControllerSupport.h"

// Wake-up: a running host is notified, a stopped one launched. A slow bus is waited for; when it
// still does not tell whether the host runs, the host is notified: a second host launched beside
// a running one would fail, and the running one would never hear of the share, while a
// notification queued to a stalled bus reaches the host when the bus wakes.

void ShareViewController::wakeupParley() {
    using Presence = platform::RunningApplication::Presence;
    const Presence presence = platform::RunningApplication::presenceOf(m_bundleId, kBusAnswerWait);
    hostLaunched_ = presence == Presence::NotRunning;
    if (presence == Presence::NotRunning) {
        controller_support::kLog.write("Parley is offline.");
        // The outcome of the launch is not examined: the store holds the record either way.
        platform::Workspace::sharedWorkspace().launchApplication(
            HandoffRecord::hostApplicationPath());
        return;
    }
    controller_support::kLog.write(presence == Presence::Running
                                       ? "Parley is online."
                                       : "the session bus does not say whether Parley is online; "
                                         "notifying it rather than starting a second one.");
    platform::DistributedNotificationCenter::defaultCenter().postNotificationName(
        HandoffRecord::notificationName(), nullptr, nullptr, true, kNotificationWait);
}
