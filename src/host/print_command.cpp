// vectorix print: a plot file to a plotter, into a file as the plotter would have got it, or to a plotter in software.
#include "host/commands.h"
#include "host/job_options.h"
#include "host/plotter_options.h"
#include "host/print.h"
#include "host/profile_option.h"
#include "host/usb_target.h"
#include "host/verdict.h"

#include <CLI/CLI.hpp>
#include <fmt/format.h>
#include <memory>

namespace host {

namespace {

ExitCode run(const PrintOptions &options) {
    if (options.port.empty() && options.capture.empty() && options.picture.empty() && !options.toUsb) {
        throw Failure(ExitCode::Usage, "print: say where to: --port DEVICE, --usb, --capture FILE, --virtual FILE, "
                                       "or --profile NAME of one with a port or usb");
    }
    parseUsbChoice(options.usbChoice); // what was typed is looked at first
    return print(options);
}

} // namespace

void addPrintCommand(CLI::App &app, Typed &typed) {
    auto options = std::make_shared<PrintOptions>();
    CLI::App *command = app.add_subcommand("print", "Print a plot file");
    explain(
        typed, *command,
        {fmt::format("{}\n\nA dry run opens neither port nor plotter, and ends with the exit code that the print would have "
                     "if nothing disturbed it.",
                     escapeHelp()),
         {{"vectorix print drawing.plt --port /dev/ttyUSB0", "To a plotter on a serial port."},
          {"vectorix print drawing.plt --port /dev/ttyUSB0 --baud 2400 --bits 7 --parity even --handshake hardware",
           "The same, for a plotter whose switches say so."},
          {"vectorix print drawing.plt --port /dev/ttyUSB0 --dry-run", "Says what would be sent, and for how long."},
          {"vectorix print - --port /dev/ttyUSB0 < drawing.plt", "What another program says."},
          {"vectorix print drawing.plt --usb", "To the only plotter on USB."},
          {"vectorix print drawing.plt --job roll.plist --port /dev/ttyUSB0", "As a job file says."},
          {"vectorix print drawing.plt --capture drawing.out", "Into a file: what a plotter would get."},
          {"vectorix print drawing.plt --virtual drawing.png", "To a plotter in software, whose picture is kept."}},
         printFields()});
    command->add_option("PLOT", options->plot, "Plot file; - for standard input")->required()->type_name("");
    addProfileOption(*command);
    CLI::Option *port = addPort(*command, options->port);
    command->add_option("--capture", options->capture, "Print into a file what the plotter would get")
        ->type_name("FILE")
        ->excludes(port);
    auto *picture =
        command->add_option("--virtual", options->picture, "Print to a plotter in software, and draw what arrives")
            ->type_name("FILE")
            ->excludes(port)
            ->excludes("--capture");
    CLI::Option *usb = addUsb(*command, options->usbChoice)->excludes(port)->excludes("--capture")->excludes(picture);
    for (CLI::Option *option : addDrawingOptions(*command, options->drawing))
        option->needs(picture);
    auto *job = command->add_option("--job", options->jobFile, "Job file that says what follows")->type_name("JOB");
    for (CLI::Option *option : addJobOptions(*command, options->job))
        option->excludes(job);
    addLineOptions(*command, options->line);
    command->add_flag("--dry-run", options->dryRun, "Check everything, say what would be sent, and send nothing");
    command->add_flag("--force", options->force, "Print also a plot file of which a part cannot be sent");
    command->add_flag("--keep-going", options->keepGoing, "Go on after a piece that the plotter did not take");
    command->add_flag("-v,--verbose", options->verbose, "Show what the plug-in says");
    command->add_flag("-q,--quiet", options->quiet, "Say nothing but errors");
    command->add_flag("--json", options->json, "Report as one JSON object");
    command->callback([options, command, usb, &typed] {
        typed.wantsJson = options->json;
        typed.run = [options, command, usb] {
            applyProfile(*command);
            options->toUsb = usb->count() > 0;
            return run(*options);
        };
    });
}

} // namespace host
