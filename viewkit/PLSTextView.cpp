#include "viewkit/PLSTextView.h"

#include "platform/ui/GraphicsContext.h"
#include "platform/ui/StringDrawing.h"
#include "viewkit/ColorSExt.h"

using platform::Event;

namespace {

// Closures are called through a copy: one may replace itself on the view while it runs.
template <typename Block, typename... Args>
auto callCopy(const Block& block, Args... args) {
    Block copy = block;
    return copy(args...);
}

}  // namespace

PLSTextView::PLSTextView(const platform::Rect& frame) : TextView(frame) {
    platform::TextAttributes linkAttributes;
    linkAttributes.foregroundColor = SExt::colorWithHex("#00A2FF");
    setLinkTextAttributes(linkAttributes);
}

void PLSTextView::keyDown(const Event& event) {
    const uint16_t keyCode = event.keyCode();
    if (didPressEscKeyBlock_ && keyCode == platform::kVK_Escape) {
        if (!callCopy(didPressEscKeyBlock_))
            TextView::keyDown(event);
        return;
    }
    if (didPressEnterKeyBlock_ && keyCode == platform::kVK_Return) {
        if (!callCopy(didPressEnterKeyBlock_))
            TextView::keyDown(event);
        return;
    }
    TextView::keyDown(event);
}

void PLSTextView::mouseDown(const Event& event) {
    if (ignoreMouseEvent_) {
        pressOwner_ = PressOwner::NextResponder;
        if (platform::Responder* next = nextResponder())
            next->mouseDown(event);
        return;
    }
    if (mouseDownBlock_) {
        pressOwner_ = PressOwner::Closure;
        callCopy(mouseDownBlock_);
        return;
    }
    pressOwner_ = PressOwner::Base;
    TextView::mouseDown(event);
}

void PLSTextView::mouseDragged(const Event& event) {
    switch (pressOwner_) {
        case PressOwner::NextResponder:
            if (platform::Responder* next = nextResponder())
                next->mouseDragged(event);
            return;
        case PressOwner::Closure:
            return;
        case PressOwner::Base:
            TextView::mouseDragged(event);
            return;
    }
}

void PLSTextView::mouseUp(const Event& event) {
    if (ignoreMouseEvent_) {
        if (platform::Responder* next = nextResponder())
            next->mouseUp(event);
        return;
    }
    if (mouseUpBlock_) {
        callCopy(mouseUpBlock_);
        return;
    }
    TextView::mouseUp(event);
}

void PLSTextView::mouseEntered(const Event& event) {
    if (!plShouldTrackMouseEnterExitEvents_) {
        TextView::mouseEntered(event);
        return;
    }
    if (mouseDidEnteredBlock_)
        callCopy(mouseDidEnteredBlock_);
}

void PLSTextView::mouseExited(const Event& event) {
    if (!plShouldTrackMouseEnterExitEvents_) {
        TextView::mouseExited(event);
        return;
    }
    if (mouseDidExitBlock_)
        callCopy(mouseDidExitBlock_);
}

void PLSTextView::setFrame(const platform::Rect& frame) {
    if (shouldDisableSetFrameOrigin_ &&
        callCopy(shouldDisableSetFrameOrigin_, frame.origin.x, frame.origin.y))
        return;
    TextView::setFrame(frame);
}

void PLSTextView::setFrameOrigin(platform::Point origin) {
    if (shouldDisableSetFrameOrigin_ && callCopy(shouldDisableSetFrameOrigin_, origin.x, origin.y))
        return;
    TextView::setFrameOrigin(origin);
}

platform::Size PLSTextView::intrinsicContentSize() const {
    // Laying out fills the layout manager's cache; the answer is still a pure function of the
    // text, so the const query may drive it.
    auto* self = const_cast<PLSTextView*>(this);
    platform::TextContainer* container = self->textContainer();
    platform::LayoutManager* layoutManager = self->layoutManager();
    if (!layoutManager)
        return {0, 0};
    layoutManager->ensureLayoutForTextContainer(container);
    return layoutManager->usedRectForTextContainer(container).size;
}

void PLSTextView::didChangeText() {
    TextView::didChangeText();
    invalidateIntrinsicContentSize();
    if (didChangeTextBlock_)
        callCopy(didChangeTextBlock_);
}

void PLSTextView::drawFocusRingMask() {
    if (plShowFocusRingIfEditable_ && isEditable())
        platform::NSRectFill(bounds());
}

platform::Rect PLSTextView::focusRingMaskBounds() const {
    if (plShowFocusRingIfEditable_ && isEditable())
        return bounds();
    return platform::NSZeroRect;
}

void PLSTextView::setSelected(bool selected) {
    selected_ = selected;
    _updateDisplayedTextToMatchSelectionStyle();
    setNeedsDisplay(true);
}

void PLSTextView::setNormalTextColor(platform::ColorPtr color) {
    normalTextColor_ = std::move(color);
    _updateDisplayedTextToMatchSelectionStyle();
    setNeedsDisplay(true);
}

void PLSTextView::setSelectedTextColor(platform::ColorPtr color) {
    selectedTextColor_ = std::move(color);
    _updateDisplayedTextToMatchSelectionStyle();
    setNeedsDisplay(true);
}

void PLSTextView::_updateDisplayedTextToMatchSelectionStyle() {
    setTextColor(selected_ ? selectedTextColor_ : normalTextColor_);
    setNeedsDisplay(true);
}
