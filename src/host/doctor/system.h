// The computer as it is at one moment, as far as it is looked at: read once, for all links.
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

System lookAt(const std::filesystem::path &root);

} // namespace host
