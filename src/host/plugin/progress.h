// How far a job has come, and why it stands still. The plug-in's call blocks and tells of a piece only when it is through,
// and a plotter may hold a piece for minutes: what happens meanwhile is asked of the port, its queue and its modem lines.
// Two threads meet here, the one that makes the call and the one that shows the progress.
#pragma once

#include <chrono>
#include <cstdint>
#include <functional>
#include <mutex>
#include <optional>
#include <orb/vectorix.h>

namespace host {

/// Why nothing goes forward.
enum class Wait {
    None,
    ForPlotter,   ///< over USB, before the first piece: the plotter is being made ready, or takes nothing
    NotTaking,    ///< the plotter takes no data
    ClearToSend,  ///< the plotter holds the line with CTS
    XoffOrNothing ///< it holds the line with XOFF, or takes no data: the two cannot be told apart from here
};

/// For programs: "plotter", "cts".
const char *nameOf(Wait wait);

/// Why an open serial port takes no data, as far as its driver tells; descriptor -1 for one that cannot be asked.
Wait waitOnLine(int descriptor, bool usesHardwareHandshake);

/// At one moment.
struct Progress {
    int64_t doneBytes = 0; ///< of the plot file, sent or failed; of the piece under way, what has left this computer
    int64_t totalBytes = 0;
    double seconds = 0;         ///< since the start
    std::optional<double> left; ///< seconds, as they were estimated; without an estimate the rate tells
    double still = 0;           ///< seconds since anything went forward; 0 when they are less than two
    Wait wait = Wait::None;
    bool isHeld = false; ///< by a person, or for one
    int pen = 0;
    int pens = 0; ///< of how many, numbered from 1; 0: not known
};

/// The job's link, as far as its progress shows there.
struct WatchedLine {
    int descriptor = -1; ///< of the serial port; -1 for none that could be asked
    bool isUsb = false;
    bool usesHardwareHandshake = false;
};

/// By how much a plot takes longer than was estimated: from what was measured so far of the whole, once a tenth of it or
/// half a minute has gone. No more than four times, nor less than a quarter: what happened so far need not go on.
double paceOf(double measured, double estimated, double whole);

/// The progress of one job. note() and end() are for the thread that makes the call, now() is for any.
class JobProgress {
public:
    /// bytesToSend: how many of the plot file's fileBytes go out when nothing fails. The line's descriptor must stay open
    /// while now() is called.
    JobProgress(const WatchedLine &line, int64_t fileBytes, int64_t bytesToSend)
        : line_(line), fileBytes_(fileBytes), bytesToSend_(bytesToSend) {}

    /// What remains, so many seconds after the start; empty without an estimate. To be set before the first now().
    std::function<double(double seconds)> secondsLeft;

    /// To be called after each piece.
    void note(const ORB_JobReport &soFar);
    /// To be called when no piece follows: from then on nothing counts as waiting.
    void end();

    /// The progress at this moment; asks the port as well, but never waits for the plotter. isHeld: by a person, which is no
    /// waiting for the plotter.
    Progress now(bool isHeld = false);

private:
    using Clock = std::chrono::steady_clock;
    struct Known {
        uint64_t notes = 0;
        int64_t done = 0; ///< at the last note
        bool hasEnded = false;
    };
    int64_t ofThePieceUnderWay(uint64_t piece);
    Wait reason(const Known &known) const;

    const WatchedLine line_;
    const int64_t fileBytes_, bytesToSend_;
    const Clock::time_point start_ = Clock::now();
    std::mutex mutex_;
    Known known_;

    std::mutex asking_; ///< of what follows, which now() alone uses: it asks the port without the other lock, as a driver
                        ///< may take its time
    uint64_t piece_ = 0;
    int mostQueued_ = 0;                 ///< bytes of that piece, as seen in the port's queue
    int64_t shown_ = 0;                  ///< at the last now()
    Clock::time_point forward_ = start_; ///< when something went forward
};

} // namespace host
