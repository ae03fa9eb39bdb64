// What a print came to: its exit code, and what to tell. The plug-in's error identifier is not enough for that: a call
// without an error may have left a part of the plot unsent. So its job report is weighed together with the examination of
// the file, what arrived, and whether the device is still there.
#pragma once

#include "host/print/plan.h"
#include "host/terminal/manual.h"
#include "host/terminal/telling.h"

#include <optional>
#include <orb/vectorix.h>
#include <string>
#include <vector>

namespace host {

/// What became of a plan. Made for one of which nothing has happened yet.
struct PrintReport {
    PrintReport() {
        job.structSize = sizeof job;
        job.firstErrorID = kORB_NoError;
    }

    ORB_JobReport job{};
    int32_t recordErrorID = kORB_NoError; ///< as the record came back
    bool stopped = false;                 ///< by the user
    int64_t place = 0;                    ///< in the plot, of what was sent of it
    std::optional<bool> penPutAway;       ///< behind a print that ended early: whether the line took that; none: not tried
    double seconds = 0;
    std::optional<double> estimatedSeconds; ///< of a plotter, beforehand
    int32_t emulation = 0;                  ///< as the plug-in read it from the job
    std::string terminator;                 ///< the same
    std::optional<int64_t> arrivedBytes;    ///< at the file, or at the plotter when it is one in software
    uint8_t usbOutPipe = 0;                 ///< the pipe reference that the plug-in wrote to
    bool isGone = false;                    ///< the port or the plotter is not there any more
    PlotChange change;                      ///< of the plot file during the job
};

/// True when the plug-in itself reports a failure. False does not mean that all of the plot was sent.
bool callFailed(const PrintPlan &plan, const PrintReport &report);

/// True for the status of a piece behind which no other can arrive: the device is gone, or its pipe is none or is halted.
bool endsAnyJob(int32_t status);

/// True when less arrived than was sent.
bool isShort(const PrintReport &report);

Verdict judge(const PrintPlan &plan, const PrintReport &report);

/// "sent 123 456 bytes in 2 034 pieces to /dev/ttyUSB0 in 128.6 s".
std::string summary(const PrintPlan &plan, const PrintReport &report);

/// The report as a JSON object.
Json printJson(const PrintPlan &plan, const PrintReport &report, const Verdict &verdict);

/// The JSON object's fields.
std::vector<JsonFields> printFields();

} // namespace host
