#include <sys/file.h>

#include <future>

#include "platform/core/StallWatch.h"
#include "tests/platform/core/CoreTestSupport.h"

static bool copy(const std::string& from, const std::string& to, std::string* error = nullptr) {
    return FileManager::defaultManager().copyItemAtPath(from, to, error);
}

// A file's bytes, read in one go (large files under ThreadSanitizer).
static std::string contents(const std::string& path) {
    std::string bytes(fs::file_size(path), '\0');
    std::ifstream(path, std::ios::binary).read(bytes.data(), std::streamsize(bytes.size()));
    return bytes;
}

static uintmax_t bytesOnDisk(const std::string& path) {
    struct stat st {};
    EXPECT_EQ(::stat(path.c_str(), &st), 0) << path;
    return uintmax_t(st.st_blocks) * 512;
}

TEST(FileManagerTest, ContainerIsPrivateAndCopiesKeepFilesFoldersAndLinks) {
    auto& manager = FileManager::defaultManager();
    auto container = manager.containerURLForSecurityApplicationGroupIdentifier(
        "P4RL3YSH4R.com.parleyapp.Parley");
    EXPECT_EQ(container.value_or(""), std::string(getenv("XDG_DATA_HOME")) +
                                          "/group-containers/P4RL3YSH4R.com.parleyapp.Parley");
    EXPECT_EQ(modeOf(container.value_or("")), 0700u);
    TempDir dir;
    for (const char* group : {"", ".", "..", "../escape", "a/b", ".copies-in-progress", "file"}) {
        SCOPED_TRACE(group);
        ScopedEnv data("XDG_DATA_HOME", *group == 'f' ? dir.writeText("file", "") : dir.path());
        LogCapture log;
        EXPECT_FALSE(manager.containerURLForSecurityApplicationGroupIdentifier(group).has_value());
        EXPECT_EQ(log.lines().size(), 1u);
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
    ASSERT_TRUE(copy(dir.file("tree"), dir.file("tree-copy")));
    ASSERT_TRUE(copy(dir.file("dangling"), dir.file("dangling-copy")));
    EXPECT_EQ(readAll(dir.file("tree-copy/sub/b.txt")), "beta");
    EXPECT_EQ(fs::read_symlink(dir.file("tree-copy/sub/link")), "b.txt");
    EXPECT_EQ(fs::read_symlink(dir.file("dangling-copy")), "/nonexistent/target");
    EXPECT_EQ(modeOf(dir.file("tree-copy/sub")), 0750u);
}

// Nothing at the destination is overwritten or written through; a fifo is refused without
// blocking; a missing source or folder fails; the destination's own folder is refused; 128 nested
// levels copy, 129 leave nothing behind.
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
    for (const char* absent : {"would-be-created", "x", "fifo-copy"})
        EXPECT_FALSE(fs::exists(fs::symlink_status(dir.file(absent)))) << absent;
    EXPECT_EQ(FileManager::defaultManager().copyItemAtPath(
                  dir.file("folder"), dir.file("folder/itself"), CopyOptions()),
              CopyResult::Refused);
    EXPECT_FALSE(fs::exists(dir.file("folder/itself")));

    std::string deep = dir.file("deep");
    for (int level = 0; level < 128; ++level)
        deep += "/d";
    fs::create_directories(deep);
    EXPECT_TRUE(copy(dir.file("deep/d"), dir.file("deep-copy")));
    EXPECT_FALSE(copy(dir.file("deep"), dir.file("too-deep-copy")));
    EXPECT_FALSE(fs::exists(dir.file("too-deep-copy")));
}

// A copied link names what it named where it was shared: a relative target that leaves the copied
// item is made absolute from the source's real folder (the path shared may pass through a link);
// one that stays inside a copied folder, an absolute one, a dangling one and a loop are kept.
TEST(FileManagerTest, LinksNameWhatTheyNamedWhereTheyWereShared) {
    TempDir dir;
    const std::string real = fs::canonical(dir.path());
    fs::create_directories(dir.file("home/Downloads/x"));
    fs::create_directories(dir.file("album/sub"));
    fs::create_directories(dir.file("out"));
    dir.writeText("album/photo.jpg", "jpeg");
    fs::create_symlink("album", dir.file("via-link"));
    const std::pair<const char*, const char*> links[] = {
        {"home/Downloads/x/cute-cat.jpg", "../../../.ssh/id_rsa"},
        {"album/latest.jpg", "photo.jpg"},
        {"album/sub/back.jpg", "../photo.jpg"},
        {"album/sub/up", "../../outside.txt"},
        {"album/absolute", "/etc/hostname"},
        {"album/missing", "nothing-here"},
        {"album/loop", "loop"},
    };
    for (const auto& [link, target] : links)
        fs::create_symlink(target, dir.file(link));
    ASSERT_TRUE(copy(dir.file("home/Downloads/x/cute-cat.jpg"), dir.file("out/cat")));
    ASSERT_TRUE(copy(dir.file("via-link/latest.jpg"), dir.file("out/latest")));
    ASSERT_TRUE(copy(dir.file("album"), dir.file("out/album")));

    const std::pair<const char*, std::string> kCases[] = {
        {"cat", real + "/.ssh/id_rsa"},          {"latest", real + "/album/photo.jpg"},
        {"album/latest.jpg", "photo.jpg"},       {"album/sub/back.jpg", "../photo.jpg"},
        {"album/sub/up", real + "/outside.txt"}, {"album/absolute", "/etc/hostname"},
        {"album/missing", "nothing-here"},       {"album/loop", "loop"},
    };
    for (const auto& [copied, expected] : kCases) {
        SCOPED_TRACE(copied);
        EXPECT_EQ(fs::read_symlink(dir.file("out/") + copied).string(), expected);
    }
    EXPECT_EQ(readAll(dir.file("out/latest")), "jpeg");
    EXPECT_EQ(readAll(dir.file("out/album/sub/back.jpg")), "jpeg");
}

// A file rewritten in place while it is copied (an editor saving over it, 64 KiB at a time)
// arrives as one whole version, or not at all.
TEST(FileManagerTest, AFileRewrittenWhileCopiedArrivesWholeOrNotAtAll) {
    TempDir dir;
    const std::string versions[] = {std::string(4 << 20, 'a'), std::string(4 << 20, 'b')};
    const std::string file = dir.writeText("draft.txt", versions[0]);
    std::atomic<bool> stop{false};
    std::thread editor([&] {
        for (size_t save = 1; !stop; ++save) {
            const int fd = ::open(file.c_str(), O_WRONLY);
            for (size_t at = 0; at < versions[0].size(); at += 64 << 10)
                ::pwrite(fd, versions[save % 2].data() + at, 64 << 10, off_t(at));
            ::close(fd);
            std::this_thread::sleep_for(20ms);  // the editor's pace, not a wait
        }
    });
    int whole = 0;
    for (int trial = 0; trial < 20; ++trial) {
        SCOPED_TRACE(trial);
        const std::string copied = dir.file("copy" + std::to_string(trial));
        if (!copy(file, copied)) {
            EXPECT_FALSE(fs::exists(copied));
            continue;
        }
        const std::string text = contents(copied);
        EXPECT_EQ(text.size(), versions[0].size());
        EXPECT_EQ(text.find_first_not_of(text[0]), std::string::npos);
        ++whole;
    }
    stop = true;
    editor.join();
    EXPECT_GT(whole, 0);
}

// Holes stay holes: an 8 MiB file with a few 4 KiB pieces of data copies those pieces only.
TEST(FileManagerTest, SparseFilesStaySparse) {
    TempDir dir;
    const off_t MiB = 1 << 20;
    const struct {
        const char* name;
        std::vector<off_t> dataAt;
    } kCases[] = {
        {"hole-first", {6 * MiB}},
        {"hole-last", {0}},
        {"holes-between", {0, 4 * MiB, 8 * MiB - 4096}},
        {"only-a-hole", {}},
    };
    for (const auto& [name, dataAt] : kCases) {
        SCOPED_TRACE(name);
        const std::string source = dir.writeText(name, "");
        fs::resize_file(source, 8 * MiB);
        std::ofstream out(source, std::ios::in | std::ios::out | std::ios::binary);
        for (off_t at : dataAt)
            out.seekp(at) << std::string(4096, 'd');
        out.close();
        ASSERT_TRUE(copy(source, source + "-copy"));
        EXPECT_TRUE(contents(source + "-copy") == contents(source));
        EXPECT_LE(bytesOnDisk(source + "-copy"), uintmax_t(dataAt.size() + 1) * 64 * 1024);
    }
}

// The sweep removes what killed copies left in the work folder beside the destination, and
// nothing else: not an entry a running copy holds, not people's files named like ours.
TEST(FileManagerTest, SweepRemovesOnlyWhatKilledCopiesLeft) {
    TempDir dir;
    const std::string container = dir.file("container");
    fs::create_directories(dir.file(".copies-in-progress/1234-0/photo.jpg"));
    fs::create_directories(dir.file(".copies-in-progress/5678-0"));
    fs::create_directories(container);
    dir.writeText("container/.parley-partial-1234-0", "a person's file");
    dir.writeText("container/.copies-in-progress", "a person's file");
    const int held = ::open(dir.file(".copies-in-progress/5678-0").c_str(), O_RDONLY);
    ASSERT_EQ(::flock(held, LOCK_EX), 0);
    FileManager::defaultManager().removeInterruptedCopies(container);
    ::close(held);
    EXPECT_FALSE(fs::exists(dir.file(".copies-in-progress/1234-0")));
    EXPECT_TRUE(fs::exists(dir.file(".copies-in-progress/5678-0")));
    EXPECT_EQ(readAll(dir.file("container/.parley-partial-1234-0")), "a person's file");
    EXPECT_EQ(readAll(dir.file("container/.copies-in-progress")), "a person's file");
}

// Work that stops moving is given up after the quiet limit: its give-up closure runs and the pool
// stops counting its task, which stays blocked; work that keeps reporting progress is not.
TEST(StallWatchTest, GivesUpOnlyOnWorkThatStopsMoving) {
    auto unblock = std::make_shared<std::promise<void>>();
    auto gaveUp = std::make_shared<std::atomic<int>>(0);
    auto movingSettled = std::make_shared<std::atomic<bool>>(false);
    WorkerPool::shared().async([blocked = unblock->get_future().share(), gaveUp] {
        const auto watch = StallWatch::start(200ms, [gaveUp] { ++*gaveUp; });
        blocked.wait();
        watch->settle();
    });
    WorkerPool::shared().async([gaveUp, movingSettled] {
        const auto watch = StallWatch::start(200ms, [gaveUp] { ++*gaveUp; });
        for (int step = 0; step < 10; ++step) {
            std::this_thread::sleep_for(50ms);  // a slow step of the work
            watch->progress();
        }
        *movingSettled = watch->settle();
    });
    EXPECT_TRUE(EventLoop::runUntilIdle(10s));
    EXPECT_EQ(gaveUp->load(), 1);
    EXPECT_TRUE(movingSettled->load());
    unblock->set_value();
}
