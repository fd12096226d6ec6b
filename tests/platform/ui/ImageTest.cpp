#include <sys/stat.h>

#include <QImage>

#include "platform/core/Log.h"
#include "tests/platform/ui/PixelTestSupport.h"
#include "tests/support/TempDir.h"

using namespace platform;
using namespace pixel_test;
using testing_support::TempDir;

namespace {

std::string writeSolidPng(const TempDir& dir, const std::string& name, int side, QColor colour) {
    QImage image(side, side, QImage::Format_ARGB32);
    image.fill(colour);
    std::string path = dir.file(name);
    EXPECT_TRUE(image.save(QString::fromStdString(path), "png"));
    return path;
}

}  // namespace

// An SVG has its point size and draws upright, sharply at twice the scale: the half-point green
// stripe at x = 4.5..5 is exactly pixel column 9 at 2x.
TEST(ImageTest, SvgIsRenderedSharplyAtTwiceTheScale) {
    TempDir dir;
    auto image = Image::imageWithContentsOfFile(dir.writeText("striped.svg", R"(
<svg xmlns="http://www.w3.org/2000/svg" width="10" height="10" viewBox="0 0 10 10">
  <rect x="0" y="0" width="10" height="5" fill="#ff0000"/>
  <rect x="0" y="5" width="10" height="5" fill="#0000ff"/>
  <rect x="4.5" y="0" width="0.5" height="5" fill="#00ff00"/>
</svg>)"));
    ASSERT_TRUE(image);
    EXPECT_EQ(Size({10, 10}), image->size());
    auto drawn =
        render(10, 10, 2, [&](GraphicsContext&) { image->drawInRect(NSMakeRect(0, 0, 10, 10)); });
    expectPixels(*drawn, {{1, 9, kRed}, {1, 1, kBlue}, {4.75, 9.75, kGreen}});
    expectPixels(*drawn, {{4.25, 9.75, kRed}, {5.25, 9.75, kRed}});
}

TEST(ImageTest, RasterPicksItsDoubleSizeVariantAtScaleTwo) {
    TempDir dir;
    std::string path = writeSolidPng(dir, "icon.png", 4, Qt::red);
    writeSolidPng(dir, "icon@2x.png", 8, Qt::blue);
    auto image = Image::imageWithContentsOfFile(path);
    ASSERT_TRUE(image);
    EXPECT_EQ(Size({4, 4}), image->size());
    EXPECT_EQ(kRed, image->bitmapAtScale(1)->pixelAt(1, 1));
    EXPECT_EQ(kBlue, image->bitmapAtScale(2)->pixelAt(7, 7));
    // Named directly, a 2x file is half its pixel size in points.
    EXPECT_EQ(Size({4, 4}), Image::imageWithContentsOfFile(dir.file("icon@2x.png"))->size());
    auto plain = Image::imageWithContentsOfFile(writeSolidPng(dir, "plain.png", 3, Qt::green));
    EXPECT_EQ(kGreen, plain->bitmapAtScale(2)->pixelAt(5, 5));  // 1x pixels serve both scales
}

// The handler runs at every drawing (never cached), in image coordinates, at the alpha asked; a
// flipped image's handler draws with y growing downward.
TEST(ImageTest, DrawingHandlerRunsAtEveryDrawingInImageCoordinates) {
    int calls = 0;
    Rect seen;
    auto image = Image::imageWithSize({10, 5}, false, [&](const Rect& destination) {
        ++calls;
        seen = destination;
        fill(kRed, NSMakeRect(0, 0, 10, 1));  // the image's bottom row
        return true;
    });
    auto bitmap = render(20, 20, 2, [&](GraphicsContext&) {
        image->drawInRect(NSMakeRect(0, 10, 20, 10));  // twice the size: rows are 2 points
        image->drawInRect(NSMakeRect(0, 0, 20, 10), 0.5);
    });
    EXPECT_EQ(2, calls);
    EXPECT_EQ(NSMakeRect(0, 0, 10, 5), seen);
    expectPixels(*bitmap, {{10, 11.5, kRed}, {10, 12.5, kClear}, {10, 1, {255, 0, 0, 128}}});
    auto flipped = Image::imageWithSize({10, 10}, true, [](const Rect&) {
        fill(kBlue, NSMakeRect(0, 0, 10, 2));
        return true;
    });
    expectPixels(*flipped->bitmapAtScale(1), {{5, 9.5, kBlue}, {5, 0.5, kClear}});
}

// A bitmap answers straight (not premultiplied) components, survives a PNG round trip, and drawn
// back at 2x lands pixel for pixel.
TEST(ImageTest, BitmapImagesAndPngRoundTrip) {
    auto source = render(6, 4, 2, [](GraphicsContext&) {
        Color::colorWithDeviceRed(1, 0.5, 0, 0.5)->setFill();
        NSRectFill(NSMakeRect(0, 0, 3, 4));
    });
    expectPixels(*source, {{0.25, 3.75, {255, 128, 0, 128}}});
    TempDir dir;
    ASSERT_TRUE(source->writePNG(dir.file("out.png")));
    auto read = Bitmap::readPNG(dir.file("out.png"));
    ASSERT_TRUE(read);
    EXPECT_EQ(12, read->pixelWidth());
    EXPECT_EQ(8, read->pixelHeight());
    EXPECT_EQ(source->pixelAt(0, 0), read->pixelAt(0, 0));
    EXPECT_EQ(kClear, read->pixelAt(-1, 0));  // outside: nothing
    auto image = Image::imageWithBitmap(source);
    EXPECT_EQ(Size({6, 4}), image->size());
    auto copy =
        render(6, 4, 2, [&](GraphicsContext&) { image->drawInRect(NSMakeRect(0, 0, 6, 4)); });
    EXPECT_EQ(source->pixelAt(5, 3), copy->pixelAt(5, 3));
    EXPECT_EQ(kClear, copy->pixelAt(6, 3));
    EXPECT_FALSE(Bitmap::readPNG(dir.file("none.png")));
    EXPECT_FALSE(source->writePNG(dir.file("no/such/dir/out.png")));
}

// What is not a picture (nor a directory) gives no image, no size and a log line, without
// blocking.
TEST(ImageCoveringDecode, WhatIsNoPictureGivesNoImage) {
    TempDir dir;
    dir.writeText("corrupt.jpg", std::string("\xFF\xD8\xFF\xE0 not really", 15));
    dir.writeText("empty.jpg", "");
    dir.writeText("junk.svg", "<svg><unclosed");
    ASSERT_EQ(0, mkfifo(dir.file("fifo.jpg").c_str(), 0600));  // would block a plain open
    for (const char* name :
         {"corrupt.jpg", "empty.jpg", "fifo.jpg", "missing.jpg", "junk.svg", ""}) {
        EXPECT_FALSE(Image::imageWithContentsOfFile(dir.file(name), {60, 60}, 2)) << name;
        EXPECT_EQ(Size(), Image::pixelSizeOfFile(dir.file(name))) << name;
        LogCapture log;
        EXPECT_FALSE(Image::imageWithContentsOfFile(dir.file(name))) << name;
        EXPECT_EQ(1u, log.lines().size()) << name;
    }
}
