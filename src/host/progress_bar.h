// The progress of a job, on one line of a terminal.
#pragma once

#include <chrono>
#include <cstdint>

namespace host {

/// Draws on standard error, at most ten times a second. One that is off draws nothing.
class ProgressBar {
public:
    /// True when standard error is a terminal that can redraw a line.
    static bool isPossible();

    explicit ProgressBar(bool on) : on_(on) {}
    ProgressBar(const ProgressBar &) = delete;
    ProgressBar &operator=(const ProgressBar &) = delete;
    ~ProgressBar() { clear(); }

    /// done of total bytes are behind us.
    void update(int64_t done, int64_t total);

    /// Takes the line away, so that others can write; the next update draws it again.
    void clear();

private:
    using Clock = std::chrono::steady_clock;
    bool on_;
    bool drawn_ = false;
    Clock::time_point start_ = Clock::now();
    Clock::time_point lastDrawn_{};
};

} // namespace host
