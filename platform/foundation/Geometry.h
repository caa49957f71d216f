#pragma once

// Lengths in points, y growing upward, the origin at the bottom left of the primary screen area.
namespace platform {

struct Point {
    double x = 0;
    double y = 0;
    bool operator==(Point const&) const = default;
};

struct Size {
    double width = 0;
    double height = 0;
    bool operator==(Size const&) const = default;
};

struct Rect {
    double x = 0;
    double y = 0;
    double width = 0;
    double height = 0;

    double minX() const { return x; }
    double midX() const { return x + width / 2; }
    double maxX() const { return x + width; }
    double minY() const { return y; }
    double midY() const { return y + height / 2; }
    double maxY() const { return y + height; }
    Size size() const { return { width, height }; }

    bool operator==(Rect const&) const = default;
};

} // namespace platform
