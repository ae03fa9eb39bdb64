#include "host/print/verdict.h"

#include "host/options/line_settings.h"
#include "host/print/usb_verdict.h"
#include "host/terminal/text.h"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <fmt/format.h>

namespace host {

namespace {

/// A failure of one of the two files, by its File Manager code.
ExitCode codeOfFile(int32_t status) {
    if (status == kORB_FileNotFound) return ExitCode::Missing;
    return status == kORB_FileNoPermission ? ExitCode::Permission : ExitCode::Unfit;
}

Verdict fail(ExitCode code, std::string message) { return {code, std::move(message), {}}; }

/// True for an errno that writing to a serial port gives when the port has gone.
bool meansGone(int32_t status) { return status == EIO || status == ENXIO || status == ENODEV; }

Verdict judgeLostPort(const PrintPlan &plan, const PrintReport &report) {
    const ORB_JobReport &job = report.job;
    std::string size = counted(job.fileBytes, "byte");
    std::string when = job.sentBytes == 0 ? fmt::format(", perhaps before any of {} reached it", size)
                                          : fmt::format(" after {} of {}, the last of which may not have reached it",
                                                        grouped(job.sentBytes), size);
    return fail(ExitCode::Lost, fmt::format("{}: the device was lost{}; check cable and power, then print again",
                                            shown(plan.target.name()), when));
}

Verdict judgeFailedLink(const PrintPlan &plan, const PrintReport &report) {
    if (plan.target.usb) return judgeUsbLink(plan, report);
    const ORB_JobReport &job = report.job;
    if (report.isGone || meansGone(job.firstStatus) || meansGone(job.lastStatus)) return judgeLostPort(plan, report);
    std::string port = shown(plan.target.name());
    std::string where = fmt::format("after {} of {} bytes", grouped(job.sentBytes), grouped(job.fileBytes));
    if (job.firstStatus == EAGAIN) { // of a write that took less than it was given
        const char *what = job.firstErrorOffset < 0 ? "the text before the plot" : "what was sent";
        return fail(ExitCode::Failed, fmt::format("{}: took only a part of {}, {}; print again", port, what, where));
    }
    return fail(ExitCode::Failed,
                fmt::format("{}: writing failed {} ({}); print again", port, where, lowered(strerror(job.firstStatus))));
}

Verdict judgeLink(const PrintPlan &plan, const PrintReport &report) {
    if (plan.target.usb) return judgeUsbLink(plan, report);
    int32_t errorID = report.job.firstErrorID != kORB_NoError ? report.job.firstErrorID : report.recordErrorID;
    struct Row {
        int32_t errorID;
        ExitCode code;
        const char *remedy;
    };
    constexpr Row kRows[] = {
        {kORB_SerialTools_errorNoBSDIn, ExitCode::Usage, "name one with --port"},
        {kORB_ErrorOpeningPort, ExitCode::Lost, "check the cable, then print again"},
        {kORB_ErrorGetAttributes, ExitCode::Lost, "check the cable, then print again"},
        {kORB_ErrorSetAttributes, ExitCode::Failed, ""}, // settingsRemedy() tells it, by the kind of port
        {kORB_ErrorUnvalidPort, ExitCode::Lost, "check the cable, then print again"},
    };
    const auto *row = std::find_if(std::begin(kRows), std::end(kRows), [&](const Row &r) { return r.errorID == errorID; });
    bool known = row != std::end(kRows);
    return fail(known ? row->code : ExitCode::Failed,
                fmt::format("{}: {}{}{}; nothing was sent", shown(plan.target.name()), errorText(errorID), known ? "; " : "",
                            !known                               ? ""
                            : errorID == kORB_ErrorSetAttributes ? settingsRemedy(plan.target.name())
                                                                 : row->remedy));
}

/// The plot file could not be opened, or not be read to its end.
Verdict judgePlotFile(const PrintPlan &plan, const PrintReport &report) {
    const ORB_JobReport &job = report.job;
    ExitCode code = job.firstErrorID == kORB_ErrorOpeningPlotFile ? codeOfFile(job.firstStatus) : ExitCode::Failed;
    return fail(code, fmt::format("{}: {} (code {}); the rest was not sent", shown(plan.plot.path()),
                                  errorText(job.firstErrorID), job.firstStatus));
}

/// A job that came to its end, and a plot file that is as it was examined: was anything left out of it?
Verdict judgeWithheld(const PrintPlan &plan, const PrintReport &report) {
    const Examination &examination = plan.examination;
    if (examination.flaw != Flaw::None) {
        return fail(ExitCode::Failed, fmt::format("{}: {}", shown(plan.plot.path()), flawText(examination, plan.rules)));
    }
    if (report.job.withheldBytes != examination.withheldBytes) {
        return fail(ExitCode::Failed, fmt::format("{}: {} not sent; print it again", shown(plan.plot.path()),
                                                  counted(report.job.withheldBytes, "byte")));
    }
    Verdict verdict;
    auto note = [&](int64_t bytes, const std::string &where) {
        if (bytes == 0) return;
        verdict.notes.push_back(fmt::format("{} {} not sent (nothing that draws)", counted(bytes, "byte"), where));
    };
    note(examination.innerPaddingBytes, "inside, behind NUL bytes,");
    note(examination.endPaddingBytes,
         examination.endPadding.empty() ? "at the end" : fmt::format("at the end, {},", examination.endPadding));
    return verdict;
}

/// A job that came to its end.
Verdict judgeFinished(const PrintPlan &plan, const PrintReport &report) {
    if (!plan.target.usb && report.isGone && report.job.sentBytes > 0) return judgeLostPort(plan, report);
    Verdict verdict = judgeWithheld(plan, report);
    if (!report.change.text.empty()) verdict.notes.push_back(report.change.text);
    return verdict;
}

Verdict judgeJobFile(const PrintPlan &plan, const PrintReport &report) {
    bool isUnread = report.job.firstErrorID == kORB_ErrorJobFile;
    std::string what = isUnread ? "the job file is unfit" : errorText(report.job.firstErrorID);
    std::string job = plan.jobFile.empty() ? "the job" : shown(plan.jobFile);
    std::string remedy = plan.jobFile.empty() ? "" : fmt::format("; 'vectorix job check {}' says more", job);
    return fail(codeOfFile(report.job.firstStatus), fmt::format("{}: {}{}", job, what, remedy));
}

/// A tool string of the job file, for what was typed has been looked at before.
Verdict judgeTexts(const PrintPlan &plan, const PrintReport &report) {
    std::string job = shown(plan.jobFile);
    return fail(ExitCode::Unfit,
                fmt::format("{}{}{}; use plain ASCII of at most 255 bytes in tool strings and in the port's path{}", job,
                            job.empty() ? "" : ": ", errorText(report.job.firstErrorID),
                            job.empty() ? "" : fmt::format(" ('vectorix job check {}' says more)", job)));
}

Verdict judgeReport(const PrintPlan &plan, const PrintReport &report) {
    const ORB_JobReport &job = report.job;
    if (report.stopped) {
        if (job.sentBytes == 0) return fail(ExitCode::Stopped, "stopped: nothing was sent");
        std::string what = fmt::format("stopped: sent {} of {}", grouped(job.sentBytes), counted(job.fileBytes, "byte"));
        if (!report.arrivedBytes) {
            what += fmt::format("; what {}the plotter still held of them is not known",
                                plan.target.usb ? "" : "the adapter and ");
        }
        return fail(ExitCode::Stopped, what);
    }
    switch (job.stopReason) {
    case kORB_StopNoLink: return judgeLink(plan, report);
    case kORB_StopJobFile: return judgeJobFile(plan, report);
    case kORB_StopUnconvertible: return judgeTexts(plan, report);
    default: break;
    }
    bool isPlotAtFault = job.stopReason == kORB_StopPlotFile || job.stopReason == kORB_StopNotASCII;
    if (!isPlotAtFault && job.firstErrorID != kORB_NoError && job.firstErrorID != kORB_ErrorStopped)
        return judgeFailedLink(plan, report);
    if (job.stopReason == kORB_StopByHost) return fail(ExitCode::Failed, "the job was stopped before its end");
    if (report.change.spoils)
        return fail(ExitCode::Failed, fmt::format("{}: {}", shown(plan.plot.path()), report.change.text));
    if (job.stopReason == kORB_StopPlotFile) return judgePlotFile(plan, report);
    return judgeFinished(plan, report);
}

} // namespace

bool endsAnyJob(int32_t status) { return meansGone(status) || endsAnyUsbJob(status); }

bool isShort(const PrintReport &report) { return report.arrivedBytes && *report.arrivedBytes < report.job.sentBytes; }

bool callFailed(const PrintPlan &plan, const PrintReport &report) {
    const ORB_JobReport &job = report.job;
    // What the examination foretold, and was printed all the same, is the plot's doing.
    if (job.stopReason == kORB_StopNotASCII && plan.examination.flaw == Flaw::NotASCII) return false;
    bool ended = job.stopReason == kORB_StopFinished || job.stopReason == kORB_StopNoMarkInTail;
    return !ended || job.firstErrorID != kORB_NoError || report.recordErrorID != kORB_NoError;
}

Verdict judge(const PrintPlan &plan, const PrintReport &report) {
    Verdict verdict = judgeReport(plan, report);
    verdict.notes.insert(verdict.notes.begin(), plan.notes.begin(), plan.notes.end());
    return verdict;
}

std::string summary(const PrintPlan &plan, const PrintReport &report) {
    const ORB_JobReport &job = report.job;
    auto pieces = static_cast<int64_t>(job.piecesSent);
    if (isShort(report)) {
        return fmt::format("only {} of {} arrived at {}", grouped(*report.arrivedBytes), counted(job.sentBytes, "byte"),
                           shown(plan.target.name()));
    }
    std::string text = job.sentBytes == 0 ? fmt::format("sent nothing to {}", shown(plan.target.name()))
                                          : fmt::format("sent {} in {} to {} in {:.1f} s", counted(job.sentBytes, "byte"),
                                                        counted(pieces, "piece"), shown(plan.target.name()), report.seconds);
    if (report.estimatedSeconds && job.sentBytes > 0)
        text += fmt::format(" (estimated {})", duration(*report.estimatedSeconds));
    if (job.failedBytes > 0) {
        text += fmt::format("; {} in {} failed", counted(job.failedBytes, "byte"),
                            counted(static_cast<int64_t>(job.piecesFailed), "piece"));
    }
    if (job.withheldBytes > 0) text += fmt::format("; {} not sent", counted(job.withheldBytes, "byte"));
    if (report.penPutAway) text += *report.penPutAway ? "; the pen was put away" : "; the pen could not be put away";
    if (report.arrivedBytes && !isShort(report)) text += fmt::format("; {} arrived", counted(*report.arrivedBytes, "byte"));
    return text;
}

} // namespace host
