#include <sys/wait.h>
#include "tests/platform/core/CoreTestSupport.h"

#include <cerrno>

#include "platform/core/Workspace.h"

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
        for (auto [path, resolved] :
             {std::pair{"/Applications/Parley.app", "/tmp/apps/Parley.app"},
              std::pair{"/Applications", "/tmp/apps"},
              std::pair{"/ApplicationsX/Parley.app", "/ApplicationsX/Parley.app"},
              std::pair{"/opt/Parley.app", "/opt/Parley.app"}})
            EXPECT_EQ(Workspace::resolveApplicationPath(path), resolved) << path;
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
    errno = 0;
    EXPECT_EQ(::waitpid(-1, nullptr, WNOHANG), -1);
    EXPECT_EQ(errno, ECHILD);
}

// No bundle, no such executable, one outside the bundle, or one that may not be run: each is a
// logged failure, and nothing runs.
TEST(WorkspaceTest, MissingOrBrokenApplicationsAreLoggedFailures) {
    TempDir dir;
    ScopedEnv apps("PARLEY_APPLICATIONS_DIR", dir.path());
    for (const char* executable : {"", "Missing", "../../escape", "Parley"}) {
        SCOPED_TRACE(executable);
        fs::remove_all(dir.file("Parley.app"));
        if (*executable)
            makeApp(dir, dir.file("marker"), executable);
        ::chmod(dir.file("Parley.app/Contents/MacOS/Parley").c_str(), 0644);
        platform::LogCapture log;
        EXPECT_FALSE(Workspace::sharedWorkspace().launchApplication("/Applications/Parley.app"));
        EXPECT_FALSE(log.lines().empty());
    }
    EXPECT_FALSE(fs::exists(dir.file("marker")));
}
