// Cutting lines and polygons at a rectangle: a plot may draw far outside the sheet, and what receives the strokes is
// promised points within it. Results never lie outside by a rounding error either.
#pragma once

#include "language/geometry.h"

#include <cstddef>
#include <span>
#include <vector>

namespace language {

inline bool inside(const Rectangle &area, Point p) noexcept {
    return p.x >= area.lower.x && p.x <= area.upper.x && p.y >= area.lower.y && p.y <= area.upper.y;
}

/// The rectangle between any two opposite corners.
Rectangle rectangleOf(Point one, Point other) noexcept;

/// What both have in common. It may be empty: lower is above upper then.
Rectangle intersection(const Rectangle &a, const Rectangle &b) noexcept;

/// Shortens the line to its part within area; false when there is none. The ends must be finite.
bool clipLine(const Rectangle &area, Point &from, Point &to) noexcept;

/// Cuts closed contours at the rectangle, keeping its memory from call to call. The result may run along the rectangle's
/// edges where the polygon leaves and comes back, which no fill shows.
class PolygonClipper {
public:
    /// ends: index behind each contour's last point.
    void clip(const Rectangle &area, std::span<const Point> points, std::span<const size_t> ends);
    std::span<const Point> points() const noexcept { return points_; }
    std::span<const size_t> ends() const noexcept { return ends_; }

private:
    std::vector<Point> points_;
    std::vector<size_t> ends_;
    std::vector<Point> from_, to_; // one contour, before and after one edge of the rectangle
};

} // namespace language
