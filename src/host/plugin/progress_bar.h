// The progress of a job, on one line of a terminal. It is drawn by a thread of its own, because the plug-in's call blocks:
// also a plotter that takes nothing must be seen to be waited for. Whoever else writes to standard error meanwhile does so
// through writeAbove(), or their lines would mix.
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

/// Draws on standard error, five times a second. One that is off draws nothing.
class ProgressBar {
public:
    /// True when standard error is a terminal that can redraw a line.
    static bool isPossible();

    explicit ProgressBar(bool on) : on_(on) {}
    ProgressBar(const ProgressBar &) = delete;
    ProgressBar &operator=(const ProgressBar &) = delete;
    ~ProgressBar() { stop(); }

    /// Draws what source returns until stop(). source is called on the bar's own thread, which gets no signals. Without a
    /// thread to be had, nothing is drawn.
    void follow(std::function<Progress()> source);
    /// Ends the thread and takes the line away; source is not called any more.
    void stop();

    /// Writes whole lines to standard error, which stay above the bar.
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
