#include "tests/platform/ui/PixelTestSupport.h"

#include <QImage>

#include "platform/core/Log.h"
#include "tests/support/TempDir.h"

using namespace platform;
using pixel_test::kBlue;
using pixel_test::kClear;
using pixel_test::kGreen;
using pixel_test::kRed;
using pixel_test::render;

namespace {

// 10 x 10 points: the top half red, the bottom half blue, and a half-point green stripe at x =
// 4.5..5 in the top half.
const char* kStripedSvg =
    R"(<svg xmlns="http://www.w3.org/2000/svg" width="10" height="10"
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

// An SVG has its point size and draws upright at any scale, sharply at twice the scale: the
// half-point stripe is exactly pixel column 9 at 2x, and blends at 1x.
TEST(ImageTest, SvgIsRenderedSharplyAtTwiceTheScale) {
    testing_support::TempDir dir;
    auto image = Image::imageWithContentsOfFile(dir.writeText("striped.svg", kStripedSvg));
    ASSERT_TRUE(image);
    EXPECT_EQ(Size({10, 10}), image->size());
    std::shared_ptr<Bitmap> drawn[3];
    for (int scale : {1, 2}) {
        drawn[scale] = render(
            10, 10, scale, [&](GraphicsContext&) { image->drawInRect(NSMakeRect(0, 0, 10, 10)); });
        EXPECT_EQ(kRed, drawn[scale]->pixelAtPoint(1, 9)) << scale;  // the SVG's top is our top
        EXPECT_EQ(kBlue, drawn[scale]->pixelAtPoint(1, 1)) << scale;
    }
    EXPECT_EQ(kGreen, drawn[2]->pixelAt(9, 1));
    EXPECT_EQ(kRed, drawn[2]->pixelAt(8, 1));
    EXPECT_EQ(kRed, drawn[2]->pixelAt(10, 1));
    Rgba mixed = drawn[1]->pixelAt(4, 0);
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
    EXPECT_EQ(kBlue, image->bitmapAtScale(2)->pixelAt(7, 7));
    // Named directly, a 2x file is half its pixel size in points.
    EXPECT_EQ(Size({4, 4}), Image::imageWithContentsOfFile(dir.file("icon@2x.png"))->size());
    // Without a variant the 1x pixels serve both scales.
    auto plain = Image::imageWithContentsOfFile(writeSolidPng(dir, "plain.png", 3, Qt::green));
    EXPECT_EQ(kGreen, plain->bitmapAtScale(2)->pixelAt(5, 5));
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

// The handler runs at every drawing (never cached), in image coordinates, at the alpha asked; a
// flipped image's handler draws with y growing downward.
TEST(ImageTest, DrawingHandlerRunsAtEveryDrawingInImageCoordinates) {
    int calls = 0;
    Rect seen;
    auto image = Image::imageWithSize({10, 5}, false, [&](const Rect& destination) {
        ++calls;
        seen = destination;
        pixel_test::fill(kRed, NSMakeRect(0, 0, 10, 1));  // the image's bottom row
        return true;
    });
    image->setCacheMode(ImageCacheMode::Never);
    auto bitmap = render(20, 20, 2, [&](GraphicsContext&) {
        image->drawInRect(NSMakeRect(0, 10, 20, 10));  // twice the size: rows are 2 points
        image->drawInRect(NSMakeRect(0, 0, 20, 10), 0.5);
    });
    EXPECT_EQ(2, calls);
    EXPECT_EQ(NSMakeRect(0, 0, 10, 5), seen);
    const pixel_test::Probe pixels[] = {
        {10, 11.5, kRed}, {10, 12.5, kClear}, {10, 1, {255, 0, 0, 128}}};
    pixel_test::expectPixels(*bitmap, pixels);

    auto flipped = Image::imageWithSize({10, 10}, true, [](const Rect&) {
        pixel_test::fill(kBlue, NSMakeRect(0, 0, 10, 2));
        return true;
    });
    pixel_test::expectPixels(*flipped->bitmapAtScale(1), {{5, 9.5, kBlue}, {5, 0.5, kClear}});
}

// A bitmap answers straight (not premultiplied) components, survives a PNG round trip, and drawn
// back at 2x lands pixel for pixel.
TEST(ImageTest, BitmapImagesAndPngRoundTrip) {
    auto source = render(6, 4, 2, [](GraphicsContext&) {
        Color::colorWithDeviceRed(1, 0.5, 0, 0.5)->setFill();
        NSRectFill(NSMakeRect(0, 0, 3, 4));
    });
    pixel_test::expectPixels(*source, {{0.25, 3.75, {255, 128, 0, 128}}});

    testing_support::TempDir dir;
    ASSERT_TRUE(source->writePNG(dir.file("out.png")));
    auto read = Bitmap::readPNG(dir.file("out.png"));
    ASSERT_TRUE(read);
    EXPECT_EQ(12, read->pixelWidth());
    EXPECT_EQ(8, read->pixelHeight());
    EXPECT_EQ(source->pixelAt(0, 0), read->pixelAt(0, 0));
    EXPECT_EQ(kClear, read->pixelAt(11, 7));
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
