// vectorix preview: a picture of a plot file, without a plotter.
#include "host/commands/commands.h"
#include "host/examination/file_kind.h"
#include "host/files/plot_file.h"
#include "host/picture/drawing.h"
#include "host/picture/plot_findings.h"
#include "host/plugin/stop_signals.h"
#include "host/terminal/telling.h"
#include "host/terminal/text.h"

#include <fmt/format.h>
#include <memory>
#include <optional>

namespace host {

namespace {

struct PreviewOptions {
    std::string plot;
    std::string picture;
    DrawingOptions drawing;
    Telling telling;
};

ExitCode tellPreview(const PreviewOptions &options, const language::PlotReader &plot, std::vector<std::string> notes) {
    const Verdict verdict{ExitCode::Done, "", std::move(notes)};
    Json report = jsonOf(verdict);
    report["plotFile"] = options.plot;
    report["picture"] = options.picture;
    addFindings(report, plot);
    return tell(options.telling, verdict, report, fmt::format("{}drew {}\n", findingsText(plot), shown(options.picture)));
}

ExitCode preview(const PreviewOptions &options) {
    PlotFile file(options.plot); // before signals are held: a stream may be waited for
    file.requireContents();
    requireOtherFile("-o", options.picture, options.plot);
    requirePlot(file, languageOf(options.drawing), "draw");
    Drawing drawing(options.drawing, options.picture);
    language::PlotReader plot(languageOf(options.drawing), drawing.sink(), drawing.sheet().hardClip);

    std::optional<StopOnSignal> signals(std::in_place);
    file.readBlocks([&](std::string_view block) {
        plot.take(block);
        return !StopOnSignal::came();
    });
    signals.reset(); // writing the picture asks for no stop: from here on a signal ends the process
    if (StopOnSignal::came()) throw Failure(ExitCode::Stopped, "stopped: nothing was written");
    plot.finish();
    if (plot.reader()->findings().instructions == 0) {
        throw Failure(ExitCode::Unfit,
                      fmt::format("{}: no plot in a language that can be drawn; give HP-GL or DM/PL", shown(file.path())));
    }
    drawing.finish();
    std::vector<std::string> notes = findingNotes(plot, drawing.sheet());
    if (!drawing.note().empty()) notes.push_back(shown(drawing.note()));
    return tellPreview(options, plot, std::move(notes));
}

} // namespace

void addPreviewCommand(const Command &app) {
    auto options = std::make_shared<PreviewOptions>();
    Command command = app.add("preview", "Draw a plot file as a picture");
    std::vector<JsonFields> fields = findingsFields();
    fields.insert(fields.begin(), {{"exitCode, message, notes", "only the first two when nothing was drawn"},
                                   {"plotFile, picture", "as they were named"}});
    command.explain(
        {"The whole file is drawn, also what a print would not send: text behind the last terminator.",
         {{"vectorix preview drawing.plt -o drawing.svg --sheet a3", "As SVG, on a sheet of 420 x 297 mm."},
          {"vectorix preview drawing.plt -o drawing.png --dpi 100 --sheet a4-portrait", "As PNG, on an upright sheet."},
          {"vectorix preview drawing.plt -o drawing.pdf --json", "As PDF; what was found in the plot as JSON."}},
         fields});
    command.option("PLOT", options->plot, "Plot file; - for standard input").required().valueName("");
    command.option("-o,--output", options->picture, "Picture to write: .svg, .png or .pdf").required().valueName("FILE");
    addLanguage(command, options->drawing);
    addTelling(command, options->telling, {.verbose = nullptr});
    addDrawingOptions(command, options->drawing);
    command.whenTyped([options] { return preview(*options); }, &options->telling.json);
}

} // namespace host
