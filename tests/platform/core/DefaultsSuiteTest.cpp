#include <gtest/gtest.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <filesystem>
#include <fstream>
#include <set>
#include <thread>
#include <vector>

#include "platform/core/DefaultsSuite.h"
#include "platform/core/Log.h"
#include "tests/support/TempDir.h"

using platform::DefaultsSuite;
using platform::PropertyValue;
using platform::StringArray;

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

mode_t modeOf(const std::string& path) {
    struct stat st {};
    EXPECT_EQ(::stat(path.c_str(), &st), 0) << path;
    return st.st_mode & 07777;
}

bool anyLineContains(const platform::LogCapture& capture, const std::string& part) {
    for (const auto& line : capture.lines())
        if (line.find(part) != std::string::npos)
            return true;
    return false;
}

}  // namespace

TEST(DefaultsSuiteTest, WritesAreVisibleAtOnceAndToOthersAfterSynchronize) {
    std::string suite = freshSuite();
    DefaultsSuite writer(suite);
    writer.setObject(text("public.url"), "ParleyMacShareType");
    writer.setObject(PropertyValue(StringArray{"/a/1.txt", "/a/2.txt"}), "ParleyMacSharePathArray");
    EXPECT_EQ(writer.objectForKey("ParleyMacShareType"), text("public.url"));

    DefaultsSuite early(suite);
    EXPECT_FALSE(early.objectForKey("ParleyMacShareType"));

    ASSERT_TRUE(writer.synchronize());
    DefaultsSuite reader(suite);
    EXPECT_EQ(reader.objectForKey("ParleyMacShareType"), text("public.url"));
    EXPECT_EQ(reader.objectForKey("ParleyMacSharePathArray"),
              PropertyValue(StringArray{"/a/1.txt", "/a/2.txt"}));
    // An object opened earlier picks up the new file without a synchronize of its own.
    EXPECT_EQ(early.objectForKey("ParleyMacShareType"), text("public.url"));

    EXPECT_EQ(reader.path(), DefaultsSuite::pathForSuite(suite));
    EXPECT_EQ(modeOf(reader.path()), 0600u);
    EXPECT_EQ(modeOf(std::filesystem::path(reader.path()).parent_path().string()), 0700u);
}

TEST(DefaultsSuiteTest, SynchronizeMergesKeysWrittenByOthers) {
    std::string suite = freshSuite();
    DefaultsSuite extension(suite), host(suite);
    extension.setObject(text("sendToFriend"), "ParleyMacShareEntry");
    host.setObject(text("host value"), "HostKey");
    ASSERT_TRUE(extension.synchronize());
    ASSERT_TRUE(host.synchronize());  // must not drop the extension's key

    DefaultsSuite check(suite);
    EXPECT_EQ(check.objectForKey("ParleyMacShareEntry"), text("sendToFriend"));
    EXPECT_EQ(check.objectForKey("HostKey"), text("host value"));
    EXPECT_EQ(host.objectForKey("ParleyMacShareEntry"), text("sendToFriend"));
}

TEST(DefaultsSuiteTest, UnsavedLocalChangeWinsOverOthersAndNilRemoves) {
    std::string suite = freshSuite();
    DefaultsSuite a(suite), b(suite);
    a.setObject(text("old"), "Shared");
    a.setObject(text("remove me"), "Gone");
    ASSERT_TRUE(a.synchronize());

    a.setObject(text("mine"), "Shared");  // changed here, not yet flushed
    b.setObject(text("theirs"), "Shared");
    ASSERT_TRUE(b.synchronize());
    EXPECT_EQ(a.objectForKey("Shared"), text("mine"));
    ASSERT_TRUE(a.synchronize());

    a.setObject(std::nullopt, "Gone");
    EXPECT_FALSE(a.objectForKey("Gone"));
    ASSERT_TRUE(a.synchronize());

    DefaultsSuite check(suite);
    EXPECT_EQ(check.objectForKey("Shared"), text("mine"));
    EXPECT_FALSE(check.objectForKey("Gone"));
}

TEST(DefaultsSuiteTest, CorruptFileIsLoggedReadAsEmptyAndReplaced) {
    std::string suite = freshSuite();
    std::string path = DefaultsSuite::pathForSuite(suite);
    std::filesystem::create_directories(std::filesystem::path(path).parent_path());
    {
        std::ofstream out(path, std::ios::binary);
        out << "bplist00 this is not a property list \x01\x02\x03";
    }
    platform::LogCapture log;
    DefaultsSuite suiteObject(suite);
    EXPECT_FALSE(suiteObject.objectForKey("Anything"));
    EXPECT_TRUE(anyLineContains(log, "corrupt"));

    EXPECT_TRUE(suiteObject.synchronize());  // nothing written, but the damage is repaired
    EXPECT_TRUE(std::filesystem::exists(path + ".corrupt"));
    suiteObject.setObject(text("v"), "k");
    ASSERT_TRUE(suiteObject.synchronize());
    EXPECT_EQ(DefaultsSuite(suite).objectForKey("k"), text("v"));
}

TEST(DefaultsSuiteTest, UnreadableFileIsLoggedAndReplaced) {
    if (geteuid() == 0)
        GTEST_SKIP() << "permissions do not apply to root";
    std::string suite = freshSuite();
    DefaultsSuite first(suite);
    first.setObject(text("v"), "k");
    ASSERT_TRUE(first.synchronize());
    ASSERT_EQ(::chmod(first.path().c_str(), 0), 0);

    platform::LogCapture log;
    DefaultsSuite second(suite);
    EXPECT_FALSE(second.objectForKey("k"));
    EXPECT_TRUE(anyLineContains(log, "cannot read"));
    second.setObject(text("w"), "k2");
    EXPECT_TRUE(second.synchronize());
    EXPECT_EQ(DefaultsSuite(suite).objectForKey("k2"), text("w"));
}

TEST(DefaultsSuiteTest, OddSuiteNamesStayInsideTheFolder) {
    std::string folder =
        std::filesystem::path(DefaultsSuite::pathForSuite("plain")).parent_path().string();
    std::vector<std::string> names = {"", ".", "..", "../../escape", "a/b", "%2F", "a%2Fb"};
    std::set<std::string> paths;
    for (const auto& name : names) {
        platform::LogCapture log;
        DefaultsSuite suite(name);
        EXPECT_EQ(std::filesystem::path(suite.path()).parent_path().string(), folder) << name;
        EXPECT_FALSE(log.lines().empty()) << name;
        suite.setObject(text("v"), "k");
        EXPECT_TRUE(suite.synchronize()) << name;
        EXPECT_EQ(DefaultsSuite(name).objectForKey("k"), text("v"));
        paths.insert(suite.path());
    }
    EXPECT_EQ(paths.size(), names.size());  // no two names share a file
    EXPECT_FALSE(std::filesystem::exists(folder + "/../../escape.plist"));
}

TEST(DefaultsSuiteTest, ManyThreadsOnSharedAndOwnObjectsLoseNothing) {
    std::string suite = freshSuite();
    DefaultsSuite shared(suite);
    std::vector<std::thread> threads;
    for (int t = 0; t < 6; ++t) {
        threads.emplace_back([&, t] {
            DefaultsSuite own(suite);
            for (int i = 0; i < 20; ++i) {
                std::string key = "t" + std::to_string(t) + "-" + std::to_string(i);
                shared.setObject(text("shared"), key + "-s");
                own.setObject(PropertyValue(StringArray{key}), key + "-o");
                EXPECT_TRUE(shared.objectForKey(key + "-s"));
                if (i % 5 == 4) {
                    EXPECT_TRUE(shared.synchronize());
                    EXPECT_TRUE(own.synchronize());
                }
            }
        });
    }
    for (auto& thread : threads)
        thread.join();
    DefaultsSuite check(suite);
    for (int t = 0; t < 6; ++t)
        for (int i = 0; i < 20; ++i) {
            std::string key = "t" + std::to_string(t) + "-" + std::to_string(i);
            EXPECT_EQ(check.objectForKey(key + "-s"), text("shared")) << key;
            EXPECT_EQ(check.objectForKey(key + "-o"), PropertyValue(StringArray{key})) << key;
        }
}

TEST(DefaultsSuiteTest, AnotherProcessWritesAreMerged) {
    std::string suite = freshSuite();
    DefaultsSuite parent(suite);
    parent.setObject(text("parent"), "ParentKey");

    pid_t child = fork();
    ASSERT_GE(child, 0);
    if (child == 0) {
        DefaultsSuite own(suite);
        own.setObject(text("child"), "ChildKey");
        _exit(own.synchronize() ? 0 : 1);
    }
    int status = -1;
    auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(20);
    while (waitpid(child, &status, WNOHANG) == 0) {
        ASSERT_LT(std::chrono::steady_clock::now(), deadline) << "child process hangs";
        std::this_thread::sleep_for(std::chrono::milliseconds(5));
    }
    ASSERT_TRUE(WIFEXITED(status));
    ASSERT_EQ(WEXITSTATUS(status), 0);

    ASSERT_TRUE(parent.synchronize());
    EXPECT_EQ(parent.objectForKey("ChildKey"), text("child"));
    DefaultsSuite check(suite);
    EXPECT_EQ(check.objectForKey("ParentKey"), text("parent"));
    EXPECT_EQ(check.objectForKey("ChildKey"), text("child"));
}
