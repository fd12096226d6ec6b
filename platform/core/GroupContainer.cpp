#include "platform/core/GroupContainer.h"

#include <sys/stat.h>

#include "platform/core/CopyStaging.h"
#include "platform/core/Log.h"
#include "platform/core/PathRepair.h"
#include "platform/core/Paths.h"

namespace platform {

namespace {
const Logger kLog("FileManager: ");
}  // namespace

std::optional<std::string> GroupContainer::pathFor(const std::string& groupIdentifier) {
    if (!Paths::isPlainName(groupIdentifier) || groupIdentifier == CopyStaging::kWorkFolderName) {
        kLog.write("group identifier [" + groupIdentifier + "] cannot name a container.");
        return std::nullopt;
    }
    const std::string container = Paths::xdgDirectory("XDG_DATA_HOME", ".local/share") +
                                  "/group-containers/" + groupIdentifier;
    struct stat st {};
    if (::stat(container.c_str(), &st) == 0 && S_ISDIR(st.st_mode))
        return container;
    // Anything but a folder where the group's folder belongs is kept aside, and a folder made.
    PathRepair::makeRoomFor(PathRepair::Kind::Directory, container);
    std::string error;
    if (!Paths::makeDirectories(container, 0700, error)) {
        kLog.write("cannot create the container of group [" + groupIdentifier + "]: " + error);
        return std::nullopt;
    }
    return container;
}

}  // namespace platform
