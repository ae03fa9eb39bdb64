#include "host/convert/ready_plot.h"

#include "emulations/emulations.h"
#include "host/examination/file_kind.h"
#include "host/mending/mending.h"
#include "host/terminal/failure.h"
#include "host/terminal/text.h"

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

/// The plot as it will be cut, without the texts.
ReadyPlot bareOf(PlotFile file, const ReadyOptions &options, const DrawingOptions &drawing, const PlotRules &rules) {
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

} // namespace

PlotRules usualRules(const PlotFile &file) {
    const bool isDmpl = natureOf(file, language::Language::Hpgl).kind == FileKind::Dmpl;
    return {isDmpl ? emulations::kDmpl : emulations::kHpgl,
            std::string(language::terminatorOf(isDmpl ? language::Language::Dmpl : language::Language::Hpgl))};
}

ReadyPlot readyPlot(PlotFile file, const ReadyOptions &options, const DrawingOptions &drawing, const PlotRules &rules) {
    ReadyPlot ready = bareOf(std::move(file), options, drawing, rules);
    if (options.texts.before.empty() && options.texts.after.empty()) return ready;
    ready.report.texts = ended(options.texts, rules);
    return {withTexts(ready.plot, ready.report.texts, rules), std::move(ready.report)};
}

std::string readyText(const ReadyReport &report) {
    std::string text = report.conversion ? conversionText(*report.conversion) : "";
    if (!report.texts.before.empty()) text += fmt::format("before      \"{}\"\n", shown(report.texts.before));
    if (!report.texts.after.empty()) text += fmt::format("after       \"{}\"\n", shown(report.texts.after));
    return text;
}

std::vector<std::string> readyNotes(const ReadyReport &report) {
    if (report.conversion) return report.conversion->notes;
    if (report.mendings.empty()) return {};
    return {fmt::format("mended: {}", fmt::join(report.mendings, ", "))};
}

void addReady(Json &object, const ReadyReport &report) {
    object["mended"] = report.mendings;
    object["converted"] = Json();
    object["before"] = report.texts.before.empty() ? Json() : Json(report.texts.before);
    object["after"] = report.texts.after.empty() ? Json() : Json(report.texts.after);
    if (report.conversion) addConversion(object["converted"], *report.conversion);
}

std::vector<JsonFields> readyFields() {
    return {
        {"mended", "what was mended of the plot, as sentences"},
        {"converted", "of a plot that was written anew, what 'vectorix convert' reports of it; else\nnull"},
        {"before, after", "texts that were put into the plot; null for none"},
    };
}

} // namespace host
