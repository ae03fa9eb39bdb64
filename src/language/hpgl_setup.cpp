// HP-GL: defaults, scaling, the window, the coordinate system.
#include "language/hpgl_handlers.h"

#include <algorithm>

namespace language::hpgl {

namespace {

// Letters' size before SI or SR, in millimetres: as plotters have it for paper up to A4, and for larger.
constexpr Point kSmallLetters{1.87, 2.69};
constexpr Point kLargeLetters{2.85, 3.75};
constexpr double kSmallSheet = 300; // millimetres along its longer edge

/// Widths and pattern lengths may be percentages of the distance between P1 and P2, so they change with them.
void scalingPointsChanged(Plotter &p) {
    p.applyPen();
    p.applyLineType();
}

/// Sets P1 and P2; without a P2 it moves along with P1. False, and nothing changes, for corners that span no area.
bool setCorners(Plotter &p, Point p1, std::optional<Point> p2) {
    const Point old = p.frame.p1();
    if (!p2) p2 = Point{p1.x + p.frame.p2().x - old.x, p1.y + p.frame.p2().y - old.y};
    if (!p.frame.setScalingPoints(p1, *p2)) return false;
    scalingPointsChanged(p);
    return true;
}

} // namespace

void defaultLetters(Lettering &letters, const Rectangle &sheet) {
    const double longer = std::max(sheet.upper.x - sheet.lower.x, sheet.upper.y - sheet.lower.y) / kUnitsPerMillimetre;
    const Point size = longer > kSmallSheet ? kLargeLetters : kSmallLetters;
    letters.relativeSize = false;
    letters.width = size.x * kUnitsPerMillimetre;
    letters.height = size.y * kUnitsPerMillimetre;
}

bool setDefaults(Plotter &p, Numbers) {
    p.defining = false;
    p.relative = false;
    p.frame.setScale({});
    p.window.reset();
    p.lines = {};
    p.filling = {};
    const Point lineStart = p.lettering.lineStart;
    p.lettering = {};
    p.lettering.lineStart = lineStart;
    defaultLetters(p.lettering, p.carriage.hardClip());
    p.tickUp = p.tickDown = 0.5;
    p.chordsByDeviation = false;
    p.pens.relative = false;
    p.pens.widths.fill(Carriage::kDefaultWidth);
    p.applyWindow();
    scalingPointsChanged(p);
    p.resume();
    return true;
}

void initialize(Plotter &p) {
    const Point place = p.frame.toSheet(p.at);
    p.down = false;
    p.frame.reset();
    p.at = p.lettering.lineStart = place;
    p.polygon.clear();
    p.pens.selected = 1;
    p.pens.chosen = false;
    p.settings.clear();
    p.carriage.setSpeed(Carriage::kDefaultSpeed);
    setDefaults(p, {});
}

bool initializeInstruction(Plotter &p, Numbers) {
    initialize(p);
    p.initialized = true;
    return true;
}

bool scalingPoints(Plotter &p, Numbers n) {
    if (n.empty()) {
        p.frame.defaultScalingPoints();
        scalingPointsChanged(p);
        return true;
    }
    if (n.size() != 2 && n.size() != 4) return false;
    return setCorners(p, {n[0], n[1]}, n.size() == 4 ? std::optional(Point{n[2], n[3]}) : std::nullopt);
}

bool relativeScalingPoints(Plotter &p, Numbers n) {
    if (n.size() != 2 && n.size() != 4) return n.empty() && scalingPoints(p, n);
    const Rectangle all = p.frame.area();
    auto corner = [&](double x, double y) {
        return Point{all.lower.x + x / 100 * (all.upper.x - all.lower.x),
                     all.lower.y + y / 100 * (all.upper.y - all.lower.y)};
    };
    return setCorners(p, corner(n[0], n[1]), n.size() == 4 ? std::optional(corner(n[2], n[3])) : std::nullopt);
}

bool scale(Plotter &p, Numbers n) { return p.frame.setScale(n); }

/// Takes the corners in the units in effect, and keeps them in plotter units: a later scale does not move the window.
bool inputWindow(Plotter &p, Numbers n) {
    if (!n.empty() && n.size() != 4) return false;
    if (n.empty())
        p.window.reset();
    else
        p.window = rectangleOf(p.frame.toPlotter({n[0], n[1]}), p.frame.toPlotter({n[2], n[3]}));
    p.applyWindow();
    return true;
}

/// The pen stays where it is on the sheet; P1, P2 and the window keep their coordinates and turn along.
bool rotateCoordinates(Plotter &p, Numbers n) {
    const Point place = p.frame.toSheet(p.at);
    if (!p.frame.rotate(n.empty() ? 0 : static_cast<int>(n[0]))) return false;
    p.at = p.frame.fromSheet(place);
    p.lettering.lineStart = p.at;
    p.applyWindow();
    return true;
}

} // namespace language::hpgl
