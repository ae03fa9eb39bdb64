// Whether a queue's plotter is there, and what the doctor says when it is not. Seen from outside: no port is opened for it,
// which a plotter might take for a start.
#pragma once

#include "printer_app/server/queue.h"

namespace printer_app {

/// Looks, and tells queue and clients ("offline") of what changed.
void watchPlotter(Queue &queue);

/// Asks "vectorix doctor" about the queue's link. Takes a moment.
std::vector<FindingView> askDoctor(const std::string &command, const QueueConfig &queue);

} // namespace printer_app
