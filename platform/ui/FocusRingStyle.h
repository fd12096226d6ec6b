#pragma once

#include <QColor>

// The desktop's focus ring, one look for every ring the toolkit draws (a text view's, the
// keyboard focus's): its width and its colour.
namespace platform::focus_ring_style {

inline constexpr double kWidth = 3.0;
inline const QColor kColor(0x3B, 0x99, 0xFC, 128);

}  // namespace platform::focus_ring_style
