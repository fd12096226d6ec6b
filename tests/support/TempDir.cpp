#include "tests/support/TempDir.h"

#include <atomic>
#include <filesystem>
#include <fstream>
#include <stdexcept>

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
    std::string path = file(name);
    std::ofstream out(path, std::ios::binary);
    std::string block(64 * 1024, '\0');
    for (size_t i = 0; i < block.size(); ++i)
        block[i] = static_cast<char>('a' + i % 26);
    while (bytes > 0) {
        size_t n = std::min(bytes, block.size());
        out.write(block.data(), static_cast<std::streamsize>(n));
        bytes -= n;
    }
    if (!out)
        throw std::runtime_error("cannot write " + path);
    return path;
}

std::string TempDir::writeText(const std::string& name, const std::string& text) const {
    std::string path = file(name);
    std::ofstream out(path, std::ios::binary);
    out << text;
    return path;
}

}  // namespace testing_support
