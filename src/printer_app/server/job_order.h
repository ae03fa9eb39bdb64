// The order of a queue's jobs. The print system begins with the newest of those that wait; so while nothing is at work all
// but the oldest are held, and let go when it has begun: clients see them pending then, as they are.
#pragma once

#include <pappl/pappl.h>

namespace printer_app {

/// Holds all jobs that wait but the oldest. To be called before a job's turn ends, and while none has one.
void lineUp(pappl_printer_t *printer);

/// Lets those go that lineUp() holds. To be called while a job is at work.
void letGo(pappl_printer_t *printer);

/// Whether a client holds the job, and not lineUp().
bool isHeldByClient(pappl_job_t *job);

} // namespace printer_app
