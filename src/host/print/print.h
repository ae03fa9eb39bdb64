// A print, from what was typed to the exit code: examine the plot file, take the destination, call the plug-in, judge its
// report, tell. The plot file is held open all along, so that what was examined is what is printed.
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
    std::string picture; ///< the file of --virtual; of port, capture, picture and toUsb one is set
    DrawingOptions drawing;
    bool toUsb = false;
    std::string usbChoice;
    LineSettings line;
    bool dryRun = false;    ///< look at everything, and send nothing
    bool force = false;     ///< print whatever is wrong with the plot file
    bool keepGoing = false; ///< after a piece that the link did not take
    bool verbose = false;
    bool quiet = false;
    bool json = false;
};

/// Prints, and tells what became of it. Throws Failure when the job does not begin; what happens later is in the exit code.
ExitCode print(const PrintOptions &options);

} // namespace host
