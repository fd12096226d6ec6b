#include <gtest/gtest.h>
#include <sys/stat.h>
#include <sys/wait.h>

#include <cerrno>
#include <filesystem>

#include "platform/core/EventLoop.h"
#include "platform/core/Log.h"
#include "platform/core/Workspace.h"
#include "tests/support/ScopedEnv.h"
#include "tests/support/TempDir.h"

using platform::Workspace;
using testing_support::TempDir;
using namespace std::chrono_literals;
namespace fs = std::filesystem;

namespace {

// <dir>/Parley.app whose executable writes |marker|.
void makeApp(const TempDir& dir, const std::string& marker, const std::string& executable) {
    fs::create_directories(dir.file("Parley.app/Contents/MacOS"));
    dir.writeText("Parley.app/Contents/Info.plist",
                  "<?xml version=\"1.0\" encoding=\"UTF-8\"?><plist version=\"1.0\"><dict>"
                  "<key>CFBundleExecutable</key><string>" +
                      executable + "</string></dict></plist>");
    std::string script = dir.writeText("Parley.app/Contents/MacOS/Parley",
                                       "#!/bin/sh\necho launched > '" + marker + ".tmp'\nmv '" +
                                           marker + ".tmp' '" + marker + "'\n");
    ::chmod(script.c_str(), 0755);
}

}  // namespace

TEST(WorkspaceTest, ResolvesApplicationsFolder) {
    {
        ScopedEnv dir("PARLEY_APPLICATIONS_DIR", "/tmp/apps");
        EXPECT_EQ(Workspace::resolveApplicationPath("/Applications/Parley.app"),
                  "/tmp/apps/Parley.app");
        EXPECT_EQ(Workspace::resolveApplicationPath("/ApplicationsX/Parley.app"),
                  "/ApplicationsX/Parley.app");
        EXPECT_EQ(Workspace::resolveApplicationPath("/opt/Parley.app"), "/opt/Parley.app");
    }
    ScopedEnv none("PARLEY_APPLICATIONS_DIR", std::nullopt);
    EXPECT_EQ(Workspace::resolveApplicationPath("/Applications/Parley.app"),
              "/Applications/Parley.app");
}

TEST(WorkspaceTest, LaunchesTheBundleExecutableDetached) {
    TempDir dir;
    std::string marker = dir.file("marker");
    makeApp(dir, marker, "Parley");
    ScopedEnv apps("PARLEY_APPLICATIONS_DIR", dir.path());
    ASSERT_TRUE(Workspace::sharedWorkspace().launchApplication("/Applications/Parley.app"));
    EXPECT_TRUE(platform::EventLoop::runUntil([&] { return fs::exists(marker); }, 10s));
    // The launched process is not our child: nothing is left to reap.
    int status = 0;
    errno = 0;
    EXPECT_EQ(::waitpid(-1, &status, WNOHANG), -1);
    EXPECT_EQ(errno, ECHILD);
}

TEST(WorkspaceTest, MissingOrBrokenApplicationsAreLoggedFailures) {
    TempDir dir;
    ScopedEnv apps("PARLEY_APPLICATIONS_DIR", dir.path());
    platform::LogCapture log;
    EXPECT_FALSE(Workspace::sharedWorkspace().launchApplication("/Applications/Parley.app"));
    EXPECT_FALSE(log.lines().empty());

    makeApp(dir, dir.file("marker"), "Missing");
    EXPECT_FALSE(Workspace::sharedWorkspace().launchApplication("/Applications/Parley.app"));
    fs::remove_all(dir.file("Parley.app"));
    makeApp(dir, dir.file("marker"), "../../escape");
    EXPECT_FALSE(Workspace::sharedWorkspace().launchApplication("/Applications/Parley.app"));
    fs::remove_all(dir.file("Parley.app"));
    makeApp(dir, dir.file("marker"), "Parley");
    ::chmod(dir.file("Parley.app/Contents/MacOS/Parley").c_str(), 0644);
    EXPECT_FALSE(Workspace::sharedWorkspace().launchApplication("/Applications/Parley.app"));
    EXPECT_GE(log.lines().size(), 4u);
    EXPECT_FALSE(fs::exists(dir.file("marker")));
}
