#include "host/print/print.h"

#include "host/job/job_writer.h"
#include "host/obstacles/usb_obstacles.h"
#include "host/plugin/console_lines.h"
#include "host/plugin/record.h"
#include "host/plugin/stop_signals.h"
#include "host/plugin/usb_target.h"
#include "host/print/plan_estimate.h"
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

/// The record of the job, but for its files; portPath must outlive the call.
ORB_ServiceRecord recordOf(const PrintPlan &plan, const HostString &portPath) {
    const Target &target = plan.target;
    ORB_ServiceRecord record = target.usb ? recordFor(*target.usb) : emptyRecord(kORB_ServicePrint);
    record.ORB_serviceNumber = kORB_ServicePrint;
    if (!target.usb) applyLineSettings(target.line, record);
    record.ORB_CFSTR_bsdIn_VectorixDevice = portPath.get();
    record.ORB_EmulationID = plan.rules.emulation; // the link needs it before the plug-in reads the job file
    return record;
}

/// A file or a picture that cannot be written is part of what became of the job, and of its one report.
void finish(Destination &destination, const PrintPlan &plan, const PrintReport &report, Verdict &verdict) {
    try {
        destination.finish();
    } catch (const Failure &failure) {
        if (verdict.code == ExitCode::Done) verdict.code = failure.code();
        if (!verdict.message.empty()) verdict.message += "; and ";
        verdict.message += failure.what();
    }
    if (verdict.message.empty() && isShort(report)) {
        verdict.code = ExitCode::Failed;
        verdict.message = fmt::format("{}: not all that was sent arrived", shown(plan.target.name()));
    }
}

} // namespace

PrintReport carryOut(const PrintPlan &plan, Destination &destination, ProgressBar &bar, const Estimate *estimate) {
    std::optional<TemporaryJob> made;
    if (plan.jobFile.empty()) made.emplace(plan.job);
    HostString portPath(destination.port(), "--port");
    ORB_ServiceRecord record = recordOf(plan, portPath);
    record.ORB_JobFileRef = fileReference(made ? made->path() : plan.jobFile);
    record.ORB_PlotFileInRef = fileReference(plan.plot.heldPath());

    PrintReport report;
    JobProgress progress(destination.line(), plan.plot.size(), plan.plot.size() - plan.examination.withheldBytes);
    if (estimate) {
        report.estimatedSeconds = estimate->findings.seconds;
        progress.secondsLeft = [estimate](int64_t done) { return estimate->secondsLeft(done); };
    }
    PieceWatch watch{progress, plan.keepGoing};
    ORB_hostSetProgress(PieceWatch::look, &watch);
    bar.follow([&progress] { return progress.now(); });
    auto start = std::chrono::steady_clock::now();
    if (!StopOnSignal::came()) {
        record = ORB_getVectorixCS2(record);
        ORB_hostGetJobReport(&report.job);
    }
    report.seconds = std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
    ORB_hostSetProgress(nullptr, nullptr);
    bar.stop();

    report.stopped = StopOnSignal::came();
    report.recordErrorID = record.ORB_errorID;
    report.emulation = record.ORB_PlotterEmulationID;
    report.usbOutPipe = record.ORB_USB_PIPEOUT;
    report.terminator = textOf(record.ORB_CFSTR_PlotfileTerminator);
    releaseStrings(record);
    destination.settle(report);
    report.change = plan.plot.change();
    return report;
}

ExitCode print(const PrintPlan &plan, const Telling &telling) {
    std::optional<Estimate> estimate; // read before signals are held: a large file takes a while
    if (takesItsTime(plan.target)) estimate = estimateOf(plan);
    std::optional<StopOnSignal> signals(std::in_place);
    Destination destination(plan.target);
    if (telling.verbose) writeError(readyText(plan.ready));
    if (telling.verbose && plan.target.usb) printError("{}", notesOf(*plan.target.usb));
    ProgressBar bar(!telling.quiet && !telling.json && ProgressBar::isPossible());
    ConsoleLines console(telling.verbose, bar);
    PrintReport report = carryOut(plan, destination, bar, estimate ? &*estimate : nullptr);
    signals.reset();

    Verdict verdict = judge(plan, report);
    if (report.job.sentBytes > 0) destination.addNotes(verdict);
    if (telling.verbose && report.job.uncutChunks > 0) {
        verdict.notes.push_back(fmt::format("{} held no command boundary and went as they were",
                                            counted(static_cast<int64_t>(report.job.uncutChunks), "chunk")));
    }
    if (callFailed(plan, report) && !report.stopped) console.show();
    finish(destination, plan, report, verdict);
    return tell(telling, verdict, printJson(plan, report, verdict), summary(plan, report) + "\n");
}

} // namespace host
