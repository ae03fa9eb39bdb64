// Writing a job file, an XML property list. The plug-in takes a job from a file only; for a job that was typed as options
// one is made in memory, so that a print leaves nothing behind and needs no folder that can be written to.
#pragma once

#include "host/files/unique_fd.h"
#include "host/job/job_options.h"

#include <string>
#include <vector>

namespace host {

/// The property list of a job. Throws Failure (usage) for a text that is not UTF-8 or holds a NUL.
std::string propertyList(const std::vector<JobEntry> &job);

/// A file in memory with these contents: gone with the object, and with the process however that ends.
class TemporaryJob {
public:
    /// Throws Failure when there is no memory or descriptor for it.
    explicit TemporaryJob(const std::string &contents);
    /// A path by which this process alone can open it, while the object exists.
    std::string path() const;

private:
    UniqueFd fd_;
};

} // namespace host
