// The plot file sender: streams the plot file to the plotter in pieces cut at command boundaries.
//
// Where a piece may be cut is the emulation's matter (emulations/), how it goes out the link's (link/link_switch.h). A
// failed write does not end a job, it is reported; a chunk that cannot be read or is not ASCII, or a stop, does end it.
#pragma once

#include "orb/vectorix.h"

#include <cstdint>

extern "C" {

/// Reads the job file, sends start-up texts and tool strings, then the plot file up to its last mark. Returns the status of
/// the last step, a File Manager code, or an IOKit code; ORB_errorID as the last step left it; what happened on the way is
/// in the job report.
int32_t ORB_readPlotFile2Write();

/// Shows a formatted string (printf conversions, %@ for a CFStringRef) on the console, followed by an empty line.
void ORB_show(CFStringRef format, ...);
}
