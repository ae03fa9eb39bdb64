// vectorix convert of an SVG drawing, beside what its converter takes, and of a plot whose strokes are put in order.
#include "plots.h"
#include "process.h"
#include "rows.h"

#include <random>
#include <stdexcept>

namespace bench {

namespace {

/// Lines and boxes of up to 5 mm all over an A4 sheet; half of the boxes are white, and hide what is under them.
std::string drawing(int lines, int boxes) {
    std::mt19937 random(1);
    auto upTo = [&](double most) { return most * static_cast<double>(random()) / 0x1p32; };
    std::string svg = "<svg xmlns='http://www.w3.org/2000/svg' width='297mm' height='210mm' viewBox='0 0 297 210'>";
    for (int i = 0; i < lines; ++i)
        svg += text("<path d='M%.2f %.2fl%.2f %.2f' stroke='#000'/>", upTo(290), upTo(200), upTo(5), upTo(5));
    for (int i = 0; i < boxes; ++i)
        svg += text("<rect x='%.2f' y='%.2f' width='%.2f' height='%.2f' fill='%s' stroke='#00f'/>", upTo(290), upTo(200),
                    upTo(5), upTo(5), i % 2 == 0 ? "#fff" : "none");
    return svg + "</svg>";
}

/// Strokes all over an A4 sheet, each far from the one before.
std::string scattered(int strokes) {
    std::mt19937 random(1);
    std::string plot = "IN;SP1;";
    for (int i = 0; i < strokes; ++i) {
        const auto x = static_cast<int>(random() % 10'700), y = static_cast<int>(random() % 7'500);
        plot += text("PU%d,%d;PD%d,%d;", x, y, x + static_cast<int>(random() % 200), y + static_cast<int>(random() % 150));
    }
    return plot;
}

double secondsOf(const std::vector<std::string> &arguments) {
    const Finished finished = run(arguments);
    if (finished.status != 0) throw std::runtime_error(arguments[0] + " failed");
    return finished.seconds;
}

/// Of processor time beyond the floor's.
Row beyond(const Settings &settings, const std::vector<std::string> &command, const std::vector<std::string> &floor,
           double wantedMilliseconds) {
    const Pair pair = sideBySide(
        settings.quick ? 1 : 5, [&] { return secondsOf(command); }, [&] { return secondsOf(floor); });
    return {text("%.0f ms", pair.plugin * 1e3), text("%.0f ms", pair.floor * 1e3), (pair.plugin - pair.floor) * 1e3, "ms",
            wantedMilliseconds};
}

} // namespace

Row convertDrawing(const Settings &settings) {
    TemporaryFile svg(".svg"), plot(".plt");
    svg.append(settings.quick ? drawing(3'000, 200) : drawing(30'000, 2'000));
    return beyond(settings, {settings.vectorix, "convert", "-q", svg.path(), "-o", plot.path()},
                  {"rsvg-convert", "-f", "svg", "-d", "96", "-p", "96", svg.path()}, 1500);
}

Row orderStrokes(const Settings &settings) {
    TemporaryFile plot(".plt"), ordered(".plt");
    plot.append(scattered(settings.quick ? 10'000 : 100'000));
    auto command = [&](const char *order) {
        return std::vector<std::string>{settings.vectorix, "convert", "-q", plot.path(), "-o",
                                        ordered.path(),    "--order", order};
    };
    return beyond(settings, command("nearest"), command("as-drawn"), 1000);
}

} // namespace bench
