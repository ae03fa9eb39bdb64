#include "strokes/from_plot.h"

namespace strokes {

void PlotStrokes::setPen(int pen, double) { pen_ = pen; }

void PlotStrokes::begin(Point at) {
    open();
    add(at);
}

void PlotStrokes::line(Point to) { add(to); }

void PlotStrokes::fill(std::span<const Point> points, std::span<const size_t> ends) {
    size_t start = 0;
    for (size_t end : ends) {
        open();
        for (Point p : points.subspan(start, end - start))
            add(p);
        if (points[end - 1] != points[start]) add(points[start]);
        start = end;
    }
}

void PlotStrokes::open() {
    if (points_ < most_) drawing_.strokes.push_back({.pen = pen_, .points = {}});
}

void PlotStrokes::add(Point p) {
    if (++points_ > most_) return;
    drawing_.strokes.back().points.push_back({p.x / language::kUnitsPerMillimetre, p.y / language::kUnitsPerMillimetre});
}

} // namespace strokes
