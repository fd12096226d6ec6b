#include "tests/platform/core/CoreTestSupport.h"

#include <set>

#include "platform/core/DefaultsSuite.h"

using core_test::logged;
using core_test::modeOf;
using platform::DefaultsSuite;
using platform::PropertyValue;
using platform::StringArray;
namespace fs = std::filesystem;

namespace {

int suiteCounter = 0;

// A suite name of its own for each test, so that the tests do not share a file.
std::string freshSuite() {
    return "P4RL3YSH4R.com.parleyapp.Test" + std::to_string(getpid()) + "." +
           std::to_string(suiteCounter++);
}

PropertyValue text(const char* value) {
    return PropertyValue(std::string(value));
}

}  // namespace

TEST(DefaultsSuiteTest, WritesAreVisibleAtOnceAndToOthersAfterSynchronize) {
    std::string suite = freshSuite();
    DefaultsSuite writer(suite), early(suite);
    writer.setObject(text("public.url"), "ParleyMacShareType");
    writer.setObject(PropertyValue(StringArray{"/a/1.txt", "/a/2.txt"}), "ParleyMacSharePathArray");
    EXPECT_EQ(writer.objectForKey("ParleyMacShareType"), text("public.url"));
    EXPECT_FALSE(early.objectForKey("ParleyMacShareType"));

    ASSERT_TRUE(writer.synchronize());
    DefaultsSuite reader(suite);
    EXPECT_EQ(reader.objectForKey("ParleyMacSharePathArray"),
              PropertyValue(StringArray{"/a/1.txt", "/a/2.txt"}));
    // An object opened earlier picks up the new file without a synchronize of its own.
    EXPECT_EQ(early.objectForKey("ParleyMacShareType"), text("public.url"));
    EXPECT_EQ(modeOf(reader.path()), 0600u);
    EXPECT_EQ(modeOf(fs::path(reader.path()).parent_path().string()), 0700u);
}

// Synchronize keeps keys others wrote; an unsaved local change wins over them; nil removes.
TEST(DefaultsSuiteTest, SynchronizeMergesKeysWrittenByOthers) {
    std::string suite = freshSuite();
    DefaultsSuite extension(suite), host(suite);
    extension.setObject(text("sendToFriend"), "ParleyMacShareEntry");
    extension.setObject(text("old"), "Shared");
    host.setObject(text("host value"), "HostKey");
    ASSERT_TRUE(extension.synchronize());
    ASSERT_TRUE(host.synchronize());  // must not drop the extension's key
    EXPECT_EQ(host.objectForKey("ParleyMacShareEntry"), text("sendToFriend"));

    extension.setObject(text("mine"), "Shared");  // changed here, not yet flushed
    extension.setObject(std::nullopt, "HostKey");
    host.setObject(text("theirs"), "Shared");
    ASSERT_TRUE(host.synchronize());
    EXPECT_EQ(extension.objectForKey("Shared"), text("mine"));
    EXPECT_FALSE(extension.objectForKey("HostKey"));
    ASSERT_TRUE(extension.synchronize());

    DefaultsSuite check(suite);
    EXPECT_EQ(check.objectForKey("ParleyMacShareEntry"), text("sendToFriend"));
    EXPECT_EQ(check.objectForKey("Shared"), text("mine"));
    EXPECT_FALSE(check.objectForKey("HostKey"));
}

// A damaged file is logged, read as empty, set aside when corrupt and replaced at the next
// synchronize, even one with nothing to write.
TEST(DefaultsSuiteTest, CorruptOrUnreadableFileIsLoggedReadAsEmptyAndReplaced) {
    for (bool corrupt : {true, false}) {
        SCOPED_TRACE(corrupt ? "corrupt" : "unreadable");
        if (!corrupt && geteuid() == 0)
            continue;  // permissions do not apply to root
        std::string suite = freshSuite(), path = DefaultsSuite::pathForSuite(suite);
        fs::create_directories(fs::path(path).parent_path());
        std::ofstream(path, std::ios::binary) << "bplist00 this is not a property list \x01\x02";
        if (!corrupt) {
            ASSERT_EQ(::chmod(path.c_str(), 0), 0);
        }
        platform::LogCapture log;
        DefaultsSuite damaged(suite);
        EXPECT_FALSE(damaged.objectForKey("Anything"));
        EXPECT_TRUE(logged(log, corrupt ? "corrupt" : "cannot read"));
        EXPECT_TRUE(damaged.synchronize());
        EXPECT_EQ(fs::exists(path + ".corrupt"), corrupt);
        damaged.setObject(text("v"), "k");
        ASSERT_TRUE(damaged.synchronize());
        EXPECT_EQ(DefaultsSuite(suite).objectForKey("k"), text("v"));
    }
}

TEST(DefaultsSuiteTest, OddSuiteNamesStayInsideTheFolder) {
    std::string folder = fs::path(DefaultsSuite::pathForSuite("plain")).parent_path().string();
    std::vector<std::string> names = {"", ".", "..", "../../escape", "a/b", "%2F", "a%2Fb"};
    std::set<std::string> paths;
    for (const auto& name : names) {
        platform::LogCapture log;
        DefaultsSuite suite(name);
        EXPECT_EQ(fs::path(suite.path()).parent_path().string(), folder) << name;
        EXPECT_FALSE(log.lines().empty()) << name;
        suite.setObject(text("v"), "k");
        EXPECT_TRUE(suite.synchronize()) << name;
        EXPECT_EQ(DefaultsSuite(name).objectForKey("k"), text("v"));
        paths.insert(suite.path());
    }
    EXPECT_EQ(paths.size(), names.size());  // no two names share a file
}

TEST(DefaultsSuiteTest, ManyThreadsOnSharedAndOwnObjectsLoseNothing) {
    std::string suite = freshSuite();
    DefaultsSuite shared(suite);
    auto key = [](int t, int i) { return std::to_string(t) + "-" + std::to_string(i); };
    std::vector<std::thread> threads;
    for (int t = 0; t < 6; ++t)
        threads.emplace_back([&, t] {
            DefaultsSuite own(suite);
            for (int i = 0; i < 20; ++i) {
                shared.setObject(text("shared"), key(t, i) + "s");
                own.setObject(PropertyValue(StringArray{key(t, i)}), key(t, i) + "o");
                if (i % 5 == 4) {
                    EXPECT_TRUE(shared.synchronize());
                    EXPECT_TRUE(own.synchronize());
                }
            }
        });
    for (auto& thread : threads)
        thread.join();
    DefaultsSuite check(suite);
    for (int t = 0; t < 6; ++t)
        for (int i = 0; i < 20; ++i) {
            EXPECT_EQ(check.objectForKey(key(t, i) + "s"), text("shared")) << key(t, i);
            EXPECT_EQ(check.objectForKey(key(t, i) + "o"), PropertyValue(StringArray{key(t, i)}));
        }
}
