#include "platform/core/InterruptedCopySweep.h"

#include <dirent.h>
#include <fcntl.h>
#include <sys/file.h>

#include <filesystem>
#include <vector>

#include "platform/core/CopyStaging.h"
#include "platform/core/FileDescriptor.h"
#include "platform/core/Log.h"

namespace platform {

namespace {
const Logger kLog("FileManager: ");
}  // namespace

int InterruptedCopySweep::run(const std::string& destinationFolder) {
    const std::string path = CopyStaging::workFolderFor(destinationFolder);
    FileDescriptor workFolder(
        ::open(path.c_str(), O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC));
    if (!workFolder.isOpen())
        return 0;
    // Held while sweeping: no copy is between making its entry and locking it.
    if (::flock(workFolder.get(), LOCK_EX) != 0)
        return 0;
    std::vector<std::string> names;
    if (DIR* listing = ::fdopendir(::dup(workFolder.get()))) {
        while (const struct dirent* entry = ::readdir(listing)) {
            const std::string name = entry->d_name;
            if (name != "." && name != "..")
                names.push_back(name);
        }
        ::closedir(listing);
    }
    int removed = 0;
    for (const std::string& name : names) {
        FileDescriptor entry(::openat(workFolder.get(), name.c_str(),
                                      O_RDONLY | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC));
        // A lock refused means a running copy holds the entry (or the file system has no locks).
        if (!entry.isOpen() || ::flock(entry.get(), LOCK_EX | LOCK_NB) != 0)
            continue;
        std::error_code error;
        std::filesystem::remove_all(path + "/" + name, error);
        if (!error) {
            ++removed;
            kLog.write("removed the interrupted copy " + path + "/" + name + ".");
        }
    }
    ::flock(workFolder.get(), LOCK_UN);
    return removed;
}

}  // namespace platform
