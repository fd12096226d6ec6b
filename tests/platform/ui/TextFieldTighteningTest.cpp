// A truncating label a little too narrow for its title closes the letters up instead of cutting
// the title; one far too narrow still truncates, as does every label that does not allow it.
#include <gtest/gtest.h>

#include "platform/ui/Bitmap.h"
#include "platform/ui/StringDrawing.h"
#include "platform/ui/TextField.h"

namespace platform {
namespace {

std::shared_ptr<Bitmap> drawnTitle(double width, bool tightens) {
    auto field = std::make_shared<TextField>(NSMakeRect(0, 0, width, 20));
    field->setBordered(false);
    field->setStringValue("Abbrechen");
    field->setLineBreakMode(LineBreakMode::ByTruncatingTail);
    field->setAllowsDefaultTighteningForTruncation(tightens);
    return Bitmap::renderView(*field, 2);
}

bool samePixels(const Bitmap& a, const Bitmap& b) {
    for (int y = 0; y < a.pixelHeight(); ++y)
        for (int x = 0; x < a.pixelWidth(); ++x)
            if (!(a.pixelAt(x, y) == b.pixelAt(x, y)))
                return false;
    return true;
}

TEST(TextFieldTighteningTest, OnlyATitleALittleTooWideTightens) {
    const double natural =
        boundingRectWithSize("Abbrechen", {1e6, 1e6}, 3, {Font::systemFontOfSize(13), nullptr})
            .size.width;
    const struct {
        double tooWide;
        bool tightens;
    } cases[] = {{1.05, true}, {1.10, false}};
    for (const auto& c : cases) {
        SCOPED_TRACE(c.tooWide);
        const double width = natural / c.tooWide + 4;  // the cell keeps 2 points each side
        EXPECT_NE(samePixels(*drawnTitle(width, false), *drawnTitle(width, true)), c.tightens);
    }
}

}  // namespace
}  // namespace platform
