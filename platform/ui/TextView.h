#pragma once

#include <memory>
#include <string>

#include "platform/ui/Color.h"
#include "platform/ui/Font.h"
#include "platform/ui/StringDrawing.h"
#include "platform/ui/View.h"

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

// Lays out a text view's string with Qt's text engine, wrapping at the container's width less
// its padding. The layout is kept until the text, the font or the view's size changes.
class LayoutManager {
  public:
    explicit LayoutManager(TextView* view) : view_(view) {}
    // ensureLayoutForTextContainer:
    void ensureLayoutForTextContainer(TextContainer* container);
    // usedRectForTextContainer: the rectangle the laid-out text occupies, in the container's
    // coordinates (origin at the container's top-left, y down): origin (0, 0), the widest line
    // plus lineFragmentPadding on each side, the lines' total height. Empty text is one empty
    // line: zero wide, one line high. The zero rect for another view's container.
    Rect usedRectForTextContainer(TextContainer* container);
    // Forgets the layout; the next request lays the text out again.
    void invalidateLayout() { valid_ = false; }

  private:
    friend class TextView;
    // Lays the text out if needed; the used rect. The layout is a cache, hence const.
    const Rect& layOut() const;

    TextView* view_;
    mutable bool valid_ = false;
    mutable Rect usedRect_;
};

// A text view: rich-text-free string, font, colours, selection and editing. Main thread only.
// Defaults: system font at 12 points, black text (a null textColor means the default), white
// background drawn, editable and selectable. Text is laid out from the top of the bounds, its
// lines starting lineFragmentPadding in from the left and wrapping at the width less twice the
// padding (a view too narrow for any text lays it out unwrapped). Lines draw whole, also where
// they reach below the bounds; only clipsToBounds cuts them.
//
// Default handling: when selectable, a mouse-down places the caret (two clicks select a word,
// three a paragraph) and drags extend the selection; otherwise mouse events go up the responder
// chain. When editable, keys type at the selection, Delete deletes backward, Return and keypad
// Enter insert a line break and the arrows move the caret (Shift extends); each edit calls
// didChangeText. Escape, keys with Command or Control, and every key of a view that is not
// editable go up the responder chain. While first responder the view shows its selection and
// caret, and (editable) a focus ring around its focus-ring mask.
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

  protected:
    void frameDidChange() override;
    void drawFocusRing(GraphicsContext& context) override;

  private:
    friend class LayoutManager;
    bool isFirstResponder() const;
    TextAttributes layoutAttributes() const;
    // The width text wraps at, in points.
    double wrapWidth() const;
    double lineHeight() const;
    // The laid-out text's used rect in the view's coordinates.
    Rect usedRectInView() const;
    // |textRect| is in the text's layout space (origin at the top-left of the first line's text,
    // y down); the result is in the view's coordinates.
    Rect viewRectFromTextRect(const Rect& textRect) const;
    void replaceSelection(const std::string& text);
    void deleteBackward();
    void deleteForward();
    void moveCaret(uint16_t keyCode, bool extend);
    // The selection end that moves (the other is the anchor).
    size_t selectionFocus() const;
    void selectFromAnchorTo(size_t focus);
    void textDidChangeLayout();

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
