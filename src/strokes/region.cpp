#include "strokes/region.h"

#include <clipper.hpp>
#include <optional>

namespace strokes {

namespace {

constexpr double kClipperUnits = 1e4; // to a millimetre: a hundredth of what a plotter can tell apart
constexpr double kLeastLength = 1e-6; // millimetres

double cross(Point a, Point b) { return a.x * b.y - a.y * b.x; }
Point minus(Point a, Point b) { return {a.x - b.x, a.y - b.y}; }

double distance(Point p, Point from, Point to) {
    const Point along = minus(to, from), way = minus(p, from);
    const double length = along.x * along.x + along.y * along.y;
    const double t = length > 0 ? std::clamp((along.x * way.x + along.y * way.y) / length, 0.0, 1.0) : 0;
    return std::hypot(way.x - t * along.x, way.y - t * along.y);
}

/// Where the two lines cross, as a share of the first, when they do or nearly do within both.
void addCrossing(Point from, Point along, Point edgeFrom, Point edgeTo, std::vector<double> &at) {
    constexpr double kSlack = 1e-9; // a crossing too many divides a line in vain, one too few is a fault
    const Point edge = minus(edgeTo, edgeFrom), way = minus(edgeFrom, from);
    const double across = cross(along, edge);
    if (across == 0) return; // its neighbours cross where it begins and ends
    const double t = cross(way, edge) / across, u = cross(way, along) / across;
    if (t > 0 && t < 1 && u >= -kSlack && u <= 1 + kSlack) at.push_back(t);
}

/// Sorts what begins with 0, ends it with 1, and leaves out what is nearer to another than least.
void thinOut(std::vector<double> &at, double least) {
    std::sort(at.begin(), at.end());
    const auto last = std::unique(at.begin(), at.end(), [least](double a, double b) { return b - a < least; });
    at.erase(std::find_if(at.begin() + 1, last, [least](double t) { return t > 1 - least; }), at.end());
    at.push_back(1);
}

/// A rectangle along the axes, if the contours are that alone.
std::optional<Box> rectangleOf(const std::vector<Contour> &contours) {
    if (contours.size() != 1) return {};
    std::vector<Point> p = contours[0].points;
    if (p.size() == 5 && p[4] == p[0]) p.pop_back();
    if (p.size() != 4) return {};
    const bool isUpright = p[0].x == p[1].x && p[1].y == p[2].y && p[2].x == p[3].x && p[3].y == p[0].y;
    const bool isFlat = p[0].y == p[1].y && p[1].x == p[2].x && p[2].y == p[3].y && p[3].x == p[0].x;
    return isUpright || isFlat ? std::optional(boxOf(p)) : std::nullopt;
}

ClipperLib::IntPoint turned(ClipperLib::IntPoint p, bool isTurned) { return isTurned ? ClipperLib::IntPoint(p.Y, p.X) : p; }

/// isTurned: with x and y exchanged.
ClipperLib::Paths clipperPaths(const std::vector<Contour> &contours, bool isTurned) {
    ClipperLib::Paths paths;
    for (const Contour &contour : contours) {
        auto &path = paths.emplace_back();
        for (Point p : contour.points)
            path.push_back(turned({std::llround(p.x * kClipperUnits), std::llround(p.y * kClipperUnits)}, isTurned));
    }
    return paths;
}

std::vector<Contour> contoursOf(const ClipperLib::Paths &paths, bool isTurned) {
    std::vector<Contour> contours;
    for (const auto &path : paths) {
        auto &points = contours.emplace_back(Contour{{}, true}).points;
        for (auto corner : path) {
            const auto p = turned(corner, isTurned);
            points.push_back({static_cast<double>(p.X) / kClipperUnits, static_cast<double>(p.Y) / kClipperUnits});
        }
        if (!points.empty()) points.push_back(points.front());
    }
    return contours;
}

ClipperLib::PolyFillType clipperRule(FillRule rule) {
    return rule == FillRule::EvenOdd ? ClipperLib::pftEvenOdd : ClipperLib::pftNonZero;
}

} // namespace

struct Region::Line {
    Line(Point a, Point b) : from(a), to(b) {
        box.add(a);
        box.add(b);
    }
    Point along() const { return minus(to, from); }
    double length() const { return std::hypot(to.x - from.x, to.y - from.y); }
    /// Its part between the sides of a box, which runs backwards when there is none.
    Share shareIn(const Box &sides) const {
        Share share{0, 1};
        cut(from.x, to.x, sides.lower.x, sides.upper.x, share);
        cut(from.y, to.y, sides.lower.y, sides.upper.y, share);
        return share;
    }
    Point from, to;
    Box box;

private:
    static void cut(double a, double b, double lower, double upper, Share &share) {
        if (a == b) {
            if (a <= lower || a >= upper) share.to = -1;
            return;
        }
        const double first = (lower - a) / (b - a), last = (upper - a) / (b - a);
        share = {std::max(share.from, std::min(first, last)), std::min(share.to, std::max(first, last))};
    }
};

Region::Region(const std::vector<Contour> &contours, FillRule rule) : rule_(rule) {
    if (const auto rectangle = rectangleOf(contours)) {
        box_ = *rectangle;
        isRectangle_ = true;
        return;
    }
    for (const Contour &contour : contours) {
        if (contour.points.size() < 3) continue;
        Point from = contour.points.back();
        for (Point to : contour.points) {
            if (from != to) edges_.push_back({from, to});
            from = to;
            box_.add(to);
        }
        ends_.push_back(static_cast<uint32_t>(edges_.size()));
    }
    turn();
    sortIntoBands();
}

std::vector<Contour> Region::contours() const {
    if (isRectangle_) {
        const auto [l, u] = box_;
        return {{{l, {u.x, l.y}, u, {l.x, u.y}, l}, true}};
    }
    std::vector<Contour> result;
    size_t at = 0;
    for (size_t end : ends_) {
        auto &points = result.emplace_back(Contour{{}, true}).points;
        if (at < end) points.push_back(turned(edges_[at].from));
        for (; at < end; ++at)
            points.push_back(turned(edges_[at].to));
    }
    return result;
}

/// Bands along the longer edges, as of the bars of a bar code, would each hold all of them.
void Region::turn() {
    Point sum;
    for (const auto &[from, to] : edges_)
        sum = {sum.x + std::abs(to.x - from.x), sum.y + std::abs(to.y - from.y)};
    const Point size = minus(box_.upper, box_.lower);
    isTurned_ = sum.x * size.y < sum.y * size.x;
    const double crossed = isTurned_ ? sum.x / size.x : sum.y / size.y;
    sweep_ = static_cast<size_t>(static_cast<double>(edges_.size()) * (std::isfinite(crossed) ? crossed : 1));
    for (auto &[from, to] : edges_) {
        from = turned(from);
        to = turned(to);
    }
    bands_ = {turned(box_.lower).y, turned(box_.upper).y};
}

void Region::sortIntoBands() {
    const double height = bands_.upper - bands_.lower;
    double sum = 0;
    for (const Edge &edge : edges_)
        sum += std::abs(edge.to.y - edge.from.y);
    // So many that an edge stands in four of them, taken over all.
    const double count = height > 0 && sum > 0 ? std::ceil(3 * static_cast<double>(edges_.size()) * height / sum) : 1;
    bandStarts_.assign(static_cast<size_t>(std::min(count, 1 + static_cast<double>(edges_.size()) / 4)) + 1, 0);
    auto forEachBand = [&](const Edge &edge, auto visit) {
        const size_t last = bandOf(std::max(edge.from.y, edge.to.y));
        for (size_t i = bandOf(std::min(edge.from.y, edge.to.y)); i <= last; ++i)
            visit(i);
    };
    for (const Edge &edge : edges_)
        forEachBand(edge, [&](size_t i) { ++bandStarts_[i + 1]; });
    for (size_t i = 1; i < bandStarts_.size(); ++i)
        bandStarts_[i] += bandStarts_[i - 1];
    banded_.resize(bandStarts_.back());
    std::vector<uint32_t> next = bandStarts_;
    for (uint32_t i = 0; i < edges_.size(); ++i)
        forEachBand(edges_[i], [&](size_t at) { banded_[next[at]++] = i; });
}

size_t Region::bandOf(double y) const {
    const double height = bands_.upper - bands_.lower, count = static_cast<double>(bandStarts_.size() - 1);
    const double index = height > 0 ? (y - bands_.lower) / height * count : 0;
    return static_cast<size_t>(std::clamp(index, 0.0, count - 1));
}

std::span<const uint32_t> Region::band(size_t index) const {
    return std::span(banded_).subspan(bandStarts_[index], bandStarts_[index + 1] - bandStarts_[index]);
}

size_t Region::crossings(const Line &line, std::vector<double> &at) const {
    size_t looked = 0;
    const size_t last = bandOf(line.box.upper.y);
    for (size_t i = bandOf(line.box.lower.y); i <= last; ++i) {
        for (uint32_t index : band(i)) {
            const auto &[from, to] = edges_[index];
            if (std::max(from.x, to.x) >= line.box.lower.x && std::min(from.x, to.x) <= line.box.upper.x)
                addCrossing(line.from, line.along(), from, to, at);
        }
        looked += band(i).size();
    }
    return looked;
}

bool Region::holds(Point p, size_t &looked) const {
    int winding = 0;
    if (p.y < bands_.lower || p.y > bands_.upper) return false;
    const auto edges = band(bandOf(p.y));
    looked += edges.size();
    for (uint32_t index : edges) {
        const auto &[from, to] = edges_[index];
        if ((from.y <= p.y) == (to.y <= p.y)) continue;
        const bool isUp = from.y < to.y;
        if ((cross(minus(to, from), minus(p, from)) > 0) == isUp) winding += isUp ? 1 : -1;
    }
    return rule_ == FillRule::EvenOdd ? winding % 2 != 0 : winding != 0;
}

bool Region::isAtBorder(Point p, size_t &looked) const {
    const Box near = Box{p, p}.grown(kBorder);
    const size_t last = bandOf(near.upper.y);
    for (size_t i = bandOf(near.lower.y); i <= last; ++i) {
        looked += band(i).size();
        for (uint32_t index : band(i))
            if (distance(p, edges_[index].from, edges_[index].to) <= kBorder) return true;
    }
    return false;
}

size_t Region::within(Point from, Point to, Border border, std::vector<Share> &parts) const {
    const Line line(from, to);
    const bool isShrunk = isRectangle_ && border == Border::Outside;
    const Share share = line.shareIn(box_.grown(isShrunk ? -kBorder : kBorder));
    if (!(share.from < share.to)) return 1;
    if (!isRectangle_) return withinEdges({turned(from), turned(to)}, border, parts);
    parts.push_back(share);
    return 1;
}

bool Region::surrounds(const Box &box, size_t &work) const {
    if (isRectangle_ || !box_.holds(box)) return isRectangle_ && box_.holds(box, kBorder);
    const Box near{turned(box.lower), turned(box.upper)};
    const size_t last = bandOf(near.upper.y);
    for (size_t i = bandOf(near.lower.y); i <= last; ++i) {
        work += band(i).size();
        for (uint32_t index : band(i))
            if (Line(edges_[index].from, edges_[index].to).box.touches(near)) return false;
    }
    return holds(between(near.lower, near.upper, 0.5), work);
}

size_t Region::withinEdges(const Line &line, Border border, std::vector<Share> &parts) const {
    std::vector<double> at{0};
    size_t looked = crossings(line, at);
    thinOut(at, kLeastLength / line.length());
    for (size_t i = 0; i + 1 < at.size(); ++i) {
        const Share share{at[i], at[i + 1]};
        auto place = [&](double part) { return between(line.from, line.to, share.from + part * (share.to - share.from)); };
        const bool wanted = border == Border::Outside; // what would have to change if it is along the border
        bool isInside = holds(place(0.5), looked);
        if (isInside == wanted && isAtBorder(place(0.5), looked) && isAtBorder(place(0.2), looked) &&
            isAtBorder(place(0.8), looked))
            isInside = !wanted;
        if (!isInside) continue;
        if (!parts.empty() && parts.back().to == share.from)
            parts.back().to = share.to;
        else
            parts.push_back(share);
    }
    return looked;
}

Region intersection(const Region &a, const Region &b) {
    if (a.isRectangle_ && b.isRectangle_) {
        return Region(Box{{std::max(a.box_.lower.x, b.box_.lower.x), std::max(a.box_.lower.y, b.box_.lower.y)},
                          {std::min(a.box_.upper.x, b.box_.upper.x), std::min(a.box_.upper.y, b.box_.upper.y)}});
    }
    const bool isTurned = a.sweep_ > b.sweep_ ? a.isTurned_ : b.isTurned_; // along bars, not across
    ClipperLib::Clipper clipper;
    clipper.AddPaths(clipperPaths(a.contours(), isTurned), ClipperLib::ptSubject, true);
    clipper.AddPaths(clipperPaths(b.contours(), isTurned), ClipperLib::ptClip, true);
    ClipperLib::Paths common;
    clipper.Execute(ClipperLib::ctIntersection, common, clipperRule(a.rule_), clipperRule(b.rule_));
    return {contoursOf(common, isTurned), FillRule::EvenOdd};
}

Region united(const Region &region) {
    ClipperLib::Clipper clipper;
    clipper.AddPaths(clipperPaths(region.contours(), region.isTurned_), ClipperLib::ptSubject, true);
    ClipperLib::Paths whole;
    clipper.Execute(ClipperLib::ctUnion, whole, clipperRule(region.rule_), ClipperLib::pftEvenOdd);
    return {contoursOf(whole, region.isTurned_), FillRule::EvenOdd};
}

void VisibleParts::add(Point from, Point to, std::span<const Share> visible) {
    for (const Share &share : visible) {
        if (!goesOn_ || share.from > 0) pieces_.push_back({between(from, to, share.from)});
        if (from != to) pieces_.back().push_back(share.to < 1 ? between(from, to, share.to) : to);
        goesOn_ = share.to >= 1;
    }
    if (visible.empty()) goesOn_ = false;
}

std::vector<std::vector<Point>> VisibleParts::take() {
    const bool isOverStart = pieces_.size() > 1 && goesOn_ && pieces_.back().back() == pieces_.front().front();
    if (isOverStart) {
        auto &last = pieces_.back(), &first = pieces_.front();
        last.insert(last.end(), first.begin() + 1, first.end());
        first = std::move(last);
        pieces_.pop_back();
    }
    return std::move(pieces_);
}

std::vector<std::vector<Point>> clipped(const std::vector<Point> &points, const Region &region, size_t &work) {
    std::vector<Share> inside;
    return visibleParts(points, [&](Point from, Point to) {
        inside.clear();
        work += region.within(from, to, Border::Inside, inside);
        return std::span<const Share>(inside);
    });
}

} // namespace strokes
