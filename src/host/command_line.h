// The whole command line.
#pragma once

#include <string>

namespace CLI {
class App;
}

namespace host {

struct Typed;

/// Declares all options and sub-commands, with what is told of them. typed must live as long as app is used.
void declareCommandLine(CLI::App &app, Typed &typed);

/// The command as it is typed, behind those above it: "vectorix job write".
std::string fullName(const CLI::App &command);

/// Runs what was typed; the process's exit code.
int runCommandLine(int count, char **words);

} // namespace host
