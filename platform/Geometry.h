#pragma once

namespace Platform {

/// Lengths and places in points; y grows downwards.
struct Size {
    double width = 0;
    double height = 0;

    bool operator==(const Size&) const = default;
};

struct Point {
    double x = 0;
    double y = 0;

    bool operator==(const Point&) const = default;
};

struct Rect {
    double x = 0;
    double y = 0;
    double width = 0;
    double height = 0;

    bool contains(const Point& point) const {
        return point.x >= x && point.x < x + width && point.y >= y && point.y < y + height;
    }
    bool operator==(const Rect&) const = default;
};

} // namespace Platform
