#include <sys/stat.h>

#include <QBuffer>
#include <QCryptographicHash>
#include <QDateTime>
#include <QDir>
#include <QFileInfo>
#include <QImage>
#include <QUrl>

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
    image->setCacheMode(ImageCacheMode::Never);
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
    EXPECT_EQ(std::make_pair(12, 8), std::make_pair(read->pixelWidth(), read->pixelHeight()));
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

// What is not a picture (nor a directory) gives no image and a log line, without blocking.
TEST(ImageCoveringDecode, WhatIsNoPictureGivesNoImage) {
    TempDir dir;
    dir.writeText("corrupt.jpg", std::string("\xFF\xD8\xFF\xE0 not really", 15));
    dir.writeText("empty.jpg", "");
    dir.writeText("junk.svg", "<svg><unclosed");
    ASSERT_EQ(0, mkfifo(dir.file("fifo.jpg").c_str(), 0600));  // would block a plain open
    for (const char* name :
         {"corrupt.jpg", "empty.jpg", "fifo.jpg", "missing.jpg", "junk.svg", ""}) {
        EXPECT_FALSE(Image::imageWithContentsOfFile(dir.file(name), {60, 60}, 2)) << name;
        LogCapture log;
        EXPECT_FALSE(Image::imageWithContentsOfFile(dir.file(name))) << name;
        EXPECT_EQ(1u, log.lines().size()) << name;
    }
}

namespace {

// A dark-red 1200 x 900 JPEG whose EXIF block (in |bigEndian| or little-endian TIFF order) holds
// a blue thumbnail of |thumbnail| pixels; the shifts move its recorded offset and length.
std::string writeCameraJpeg(const TempDir& dir,
                            QSize thumbnail,
                            bool bigEndian,
                            int offsetShift,
                            int lengthShift) {
    auto jpeg = [](QSize size, QColor colour) {
        QImage image(size, QImage::Format_RGB32);
        image.fill(colour);
        QByteArray bytes;
        QBuffer buffer(&bytes);
        buffer.open(QIODevice::WriteOnly);
        image.save(&buffer, "JPEG");
        return bytes;
    };
    const QByteArray small = jpeg(thumbnail, Qt::blue);
    QByteArray tiff(bigEndian ? "MM" : "II");
    auto put = [&](quint32 value, int width) {
        for (int i = 0; i < width; ++i)
            tiff.append(char(value >> 8 * (bigEndian ? width - 1 - i : i)));
    };
    // Header, an empty first directory linking to the second, which has offset and length.
    put(42, 2), put(8, 4), put(0, 2), put(14, 4), put(2, 2);
    put(0x0201, 2), put(4, 2), put(1, 4), put(44 + offsetShift, 4);
    put(0x0202, 2), put(3, 2), put(1, 4), put(small.size() + lengthShift, 2), put(0, 2), put(0, 4);
    const QByteArray body = "Exif" + QByteArray(2, '\0') + tiff + small;
    QByteArray file = jpeg({1200, 900}, Qt::darkRed);
    file.insert(2, "\xFF\xE1" + QByteArray(1, char((body.size() + 2) >> 8)) +
                       QByteArray(1, char(body.size() + 2)) + body);
    return dir.writeText("camera.jpg", file.toStdString());
}

}  // namespace

// A camera's thumbnail stands in for the photo only when it shows all of it with enough pixels;
// otherwise the photo is decoded at a fraction of its size. The image keeps the photo's own size
// either way, but only the pixels the view can show.
TEST(ImageCoveringDecode, UsesTheCamerasThumbnailOnlyWhenItShowsTheWholePhoto) {
    const struct {
        QSize thumbnail;
        bool bigEndian;
        int offsetShift, lengthShift;
        bool fromThumbnail;
    } cases[] = {
        {{160, 120}, false, 0, 0, true},  {{320, 240}, true, 0, 0, true},
        {{320, 180}, false, 0, 0, false}, {{159, 120}, true, 0, 0, false},
        {{160, 120}, false, 9, 0, false}, {{160, 120}, true, 1 << 20, 0, false},
        {{160, 120}, true, 0, 1, false},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(testing::Message() << c.thumbnail.width() << "x" << c.thumbnail.height()
                                        << " shifts " << c.offsetShift << ", " << c.lengthShift);
        TempDir dir;
        const auto image = Image::imageWithContentsOfFile(
            writeCameraJpeg(dir, c.thumbnail, c.bigEndian, c.offsetShift, c.lengthShift), {60, 60},
            2);
        ASSERT_TRUE(image);
        EXPECT_EQ((Size{1200, 900}), image->size());
        EXPECT_EQ((Size{160, 120}), image->rasterPixelSize());
        const Rgba middle = image->bitmapAtScale(2)->pixelAt(80, 60);
        EXPECT_EQ(c.fromThumbnail, middle.b > middle.r);
    }
}

// A thumbnail the file manager keeps stands in for the picture only when it is of this file as
// it is now, shows all of it and has enough pixels.
TEST(ImageCoveringDecode, UsesTheDesktopsThumbnailOfTheFileAsItIsNow) {
    const struct {
        const char* folder;
        QSize size;
        const char* uriSuffix;
        int mtimeShift;
        bool fromThumbnail;
    } cases[] = {
        {"large", {256, 192}, "", 0, true},    {"normal", {128, 96}, "", 0, false},
        {"x-large", {512, 288}, "", 0, false}, {"large", {256, 192}, "", -10, false},
        {"large", {256, 192}, "x", 0, false},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.folder);
        TempDir dir;
        QImage photo(1200, 900, QImage::Format_RGB32);
        photo.fill(Qt::darkRed);
        const QString path = QString::fromStdString(dir.file("my photo.jpg"));
        ASSERT_TRUE(photo.save(path, "JPEG"));
        const QByteArray uri = "file://" + QUrl::toPercentEncoding(path, "/");
        QImage thumbnail(c.size, QImage::Format_RGB32);
        thumbnail.fill(Qt::blue);
        thumbnail.setText("Thumb::URI", uri + c.uriSuffix);
        thumbnail.setText(
            "Thumb::MTime",
            QString::number(QFileInfo(path).lastModified().toSecsSinceEpoch() + c.mtimeShift));
        const QString folder = QString::fromStdString(testing_support::testRoot()) +
                               "/cache/thumbnails/" + c.folder + "/";
        QDir().mkpath(folder);
        const QString name = QCryptographicHash::hash(uri, QCryptographicHash::Md5).toHex();
        ASSERT_TRUE(thumbnail.save(folder + name + ".png"));
        const auto image = Image::imageWithContentsOfFile(path.toStdString(), {60, 60}, 2);
        QFile::remove(folder + name + ".png");
        ASSERT_TRUE(image);
        EXPECT_EQ((Size{1200, 900}), image->size());
        const Rgba middle = image->bitmapAtScale(2)->pixelAt(80, 60);
        EXPECT_EQ(c.fromThumbnail, middle.b > middle.r);
    }
}
