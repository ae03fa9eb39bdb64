// vectorix print: a plot file to a plotter, into a file as the plotter would have got it, or to a plotter in software.
#include "host/capture.h"
#include "host/commands.h"
#include "host/console_lines.h"
#include "host/findings.h"
#include "host/job_options.h"
#include "host/job_reader.h"
#include "host/job_writer.h"
#include "host/line_settings.h"
#include "host/output.h"
#include "host/plot_file.h"
#include "host/port_lock.h"
#include "host/progress_bar.h"
#include "host/record.h"
#include "host/stop_signals.h"
#include "host/text.h"
#include "host/usb_access.h"
#include "host/usb_target.h"
#include "host/verdict.h"
#include "host/virtual_line.h"

#include <CLI/CLI.hpp>
#include <chrono>
#include <fmt/format.h>
#include <memory>
#include <optional>

namespace host {

namespace {

struct PrintOptions {
    std::string plot;
    std::string jobFile;
    JobOptions job;
    std::string port;
    std::string capture;
    std::string picture; ///< of a virtual plotter
    DrawingOptions drawing;
    bool toUsb = false;
    std::string usbChoice;
    LineSettings line;
    bool keepGoing = false;
    bool verbose = false;
    bool quiet = false;
    bool json = false;
};

/// What the plug-in asks after each piece: draws the bar, and ends the job at its first failure.
struct ProgressWatch {
    ProgressBar &bar;
    bool keepGoing;

    static int32_t look(const ORB_JobReport *soFar, void *context) noexcept {
        auto &self = *static_cast<ProgressWatch *>(context);
        try {
            self.bar.update(soFar->sentBytes + soFar->failedBytes, soFar->fileBytes);
        } catch (...) {
            // A bar that cannot be drawn is no reason to stop.
        }
        return !self.keepGoing && soFar->firstErrorID != kORB_NoError;
    }
};

void requirePlottable(const PrintOptions &options) {
    requireInputFile(options.plot, "plot file");
    if (!options.jobFile.empty()) requireInputFile(options.jobFile, "job file");
    if (options.keepGoing) return;
    if (auto foreign = findForeignByte(options.plot)) {
        throw Failure(
            ExitCode::Unfit,
            fmt::format("{}: the byte 0x{:02X} at offset {} is not ASCII, and no plot gets past it; export the plot "
                        "again without it, or print what comes before it with --keep-going",
                        shown(options.plot), foreign->byte, foreign->offset));
    }
}

/// The link needs to know the emulation before the plug-in reads the job file. A file that cannot be read is left to the
/// plug-in to judge.
int32_t emulationOf(const PrintOptions &options) {
    if (options.jobFile.empty()) return options.job.emulation;
    try {
        return static_cast<int32_t>(numberOf(readJob(options.jobFile), kEmulationKey, 0));
    } catch (const Failure &) {
        return 0;
    }
}

/// The call of the entry, with everything that must be set up around it.
PrintOutcome callEntry(const PrintOptions &options, const std::string &port, const std::optional<UsbDevice> &usb,
                       ProgressBar &bar) {
    StopOnSignal signals;
    std::optional<TemporaryJob> made;
    if (options.jobFile.empty()) made.emplace(propertyList(jobOf(options.job)));
    HostString portPath(port, "--port");

    ORB_ServiceRecord record = usb ? recordFor(*usb) : emptyRecord(kORB_ServicePrint);
    record.ORB_serviceNumber = kORB_ServicePrint;
    if (!usb) applyLineSettings(options.line, record);
    record.ORB_CFSTR_bsdIn_VectorixDevice = portPath.get();
    record.ORB_EmulationID = emulationOf(options);
    record.ORB_JobFileRef = fileReference(made ? made->path() : options.jobFile);
    record.ORB_PlotFileInRef = fileReference(options.plot);

    PrintOutcome outcome{};
    outcome.report.structSize = sizeof outcome.report;
    outcome.report.firstErrorID = kORB_NoError;
    outcome.plotFile = options.plot;
    outcome.jobFile = options.jobFile;
    const std::string &file = options.capture.empty() ? options.picture : options.capture;
    outcome.destination = usb ? usb->id() : file.empty() ? port : file;
    outcome.usb = usb;

    ProgressWatch watch{bar, options.keepGoing};
    ORB_hostSetProgress(ProgressWatch::look, &watch);
    auto start = std::chrono::steady_clock::now();
    if (!StopOnSignal::came()) {
        record = ORB_getVectorixCS2(record);
        ORB_hostGetJobReport(&outcome.report);
    }
    outcome.seconds = std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
    ORB_hostSetProgress(nullptr, nullptr);
    bar.clear();

    outcome.stopped = StopOnSignal::came();
    outcome.recordErrorID = record.ORB_errorID;
    outcome.emulation = record.ORB_PlotterEmulationID;
    outcome.usbOutPipe = record.ORB_USB_PIPEOUT;
    outcome.isUsbGone = usb && accessTo(usb->node) == NodeAccess::NoNode;
    outcome.terminator = textOf(record.ORB_CFSTR_PlotfileTerminator);
    releaseStrings(record);
    return outcome;
}

void tell(const PrintOptions &options, const PrintOutcome &outcome, const Verdict &verdict) {
    if (options.json) {
        printOut("{}\n", json(outcome, verdict));
    } else if (!options.quiet) {
        printOut("{}\n", summary(outcome));
    }
    flushOut();
    if (!options.quiet) {
        for (const std::string &note : verdict.notes)
            printError("vectorix: note: {}\n", note);
    }
    if (options.verbose && outcome.report.uncutChunks > 0) {
        printError("vectorix: note: {} held no command boundary and went as they were\n",
                   counted(static_cast<int64_t>(outcome.report.uncutChunks), "chunk"));
    }
    if (!verdict.message.empty()) printError("vectorix: {}\n", verdict.message);
}

void addNotes(const VirtualLine &plotter, Verdict &verdict) {
    for (const std::string &note : findingNotes(plotter.plot(), plotter.drawing().sheet()))
        verdict.notes.push_back(note);
    if (!plotter.drawing().note().empty()) verdict.notes.push_back(shown(plotter.drawing().note()));
}

ExitCode print(const PrintOptions &options) {
    if (options.port.empty() && options.capture.empty() && options.picture.empty() && !options.toUsb) {
        throw Failure(ExitCode::Usage, "print: say where to: --port DEVICE, --usb, --capture FILE, or --virtual FILE");
    }
    UsbChoice usbChoice = parseUsbChoice(options.usbChoice);
    if (options.jobFile.empty()) jobOf(options.job); // what was typed is looked at first
    requirePlottable(options);

    std::optional<PortLock> lock;
    std::optional<Capture> capture;
    std::optional<VirtualLine> plotter;
    std::optional<UsbDevice> usb;
    if (options.toUsb) {
        usb = chooseUsbDevice(usbDevices(), usbChoice);
        requireFree(*usb);
        if (options.verbose) printError("{}", notesOf(*usb));
    } else if (!options.port.empty()) {
        lock.emplace(options.port);
    } else if (!options.picture.empty()) {
        requireOtherFile("--virtual", options.picture, options.plot);
        requireOtherFile("--virtual", options.picture, options.jobFile);
        plotter.emplace(options.drawing, options.picture);
    } else {
        requireOtherFile("--capture", options.capture, options.plot);
        requireOtherFile("--capture", options.capture, options.jobFile);
        capture.emplace(options.capture);
    }
    const std::string &port = plotter ? plotter->port() : capture ? capture->port() : options.port;

    ProgressBar bar(!options.quiet && !options.json && ProgressBar::isPossible());
    ConsoleLines console(options.verbose, bar);
    PrintOutcome outcome = callEntry(options, port, usb, bar);
    if (outcome.stopped && lock) lock->discardOutput();
    if (plotter) outcome.arrivedBytes = plotter->end();
    Verdict verdict = judge(outcome);
    if (plotter && outcome.report.sentBytes > 0) addNotes(*plotter, verdict);
    if (callFailed(outcome) && !outcome.stopped) console.show();
    tell(options, outcome, verdict);
    if (capture) capture->finish();
    if (plotter) plotter->finish();
    return verdict.code;
}

} // namespace

void addPrintCommand(CLI::App &app, Typed &typed) {
    auto options = std::make_shared<PrintOptions>();
    CLI::App *command = app.add_subcommand("print", "Print a plot file");
    command->footer(fmt::format("{}\n\n{}\n\n{}", escapeHelp(), jsonHelp(), exitCodeHelp()));
    command->add_option("PLOT", options->plot, "Plot file")->required()->type_name("");
    auto *port = command->add_option("--port", options->port, "Serial port of the plotter, such as /dev/ttyUSB0")
                     ->type_name("DEVICE");
    command->add_option("--capture", options->capture, "Print into a file what the plotter would get")
        ->type_name("FILE")
        ->excludes(port);
    auto *picture =
        command->add_option("--virtual", options->picture, "Print to a plotter in software, and draw what arrives")
            ->type_name("FILE")
            ->excludes(port)
            ->excludes("--capture");
    CLI::Option *usb =
        command->add_option("--usb", options->usbChoice, "USB plotter: the only one, or the one that 'plotters' shows so")
            ->type_name("[V:P[@LOCATION]]")
            ->expected(0, 1)
            ->excludes(port)
            ->excludes("--capture")
            ->excludes(picture);
    for (CLI::Option *option : addDrawingOptions(*command, options->drawing))
        option->needs(picture);
    auto *job = command->add_option("--job", options->jobFile, "Job file that says what follows")->type_name("FILE");
    for (CLI::Option *option : addJobOptions(*command, options->job))
        option->excludes(job);
    addLineOptions(*command, options->line);
    command->add_flag("--keep-going", options->keepGoing, "Go on after a piece that could not be sent");
    command->add_flag("-v,--verbose", options->verbose, "Show what the plug-in says");
    command->add_flag("-q,--quiet", options->quiet, "Say nothing but errors");
    command->add_flag("--json", options->json, "Report as one JSON object");
    command->callback([options, usb, &typed] {
        options->toUsb = usb->count() > 0;
        typed.wantsJson = options->json;
        typed.run = [options] { return print(*options); };
    });
}

} // namespace host
