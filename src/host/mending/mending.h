// Plots that would not arrive whole, although nothing is wrong with their drawing: without the last terminator, wrapped for
// a printer, with bytes that the wire does not take. They are written anew so that all of them arrives. That is no guess:
// what was written is read by the reader of the language, and draws stroke for stroke what the file draws, or it is not
// used. The file itself stays as it is.
#pragma once

#include "host/examination/examination.h"

#include <optional>
#include <string>
#include <vector>

namespace host {

struct Mended {
    PlotFile plot;                     ///< has no name on disk; messages call it by that of the file
    std::vector<std::string> mendings; ///< what was done: "ended with \";\""
};

/// None when there is nothing to mend: all that draws arrives as it is. Reads the file up to five times, in constant memory.
/// Throws Failure (unfit), as requireFitPlot does, when it cannot be mended without another drawing.
std::optional<Mended> mended(const PlotFile &plot, const PlotRules &rules);

} // namespace host
