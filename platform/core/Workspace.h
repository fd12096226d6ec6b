#pragma once

#include <string>

namespace platform {

// Starting applications.
class Workspace {
  public:
    static Workspace& sharedWorkspace();

    // launchApplication: starts the application bundle at |path|, detached (it outlives us):
    // <path>/Contents/Info.plist names CFBundleExecutable in <path>/Contents/MacOS/. A leading
    // "/Applications" in |path| is replaced by $PARLEY_APPLICATIONS_DIR when that is set.
    // False (logged) when there is no such application or it cannot be started.
    bool launchApplication(const std::string& path);

    // The path launchApplication would use for |path|.
    static std::string resolveApplicationPath(const std::string& path);
};

}  // namespace platform
