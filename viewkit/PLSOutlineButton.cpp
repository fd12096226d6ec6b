#include "viewkit/PLSOutlineButton.h"

#include <cfloat>
#include <cmath>

#include "platform/ui/BezierPath.h"
#include "platform/ui/StringDrawing.h"
#include "platform/ui/Window.h"
#include "viewkit/ViewSExt.h"

using platform::BezierPath;
using platform::Color;
using platform::ColorPtr;
using platform::Rect;

namespace {

// The platform rounds these values in single precision; keep its results to the last bit.
double ceilInSinglePrecision(double value) {
    return static_cast<double>(std::ceil(static_cast<float>(value)));
}

}  // namespace

PLSOutlineButton::PLSOutlineButton(const Rect& frame) : View(frame) {
    titleLabel_ = std::make_shared<platform::TextField>(bounds());
    titleLabel_->setBordered(false);
    titleLabel_->setBackgroundColor(Color::clearColor());
    titleLabel_->setLineBreakMode(platform::LineBreakMode::ByTruncatingTail);
    titleLabel_->setAlignment(platform::TextAlignment::Center);
    titleLabel_->setEditable(false);
    titleLabel_->setSelectable(false);
    addSubview(titleLabel_);
}

void PLSOutlineButton::setHighlighted(bool highlighted) {
    highlighted_ = highlighted;
    setNeedsDisplay(true);
}

void PLSOutlineButton::setFont(platform::FontPtr font) {
    font_ = std::move(font);
    if (titleLabel_)
        titleLabel_->setFont(font_);
}

void PLSOutlineButton::setTitleColor(ColorPtr color) {
    titleColor_ = color ? std::move(color) : Color::blackColor();
    if (titleLabel_)
        titleLabel_->setTextColor(titleColor_);
}

void PLSOutlineButton::setTitleAlpha(double alpha) {
    titleAlpha_ = alpha;
    if (titleLabel_)
        titleLabel_->setAlphaValue(alpha);
}

std::string PLSOutlineButton::title() const {
    return titleLabel_ ? titleLabel_->stringValue() : std::string();
}

void PLSOutlineButton::setTitle(const std::string& title) {
    if (titleLabel_)
        titleLabel_->setStringValue(title);
}

void PLSOutlineButton::drawRect(const Rect& dirtyRect) {
    const double b = borderWidth_;
    const double r = cornerRaidus_;
    // Half a point in from the edge, so a stroke of width b centred on it ends on the bounds.
    const Rect rect = platform::NSMakeRect(b + 0.5, b + 0.5, SExt::width(*this) - 2 * b - 1,
                                           SExt::height(*this) - 2 * b - 1);

    if (backgrounColor_) {
        const auto body = r > 0 ? BezierPath::bezierPathWithRoundedRect(rect, r + 0.5, r + 0.5)
                                : BezierPath::bezierPathWithRect(rect);
        backgrounColor_->set();
        body->fill();
    }
    if (b > 0) {
        const ColorPtr color = borderColor_ ? borderColor_ : Color::blackColor();
        const auto border = r > 0 ? BezierPath::bezierPathWithRoundedRect(rect, r, r)
                                  : BezierPath::bezierPathWithRect(rect);
        color->set();
        border->setLineWidth(b);
        border->stroke();
    }
    View::drawRect(dirtyRect);
}

void PLSOutlineButton::setFrame(const Rect& frame) {
    View::setFrame(frame);
    if (!titleLabel_)
        return;
    const double labelHeight = SExt::height(*titleLabel_);
    const double y = ceilInSinglePrecision((SExt::height(*this) - labelHeight) * 0.5);
    const double width = ceilInSinglePrecision(SExt::width(*this));
    titleLabel_->setFrame(platform::NSMakeRect(0, y, width, labelHeight));
}

void PLSOutlineButton::sizeToFit() {
    platform::TextAttributes attributes;
    attributes.font = titleLabel_ ? titleLabel_->font() : nullptr;
    const Rect measured = platform::boundingRectWithSize(
        title(), platform::NSMakeSize(DBL_MAX, DBL_MAX),
        platform::NSStringDrawingUsesLineFragmentOrigin | platform::NSStringDrawingUsesFontLeading,
        attributes);
    setFrame(platform::NSMakeRect(SExt::x(*this), SExt::y(*this), measured.size.width,
                                  measured.size.height));
    if (titleLabel_)
        titleLabel_->setFrame(platform::NSMakeRect(0, 0, SExt::width(*this), measured.size.height));
}

void PLSOutlineButton::mouseDown(const platform::Event& /*event*/) {
    setHighlighted(true);
    if (didLeftMouseDownBlock_) {
        Block block = didLeftMouseDownBlock_;  // the closure may replace itself
        block();
    }
}

void PLSOutlineButton::mouseUp(const platform::Event& /*event*/) {
    setHighlighted(false);
    if (didLeftMouseUpBlock_) {
        // The owner may tear the button down from the closure (the sheet's Cancel does).
        const std::weak_ptr<View> alive = weak_from_this();
        const bool tracked = !alive.expired();
        Block block = didLeftMouseUpBlock_;
        block();
        if (tracked && alive.expired())
            return;
    }

    // Where the pointer is now, not where the event was recorded.
    platform::Window* window = this->window();
    if (!window)
        return;
    const platform::Point point =
        convertPoint(window->mouseLocationOutsideOfEventStream(), nullptr);
    if (!platform::NSPointInRect(point, bounds()))
        return;
    const std::shared_ptr<platform::Responder> target = target_.lock();
    if (!target || action_.empty() || !target->respondsToSelector(action_))
        return;
    target->performSelector(action_, nullptr);
}
