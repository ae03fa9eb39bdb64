#include "host/convert/ready_plot.h"

#include "host/examination/file_kind.h"

#include <fmt/format.h>
#include <fmt/ranges.h>

namespace host {

namespace {

/// Of what can be sent to no plotter as it is.
bool isDrawing(const PlotFile &file) {
    const FileKind kind = natureOf(file, {}).kind;
    return kind == FileKind::Svg || kind == FileKind::Pdf;
}

} // namespace

ReadyPlot readyPlot(PlotFile file, const ReadyOptions &options, const DrawingOptions &drawing, const PlotRules &rules) {
    if (options.isConverted || isDrawing(file)) {
        const Conversion made = conversionOf(file, options.conversion, {drawing, rules.emulation, rules.terminator});
        return {PlotFile::holding(file.path(), made.plot), {{}, made.report}};
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
