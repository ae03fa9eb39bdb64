#include "host/print/dry_run.h"
#include "host/terminal/json.h"

#include "host/devices/usb_access.h"
#include "host/examination/examination.h"
#include "host/job/job_reader.h"
#include "host/plugin/usb_target.h"
#include "host/print/capture.h"
#include "host/print/destination.h"
#include "host/print/verdict.h"
#include "host/terminal/output.h"
#include "host/terminal/text.h"

#include <algorithm>
#include <fmt/format.h>

namespace host {

namespace {

/// Makes the checks that a print makes of its destination, and returns its name. Throws Failure.
std::string requireDestination(const PrintOptions &options) {
    if (options.toUsb) {
        UsbDevice device = chooseUsbDevice(usbDevices(), parseUsbChoice(options.usbChoice));
        requireFree(device);
        return device.id();
    }
    if (!options.port.empty()) {
        requireFreePort(options.port);
        return options.port;
    }
    if (!options.picture.empty()) {
        requireOutput("--virtual", options.picture, options);
        Drawing unfinished(options.drawing, options.picture); // its file never appears
        return options.picture;
    }
    requireOutput("--capture", options.capture, options);
    requireWritable(options.capture);
    return options.capture;
}

/// The print as it ends when nothing disturbs it.
PrintOutcome undisturbed(const PrintOptions &options, const PlotFile &plot, const PlotRules &rules,
                         const Examination &examination) {
    PrintOutcome outcome{};
    outcome.plotFile = plot.path();
    outcome.jobFile = options.jobFile;
    outcome.destination = requireDestination(options);
    outcome.emulation = rules.emulation;
    outcome.terminator = rules.terminator;
    outcome.rules = rules;
    outcome.examination = examination;
    outcome.report.firstErrorID = kORB_NoError;
    outcome.report.stopReason = kORB_StopFinished;
    outcome.report.fileBytes = examination.fileBytes;
    outcome.report.withheldBytes = examination.withheldBytes;
    outcome.report.sentBytes = examination.fileBytes - examination.withheldBytes;
    return outcome;
}

std::string text(const PrintOutcome &outcome, const LineSettings *line) {
    const ORB_JobReport &report = outcome.report;
    std::string lines = fmt::format("would send {} in {} to {}\n", counted(report.sentBytes, "byte"),
                                    counted(outcome.examination.pieces, "piece"), shown(outcome.destination));
    if (report.withheldBytes > 0) lines += fmt::format("not sent    {}\n", counted(report.withheldBytes, "byte"));
    lines += fmt::format("emulation   {}\nterminator  \"{}\"\n", outcome.emulation, shown(outcome.terminator));
    if (line) {
        lines +=
            fmt::format("line        {}\ntime        {} at the line's rate; a plotter that holds the line takes longer\n",
                        describe(*line), duration(secondsFor(report.sentBytes, *line)));
    }
    return lines;
}

Json jsonOf(const LineSettings &line) {
    return {{"baud", line.baud},
            {"bits", line.bits},
            {"parity", line.parity},
            {"stopBits", line.stopBits},
            {"handshake", line.handshake}};
}

std::string json(const PrintOutcome &outcome, const Verdict &verdict, const LineSettings *line) {
    Json object = {{"exitCode", static_cast<int>(verdict.code)},
                   {"message", verdict.message},
                   {"notes", verdict.notes},
                   {"dryRun", true},
                   {"plotFile", outcome.plotFile},
                   {"destination", outcome.destination},
                   {"emulation", outcome.emulation},
                   {"terminator", outcome.terminator},
                   {"fileBytes", outcome.report.fileBytes},
                   {"bytesToSend", outcome.report.sentBytes},
                   {"piecesToSend", outcome.examination.pieces},
                   {"withheldBytes", outcome.report.withheldBytes}};
    object["line"] = line ? jsonOf(*line) : Json();
    object["estimatedSeconds"] = line ? Json(secondsFor(outcome.report.sentBytes, *line)) : Json();
    return object.line();
}

} // namespace

void requireFitJob(const std::string &jobFile) {
    std::vector<Finding> findings = checkJob(readJob(jobFile));
    auto error = std::find_if(findings.begin(), findings.end(), [](const Finding &finding) { return finding.isError; });
    if (error == findings.end()) return;
    throw Failure(ExitCode::Unfit, fmt::format("{0}: the job file is unfit: {1}; 'vectorix job check {0}' says more",
                                               shown(jobFile), error->text));
}

ExitCode dryRun(const PrintOptions &options, const PlotFile &plot, const PlotRules &rules, const Examination &examination) {
    PrintOutcome outcome = undisturbed(options, plot, rules, examination);
    Verdict verdict = judge(outcome);
    const LineSettings *line = options.port.empty() ? nullptr : &options.line;
    if (options.json) {
        printOut("{}\n", json(outcome, verdict, line));
    } else if (!options.quiet) {
        printLines(text(outcome, line));
    }
    flushOut();
    for (const std::string &note : verdict.notes) {
        if (!options.quiet) printNote(note);
    }
    if (!verdict.message.empty()) printFailure(verdict.message);
    return verdict.code;
}

} // namespace host
