// What is told of a conversion.
#include "host/convert/conversion.h"

#include "host/terminal/text.h"

#include <cmath>
#include <fmt/format.h>
#include <fmt/ranges.h>

namespace host {

using language::Language;

namespace {

const char *nameOf(Language language) { return language == Language::Dmpl ? "dmpl" : "hpgl"; }

std::string textOf(const StrokeCount &count) {
    return fmt::format("{}, {} drawn, {} lifted", counted(static_cast<int64_t>(count.strokes), "stroke"),
                       metres(count.travel.down), metres(count.travel.up));
}

Json jsonOf(const StrokeCount &count) {
    return {{"strokes", count.strokes}, {"downMillimetres", count.travel.down}, {"upMillimetres", count.travel.up}};
}

} // namespace

std::string strokesText(const ConversionReport &report) {
    return fmt::format("read: {}\nwritten: {}, pen {}\n", textOf(report.before), textOf(report.after),
                       fmt::join(report.pens, ", "));
}

std::string conversionText(const ConversionReport &report) {
    auto tenths = [](language::Point p) {
        return language::Point{std::round(p.x * 10) / 10 + 0., std::round(p.y * 10) / 10 + 0.};
    };
    const language::Point lower = tenths(report.extent.lower), upper = tenths(report.extent.upper); // without "-0.0"
    return fmt::format("{}size: {:.1f} x {:.1f} mm, from {:.1f}, {:.1f} to {:.1f}, {:.1f} mm\n", strokesText(report),
                       upper.x - lower.x, upper.y - lower.y, lower.x, lower.y, upper.x, upper.y);
}

void addConversion(Json &object, const ConversionReport &report) {
    const auto &[lower, upper] = report.extent;
    object["language"] = report.language ? Json(nameOf(*report.language)) : Json();
    object["bytes"] = report.bytes;
    object["box"] = std::vector{lower.x, lower.y, upper.x, upper.y};
    object["leavesSheet"] = report.leavesSheet;
    object["degrees"] = report.placed.degrees;
    object["scale"] = report.placed.scale;
    object["pens"] = report.pens;
    object["before"] = jsonOf(report.before);
    object["after"] = jsonOf(report.after);
}

std::vector<JsonFields> conversionFields() {
    return {
        {"language", "of the plot that was read: hpgl or dmpl; null for SVG and PDF"},
        {"bytes", "that were written"},
        {"box", "left, lower, right, upper in mm from the corner of the pen's area, of all\n"
                "that is drawn"},
        {"leavesSheet", "whether some of it lies outside that area"},
        {"degrees, scale", "by which it was turned, and how many times as large it was made"},
        {"pens", "that draw"},
        {"before, after", "the strokes were put in order: strokes, downMillimetres, upMillimetres"},
    };
}

} // namespace host
