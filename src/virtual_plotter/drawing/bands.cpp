#include "virtual_plotter/drawing/bands.h"

#include <algorithm>
#include <atomic>
#include <future>
#include <system_error>
#include <thread>
#include <vector>

namespace virtual_plotter {

void forEachBand(size_t count, const std::function<BandWork()> &begin) {
    std::atomic<size_t> next = 0;
    const auto takeTurns = [&] {
        const BandWork work = begin();
        for (size_t band; (band = next++) < count;)
            work(band);
    };
    std::vector<std::future<void>> helpers;
    try {
        for (size_t others = std::min<size_t>(count, std::thread::hardware_concurrency()); others > 1; --others)
            helpers.push_back(std::async(std::launch::async, takeTurns));
    } catch (const std::system_error &) { // no more threads: those that there are do it all
    }
    takeTurns();
    for (std::future<void> &helper : helpers)
        helper.get();
}

} // namespace virtual_plotter
