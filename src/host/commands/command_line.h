// The whole command line. Declaring it is apart from running it, because the manual pages and shell completions are made
// from the same declarations.
#pragma once

#include "host/terminal/command.h"

#include <memory>

namespace host {

/// All options and sub-commands, with their help; nothing is parsed or run.
std::unique_ptr<CommandLine> declaredCommandLine();

/// Parses and runs what was typed, and prints failures. Returns the process's exit code.
int runCommandLine(int count, char **words);

} // namespace host
