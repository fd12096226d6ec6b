#pragma once

#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "platform/ui/Geometry.h"
#include "platform/ui/Layer.h"
#include "platform/ui/Responder.h"

namespace platform {

class Window;
class GraphicsContext;

// What a view is to assistive technology (a screen reader); None keeps it out of the tree.
enum class AccessibilityRole { None, Button, StaticText, Image, Group };

// A view in a retained tree, with AppKit semantics. Main thread only: construction, changes to
// the tree or to what the view shows, and drawing abort on another thread (MainQueue).
//
// frame is in the superview's coordinates, bounds in the view's own; both spaces have the origin
// at the bottom-left corner and y growing upward (views are never flipped). Subviews are kept in
// order; a later subview draws above an earlier one and is hit first. Drawing order of one view:
// its layer (background, rounded when asked), drawRect, then the subviews, at the view's alpha.
// As on current AppKit, a view's drawing and its subviews may show outside its bounds unless it
// clips to them (clipsToBounds) or its layer masks them (masksToBounds): a label's descenders
// stay whole below a frame sized to the font's point size.
class View : public Responder, public std::enable_shared_from_this<View> {
  public:
    // initWithFrame:
    explicit View(const Rect& frame = NSZeroRect);
    ~View() override;
    View(const View&) = delete;
    View& operator=(const View&) = delete;

    std::string className() const override { return "NSView"; }
    // respondsToSelector:@selector(title) with its answer: the title of a view whose class has
    // one (a button's); nullopt for a view without.
    virtual std::optional<std::string> titleIfResponds() const { return std::nullopt; }

    // --- Geometry -----------------------------------------------------------------------------
    const Rect& frame() const { return frame_; }
    virtual void setFrame(const Rect& frame);
    virtual void setFrameOrigin(Point origin);
    virtual void setFrameSize(Size size);
    // Origin (0, 0), the frame's size.
    Rect bounds() const { return {{0, 0}, frame_.size}; }
    bool isFlipped() const { return false; }

    // |point| is in |view|'s coordinates (the window's when |view| is nullptr); the result in
    // this view's.
    Point convertPoint(Point point, const View* fromView) const;
    // |point| is in this view's coordinates; the result in |view|'s (the window's when nullptr).
    Point convertPointToView(Point point, const View* toView) const;
    Rect convertRect(const Rect& rect, const View* fromView) const;
    Rect convertRectToView(const Rect& rect, const View* toView) const;

    // --- Tree ---------------------------------------------------------------------------------
    void addSubview(std::shared_ptr<View> view);
    void removeFromSuperview();
    const std::vector<std::shared_ptr<View>>& subviews() const { return subviews_; }
    View* superview() const { return superview_; }
    Window* window() const { return window_; }
    bool isDescendantOf(const View* view) const;

    // |point| is in the superview's coordinates. The deepest visible view under the point,
    // searching subviews back to front (the last added first); hidden views and their subtrees
    // are skipped. nullptr when the point is outside this view.
    virtual View* hitTest(Point point);

    // --- Display ------------------------------------------------------------------------------
    bool isHidden() const { return hidden_; }
    void setHidden(bool hidden);
    double alphaValue() const { return alpha_; }
    void setAlphaValue(double alpha);
    bool needsDisplay() const { return needsDisplay_; }
    // Marks the view for redrawing; the window repaints at its next turn.
    void setNeedsDisplay(bool needsDisplay);

    // NO: a view never promises to fill its bounds, so what lies behind it is drawn first.
    virtual bool isOpaque() const { return false; }
    // NO by default: the view's own drawing and its subviews are not clipped to its bounds.
    bool clipsToBounds() const { return clipsToBounds_; }
    void setClipsToBounds(bool clips);

    bool wantsLayer() const { return wantsLayer_; }
    // YES gives the view a backing layer (made on first need; a layer given to setLayer before
    // is the one kept). The layer is drawn only while the view wants one.
    void setWantsLayer(bool wantsLayer);
    // nullptr until the view wants a layer or is given one.
    Layer* layer() const { return layer_.get(); }
    void setLayer(std::shared_ptr<Layer> layer);

    // Draws the view's own content; |dirtyRect| is in the view's coordinates. The current
    // graphics context's coordinates are this view's. The default draws nothing.
    virtual void drawRect(const Rect& dirtyRect);

    // The responder chain: the superview, then the window.
    Responder* nextResponder() const override;

    // A press on the view may move its window (the window starts the move after the view has
    // seen the press).
    virtual bool mouseDownCanMoveWindow() const { return false; }
    // Whether the view may be drawn with the vibrancy of a translucent window behind it.
    virtual bool allowsVibrancy() const { return false; }
    // Touch events are delivered to the nearest view under the touch that accepts them.
    virtual bool acceptsTouchEvents() const { return false; }

    // --- Accessibility ------------------------------------------------------------------------
    // A view with a role is an element that assistive technology lists; the label is the name
    // it speaks, the help text a description spoken after it. A button is pressable: by its
    // press action and by the keyboard (Window).
    AccessibilityRole accessibilityRole() const { return accessibilityRole_; }
    void setAccessibilityRole(AccessibilityRole role) { accessibilityRole_ = role; }
    bool isAccessibilityElement() const { return accessibilityRole_ != AccessibilityRole::None; }
    const std::string& accessibilityLabel() const { return accessibilityLabel_; }
    void setAccessibilityLabel(const std::string& label) { accessibilityLabel_ = label; }
    const std::string& accessibilityHelp() const { return accessibilityHelp_; }
    void setAccessibilityHelp(const std::string& help) { accessibilityHelp_ = help; }
    // Presses the view as a person would: a click (mouse-down, mouse-up) at its centre through
    // its window's event dispatch. False when the view is in no window or hidden.
    bool accessibilityPerformPress();
    // The key whose characters press this view from anywhere in its window ("\x1b" for Escape
    // on a cancel button); empty for none.
    const std::string& keyEquivalent() const { return keyEquivalent_; }
    void setKeyEquivalent(const std::string& characters) { keyEquivalent_ = characters; }
    // Hidden itself or through an ancestor.
    bool isHiddenOrHasHiddenAncestor() const;

    // Auto layout's notion of a natural size; (-1, -1) means none.
    virtual Size intrinsicContentSize() const { return {-1, -1}; }
    virtual void invalidateIntrinsicContentSize() {}

    // Platform internals: draws this view and its subtree into |context|, whose current
    // coordinates are this view's superview's.
    void displayInContext(GraphicsContext& context);
    // Called by Window when the view joins or leaves one; applies to the whole subtree.
    void setWindow(Window* window);

  protected:
    // Called after the frame changed through any setter.
    virtual void frameDidChange() {}
    // Called after the view (or an ancestor) joined or left a window.
    virtual void viewDidMoveToWindow() {}
    // Draws a focus ring, if the view shows one. Runs after the view and its subviews drew, in
    // the view's coordinates but outside any clip the view sets, since a ring lies outside it.
    virtual void drawFocusRing(GraphicsContext& context);

  private:
    // Sum of the frame origins from this view up to the root of its tree: the offset from this
    // view's coordinates to the base space (the window's, for a view in a window).
    Point offsetToBase() const;

    Rect frame_;
    View* superview_ = nullptr;
    Window* window_ = nullptr;
    std::vector<std::shared_ptr<View>> subviews_;
    bool hidden_ = false;
    double alpha_ = 1.0;
    bool needsDisplay_ = true;
    bool wantsLayer_ = false;
    bool clipsToBounds_ = false;
    std::shared_ptr<Layer> layer_;
    AccessibilityRole accessibilityRole_ = AccessibilityRole::None;
    std::string accessibilityLabel_;
    std::string accessibilityHelp_;
    std::string keyEquivalent_;
};

using ViewPtr = std::shared_ptr<View>;

}  // namespace platform
