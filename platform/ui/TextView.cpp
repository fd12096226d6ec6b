#include "platform/ui/TextView.h"

#include <QBitmap>
#include <QColor>
#include <QImage>
#include <QPainter>
#include <QPainterPath>
#include <QPainterPathStroker>
#include <QRegion>
#include <QString>
#include <algorithm>
#include <cctype>
#include <cmath>
#include <utility>
#include <vector>

#include "platform/ui/FocusRingStyle.h"
#include "platform/ui/GraphicsContext.h"
#include "platform/ui/Window.h"

namespace platform {

namespace {

constexpr double kDefaultFontSize = 12.0;
// The wrap width of a view too narrow to hold any text: effectively unwrapped.
constexpr double kUnwrappedWidth = 1e7;
// The focus ring: its width outside the mask, and its colour.
constexpr double kFocusRingWidth = focus_ring_style::kWidth;
const QColor kFocusRingColor = focus_ring_style::kColor;

bool isContinuationByte(char c) {
    return (static_cast<unsigned char>(c) & 0xC0) == 0x80;
}

size_t previousBoundary(const std::string& text, size_t index) {
    if (index == 0)
        return 0;
    index = std::min(index, text.size()) - 1;
    while (index > 0 && isContinuationByte(text[index]))
        --index;
    return index;
}

size_t nextBoundary(const std::string& text, size_t index) {
    if (index >= text.size())
        return text.size();
    ++index;
    while (index < text.size() && isContinuationByte(text[index]))
        ++index;
    return index;
}

// The character boundary at or before |index|.
size_t boundaryAtOrBefore(const std::string& text, size_t index) {
    index = std::min(index, text.size());
    while (index > 0 && index < text.size() && isContinuationByte(text[index]))
        --index;
    return index;
}

// Letters, digits and every non-ASCII character make up words.
bool isWordByte(char c) {
    const auto byte = static_cast<unsigned char>(c);
    return byte >= 0x80 || std::isalnum(byte) || byte == '_';
}

// Well-formed UTF-8 only: malformed sequences become U+FFFD, so offsets always fall on
// character boundaries.
std::string validUtf8(const std::string& text) {
    return QString::fromUtf8(text.data(), static_cast<qsizetype>(text.size()))
        .toUtf8()
        .toStdString();
}

// Characters that type: control characters (the key's own meaning) are left out.
std::string printableCharacters(const std::string& characters) {
    std::string printable;
    for (char c : characters) {
        const auto byte = static_cast<unsigned char>(c);
        if (byte >= 0x20 && byte != 0x7F)
            printable.push_back(c);
    }
    return validUtf8(printable);
}

}  // namespace

// --- LayoutManager ----------------------------------------------------------------------------

void LayoutManager::ensureLayoutForTextContainer(TextContainer* container) {
    if (container && container->textView() == view_)
        layOut();
}

Rect LayoutManager::usedRectForTextContainer(TextContainer* container) {
    if (!container || container->textView() != view_)
        return NSZeroRect;
    return layOut();
}

const Rect& LayoutManager::layOut() const {
    if (valid_)
        return usedRect_;
    const std::string& text = view_->string();
    if (text.empty()) {
        usedRect_ = NSMakeRect(0, 0, 0, view_->lineHeight());
    } else {
        const Size used = usedSizeForText(text, view_->wrapWidth(), view_->layoutAttributes());
        const double padding = view_->container_.lineFragmentPadding();
        usedRect_ = NSMakeRect(0, 0, used.width + 2 * padding, used.height);
    }
    valid_ = true;
    return usedRect_;
}

// --- TextView ---------------------------------------------------------------------------------

TextView::TextView(const Rect& frame)
    : View(frame),
      font_(Font::systemFontOfSize(kDefaultFontSize)),
      backgroundColor_(Color::whiteColor()) {}

TextView::~TextView() = default;

void TextView::setString(const std::string& text) {
    string_ = validUtf8(text);
    // As the platform does, the insertion point goes to the end of the new text.
    selection_ = {string_.size(), 0};
    anchor_ = string_.size();
    textDidChangeLayout();
}

void TextView::setFont(FontPtr font) {
    font_ = font ? std::move(font) : Font::systemFontOfSize(kDefaultFontSize);
    textDidChangeLayout();
}

void TextView::setTextColor(ColorPtr color) {
    textColor_ = std::move(color);
    setNeedsDisplay(true);
}

void TextView::setBackgroundColor(ColorPtr color) {
    backgroundColor_ = std::move(color);
    setNeedsDisplay(true);
}

void TextView::setDrawsBackground(bool draws) {
    drawsBackground_ = draws;
    setNeedsDisplay(true);
}

// As on the platform: a view that is not selectable is not editable either, and an editable
// one is selectable.
void TextView::setSelectable(bool selectable) {
    selectable_ = selectable;
    if (!selectable)
        editable_ = false;
    setNeedsDisplay(true);
}

void TextView::setEditable(bool editable) {
    editable_ = editable;
    if (editable)
        selectable_ = true;
    setNeedsDisplay(true);
}

void TextView::setSelectedRange(Range range) {
    const size_t start = boundaryAtOrBefore(string_, range.location);
    const size_t length = std::min(range.length, string_.size() - start);
    const size_t end = std::max(start, boundaryAtOrBefore(string_, start + length));
    selection_ = {start, end - start};
    anchor_ = start;
    setNeedsDisplay(true);
}

ColorPtr TextView::selectedTextBackgroundColor() const {
    return Color::colorWithDeviceRed(0xB3 / 255.0, 0xD7 / 255.0, 1.0, 1.0);
}

void TextView::didChangeText() {}

void TextView::drawFocusRingMask() {
    NSRectFill(usedRectInView());
}

Rect TextView::focusRingMaskBounds() const {
    return usedRectInView();
}

// --- Layout helpers ---------------------------------------------------------------------------

bool TextView::isFirstResponder() const {
    return window() && window()->firstResponder() == this;
}

TextAttributes TextView::layoutAttributes() const {
    TextAttributes attributes;
    attributes.font = font_;
    attributes.foregroundColor = textColor_ ? textColor_ : Color::blackColor();
    return attributes;
}

double TextView::wrapWidth() const {
    const double width = bounds().size.width - 2 * container_.lineFragmentPadding();
    return width > 0 ? width : kUnwrappedWidth;
}

Rect TextView::usedRectInView() const {
    Rect used = layoutManager_.layOut();
    // A container rect has the padding inside it; text rects start after it.
    used.origin.x -= container_.lineFragmentPadding();
    return viewRectFromTextRect(used);
}

double TextView::lineHeight() const {
    return font_->ascender() - font_->descender() + font_->leading();
}

Rect TextView::viewRectFromTextRect(const Rect& textRect) const {
    return NSOffsetRect(flippedRect(textRect, bounds().size.height),
                        container_.lineFragmentPadding(), 0);
}

size_t TextView::characterIndexForPoint(Point point) const {
    Point textPoint = flippedPoint(point, bounds().size.height);
    textPoint.x -= container_.lineFragmentPadding();
    const size_t index =
        characterIndexForPointInText(string_, wrapWidth(), layoutAttributes(), textPoint);
    return boundaryAtOrBefore(string_, index);
}

void TextView::frameDidChange() {
    layoutManager_.invalidateLayout();
}

void TextView::textDidChangeLayout() {
    layoutManager_.invalidateLayout();
    setNeedsDisplay(true);
}

// --- Editing ----------------------------------------------------------------------------------

void TextView::replaceSelection(const std::string& text) {
    const size_t location = std::min(selection_.location, string_.size());
    const size_t length = std::min(selection_.length, string_.size() - location);
    string_.replace(location, length, text);
    selection_ = {location + text.size(), 0};
    anchor_ = selection_.location;
    textDidChangeLayout();
    didChangeText();
}

void TextView::deleteBackward() {
    if (selection_.length == 0) {
        if (selection_.location == 0)
            return;
        const size_t start = previousBoundary(string_, selection_.location);
        selection_ = {start, selection_.location - start};
    }
    replaceSelection({});
}

void TextView::deleteForward() {
    if (selection_.length == 0) {
        if (selection_.location >= string_.size())
            return;
        selection_.length = nextBoundary(string_, selection_.location) - selection_.location;
    }
    replaceSelection({});
}

size_t TextView::selectionFocus() const {
    return selection_.location == anchor_ ? selection_.location + selection_.length
                                          : selection_.location;
}

void TextView::selectFromAnchorTo(size_t focus) {
    const size_t start = std::min(anchor_, focus);
    const size_t end = std::max(anchor_, focus);
    selection_ = {start, end - start};
    setNeedsDisplay(true);
}

void TextView::moveCaret(uint16_t keyCode, bool extend) {
    const size_t focus = selectionFocus();
    const bool collapsing = !extend && selection_.length > 0;
    size_t target = focus;
    switch (keyCode) {
        case kVK_LeftArrow:
            target = collapsing ? selection_.location : previousBoundary(string_, focus);
            break;
        case kVK_RightArrow:
            target =
                collapsing ? selection_.location + selection_.length : nextBoundary(string_, focus);
            break;
        case kVK_UpArrow:
        case kVK_DownArrow: {
            const TextAttributes attributes = layoutAttributes();
            const Rect caret = caretRectInText(string_, wrapWidth(), attributes, focus);
            const double step = lineHeight() / 2;
            const double usedHeight = layoutManager_.layOut().size.height;
            if (keyCode == kVK_UpArrow) {
                target = caret.minY() <= step
                             ? 0
                             : characterIndexForPointInText(string_, wrapWidth(), attributes,
                                                            {caret.minX(), caret.minY() - step});
            } else {
                target = caret.maxY() >= usedHeight - step
                             ? string_.size()
                             : characterIndexForPointInText(string_, wrapWidth(), attributes,
                                                            {caret.minX(), caret.maxY() + step});
            }
            target = boundaryAtOrBefore(string_, target);
            break;
        }
        default:
            return;
    }
    if (extend) {
        selectFromAnchorTo(target);
        return;
    }
    selection_ = {target, 0};
    anchor_ = target;
    setNeedsDisplay(true);
}

// --- Events -----------------------------------------------------------------------------------

void TextView::mouseDown(const Event& event) {
    if (!selectable_) {
        View::mouseDown(event);
        return;
    }
    const size_t index = characterIndexForPoint(convertPoint(event.locationInWindow(), nullptr));
    size_t start = index;
    size_t end = index;
    if (event.clickCount() >= 3) {
        const size_t lineStart = index == 0 ? std::string::npos : string_.rfind('\n', index - 1);
        start = lineStart == std::string::npos ? 0 : lineStart + 1;
        const size_t lineEnd = string_.find('\n', index);
        end = lineEnd == std::string::npos ? string_.size() : lineEnd + 1;
    } else if (event.clickCount() == 2) {
        // The word at the point, or the one just before it (a click past a word's end).
        size_t probe = index;
        if ((probe >= string_.size() || !isWordByte(string_[probe])) && probe > 0 &&
            isWordByte(string_[probe - 1]))
            --probe;
        if (probe < string_.size() && isWordByte(string_[probe])) {
            start = probe;
            while (start > 0 && isWordByte(string_[start - 1]))
                --start;
            end = probe;
            while (end < string_.size() && isWordByte(string_[end]))
                ++end;
        } else {
            end = nextBoundary(string_, index);
        }
    }
    selection_ = {start, end - start};
    anchor_ = start;
    setNeedsDisplay(true);
}

void TextView::mouseDragged(const Event& event) {
    if (!selectable_) {
        View::mouseDragged(event);
        return;
    }
    selectFromAnchorTo(characterIndexForPoint(convertPoint(event.locationInWindow(), nullptr)));
}

void TextView::mouseUp(const Event& event) {
    if (!selectable_)
        View::mouseUp(event);
}

void TextView::keyDown(const Event& event) {
    if (!editable_) {
        View::keyDown(event);
        return;
    }
    const uint64_t flags = event.modifierFlags();
    switch (event.keyCode()) {
        case kVK_Escape:
            View::keyDown(event);
            return;
        case kVK_Return:
        case kVK_ANSI_KeypadEnter:
            replaceSelection("\n");
            return;
        case kVK_Tab:
            replaceSelection("\t");
            return;
        case kVK_Delete:
            deleteBackward();
            return;
        case kVK_ForwardDelete:
            deleteForward();
            return;
        case kVK_LeftArrow:
        case kVK_RightArrow:
        case kVK_UpArrow:
        case kVK_DownArrow:
            moveCaret(event.keyCode(), flags & NSEventModifierFlagShift);
            return;
        default:
            break;
    }
    const std::string typed = printableCharacters(event.characters());
    if ((flags & (NSEventModifierFlagCommand | NSEventModifierFlagControl)) || typed.empty()) {
        View::keyDown(event);
        return;
    }
    replaceSelection(typed);
}

// --- Drawing ----------------------------------------------------------------------------------

void TextView::drawRect(const Rect&) {
    GraphicsContext* context = GraphicsContext::currentContext();
    if (!context)
        return;
    const Rect area = bounds();
    if (drawsBackground_ && backgroundColor_) {
        context->setFillColor(*backgroundColor_);
        context->fillRect(area);
    }
    const TextAttributes attributes = layoutAttributes();
    const double width = wrapWidth();
    const bool focused = isFirstResponder();

    if (focused && selection_.length > 0) {
        context->setFillColor(*selectedTextBackgroundColor());
        for (const Rect& rect : selectionRectsInText(string_, width, attributes,
                                                     selection_.location, selection_.length))
            context->fillRect(viewRectFromTextRect(rect));
    }
    if (!string_.empty()) {
        // Lines hang from the top of the bounds and draw whole: one taller than the view (a
        // 14-point font's line in a 14-point frame) shows its descenders below the frame, and
        // only a view that clips to its bounds cuts them.
        const double height = std::max(area.size.height, layoutManager_.layOut().size.height);
        drawStringInRect(string_, viewRectFromTextRect(NSMakeRect(0, 0, width, height)), attributes,
                         TextAlignment::Left, LineBreakMode::ByWordWrapping, TextClipping::None);
    }
    if (focused && editable_ && selection_.length == 0) {
        Rect caret =
            viewRectFromTextRect(caretRectInText(string_, width, attributes, selection_.location));
        caret.size.width = 1;
        context->setFillColor(*attributes.foregroundColor);
        context->fillRect(caret);
    }
}

// The ring follows the shape drawFocusRingMask fills: the mask is rendered, traced, and
// stroked outside its edge.
void TextView::drawFocusRing(GraphicsContext& context) {
    if (!editable_ || !isFirstResponder())
        return;
    const Rect maskBounds = focusRingMaskBounds();
    if (maskBounds.isEmpty())
        return;

    const double scale = context.backingScaleFactor();
    QImage mask(static_cast<int>(std::ceil(maskBounds.size.width * scale)),
                static_cast<int>(std::ceil(maskBounds.size.height * scale)),
                QImage::Format_ARGB32_Premultiplied);
    mask.fill(Qt::transparent);
    {
        QPainter maskPainter(&mask);
        GraphicsContext maskContext(&maskPainter, maskBounds.size.height, scale);
        maskContext.translateBy(-maskBounds.origin.x, -maskBounds.origin.y);
        GraphicsContext::Current current(&maskContext);
        maskContext.setFillColor(*Color::blackColor());
        drawFocusRingMask();
    }

    // The pixels at least half covered, as rectangles of the mask's rows. Rows count down from
    // the mask's top edge, maskBounds.maxY() above the view's bottom: in that top-left space a
    // rectangle's bottom-left corner flips to its origin in the view.
    const QRegion covered(QBitmap::fromImage(mask.createAlphaMask()));
    QPainterPath shape;
    for (const QRect& pixels : covered) {
        const Point origin = flippedPoint(
            {maskBounds.origin.x + pixels.x() / scale, (pixels.y() + pixels.height()) / scale},
            maskBounds.maxY());
        shape.addRect(QRectF(origin.x, origin.y, pixels.width() / scale, pixels.height() / scale));
    }
    if (shape.isEmpty())
        return;
    shape = shape.simplified();
    QPainterPathStroker stroker;
    stroker.setWidth(2 * kFocusRingWidth);
    stroker.setJoinStyle(Qt::RoundJoin);
    const QPainterPath ring = stroker.createStroke(shape).subtracted(shape);
    context.paint([&ring](QPainter& painter) { painter.fillPath(ring, kFocusRingColor); });
}

}  // namespace platform
