// vectorix preview: what a drawing comes to on a plotter, and a picture of it, without one.
#include "host/commands/commands.h"
#include "host/convert/ready_plot.h"
#include "host/examination/file_kind.h"
#include "host/files/plot_file.h"
#include "host/options/apply_profile.h"
#include "host/options/line_settings.h"
#include "host/options/plotter_options.h"
#include "host/picture/drawing.h"
#include "host/picture/estimate.h"
#include "host/picture/plot_findings.h"
#include "host/plugin/stop_signals.h"
#include "host/print/parts.h"
#include "host/terminal/output.h"
#include "host/terminal/telling.h"
#include "host/terminal/text.h"

#include <algorithm>
#include <fmt/format.h>
#include <memory>
#include <optional>

namespace host {

namespace {

struct PreviewOptions {
    std::string plot;
    std::string picture; ///< empty for none
    DrawingOptions drawing;
    ReadyOptions ready;
    LineSettings line;
    StartOptions start;
    std::string usbChoice;
    bool isUsb = false; ///< the time is that of the pen alone
    Telling telling;

    bool isPoured() const { return picture == kStandardOutput; }
};

struct Preview {
    ReadyReport ready;
    Estimate estimate;
    language::Place begin; ///< before which all is done
    View view;
    std::string note; ///< on how the picture was drawn
};

double secondsLeft(const Preview &made) { return made.estimate.secondsLeft(static_cast<int64_t>(made.begin.offset)); }

/// Of a preview from a place within the plot.
std::string placeText(const Preview &made) {
    if (made.begin.offset == 0) return {};
    const language::Findings &all = made.estimate.findings;
    return fmt::format(
        "done: {}, up to byte {}\nleft: {}, about {}\n", counted(static_cast<int64_t>(made.begin.strokes), "stroke"),
        grouped(static_cast<int64_t>(made.begin.offset)),
        counted(static_cast<int64_t>(all.strokes - made.begin.strokes), "stroke"), duration(secondsLeft(made)));
}

std::string textOf(const Preview &made, const PreviewOptions &options) {
    const std::string line = options.isUsb ? "" : fmt::format("{} bit/s", options.line.baud);
    const std::optional<ConversionReport> &conversion = made.ready.conversion;
    std::string text = (conversion ? strokesText(*conversion) : "") +
                       findingsText(made.estimate.language, made.estimate.findings, line) + placeText(made);
    if (options.picture.empty()) return text;
    return text + fmt::format("drew {}{}\n", options.isPoured() ? "the picture" : shown(options.picture),
                              made.view.name.empty() ? "" : " on " + shown(made.view.name));
}

Json jsonOf(const Preview &made, const PreviewOptions &options, const Verdict &verdict) {
    Json report = jsonOf(verdict);
    report["plotFile"] = options.plot;
    report["picture"] = options.picture.empty() ? Json() : Json(options.picture);
    addReady(report, made.ready);
    addFindings(report, made.estimate.language, made.estimate.findings);
    report["sheet"] = made.view.name.empty() ? Json() : Json(made.view.name);
    report["leavesSheet"] = made.view.isLeft;
    report["begin"] = made.begin.offset;
    report["secondsLeft"] = secondsLeft(made);
    return report;
}

/// The picture's sheet, but for what the conversion tells of its own, which is mostly the same one.
View untoldOf(const Preview &made) {
    View view = made.view;
    const bool isTold = made.ready.conversion && made.ready.conversion->leavesSheet;
    view.isLeft = view.isLeft && !(isTold && !view.name.empty());
    return view;
}

ExitCode tellPreview(const Preview &made, const PreviewOptions &options) {
    Verdict verdict{ExitCode::Done, "", viewNotes(made.estimate.findings, untoldOf(made), !options.picture.empty())};
    for (std::string &note : readyNotes(made.ready))
        verdict.notes.push_back(std::move(note));
    if (!made.ready.refusal.empty()) verdict.notes.push_back("a print refuses it: " + made.ready.refusal);
    if (!made.note.empty()) verdict.notes.push_back(shown(made.note));
    if (!options.isPoured()) return tell(options.telling, verdict, jsonOf(made, options, verdict), textOf(made, options));
    if (!options.telling.quiet) writeError(textOf(made, options));
    return tell(options.telling, verdict, {}, "");
}

/// Returns the remark on how it was drawn.
std::string draw(const PlotFile &file, const Preview &made, const PreviewOptions &options) {
    const auto &conversion = made.ready.conversion;
    Drawing drawing(made.view, options.drawing, options.picture, conversion ? conversion->colours : strokes::PenColours());
    language::PlotReader plot(languageOf(options.drawing), drawing.sink(), sheetOf(options.drawing).hardClip,
                              language::Clipping::None);
    drawing.setDone(made.begin.offset > 0);
    plot.onChoice = [&](language::Reader &reader) {
        if (made.begin.offset == 0) return;
        reader.onInstruction = [&] { drawing.setDone(reader.place().offset < made.begin.offset); };
    };
    std::optional<StopOnSignal> signals(std::in_place);
    file.readBlocks([&](std::string_view block) {
        plot.take(block);
        return !StopOnSignal::came();
    });
    signals.reset(); // writing the picture asks for no stop: from here on a signal ends the process
    if (StopOnSignal::came()) throw Failure(ExitCode::Stopped, "stopped: nothing was written");
    plot.finish();
    drawing.finish();
    return drawing.note();
}

ExitCode preview(const PreviewOptions &options) {
    if (options.isPoured() && options.telling.json)
        throw Failure(ExitCode::Usage, "--json: with -o - the picture goes to standard output; name a file");
    PlotFile given(options.plot); // before signals are held: a stream may be waited for
    given.requireContents();
    requireOtherFile("-o", options.picture, options.plot);
    const PlotRules rules = usualRules(given);
    const auto [file, ready] = readyPlot(std::move(given), options.ready, options.drawing, rules);
    requirePlot(file, languageOf(options.drawing), "draw");
    Preview made{.ready = ready,
                 .estimate = estimateOf(file, languageOf(options.drawing), sheetOf(options.drawing).hardClip,
                                        options.isUsb ? 0 : secondsFor(1, options.line)),
                 .begin = {},
                 .view = {},
                 .note = {}};
    const language::Findings &findings = made.estimate.findings;
    if (findings.instructions == 0) {
        throw Failure(ExitCode::Unfit,
                      fmt::format("{}: no plot in a language that can be drawn; give HP-GL or DM/PL", shown(file.path())));
    }
    made.begin = startOf(file, {made.estimate.language, sheetOf(options.drawing).hardClip}, options.start);
    made.view = viewOf(options.drawing, findings);
    if (!options.picture.empty()) made.note = draw(file, made, options);
    return tellPreview(made, options);
}

} // namespace

void addPreviewCommand(const Command &app) {
    auto options = std::make_shared<PreviewOptions>();
    Command command = app.add("preview", "Tell what a drawing comes to on a plotter, and draw that");
    std::vector<JsonFields> fields = findingsFields();
    const std::vector<JsonFields> ready = readyFields();
    fields.insert(fields.begin(), ready.begin(), ready.end());
    fields.insert(fields.begin(),
                  {{"exitCode, message, notes", "only the first two when nothing was drawn"},
                   {"plotFile, picture", "as they were named; null for no picture"},
                   {"sheet", "that the drawing was held against; null when no usual one holds it"},
                   {"begin, secondsLeft", "where the plot is begun with --from, and the time from there on"}});
    command.explain(
        {"Of SVG and PDF, what is drawn are the strokes that a print would send, in their own "
         "colours; of a plot the whole file, also what a print would not send: text behind the last terminator.\n\n"
         "Without --sheet and --area the sheet is the smallest usual one that holds the drawing (A4 where it does), with "
         "0,0 in its middle for a drawing that lies around it. Where none holds it, the picture is as large as the "
         "drawing, and A4 is outlined. What leaves a sheet or an area that was named is grey.\n\n"
         "The time is that of 'vectorix print': at each moment the slower of the pen and the line, which is one of 9600 "
         "bit/s unless options or the profile say otherwise.",
         {{"vectorix preview drawing.plt", "Says what is in it, and draws nothing."},
          {"vectorix preview drawing.svg -o plot.png --fit", "What a plotter makes of an SVG drawing."},
          {"vectorix preview drawing.plt -o drawing.svg --sheet a3", "As SVG, on a sheet of 420 x 297 mm."},
          {"vectorix preview drawing.plt -o drawing.png --dpi 100 --sheet a4-portrait", "As PNG, on an upright sheet."},
          {"vectorix preview drawing.plt -o drawing.pdf --json", "As PDF; what was found in the plot as JSON."},
          {"vectorix preview drawing.plt -o left.png --from 40%", "What is left is in colours, what is done is grey."},
          {"vectorix preview drawing.plt -o - --format png", "As PNG to standard output, for another program."}},
         fields});
    command.option("PLOT", options->plot, "Plot file, SVG or PDF; - for standard input").required().valueName("");
    Option picture = command
                         .option("-o,--output", options->picture,
                                 "Picture to write: .svg, .png or .pdf; - for standard output, as --format says (svg)")
                         .valueName("FILE");
    command.option("--format", options->drawing.format, "Format of the picture (by its name)")
        .oneOf({"svg", "png", "pdf"})
        .valueName("svg|png|pdf")
        .needs(picture);
    addProfileOption(command);
    addLanguage(command, options->drawing);
    addTelling(command, options->telling, {.verbose = nullptr});
    addDrawingOptions(command, options->drawing)
        .front()
        .describe("Sheet that it is drawn on: a0 to a4, letter, tabloid, or WxH in mm (the smallest that holds it)");
    addFrom(command, options->start)
        .describe("Show grey what is done when a print begins at a byte (2000), a part (40%), or "
                  "stroke:N");
    Option usb = addUsb(command, options->usbChoice).describe("Estimate the time for a plotter on USB, not on a line");
    addLineOptions(command, options->line);
    addPage(command, options->ready.conversion);
    const std::vector<Option> forStrokes = addConversionOptions(command, options->ready.conversion);
    options->ready.isForced = true;
    command.whenTyped(
        [options, command, usb, forStrokes] {
            applyProfile(command);
            options->ready.isConverted = std::ranges::any_of(forStrokes, &Option::isTyped);
            options->isUsb = usb.isTyped();
            if (options->isPoured() && options->drawing.format.empty()) options->drawing.format = "svg";
            return preview(*options);
        },
        &options->telling.json);
}

} // namespace host
