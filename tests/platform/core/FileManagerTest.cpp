#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <filesystem>
#include <fstream>
#include <sstream>

#include "platform/core/FileManager.h"
#include "platform/core/Log.h"
#include "tests/support/TempDir.h"

using platform::FileManager;
using testing_support::TempDir;
namespace fs = std::filesystem;

namespace {

std::string contentsOf(const std::string& path) {
    std::ifstream in(path, std::ios::binary);
    std::stringstream buffer;
    buffer << in.rdbuf();
    return buffer.str();
}

mode_t modeOf(const std::string& path) {
    struct stat st {};
    EXPECT_EQ(::lstat(path.c_str(), &st), 0) << path;
    return st.st_mode;
}

bool copy(const std::string& from, const std::string& to, std::string* error = nullptr) {
    return FileManager::defaultManager().copyItemAtPath(from, to, error);
}

}  // namespace

TEST(FileManagerTest, ContainerIsCreatedPrivateUnderTheDataFolder) {
    auto container =
        FileManager::defaultManager().containerURLForSecurityApplicationGroupIdentifier(
            "P4RL3YSH4R.com.parleyapp.Parley");
    ASSERT_TRUE(container);
    EXPECT_EQ(*container, std::string(getenv("XDG_DATA_HOME")) +
                              "/group-containers/P4RL3YSH4R.com.parleyapp.Parley");
    EXPECT_TRUE(fs::is_directory(*container));
    EXPECT_EQ(modeOf(*container) & 0777, 0700u);
    // Asking again gives the same folder.
    EXPECT_EQ(FileManager::defaultManager().containerURLForSecurityApplicationGroupIdentifier(
                  "P4RL3YSH4R.com.parleyapp.Parley"),
              container);
}

TEST(FileManagerTest, UnusableGroupIdentifiersGiveNoContainer) {
    for (const char* group : {"", ".", "..", "../escape", "a/b"}) {
        platform::LogCapture log;
        EXPECT_FALSE(
            FileManager::defaultManager().containerURLForSecurityApplicationGroupIdentifier(group))
            << group;
        EXPECT_FALSE(log.lines().empty()) << group;
    }
}

TEST(FileManagerTest, ContainerThatCannotBeCreatedIsLogged) {
    TempDir dir;
    std::string blocker = dir.writeText("file", "x");
    setenv("XDG_DATA_HOME", blocker.c_str(), 1);  // a file where a folder must be
    platform::LogCapture log;
    auto container =
        FileManager::defaultManager().containerURLForSecurityApplicationGroupIdentifier("group.x");
    setenv("XDG_DATA_HOME", (testing_support::testRoot() + "/data").c_str(), 1);
    EXPECT_FALSE(container);
    EXPECT_FALSE(log.lines().empty());
}

TEST(FileManagerTest, CopiesAFileWithItsModeBits) {
    TempDir dir;
    std::string source = dir.writeFile("source.bin", 100000);
    ASSERT_EQ(::chmod(source.c_str(), 0640), 0);
    ASSERT_TRUE(copy(source, dir.file("copy.bin")));
    EXPECT_EQ(contentsOf(dir.file("copy.bin")), contentsOf(source));
    EXPECT_EQ(modeOf(dir.file("copy.bin")) & 07777, 0640u);

    std::string empty = dir.writeText("empty", "");
    ASSERT_TRUE(copy(empty, dir.file("empty-copy")));
    EXPECT_EQ(fs::file_size(dir.file("empty-copy")), 0u);
}

TEST(FileManagerTest, CopiesALargeFileWhole) {
    TempDir dir;
    std::string source = dir.writeFile("large.bin", 24 * 1024 * 1024 + 123);
    ASSERT_TRUE(copy(source, dir.file("large-copy.bin")));
    EXPECT_EQ(fs::file_size(dir.file("large-copy.bin")), fs::file_size(source));
    EXPECT_TRUE(contentsOf(dir.file("large-copy.bin")) == contentsOf(source));
}

TEST(FileManagerTest, CopiesFoldersWholeAndLinksAsLinks) {
    TempDir dir;
    fs::create_directories(dir.file("tree/sub/deeper"));
    dir.writeText("tree/a.txt", "alpha");
    dir.writeText("tree/sub/deeper/b.txt", "beta");
    fs::create_symlink("a.txt", dir.file("tree/link-to-a"));
    fs::create_symlink("/nonexistent/target", dir.file("tree/sub/dangling"));
    ASSERT_EQ(::chmod(dir.file("tree/sub").c_str(), 0750), 0);

    std::string error;
    ASSERT_TRUE(copy(dir.file("tree"), dir.file("tree-copy"), &error)) << error;
    EXPECT_EQ(contentsOf(dir.file("tree-copy/a.txt")), "alpha");
    EXPECT_EQ(contentsOf(dir.file("tree-copy/sub/deeper/b.txt")), "beta");
    EXPECT_TRUE(fs::is_symlink(dir.file("tree-copy/link-to-a")));
    EXPECT_EQ(fs::read_symlink(dir.file("tree-copy/link-to-a")), "a.txt");
    EXPECT_EQ(fs::read_symlink(dir.file("tree-copy/sub/dangling")), "/nonexistent/target");
    EXPECT_EQ(modeOf(dir.file("tree-copy/sub")) & 07777, 0750u);
}

TEST(FileManagerTest, TopLevelLinksAreCopiedAsLinksEvenDangling) {
    TempDir dir;
    dir.writeText("target.txt", "t");
    fs::create_symlink(dir.file("target.txt"), dir.file("link"));
    fs::create_symlink(dir.file("missing"), dir.file("dangling"));
    ASSERT_TRUE(copy(dir.file("link"), dir.file("link-copy")));
    ASSERT_TRUE(copy(dir.file("dangling"), dir.file("dangling-copy")));
    EXPECT_EQ(fs::read_symlink(dir.file("link-copy")), dir.file("target.txt"));
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

    // A link lying at the destination: its target must stay untouched.
    std::string victim = dir.writeText("victim.txt", "victim");
    fs::create_symlink(victim, dir.file("trap"));
    EXPECT_FALSE(copy(source, dir.file("trap")));
    EXPECT_EQ(contentsOf(victim), "victim");

    // A dangling link: nothing may be created where it points.
    fs::create_symlink(dir.file("would-be-created"), dir.file("dangling-trap"));
    EXPECT_FALSE(copy(source, dir.file("dangling-trap")));
    EXPECT_FALSE(fs::exists(dir.file("would-be-created")));

    // A folder onto an existing folder fails too, leaving it as it was.
    fs::create_directories(dir.file("folder"));
    fs::create_directories(dir.file("other"));
    dir.writeText("other/inside.txt", "inside");
    EXPECT_FALSE(copy(dir.file("folder"), dir.file("other")));
    EXPECT_EQ(contentsOf(dir.file("other/inside.txt")), "inside");
}

TEST(FileManagerTest, RefusesFifosWithoutBlocking) {
    TempDir dir;
    ASSERT_EQ(::mkfifo(dir.file("fifo").c_str(), 0600), 0);
    std::string error;
    EXPECT_FALSE(copy(dir.file("fifo"), dir.file("fifo-copy"), &error));
    EXPECT_NE(error.find("refused"), std::string::npos) << error;
    EXPECT_FALSE(fs::exists(fs::symlink_status(dir.file("fifo-copy"))));
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
