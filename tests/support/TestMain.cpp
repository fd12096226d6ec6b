// Test entry point: every path the code under test may write to is moved into a private
// temporary root before anything runs, and the application object exists for the whole run.
#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <string>

#ifdef PARLEY_TEST_DISPLAY_LOOP
#include "platform/ui/DisplayEventLoop.h"
#include "platform/ui/Font.h"
using TestEventLoop = platform::DisplayEventLoop;
#else
#include "platform/core/EventLoop.h"
using TestEventLoop = platform::EventLoop;
#endif
#include "tests/support/TempDir.h"

namespace testing_support {

namespace {
std::string& rootStorage() {
    static std::string root;
    return root;
}
}  // namespace

const std::string& testRoot() {
    return rootStorage();
}

}  // namespace testing_support

int main(int argc, char** argv) {
    namespace fs = std::filesystem;
    std::string pattern = (fs::temp_directory_path() / "parley-test-XXXXXX").string();
    char* made = mkdtemp(pattern.data());
    if (!made)
        return 70;
    testing_support::rootStorage() = made;
    const std::string root = made;
    for (const char* dir : {"home", "config", "data", "cache", "runtime"})
        fs::create_directories(root + "/" + dir);
    fs::permissions(root + "/runtime", fs::perms::owner_all, fs::perm_options::replace);
    setenv("HOME", (root + "/home").c_str(), 1);
    setenv("XDG_CONFIG_HOME", (root + "/config").c_str(), 1);
    setenv("XDG_DATA_HOME", (root + "/data").c_str(), 1);
    setenv("XDG_CACHE_HOME", (root + "/cache").c_str(), 1);
    setenv("XDG_RUNTIME_DIR", (root + "/runtime").c_str(), 1);
    if (!getenv("PARLEY_TEST_DISPLAY"))
        setenv("QT_QPA_PLATFORM", "offscreen", 1);

#ifdef PARLEY_TEST_DISPLAY_LOOP
    // The same face on a display as offscreen, whatever the desktop prefers: exact pixels.
    platform::Font::pinSystemFontFamily(platform::Font::kPinnedSystemFamily);
#endif

    testing::InitGoogleTest(&argc, argv);
    int result;
    {
        TestEventLoop loop(argc, argv);
        result = RUN_ALL_TESTS();
    }
    std::error_code ignored;
    fs::remove_all(root, ignored);
    return result;
}
