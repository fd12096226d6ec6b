#pragma once

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <fstream>
#include <string>

#include "platform/core/Log.h"

// Shared by the fuzz targets: each defines LLVMFuzzerTestOneInput; libFuzzer drives it in the
// fuzz build, ReplayMain.cpp replays the kept corpus in the ordinary test suite.
namespace fuzz_support {

// Millions of runs must not flood the system log.
inline const bool kQuiet = (platform::Log::setSystemOutput(false), true);

inline std::string text(const uint8_t* data, size_t size) {
    return std::string(reinterpret_cast<const char*>(data), size);
}

// A private scratch folder for targets that load files, made once per process.
inline const std::string& scratch() {
    static const std::string folder = [] {
        char pattern[] = "/tmp/parley-fuzz-XXXXXX";
        const char* made = mkdtemp(pattern);
        return std::string(made ? made : "/tmp");
    }();
    return folder;
}

inline void writeFile(const std::string& path, const std::string& bytes) {
    std::ofstream(path, std::ios::binary | std::ios::trunc) << bytes;
}

// A property the input broke: a finding, as a crash would be.
inline void require(bool holds) {
    if (!holds)
        std::abort();
}

}  // namespace fuzz_support
