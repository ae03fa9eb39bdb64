// vectorix print: a plot file to a plotter, into a file as the plotter would have got it, or to a plotter in software.
#include "host/commands/commands.h"
#include "host/job/job_options.h"
#include "host/options/apply_profile.h"
#include "host/options/plotter_options.h"
#include "host/plugin/usb_target.h"
#include "host/print/dry_run.h"
#include "host/print/pages.h"
#include "host/print/print.h"
#include "host/print/verdict.h"

#include <algorithm>
#include <fmt/format.h>
#include <memory>

namespace host {

namespace {

struct TypedPrint {
    PrintOptions options;
    bool dryRun = false;
    SessionOptions session;
    bool noPrompt = false;
    std::string penChange = "ask";
    Telling telling;
};

ExitCode run(const TypedPrint &typed) {
    const PrintOptions &options = typed.options;
    if (options.port.empty() && options.capture.empty() && options.picture.empty() && !options.toUsb) {
        throw Failure(ExitCode::Usage, "print: say where to: --port DEVICE, --usb, --capture FILE, --virtual FILE, "
                                       "or --profile NAME of one with a port or usb");
    }
    parseUsbChoice(options.usbChoice); // what was typed is looked at first
    const std::vector<PrintPlan> sheets = plansOf(options);
    return typed.dryRun ? tellPlans(sheets, options.copies, typed.telling) : print(sheets, typed.session, typed.telling);
}

void addSheets(const Command &command, TypedPrint &typed) {
    Option copies = command.option("--copies", typed.options.copies, "Print all of it so many times (1)").between(1, 999);
    copies.valueName("N");
    Option noPrompt = command.flag("--no-prompt", typed.noPrompt, "Ask for no paper between two sheets, as on a roll");
    for (Option option : {copies, noPrompt})
        option.group("Sheets");
}

void addStart(const Command &command, StartOptions &start) {
    Option from = addFrom(command, start);
    Option resume =
        command.flag("--resume", start.isResumed, "Begin where the last print of this plot ended").excludes(from);
    Option overlap = command.option("--overlap", start.overlap, "Draw so many mm ahead of that place once more (0)");
    overlap.within(0, 100'000).valueName("MM");
    for (Option option : {from, resume, overlap})
        option.group("Taking up again");
}

void addAttendance(const Command &command, TypedPrint &typed) {
    SessionOptions &session = typed.session;
    Option change =
        command.option("--pen-change", typed.penChange,
                       "Where pens have to be changed by hand: ask at the terminal, pause until SIGUSR1, or skip it (ask)");
    change.oneOf({"ask", "pause", "skip"}).valueName("ask|pause|skip");
    Option leave =
        command.flag("--leave-pen", session.leavesPen, "Leave the pen where it is when a print ends before its end");
    Option progress = command.option("--progress", session.attendance.progress,
                                     "Write a line of JSON each half second, to standard error or a descriptor");
    progress.valueName("json[:FD]");
    Option control = command.option("--control", session.attendance.control,
                                    "Make a socket there that takes pause, pause-at-once, go, stop and status");
    control.valueName("PATH");
    for (Option option : {change, leave, progress, control})
        option.group("While it plots");
}

} // namespace

void addPrintCommand(const Command &app) {
    auto typed = std::make_shared<TypedPrint>();
    PrintOptions *options = &typed->options;
    Command command = app.add("print", "Print a drawing: a plot file, SVG or PDF");
    command.explain(
        {fmt::format(
             "SVG and PDF are read as 'vectorix convert --help' says, and so is a plot that is to lie elsewhere, or to "
             "be drawn in another order or by other pens. Any other plot is sent as it is. What would keep it from "
             "arriving whole is mended where no stroke changes by it, and said.\n\n"
             "Several plots, and the pages of a PDF document, are sheets of their own: all of them are checked before "
             "the first byte, and paper is asked for between two. Each has its report, and one is of all.\n\n"
             "--before and --after stand within the plot, in its language: --before behind its own initialisation, "
             "--after ahead of what ends it. Offsets in the plot count them.\n\n{}\n\nA dry run opens neither port nor "
             "plotter, and ends with the exit code that the print would have if nothing disturbed it.",
             escapeHelp()),
         {{"vectorix print drawing.plt --port /dev/ttyUSB0", "To a plotter on a serial port."},
          {"vectorix print drawing.plt --port /dev/ttyUSB0 --baud 2400 --bits 7 --parity even --handshake hardware",
           "The same, for a plotter whose switches say so."},
          {"vectorix print drawing.plt --port /dev/ttyUSB0 --dry-run", "Says what would be sent, and for how long."},
          {"vectorix print drawing.svg --fit --rotate auto --port /dev/ttyUSB0", "A drawing, as large as A4 holds it."},
          {"vectorix print - --port /dev/ttyUSB0 < drawing.plt", "What another program says."},
          {"vectorix print a.plt b.plt --copies 3 --usb", "Six sheets; asks for paper before each but the first."},
          {"vectorix print drawing.pdf --page 1,3-5 --usb", "Four pages, a sheet each."},
          {"vectorix print drawing.plt --before 'VS10;' --after 'PG;' --usb", "Slowly, and feeds a roll at the end."},
          {"vectorix print drawing.plt --usb", "To the only plotter on USB."},
          {"vectorix print drawing.plt --job roll.plist --port /dev/ttyUSB0", "As a job file says."},
          {"vectorix print drawing.plt --capture drawing.out", "Into a file: what a plotter would get."},
          {"vectorix print drawing.plt --virtual drawing.png", "To a plotter in software, whose picture is kept."}},
         printFields()});
    command.option("PLOT", options->plots, "Plot file, SVG or PDF; - for standard input; several, a sheet each")
        .required()
        .repeatable()
        .valueName("");
    addProfileOption(command);
    Option port = addPort(command, options->port);
    Option capture = command.option("--capture", options->capture, "Print into a file what the plotter would get")
                         .valueName("FILE")
                         .excludes(port);
    Option picture = command.option("--virtual", options->picture, "Print to a plotter in software, and draw what arrives")
                         .valueName("FILE")
                         .excludes(port)
                         .excludes(capture);
    Option usb = addUsb(command, options->usbChoice).excludes(port).excludes(capture).excludes(picture);
    addPlaceOn(command, options->drawing);
    addDotsPerInch(command, options->drawing).needs(picture);
    addPages(command, options->pages);
    const std::vector<Option> forStrokes = addConversionOptions(command, options->ready.conversion);
    Option job = command.option("--job", options->jobFile, "Job file that says what follows").valueName("JOB");
    for (Option option : addJobOptions(command, options->job))
        option.excludes(job);
    addTexts(command, options->texts);
    addLineOptions(command, options->line);
    command.flag("--dry-run", typed->dryRun, "Check everything, say what would be sent, and send nothing");
    command.flag("--exact", options->ready.isExact, "Mend nothing: refuse a plot file that would not arrive whole as it is");
    command.flag("--force", options->force,
                 "Print also a plot file of which a part cannot be sent, or that leaves the area");
    command.flag("--keep-going", options->keepGoing, "Go on after a piece that the plotter did not take");
    addTelling(command, typed->telling);
    addSheets(command, *typed);
    addStart(command, options->start);
    addAttendance(command, *typed);
    command.whenTyped(
        [typed, command, usb, forStrokes] {
            applyProfile(command);
            typed->options.ready.isConverted = std::ranges::any_of(forStrokes, &Option::isTyped);
            typed->options.toUsb = usb.isTyped();
            typed->options.changesPens = typed->penChange != "skip";
            typed->session.copies = typed->options.copies;
            typed->session.isPrompted = !typed->noPrompt;
            typed->session.mayWaitUnseen = typed->penChange == "pause";
            return run(*typed);
        },
        &typed->telling.json);
}

} // namespace host
