#include "platform/core/Workspace.h"

#include <fcntl.h>
#include <signal.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <filesystem>

#include "platform/core/Bundle.h"
#include "platform/core/Log.h"

namespace platform {

namespace {

const Logger kLog("Workspace: ");

// In the forked children only async-signal-safe calls are made: the parent prepares every
// string beforehand.
[[noreturn]] void execDetached(const char* executable, int statusFd) {
    sigset_t none;
    sigemptyset(&none);
    sigprocmask(SIG_SETMASK, &none, nullptr);
    for (int sig : {SIGPIPE, SIGCHLD, SIGINT, SIGTERM, SIGHUP})
        signal(sig, SIG_DFL);
    int null = ::open("/dev/null", O_RDWR | O_CLOEXEC);
    if (null >= 0) {
        dup2(null, STDIN_FILENO);
        dup2(null, STDOUT_FILENO);
    }
    // stderr stays inherited: the launched application's log lines then go where ours go.
    if (chdir("/") != 0) {
    }
    char* const argv[] = {const_cast<char*>(executable), nullptr};
    execv(executable, argv);
    int error = errno;
    ssize_t ignored = ::write(statusFd, &error, sizeof error);
    (void)ignored;
    _exit(127);
}

}  // namespace

Workspace& Workspace::sharedWorkspace() {
    static Workspace workspace;
    return workspace;
}

std::string Workspace::applicationsDirectory() {
    if (const char* override = std::getenv("PARLEY_APPLICATIONS_DIR"); override && *override)
        return override;
    const std::shared_ptr<Bundle> mainBundle = Bundle::mainBundle();
    std::filesystem::path bundle = mainBundle ? mainBundle->bundlePath() : std::string();
    if (bundle.filename().empty())
        bundle = bundle.parent_path();  // "x.appex/"
    const std::filesystem::path plugIns = bundle.parent_path();
    const std::filesystem::path application = plugIns.parent_path().parent_path();
    if (bundle.extension() == ".appex" && plugIns.filename() == "PlugIns" &&
        plugIns.parent_path().filename() == "Contents" && application.extension() == ".app") {
        std::error_code error;
        const std::filesystem::path absolute = std::filesystem::absolute(application, error);
        if (!error)
            return absolute.parent_path().string();
    }
    return "/Applications";
}

std::string Workspace::resolveApplicationPath(const std::string& path) {
    const std::string prefix = "/Applications";
    if (path.compare(0, prefix.size(), prefix) != 0)
        return path;
    if (path.size() > prefix.size() && path[prefix.size()] != '/')
        return path;  // "/ApplicationsX"
    return applicationsDirectory() + path.substr(prefix.size());
}

bool Workspace::launchApplication(const std::string& path) {
    std::string resolved = resolveApplicationPath(path);
    struct stat st {};
    if (::stat(resolved.c_str(), &st) != 0 || !S_ISDIR(st.st_mode)) {
        kLog.write("no application at [" + resolved + "].");
        return false;
    }
    Bundle bundle(resolved);
    auto name = bundle.objectForInfoDictionaryKey("CFBundleExecutable");
    const std::string* executableName = name ? std::get_if<std::string>(&*name) : nullptr;
    if (!executableName || executableName->empty() ||
        executableName->find('/') != std::string::npos || *executableName == "." ||
        *executableName == "..") {
        kLog.write("[" + resolved + "] names no executable (CFBundleExecutable).");
        return false;
    }
    std::string executable = resolved + "/Contents/MacOS/" + *executableName;
    if (::stat(executable.c_str(), &st) != 0 || !S_ISREG(st.st_mode) ||
        ::access(executable.c_str(), X_OK) != 0) {
        kLog.write("[" + executable + "] is not an executable file.");
        return false;
    }

    // The exec status comes back through a close-on-exec pipe: EOF means the exec succeeded.
    int status[2];
    if (::pipe2(status, O_CLOEXEC) != 0) {
        kLog.write(std::string("cannot launch: ") + std::strerror(errno));
        return false;
    }
    pid_t child = ::fork();
    if (child < 0) {
        kLog.write(std::string("cannot launch: ") + std::strerror(errno));
        ::close(status[0]);
        ::close(status[1]);
        return false;
    }
    if (child == 0) {
        // Double fork: the grandchild is adopted by init (or a subreaper), never our zombie.
        ::close(status[0]);
        setsid();
        pid_t grandchild = ::fork();
        if (grandchild < 0) {
            int error = errno;
            ssize_t ignored = ::write(status[1], &error, sizeof error);
            (void)ignored;
            _exit(1);
        }
        if (grandchild == 0)
            execDetached(executable.c_str(), status[1]);
        _exit(0);
    }
    ::close(status[1]);
    int childStatus = 0;
    while (::waitpid(child, &childStatus, 0) < 0 && errno == EINTR) {
    }
    int execError = 0;
    ssize_t n;
    while ((n = ::read(status[0], &execError, sizeof execError)) < 0 && errno == EINTR) {
    }
    ::close(status[0]);
    if (n > 0) {
        kLog.write("cannot start [" + executable + "]: " + std::strerror(execError));
        return false;
    }
    return true;
}

}  // namespace platform
