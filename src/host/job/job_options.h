// What a job is, as options say it.
#pragma once

#include "host/job/job_keys.h"
#include "host/terminal/command.h"

#include <array>
#include <optional>
#include <string>
#include <vector>

namespace host {

struct JobOptions {
    int emulation = 17002;
    std::string terminator = ";"; ///< as typed, with escapes
    std::vector<std::string> tools;
    std::optional<std::string> project;
    std::optional<std::string> plotter;
    std::array<std::optional<double>, std::size(kJobKeys)> details; ///< of the keys with an option of their own
};

/// Adds --emulation alone; returns it.
Option addEmulation(const Command &app, int &emulation);

/// Adds --emulation, --terminator, --tool, --project and --plotter; returns them.
std::vector<Option> addJobOptions(const Command &app, JobOptions &options);

/// What their texts may hold, for the help.
const char *escapeHelp();

/// Adds the options of the remaining keys.
void addJobDetails(const Command &app, JobOptions &options);

struct JobEntry {
    const JobKey *key;
    std::string value; ///< as it stands in the file, but for the escaping
};

/// The bytes that the terminator means. Throws Failure (usage).
std::string terminatorOf(const JobOptions &options);

/// The job's entries in the order of a job file. Throws Failure (usage) when the options do not make a job.
std::vector<JobEntry> jobOf(const JobOptions &options);

} // namespace host
