// HP-GL/2: Bézier curves, as chords.
#include "language/hpgl_handlers.h"

#include <algorithm>
#include <cmath>

namespace language::hpgl {

namespace {

constexpr double kDeviation = 0.5; // plotter units that a chord may lie beside the curve
constexpr double kMostChords = 1000;

/// How much three control points depart from evenly spaced ones on a line: the length of their second difference.
double bend(Point a, Point b, Point c) { return std::hypot(a.x - 2 * b.x + c.x, a.y - 2 * b.y + c.y); }

/// Draws a curve from where the pen is; all points of a relative one are steps from there.
bool curve(Plotter &p, Numbers n, bool relative) {
    if (n.empty()) return true;
    const Point a = p.at;
    const Point b = p.placeOf({n[0], n[1]}, relative);
    const Point c = p.placeOf({n[2], n[3]}, relative);
    const Point d = p.placeOf({n[4], n[5]}, relative);
    // The second derivative is at most six times the bend, and a chord's deviation an eighth of it, by the square of t.
    const double most = std::max(bend(a, b, c), bend(b, c, d));
    const int count = static_cast<int>(std::clamp(std::ceil(std::sqrt(0.75 * most / kDeviation)), 1.0, kMostChords));
    for (int i = 1; i < count; ++i) {
        const double t = static_cast<double>(i) / count, s = 1 - t;
        const double wa = s * s * s, wb = 3 * s * s * t, wc = 3 * s * t * t, wd = t * t * t;
        p.go({wa * a.x + wb * b.x + wc * c.x + wd * d.x, wa * a.y + wb * b.y + wc * c.y + wd * d.y});
    }
    p.go(d);
    p.lettering.lineStart = p.at;
    return true;
}

} // namespace

bool curveAbsolute(Plotter &p, Numbers n) { return curve(p, n, false); }
bool curveRelative(Plotter &p, Numbers n) { return curve(p, n, true); }

} // namespace language::hpgl
