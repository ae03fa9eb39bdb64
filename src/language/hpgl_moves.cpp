// HP-GL: moves, and the ticks of axes.
#include "language/hpgl_handlers.h"

#include <cmath>

namespace language::hpgl {

namespace {

bool move(Plotter &p, Numbers n) {
    p.goUser({n[0], n[1]});
    p.lettering.lineStart = p.at;
    if (p.lettering.symbol != 0 && !p.defining) drawSymbol(p);
    return true;
}

bool tick(Plotter &p, Point up, Point down) {
    p.carriage.moveTo(p.frame.toSheet(clamped({p.at.x - down.x, p.at.y - down.y})));
    p.carriage.strokeTo(p.frame.toSheet(clamped({p.at.x + up.x, p.at.y + up.y})));
    p.resume();
    return true;
}

} // namespace

bool plotAbsolute(Plotter &p, Numbers n) {
    if (!n.empty()) return move(p, n);
    p.relative = false;
    return true;
}

bool plotRelative(Plotter &p, Numbers n) {
    if (!n.empty()) return move(p, n);
    p.relative = true;
    return true;
}

bool penUp(Plotter &p, Numbers n) {
    if (!n.empty()) return move(p, n);
    p.lift();
    return true;
}

bool penDown(Plotter &p, Numbers n) {
    if (!n.empty()) return move(p, n);
    p.lower();
    return true;
}

bool tickLength(Plotter &p, Numbers n) {
    p.tickUp = n.empty() ? 0.5 : n[0];
    p.tickDown = n.empty() ? 0.5 : n.size() > 1 ? n[1] : 0;
    return true;
}

bool xTick(Plotter &p, Numbers) {
    const double height = std::abs(p.frame.p2().y - p.frame.p1().y) / 100;
    return tick(p, {0, p.tickUp * height}, {0, p.tickDown * height});
}

bool yTick(Plotter &p, Numbers) {
    const double width = std::abs(p.frame.p2().x - p.frame.p1().x) / 100;
    return tick(p, {p.tickUp * width, 0}, {p.tickDown * width, 0});
}

} // namespace language::hpgl
