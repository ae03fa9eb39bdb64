#include "host/print/plan_estimate.h"

namespace host {

bool takesItsTime(const Target &target) { return target.kind == Target::Kind::Port || target.kind == Target::Kind::Usb; }

Estimate estimateOf(const PrintPlan &plan) {
    const double secondsPerByte = plan.target.kind == Target::Kind::Port ? secondsFor(1, plan.target.line) : 0;
    return estimateOf(plan.plot, std::nullopt, sheetOf(plan.target.drawing).hardClip, secondsPerByte);
}

void requireWithinArea(const PrintPlan &plan) {
    if (plan.target.drawing.area.empty()) return;
    requireWithinArea(plan.plot.path(), estimateOf(plan).findings, plan.target.drawing);
}

} // namespace host
