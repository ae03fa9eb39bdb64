// The processes of the system, as far as anybody may see them.
#pragma once

#include <filesystem>
#include <string>
#include <sys/types.h>
#include <vector>

namespace host {

struct Process {
    pid_t pid = 0;
    std::string name;      ///< the program's, cut to 15 bytes by the kernel; any bytes
    dev_t terminal = 0;    ///< that controls it; 0 for none
    bool isHidden = false; ///< this user may not see what it has open
};

/// All but this one and the kernel's own; proc is where they are published, /proc.
std::vector<Process> processes(const std::filesystem::path &proc);

} // namespace host
