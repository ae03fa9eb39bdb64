#include "host/print/verdict.h"

namespace host {

namespace {

constexpr const char *kStopReasons[] = {"finished", "stoppedByHost", "notASCII", "noMarkInTail",
                                        "noLink",   "plotFile",      "jobFile",  "unconvertible"};

} // namespace

Json printJson(const PrintPlan &plan, const PrintReport &report, const Verdict &verdict) {
    const ORB_JobReport &job = report.job;
    Json object = jsonOf(verdict);
    object["plotFile"] = plan.plot.path();
    object["page"] = plan.page ? Json(*plan.page) : Json();
    addReady(object, plan.ready);
    object["destination"] = plan.target.name();
    object["emulation"] = report.emulation;
    object["terminator"] = report.terminator;
    object["seconds"] = report.seconds;
    object["estimatedSeconds"] = report.estimatedSeconds ? Json(*report.estimatedSeconds) : Json();
    object["stopReason"] = job.stopReason < std::size(kStopReasons) ? kStopReasons[job.stopReason] : "unknown";
    object["place"] = report.place;
    object["penPutAway"] = report.penPutAway ? Json(*report.penPutAway) : Json();
    object["fileBytes"] = job.fileBytes;
    object["sentBytes"] = job.sentBytes;
    object["failedBytes"] = job.failedBytes;
    object["withheldBytes"] = job.withheldBytes;
    if (report.arrivedBytes) object["arrivedBytes"] = *report.arrivedBytes;
    object["piecesSent"] = job.piecesSent;
    object["piecesFailed"] = job.piecesFailed;
    object["uncutChunks"] = job.uncutChunks;
    object["errorID"] = job.firstErrorID;
    object["errorText"] = errorText(job.firstErrorID);
    object["errorStatus"] = job.firstStatus;
    object["errorOffset"] = job.firstErrorOffset;
    return object;
}

std::vector<JsonFields> printFields() {
    std::vector<JsonFields> fields = {
        {"exitCode, message, notes", "what became of the job; only the first two when it did not begin"},
        {"plotFile, destination", "as they were named"},
        {"page", "of a PDF document; null for other files"},
        {"emulation, terminator, seconds", "of the job"},
        {"stopReason", "finished, stoppedByHost, notASCII, noMarkInTail, noLink, plotFile,\njobFile or unconvertible"},
        {"place", "in the plot, up to which it was sent: where --resume goes on"},
        {"penPutAway", "behind a print that ended early: whether the line took that; null: not tried"},
        {"fileBytes", "= sentBytes + failedBytes + withheldBytes"},
        {"sentBytes, failedBytes", "taken by the port and kept, and not"},
        {"withheldBytes", "of the plot file, that were not to be sent"},
        {"arrivedBytes", "at the file or the plotter in software, with --capture and --virtual"},
        {"piecesSent, piecesFailed", "writes to the port"},
        {"uncutChunks", "chunks without a command boundary, sent as they were"},
        {"errorID, errorText", "the first failure; 22007 for none"},
        {"errorStatus, errorOffset", "its system code, and where in the plot file (-1: not in it)"},
        {"dryRun, bytesToSend, piecesToSend", "with --dry-run, in place of what was sent and failed"},
        {"estimatedSeconds", "that the plot takes, as preview says it; null for a file and a plotter in software"},
        {"begin, pauses", "with --dry-run: where in the plot it begins, and what has to be done meanwhile"},
        {"line",
         "with --dry-run: of a serial port; null for others. A line has baud, bits,\nparity, stopBits and handshake"},
        {"sheet, drawing", "with --dry-run: what is drawn on, and of a print to a plotter what 'vectorix preview'\n"
                           "reports of the plot, from language to leftOut; null for others"},
        {"sheets", "of several: all of the above for each that was begun (with --dry-run: of one copy).\n"
                   "Beside it stand exitCode, message and notes of all, and with --dry-run dryRun,\n"
                   "bytesToSend and estimatedSeconds"},
    };
    const std::vector<JsonFields> ready = readyFields();
    fields.insert(fields.begin() + 3, ready.begin(), ready.end());
    return fields;
}

} // namespace host
