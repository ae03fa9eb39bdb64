#include "strokes/twins.h"

#include "strokes/region.h"

#include <bit>

namespace strokes {

namespace {

constexpr double kCell = 25 * kBorder; // so that most strokes are looked for in one cell alone
constexpr int kMostLooks = 16;         // at lines in one place
constexpr int kMostStarts = 4;         // of one line along another

bool isSame(Point a, Point b) { return std::abs(a.x - b.x) <= kBorder && std::abs(a.y - b.y) <= kBorder; }

bool isClosed(const std::vector<Point> &points) { return points.size() > 2 && isSame(points.front(), points.back()); }

/// Whether all points of the line are those of the other from there on, forwards or backwards, round after round.
bool runsAlong(const std::vector<Point> &line, const std::vector<Point> &other, size_t from, bool isBack, size_t round) {
    for (size_t i = 0; i < round; ++i)
        if (!isSame(line[i], other[(isBack ? from + round - i : from + i) % round])) return false;
    return true;
}

} // namespace

bool coincide(const std::vector<Point> &a, const std::vector<Point> &b) {
    const bool areClosed = isClosed(a);
    if (a.size() != b.size() || areClosed != isClosed(b)) return false;
    const size_t last = a.size() - 1;
    if (!areClosed) return runsAlong(a, b, 0, false, a.size()) || runsAlong(a, b, last, true, a.size());
    int looks = 0;
    for (size_t from = 0; from < last && looks < kMostStarts; ++from) {
        if (!isSame(a[0], b[from])) continue;
        ++looks;
        if (runsAlong(a, b, from, false, last) || runsAlong(a, b, from, true, last)) return true;
    }
    return false;
}

Twins::Cell Twins::cellOf(Point p) {
    return {static_cast<int64_t>(std::floor(p.x / kCell)), static_cast<int64_t>(std::floor(p.y / kCell))};
}

Twins::Twins(size_t count) : first_(std::bit_ceil(count + 1)) { entries_.reserve(count); }

size_t Twins::placeOf(Cell cell, size_t points) const {
    constexpr uint64_t kMix = 0x9E3779B97F4A7C15; // 2^64 by the golden ratio: spreads neighbours
    uint64_t hash = points;
    for (const int64_t part : {cell.x, cell.y})
        hash = (hash ^ static_cast<uint64_t>(part)) * kMix;
    return hash >> 32 & (first_.size() - 1);
}

bool Twins::isIn(size_t place, const Stroke &stroke, bool isOutline) const {
    int looks = 0;
    for (uint32_t at = first_[place]; at > 0 && looks < kMostLooks; at = entries_[at - 1].next, ++looks) {
        const Stroke &other = *entries_[at - 1].stroke;
        if ((isOutline || stroke.colour == other.colour) && coincide(stroke.points, other.points)) return true;
    }
    return false;
}

bool Twins::has(const Stroke &stroke, bool isOutline) {
    const Point corner = boxOf(stroke.points).lower;
    const size_t points = stroke.points.size();
    const Cell least = cellOf({corner.x - kBorder, corner.y - kBorder}),
               most = cellOf({corner.x + kBorder, corner.y + kBorder});
    for (int64_t x = least.x; x <= most.x; ++x)
        for (int64_t y = least.y; y <= most.y; ++y)
            if (isIn(placeOf({x, y}, points), stroke, isOutline)) return true;
    uint32_t &first = first_[placeOf(cellOf(corner), points)];
    entries_.push_back({&stroke, first});
    first = static_cast<uint32_t>(entries_.size());
    return false;
}

} // namespace strokes
