// Parallel lines across a polygon, for hatched fills. They are made one at a time: a plot can ask for so many that all of
// them would not fit into memory, and work() tells beforehand what they would cost.
#pragma once

#include "language/geometry.h"

#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

namespace language {

struct Line {
    Point from;
    Point to;
};

/// The lines of a hatching: all that cross both the polygon and an area, at a distance from each other, one of them through
/// an anchor. The spacing must not be 0.
class Hatching {
public:
    Hatching(std::span<const Point> points, std::span<const size_t> ends, const Rectangle &area, Point anchor,
             double degrees, double spacing);

    /// How many edges all the lines will be tried against.
    uint64_t work() const noexcept;
    int64_t lines() const noexcept { return last_ - first_ + 1; }
    /// The pieces of one line within the polygon (even-odd), 0 <= line < lines(); valid until the next call. Every other
    /// line runs backwards, as a pen does that goes to and fro.
    std::span<const Line> pieces(int64_t line);

private:
    double height(Point p) const noexcept { return along_.x * (p.y - anchor_.y) - along_.y * (p.x - anchor_.x); }

    std::span<const Point> points_;
    std::span<const size_t> ends_;
    Point anchor_;
    double spacing_;
    Point along_; // unit vector
    int64_t first_ = 0, last_ = -1;
    std::vector<double> crossings_;
    std::vector<Line> pieces_;
};

} // namespace language
