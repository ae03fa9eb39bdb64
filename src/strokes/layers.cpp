#include "strokes/layers.h"

#include "strokes/twins.h"

#include <boost/geometry/geometry.hpp> // before the others, which need parts of it

#include <boost/geometry/geometries/box.hpp>
#include <boost/geometry/geometries/point_xy.hpp>
#include <boost/geometry/index/rtree.hpp>
#include <iterator>

namespace strokes {

namespace {

namespace model = boost::geometry::model;
namespace index = boost::geometry::index;
using IndexBox = model::box<model::d2::point_xy<double>>;
using Entry = std::pair<IndexBox, const Region *>;
using Index = index::rtree<Entry, index::quadratic<16>>;

IndexBox indexed(const Box &box) { return {{box.lower.x, box.lower.y}, {box.upper.x, box.upper.y}}; }

/// What is left of a segment, from the parts that are hidden, in any order.
void invert(std::vector<Share> &shares) {
    std::sort(shares.begin(), shares.end(), [](const Share &a, const Share &b) { return a.from < b.from; });
    double seen = 0;
    size_t count = 0;
    for (const Share hidden : shares) { // a copy: its place may be written to
        if (hidden.from > seen) shares[count++] = {seen, hidden.from};
        seen = std::max(seen, hidden.to);
    }
    shares.resize(count);
    if (seen < 1) shares.push_back({seen, 1});
}

/// Cuts strokes at the areas that it was given before.
class Cutter {
public:
    size_t work() const { return work_; }

    /// An area that lies within one rectangle hides nothing that this does not. The area must outlive the cutter.
    void add(const Region &area) {
        const IndexBox box = indexed(area.box());
        auto isWhole = [](const Entry &entry) { return entry.second->isRectangle(); };
        if (index_.qbegin(index::covers(box) && index::satisfies(isWhole)) == index_.qend()) index_.insert({box, &area});
    }

    /// False when nothing that was added comes near the points; else cut() may follow.
    bool mayHide(const std::vector<Point> &points) {
        find(boxOf(points), near_);
        return !near_.empty();
    }

    std::vector<std::vector<Point>> cut(const std::vector<Point> &points) {
        return visibleParts(points, [&](Point from, Point to) {
            shares_.clear();
            hide(from, to);
            invert(shares_);
            return std::span<const Share>(shares_);
        });
    }

private:
    using Found = std::vector<Entry>;

    void find(const Box &box, Found &found) {
        found.clear();
        index_.query(index::intersects(indexed(box)), std::back_inserter(found));
        work_ += found.size();
    }

    void hide(Point from, Point to) {
        constexpr size_t kFew = 16; // are looked at sooner than the tree is asked again
        if (near_.size() > kFew) find(boxOf({from, to}), nearSegment_);
        for (const Entry &entry : near_.size() > kFew ? nearSegment_ : near_) {
            work_ += entry.second->within(from, to, Border::Outside, shares_);
            if (!shares_.empty() && shares_.back().from == 0 && shares_.back().to == 1) return;
        }
    }

    Index index_;
    size_t work_ = 0;
    Found near_, nearSegment_; ///< what comes near the points, and near one segment of many such
    std::vector<Share> shares_;
};

} // namespace

/// Their points are taken. Returns how many there were, without the outlines of areas.
size_t Layers::leaveTwinsOut() {
    Twins twins(strokes_.size());
    std::vector<Painted *> left;
    for (auto painted = strokes_.rbegin(); painted != strokes_.rend(); ++painted)
        if (twins.has(painted->stroke, painted->isOutline)) left.push_back(&*painted);
    for (Painted *painted : left)
        painted->stroke.points.clear();
    return static_cast<size_t>(std::ranges::count(left, false, [](const Painted *painted) { return painted->isOutline; }));
}

Layers::Seen Layers::take(size_t mostWork) && {
    Seen seen{.strokes = {}, .twins = leaveTwinsOut()};
    Cutter cutter;
    size_t below = covers_.size();
    for (auto painted = strokes_.rbegin(); painted != strokes_.rend(); ++painted) {
        for (; below > painted->covers; --below)
            cutter.add(covers_[below - 1]);
        auto &[colour, pen, points] = painted->stroke;
        if (points.empty()) continue;
        seen.isComplete = cutter.work() <= mostWork;
        if (!seen.isComplete || !cutter.mayHide(points)) {
            seen.strokes.push_back(std::move(painted->stroke));
            continue;
        }
        auto pieces = cutter.cut(points);
        for (auto piece = pieces.rbegin(); piece != pieces.rend(); ++piece)
            seen.strokes.push_back({colour, pen, std::move(*piece)});
    }
    std::reverse(seen.strokes.begin(), seen.strokes.end());
    return seen;
}

} // namespace strokes
