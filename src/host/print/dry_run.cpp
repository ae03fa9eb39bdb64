#include "host/print/dry_run.h"

#include "host/picture/plot_findings.h"
#include "host/print/destination.h"
#include "host/terminal/text.h"

#include <fmt/format.h>

namespace host {

namespace {

/// The print as it ends when nothing disturbs it.
PrintReport undisturbed(const PrintPlan &plan) {
    PrintReport report;
    report.job.stopReason = kORB_StopFinished;
    report.job.fileBytes = plan.examination.fileBytes;
    report.job.withheldBytes = plan.examination.withheldBytes;
    report.job.sentBytes = plan.examination.fileBytes - plan.examination.withheldBytes;
    return report;
}

std::string lines(const PrintPlan &plan, const ORB_JobReport &job, double seconds) {
    std::string text = readyText(plan.ready);
    text += fmt::format("would send {} in {} to {}\n", counted(job.sentBytes, "byte"),
                        counted(plan.examination.pieces, "piece"), shown(plan.target.name()));
    for (const PlotPart &part : plan.parts)
        if (!part.wanted.empty()) text += fmt::format("then        {}\n", part.wanted);
    if (job.withheldBytes > 0) text += fmt::format("not sent    {}\n", counted(job.withheldBytes, "byte"));
    text += fmt::format("emulation   {}\nterminator  \"{}\"\n", plan.rules.emulation, shown(plan.rules.terminator));
    if (!takesItsTime(plan.target)) return text;
    if (plan.target.usb) return text + fmt::format("time        about {} for the pen\n", duration(seconds));
    return text + fmt::format("line        {}\ntime        about {}, by the slower of line and pen at each moment\n",
                              settingsText(plan.target.line), duration(seconds));
}

Json jsonOf(const LineSettings &line) {
    return {{"baud", line.baud},
            {"bits", line.bits},
            {"parity", line.parity},
            {"stopBits", line.stopBits},
            {"handshake", line.handshake}};
}

Json planJson(const PrintPlan &plan, const ORB_JobReport &job, double seconds, const Verdict &verdict) {
    const bool isLine = plan.target.kind == Target::Kind::Port;
    Json object = jsonOf(verdict);
    object["dryRun"] = true;
    object["plotFile"] = plan.plot.path();
    object["page"] = plan.page ? Json(*plan.page) : Json();
    addReady(object, plan.ready);
    object["destination"] = plan.target.name();
    object["emulation"] = plan.rules.emulation;
    object["terminator"] = plan.rules.terminator;
    object["fileBytes"] = job.fileBytes;
    object["bytesToSend"] = job.sentBytes;
    object["piecesToSend"] = plan.examination.pieces;
    object["withheldBytes"] = job.withheldBytes;
    object["begin"] = plan.begin;
    object["pauses"] = Json::array();
    for (const PlotPart &part : plan.parts)
        if (!part.wanted.empty()) object["pauses"].push_back(part.wanted);
    object["line"] = isLine ? jsonOf(plan.target.line) : Json();
    object["estimatedSeconds"] = takesItsTime(plan.target) ? Json(seconds) : Json();
    object["sheet"] = sheetName(plan.target.drawing);
    object["drawing"] = Json();
    if (plan.estimate) addFindings(object["drawing"], plan.estimate->language, plan.estimate->findings);
    return object;
}

/// What one sheet would come to.
struct Foretold {
    explicit Foretold(const PrintPlan &plan)
        : report(undisturbed(plan)), verdict(judge(plan, report)),
          seconds(plan.estimate ? plan.estimate->secondsLeft(plan.begin) : 0),
          json(planJson(plan, report.job, seconds, verdict)), text(lines(plan, report.job, seconds)) {}

    PrintReport report;
    Verdict verdict;
    double seconds;
    Json json;
    std::string text;
};

/// Of several, for each of which a line says which one it is.
ExitCode tellSum(const std::vector<PrintPlan> &sheets, int32_t copies, const Telling &telling) {
    Verdict all;
    Json list = Json::array();
    std::string text;
    int64_t bytes = 0;
    double seconds = 0;
    for (const PrintPlan &plan : sheets) {
        const Foretold one(plan);
        list.push_back(one.json);
        text += fmt::format("{}\n{}\n", shown(plan.plot.path()), one.text);
        join(all, one.verdict);
        bytes += one.report.job.sentBytes * copies;
        seconds += one.seconds * copies;
    }
    const bool isTimed = takesItsTime(sheets.front().target);
    const auto count = static_cast<int64_t>(sheets.size()) * copies;
    Json report = jsonOf(all);
    report["dryRun"] = true;
    report["bytesToSend"] = bytes;
    report["estimatedSeconds"] = isTimed ? Json(seconds) : Json();
    report["sheets"] = list;
    text += fmt::format("in all      {}, {}{}\n", counted(count, "sheet"), counted(bytes, "byte"),
                        isTimed ? fmt::format(", about {}", duration(seconds)) : "");
    return tell(telling, all, report, text);
}

} // namespace

ExitCode tellPlans(const std::vector<PrintPlan> &sheets, int32_t copies, const Telling &telling) {
    requireFree(sheets.front().target);
    if (sheets.size() > 1 || copies > 1) return tellSum(sheets, copies, telling);
    const Foretold only(sheets.front());
    return tell(telling, only.verdict, only.json, only.text);
}

} // namespace host
