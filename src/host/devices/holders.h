// Who has a port open. "Busy" alone helps nobody, so messages name the program and its process. They are found in /proc,
// which shows other users' descriptors to root alone, and in the lock files by which older terminal programs claim a port.
#pragma once

#include <string>
#include <sys/stat.h>
#include <sys/types.h>
#include <vector>

namespace host {

struct Holder {
    pid_t pid = 0;
    std::string name;      ///< the program's; empty when the system does not tell
    bool isFarEnd = false; ///< of a pseudo-terminal: it plays the plotter, and is no rival when it has the near end open too
};

/// The processes other than this one that have the device open, as far as the system shows them to this user. device: what
/// stat() says of its node.
std::vector<Holder> holdersOf(const struct stat &device);

/// The process that a lock file (/var/lock/LCK..ttyUSB0) names for the port; pid 0 when there is none that still runs.
Holder uucpHolder(const std::string &port);

/// "cu (process 1234)".
std::string holderText(const Holder &holder);

} // namespace host
