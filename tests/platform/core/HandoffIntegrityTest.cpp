// Odd input and faults at the platform's edge: names and URLs name what they show, copies are
// whole under their final name or absent, the idle loop sleeps, a hung bus costs well under 1 s.
#include <gtest/gtest.h>
#include <sys/resource.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <csignal>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <thread>

#include "platform/core/DistributedNotificationCenter.h"
#include "platform/core/EventLoop.h"
#include "platform/core/FileManager.h"
#include "platform/core/RunningApplication.h"
#include "platform/core/Url.h"
#include "platform/core/WorkerPool.h"
#include "tests/support/ScopedEnv.h"
#include "tests/support/TempDir.h"

namespace fs = std::filesystem;
using platform::FileManager;
using platform::Url;
using testing_support::TempDir;
using namespace std::chrono_literals;

namespace {

std::vector<std::string> entriesOf(const std::string& folder) {
    std::vector<std::string> names;
    for (const auto& entry : fs::directory_iterator(folder))
        names.push_back(entry.path().filename().string());
    std::sort(names.begin(), names.end());
    return names;
}

}  // namespace

TEST(StorableFileNameTest, NamesThatAreNotUtf8AreEscapedAndStayDistinct) {
    const struct {
        const char* raw;
        const char* stored;
    } cases[] = {
        {"café.txt", "café.txt"},       {"100%.txt", "100%.txt"},
        {"caf\xe9.txt", "caf%E9.txt"},  {"caf\xe8.txt", "caf%E8.txt"},
        {"100%\xff", "100%25%FF"},      {"\xed\xa0\x80", "%ED%A0%80"},  // a surrogate
        {"\xc0\xaf.txt", "%C0%AF.txt"},                                 // overlong "/"
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.raw);
        EXPECT_EQ(FileManager::storableFileName(c.raw), c.stored);
    }
}

TEST(FileUrlTest, FileUrlsNameExactlyWhatTheyShow) {
    for (const char* refused : {"file:", "file:///tmp/secret.txt%00junk", "file://elsewhere/x",
                                "http://example.org/\xc3\xa9", "http://exa mple.com"})
        EXPECT_FALSE(Url::URLWithString(refused)) << refused;
    const struct {
        const char* text;
        const char* path;
    } files[] = {
        {"file:///a/./b/../c.txt", "/a/c.txt"},
        {"file://localhost/a%20b", "/a b"},
        {"file:///tmp/caf%E9", "/tmp/caf\xe9"},
        {"file:///", "/"},
    };
    for (const auto& f : files) {
        SCOPED_TRACE(f.text);
        const auto url = Url::URLWithString(f.text);
        ASSERT_TRUE(url && url->isFileURL());
        EXPECT_EQ(url->path(), f.path);
        EXPECT_EQ(url->absoluteString(), f.text);
    }
    EXPECT_EQ(Url::fileURLWithPath("/w/shared/.").lastPathComponent(), "shared");
    EXPECT_EQ(Url::fileURLWithPath("/w/shared/..").lastPathComponent(), "w");
    EXPECT_EQ(Url::fileURLWithPath("/..").path(), "/");
    EXPECT_EQ(Url::fileURLWithPath("/a//b/").path(), "/a/b");
}

TEST(CopyIntegrityTest, FolderGoesWithoutItsPipesAndKeepsTheRest) {
    TempDir dir;
    fs::create_directories(dir.file("album/inner"));
    dir.writeText("album/a.txt", "a");
    dir.writeText("album/inner/b.txt", "b");
    ASSERT_EQ(::mkfifo(dir.file("album/pipe").c_str(), 0600), 0);
    fs::create_directories(dir.file("out"));
    EXPECT_TRUE(
        FileManager::defaultManager().copyItemAtPath(dir.file("album"), dir.file("out/album")));
    EXPECT_EQ(entriesOf(dir.file("out/album")), (std::vector<std::string>{"a.txt", "inner"}));
    EXPECT_TRUE(fs::exists(dir.file("out/album/inner/b.txt")));
}

// No space (an interposed failing write: a file-size limit in a child process): the copy fails
// and leaves nothing, neither under the final name nor as a hidden partial copy.
TEST(CopyIntegrityTest, FailedWriteLeavesNothingBehind) {
    TempDir dir;
    const std::string big = dir.writeFile("big.bin", 1 << 20);
    fs::create_directories(dir.file("out"));
    const pid_t child = ::fork();
    if (child == 0) {
        const rlimit limit = {64 * 1024, 64 * 1024};
        ::signal(SIGXFSZ, SIG_IGN);
        ::setrlimit(RLIMIT_FSIZE, &limit);
        _exit(FileManager::defaultManager().copyItemAtPath(big, dir.file("out/big.bin")) ? 1 : 0);
    }
    int status = 0;
    ASSERT_EQ(::waitpid(child, &status, 0), child);
    EXPECT_EQ(WEXITSTATUS(status), 0) << "the copy claimed success";
    EXPECT_TRUE(entriesOf(dir.file("out")).empty());
}

// A file is copied as large as it was when opened, never past the limit, however fast it grows.
TEST(CopyIntegrityTest, GrowingFileIsCopiedNoLargerThanWhenOpened) {
    TempDir dir;
    const std::string growing = dir.writeFile("growing.log", 1 << 20);
    fs::create_directories(dir.file("out"));
    std::atomic<bool> stop{false};
    std::thread writer([&] {
        for (uintmax_t size = 1 << 20; !stop && size < (64u << 20); size += 256 * 1024)
            fs::resize_file(growing, size);
    });
    const auto result = FileManager::defaultManager().copyItemAtPath(
        growing, dir.file("out/growing.log"), 4 << 20, nullptr);
    stop = true;
    writer.join();
    if (result == platform::CopyResult::Copied)
        EXPECT_LE(fs::file_size(dir.file("out/growing.log")), 4u << 20);
    else
        EXPECT_EQ(result, platform::CopyResult::TooLarge);
    fs::resize_file(growing, (4 << 20) + 1);
    EXPECT_EQ(FileManager::defaultManager().copyItemAtPath(growing, dir.file("out/again"), 4 << 20,
                                                           nullptr),
              platform::CopyResult::TooLarge);
    EXPECT_FALSE(fs::exists(dir.file("out/again")));
}

TEST(EventLoopIdleTest, WaitSleepsUntilSomethingHappens) {
    int checks = 0;
    EXPECT_FALSE(platform::EventLoop::runUntil(
        [&] {
            ++checks;
            return false;
        },
        1s));
    EXPECT_LE(checks, 12);
    std::atomic<bool> done{false};
    platform::WorkerPool::shared().async([&] { done = true; });
    EXPECT_TRUE(platform::EventLoop::runUntil([&] { return done.load(); }, 5s));
}

TEST(HungBusTest, LookupAndPostGiveUpWellWithinASecond) {
    TempDir dir;
    const int listener = ::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0);
    sockaddr_un addr{AF_UNIX, {}};
    std::strncpy(addr.sun_path, dir.file("bus").c_str(), sizeof addr.sun_path - 1);
    ASSERT_EQ(::bind(listener, reinterpret_cast<sockaddr*>(&addr), sizeof addr), 0);
    ASSERT_EQ(::listen(listener, 4), 0);
    // A bus that authenticates its client and then never says another word.
    std::thread bus([listener] {
        const int client = ::accept(listener, nullptr, nullptr);
        char buffer[512];
        ::recv(client, buffer, sizeof buffer, 0);
        ::send(client, "OK 0123456789abcdef0123456789abcdef\r\n", 37, MSG_NOSIGNAL);
        while (::recv(client, buffer, sizeof buffer, 0) > 0) {
        }
        ::close(client);
    });
    ScopedEnv address("DBUS_SESSION_BUS_ADDRESS", "unix:path=" + dir.file("bus"));
    const auto start = std::chrono::steady_clock::now();
    EXPECT_TRUE(platform::RunningApplication::runningApplicationsWithBundleIdentifier(
                    "com.parleyapp.Parley")
                    .empty());
    EXPECT_FALSE(platform::DistributedNotificationCenter::defaultCenter().postNotificationName(
        "ParleyMacShare_Notification", nullptr, nullptr, true));
    EXPECT_LT(std::chrono::steady_clock::now() - start, 1s);
    bus.join();
    ::close(listener);
}
