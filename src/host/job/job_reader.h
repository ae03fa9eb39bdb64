// Reading a job file, to show it and to judge it.
#pragma once

#include "host/job/job_keys.h"

#include <optional>
#include <string>
#include <vector>

namespace host {

/// One key of the file. A value that is no string and no number is nothing to the plug-in: it has none here.
struct JobLine {
    std::string key;
    std::optional<JobValue> value;
    std::string type; ///< the element's name
    size_t line;      ///< in the file, from 1
};

/// The file's entries in its order. Throws Failure: unfit, with the line, when it is no property list with a dictionary.
std::vector<JobLine> readJob(const std::string &path);

/// One thing that a check found.
struct Finding {
    bool isError; ///< the job cannot be printed as it is; otherwise a note
    size_t line;  ///< 0 for the file as a whole
    std::string text;
};

std::vector<Finding> checkJob(const std::vector<JobLine> &job);

/// The entry of a key that holds a value of the key's type; nullptr for none. Of several the last one counts.
const JobLine *fitting(const std::vector<JobLine> &job, std::string_view key);

/// Its number, or otherwise when there is none.
int64_t numberOf(const std::vector<JobLine> &job, std::string_view key, int64_t otherwise);

} // namespace host
