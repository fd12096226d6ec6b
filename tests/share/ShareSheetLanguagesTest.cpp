// Every title of the sheet reads whole in every shipped language, in the common desktop UI fonts,
// at 1x and 2x: none wraps or is truncated, no ink is cut where its view ends, and Cancel's title
// keeps 2 points clear of the button's outline.
#include <algorithm>
#include <array>
#include <climits>

#include "platform/ui/GraphicsContext.h"
#include "platform/ui/StringDrawing.h"
#include "tests/share/ShareTestSupport.h"
#include "tests/support/ScopedEnv.h"

using namespace share_test;

using namespace platform;

// The box (device pixels, inclusive) of grey-to-black unsaturated pixels in |box| (points): text
// ink, not the blue icons, the #cccccc lines or the #b2b2b2 border.
static std::array<int, 4> inkIn(const Bitmap& bitmap, const Rect& box) {
    const double s = bitmap.scale(), top = bitmap.pixelHeight() / s;
    std::array<int, 4> ink{INT_MAX, INT_MAX, -1, -1};  // left, top, right, bottom
    for (int y = int((top - box.maxY()) * s); y < int((top - box.minY()) * s); ++y)
        for (int x = int(box.minX() * s); x < int(box.maxX() * s); ++x) {
            const Rgba p = bitmap.pixelAt(x, y);
            const int high = std::max({p.r, p.g, p.b}), low = std::min({p.r, p.g, p.b});
            if (high < 170 && high - low < 30)
                ink = {std::min(ink[0], x), std::min(ink[1], y), std::max(ink[2], x),
                       std::max(ink[3], y)};
        }
    return ink;
}

// A language and the desktop's UI font.
class ShareSheetLanguagesTest
    : public ShareTest,
      public ::testing::WithParamInterface<std::tuple<const char*, const char*>> {
  protected:
    void SetUp() override {
        ShareTest::SetUp();
        Font::pinSystemFontFamily(std::get<1>(GetParam()));
    }
    void TearDown() override {
        Font::pinSystemFontFamily("Liberation Sans");
        ShareTest::TearDown();
    }
};

TEST_P(ShareSheetLanguagesTest, EveryTitleShowsWhole) {
    // A face that is not installed would be replaced, and another face measured.
    ASSERT_EQ(Font::systemFontFamily(), std::get<1>(GetParam()));
    platform::Bundle::setMainBundle(std::make_shared<platform::Bundle>(PARLEY_APPEX_DIR));
    ScopedEnv noAll("LC_ALL", std::nullopt), language("LANGUAGE", std::get<0>(GetParam()));
    auto controller = startShare({linkProvider("https://example.org/")});
    // A wrapped, truncated or cut title shows other ink than the same text drawn freely.
    struct Shown {
        std::string text;
        TextAttributes attributes;
        Rect area;       // sheet points where it may show, uncut and uncovered
        double lineTop;  // sheet y of its line's top
    };
    std::vector<Shown> texts;
    for (const auto& [row, title] :
         {std::pair(controller->sendToFriendContainer(), controller->sendToFriendText()),
          std::pair(controller->favToParleyContainer(), controller->favToParleyText())}) {
        const Rect frame = title->convertRectToView(title->bounds(), nullptr);
        // Down to the row's bottom edge, the line under it excluded.
        const double bottom = row->frame().minY() + 1;
        texts.push_back({title->string(),
                         {title->font(), title->textColor()},
                         NSMakeRect(frame.minX(), bottom, frame.size.width, frame.maxY() - bottom),
                         frame.maxY()});
    }
    const auto& label = *controller->cancelBtn()->titleLabel();
    const Rect button = controller->cancelBtn()->frame();
    // Inside the 1-point outline.
    const Rect inside = NSMakeRect(button.minX() + 1, button.minY() + 1, button.size.width - 2,
                                   button.size.height - 2);
    texts.push_back({label.stringValue(),
                     {label.font(), label.textColor()},
                     inside,
                     label.convertRectToView(label.bounds(), nullptr).maxY()});

    for (double scale : {1.0, 2.0}) {
        auto sheet = Bitmap::renderView(*controller->view(), scale);
        for (const Shown& t : texts) {
            SCOPED_TRACE("\"" + t.text + "\" at " + std::to_string(scale));
            EXPECT_NE(t.text.rfind("ShareExtension.", 0), 0u) << "not translated";
            // The same text drawn freely, its line's top at y 50, against the sheet's pixels.
            auto free = Bitmap::drawn({600, 60}, scale, [&](GraphicsContext& context) {
                context.setFillColor(*Color::whiteColor());
                context.fillRect(NSMakeRect(0, 0, 600, 60));
                drawStringInRect(t.text, NSMakeRect(10, 0, 580, 50), t.attributes,
                                 TextAlignment::Left, LineBreakMode::ByClipping,
                                 TextClipping::None);
            });
            const auto expected = inkIn(*free, NSMakeRect(0, 0, 600, 60));
            const auto shown = inkIn(*sheet, t.area);
            ASSERT_GE(shown[2], 0) << "nothing shows";
            EXPECT_NEAR(shown[2] - shown[0], expected[2] - expected[0], 1);
            EXPECT_NEAR(shown[3] - shown[1], expected[3] - expected[1], 1);
            EXPECT_NEAR(shown[1] - (sheet->pixelHeight() - t.lineTop * scale),
                        expected[1] - 10 * scale, 1.5);
        }
        // No ink in the 2 points inside Cancel's outline.
        for (const Rect& band :
             {NSMakeRect(inside.minX(), inside.minY(), 2, inside.size.height),
              NSMakeRect(inside.maxX() - 2, inside.minY(), 2, inside.size.height),
              NSMakeRect(inside.minX(), inside.minY(), inside.size.width, 2),
              NSMakeRect(inside.minX(), inside.maxY() - 2, inside.size.width, 2)})
            EXPECT_EQ(inkIn(*sheet, band)[2], -1)
                << "at " << scale << " near x " << band.minX() << ", y " << band.minY();
    }
}

INSTANTIATE_TEST_SUITE_P(ShippedInDesktopFonts,
                         ShareSheetLanguagesTest,
                         ::testing::Combine(::testing::Values("en", "de", "fr", "es"),
                                            ::testing::Values("Liberation Sans",
                                                              "DejaVu Sans",
                                                              "Noto Sans",
                                                              "Cantarell")));
