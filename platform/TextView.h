#pragma once

#include <memory>
#include <string>

#include "platform/Color.h"
#include "platform/Font.h"
#include "platform/StringDrawing.h"
#include "platform/View.h"

namespace platform {

class TextView;

// The area text is laid out in: the view's width (less lineFragmentPadding on each side).
class TextContainer {
public:
    explicit TextContainer(TextView* view) : view_(view) {}
    TextView* textView() const { return view_; }
    double lineFragmentPadding() const { return 5.0; }

private:
    TextView* view_;
};

// Lays out a text view's string with Qt's text engine.
class LayoutManager {
public:
    explicit LayoutManager(TextView* view) : view_(view) {}
    // ensureLayoutForTextContainer:
    void ensureLayoutForTextContainer(TextContainer* container);
    // usedRectForTextContainer: the rectangle the laid-out text occupies, in the container's
    // coordinates (origin at the top-left of the text, lineFragmentPadding included).
    Rect usedRectForTextContainer(TextContainer* container);

private:
    TextView* view_;
};

// A text view: rich-text-free string, font, colours, selection and editing. Defaults: system
// font at 12 points, black text (a null textColor means the default), white background drawn,
// editable and selectable. Text is laid out from the top of the bounds, wrapping at the width.
//
// Default handling: a mouse-down places the caret (selectable) and drags select; keys type,
// delete and move the caret when editable (each edit calls didChangeText); Escape, Return and
// other keys not used go up the responder chain.
class TextView : public View {
public:
    explicit TextView(const Rect& frame = NSZeroRect);
    ~TextView() override;
    std::string className() const override { return "NSTextView"; }

    const std::string& string() const { return string_; }
    void setString(const std::string& text);
    const FontPtr& font() const { return font_; }
    void setFont(FontPtr font);
    // nullptr removes the colour, so the default (black) shows.
    void setTextColor(ColorPtr color);
    const ColorPtr& textColor() const { return textColor_; }
    const ColorPtr& backgroundColor() const { return backgroundColor_; }
    void setBackgroundColor(ColorPtr color);
    bool drawsBackground() const { return drawsBackground_; }
    void setDrawsBackground(bool draws);
    bool isSelectable() const { return selectable_; }
    void setSelectable(bool selectable);
    bool isEditable() const { return editable_; }
    void setEditable(bool editable);

    // linkTextAttributes: how links show (only the foreground colour is modelled).
    const TextAttributes& linkTextAttributes() const { return linkAttributes_; }
    void setLinkTextAttributes(const TextAttributes& attributes) { linkAttributes_ = attributes; }

    // Selection in UTF-8 byte offsets: location and length; the caret is a zero-length range.
    struct Range {
        size_t location = 0;
        size_t length = 0;
    };
    Range selectedRange() const { return selection_; }
    void setSelectedRange(Range range);
    ColorPtr selectedTextBackgroundColor() const;

    TextContainer* textContainer() { return &container_; }
    // nullptr when the view has none (a subclass may drop it).
    virtual LayoutManager* layoutManager() { return &layoutManager_; }

    // Called after each edit the user makes.
    virtual void didChangeText();

    // Focus ring: the mask drawn under the ring while the view is first responder. The base
    // fills its text's used rectangle.
    virtual void drawFocusRingMask();
    virtual Rect focusRingMaskBounds() const;

    bool acceptsFirstResponder() const override { return selectable_ || editable_; }
    void mouseDown(const Event& event) override;
    void mouseDragged(const Event& event) override;
    void mouseUp(const Event& event) override;
    void keyDown(const Event& event) override;

    void drawRect(const Rect& dirtyRect) override;

    // Byte offset of the character boundary nearest |point| (view coordinates).
    size_t characterIndexForPoint(Point point) const;

private:
    std::string string_;
    FontPtr font_;
    ColorPtr textColor_;
    ColorPtr backgroundColor_;
    bool drawsBackground_ = true;
    bool selectable_ = true;
    bool editable_ = true;
    TextAttributes linkAttributes_;
    Range selection_;
    size_t anchor_ = 0;
    TextContainer container_{this};
    LayoutManager layoutManager_{this};
};

}  // namespace platform
