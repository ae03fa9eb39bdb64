// A print that stops before anything is opened or sent: it tells what would go where, and how long the line would take. It
// is judged by the rules of a real print, given the report of a job that nothing disturbed, and so ends with that print's
// exit code.
#pragma once

#include "host/files/plot_file.h"
#include "host/print/print.h"

namespace host {

struct Examination;
struct PlotRules;

/// Throws Failure (unfit) for a job file with which no print would begin.
void requireFitJob(const std::string &jobFile);

/// Looks at the destination without opening it, and prints the report. Returns the exit code of the print itself if nothing
/// disturbs it. Throws Failure.
ExitCode dryRun(const PrintOptions &options, const PlotFile &plot, const PlotRules &rules, const Examination &examination);

} // namespace host
