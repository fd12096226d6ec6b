#pragma once

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <filesystem>
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

// A private scratch folder for targets that load files, made once per process and removed at its
// exit; in memory where possible, since the store syncs every write.
inline const std::string& scratch() {
    static const struct Folder {
        std::string path;
        Folder() {
            for (const char* base : {"/dev/shm", "/tmp"}) {
                std::string pattern = std::string(base) + "/parley-fuzz-XXXXXX";
                if (mkdtemp(pattern.data())) {
                    path = pattern;
                    return;
                }
            }
        }
        ~Folder() {
            std::error_code ignored;
            std::filesystem::remove_all(path, ignored);
        }
    } folder;
    return folder.path;
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
