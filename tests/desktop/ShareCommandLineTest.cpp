// What desktops pass to parley-share: paths (%F), file URIs (%U) and the browser's
// parley-share: links; a URI that cannot be shared is a usage error.
#include <gtest/gtest.h>

#include "apps/parley-share/ShareCommandLine.h"

using Words = std::vector<std::string>;

// clang-format off
TEST(ShareCommandLineTest, DesktopOperands) {
    const struct { Words arguments, files; std::string url; } kShareable[] = {
        {{"/tmp/a b.txt", "rel/x"}, {"/tmp/a b.txt", "rel/x"}, ""},
        {{"file:///tmp/a%20b/%C3%A9t%C3%A9%25.txt", "file://LocalHost/tmp/x", "FILE:/tmp/y"},
         {"/tmp/a b/\xC3\xA9t\xC3\xA9%.txt", "/tmp/x", "/tmp/y"}, ""},
        {{"--", "file:///x", "parley-share:x"}, {"file:///x", "parley-share:x"}, ""},
        {{"parley-share:https%3A%2F%2Fexample.org%2Fa%3Fb%3Dc%26d%3D%2522e%2522"}, {},
         "https://example.org/a?b=c&d=%22e%22"},
        {{"Parley-Share:https://example.org/"}, {}, "https://example.org/"}};
    for (const auto& c : kShareable) {
        const ShareCommandLine line = ShareCommandLine::parse(c.arguments);
        EXPECT_TRUE(line.isValid() && line.files() == c.files && line.url().value_or("") == c.url)
            << testing::PrintToString(c.arguments) << " " << line.error();
    }
    // Another computer, relative, broken or NUL escapes, raw blanks or query, remote schemes; a
    // link that is not a URL or a local file; a link with files, or two links.
    for (const Words& arguments : std::vector<Words>{
             {"file://otherhost/tmp/x"}, {"file:tmp/x"}, {"file:///tmp/a%g0"}, {"file:///a%00b"},
             {"file:///tmp/a b"}, {"file:///tmp/a?b"}, {"sftp://host/tmp/x"},
             {"parley-share:not%20a%20link"}, {"parley-share:https%3A%2F%2Fexample.org%2"},
             {"parley-share:file%3A%2F%2F%2Fetc%2Fpasswd"},
             {"parley-share:https%3A%2F%2Fa.org%2F", "/tmp/x"},
             {"--url", "https://a.org/", "parley-share:https%3A%2F%2Fb.org%2F"}})
        EXPECT_FALSE(ShareCommandLine::parse(arguments).isValid()) << arguments.back();
}
// clang-format on
