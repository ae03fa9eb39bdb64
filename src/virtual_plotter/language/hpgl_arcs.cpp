// HP-GL: arcs and circles, as chords. They are round in user units.
#include "virtual_plotter/language/chords.h"
#include "virtual_plotter/language/hpgl_handlers.h"

#include <algorithm>
#include <cmath>
#include <numbers>

namespace virtual_plotter::hpgl {

namespace {

bool arc(Plotter &p, Numbers n, bool relative) {
    const Point centre = p.placeOf({n[0], n[1]}, relative);
    const double sweep = std::clamp(n[2], -360.0, 360.0);
    const Point unit = p.frame.stepToPlotter({1, 1});
    const Point radius{(p.at.x - centre.x) / unit.x, (p.at.y - centre.y) / unit.y};
    const double chord = chordAngle(p, n.size() > 3 ? n[3] : 0, std::hypot(radius.x, radius.y));
    forEachChord(sweep, chord, [&](Point turn) {
        p.go({centre.x + unit.x * (radius.x * turn.x - radius.y * turn.y),
              centre.y + unit.y * (radius.x * turn.y + radius.y * turn.x)});
    });
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

/// Draws whether or not the pen is down. Into the polygon buffer it goes as a contour of its own.
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

} // namespace virtual_plotter::hpgl
