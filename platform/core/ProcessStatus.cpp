#include "platform/core/ProcessStatus.h"

#include <signal.h>

#include <cerrno>
#include <fstream>
#include <iterator>
#include <string>

namespace platform {

bool ProcessStatus::isRunning(long pid) {
    if (pid <= 0 || (::kill(static_cast<pid_t>(pid), 0) != 0 && errno == ESRCH))
        return false;
    // The state follows the command name, which may itself hold ") ".
    std::ifstream stat("/proc/" + std::to_string(pid) + "/stat");
    const std::string text((std::istreambuf_iterator<char>(stat)), {});
    const size_t end = text.rfind(')');
    return end == std::string::npos || text.compare(end, 3, ") Z") != 0;
}

}  // namespace platform
