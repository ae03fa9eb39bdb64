// Leaving out points: one look at each, however long the line.
#include "strokes/simplify.h"
#include "strokes/measure.h"

#include <algorithm>
#include <cmath>
#include <numbers>

namespace strokes {

namespace {

/// What a line from a fixed point may do so as to pass all points behind it within the tolerance: the directions are those
/// between two bounds, and it must not end short of the farthest of them.
class Fan {
public:
    Fan(Point from, double tolerance) : from_(from), tolerance_(tolerance) {}

    /// True when the line may end there.
    bool reaches(Point to) const {
        if (!isBound_) return true;
        return distance(from_, to) >= farthest_ && turnTo(to) >= right_ && turnTo(to) <= left_;
    }

    /// From now on the line must pass there, too.
    void pass(Point by) {
        const double length = distance(from_, by);
        if (length <= tolerance_) return; // wherever it goes, it begins near enough
        farthest_ = std::max(farthest_, length);
        const double half = std::asin(tolerance_ / length);
        if (!isBound_) {
            isBound_ = true;
            middle_ = std::atan2(by.y - from_.y, by.x - from_.x);
        }
        const double turn = turnTo(by);
        right_ = std::max(right_, turn - half);
        left_ = std::min(left_, turn + half);
    }

private:
    /// From the direction of the first bounding point, counter-clockwise, within half a turn either way.
    double turnTo(Point p) const {
        return std::remainder(std::atan2(p.y - from_.y, p.x - from_.x) - middle_, 2 * std::numbers::pi);
    }

    Point from_;
    double tolerance_;
    double farthest_ = 0;
    bool isBound_ = false;
    double middle_ = 0, right_ = -std::numbers::pi, left_ = std::numbers::pi;
};

std::vector<Point> simplified(const std::vector<Point> &points, double tolerance) {
    std::vector<Point> kept{points.front()};
    Fan fan(points.front(), tolerance);
    for (size_t i = 1; i < points.size(); ++i) {
        if (!fan.reaches(points[i])) {
            kept.push_back(points[i - 1]);
            fan = Fan(points[i - 1], tolerance);
        }
        fan.pass(points[i]);
    }
    if (points.size() > 1) kept.push_back(points.back());
    return kept;
}

} // namespace

void simplify(Drawing &drawing, double tolerance) {
    for (Stroke &stroke : drawing.strokes)
        stroke.points = simplified(stroke.points, tolerance);
}

} // namespace strokes
