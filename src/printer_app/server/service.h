// The program as a whole: the queues, the journal of their jobs and the print system that they hang on. One thread keeps the
// journal and looks after the plotters, two look at documents that came; each job at work has a thread of the print system.
#pragma once

#include "printer_app/options/command_line.h"
#include "printer_app/server/queue.h"

#include <atomic>
#include <filesystem>
#include <map>
#include <memory>
#include <mutex>
#include <set>
#include <string>
#include <vector>

namespace printer_app {

struct Service {
    Service(const Options &options, std::filesystem::path folder);

    Options options;
    std::filesystem::path folder; ///< absolute; all that is kept
    std::filesystem::path spool;  ///< documents
    std::filesystem::path pictures;
    Journal journal;
    std::vector<std::unique_ptr<Queue>> queues; ///< never changes once it serves
    pappl_system_t *system = nullptr;
    std::atomic<bool> isEnding{false};
    std::atomic<bool> isServing{false}; ///< queues are all there: a client may make no more

    Queue *find(const pappl_printer_t *printer) const;
    Queue *find(std::string_view name) const;
    std::filesystem::path pictureOf(const JobRecord &job) const;
    std::string socketOf(const Queue &queue) const;

    /// Has a document examined that was not yet, by one thread at a time. False when there is none.
    bool examineNext();
    /// Makes a record of a job that the print system took, and keeps it. More than once does no harm.
    void note(Queue &queue, pappl_job_t *job);
    /// How a job lies whose document is this file: the print system itself has no room for that in jobs that it is given.
    void keepOptions(const std::string &file, const JobOptions &options);

    /// Has the journal written where there is need, or in any case.
    void save(bool all);

private:
    std::optional<JobRecord> claim();

    std::mutex noteMutex_, claimMutex_;
    std::atomic<bool> hasNewFiles_{false};
    std::map<std::string, JobOptions> options_; ///< by files of jobs that have no record yet
    std::set<std::pair<std::string, int>> claimed_;
};

/// Makes a folder, or one that is there, the user's alone: jobs are private. Throws host::Failure.
std::filesystem::path privateFolder(const std::filesystem::path &path);

/// Serves until a signal ends it. Throws host::Failure when it cannot begin.
host::ExitCode serve(const Options &options);

} // namespace printer_app
