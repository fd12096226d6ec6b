#include "tests/platform/core/CoreTestSupport.h"

// Everything but "/" and the unreserved characters is percent-encoded, bytes that are not UTF-8
// included; "." and ".." are resolved, so the last component names the item.
TEST(UrlTest, FileURLsFromPathsGiveTheirParts) {
    // clang-format off
    const struct { const char *given, *path, *absoluteString, *lastComponent, *extension; }
        kCases[] = {
        {"/tmp/My File #1 (\xC3\xBC).txt", "/tmp/My File #1 (\xC3\xBC).txt",
         "file:///tmp/My%20File%20%231%20%28%C3%BC%29.txt", "My File #1 (\xC3\xBC).txt", "txt"},
        {"/d/\xff\xfe-name.tar.gz", "/d/\xff\xfe-name.tar.gz", "file:///d/%FF%FE-name.tar.gz",
         "\xff\xfe-name.tar.gz", "gz"},
        {"/a.d/README", "/a.d/README", "file:///a.d/README", "README", ""},
        {"/w/shared/..", "/w", "file:///w", "w", ""},
        {"/a//b/./", "/a/b", "file:///a/b", "b", ""},
        {"/..", "/", "file:///", "/", ""}};
    // clang-format on
    for (const auto& c : kCases) {
        SCOPED_TRACE(c.given);
        const Url url = Url::fileURLWithPath(c.given);
        EXPECT_EQ(c.path, url.path());
        EXPECT_EQ(c.absoluteString, url.absoluteString());
        EXPECT_EQ(c.lastComponent, url.lastPathComponent());
        EXPECT_EQ(c.extension, url.pathExtension());
    }
}

// A file URL names what the command line's file URI names, "." and ".." resolved, and keeps its
// text; other URLs are strict ASCII with a scheme.
TEST(UrlTest, URLsFromTextAreFilesOrLinksOrRefused) {
    enum class Kind { File, Link, Refused };
    // clang-format off
    const struct { const char* text; Kind kind; const char* path; } kCases[] = {
        {"file://localhost/a/./b/../c%20d.txt", Kind::File, "/a/c d.txt"},
        {"file:///tmp/caf\xC3\xA9", Kind::File, "/tmp/caf\xC3\xA9"},
        {"https://example.com/path/page.html?q=1#top", Kind::Link, ""},
        {"file://elsewhere/x", Kind::Refused, ""}, {"example.com/page", Kind::Refused, ""},
        {"1http://x", Kind::Refused, ""}, {"http://example.org/\xc3\xa9", Kind::Refused, ""},
        {"http://exa mple.com", Kind::Refused, ""}, {"http://example.com/%zz", Kind::Refused, ""}};
    // clang-format on
    for (const auto& c : kCases) {
        SCOPED_TRACE(c.text);
        const std::optional<Url> url = Url::URLWithString(c.text);
        EXPECT_EQ(c.kind != Kind::Refused, url.has_value());
        if (!url)
            continue;
        EXPECT_EQ(c.kind == Kind::File, url->isFileURL());
        EXPECT_EQ(c.path, url->path());
        EXPECT_EQ(c.text, url->absoluteString());
    }
    const std::optional<Url> web = Url::URLWithString("https://example.com/path/page.html?q=1");
    ASSERT_TRUE(web);
    EXPECT_EQ("page.html", web->lastPathComponent());
    EXPECT_EQ("html", web->pathExtension());
}

// Stored values describe themselves as the formatter does.
TEST(UrlTest, StoredValuesDescribeThemselvesAsTheFormatterDoes) {
    EXPECT_EQ("(null)", describe(std::nullopt));
    EXPECT_EQ("public.url", describe(PropertyValue(std::string("public.url"))));
    EXPECT_EQ("(\n    a,\n    b\n)", describe(PropertyValue(StringArray{"a", "b"})));
    EXPECT_EQ("(\n)", describe(PropertyValue(StringArray{})));
}
