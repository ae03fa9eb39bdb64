#include "strokes/shape_painter.h"

#include "strokes/unreadable.h"

#include <numbers>

namespace strokes {

namespace {

constexpr size_t kSweepStep = 40; // a step of a sweep, where all edges cross each other
constexpr double kMostHatches = 1e6;
constexpr const char *kTooIntricate = "its areas are too intricate; plot it in parts, or hatch it more widely";

Point clamped(Point p, const Box &box) {
    return {std::clamp(p.x, box.lower.x, box.upper.x), std::clamp(p.y, box.lower.y, box.upper.y)};
}

} // namespace

void ShapePainter::line(const std::vector<Contour> &contours, const DashPattern &dashes, const Affine &toPage,
                        const Clip &clip, uint32_t colour) {
    for (const Contour &contour : contours) {
        for (auto &dash : dashed(contour.points, dashes, toPage)) {
            if (!clip || clip->surrounds(boxOf(dash), work_)) {
                paint(std::move(dash), colour);
                continue;
            }
            for (auto &piece : clipped(dash, *clip, work_))
                paint(std::move(piece), colour);
        }
    }
}

void ShapePainter::area(const std::vector<Contour> &contours, FillRule rule, const Clip &clip, const Colour &colour,
                        bool hasLine) {
    Region area(contours, rule);
    if (clip && !clip->surrounds(area.box(), work_)) area = common(area, *clip);
    if (area.isEmpty() || !page_.box().touches(area.box())) return;
    const bool isOutlined = colour.isSeen && !hasLine;
    if (isOutlined || (colour.isSeen && fill_.isHatched)) {
        if (hides_ && colour.isOpaque) layers_.cover(area);
        for (auto &contour : isOutlined ? outlinesOf(area) : std::vector<Contour>())
            paint(std::move(contour.points), colour.colour, true);
        if (fill_.isHatched) hatch(area, colour.colour);
    } else if (hides_ && colour.isOpaque) {
        layers_.cover(std::move(area));
    }
}

Region ShapePainter::common(const Region &a, const Region &b) {
    work_ += kSweepStep * (a.sweep() + b.sweep());
    requireMeasure();
    return intersection(a, b);
}

void ShapePainter::requireMeasure() const {
    if (work_ > limits_.work) throw Unreadable(kTooIntricate);
    if (points_ > limits_.points)
        throw Unreadable("it comes to millions of lines; plot it in parts, or hatch it more widely");
}

/// Lines at multiples of the spacing from the page's corner, so that those of neighbours meet; to and fro, as a pen goes.
void ShapePainter::hatch(const Region &area, uint32_t colour) {
    const double angle = fill_.degrees * std::numbers::pi / 180;
    const Affine turn{std::cos(angle), std::sin(angle), -std::sin(angle), std::cos(angle), 0, 0}, back = turn.inverseTurn();
    const auto [l, u] = area.box();
    Box turned;
    for (const Point corner : {l, u, Point{l.x, u.y}, Point{u.x, l.y}})
        turned.add(back(corner));
    const double first = std::ceil(turned.lower.y / fill_.spacing), last = std::floor(turned.upper.y / fill_.spacing);
    if (!(last - first < kMostHatches)) throw Unreadable(kTooIntricate);
    bool isBack = false;
    for (int i = 0; first + i <= last; ++i, isBack = !isBack) {
        const double level = (first + i) * fill_.spacing;
        Point from = turn({turned.lower.x, level}), to = turn({turned.upper.x, level});
        if (isBack) std::swap(from, to);
        std::vector<Share> inside;
        work_ += area.within(from, to, Border::Outside, inside);
        requireMeasure();
        for (const Share &share : inside)
            paint({between(from, to, share.from), between(from, to, share.to)}, colour);
    }
}

/// Without what lies within the area, where that does not take too long. Of one without any width, its contours.
std::vector<Contour> ShapePainter::outlinesOf(const Region &area) {
    if (!area.mayHoldLines()) return area.contours();
    const size_t work = work_ + kSweepStep * area.sweep();
    const bool isTooMuch = work > limits_.work / 4; // the rest is for what cannot be done without
    isComplete_ = isComplete_ && !isTooMuch;
    if (isTooMuch) return area.contours();
    work_ = work;
    const Region outer = united(area);
    return outer.isEmpty() ? area.contours() : outer.contours();
}

void ShapePainter::paint(std::vector<Point> points, uint32_t colour, bool isOutline) {
    points.erase(std::unique(points.begin(), points.end()), points.end());
    if (page_.surrounds(boxOf(points), work_)) {
        paintOnPage(std::move(points), colour, isOutline);
        return;
    }
    for (auto &piece : clipped(points, page_, work_))
        paintOnPage(std::move(piece), colour, isOutline);
}

void ShapePainter::paintOnPage(std::vector<Point> points, uint32_t colour, bool isOutline) {
    points_ += points.size() + Limits::kStroke;
    requireMeasure();
    for (Point &p : points)
        p = clamped(p, page_.box());
    layers_.paint({colour, 1, std::move(points)}, isOutline);
}

std::vector<Stroke> ShapePainter::take(std::vector<std::string> &notes) {
    auto [strokes, twins, isComplete] = std::move(layers_).take(limits_.work / 10);
    if (twins == 1) notes.emplace_back("1 line lies on another of its colour, and is plotted once");
    if (twins > 1) notes.push_back(std::to_string(twins) + " lines lie on others of their colour, and are plotted once");
    if (!isComplete || !isComplete_) notes.emplace_back("so much overlaps that some covered lines are plotted");
    return std::move(strokes);
}

} // namespace strokes
