#include "virtual_plotter/drawing/outside.h"

#include <algorithm>

namespace virtual_plotter {

void GreyOutside::setPen(int pen, double widthMillimetres) { picture_.setPen(pen, widthMillimetres); }

void GreyOutside::begin(Point at) {
    isOutside_ = !inside(reach_, at);
    setGrey(isOutside_);
    picture_.begin(at);
    last_ = at;
}

void GreyOutside::line(Point to) {
    const Point from = last_;
    Point in = from, out = to;
    last_ = to;
    if (!clipLine(reach_, in, out)) return draw(from, to, true);
    if (in != from) draw(from, in, true);
    if (in != out) draw(in, out, false);
    if (out != to) draw(out, to, true);
}

void GreyOutside::draw(Point from, Point to, bool isOutside) {
    if (isOutside != isOutside_) {
        isOutside_ = isOutside;
        setGrey(isOutside);
        picture_.begin(from);
    }
    picture_.line(to);
}

void GreyOutside::fill(std::span<const Point> points, std::span<const size_t> ends) {
    const bool isWhole = std::ranges::all_of(points, [&](Point p) { return inside(reach_, p); });
    setGrey(!isWhole);
    picture_.fill(points, ends);
    if (isWhole) return;
    clipper_.clip(reach_, points, ends);
    setGrey(false);
    if (!clipper_.ends().empty()) picture_.fill(clipper_.points(), clipper_.ends());
}

} // namespace virtual_plotter
