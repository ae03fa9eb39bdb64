// A job as it is typed, and the entries of the job file that it comes to. The plug-in takes a job from a file alone; with
// these options "print" needs none written before, and "job write" makes one of the same options. Texts are tried here,
// ahead of any device, for what a plotter cannot be sent.
#pragma once

#include "emulations/emulations.h"
#include "host/job/job_keys.h"
#include "host/terminal/command.h"

#include <array>
#include <optional>
#include <string>
#include <vector>

namespace host {

struct JobOptions {
    int emulation = 0;                     ///< 0: none was named, and it is emulationOf()
    std::optional<std::string> terminator; ///< as typed, with escapes
    std::vector<std::string> tools;        ///< the same
    std::optional<std::string> project;
    std::optional<std::string> plotter;
    std::array<std::optional<double>, std::size(kJobKeys)> details; ///< by index in kJobKeys, for keys with an option
};

/// Adds --emulation alone; returns it.
Option addEmulation(const Command &app, int &emulation);

/// Adds --emulation, --terminator, --tool, --project and --plotter; returns them.
std::vector<Option> addJobOptions(const Command &app, JobOptions &options);

/// The sentence of the help on the escapes in texts for the plotter.
const char *escapeHelp();

/// The bytes that a text of option means. Throws Failure (usage) for what a plotter cannot be sent.
std::string plotterText(const std::string &typed, const std::string &option);

/// Adds the options that kJobKeys names: those of "job write" alone.
void addJobDetails(const Command &app, JobOptions &options);

struct JobEntry {
    const JobKey *key;
    std::string value; ///< as in the file, before XML's escapes
};

/// The one that was named, or plain HP-GL.
int emulationOf(const JobOptions &options);

/// The bytes that the terminator means; where none was named, the language's own. Throws Failure (usage).
std::string terminatorOf(const JobOptions &options);

/// The job's entries in the order of a job file. Throws Failure (usage) when the options do not make a job.
std::vector<JobEntry> jobOf(const JobOptions &options);

} // namespace host
