#include "platform/core/Paths.h"

#include <pwd.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <cstring>

#include "platform/core/PathText.h"

namespace platform {

namespace {

std::string homeDirectory() {
    const char* home = std::getenv("HOME");
    if (home && home[0] == '/')
        return home;
    // getpwuid is not thread-safe; getpwuid_r is.
    struct passwd entry {};
    struct passwd* found = nullptr;
    char buffer[4096];
    if (getpwuid_r(getuid(), &entry, buffer, sizeof buffer, &found) == 0 && found && found->pw_dir)
        return found->pw_dir;
    return "/";
}

}  // namespace

std::string Paths::xdgDirectory(const char* variable, const std::string& fallback) {
    const char* value = std::getenv(variable);
    if (value && value[0] == '/')
        return value;
    const std::string home = PathText::withoutTrailingSlashes(homeDirectory());
    return (home == "/" ? "" : home) + "/" + fallback;
}

bool Paths::makeDirectories(const std::string& path, unsigned mode, std::string& error) {
    if (path.empty()) {
        error = "empty path";
        return false;
    }
    size_t position = 0;
    for (;;) {
        position = path.find('/', position + 1);
        std::string prefix = path.substr(0, position);
        if (!prefix.empty() && prefix != "/") {
            if (::mkdir(prefix.c_str(), mode) != 0 && errno != EEXIST) {
                error = prefix + ": " + std::strerror(errno);
                return false;
            }
        }
        if (position == std::string::npos)
            break;
    }
    struct stat st {};
    if (::stat(path.c_str(), &st) != 0) {
        error = path + ": " + std::strerror(errno);
        return false;
    }
    if (!S_ISDIR(st.st_mode)) {
        error = path + ": not a directory";
        return false;
    }
    return true;
}

bool Paths::isPlainName(const std::string& name) {
    return !name.empty() && name != "." && name != ".." && name.find('/') == std::string::npos &&
           name.find('\0') == std::string::npos;
}

}  // namespace platform
