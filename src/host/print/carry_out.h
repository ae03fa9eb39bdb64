// The sending of a plan's plot: as one job, or as one for each of its parts with a word from a person between them. Whoever
// watches is told of it piece by piece, and may hold it.
#pragma once

#include "host/attendance/gate.h"
#include "host/plugin/progress_bar.h"
#include "host/print/destination.h"
#include "host/print/follower.h"

#include <chrono>
#include <functional>
#include <mutex>

namespace host {

/// How a print stands at a moment.
struct Standing {
    Progress progress;
    DrawnSoFar drawn;
    int64_t place = 0; ///< in the plot: what was sent of it
};

/// A plan's way to its end. One thread sends; another one may ask how it stands.
class PrintRun {
public:
    /// plan, destination and gate must outlive it; gate: nullptr when nothing can hold the print.
    PrintRun(const PrintPlan &plan, Destination &destination, Gate *gate = nullptr);
    PrintRun(const PrintRun &) = delete;
    PrintRun &operator=(const PrintRun &) = delete;

    /// Has the plug-in print the plot, and returns what became of it. To be called while a StopOnSignal exists. Throws
    /// Failure when the job does not begin.
    PrintReport carryOut(ProgressBar &bar);
    /// Behind a print that did not come to its end: lifts the pen and puts it away, in two seconds on a serial line and six
    /// over USB. False when the line did not take that. To be called while a fresh StopOnSignal exists.
    bool putPenAway();

    Standing now();

private:
    using Clock = std::chrono::steady_clock;
    using Seconds = std::chrono::duration<double>;

    /// What is sent as one job.
    struct Job {
        const PlotFile &plot;
        const PlotPart *part = nullptr; ///< none: the plot as it is
        int64_t before = 0;             ///< bytes of the jobs before it
    };
    std::vector<Job> jobs() const;
    bool mayBegin(const Job &job);
    void run(const Job &job, const std::string &jobFile);
    ORB_ServiceRecord call(const PlotFile &plot, const std::string &jobFile, ORB_JobReport &report);
    void add(const Job &job, const ORB_JobReport &report);
    double secondsLeft(double seconds);
    bool passes(const std::function<bool()> &gate);
    int64_t placeIn(const Job &job, int64_t bytes) const { return job.part ? job.part->place(bytes) : bytes; }
    static int32_t look(const ORB_JobReport *soFar, void *context) noexcept;
    int32_t look(const ORB_JobReport &soFar);

    const PrintPlan &plan_;
    Destination &destination_;
    Gate *const gate_;
    JobProgress progress_;
    std::optional<Follower> follower_;
    PrintReport report_;
    const Job *job_ = nullptr; ///< that is under way
    int pens_ = 0;             ///< that the plot draws with, if they are numbered from 1
    std::mutex mutex_;         ///< of what follows
    DrawnSoFar drawn_;
    int64_t place_ = 0;
    Seconds held_{0};                            ///< by a person, or for one
    std::optional<Clock::time_point> heldSince_; ///< if it is
};

} // namespace host
