#pragma once

#include <string>

namespace platform {

// Geometry in points, 64-bit floats. Our coordinate spaces have their origin at the bottom-left
// corner and y growing upward.
struct Point {
    double x = 0;
    double y = 0;
    bool operator==(const Point& o) const { return x == o.x && y == o.y; }
    bool operator!=(const Point& o) const { return !(*this == o); }
};

struct Size {
    double width = 0;
    double height = 0;
    bool operator==(const Size& o) const { return width == o.width && height == o.height; }
    bool operator!=(const Size& o) const { return !(*this == o); }
};

struct Rect {
    Point origin;
    Size size;

    double minX() const { return origin.x; }
    double minY() const { return origin.y; }
    double maxX() const { return origin.x + size.width; }
    double maxY() const { return origin.y + size.height; }
    double midX() const { return origin.x + size.width / 2; }
    double midY() const { return origin.y + size.height / 2; }
    bool isEmpty() const { return size.width <= 0 || size.height <= 0; }
    bool operator==(const Rect& o) const { return origin == o.origin && size == o.size; }
    bool operator!=(const Rect& o) const { return !(*this == o); }
};

inline Point NSMakePoint(double x, double y) {
    return {x, y};
}
inline Size NSMakeSize(double w, double h) {
    return {w, h};
}
inline Rect NSMakeRect(double x, double y, double w, double h) {
    return {{x, y}, {w, h}};
}
inline const Rect NSZeroRect{};

// Half-open: minX <= x < maxX and minY <= y < maxY.
bool NSPointInRect(Point point, const Rect& rect);
Rect NSIntersectionRect(const Rect& a, const Rect& b);
Rect NSOffsetRect(const Rect& rect, double dx, double dy);

// The one conversion between our coordinates and top-left ones. Ours have the origin at the
// bottom-left corner and y growing upward; top-left ones (Qt's, the window server's, a text
// layout's, a picture's rows) have the origin at the top-left corner and y growing downward.
// |point| and |rect| are in either space of an area |height| units tall (its width plays no
// part); the result is the same point or rect in the other space. The flip is its own inverse,
// so one call serves both ways.
Point flippedPoint(Point point, double height);
Rect flippedRect(const Rect& rect, double height);

// "{{x, y}, {w, h}}" with the shortest text that reads back to the same doubles.
std::string NSStringFromRect(const Rect& rect);
std::string NSStringFromPoint(Point point);
std::string NSStringFromSize(Size size);

}  // namespace platform
