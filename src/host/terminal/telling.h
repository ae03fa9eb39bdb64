// How a command ends, and what it says then. Commands that work on a plot or a plotter take the same three options for how
// much to say, and say it in the same order: the report, what is worth knowing, why it failed.
#pragma once

#include "host/terminal/command.h"
#include "host/terminal/failure.h"
#include "host/terminal/json.h"

#include <string>
#include <vector>

namespace host {

/// How much is said, as it was typed.
struct Telling {
    bool verbose = false;
    bool quiet = false;
    bool json = false;
};

/// What the help says of the three options, where a command has something else to say; nullptr leaves the option out.
struct TellingHelp {
    const char *verbose = "Show what the plug-in says, also when all goes well";
    const char *quiet = "Say nothing but errors";
    const char *json = "Report as one JSON object";
};

/// Adds -v, -q and --json.
void addTelling(const Command &command, Telling &telling, const TellingHelp &help = {});

struct Verdict {
    ExitCode code = ExitCode::Done;
    std::string message;            ///< why it is not done; empty when it is
    std::vector<std::string> notes; ///< what is worth knowing all the same
};

/// What one more came to, to that of all before it: the first that is not done decides, and each note is said once.
void join(Verdict &all, const Verdict &next);

/// The first members of every report.
Json jsonOf(const Verdict &verdict);

/// Says the report, as JSON or as lines for people, then notes and message. Returns the verdict's exit code.
ExitCode tell(const Telling &telling, const Verdict &verdict, const Json &report, const std::string &lines);

} // namespace host
