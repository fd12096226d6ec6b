#pragma once

#include <functional>

#include "platform/ui/Color.h"
#include "platform/ui/TextView.h"

// The kit's text view. On top of the base text view: closures that can take over Escape and
// Return, mouse down and up, mouse enter and exit and the notice of a text change; a closure that
// can veto any frame or origin change; a two-colour style switched by selected; a focus ring
// over the whole bounds, shown only on request while editable; an intrinsic size equal to the
// laid-out text. Links show in "#00A2FF". Main thread only.
class PLSTextView : public platform::TextView {
  public:
    // A closure returning true has handled the key; false lets the base handle it.
    using KeyBlock = std::function<bool()>;
    using Block = std::function<void()>;
    // Receives the new origin; true refuses the change (of the size too, for setFrame).
    using FrameOriginVeto = std::function<bool(double x, double y)>;

    explicit PLSTextView(const platform::Rect& frame = platform::NSZeroRect);
    std::string className() const override { return "PLSTextView"; }

    // Plain stores: no redisplay.
    bool plShowFocusRingIfEditable() const { return plShowFocusRingIfEditable_; }
    void setPlShowFocusRingIfEditable(bool show) { plShowFocusRingIfEditable_ = show; }
    bool ignoreMouseEvent() const { return ignoreMouseEvent_; }
    void setIgnoreMouseEvent(bool ignore) { ignoreMouseEvent_ = ignore; }
    bool plShouldTrackMouseEnterExitEvents() const { return plShouldTrackMouseEnterExitEvents_; }
    void setPlShouldTrackMouseEnterExitEvents(bool track) {
        plShouldTrackMouseEnterExitEvents_ = track;
    }

    // Each setter stores, then re-applies the colour of the current state (so setting
    // normalTextColor while selected leaves the selected colour showing). An unset colour shows
    // the base's default.
    bool selected() const { return selected_; }
    void setSelected(bool selected);
    const platform::ColorPtr& normalTextColor() const { return normalTextColor_; }
    void setNormalTextColor(platform::ColorPtr color);
    const platform::ColorPtr& selectedTextColor() const { return selectedTextColor_; }
    void setSelectedTextColor(platform::ColorPtr color);

    const KeyBlock& didPressEscKeyBlock() const { return didPressEscKeyBlock_; }
    void setDidPressEscKeyBlock(KeyBlock block) { didPressEscKeyBlock_ = std::move(block); }
    const KeyBlock& didPressEnterKeyBlock() const { return didPressEnterKeyBlock_; }
    void setDidPressEnterKeyBlock(KeyBlock block) { didPressEnterKeyBlock_ = std::move(block); }
    const Block& mouseDidEnteredBlock() const { return mouseDidEnteredBlock_; }
    void setMouseDidEnteredBlock(Block block) { mouseDidEnteredBlock_ = std::move(block); }
    const Block& mouseDidExitBlock() const { return mouseDidExitBlock_; }
    void setMouseDidExitBlock(Block block) { mouseDidExitBlock_ = std::move(block); }
    const Block& mouseDownBlock() const { return mouseDownBlock_; }
    void setMouseDownBlock(Block block) { mouseDownBlock_ = std::move(block); }
    const Block& mouseUpBlock() const { return mouseUpBlock_; }
    void setMouseUpBlock(Block block) { mouseUpBlock_ = std::move(block); }
    const FrameOriginVeto& shouldDisableSetFrameOrigin() const {
        return shouldDisableSetFrameOrigin_;
    }
    void setShouldDisableSetFrameOrigin(FrameOriginVeto block) {
        shouldDisableSetFrameOrigin_ = std::move(block);
    }
    const Block& didChangeTextBlock() const { return didChangeTextBlock_; }
    void setDidChangeTextBlock(Block block) { didChangeTextBlock_ = std::move(block); }

    // Escape (kVK_Escape) and Return (kVK_Return) go to their closures when set; everything else,
    // keypad Enter included, to the base.
    void keyDown(const platform::Event& event) override;
    // With ignoreMouseEvent the event goes straight to the next responder; else the closure
    // replaces the base's handling (no caret, no selection). No hit test.
    void mouseDown(const platform::Event& event) override;
    void mouseUp(const platform::Event& event) override;
    // Drags follow their press: to the next responder, to nobody (a press the closure took), or
    // to the base, so a press the base never saw cannot start a selection.
    void mouseDragged(const platform::Event& event) override;
    // With the tracking flag on, the closure (if any) gets the event and the base never does.
    void mouseEntered(const platform::Event& event) override;
    void mouseExited(const platform::Event& event) override;

    void setFrame(const platform::Rect& frame) override;
    void setFrameOrigin(platform::Point origin) override;

    // The used rectangle's size of the fully laid-out text, unrounded; (0, 0) without a layout
    // manager.
    platform::Size intrinsicContentSize() const override;
    void didChangeText() override;

    // The bounds, only while plShowFocusRingIfEditable and editable; else nothing.
    void drawFocusRingMask() override;
    platform::Rect focusRingMaskBounds() const override;

    // Applies the stored colour of the current state and asks for a redraw.
    void _updateDisplayedTextToMatchSelectionStyle();

  private:
    // Who took the last press, so that the drags after it go to the same place.
    enum class PressOwner { Base, Closure, NextResponder };

    PressOwner pressOwner_ = PressOwner::Base;
    bool plShowFocusRingIfEditable_ = false;
    bool ignoreMouseEvent_ = false;
    bool plShouldTrackMouseEnterExitEvents_ = false;
    bool selected_ = false;
    platform::ColorPtr normalTextColor_;
    platform::ColorPtr selectedTextColor_;
    KeyBlock didPressEscKeyBlock_;
    KeyBlock didPressEnterKeyBlock_;
    Block mouseDidEnteredBlock_;
    Block mouseDidExitBlock_;
    Block mouseDownBlock_;
    Block mouseUpBlock_;
    FrameOriginVeto shouldDisableSetFrameOrigin_;
    Block didChangeTextBlock_;
};
