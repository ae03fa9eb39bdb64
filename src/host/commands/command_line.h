// The whole command line.
#pragma once

#include "host/terminal/command.h"

#include <memory>

namespace host {

/// All options and sub-commands, with what is told of them.
std::unique_ptr<CommandLine> declaredCommandLine();

/// Runs what was typed; the process's exit code.
int runCommandLine(int count, char **words);

} // namespace host
