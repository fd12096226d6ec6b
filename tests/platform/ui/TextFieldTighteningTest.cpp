// A truncating label a little too narrow for its title closes the letters up instead of cutting
// the title; one far too narrow still truncates, as does every label that does not allow it.
#include "platform/ui/StringDrawing.h"
#include "platform/ui/TextField.h"
#include "tests/platform/ui/PixelTestSupport.h"

using namespace platform;

namespace {

QImage drawnTitle(double width, bool tightens) {
    auto field = std::make_shared<TextField>(NSMakeRect(0, 0, width, 20));
    field->setBordered(false);
    field->setStringValue("Abbrechen");
    field->setLineBreakMode(LineBreakMode::ByTruncatingTail);
    field->setAllowsDefaultTighteningForTruncation(tightens);
    return Bitmap::renderView(*field, 2)->qimage();
}

}  // namespace

TEST(TextFieldTighteningTest, OnlyATitleALittleTooWideTightens) {
    const double natural =
        boundingRectWithSize("Abbrechen", {1e6, 1e6}, 3, {Font::systemFontOfSize(13), nullptr})
            .size.width;
    for (auto [tooWide, tightens] : {std::pair{1.05, true}, {1.10, false}}) {
        const double width = natural / tooWide + 4;  // the cell keeps 2 points each side
        EXPECT_NE(drawnTitle(width, false) == drawnTitle(width, true), tightens) << tooWide;
    }
}
