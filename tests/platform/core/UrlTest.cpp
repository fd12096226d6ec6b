#include "tests/platform/core/CoreTestSupport.h"

#include "platform/core/PropertyValue.h"
#include "platform/core/Url.h"

using platform::Url;

// Everything but "/" and the unreserved characters is percent-encoded, bytes that are not UTF-8
// included; the path, its last component and extension come back as given.
TEST(UrlTest, FileURLPercentEncodesEverythingButSlashAndUnreserved) {
    struct Case {
        const char *path, *absolute, *last, *extension;
    } cases[] = {
        {"/tmp/My File #1 (\xC3\xBC).txt", "file:///tmp/My%20File%20%231%20%28%C3%BC%29.txt",
         "My File #1 (\xC3\xBC).txt", "txt"},
        {"/data/\xff\xfe-name.tar.gz", "file:///data/%FF%FE-name.tar.gz", "\xff\xfe-name.tar.gz",
         "gz"},
        {"/a.d/README", "file:///a.d/README", "README", ""},
        {"/a/folder", "file:///a/folder", "folder", ""},
        {"/", "file:///", "/", ""},
        {"/a/x.", "file:///a/x.", "x.", ""},
        {"/a/Photo.JPG", "file:///a/Photo.JPG", "Photo.JPG", "JPG"},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.path);
        Url url = Url::fileURLWithPath(c.path);
        EXPECT_TRUE(url.isFileURL());
        EXPECT_EQ(url.path(), c.path);
        EXPECT_EQ(url.absoluteString(), c.absolute);
        EXPECT_EQ(url.lastPathComponent(), c.last);
        EXPECT_EQ(url.pathExtension(), c.extension);
    }
}

TEST(UrlTest, URLWithStringNeedsAnAbsoluteURL) {
    auto web = Url::URLWithString("https://example.com/path/page.html?q=1#top");
    ASSERT_TRUE(web);
    EXPECT_FALSE(web->isFileURL());
    EXPECT_EQ(web->absoluteString(), "https://example.com/path/page.html?q=1#top");
    EXPECT_EQ(web->lastPathComponent(), "page.html");
    EXPECT_EQ(web->pathExtension(), "html");
    EXPECT_EQ(web->path(), "");

    for (const char* bad : {"example.com/page", "", "://x", "1http://x", "http://exa mple.com"})
        EXPECT_FALSE(Url::URLWithString(bad)) << bad;

    // A file URL's path is decoded, an escape at the very end too; a broken escape is no URL.
    for (const char* broken : {"file:///tmp/a%4", "file:///tmp/%zz"})
        EXPECT_FALSE(Url::URLWithString(broken)) << broken;
    EXPECT_EQ(Url::fileURLWithPath("/a/folder/").lastPathComponent(), "folder");
    for (auto [text, path] : {std::pair{"file:///tmp/a%20b.txt", "/tmp/a b.txt"},
                              std::pair{"file:///tmp/a%41", "/tmp/aA"}}) {
        auto file = Url::URLWithString(text);
        ASSERT_TRUE(file) << text;
        EXPECT_TRUE(file->isFileURL());
        EXPECT_EQ(file->path(), path);
    }
}

TEST(PropertyValueTest, DescribeMatchesTheFormatter) {
    using platform::describe;
    using platform::PropertyValue;
    using platform::StringArray;
    EXPECT_EQ(describe(std::nullopt), "(null)");
    EXPECT_EQ(describe(PropertyValue(std::string("public.url"))), "public.url");
    EXPECT_EQ(describe(PropertyValue(StringArray{"a", "b"})), "(\n    a,\n    b\n)");
    EXPECT_EQ(describe(PropertyValue(StringArray{})), "(\n)");
}

TEST(LogTest, CapturesSeeLinesFromEveryThreadAndNest) {
    platform::LogCapture outer;
    std::vector<std::thread> threads;
    {
        platform::LogCapture inner;
        for (int t = 0; t < 4; ++t)
            threads.emplace_back([] {
                for (int i = 0; i < 50; ++i)
                    platform::Log::write("log test line");
            });
        for (auto& thread : threads)
            thread.join();
        EXPECT_EQ(inner.count("log test line"), 200u);
    }
    platform::Log::write("after inner");
    EXPECT_EQ(outer.count("log test line"), 200u);
    EXPECT_TRUE(outer.contains("after inner"));
}
