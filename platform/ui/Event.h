#pragma once

#include <cstdint>
#include <memory>
#include <string>

#include "platform/ui/Geometry.h"

namespace platform {

enum class EventType {
    LeftMouseDown,
    LeftMouseUp,
    LeftMouseDragged,
    RightMouseDown,
    RightMouseUp,
    MouseMoved,
    MouseEntered,
    MouseExited,
    KeyDown,
    KeyUp,
    Magnify,
    SmartMagnify,
    // Touches on a touch surface; made with mouseEvent (the location is the touch's).
    TouchesBegan,
    TouchesMoved,
    TouchesEnded,
    TouchesCancelled,
};

// NSEventModifierFlags
enum ModifierFlags : uint64_t {
    NSEventModifierFlagShift = 1 << 17,
    NSEventModifierFlagControl = 1 << 18,
    NSEventModifierFlagOption = 1 << 19,
    NSEventModifierFlagCommand = 1 << 20,
};

// The platform's virtual key codes (ANSI layout): where a key sits, whatever it types.
enum KeyCode : uint16_t {
    kVK_ANSI_A = 0,
    kVK_ANSI_S = 1,
    kVK_ANSI_D = 2,
    kVK_ANSI_F = 3,
    kVK_ANSI_H = 4,
    kVK_ANSI_G = 5,
    kVK_ANSI_Z = 6,
    kVK_ANSI_X = 7,
    kVK_ANSI_C = 8,
    kVK_ANSI_V = 9,
    kVK_ANSI_B = 11,
    kVK_ANSI_Q = 12,
    kVK_ANSI_W = 13,
    kVK_ANSI_E = 14,
    kVK_ANSI_R = 15,
    kVK_ANSI_Y = 16,
    kVK_ANSI_T = 17,
    kVK_ANSI_1 = 18,
    kVK_ANSI_2 = 19,
    kVK_ANSI_3 = 20,
    kVK_ANSI_4 = 21,
    kVK_ANSI_6 = 22,
    kVK_ANSI_5 = 23,
    kVK_ANSI_9 = 25,
    kVK_ANSI_7 = 26,
    kVK_ANSI_8 = 28,
    kVK_ANSI_0 = 29,
    kVK_ANSI_O = 31,
    kVK_ANSI_U = 32,
    kVK_ANSI_I = 34,
    kVK_ANSI_P = 35,
    kVK_ANSI_L = 37,
    kVK_ANSI_J = 38,
    kVK_ANSI_K = 40,
    kVK_ANSI_N = 45,
    kVK_ANSI_M = 46,
    kVK_Return = 36,
    kVK_Tab = 48,
    kVK_Space = 49,
    kVK_Delete = 51,
    kVK_Escape = 53,
    kVK_ANSI_KeypadEnter = 76,
    kVK_Home = 115,
    kVK_PageUp = 116,
    kVK_ForwardDelete = 117,
    kVK_End = 119,
    kVK_PageDown = 121,
    kVK_LeftArrow = 123,
    kVK_RightArrow = 124,
    kVK_DownArrow = 125,
    kVK_UpArrow = 126,
};

// An input event. Immutable once made.
class Event {
  public:
    static std::shared_ptr<Event> mouseEvent(EventType type,
                                             Point locationInWindow,
                                             int clickCount,
                                             uint64_t modifierFlags = 0,
                                             double timestamp = 0,
                                             int windowNumber = 0);
    static std::shared_ptr<Event> keyEvent(EventType type,
                                           uint16_t keyCode,
                                           const std::string& characters,
                                           uint64_t modifierFlags = 0,
                                           double timestamp = 0,
                                           int windowNumber = 0);
    static std::shared_ptr<Event> magnifyEvent(EventType type,
                                               Point locationInWindow,
                                               double magnification,
                                               double timestamp = 0);

    EventType type() const { return type_; }
    // In the window's base coordinates (bottom-left origin, y up, points).
    Point locationInWindow() const { return location_; }
    int clickCount() const { return clickCount_; }
    uint16_t keyCode() const { return keyCode_; }
    const std::string& characters() const { return characters_; }
    uint64_t modifierFlags() const { return modifierFlags_; }
    double timestamp() const { return timestamp_; }
    double magnification() const { return magnification_; }
    int windowNumber() const { return windowNumber_; }

  private:
    Event() = default;
    EventType type_ = EventType::MouseMoved;
    Point location_;
    int clickCount_ = 0;
    uint16_t keyCode_ = 0;
    std::string characters_;
    uint64_t modifierFlags_ = 0;
    double timestamp_ = 0;
    double magnification_ = 0;
    int windowNumber_ = 0;
};

using EventPtr = std::shared_ptr<Event>;

}  // namespace platform
