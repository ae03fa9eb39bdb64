#include "host/print/dry_run.h"

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
    return object;
}

} // namespace

ExitCode tellPlan(const PrintPlan &plan, const Telling &telling) {
    requireFree(plan.target);
    const PrintReport report = undisturbed(plan);
    const Verdict verdict = judge(plan, report);
    const double seconds = plan.estimate ? plan.estimate->secondsLeft(plan.begin) : 0;
    return tell(telling, verdict, planJson(plan, report.job, seconds, verdict), lines(plan, report.job, seconds));
}

} // namespace host
