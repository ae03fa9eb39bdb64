#include "printer_app/server/turn.h"

#include "printer_app/plotting/worker.h"
#include "printer_app/server/job_order.h"

#include <algorithm>
#include <cctype>
#include <chrono>
#include <fmt/format.h>
#include <thread>
#include <utility>

namespace printer_app {

namespace {

using Clock = std::chrono::steady_clock;

constexpr auto kTick = std::chrono::milliseconds(100);
constexpr auto kRetry = std::chrono::seconds(5); // until the next try at a plotter that is busy, not there, or forbidden
constexpr pappl_preason_t kAsks = PAPPL_PREASON_MEDIA_NEEDED, kNothing = PAPPL_PREASON_NONE;

struct Told {
    std::string_view event;
    Phase phase;
    const char *message; ///< nullptr: what the print itself asks for
};

class Turn {
public:
    Turn(Service &service, Queue &queue, pappl_job_t *job)
        : service_(service), queue_(queue), job_(job), id_(papplJobGetID(job)) {
        queue_.takeSaid();
        queue_.wasPaused = queue_.wasResumed = false;
        letGo(papplJobGetPrinter(job_));
    }
    ~Turn() {
        lineUp(papplJobGetPrinter(job_));
        queue_.atWork = 0;
    }
    Turn(const Turn &) = delete;
    Turn &operator=(const Turn &) = delete;

    bool take();

private:
    enum class Answer { Go, FromHere, Canceled };
    enum class Sheet { Done, Interrupted, Canceled, Failed };

    JobRecord record() const { return service_.journal.find(queue_.config.name, id_).value_or(JobRecord{}); }
    template <class How> void change(How how, bool urgent = true) {
        service_.journal.change(queue_.config.name, id_, how, urgent);
    }
    bool isCanceled() const { return papplJobIsCanceled(job_); }
    void tell(Phase phase, const std::string &message);
    bool fail(const std::string &message);
    /// Once the program is ending, the thread stays here, and nobody waits for it.
    void rest();

    bool wasOver();
    bool awaitExamination();
    Answer ask(Phase phase, const std::string &message);
    Sheet plot(int page, int64_t place);
    /// One print. Its outcome: none when it was canceled.
    std::optional<Outcome> print(int page, int64_t place);
    void hear(const Progress &progress);
    void steer(Worker &worker);
    void stop(Worker &worker);
    bool awaitPlotter(const Outcome &outcome);
    std::string paperWanted(const JobRecord &job) const;

    Service &service_;
    Queue &queue_;
    pappl_job_t *job_;
    int id_;
    bool isAsking_ = false;   ///< the print waits for a person
    bool takesBytes_ = false; ///< the plotter has taken some of this print
    bool isStopping_ = false;
};

void Turn::tell(Phase phase, const std::string &message) {
    change([&](JobRecord &r) {
        r.phase = phase;
        r.message = message;
    });
    papplJobSetMessage(job_, "%s", message.c_str());
}

bool Turn::fail(const std::string &message) {
    change([](JobRecord &r) { r.ended = time(nullptr); });
    tell(Phase::Failed, message);
    papplJobSetReasons(job_, PAPPL_JREASON_DOCUMENT_UNPRINTABLE_ERROR, PAPPL_JREASON_NONE);
    return false;
}

void Turn::rest() {
    if (service_.isEnding) queue_.atWork = 0;
    while (service_.isEnding)
        std::this_thread::sleep_for(std::chrono::seconds(1));
}

bool Turn::awaitExamination() {
    while (!record().isExamined && !isCanceled()) {
        std::this_thread::sleep_for(kTick);
        rest();
    }
    return !isCanceled();
}

/// A person's word, from the page or by a client's Resume-Printer.
Turn::Answer Turn::ask(Phase phase, const std::string &message) {
    pappl_printer_t *printer = papplJobGetPrinter(job_);
    queue_.takeSaid();
    queue_.wasResumed = false;
    tell(phase, message);
    papplPrinterSetReasons(printer, kAsks, PAPPL_PREASON_NONE);
    papplJobSetReasons(job_, PAPPL_JREASON_PRINTER_STOPPED, PAPPL_JREASON_NONE);
    std::optional<Answer> answer;
    while (!answer) {
        std::this_thread::sleep_for(kTick);
        rest();
        const auto said = queue_.takeSaid();
        if (isCanceled())
            answer = Answer::Canceled;
        else if (said == Action::FromHere)
            answer = Answer::FromHere;
        else if (said == Action::PaperIsIn || said == Action::PlotAgain)
            answer = Answer::Go;
        else if (queue_.wasResumed.exchange(false)) // what the page would offer first
            answer = record().options.from > 0 ? Answer::FromHere : Answer::Go;
    }
    papplPrinterSetReasons(printer, PAPPL_PREASON_NONE, kAsks);
    papplJobSetReasons(job_, PAPPL_JREASON_NONE, PAPPL_JREASON_PRINTER_STOPPED);
    return *answer;
}

std::string Turn::paperWanted(const JobRecord &job) const {
    const std::string sheet = job.figures && !job.figures->sheet.empty() ? " (" + sheetName(job.figures->sheet) + ")" : "";
    if (job.sheets() == 1) return fmt::format("Put in paper{}, then say that it is in.", sheet);
    return fmt::format("Put in paper{} for sheet {} of {}, then say that it is in.", sheet, job.sheetsDone + 1,
                       job.sheets());
}

/// Canceled while it was being started, or started twice. The print system has it among the jobs that have ended, and now
/// will once more; so none of these may be freed any more.
bool Turn::wasOver() {
    const bool isDone = record().phase == Phase::Done;
    if (!isDone && papplJobGetTimeCompleted(job_) == 0) return false;
    papplPrinterSetMaxCompletedJobs(papplJobGetPrinter(job_), 0);
    if (!isDone) papplJobCancel(job_);
    return true;
}

bool Turn::take() {
    if (wasOver()) return true;
    if (!awaitExamination()) return true;
    for (JobRecord job = record(); job.sheetsDone < job.sheets() || job.pages.empty(); job = record()) {
        if (job.hasEnded() || job.pages.empty()) return fail(job.message); // found unfit when it was looked at
        Answer answer = Answer::Go;
        if (job.isInterrupted)
            answer = ask(Phase::Troubled, job.message);
        else if (queue_.config.confirms || job.asksFirst)
            answer = ask(Phase::Waiting, paperWanted(job));
        if (answer == Answer::Canceled) return true;
        const int64_t place = answer == Answer::FromHere ? job.place : 0;
        change([&](JobRecord &r) {
            r.isInterrupted = r.asksFirst = false;
            r.bytes = r.totalBytes = 0;
            r.secondsLeft.reset();
        });
        switch (plot(job.pages[static_cast<size_t>(job.sheetsDone) % job.pages.size()], place)) {
        case Sheet::Done:
            change([](JobRecord &r) {
                ++r.sheetsDone;
                r.place = 0;
                r.isInterrupted = false;
            });
            break;
        case Sheet::Interrupted: break;
        case Sheet::Canceled: return true;
        case Sheet::Failed: return false;
        }
    }
    change([](JobRecord &r) { r.ended = time(nullptr); });
    tell(Phase::Done, "Plotted.");
    return true;
}

Turn::Sheet Turn::plot(int page, int64_t place) {
    for (;;) {
        const std::optional<Outcome> outcome = print(page, place);
        if (!outcome) return Sheet::Canceled;
        if (outcome->code == 0) return Sheet::Done;
        const bool isOfPlotter = outcome->code >= 3 && outcome->code <= 6;
        if (!outcome->hasBegun && isOfPlotter) {
            if (!awaitPlotter(*outcome)) return Sheet::Canceled;
            continue;
        }
        if (!outcome->hasBegun) return fail(outcome->message), Sheet::Failed;
        if (isOfPlotter) papplPrinterSetReasons(papplJobGetPrinter(job_), PAPPL_PREASON_OFFLINE, PAPPL_PREASON_NONE);
        change([&](JobRecord &r) {
            r.isInterrupted = true;
            r.place = outcome->place;
            r.message = interruptedText(outcome->place, outcome->message);
        });
        return Sheet::Interrupted;
    }
}

std::optional<Outcome> Turn::print(int page, int64_t place) {
    tell(Phase::Plotting, "Plotting.");
    isAsking_ = takesBytes_ = false;
    queue_.wasPaused = queue_.wasResumed = false;
    // From here on a person has to say how it goes on, should this program end without another word.
    change([&](JobRecord &r) {
        r.isInterrupted = true;
        r.place = place;
    });
    service_.save(false);
    Worker worker(printWords(service_.options.command, record(), page, place, service_.socketOf(queue_)),
                  service_.socketOf(queue_));
    while (worker.watch([&](const Progress &progress) { hear(progress); })) {
        if (isCanceled() || service_.isEnding)
            stop(worker);
        else
            steer(worker);
    }
    Outcome outcome = worker.outcome();
    if (!outcome.hasBegun && place == 0) change([](JobRecord &r) { r.isInterrupted = false; });
    papplPrinterSetReasons(papplJobGetPrinter(job_), PAPPL_PREASON_NONE, kAsks);
    if (service_.isEnding && outcome.code != 0) {
        change([&](JobRecord &r) {
            if (outcome.hasBegun) r.place = outcome.place; // else where it was to go on
            r.message = outcome.hasBegun ? interruptedText(outcome.place, "the print service was stopped") : "";
            r.phase = outcome.hasBegun ? Phase::Troubled : Phase::Queued;
        });
        rest();
    }
    if (outcome.code != 0 && isCanceled()) {
        change([](JobRecord &r) { r.ended = time(nullptr); });
        tell(Phase::Stopped, outcome.message.empty() ? "Stopped." : outcome.message);
        return std::nullopt;
    }
    return outcome;
}

/// What a line of progress means to those who look on; none for those that change nothing.
const Told *toldBy(const std::string &event) {
    static constexpr Told kTold[] = {
        {"goingOn", Phase::Plotting, "Plotting."},
        {"pausing", Phase::Plotting, "Pausing where the pen is up next."},
        {"pauseIsFar", Phase::Plotting,
         "Still no place where the pen is up; pausing at once is possible, with the pen down."},
        {"paused", Phase::Paused, "Paused; what the plotter has in its buffer it still draws."},
        {"penWanted", Phase::Waiting, nullptr},
        {"paperWanted", Phase::Waiting, nullptr},
    };
    const auto found = std::ranges::find(kTold, event, &Told::event);
    return found == std::end(kTold) ? nullptr : found;
}

/// "Put in pen 2: 3 strokes, 40 mm; then go on."
std::string wantedText(std::string wanted) {
    if (!wanted.empty()) wanted[0] = static_cast<char>(toupper(static_cast<unsigned char>(wanted[0])));
    return wanted + "; then go on.";
}

void Turn::hear(const Progress &progress) {
    if (const Told *told = isStopping_ ? nullptr : toldBy(progress.event)) {
        isAsking_ = !told->message;
        papplPrinterSetReasons(papplJobGetPrinter(job_), isAsking_ ? kAsks : kNothing, isAsking_ ? kNothing : kAsks);
        tell(told->phase, isAsking_ ? wantedText(progress.wanted) : told->message);
    }
    // It was lost and is back, maybe too soon for the watch to see it go.
    if (progress.bytes > 0 && !std::exchange(takesBytes_, true))
        papplPrinterSetReasons(papplJobGetPrinter(job_), kNothing, PAPPL_PREASON_OFFLINE);
    change(
        [&](JobRecord &r) {
            r.bytes = progress.bytes;
            r.totalBytes = progress.totalBytes;
            r.place = std::max(r.place, progress.place);
            r.secondsLeft = progress.secondsLeft;
        },
        false);
    if (progress.event != "progress" || progress.totalBytes == 0) return;
    const std::string held = progress.heldBy.empty() ? "" : "; the plotter takes no data now (" + progress.heldBy + ")";
    papplJobSetMessage(job_, "%d %% plotted (%lld of %lld bytes)%s",
                       static_cast<int>(100 * progress.bytes / progress.totalBytes), static_cast<long long>(progress.bytes),
                       static_cast<long long>(progress.totalBytes), held.c_str());
}

void Turn::steer(Worker &worker) {
    const auto said = queue_.takeSaid();
    if (queue_.wasPaused.exchange(false) || said == Action::Pause) worker.say("pause");
    if (said == Action::PauseAtOnce) worker.say("pause-at-once");
    if (queue_.wasResumed.exchange(false) || said == Action::GoOn || (isAsking_ && said == Action::PaperIsIn))
        worker.say("go");
}

void Turn::stop(Worker &worker) {
    worker.stop();
    if (std::exchange(isStopping_, true)) return;
    tell(Phase::Stopping, "What is on its way to the plotter it still draws.");
}

/// Before anything was sent: it begins by itself when the plotter can be had. False when the job was canceled meanwhile.
bool Turn::awaitPlotter(const Outcome &outcome) {
    tell(Phase::Troubled, fmt::format("{}. It begins when the plotter is there.", outcome.message));
    papplJobSetReasons(job_, PAPPL_JREASON_PRINTER_STOPPED, PAPPL_JREASON_NONE);
    const bool wasThere = queue_.isThere;
    for (const auto next = Clock::now() + kRetry; Clock::now() < next || !queue_.isThere;) {
        std::this_thread::sleep_for(kTick);
        rest();
        if (isCanceled()) return false;
        if (!wasThere && queue_.isThere) break;
    }
    papplJobSetReasons(job_, PAPPL_JREASON_NONE, PAPPL_JREASON_PRINTER_STOPPED);
    return true;
}

thread_local bool hasTakenTurn = false;

/// One job at a time. The print system looks for jobs in several threads: it may start one twice, or another one while a
/// turn ends. False when the job was canceled meanwhile.
bool begin(const Service &service, Queue &queue, pappl_job_t *job) {
    const int id = papplJobGetID(job);
    for (int atWork = 0; !queue.atWork.compare_exchange_strong(atWork, id); atWork = 0) {
        const bool isTwin = atWork == id; // the thread that has the turn ends the job: this one must not, and stays here
        do
            std::this_thread::sleep_for(kTick);
        while (isTwin || service.isEnding);
        if (papplJobIsCanceled(job)) return false;
    }
    return true;
}

} // namespace

bool takeTurn(Service &service, pappl_job_t *job) {
    Queue *queue = service.find(papplJobGetPrinter(job));
    if (!queue) return false;
    hasTakenTurn = true;
    service.note(*queue, job);
    if (!begin(service, *queue, job)) return true;
    try {
        return Turn(service, *queue, job).take();
    } catch (const std::exception &error) {
        papplJobSetMessage(job, "%s", error.what());
        return false;
    }
}

bool isOfJob() { return hasTakenTurn; }

} // namespace printer_app
