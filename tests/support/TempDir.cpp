#include "tests/support/TempDir.h"

#include <atomic>
#include <filesystem>
#include <fstream>

namespace testing_support {

namespace fs = std::filesystem;

TempDir::TempDir() {
    static std::atomic<int> counter{0};
    path_ = testRoot() + "/t" + std::to_string(counter++);
    fs::create_directories(path_);
}

TempDir::~TempDir() {
    std::error_code ignored;
    fs::permissions(path_, fs::perms::owner_all, fs::perm_options::add, ignored);
    fs::remove_all(path_, ignored);
}

std::string TempDir::writeFile(const std::string& name, size_t bytes) const {
    std::string pattern(bytes, '\0');
    for (size_t i = 0; i < bytes; ++i)
        pattern[i] = static_cast<char>('a' + i % 26);
    return writeText(name, pattern);
}

std::string TempDir::writeText(const std::string& name, const std::string& text) const {
    std::ofstream(file(name), std::ios::binary) << text;
    return file(name);
}

}  // namespace testing_support
