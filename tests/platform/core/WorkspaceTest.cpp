#include <sys/wait.h>

#include <cerrno>

#include "tests/platform/core/CoreTestSupport.h"

// <dir>/Parley.app naming |executable|, whose Parley script creates <dir>/marker.
static void makeApp(const TempDir& dir, const std::string& executable) {
    fs::create_directories(dir.file("Parley.app/Contents/MacOS"));
    dir.writeText("Parley.app/Contents/Info.plist",
                  "<?xml version=\"1.0\" encoding=\"UTF-8\"?><plist version=\"1.0\"><dict>"
                  "<key>CFBundleExecutable</key><string>" +
                      executable + "</string></dict></plist>");
    const std::string script = "#!/bin/sh\ntouch '" + dir.file("marker") + "'\n";
    ::chmod(dir.writeText("Parley.app/Contents/MacOS/Parley", script).c_str(), 0755);
}

// Only the bundle's own executable is launched, detached; no bundle, no such executable, one
// outside the bundle, or one that may not be run is a logged failure and nothing runs.
TEST(WorkspaceTest, LaunchesTheBundleExecutableDetachedOrLogsWhyNot) {
    TempDir dir;
    ScopedEnv apps("PARLEY_APPLICATIONS_DIR", dir.path());
    for (const char* executable : {"", "Missing", "../../escape", "Parley"}) {
        fs::remove_all(dir.file("Parley.app"));
        if (*executable)
            makeApp(dir, executable);
        ::chmod(dir.file("Parley.app/Contents/MacOS/Parley").c_str(), 0644);
        LogCapture log;
        EXPECT_FALSE(Workspace::sharedWorkspace().launchApplication("/Applications/Parley.app"));
        EXPECT_FALSE(log.lines().empty()) << executable;
    }
    makeApp(dir, "Parley");
    ASSERT_TRUE(Workspace::sharedWorkspace().launchApplication("/Applications/Parley.app"));
    EXPECT_TRUE(EventLoop::runUntil([&] { return fs::exists(dir.file("marker")); }, 10s));
    EXPECT_EQ(Workspace::resolveApplicationPath("/Applications"), dir.path());
    EXPECT_EQ(Workspace::resolveApplicationPath("/ApplicationsX/P.app"), "/ApplicationsX/P.app");
    errno = 0;  // the launched process is not our child: nothing is left to reap
    EXPECT_EQ(::waitpid(-1, nullptr, WNOHANG), -1);
    EXPECT_EQ(errno, ECHILD);
}
