#include <gtest/gtest.h>

#include <QImage>

#include "platform/core/Log.h"
#include "platform/ui/Image.h"
#include "tests/platform/ui/PixelTestSupport.h"
#include "tests/support/TempDir.h"

using namespace platform;
using pixel_test::kBlue;
using pixel_test::kClear;
using pixel_test::kGreen;
using pixel_test::kRed;
using pixel_test::render;

namespace {

// 10 x 10 points: the top half red, the bottom half blue, and a half-point green stripe at
// x = 4.5..5 in the top half.
const char* kStripedSvg = R"(<svg xmlns="http://www.w3.org/2000/svg" width="10" height="10"
    viewBox="0 0 10 10">
  <rect x="0" y="0" width="10" height="5" fill="#ff0000"/>
  <rect x="0" y="5" width="10" height="5" fill="#0000ff"/>
  <rect x="4.5" y="0" width="0.5" height="5" fill="#00ff00"/>
</svg>)";

std::string writeSolidPng(const testing_support::TempDir& dir,
                          const std::string& name,
                          int side,
                          QColor colour) {
    QImage image(side, side, QImage::Format_ARGB32);
    image.fill(colour);
    std::string path = dir.file(name);
    EXPECT_TRUE(image.save(QString::fromStdString(path), "png"));
    return path;
}

}  // namespace

TEST(ImageTest, SvgHasItsPointSizeAndDrawsUpright) {
    testing_support::TempDir dir;
    auto image = Image::imageWithContentsOfFile(dir.writeText("striped.svg", kStripedSvg));
    ASSERT_TRUE(image);
    EXPECT_EQ(Size({10, 10}), image->size());
    for (double scale : {1.0, 2.0}) {
        auto bitmap = image->bitmapAtScale(scale);
        EXPECT_EQ(int(10 * scale), bitmap->pixelWidth());
        EXPECT_EQ(kRed, bitmap->pixelAtPoint(1, 9)) << scale;  // the SVG's top is our top
        EXPECT_EQ(kBlue, bitmap->pixelAtPoint(1, 1)) << scale;
    }
}

TEST(ImageTest, SvgIsRenderedSharplyAtTwiceTheScale) {
    testing_support::TempDir dir;
    auto image = Image::imageWithContentsOfFile(dir.writeText("striped.svg", kStripedSvg));
    ASSERT_TRUE(image);
    auto bitmap =
        render(20, 20, 2, [&](GraphicsContext&) { image->drawInRect(NSMakeRect(0, 0, 10, 10)); });
    // At 2x the half-point stripe is exactly pixel column 9: no blending at either side.
    int row = bitmap->pixelHeight() - 1 - 18;  // y = 9 points
    EXPECT_EQ(kGreen, bitmap->pixelAt(9, row));
    EXPECT_EQ(kRed, bitmap->pixelAt(8, row));
    EXPECT_EQ(kRed, bitmap->pixelAt(10, row));
    // At 1x it covers half a pixel and blends.
    auto lowRes =
        render(10, 10, 1, [&](GraphicsContext&) { image->drawInRect(NSMakeRect(0, 0, 10, 10)); });
    Rgba mixed = lowRes->pixelAt(4, 0);
    EXPECT_GT(mixed.g, 64);
    EXPECT_GT(mixed.r, 64);
}

TEST(ImageTest, RasterPicksItsDoubleSizeVariantAtScaleTwo) {
    testing_support::TempDir dir;
    std::string path = writeSolidPng(dir, "icon.png", 4, Qt::red);
    writeSolidPng(dir, "icon@2x.png", 8, Qt::blue);
    auto image = Image::imageWithContentsOfFile(path);
    ASSERT_TRUE(image);
    EXPECT_EQ(Size({4, 4}), image->size());
    EXPECT_EQ(kRed, image->bitmapAtScale(1)->pixelAt(1, 1));
    auto sharp = image->bitmapAtScale(2);
    EXPECT_EQ(8, sharp->pixelWidth());
    EXPECT_EQ(kBlue, sharp->pixelAt(1, 1));

    // Named directly, a 2x file is half its pixel size in points.
    auto direct = Image::imageWithContentsOfFile(dir.file("icon@2x.png"));
    ASSERT_TRUE(direct);
    EXPECT_EQ(Size({4, 4}), direct->size());

    // Without a variant the 1x pixels serve both scales.
    auto plain = Image::imageWithContentsOfFile(writeSolidPng(dir, "plain.png", 3, Qt::green));
    ASSERT_TRUE(plain);
    EXPECT_EQ(kGreen, plain->bitmapAtScale(2)->pixelAt(3, 3));
}

TEST(ImageTest, UnreadableFilesGiveNoImageAndALogLine) {
    testing_support::TempDir dir;
    LogCapture log;
    EXPECT_FALSE(Image::imageWithContentsOfFile(dir.file("missing.png")));
    EXPECT_FALSE(Image::imageWithContentsOfFile(dir.writeText("junk.png", "not a picture")));
    EXPECT_FALSE(Image::imageWithContentsOfFile(dir.writeText("junk.svg", "<svg><unclosed")));
    EXPECT_FALSE(Image::imageWithContentsOfFile(dir.path()));
    EXPECT_EQ(4u, log.lines().size());
}

TEST(ImageTest, DrawingHandlerRunsAtEveryDrawingInImageCoordinates) {
    int calls = 0;
    Rect seen;
    auto image = Image::imageWithSize({10, 5}, false, [&](const Rect& destination) {
        ++calls;
        seen = destination;
        Color::colorWithDeviceRed(1, 0, 0, 1)->setFill();
        NSRectFill(NSMakeRect(0, 0, 10, 1));  // the image's bottom row
        return true;
    });
    image->setCacheMode(ImageCacheMode::Never);
    EXPECT_EQ(ImageCacheMode::Never, image->cacheMode());
    auto bitmap = render(20, 20, 2, [&](GraphicsContext&) {
        image->drawInRect(NSMakeRect(0, 10, 20, 10));  // twice the size: rows are 2 points
        image->drawInRect(NSMakeRect(0, 0, 20, 10), 0.5);
    });
    EXPECT_EQ(2, calls);
    EXPECT_EQ(NSMakeRect(0, 0, 10, 5), seen);
    EXPECT_EQ(kRed, bitmap->pixelAtPoint(10, 11.5));
    EXPECT_EQ(kClear, bitmap->pixelAtPoint(10, 12.5));
    EXPECT_NEAR(128, bitmap->pixelAtPoint(10, 1).a, 1);  // drawn at half opacity

    // A flipped image's handler draws with y growing downward.
    auto flipped = Image::imageWithSize({10, 10}, true, [](const Rect&) {
        Color::colorWithDeviceRed(0, 0, 1, 1)->setFill();
        NSRectFill(NSMakeRect(0, 0, 10, 2));
        return true;
    });
    EXPECT_TRUE(flipped->isFlipped());
    auto top = flipped->bitmapAtScale(1);
    EXPECT_EQ(kBlue, top->pixelAtPoint(5, 9.5));
    EXPECT_EQ(kClear, top->pixelAtPoint(5, 0.5));
}

TEST(ImageTest, BitmapImagesAndPngRoundTrip) {
    auto source = render(6, 4, 2, [](GraphicsContext&) {
        Color::colorWithDeviceRed(1, 0.5, 0, 0.5)->setFill();
        NSRectFill(NSMakeRect(0, 0, 3, 4));
    });
    auto image = Image::imageWithBitmap(source);
    ASSERT_TRUE(image);
    EXPECT_EQ(Size({6, 4}), image->size());

    // pixelAt answers straight (not premultiplied) components.
    Rgba straight = source->pixelAt(0, 0);
    EXPECT_EQ(255, straight.r);
    EXPECT_NEAR(128, straight.g, 2);
    EXPECT_NEAR(128, straight.a, 1);

    testing_support::TempDir dir;
    ASSERT_TRUE(source->writePNG(dir.file("out.png")));
    auto read = Bitmap::readPNG(dir.file("out.png"));
    ASSERT_TRUE(read);
    EXPECT_EQ(12, read->pixelWidth());
    EXPECT_EQ(8, read->pixelHeight());
    EXPECT_EQ(source->pixelAt(0, 0), read->pixelAt(0, 0));
    EXPECT_EQ(kClear, read->pixelAt(11, 7));
    EXPECT_EQ(kClear, read->pixelAt(-1, 0));  // outside: nothing

    // Drawn back at 2x the bitmap lands pixel for pixel.
    auto copy =
        render(6, 4, 2, [&](GraphicsContext&) { image->drawInRect(NSMakeRect(0, 0, 6, 4)); });
    EXPECT_EQ(source->pixelAt(5, 3), copy->pixelAt(5, 3));
    EXPECT_EQ(kClear, copy->pixelAt(6, 3));

    EXPECT_FALSE(Bitmap::readPNG(dir.file("none.png")));
    EXPECT_FALSE(source->writePNG(dir.file("no/such/dir/out.png")));
}
