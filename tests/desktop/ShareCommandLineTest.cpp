// What desktops pass to parley-share: paths (%F), file URIs (%U) and the browser's
// parley-share: links; a URI that cannot be shared is a usage error.
#include <gtest/gtest.h>

#include "apps/parley-share/ShareCommandLine.h"

using Words = std::vector<std::string>;

// The same file URI shares the same path, or is the same usage error, as an operand and after
// --url.
TEST(ShareCommandLineTest, AFileURIReadsTheSameAsAnOperandAndAfterUrl) {
    // clang-format off
    const struct { std::string uri; Words files; std::string error; } kCases[] = {
        {"file:///tmp/a%3Fb", {"/tmp/a?b"}, ""},
        {"file:///tmp/a%20b/%C3%A9t%C3%A9%25.txt", {"/tmp/a b/\xC3\xA9t\xC3\xA9%.txt"}, ""},
        {"file:///tmp/\xC3\xA9t\xC3\xA9", {"/tmp/\xC3\xA9t\xC3\xA9"}, ""},
        {"FILE://LocalHost/tmp/x", {"/tmp/x"}, ""},
        {"file:///tmp/a?b", {}, "not a local file URI: \"file:///tmp/a?b\""},
        {"file:///tmp/a#b", {}, "not a local file URI: \"file:///tmp/a#b\""},
        {"file://otherhost/tmp/x", {}, "not a local file URI: \"file://otherhost/tmp/x\""}};
    // clang-format on
    for (const auto& c : kCases) {
        for (const Words& arguments : {Words{c.uri}, Words{"--url", c.uri}}) {
            SCOPED_TRACE(testing::PrintToString(arguments));
            const ShareCommandLine line = ShareCommandLine::parse(arguments);
            EXPECT_EQ(c.error, line.error());
            EXPECT_EQ(c.files, line.files());
            EXPECT_EQ(std::nullopt, line.url());
        }
    }
}

TEST(ShareCommandLineTest, OperandsAndLinks) {
    // clang-format off
    const struct { Words arguments, files; std::optional<std::string> url; } kShareable[] = {
        {{"/tmp/a b.txt", "rel/x", "rel:x"}, {"/tmp/a b.txt", "rel/x", "rel:x"}, std::nullopt},
        {{"--", "file:///x", "parley-share:x"}, {"file:///x", "parley-share:x"}, std::nullopt},
        {{"--url", "file:///a", "/b"}, {"/a", "/b"}, std::nullopt},
        {{"parley-share:https%3A%2F%2Fexample.org%2Fa%3Fb%3Dc%26d%3D%2522e%2522"}, {},
         "https://example.org/a?b=c&d=%22e%22"},
        {{"Parley-Share:https://example.org/"}, {}, "https://example.org/"},
        {{"--url", "sftp://host/x"}, {}, "sftp://host/x"}};
    // clang-format on
    for (const auto& c : kShareable) {
        SCOPED_TRACE(testing::PrintToString(c.arguments));
        const ShareCommandLine line = ShareCommandLine::parse(c.arguments);
        EXPECT_EQ("", line.error());
        EXPECT_EQ(c.files, line.files());
        EXPECT_EQ(c.url, line.url());
    }
    // clang-format off
    const struct { Words arguments; std::string error; } kRefused[] = {
        {{"sftp://host/tmp/x"}, "only local files can be shared, not \"sftp://host/tmp/x\""},
        {{"parley-share:not%20a%20link"},
         "not an encoded web link: \"parley-share:not%20a%20link\""},
        {{"parley-share:https%3A%2F%2Fa.org%2"},
         "not an encoded web link: \"parley-share:https%3A%2F%2Fa.org%2\""},
        {{"--url", "https://a.org/", "/tmp/x"}, "share either a link or files, not both"},
        {{"--url", "https://a.org/", "parley-share:https%3A%2F%2Fb.org%2F"}, "a link given twice"},
        {{"--url", "file:///a", "--url", "file:///b"}, "--url given twice"},
        {{"--url", "/tmp/x"}, "not an absolute URL: \"/tmp/x\""}};
    // clang-format on
    for (const auto& c : kRefused) {
        SCOPED_TRACE(testing::PrintToString(c.arguments));
        EXPECT_EQ(c.error, ShareCommandLine::parse(c.arguments).error());
    }
}

// Any web page can open a parley-share: link: only an http or https URL with a host gets through.
TEST(ShareCommandLineTest, TheSchemeHandlerTakesOnlyWebLinks) {
    const std::string only = "only http and https links can be shared, not ";
    // clang-format off
    const struct { std::string link, url, error; } kCases[] = {
        {"parley-share:HTTP%3A%2F%2Fme%40a.org%3A8080%2Fx", "HTTP://me@a.org:8080/x", ""},
        {"parley-share:http%3A%2F%2F%5B%3A%3A1%5D%2F", "http://[::1]/", ""},
        {"parley-share:javascript%3Aalert(1)", "", only + "javascript: in "},
        {"parley-share:vbscript%3Amsgbox", "", only + "vbscript: in "},
        {"parley-share:smb%3A%2F%2Fnas%2Fhome", "", only + "smb: in "},
        {"parley-share:ftp%3A%2F%2Fa.org%2Ff", "", only + "ftp: in "},
        {"parley-share:file%3A%2F%2F%2Fetc%2Fpasswd", "", only + "file: in "},
        {"parley-share:parley-share%3Ahttps%253A%252F%252Fa.org%252F", "", only + "parley-share: in "},
        {"parley-share:https%3A%2F%2F%2Fetc", "", "a web link without a host: "},
        {"parley-share:https%3A%2F%2Fme%40%3A80%2F", "", "a web link without a host: "},
        {"parley-share:https%3Aa.org", "", "a web link without a host: "}};
    // clang-format on
    for (const auto& c : kCases) {
        SCOPED_TRACE(c.link);
        const ShareCommandLine line = ShareCommandLine::parse({c.link});
        EXPECT_EQ(c.error.empty() ? "" : c.error + "\"" + c.link + "\"", line.error());
        EXPECT_EQ(c.url.empty() ? std::nullopt : std::optional(c.url), line.url());
    }
}
