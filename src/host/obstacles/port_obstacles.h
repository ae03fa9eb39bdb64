// What stands in the way to a serial port. Told without opening it, for an open raises DTR, which a plotter may take for a
// start; and from several signs, for a user who is not root does not see them all.
#pragma once

#include "host/devices/serial_ports.h"
#include "host/obstacles/link_report.h"
#include "host/obstacles/system.h"

#include <optional>
#include <sys/stat.h>

namespace host {

/// The status of the port's node; none, and a finding that says why, when there is no serial port. Throws Failure when it
/// cannot be looked at.
std::optional<struct stat> findPort(const System &system, const SerialPort &port, LinkReport &report);

/// Adds what single files tell: rights, console, logins, locks.
void addPortSigns(const System &system, const SerialPort &port, const struct stat &node, LinkReport &report);

/// Adds the programs that have the port open; looks through the open files of all processes. The far end's own process is
/// none of them.
void addOpenHolders(const SerialPort &port, const struct stat &node, LinkReport &report);

/// All of these at once.
LinkReport obstaclesOf(const System &system, const SerialPort &port);

} // namespace host
