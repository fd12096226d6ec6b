#include "viewkit/ViewSnapshotSExt.h"

#include <gtest/gtest.h>

#include "platform/ui/Bitmap.h"
#include "platform/ui/Window.h"
#include "viewkit/PLSDivider.h"

using platform::NSMakeRect;

namespace {

// A grey #e2e2e2 divider at (20, 10, 50, 40) in a window away from the screen's origin, so that
// a wrong conversion crops the wrong place.
TEST(ViewSnapshot, PicturesMeasureTheirRectAtTheBackingScaleAndShowWhatIsUnder) {
    const platform::Rgba kDivider{0xE2, 0xE2, 0xE2, 255}, kWindow{0xEC, 0xEC, 0xEC, 255};
    for (double scale : {1.0, 2.0}) {
        SCOPED_TRACE(scale);
        platform::Window window{NSMakeRect(300, 150, 200, 100)};
        window.setBackingScaleFactor(scale);
        auto box = std::make_shared<PLSDivider>(NSMakeRect(20, 10, 50, 40));
        window.setContentView(std::make_shared<platform::View>());
        window.contentView()->addSubview(box);
        const auto drawn = SExt::imageWithSubviews(*window.contentView());
        // Straddles the box's top edge: the box below y 50, the window's background above.
        const auto edge = SExt::screenCacheImageForViewWithRect(*window.contentView(),
                                                                NSMakeRect(60, 45, 20, 10));
        ASSERT_TRUE(drawn && edge);
        EXPECT_EQ(platform::NSMakeSize(20, 10), edge->size());
        EXPECT_EQ(200 * scale, drawn->bitmapRepresentation()->pixelWidth());
        EXPECT_EQ(10 * scale, edge->bitmapRepresentation()->pixelHeight());
        EXPECT_EQ(kDivider, drawn->bitmapRepresentation()->pixelAtPoint(21, 11));
        EXPECT_EQ(kDivider, edge->bitmapRepresentation()->pixelAtPoint(5, 2));
        EXPECT_EQ(kWindow, edge->bitmapRepresentation()->pixelAtPoint(5, 8));
        EXPECT_FALSE(SExt::screenCacheImageForViewWithRect(*box, NSMakeRect(0, 0, 10, 0)));
    }
    EXPECT_FALSE(SExt::screenCacheImageForView(PLSDivider(NSMakeRect(0, 0, 7, 3)))) << "no window";
}

}  // namespace
