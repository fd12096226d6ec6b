#include <sys/wait.h>

#include <set>

#include "tests/platform/core/CoreTestSupport.h"

// A suite name of its own for each use, so that the tests do not share a file.
static std::string freshSuite() {
    static int counter = 0;
    return "P4RL3YSH4R.com.parleyapp.Test" + std::to_string(getpid()) + "." +
           std::to_string(counter++);
}
static const auto text = [](const std::string& value) { return PropertyValue(value); };

// Writes are visible at once, to others after synchronize (even to objects opened earlier), which
// keeps keys others wrote; an unsaved local change wins over them; nullopt removes.
TEST(DefaultsSuiteTest, SynchronizeSharesAndMergesWrites) {
    const std::string suite = freshSuite();
    DefaultsSuite extension(suite), host(suite);
    extension.setObject(PropertyValue(StringArray{"/a/1.txt"}), "ParleyMacSharePathArray");
    extension.setObject(text("old"), "Shared");
    host.setObject(text("host value"), "HostKey");
    ASSERT_TRUE(extension.synchronize());
    ASSERT_TRUE(host.synchronize());
    EXPECT_EQ(host.objectForKey("ParleyMacSharePathArray"), PropertyValue(StringArray{"/a/1.txt"}));
    EXPECT_EQ(extension.objectForKey("HostKey"), text("host value"));  // no synchronize of its own

    extension.setObject(text("mine"), "Shared");  // changed here, not yet flushed
    extension.setObject(std::nullopt, "HostKey");
    host.setObject(text("theirs"), "Shared");
    ASSERT_TRUE(host.synchronize());
    EXPECT_EQ(text("mine"), extension.objectForKey("Shared"));  // read again, the change kept
    ASSERT_TRUE(extension.synchronize());
    DefaultsSuite check(suite);
    EXPECT_EQ(text("mine"), check.objectForKey("Shared"));
    EXPECT_FALSE(check.objectForKey("HostKey"));
    EXPECT_EQ(0600u, modeOf(check.path()));
    EXPECT_EQ(0700u, modeOf(fs::path(check.path()).parent_path()));
}

// A corrupt file is read as empty and reported once, though the flush reads it again; the flush
// keeps it aside and replaces it, even with nothing to write.
TEST(DefaultsSuiteTest, DamagedFilesAndOddSuiteNames) {
    const std::string garbage = "bplist00 this is not a property list \x01\x02";
    {
        const std::string suite = freshSuite(), path = DefaultsSuite::pathForSuite(suite);
        fs::create_directories(fs::path(path).parent_path());
        std::ofstream(path, std::ios::binary) << garbage;
        LogCapture log;
        DefaultsSuite damaged(suite);
        EXPECT_FALSE(damaged.objectForKey("Anything"));
        EXPECT_TRUE(damaged.synchronize());
        EXPECT_EQ(1u, log.lines().size());
        EXPECT_TRUE(fs::is_regular_file(fs::symlink_status(path)));
        EXPECT_EQ(garbage, readAll(path + ".corrupt"));
    }

    const std::string folder = fs::path(DefaultsSuite::pathForSuite("plain")).parent_path();
    const std::vector<std::string> names = {"",    ".",   "..",    "../../escape",
                                            "a/b", "%2F", "a%2Fb", "a\x7f"};
    std::set<std::string> paths;
    for (const auto& name : names) {
        SCOPED_TRACE(name);
        LogCapture log;
        DefaultsSuite suite(name);
        EXPECT_EQ(folder, fs::path(suite.path()).parent_path());
        EXPECT_FALSE(log.lines().empty());
        suite.setObject(text("v"), "k");
        EXPECT_TRUE(suite.synchronize());
        EXPECT_EQ(text("v"), DefaultsSuite(name).objectForKey("k"));
        paths.insert(suite.path());
    }
    EXPECT_EQ(paths.size(), names.size());
}

// Another kind of entry where the store's file, its lock file or the group's folder belongs is
// set aside under a free name, untouched (a link is never followed), with one line; the flush or
// the folder lookup then goes on as usual.
TEST(DefaultsSuiteTest, StraysWhereTheGroupsFilesBelongAreSetAside) {
    enum Stray { Folder, Link, Fifo, File };
    const std::string container =
        std::string(std::getenv("XDG_DATA_HOME")) + "/group-containers/P4RL3YSH4R.stray";
    const struct {
        std::string suffix;  // after the store's path; "container" for the group's folder
        Stray stray;
        std::string asideSuffix, line;
    } kCases[] = {
        {"", Folder, ".corrupt", " was a folder where a file belongs; kept as "},
        {"", Link, ".corrupt", " was a symbolic link where a file belongs; kept as "},
        {".lock", Fifo, ".corrupt", " was a FIFO where a file belongs; kept as "},
        {".lock", Folder, ".corrupt-2", " was a folder where a file belongs; kept as "},
        {"container", File, ".corrupt", " was a file where a folder belongs; kept as "},
    };
    for (const auto& c : kCases) {
        SCOPED_TRACE(c.suffix + " " + c.asideSuffix + c.line);
        const std::string suite = freshSuite(), store = DefaultsSuite::pathForSuite(suite);
        const std::string path = c.suffix == "container" ? container : store + c.suffix;
        fs::create_directories(fs::path(path).parent_path());
        if (c.asideSuffix == ".corrupt-2")
            std::ofstream(path + ".corrupt") << "an earlier one";
        if (c.stray == Folder)
            fs::create_directories(path + "/inside");
        if (c.stray == Link)
            fs::create_symlink("elsewhere", path);
        if (c.stray == Fifo) {
            ASSERT_EQ(0, ::mkfifo(path.c_str(), 0600));
        }
        if (c.stray == File)
            std::ofstream(path) << "kept";
        LogCapture log;
        if (c.suffix == "container") {
            EXPECT_EQ(path,
                      FileManager::defaultManager()
                          .containerURLForSecurityApplicationGroupIdentifier("P4RL3YSH4R.stray")
                          .value_or(""));
            EXPECT_TRUE(fs::is_directory(fs::symlink_status(path)));
        } else {
            DefaultsSuite writer(suite);
            writer.setObject(text("v"), "k");
            EXPECT_TRUE(writer.synchronize());
            EXPECT_EQ(text("v"), DefaultsSuite(suite).objectForKey("k"));
        }
        EXPECT_EQ(
            (std::vector<std::string>{"PathRepair: " + path + c.line + path + c.asideSuffix + "."}),
            log.lines());
        const fs::file_type kinds[] = {fs::file_type::directory, fs::file_type::symlink,
                                       fs::file_type::fifo, fs::file_type::regular};
        EXPECT_EQ(kinds[c.stray], fs::symlink_status(path + c.asideSuffix).type());
    }
}

// Threads writing through one shared object and through objects of their own lose nothing.
TEST(DefaultsSuiteTest, ManyThreadsOnSharedAndOwnObjectsLoseNothing) {
    const std::string suite = freshSuite();
    DefaultsSuite shared(suite);
    for (int t = 0; t < 6; ++t)
        WorkerPool::shared().async([&, t] {
            DefaultsSuite own(suite);
            for (int i = 0; i < 20; ++i) {
                (i % 2 ? shared : own).setObject(text("v"), std::to_string(t * 20 + i));
                if (i % 5 != 4)
                    continue;
                EXPECT_TRUE(shared.synchronize());
                EXPECT_TRUE(own.synchronize());
            }
        });
    ASSERT_TRUE(EventLoop::runUntilIdle(30s));
    DefaultsSuite check(suite);
    for (int key = 0; key < 120; ++key)
        EXPECT_EQ(check.objectForKey(std::to_string(key)), text("v")) << key;
}

// A flush removes the temporaries of writers killed mid-flush (a killed one not yet reaped is gone
// too), and keeps a live writer's and every file that is not one of this store's temporaries.
TEST(DefaultsSuiteTest, FlushRemovesTheTemporariesOfGoneWritersOnly) {
    const pid_t reaped = fork();
    if (reaped == 0)
        _exit(0);
    const pid_t zombie = fork();
    if (zombie == 0)
        _exit(0);
    ASSERT_EQ(reaped, waitpid(reaped, nullptr, 0));
    siginfo_t exited{};
    ASSERT_EQ(0, waitid(P_PID, zombie, &exited, WEXITED | WNOWAIT));  // exited, not reaped
    const std::string suite = freshSuite(), path = DefaultsSuite::pathForSuite(suite);
    const std::pair<std::string, bool> cases[] = {
        // name, kept
        {path + ".tmp-" + std::to_string(reaped) + "-0", false},
        {path + ".tmp-" + std::to_string(zombie) + "-12", false},
        {path + ".tmp-" + std::to_string(getppid()) + "-3", true},
        {path + ".tmp-notes", true},
        {DefaultsSuite::pathForSuite(freshSuite()) + ".tmp-" + std::to_string(reaped) + "-0", true},
    };
    fs::create_directories(fs::path(path).parent_path());
    for (const auto& [name, kept] : cases)
        std::ofstream(name) << "partial";
    EXPECT_TRUE(DefaultsSuite(suite).synchronize());
    for (const auto& [name, kept] : cases) {
        SCOPED_TRACE(name);
        EXPECT_EQ(kept, fs::exists(name));
    }
    waitpid(zombie, nullptr, 0);
}
