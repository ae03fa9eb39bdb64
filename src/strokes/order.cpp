#include "strokes/order.h"

#include "strokes/measure.h"
#include "strokes/nearest_ends.h"

#include <algorithm>
#include <iterator>

namespace strokes {

namespace {

/// The strokes' places, a list for each pen.
std::vector<std::vector<uint32_t>> byPen(const std::vector<Stroke> &strokes) {
    std::vector<int> pens;
    std::vector<std::vector<uint32_t>> lists;
    for (uint32_t i = 0; i < strokes.size(); ++i) {
        const auto at = static_cast<size_t>(std::ranges::find(pens, strokes[i].pen) - pens.begin());
        if (at == pens.size()) {
            pens.push_back(strokes[i].pen);
            lists.emplace_back();
        }
        lists[at].push_back(i);
    }
    return lists;
}

/// Draws the stroke behind those that are there, as a part of the last one when it begins where that ends.
void append(std::vector<Stroke> &strokes, Stroke next) {
    const bool touches = !strokes.empty() && strokes.back().pen == next.pen &&
                         distance(strokes.back().points.back(), next.points.front()) <= kTouching;
    if (!touches) {
        strokes.push_back(std::move(next));
        return;
    }
    std::vector<Point> &points = strokes.back().points;
    const bool isSame = points.back() == next.points.front();
    points.insert(points.end(), next.points.begin() + (isSame ? 1 : 0), next.points.end());
}

using End = NearestEnds::End; ///< at which a stroke begins

Point endOf(const Stroke &stroke, bool isLast) { return isLast ? stroke.points.back() : stroke.points.front(); }

/// The way with the pen up, from a place to the first stroke and on to each.
double wayOf(const std::vector<Stroke> &strokes, const std::vector<End> &tour, Point at) {
    double way = 0;
    for (const End &end : tour) {
        way += distance(at, endOf(strokes[end.stroke], end.isLast));
        at = endOf(strokes[end.stroke], !end.isLast);
    }
    return way;
}

/// One pen's strokes, nearest end first; as they were drawn where that is the shorter way, as in a row of circles.
std::vector<End> tourOf(const std::vector<Stroke> &strokes, const std::vector<uint32_t> &which, Point from) {
    std::vector<End> nearest, drawn;
    NearestEnds ends(strokes, which);
    Point at = from;
    for (uint32_t number : which) {
        drawn.push_back({number, false});
        const End &next = nearest.emplace_back(ends.take(at));
        at = endOf(strokes[next.stroke], !next.isLast);
    }
    return wayOf(strokes, nearest, from) < wayOf(strokes, drawn, from) ? nearest : drawn;
}

} // namespace

void orderNearest(Drawing &drawing) {
    std::vector<Stroke> ordered;
    Point at;
    for (const std::vector<uint32_t> &which : byPen(drawing.strokes)) {
        for (const auto [number, isLast] : tourOf(drawing.strokes, which, at)) {
            Stroke &stroke = drawing.strokes[number];
            if (isLast) std::ranges::reverse(stroke.points);
            at = stroke.points.back();
            append(ordered, std::move(stroke));
        }
    }
    drawing.strokes = std::move(ordered);
}

void orderByPen(Drawing &drawing) {
    std::vector<Stroke> ordered;
    for (const std::vector<uint32_t> &which : byPen(drawing.strokes))
        for (const uint32_t number : which)
            ordered.push_back(std::move(drawing.strokes[number]));
    drawing.strokes = std::move(ordered);
}

} // namespace strokes
