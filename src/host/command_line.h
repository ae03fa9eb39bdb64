// The whole command line.
#pragma once

namespace host {

/// Runs what was typed; the process's exit code.
int runCommandLine(int count, char **words);

} // namespace host
