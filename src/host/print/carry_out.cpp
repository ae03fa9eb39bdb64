#include "host/print/carry_out.h"

#include "host/job/job_writer.h"
#include "host/plugin/record.h"
#include "host/plugin/stop_signals.h"
#include "host/plugin/thread_signals.h"
#include "host/plugin/usb_target.h"

#include <algorithm>
#include <condition_variable>
#include <thread>

namespace host {

namespace {

/// Stops the plug-in's call when it has not taken what it was given within a time, or does not end then: the close of a port
/// waits for what an adapter holds.
class TimeLimit {
public:
    explicit TimeLimit(std::chrono::seconds time) {
        SignalsBlocked blocked;
        watch_ = std::thread([this, time] {
            std::unique_lock lock(mutex_);
            if (!wake_.wait_for(lock, time, [this] { return isTaken_; }) ||
                !wake_.wait_for(lock, kTimeToClose, [this] { return isOver_; }))
                ORB_hostStop();
        });
    }
    ~TimeLimit() {
        keep(true);
        watch_.join();
    }
    void keep(bool isOver = false) {
        std::lock_guard guard(mutex_);
        isTaken_ = true;
        isOver_ = isOver;
        wake_.notify_one();
    }

private:
    static constexpr std::chrono::seconds kTimeToClose{3}; // two of them are the plug-in's own pause

    std::mutex mutex_;
    std::condition_variable wake_;
    bool isTaken_ = false, isOver_ = false;
    std::thread watch_;
};

constexpr std::chrono::seconds kTimeOnLine(2), kTimeOverUsb(6);

/// How many pens draw; 0 unless they are numbered from 1.
int pensOf(const language::Findings &findings) {
    auto draws = [](const language::PenFindings &pen) { return pen.strokes > 0; };
    const auto firstNot = std::find_if_not(findings.byPen.begin() + 1, findings.byPen.end(), draws);
    const bool areAll = std::none_of(firstNot, findings.byPen.end(), draws);
    return areAll ? static_cast<int>(firstNot - findings.byPen.begin()) - 1 : 0;
}

bool isOver(const ORB_JobReport &report) {
    return report.stopReason != kORB_StopFinished && report.stopReason != kORB_StopNoMarkInTail;
}

} // namespace

PrintRun::PrintRun(const PrintPlan &plan, Destination &destination, Gate *gate)
    : plan_(plan), destination_(destination), gate_(gate),
      progress_(destination.line(), plan.bytes(), plan.bytes() - plan.examination.withheldBytes), place_(plan.begin) {
    report_.place = plan.begin;
    if (plan.estimate) {
        report_.estimatedSeconds = plan.estimate->secondsLeft(plan.begin);
        progress_.secondsLeft = [this](double seconds) { return secondsLeft(seconds); };
        pens_ = pensOf(plan.estimate->findings);
    }
    if (const auto language = emulations::of(plan.rules.emulation).language)
        follower_.emplace(plan.plot, language, plan.rules.terminator, plan.hardClip);
}

std::vector<PrintRun::Job> PrintRun::jobs() const {
    if (plan_.parts.empty()) return {{plan_.plot}};
    std::vector<Job> jobs;
    int64_t before = 0;
    for (const PlotPart &part : plan_.parts) {
        jobs.push_back({part.file, &part, before});
        before += part.file.size();
    }
    return jobs;
}

bool PrintRun::mayBegin(const Job &job) {
    if (StopOnSignal::came()) return false;
    if (gate_ == nullptr) return true;
    if (!job.part || job.part->wanted.empty()) return passes([this] { return gate_->pass(true); });
    return passes([&] { return gate_->await(GateEvent::PenWanted, job.part->wanted); });
}

/// Counts the time that the print stands there.
bool PrintRun::passes(const std::function<bool()> &gate) {
    {
        std::lock_guard guard(mutex_);
        heldSince_ = Clock::now();
    }
    const bool goesOn = gate();
    std::lock_guard guard(mutex_);
    held_ += Clock::now() - *heldSince_;
    heldSince_.reset();
    return goesOn;
}

/// The estimate's, at the pace that was seen.
double PrintRun::secondsLeft(double seconds) {
    std::lock_guard guard(mutex_);
    const Seconds held = held_ + (heldSince_ ? Clock::now() - *heldSince_ : Seconds(0));
    const double whole = *report_.estimatedSeconds, left = plan_.estimate->secondsLeft(place_);
    return left * paceOf(seconds - held.count(), whole - left, whole);
}

/// The record comes back without strings.
ORB_ServiceRecord PrintRun::call(const PlotFile &plot, const std::string &jobFile, ORB_JobReport &report) {
    const Target &target = plan_.target;
    HostString portPath(destination_.port(), "--port");
    ORB_ServiceRecord record = target.usb ? recordFor(*target.usb) : emptyRecord(kORB_ServicePrint);
    record.ORB_serviceNumber = kORB_ServicePrint;
    if (!target.usb) applyLineSettings(target.line, record);
    record.ORB_CFSTR_bsdIn_VectorixDevice = portPath.get();
    record.ORB_EmulationID = plan_.rules.emulation; // the link needs it before the plug-in reads the job file
    record.ORB_JobFileRef = fileReference(jobFile);
    record.ORB_PlotFileInRef = fileReference(plot.heldPath());
    record = ORB_getVectorixCS2(record);
    report.structSize = sizeof report;
    ORB_hostGetJobReport(&report);
    report_.terminator = textOf(record.ORB_CFSTR_PlotfileTerminator);
    releaseStrings(record);
    return record;
}

void PrintRun::run(const Job &job, const std::string &jobFile) {
    job_ = &job;
    ORB_hostSetProgress(look, this);
    ORB_JobReport report{};
    const ORB_ServiceRecord record = call(job.plot, jobFile, report);
    ORB_hostSetProgress(nullptr, nullptr);
    report_.recordErrorID = record.ORB_errorID;
    report_.emulation = record.ORB_PlotterEmulationID;
    report_.usbOutPipe = record.ORB_USB_PIPEOUT;
    add(job, report);
}

/// What became of one job, to that of all before it.
void PrintRun::add(const Job &job, const ORB_JobReport &report) {
    ORB_JobReport &all = report_.job;
    all.stopReason = report.stopReason;
    all.lastStatus = report.lastStatus;
    if (all.firstErrorID == kORB_NoError) {
        all.firstErrorID = report.firstErrorID;
        all.firstStatus = report.firstStatus;
        all.firstErrorOffset = report.firstErrorOffset < 0 ? -1 : placeIn(job, report.firstErrorOffset);
    }
    all.fileBytes += report.fileBytes;
    all.sentBytes += report.sentBytes;
    all.failedBytes += report.failedBytes;
    all.withheldBytes += report.withheldBytes;
    all.piecesSent += report.piecesSent;
    all.piecesFailed += report.piecesFailed;
    all.uncutChunks += report.uncutChunks;
    report_.place = placeIn(job, report.sentBytes);
}

int32_t PrintRun::look(const ORB_JobReport *soFar, void *context) noexcept {
    auto &self = *static_cast<PrintRun *>(context);
    try {
        return self.look(*soFar);
    } catch (const std::exception &) { // the plot can no longer be read: the plug-in finds that, too
        return 0;
    }
}

/// What the plug-in asks after each piece. Ends the job at its first failure, or at the first that no further piece can
/// survive; stands still while it is held.
int32_t PrintRun::look(const ORB_JobReport &soFar) {
    ORB_JobReport all = soFar;
    all.sentBytes += job_->before;
    progress_.note(all);
    const int64_t place = placeIn(*job_, soFar.sentBytes + (plan_.keepGoing ? soFar.failedBytes : 0));
    const DrawnSoFar drawn = follower_ ? follower_->goTo(place) : DrawnSoFar{};
    {
        std::lock_guard guard(mutex_);
        drawn_ = drawn;
        place_ = place;
    }
    bool ends = plan_.keepGoing ? endsAnyJob(soFar.lastStatus) : soFar.firstErrorID != kORB_NoError;
    if (!ends && gate_ != nullptr) ends = !passes([&] { return gate_->pass(drawn.isPenUp); });
    if (ends) progress_.end();
    return ends;
}

PrintReport PrintRun::carryOut(ProgressBar &bar) {
    std::optional<TemporaryJob> made;
    if (plan_.jobFile.empty()) made.emplace(plan_.job);
    const std::string jobFile = made ? made->path() : plan_.jobFile;
    bar.follow([this] { return now().progress; });
    const auto start = Clock::now();
    const std::vector<Job> all = jobs();
    size_t begun = 0;
    while (begun < all.size() && mayBegin(all[begun])) {
        run(all[begun++], jobFile);
        if (isOver(report_.job) || report_.job.firstErrorID != kORB_NoError) break;
    }
    report_.seconds = Seconds(Clock::now() - start).count();
    bar.stop();
    report_.stopped = StopOnSignal::came();
    for (size_t i = begun; begun > 0 && i < all.size(); ++i) { // what was not begun was withheld
        report_.job.fileBytes += all[i].plot.size();
        report_.job.withheldBytes += all[i].plot.size();
    }
    report_.change = plan_.plot.change();
    return report_;
}

bool PrintRun::putPenAway() {
    std::string text(emulations::of(plan_.rules.emulation).penAway);
    if (follower_) {
        follower_->goTo(report_.place);
        text = follower_->behindText(text);
    }
    if (!text.ends_with(plan_.rules.endMark())) text += plan_.rules.endMark();
    std::optional<TemporaryJob> made;
    if (plan_.jobFile.empty()) made.emplace(plan_.job);
    TimeLimit limit(plan_.target.usb ? kTimeOverUsb : kTimeOnLine);
    auto taken = [](const ORB_JobReport *, void *context) noexcept -> int32_t {
        static_cast<TimeLimit *>(context)->keep();
        return 0;
    };
    ORB_hostSetProgress(taken, &limit);
    ORB_JobReport report{};
    call(PlotFile::holding("pen", text), made ? made->path() : plan_.jobFile, report);
    ORB_hostSetProgress(nullptr, nullptr);
    return report.sentBytes == static_cast<int64_t>(text.size());
}

Standing PrintRun::now() {
    Standing standing{progress_.now(gate_ != nullptr && gate_->isHeld()), {}, 0};
    std::lock_guard guard(mutex_);
    standing.progress.pen = drawn_.pen;
    standing.progress.pens = pens_;
    standing.drawn = drawn_;
    standing.place = place_;
    return standing;
}

} // namespace host
