#pragma once

#include <memory>
#include <string>

#include "platform/Event.h"
#include "platform/Geometry.h"
#include "platform/Responder.h"

namespace platform {

class View;
class Bitmap;

// A top-level window holding one content view. Main thread only.
//
// Event dispatch: a mouse-down goes to the view hit at its location; the drags and the mouse-up
// that follow go to that same view, wherever the pointer is. Keys go to the first responder (the
// window itself when none is set). When shown on a display the window is a real QWindow whose Qt
// mouse and key events become our events; without a display it exists offscreen and events are
// delivered through sendEvent.
class Window : public Responder {
public:
    // |contentRect| is in screen coordinates (bottom-left origin, y up).
    explicit Window(const Rect& contentRect, const std::string& title = {});
    ~Window() override;
    Window(const Window&) = delete;
    Window& operator=(const Window&) = delete;

    void setContentView(std::shared_ptr<View> view);
    const std::shared_ptr<View>& contentView() const { return contentView_; }

    // Routes |event| as the platform's event loop would.
    void sendEvent(const Event& event);

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
    double backingScaleFactor() const;

    // Shows the window: on the display when there is one, offscreen otherwise.
    void makeKeyAndOrderFront();
    void close();
    bool isVisible() const { return visible_; }

    // Renders the content view as shown, at |scale| pixels per point.
    std::shared_ptr<Bitmap> snapshot(double scale) const;

    // Platform internals: called when a view of this window needs display.
    void viewNeedsDisplay();

private:
    struct Native;
    std::unique_ptr<Native> native_;
    std::shared_ptr<View> contentView_;
    Responder* firstResponder_ = nullptr;
    View* mouseDownView_ = nullptr;
    std::weak_ptr<View> mouseDownViewRef_;
    Point mouseLocation_;
    Rect frame_;
    int windowNumber_;
    bool visible_ = false;
};

}  // namespace platform
