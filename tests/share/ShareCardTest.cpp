// The preview card as a person sees it: parley-share --snapshot for each kind of share, read at a
// few telling pixels of the picture (sheet x 158..218, y 86..146 from the top) and of the count
// line below it; and the count line's words in each language.
#include "platform/ui/GraphicsContext.h"
#include "tests/share/ShareTestSupport.h"
#include "tests/support/ScopedEnv.h"

using namespace share_test;

// Card points: the middle of the picture, the middle of its lower band (where a document icon shows
// its type), its right edge (the multi-file stack's back sheet), its left edge and the left edge of
// a single page.
constexpr int kCentreX = 188, kCentreY = 116, kBandY = 129, kRightX = 213, kLeftX = 160,
              kPageEdgeX = 166;

// True when some pixel of the count line's row is darker than the card around it.
static bool countLineHasInk(const platform::Bitmap& sheet) {
    for (int y = 151; y < 167; ++y)
        for (int x = 150; x < 226; ++x)
            if (sheet.pixelAt(x, y).r < 0xD0)
                return true;
    return false;
}

class ShareCardTest : public ShareProgramsTest {};

TEST_F(ShareCardTest, EachKindOfShareShowsItsPictureAndItsCountLine) {
    // A "photo" of three upright thirds, red, green and blue, stored as PNG under a JPEG name.
    ASSERT_TRUE(platform::Bitmap::drawn({300, 100}, 1, [](platform::GraphicsContext& c) {
                    for (int i = 0; i < 3; ++i) {
                        c.setFillColor(
                            *platform::Color::colorWithDeviceRed(i == 0, i == 1, i == 2, 1));
                        c.fillRect(platform::NSMakeRect(i * 100, 0, 100, 100));
                    }
                })->writePNG(files_.file("photo.JPG")));
    auto file = [&](const std::string& name) { return quoted(files_.writeText(name, "x")); };
    const struct {
        std::string arguments;
        int x, y, r, g, b, tolerance;
        bool countShown;
    } kCases[] = {
        {"--url https://example.org/", kCentreX, kCentreY, 0x00, 0x77, 0xCC, 24, false},
        {file("Report.PDF"), kCentreX, kBandY, 0xE0, 0x44, 0x3A, 4, true},
        {file("Memo.DOCX"), kCentreX, kBandY, 43, 115, 210, 4, true},
        {file("slides.pptx"), kLeftX + 8, kBandY, 0xF0, 0x78, 0x2A, 4, true},
        // Cropped to the middle third, not stretched: green up to the left edge.
        {quoted(files_.file("photo.JPG")), kLeftX, kCentreY, 0, 255, 0, 8, true},
        {file("a.txt") + " " + file("b.pdf"), kRightX, kCentreY, 0xEC, 0xEC, 0xF0, 3, true},
        // The blank page's outline, for an unknown type and for no extension; a photo that
        // cannot be read leaves the picture empty.
        {file("archive.tar.gz"), kPageEdgeX, kCentreY, 196, 196, 202, 6, true},
        {file("README"), kPageEdgeX, kCentreY, 196, 196, 202, 6, true},
        {file("broken.jpg"), kPageEdgeX, kCentreY, 247, 247, 247, 3, true},
    };
    for (const auto& c : kCases) {
        SCOPED_TRACE(c.arguments);
        EXPECT_EQ(share("--snapshot " + quoted(files_.file("card.png")) + " " + c.arguments), 0);
        const auto sheet = platform::Bitmap::readPNG(files_.file("card.png"));
        ASSERT_TRUE(sheet);
        const platform::Rgba p = sheet->pixelAt(c.x, c.y);
        EXPECT_TRUE(nearRgb(p, c.r, c.g, c.b, c.tolerance))
            << int(p.r) << " " << int(p.g) << " " << int(p.b);
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
