#include "language/hatching.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <numbers>

namespace language {

Hatching::Hatching(std::span<const Point> points, std::span<const size_t> ends, const Rectangle &area, Point anchor,
                   double degrees, double spacing)
    : points_(points), ends_(ends), anchor_(anchor), spacing_(spacing) {
    const double angle = degrees * std::numbers::pi / 180;
    along_ = {std::cos(angle), std::sin(angle)};

    // Only the lines that touch both: a polygon may be far larger than the sheet.
    struct Range {
        double low = std::numeric_limits<double>::max();
        double high = std::numeric_limits<double>::lowest();
        void add(double h) { low = std::min(low, h), high = std::max(high, h); }
    };
    Range polygon, sheet;
    for (Point p : points)
        polygon.add(height(p));
    for (Point p : {area.lower, area.upper, Point{area.lower.x, area.upper.y}, Point{area.upper.x, area.lower.y}}) {
        sheet.add(height(p));
    }
    const double low = std::ceil(std::max(polygon.low, sheet.low) / spacing_);
    const double high = std::floor(std::min(polygon.high, sheet.high) / spacing_);
    if (low <= high) {
        first_ = static_cast<int64_t>(low);
        last_ = static_cast<int64_t>(high);
    }
}

uint64_t Hatching::work() const noexcept { return static_cast<uint64_t>(lines()) * points_.size(); }

std::span<const Line> Hatching::pieces(int64_t line) {
    const double level = static_cast<double>(first_ + line) * spacing_;
    crossings_.clear();
    size_t start = 0;
    for (size_t end : ends_) {
        Point from = points_[end - 1];
        double a = height(from) - level;
        for (size_t i = start; i < end; ++i) {
            const Point to = points_[i];
            const double b = height(to) - level;
            // A vertex on the line belongs to the upper side only, so that it is never counted twice or not at all.
            if ((a < 0) != (b < 0)) {
                const double t = a / (a - b);
                const Point p{from.x + t * (to.x - from.x), from.y + t * (to.y - from.y)};
                crossings_.push_back(along_.x * (p.x - anchor_.x) + along_.y * (p.y - anchor_.y));
            }
            from = to;
            a = b;
        }
        start = end;
    }
    std::sort(crossings_.begin(), crossings_.end());
    pieces_.clear();
    auto place = [&](double way) {
        return Point{anchor_.x + way * along_.x - level * along_.y, anchor_.y + way * along_.y + level * along_.x};
    };
    for (size_t i = 0; i + 1 < crossings_.size(); i += 2) {
        pieces_.push_back({place(crossings_[i]), place(crossings_[i + 1])});
    }
    if (line % 2 != 0) {
        std::reverse(pieces_.begin(), pieces_.end());
        for (Line &piece : pieces_)
            std::swap(piece.from, piece.to);
    }
    return pieces_;
}

} // namespace language
