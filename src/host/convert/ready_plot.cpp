#include "host/convert/ready_plot.h"

#include "emulations/emulations.h"
#include "host/examination/file_kind.h"
#include "host/mending/mending.h"
#include "host/terminal/failure.h"

#include <fmt/format.h>
#include <fmt/ranges.h>

namespace host {

namespace {

/// As it would arrive whole, where it can be made so: what cannot be mended may be drawn all the same.
PlotFile wholeOf(PlotFile file) {
    try {
        if (std::optional<Mended> made = mended(file, usualRules(file))) return std::move(made->plot);
    } catch (const Failure &) { // told by the reader, if there is anything to tell
    }
    return file;
}

} // namespace

PlotRules usualRules(const PlotFile &file) {
    const bool isDmpl = natureOf(file, language::Language::Hpgl).kind == FileKind::Dmpl;
    return {isDmpl ? emulations::kDmpl : emulations::kHpgl,
            std::string(language::terminatorOf(isDmpl ? language::Language::Dmpl : language::Language::Hpgl))};
}

ReadyPlot readyPlot(PlotFile file, const ReadyOptions &options, const DrawingOptions &drawing, const PlotRules &rules) {
    const bool isPlot = !natureOf(file, {}).isDrawing();
    if (options.isConverted || !isPlot) {
        const PlotFile whole = isPlot ? wholeOf(std::move(file)) : std::move(file);
        const Conversion made = conversionOf(whole, options.conversion, {drawing, rules.emulation, rules.terminator});
        return {PlotFile::holding(whole.path(), made.plot), {{}, made.report}};
    }
    if (options.isExact) return {std::move(file), {}};
    try {
        if (std::optional<Mended> made = mended(file, rules)) return {std::move(made->plot), {made->mendings, {}}};
    } catch (const Failure &failure) {
        if (!options.isForced) throw;
        return {std::move(file), {.mendings = {}, .conversion = {}, .refusal = failure.what()}};
    }
    return {std::move(file), {}};
}

std::string readyText(const ReadyReport &report) { return report.conversion ? conversionText(*report.conversion) : ""; }

std::vector<std::string> readyNotes(const ReadyReport &report) {
    if (report.conversion) return report.conversion->notes;
    if (report.mendings.empty()) return {};
    return {fmt::format("mended: {}", fmt::join(report.mendings, ", "))};
}

void addReady(Json &object, const ReadyReport &report) {
    object["mended"] = report.mendings;
    object["converted"] = Json();
    if (report.conversion) addConversion(object["converted"], *report.conversion);
}

std::vector<JsonFields> readyFields() {
    return {
        {"mended", "what was mended of the plot, as sentences"},
        {"converted", "of a plot that was written anew, what 'vectorix convert' reports of it; else\nnull"},
    };
}

} // namespace host
