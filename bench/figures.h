// Figures: times taken side by side, and the rows of the table.
#pragma once

#include <chrono>
#include <functional>
#include <string>
#include <vector>

namespace bench {

/// One measure's line of the table.
struct Row {
    std::string plugin, floor; ///< what was measured, with units
    double result = 0;         ///< what is wanted to be small
    const char *unit = "";     ///< of result; empty for a ratio
    double wanted = 0;         ///< at most
};

/// What the measures share.
struct Settings {
    bool quick = false;   ///< small sizes: to see that it works
    std::string self;     ///< path of this program, for measures that need a process of their own
    std::string vectorix; ///< path of the command
};

double median(std::vector<double> values);

/// User and system time of the calling thread, in seconds.
double threadSeconds();
/// Wall time, in seconds, from any beginning.
double wallSeconds();

/// Medians of pairs of runs; ratio is the median of the pairs' ratios, so that a machine that slows down meanwhile matters
/// little.
struct Pair {
    double plugin = 0, floor = 0, ratio = 0;
};

/// Runs plugin, floor, plugin, floor and so on. Each returns what it took.
Pair sideBySide(int pairs, const std::function<double()> &plugin, const std::function<double()> &floor);

/// What run takes, by threadSeconds.
template <class Run> double cpuOf(Run run) {
    const double began = threadSeconds();
    run();
    return threadSeconds() - began;
}

__attribute__((format(printf, 1, 2))) std::string text(const char *format, ...);

} // namespace bench
