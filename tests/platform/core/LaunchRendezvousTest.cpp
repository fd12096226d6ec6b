// Without a bus to meet on, a process gathers alone at once. Processes that meet are tested with
// the programs that use this (tests/desktop: Thunar's processes for one selection).
#include "platform/core/LaunchRendezvous.h"
#include "tests/platform/core/CoreTestSupport.h"

TEST(LaunchRendezvousTest, WithoutABusAProcessIsOnItsOwn) {
    TempDir dir;
    ScopedEnv noBus("DBUS_SESSION_BUS_ADDRESS", "unix:path=" + dir.file("no-bus"));
    const auto started = std::chrono::steady_clock::now();
    LaunchRendezvous rendezvous("com.parleyapp.Parley.ParleyShare", {"/a"}, 3s);
    EXPECT_EQ(rendezvous.role(), LaunchRendezvous::Role::Gatherer);
    EXPECT_EQ(rendezvous.operands(), std::vector<std::string>({"/a"}));
    // Nobody to wait for.
    EXPECT_LT(std::chrono::steady_clock::now() - started, 1s);
}
