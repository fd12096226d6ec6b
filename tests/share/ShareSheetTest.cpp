#include "platform/ui/Bitmap.h"
#include "tests/share/ShareTestSupport.h"

namespace share_test {
namespace {

using platform::Bitmap;
using platform::NSMakeRect;

TEST_F(ShareTest, SheetPaintsItsBackgroundLinesAndCancelButton) {
    auto controller = startShare({linkProvider("https://example.org/")});
    for (double scale : {1.0, 2.0}) {
        auto bitmap = Bitmap::renderView(*controller->view(), scale);
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
