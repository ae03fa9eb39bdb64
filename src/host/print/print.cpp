#include "host/print/print.h"

#include "host/examination/examination.h"
#include "host/files/plot_file.h"
#include "host/job/job_reader.h"
#include "host/job/job_writer.h"
#include "host/plugin/console_lines.h"
#include "host/plugin/progress.h"
#include "host/plugin/progress_bar.h"
#include "host/plugin/record.h"
#include "host/plugin/stop_signals.h"
#include "host/plugin/usb_target.h"
#include "host/print/destination.h"
#include "host/print/dry_run.h"
#include "host/print/verdict.h"
#include "host/terminal/output.h"
#include "host/terminal/text.h"

#include <chrono>
#include <optional>

namespace host {

namespace {

/// What the plug-in asks after each piece: takes note of it, and ends the job at its first failure, or at the first that no
/// further piece can survive.
struct PieceWatch {
    JobProgress &progress;
    bool keepGoing;

    static int32_t look(const ORB_JobReport *soFar, void *context) noexcept {
        auto &self = *static_cast<PieceWatch *>(context);
        self.progress.note(*soFar);
        bool ends = self.keepGoing ? endsAnyJob(soFar->lastStatus) : soFar->firstErrorID != kORB_NoError;
        if (ends) self.progress.end();
        return ends;
    }
};

/// The emulation and terminator of the job, by which the plot is cut. None for a job file that cannot be read: to judge it
/// is left to the plug-in.
std::optional<PlotRules> rulesOf(const PrintOptions &options) {
    if (options.jobFile.empty()) return PlotRules{options.job.emulation, terminatorOf(options.job)};
    requireInputFile(options.jobFile, "job file");
    try {
        std::vector<JobLine> job = readJob(options.jobFile);
        const JobLine *terminator = fitting(job, kTerminatorKey);
        return PlotRules{static_cast<int32_t>(numberOf(job, kEmulationKey, 0)),
                         terminator ? std::get<std::string>(*terminator->value) : ""};
    } catch (const Failure &) {
        return std::nullopt;
    }
}

/// The record of the job, but for its files; portPath must outlive the call.
ORB_ServiceRecord recordOf(const PrintOptions &options, const Destination &destination, const HostString &portPath) {
    ORB_ServiceRecord record = destination.usb() ? recordFor(*destination.usb()) : emptyRecord(kORB_ServicePrint);
    record.ORB_serviceNumber = kORB_ServicePrint;
    if (!destination.usb()) applyLineSettings(options.line, record);
    record.ORB_CFSTR_bsdIn_VectorixDevice = portPath.get();
    return record;
}

/// The call of the entry, with everything that must be set up around it.
void callEntry(const PrintOptions &options, const PlotFile &plot, const Destination &destination, PrintOutcome &outcome,
               ProgressBar &bar) {
    std::optional<TemporaryJob> made;
    if (options.jobFile.empty()) made.emplace(propertyList(jobOf(options.job)));
    HostString portPath(destination.port(), "--port");
    ORB_ServiceRecord record = recordOf(options, destination, portPath);
    record.ORB_EmulationID = outcome.rules.emulation; // the link needs it before the plug-in reads the job file
    record.ORB_JobFileRef = fileReference(made ? made->path() : options.jobFile);
    record.ORB_PlotFileInRef = fileReference(plot.heldPath());

    JobProgress progress(destination.line(), plot.size(), plot.size() - outcome.examination.withheldBytes);
    PieceWatch watch{progress, options.keepGoing};
    ORB_hostSetProgress(PieceWatch::look, &watch);
    bar.follow([&progress] { return progress.now(); });
    auto start = std::chrono::steady_clock::now();
    if (!StopOnSignal::came()) {
        record = ORB_getVectorixCS2(record);
        ORB_hostGetJobReport(&outcome.report);
    }
    outcome.seconds = std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
    ORB_hostSetProgress(nullptr, nullptr);
    bar.stop();

    outcome.stopped = StopOnSignal::came();
    outcome.recordErrorID = record.ORB_errorID;
    outcome.emulation = record.ORB_PlotterEmulationID;
    outcome.usbOutPipe = record.ORB_USB_PIPEOUT;
    outcome.terminator = textOf(record.ORB_CFSTR_PlotfileTerminator);
    releaseStrings(record);
}

/// A file or a picture that cannot be written is part of what became of the job, and of its one report.
void finish(Destination &destination, const PrintOutcome &outcome, Verdict &verdict) {
    try {
        destination.finish();
    } catch (const Failure &failure) {
        if (verdict.code == ExitCode::Done) verdict.code = failure.code();
        if (!verdict.message.empty()) verdict.message += "; and ";
        verdict.message += failure.what();
    }
    if (verdict.message.empty() && isShort(outcome)) {
        verdict.code = ExitCode::Failed;
        verdict.message = fmt::format("{}: not all that was sent arrived", shown(outcome.destination));
    }
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
            printNote(note);
    }
    if (options.verbose && outcome.report.uncutChunks > 0) {
        printNote(fmt::format("{} held no command boundary and went as they were",
                              counted(static_cast<int64_t>(outcome.report.uncutChunks), "chunk")));
    }
    if (!verdict.message.empty()) printFailure(verdict.message);
}

} // namespace

ExitCode print(const PrintOptions &options) {
    if (options.jobFile.empty()) jobOf(options.job); // what was typed is looked at first
    if (options.dryRun && !options.jobFile.empty()) requireFitJob(options.jobFile);
    PlotFile plot(options.plot);
    PrintOutcome outcome{};
    if (auto rules = rulesOf(options)) {
        outcome.rules = *rules;
        outcome.examination = examine(plot, *rules);
        if (!options.force) requireFit(outcome.examination, plot, *rules);
    }
    if (options.dryRun) return dryRun(options, plot, outcome.rules, outcome.examination);

    std::optional<StopOnSignal> signals(std::in_place);
    Destination destination(options);
    outcome.report.structSize = sizeof outcome.report;
    outcome.report.firstErrorID = kORB_NoError;
    outcome.plotFile = plot.path();
    outcome.jobFile = options.jobFile;
    outcome.destination = destination.name();
    outcome.usb = destination.usb();

    ProgressBar bar(!options.quiet && !options.json && ProgressBar::isPossible());
    ConsoleLines console(options.verbose, bar);
    callEntry(options, plot, destination, outcome, bar);
    destination.settle(outcome);
    signals.reset();

    outcome.change = plot.change();
    Verdict verdict = judge(outcome);
    if (outcome.report.sentBytes > 0) destination.addNotes(verdict);
    if (callFailed(outcome) && !outcome.stopped) console.show();
    finish(destination, outcome, verdict);
    tell(options, outcome, verdict);
    return verdict.code;
}

} // namespace host
