#include "printer_app/server/service.h"

#include "host/terminal/output.h"
#include "printer_app/plotting/command_words.h"
#include "printer_app/server/driver.h"

#include <algorithm>
#include <cstring>
#include <fmt/format.h>
#include <sys/stat.h>

namespace fs = std::filesystem;

namespace printer_app {

fs::path privateFolder(const fs::path &path) {
    std::error_code error;
    fs::create_directories(path, error);
    if (!fs::is_directory(path)) throw host::outputFailure(path, error.value());
    if (chmod(path.c_str(), 0700)) throw host::outputFailure(path, errno);
    return fs::canonical(path);
}

Service::Service(const Options &chosen, fs::path base)
    : options(chosen), folder(std::move(base)), spool(privateFolder(folder / "spool")),
      pictures(privateFolder(folder / "pictures")), journal(folder) {}

Queue *Service::find(const pappl_printer_t *printer) const {
    const auto found = std::ranges::find_if(queues, [&](const auto &queue) { return queue->printer == printer; });
    return found == queues.end() ? nullptr : found->get();
}

Queue *Service::find(std::string_view name) const {
    const auto found = std::ranges::find_if(queues, [&](const auto &queue) { return queue->config.name == name; });
    return found == queues.end() ? nullptr : found->get();
}

fs::path Service::pictureOf(const JobRecord &job) const { return pictures / fmt::format("{}-{}.png", job.queue, job.id); }

/// Short, for the name of a socket has no room for more than some hundred characters.
std::string Service::socketOf(const Queue &queue) const {
    for (size_t i = 0; i < queues.size(); ++i)
        if (queues[i].get() == &queue) return folder / fmt::format("control-{}", i);
    return folder / "control";
}

void Service::keepOptions(const std::string &file, const JobOptions &given) {
    std::lock_guard lock(noteMutex_);
    options_[file] = given;
}

void Service::note(Queue &queue, pappl_job_t *job) {
    std::lock_guard lock(noteMutex_); // keeper and job come here at the same time
    const int id = papplJobGetID(job);
    const char *file = papplJobGetFilename(job);
    const auto known = journal.find(queue.config.name, id);
    if (known && (!known->file.empty() || !file)) return;
    JobRecord record;
    record.queue = queue.config.name;
    record.id = id;
    record.name = tidied(papplJobGetName(job));
    record.user = tidied(papplJobGetUsername(job));
    record.created = papplJobGetTimeCreated(job);
    if (file) {
        bringToDisk(file);
        hasNewFiles_ = true;
        record.file = file;
        record.format = papplJobGetFormat(job);
        const auto given = options_.extract(file);
        record.options = given ? given.mapped() : optionsOf(job);
        record.place = record.options.from;
        record.sheetsDone = record.options.fromSheet;
        if ((record.isInterrupted = record.place > 0))
            record.message = "Put in the sheet as it lay, and go on from here; or put in new paper, and plot again.";
        const char *until = ippGetString(papplJobGetAttribute(job, "job-hold-until"), 0, nullptr);
        record.asksFirst = papplJobGetAttribute(job, "job-hold-until-time") || (until && strcmp(until, "no-hold") != 0);
    }
    if (!known)
        journal.add(std::move(record));
    else
        journal.change(queue.config.name, id, [&](JobRecord &r) { r = record; });
}

void Service::save(bool all) {
    if (hasNewFiles_.exchange(false)) bringToDisk(spool); // what the journal names is there before it
    try {
        journal.save(all, [&](const JobRecord &job) {
            std::error_code ignored;
            fs::remove(pictureOf(job), ignored);
        });
    } catch (const host::Failure &failure) {
        host::printFailure(failure.what()); // a full disk: the next time there may be room
    }
}

std::optional<JobRecord> Service::claim() {
    std::lock_guard lock(claimMutex_);
    std::optional<JobRecord> next;
    for (const auto &queue : queues) {
        for (const JobRecord &job : journal.jobsOf(queue->config.name)) {
            if (job.isExamined || job.hasEnded() || job.file.empty() || claimed_.contains({job.queue, job.id})) continue;
            if (!next || job.created < next->created) next = job;
            break; // a queue's jobs are looked at in their order
        }
    }
    if (next) claimed_.insert({next->queue, next->id});
    return next;
}

bool Service::examineNext() {
    const auto job = claim();
    if (!job) return false;
    Examination found;
    try {
        found = examine(options.command, find(job->queue)->config, *job, pictureOf(*job));
    } catch (const std::exception &error) {
        found.refusal = fmt::format("{}: {}", options.command, error.what());
    }
    journal.change(job->queue, job->id, [&](JobRecord &r) {
        r.isExamined = true;
        r.words = found.words;
        r.pages = found.pages;
        r.figures = found.figures;
        r.hasPicture = found.hasPicture;
        r.notes = found.notes;
        if (r.hasEnded()) return;
        if (!r.isInterrupted || !found.refusal.empty()) r.message = found.refusal;
        if (r.phase == Phase::Preparing) r.phase = Phase::Queued;
    });
    std::lock_guard lock(claimMutex_);
    claimed_.erase({job->queue, job->id});
    return true;
}

} // namespace printer_app
