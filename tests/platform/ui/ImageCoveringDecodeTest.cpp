// A photo decoded for a small view: only the pixels the view can show are kept, the image keeps
// the photo's own size, and what is not a picture gives no image without blocking.
#include <gtest/gtest.h>
#include <sys/stat.h>

#include <QImage>

#include "platform/ui/Image.h"
#include "tests/support/TempDir.h"

namespace {

TEST(ImageCoveringDecode, KeepsTheOwnSizeButOnlyThePixelsTheViewShows) {
    testing_support::TempDir dir;
    QImage photo(1200, 900, QImage::Format_RGB32);
    photo.fill(Qt::darkCyan);
    ASSERT_TRUE(photo.save(QString::fromStdString(dir.file("photo.jpg")), "JPEG"));
    const auto image = platform::Image::imageWithContentsOfFile(dir.file("photo.jpg"), {60, 60}, 2);
    ASSERT_TRUE(image);
    EXPECT_EQ((platform::Size{1200, 900}), image->size());
    EXPECT_EQ((platform::Size{160, 120}), image->rasterPixelSize());
}

TEST(ImageCoveringDecode, WhatIsNoPictureGivesNoImage) {
    testing_support::TempDir dir;
    dir.writeText("corrupt.jpg", std::string("\xFF\xD8\xFF\xE0 not really", 15));
    dir.writeText("empty.jpg", "");
    ASSERT_EQ(0, mkfifo(dir.file("fifo.jpg").c_str(), 0600));  // would block a plain open
    for (const char* name : {"corrupt.jpg", "empty.jpg", "fifo.jpg", "missing.jpg"}) {
        EXPECT_FALSE(platform::Image::imageWithContentsOfFile(dir.file(name), {60, 60}, 2)) << name;
        EXPECT_FALSE(platform::Image::imageWithContentsOfFile(dir.file(name))) << name;
    }
}

}  // namespace
