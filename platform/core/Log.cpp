#include "platform/core/Log.h"

#include <paths.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <syslog.h>
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <cerrno>
#include <chrono>
#include <cstring>
#include <ctime>
#include <mutex>

namespace platform {

struct LogCapture::State {
    mutable std::mutex mutex;
    std::vector<std::string> lines;
};

namespace {

// Captures register here; Log::write appends to every live one.
std::mutex& capturesMutex() {
    static std::mutex mutex;
    return mutex;
}

// Never destroyed: worker threads may still log while the process exits.
std::vector<LogCapture*>& captures() {
    static auto* list = new std::vector<LogCapture*>;
    return *list;
}

bool canConnectToSyslog() {
    for (int type : {SOCK_DGRAM, SOCK_STREAM}) {
        const int probe = ::socket(AF_UNIX, type | SOCK_CLOEXEC, 0);
        sockaddr_un address{};
        address.sun_family = AF_UNIX;
        std::strncpy(address.sun_path, _PATH_LOG, sizeof address.sun_path - 1);
        const bool connected =
            probe >= 0 &&
            ::connect(probe, reinterpret_cast<const sockaddr*>(&address), sizeof address) == 0;
        if (probe >= 0)
            ::close(probe);
        if (connected)
            return true;
    }
    return false;
}

// Whether syslog() may be called. While the log socket is missing (containers, CI), glibc's
// syslog() tries to connect again at every line, which costs more than the line; so it is used
// once a probe has found the socket, probed again at most every few seconds until then. Once
// open, glibc keeps its connection.
bool syslogReachable() {
    static std::atomic<bool> reachable{false};
    static std::atomic<int64_t> nextProbe{0};
    if (reachable.load(std::memory_order_acquire))
        return true;
    const int64_t now = std::chrono::duration_cast<std::chrono::milliseconds>(
                            std::chrono::steady_clock::now().time_since_epoch())
                            .count();
    int64_t due = nextProbe.load();
    if (now < due || !nextProbe.compare_exchange_strong(due, now + 5000) || !canConnectToSyslog())
        return false;
    openlog(program_invocation_short_name, LOG_PID | LOG_NDELAY, LOG_USER);
    reachable.store(true, std::memory_order_release);
    return true;
}

// "2024-05-01 12:00:00.123 name[pid:tid] " like the system log's own console format.
std::string stderrPrefix() {
    using namespace std::chrono;
    auto now = system_clock::now();
    std::time_t seconds = system_clock::to_time_t(now);
    auto millis = duration_cast<milliseconds>(now.time_since_epoch()).count() % 1000;
    // Formatted once a second per thread: localtime_r takes a lock that all threads share.
    thread_local std::time_t stampedSecond = -1;
    thread_local char stamp[64];
    thread_local size_t n = 0;
    if (seconds != stampedSecond) {
        std::tm local{};
        localtime_r(&seconds, &local);
        n = std::strftime(stamp, sizeof stamp, "%Y-%m-%d %H:%M:%S", &local);
        stampedSecond = seconds;
    }
    char rest[64];
    std::snprintf(rest, sizeof rest, ".%03d ", static_cast<int>(millis));
    // Asked once: each is a system call, and a share may log tens of thousands of lines.
    static const std::string pid = std::to_string(getpid());
    thread_local const std::string tid = std::to_string(gettid());
    return std::string(stamp, n) + rest + program_invocation_short_name + "[" + pid + ":" + tid +
           "] ";
}

void writeAll(int fd, const std::string& text) {
    size_t done = 0;
    while (done < text.size()) {
        ssize_t n = ::write(fd, text.data() + done, text.size() - done);
        if (n < 0 && errno == EINTR)
            continue;
        if (n <= 0)
            return;  // nowhere to report a failing stderr
        done += static_cast<size_t>(n);
    }
}

}  // namespace

static std::atomic<bool> systemOutput{true};

void Log::setSystemOutput(bool enabled) {
    systemOutput = enabled;
}

void Log::write(const std::string& line) {
    if (systemOutput) {
        if (syslogReachable())
            syslog(LOG_NOTICE, "%s", line.c_str());
        // One write() per line so that lines from several threads do not interleave.
        writeAll(STDERR_FILENO, stderrPrefix() + line + "\n");
    }

    std::lock_guard<std::mutex> lock(capturesMutex());
    for (LogCapture* capture : captures())
        capture->append(line);
}

void Logger::write(const std::string& text) const {
    Log::write(prefix_ + text);
}

LogCapture::LogCapture() : state_(new State) {
    std::lock_guard<std::mutex> lock(capturesMutex());
    captures().push_back(this);
}

LogCapture::~LogCapture() {
    {
        std::lock_guard<std::mutex> lock(capturesMutex());
        auto& list = captures();
        list.erase(std::remove(list.begin(), list.end(), this), list.end());
    }
    delete state_;
}

std::vector<std::string> LogCapture::lines() const {
    std::lock_guard<std::mutex> lock(state_->mutex);
    return state_->lines;
}

size_t LogCapture::count(const std::string& line) const {
    std::lock_guard<std::mutex> lock(state_->mutex);
    return static_cast<size_t>(std::count(state_->lines.begin(), state_->lines.end(), line));
}

void LogCapture::append(const std::string& line) {
    std::lock_guard<std::mutex> lock(state_->mutex);
    state_->lines.push_back(line);
}

}  // namespace platform
