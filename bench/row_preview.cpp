// vectorix preview to a PNG, beside bare cairo.
#include "language/plot_reader.h"
#include "plots.h"
#include "process.h"
#include "rows.h"
#include "virtual_plotter/drawing/picture.h"

#include <cairo/cairo.h>
#include <cmath>
#include <cstring>
#include <fstream>
#include <iterator>
#include <memory>
#include <stdexcept>

namespace bench {

namespace {

using language::kUnitsPerMillimetre;
using language::Point;

constexpr double kDotsPerMillimetre = 200 / 25.4;

/// The segments of a plot, in the pieces in which they are stroked.
class Segments final : public language::PenSink {
public:
    struct Step {
        Point at;
        bool isMove;
    };
    std::vector<Step> steps;
    double width = 0;

    void setPen(int, double widthMillimetres) override {
        if (widthMillimetres > 0) width = widthMillimetres;
    }
    void begin(Point at) override { steps.push_back({at, true}); }
    void line(Point to) override { steps.push_back({to, false}); }
    void fill(std::span<const Point>, std::span<const size_t>) override { throw std::runtime_error("a fill in the plot"); }
};

using Surface = std::unique_ptr<cairo_surface_t, decltype(&cairo_surface_destroy)>;

/// Reads the file, strokes the segments, writes the picture: what is left of a preview when the plot is known.
void drawBarely(const std::string &plotFile, const Segments &segments, const virtual_plotter::Sheet &sheet,
                const std::string &picture) {
    std::ifstream file(plotFile, std::ios::binary);
    std::string bytes(std::istreambuf_iterator<char>(file), {});
    const Surface surface(cairo_image_surface_create(CAIRO_FORMAT_RGB24,
                                                     static_cast<int>(std::lround(sheet.width * kDotsPerMillimetre)),
                                                     static_cast<int>(std::lround(sheet.height * kDotsPerMillimetre))),
                          cairo_surface_destroy);
    cairo_t *cairo = cairo_create(surface.get());
    cairo_set_source_rgb(cairo, 1, 1, 1);
    cairo_paint(cairo);
    cairo_set_line_cap(cairo, CAIRO_LINE_CAP_ROUND);
    cairo_set_line_join(cairo, CAIRO_LINE_JOIN_ROUND);
    cairo_scale(cairo, kDotsPerMillimetre, kDotsPerMillimetre);
    constexpr double kFrameWidth = 0.2;
    cairo_set_source_rgb(cairo, 0xA0 / 255.0, 0xA0 / 255.0, 0xA0 / 255.0);
    cairo_set_line_width(cairo, kFrameWidth);
    cairo_rectangle(cairo, kFrameWidth / 2, kFrameWidth / 2, sheet.width - kFrameWidth, sheet.height - kFrameWidth);
    cairo_stroke(cairo);

    const double left = (sheet.width - sheet.hardClip.upper.x / kUnitsPerMillimetre) / 2;
    const double bottom = (sheet.height - sheet.hardClip.upper.y / kUnitsPerMillimetre) / 2;
    cairo_translate(cairo, left, sheet.height - bottom);
    cairo_scale(cairo, 1 / kUnitsPerMillimetre, -1 / kUnitsPerMillimetre);
    cairo_set_source_rgb(cairo, 0x11 / 255.0, 0x11 / 255.0, 0x11 / 255.0);
    cairo_set_line_width(cairo, segments.width * kUnitsPerMillimetre);
    for (const Segments::Step &step : segments.steps) {
        if (step.isMove) cairo_stroke(cairo);
        (step.isMove ? cairo_move_to : cairo_line_to)(cairo, step.at.x, step.at.y);
    }
    cairo_stroke(cairo);
    cairo_destroy(cairo);
    if (cairo_surface_write_to_png(surface.get(), picture.c_str()) != CAIRO_STATUS_SUCCESS)
        throw std::runtime_error(picture + " could not be written");
}

/// How many dots differ by more than a quarter of the way from black to white. By less they may: where lines cross, it
/// matters for the edge whether both were stroked together.
int64_t differentDots(const std::string &one, const std::string &other) {
    const Surface a(cairo_image_surface_create_from_png(one.c_str()), cairo_surface_destroy);
    const Surface b(cairo_image_surface_create_from_png(other.c_str()), cairo_surface_destroy);
    const int width = cairo_image_surface_get_width(a.get()), height = cairo_image_surface_get_height(a.get());
    if (width == 0 || width != cairo_image_surface_get_width(b.get()) || height != cairo_image_surface_get_height(b.get()))
        throw std::runtime_error("the pictures differ in size");
    const auto stride = static_cast<size_t>(cairo_image_surface_get_stride(a.get()));
    int64_t different = 0;
    for (size_t y = 0; y < static_cast<size_t>(height); ++y) {
        const unsigned char *rowA = cairo_image_surface_get_data(a.get()) + y * stride;
        const unsigned char *rowB = cairo_image_surface_get_data(b.get()) + y * stride;
        for (size_t x = 0; x < 4 * static_cast<size_t>(width); x += 4)
            different += std::abs(rowA[x] - rowB[x]) > 64;
    }
    return different;
}

} // namespace

Row previewProcessor(const Settings &settings) {
    TemporaryFile plotFile(".plt"), picture(".png"), floorPicture(".png");
    const std::string plot = outlines(settings.quick ? 200'000 : 1'700'000);
    plotFile.append(plot);
    std::string error;
    const virtual_plotter::Sheet sheet = *virtual_plotter::parseSheet("a4", error);
    Segments segments;
    language::PlotReader reader(std::nullopt, segments, sheet.hardClip);
    reader.take(plot);
    reader.finish();

    const Pair pair = sideBySide(
        settings.quick ? 3 : 7,
        [&] {
            const Finished command = run({settings.vectorix, "preview", plotFile.path(), "-o", picture.path()});
            if (command.status != 0) throw std::runtime_error("vectorix preview failed");
            return command.seconds;
        },
        [&] { return cpuOf([&] { drawBarely(plotFile.path(), segments, sheet, floorPicture.path()); }); });
    const int64_t different = differentDots(picture.path(), floorPicture.path());
    constexpr int64_t kMostDifferent = 20; // of millions
    if (different > kMostDifferent)
        throw std::runtime_error(text("the pictures differ in %lld dots", static_cast<long long>(different)));
    return {text("%.0f ms", pair.plugin * 1e3), text("%.0f ms", pair.floor * 1e3), pair.ratio, "", 1.3};
}

} // namespace bench
