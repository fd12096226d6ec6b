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
    ASSERT_TRUE(extension.synchronize() && host.synchronize());
    EXPECT_EQ(host.objectForKey("ParleyMacSharePathArray"), PropertyValue(StringArray{"/a/1.txt"}));
    EXPECT_EQ(extension.objectForKey("HostKey"), text("host value"));  // no synchronize of its own

    extension.setObject(text("mine"), "Shared");  // changed here, not yet flushed
    extension.setObject(std::nullopt, "HostKey");
    host.setObject(text("theirs"), "Shared");
    ASSERT_TRUE(host.synchronize() && extension.synchronize());
    DefaultsSuite check(suite);
    EXPECT_TRUE(check.objectForKey("Shared") == text("mine") && !check.objectForKey("HostKey"));
    EXPECT_EQ(std::pair(modeOf(check.path()), modeOf(fs::path(check.path()).parent_path())),
              std::pair(0600u, 0700u));
}

// A damaged file is logged, read as empty, set aside when corrupt and replaced at the next
// synchronize, even one with nothing to write.
TEST(DefaultsSuiteTest, DamagedFilesAndOddSuiteNames) {
    for (bool corrupt : {true, false}) {
        SCOPED_TRACE(corrupt ? "corrupt" : "unreadable");
        if (!corrupt && geteuid() == 0)
            continue;  // permissions do not apply to root
        const std::string suite = freshSuite(), path = DefaultsSuite::pathForSuite(suite);
        fs::create_directories(fs::path(path).parent_path());
        std::ofstream(path, std::ios::binary) << "bplist00 this is not a property list \x01\x02";
        ASSERT_EQ(::chmod(path.c_str(), corrupt ? 0600 : 0), 0);
        LogCapture log;
        DefaultsSuite damaged(suite);
        EXPECT_FALSE(damaged.objectForKey("Anything") || log.lines().empty());
        EXPECT_TRUE(damaged.synchronize());
        EXPECT_EQ(fs::exists(path + ".corrupt"), corrupt);
        damaged.setObject(text("v"), "k");
        ASSERT_TRUE(damaged.synchronize());
        EXPECT_EQ(DefaultsSuite(suite).objectForKey("k"), text("v"));
    }

    const std::string folder = fs::path(DefaultsSuite::pathForSuite("plain")).parent_path();
    const std::vector<std::string> names = {"", ".", "..", "../../escape", "a/b", "%2F", "a%2Fb"};
    std::set<std::string> paths;
    for (const auto& name : names) {
        LogCapture log;
        DefaultsSuite suite(name);
        EXPECT_EQ(fs::path(suite.path()).parent_path(), folder) << name;
        EXPECT_FALSE(log.lines().empty()) << name;
        suite.setObject(text("v"), "k");
        EXPECT_TRUE(suite.synchronize() && DefaultsSuite(name).objectForKey("k")) << name;
        paths.insert(suite.path());
    }
    EXPECT_EQ(paths.size(), names.size());
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
                EXPECT_TRUE(i % 5 != 4 || (shared.synchronize() && own.synchronize()));
            }
        });
    ASSERT_TRUE(EventLoop::runUntilIdle(30s));
    DefaultsSuite check(suite);
    for (int key = 0; key < 120; ++key)
        EXPECT_EQ(check.objectForKey(std::to_string(key)), text("v")) << key;
}
