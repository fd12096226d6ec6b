#pragma once

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <filesystem>
#include <string>

#include "platform/core/Log.h"

// Shared by the fuzz targets: each defines LLVMFuzzerTestOneInput; libFuzzer drives it in the fuzz
// build, ReplayMain.cpp replays the kept corpus in the ordinary test suite.
namespace fuzz_support {

// Millions of runs must not flood the system log.
inline const bool kQuiet = (platform::Log::setSystemOutput(false), true);

inline std::string text(const uint8_t* data, size_t size) {
    return std::string(reinterpret_cast<const char*>(data), size);
}

// A private scratch folder for targets that load files, removed at the process's exit; in memory
// where possible, since the store syncs every write.
inline const std::string& scratch() {
    static const std::string path = [] {
        for (std::string made : {"/dev/shm/parley-fuzz-XXXXXX", "/tmp/parley-fuzz-XXXXXX"})
            if (mkdtemp(made.data()))
                return made;
        return std::string();
    }();
    // Registered once |path| is made, so that it runs before |path| goes.
    static const int removal = std::atexit([] {
        std::error_code ignored;
        std::filesystem::remove_all(path, ignored);
    });
    (void)removal;
    return path;
}

// A property the input broke: a finding, as a crash would be.
inline void require(bool holds) {
    if (!holds)
        std::abort();
}

}  // namespace fuzz_support
