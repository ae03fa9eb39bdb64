// The jobs of all queues, in memory and on the disk. The print system's own file of its state loses what came last, brings
// jobs back as being printed that nobody prints, and takes names with line ends for lines of its own; so this one is what
// the queues are made of again at the next start. It is written whole, beside the old one, and then given its name.
#pragma once

#include "printer_app/jobs/job_record.h"

#include <filesystem>
#include <functional>
#include <map>
#include <mutex>
#include <optional>
#include <string>
#include <vector>

namespace printer_app {

/// How the print system numbers a queue and its jobs: the same after each start.
struct QueueNumbers {
    int id = 0;            ///< from 1
    int nextJob = 1;       ///< never given twice
    bool isPaused = false; ///< by a client that may
};

/// Has what was written to a file, or the names in a folder, outlive a power cut.
void bringToDisk(const std::filesystem::path &path);

class Journal {
public:
    /// Reads what was kept in the folder. Throws host::Failure when it cannot be read, or is none of these files.
    explicit Journal(const std::filesystem::path &folder);

    QueueNumbers numbersOf(const std::string &queue);
    void keepNextJob(const std::string &queue, int number);
    void keepPaused(const std::string &queue, bool isPaused);

    std::optional<JobRecord> find(const std::string &queue, int id) const;
    /// In order of their numbers.
    std::vector<JobRecord> jobsOf(const std::string &queue) const;
    /// Also of those that have no profile any more: their jobs wait for it.
    std::vector<std::string> queueNames() const;
    void add(JobRecord record);
    /// Changes a record that there is. urgent: it must outlive a power cut.
    void change(const std::string &queue, int id, const std::function<void(JobRecord &)> &how, bool urgent = true);

    /// Writes it to the disk when something urgent changed, or anything did and it is long ago. Forgets the oldest of those
    /// that have ended, and calls forget for each. Throws host::Failure.
    void save(bool all, const std::function<void(const JobRecord &)> &forget);

private:
    using Key = std::pair<std::string, int>;

    void dropOld(const std::function<void(const JobRecord &)> &forget);

    std::filesystem::path file_;
    std::mutex saveMutex_;
    mutable std::mutex mutex_;
    std::map<std::string, QueueNumbers> queues_;
    std::map<Key, JobRecord> jobs_;
    bool isChanged_ = false, isUrgent_ = false;
    time_t saved_ = 0;
};

} // namespace printer_app
