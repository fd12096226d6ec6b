#include "tests/platform/core/CoreTestSupport.h"

using Strings = std::vector<std::string>;

static Strings partsOf(const Url& url) {
    return {url.path(), url.absoluteString(), url.lastPathComponent(), url.pathExtension()};
}

// Everything but "/" and the unreserved characters is percent-encoded, bytes that are not UTF-8
// included; the path, its last component and extension come back as given.
TEST(UrlTest, FileAndWebURLsGiveTheirPartsAndValuesTheirDescriptions) {
    // clang-format off
    const Strings cases[] = {  // path, absolute string, last component, extension
        {"/tmp/My File #1 (\xC3\xBC).txt", "file:///tmp/My%20File%20%231%20%28%C3%BC%29.txt",
         "My File #1 (\xC3\xBC).txt", "txt"},
        {"/d/\xff\xfe-name.tar.gz", "file:///d/%FF%FE-name.tar.gz", "\xff\xfe-name.tar.gz", "gz"},
        {"/a.d/README", "file:///a.d/README", "README", ""},
        {"/", "file:///", "/", ""}};
    // clang-format on
    for (const auto& c : cases)
        EXPECT_EQ(partsOf(Url::fileURLWithPath(c[0])), c);
    auto web = Url::URLWithString("https://example.com/path/page.html?q=1#top");
    ASSERT_TRUE(web && !web->isFileURL());
    EXPECT_EQ(partsOf(*web),
              Strings({"", "https://example.com/path/page.html?q=1#top", "page.html", "html"}));
    for (const char* bad : {"example.com/page", "", "1http://x", "file:///tmp/a%4", "file:///%zz",
                            "file:", "file:///tmp/secret.txt%00junk", "file://elsewhere/x",
                            "http://example.org/\xc3\xa9", "http://exa mple.com"})
        EXPECT_FALSE(Url::URLWithString(bad)) << bad;
    // Pairs of a file URL and its path: each names exactly what it shows, and reads back as given.
    // clang-format off
    const char* files[] = {"file:///tmp/a%41", "/tmp/aA", "file:///a/./b/../c.txt", "/a/c.txt",
                           "file://localhost/a%20b", "/a b", "file:///tmp/caf%E9", "/tmp/caf\xe9",
                           "file:///", "/"};
    // clang-format on
    for (size_t i = 0; i < std::size(files); i += 2) {
        const auto url = Url::URLWithString(files[i]);
        ASSERT_TRUE(url && url->isFileURL()) << files[i];
        EXPECT_EQ(url->path() + " " + url->absoluteString(),
                  files[i + 1] + (" " + std::string(files[i])));
    }
    EXPECT_EQ(Url::fileURLWithPath("/w/shared/..").lastPathComponent(), "w");
    EXPECT_EQ(Url::fileURLWithPath("/..").path() + Url::fileURLWithPath("/a//b/.").path(), "//a/b");
    // Stored values describe themselves as the formatter does.
    EXPECT_EQ(Strings({describe(std::nullopt), describe(PropertyValue(std::string("public.url"))),
                       describe(PropertyValue(StringArray{"a", "b"})),
                       describe(PropertyValue(StringArray{}))}),
              Strings({"(null)", "public.url", "(\n    a,\n    b\n)", "(\n)"}));
}
