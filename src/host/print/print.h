// A plan carried out: take the target, call the plug-in, judge its report, tell. Serial ports and USB plotters, files and
// plotters in software all go this way, and so do the few commands of a text that is sent over USB.
#pragma once

#include "host/picture/estimate.h"
#include "host/plugin/progress_bar.h"
#include "host/print/destination.h"
#include "host/terminal/telling.h"

namespace host {

/// Has the plug-in print the plan's plot, and returns what became of it. To be called while a StopOnSignal exists; the
/// destination is given back before it returns. Throws Failure when the job does not begin.
/// estimate: of the plot, where somebody waits for it to be drawn.
PrintReport carryOut(const PrintPlan &plan, Destination &destination, ProgressBar &bar, const Estimate *estimate = nullptr);

/// Prints, and tells what became of it. Throws Failure when the job does not begin; what happens later is in the exit code.
ExitCode print(const PrintPlan &plan, const Telling &telling);

} // namespace host
