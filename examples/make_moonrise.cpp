// Draws "Moonrise over the Long Lake", an A4 landscape plot for four pens, and writes it as HP-GL to standard output.
//
// Everything is computed from fixed numbers, and coordinates are rounded to plotter units (0.025 mm) before anything is
// decided by them, so that every machine writes the same bytes.
#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <numbers>
#include <string>
#include <vector>

namespace {

struct Point {
    int x, y;
    bool operator==(const Point &) const = default;
};
using Line = std::vector<Point>;

constexpr double kTurn = 2 * std::numbers::pi;

// The scene's window, the lake's far shore, and the moon.
constexpr int kLeft = 460, kRight = 10440, kBottom = 1290, kTop = 7140, kShore = 2840;
constexpr Point kMoon{7120, 5130};
constexpr int kMoonRadius = 1400;

// Halves are common in the figures below and cosines may differ in their last bit from machine to machine: the odd
// amount keeps ties away from the rounding.
int toUnits(double value) { return static_cast<int>(std::floor(value + 0.4837)); }

double mix(double from, double to, double share) { return from + (to - from) * share; }

double smooth(double from, double to, double value) {
    const double t = std::clamp((value - from) / (to - from), 0.0, 1.0);
    return t * t * (3 - 2 * t);
}

/// A random number of [0, 1) that belongs to a grid point.
double gridValue(int x, int z, std::uint32_t seed) {
    std::uint32_t hash = static_cast<std::uint32_t>(x) * 0x8da6b343U ^ static_cast<std::uint32_t>(z) * 0xd8163841U ^ seed;
    hash = (hash ^ hash >> 15) * 0x2c1b3c6dU;
    hash = (hash ^ hash >> 12) * 0x297a2d39U;
    return static_cast<double>((hash ^ hash >> 15) >> 8) / 16777216.0;
}

/// Smooth noise of [0, 1): the grid's values, blended.
double noise(double x, double z, std::uint32_t seed) {
    const int column = static_cast<int>(std::floor(x)), row = static_cast<int>(std::floor(z));
    const double u = smooth(0, 1, x - column), v = smooth(0, 1, z - row);
    return mix(mix(gridValue(column, row, seed), gridValue(column + 1, row, seed), u),
               mix(gridValue(column, row + 1, seed), gridValue(column + 1, row + 1, seed), u), v);
}

/// Sharp crests between round hollows, finer on high ground than in the valleys; about [0, 1].
double crests(double x, double z) {
    double sum = 0, size = 0.5, weight = 1;
    for (std::uint32_t octave = 0; octave < 5; ++octave, size *= 0.5, x *= 2.03, z *= 2.03) {
        const double crest = 1 - std::fabs(2 * noise(x, z, octave * 977 + 5) - 1);
        sum += size * weight * crest * crest;
        weight = std::clamp(1.6 * crest * crest, 0.0, 1.0);
    }
    return sum;
}

/// How far the ground at x lies above the lake, on the section that is `depth` (0 near .. 1 far) behind the shore.
double ground(int x, double depth) {
    const double across = (x - kLeft) / double(kRight - kLeft);
    const double massif = 3000 * std::exp(-std::pow((across - 0.27) / 0.17, 2)) * smooth(0.1, 0.85, depth);
    const double flank = 2500 * smooth(0.74, 1.1, across) * smooth(0.1, 0.8, depth);
    const double hills = 1250 * smooth(0, 0.8, depth);
    return 30 + 980 * depth + (massif + flank + hills) * crests(across * 5.2 + 0.9 * depth + 1.35, depth * 1.9 + 4.2);
}

/// Takes away the points that lie within `slack` units of the line without them.
void simplify(const Line &line, std::size_t first, std::size_t last, double slack, Line &kept) {
    const double dx = line[last].x - line[first].x, dy = line[last].y - line[first].y, length = std::hypot(dx, dy);
    std::size_t farthest = first;
    double distance = slack;
    for (std::size_t i = first + 1; i < last; ++i) {
        const double px = line[i].x - line[first].x, py = line[i].y - line[first].y;
        const double off = length > 0 ? std::fabs(px * dy - py * dx) / length : std::hypot(px, py);
        if (off > distance + 1e-6) distance = off, farthest = i;
    }
    if (farthest != first) {
        simplify(line, first, farthest, slack, kept);
        simplify(line, farthest, last, slack, kept);
    } else {
        kept.push_back(line[last]);
    }
}

std::string moveTo(Point point) { return "PU" + std::to_string(point.x) + ',' + std::to_string(point.y) + ';'; }

/// The runs of a line whose points are wanted.
template <typename Wanted> std::vector<Line> runs(const Line &line, Wanted wanted) {
    std::vector<Line> found(1);
    for (const Point &point : line) {
        if (wanted(point))
            found.back().push_back(point);
        else if (!found.back().empty())
            found.emplace_back();
    }
    return found;
}

constexpr auto everywhere = [](Point) { return true; };

/// The lines of one pen, collected first so that the pen's ways in the air can be kept short.
class Layer {
public:
    void add(const Line &line, double slack = 1.8) {
        if (line.size() < 2) return;
        Line kept{line.front()};
        simplify(line, 0, line.size() - 1, slack, kept);
        lines_.push_back(std::move(kept));
    }

    /// Writes the lines, each time going on at the nearest free end.
    void write(std::string &out) {
        Point pen{0, 0};
        while (!lines_.empty()) {
            std::size_t next = 0;
            bool backwards = false;
            std::int64_t nearest = INT64_MAX;
            for (std::size_t i = 0; i < lines_.size(); ++i) {
                for (const bool back : {false, true}) {
                    const Point &end = back ? lines_[i].back() : lines_[i].front();
                    const std::int64_t dx = end.x - pen.x, dy = end.y - pen.y;
                    if (dx * dx + dy * dy < nearest) nearest = dx * dx + dy * dy, next = i, backwards = back;
                }
            }
            Line line = std::move(lines_[next]);
            lines_.erase(lines_.begin() + static_cast<std::ptrdiff_t>(next));
            if (backwards) std::reverse(line.begin(), line.end());
            writeLine(line, out);
            pen = line.back();
        }
    }

private:
    static void writeLine(const Line &line, std::string &out) {
        out += moveTo(line.front());
        // Two points a command: a sender that cuts in front of PD then finds a place to cut in every few bytes.
        for (std::size_t i = 1; i < line.size(); ++i) {
            out += i % 2 == 1 ? "PD" : ",";
            out += std::to_string(line[i].x) + ',' + std::to_string(line[i].y);
            if (i % 2 == 0 || i + 1 == line.size()) out += ';';
        }
    }

    std::vector<Line> lines_;
};

/// For each column of the sheet the height below which the mountains hide what is behind them.
using Skyline = std::vector<int>;

/// Sections through the terrain from near to far, each drawn where it stands out above all nearer ones.
Skyline drawMountains(Layer &layer) {
    constexpr int kSections = 70, kStep = 5;
    Skyline skyline(kRight + 1, kShore - 1);
    for (int section = 0; section < kSections; ++section) {
        const double depth = section / double(kSections - 1);
        Line profile;
        for (int x = kLeft; x <= kRight; x += kStep)
            profile.push_back({x, kShore + toUnits(ground(x, depth))});
        // Lines closer than a pen's width would run into one.
        const auto visible = [&](Point p) { return p.y > skyline[static_cast<std::size_t>(p.x)] + 13; };
        for (const Line &run : runs(profile, visible)) {
            if (run.size() < 8) continue;
            layer.add(run, 3);
            for (const Point &point : run)
                std::fill_n(skyline.begin() + point.x, std::min(kStep, kRight + 1 - point.x), point.y);
        }
    }
    return skyline;
}

/// A rosette as on banknotes: strands that swing between an inner and an outer edge.
struct Rosette {
    int inner, outer;   // edges, in units
    int waves, strands; // swings a turn; copies, shifted against each other
    double lobes;       // the edges themselves wave as often, by this share of the radius
};

template <typename Wanted> void drawRosette(Layer &layer, Point centre, const Rosette &rosette, Wanted wanted) {
    const int steps = rosette.outer < 400 ? 360 : 1440;
    for (int strand = 0; strand < rosette.strands; ++strand) {
        Line line;
        for (int step = 0; step <= steps; ++step) {
            const double angle = kTurn * step / steps;
            const double swing = std::cos(rosette.waves * angle + kTurn * strand / rosette.strands);
            const double edge = 1 + rosette.lobes * std::cos(rosette.waves * angle);
            const double radius = edge * mix(rosette.inner, rosette.outer, (1 + swing) / 2);
            line.push_back({toUnits(centre.x + radius * std::cos(angle)), toUnits(centre.y + radius * std::sin(angle))});
        }
        for (const Line &run : runs(line, wanted))
            layer.add(run);
    }
}

template <typename Wanted> void drawCircle(Layer &layer, Point centre, int radius, Wanted wanted) {
    drawRosette(layer, centre, {radius, radius, 0, 1, 0}, wanted);
}

template <typename Wanted> void drawMoon(Layer &layer, Wanted wanted) {
    for (const Rosette &rosette : {Rosette{1040, 1330, 24, 5, 0.012}, Rosette{640, 1010, 12, 7, 0.02},
                                   Rosette{250, 620, 8, 7, 0.03}, Rosette{60, 240, 6, 4, 0}})
        drawRosette(layer, kMoon, rosette, wanted);
    drawCircle(layer, kMoon, kMoonRadius, wanted);
    drawCircle(layer, kMoon, kMoonRadius - 26, wanted);
}

void drawCross(Layer &layer, Point centre, int arm) {
    layer.add({{centre.x - arm, centre.y}, {centre.x + arm, centre.y}});
    layer.add({{centre.x, centre.y + arm}, {centre.x, centre.y - arm}});
}

/// Small crosses all over the sky, but not over the mountains, the moon's halo and the two figures.
void drawFaintStars(Layer &layer, const Skyline &skyline, const std::vector<Line> &figures) {
    for (int row = 0; row < 12; ++row) {
        for (int column = 0; column < 27; ++column) {
            if (gridValue(column, row, 3) > 0.34) continue;
            const Point star{kLeft + 100 + toUnits(365 * (column + 0.9 * gridValue(column, row, 1))),
                             3500 + toUnits(300 * (row + 0.9 * gridValue(column, row, 2)))};
            const auto near = [star](Point p, int distance) { return std::hypot(p.x - star.x, p.y - star.y) < distance; };
            bool free = star.x < kRight - 80 && star.y < kTop - 80 && !near(kMoon, kMoonRadius + 420) &&
                        star.y > skyline[static_cast<std::size_t>(star.x)] + 260;
            for (const Line &figure : figures)
                for (const Point &bright : figure)
                    free = free && !near(bright, 230);
            if (free) drawCross(layer, star, 12 + toUnits(14 * gridValue(column, row, 4)));
        }
    }
}

/// Broken level lines: close and dark under the mountains' mirror image, golden under the moon's, few elsewhere.
void drawLake(Layer &water, Layer &gold, const Skyline &skyline) {
    constexpr double kMirror = 0.46; // the lake is seen at a slant
    int below = 24;                  // the shore
    for (int row = 0; below < kShore - kBottom - 20; ++row, below += 22 + 24 * below / (kShore - kBottom)) {
        const double down = below / kMirror;
        const int level = kShore - below;
        Line blue, golden;
        const auto flush = [](Layer &layer, Line &line) {
            if (line.size() > 5) layer.add({line.front(), line.back()});
            line.clear();
        };
        for (int x = kLeft + 30; x <= kRight - 30; x += 10) {
            const double ripple = noise(x / 210.0, row * 0.83, 71), swell = noise(x / 60.0, row * 3.7, 13);
            const double sway = 200 * (noise(0.5, row * 0.61, 5) - 0.5);
            const double fromMoon = std::fabs(x + sway - kMoon.x);
            const double chord = std::fabs(kMoon.y - kShore - down);
            const double half = chord < kMoonRadius ? std::sqrt(double(kMoonRadius) * kMoonRadius - chord * chord) : 0;
            const double path = 260 + 0.12 * down;
            const bool mirrorsGround = skyline[static_cast<std::size_t>(x)] - kShore > down + 160 * (swell - 0.5);
            const bool mirrorsMoon = !mirrorsGround && fromMoon < std::max(half * 0.9, path);
            const double wanted = mirrorsGround ? 0.72 : 0.22;
            if (mirrorsMoon && ripple < 0.7)
                golden.push_back({x, level});
            else
                flush(gold, golden);
            if (!mirrorsMoon && ripple < wanted)
                blue.push_back({x, level});
            else
                flush(water, blue);
        }
        flush(gold, golden);
        flush(water, blue);
    }
}

/// A plaited band around the sheet, with a rosette on each corner.
void drawBorder(Layer &layer) {
    constexpr int kInset = 255, kAmplitude = 75, kStrands = 3, kSteps = 12;
    constexpr Point kFar{10900 - kInset, 7600 - kInset};
    for (int strand = 0; strand < kStrands; ++strand) {
        for (const bool level : {true, false}) {
            const int from = kInset + 140, to = (level ? kFar.x : kFar.y) - 140, steps = (level ? 33 : 22) * kSteps;
            for (const int side : {kInset, level ? kFar.y : kFar.x}) {
                Line line;
                for (int step = 0; step <= steps; ++step) {
                    const int along = toUnits(mix(from, to, step / double(steps)));
                    const double phase = kTurn * (step / double(kSteps) + strand / double(kStrands));
                    const int off = side + toUnits(kAmplitude * std::sin(phase));
                    line.push_back(level ? Point{along, off} : Point{off, along});
                }
                layer.add(line);
            }
        }
    }
    for (const Point corner : {Point{kInset, kInset}, {kFar.x, kInset}, {kFar.x, kFar.y}, {kInset, kFar.y}})
        drawRosette(layer, corner, {35, 100, 5, 3, 0}, everywhere);
}

Line box(int left, int bottom, int right, int top) {
    return {{left, bottom}, {right, bottom}, {right, top}, {left, top}, {left, bottom}};
}

/// A text around its middle; size is the character's width and height in cm, advance the width that it takes up in units.
std::string label(Point middle, const std::string &size, int advance, const std::string &text) {
    const int left = middle.x - advance * static_cast<int>(text.size()) / 2;
    return "SI" + size + ';' + moveTo({left, middle.y}) + "LB" + text + "\x03;";
}

} // namespace

int main() {
    // The Great Bear and Cassiopeia, each as the line that joins its stars.
    const std::vector<Line> figures = {
        {{3750, 6350}, {4130, 6560}, {4390, 6500}, {4700, 6400}, {4790, 6090}, {5270, 6130}, {5330, 6470}, {4700, 6400}},
        {{8960, 6640}, {9200, 6230}, {9500, 6420}, {9850, 6130}, {9990, 6560}}};

    Layer frame, mountains, gold, lake, dashed, grey;
    const Skyline skyline = drawMountains(mountains);
    const auto inSky = [&](Point p) { return p.y > skyline[static_cast<std::size_t>(p.x)] + 12; };
    drawMoon(gold, inSky);
    drawLake(lake, gold, skyline);
    drawFaintStars(grey, skyline, figures);
    drawBorder(grey);
    for (const int radius : {kMoonRadius + 130, kMoonRadius + 290})
        drawCircle(dashed, kMoon, radius, inSky);
    std::string rings;
    for (const Line &figure : figures) {
        dashed.add(figure);
        for (const Point &star : figure) {
            drawCross(grey, star, 42);
            rings += moveTo(star) + "CI20;";
        }
    }
    for (const int x : {kLeft + 700, kRight - 700}) {
        drawRosette(gold, {x, 815}, {120, 270, 12, 3, 0.03}, everywhere);
        drawRosette(gold, {x, 815}, {30, 110, 6, 2, 0}, everywhere);
    }
    frame.add(box(150, 150, 10750, 7450));
    frame.add(box(kLeft - 100, kLeft - 100, kRight + 100, kTop + 100));
    frame.add(box(kLeft, kBottom, kRight, kTop));

    std::string out = "IN;SP1;PA;";
    frame.write(out);
    mountains.write(out);
    out += label({5450, 830}, "0.36,0.54", 216, "MOONRISE OVER THE LONG LAKE");
    out += label({5450, 590}, "0.18,0.25", 108, "FOUR PENS ON A4 * ORB VECTORIX FOUNDATION");
    out += "SP2;";
    gold.write(out);
    out += "SP3;";
    lake.write(out);
    out += "SP4;" + rings + "LT2,0.6;";
    dashed.write(out);
    out += "LT;";
    grey.write(out);
    out += "PU;SP0;";
    return std::fwrite(out.data(), 1, out.size(), stdout) == out.size() && std::fflush(stdout) == 0 ? 0 : 1;
}
