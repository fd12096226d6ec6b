// Test entry point: every path the code under test may write to is moved into a private temporary
// root before anything runs, and the application object exists for the whole run.
#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <memory>
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

static std::string gTestRoot;

const std::string& testing_support::testRoot() {
    return gTestRoot;
}

int main(int argc, char** argv) {
    namespace fs = std::filesystem;
    std::string root = (fs::temp_directory_path() / "parley-test-XXXXXX").string();
    if (!mkdtemp(root.data()))
        return 70;
    gTestRoot = root;
    for (const std::string entry : {"home:HOME", "config:XDG_CONFIG_HOME", "data:XDG_DATA_HOME",
                                    "cache:XDG_CACHE_HOME", "runtime:XDG_RUNTIME_DIR"}) {
        const std::string folder = root + "/" + entry.substr(0, entry.find(':'));
        fs::create_directories(folder);
        setenv(entry.substr(entry.find(':') + 1).c_str(), folder.c_str(), 1);
    }
    fs::permissions(root + "/runtime", fs::perms::owner_all, fs::perm_options::replace);
    if (!getenv("PARLEY_TEST_DISPLAY"))
        setenv("QT_QPA_PLATFORM", "offscreen", 1);
#ifdef PARLEY_TEST_DISPLAY_LOOP
    // The same face on a display as offscreen, whatever the desktop prefers: exact pixels.
    platform::Font::pinSystemFontFamily(platform::Font::kPinnedSystemFamily);
#endif
    testing::InitGoogleTest(&argc, argv);
    auto loop = std::make_unique<TestEventLoop>(argc, argv);
    const int result = RUN_ALL_TESTS();
    loop.reset();
    std::error_code ignored;
    fs::remove_all(root, ignored);
    return result;
}
