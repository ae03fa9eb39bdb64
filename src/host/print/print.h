// A print: from what was typed to the exit code.
#pragma once

#include "host/job/job_options.h"
#include "host/options/line_settings.h"
#include "host/picture/drawing.h"
#include "host/terminal/failure.h"

#include <string>

namespace host {

struct PrintOptions {
    std::string plot;
    std::string jobFile;
    JobOptions job;
    std::string port;
    std::string capture;
    std::string picture; ///< of a virtual plotter
    DrawingOptions drawing;
    bool toUsb = false;
    std::string usbChoice;
    LineSettings line;
    bool dryRun = false;    ///< look at everything, and send nothing
    bool force = false;     ///< whatever is wrong with the plot file
    bool keepGoing = false; ///< after a piece that the link did not take
    bool verbose = false;
    bool quiet = false;
    bool json = false;
};

/// Throws Failure when the job does not begin.
ExitCode print(const PrintOptions &options);

} // namespace host
