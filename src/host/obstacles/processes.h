// The processes of the system. Which files a process has open is shown to root and to its owner alone, but its name and its
// controlling terminal to everybody: so these are read, and which processes hide the rest is noted.
#pragma once

#include <filesystem>
#include <string>
#include <sys/types.h>
#include <vector>

namespace host {

struct Process {
    pid_t pid = 0;
    std::string name;      ///< the program's, cut to 15 bytes by the kernel; any bytes
    dev_t terminal = 0;    ///< the terminal that controls it; 0 for none
    bool isHidden = false; ///< this user may not see what it has open
};

/// All processes below a root ("/" for this system), but for this one and the kernel's own.
std::vector<Process> runningProcesses(const std::filesystem::path &root);

} // namespace host
