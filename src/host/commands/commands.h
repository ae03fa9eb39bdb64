// The sub-commands, a file for each. Each function adds one to the command line: its options, its help, and what to run when
// it is the one that was typed.
#pragma once

#include "host/terminal/command.h"
#include "host/terminal/manual.h"

namespace host {

void addPrintCommand(const Command &app);
void addPreviewCommand(const Command &app);
void addConvertCommand(const Command &app);
void addSimulateCommand(const Command &app);
void addSendCommand(const Command &app);
void addJobCommand(const Command &app);
void addPlottersCommand(const Command &app);
void addPortsCommand(const Command &app);
void addLimitsCommand(const Command &app);
void addDoctorCommand(const Command &app);
void addProfileCommand(const Command &app);

} // namespace host
