#pragma once

#include <string>

namespace testing_support {

// A fresh directory under the test run's private root, removed when destroyed.
class TempDir {
  public:
    TempDir();
    ~TempDir();
    TempDir(const TempDir&) = delete;
    TempDir& operator=(const TempDir&) = delete;

    const std::string& path() const { return path_; }
    // path() + "/" + name
    std::string file(const std::string& name) const { return path_ + "/" + name; }
    // Writes |bytes| bytes of a repeating pattern to |name|; returns the path.
    std::string writeFile(const std::string& name, size_t bytes) const;
    std::string writeText(const std::string& name, const std::string& text) const;

  private:
    std::string path_;
};

// The private root every test runs in; HOME, XDG_CONFIG_HOME, XDG_DATA_HOME, XDG_CACHE_HOME and
// XDG_RUNTIME_DIR point inside it.
const std::string& testRoot();

}  // namespace testing_support
