// HP-GL: polygons, rectangles and wedges, outlined and filled.
#include "language/chords.h"
#include "language/hatching.h"
#include "language/hpgl_handlers.h"

#include <algorithm>
#include <cmath>
#include <numbers>

namespace language::hpgl {

namespace {

constexpr double kFinestHatching = 1000; // lines on the sheet, at most

void outline(Plotter &p) {
    const auto points = p.polygon.points();
    if (!p.carriage.afford(points.size())) return;
    size_t start = 0;
    for (size_t end : p.polygon.ends()) {
        p.carriage.moveTo(p.frame.toSheet(points[start]));
        for (size_t i = start + 1; i < end; ++i) {
            const Point to = p.frame.toSheet(points[i]);
            if (p.polygon.edge(i))
                p.carriage.lineTo(to);
            else
                p.carriage.moveTo(to);
        }
        start = end;
    }
    p.resume();
}

void hatch(Plotter &p, double degrees, double spacing) {
    const Rectangle area = p.frame.area();
    const double least = std::hypot(area.upper.x - area.lower.x, area.upper.y - area.lower.y) / kFinestHatching;
    const double distance = std::max({spacing, least, p.carriage.width() * kUnitsPerMillimetre});
    const size_t count = p.polygon.ends().empty() ? 0 : p.polygon.ends().back();
    const Rectangle &reach = p.carriage.reach();
    const Rectangle across = rectangleOf(p.frame.fromSheet(reach.lower), p.frame.fromSheet(reach.upper));
    Hatching hatching(p.polygon.points().first(count), p.polygon.ends(), across, p.frame.p1(), degrees, distance);
    if (!p.carriage.afford(hatching.work())) return;
    for (int64_t line = 0; line < hatching.lines(); ++line) {
        for (const Line &piece : hatching.pieces(line)) {
            p.carriage.moveTo(p.frame.toSheet(piece.from));
            p.carriage.lineTo(p.frame.toSheet(piece.to));
        }
    }
    p.resume();
}

void fillSolid(Plotter &p) {
    const auto ends = p.polygon.ends();
    if (ends.empty() || !p.carriage.afford(ends.back())) return;
    p.onSheet.clear();
    for (Point point : p.polygon.points().first(ends.back()))
        p.onSheet.push_back(p.frame.toSheet(point));
    p.carriage.fill(p.onSheet, ends);
}

void fill(Plotter &p) {
    const Filling &filling = p.filling;
    const double penWidth = p.carriage.width() * kUnitsPerMillimetre;
    const double spacing =
        filling.spacing > 0 ? filling.spacing * std::abs(p.frame.stepToPlotter({1, 1}).x) : p.frame.diagonal() / 100;
    switch (filling.type) {
    case 4: hatch(p, filling.angle + 90, spacing); [[fallthrough]];
    case 3: hatch(p, filling.angle, spacing); break;
    case 10: // shading: hatched so that this percentage of the paper is covered
        if (filling.spacing > 0 && filling.spacing < 100)
            hatch(p, 45, penWidth * 100 / filling.spacing);
        else if (filling.spacing >= 100)
            fillSolid(p);
        break;
    default: fillSolid(p);
    }
}

/// Replaces the buffer's contents by a rectangle, as if it had been defined between PM0 and PM2.
void makeRectangle(Plotter &p, Point corner) {
    p.polygon.clear();
    for (Point vertex : {p.at, Point{corner.x, p.at.y}, corner, Point{p.at.x, corner.y}}) {
        p.polygon.add(vertex, true, p.findings.lostVertices);
    }
    p.polygon.close(true);
}

/// Replaces them by a wedge. Takes radius (a negative one points backwards), start and sweep angle, and chord.
void makeWedge(Plotter &p, Numbers n) {
    const Point unit = p.frame.stepToPlotter({1, 1});
    const double sweep = std::clamp(n[2], -360.0, 360.0);
    const double start = n[1] * std::numbers::pi / 180;
    const Point radius{n[0] * std::cos(start), n[0] * std::sin(start)};
    auto add = [&](Point turn) {
        const Point vertex{p.at.x + unit.x * (radius.x * turn.x - radius.y * turn.y),
                           p.at.y + unit.y * (radius.x * turn.y + radius.y * turn.x)};
        p.polygon.add(clamped(vertex), true, p.findings.lostVertices);
    };
    p.polygon.clear();
    if (std::abs(sweep) < 360) p.polygon.add(p.at, true, p.findings.lostVertices);
    add({1, 0});
    forEachChord(sweep, chordAngle(p, n.size() > 3 ? n[3] : 0, std::abs(n[0])), add);
    p.polygon.close(true);
}

} // namespace

bool polygonMode(Plotter &p, Numbers n) {
    const double mode = n.empty() ? 0 : n[0];
    p.defines = true;
    if (mode == 0) {
        p.polygon.clear();
        p.polygon.add(p.at, p.down, p.findings.lostVertices);
        p.defining = true;
        return true;
    }
    if ((mode != 1 && mode != 2) || !p.defining) return false;
    p.polygon.close(p.down);
    if (mode == 2) {
        p.defining = false;
        p.resume();
    }
    return true;
}

bool edgePolygon(Plotter &p, Numbers) {
    outline(p);
    return true;
}

bool fillPolygon(Plotter &p, Numbers) {
    fill(p);
    return true;
}

bool fillType(Plotter &p, Numbers n) {
    Filling filling;
    if (!n.empty()) filling.type = static_cast<int>(n[0]);
    if (n.size() > 1) filling.spacing = n[1];
    if (n.size() > 2) filling.angle = n[2];
    const bool known = (filling.type >= 1 && filling.type <= 4) || filling.type == 10;
    if (!known || filling.spacing < 0) return false;
    p.filling = filling;
    return true;
}

bool edgeRectangleAbsolute(Plotter &p, Numbers n) {
    makeRectangle(p, p.placeOf({n[0], n[1]}, false));
    return edgePolygon(p, n);
}

bool edgeRectangleRelative(Plotter &p, Numbers n) {
    makeRectangle(p, p.placeOf({n[0], n[1]}, true));
    return edgePolygon(p, n);
}

bool fillRectangleAbsolute(Plotter &p, Numbers n) {
    makeRectangle(p, p.placeOf({n[0], n[1]}, false));
    return fillPolygon(p, n);
}

bool fillRectangleRelative(Plotter &p, Numbers n) {
    makeRectangle(p, p.placeOf({n[0], n[1]}, true));
    return fillPolygon(p, n);
}

bool edgeWedge(Plotter &p, Numbers n) {
    makeWedge(p, n);
    return edgePolygon(p, n);
}

bool fillWedge(Plotter &p, Numbers n) {
    makeWedge(p, n);
    return fillPolygon(p, n);
}

} // namespace language::hpgl
