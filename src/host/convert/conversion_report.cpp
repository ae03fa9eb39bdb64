// What is told of a conversion.
#include "host/convert/conversion.h"

#include "host/terminal/text.h"

#include <cmath>
#include <fmt/format.h>
#include <fmt/ranges.h>

namespace host {

using language::Language;

namespace {

std::string hexOf(uint32_t colour) { return fmt::format("#{:06x}", colour); }

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
    std::vector<std::string> pens;
    for (const int pen : report.pens) {
        const auto colour = report.colours.find(pen);
        pens.push_back(colour == report.colours.end() ? std::to_string(pen)
                                                      : fmt::format("{} ({})", pen, hexOf(colour->second)));
    }
    return fmt::format("read: {}\nwritten: {}, pen {}\n", textOf(report.before), textOf(report.after),
                       fmt::join(pens, ", "));
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
    object["colours"] = Json::object();
    for (const auto &[pen, colour] : report.colours)
        object["colours"][std::to_string(pen)] = hexOf(colour);
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
        {"colours", "of a drawing: what each pen draws, by its number, as #rrggbb"},
        {"before, after", "the strokes were put in order: strokes, downMillimetres, upMillimetres"},
    };
}

} // namespace host
