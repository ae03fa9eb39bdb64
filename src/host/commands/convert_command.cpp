// vectorix convert: another plot file of a drawing, placed, ordered, and cut well.
#include "emulations/emulations.h"
#include "host/commands/commands.h"
#include "host/convert/ready_plot.h"
#include "host/examination/file_kind.h"
#include "host/files/whole_file.h"
#include "host/files/write_all.h"
#include "host/job/job_options.h"
#include "host/mending/mending.h"
#include "host/options/apply_profile.h"
#include "host/terminal/output.h"
#include "host/terminal/telling.h"
#include "host/terminal/text.h"

#include <cerrno>
#include <fmt/format.h>
#include <memory>
#include <unistd.h>

namespace host {

namespace {

struct ConvertOptions {
    std::string input, output;
    DrawingOptions drawing; ///< the sheet, and the input's language
    int emulation = emulations::kHpgl;
    ConversionOptions conversion;
    bool isMendedOnly = false;
    Telling telling;
};

language::Language languageOf(int emulation) {
    return emulations::of(emulation).language.value_or(language::Language::Hpgl);
}

/// How to print it, where that is not what 'print' does without options.
std::string printNote(int emulation) {
    const bool isFound = emulation == emulations::kHpgl || emulation == emulations::kDmpl; // by the plot's first bytes
    return isFound ? std::string() : fmt::format("print it with --emulation {}", emulation);
}

/// What is written, and what became of the file.
struct Made {
    PlotFile plot;
    ReadyReport report;
    Verdict verdict;
};

Made converted(PlotFile input, const ConvertOptions &options) {
    const std::string terminator(language::terminatorOf(languageOf(options.emulation)));
    ReadyPlot made = readyPlot(std::move(input), {.conversion = options.conversion, .isConverted = true}, options.drawing,
                               {options.emulation, terminator});
    Verdict verdict{.message = "", .notes = readyNotes(made.report)};
    if (const std::string print = printNote(options.emulation); !print.empty()) verdict.notes.push_back(print);
    return {std::move(made.plot), std::move(made.report), std::move(verdict)};
}

/// The input's bytes, but for what was mended.
Made mendedOnly(PlotFile input) {
    const FileNature nature = natureOf(input, {});
    if (nature.isDrawing())
        throw Failure(ExitCode::Usage,
                      fmt::format("--mend-only: {} is {}; leave the option out", shown(input.path()), nature.what));
    std::optional<Mended> mend = mended(input, usualRules(input));
    if (!mend) return {std::move(input), {}, {.message = "", .notes = {"nothing had to be mended"}}};
    Made made{std::move(mend->plot), {std::move(mend->mendings), {}}, {}};
    made.verdict.notes = readyNotes(made.report);
    return made;
}

std::string bytesOf(const PlotFile &plot) {
    std::string bytes;
    plot.readBlocks([&](std::string_view block) {
        bytes += block;
        return true;
    });
    return bytes;
}

/// The plot to standard output, and what is told of it beside it. A reader that leaves has had all that it wanted.
ExitCode pourOut(const Made &made, std::string_view bytes, const Telling &telling, const std::string &text) {
    if (!writeAll(STDOUT_FILENO, bytes) && errno != EPIPE) throw outputFailure("standard output", errno);
    if (!telling.quiet) writeError(text);
    return tell(telling, made.verdict, {}, "");
}

ExitCode convert(const ConvertOptions &options) {
    const bool isPoured = options.output == kStandardOutput;
    if (isPoured && options.telling.json)
        throw Failure(ExitCode::Usage, "--json: with -o - the plot goes to standard output; name a file");
    requireOtherFile("-o", options.output, options.input);
    PlotFile input(options.input);
    const Made made = options.isMendedOnly ? mendedOnly(std::move(input)) : converted(std::move(input), options);
    const std::string bytes = bytesOf(made.plot);
    const std::string text =
        fmt::format("{}wrote {}, {}\n", readyText(made.report), isPoured ? "standard output" : shown(options.output),
                    counted(static_cast<int64_t>(bytes.size()), "byte"));
    if (isPoured) return pourOut(made, bytes, options.telling, text);

    writeWhole(options.output, bytes, true);
    Json report = jsonOf(made.verdict);
    report["plotFile"] = options.input;
    report["output"] = options.output;
    report["mended"] = made.report.mendings;
    report["bytes"] = bytes.size();
    if (made.report.conversion) addConversion(report, *made.report.conversion);
    return tell(options.telling, made.verdict, report, text);
}

} // namespace

void addConvertCommand(const Command &app) {
    auto options = std::make_shared<ConvertOptions>();
    Command command = app.add("convert", "Make a plot file of a drawing: SVG, PDF, or another plot");
    std::vector<JsonFields> fields = conversionFields();
    fields.insert(fields.begin(),
                  {{"exitCode, message, notes", "only the first two when nothing was written"},
                   {"plotFile, output", "as they were named"},
                   {"mended", "with --mend-only: what was mended, as sentences; there is nothing more then but bytes"}});
    command.explain(
        {"SVG is read by rsvg-convert (Debian package librsvg2-bin), PDF by pdftocairo (poppler-utils): lines, however "
         "wide, are drawn as one, text as the outlines of its letters, areas as theirs, with hatching on demand. Pictures "
         "are left out, and what a later area covers. A plot is read as the plotter in software reads it: labels, arcs and "
         "fills as the lines that they come to.\n\n"
         "Nothing is cut off at the sheet's edges. What is written can be cut wherever a print has to: no instruction is "
         "sent in two pieces.\n\n"
         "Without an option for its place, what is drawn stays where it is; turned, mirrored or scaled, its lower left "
         "corner does.",
         {{"vectorix convert drawing.svg -o drawing.plt --fit --rotate auto", "As large as A4 holds it."},
          {"vectorix convert drawing.pdf -o page.plt --page 1 --pens black=1,red=2", "A page, with two pens."},
          {"vectorix convert drawing.plt -o small.plt --sheet a4-portrait --margin 15 --fit --rotate auto",
           "As large as an upright sheet holds it."},
          {"vectorix convert drawing.plt -o mended.plt --mend-only", "Mended as a print does it, and otherwise as it was."},
          {"vectorix convert drawing.plt -o quick.plt --order nearest", "Drawn with as little lifting as can be."},
          {"vectorix convert drawing.plt -o cut.dmpl --emulation dmpl", "In DM/PL, in which cutters are sent theirs."},
          {"vectorix convert - -o small.plt --scale 0.5 < drawing.plt", "Half as large, of what another program says."}},
         fields});
    command.option("PLOT", options->input, "SVG, PDF or plot file; - for standard input").required().valueName("");
    command.option("-o,--output", options->output, "Plot file to write; - for standard output").required().valueName("FILE");
    addProfileOption(command);
    addLanguage(command, options->drawing);
    addEmulation(command, options->emulation)
        .describe("What it will be printed on: hpgl (17002), dmpl (17008), or 17001 to 17037 (hpgl)");
    addTelling(command, options->telling, {.verbose = nullptr});
    addPlaceOn(command, options->drawing);
    addPage(command, options->conversion);
    const std::vector<Option> forStrokes = addConversionOptions(command, options->conversion);
    Option mend = command.flag("--mend-only", options->isMendedOnly,
                               "Write a plot file as it is, but for what would keep it from arriving whole");
    for (Option option : forStrokes)
        mend.excludes(option);
    command.whenTyped(
        [options, command] {
            applyProfile(command);
            return convert(*options);
        },
        &options->telling.json);
}

} // namespace host
