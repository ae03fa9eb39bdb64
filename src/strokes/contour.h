// Lines of points on their way to become strokes: the parts of a path, flattened.
#pragma once

#include "language/geometry.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <vector>

namespace strokes {

using language::Point;

/// One part of a path, without curves. A closed one ends with its first point once more.
struct Contour {
    std::vector<Point> points;
    bool isClosed = false;
};

struct Box {
    Point lower{std::numeric_limits<double>::max(), std::numeric_limits<double>::max()};
    Point upper{std::numeric_limits<double>::lowest(), std::numeric_limits<double>::lowest()};

    void add(Point p) {
        lower = {std::min(lower.x, p.x), std::min(lower.y, p.y)};
        upper = {std::max(upper.x, p.x), std::max(upper.y, p.y)};
    }
    bool isEmpty() const { return lower.x > upper.x || lower.y > upper.y; }
    bool isPoint() const { return lower == upper; }
    bool holds(const Box &other, double tolerance = 0) const {
        return other.lower.x >= lower.x - tolerance && other.lower.y >= lower.y - tolerance &&
               other.upper.x <= upper.x + tolerance && other.upper.y <= upper.y + tolerance;
    }
    bool touches(const Box &other) const {
        return lower.x <= other.upper.x && other.lower.x <= upper.x && lower.y <= other.upper.y && other.lower.y <= upper.y;
    }
    Box grown(double by) const { return {{lower.x - by, lower.y - by}, {upper.x + by, upper.y + by}}; }
};

inline Box boxOf(const std::vector<Point> &points) {
    Box box;
    for (Point p : points)
        box.add(p);
    return box;
}

inline Point between(Point from, Point to, double t) { return {from.x + t * (to.x - from.x), from.y + t * (to.y - from.y)}; }

} // namespace strokes
