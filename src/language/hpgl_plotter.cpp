#include "language/hpgl_plotter.h"

#include <cmath>

namespace language::hpgl {

Plotter::Plotter(PenSink &sink, const Rectangle &hardClip, Clipping clipping, double secondsPerByte, Findings &found)
    : findings(found), carriage(sink, hardClip, clipping, secondsPerByte, found), frame(hardClip) {
    initialize(*this);
}

void Plotter::go(Point to) {
    at = clamped(to);
    if (defining) {
        polygon.add(at, down, findings.lostVertices);
        return;
    }
    if (down)
        carriage.lineTo(frame.toSheet(at));
    else
        carriage.moveTo(frame.toSheet(at));
}

Point Plotter::placeOf(Point user, bool asStep) const noexcept {
    if (!asStep) return frame.toPlotter(user);
    const Point step = frame.stepToPlotter(user);
    return clamped(Point{at.x + step.x, at.y + step.y});
}

void Plotter::lower() {
    if (!down && !defining) carriage.touch();
    down = true;
}

void Plotter::lift() {
    if (down && !defining) resume();
    down = false;
}

void Plotter::applyPen() {
    const double width = pens.widths[static_cast<size_t>(pens.selected)];
    carriage.setPen(pens.selected, pens.relative ? width / 100 * frame.diagonal() / kUnitsPerMillimetre : width);
}

void Plotter::applyLineType() {
    LineType type;
    if (lines.kind == Lines::Ends) type.kind = LineType::Ends;
    if (lines.kind == Lines::Dashes) {
        const int number = std::abs(lines.type);
        const Lines::Pattern &own = lines.patterns[static_cast<size_t>(number)];
        const double length = lines.millimetres ? lines.length * kUnitsPerMillimetre : lines.length / 100 * frame.diagonal();
        type = dashed(lines.type < 0 ? LineType::Adaptive : LineType::Fixed,
                      own.count > 0 ? Numbers(own.parts.data(), own.count) : standardPattern(number), length);
    }
    carriage.setLineType(type);
}

void Plotter::applyWindow() {
    if (!window) return carriage.setWindow(carriage.reach());
    carriage.setWindow(rectangleOf(frame.toSheet(window->lower), frame.toSheet(window->upper)));
}

} // namespace language::hpgl
