#include "language/clip.h"

#include <algorithm>

namespace language {

Rectangle rectangleOf(Point one, Point other) noexcept {
    return {{std::min(one.x, other.x), std::min(one.y, other.y)}, {std::max(one.x, other.x), std::max(one.y, other.y)}};
}

Rectangle intersection(const Rectangle &a, const Rectangle &b) noexcept {
    return {{std::max(a.lower.x, b.lower.x), std::max(a.lower.y, b.lower.y)},
            {std::min(a.upper.x, b.upper.x), std::min(a.upper.y, b.upper.y)}};
}

bool clipLine(const Rectangle &area, Point &from, Point &to) noexcept {
    // Liang and Barsky: the line is from + t * step, and each edge allows t to one side of where it is crossed.
    const Point start = from;
    const Point step{to.x - from.x, to.y - from.y};
    double first = 0;
    double last = 1;
    auto edge = [&](double rate, double room) {
        if (rate == 0) return room >= 0;
        const double t = room / rate;
        if (rate < 0)
            first = std::max(first, t);
        else
            last = std::min(last, t);
        return first <= last;
    };
    if (!edge(-step.x, start.x - area.lower.x) || !edge(step.x, area.upper.x - start.x) ||
        !edge(-step.y, start.y - area.lower.y) || !edge(step.y, area.upper.y - start.y)) {
        return false;
    }
    // Rounding must not leave a point just outside, not even one that needed no cut.
    auto within = [&](Point p) {
        return Point{std::clamp(p.x, area.lower.x, area.upper.x), std::clamp(p.y, area.lower.y, area.upper.y)};
    };
    if (last < 1) to = {start.x + last * step.x, start.y + last * step.y};
    if (first > 0) from = {start.x + first * step.x, start.y + first * step.y};
    from = within(from);
    to = within(to);
    return true;
}

namespace {

/// Cuts a closed contour at a line parallel to an axis. Keeps the part where the coordinate Axis is at least bound (Sign 1)
/// or at most bound (Sign -1).
template <double Point::*Axis, int Sign> void cutAt(double bound, const std::vector<Point> &from, std::vector<Point> &to) {
    to.clear();
    if (from.empty()) return;
    auto depth = [bound](Point p) { return Sign * (p.*Axis - bound); };
    Point last = from.back();
    for (Point next : from) {
        const double a = depth(last);
        const double b = depth(next);
        if ((a < 0) != (b < 0)) {
            const double t = a / (a - b);
            Point crossing{last.x + t * (next.x - last.x), last.y + t * (next.y - last.y)};
            crossing.*Axis = bound;
            to.push_back(crossing);
        }
        if (b >= 0) to.push_back(next);
        last = next;
    }
}

} // namespace

void PolygonClipper::clip(const Rectangle &area, std::span<const Point> points, std::span<const size_t> ends) {
    points_.clear();
    ends_.clear();
    size_t start = 0;
    for (size_t end : ends) {
        from_.assign(points.begin() + static_cast<std::ptrdiff_t>(start), points.begin() + static_cast<std::ptrdiff_t>(end));
        start = end;
        if (!std::all_of(from_.begin(), from_.end(), [&](Point p) { return inside(area, p); })) {
            cutAt<&Point::x, 1>(area.lower.x, from_, to_);
            cutAt<&Point::x, -1>(area.upper.x, to_, from_);
            cutAt<&Point::y, 1>(area.lower.y, from_, to_);
            cutAt<&Point::y, -1>(area.upper.y, to_, from_);
            // The other coordinate of a crossing far out may have lost some digits.
            for (Point &p : from_) {
                p = {std::clamp(p.x, area.lower.x, area.upper.x), std::clamp(p.y, area.lower.y, area.upper.y)};
            }
        }
        if (from_.size() < 3) continue;
        points_.insert(points_.end(), from_.begin(), from_.end());
        ends_.push_back(points_.size());
    }
}

} // namespace language
