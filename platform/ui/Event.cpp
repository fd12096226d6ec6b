#include "platform/ui/Event.h"

namespace platform {

std::shared_ptr<Event> Event::mouseEvent(EventType type,
                                         Point locationInWindow,
                                         int clickCount,
                                         uint64_t modifierFlags,
                                         double timestamp,
                                         int windowNumber) {
    std::shared_ptr<Event> event(new Event());
    event->type_ = type;
    event->location_ = locationInWindow;
    event->clickCount_ = clickCount;
    event->modifierFlags_ = modifierFlags;
    event->timestamp_ = timestamp;
    event->windowNumber_ = windowNumber;
    return event;
}

std::shared_ptr<Event> Event::keyEvent(EventType type,
                                       uint16_t keyCode,
                                       const std::string& characters,
                                       uint64_t modifierFlags,
                                       double timestamp,
                                       int windowNumber) {
    std::shared_ptr<Event> event(new Event());
    event->type_ = type;
    event->keyCode_ = keyCode;
    event->characters_ = characters;
    event->modifierFlags_ = modifierFlags;
    event->timestamp_ = timestamp;
    event->windowNumber_ = windowNumber;
    return event;
}

std::shared_ptr<Event> Event::magnifyEvent(EventType type,
                                           Point locationInWindow,
                                           double magnification,
                                           double timestamp) {
    std::shared_ptr<Event> event(new Event());
    event->type_ = type;
    event->location_ = locationInWindow;
    event->magnification_ = magnification;
    event->timestamp_ = timestamp;
    return event;
}

}  // namespace platform
