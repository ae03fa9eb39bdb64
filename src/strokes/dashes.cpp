#include "strokes/dashes.h"

#include <numeric>

namespace strokes {

namespace {

constexpr double kLeastPeriod = 0.1; // millimetres: a dash and a gap of pens' usual widths need several times that
constexpr double kMostPeriods = 1e6;

/// Where a line is in its pattern.
class Walker {
public:
    explicit Walker(const DashPattern &pattern) : lengths_(pattern.lengths) {
        if (lengths_.size() % 2 != 0) lengths_.insert(lengths_.end(), pattern.lengths.begin(), pattern.lengths.end());
        const double period = std::accumulate(lengths_.begin(), lengths_.end(), 0.0);
        left_ = lengths_[0];
        double skipped = std::fmod(pattern.offset, period);
        if (skipped < 0) skipped += period;
        while (skipped >= left_ && skipped > 0) {
            skipped -= left_;
            next();
        }
        left_ -= skipped;
    }

    bool isDrawn() const { return index_ % 2 == 0; }
    double left() const { return left_; }
    void walk(double way) { left_ -= way; }
    void next() {
        index_ = (index_ + 1) % lengths_.size();
        left_ = lengths_[index_];
    }

private:
    std::vector<double> lengths_;
    size_t index_ = 0;
    double left_ = 0;
};

double lengthIn(const Affine &turn, Point from, Point to) {
    const Point way = turn({to.x - from.x, to.y - from.y});
    return std::hypot(way.x, way.y);
}

bool isPlotted(const DashPattern &pattern, const std::vector<Point> &points, const Affine &toPage) {
    const auto &lengths = pattern.lengths;
    const double period = std::accumulate(lengths.begin(), lengths.end(), 0.0);
    const double scale = std::sqrt(std::abs(toPage.determinant()));
    const bool isGood = std::all_of(lengths.begin(), lengths.end(), [](double length) { return length >= 0; });
    if (!isGood || !std::isfinite(pattern.offset) || !(period * scale >= kLeastPeriod)) return false;
    double way = 0;
    for (size_t i = 1; i < points.size(); ++i)
        way += lengthIn(toPage.inverseTurn(), points[i - 1], points[i]);
    return way / period <= kMostPeriods;
}

} // namespace

std::vector<std::vector<Point>> dashed(const std::vector<Point> &points, const DashPattern &pattern, const Affine &toPage) {
    if (!isPlotted(pattern, points, toPage)) return {points};
    const Affine toUser = toPage.inverseTurn();
    std::vector<std::vector<Point>> dashes;
    Walker walker(pattern);
    bool isDown = false;
    auto to = [&](Point p) {
        if (!walker.isDrawn()) return;
        if (!isDown) dashes.emplace_back();
        if (dashes.back().empty() || dashes.back().back() != p) dashes.back().push_back(p);
        isDown = true;
    };
    for (size_t i = 1; i < points.size(); ++i) {
        const double length = lengthIn(toUser, points[i - 1], points[i]);
        double done = 0;
        to(points[i - 1]);
        while (length - done > walker.left()) {
            done += walker.left();
            to(between(points[i - 1], points[i], done / length));
            walker.next();
            isDown = false;
            to(between(points[i - 1], points[i], done / length));
        }
        walker.walk(length - done);
        to(points[i]);
    }
    return dashes;
}

} // namespace strokes
