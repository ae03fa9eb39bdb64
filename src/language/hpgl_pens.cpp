// HP-GL: pens, their width and speed, line types.
#include "language/hpgl_handlers.h"

#include <algorithm>
#include <cmath>

namespace language::hpgl {

bool selectPen(Plotter &p, Numbers n) {
    const double pen = n.empty() ? 0 : std::floor(n[0]);
    if (pen < 0 || pen >= static_cast<double>(Pens::kCount)) return false;
    p.pens.selected = static_cast<int>(pen);
    p.pens.chosen = true;
    p.applyPen();
    return true;
}

/// Takes the width and the pen that it is for; without a pen it is for all.
bool penWidth(Plotter &p, Numbers n) {
    const double width = !n.empty() ? n[0] : p.pens.relative ? 0.1 : Carriage::kDefaultWidth;
    if (width < 0) return false;
    if (n.size() < 2) {
        p.pens.widths.fill(width);
    } else {
        if (n[1] < 0 || n[1] >= static_cast<double>(Pens::kCount)) return false;
        p.pens.widths[static_cast<size_t>(n[1])] = width;
    }
    p.applyPen();
    return true;
}

bool widthUnit(Plotter &p, Numbers n) {
    if (!n.empty() && n[0] != 0 && n[0] != 1) return false;
    p.pens.relative = !n.empty() && n[0] == 1;
    return penWidth(p, {});
}

bool velocity(Plotter &p, Numbers n) {
    if (!n.empty() && n[0] <= 0) return false;
    p.carriage.setSpeed(n.empty() ? Carriage::kDefaultSpeed : n[0]);
    return true;
}

/// Takes the type, the pattern's length, and whether that is in millimetres; the last two stay as they are when not given.
bool lineType(Plotter &p, Numbers n) {
    Lines &lines = p.lines;
    if (!n.empty()) {
        if (n[0] == 99) return true; // asks for the previous line type: not done, as plotters that know it are rare
        if (std::abs(n[0]) >= static_cast<double>(lines.patterns.size())) return false;
        if (n.size() > 1 && n[1] <= 0) return false;
        if (n.size() > 2 && n[2] != 0 && n[2] != 1) return false;
        lines.type = static_cast<int>(n[0]);
    }
    lines.kind = n.empty() ? Lines::Solid : lines.type == 0 ? Lines::Ends : Lines::Dashes;
    if (n.size() > 1) lines.length = n[1];
    if (n.size() > 2) lines.millimetres = n[2] == 1;
    p.applyLineType();
    return true;
}

/// Takes a type and the parts of its pattern: down, up, …. Without parts the type gets its standard pattern back, without a
/// type all of them do.
bool userLineType(Plotter &p, Numbers n) {
    auto &patterns = p.lines.patterns;
    if (n.empty()) {
        patterns.fill({});
    } else {
        const double type = std::floor(std::abs(n[0]));
        const Numbers parts = n.subspan(1);
        if (type < 1 || type >= static_cast<double>(patterns.size())) return false;
        if (std::any_of(parts.begin(), parts.end(), [](double part) { return part < 0; })) return false;
        if (!parts.empty() && std::all_of(parts.begin(), parts.end(), [](double part) { return part == 0; })) return false;
        Lines::Pattern &pattern = patterns[static_cast<size_t>(type)];
        pattern.count = parts.size();
        std::copy(parts.begin(), parts.end(), pattern.parts.begin());
    }
    p.applyLineType();
    return true;
}

} // namespace language::hpgl
