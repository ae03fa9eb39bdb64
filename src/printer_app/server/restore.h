// The print system's jobs after a start, made of the journal: each under its number, none as being printed. It reads a file
// in a form of its own, which is written here for one reading: with names without control characters, and with no document
// but those of the spool, whatever clients sent.
#pragma once

#include "printer_app/server/service.h"

namespace printer_app {

/// Makes the queues with their jobs. The drivers must be set. Removes documents that belong to no job. Throws host::Failure.
void restore(Service &service);

} // namespace printer_app
