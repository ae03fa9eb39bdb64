#include "virtual_plotter/drawing/scan.h"

#include <algorithm>
#include <cmath>
#include <cstring>

namespace virtual_plotter {

namespace {

constexpr float kHalfDot = 0.5F, kRounding = 0.5F;

/// The first dot, or row, whose middle lies behind the place.
int firstBehind(float place, int limit) {
    return static_cast<int>(std::min(std::max(place + kHalfDot, 0.0F), static_cast<float>(limit)));
}

/// Those of the rows whose dots' middles lie in the interval.
Rows rowsWithin(Rows rows, float upper, float lower, int height) {
    return {std::max(rows.begin, firstBehind(upper, height)), std::min(rows.end, firstBehind(lower, height))};
}

/// Some dots beside each other, as processors take them at a time.
constexpr int kLanes = 4, kParts = kRunLength / kLanes;
using Floats [[gnu::vector_size(kLanes * sizeof(float))]] = float;
using Ints [[gnu::vector_size(kLanes * sizeof(int32_t))]] = int32_t;
struct FloatRun {
    Floats part[kParts];
};

Floats absolute(Floats values) { return values < 0 ? -values : values; }
Floats larger(Floats values, Floats others) { return values > others ? values : others; }
Floats smaller(Floats values, Floats others) { return values < others ? values : others; }
Floats root(Floats values) {
    for (int i = 0; i < kLanes; ++i)
        values[i] = std::sqrt(values[i]);
    return values;
}

/// A line with its own axes: along it from its middle, and across.
struct Axes {
    explicit Axes(const Segment &line) : middleX((line.fromX + line.toX) / 2), middleY((line.fromY + line.toY) / 2) {
        const float x = line.toX - line.fromX, y = line.toY - line.fromY, length = std::sqrt(x * x + y * y);
        half = length / 2;
        if (length > 0) alongX = x / length, alongY = y / length;
    }

    /// The squares of how far the dots' middles are from the line; the same to the last bit in whichever run a dot is.
    FloatRun distances(int x, int y) const {
        const float down = static_cast<float>(y) + kHalfDot - middleY;
        FloatRun squares;
        for (int i = 0; i < kParts; ++i) {
            const Floats right = static_cast<float>(x + i * kLanes) + Floats{0.5F, 1.5F, 2.5F, 3.5F} - middleX;
            const Floats past = larger(absolute(right * alongX + down * alongY) - half, Floats{});
            const Floats across = right * alongY - down * alongX;
            squares.part[i] = past * past + across * across;
        }
        return squares;
    }

    float middleX, middleY, half, alongX = 1, alongY = 0;
};

/// By how much a line covers dots that far from it.
struct Width {
    explicit Width(float radius)
        : reach(radius + kHalfDot), full(std::min(1.0F, 2 * radius) * kShades), edge(reach * kShades + kRounding) {}

    FloatRun shades(const FloatRun &squares) const {
        FloatRun shades;
        for (int i = 0; i < kParts; ++i)
            shades.part[i] = larger(smaller(edge - root(squares.part[i]) * kShades, Floats{} + full), Floats{});
        return shades;
    }

    float reach; // up to where a dot is touched
    float full;  // a line thinner than a dot covers none wholly
    float edge;
};

/// Leaves to a neighbour the dots that are nearer to it, and those that are as near if it comes earlier.
void leave(FloatRun &shades, const FloatRun &own, const FloatRun &neighbour, bool isEarlier) {
    for (int i = 0; i < kParts; ++i) {
        const Floats mine = own.part[i], others = neighbour.part[i], shade = shades.part[i];
        shades.part[i] = others < mine ? Floats{} : isEarlier ? (others == mine ? Floats{} : shade) : shade;
    }
}

Run wholeShades(const FloatRun &shades) {
    std::array<int32_t, kRunLength> numbers;
    for (size_t i = 0; i < kParts; ++i) {
        const auto part = __builtin_convertvector(shades.part[i], Ints);
        memcpy(numbers.data() + i * kLanes, &part, sizeof part);
    }
    Run run;
    std::transform(numbers.begin(), numbers.end(), run.begin(), [](int32_t number) { return static_cast<uint8_t>(number); });
    return run;
}

struct Interval {
    float begin, end;
};

/// What a line may touch, row by row: no more than the box around it, nor than the strip along it.
struct Strip {
    Strip(const Segment &line, const Axes &axes, float reach)
        : left(std::min(line.fromX, line.toX) - reach), right(std::max(line.fromX, line.toX) + reach), middleX(axes.middleX),
          middleY(axes.middleY - kHalfDot), isLevel(axes.alongY == 0), slope(axes.alongX / axes.alongY),
          aside(reach / std::abs(axes.alongY)) {}

    Interval at(int y) const {
        if (isLevel) return {left, right};
        const float middle = middleX + (static_cast<float>(y) - middleY) * slope;
        return {std::max(left, middle - aside), std::min(right, middle + aside)};
    }

    float left, right, middleX, middleY;
    bool isLevel;
    float slope, aside;
};

/// A segment with what decides its dots.
class Line {
public:
    Line(const Link &link, const Width &width)
        : own_(*link.segment), before_(link.before, width.reach), after_(link.after, width.reach), width_(width) {}

    const Axes &axes() const { return own_; }
    Run shadesAt(int x, int y) const {
        const FloatRun own = own_.distances(x, y);
        FloatRun shades = width_.shades(own);
        if (before_.isNear(x, y)) leave(shades, own, before_.axes.distances(x, y), true);
        if (after_.isNear(x, y)) leave(shades, own, after_.axes.distances(x, y), false);
        return wholeShades(shades);
    }

private:
    struct Neighbour {
        Neighbour(const Segment *segment, float reach) : axes(segment != nullptr ? *segment : Segment{}) {
            if (segment == nullptr) return;
            left = std::min(segment->fromX, segment->toX) - reach - kRunLength;
            right = std::max(segment->fromX, segment->toX) + reach;
            top = std::min(segment->fromY, segment->toY) - reach - 1;
            bottom = std::max(segment->fromY, segment->toY) + reach;
        }
        bool isNear(int x, int y) const {
            const auto atX = static_cast<float>(x), atY = static_cast<float>(y);
            return atX >= left && atX <= right && atY >= top && atY <= bottom;
        }

        Axes axes;
        float left = 0, right = -1, top = 0, bottom = -1; // no dot lies there
    };

    Axes own_;
    Neighbour before_, after_;
    Width width_;
};

} // namespace

void drawLine(InkedDots &dots, Rows rows, uint8_t ink, const Link &link, float radius) {
    const Segment &segment = *link.segment;
    const Width width(radius);
    const auto [upper, lower] = std::minmax(segment.fromY, segment.toY);
    const auto [begin, end] = rowsWithin(rows, upper - width.reach, lower + width.reach, dots.height());
    if (begin >= end) return;
    const Line line(link, width);
    const Strip strip(segment, line.axes(), width.reach);
    for (int y = begin; y < end; ++y) {
        const Interval touched = strip.at(y);
        const int last = firstBehind(touched.end, dots.width());
        for (int x = firstBehind(touched.begin, dots.width()); x < last; x += kRunLength)
            if (!dots.isFull(x, y, ink)) dots.cover(x, y, ink, line.shadesAt(x, y));
    }
}

void AreaScan::draw(InkedDots &dots, Rows rows, uint8_t ink, std::span<const Segment> edges) {
    if (edges.empty()) return;
    Segment box = edges.front();
    for (const Segment &edge : edges) { // each begins where another one ends
        box = {std::min(box.fromX, edge.fromX), std::min(box.fromY, edge.fromY), std::max(box.toX, edge.fromX),
               std::max(box.toY, edge.fromY)};
    }
    rows_ = rowsWithin(rows, box.fromY - kHalfDot, box.toY + kHalfDot, dots.height());
    left_ = firstBehind(box.fromX - kHalfDot, dots.width());
    width_ = firstBehind(box.toX + kHalfDot, dots.width()) - left_;
    if (rows_.begin >= rows_.end || width_ <= 0) return;

    stride_ = static_cast<size_t>(width_) + kRunLength; // an edge ends, and a run goes, beyond the last dot
    turns_.assign(stride_ * static_cast<size_t>(rows_.end - rows_.begin), 0);
    for (const Segment &edge : edges)
        addEdge(edge);
    for (int y = rows_.begin; y < rows_.end; ++y)
        coverRow(dots, y, ink);
}

float *AreaScan::rowAt(int y) { return turns_.data() + stride_ * static_cast<size_t>(y - rows_.begin); }

void AreaScan::coverRow(InkedDots &dots, int y, uint8_t ink) {
    const float *more = rowAt(y);
    float turns = 0;
    for (int x = 0; x < width_; x += kRunLength) {
        Run shades;
        for (uint8_t &shade : shades) {
            turns += *more++;
            const float around = std::abs(turns), even = 2 * static_cast<float>(static_cast<int>((around + 1) / 2));
            shade = static_cast<uint8_t>(std::abs(around - even) * kShades + kRounding);
        }
        dots.cover(left_ + x, y, ink, shades);
    }
}

void AreaScan::addEdge(const Segment &edge) {
    const float upper = std::max(std::min(edge.fromY, edge.toY), static_cast<float>(rows_.begin));
    const float lower = std::min(std::max(edge.fromY, edge.toY), static_cast<float>(rows_.end));
    if (upper >= lower) return;
    const float slope = (edge.toX - edge.fromX) / (edge.toY - edge.fromY), left = static_cast<float>(left_);
    // What lies outside is as if it ran along the side.
    const auto placeAt = [&](float y) {
        return std::clamp(edge.fromX + (y - edge.fromY) * slope - left, 0.0F, static_cast<float>(width_));
    };
    for (int y = static_cast<int>(upper); static_cast<float>(y) < lower; ++y) {
        const float top = std::max(upper, static_cast<float>(y)), bottom = std::min(lower, static_cast<float>(y + 1));
        addPart(rowAt(y), placeAt(top), placeAt(bottom), edge.fromY < edge.toY ? bottom - top : top - bottom);
    }
}

// A part of an edge within one row. It turns around what lies to its right: of the dots that it crosses a part, of all
// behind them as much as it is high.
void AreaScan::addPart(float *row, float fromX, float toX, float height) {
    const auto [left, right] = std::minmax(fromX, toX);
    const float perDot = right > left ? 1 / (right - left) : 0;
    float before = 0;
    const int last = static_cast<int>(right);
    for (int x = static_cast<int>(left); x <= last; ++x) {
        const float begin = std::max(left, static_cast<float>(x)), end = std::min(right, static_cast<float>(x + 1));
        const float passed = (begin - left) * perDot, crossing = perDot > 0 ? (end - begin) * perDot : 1;
        const float turned = (passed + crossing * (static_cast<float>(x + 1) - (begin + end) / 2)) * height;
        row[x] += turned - before;
        before = turned;
    }
    row[last + 1] += height - before;
}

} // namespace virtual_plotter
