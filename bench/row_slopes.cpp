// How the time of a print grows with its plot: the slopes between five sizes, for the plug-in and for the C loop.
#include "rows.h"
#include "serial_print.h"

#include <algorithm>
#include <deque>
#include <sched.h>
#include <stdexcept>

namespace bench {

namespace {

/// While it lives, this thread and those that it starts have one processor between them. Spread over two, how often the
/// print and its far end wait for each other changes from print to print, the C loop's times as much as the plug-in's.
class OneProcessor {
public:
    OneProcessor() {
        cpu_set_t one;
        CPU_ZERO(&one);
        CPU_SET(sched_getcpu(), &one);
        if (sched_getaffinity(0, sizeof before_, &before_) != 0 || sched_setaffinity(0, sizeof one, &one) != 0)
            throw std::runtime_error("no processor to keep to");
    }
    OneProcessor(const OneProcessor &) = delete;
    OneProcessor &operator=(const OneProcessor &) = delete;
    ~OneProcessor() { sched_setaffinity(0, sizeof before_, &before_); }

private:
    cpu_set_t before_;
};

/// What all prints of one size took together, so that the sizes' figures are means over as much work.
struct Total {
    double wall = 0, processor = 0;
    void add(SerialPrint::Times times) {
        wall += times.wall;
        processor += times.processor;
    }
};

/// The least and the greatest of the slopes from one size to the next.
struct Slopes {
    double flattest = 1e9, steepest = 0;
    void take(double slope) {
        flattest = std::min(flattest, slope);
        steepest = std::max(steepest, slope);
    }
    double bend() const { return steepest / flattest; }
};

struct Size {
    explicit Size(int64_t megabytes) : print(megabytes * kMB) {}
    SerialPrint print;
    int prints = 0;
    Total plugin, floor;
};

Slopes slopesOf(const std::deque<Size> &sizes, Total Size::*who, double Total::*time) {
    Slopes slopes;
    auto mean = [&](const Size &size) { return size.*who.*time / size.prints; };
    for (size_t i = 1; i < sizes.size(); ++i)
        slopes.take((mean(sizes[i]) - mean(sizes[i - 1])) * kMB /
                    static_cast<double>(sizes[i].print.bytes() - sizes[i - 1].print.bytes()));
    return slopes;
}

std::deque<Size> measure(const Settings &settings) {
    const Hasty hasty;
    const OneProcessor alone;
    std::deque<Size> sizes;
    for (int64_t megabytes : {1, 4, 16, 64, 256})
        if (!settings.quick || megabytes <= 16) sizes.emplace_back(megabytes);
    const int64_t atLeast = settings.quick ? 8 * kMB : 64 * kMB;
    // In turns and there and back, so that each size and either printer gets its share of what else the machine does.
    for (int round = 0; round < 4; ++round) {
        for (size_t i = 0; i < sizes.size(); ++i) {
            Size &size = sizes[round % 2 == 0 ? i : sizes.size() - 1 - i];
            for (int64_t bytes = 0; bytes < atLeast; bytes += size.print.bytes()) {
                size.plugin.add(size.print.plugin());
                size.floor.add(size.print.floor());
                ++size.prints;
            }
        }
    }
    return sizes;
}

Row row(const Settings &settings, double Total::*time) {
    static const std::deque<Size> sizes = measure(settings); // two rows ask
    const Slopes plugin = slopesOf(sizes, &Size::plugin, time), floor = slopesOf(sizes, &Size::floor, time);
    auto range = [](const Slopes &slopes) { return text("%.1f-%.1f ms/MB", slopes.flattest * 1e3, slopes.steepest * 1e3); };
    return {range(plugin), range(floor), plugin.bend(), "", 1.05};
}

} // namespace

Row wallSlopes(const Settings &settings) { return row(settings, &Total::wall); }

Row processorSlopes(const Settings &settings) { return row(settings, &Total::processor); }

} // namespace bench
