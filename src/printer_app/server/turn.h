// A job's turn at its plotter, on the print system's thread, from "is there paper?" to its end: each sheet waits for a
// person (unless the queue is for rolls), is plotted by a process of its own, and is asked about when it was interrupted.
#pragma once

#include "printer_app/server/service.h"

namespace printer_app {

/// Plots a job that the print system gives. Returns when it has ended, however: false when it failed, which it then says.
/// Does not return once the program is ending: what follows would take the job for done.
bool takeTurn(Service &service, pappl_job_t *job);

/// Whether this thread is one of those that call takeTurn(): what the print system reports in it is of its own making, and
/// no client's word.
bool isOfJob();

} // namespace printer_app
