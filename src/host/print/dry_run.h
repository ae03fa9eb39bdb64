// A print that stops before anything is opened for it: what would be sent, where to, and for how long.
#pragma once

#include "host/files/plot_file.h"
#include "host/print/print.h"

namespace host {

struct Examination;
struct PlotRules;

/// Throws Failure (unfit) for a job file with which no print would begin.
void requireFitJob(const std::string &jobFile);

/// Looks at the destination without opening it, and tells. The exit code is that of the print itself if nothing disturbs it.
/// Throws Failure.
ExitCode dryRun(const PrintOptions &options, const PlotFile &plot, const PlotRules &rules, const Examination &examination);

} // namespace host
