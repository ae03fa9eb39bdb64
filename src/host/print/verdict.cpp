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

enum : int32_t { kNoSuchFile = -43, kNoPermission = -54 }; // File Manager codes

/// A failure of one of the two files, by its File Manager code.
ExitCode codeOfFile(int32_t status) {
    if (status == kNoSuchFile) return ExitCode::Missing;
    return status == kNoPermission ? ExitCode::Permission : ExitCode::Unfit;
}

Verdict fail(ExitCode code, std::string message) { return {code, std::move(message), {}}; }

/// True for an errno that writing to a serial port gives when the port has gone.
bool meansGone(int32_t status) { return status == EIO || status == ENXIO || status == ENODEV; }

Verdict judgeLostPort(const PrintOutcome &outcome) {
    const ORB_JobReport &report = outcome.report;
    std::string size = counted(report.fileBytes, "byte");
    std::string when = report.sentBytes == 0 ? fmt::format(", perhaps before any of {} reached it", size)
                                             : fmt::format(" after {} of {}, the last of which may not have reached it",
                                                           grouped(report.sentBytes), size);
    return fail(ExitCode::Lost, fmt::format("{}: the device was lost{}; check cable and power, then print again",
                                            shown(outcome.destination), when));
}

Verdict judgeFailedLink(const PrintOutcome &outcome) {
    if (outcome.usb) return judgeUsbLink(outcome);
    const ORB_JobReport &report = outcome.report;
    if (outcome.isGone || meansGone(report.firstStatus) || meansGone(report.lastStatus)) return judgeLostPort(outcome);
    std::string port = shown(outcome.destination);
    std::string where = fmt::format("after {} of {} bytes", grouped(report.sentBytes), grouped(report.fileBytes));
    if (report.firstStatus == EAGAIN) { // of a write that took less than it was given
        const char *what = report.firstErrorOffset < 0 ? "the text before the plot" : "what was sent";
        return fail(ExitCode::Failed, fmt::format("{}: took only a part of {}, {}; print again", port, what, where));
    }
    return fail(ExitCode::Failed,
                fmt::format("{}: writing failed {} ({}); print again", port, where, lowered(strerror(report.firstStatus))));
}

Verdict judgeLink(const PrintOutcome &outcome) {
    if (outcome.usb) return judgeUsbLink(outcome);
    int32_t errorID = outcome.report.firstErrorID != kORB_NoError ? outcome.report.firstErrorID : outcome.recordErrorID;
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
                fmt::format("{}: {}{}{}; nothing was sent", shown(outcome.destination), errorText(errorID),
                            known ? "; " : "",
                            !known                               ? ""
                            : errorID == kORB_ErrorSetAttributes ? settingsRemedy(outcome.destination)
                                                                 : row->remedy));
}

/// The plot file could not be opened, or not be read to its end.
Verdict judgePlotFile(const PrintOutcome &outcome) {
    const ORB_JobReport &report = outcome.report;
    ExitCode code = report.firstErrorID == kORB_ErrorOpeningPlotFile ? codeOfFile(report.firstStatus) : ExitCode::Failed;
    return fail(code, fmt::format("{}: {} (code {}); the rest was not sent", shown(outcome.plotFile),
                                  errorText(report.firstErrorID), report.firstStatus));
}

/// A job that came to its end, and a plot file that is as it was examined: was anything left out of it?
Verdict judgeWithheld(const PrintOutcome &outcome) {
    const Examination &examination = outcome.examination;
    if (examination.flaw != Flaw::None) {
        return fail(ExitCode::Failed, fmt::format("{}: {}", shown(outcome.plotFile), flawText(examination, outcome.rules)));
    }
    if (outcome.report.withheldBytes != examination.withheldBytes) {
        return fail(ExitCode::Failed, fmt::format("{}: {} not sent; print it again", shown(outcome.plotFile),
                                                  counted(outcome.report.withheldBytes, "byte")));
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
Verdict judgeFinished(const PrintOutcome &outcome) {
    if (!outcome.usb && outcome.isGone && outcome.report.sentBytes > 0) return judgeLostPort(outcome);
    Verdict verdict = judgeWithheld(outcome);
    if (!outcome.change.text.empty()) verdict.notes.push_back(outcome.change.text);
    return verdict;
}

Verdict judgeJobFile(const PrintOutcome &outcome) {
    bool isUnread = outcome.report.firstErrorID == kORB_ErrorJobFile;
    std::string what = isUnread ? "the job file is unfit" : errorText(outcome.report.firstErrorID);
    std::string job = outcome.jobFile.empty() ? "the job" : shown(outcome.jobFile);
    std::string remedy = outcome.jobFile.empty() ? "" : fmt::format("; 'vectorix job check {}' says more", job);
    return fail(codeOfFile(outcome.report.firstStatus), fmt::format("{}: {}{}", job, what, remedy));
}

/// A tool string of the job file, for what was typed has been looked at before.
Verdict judgeTexts(const PrintOutcome &outcome) {
    std::string job = shown(outcome.jobFile);
    return fail(ExitCode::Unfit,
                fmt::format("{}{}{}; use plain ASCII of at most 255 bytes in tool strings and in the port's path{}", job,
                            job.empty() ? "" : ": ", errorText(outcome.report.firstErrorID),
                            job.empty() ? "" : fmt::format(" ('vectorix job check {}' says more)", job)));
}

} // namespace

bool endsAnyJob(int32_t status) { return meansGone(status) || endsAnyUsbJob(status); }

bool isShort(const PrintOutcome &outcome) {
    return outcome.arrivedBytes && *outcome.arrivedBytes < outcome.report.sentBytes;
}

bool callFailed(const PrintOutcome &outcome) {
    const ORB_JobReport &report = outcome.report;
    // What the examination foretold, and was printed all the same, is the plot's doing.
    if (report.stopReason == kORB_StopNotASCII && outcome.examination.flaw == Flaw::NotASCII) return false;
    bool ended = report.stopReason == kORB_StopFinished || report.stopReason == kORB_StopNoMarkInTail;
    return !ended || report.firstErrorID != kORB_NoError || outcome.recordErrorID != kORB_NoError;
}

Verdict judge(const PrintOutcome &outcome) {
    const ORB_JobReport &report = outcome.report;
    if (outcome.stopped) {
        if (report.sentBytes == 0) return fail(ExitCode::Stopped, "stopped: nothing was sent");
        std::string what =
            fmt::format("stopped: sent {} of {}", grouped(report.sentBytes), counted(report.fileBytes, "byte"));
        if (!outcome.arrivedBytes) {
            what +=
                fmt::format("; what {}the plotter still held of them is not known", outcome.usb ? "" : "the adapter and ");
        }
        return fail(ExitCode::Stopped, what);
    }
    switch (report.stopReason) {
    case kORB_StopNoLink: return judgeLink(outcome);
    case kORB_StopJobFile: return judgeJobFile(outcome);
    case kORB_StopUnconvertible: return judgeTexts(outcome);
    default: break;
    }
    bool isPlotAtFault = report.stopReason == kORB_StopPlotFile || report.stopReason == kORB_StopNotASCII;
    if (!isPlotAtFault && report.firstErrorID != kORB_NoError && report.firstErrorID != kORB_ErrorStopped)
        return judgeFailedLink(outcome);
    if (report.stopReason == kORB_StopByHost) return fail(ExitCode::Failed, "the job was stopped before its end");
    if (outcome.change.spoils)
        return fail(ExitCode::Failed, fmt::format("{}: {}", shown(outcome.plotFile), outcome.change.text));
    if (report.stopReason == kORB_StopPlotFile) return judgePlotFile(outcome);
    return judgeFinished(outcome);
}

std::string summary(const PrintOutcome &outcome) {
    const ORB_JobReport &report = outcome.report;
    auto pieces = static_cast<int64_t>(report.piecesSent);
    if (isShort(outcome)) {
        return fmt::format("only {} of {} arrived at {}", grouped(*outcome.arrivedBytes), counted(report.sentBytes, "byte"),
                           shown(outcome.destination));
    }
    std::string text = report.sentBytes == 0
                           ? fmt::format("sent nothing to {}", shown(outcome.destination))
                           : fmt::format("sent {} in {} to {} in {:.1f} s", counted(report.sentBytes, "byte"),
                                         counted(pieces, "piece"), shown(outcome.destination), outcome.seconds);
    if (report.failedBytes > 0) {
        text += fmt::format("; {} in {} failed", counted(report.failedBytes, "byte"),
                            counted(static_cast<int64_t>(report.piecesFailed), "piece"));
    }
    if (report.withheldBytes > 0) text += fmt::format("; {} not sent", counted(report.withheldBytes, "byte"));
    if (outcome.arrivedBytes && !isShort(outcome))
        text += fmt::format("; {} arrived", counted(*outcome.arrivedBytes, "byte"));
    return text;
}

} // namespace host
