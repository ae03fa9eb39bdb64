// Reading a job file, to show it and to judge it. The plug-in makes a dictionary of the file, in which order, lines, keys
// that it does not know and keys that stand twice are lost: just what a check has to tell of. So the command takes the
// file's parts from the plug-in's own reader, and refuses what that refuses.
#pragma once

#include "host/job/job_keys.h"

#include <optional>
#include <string>
#include <vector>

namespace host {

/// One key of the file with its value. Only strings and numbers are kept: the plug-in makes no use of other values.
struct JobLine {
    std::string key;
    std::optional<JobValue> value; ///< none for what is no string and no number
    std::string type;              ///< the element's name
    size_t line;                   ///< in the file, from 1
};

/// The file's entries in its order. Throws Failure: unfit, with the line, when it is no property list with a dictionary.
std::vector<JobLine> readJob(const std::string &path);

/// One thing that a check found.
struct JobFinding {
    bool isError; ///< the job cannot be printed as it is; otherwise a note
    size_t line;  ///< 0 for the file as a whole
    std::string text;
};

/// Whether the job can be printed as it is: what hinders first, then notes. After 100 findings a note tells how many more
/// there are.
std::vector<JobFinding> checkJob(const std::vector<JobLine> &job);

/// The last entry of the key, which is the one that counts; nullptr when there is none or its value is of another type. It
/// belongs to job.
const JobLine *fitting(const std::vector<JobLine> &job, std::string_view key);

/// That entry's number, without its fraction; otherwise when there is none, or for a real number of 1e9 or more, or -1e9 or
/// less.
int64_t numberOf(const std::vector<JobLine> &job, std::string_view key, int64_t otherwise);

} // namespace host
