// Readable failure messages for geometry values in the view tests.
#pragma once

#include <ostream>

#include "platform/ui/Geometry.h"

namespace platform {

inline void PrintTo(const Point& point, std::ostream* out) {
    *out << NSStringFromPoint(point);
}
inline void PrintTo(const Size& size, std::ostream* out) {
    *out << NSStringFromSize(size);
}
inline void PrintTo(const Rect& rect, std::ostream* out) {
    *out << NSStringFromRect(rect);
}

}  // namespace platform
