#include "host/print/verdict.h"
#include "host/terminal/json.h"

namespace host {

namespace {

constexpr const char *kStopReasons[] = {"finished", "stoppedByHost", "notASCII", "noMarkInTail",
                                        "noLink",   "plotFile",      "jobFile",  "unconvertible"};

/// A path may hold any bytes; in JSON those that are no text are replaced.
std::string dump(const Json &object) { return object.line(); }

} // namespace

std::string json(const PrintOutcome &outcome, const Verdict &verdict) {
    const ORB_JobReport &report = outcome.report;
    Json object;
    object["exitCode"] = static_cast<int>(verdict.code);
    object["message"] = verdict.message;
    object["notes"] = verdict.notes;
    object["plotFile"] = outcome.plotFile;
    object["destination"] = outcome.destination;
    object["emulation"] = outcome.emulation;
    object["terminator"] = outcome.terminator;
    object["seconds"] = outcome.seconds;
    object["stopReason"] = report.stopReason < std::size(kStopReasons) ? kStopReasons[report.stopReason] : "unknown";
    object["fileBytes"] = report.fileBytes;
    object["sentBytes"] = report.sentBytes;
    object["failedBytes"] = report.failedBytes;
    object["withheldBytes"] = report.withheldBytes;
    if (outcome.arrivedBytes) object["arrivedBytes"] = *outcome.arrivedBytes;
    object["piecesSent"] = report.piecesSent;
    object["piecesFailed"] = report.piecesFailed;
    object["uncutChunks"] = report.uncutChunks;
    object["errorID"] = report.firstErrorID;
    object["errorText"] = errorText(report.firstErrorID);
    object["errorStatus"] = report.firstStatus;
    object["errorOffset"] = report.firstErrorOffset;
    return dump(object);
}

std::string json(const Failure &failure) {
    return dump({{"exitCode", static_cast<int>(failure.code())}, {"message", failure.what()}});
}

std::vector<JsonFields> printFields() {
    return {
        {"exitCode, message, notes", "what became of the job; only the first two when it did not begin"},
        {"plotFile, destination", "as they were named"},
        {"emulation, terminator, seconds", "of the job"},
        {"stopReason", "finished, stoppedByHost, notASCII, noMarkInTail, noLink, plotFile,\njobFile or unconvertible"},
        {"fileBytes", "= sentBytes + failedBytes + withheldBytes"},
        {"sentBytes, failedBytes", "taken by the port and kept, and not"},
        {"withheldBytes", "of the plot file, that were not to be sent"},
        {"arrivedBytes", "at the file or the plotter in software, with --capture and --virtual"},
        {"piecesSent, piecesFailed", "writes to the port"},
        {"uncutChunks", "chunks without a command boundary, sent as they were"},
        {"errorID, errorText", "the first failure; 22007 for none"},
        {"errorStatus, errorOffset", "its system code, and where in the plot file (-1: not in it)"},
        {"dryRun, bytesToSend, piecesToSend", "with --dry-run, in place of what was sent and failed"},
        {"line, estimatedSeconds",
         "with --dry-run: of a serial port; null for others. A line has baud, bits,\nparity, stopBits and handshake"},
    };
}

} // namespace host
