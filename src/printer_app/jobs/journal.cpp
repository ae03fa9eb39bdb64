#include "printer_app/jobs/journal.h"

#include "host/files/unique_fd.h"
#include "host/files/whole_file.h"
#include "host/terminal/failure.h"

#include <algorithm>
#include <fcntl.h>
#include <fmt/format.h>
#include <nlohmann/json.hpp>
#include <unistd.h>
#include <utility>

namespace printer_app {

using nlohmann::json;

namespace {

constexpr int64_t kLargest = int64_t{64} << 20; // bytes of the file
constexpr size_t kKeptEnded = 100;              // jobs of each queue that have ended
constexpr time_t kProgressAge = 5;              // seconds; each writing wears a memory card
// Numbers that are left out after an end in which the last moment's jobs may not have been written down: a client may hold
// the number of one, and must not meet another job under it.
constexpr int kSkipped = 20;

} // namespace

void bringToDisk(const std::filesystem::path &path) {
    const host::UniqueFd fd(open(path.c_str(), O_RDONLY | O_CLOEXEC));
    if (fd.get() >= 0) fsync(fd.get());
}

Journal::Journal(const std::filesystem::path &folder) : file_(folder / "jobs.json") {
    if (!std::filesystem::exists(file_)) return;
    try {
        const json kept = json::parse(host::readWhole(file_, "list of jobs", kLargest));
        const bool wasEnded = kept.at("ended");
        isUrgent_ = true; // what it says of the end and of numbers is to be written before a job comes
        for (const auto &[name, queue] : kept.at("queues").items())
            queues_[name] = {queue.at("id"), queue.at("nextJob").get<int>() + (wasEnded ? 0 : kSkipped),
                             queue.at("isPaused")};
        for (const json &job : kept.at("jobs")) {
            JobRecord record = recordFrom(job);
            Key key{record.queue, record.id};
            jobs_[std::move(key)] = std::move(record);
        }
    } catch (const json::exception &) {
        throw host::Failure(
            host::ExitCode::Unfit,
            fmt::format("{}: not a list of jobs; put it away, and the queues begin without jobs", file_.string()));
    }
}

QueueNumbers Journal::numbersOf(const std::string &queue) {
    std::lock_guard lock(mutex_);
    QueueNumbers &numbers = queues_[queue];
    if (numbers.id == 0) {
        for (const auto &[name, other] : queues_)
            numbers.id = std::max(numbers.id, other.id);
        ++numbers.id;
        isUrgent_ = true;
    }
    return numbers;
}

void Journal::keepNextJob(const std::string &queue, int number) {
    std::lock_guard lock(mutex_);
    if (queues_[queue].nextJob >= number) return;
    queues_[queue].nextJob = number;
    isUrgent_ = true;
}

void Journal::keepPaused(const std::string &queue, bool isPaused) {
    std::lock_guard lock(mutex_);
    if (std::exchange(queues_[queue].isPaused, isPaused) != isPaused) isUrgent_ = true;
}

std::optional<JobRecord> Journal::find(const std::string &queue, int id) const {
    std::lock_guard lock(mutex_);
    const auto found = jobs_.find({queue, id});
    return found == jobs_.end() ? std::nullopt : std::optional(found->second);
}

std::vector<JobRecord> Journal::jobsOf(const std::string &queue) const {
    std::lock_guard lock(mutex_);
    std::vector<JobRecord> found;
    for (auto at = jobs_.lower_bound({queue, 0}); at != jobs_.end() && at->first.first == queue; ++at)
        found.push_back(at->second);
    return found;
}

std::vector<std::string> Journal::queueNames() const {
    std::lock_guard lock(mutex_);
    std::vector<std::string> names;
    for (const auto &[name, numbers] : queues_)
        names.push_back(name);
    return names;
}

void Journal::add(JobRecord record) {
    std::lock_guard lock(mutex_);
    Key key{record.queue, record.id};
    jobs_.emplace(std::move(key), std::move(record));
    isUrgent_ = true;
}

void Journal::change(const std::string &queue, int id, const std::function<void(JobRecord &)> &how, bool urgent) {
    std::lock_guard lock(mutex_);
    const auto found = jobs_.find({queue, id});
    if (found == jobs_.end()) return;
    how(found->second);
    (urgent ? isUrgent_ : isChanged_) = true;
}

void Journal::save(bool all, const std::function<void(const JobRecord &)> &forget) {
    std::lock_guard whole(saveMutex_); // no older contents behind newer ones
    std::string contents;
    {
        std::lock_guard lock(mutex_);
        const time_t now = time(nullptr);
        if (!all && !isUrgent_ && (!isChanged_ || now - saved_ < kProgressAge)) return;
        dropOld(forget);
        json value = {{"ended", all}, {"queues", json::object()}, {"jobs", json::array()}};
        for (const auto &[name, numbers] : queues_)
            value["queues"][name] = {{"id", numbers.id}, {"nextJob", numbers.nextJob}, {"isPaused", numbers.isPaused}};
        for (const auto &[key, record] : jobs_)
            value["jobs"].push_back(jsonOf(record));
        contents = value.dump(1, ' ', false, json::error_handler_t::replace) + "\n";
        isUrgent_ = isChanged_ = false;
        saved_ = now;
    }
    try {
        host::writeWhole(file_, contents, true);
    } catch (const host::Failure &) {
        std::lock_guard lock(mutex_);
        isChanged_ = true; // after a while there may be room
        throw;
    }
    bringToDisk(file_.parent_path()); // its new name
}

void Journal::dropOld(const std::function<void(const JobRecord &)> &forget) {
    std::map<std::string, size_t> ended;
    for (auto at = jobs_.end(); at != jobs_.begin();) {
        --at;
        if (!at->second.hasEnded() || ++ended[at->second.queue] <= kKeptEnded) continue;
        forget(at->second);
        at = jobs_.erase(at);
    }
}

} // namespace printer_app
