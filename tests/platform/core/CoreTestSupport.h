#pragma once

// What the system-service tests share: the headers they all use, and probes of files and logs.

#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <atomic>
#include <chrono>
#include <filesystem>
#include <fstream>
#include <mutex>
#include <sstream>
#include <string>
#include <thread>
#include <vector>

#include "platform/core/EventLoop.h"
#include "platform/core/Log.h"
#include "platform/core/MainQueue.h"
#include "platform/core/WorkerPool.h"
#include "tests/support/ScopedEnv.h"
#include "tests/support/TempDir.h"

namespace core_test {

inline mode_t modeOf(const std::string& path) {
    struct stat st {};
    EXPECT_EQ(::lstat(path.c_str(), &st), 0) << path;
    return st.st_mode & 07777;
}

inline std::string contentsOf(const std::string& path) {
    std::ifstream in(path, std::ios::binary);
    std::stringstream buffer;
    buffer << in.rdbuf();
    return buffer.str();
}

// True when some captured line contains |part|.
inline bool logged(const platform::LogCapture& capture, const std::string& part) {
    for (const auto& line : capture.lines())
        if (line.find(part) != std::string::npos)
            return true;
    return false;
}

}  // namespace core_test
