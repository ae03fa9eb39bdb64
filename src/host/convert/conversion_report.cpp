// What is told of a conversion.
#include "host/convert/conversion.h"

#include "host/terminal/text.h"
#include "strokes/write.h"

#include <fmt/format.h>
#include <fmt/ranges.h>
#include <set>

namespace host {

using language::Language;

namespace {

const char *nameOf(Language language) { return language == Language::Dmpl ? "dmpl" : "hpgl"; }

std::set<int> pensOf(const strokes::Drawing &drawing) {
    std::set<int> pens;
    for (const strokes::Stroke &stroke : drawing.strokes)
        pens.insert(stroke.pen);
    return pens;
}

std::string textOf(const StrokeCount &count) {
    return fmt::format("{}, {} drawn, {} lifted", counted(static_cast<int64_t>(count.strokes), "stroke"),
                       metres(count.travel.down), metres(count.travel.up));
}

Json jsonOf(const StrokeCount &count) {
    return {{"strokes", count.strokes}, {"downMillimetres", count.travel.down}, {"upMillimetres", count.travel.up}};
}

/// How to print it, where that is not what 'print' does without options.
std::string printNote(int number) {
    const Language language = *emulations::of(number).language;
    if (number == emulations::kHpgl) return {};
    const char *terminator = language == Language::Dmpl ? " --terminator ," : "";
    return fmt::format("print it with --emulation {}{}", number, terminator);
}

} // namespace

Verdict verdictOf(const Conversion &conversion, const ConvertOptions &options) {
    Verdict verdict{.message = "", .notes = conversion.read.drawing.notes};
    if (conversion.leavesSheet) {
        verdict.notes.push_back(
            fmt::format("the drawing leaves what the pen reaches of this sheet ({}); --fit makes it fit, "
                        "--sheet names another",
                        shown(options.drawing.sheet)));
    }
    const std::string print = printNote(options.emulation);
    if (!print.empty()) verdict.notes.push_back(print);
    return verdict;
}

std::string conversionText(const Conversion &conversion, const ConvertOptions &options) {
    const auto &[lower, upper] = conversion.extent;
    return fmt::format("read: {}\nwritten: {}, pen {}\nsize: {:.1f} x {:.1f} mm, from {:.1f}, {:.1f} to {:.1f}, {:.1f} mm\n"
                       "wrote {}, {}\n",
                       textOf(conversion.before), textOf(conversion.after), fmt::join(pensOf(conversion.read.drawing), ", "),
                       upper.x - lower.x, upper.y - lower.y, lower.x, lower.y, upper.x, upper.y,
                       options.output == "-" ? "standard output" : shown(options.output),
                       counted(static_cast<int64_t>(conversion.plot.size()), "byte"));
}

void addConversion(Json &report, const Conversion &conversion) {
    const auto &[lower, upper] = conversion.extent;
    report["language"] = conversion.read.language ? Json(nameOf(*conversion.read.language)) : Json();
    report["bytes"] = conversion.plot.size();
    report["box"] = std::vector{lower.x, lower.y, upper.x, upper.y};
    report["leavesSheet"] = conversion.leavesSheet;
    report["degrees"] = conversion.placed.degrees;
    report["scale"] = conversion.placed.scale;
    report["pens"] = pensOf(conversion.read.drawing);
    report["before"] = jsonOf(conversion.before);
    report["after"] = jsonOf(conversion.after);
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
