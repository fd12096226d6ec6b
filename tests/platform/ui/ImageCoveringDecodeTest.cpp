// A photo decoded for a small view keeps only the pixels the view can show but its own size; what
// is not a picture (nor a directory) gives no image and a log line, without blocking.
#include <gtest/gtest.h>
#include <sys/stat.h>

#include <QImage>

#include "platform/core/Log.h"
#include "platform/ui/Image.h"
#include "tests/support/TempDir.h"

TEST(ImageCoveringDecode, KeepsTheOwnSizeButOnlyThePixelsTheViewShows) {
    testing_support::TempDir dir;
    QImage photo(1200, 900, QImage::Format_RGB32);
    photo.fill(Qt::darkCyan);
    ASSERT_TRUE(photo.save(QString::fromStdString(dir.file("photo.jpg")), "JPEG"));
    const auto image = platform::Image::imageWithContentsOfFile(dir.file("photo.jpg"), {60, 60}, 2);
    ASSERT_TRUE(image);
    EXPECT_EQ((platform::Size{1200, 900}), image->size());
    EXPECT_EQ((platform::Size{160, 120}), image->rasterPixelSize());

    dir.writeText("corrupt.jpg", std::string("\xFF\xD8\xFF\xE0 not really", 15));
    dir.writeText("empty.jpg", "");
    dir.writeText("junk.svg", "<svg><unclosed");
    ASSERT_EQ(0, mkfifo(dir.file("fifo.jpg").c_str(), 0600));  // would block a plain open
    for (const char* name :
         {"corrupt.jpg", "empty.jpg", "fifo.jpg", "missing.jpg", "junk.svg", ""}) {
        EXPECT_FALSE(platform::Image::imageWithContentsOfFile(dir.file(name), {60, 60}, 2)) << name;
        platform::LogCapture log;
        EXPECT_FALSE(platform::Image::imageWithContentsOfFile(dir.file(name))) << name;
        EXPECT_EQ(1u, log.lines().size()) << name;
    }
}
