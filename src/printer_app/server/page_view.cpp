#include "printer_app/server/page_view.h"

#include <algorithm>
#include <array>
#include <fmt/format.h>
#include <mutex>
#include <set>

namespace printer_app {

namespace {

constexpr size_t kShownEnded = 20; // jobs of each queue

std::vector<Action> actionsOf(const JobRecord &job, const Queue &queue) {
    const bool isAtWork = queue.atWork == job.id;
    switch (job.phase) {
    case Phase::Waiting: // once a print is under way, it is for a pen
        return {job.isInterrupted ? Action::GoOn : Action::PaperIsIn, Action::Stop};
    case Phase::Plotting: return {Action::Pause, Action::PauseAtOnce, Action::Stop};
    case Phase::Paused: return {Action::GoOn, Action::Stop};
    case Phase::Troubled:
        if (!isAtWork || !job.isInterrupted) return {Action::Stop};
        if (job.place > 0 && job.place == job.options.from)
            return {Action::FromHere, Action::PlotAgain, Action::Stop}; // what it was made for
        return {Action::PlotAgain, Action::FromHere, Action::Stop};
    case Phase::Stopping: return {};
    case Phase::Preparing:
    case Phase::Queued: return {Action::Stop};
    case Phase::Stopped:
        if (job.place > 0) return {Action::PlotAgain, Action::FromHere};
        [[fallthrough]];
    default: return job.pages.empty() ? std::vector<Action>{} : std::vector{Action::PlotAgain}; // it was found unfit
    }
}

/// As clients reach it.
std::string hostOf(const Service &service) {
    std::array<char, 256> name{};
    return service.options.isShared ? papplSystemGetHostName(service.system, name.data(), name.size()) : "localhost";
}

JobView viewOf(const JobRecord &job, const Queue &queue) {
    JobView view;
    view.id = job.id;
    view.name = job.name;
    if (job.user != kPageUser) view.user = job.user;
    view.phase = job.phase;
    view.message = job.message;
    view.hasPicture = job.hasPicture;
    view.notes = job.notes;
    view.figures = job.figures;
    view.bytes = job.bytes;
    view.totalBytes = job.totalBytes;
    view.secondsLeft = job.secondsLeft;
    view.sheets = job.sheets();
    view.sheet = std::min(job.sheetsDone + 1, view.sheets);
    view.created = job.created;
    view.ended = job.ended;
    view.actions = actionsOf(job, queue);
    if (job.isHeld) view.message = "Held by the one who sent it.";
    return view;
}

} // namespace

PageView pageView(const Service &service, const std::string &token, const std::string &notice) {
    PageView page;
    page.token = token;
    page.notice = notice;
    page.uploadLimit = int64_t{service.options.largestUpload} * 1'000'000;
    for (const auto &queue : service.queues) {
        const QueueConfig &config = queue->config;
        QueueView view;
        view.name = config.name;
        view.device = config.port.empty() ? "USB" : config.port;
        view.uri = fmt::format("ipp://{}:{}/ipp/print/{}", hostOf(service), service.options.port, config.name);
        view.isThere = queue->isThere;
        view.confirms = config.confirms;
        for (const Media &media : config.media)
            view.sheets.push_back(media.sheet);
        view.findings = queue->findings();
        for (const JobRecord &job : service.journal.jobsOf(config.name))
            (job.hasEnded() ? view.history : view.jobs).push_back(viewOf(job, *queue));
        std::stable_partition(view.jobs.begin(), view.jobs.end(),
                              [&](const JobView &job) { return job.id == queue->atWork; });
        std::ranges::reverse(view.history);
        view.history.resize(std::min(view.history.size(), kShownEnded));
        page.queues.push_back(std::move(view));
    }
    return page;
}

int submit(Service &service, Queue &queue, const Submission &submission) {
    // The print system keeps pointers to these two as long as there is the job.
    static std::mutex mutex;
    static std::set<std::string> texts;
    const auto lasting = [&](const std::string &text) {
        std::lock_guard lock(mutex);
        return texts.insert(text).first->c_str();
    };
    std::shared_lock alive(queue.isAlive);
    pappl_printer_t *printer = queue.printer;
    if (!printer) return 0;
    service.keepOptions(submission.file, submission.options);
    pappl_job_t *job = papplJobCreateWithFile(printer, lasting(submission.user), lasting(submission.format),
                                              lasting(submission.name), 0, nullptr, submission.file.c_str());
    if (!job) return 0;
    service.note(queue, job);
    return papplJobGetID(job);
}

} // namespace printer_app
