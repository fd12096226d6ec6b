#pragma once

#include <memory>
#include <string>
#include <vector>

#include "platform/ui/Event.h"
#include "platform/ui/Geometry.h"
#include "platform/ui/Responder.h"

namespace platform {

class View;
class Bitmap;

// A top-level window holding one content view. Main thread only: construction, the content
// view, events, first responder, showing and closing abort on another thread. A window must
// outlive the event handlers it calls (a handler must not destroy the window that delivered its
// event).
//
// Event dispatch: a mouse-down goes to the view hit at its location; the drags and the mouse-up
// that follow go to that same view, wherever the pointer is. Right-button, move and magnify
// events go to the view under the pointer; touches to the nearest view under the touch that
// accepts touch events. A press on a view whose mouseDownCanMoveWindow is true then moves the
// window (on a display). Keys go to the first responder (the window itself
// when none is set). A mouse-down on a view that accepts first responder makes it first
// responder. When shown on a display the window is a real QWindow whose Qt mouse and key events
// become our events; without a display it exists offscreen and events are delivered through
// sendEvent.
//
// Keyboard access: keys nobody before the window takes press the window's buttons. Tab and
// Shift+Tab move a keyboard focus over the window's buttons (accessibility elements with the
// Button role) in reading order, and the window draws a focus ring around the focused one, from
// the first Tab on; Space and Return press it; a key whose characters are a view's keyEquivalent
// presses that view. A press is a click at the view's centre (performClick). On a display the
// window and its elements are described to assistive technology (WindowAccessibility).
class Window : public Responder {
  public:
    // |contentRect| is in screen coordinates (bottom-left origin, y up).
    explicit Window(const Rect& contentRect, const std::string& title = {});
    ~Window() override;
    Window(const Window&) = delete;
    Window& operator=(const Window&) = delete;

    std::string className() const override { return "NSWindow"; }
    const std::string& title() const { return title_; }

    // Sizes |view| to the window's content (origin 0, 0), as the platform does.
    void setContentView(std::shared_ptr<View> view);
    const std::shared_ptr<View>& contentView() const { return contentView_; }

    // Routes |event| as the platform's event loop would.
    void sendEvent(const Event& event);
    // A click of the left button at |locationInWindow| (base coordinates): a mouse-down and its
    // mouse-up through sendEvent, as a person's click would come.
    void performClick(Point locationInWindow);

    // The end of the responder chain: keyboard access (above), else the key is dropped.
    void keyDown(const Event& event) override;
    // The visible accessibility elements of the content view's tree in reading order: top edge
    // first (higher on the screen first), then left edge; tree order among equals.
    std::vector<std::shared_ptr<View>> accessibilityElements() const;
    // The button the keyboard focus is on; nullptr before the first Tab.
    std::shared_ptr<View> keyboardFocusView() const;
    // Tab and Shift+Tab: the next (previous) button in reading order, round the end.
    void selectNextKeyView();
    void selectPreviousKeyView();

    // nullptr makes the window itself first responder. Refuses (false) a responder that does not
    // accept first responder or a view of another window.
    bool makeFirstResponder(Responder* responder);
    Responder* firstResponder() const { return firstResponder_; }

    // The pointer's current position in the window's base coordinates: the last position seen
    // by sendEvent (or reported by the display), which a test may also set.
    Point mouseLocationOutsideOfEventStream() const { return mouseLocation_; }
    void setMouseLocationOutsideOfEventStream(Point point) { mouseLocation_ = point; }

    int windowNumber() const { return windowNumber_; }
    Rect frame() const { return frame_; }
    // The frame of the screen the window is on (a 1920 x 1080 screen offscreen).
    Rect screenFrame() const;
    // The display's device pixel ratio once shown on a display; 1 offscreen unless set.
    double backingScaleFactor() const;
    // Overrides the backing scale (offscreen rendering at 2x); 0 restores the default.
    void setBackingScaleFactor(double scale);

    // Places the window in the middle of its screen, as the platform places a new sheet.
    void center();
    // Moves the bottom-left corner to |origin| (screen coordinates); a shown window moves when
    // it is next ordered front.
    void setFrameOrigin(Point origin) { frame_.origin = origin; }
    // Shows the window: on the display when there is one, offscreen otherwise.
    void makeKeyAndOrderFront();
    void close();
    bool isVisible() const { return visible_; }

    // Renders the content view as shown, at |scale| pixels per point.
    std::shared_ptr<Bitmap> snapshot(double scale) const;
    // What the screen shows of this window alone under |rect|, given in the window server's
    // coordinates (points, origin at the top-left corner of the window's screen, y down): a
    // grab from the display while the window is shown there, otherwise the window's own backing
    // store (the window background, then the content view, at backingScaleFactor). Parts of
    // |rect| outside the window are transparent offscreen. nullptr for an empty rect or a grab
    // that gives no picture.
    std::shared_ptr<Bitmap> imageOfScreenRect(const Rect& rect) const;

    // Platform internals: called when a view of this window needs display.
    void viewNeedsDisplay();
    // Platform internals: |view| is leaving this window (or being destroyed): it stops being
    // first responder.
    void viewWillLeave(View* view);
    // Platform internals: the window on the display was hidden (closed by the user).
    void nativeWindowHidden();
    // Platform internals: the nearest view under |locationInWindow| that accepts touch events.
    std::shared_ptr<View> touchTargetAt(Point locationInWindow) const;
    // True while the window is shown on a display (not offscreen).
    bool isShownOnDisplay() const;

  private:
    void dispatchEvent(const Event& event);
    void moveKeyboardFocus(int step);
    // Describes the window shown on the display to assistive technology and announces it.
    void announceToAssistiveTechnology();
    // Presses the view whose keyEquivalent is |event|'s characters; false when none has it.
    bool performKeyEquivalent(const Event& event);
    void startMoveByPointer();
    struct Native;
    std::unique_ptr<Native> native_;
    std::shared_ptr<View> contentView_;
    Responder* firstResponder_ = nullptr;
    // The view that took the last mouse-down: it gets the drags and the mouse-up that follow.
    std::weak_ptr<View> mouseDownViewRef_;
    std::weak_ptr<View> keyboardFocus_;
    Point mouseLocation_;
    Rect frame_;
    int windowNumber_;
    std::string title_;
    bool visible_ = false;
};

}  // namespace platform
