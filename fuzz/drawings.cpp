// Drawings on their way to a plot file, by convert's own steps: SVG as the converters write it, and plots of which nothing
// is clipped. What is read is on its page, and what is written is read as what was given.
#include "strokes/measure.h"
#include "strokes/order.h"
#include "strokes/round_trip.h"
#include "strokes/simplify.h"
#include "strokes/svg_reader.h"
#include "support/platform.h"

#include <cmath>

namespace {

using namespace strokes;

constexpr size_t kMost = 2000; // strokes that are taken on: more would be slow, and the same

Drawing fromSvg(const std::string &svg, uint8_t how) {
    const FillStyle fill{.isHatched = (how & 1) != 0, .spacing = 1 + how / 32.0, .degrees = how * 1.5};
    Drawing drawing = readSvg(svg, {fill, (how & 2) == 0, {.elements = 3000, .points = 300'000, .work = 10'000'000}});
    for (const Stroke &stroke : drawing.strokes)
        for (Point p : stroke.points) {
            const bool isOnPage = p.x >= 0 && p.y >= 0 && p.x <= drawing.width && p.y <= drawing.height;
            fuzz::require(isOnPage, "a stroke stays on its page");
        }
    return drawing;
}

void write(const Drawing &drawing, const PlotForm &form) {
    uint64_t strange = 0;
    const Drawing read = readPlot(plotOf(drawing, form), strange);
    fuzz::require(strange == 0, "what is written is understood");
    const auto given = extentOf(drawing), found = extentOf(read);
    fuzz::require(given.has_value() == found.has_value(), "nothing is written of nothing");
    if (!given) return;
    const double over = std::max({std::abs(given->lower.x - found->lower.x), std::abs(given->lower.y - found->lower.y),
                                  std::abs(given->upper.x - found->upper.x), std::abs(given->upper.y - found->upper.y)});
    fuzz::require(over <= kTouching / 2 + 1e-6, "what is written is what was drawn");
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) try {
    FuzzedDataProvider input(data, size);
    const auto how = input.ConsumeIntegral<uint8_t>(); // the last byte
    const std::string text = input.ConsumeRemainingBytesAsString();
    uint64_t strange = 0;
    Drawing drawing = text.starts_with('<') ? fromSvg(text, how) : readPlot(text, strange);
    for (const Stroke &stroke : drawing.strokes)
        fuzz::require(!stroke.points.empty(), "a stroke has points");
    if (drawing.strokes.size() > kMost) return 0;
    if (how & 4) orderNearest(drawing);
    if (how & 8) simplify(drawing, kTouching / 2);
    write(drawing, formOf(how & 16 ? 17008 : 17002));
    return 0;
} catch (const Unreadable &) {
    return 0;
} catch (const Unwritable &) {
    return 0;
}
