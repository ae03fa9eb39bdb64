// Who has a port open.
#pragma once

#include <string>
#include <sys/stat.h>
#include <sys/types.h>
#include <vector>

namespace host {

struct Holder {
    pid_t pid = 0;
    std::string name;      ///< the program's; empty when the system does not tell
    bool isFarEnd = false; ///< of a pseudo-terminal: it plays the plotter, and may keep the near end open as well
};

/// The processes, this one left out, that have the terminal device open. Those that the system hides from this user are
/// missing.
std::vector<Holder> holdersOf(const struct stat &device);

/// The living process named by a UUCP lock file for the port; pid 0 when there is none.
Holder uucpHolder(const std::string &port);

/// "cu (process 1234)".
std::string describe(const Holder &holder);

} // namespace host
