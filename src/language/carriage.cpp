#include "language/carriage.h"

#include "language/number_scanner.h"

#include <algorithm>
#include <cmath>

namespace language {

namespace {

constexpr double kUpSecondsPerUnit = 1 / (500 * kUnitsPerMillimetre);
constexpr double kSecondsPerStroke = 0.1;
constexpr double kSecondsPerPenChange = 1;
constexpr double kBufferBytes = 1024; // of many desk-top plotters
constexpr double kLeastWidth = 0.05;  // millimetres: a width of 0 asks for the thinnest line that there is
constexpr double kLeastPattern = kUnitsPerMillimetre;
constexpr Rectangle kEverywhere{{-kLargest, -kLargest}, {kLargest, kLargest}};
constexpr double kLeastDashed = 0.001;     // units: what is shorter can hold no pattern
constexpr double kPatternsPerSheet = 1000; // along its diagonal, at most

double distance(Point a, Point b) { return std::sqrt((b.x - a.x) * (b.x - a.x) + (b.y - a.y) * (b.y - a.y)); }

Point along(Point from, Point to, double part) { return {from.x + part * (to.x - from.x), from.y + part * (to.y - from.y)}; }

} // namespace

Carriage::Carriage(PenSink &sink, const Rectangle &hardClip, Clipping clipping, double secondsPerByte, Findings &findings)
    : sink_(sink), hardClip_(hardClip), reach_(clipping == Clipping::Reach ? hardClip : kEverywhere), findings_(findings),
      allowance_(findings.bytes), secondsPerByte_(secondsPerByte) {
    setWindow(reach_);
    setSpeed(kDefaultSpeed);
    last_ = {std::clamp(0.0, hardClip.lower.x, hardClip.upper.x), std::clamp(0.0, hardClip.lower.y, hardClip.upper.y)};
    sink_.setPen(pen_, width_);
}

void Carriage::setPen(int pen, double widthMillimetres) {
    const double width = std::clamp(widthMillimetres, kLeastWidth, 50.0);
    if (pen == pen_ && width == width_) return;
    lift();
    const bool isTaken = pen != pen_ && pen != 0;
    pen_ = pen;
    width_ = width;
    if (isTaken) spend(kSecondsPerPenChange);
    sink_.setPen(pen, width);
}

void Carriage::setSpeed(double centimetresPerSecond) {
    secondsPerUnit_ = 1 / (std::clamp(centimetresPerSecond, 0.1, 200.0) * 10 * kUnitsPerMillimetre);
}

void Carriage::setWindow(const Rectangle &window) {
    area_ = intersection(reach_, window);
    visible_ = area_.lower.x <= area_.upper.x && area_.lower.y <= area_.upper.y;
}

bool Carriage::afford(uint64_t work) {
    if (allowance_.spend(work)) return true;
    ++findings_.refused;
    return false;
}

void Carriage::setLineType(const LineType &type) {
    lineType_ = type;
    lineType_.length =
        std::max({type.length, kLeastPattern, distance(hardClip_.lower, hardClip_.upper) / kPatternsPerSheet});
    phase_ = 0;
}

void Carriage::moveTo(Point to) {
    lift();
    at_ = to;
    phase_ = 0;
}

void Carriage::touch() {
    if (pen_ == 0) return;
    want(at_);
    if (visible_ && inside(area_, at_)) begin(at_);
}

void Carriage::strokeTo(Point to) {
    Point from = at_;
    at_ = to;
    if (pen_ == 0) return;
    want(from);
    want(to);
    if (clipped(from, to)) draw(from, to);
}

void Carriage::lineTo(Point to) {
    if (lineType_.kind == LineType::Solid) return strokeTo(to);
    Point from = at_;
    const Point start = from;
    at_ = to;
    if (pen_ == 0) return;
    want(start);
    want(to);
    const double length = distance(start, to);
    if (clipped(from, to)) {
        if (lineType_.kind == LineType::Ends) {
            if (to == at_) {
                begin(to);
                lift();
            }
        } else {
            drawDashes(from, to, distance(start, from), length);
        }
    }
    if (lineType_.count > 0) phase_ = std::fmod(phase_ + length, lineType_.length);
}

/// Draws the visible part of a dashed line of the given length; skipped: how much of the line lies before that part. Both in
/// plotter units.
void Carriage::drawDashes(Point from, Point to, double skipped, double length) {
    double pattern = lineType_.length;
    double position = phase_ + skipped;
    if (lineType_.kind == LineType::Adaptive) {
        pattern = length / std::max(1.0, std::floor(length / pattern));
        position = skipped;
    }
    const double visible = distance(from, to);
    if (visible < kLeastDashed) return draw(from, to);
    if (!afford(static_cast<uint64_t>(visible / pattern + 1) * lineType_.count)) return draw(from, to);

    // From here on, positions are counted along the visible part; the part of the pattern that it begins in comes first.
    double left = std::fmod(position, pattern);
    size_t part = 0;
    while (left >= lineType_.parts[part] * pattern) {
        left -= lineType_.parts[part] * pattern;
        if (++part == lineType_.count) {
            part = 0;
            break; // rounding: the pattern was just used up
        }
    }
    double done = 0;
    double end = lineType_.parts[part] * pattern - std::max(0.0, left);
    while (true) {
        const double next = std::min(done + std::max(0.0, end), visible);
        if (part % 2 == 0)
            draw(along(from, to, done / visible), next == visible ? to : along(from, to, next / visible));
        else
            lift();
        done = next;
        if (done == visible) break;
        part = part + 1 == lineType_.count ? 0 : part + 1;
        end = lineType_.parts[part] * pattern;
    }
}

void Carriage::fill(std::span<const Point> points, std::span<const size_t> ends) {
    if (pen_ == 0) return;
    bool whole = true;
    for (Point p : points) {
        want(p);
        whole = whole && inside(area_, p);
    }
    if (!visible_) return;
    if (!whole) {
        clipper_.clip(area_, points, ends);
        points = clipper_.points();
        ends = clipper_.ends();
    }
    if (ends.empty()) return;
    travel(points.front());
    lift();
    sink_.fill(points, ends);
    double area = 0;
    size_t start = 0;
    for (size_t end : ends) {
        double twice = 0;
        for (size_t i = start, last = end - 1; i < end; last = i++) {
            twice += points[last].x * points[i].y - points[i].x * points[last].y;
        }
        area += std::abs(twice) / 2;
        start = end;
    }
    drew(area / (width_ * kUnitsPerMillimetre));
}

void Carriage::want(Point p) {
    if (!findings_.anyDemand) {
        findings_.anyDemand = true;
        findings_.demand = {p, p};
    }
    Rectangle &all = findings_.demand;
    all = {{std::min(all.lower.x, p.x), std::min(all.lower.y, p.y)},
           {std::max(all.upper.x, p.x), std::max(all.upper.y, p.y)}};
    if (!inside(hardClip_, p)) findings_.outsideHardClip = true;
}

bool Carriage::clipped(Point &from, Point &to) const {
    if (!visible_) return false;
    if (inside(area_, from) && inside(area_, to)) return true;
    return clipLine(area_, from, to) && from != to; // a line that only touches the edge leaves no dot
}

void Carriage::draw(Point from, Point to) {
    if (!drawing_ || last_ != from) begin(from);
    if (from == to) return;
    sink_.line(to);
    last_ = to;
    drew(distance(from, to));
}

void Carriage::begin(Point at) {
    travel(at);
    sink_.begin(at);
    drawing_ = true;
}

void Carriage::travel(Point at) {
    const double way = distance(last_, at);
    findings_.upMillimetres += way / kUnitsPerMillimetre;
    spend(way * kUpSecondsPerUnit + kSecondsPerStroke);
    ++findings_.strokes;
    ++own().strokes;
    last_ = at;
}

void Carriage::drew(double units) {
    findings_.downMillimetres += units / kUnitsPerMillimetre;
    own().downMillimetres += units / kUnitsPerMillimetre;
    spend(units * secondsPerUnit_);
}

/// Once what asks for it has arrived.
void Carriage::spend(double seconds) {
    const auto bytes = static_cast<double>(findings_.bytes);
    const double start = std::max(findings_.seconds, bytes * secondsPerByte_ + held_);
    held_ = std::max(held_, start - (bytes + kBufferBytes) * secondsPerByte_);
    own().seconds += start + seconds - findings_.seconds;
    findings_.seconds = start + seconds;
}

} // namespace language
