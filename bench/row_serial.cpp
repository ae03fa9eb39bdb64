// A print over a pseudo-terminal: its processor time, its wall time at five sizes, and its wall time on a slow line.
#include "far_end.h"
#include "print.h"
#include "rows.h"

#include <algorithm>
#include <deque>
#include <stdexcept>

namespace bench {

namespace {

class NoPen final : public virtual_plotter::PenSink {
public:
    void setPen(int, double) override {}
    void begin(virtual_plotter::Point) override {}
    void line(virtual_plotter::Point) override {}
    void fill(std::span<const virtual_plotter::Point>, std::span<const size_t>) override {}
};

/// A plot, its line and its job.
struct Print {
    explicit Print(int64_t megabytes) : plot(megabytes * kMB), farEnd(plot), job(plot.path(), farEnd.port()) {}

    struct Times {
        double wall, processor;
    };

    /// Wall time until the last byte has arrived, and what of it the print took of a processor.
    Times run() {
        const double began = wallSeconds();
        farEnd.listen();
        const double processor = cpuOf([&] { job.run(); });
        farEnd.finish();
        return {wallSeconds() - began, processor};
    }

    Plot plot;
    FarEnd farEnd;
    PrintJob job;
};

} // namespace

Row serialProcessor(const Settings &settings) {
    const Hasty hasty;
    Print print(settings.quick ? 4 : 64);
    print.farEnd.listen();
    const std::vector<uint8_t> sizes = piecesOf(print.job);
    print.farEnd.finish();
    const bench_Pieces pieces = known(print.plot, sizes);

    auto listenedTo = [&](auto run) {
        print.farEnd.listen();
        const double seconds = cpuOf(run);
        print.farEnd.finish();
        return seconds;
    };
    const Pair pair = sideBySide(
        9, [&] { return listenedTo([&] { print.job.run(); }); },
        [&] {
            return listenedTo([&] {
                if (bench_writePieces(print.farEnd.port().c_str(), &pieces) != 0)
                    throw std::runtime_error("floor: no write");
            });
        });
    const double scale = 1e9 / static_cast<double>(sizes.size());
    return {text("%.0f ns", pair.plugin * scale), text("%.0f ns", pair.floor * scale), pair.ratio, "", 1.15};
}

namespace {

/// The least and the greatest of the slopes from one size to the next.
struct Slopes {
    double flattest = 1e9, steepest = 0;
    void take(double slope) {
        flattest = std::min(flattest, slope);
        steepest = std::max(steepest, slope);
    }
    Row row() const {
        return {text("%.1f ms/MB", steepest * 1e3), text("%.1f ms/MB", flattest * 1e3), steepest / flattest, "", 1.05};
    }
};

struct BothSlopes {
    Slopes wall, processor;
};

BothSlopes measureSlopes(const Settings &settings) {
    const Hasty hasty;
    std::deque<Print> prints;
    for (int64_t megabytes : {1, 4, 16, 64, 256})
        if (!settings.quick || megabytes <= 16) prints.emplace_back(megabytes);
    // The median of runs in turns: what else the machine does adds to each size in its share.
    std::vector<std::vector<double>> wall(prints.size()), processor(prints.size());
    for (int round = 0; round < 5; ++round) {
        for (size_t i = 0; i < prints.size(); ++i) {
            for (int64_t bytes = 0; bytes < 16 * kMB; bytes += std::max(prints[i].plot.size(), 2 * kMB)) {
                const Print::Times times = prints[i].run();
                wall[i].push_back(times.wall);
                processor[i].push_back(times.processor);
            }
        }
    }
    BothSlopes slopes;
    for (size_t i = 1; i < prints.size(); ++i) {
        const double megabytes = static_cast<double>(prints[i].plot.size() - prints[i - 1].plot.size()) / kMB;
        slopes.wall.take((median(wall[i]) - median(wall[i - 1])) / megabytes);
        slopes.processor.take((median(processor[i]) - median(processor[i - 1])) / megabytes);
    }
    return slopes;
}

const BothSlopes &slopes(const Settings &settings) {
    static const BothSlopes measured = measureSlopes(settings); // two measures ask
    return measured;
}

} // namespace

Row wallSlopes(const Settings &settings) { return slopes(settings).wall.row(); }

Row processorSlopes(const Settings &settings) { return slopes(settings).processor.row(); }

Row pacedLine(const Settings &settings) {
    constexpr double kBytesPerSecond = 3840; // 38400 bit/s, ten bits a byte
    const Hasty hasty;
    NoPen pen;
    virtual_plotter::PlotterOptions options;
    options.language = virtual_plotter::Language::hpgl;
    options.perByte = std::chrono::nanoseconds(static_cast<int64_t>(1e9 / kBytesPerSecond));
    virtual_plotter::VirtualPlotter plotter(options, pen, {{0, 0}, {10900, 7650}});
    const Plot plot(settings.quick ? 8'000 : 64'000);
    FarEnd farEnd(plot, &plotter);
    const PrintJob job(plot.path(), farEnd.port());
    const double began = wallSeconds();
    farEnd.listen();
    job.run();
    farEnd.finish();
    const double seconds = wallSeconds() - began, floor = static_cast<double>(plot.size()) / kBytesPerSecond;
    return {text("%.3f s", seconds), text("%.3f s", floor), seconds / floor, "", 1.02};
}

} // namespace bench
