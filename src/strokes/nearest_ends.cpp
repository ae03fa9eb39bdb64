#include "strokes/nearest_ends.h"

// Its own headers need this one first.
#include <boost/geometry/geometry.hpp>

#include <algorithm>
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
        End end;
    };
    std::vector<Member> ends; ///< in the order of their places
    std::vector<Site> sites;
    std::vector<uint32_t> siteOf;  ///< by twice the stroke's rank, and one more for its last point
    std::vector<bool> isTaken;     ///< by rank
    std::vector<uint32_t> numbers; ///< by rank
    Tree tree;

    void leave(uint32_t site) {
        if (--sites[site].waits == 0) tree.remove(Entry{placeOf(sites[site].at), site});
    }
};

NearestEnds::NearestEnds(const std::vector<Stroke> &strokes, std::span<const uint32_t> which)
    : index_(std::make_unique<Index>()) {
    Index &all = *index_;
    for (uint32_t rank = 0; rank < which.size(); ++rank) {
        const std::vector<Point> &points = strokes[which[rank]].points;
        all.ends.push_back({points.front(), {rank, false}});
        all.ends.push_back({points.back(), {rank, true}});
    }
    // By place, and by rank within one, so that the outcome is always the same.
    std::ranges::sort(all.ends, {},
                      [](const Index::Member &m) { return std::tuple(m.at.x, m.at.y, m.end.stroke, m.end.isLast); });
    all.numbers.assign(which.begin(), which.end());
    all.isTaken.resize(which.size());
    all.siteOf.resize(all.ends.size());
    std::vector<Entry> entries;
    for (size_t i = 0; i < all.ends.size(); ++i) {
        const auto &[at, end] = all.ends[i];
        if (all.sites.empty() || all.sites.back().at != at) {
            entries.emplace_back(placeOf(at), static_cast<uint32_t>(all.sites.size()));
            all.sites.push_back({at, i});
        }
        ++all.sites.back().waits;
        all.siteOf[2 * end.stroke + (end.isLast ? 1 : 0)] = static_cast<uint32_t>(all.sites.size() - 1);
    }
    all.tree = Tree(entries);
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
    all.leave(all.siteOf[2 * end.stroke]);
    all.leave(all.siteOf[2 * end.stroke + 1]);
    return {all.numbers[end.stroke], end.isLast};
}

} // namespace strokes
