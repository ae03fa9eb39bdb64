// A print that stops before anything is opened or sent: it tells what would go where, and how long the line would take. It
// is judged by the rules of a real print, given the report of a job that nothing disturbed, and so ends with that print's
// exit code.
#pragma once

#include "host/print/plan.h"
#include "host/terminal/telling.h"

namespace host {

/// Looks at the target of the sheets without opening it, and tells their plans. Returns the exit code of the print itself if
/// nothing disturbs it. Throws Failure.
ExitCode tellPlans(const std::vector<PrintPlan> &sheets, int32_t copies, const Telling &telling);

} // namespace host
