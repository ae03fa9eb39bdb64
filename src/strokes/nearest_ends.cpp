#include "strokes/nearest_ends.h"

// Its own headers need this one first.
#include <boost/geometry/geometry.hpp>

#include <algorithm>
#include <array>
#include <boost/geometry/geometries/point_xy.hpp>
#include <boost/geometry/index/rtree.hpp>
#include <tuple>

namespace strokes {

namespace {

using Place = boost::geometry::model::d2::point_xy<double>;
using Entry = std::pair<Place, uint32_t>; ///< a site, and its number
using Tree = boost::geometry::index::rtree<Entry, boost::geometry::index::quadratic<8>>;

Place placeOf(Point p) { return {p.x, p.y}; }

/// Ends at one and the same point: they stand one behind the other in Index::ends. In the tree they are one entry, for a
/// tree finds no end in reasonable time among thousands at the same place, and a star has as many.
struct Site {
    Point at;
    size_t next = 0;    ///< in ends: those before it were taken
    uint32_t waits = 0; ///< ends that were not
};

} // namespace

struct NearestEnds::Index {
    struct Member {
        Point at;
        End end; ///< its stroke by the rank among those that were given
    };

    void gather(const std::vector<Stroke> &strokes);
    void plant();
    void leave(uint32_t site) {
        if (--sites[site].waits == 0) tree.remove(Entry{placeOf(sites[site].at), site});
    }

    std::vector<uint32_t> numbers;                ///< of the strokes, by rank
    std::vector<bool> isTaken;                    ///< by rank
    std::vector<std::array<uint32_t, 2>> sitesOf; ///< by rank: of the first point and of the last
    std::vector<Member> ends;                     ///< in the order of their places
    std::vector<Site> sites;
    Tree tree;
};

void NearestEnds::Index::gather(const std::vector<Stroke> &strokes) {
    for (uint32_t rank = 0; rank < numbers.size(); ++rank) {
        const std::vector<Point> &points = strokes[numbers[rank]].points;
        ends.push_back({points.front(), {rank, false}});
        ends.push_back({points.back(), {rank, true}});
    }
    // By place, and by rank within one, so that the outcome is always the same.
    std::ranges::sort(ends, {}, [](const Member &m) { return std::tuple(m.at.x, m.at.y, m.end.stroke, m.end.isLast); });
}

void NearestEnds::Index::plant() {
    std::vector<Entry> entries; // planted together they make a better tree, and sooner
    for (size_t i = 0; i < ends.size(); ++i) {
        const auto &[at, end] = ends[i];
        if (sites.empty() || sites.back().at != at) {
            entries.emplace_back(placeOf(at), static_cast<uint32_t>(sites.size()));
            sites.push_back({at, i});
        }
        ++sites.back().waits;
        sitesOf[end.stroke][end.isLast ? 1 : 0] = entries.back().second;
    }
    tree = Tree(entries);
}

NearestEnds::NearestEnds(const std::vector<Stroke> &strokes, std::span<const uint32_t> which)
    : index_(std::make_unique<Index>()) {
    index_->numbers.assign(which.begin(), which.end());
    index_->isTaken.resize(which.size());
    index_->sitesOf.resize(which.size());
    index_->gather(strokes);
    index_->plant();
}

NearestEnds::~NearestEnds() = default;

NearestEnds::End NearestEnds::take(Point from) {
    Index &all = *index_;
    Entry nearest;
    all.tree.query(boost::geometry::index::nearest(placeOf(from), 1), &nearest);
    Site &site = all.sites[nearest.second];
    while (all.isTaken[all.ends[site.next].end.stroke])
        ++site.next;
    const End end = all.ends[site.next].end;
    all.isTaken[end.stroke] = true;
    for (uint32_t left : all.sitesOf[end.stroke])
        all.leave(left);
    return {all.numbers[end.stroke], end.isLast};
}

} // namespace strokes
