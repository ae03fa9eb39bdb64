#include "host/print/print.h"

#include "host/attendance/awake.h"
#include "host/obstacles/usb_obstacles.h"
#include "host/plugin/console_lines.h"
#include "host/plugin/stop_signals.h"
#include "host/print/carry_out.h"
#include "host/print/last_place.h"
#include "host/terminal/output.h"
#include "host/terminal/text.h"

#include <chrono>
#include <fmt/chrono.h>
#include <optional>

namespace host {

namespace {

/// A file or a picture that cannot be written is part of what became of the job, and of its one report.
void finish(Destination &destination, const PrintPlan &plan, const PrintReport &report, Verdict &verdict) {
    try {
        destination.finish();
    } catch (const Failure &failure) {
        if (verdict.code == ExitCode::Done) verdict.code = failure.code();
        if (!verdict.message.empty()) verdict.message += "; and ";
        verdict.message += failure.what();
    }
    if (verdict.message.empty() && isShort(report)) {
        verdict.code = ExitCode::Failed;
        verdict.message = fmt::format("{}: not all that was sent arrived", shown(plan.target.name()));
    }
}

/// The run that is under way, for those who ask how it stands.
class CurrentRun {
public:
    /// Makes it this one for a while.
    class Scope {
    public:
        Scope(CurrentRun &current, PrintRun &run, const PrintPlan &plan, size_t sheet) : current_(current) {
            current_.set(&run, &plan, sheet);
        }
        Scope(const Scope &) = delete;
        Scope &operator=(const Scope &) = delete;
        ~Scope() { current_.set(nullptr, nullptr, 0); }

    private:
        CurrentRun &current_;
    };

    void addTo(Json &line) {
        std::lock_guard guard(mutex_);
        if (run_ == nullptr) return;
        const Standing standing = run_->now();
        const Progress &progress = standing.progress;
        line["plotFile"] = plan_->plot.path();
        line["sheet"] = sheet_ + 1;
        line["bytes"] = progress.doneBytes;
        line["totalBytes"] = progress.totalBytes;
        line["place"] = standing.place;
        line["strokes"] = standing.drawn.strokes;
        line["pen"] = standing.drawn.pen;
        line["seconds"] = progress.seconds;
        line["secondsLeft"] = progress.left ? Json(*progress.left) : Json();
        line["heldBy"] = progress.wait == Wait::None ? Json() : Json(nameOf(progress.wait));
    }

private:
    void set(PrintRun *run, const PrintPlan *plan, size_t sheet) {
        std::lock_guard guard(mutex_);
        run_ = run;
        plan_ = plan;
        sheet_ = sheet;
    }

    std::mutex mutex_;
    PrintRun *run_ = nullptr;
    const PrintPlan *plan_ = nullptr;
    size_t sheet_ = 0;
};

/// What became of one sheet.
struct SheetOutcome {
    const PrintPlan *plan;
    PrintReport report;
    Verdict verdict;
};

/// All that the rules let through was sent.
bool hasEnded(const PrintReport &report) {
    const uint32_t reason = report.job.stopReason;
    return !report.stopped && report.job.firstErrorID == kORB_NoError &&
           (reason == kORB_StopFinished || reason == kORB_StopNoMarkInTail);
}

/// The pen may be on the paper, and the line takes more.
bool leavesPenDown(const PrintPlan &plan, const PrintReport &report) {
    if (report.job.sentBytes == 0 || report.isGone || emulations::of(plan.rules.emulation).penAway.empty()) return false;
    // A stop fails the piece under way, as a broken link does.
    const bool isLinkWorking = report.stopped || report.job.firstErrorID == kORB_NoError ||
                               report.job.stopReason == kORB_StopNotASCII || report.job.stopReason == kORB_StopPlotFile;
    return isLinkWorking && !(hasEnded(report) && plan.examination.flaw == Flaw::None);
}

std::string now() {
    return fmt::format("{:%Y-%m-%d %H:%M}",
                       fmt::localtime(std::chrono::system_clock::to_time_t(std::chrono::system_clock::now())));
}

/// So that it can be taken up again. Says so in the verdict's message. Of a plot that was changed meanwhile nobody knows
/// which bytes were sent.
void keepPlace(SheetOutcome &sheet) {
    const PrintPlan &plan = *sheet.plan;
    if (!takesItsTime(plan.target) || sheet.report.change.spoils) return;
    const bool isDone = sheet.verdict.code == ExitCode::Done;
    if (!isDone && (hasEnded(sheet.report) || sheet.report.job.sentBytes == 0)) return;
    const std::string hash = hashOf(plan.plot);
    if (isDone) return forgetLastPlace(hash);
    if (keepLastPlace(hash, {sheet.report.place, plan.plot.size(), plan.plot.path(), now()}))
        sheet.verdict.message += "; --resume takes it up again from there";
}

/// One print, from the attendance to the words for its end.
class Session {
public:
    Session(const std::vector<PrintPlan> &sheets, const SessionOptions &options, const Telling &telling)
        : sheets_(sheets), options_(options), telling_(telling),
          bar_(!telling.quiet && !telling.json && options.attendance.progress.empty() && ProgressBar::isPossible()),
          attendance_(options.attendance, {[this](Json &line) { current_.addTo(line); }, speaker(), options.mayWaitUnseen}) {
    }

    ExitCode run() {
        try {
            return carryOutAll();
        } catch (const Failure &failure) { // who watches is told as whoever reads standard error
            attendance_.end();
            attendance_.report("done", "report", jsonOf(Verdict{failure.code(), failure.what(), {}}));
            throw;
        }
    }

private:
    ExitCode carryOutAll() {
        requireAnswers();
        Destination destination(sheets_.front().target);
        if (takesItsTime(sheets_.front().target)) awake_.emplace("plotting " + sheets_.front().plot.path());
        sayBeforehand();
        ConsoleLines console(telling_.verbose, bar_);
        attendance_.report("started", "sheets", count());
        for (size_t i = 0; i < count() && mayBegin(i); ++i)
            if (!carryOut(i, destination)) break;
        if (outcomes_.empty()) throw Failure(ExitCode::Stopped, "stopped: nothing was sent");
        settle(destination);
        attendance_.end(); // before the signals: a process that one ends now leaves the terminal as it was
        signals_.reset();
        return conclude(destination, console);
    }

    size_t count() const { return sheets_.size() * static_cast<size_t>(options_.copies); }
    const PrintPlan &planOf(size_t sheet) const { return sheets_[sheet % sheets_.size()]; }

    std::function<void(std::string_view)> speaker() {
        if (telling_.quiet || !options_.attendance.progress.empty()) return {};
        return [this](std::string_view text) { bar_.writeAbove(text); };
    }

    /// A prompt that nobody can answer would hold the plotter for good. Throws Failure (usage).
    void requireAnswers() const {
        if (attendance_.canAnswer()) return;
        for (const PrintPlan &sheet : sheets_)
            for (const PlotPart &part : sheet.parts)
                if (!part.wanted.empty() && !options_.mayWaitUnseen) {
                    throw Failure(ExitCode::Usage,
                                  fmt::format("{}: pens have to be changed, and there is no terminal to ask at; "
                                              "give --pen-change skip, pause (SIGUSR1 goes on), or --control",
                                              shown(sheet.plot.path())));
                }
        if (count() > 1 && options_.isPrompted) {
            throw Failure(ExitCode::Usage,
                          fmt::format("{} sheets, and no terminal to ask for paper at; give --no-prompt for a "
                                      "roll, or --control",
                                      count()));
        }
    }

    void sayBeforehand() {
        if (!telling_.verbose) return;
        for (const PrintPlan &sheet : sheets_)
            writeError(readyText(sheet.ready));
        if (const auto &usb = sheets_.front().target.usb) printError("{}", notesOf(*usb));
        if (!awake_) return;
        printNote(awake_->problem().empty() ? "the computer does not go to sleep meanwhile"
                                            : fmt::format("the computer may go to sleep meanwhile ({})", awake_->problem()));
    }

    bool mayBegin(size_t sheet) {
        if (sheet == 0) return true;
        Gate &gate = attendance_.gate();
        const std::string wanted =
            fmt::format("put in paper for sheet {} of {}, {}", sheet + 1, count(), shown(planOf(sheet).plot.path()));
        const bool begins = options_.isPrompted ? gate.await(GateEvent::PaperWanted, wanted) : gate.pass(true);
        if (!begins) noteStop();
        return begins;
    }

    void noteStop() {
        attendance_.gate().end();
        attendance_.report("stopped");
    }

    /// False when no sheet is to follow.
    bool carryOut(size_t sheet, Destination &destination) {
        const PrintPlan &plan = planOf(sheet);
        PrintRun run(plan, destination, &attendance_.gate());
        const CurrentRun::Scope scope(current_, run, plan, sheet);
        SheetOutcome outcome{&plan, run.carryOut(bar_), {}};
        if (outcome.report.stopped) noteStop();
        outcome.report.isGone = destination.isGone();
        if (!options_.leavesPen && !StopOnSignal::isUrgent() && leavesPenDown(plan, outcome.report)) {
            signals_.reset(); // a new one: the stop that ended the print must not end this
            signals_.emplace();
            outcome.report.penPutAway = run.putPenAway();
            StopOnSignal::interrupt(); // as after a stop, nothing waits for the line any more
        }
        const bool goesOn = judge(plan, outcome.report).code == ExitCode::Done;
        outcomes_.push_back(std::move(outcome));
        return goesOn;
    }

    /// What arrived is known of all sheets together: what is short, is the last one.
    void settle(Destination &destination) {
        PrintReport &last = outcomes_.back().report;
        destination.settle(last);
        for (size_t i = 0; last.arrivedBytes && i + 1 < outcomes_.size(); ++i)
            *last.arrivedBytes -= outcomes_[i].report.job.sentBytes;
    }

    ExitCode conclude(Destination &destination, ConsoleLines &console) {
        Json sheets = Json::array();
        Verdict all;
        std::string text;
        for (SheetOutcome &sheet : outcomes_) {
            const PrintPlan &plan = *sheet.plan;
            sheet.verdict = judge(plan, sheet.report);
            if (callFailed(plan, sheet.report) && !sheet.report.stopped) console.show();
            if (&sheet == &outcomes_.back()) {
                if (sheet.report.job.sentBytes > 0) destination.addNotes(sheet.verdict);
                finish(destination, plan, sheet.report, sheet.verdict);
            }
            noteChunks(sheet);
            keepPlace(sheet);
            join(all, sheet.verdict);
            text += summary(plan, sheet.report) + "\n";
            sheets.push_back(printJson(plan, sheet.report, sheet.verdict));
        }
        if (all.code == ExitCode::Done && outcomes_.size() < count()) {
            all.code = ExitCode::Stopped;
            all.message = fmt::format("stopped: {} of {} sheets were printed", outcomes_.size(), count());
        }
        Json report = count() == 1 ? printJson(*outcomes_[0].plan, outcomes_[0].report, outcomes_[0].verdict) : jsonOf(all);
        if (count() > 1) report["sheets"] = sheets;
        attendance_.report("done", "report", report);
        return tell(telling_, all, report, text);
    }

    void noteChunks(SheetOutcome &sheet) const {
        if (!telling_.verbose || sheet.report.job.uncutChunks == 0) return;
        sheet.verdict.notes.push_back(fmt::format("{} held no command boundary and went as they were",
                                                  counted(static_cast<int64_t>(sheet.report.job.uncutChunks), "chunk")));
    }

    const std::vector<PrintPlan> &sheets_;
    const SessionOptions &options_;
    const Telling &telling_;
    ProgressBar bar_;
    CurrentRun current_;
    std::optional<StopOnSignal> signals_{std::in_place}; ///< there before the keys are: a stop gives the terminal back
    Attendance attendance_;
    std::optional<Awake> awake_;
    std::vector<SheetOutcome> outcomes_;
};

} // namespace

ExitCode print(const std::vector<PrintPlan> &sheets, const SessionOptions &options, const Telling &telling) {
    return Session(sheets, options, telling).run();
}

} // namespace host
