#include "host/picture/plot_findings.h"
#include "host/terminal/json.h"
#include "host/terminal/text.h"

#include <algorithm>
#include <cmath>
#include <fmt/format.h>

namespace host {

using language::Findings;
using language::kUnitsPerMillimetre;
using language::Language;
using language::Oddity;
using language::PlotReader;

namespace {

constexpr size_t kOdditiesShown = 5;

/// Plotter units as millimetres. A plot may ask for what no sheet has: such numbers are not written out in full.
std::string millimetres(double units) {
    double value = units / kUnitsPerMillimetre;
    return std::abs(value) < 1e7 ? fmt::format("{:.1f}", value) : fmt::format("{:.2g}", value);
}

/// Those that drew something.
std::vector<size_t> pensOf(const Findings &findings) {
    std::vector<size_t> pens;
    for (size_t pen = 0; pen < findings.byPen.size(); ++pen) {
        if (findings.byPen[pen].strokes > 0) pens.push_back(pen);
    }
    return pens;
}

const char *nameOf(Oddity::Kind kind) { return kind == Oddity::Unknown ? "unknown" : "malformed"; }

int64_t signedOf(uint64_t number) { return static_cast<int64_t>(number); }

std::string oddityLines(const Findings &findings) {
    uint64_t all = findings.unknown + findings.malformed;
    if (all == 0) return {};
    std::string text = fmt::format("not understood: {} unknown, {} malformed\n", grouped(signedOf(findings.unknown)),
                                   grouped(signedOf(findings.malformed)));
    size_t count = std::min(findings.oddities.size(), kOdditiesShown);
    for (size_t i = 0; i < count; ++i) {
        const Oddity &oddity = findings.oddities[i];
        text += fmt::format("  {} at offset {}: \"{}\"\n", nameOf(oddity.kind), oddity.offset, shown(oddity.text));
    }
    if (all > count) text += fmt::format("  and {} more\n", grouped(signedOf(all - count)));
    return text;
}

std::string leavingNote(const virtual_plotter::Sheet &sheet, const char *outside) {
    const auto &[lower, upper] = sheet.hardClip;
    return fmt::format("the drawing leaves the {} x {} mm that the pen reaches on this sheet; what is outside {}",
                       millimetres(upper.x - lower.x), millimetres(upper.y - lower.y), outside);
}

std::vector<std::string> notesOf(const Findings &findings, const std::string &leaving) {
    std::vector<std::string> notes;
    if (!leaving.empty()) notes.push_back(leaving);
    if (!findings.anyDemand) notes.emplace_back("nothing in it draws");
    for (std::string &note : lossNotes(findings))
        notes.push_back(std::move(note));
    return notes;
}

} // namespace

std::string findingsText(Language language, const Findings &findings, const std::string &line) {
    std::string text =
        fmt::format("{}: {}, {}\n", language == Language::Dmpl ? "DM/PL" : "HP-GL",
                    counted(signedOf(findings.bytes), "byte"), counted(signedOf(findings.instructions), "instruction"));
    if (findings.anyDemand) {
        const auto &box = findings.demand;
        text += fmt::format("size: {} x {} mm, from {}, {} to {}, {} mm\n", millimetres(box.upper.x - box.lower.x),
                            millimetres(box.upper.y - box.lower.y), millimetres(box.lower.x), millimetres(box.lower.y),
                            millimetres(box.upper.x), millimetres(box.upper.y));
    }
    for (size_t pen : pensOf(findings)) {
        const language::PenFindings &own = findings.byPen[pen];
        text += fmt::format("pen {}: {} drawn in {}, about {}\n", pen, metres(own.downMillimetres),
                            counted(signedOf(own.strokes), "stroke"), duration(own.seconds));
    }
    if (findings.strokes > 0) {
        text += fmt::format("lifted: {}\ntime: about {}{}\n", metres(findings.upMillimetres), duration(findings.seconds),
                            line.empty() ? "" : " at " + line);
    }
    return text + oddityLines(findings);
}

std::vector<std::string> findingNotes(const PlotReader &plot, const virtual_plotter::Sheet &sheet) {
    const Findings &findings = plot.reader()->findings();
    return notesOf(findings, findings.outsideHardClip ? leavingNote(sheet, "is not drawn") : "");
}

std::vector<std::string> viewNotes(const Findings &findings, const View &view, bool isDrawn) {
    if (!view.isLeft) return notesOf(findings, "");
    const bool isGrey = view.isTyped && isDrawn;
    if (!view.name.empty())
        return notesOf(findings,
                       leavingNote(view.sheet, isGrey ? "is not plotted, and grey in the picture" : "is not plotted"));
    return notesOf(findings, fmt::format("no usual sheet holds the drawing{}",
                                         isDrawn ? fmt::format("; the one outlined is {}", kUsualSheet) : ""));
}

std::vector<std::string> lossNotes(const Findings &findings) {
    std::vector<std::string> notes;
    if (findings.lostVertices > 0) {
        notes.push_back(
            fmt::format("{} did not fit into the polygon buffer", counted(signedOf(findings.lostVertices), "corner")));
    }
    if (findings.refused > 0)
        notes.push_back(fmt::format("{} left out as too much work", counted(signedOf(findings.refused), "fill")));
    return notes;
}

void addFindings(Json &object, Language language, const Findings &findings) {
    object["language"] = language == Language::Dmpl ? "dmpl" : "hpgl";
    object["bytes"] = findings.bytes;
    object["instructions"] = findings.instructions;
    object["unknown"] = findings.unknown;
    object["malformed"] = findings.malformed;
    auto &oddities = object["oddities"] = Json::array();
    for (const Oddity &oddity : findings.oddities)
        oddities.push_back({{"kind", nameOf(oddity.kind)}, {"offset", oddity.offset}, {"text", oddity.text}});
    object["box"] = nullptr;
    if (findings.anyDemand) {
        const auto &box = findings.demand;
        object["box"] = std::vector{box.lower.x / kUnitsPerMillimetre, box.lower.y / kUnitsPerMillimetre,
                                    box.upper.x / kUnitsPerMillimetre, box.upper.y / kUnitsPerMillimetre};
    }
    object["leavesSheet"] = findings.outsideHardClip;
    object["strokes"] = findings.strokes;
    object["downMillimetres"] = findings.downMillimetres;
    object["upMillimetres"] = findings.upMillimetres;
    object["seconds"] = findings.seconds;
    object["pens"] = pensOf(findings);
    auto &byPen = object["byPen"] = Json::array();
    for (size_t pen : pensOf(findings)) {
        const language::PenFindings &own = findings.byPen[pen];
        byPen.push_back(
            {{"number", pen}, {"strokes", own.strokes}, {"downMillimetres", own.downMillimetres}, {"seconds", own.seconds}});
    }
    object["lostCorners"] = findings.lostVertices;
    object["leftOut"] = findings.refused;
}

std::vector<JsonFields> findingsFields() {
    return {
        {"language, bytes, instructions", "of the plot"},
        {"unknown, malformed", "instructions not understood"},
        {"oddities", "the first of them: kind, offset, text"},
        {"box", "left, lower, right, upper in mm as the plotter counts, of all that was\n"
                "to be drawn; null for nothing"},
        {"leavesSheet", "whether some of it lies outside of what the pen reaches on the sheet"},
        {"strokes, pens", "what was drawn, with which pens"},
        {"downMillimetres, upMillimetres", "the way of the pen down and up"},
        {"seconds", "that a plotter takes, about"},
        {"byPen", "of each pen: number, strokes, downMillimetres, and seconds in the holder"},
        {"lostCorners, leftOut", "what the plotter had no room or time for"},
    };
}

} // namespace host
