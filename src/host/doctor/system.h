// The state of the computer that the checks share: the user's groups, processes, udev rules, print queues. It is read once
// for all links, so that they are judged by the same moment, and the print system, which may take seconds, is asked once.
#pragma once

#include "host/doctor/print_queues.h"
#include "host/doctor/processes.h"
#include "host/doctor/udev_rules.h"
#include "host/doctor/user.h"

#include <filesystem>
#include <string>
#include <vector>

namespace host {

struct System {
    std::filesystem::path root = "/"; ///< of /proc, /sys, /etc and the rest
    User user;
    std::vector<Process> processes;
    std::vector<RulesFile> rules;
    PrintQueues queues;
    bool isContainer = false;

    std::filesystem::path below(const char *path) const { return root / path; }
    /// The first process of that name; nullptr for none.
    const Process *running(const std::string &name) const;
};

/// Reads all of it, files from below a root ("/" for this system). May wait for the print system: see printQueues().
System lookAt(const std::filesystem::path &root);

} // namespace host
