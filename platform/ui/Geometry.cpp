#include "platform/ui/Geometry.h"

#include <algorithm>
#include <charconv>

namespace platform {

namespace {

// Shortest text that reads back to the same double ("10", "0.5", "2.25").
std::string formatNumber(double value) {
    char buffer[64];
    auto result = std::to_chars(buffer, buffer + sizeof buffer, value);
    return std::string(buffer, result.ptr);
}

}  // namespace

bool NSPointInRect(Point point, const Rect& rect) {
    return point.x >= rect.minX() && point.x < rect.maxX() && point.y >= rect.minY() &&
           point.y < rect.maxY();
}

Rect NSIntersectionRect(const Rect& a, const Rect& b) {
    double minX = std::max(a.minX(), b.minX());
    double minY = std::max(a.minY(), b.minY());
    double maxX = std::min(a.maxX(), b.maxX());
    double maxY = std::min(a.maxY(), b.maxY());
    if (maxX <= minX || maxY <= minY)
        return NSZeroRect;
    return NSMakeRect(minX, minY, maxX - minX, maxY - minY);
}

Rect NSOffsetRect(const Rect& rect, double dx, double dy) {
    return NSMakeRect(rect.origin.x + dx, rect.origin.y + dy, rect.size.width, rect.size.height);
}

Point flippedPoint(Point point, double height) {
    return {point.x, height - point.y};
}

Rect flippedRect(const Rect& rect, double height) {
    return {{rect.origin.x, height - rect.origin.y - rect.size.height}, rect.size};
}

std::string NSStringFromPoint(Point point) {
    return "{" + formatNumber(point.x) + ", " + formatNumber(point.y) + "}";
}

std::string NSStringFromSize(Size size) {
    return "{" + formatNumber(size.width) + ", " + formatNumber(size.height) + "}";
}

std::string NSStringFromRect(const Rect& rect) {
    return "{" + NSStringFromPoint(rect.origin) + ", " + NSStringFromSize(rect.size) + "}";
}

}  // namespace platform
