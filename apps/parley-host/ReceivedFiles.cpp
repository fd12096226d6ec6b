#include "apps/parley-host/ReceivedFiles.h"

#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <map>
#include <system_error>

#include "platform/core/FileManager.h"

namespace fs = std::filesystem;

ReceivedFiles::ReceivedFiles(std::string container, std::string inbox)
    : container_(std::move(container)), inbox_(std::move(inbox)) {}

std::string ReceivedFiles::defaultInbox() {
    const char* data = std::getenv("XDG_DATA_HOME");
    const char* home = std::getenv("HOME");
    const std::string base =
        data && data[0] == '/' ? data : std::string(home ? home : "") + "/.local/share";
    return base + "/parley-host/received";
}

std::string ReceivedFiles::makeRecordFolder() const {
    std::error_code error;
    fs::create_directories(inbox_, error);
    const auto now = std::chrono::duration_cast<std::chrono::milliseconds>(
                         std::chrono::system_clock::now().time_since_epoch())
                         .count();
    for (int n = 1; n < 1000; ++n) {
        const fs::path folder = fs::path(inbox_) / (std::to_string(now) + "-" + std::to_string(n));
        if (fs::create_directory(folder, error))
            return folder.string();
    }
    return {};
}

std::vector<std::optional<std::string>> ReceivedFiles::take(
    const std::vector<std::string>& paths) const {
    std::vector<std::optional<std::string>> received;
    std::map<std::string, std::optional<std::string>> taken;
    std::string folder;
    for (const std::string& path : paths) {
        if (const auto done = taken.find(path); done != taken.end()) {
            received.push_back(done->second);
            continue;
        }
        std::optional<std::string>& answer = taken[path];
        const fs::path source(path);
        std::error_code error;
        // Only what the extension put there: a name directly in the container, not "." or "..".
        const bool inContainer = source.parent_path() == fs::path(container_) &&
                                 source.has_filename() && source.filename() != "." &&
                                 source.filename() != "..";
        if (inContainer && fs::exists(fs::symlink_status(source, error))) {
            if (folder.empty())
                folder = makeRecordFolder();
            const std::string destination = (fs::path(folder) / source.filename()).string();
            if (folder.empty())
                error = std::make_error_code(std::errc::no_such_file_or_directory);
            else
                fs::rename(source, destination, error);
            // Another file system: a copy, then the original goes.
            if (error == std::errc::cross_device_link &&
                platform::FileManager::defaultManager().copyItemAtPath(path, destination)) {
                error.clear();
                fs::remove_all(source, error);
            }
            if (error)
                std::fprintf(stderr, "parley-host: cannot take %s: %s\n", path.c_str(),
                             error.message().c_str());
            else
                answer = destination;
        }
        received.push_back(answer);
    }
    return received;
}
