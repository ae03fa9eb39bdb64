// Writing a job file: an XML property list.
#pragma once

#include "host/job/job_options.h"

#include <string>
#include <vector>

namespace host {

/// The property list of a job. Throws Failure (usage) for a text that is not UTF-8 or holds a NUL.
std::string propertyList(const std::vector<JobEntry> &job);

/// A job file in memory: gone with the object, and with the process however that ends.
class TemporaryJob {
public:
    explicit TemporaryJob(const std::string &contents);
    TemporaryJob(const TemporaryJob &) = delete;
    TemporaryJob &operator=(const TemporaryJob &) = delete;
    ~TemporaryJob();
    /// In this process alone.
    std::string path() const;

private:
    int fd_;
};

} // namespace host
