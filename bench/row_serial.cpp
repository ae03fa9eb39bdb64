// A print over a pseudo-terminal: its processor time, and its wall time on a slow line.
#include "rows.h"
#include "serial_print.h"

namespace bench {

namespace {

class NoPen final : public language::PenSink {
public:
    void setPen(int, double) override {}
    void begin(language::Point) override {}
    void line(language::Point) override {}
    void fill(std::span<const language::Point>, std::span<const size_t>) override {}
};

} // namespace

Row serialProcessor(const Settings &settings) {
    const Hasty hasty;
    SerialPrint print((settings.quick ? 4 : 64) * kMB);
    const Pair pair = sideBySide(
        9, [&] { return print.plugin().processor; }, [&] { return print.floor().processor; });
    const double scale = 1e9 / static_cast<double>(print.pieces());
    return {text("%.0f ns", pair.plugin * scale), text("%.0f ns", pair.floor * scale), pair.ratio, "", 1.15};
}

Row pacedLine(const Settings &settings) {
    constexpr double kBytesPerSecond = 3840; // 38400 bit/s, ten bits a byte
    const Hasty hasty;
    NoPen pen;
    virtual_plotter::PlotterOptions options;
    options.language = language::Language::Hpgl;
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
