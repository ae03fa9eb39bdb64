// Drawings on their way to a plot file, by convert's own steps: SVG as the converters write it, and plots of which nothing
// is clipped. What is read is on its page, and what is written is read as what was given.
#include "emulations/emulations.h"
#include "language/plot_reader.h"
#include "strokes/from_plot.h"
#include "strokes/measure.h"
#include "strokes/order.h"
#include "strokes/simplify.h"
#include "strokes/svg_reader.h"
#include "strokes/write.h"
#include "support/platform.h"

#include <cmath>

namespace {

using namespace strokes;

constexpr language::Rectangle kSheet{{0, 0}, {10900, 7650}};
constexpr size_t kMost = 2000; // strokes that are taken on: more would be slow, and the same

Drawing fromPlot(std::string_view plot, std::optional<language::Language> language, uint64_t &strange) {
    PlotStrokes gathered(plot.size());
    language::PlotReader reader(language, gathered, kSheet, language::Clipping::None);
    reader.take(plot);
    reader.finish();
    if (reader.reader()) strange = reader.reader()->findings().unknown + reader.reader()->findings().malformed;
    return gathered.take();
}

Drawing fromSvg(const std::string &svg, uint8_t how) {
    const FillStyle fill{.isHatched = (how & 1) != 0, .spacing = 1.0 + how / 32, .degrees = how * 1.5};
    Drawing drawing = readSvg(svg, {fill, (how & 2) == 0, {.elements = 3000, .points = 300'000, .work = 10'000'000}});
    for (const Stroke &stroke : drawing.strokes)
        for (Point p : stroke.points) {
            const bool isOnPage = p.x >= 0 && p.y >= 0 && p.x <= drawing.width && p.y <= drawing.height;
            fuzz::require(isOnPage, "a stroke stays on its page");
        }
    return drawing;
}

void write(const Drawing &drawing, int32_t emulation) {
    const emulations::Emulation &e = emulations::of(emulation);
    const PlotForm form{*e.language, static_cast<size_t>(e.chunkSize), [&e](std::string_view chunk) {
                            return emulations::findCut(chunk, terminatorOf(*e.language), e.cut);
                        }};
    uint64_t strange = 0;
    const Drawing read = fromPlot(plotOf(drawing, form), form.language, strange);
    fuzz::require(strange == 0, "what is written is understood");
    const auto given = extentOf(drawing), found = extentOf(read);
    fuzz::require(given.has_value() == found.has_value(), "nothing is written of nothing");
    if (!given) return;
    for (const Point d : {Point{given->lower.x - found->lower.x, given->lower.y - found->lower.y},
                          Point{given->upper.x - found->upper.x, given->upper.y - found->upper.y}})
        fuzz::require(std::max(std::abs(d.x), std::abs(d.y)) <= kTouching / 2 + 1e-6, "what is written is what was drawn");
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) try {
    FuzzedDataProvider input(data, size);
    const auto how = input.ConsumeIntegral<uint8_t>(); // the last byte
    const std::string text = input.ConsumeRemainingBytesAsString();
    uint64_t strange = 0;
    Drawing drawing = text.starts_with('<') ? fromSvg(text, how) : fromPlot(text, std::nullopt, strange);
    for (const Stroke &stroke : drawing.strokes)
        fuzz::require(!stroke.points.empty(), "a stroke has points");
    if (drawing.strokes.size() > kMost) return 0;
    if (how & 4) orderNearest(drawing);
    if (how & 8) simplify(drawing, kTouching / 2);
    write(drawing, how & 16 ? 17008 : 17002);
    return 0;
} catch (const Unreadable &) {
    return 0;
} catch (const Unwritable &) {
    return 0;
}
