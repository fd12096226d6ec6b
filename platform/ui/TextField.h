#pragma once

#include <string>

#include "platform/ui/Color.h"
#include "platform/ui/Font.h"
#include "platform/ui/StringDrawing.h"
#include "platform/ui/View.h"

namespace platform {

// A label (editing is stored, not offered). Main thread only. Defaults: system font at 13
// points, black text, bordered (a 1-point grey line inside the bounds), white background drawn,
// natural (left) alignment, clipping, editable and selectable. The text sits 2 points in from
// the sides and its first line box at the top of the bounds, as the platform's cell places it;
// the wrapping line-break modes wrap onto more lines, the others keep one.
class TextField : public View {
  public:
    explicit TextField(const Rect& frame = NSZeroRect);
    std::string className() const override { return "NSTextField"; }

    const std::string& stringValue() const { return string_; }
    void setStringValue(const std::string& value);
    const ColorPtr& textColor() const { return textColor_; }
    void setTextColor(ColorPtr color);
    const FontPtr& font() const { return font_; }
    void setFont(FontPtr font);
    TextAlignment alignment() const { return alignment_; }
    void setAlignment(TextAlignment alignment);
    LineBreakMode lineBreakMode() const { return lineBreakMode_; }
    void setLineBreakMode(LineBreakMode mode);
    bool isBordered() const { return bordered_; }
    void setBordered(bool bordered);
    const ColorPtr& backgroundColor() const { return backgroundColor_; }
    void setBackgroundColor(ColorPtr color);
    bool drawsBackground() const { return drawsBackground_; }
    void setDrawsBackground(bool draws);
    bool isEditable() const { return editable_; }
    void setEditable(bool editable) { editable_ = editable; }
    // YES: a line slightly too wide for a truncating mode is drawn up to 7 % tighter before it
    // is truncated. NO by default.
    bool allowsDefaultTighteningForTruncation() const { return allowsTightening_; }
    void setAllowsDefaultTighteningForTruncation(bool allows);
    bool isSelectable() const { return selectable_; }
    void setSelectable(bool selectable) { selectable_ = selectable; }

    void drawRect(const Rect& dirtyRect) override;

  private:
    std::string string_;
    ColorPtr textColor_;
    FontPtr font_;
    TextAlignment alignment_ = TextAlignment::Natural;
    LineBreakMode lineBreakMode_ = LineBreakMode::ByClipping;
    bool bordered_ = true;
    ColorPtr backgroundColor_;
    bool drawsBackground_ = true;
    bool editable_ = true;
    bool selectable_ = true;
    bool allowsTightening_ = false;
};

}  // namespace platform
