// The preview card: which picture is chosen for each kind of share and file, and the card as a
// person sees it (parley-share --snapshot, read at a few telling pixels of the picture, sheet x
// 158..218, y 86..146 from the top, and of the count line below it), with its count line's words
// in each language.
#include <QBuffer>
#include <QCryptographicHash>
#include <QDateTime>
#include <QDir>
#include <QFileInfo>
#include <QImage>
#include <QUrl>

#include "platform/ui/GraphicsContext.h"
#include "share/CardPicture.h"
#include "tests/share/ShareTestSupport.h"
#include "tests/support/ScopedEnv.h"

using namespace share_test;

namespace platform {
inline void PrintTo(const Size& size, std::ostream* out) {
    *out << NSStringFromSize(size);
}
}  // namespace platform

namespace {

// Card points: the middle of the picture, the middle of its lower band (where a document icon
// shows its type), its right edge (the multi-file stack's back sheet), its left edge and the left
// edge of a single page.
constexpr int kCentreX = 188, kCentreY = 116, kBandY = 129, kRightX = 213, kLeftX = 160,
              kPageEdgeX = 166, kTopY = 87, kBottomY = 145;

// True when some pixel of the count line's row is darker than the card around it.
bool countLineHasInk(const platform::Bitmap& sheet) {
    for (int y = 151; y < 167; ++y)
        for (int x = 150; x < 226; ++x)
            if (sheet.pixelAt(x, y).r < 0xD0)
                return true;
    return false;
}

QByteArray jpeg(QSize size, QColor colour) {
    QImage image(size, QImage::Format_RGB32);
    image.fill(colour);
    QByteArray bytes;
    QBuffer buffer(&bytes);
    buffer.open(QIODevice::WriteOnly);
    image.save(&buffer, "JPEG");
    return bytes;
}

// A green 1200 x 900 photo as many editors leave it: its EXIF block still holds the thumbnail of
// the picture before the edit (red, whole and large enough to stand in for the card).
std::string writeEditedPhoto(const testing_support::TempDir& dir) {
    const QByteArray old = jpeg({160, 120}, Qt::red);
    QByteArray tiff("II*\0", 4);
    auto put = [&tiff](quint32 value, int width) {
        for (int i = 0; i < width; ++i)
            tiff.append(char(value >> 8 * i));
    };
    // An empty first directory linking to the second, which locates the thumbnail at byte 44.
    put(8, 4), put(0, 2), put(14, 4), put(2, 2);
    put(0x0201, 2), put(4, 2), put(1, 4), put(44, 4);
    put(0x0202, 2), put(4, 2), put(1, 4), put(old.size(), 4), put(0, 4);
    const QByteArray body = QByteArray("Exif\0\0", 6) + tiff + old;
    QByteArray file = jpeg({1200, 900}, Qt::green);
    file.insert(2, QByteArray("\xFF\xE1", 2) + char((body.size() + 2) >> 8) +
                       char((body.size() + 2) & 0xFF) + body);
    return dir.writeText("edited.jpg", file.toStdString());
}

}  // namespace

class ShareCardTest : public ShareProgramsTest {};

TEST_F(ShareCardTest, ChoosesThePictureByShareAndByTheFilesExtension) {
    const struct {
        ShareType type;
        size_t attachments;
        const char* name;
    } kShares[] = {
        {ShareTypeUrl, 1, "link_thumbnail"},   {ShareTypeUrl, 2, "link_thumbnail"},
        {ShareTypeFile, 0, "Fileicon-Unknow"}, {ShareTypeFile, 1, "Fileicon-Unknow"},
        {ShareTypeFile, 2, "Multi-Fileicon"},  {ShareTypeUnknown, 3, "Multi-Fileicon"},
    };
    for (const auto& c : kShares) {
        SCOPED_TRACE(testing::Message() << c.type << " " << c.attachments);
        EXPECT_EQ(c.name, CardPicture::forShare(c.type, c.attachments).name());
    }
    // "" is the file's own picture.
    const struct {
        const char* file;
        const char* name;
    } kFiles[] = {
        {"Report.PDF", "Fileicon-Pdf"},
        {"deck.ppt", "Fileicon-Ppt"},
        {"slides.pptx", "Fileicon-Ppt"},
        {"notes.txt", "Fileicon-Txt"},
        {"memo.doc", "Fileicon-Word"},
        {"Memo.DOCX", "Fileicon-Word"},
        {"files.zip", "Fileicon-Zip"},
        {"old.xls", "Fileicon-Xls"},
        {"sheet.xlsx", "Fileicon-Xls"},
        {"photo.JPG", ""},
        {"photo.jpeg", ""},
        {"shot.png", ""},
        {"archive.tar.gz", "Fileicon-Unknow"},
        {"README", "Fileicon-Unknow"},
        {"pdf", "Fileicon-Unknow"},
        {"clip.mp4", "Fileicon-Unknow"},
        {"image.gif", "Fileicon-Unknow"},
        {"report.pdf.", "Fileicon-Unknow"},
        {"report.pdfx", "Fileicon-Unknow"},
        {"a.jpg/notes", "Fileicon-Unknow"},
    };
    for (const auto& c : kFiles) {
        SCOPED_TRACE(c.file);
        EXPECT_EQ(c.name,
                  CardPicture::forFile(platform::Url::fileURLWithPath(files_.file(c.file))).name());
    }
    EXPECT_EQ("Fileicon-Unknow", CardPicture::forFile(std::nullopt).name());
}

// The thumbnail a file manager keeps (by the freedesktop rules: <cache>/thumbnails/<size>/<MD5 of
// the file's URI>.png, with its URI and modification time recorded) stands in for the photo only
// when it is of this file as it is now, shows all of it and has the pixels the card needs
// (160 x 120 for a 4:3 photo); otherwise the photo is decoded at just that size. Either way the
// picture keeps the photo's own size, so the card crops it as it would the photo.
TEST_F(ShareCardTest, APhotoShowsTheDesktopsThumbnailOnlyWhenItIsTheFilesOwn) {
    const struct {
        const char* folder;
        QSize size;
        const char* uriSuffix;
        int mtimeShift;
        bool fromThumbnail;
        platform::Size pixels;
    } kCases[] = {
        {"large", {256, 192}, "", 0, true, {256, 192}},
        {"normal", {160, 120}, "", 0, true, {160, 120}},
        {"normal", {128, 96}, "", 0, false, {160, 120}},
        {"x-large", {512, 288}, "", 0, false, {160, 120}},
        {"large", {256, 192}, "", -10, false, {160, 120}},
        {"large", {256, 192}, "", 10, false, {160, 120}},
        {"large", {256, 192}, "x", 0, false, {160, 120}},
        {"large", {256, 194}, "", 0, false, {160, 120}},
    };
    for (const auto& c : kCases) {
        SCOPED_TRACE(testing::Message() << c.folder << " " << c.size.width() << " " << c.uriSuffix
                                        << " " << c.mtimeShift);
        testing_support::TempDir cache;
        ScopedEnv cacheHome("XDG_CACHE_HOME", cache.path());
        const QString path = QString::fromStdString(files_.file("my photo.jpg"));
        files_.writeText("my photo.jpg", jpeg({1200, 900}, Qt::darkRed).toStdString());
        const QByteArray uri = "file://" + QUrl::toPercentEncoding(path, "/");
        QImage thumbnail(c.size, QImage::Format_RGB32);
        thumbnail.fill(Qt::blue);
        thumbnail.setText("Thumb::URI", uri + c.uriSuffix);
        thumbnail.setText(
            "Thumb::MTime",
            QString::number(QFileInfo(path).lastModified().toSecsSinceEpoch() + c.mtimeShift));
        const QString folder = QString::fromStdString(cache.path()) + "/thumbnails/" + c.folder;
        ASSERT_TRUE(QDir().mkpath(folder));
        ASSERT_TRUE(thumbnail.save(folder + "/" +
                                   QCryptographicHash::hash(uri, QCryptographicHash::Md5).toHex() +
                                   ".png"));

        const CardPicture picture =
            CardPicture::forFile(platform::Url::fileURLWithPath(path.toStdString()));
        ASSERT_TRUE(picture.image());
        EXPECT_EQ((platform::Size{1200, 900}), picture.image()->size());
        EXPECT_EQ(c.pixels, picture.image()->rasterPixelSize());
        const platform::Rgba middle = picture.image()->bitmapAtScale(0.1)->pixelAt(60, 45);
        EXPECT_EQ(c.fromThumbnail, middle.b > middle.r);
    }
}

TEST_F(ShareCardTest, EachKindOfShareShowsItsPictureAndItsCountLine) {
    // "Photos" of three thirds, red, green and blue, upright and lying, stored as PNG under a JPEG
    // name.
    for (const bool upright : {true, false})
        ASSERT_TRUE(platform::Bitmap::drawn(
                        upright ? platform::Size{300, 100} : platform::Size{100, 300}, 1,
                        [upright](platform::GraphicsContext& c) {
                            for (int i = 0; i < 3; ++i) {
                                c.setFillColor(*platform::Color::colorWithDeviceRed(i == 0, i == 1,
                                                                                    i == 2, 1));
                                c.fillRect(upright ? platform::NSMakeRect(i * 100, 0, 100, 100)
                                                   : platform::NSMakeRect(0, i * 100, 100, 100));
                            }
                        })
                        ->writePNG(files_.file(upright ? "photo.JPG" : "tall.jpg")));
    auto file = [&](const std::string& name) { return quoted(files_.writeText(name, "x")); };
    const struct {
        std::string arguments;
        int x, y, r, g, b, tolerance;
        bool countShown;
    } kCases[] = {
        {"--url https://example.org/", kCentreX, kCentreY, 0x00, 0x77, 0xCC, 24, false},
        {file("Report.PDF"), kCentreX, kBandY, 0xE0, 0x44, 0x3A, 4, true},
        // Cropped to the middle third, not stretched: green up to the left edge.
        {quoted(files_.file("photo.JPG")), kLeftX, kCentreY, 0, 255, 0, 8, true},
        {quoted(files_.file("tall.jpg")), kCentreX, kTopY, 0, 255, 0, 8, true},
        {quoted(files_.file("tall.jpg")), kCentreX, kBottomY, 0, 255, 0, 8, true},
        // The photo as it is now, not the picture its stale EXIF thumbnail shows.
        {quoted(writeEditedPhoto(files_)), kCentreX, kCentreY, 0, 255, 0, 8, true},
        {file("a.txt") + " " + file("b.pdf"), kRightX, kCentreY, 0xEC, 0xEC, 0xF0, 3, true},
        // The blank page's outline; a photo that cannot be read leaves the picture empty.
        {file("README"), kPageEdgeX, kCentreY, 196, 196, 202, 6, true},
        {file("broken.jpg"), kPageEdgeX, kCentreY, 247, 247, 247, 3, true},
    };
    for (const auto& c : kCases) {
        SCOPED_TRACE(c.arguments);
        EXPECT_EQ(0, share("--snapshot " + quoted(files_.file("card.png")) + " " + c.arguments));
        const auto sheet = platform::Bitmap::readPNG(files_.file("card.png"));
        ASSERT_TRUE(sheet);
        const platform::Rgba p = sheet->pixelAt(c.x, c.y);
        EXPECT_NEAR(c.r, p.r, c.tolerance);
        EXPECT_NEAR(c.g, p.g, c.tolerance);
        EXPECT_NEAR(c.b, p.b, c.tolerance);
        EXPECT_EQ(c.countShown, countLineHasInk(*sheet));
    }

    platform::Bundle::setMainBundle(std::make_shared<platform::Bundle>(PARLEY_APPEX_DIR));
    ScopedEnv noAll("LC_ALL", std::nullopt), noMessages("LC_MESSAGES", std::nullopt);
    const struct {
        const char* language;
        size_t files;
        const char* line;
    } kLines[] = {{"en", 0, "0 files"},   {"en", 1, "1 file"},    {"en", 3, "3 files"},
                  {"de", 2, "2 Dateien"}, {"fr", 1, "1 fichier"}, {"fr", 2, "2 fichiers"},
                  {"es", 1, "1 archivo"}};
    for (const auto& c : kLines) {
        SCOPED_TRACE(c.line);
        ScopedEnv language("LANGUAGE", std::string(c.language));
        Providers attachments(c.files, fileProvider(files_.writeText("f.txt", "f")));
        EXPECT_EQ(c.line, startShare(attachments)->fileCount()->stringValue());
        runUntilIdle();
    }

    // What a screen reader hears of the card: the file's name, the count line, the link's host.
    const std::string report = files_.writeText("report.pdf", "r");
    const struct {
        const char* language;
        Providers attachments;
        const char* heard;
    } kHeard[] = {{"en", {fileProvider(report)}, "report.pdf"},
                  {"en", Providers(3, fileProvider(report)), "3 files"},
                  {"fr", {linkProvider("https://me@example.org:8080/a")}, "un lien : example.org"}};
    for (const auto& c : kHeard) {
        SCOPED_TRACE(c.heard);
        ScopedEnv language("LANGUAGE", std::string(c.language));
        EXPECT_EQ(c.heard, startShare(c.attachments)->fileImg()->accessibilityHelp());
        runUntilIdle();
    }
}

// Asked only for the tree, a share exits while the card's picture may still be decoding (a large
// PNG is decoded whole): it waits for the decode rather than pulling the libraries from under it.
TEST_F(ShareCardTest, ExitingWhileThePictureDecodesEndsCleanly) {
    ASSERT_TRUE(platform::Bitmap::drawn({2500, 2500}, 1, [](platform::GraphicsContext& c) {
                    c.setFillColor(*platform::Color::colorWithDeviceRed(0, 0.5, 0, 1));
                    c.fillRect(platform::NSMakeRect(0, 0, 2500, 2500));
                })->writePNG(files_.file("large.png")));
    for (int run = 0; run < 5; ++run)
        EXPECT_EQ(share("--describe " + quoted(files_.file("large.png"))), 0) << shareErrors();
}
