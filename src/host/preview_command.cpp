// vectorix preview: a picture of a plot file, without a plotter.
#include "host/commands.h"
#include "host/drawing.h"
#include "host/file_kind.h"
#include "host/findings.h"
#include "host/output.h"
#include "host/plot_file.h"
#include "host/stop_signals.h"
#include "host/text.h"

#include <CLI/CLI.hpp>
#include <fmt/format.h>
#include <memory>
#include <nlohmann/json.hpp>
#include <optional>

namespace host {

namespace {

struct PreviewOptions {
    std::string plot;
    std::string picture;
    DrawingOptions drawing;
    bool quiet = false;
    bool json = false;
};

void tell(const PreviewOptions &options, const virtual_plotter::PlotReader &plot, const std::vector<std::string> &notes) {
    if (options.json) {
        nlohmann::ordered_json object = {
            {"exitCode", 0}, {"message", ""}, {"notes", notes}, {"plotFile", options.plot}, {"picture", options.picture}};
        addFindings(object, plot);
        printOut("{}\n", object.dump(-1, ' ', false, nlohmann::ordered_json::error_handler_t::replace));
    } else if (!options.quiet) {
        printLines(fmt::format("{}drew {}\n", findingsText(plot), shown(options.picture)));
    }
    flushOut();
    for (const std::string &note : notes) {
        if (!options.quiet) printNote(note);
    }
}

/// A language that was typed is taken as typed.
void requirePlot(const PlotFile &file, std::optional<virtual_plotter::Language> typed) {
    std::string head(4096, '\0');
    auto guessed = virtual_plotter::guessLanguage(file.read(0, head));
    FileNature nature = natureOf(file, typed ? std::nullopt : std::optional(guessed));
    if (nature.isPlot()) return;
    bool isForced = nature.kind == FileKind::Nonsense;
    throw Failure(ExitCode::Unfit, fmt::format("{}: {}; {}{}", shown(file.path()), nature.what, nature.remedy,
                                               isForced ? ", or draw it all the same with --language hpgl" : ""));
}

ExitCode preview(const PreviewOptions &options) {
    PlotFile file(options.plot); // before signals are held: a stream may be waited for
    file.requireContents();
    requireOtherFile("-o", options.picture, options.plot);
    requirePlot(file, languageOf(options.drawing));
    Drawing drawing(options.drawing, options.picture);
    virtual_plotter::PlotReader plot(languageOf(options.drawing), drawing.sink(), drawing.sheet().hardClip);

    std::optional<StopOnSignal> signals(std::in_place);
    file.readBlocks([&](std::string_view block) {
        plot.take(block);
        return !StopOnSignal::came();
    });
    signals.reset(); // the picture is written in one go, which only the end of the process ends
    if (StopOnSignal::came()) throw Failure(ExitCode::Stopped, "stopped: nothing was written");
    plot.finish();
    if (plot.reader()->findings().instructions == 0) {
        throw Failure(ExitCode::Unfit,
                      fmt::format("{}: no plot in a language that can be drawn; give HP-GL or DM/PL", shown(file.path())));
    }
    drawing.finish();
    std::vector<std::string> notes = findingNotes(plot, drawing.sheet());
    if (!drawing.note().empty()) notes.push_back(shown(drawing.note()));
    tell(options, plot, notes);
    return ExitCode::Done;
}

} // namespace

void addPreviewCommand(CLI::App &app, Typed &typed) {
    auto options = std::make_shared<PreviewOptions>();
    CLI::App *command = app.add_subcommand("preview", "Draw a plot file as a picture");
    std::vector<JsonFields> fields = findingsFields();
    fields.insert(fields.begin(), {{"exitCode, message, notes", "only the first two when nothing was drawn"},
                                   {"plotFile, picture", "as they were named"}});
    explain(typed, *command,
            {"The whole file is drawn, also what a print would not send: text behind the last terminator.",
             {{"vectorix preview drawing.plt -o drawing.svg --sheet a3", "As SVG, on a sheet of 420 x 297 mm."},
              {"vectorix preview drawing.plt -o drawing.png --dpi 100 --sheet a4-portrait", "As PNG, on an upright sheet."},
              {"vectorix preview drawing.plt -o drawing.pdf --json", "As PDF; what was found in the plot as JSON."}},
             fields});
    command->add_option("PLOT", options->plot, "Plot file; - for standard input")->required()->type_name("");
    command->add_option("-o,--output", options->picture, "Picture to write: .svg, .png or .pdf")
        ->required()
        ->type_name("FILE");
    addLanguage(*command, options->drawing);
    command->add_flag("-q,--quiet", options->quiet, "Say nothing but errors");
    command->add_flag("--json", options->json, "Report as one JSON object");
    addDrawingOptions(*command, options->drawing);
    command->callback([options, &typed] {
        typed.wantsJson = options->json;
        typed.run = [options] { return preview(*options); };
    });
}

} // namespace host
