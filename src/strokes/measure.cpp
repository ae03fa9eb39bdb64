#include "strokes/measure.h"

#include <algorithm>
#include <cmath>

namespace strokes {

std::optional<Rectangle> extentOf(const Drawing &drawing) {
    std::optional<Rectangle> extent;
    for (const Stroke &stroke : drawing.strokes) {
        for (Point p : stroke.points) {
            if (!extent) extent = {p, p};
            extent->lower = {std::min(extent->lower.x, p.x), std::min(extent->lower.y, p.y)};
            extent->upper = {std::max(extent->upper.x, p.x), std::max(extent->upper.y, p.y)};
        }
    }
    return extent;
}

double distance(Point a, Point b) noexcept { return std::sqrt((b.x - a.x) * (b.x - a.x) + (b.y - a.y) * (b.y - a.y)); }

Travel travelOf(const Drawing &drawing) {
    Travel travel;
    Point at;
    for (const Stroke &stroke : drawing.strokes) {
        travel.up += distance(at, stroke.points.front());
        at = stroke.points.front();
        for (Point p : stroke.points) {
            travel.down += distance(at, p);
            at = p;
        }
    }
    return travel;
}

} // namespace strokes
