// A print over USB to a plotter in memory, beside the bare calls on its out pipe.
#include "memory_bus.h"
#include "print.h"
#include "rows.h"

#include <benchmark/benchmark.h>
#include <stdexcept>

namespace bench {

namespace {

Row usb(const Settings &settings, int systemCalls) {
    const Hasty hasty;
    const Plot plot((settings.quick ? 4 : 64) * kMB);
    MemoryInterface interface(plot, systemCalls);
    const MemoryBus bus(interface);
    const PrintJob job(plot.path(), {});
    interface.begin();
    const std::vector<uint8_t> sizes = piecesOf(job);
    const bench_Pieces pieces = known(plot, sizes);

    auto taken = [&](auto run) {
        interface.begin();
        const double seconds = cpuOf(run);
        if (!interface.heardPlot()) throw std::runtime_error("what arrived over USB is not the plot");
        return seconds;
    };
    IOUSBInterfaceInterface245 *pipe = &interface;
    benchmark::DoNotOptimize(pipe);
    auto bare = [&] {
        size_t at = 0;
        for (size_t i = 0; i < pieces.count; ++i) {
            uint32_t count = 0;
            pipe->WritePipe(2, pieces.block + at, pieces.sizes[i], &count);
            at += pieces.sizes[i];
            if (at >= pieces.blockSize) at -= pieces.blockSize;
        }
    };
    const Pair pair = sideBySide(
        settings.quick ? 3 : 9, [&] { return taken([&] { job.run(); }); }, [&] { return taken(bare); });
    const double scale = 1e9 / static_cast<double>(sizes.size());
    return {text("%.0f ns", pair.plugin * scale), text("%.0f ns", pair.floor * scale), pair.ratio, "", 1.15};
}

} // namespace

// What a transfer through libusb takes at the least: one call to submit it, two to wait (the plug-in's and libusb's own),
// one to reap it, and one to hear that there is no other.
Row usbProcessor(const Settings &settings) { return usb(settings, 5); }

Row usbOwnWork(const Settings &settings) {
    Row row = usb(settings, 0);
    row.wanted = 0;
    return row;
}

} // namespace bench
