// Clipping and hatching against the plain definition: a point is inside when a ray from it crosses the contours an odd
// number of times.
#include "language/clip.h"
#include "language/hatching.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <numbers>
#include <random>

namespace language {
namespace {

constexpr Rectangle kArea{{-30, -20}, {40, 35}};

bool oddlyInside(std::span<const Point> points, std::span<const size_t> ends, Point p) {
    bool in = false;
    size_t start = 0;
    for (size_t end : ends) {
        for (size_t i = start, last = end - 1; i < end; last = i++) {
            const Point a = points[last];
            const Point b = points[i];
            if ((a.y > p.y) != (b.y > p.y) && p.x < a.x + (p.y - a.y) / (b.y - a.y) * (b.x - a.x)) in = !in;
        }
        start = end;
    }
    return in;
}

class Geometry : public ::testing::Test {
protected:
    double number(double least, double most) { return std::uniform_real_distribution<double>(least, most)(random_); }
    Point point(double reach) { return {number(-reach, reach), number(-reach, reach)}; }

    /// Two contours that cross themselves and each other, reaching beyond the area on all sides.
    void makePolygon() {
        points_.clear();
        for (int i = 0; i < 11; ++i)
            points_.push_back(point(60));
        ends_ = {6, points_.size()};
    }

    std::mt19937 random_{4711};
    std::vector<Point> points_;
    std::vector<size_t> ends_;
};

TEST_F(Geometry, LinesKeepWhatIsInside) {
    for (int round = 0; round < 2000; ++round) {
        const Point from = point(60);
        const Point to = point(60);
        Point a = from;
        Point b = to;
        const bool visible = clipLine(kArea, a, b);
        for (int i = 0; i <= 50; ++i) {
            const double t = i / 50.0;
            const Point p{from.x + t * (to.x - from.x), from.y + t * (to.y - from.y)};
            // On the way from one clipped end to the other, with some room for what is right at the edge.
            const bool kept = visible && std::hypot(p.x - a.x, p.y - a.y) + std::hypot(p.x - b.x, p.y - b.y) <
                                             std::hypot(b.x - a.x, b.y - a.y) + 1e-9;
            const bool within = inside(kArea, p);
            const double toEdge = std::min({p.x + 30, 40 - p.x, p.y + 20, 35 - p.y});
            EXPECT_TRUE(within == kept || std::abs(toEdge) < 1e-6) << p.x << ", " << p.y;
        }
        EXPECT_TRUE(!visible || (inside(kArea, a) && inside(kArea, b)));
    }
}

TEST_F(Geometry, PolygonsKeepWhatIsInside) {
    PolygonClipper clipper;
    for (int round = 0; round < 500; ++round) {
        makePolygon();
        clipper.clip(kArea, points_, ends_);
        for (Point p : clipper.points())
            EXPECT_TRUE(inside(kArea, p));
        for (int i = 0; i < 100; ++i) {
            const Point p = point(60);
            EXPECT_EQ(oddlyInside(clipper.points(), clipper.ends(), p), inside(kArea, p) && oddlyInside(points_, ends_, p))
                << "round " << round << " at " << p.x << ", " << p.y;
        }
    }
}

TEST_F(Geometry, HatchingCoversWhatIsInside) {
    constexpr double kSpacing = 3;
    for (int round = 0; round < 200; ++round) {
        makePolygon();
        const double degrees = number(-400, 400);
        const Point anchor = point(100);
        const Point along{std::cos(degrees * std::numbers::pi / 180), std::sin(degrees * std::numbers::pi / 180)};
        Hatching hatching(points_, ends_, kArea, anchor, degrees, kSpacing);
        std::vector<Line> all;
        for (int64_t line = 0; line < hatching.lines(); ++line) {
            const auto pieces = hatching.pieces(line);
            all.insert(all.end(), pieces.begin(), pieces.end());
        }
        for (int i = 0; i < 50; ++i) {
            // From anywhere to the next of the lines through multiples of the spacing.
            Point p = point(40);
            const double height = along.x * (p.y - anchor.y) - along.y * (p.x - anchor.x);
            const double up = std::round(height / kSpacing) * kSpacing - height;
            p = {p.x - up * along.y, p.y + up * along.x};
            if (!inside(kArea, p)) continue; // lines that miss the area altogether are left out
            const bool drawn = std::any_of(all.begin(), all.end(), [p](const Line &l) {
                return std::hypot(p.x - l.from.x, p.y - l.from.y) + std::hypot(p.x - l.to.x, p.y - l.to.y) <
                       std::hypot(l.to.x - l.from.x, l.to.y - l.from.y) + 1e-9;
            });
            EXPECT_EQ(drawn, oddlyInside(points_, ends_, p)) << "round " << round << " at " << p.x << ", " << p.y;
        }
    }
}

} // namespace
} // namespace language
