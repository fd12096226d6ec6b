#include "platform/ui/Bitmap.h"
#include "tests/share/ShareTestSupport.h"

namespace share_test {
namespace {

using platform::Bitmap;
using platform::NSMakeRect;

TEST_F(ShareTest, SheetFramesAreTheSameForALinkAndForFiles) {
    const std::string file = files_.writeText("notes.txt", "hello");
    for (auto controller :
         {startShare({linkProvider("https://example.org/")}), startShare({fileProvider(file)})}) {
        EXPECT_EQ(controller->view()->frame(), NSMakeRect(0, 0, 376, 370));
        EXPECT_EQ(controller->cancelBtn()->frame(), NSMakeRect(276, 28, 70, 23));
        EXPECT_EQ(controller->bottomDivider()->frame(), NSMakeRect(30, 79, 316, 1));
        EXPECT_EQ(controller->midDivider()->frame(), NSMakeRect(30, 129, 316, 1));
        EXPECT_EQ(controller->topDivider()->frame(), NSMakeRect(0, 179, 376, 1));
        EXPECT_EQ(controller->favToParleyContainer()->frame(), NSMakeRect(0, 79, 376, 50));
        EXPECT_EQ(controller->sendToFriendContainer()->frame(), NSMakeRect(0, 129, 376, 50));
        EXPECT_EQ(controller->favToParleyText()->frame(), NSMakeRect(57, 18, 150, 14));
        EXPECT_EQ(controller->sendArrow()->frame(), NSMakeRect(316, 9, 32, 32));
        EXPECT_EQ(controller->contentContainer()->frame(), NSMakeRect(0, 179, 376, 105));
        EXPECT_EQ(controller->fileCount()->frame(), NSMakeRect(0, 24, 376, 16));
        ASSERT_TRUE(controller->parleyLogoContainer());
        EXPECT_EQ(controller->parleyLogo()->frame(), NSMakeRect(170, 30, 35, 27));
        // Stacking order: the rows and the card lie above the lines on their bottom edges.
        const auto& children = controller->view()->subviews();
        ASSERT_EQ(children.size(), 8u);
        EXPECT_EQ(children[0], controller->cancelBtn());
        EXPECT_EQ(children[7], controller->parleyLogoContainer());
    }
}

TEST_F(ShareTest, SheetPaintsItsBackgroundLinesAndCancelButton) {
    auto controller = startShare({linkProvider("https://example.org/")});
    for (double scale : {1.0, 2.0}) {
        auto bitmap = Bitmap::renderView(*controller->view(), scale);
        if (getenv("PARLEY_SHEET_PNG"))
            bitmap->writePNG(getenv("PARLEY_SHEET_PNG"));
        EXPECT_TRUE(nearRgb(bitmap->pixelAtPoint(3.5, 3.5), 0xF7, 0xF7, 0xF7));
        // 10 % black over the dividers' #e2e2e2 layer.
        EXPECT_TRUE(nearRgb(bitmap->pixelAtPoint(100.5, 79.5), 204, 204, 204));
        EXPECT_TRUE(nearRgb(bitmap->pixelAtPoint(10.5, 179.5), 204, 204, 204));
        // The inset lines stop 30 points from the edges.
        EXPECT_TRUE(nearRgb(bitmap->pixelAtPoint(10.5, 79.5), 0xF7, 0xF7, 0xF7));
        // Cancel: white body inside a #b2b2b2 border.
        EXPECT_TRUE(nearRgb(bitmap->pixelAtPoint(280.5, 40.5), 255, 255, 255));
        EXPECT_TRUE(nearRgb(bitmap->pixelAtPoint(311, 29.5), 0xb2, 0xb2, 0xb2, 12));
    }
}

}  // namespace
}  // namespace share_test
