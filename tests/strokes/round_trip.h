// Plots written of strokes and read as strokes again, by an emulation's language and cuts.
#pragma once

#include "emulations/emulations.h"
#include "language/plot_reader.h"
#include "strokes/from_plot.h"
#include "strokes/write.h"

namespace strokes {

inline PlotForm formOf(int32_t number) {
    const emulations::Emulation &e = emulations::of(number);
    return {*e.language, static_cast<size_t>(e.chunkSize),
            [&e](std::string_view chunk) { return emulations::findCut(chunk, terminatorOf(*e.language), e.cut); }};
}

/// strange: instructions that were not understood.
inline Drawing readPlot(std::string_view plot, uint64_t &strange) {
    PlotStrokes gathered(plot.size());
    language::PlotReader reader({}, gathered, {{0, 0}, {10900, 7650}}, language::Clipping::None);
    reader.take(plot);
    reader.finish();
    if (reader.reader()) strange = reader.reader()->findings().unknown + reader.reader()->findings().malformed;
    return gathered.take();
}

} // namespace strokes
