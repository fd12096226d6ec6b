#pragma once

#include <functional>
#include <map>
#include <memory>
#include <string>

#include "platform/ui/Event.h"

namespace platform {

// A selector names an action message; a target answers the ones it registered.
using Selector = std::string;

// An object in the responder chain. Every event handler's default passes the event to
// nextResponder() (and drops it at the end of the chain).
class Responder {
  public:
    virtual ~Responder() = default;

    // The class's name as the platform would spell it, for descriptions and logs.
    virtual std::string className() const { return "NSResponder"; }

    virtual Responder* nextResponder() const { return nullptr; }

    virtual void mouseDown(const Event& event);
    virtual void mouseUp(const Event& event);
    virtual void mouseDragged(const Event& event);
    virtual void rightMouseDown(const Event& event);
    virtual void rightMouseUp(const Event& event);
    virtual void mouseMoved(const Event& event);
    virtual void mouseEntered(const Event& event);
    virtual void mouseExited(const Event& event);
    virtual void keyDown(const Event& event);
    virtual void keyUp(const Event& event);
    virtual void magnifyWithEvent(const Event& event);
    virtual void smartMagnifyWithEvent(const Event& event);
    virtual void touchesBeganWithEvent(const Event& event);
    virtual void touchesMovedWithEvent(const Event& event);
    virtual void touchesEndedWithEvent(const Event& event);
    virtual void touchesCancelledWithEvent(const Event& event);

    virtual bool acceptsFirstResponder() const { return false; }

    // Target/action: respondsToSelector: and performSelector:withObject: over the actions this
    // object registered.
    using ActionHandler = std::function<void(const std::shared_ptr<void>& object)>;
    void registerAction(const Selector& selector, ActionHandler handler);
    bool respondsToSelector(const Selector& selector) const;
    void performSelector(const Selector& selector, const std::shared_ptr<void>& object);

  private:
    std::map<Selector, ActionHandler> actions_;
};

}  // namespace platform
