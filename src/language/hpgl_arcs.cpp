// HP-GL: arcs and circles, as chords. They are round in user units.
#include "language/chords.h"
#include "language/hpgl_handlers.h"

#include <algorithm>
#include <cmath>
#include <numbers>

namespace language::hpgl {

namespace {

constexpr double kOnALine = 1e-9; // sine between two directions that are the same but for rounding

/// Draws an arc of so many degrees that begins where the pen is.
void drawArc(Plotter &p, Point centre, double sweep, double chord) {
    const Point unit = p.frame.stepToPlotter({1, 1});
    const Point radius{(p.at.x - centre.x) / unit.x, (p.at.y - centre.y) / unit.y};
    forEachChord(sweep, chordAngle(p, chord, std::hypot(radius.x, radius.y)), [&](Point turn) {
        p.go({centre.x + unit.x * (radius.x * turn.x - radius.y * turn.y),
              centre.y + unit.y * (radius.x * turn.y + radius.y * turn.x)});
    });
}

bool arc(Plotter &p, Numbers n, bool relative) {
    const Point centre = p.placeOf({n[0], n[1]}, relative);
    drawArc(p, centre, std::clamp(n[2], -360.0, 360.0), n.size() > 3 ? n[3] : 0);
    p.lettering.lineStart = p.at;
    return true;
}

/// Draws an arc from the pen through a second point to a third. A third point where the pen is makes a circle, with the
/// second one opposite; three points on a line make a line.
bool arcThrough(Plotter &p, Numbers n, bool relative) {
    const Point unit = p.frame.stepToPlotter({1, 1});
    const Point end = p.placeOf({n[2], n[3]}, relative);
    const auto fromHere = [&](Point to) { return Point{(to.x - p.at.x) / unit.x, (to.y - p.at.y) / unit.y}; };
    const Point m = fromHere(p.placeOf({n[0], n[1]}, relative));
    const Point e = fromHere(end);
    const double chord = n.size() > 4 ? n[4] : 0;
    const double mm = m.x * m.x + m.y * m.y;
    const double ee = e.x * e.x + e.y * e.y;
    const double cross = m.x * e.y - m.y * e.x; // above 0: counterclockwise
    if (ee == 0 && mm > 0) {
        drawArc(p, {p.at.x + m.x / 2 * unit.x, p.at.y + m.y / 2 * unit.y}, 360, chord);
    } else if (std::abs(cross) <= kOnALine * std::sqrt(mm * ee)) {
        p.go(end);
    } else {
        const Point c{(e.y * mm - m.y * ee) / (2 * cross), (m.x * ee - e.x * mm) / (2 * cross)};
        const Point last{e.x - c.x, e.y - c.y};
        double sweep = std::atan2(c.y * last.x - c.x * last.y, -c.x * last.x - c.y * last.y) * 180 / std::numbers::pi;
        if (cross > 0 && sweep < 0) sweep += 360;
        if (cross < 0 && sweep > 0) sweep -= 360;
        drawArc(p, {p.at.x + c.x * unit.x, p.at.y + c.y * unit.y}, sweep, chord);
    }
    p.lettering.lineStart = p.at;
    return true;
}

} // namespace

double chordAngle(const Plotter &p, double chord, double radius) noexcept {
    chord = std::abs(chord);
    if (chord == 0) return kDefaultChord;
    if (p.chordsByDeviation) {
        const double ratio = radius > 0 ? std::clamp(1 - chord / radius, -1.0, 1.0) : 1;
        chord = 2 * std::acos(ratio) * 180 / std::numbers::pi;
    }
    return std::clamp(chord, kLeastChord, 180.0);
}

bool arcAbsolute(Plotter &p, Numbers n) { return arc(p, n, false); }
bool arcRelative(Plotter &p, Numbers n) { return arc(p, n, true); }
bool arcThroughAbsolute(Plotter &p, Numbers n) { return arcThrough(p, n, false); }
bool arcThroughRelative(Plotter &p, Numbers n) { return arcThrough(p, n, true); }

/// Draws whether or not the pen is down. In the polygon buffer a circle is a contour of its own.
bool circle(Plotter &p, Numbers n) {
    const Point centre = p.at;
    const Point unit = p.frame.stepToPlotter({1, 1});
    auto place = [&](Point turn) {
        return clamped(Point{centre.x + n[0] * unit.x * turn.x, centre.y + n[0] * unit.y * turn.y});
    };
    const double chord = chordAngle(p, n.size() > 1 ? n[1] : 0, std::abs(n[0]));
    if (p.defining) {
        p.polygon.close(p.down);
        p.polygon.add(place({1, 0}), true, p.findings.lostVertices);
        forEachChord(360, chord, [&](Point turn) { p.polygon.add(place(turn), true, p.findings.lostVertices); });
        p.polygon.close(true);
        return true;
    }
    p.carriage.moveTo(p.frame.toSheet(place({1, 0})));
    forEachChord(360, chord, [&](Point turn) { p.carriage.lineTo(p.frame.toSheet(place(turn))); });
    p.resume();
    return true;
}

bool chordTolerance(Plotter &p, Numbers n) {
    if (!n.empty() && n[0] != 0 && n[0] != 1) return false;
    p.chordsByDeviation = !n.empty() && n[0] == 1;
    return true;
}

} // namespace language::hpgl
