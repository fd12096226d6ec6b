#include "tests/platform/core/CoreTestSupport.h"

#include "platform/core/FileManager.h"

using core_test::contentsOf;
using core_test::modeOf;
using platform::FileManager;
using testing_support::TempDir;
namespace fs = std::filesystem;

namespace {

bool copy(const std::string& from, const std::string& to, std::string* error = nullptr) {
    return FileManager::defaultManager().copyItemAtPath(from, to, error);
}

}  // namespace

TEST(FileManagerTest, ContainerIsCreatedPrivateUnderTheDataFolder) {
    auto& manager = FileManager::defaultManager();
    auto container = manager.containerURLForSecurityApplicationGroupIdentifier(
        "P4RL3YSH4R.com.parleyapp.Parley");
    ASSERT_TRUE(container);
    EXPECT_EQ(*container, std::string(getenv("XDG_DATA_HOME")) +
                              "/group-containers/P4RL3YSH4R.com.parleyapp.Parley");
    EXPECT_EQ(modeOf(*container) & 07777, 0700u);
    EXPECT_EQ(manager.containerURLForSecurityApplicationGroupIdentifier(
                  "P4RL3YSH4R.com.parleyapp.Parley"),
              container);

    for (const char* group : {"", ".", "..", "../escape", "a/b"}) {
        platform::LogCapture log;
        EXPECT_FALSE(manager.containerURLForSecurityApplicationGroupIdentifier(group)) << group;
        EXPECT_FALSE(log.lines().empty()) << group;
    }

    TempDir dir;
    setenv("XDG_DATA_HOME", dir.writeText("file", "x").c_str(),
           1);  // a file, not a folder
    platform::LogCapture log;
    EXPECT_FALSE(manager.containerURLForSecurityApplicationGroupIdentifier("group.x"));
    setenv("XDG_DATA_HOME", (testing_support::testRoot() + "/data").c_str(), 1);
    EXPECT_FALSE(log.lines().empty());
}

// Contents and mode bits (less set-user and set-group) are copied, for empty, small and large files
// alike; a folder is copied whole with its links as links, dangling ones too.
TEST(FileManagerTest, CopiesFilesFoldersAndLinks) {
    TempDir dir;
    for (size_t size : {size_t(0), size_t(100000), size_t(24 * 1024 * 1024 + 123)}) {
        std::string source = dir.writeFile("source" + std::to_string(size), size);
        ASSERT_EQ(::chmod(source.c_str(), size ? 06750 : 0640), 0);
        ASSERT_TRUE(copy(source, source + "-copy")) << size;
        EXPECT_TRUE(contentsOf(source + "-copy") == contentsOf(source)) << size;
        EXPECT_EQ(modeOf(source + "-copy") & 07777, size ? 0750u : 0640u) << size;
    }

    fs::create_directories(dir.file("tree/sub/deeper"));
    dir.writeText("tree/sub/deeper/b.txt", "beta");
    fs::create_symlink("b.txt", dir.file("tree/sub/deeper/link"));
    fs::create_symlink("/nonexistent/target", dir.file("tree/sub/dangling"));
    ASSERT_EQ(::chmod(dir.file("tree/sub").c_str(), 0750), 0);
    std::string error;
    ASSERT_TRUE(copy(dir.file("tree"), dir.file("tree-copy"), &error)) << error;
    EXPECT_EQ(contentsOf(dir.file("tree-copy/sub/deeper/b.txt")), "beta");
    EXPECT_EQ(fs::read_symlink(dir.file("tree-copy/sub/deeper/link")), "b.txt");
    EXPECT_EQ(fs::read_symlink(dir.file("tree-copy/sub/dangling")), "/nonexistent/target");
    EXPECT_EQ(modeOf(dir.file("tree-copy/sub")) & 07777, 0750u);

    fs::create_symlink(dir.file("missing"),
                       dir.file("dangling"));  // a top-level link
    ASSERT_TRUE(copy(dir.file("dangling"), dir.file("dangling-copy")));
    EXPECT_EQ(fs::read_symlink(dir.file("dangling-copy")), dir.file("missing"));
}

TEST(FileManagerTest, NeverOverwritesOrWritesThroughWhatLiesAtTheDestination) {
    TempDir dir;
    std::string source = dir.writeText("source.txt", "new data");
    std::string existing = dir.writeText("existing.txt", "keep me");
    std::string error;
    EXPECT_FALSE(copy(source, existing, &error));
    EXPECT_FALSE(error.empty());
    EXPECT_EQ(contentsOf(existing), "keep me");

    // A link at the destination: its target stays untouched, a dangling one's is not created.
    std::string victim = dir.writeText("victim.txt", "victim");
    fs::create_symlink(victim, dir.file("trap"));
    fs::create_symlink(dir.file("would-be-created"), dir.file("dangling-trap"));
    EXPECT_FALSE(copy(source, dir.file("trap")));
    EXPECT_FALSE(copy(source, dir.file("dangling-trap")));
    EXPECT_EQ(contentsOf(victim), "victim");
    EXPECT_FALSE(fs::exists(dir.file("would-be-created")));

    fs::create_directories(dir.file("folder"));
    fs::create_directories(dir.file("other"));
    dir.writeText("other/inside.txt", "inside");
    EXPECT_FALSE(copy(dir.file("folder"), dir.file("other")));
    EXPECT_EQ(contentsOf(dir.file("other/inside.txt")), "inside");
}

// A fifo is refused without blocking; a folder nested too deep leaves nothing behind.
TEST(FileManagerTest, RefusesFifosWithoutBlockingAndRemovesPartialFolders) {
    TempDir dir;
    ASSERT_EQ(::mkfifo(dir.file("fifo").c_str(), 0600), 0);
    std::string error;
    EXPECT_FALSE(copy(dir.file("fifo"), dir.file("fifo-copy"), &error));
    EXPECT_NE(error.find("refused"), std::string::npos) << error;
    EXPECT_FALSE(fs::exists(fs::symlink_status(dir.file("fifo-copy"))));

    // 128 levels copy; 129 do not.
    std::string deep = dir.file("deep");
    for (int level = 0; level < 128; ++level)
        deep += "/d";
    fs::create_directories(deep);
    EXPECT_TRUE(copy(dir.file("deep/d"), dir.file("deep-copy")));
    EXPECT_FALSE(copy(dir.file("deep"), dir.file("too-deep-copy")));
    EXPECT_FALSE(fs::exists(dir.file("too-deep-copy")));
}

TEST(FileManagerTest, MissingAndUnreadableSourcesFailCleanly) {
    TempDir dir;
    std::string error;
    EXPECT_FALSE(copy(dir.file("missing"), dir.file("x"), &error));
    EXPECT_FALSE(error.empty());
    EXPECT_FALSE(fs::exists(dir.file("x")));
    EXPECT_FALSE(copy(dir.writeText("a", "a"), dir.file("no-such-folder/a")));

    if (geteuid() == 0)
        GTEST_SKIP() << "permissions do not apply to root";
    std::string locked = dir.writeText("locked.txt", "secret");
    ASSERT_EQ(::chmod(locked.c_str(), 0), 0);
    EXPECT_FALSE(copy(locked, dir.file("locked-copy")));
    EXPECT_FALSE(fs::exists(dir.file("locked-copy")));
}
