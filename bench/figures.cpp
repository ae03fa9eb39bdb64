#include "figures.h"

#include <algorithm>
#include <cstdarg>
#include <cstdio>
#include <ctime>

namespace bench {

namespace {

double secondsOf(clockid_t clock) {
    timespec now{};
    clock_gettime(clock, &now);
    return static_cast<double>(now.tv_sec) + static_cast<double>(now.tv_nsec) * 1e-9;
}

} // namespace

double median(std::vector<double> values) {
    if (values.empty()) return 0;
    std::sort(values.begin(), values.end());
    const size_t middle = values.size() / 2;
    return values.size() % 2 == 1 ? values[middle] : (values[middle - 1] + values[middle]) / 2;
}

double threadSeconds() { return secondsOf(CLOCK_THREAD_CPUTIME_ID); }

double wallSeconds() { return secondsOf(CLOCK_MONOTONIC); }

Pair sideBySide(int pairs, const std::function<double()> &plugin, const std::function<double()> &floor) {
    std::vector<double> plugins, floors, ratios;
    for (int i = 0; i < pairs; ++i) {
        plugins.push_back(plugin());
        floors.push_back(floor());
        ratios.push_back(plugins.back() / floors.back());
    }
    return {median(plugins), median(floors), median(ratios)};
}

std::string text(const char *format, ...) {
    char line[256];
    va_list arguments;
    va_start(arguments, format);
    vsnprintf(line, sizeof line, format, arguments);
    va_end(arguments);
    return line;
}

} // namespace bench
