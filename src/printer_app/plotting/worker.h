// One "vectorix print" under way: what it says of its progress, and what is said to it. One for each sheet, so that copies,
// pages and interruptions are the queue's alone to count.
#pragma once

#include "printer_app/children/child.h"
#include "printer_app/plotting/command_words.h"

#include <chrono>
#include <functional>

namespace printer_app {

/// What the print says while it runs.
struct Progress {
    std::string event;  ///< see docs/progress.md
    std::string wanted; ///< what a person has to do
    int64_t bytes = 0, totalBytes = 0, place = 0;
    std::optional<double> secondsLeft;
    std::string heldBy; ///< empty: it goes forward
};

/// How it ended.
struct Outcome {
    int code = 0;          ///< the command's exit code
    std::string message;   ///< as people read it
    int64_t place = 0;     ///< in the plot, up to which it was sent
    bool hasBegun = false; ///< a byte of it may have reached the plotter
};

class Worker {
public:
    /// socket: where it is steered; made by the print. Throws std::system_error.
    Worker(const Words &words, std::string socket);

    /// Waits a moment for what it says and hands it on. False when it has ended.
    bool watch(const std::function<void(const Progress &)> &hear);
    /// "pause", "pause-at-once", "go"; what comes before it listens is kept until then.
    void say(const std::string &command);
    /// Asks it to end and to put the pen away; after a while it is made to.
    void stop();
    /// To be called once, when it has ended.
    Outcome outcome();

private:
    void take(const std::string &line, const std::function<void(const Progress &)> &hear);
    bool connect();
    void talk();

    std::string socket_;
    Child child_;
    host::UniqueFd control_;
    std::string text_, unsaid_;
    Progress progress_;
    Outcome outcome_;
    std::chrono::steady_clock::time_point latest_ = std::chrono::steady_clock::time_point::max();
};

} // namespace printer_app
