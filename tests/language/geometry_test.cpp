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

/// Points anywhere, on the area and beyond it on all sides.
class Geometry : public ::testing::Test {
protected:
    double number(double reach) { return std::uniform_real_distribution<double>(-reach, reach)(random_); }
    Point point(double reach) { return {number(reach), number(reach)}; }

    /// Two contours that cross themselves and each other.
    void makePolygon() {
        std::ranges::generate(points_, [this] { return point(60); });
    }

    std::vector<Point> points_ = std::vector<Point>(11);
    const std::vector<size_t> ends_ = {6, 11};

private:
    std::mt19937 random_{4711};
};

bool oddlyInside(std::span<const Point> points, std::span<const size_t> ends, Point p) {
    bool in = false;
    size_t i = 0;
    for (size_t end : ends) {
        for (size_t last = end - 1; i < end; last = i++) {
            const Point a = points[last], b = points[i];
            if ((a.y > p.y) != (b.y > p.y) && p.x < a.x + (p.y - a.y) / (b.y - a.y) * (b.x - a.x)) in = !in;
        }
    }
    return in;
}

double distance(Point a, Point b) { return std::hypot(a.x - b.x, a.y - b.y); }

bool isOn(const Line &l, Point p) { return distance(p, l.from) + distance(p, l.to) < distance(l.from, l.to) + 1e-9; }

TEST_F(Geometry, LinesKeepWhatIsInside) {
    for (int round = 0; round < 2000; ++round) {
        const Point from = point(60), to = point(60);
        Line kept{from, to};
        const bool isVisible = clipLine(kArea, kept.from, kept.to);
        for (double t = 0; t < 1; t += 0.02) {
            const Point p{std::lerp(from.x, to.x, t), std::lerp(from.y, to.y, t)};
            EXPECT_EQ(isVisible && isOn(kept, p), inside(kArea, p)) << p.x << ", " << p.y;
        }
        EXPECT_TRUE(!isVisible || (inside(kArea, kept.from) && inside(kArea, kept.to)));
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
        const double degrees = number(400), radians = degrees * std::numbers::pi / 180;
        const Point anchor = point(100), along{std::cos(radians), std::sin(radians)};
        Hatching hatching(points_, ends_, kArea, anchor, degrees, kSpacing);
        std::vector<Line> all;
        for (int64_t line = 0; line < hatching.lines(); ++line)
            std::ranges::copy(hatching.pieces(line), std::back_inserter(all));
        for (int i = 0; i < 50; ++i) {
            // From anywhere to the next of the lines through multiples of the spacing.
            Point p = point(40);
            const double up = -std::remainder(along.x * (p.y - anchor.y) - along.y * (p.x - anchor.x), kSpacing);
            p = {p.x - up * along.y, p.y + up * along.x};
            if (!inside(kArea, p)) continue; // lines that miss the area altogether are left out
            const bool isDrawn = std::ranges::any_of(all, [p](const Line &l) { return isOn(l, p); });
            EXPECT_EQ(isDrawn, oddlyInside(points_, ends_, p)) << "round " << round << " at " << p.x << ", " << p.y;
        }
    }
}

} // namespace
} // namespace language
