#include <gtest/gtest.h>

#include <thread>
#include <vector>

#include "platform/core/Log.h"
#include "platform/core/PropertyValue.h"
#include "platform/core/Url.h"

using platform::Url;

TEST(UrlTest, FileURLPercentEncodesEverythingButSlashAndUnreserved) {
    Url url = Url::fileURLWithPath("/tmp/My File #1 (ü).txt");
    EXPECT_TRUE(url.isFileURL());
    EXPECT_EQ(url.path(), "/tmp/My File #1 (ü).txt");
    EXPECT_EQ(url.absoluteString(), "file:///tmp/My%20File%20%231%20%28%C3%BC%29.txt");
    EXPECT_EQ(url.lastPathComponent(), "My File #1 (ü).txt");
    EXPECT_EQ(url.pathExtension(), "txt");
}

TEST(UrlTest, FileURLKeepsNamesThatAreNotUtf8) {
    std::string path = "/data/\xff\xfe-name.tar.gz";
    Url url = Url::fileURLWithPath(path);
    EXPECT_EQ(url.path(), path);
    EXPECT_EQ(url.absoluteString(), "file:///data/%FF%FE-name.tar.gz");
    EXPECT_EQ(url.lastPathComponent(), "\xff\xfe-name.tar.gz");
    EXPECT_EQ(url.pathExtension(), "gz");
}

TEST(UrlTest, PathExtensionAndLastComponentEdges) {
    EXPECT_EQ(Url::fileURLWithPath("/a/README").pathExtension(), "");
    EXPECT_EQ(Url::fileURLWithPath("/a.d/README").pathExtension(), "");
    EXPECT_EQ(Url::fileURLWithPath("/a/folder/").lastPathComponent(), "folder");
    EXPECT_EQ(Url::fileURLWithPath("/").lastPathComponent(), "/");
    EXPECT_EQ(Url::fileURLWithPath("/a/x.").pathExtension(), "");
    EXPECT_EQ(Url::fileURLWithPath("/a/Photo.JPG").pathExtension(), "JPG");
}

TEST(UrlTest, URLWithStringNeedsAnAbsoluteURL) {
    auto web = Url::URLWithString("https://example.com/path/page.html?q=1#top");
    ASSERT_TRUE(web);
    EXPECT_FALSE(web->isFileURL());
    EXPECT_EQ(web->absoluteString(), "https://example.com/path/page.html?q=1#top");
    EXPECT_EQ(web->lastPathComponent(), "page.html");
    EXPECT_EQ(web->pathExtension(), "html");
    EXPECT_EQ(web->path(), "");

    EXPECT_FALSE(Url::URLWithString("example.com/page"));
    EXPECT_FALSE(Url::URLWithString(""));
    EXPECT_FALSE(Url::URLWithString("://x"));
    EXPECT_FALSE(Url::URLWithString("1http://x"));
    EXPECT_FALSE(Url::URLWithString("http://exa mple.com"));

    auto file = Url::URLWithString("file:///tmp/a%20b.txt");
    ASSERT_TRUE(file);
    EXPECT_TRUE(file->isFileURL());
    EXPECT_EQ(file->path(), "/tmp/a b.txt");
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
