// A person's print: one sheet or several, watched and steered from the terminal or by a program, and put into words at its
// end. What one plan comes to is PrintRun's; here is what lies around it.
#pragma once

#include "host/attendance/attendance.h"
#include "host/print/plan.h"
#include "host/terminal/telling.h"

#include <vector>

namespace host {

struct SessionOptions {
    AttendanceOptions attendance;
    bool leavesPen = false;     ///< on the paper, where a print ends before its end
    bool isPrompted = true;     ///< for paper, between sheets
    int32_t copies = 1;         ///< of all sheets, one after the other
    bool mayWaitUnseen = false; ///< for a pen, without a terminal: a signal goes on
};

/// Prints the sheets in their order, all to one target, and tells what became of them. Throws Failure when the first does
/// not begin; what happens later is in the exit code.
ExitCode print(const std::vector<PrintPlan> &sheets, const SessionOptions &options, const Telling &telling);

} // namespace host
