// The sub-commands. Each adds itself to the command line, and says what to run when it is the one that was typed.
#pragma once

#include "host/failure.h"
#include "host/manual.h"

#include <functional>
#include <map>

namespace CLI {
class App;
}

namespace host {

/// What was typed, and what is told of the commands.
struct Typed {
    std::function<ExitCode()> run; ///< may throw Failure
    bool wantsJson = false;        ///< failures go to standard output as JSON as well
    std::map<const CLI::App *, Manual> manuals;
};

void addPrintCommand(CLI::App &app, Typed &typed);
void addPreviewCommand(CLI::App &app, Typed &typed);
void addSimulateCommand(CLI::App &app, Typed &typed);
void addSendCommand(CLI::App &app, Typed &typed);
void addJobCommand(CLI::App &app, Typed &typed);
void addPlottersCommand(CLI::App &app, Typed &typed);
void addPortsCommand(CLI::App &app, Typed &typed);
void addLimitsCommand(CLI::App &app, Typed &typed);
void addDoctorCommand(CLI::App &app, Typed &typed);
void addProfileCommand(CLI::App &app, Typed &typed);

} // namespace host
