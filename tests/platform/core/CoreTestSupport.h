#pragma once

// What the system-service tests share: the headers they use and probes of files.

#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <atomic>
#include <filesystem>
#include <fstream>
#include <thread>

#include "platform/core/Bundle.h"
#include "platform/core/DefaultsSuite.h"
#include "platform/core/DistributedNotificationCenter.h"
#include "platform/core/EventLoop.h"
#include "platform/core/ExtensionContext.h"
#include "platform/core/FileManager.h"
#include "platform/core/ItemProvider.h"
#include "platform/core/Log.h"
#include "platform/core/MainQueue.h"
#include "platform/core/PropertyListCodec.h"
#include "platform/core/PropertyValue.h"
#include "platform/core/RunningApplication.h"
#include "platform/core/Url.h"
#include "platform/core/WorkerPool.h"
#include "platform/core/Workspace.h"
#include "tests/support/ProcessSupport.h"
#include "tests/support/ScopedEnv.h"
#include "tests/support/TempDir.h"

using testing_support::readAll;
using testing_support::TempDir;
namespace fs = std::filesystem;
using namespace std::chrono_literals;

inline mode_t modeOf(const std::string& path) {
    struct stat st {};
    EXPECT_EQ(::lstat(path.c_str(), &st), 0) << path;
    return st.st_mode & 07777;
}

using namespace platform;
