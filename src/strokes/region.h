// Areas, which clip lines and hide them. Where a line is within an area is found edge by edge, not by the library that
// combines areas: that one sweeps over all of them anew for each line, which took forty times as long, and keeps or loses
// lines along an edge by the side that they are on. Here such a line counts as inside an area that clips and as outside one
// that hides: nothing that is on the border is lost.
#pragma once

#include "strokes/contour.h"

#include <cstdint>
#include <memory>
#include <span>
#include <vector>

namespace strokes {

enum class FillRule { NonZero, EvenOdd };

/// What a line along the border is taken for.
enum class Border { Inside, Outside };

/// How far from the border, in millimetres, a line still counts as along it: less than a plotter can tell apart, more than
/// two flattenings of one curve differ.
constexpr double kBorder = 0.01;

/// Part of a line, as shares of its length: 0 <= from < to <= 1.
struct Share {
    double from, to;
};

class Region {
public:
    explicit Region(const Box &rectangle) : box_(rectangle), isRectangle_(true) {}
    /// Contours are closed, whether marked so or not; those of fewer than three points are left out.
    Region(const std::vector<Contour> &contours, FillRule rule);

    const Box &box() const { return box_; }
    bool isEmpty() const { return box_.isEmpty(); }
    bool isRectangle() const { return isRectangle_; }
    /// Closed, for a rectangle too.
    std::vector<Contour> contours() const;

    /// Whether all of a box is inside, along a rectangle's border too. False also where that takes more than a look at the
    /// edges near the box. Adds to work how many those were.
    bool surrounds(const Box &box, size_t &work) const;

    /// Adds the parts of a line that are inside, in the line's order; a line of no length is inside whole or not at all.
    /// Returns how many edges it had to look at.
    size_t within(Point from, Point to, Border border, std::vector<Share> &parts) const;

    /// About how many steps a sweep over its edges takes: edges, times those that a sweep line crosses.
    size_t sweep() const { return sweep_; }

    /// Whether some of its contours may run through the inside.
    bool mayHoldLines() const { return rule_ == FillRule::NonZero && edges_.size() > 3; }

    friend Region intersection(const Region &a, const Region &b);
    friend Region united(const Region &region);

private:
    struct Edge {
        Point from, to;
    };
    struct Line;

    size_t withinEdges(const Line &line, Border border, std::vector<Share> &parts) const;
    size_t crossings(const Line &line, std::vector<double> &at) const;
    bool holds(Point p, size_t &looked) const;
    bool isAtBorder(Point p, size_t &looked) const;
    void turn();
    Point turned(Point p) const { return isTurned_ ? Point{p.y, p.x} : p; }
    void sortIntoBands();
    size_t bandOf(double y) const;
    std::span<const uint32_t> band(size_t index) const;

    Box box_;
    bool isRectangle_ = false;
    FillRule rule_ = FillRule::NonZero;
    size_t sweep_ = 4;
    bool isTurned_ = false; ///< in the edges x and y are exchanged
    std::vector<Edge> edges_;
    std::vector<uint32_t> ends_; ///< index behind each contour's last edge
    // Horizontal bands of equal height, each with the edges that reach into it; as many as keep the lists in proportion to
    // the edges.
    struct {
        double lower = 0, upper = 0;
    } bands_;
    std::vector<uint32_t> bandStarts_, banded_;
};

/// What both hold. Takes the sum of both sweeps, and more where edges cross.
Region intersection(const Region &a, const Region &b);

/// The same area, with its border alone for contours. Takes its sweep, and more where edges cross.
Region united(const Region &region);

/// Joins the visible shares of segment after segment to lines.
class VisibleParts {
public:
    /// The next segment; its beginning is the end of the one before.
    void add(Point from, Point to, std::span<const Share> visible);
    /// Of a closed line, a piece that goes on over its first point is one.
    std::vector<std::vector<Point>> take();

private:
    std::vector<std::vector<Point>> pieces_;
    bool goesOn_ = false; ///< the last piece reaches the end of the segment before
};

/// What is visible of a line of points, or of a dot: visible(from, to) tells the shares of a segment.
template <class Visible> std::vector<std::vector<Point>> visibleParts(const std::vector<Point> &points, Visible visible) {
    VisibleParts pieces;
    if (points.size() == 1) pieces.add(points[0], points[0], visible(points[0], points[0]));
    for (size_t i = 1; i < points.size(); ++i)
        pieces.add(points[i - 1], points[i], visible(points[i - 1], points[i]));
    return pieces.take();
}

/// The parts of a line of points that are inside a region, as lines of their own. Adds to work how many edges it had to look
/// at.
std::vector<std::vector<Point>> clipped(const std::vector<Point> &points, const Region &region, size_t &work);

} // namespace strokes
