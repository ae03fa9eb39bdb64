#include "host/convert/conversion.h"

#include "emulations/emulations.h"
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

constexpr int kUsualPens = 8;
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
Rectangle areaOf(const Sheet &sheet, const ConversionOptions &options) {
    const Rectangle paper = paperOf(sheet), reach = millimetres(sheet.hardClip);
    const Rectangle area{
        {std::max(reach.lower.x, paper.lower.x + options.margin), std::max(reach.lower.y, paper.lower.y + options.margin)},
        {std::min(reach.upper.x, paper.upper.x - options.margin), std::min(reach.upper.y, paper.upper.y - options.margin)}};
    if (area.lower.x < area.upper.x && area.lower.y < area.upper.y) return area;
    throw Failure(ExitCode::Usage, fmt::format("--margin: {} mm leave nothing of this sheet; give less", options.margin));
}

Placement placementOf(const Sheet &sheet, const ConversionOptions &options) {
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

void putInOrder(strokes::Drawing &drawing, bool isPlot, const ConversionOptions &options) {
    const bool isNearest = options.order == "nearest" || (options.order.empty() && !isPlot);
    if (isNearest)
        orderNearest(drawing); // by pen, too
    else if (options.isByPen || (!isPlot && !options.isMixed))
        orderByPen(drawing);
    const double tolerance = options.simplify.value_or(isNearest ? kHalfUnit : 0);
    if (tolerance > 0) simplify(drawing, tolerance);
}

/// Throws Failure (usage) for rules that fit the other kind of drawing.
void choosePens(strokes::Drawing &drawing, bool isPlot, const ConversionOptions &options) {
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
    assignPens(drawing, rules, options.pensHeld > 0 ? options.pensHeld : kUsualPens, options.taken);
}

bool lies(const Rectangle &inner, const Rectangle &outer) {
    return inner.lower.x >= outer.lower.x - kHalfUnit && inner.lower.y >= outer.lower.y - kHalfUnit &&
           inner.upper.x <= outer.upper.x + kHalfUnit && inner.upper.y <= outer.upper.y + kHalfUnit;
}

/// By the emulation and the terminator that it will be printed with. Throws Failure (usage).
strokes::PlotForm formOf(const ConversionTarget &target) {
    const emulations::Emulation &emulation = emulations::of(target.emulation);
    if (!emulation.language) {
        throw Failure(ExitCode::Usage, fmt::format("--emulation: no plot can be written for {}; use hpgl, dmpl, or a number "
                                                   "of a plotter that takes either",
                                                   target.emulation));
    }
    return {*emulation.language, static_cast<size_t>(emulation.chunkSize),
            [&emulation, terminator = target.terminator](std::string_view chunk) {
                return emulations::findCut(chunk, terminator, emulation.cut);
            }};
}

/// Millimetres become as many units of the plotter's own size as they come to.
void measureIn(double unit, strokes::Drawing &drawing) {
    const double factor = 1 / (unit * kUnitsPerMillimetre);
    if (factor == 1) return;
    for (strokes::Stroke &stroke : drawing.strokes)
        for (Point &p : stroke.points)
            p = {p.x * factor, p.y * factor};
}

std::string written(const strokes::Drawing &drawing, const strokes::PlotForm &form, const PlotFile &input) {
    try {
        return plotOf(drawing, form);
    } catch (const strokes::Unwritable &error) {
        throw Failure(ExitCode::Unfit, fmt::format("{}: {}; make it smaller with --scale, or move it with --at",
                                                   shown(input.path()), error.what()));
    }
}

std::set<int> pensOf(const strokes::Drawing &drawing) {
    std::set<int> pens;
    for (const strokes::Stroke &stroke : drawing.strokes)
        pens.insert(stroke.pen);
    return pens;
}

/// Whether it leaves what the pen reaches of the sheet, which is worth a note.
void lookAtSheet(const Sheet &sheet, const DrawingOptions &typed, ConversionReport &report) {
    report.leavesSheet = !lies(report.extent, millimetres(sheet.hardClip));
    if (!report.leavesSheet) return;
    report.notes.push_back(fmt::format("the drawing leaves what the pen reaches of this sheet ({}); --fit makes it fit, "
                                       "--sheet names another",
                                       shown(sheetName(typed))));
}

} // namespace

Conversion conversionOf(const PlotFile &input, const ConversionOptions &options, const ConversionTarget &target) {
    const strokes::PlotForm form = formOf(target);
    const Sheet sheet = sheetOf(target.drawing);
    const Placement placement = placementOf(sheet, options);
    ReadDrawing read = drawingOf(input, {languageOf(target.drawing),
                                         sheet,
                                         options.page,
                                         {.fill = *typedFill(options.fill), .hides = !options.showsHidden}});
    strokes::Drawing &drawing = read.drawing;
    const bool isPlot = read.language.has_value();
    Conversion made;
    ConversionReport &report = made.report;
    report.language = read.language;
    choosePens(drawing, isPlot, options);
    if (!isPlot) report.colours = coloursOf(drawing, options.taken);
    report.placed = place(drawing, placement);
    report.before = countOf(drawing);
    putInOrder(drawing, isPlot, options);
    report.after = countOf(drawing);
    report.extent = *extentOf(drawing);
    report.pens = pensOf(drawing);
    report.notes = drawing.notes;
    lookAtSheet(sheet, target.drawing, report);
    measureIn(options.unit, drawing);
    made.plot = written(drawing, form, input);
    report.bytes = made.plot.size();
    return made;
}

} // namespace host
