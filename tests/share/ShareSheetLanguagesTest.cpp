// Every text of the sheet reads whole in every shipped language, at 1x and 2x: no title wraps or
// is truncated, and no ink is cut where its view ends.
#include <algorithm>
#include <climits>
#include <cmath>

#include "platform/ui/Bitmap.h"
#include "platform/ui/GraphicsContext.h"
#include "platform/ui/StringDrawing.h"
#include "tests/share/ShareTestSupport.h"
#include "tests/support/ScopedEnv.h"
#include "viewkit/ColorSExt.h"

namespace share_test {
namespace {

using namespace platform;

// Box of text ink in device pixels (top-left origin), inclusive.
struct Ink {
    int left = INT_MAX, top = INT_MAX, right = -1, bottom = -1;
};

// Grey to black, unsaturated: text, not the blue icons, the lines (#cccccc) or the border.
Ink inkIn(const Bitmap& bitmap, const Rect& box) {
    const double s = bitmap.scale(), pointHeight = bitmap.pixelHeight() / s;
    Ink ink;
    for (int y = int((pointHeight - box.maxY()) * s); y < int((pointHeight - box.minY()) * s); ++y)
        for (int x = int(box.minX() * s); x < int(box.maxX() * s); ++x) {
            const Rgba p = bitmap.pixelAt(x, y);
            if (std::max({p.r, p.g, p.b}) < 170 &&
                std::max({p.r, p.g, p.b}) - std::min({p.r, p.g, p.b}) < 30)
                ink = {std::min(ink.left, x), std::min(ink.top, y), std::max(ink.right, x),
                       std::max(ink.bottom, y)};
        }
    return ink;
}

struct ShownText {
    const char* role;
    std::string text;
    TextAttributes attributes;
    Rect shown;      // sheet points: where the text may show without being cut or covered
    double width;    // points its line may take before it wraps or is truncated
    double lineTop;  // sheet y of its first line's top
};

class ShareSheetLanguagesTest : public ShareTest,
                                public ::testing::WithParamInterface<const char*> {};

TEST_P(ShareSheetLanguagesTest, EveryTextShowsWhole) {
    platform::Bundle::setMainBundle(std::make_shared<platform::Bundle>(PARLEY_APPEX_DIR));
    ScopedEnv noAll("LC_ALL", std::nullopt), language("LANGUAGE", std::string(GetParam()));
    auto controller = startShare({fileProvider(files_.writeText("a.txt", "a")),
                                  fileProvider(files_.writeText("b.txt", "b"))});
    std::vector<ShownText> texts;
    for (const auto& [row, titleView] :
         {std::pair(controller->sendToFriendContainer(), controller->sendToFriendText()),
          std::pair(controller->favToParleyContainer(), controller->favToParleyText())}) {
        PLSTextView& title = *titleView;
        const Rect frame = title.convertRectToView(title.bounds(), nullptr);
        const double padding = title.textContainer()->lineFragmentPadding();
        // The row shows the title from its top down to the row's own bottom edge.
        texts.push_back({"title",
                         title.string(),
                         {title.font(), title.textColor()},
                         NSMakeRect(frame.minX(), row->frame().minY() + 1, frame.size.width,
                                    frame.maxY() - row->frame().minY() - 1),
                         frame.size.width - 2 * padding,
                         frame.maxY()});
    }
    const auto& label = *controller->cancelBtn()->titleLabel();
    const Rect labelFrame = label.convertRectToView(label.bounds(), nullptr);
    // Inside the button's border; the cell keeps 2 points each side.
    const Rect button = controller->cancelBtn()->frame();
    texts.push_back({"cancel",
                     label.stringValue(),
                     {label.font(), label.textColor()},
                     NSMakeRect(button.minX() + 2, button.minY() + 2, button.size.width - 4,
                                button.size.height - 4),
                     labelFrame.size.width - 4,
                     labelFrame.maxY()});
    const auto& count = *controller->fileCount();
    const Rect countFrame = count.convertRectToView(count.bounds(), nullptr);
    texts.push_back({"count",
                     count.stringValue(),
                     {count.font(), count.textColor()},
                     countFrame,
                     countFrame.size.width - 4,
                     countFrame.maxY()});

    for (double scale : {1.0, 2.0}) {
        auto sheet = Bitmap::renderView(*controller->view(), scale);
        for (const ShownText& t : texts) {
            SCOPED_TRACE(std::string(t.role) + " \"" + t.text + "\" at " + std::to_string(scale));
            const Rect line = boundingRectWithSize(
                t.text, {1e6, 1e6},
                NSStringDrawingUsesLineFragmentOrigin | NSStringDrawingUsesFontLeading,
                t.attributes);
            EXPECT_LE(line.size.width, t.width) << "wraps or is truncated";
            EXPECT_LE(line.size.height, t.lineTop - t.shown.minY()) << "its line is cut off";

            // The same text drawn freely, its line's top at y 50, against the sheet's rendering.
            auto free = Bitmap::drawn({600, 60}, scale, [&](GraphicsContext& context) {
                context.setFillColor(*SExt::colorWithHex("#F7F7F7"));
                context.fillRect(NSMakeRect(0, 0, 600, 60));
                drawStringInRect(t.text, NSMakeRect(10, 0, 580, 50), t.attributes, 0, 2,
                                 TextClipping::None);
            });
            const Ink expected = inkIn(*free, NSMakeRect(0, 0, 600, 60));
            const Ink shown = inkIn(*sheet, t.shown);
            ASSERT_GE(shown.right, 0) << "nothing shows";
            EXPECT_NEAR(shown.right - shown.left, expected.right - expected.left, 1);
            EXPECT_NEAR(shown.bottom - shown.top, expected.bottom - expected.top, 1);
            EXPECT_NEAR(shown.top - (controller->view()->frame().size.height - t.lineTop) * scale,
                        expected.top - 10 * scale, 1.5);
        }
    }
}

INSTANTIATE_TEST_SUITE_P(Shipped,
                         ShareSheetLanguagesTest,
                         ::testing::Values("en", "de", "fr", "es"));

}  // namespace
}  // namespace share_test
