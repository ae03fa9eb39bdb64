#include "host/picture/view.h"

#include "host/terminal/failure.h"
#include "host/terminal/text.h"

#include <algorithm>
#include <fmt/format.h>

namespace host {

using language::Findings;
using language::kUnitsPerMillimetre;
using language::Rectangle;
using virtual_plotter::NamedSheet;
using virtual_plotter::Sheet;

namespace {

constexpr double kHalfUnit = 0.5;                    // what arcs and scaling leave of their computing is no more
constexpr double kMargin = 10 * kUnitsPerMillimetre; // around a drawing that leaves its sheet
constexpr double kClearly = 0.1;                     // of a drawing's size: so much of it lies below 0, 0

Rectangle grown(const Rectangle &box, double by) {
    return {{box.lower.x - by, box.lower.y - by}, {box.upper.x + by, box.upper.y + by}};
}

Rectangle around(const Rectangle &a, const Rectangle &b) {
    return {{std::min(a.lower.x, b.lower.x), std::min(a.lower.y, b.lower.y)},
            {std::max(a.upper.x, b.upper.x), std::max(a.upper.y, b.upper.y)}};
}

/// As plotters draw that count from the middle of the sheet.
bool liesAroundOrigin(const Findings &findings) {
    const auto &[lower, upper] = findings.demand;
    return findings.anyDemand && lower.x < -kClearly * (upper.x - lower.x) && lower.y < -kClearly * (upper.y - lower.y);
}

bool isWithin(const Findings &findings, const Rectangle &area) {
    if (!findings.anyDemand) return true;
    const auto &[lower, upper] = findings.demand;
    const Rectangle reach = grown(area, kHalfUnit);
    return lower.x >= reach.lower.x && lower.y >= reach.lower.y && upper.x <= reach.upper.x && upper.y <= reach.upper.y;
}

/// See viewOf(); the usual sheet comes first, for many a drawing fits a smaller one that nobody has.
NamedSheet chosenFor(const DrawingOptions &options, const Findings &findings) {
    std::vector<NamedSheet> sheets = virtual_plotter::namedSheets();
    sheets.insert(sheets.begin(), {sheetName(options), sheetOf(options)});
    if (liesAroundOrigin(findings)) {
        for (NamedSheet &named : sheets)
            named.sheet = centred(named.sheet);
    }
    auto found = std::ranges::find_if(sheets, [&](const auto &named) { return !leavesArea(findings, named.sheet); });
    if (found == sheets.end())
        found = std::ranges::find_if(sheets, [&](const auto &named) { return isWithin(findings, edgesOf(named.sheet)); });
    return found == sheets.end() ? NamedSheet{"", sheets.front().sheet} : *found;
}

std::string cornersOf(const Rectangle &box) {
    return fmt::format("{:.1f}, {:.1f} to {:.1f}, {:.1f} mm", box.lower.x / kUnitsPerMillimetre,
                       box.lower.y / kUnitsPerMillimetre, box.upper.x / kUnitsPerMillimetre,
                       box.upper.y / kUnitsPerMillimetre);
}

} // namespace

bool leavesArea(const Findings &findings, const Sheet &sheet) { return !isWithin(findings, sheet.hardClip); }

View viewOf(const DrawingOptions &options, const Findings &findings) {
    const bool isTyped = !options.sheet.empty() || !options.area.empty();
    const NamedSheet named = isTyped ? NamedSheet{sheetName(options), sheetOf(options)} : chosenFor(options, findings);
    View view{named.sheet, named.sheet, named.name, isTyped, leavesArea(findings, named.sheet)};
    if (!isWithin(findings, edgesOf(view.sheet)))
        view.page = virtual_plotter::sheetWithin(around(edgesOf(view.sheet), grown(findings.demand, kMargin)));
    return view;
}

void requireWithinArea(const std::string &plot, const Findings &findings, const DrawingOptions &options) {
    if (options.area.empty()) return;
    const Sheet sheet = sheetOf(options);
    if (!leavesArea(findings, sheet)) return;
    throw Failure(ExitCode::Unfit, fmt::format("{}: the drawing ({}) leaves what the pen reaches ({}); make it fit with "
                                               "--fit, or print it all the same with --force",
                                               shown(plot), cornersOf(findings.demand), cornersOf(sheet.hardClip)));
}

} // namespace host
