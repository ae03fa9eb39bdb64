// HP-GL's polygon buffer: contours that wait to be filled or outlined. Its size is limited, as a plotter's is, so that a
// definition without end cannot take all memory.
#pragma once

#include "language/geometry.h"

#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

namespace language {

/// Contours in plotter units. Each vertex knows whether the pen was down on the way to it: only such edges are outlined,
/// while all of them bound the filled area. What does not fit is counted and left out.
class PolygonBuffer {
public:
    static constexpr size_t kMaxVertices = 200'000;

    void clear() noexcept {
        points_.clear();
        edges_.clear();
        ends_.clear();
        open_ = false;
    }

    /// Begins a contour when none is open.
    void add(Point p, bool penDown, uint64_t &lost) {
        if (points_.size() >= kMaxVertices) {
            ++lost;
            return;
        }
        points_.push_back(p);
        edges_.push_back(penDown);
        open_ = true;
    }

    /// Closes the contour, if one is open: goes back to its first vertex, unless it is there. A single vertex is dropped.
    void close(bool penDown) {
        if (!open_) return;
        open_ = false;
        const size_t start = ends_.empty() ? 0 : ends_.back();
        if (points_.size() - start < 2) {
            points_.resize(start);
            edges_.resize(start);
            return;
        }
        if (points_.back() != points_[start]) {
            points_.push_back(points_[start]);
            edges_.push_back(penDown);
        }
        ends_.push_back(points_.size());
    }

    bool open() const noexcept { return open_; }
    std::span<const Point> points() const noexcept { return points_; }
    /// Index behind the last vertex of each closed contour.
    std::span<const size_t> ends() const noexcept { return ends_; }
    bool edge(size_t vertex) const noexcept { return edges_[vertex] != 0; }

private:
    std::vector<Point> points_;
    std::vector<uint8_t> edges_;
    std::vector<size_t> ends_;
    bool open_ = false;
};

} // namespace language
