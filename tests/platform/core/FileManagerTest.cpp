#include "tests/platform/core/CoreTestSupport.h"

static bool copy(const std::string& from, const std::string& to, std::string* error = nullptr) {
    return FileManager::defaultManager().copyItemAtPath(from, to, error);
}

TEST(FileManagerTest, ContainerIsPrivateAndCopiesKeepFilesFoldersAndLinks) {
    auto& manager = FileManager::defaultManager();
    auto container = manager.containerURLForSecurityApplicationGroupIdentifier(
        "P4RL3YSH4R.com.parleyapp.Parley");
    EXPECT_EQ(container.value_or(""), std::string(getenv("XDG_DATA_HOME")) +
                                          "/group-containers/P4RL3YSH4R.com.parleyapp.Parley");
    EXPECT_EQ(modeOf(container.value_or("")), 0700u);
    TempDir dir;
    for (const char* group : {"", ".", "..", "../escape", "a/b", "file"}) {
        ScopedEnv data("XDG_DATA_HOME", *group == 'f' ? dir.writeText("file", "") : dir.path());
        LogCapture log;
        EXPECT_FALSE(manager.containerURLForSecurityApplicationGroupIdentifier(group) ||
                     log.lines().empty())
            << group;
    }

    // Contents and mode bits (less set-user and set-group) are copied, for empty, small and large
    // files alike; a folder is copied whole with its links as links, dangling ones too.
    for (size_t size : {size_t(0), size_t(100000), size_t(24 * 1024 * 1024 + 123)}) {
        const std::string source = dir.writeFile("source" + std::to_string(size), size);
        ASSERT_EQ(::chmod(source.c_str(), size ? 06750 : 0640), 0);
        ASSERT_TRUE(copy(source, source + "-copy")) << size;
        EXPECT_TRUE(readAll(source + "-copy") == readAll(source)) << size;
        EXPECT_EQ(modeOf(source + "-copy"), size ? 0750u : 0640u) << size;
    }
    fs::create_directories(dir.file("tree/sub"));
    dir.writeText("tree/sub/b.txt", "beta");
    fs::create_symlink("b.txt", dir.file("tree/sub/link"));
    fs::create_symlink("/nonexistent/target", dir.file("dangling"));
    ASSERT_EQ(::chmod(dir.file("tree/sub").c_str(), 0750), 0);
    ASSERT_TRUE(copy(dir.file("tree"), dir.file("tree-copy")) &&
                copy(dir.file("dangling"), dir.file("dangling-copy")));
    EXPECT_EQ(readAll(dir.file("tree-copy/sub/b.txt")), "beta");
    EXPECT_EQ(fs::read_symlink(dir.file("tree-copy/sub/link")), "b.txt");
    EXPECT_EQ(fs::read_symlink(dir.file("dangling-copy")), "/nonexistent/target");
    EXPECT_EQ(modeOf(dir.file("tree-copy/sub")), 0750u);
}

// Nothing at the destination is overwritten or written through; a fifo is refused without
// blocking; a missing source or folder fails; 128 nested levels copy, 129 leave nothing behind.
TEST(FileManagerTest, RefusesWhatItMustNotCopyAndLeavesNothing) {
    TempDir dir;
    const std::string source = dir.writeText("source.txt", "new data");
    const std::string victim = dir.writeText("victim.txt", "keep me");
    fs::create_symlink(victim, dir.file("trap"));
    fs::create_symlink(dir.file("would-be-created"), dir.file("dangling-trap"));
    ASSERT_EQ(::mkfifo(dir.file("fifo").c_str(), 0600), 0);
    fs::create_directories(dir.file("folder/d"));
    // clang-format off
    const char* refused[] = {"source.txt", "victim.txt", "source.txt", "trap", "source.txt",
        "dangling-trap", "folder", ".", "source.txt", "no-such-folder/a", "missing", "x", "fifo",
        "fifo-copy"};
    // clang-format on
    for (size_t i = 0; i < std::size(refused); i += 2) {
        std::string error;
        EXPECT_FALSE(copy(dir.file(refused[i]), dir.file(refused[i + 1]), &error)) << refused[i];
        EXPECT_FALSE(error.empty()) << refused[i + 1];
    }
    EXPECT_EQ(readAll(victim), "keep me");
    EXPECT_FALSE(fs::exists(dir.file("would-be-created")) || fs::exists(dir.file("x")) ||
                 fs::exists(fs::symlink_status(dir.file("fifo-copy"))));

    std::string deep = dir.file("deep");
    for (int level = 0; level < 128; ++level)
        deep += "/d";
    fs::create_directories(deep);
    EXPECT_TRUE(copy(dir.file("deep/d"), dir.file("deep-copy")));
    EXPECT_FALSE(copy(dir.file("deep"), dir.file("too-deep-copy")) ||
                 fs::exists(dir.file("too-deep-copy")));

    if (geteuid() == 0)
        GTEST_SKIP() << "permissions do not apply to root";
    ASSERT_EQ(::chmod(source.c_str(), 0), 0);
    EXPECT_FALSE(copy(source, dir.file("locked-copy")) || fs::exists(dir.file("locked-copy")));
}
