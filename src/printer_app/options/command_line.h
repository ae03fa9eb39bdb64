// The options of vectorix-printer-app, declared as those of the command "vectorix" are, so that help, manual page and
// completions come of one declaration.
#pragma once

#include "host/terminal/command.h"

#include <memory>
#include <string>

namespace printer_app {

struct Options {
    int32_t port = 8631;
    std::string state;
    std::string command = "vectorix";
    int32_t largestUpload = 100; ///< MB
    bool isShared = false, pageIsShared = false, setsPassword = false, isVerbose = false;
};

std::unique_ptr<host::CommandLine> declaredCommandLine(Options &options, std::function<host::ExitCode()> run);

} // namespace printer_app
