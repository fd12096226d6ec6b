#pragma once

#include <functional>
#include <string>
#include <vector>

namespace platform {

// The system log. Every line goes to stderr and, while its socket is there, to syslog; a capture
// (used by tests) sees the lines written while it lives, from any thread.
class Log {
  public:
    // NSLog: writes one line. Thread-safe.
    static void write(const std::string& line);
    // Off: lines reach captures only, not syslog or stderr (for fuzzing, which logs thousands of
    // lines a second). On by default.
    static void setSystemOutput(bool enabled);
};

// A named source of log lines: every line it writes starts with its prefix, so no caller types
// one. Constant-initialised, so a file-scope Logger is usable from any static initialiser.
class Logger {
  public:
    constexpr explicit Logger(const char* prefix) : prefix_(prefix) {}
    // Writes |prefix| followed by |text| as one line. Thread-safe.
    void write(const std::string& text) const;

  private:
    const char* prefix_;
};

// Collects every log line written while it exists (all threads). Nestable.
class LogCapture {
  public:
    LogCapture();
    ~LogCapture();
    LogCapture(const LogCapture&) = delete;
    LogCapture& operator=(const LogCapture&) = delete;

    std::vector<std::string> lines() const;
    // Number of captured lines equal to |line|.
    size_t count(const std::string& line) const;
    bool contains(const std::string& line) const { return count(line) > 0; }

  private:
    friend class Log;
    void append(const std::string& line);
    struct State;
    State* state_;
};

}  // namespace platform
