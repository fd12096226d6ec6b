// Path and URI text: which file URIs name a local path, strict escapes, the ends of paths.
// Encoding is checked through file URLs (UrlTest) and by the url fuzz target's round trip.
#include <gtest/gtest.h>

#include <optional>

#include "platform/core/PathText.h"
#include "platform/core/Paths.h"
#include "tests/support/ScopedEnv.h"

using platform::PathText;
using Bytes = std::optional<std::string>;
constexpr std::nullopt_t kRefused = std::nullopt;

TEST(PathTextTest, FileURIsNameTheirLocalPathOrNothing) {
    // clang-format off
    const struct { const char* uri; Bytes path; } kCases[] = {
        {"file:///tmp/a%20b%3Fc%23d", "/tmp/a b?c#d"},
        {"file://localhost/tmp/x", "/tmp/x"},
        {"file://LocalHost/tmp/x", "/tmp/x"},
        {"FILE:/tmp/y", "/tmp/y"},
        {"file:///", "/"},
        {"file:///tmp/%C3%A9t%C3%A9%25", "/tmp/\xC3\xA9t\xC3\xA9%"},
        {"file:///tmp/\xC3\xA9t\xC3\xA9", "/tmp/\xC3\xA9t\xC3\xA9"},  // typed in UTF-8
        {"file:///tmp/caf%E9", "/tmp/caf\xE9"},                       // a name that is not UTF-8
        {"file:///tmp/a%0Ab%2541", "/tmp/a\nb%41"},
        {"file://otherhost/tmp/x", kRefused},
        {"file://localhost:22/x", kRefused},
        {"file://me@localhost/x", kRefused},
        {"file:tmp/x", kRefused},
        {"file:", kRefused},
        {"file://localhost", kRefused},
        {"file:///tmp/a%g0", kRefused},
        {"file:///tmp/a%4", kRefused},
        {"file:///tmp/secret%00.txt", kRefused},
        {"file:///tmp/a b", kRefused},
        {"file:///tmp/a\tb", kRefused},
        {"file:///tmp/a\x7F", kRefused},
        {"file:///tmp/a?b", kRefused},
        {"file:///tmp/a#b", kRefused},
        {"/tmp/x", kRefused},
        {"https://example.org/x", kRefused},
    };
    // clang-format on
    for (const auto& c : kCases) {
        SCOPED_TRACE(c.uri);
        EXPECT_EQ(c.path, PathText::pathOfFileURI(c.uri));
    }
}

TEST(PathTextTest, EscapesDecodeStrictly) {
    // clang-format off
    const struct { const char* text; Bytes bytes; } kDecoded[] = {
        {"a%20b%2fc%2F", "a b/c/"}, {"%2541", "%41"}, {"", ""}, {"100%", kRefused},
        {"%4", kRefused}, {"%g1", kRefused}, {"%4g", kRefused},
        {"%%41", kRefused}, {"%41%", kRefused}};
    // clang-format on
    for (const auto& c : kDecoded) {
        SCOPED_TRACE(c.text);
        EXPECT_EQ(c.bytes, PathText::percentDecoded(c.text));
    }
}

TEST(PathTextTest, TrailingSlashesTheLastComponentAndItsFolder) {
    // clang-format off
    const struct { const char *path, *withoutTrailingSlashes, *last, *folder; } kCases[] = {
        {"", "", "", "."}, {"/", "/", "/", "/"}, {"///", "/", "/", "/"},
        {"/a/b//", "/a/b", "b", "/a"}, {"/a", "/a", "a", "/"}, {"a/", "a", "a", "."},
        {"//a", "//a", "a", "/"}, {"a/.b", "a/.b", ".b", "a"}};
    // clang-format on
    for (const auto& c : kCases) {
        SCOPED_TRACE(c.path);
        EXPECT_EQ(c.withoutTrailingSlashes, PathText::withoutTrailingSlashes(c.path));
        EXPECT_EQ(c.last, PathText::lastPathComponent(c.path));
        EXPECT_EQ(c.folder, PathText::folderOf(c.path));
    }
}

// A folder named by the XDG rules: the variable when absolute, else under HOME with one slash,
// also for a HOME of "/" (as system users have) or one ending in slashes.
TEST(PathsTest, XdgFoldersFallBackToHomeWithOneSlash) {
    // clang-format off
    const struct { const char* home; std::optional<std::string> cache; const char* folder; }
        kCases[] = {
        {"/home/me//", std::nullopt, "/home/me/.cache"}, {"/", std::nullopt, "/.cache"},
        {"/home/me", "relative", "/home/me/.cache"}, {"/home/me", "/var/c", "/var/c"}};
    // clang-format on
    for (const auto& c : kCases) {
        SCOPED_TRACE(c.home);
        const ScopedEnv home("HOME", c.home), cache("XDG_CACHE_HOME", c.cache);
        EXPECT_EQ(c.folder, platform::Paths::xdgDirectory("XDG_CACHE_HOME", ".cache"));
    }
}
