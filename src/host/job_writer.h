// Writing a job file: an XML property list.
#pragma once

#include "host/job_options.h"

#include <string>
#include <vector>

namespace host {

/// The property list of a job. Throws Failure (usage) for a text that is not UTF-8 or holds a NUL.
std::string propertyList(const std::vector<JobEntry> &job);

/// Writes a file that is either wholly there or not at all. Throws Failure; without force also when the file exists.
void writeWhole(const std::string &path, const std::string &contents, bool force);

/// A job file in a private directory of its own; both are gone with the object.
class TemporaryJob {
public:
    explicit TemporaryJob(const std::string &contents);
    TemporaryJob(const TemporaryJob &) = delete;
    TemporaryJob &operator=(const TemporaryJob &) = delete;
    ~TemporaryJob();
    const std::string &path() const { return path_; }

private:
    std::string directory_;
    std::string path_;
};

} // namespace host
