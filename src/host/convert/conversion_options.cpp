// What can be typed for pens, place and order.
#include "host/convert/conversion.h"
#include "host/convert/typed_fill.h"
#include "host/convert/typed_point.h"

#include "strokes/order.h"
#include "strokes/pens.h"

#include <cmath>
#include <fmt/format.h>

namespace host {

namespace {

constexpr double kMostMillimetres = 100'000, kMostScale = 1000;
constexpr double kLeastUnit = 0.001, kMostUnit = 1;

/// Within the bounds; what is no number at all ("nan") is not.
Option::Check within(double least, double most) {
    return [least, most](const std::string &text) {
        const std::optional<double> value = typedNumber(text);
        return value && *value >= least && *value <= most
                   ? std::string()
                   : fmt::format("{} is not a number from {} to {}", text, least, most);
    };
}

std::vector<Option> addPlacing(const Command &command, ConversionOptions &options) {
    Option margin = command.option("--margin", options.margin, "Millimetres along the sheet's edges that stay free (0)");
    Option fit = command.flag("--fit", options.isFitted, "As large as the sheet holds it, in the middle");
    Option scale = command.option("--scale", options.scale, "So many times as large, 0.001 to 1000 (1)");
    Option turn = command.option("--rotate", options.turn,
                                 "Turn to the left by degrees; auto: by 90 when it then fits the sheet better");
    Option mirror = command.flag("--mirror", options.isMirrored, "Swap left and right, ahead of a turn");
    Option at = command.option("--at", options.at,
                               "Place the lower left corner of what is drawn, in mm from that of the pen's area");
    Option centre = command.flag("--center", options.isCentred, "Place it in the middle of the sheet");
    Option unit = command.option("--unit", options.unit, "Size of a plotter unit in mm: 0.02488 of some plotters (0.025)");
    margin.check(within(0, kMostMillimetres)).valueName("MM");
    scale.check(within(1 / kMostScale, kMostScale)).valueName("FACTOR").excludes(fit);
    turn.oneOf({"90", "180", "270", "auto"}).valueName("90|180|270|auto");
    at.check([](const std::string &text) {
          return typedPoint(text, kMostMillimetres)
                     ? std::string()
                     : fmt::format("{} is no place; write X,Y in millimetres, as in 10,20.5", text);
      }).valueName("X,Y");
    at.excludes(fit);
    centre.excludes(at);
    unit.check(within(kLeastUnit, kMostUnit)).valueName("MM");
    for (Option option : {margin, fit, scale, turn, mirror, at, centre, unit})
        option.group("Place");
    return {fit, scale, turn, mirror, at, centre, unit};
}

std::string faultOfPens(const std::string &text) {
    try {
        strokes::parsePens(text);
    } catch (const std::invalid_argument &error) {
        return error.what();
    }
    return {};
}

void addReading(const Command &command, ConversionOptions &options) {
    Option fill =
        command.option("--fill", options.fill,
                       "Areas of SVG and PDF: their outline, or hatched as well, with lines so many mm apart (0.5) at "
                       "an angle (45) (outline)");
    Option hidden = command.flag("--no-hide", options.showsHidden, "Plot also what lies under an area that is filled later");
    fill.check([](const std::string &text) {
            return typedFill(text)
                       ? std::string()
                       : fmt::format("unknown fill: {}; use outline, or hatch:MM:ANGLE, as in hatch:0.5:45", text);
        })
        .valueName("outline|hatch[:MM[:ANGLE]]");
    for (Option option : {fill, hidden})
        option.group(kDrawingsGroup);
}

} // namespace

std::optional<strokes::FillStyle> typedFill(const std::string &text) {
    constexpr double kLeast = 0.05, kMost = 100, kTurn = 360;
    strokes::FillStyle fill;
    if (text == "outline") return fill;
    const size_t first = text.find(':'), second = first == std::string::npos ? first : text.find(':', first + 1);
    if (text.substr(0, first) != "hatch") return {};
    fill.isHatched = true;
    if (first == std::string::npos) return fill;
    const std::optional<double> spacing = typedNumber(text.substr(first + 1, second - first - 1));
    if (!spacing || !(*spacing >= kLeast && *spacing <= kMost)) return {};
    fill.spacing = *spacing;
    if (second == std::string::npos) return fill;
    const std::optional<double> degrees = typedNumber(text.substr(second + 1));
    if (!degrees || !(std::abs(*degrees) <= kTurn)) return {};
    fill.degrees = *degrees;
    return fill;
}

void addPage(const Command &command, ConversionOptions &options) {
    command.option("--page", options.page, "Page of a PDF document (1)")
        .between(1, kMostPages)
        .valueName("N")
        .group(kDrawingsGroup);
}

std::vector<Option> addConversionOptions(const Command &command, ConversionOptions &options) {
    addReading(command, options);
    std::vector<Option> forStrokes = addPlacing(command, options);
    Option pens =
        command.option("--pens", options.pens,
                       "Which pen draws a colour: black=1,red=2,#00f=3 (as they appear); of a plot, which other pen: "
                       "1=2,2=1");
    Option held = addPensHeld(command, options.pensHeld);
    Option order =
        command.option("--order", options.order,
                       fmt::format("Which stroke comes next; nearest also turns strokes round, and joins those that "
                                   "touch ({} mm) (nearest; of a plot as-drawn)",
                                   strokes::kTouching));
    Option byPen = command.flag("--by-pen", options.isByPen,
                                "Draw all of one pen before the next one, as SVG and PDF are drawn anyway");
    Option mixed =
        command.flag("--no-by-pen", options.isMixed, "With --order as-drawn change pens as they were drawn").excludes(byPen);
    Option simplify =
        command.option("--simplify", options.simplify,
                       "Leave out points as long as no line moves by more (with --order nearest 0.0125, half a "
                       "plotter unit; else none)");
    pens.check(faultOfPens).valueName("FROM=PEN,...");
    order.oneOf({"nearest", "as-drawn"}).valueName("nearest|as-drawn");
    simplify.check(within(0, kMostMillimetres)).valueName("MM");
    for (Option option : {pens, held, order, byPen, mixed, simplify})
        option.group("Strokes");
    forStrokes.insert(forStrokes.end(), {pens, order, byPen, simplify});
    return forStrokes;
}

} // namespace host
