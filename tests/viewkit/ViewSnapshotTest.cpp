#include "tests/viewkit/ViewKitTestSupport.h"
#include "viewkit/PLSDivider.h"
#include "viewkit/ViewSnapshotSExt.h"

// A grey #e2e2e2 divider at (20, 10, 50, 40) in a window away from the screen's origin, so that a
// wrong conversion crops the wrong place; pictures are taken at the window's backing scale, 2.
TEST(ViewSnapshot, PicturesMeasureTheirRectAtTheBackingScaleAndShowWhatIsUnder) {
    const Rgba kDivider{0xE2, 0xE2, 0xE2, 255}, kWindow{0xEC, 0xEC, 0xEC, 255};
    platform::Window window{NSMakeRect(300, 150, 200, 100)};
    window.setBackingScaleFactor(2);
    auto content = std::make_shared<platform::View>();
    window.setContentView(content);
    content->addSubview(std::make_shared<PLSDivider>(NSMakeRect(20, 10, 50, 40)));
    const auto drawn = SExt::imageWithSubviews(*content)->bitmapRepresentation();
    // Straddles the divider's top edge: the divider below y 50, the window above.
    const auto edge = SExt::screenCacheImageForViewWithRect(*content, NSMakeRect(60, 45, 20, 10));
    ASSERT_TRUE(edge);
    EXPECT_EQ(platform::NSMakeSize(20, 10), edge->size());
    EXPECT_EQ(400, drawn->pixelWidth());
    EXPECT_EQ(20, edge->bitmapRepresentation()->pixelHeight());
    EXPECT_EQ((std::vector<Rgba>{kDivider, kDivider, kWindow}),
              (std::vector<Rgba>{drawn->pixelAtPoint(21, 11),
                                 edge->bitmapRepresentation()->pixelAtPoint(5, 2),
                                 edge->bitmapRepresentation()->pixelAtPoint(5, 8)}));
    EXPECT_FALSE(SExt::screenCacheImageForViewWithRect(*content, NSMakeRect(0, 0, 10, 0)));
    EXPECT_FALSE(SExt::screenCacheImageForView(PLSDivider(NSMakeRect(0, 0, 7, 3)))) << "no window";
}
