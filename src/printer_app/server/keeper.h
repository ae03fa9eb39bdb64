// What has to be done all the time beside jobs at work: jobs that came are noted, lined up and examined, what clients did to
// them is taken over, the journal is written, and plotters in trouble are looked at. Each loop has a thread, and ends with
// the service.
#pragma once

#include "printer_app/server/service.h"

namespace printer_app {

/// Looks after queues and journal. Begins with the jobs that waited when the program ended.
void keep(Service &service);

/// The same of one queue, once.
void keepQueue(Service &service, Queue &queue);

/// Examines documents, one at a time.
void examineAll(Service &service);

/// Has the doctor look at the plotters that are in trouble.
void diagnose(Service &service);

} // namespace printer_app
