#include "host/convert/conversion.h"

#include "host/convert/typed_fill.h"
#include "host/convert/typed_point.h"
#include "host/terminal/failure.h"
#include "host/terminal/text.h"
#include "strokes/order.h"
#include "strokes/pens.h"
#include "strokes/simplify.h"
#include "strokes/write.h"

#include <algorithm>
#include <cmath>
#include <fmt/format.h>

namespace host {

using language::kUnitsPerMillimetre;
using language::Point;
using language::Rectangle;
using strokes::Placement;
using virtual_plotter::Sheet;

namespace {

constexpr double kHalfUnit = 0.5 / kUnitsPerMillimetre;

constexpr struct {
    std::string_view typed;
    Placement::Turn turn;
} kTurns[] = {
    {"", Placement::Turn::None},          {"90", Placement::Turn::Quarter},
    {"180", Placement::Turn::Half},       {"270", Placement::Turn::ThreeQuarters},
    {"auto", Placement::Turn::Automatic},
};

Rectangle millimetres(const Rectangle &units) {
    auto of = [](Point p) { return Point{p.x / kUnitsPerMillimetre, p.y / kUnitsPerMillimetre}; };
    return {of(units.lower), of(units.upper)};
}

/// Of the sheet, seen from the corner of the pen's area.
Rectangle paperOf(const Sheet &sheet) {
    const Point corner = areaOrigin(sheet);
    return {{-corner.x, -corner.y}, {sheet.width - corner.x, sheet.height - corner.y}};
}

/// What the pen reaches of the sheet within the margin. Throws Failure (usage).
Rectangle areaOf(const Sheet &sheet, const ConvertOptions &options) {
    const Rectangle paper = paperOf(sheet), reach = millimetres(sheet.hardClip);
    const Rectangle area{
        {std::max(reach.lower.x, paper.lower.x + options.margin), std::max(reach.lower.y, paper.lower.y + options.margin)},
        {std::min(reach.upper.x, paper.upper.x - options.margin), std::min(reach.upper.y, paper.upper.y - options.margin)}};
    if (area.lower.x < area.upper.x && area.lower.y < area.upper.y) return area;
    throw Failure(ExitCode::Usage, fmt::format("--margin: {} mm leave nothing of this sheet; give less", options.margin));
}

Placement placementOf(const Sheet &sheet, const ConvertOptions &options) {
    Placement placement;
    placement.paper = paperOf(sheet);
    placement.area = areaOf(sheet, options);
    placement.isMirrored = options.isMirrored;
    placement.turn = std::ranges::find(kTurns, options.turn, [](const auto &row) { return row.typed; })->turn;
    placement.scale = options.scale;
    placement.isFitted = options.isFitted;
    placement.isCentred = options.isCentred;
    placement.at = typedPoint(options.at, HUGE_VAL);
    return placement;
}

StrokeCount countOf(const strokes::Drawing &drawing) { return {drawing.strokes.size(), travelOf(drawing)}; }

void putInOrder(strokes::Drawing &drawing, bool isPlot, const ConvertOptions &options) {
    const bool isNearest = options.order == "nearest" || (options.order.empty() && !isPlot);
    if (isNearest) orderNearest(drawing);
    const double tolerance = options.simplify.value_or(isNearest ? kHalfUnit : 0);
    if (tolerance > 0) simplify(drawing, tolerance);
}

/// Throws Failure (usage) for rules that fit the other kind of drawing.
void choosePens(strokes::Drawing &drawing, bool isPlot, const ConvertOptions &options) {
    std::vector<strokes::PenRule> rules;
    if (!options.pens.empty()) rules = strokes::parsePens(options.pens);
    for (const strokes::PenRule &rule : rules) {
        if (rule.colour.has_value() != isPlot) continue;
        throw Failure(ExitCode::Usage,
                      fmt::format("--pens: {} names a {}", options.pens,
                                  isPlot ? "colour, and a plot file's strokes have none; write PEN=PEN, as in 1=2"
                                         : "pen where a drawing has colours; write COLOUR=PEN, as in red=2"));
    }
    if (isPlot) return exchangePens(drawing, rules);
    assignPens(drawing, rules, options.carousel);
}

bool lies(const Rectangle &inner, const Rectangle &outer) {
    return inner.lower.x >= outer.lower.x - kHalfUnit && inner.lower.y >= outer.lower.y - kHalfUnit &&
           inner.upper.x <= outer.upper.x + kHalfUnit && inner.upper.y <= outer.upper.y + kHalfUnit;
}

/// By the emulation that it will be printed with. Throws Failure (usage).
strokes::PlotForm formOf(int number) {
    const emulations::Emulation &emulation = emulations::of(number);
    if (!emulation.language) {
        throw Failure(ExitCode::Usage, fmt::format("--emulation: no plot can be written for {}; use hpgl, dmpl, or a number "
                                                   "of a plotter that takes either",
                                                   number));
    }
    const std::string_view terminator = strokes::terminatorOf(*emulation.language);
    return {*emulation.language, static_cast<size_t>(emulation.chunkSize), [&emulation, terminator](std::string_view chunk) {
                return emulations::findCut(chunk, terminator, emulation.cut);
            }};
}

std::string written(const strokes::Drawing &drawing, const strokes::PlotForm &form, const PlotFile &input) {
    try {
        return plotOf(drawing, form);
    } catch (const strokes::Unwritable &error) {
        throw Failure(ExitCode::Unfit, fmt::format("{}: {}; make it smaller with --scale, or move it with --at",
                                                   shown(input.path()), error.what()));
    }
}

} // namespace

Conversion conversionOf(const PlotFile &input, const ConvertOptions &options) {
    const strokes::PlotForm form = formOf(options.emulation);
    const Sheet sheet = sheetOf(options.drawing);
    const Placement placement = placementOf(sheet, options);
    Conversion made;
    made.read = drawingOf(input, {languageOf(options.drawing),
                                  sheet,
                                  options.page,
                                  {.fill = *typedFill(options.fill), .hides = !options.showsHidden}});
    strokes::Drawing &drawing = made.read.drawing;
    const bool isPlot = made.read.language.has_value();
    choosePens(drawing, isPlot, options);
    made.placed = place(drawing, placement);
    made.before = countOf(drawing);
    putInOrder(drawing, isPlot, options);
    made.after = countOf(drawing);
    made.extent = *extentOf(drawing);
    made.leavesSheet = !lies(made.extent, millimetres(sheet.hardClip));
    made.plot = written(drawing, form, input);
    return made;
}

} // namespace host
