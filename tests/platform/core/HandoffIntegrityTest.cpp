// Odd input and faults at the platform's edge: names name what they show, copies are
// whole under their final name or absent, the idle loop sleeps, a hung bus costs well under 1 s.
#include <sys/socket.h>
#include <sys/un.h>

#include <cstring>

#include "platform/core/StorableFileName.h"
#include "tests/platform/core/CoreTestSupport.h"

// Pairs of a raw name and how it is stored: a surrogate, an overlong "/" and a code point past
// U+10FFFF are not UTF-8; the last one that is stays as it stands.
TEST(CopyIntegrityTest, NamesAreEscapedAndCopiesWholeUnderTheirFinalNameOrAbsent) {
    // clang-format off
    const std::pair<const char*, const char*> cases[] = {
        {"café.txt", "café.txt"},  {"100%.txt", "100%.txt"},      {"caf\xe9.txt", "caf%E9.txt"},
        {"100%\xff", "100%25%FF"}, {"\xed\xa0\x80", "%ED%A0%80"}, {"\xc0\xaf.txt", "%C0%AF.txt"},
        {"\xf4\x90\x80\x80", "%F4%90%80%80"}, {"\xf4\x8f\xbf\xbf", "\xf4\x8f\xbf\xbf"}};
    // clang-format on
    for (const auto& [raw, stored] : cases) {
        SCOPED_TRACE(raw);
        EXPECT_EQ(stored, StorableFileName::of(raw));
    }

    // A folder is copied without its pipes; a growing file is copied no larger than the limit,
    // however fast it grows. (A failed write leaving nothing partial: the share's no-space test.)
    TempDir dir;
    auto& manager = FileManager::defaultManager();
    fs::create_directories(dir.file("album/inner"));
    dir.writeText("album/inner/b.txt", "b");
    ASSERT_EQ(::mkfifo(dir.file("album/pipe").c_str(), 0600), 0);
    EXPECT_TRUE(manager.copyItemAtPath(dir.file("album"), dir.file("copy")));
    EXPECT_TRUE(fs::exists(dir.file("copy/inner/b.txt")));
    EXPECT_FALSE(fs::exists(fs::symlink_status(dir.file("copy/pipe"))));

    const std::string big = dir.writeFile("big.bin", 1 << 20);
    CopyOptions limited;
    limited.maxFileBytes = 4 << 20;
    std::atomic<bool> stop{false};
    std::thread writer([&] {
        for (uintmax_t size = 1 << 20; !stop && size < (64u << 20); size += 256 * 1024)
            fs::resize_file(big, size);
    });
    const auto result = manager.copyItemAtPath(big, dir.file("grown"), limited);
    stop = true;
    writer.join();
    if (result == CopyResult::Copied)
        EXPECT_LE(fs::file_size(dir.file("grown")), 4u << 20);
    else
        EXPECT_EQ(CopyResult::TooLarge, result);
    fs::resize_file(big, 4 << 20);
    EXPECT_EQ(manager.copyItemAtPath(big, dir.file("limit"), limited), CopyResult::Copied);
    fs::resize_file(big, (4 << 20) + 1);
    EXPECT_EQ(manager.copyItemAtPath(big, dir.file("over"), limited), CopyResult::TooLarge);
    EXPECT_FALSE(fs::exists(dir.file("over")));
}

TEST(EventLoopIdleTest, WaitSleepsUntilSomethingHappens) {
    int checks = 0;
    EXPECT_FALSE(EventLoop::runUntil([&] { return ++checks < 0; }, 1s));
    EXPECT_LE(checks, 12);
    std::atomic<bool> done{false};
    WorkerPool::shared().async([&] { done = true; });
    EXPECT_TRUE(EventLoop::runUntil([&] { return done.load(); }, 5s));
}

// A bus that authenticates its client and then never says another word.
TEST(HungBusTest, LookupAndPostGiveUpWellWithinASecond) {
    TempDir dir;
    const int listener = ::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0);
    sockaddr_un addr{AF_UNIX, {}};
    std::strncpy(addr.sun_path, dir.file("bus").c_str(), sizeof addr.sun_path - 1);
    ASSERT_EQ(0, ::bind(listener, reinterpret_cast<sockaddr*>(&addr), sizeof addr));
    ASSERT_EQ(0, ::listen(listener, 4));
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
    auto& center = DistributedNotificationCenter::defaultCenter();
    EXPECT_TRUE(
        RunningApplication::runningApplicationsWithBundleIdentifier("com.parleyapp.P").empty());
    EXPECT_FALSE(
        center.postNotificationName("ParleyMacShare_Notification", nullptr, nullptr, true));
    EXPECT_LT(std::chrono::steady_clock::now() - start, 1s);
    bus.join();
    ::close(listener);
}
