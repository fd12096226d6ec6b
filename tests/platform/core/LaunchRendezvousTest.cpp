// Processes meeting on the session bus: the gatherer takes what another process hands over while
// its window is open and refuses it after; without a bus a process is on its own.
#include "platform/core/LaunchRendezvous.h"
#include "tests/platform/core/CoreTestSupport.h"

using testing_support::quoted;
using testing_support::run;

// Another process's Join call, as the bus carries it, printed to |out|.
static std::string joinCall(const std::string& operands, const std::string& out) {
    return "dbus-send --session --print-reply --dest=com.parleyapp.Parley.ParleyShare "
           "/org/parleyapp/LaunchRendezvous org.parleyapp.LaunchRendezvous.Join "
           "array:string:" +
           operands + " >" + quoted(out);
}

TEST(LaunchRendezvousTest, TheGathererTakesOperandsWhileItsWindowIsOpen) {
    TempDir dir;
    // The other process waits until the name is claimed, then hands its operands over.
    ASSERT_EQ(run("(gdbus wait --session --timeout 20 com.parleyapp.Parley.ParleyShare && " +
                  joinCall("/b,/c", dir.file("early")) + ") >/dev/null 2>&1 &"),
              0);
    LogCapture log;
    LaunchRendezvous rendezvous("com.parleyapp.Parley.ParleyShare", {"/a"}, 2s);
    EXPECT_EQ(rendezvous.role(), LaunchRendezvous::Role::Gatherer);
    EXPECT_EQ(rendezvous.operands(), std::vector<std::string>({"/a", "/b", "/c"}));
    EXPECT_NE(readAll(dir.file("early")).find("boolean true"), std::string::npos);
    EXPECT_TRUE(log.contains("LaunchRendezvous: took 2 operands from other processes."));
    // The name stays claimed (the answer comes from the main loop); the window has closed.
    ASSERT_EQ(run(joinCall("/d", dir.file("late")) + " &"), 0);
    ASSERT_TRUE(EventLoop::runUntil(
        [&] { return readAll(dir.file("late")).find("boolean") != std::string::npos; }, 10s));
    EXPECT_NE(readAll(dir.file("late")).find("boolean false"), std::string::npos);
    EXPECT_EQ(rendezvous.operands().size(), 3u);
}

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
