#pragma once

#include <string>

namespace platform {

// Starting applications.
class Workspace {
  public:
    static Workspace& sharedWorkspace();

    // launchApplication: starts the application bundle at |path|, detached (it outlives us):
    // <path>/Contents/Info.plist names CFBundleExecutable in <path>/Contents/MacOS/. A leading
    // "/Applications" in |path| stands for applicationsDirectory().
    // False (logged) when there is no such application or it cannot be started.
    bool launchApplication(const std::string& path);

    // The path launchApplication would use for |path|.
    static std::string resolveApplicationPath(const std::string& path);

    // Where applications are installed: $PARLEY_APPLICATIONS_DIR when set; otherwise the folder
    // that holds the application whose bundle contains the main bundle (an extension at
    // <dir>/<App>.app/Contents/PlugIns/<Ext>.appex gives <dir>), so that an installed or
    // unpacked tree launches its own host; otherwise "/Applications".
    static std::string applicationsDirectory();
};

}  // namespace platform
