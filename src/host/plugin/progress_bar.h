// The progress of a job, on one line of a terminal.
#pragma once

#include "host/plugin/progress.h"

#include <condition_variable>
#include <functional>
#include <mutex>
#include <string>
#include <string_view>
#include <thread>

namespace host {

/// What the line says, at most so many columns wide.
std::string progressLine(const Progress &progress, size_t width);

/// Draws on standard error, five times a second: a job that waits is told as well as one that goes on. One that is off
/// draws nothing.
class ProgressBar {
public:
    /// True when standard error is a terminal that can redraw a line.
    static bool isPossible();

    explicit ProgressBar(bool on) : on_(on) {}
    ProgressBar(const ProgressBar &) = delete;
    ProgressBar &operator=(const ProgressBar &) = delete;
    ~ProgressBar() { stop(); }

    /// Draws what it is told there, on a thread of its own that gets no signals, until stop().
    void follow(std::function<Progress()> source);
    /// Takes the line away for good.
    void stop();

    /// For others on standard error: whole lines, which stay above this one.
    void writeAbove(std::string_view text);

private:
    void draw();
    void erase();

    const bool on_;
    std::function<Progress()> source_;
    std::thread artist_;
    std::mutex mutex_; ///< of all below, and of the terminal's line
    std::condition_variable wake_;
    bool isEnding_ = false;
    std::string drawn_; ///< what stands there
};

} // namespace host
