#include "platform/ui/Responder.h"

#include "platform/core/Log.h"

namespace platform {

namespace {
const Logger kLog("Responder: ");
}  // namespace

// Each default hands the event on; an event nobody takes is dropped at the end of the chain.
void Responder::mouseDown(const Event& event) {
    if (Responder* next = nextResponder())
        next->mouseDown(event);
}
void Responder::mouseUp(const Event& event) {
    if (Responder* next = nextResponder())
        next->mouseUp(event);
}
void Responder::mouseDragged(const Event& event) {
    if (Responder* next = nextResponder())
        next->mouseDragged(event);
}
void Responder::rightMouseDown(const Event& event) {
    if (Responder* next = nextResponder())
        next->rightMouseDown(event);
}
void Responder::rightMouseUp(const Event& event) {
    if (Responder* next = nextResponder())
        next->rightMouseUp(event);
}
void Responder::mouseMoved(const Event& event) {
    if (Responder* next = nextResponder())
        next->mouseMoved(event);
}
void Responder::mouseEntered(const Event& event) {
    if (Responder* next = nextResponder())
        next->mouseEntered(event);
}
void Responder::mouseExited(const Event& event) {
    if (Responder* next = nextResponder())
        next->mouseExited(event);
}
void Responder::keyDown(const Event& event) {
    if (Responder* next = nextResponder())
        next->keyDown(event);
}
void Responder::keyUp(const Event& event) {
    if (Responder* next = nextResponder())
        next->keyUp(event);
}
void Responder::magnifyWithEvent(const Event& event) {
    if (Responder* next = nextResponder())
        next->magnifyWithEvent(event);
}
void Responder::smartMagnifyWithEvent(const Event& event) {
    if (Responder* next = nextResponder())
        next->smartMagnifyWithEvent(event);
}

void Responder::touchesBeganWithEvent(const Event& event) {
    if (Responder* next = nextResponder())
        next->touchesBeganWithEvent(event);
}
void Responder::touchesMovedWithEvent(const Event& event) {
    if (Responder* next = nextResponder())
        next->touchesMovedWithEvent(event);
}
void Responder::touchesEndedWithEvent(const Event& event) {
    if (Responder* next = nextResponder())
        next->touchesEndedWithEvent(event);
}
void Responder::touchesCancelledWithEvent(const Event& event) {
    if (Responder* next = nextResponder())
        next->touchesCancelledWithEvent(event);
}

void Responder::registerAction(const Selector& selector, ActionHandler handler) {
    if (handler)
        actions_[selector] = std::move(handler);
    else
        actions_.erase(selector);
}

bool Responder::respondsToSelector(const Selector& selector) const {
    return actions_.count(selector) > 0;
}

void Responder::performSelector(const Selector& selector, const std::shared_ptr<void>& object) {
    auto found = actions_.find(selector);
    if (found == actions_.end()) {
        // The platform would raise here; we log and carry on.
        kLog.write("unrecognized selector sent: " + selector);
        return;
    }
    // A copy: the handler may replace or remove itself while it runs.
    ActionHandler handler = found->second;
    handler(object);
}

}  // namespace platform
