// vectorix preview to a PNG, beside the least that a smooth picture of the same lines takes: for each line the dots that it
// touches, by their distance from it, and zlib.
#include "language/plot_reader.h"
#include "plots.h"
#include "process.h"
#include "rows.h"
#include "virtual_plotter/drawing/picture.h"

#include <algorithm>
#include <cairo/cairo.h>
#include <cmath>
#include <fstream>
#include <iterator>
#include <memory>
#include <stdexcept>
#include <utility>
#include <zlib.h>

namespace bench {

namespace {

using language::kUnitsPerMillimetre;
using language::Point;

constexpr double kDotsPerMillimetre = 200 / 25.4;

/// The lines of a plot, each from one dot to another.
class Lines final : public language::PenSink {
public:
    struct Line {
        Point from, to;
    };

    explicit Lines(const virtual_plotter::Sheet &sheet)
        : left_(virtual_plotter::areaOrigin(sheet).x), top_(sheet.height - virtual_plotter::areaOrigin(sheet).y) {}

    std::vector<Line> lines;
    double radius = 0; ///< in dots

    void setPen(int, double widthMillimetres) override {
        if (widthMillimetres > 0) radius = widthMillimetres * kDotsPerMillimetre / 2;
    }
    void begin(Point at) override { last_ = at; }
    void line(Point to) override { lines.push_back({place(std::exchange(last_, to)), place(to)}); }
    void fill(std::span<const Point>, std::span<const size_t>) override { throw std::runtime_error("a fill in the plot"); }

private:
    Point place(Point at) const {
        return {(left_ + at.x / kUnitsPerMillimetre) * kDotsPerMillimetre,
                (top_ - at.y / kUnitsPerMillimetre) * kDotsPerMillimetre};
    }

    double left_, top_;
    Point last_;
};

/// How much ink is on each dot of a page of one colour, 0 to 255.
struct Page {
    explicit Page(const virtual_plotter::Sheet &sheet)
        : width(std::lround(sheet.width * kDotsPerMillimetre)), height(std::lround(sheet.height * kDotsPerMillimetre)),
          ink(static_cast<size_t>(width * height) + 8) {}
    long width, height;
    std::vector<uint8_t> ink;
};

long between(double place, long most) {
    return static_cast<long>(std::min(std::max(place, 0.0), static_cast<double>(most)));
}

constexpr int kRun = 8, kPerDot = 64; // dots at a time; the unit of distances

/// Those of eight dots beside each other that are meant, by the first one's distance from the line and what each is further.
void coverRun(uint8_t *dots, int16_t distance, const int16_t *further, int16_t edge, int16_t count) {
    uint8_t ink[kRun];
    for (int16_t i = 0; i < kRun; ++i) {
        const auto away = static_cast<int16_t>(distance + further[i]);
        const auto left = static_cast<int16_t>(edge - (away < 0 ? -away : away));
        const auto share = static_cast<int16_t>(i < count ? std::clamp<int16_t>(left, 0, kPerDot - 1) : 0);
        ink[i] = static_cast<uint8_t>(share * 4 + share / 16);
    }
    for (int i = 0; i < kRun; ++i)
        dots[i] = std::max(dots[i], ink[i]);
}

/// The ends are left square, for round ones are dots on top of this work, and a dot longer in all, which closes most
/// corners.
void cover(Page &page, Lines::Line line, double radius) {
    double length = std::hypot(line.to.x - line.from.x, line.to.y - line.from.y);
    if (length == 0) return;
    const double x = (line.to.x - line.from.x) / length, y = (line.to.y - line.from.y) / length, reach = radius + 0.5;
    line = {{line.from.x - x / 2, line.from.y - y / 2}, {line.to.x + x / 2, line.to.y + y / 2}};
    length += 1;
    int16_t further[kRun];
    for (int i = 0; i < kRun; ++i)
        further[i] = static_cast<int16_t>(std::lround(i * y * kPerDot));
    const double high = std::abs(x) * reach, aside = reach / std::abs(y), along = length / std::abs(x); // or infinite
    const long end = between(std::max(line.from.y, line.to.y) + high + 0.5, page.height);
    for (long row = between(std::min(line.from.y, line.to.y) - high + 0.5, page.height); row < end; ++row) {
        const double down = static_cast<double>(row) + 0.5 - line.from.y;
        const double strip = y != 0 ? line.from.x + down * x / y - aside : 0, box = x != 0 ? line.from.x - down * y / x : 0;
        const double left = std::max(y != 0 ? strip : -along, x != 0 ? box - (x < 0 ? along : 0) : strip);
        const double right = std::min(y != 0 ? strip + 2 * aside : HUGE_VAL, x != 0 ? box + (x > 0 ? along : 0) : HUGE_VAL);
        const long last = between(right + 0.5, page.width);
        for (long dot = between(left + 0.5, page.width); dot < last; dot += kRun) {
            const double distance = (static_cast<double>(dot) + 0.5 - line.from.x) * y - down * x;
            coverRun(&page.ink[static_cast<size_t>(row * page.width + dot)], static_cast<int16_t>(distance * kPerDot),
                     further, static_cast<int16_t>(reach * kPerDot), static_cast<int16_t>(std::min<long>(kRun, last - dot)));
        }
    }
}

/// Reads the file, covers the dots of its lines, packs and writes them: what is left of a preview when the plot is known.
void drawBarely(const std::string &plotFile, const Lines &lines, Page &page, const std::string &picture) {
    std::ifstream file(plotFile, std::ios::binary);
    std::string bytes(std::istreambuf_iterator<char>(file), {});
    std::fill(page.ink.begin(), page.ink.end(), uint8_t{0});
    for (const Lines::Line &line : lines.lines)
        cover(page, line, lines.radius);
    std::vector<uint8_t> packed(compressBound(page.ink.size()));
    uLongf size = packed.size();
    compress2(packed.data(), &size, page.ink.data(), page.ink.size(), Z_BEST_SPEED);
    std::ofstream(picture, std::ios::binary).write(reinterpret_cast<const char *>(packed.data()), static_cast<long>(size));
}

using Surface = std::unique_ptr<cairo_surface_t, decltype(&cairo_surface_destroy)>;

/// How many dots differ by more than half of the way from black to white, but for the frame along the edge. By less they
/// may: it matters whether lines that share a dot are taken together, and what their ends look like.
int64_t differentDots(const std::string &picture, const Page &page) {
    const Surface surface(cairo_image_surface_create_from_png(picture.c_str()), cairo_surface_destroy);
    if (page.width != cairo_image_surface_get_width(surface.get()) ||
        page.height != cairo_image_surface_get_height(surface.get()))
        throw std::runtime_error("the pictures differ in size");
    const auto stride = static_cast<size_t>(cairo_image_surface_get_stride(surface.get()));
    constexpr long kFrame = 4;
    int64_t different = 0;
    for (long y = kFrame; y < page.height - kFrame; ++y) {
        const unsigned char *row = cairo_image_surface_get_data(surface.get()) + static_cast<size_t>(y) * stride;
        for (long x = kFrame; x < page.width - kFrame; ++x)
            different += std::abs(255 - row[4 * x] - page.ink[static_cast<size_t>(y * page.width + x)]) > 128;
    }
    return different;
}

Row preview(const Settings &settings, const std::string &plot, double wanted) {
    TemporaryFile plotFile(".plt"), picture(".png"), barePicture(".z");
    plotFile.append(plot);
    std::string error;
    const virtual_plotter::Sheet sheet = *virtual_plotter::parseSheet("a4", error);
    Lines lines(sheet);
    language::PlotReader reader(std::nullopt, lines, sheet.hardClip);
    reader.take(plot);
    reader.finish();
    Page page(sheet);

    const Pair pair = sideBySide(
        settings.quick ? 3 : 7,
        [&] {
            const Finished command =
                run({settings.vectorix, "preview", plotFile.path(), "-o", picture.path(), "--sheet", "a4"});
            if (command.status != 0) throw std::runtime_error("vectorix preview failed");
            return command.seconds;
        },
        [&] {
            const double start = run({settings.vectorix, "--version"}).seconds;
            return start + cpuOf([&] { drawBarely(plotFile.path(), lines, page, barePicture.path()); });
        });
    const int64_t different = differentDots(picture.path(), page);
    const int64_t most = 20 + static_cast<int64_t>(lines.lines.size()) / 20; // of millions: corners and ends
    if (different > most)
        throw std::runtime_error(text("the pictures differ in %lld dots", static_cast<long long>(different)));
    return {text("%.0f ms", pair.plugin * 1e3), text("%.0f ms", pair.floor * 1e3), pair.ratio, "", wanted};
}

} // namespace

Row previewOutlines(const Settings &settings) {
    return preview(settings, outlines(settings.quick ? 200'000 : 1'700'000), 2.0);
}

Row previewLongLines(const Settings &settings) {
    return preview(settings, longLines(settings.quick ? 100'000 : 1'000'000), 1.0);
}

Row previewSmall(const Settings &settings) { return preview(settings, outlines(20'000), 2.0); }

} // namespace bench
