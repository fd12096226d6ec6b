#include "platform/ui/TextField.h"

#include "platform/ui/GraphicsContext.h"

namespace platform {

namespace {

// The platform cell's horizontal inset of its text.
constexpr double kTextInset = 2.0;
constexpr double kBorderWidth = 1.0;
// How much narrower than its natural width a line may be drawn when tightening is allowed.
constexpr double kMaxTightening = 0.07;

}  // namespace

TextField::TextField(const Rect& frame)
    : View(frame),
      textColor_(Color::blackColor()),
      font_(Font::systemFontOfSize(Font::systemFontSize())),
      backgroundColor_(Color::whiteColor()) {}

void TextField::setStringValue(const std::string& value) {
    string_ = value;
    setNeedsDisplay(true);
}

void TextField::setTextColor(ColorPtr color) {
    textColor_ = std::move(color);
    setNeedsDisplay(true);
}

void TextField::setFont(FontPtr font) {
    font_ = std::move(font);
    setNeedsDisplay(true);
}

void TextField::setAlignment(TextAlignment alignment) {
    alignment_ = alignment;
    setNeedsDisplay(true);
}

void TextField::setLineBreakMode(LineBreakMode mode) {
    lineBreakMode_ = mode;
    setNeedsDisplay(true);
}

void TextField::setAllowsDefaultTighteningForTruncation(bool allows) {
    allowsTightening_ = allows;
    setNeedsDisplay(true);
}

void TextField::setBordered(bool bordered) {
    bordered_ = bordered;
    setNeedsDisplay(true);
}

void TextField::setBackgroundColor(ColorPtr color) {
    backgroundColor_ = std::move(color);
    setNeedsDisplay(true);
}

void TextField::setDrawsBackground(bool draws) {
    drawsBackground_ = draws;
    setNeedsDisplay(true);
}

void TextField::drawRect(const Rect&) {
    GraphicsContext* context = GraphicsContext::currentContext();
    if (!context)
        return;
    const Rect area = bounds();
    const double width = area.size.width;
    const double height = area.size.height;

    if (drawsBackground_ && backgroundColor_) {
        context->setFillColor(*backgroundColor_);
        context->fillRect(area);
    }
    if (bordered_) {
        context->setFillColor(*Color::colorWithCalibratedWhite(0.6, 1.0));
        context->fillRect(NSMakeRect(0, 0, width, kBorderWidth));
        context->fillRect(NSMakeRect(0, height - kBorderWidth, width, kBorderWidth));
        context->fillRect(NSMakeRect(0, 0, kBorderWidth, height));
        context->fillRect(NSMakeRect(width - kBorderWidth, 0, kBorderWidth, height));
    }
    if (string_.empty())
        return;

    // The text starts at the top of the bounds (inside the border), as the platform's cell
    // places its first line.
    const double border = bordered_ ? kBorderWidth : 0.0;
    const Rect textRect =
        NSMakeRect(kTextInset, border, width - 2 * kTextInset, height - 2 * border);
    TextAttributes attributes;
    attributes.font = font_;
    attributes.foregroundColor = textColor_ ? textColor_ : Color::blackColor();
    drawStringInRect(string_, textRect, attributes, alignment_, lineBreakMode_,
                     TextClipping::ToRect, allowsTightening_ ? kMaxTightening : 0.0);
}

}  // namespace platform
